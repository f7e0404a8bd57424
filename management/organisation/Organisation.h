#pragma once

#include "management/Hierarchy.h"
#include "management/Names.h"
#include "management/Paths.h"
#include "management/users/Directory.h"
#include "platform/CString.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

class CAConnect;

namespace management {

/// An item of the directory as relations and rights name it; basefun/ItemTypes.h has the types.
struct ItemKey {
    int type;
    int id;

    bool operator==(const ItemKey&) const = default;
    std::strong_ordering operator<=>(const ItemKey& other) const
    {
        return std::tie(type, id) <=> std::tie(other.type, other.id);
    }
};

/// A view or a group.
struct Node : HierarchyNode {
    ItemKey key{};
    std::string name;
    std::string nameKey; ///< for comparing
    int sortIndex = 10000;
    int viewType = 0;  ///< of a view
    int viewOwner = 0; ///< of a view
    int users = 0;     ///< who are members directly, each counted once

    static constexpr std::string_view kTop = "view";
    static constexpr std::string_view kInner = "group";
    static constexpr std::string_view kPathHelp = "/VIEW/GROUP, or id:17, or view:4";
    [[nodiscard]] static bool IsTop(ItemKey key);
    [[nodiscard]] static ItemKey KeyOf(bool isTop, int id);
    /// Whether it is a system view.
    [[nodiscard]] bool BeginsPath() const;
};

/// What FindGroup understands, for help texts.
inline constexpr std::string_view kGroupHelp = "/VIEW/GROUP, or id:NUMBER";

/// The columns of a group.
struct GroupData {
    std::string name;
    std::string description;
    std::string creator;
    std::optional<std::string> created; ///< written by the module: today
    int sortIndex = 10000;
    int domainId = 0;
    int style = 0;

    bool operator==(const GroupData&) const = default;
};

/// What is to be different in a group.
struct GroupChanges {
    std::optional<std::string> name;
    std::optional<std::string> description;
    std::optional<int> sortIndex;
    std::optional<int> domainId;
};

/// What is to be different in a view.
struct ViewChanges {
    std::optional<std::string> description;
    std::optional<int> sortIndex;
};

/// The columns of a view.
struct ViewData {
    std::string name;
    std::string description;
    std::string creator;
    std::optional<std::string> created; ///< written by the module: today
    int type = 1;
    int ownerId = 0;
    int sortIndex = 10000;
    int domainId = 0;
    int style = 0;
    bool isPublic = false;

    bool operator==(const ViewData&) const = default;
};

/// A user as a member of a view or group.
struct Member {
    int id;
    std::string login;
    std::string name;
};

/// Users who are members of some groups, each counted once.
struct MemberCounts {
    std::size_t users = 0;
    std::size_t inNoOther = 0; ///< of those, who are in no other group

    bool operator==(const MemberCounts&) const = default;
};

/// Whether it is counted how many users views and groups have.
enum class UserCounts : std::uint8_t { read, leftOut };

// Compiled once, in Organisation.cpp.
extern template class Hierarchy<Node>;

/// The views and groups of a directory, read at once when this is made, and the writes, which do not change what was
/// read. Any text goes in and comes out as it is, whatever the engine.
///
/// An argument names a group or a view by a path, such as /View/Department/Team, where \/ stands for a slash and \\ for
/// a backslash in a name, and case does not count. A path may also begin with id:17 (a group) or view:4 instead of a
/// view's name, and end there. Paths by name begin at system views only.
///
/// Nothing here begins a transaction. All functions @throw DatabaseError, and Error for a text with a NUL byte.
class Organisation : public Hierarchy<Node> {
public:
    /// Reads views, groups, their links and the counts of users. @param conn  open, and stays so.
    /// @param counts  leftOut: Node::users and UsersBelow are 0, and reading takes a fraction of the time.
    explicit Organisation(CAConnect& conn, UserCounts counts = UserCounts::read);

    [[nodiscard]] CAConnect& Connection() const { return m_conn; }

    // ---- Look-ups: of Nodes, views first, then groups, each by sort index, name and id ------------------------------

    /// All views and groups that an argument may mean. @throws Error (invalid) for what is not a path.
    [[nodiscard]] std::vector<ItemKey> FindAll(const std::string& argument) const;
    /// The one view or group, or only group, that an argument means. @throws Error (invalid, notFound), or (conflict)
    /// that lists what it may mean.
    [[nodiscard]] ItemKey FindHolder(const std::string& argument) const;
    /// The one group that an argument means. @throws as FindHolder.
    [[nodiscard]] ItemKey FindGroup(const std::string& argument) const;
    /// The one view that an argument means: a name of a system view as it is, or /NAME, or view:4.
    /// @throws as FindHolder.
    [[nodiscard]] ItemKey FindView(const std::string& argument) const;
    /// The groups of a name directly under a parent, case not counting.
    [[nodiscard]] std::vector<ItemKey> ChildrenNamed(ItemKey parent, std::string_view name) const;
    /// A group directly under a parent whose other name the engine takes for equal to this one.
    [[nodiscard]] std::optional<RowName> FindConfusedChild(ItemKey parent, std::string_view name, ItemKey except) const;
    /// The system views of a name, case not counting.
    [[nodiscard]] std::vector<ItemKey> SystemViewsNamed(std::string_view name) const;

    /// The users who are members of groups below; one who is in several counts in each.
    [[nodiscard]] int UsersBelow(ItemKey key) const;

    /// The columns of a group or view; nothing when it is not there.
    std::optional<GroupData> LoadGroup(int id);
    std::optional<ViewData> LoadView(int id);
    int GroupStyle(int id);
    /// Who are members directly, of every view and group, by login name.
    std::map<ItemKey, std::vector<Member>> LoadMembers();
    /// Who are members of these groups directly.
    MemberCounts CountMembers(const std::vector<int>& groups);
    /// What other tables have about items of one type, in sum; kinds of which there is nothing are left out.
    std::vector<Reference> References(int type, const std::vector<int>& ids);
    /// The name of the system view without an owner; empty when there is none.
    std::string DefaultViewName();

    // ---- Writes -----------------------------------------------------------------------------------------------------

    /// Adds a group under a parent; to be called in a transaction. @return the new id.
    int CreateGroup(ItemKey parent, const GroupData& group);
    /// Adds a view; to be called in a transaction. @return the new id.
    int CreateView(const ViewData& view);
    /// Makes an item a member of another; nothing keeps it from being one already.
    void AddMember(ItemKey holder, ItemKey member);
    /// Ends the membership between two items.
    void RemoveMember(ItemKey holder, ItemKey member);
    void RenameView(int id, std::string_view name);
    /// Writes what is given and nothing else.
    void ChangeGroup(int id, const GroupChanges& changes);
    /// Writes what is given and nothing else.
    void ChangeView(int id, const ViewChanges& changes);
    void SetGroupStyle(int id, int style);
    /// Renames the system view without an owner as long as it bears the placeholder's name.
    void NameDefaultView(std::string_view name);
    /// Stamps a view's id onto the links of all users below it. Endless where there is a cycle.
    void StampView(int id);
    /// Deletes groups and what References counts.
    void DeleteGroups(const std::vector<int>& ids);
    /// Deletes a view and what References counts.
    void DeleteView(int id);

private:
    [[nodiscard]] CString EscapeLiteral(std::string_view text) const;
    void LoadNodes();
    void LoadLinks();
    void LoadUserCounts();

    CAConnect& m_conn;
};

/// Takes the last name off a path. @throws Error (invalid) for a path of one name, and for what is not a path.
ParentAndName SplitLast(const std::string& path);

} // namespace management
