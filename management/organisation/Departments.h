#pragma once

#include "management/Lengths.h"
#include "management/organisation/Organisation.h"
#include "management/roles/Roles.h"

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace management {

struct DepartmentOptions {
    std::string view;       ///< the name of a system view, or /NAME, or view:4
    bool dryRun = false;    ///< missing groups and a missing view only count as made
    bool makeView = false;  ///< when there is none of that name
    bool makeGroups = true; ///< those that are missing
};

/// A group that was made, or would be.
struct NewGroup {
    std::string path;
    std::size_t users = 0; ///< who have become members since
};

/// The groups below a view that stand for departments, named by paths such as "Head office/Sales/North", in which \/
/// stands for a slash and \\ for a backslash in a name, and case does not count. Missing groups are made.
///
/// What has been found is remembered within a transaction and no longer: another program may change it, and a
/// rolled-back group must not be found again. All functions @throw DatabaseError.
class Departments {
public:
    /// @throws Error for what means no single view and may not or cannot be made.
    Departments(CAConnect& conn, const DepartmentOptions& options);

    /// Says that a transaction begins, or has been committed. Neither is for dry runs.
    void Begin();
    void Committed();

    /// Reads the groups of some hundred paths, as far as they are there, in one question for each level of them; they
    /// are then found without one.
    void ReadAhead(const std::set<std::string>& paths);
    /// Reads which of some hundred groups are below the view, likewise.
    void ReadAbove(const std::vector<int>& groups);

    /// The existing group that a path leads to; nothing when the text is not a path or is ambiguous.
    std::optional<ItemKey> FindPresent(const std::string& path);
    /// The group of a path. @throws Error (invalid) for what is not a path, (conflict) when it may be several groups,
    /// (notFound) when there is none and none may be made. Nothing was made then.
    ItemKey Find(const std::string& path);
    /// Makes the user a member of the group, and no longer one of the department that he was in.
    /// @param oldId, oldPath  the department as the user's row had it. @return whether anything was different before.
    bool Place(ItemKey group, int userId, int oldId, const std::string& oldPath);
    /// The department that a user leaves who enters a group; nothing when he was in none below the view, or in this
    /// one.
    /// @param oldId, oldPath  the department as the user's row has it.
    std::optional<ItemKey> GroupToLeave(ItemKey group, int oldId, const std::string& oldPath);
    /// Counts a user who becomes a member of a group, or would.
    void NoteEntered(ItemKey group);

    /// The path of the view, when it was made or would be.
    [[nodiscard]] std::optional<std::string> MadeView() const;
    /// By path.
    [[nodiscard]] std::vector<NewGroup> MadeGroups() const;

private:
    using Children = std::unordered_map<std::string, std::vector<LinkedGroup>>;

    std::map<int, std::vector<ItemKey>> ParentsAbove(const std::vector<int>& groups);
    ItemKey View();
    [[nodiscard]] ItemKey MakeView();
    [[nodiscard]] std::string ViewPath() const;
    std::optional<LinkedGroup> ChildOf(ItemKey parent, const std::string& name);
    LinkedGroup MakeChild(ItemKey parent, const std::string& name, const std::string& path);
    void ReadChildren(const std::set<ItemKey>& parents);
    Children& ChildrenOf(ItemKey parent);
    bool IsBelowView(int groupId);
    std::optional<ItemKey> OldGroup(int oldId, const std::string& oldPath);

    Organisation m_organisation; ///< for its writes; its snapshot is that of the beginning
    Roles m_roles;
    schema::ColumnLengths m_lengths; ///< of groups
    DepartmentOptions m_options;
    std::string m_viewName;
    std::optional<ItemKey> m_view;
    std::map<ItemKey, Children> m_children;
    std::unordered_map<std::string, ItemKey> m_paths;
    std::unordered_map<int, bool> m_below;
    std::map<int, NewGroup> m_made;       ///< in transactions that are committed, by id
    std::map<int, NewGroup> m_making;     ///< in the present one
    std::map<int, std::size_t> m_entered; ///< who entered groups of m_made in the present one
    bool m_madeView = false;
    bool m_makingView = false;
};

} // namespace management
