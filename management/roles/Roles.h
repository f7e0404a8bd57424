#pragma once

#include "management/Sentence.h"
#include "management/organisation/Organisation.h"
#include "management/users/Directory.h"
#include "platform/CString.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

namespace management {

/// The application whose roles this system gives rights to.
inline constexpr std::string_view kOwnApplication = "Tolvan";
/// The role of this system that every user has.
inline constexpr std::string_view kDefaultRole = "everyone";

/// Roles of the same application and domain form one list, in which a name means one role.
struct RoleScope {
    std::string application{kOwnApplication};
    int domainId = 0;
};

struct RoleKey {
    int id;
    std::string name;

    bool operator==(const RoleKey&) const = default;
};

/// What a list shows of a role.
struct ListedRole {
    int id;
    std::string name;
    std::string description;
    int members; ///< users, each counted once
};

/// The columns of a role.
struct RoleData {
    std::string name;
    std::string description;
    RoleScope scope;
    std::string creator;
    std::optional<std::string> created; ///< written by the module: now
    int sortIndex = 0;
    bool disabled = false;
    std::string genre;
    int classId = 0;
    int type = 0;
};

/// A role that a user has.
struct UserRole {
    int id = 0;
    std::string name;
    std::string description;
    RoleScope scope;
    bool isDefault = false;
};

struct LinkedUser {
    int id = 0;
    std::string login;
    std::string name;
};

struct LinkedGroup {
    int id = 0;
    std::string name;
};

/// A title that a user holds inside a group.
struct HeldTitle {
    int groupId = 0;
    int userId = 0;
    std::string title;
    std::string description;
    std::string login; ///< empty when the user is gone
    std::string name;  ///< of the user; when he is gone, as it was written beside the title
};

/// Roles, job titles, and who is linked to what. Any text goes in and comes out as it is, whatever the engine: the
/// module puts the texts of both into its statements as they are, and here they are made ready for that.
///
/// Nothing here begins a transaction. All functions @throw DatabaseError, and Error for a text with a NUL byte.
class Roles {
public:
    /// @param conn  open, and stays so while this is used.
    explicit Roles(CAConnect& conn) : m_conn(conn) {}

    [[nodiscard]] CAConnect& Connection() const { return m_conn; }

    // ---- Roles ------------------------------------------------------------------------------------------------------

    /// The roles of a scope, by name.
    std::vector<ListedRole> List(const RoleScope& scope);
    /// The roles of a name in a scope, case not counting, by id.
    std::vector<RoleKey> FindAll(std::string_view name, const RoleScope& scope);
    /// All columns of a role; nothing when there is no such role.
    std::optional<RoleData> Load(int id);
    /// The role that every user has; nothing when it is missing.
    std::optional<RoleKey> Default();
    /// What names a role elsewhere; kinds of which there is nothing are left out.
    std::vector<Reference> References(int id);
    /// The roles linked to a user, each once, and the default role, by application, domain and name.
    std::vector<UserRole> OfUser(int userId);

    /// Adds a role; to be called in a transaction. @return the new id.
    int Create(const RoleData& role);
    /// Writes what is given of a role's name and description, and nothing else.
    void Change(int id, const std::optional<std::string>& name, const std::optional<std::string>& description);
    /// Deletes the role and what References counts.
    void Delete(int id);

    // ---- Members of roles, groups and views -------------------------------------------------------------------------

    /// Gives the users linked to a role, by any relation, or the members of a group or view, each once and by login
    /// name, to `take`, until it gives false.
    void UsersOf(ItemKey holder, const std::function<bool(const LinkedUser&)>& take);
    /// The groups and views that a user or group is a direct member of, also those that are gone; each once, views
    /// last.
    std::vector<ItemKey> HoldersOf(ItemKey member);
    bool IsMember(ItemKey holder, int userId);
    /// Makes a user a member. @return whether he was none before.
    bool Link(ItemKey holder, int userId);
    /// Ends what UsersOf lists. @return whether there was anything to end.
    bool Unlink(ItemKey holder, int userId);

    // ---- Job titles -------------------------------------------------------------------------------------------------

    /// The titles that users hold inside a group, by title and login name. @param title  empty: all titles.
    std::vector<HeldTitle> TitlesIn(int groupId, std::string_view title);
    /// The titles that a user holds, by group.
    std::vector<HeldTitle> TitlesOf(int userId);
    bool HoldsTitle(int groupId, int userId, std::string_view title);
    /// @throws Error (conflict), as does TakeTitle, when the engine takes another title that the user holds there for
    /// equal.
    void GiveTitle(const HeldTitle& title);
    /// Takes the title in all its spellings.
    void TakeTitle(int groupId, int userId, std::string_view title);

private:
    [[nodiscard]] CString EscapeLiteral(std::string_view text) const;
    bool HasRelation(ItemKey holder, int userId);
    std::vector<HeldTitle> Titles(const std::string& condition);
    static std::string ConditionOn(int groupId, int userId);
    /// The spellings in which a user holds a title.
    std::vector<std::string> HeldAs(int groupId, int userId, std::string_view title);
    void RequireDistinctTitle(int groupId, int userId, std::string_view title);
    template <class Write>
    void Save(std::string_view what, Write write);

    CAConnect& m_conn;
};

// ---- What an administrator does with roles ----

/// The role that an argument means: a name in the scope, case not counting, or "id:17" of any scope.
/// @throws Error (notFound), or (conflict) that lists what it may mean.
RoleKey FindRole(Roles& roles, const std::string& argument, const RoleScope& scope);
/// The roles that arguments mean, each once. @throws as FindRole, before anything is done, and names all that are not
/// found.
std::vector<RoleKey> FindRoles(Roles& roles, const std::vector<std::string>& arguments, const RoleScope& scope);

/// Adds a role. @return the new id. @throws Error (invalid) for what no role should be called, (conflict) when the name
/// is taken in its scope, case not counting, or a default role is there already.
int CreateRole(Roles& roles, const RoleData& role);

/// Sets name, description or both. @return whether anything was different before. @throws Error (isProtected) for a
/// new name of the default role or one that would make another role the default, (conflict) for a name that is taken;
/// to be called in a transaction.
bool ChangeRole(Roles& roles, const RoleKey& role, const std::optional<std::string>& name,
                const std::optional<std::string>& description);

/// Whether every user of this system has this role; such a role keeps its name and stays.
bool IsProtected(Roles& roles, const RoleKey& role);

/// "NAME (role N)", for sentences.
Sentence Named(const RoleKey& role);

} // namespace management
