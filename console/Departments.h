#pragma once

#include "console/Organisation.h"
#include "console/Roles.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace console {

/// The groups below a view that stand for departments, named by paths such as "Head office/Sales/North", in which \/
/// stands for a slash and \\ for a backslash in a name, and case does not count. Groups and the view are made where
/// they are missing; in a dry run they only count as made.
///
/// What has been found is remembered within a transaction and no longer: another program may change it, and a
/// rolled-back group must not be found again. All functions @throw DatabaseError.
class Departments {
public:
    /// @param view  the name of a system view, or /NAME, or view:4. @throws Refusal for what means no single view and
    /// cannot be made.
    Departments(CAConnect& conn, const std::string& view, bool dryRun);

    /// Says that a transaction begins, or has been committed. Neither is for dry runs.
    void Begin();
    void Committed();

    /// The group of a path. @throws Refusal (usage) for what is no path, (conflict) when it may be several groups.
    ItemKey Find(const std::string& path);
    /// Whether the user is a member of the group. Nobody is of one that only counts as made.
    bool IsIn(ItemKey group, int userId);
    /// Makes the user a member of the group, and no longer one of the department that he was in.
    /// @param oldId, oldPath  the department as the user's row had it. @return whether anything was different before.
    bool Place(ItemKey group, int userId, int oldId, const std::string& oldPath);

    /// "3 groups" or "3 groups and the view Main": what was made, or would be.
    [[nodiscard]] std::string Made() const;

private:
    using Children = std::unordered_map<std::string, std::vector<int>>;

    ItemKey View();
    [[nodiscard]] ItemKey MakeView();
    std::optional<ItemKey> FindPresent(const std::string& path);
    std::optional<ItemKey> ChildOf(ItemKey parent, const std::string& name);
    ItemKey MakeChild(ItemKey parent, const std::string& name);
    Children& ChildrenOf(ItemKey parent);
    bool IsBelowView(int groupId);
    std::optional<ItemKey> OldGroup(int oldId, const std::string& oldPath);

    Organisation m_organisation; ///< for its writes; its picture is that of the beginning
    Roles m_roles;
    bool m_dryRun;
    std::string m_viewName;
    std::optional<ItemKey> m_view;
    std::map<ItemKey, Children> m_children;
    std::unordered_map<std::string, ItemKey> m_paths;
    std::unordered_map<int, bool> m_below;
    std::size_t m_made = 0;   ///< groups, in transactions that are committed
    std::size_t m_making = 0; ///< groups, in the present one
    bool m_madeView = false;
    bool m_makingView = false;
};

} // namespace console
