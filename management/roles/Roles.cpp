#include "management/roles/Roles.h"

#include "basefun/ItemTypes.h"
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "directory/JobTitleItem.h"
#include "directory/RelationItem.h"
#include "directory/RoleItem.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/FindEach.h"
#include "management/Lengths.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/Resolve.h"
#include "management/Text.h"
#include "management/organisation/Links.h"
#include "management/users/LoginOrder.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace management {

namespace {

/// Sorts by a key that is worked out once for each.
template <class Item, class Key>
void SortBy(std::vector<Item>& items, Key key)
{
    std::vector<std::pair<decltype(key(items.front())), Item>> keyed;
    keyed.reserve(items.size());
    for (Item& item : items) {
        keyed.emplace_back(key(item), std::move(item));
    }
    std::ranges::sort(keyed, {}, [](const auto& entry) -> const auto& { return entry.first; });
    std::ranges::transform(keyed, items.begin(), [](auto& entry) { return std::move(entry.second); });
}

constexpr std::string_view kScopedColumns = "o.Col_ID, o.Col_Name, o.Col_Description, o.Col_AppName, o.Col_DomainID";

UserRole ReadUserRole(CARecordset& row, bool isDefault)
{
    UserRole role;
    ReadColumns(row, role.id, role.name, role.description, role.scope.application, role.scope.domainId);
    role.isDefault = isDefault;
    return role;
}

RoleKey FindById(Roles& roles, int id)
{
    const std::optional<RoleData> role = roles.Load(id);
    if (!role) {
        throw Error(ErrorCode::notFound, FillPattern("there is no role with id {}; `qvadmin role list` shows all", id));
    }
    return {id, role->name};
}

bool IsDefaultName(const std::string& name, const RoleScope& scope)
{
    return SameName(name, kDefaultRole) && SameName(scope.application, kOwnApplication);
}

void RequireFreeRoleName(Roles& roles, const std::string& name, const RoleScope& scope, std::optional<int> except)
{
    for (const RoleKey& other : roles.FindAll(name, scope)) {
        if (other.id != except) {
            throw Error(ErrorCode::conflict,
                        FillPattern("the role name {} is taken by {}", Quoted(name), Named(other)));
        }
    }
    const std::string others =
        fmt::format("Col_AppName = '{}' AND Col_DomainID = {} AND Col_ID <> {}",
                    EscapeLiteral(roles.Connection(), scope.application).View(), scope.domainId, except.value_or(0));
    if (const std::optional<RowName> other = FindConfused(roles.Connection(), "qv_Role", name, others)) {
        ThrowConfused(Translatable("role name"), name, *other);
    }
}

/// Refuses to let an engine take a role for that of every user by another spelling of its name. The change has been
/// made already, in a transaction: only asking tells.
void RequireNoOtherDefault(Roles& roles, int id, const std::string& name)
{
    const std::optional<RoleKey> everyone = roles.Default();
    if (everyone && everyone->id == id && name != kDefaultRole) {
        throw Error(ErrorCode::isProtected,
                    FillPattern("this database takes the role name {} for that of the role of every user; nothing was "
                                "changed, choose another",
                                Quoted(name)));
    }
}

void CheckNewName(Roles& roles, const RoleKey& role, const RoleData& stored, const std::string& name)
{
    CheckName("role", name);
    if (IsProtected(roles, role)) {
        throw Error(ErrorCode::isProtected,
                    FillPattern("{} is the role of every user and keeps its name", Named(role)));
    }
    RequireFreeRoleName(roles, name, stored.scope, role.id);
    if (IsDefaultName(name, stored.scope)) {
        throw Error(ErrorCode::isProtected, FillPattern("{} would become the role of every user, with all its rights; "
                                                        "`qvadmin role default --create` makes that role",
                                                        Named(role)));
    }
}

} // namespace

CString Roles::EscapeLiteral(std::string_view text) const { return management::EscapeLiteral(m_conn, text); }

/// Runs a write of a record that drops the reason of a failure.
template <class Write>
void Roles::Save(std::string_view what, Write write)
{
    if (!write()) {
        ThrowWriteError(m_conn, fmt::format("the {}", what));
    }
}

// ---- Roles ----------------------------------------------------------------------------------------------------------

std::vector<ListedRole> Roles::List(const RoleScope& scope)
{
    CUIntArray ids;
    CStringArray names;
    CStringArray descriptions;
    Run(m_conn, [&] {
        return CQVBaseFun::LoadRole(m_conn, EscapeLiteral(scope.application), scope.domainId, ids, names, descriptions);
    });
    std::unordered_map<int, int> members;
    EachRow(m_conn,
            fmt::format("SELECT r.Col_QvItemID, COUNT(DISTINCT r.Col_DQvItemID) FROM qv_Relation r INNER JOIN qv_User "
                        "u ON u.Col_ID = r.Col_DQvItemID WHERE r.Col_QvItemType = {} AND r.Col_DQvItemType = {} GROUP "
                        "BY r.Col_QvItemID",
                        kItemTypeRole, kItemTypeUser),
            [&](CARecordset& row) { members[NumberIn(row, 1)] = NumberIn(row, 2); });
    std::vector<ListedRole> roles;
    for (int i = 0; i < ids.GetSize(); ++i) {
        const int id = static_cast<int>(ids[i]);
        roles.push_back({id, Text(names[i]), Text(descriptions[i]), members[id]});
    }
    SortBy(roles, [](const ListedRole& role) { return std::tuple(NameKey(role.name), role.name, role.id); });
    return roles;
}

std::vector<RoleKey> Roles::FindAll(std::string_view name, const RoleScope& scope)
{
    CUIntArray ids;
    CStringArray names;
    Run(m_conn,
        [&] { return CQVBaseFun::LoadRole(m_conn, EscapeLiteral(scope.application), scope.domainId, ids, names); });
    const std::string key = NameKey(name);
    std::vector<RoleKey> found;
    for (int i = 0; i < ids.GetSize(); ++i) {
        if (NameKey(names[i].View()) == key) {
            found.push_back({static_cast<int>(ids[i]), Text(names[i])});
        }
    }
    std::ranges::sort(found, {}, &RoleKey::id);
    return found;
}

std::optional<RoleData> Roles::Load(int id)
{
    std::optional<RoleData> role;
    EachRow(m_conn,
            fmt::format("SELECT Col_Name, Col_Description, Col_AppName, Col_DomainID, Col_Creator_Name, Col_Dt_Create, "
                        "Col_ItemIndex, Col_Disabled, Col_Genre, Col_G_ClassID, Col_Type FROM qv_Role WHERE Col_ID = "
                        "{}",
                        id),
            [&role](CARecordset& row) {
                RoleData& data = role.emplace();
                ReadColumns(row, data.name, data.description, data.scope.application, data.scope.domainId, data.creator,
                            data.created, data.sortIndex, data.disabled, data.genre, data.classId, data.type);
            });
    return role;
}

std::optional<RoleKey> Roles::Default()
{
    int id = 0;
    CString name;
    CString description;
    Run(m_conn, [&] { return CQVBaseFun::GetDefaultRoleInfo(m_conn, id, name, description); });
    return id == 0 ? std::nullopt : std::optional(RoleKey{id, Text(name)});
}

std::vector<Reference> Roles::References(int id) { return CountReferences(m_conn, kItemTypeRole, {id}); }

std::vector<UserRole> Roles::OfUser(int userId)
{
    const std::optional<RoleKey> everyone = Default();
    const int defaultId = everyone ? everyone->id : 0;
    std::vector<UserRole> roles;
    // DISTINCT would compare descriptions; some engines cannot compare long texts.
    EachRow(m_conn,
            fmt::format("SELECT {} FROM qv_Role o WHERE o.Col_ID = {} OR o.Col_ID IN (SELECT Col_QvItemID FROM "
                        "qv_Relation WHERE Col_DQvItemID = {} AND Col_DQvItemType = {} AND Col_QvItemType = {})",
                        kScopedColumns, defaultId, userId, kItemTypeUser, kItemTypeRole),
            [&](CARecordset& row) {
                UserRole role = ReadUserRole(row, false);
                role.isDefault = role.id == defaultId;
                roles.push_back(std::move(role));
            });
    SortBy(roles, [](const UserRole& role) {
        return std::tuple(role.scope.application, role.scope.domainId, NameKey(role.name), role.name, role.id);
    });
    return roles;
}

int Roles::Create(const RoleData& role)
{
    RequireFits(m_conn, "qv_Role",
                {{"the name", "Col_Name", role.name},
                 {"the description", "Col_Description", role.description},
                 {"the application", "Col_AppName", role.scope.application},
                 {"the creator", "Col_Creator_Name", role.creator},
                 {"the genre", "Col_Genre", role.genre}});
    CRoleItem item;
    item.m_strName = EscapeLiteral(role.name);
    item.m_strDescription = EscapeLiteral(role.description);
    item.m_strAppName = EscapeLiteral(role.scope.application);
    item.m_nDomainID = role.scope.domainId;
    item.m_strCreatorName = EscapeLiteral(role.creator);
    item.m_nItemIndex = role.sortIndex;
    item.m_bDisabled = role.disabled;
    item.m_strGenre = EscapeLiteral(role.genre);
    item.m_nGClassID = role.classId;
    item.m_nType = role.type;
    Save("new role", [&] { return item.SaveData(m_conn); });
    return LastInsertedId(m_conn);
}

// The module's own change writes both columns.
void Roles::Change(int id, const std::optional<std::string>& name, const std::optional<std::string>& description)
{
    Assignments assignments(m_conn, "qv_Role");
    assignments.Text("Col_Name", "the name", name);
    assignments.Text("Col_Description", "the description", description);
    assignments.Apply(id);
}

void Roles::Delete(int id)
{
    Run(m_conn, [&] { return CQVBaseFun::DeleteRole(m_conn, id); });
    DeleteReferences(m_conn, kItemTypeRole, {id});
}

// ---- Members of roles, groups and views -----------------------------------------------------------------------------

void Roles::UsersOf(ItemKey holder, const std::function<bool(const LinkedUser&)>& take)
{
    const std::string order = OrderByLogin(m_conn);
    LoginOrder<LinkedUser> users(!order.empty(), std::numeric_limits<std::size_t>::max(), take);
    EachRow(
        m_conn,
        fmt::format("SELECT Col_ID, Col_LoginName, Col_Name FROM qv_User WHERE Col_ID IN (SELECT Col_DQvItemID "
                    "FROM qv_Relation WHERE Col_QvItemID = {} AND Col_QvItemType = {} AND Col_DQvItemType = {}{}){}",
                    holder.id, holder.type, kItemTypeUser,
                    holder.type == kItemTypeRole ? "" : fmt::format(" AND Col_RelType = {}", kMembership), order),
        [&users](CARecordset& row) {
            LinkedUser user;
            ReadColumns(row, user.id, user.login, user.name);
            return users.Add(std::move(user));
        });
    users.Finish();
}

std::vector<ItemKey> Roles::HoldersOf(ItemKey member)
{
    return management::HoldersOf(m_conn, member.type, {member.id})[member.id];
}

bool Roles::IsMember(ItemKey holder, int userId)
{
    bool exists = false;
    Run(m_conn,
        [&] { return CQVBaseFun::ExitMemberRelation(m_conn, holder.id, holder.type, userId, kItemTypeUser, exists); });
    return exists;
}

bool Roles::HasRelation(ItemKey holder, int userId)
{
    return Number(m_conn,
                  fmt::format("SELECT COUNT(*) FROM qv_Relation WHERE Col_QvItemID = {} AND Col_QvItemType = {} AND "
                              "Col_DQvItemID = {} AND Col_DQvItemType = {}",
                              holder.id, holder.type, userId, kItemTypeUser)) > 0;
}

bool Roles::Link(ItemKey holder, int userId)
{
    if (IsMember(holder, userId)) {
        return false;
    }
    CRelationItem relation;
    relation.m_nQvItemID = holder.id;
    relation.m_nQvItemType = holder.type;
    relation.m_nDQvItemID = userId;
    relation.m_nDQvItemType = kItemTypeUser;
    Run(m_conn, [&] { return relation.SaveData(m_conn) != 0; });
    return true;
}

bool Roles::Unlink(ItemKey holder, int userId)
{
    // A relation of any type makes a user have a role; members of groups and views are those of one type.
    const bool anyType = holder.type == kItemTypeRole;
    const bool isLinked = anyType ? HasRelation(holder, userId) : IsMember(holder, userId);
    const auto end = anyType ? &CQVBaseFun::DelRelation : &CQVBaseFun::DeleteRelation;
    if (isLinked) {
        Run(m_conn, [&] { return end(m_conn, holder.id, holder.type, userId, kItemTypeUser); });
    }
    return isLinked;
}

// ---- Job titles -----------------------------------------------------------------------------------------------------

std::vector<HeldTitle> Roles::Titles(const std::string& condition)
{
    std::vector<HeldTitle> titles;
    EachRow(m_conn,
            fmt::format("SELECT t.Col_QvItemID, t.Col_DQvItemID, t.Col_JobTitle, t.Col_JobTitle_Desc, u.Col_LoginName, "
                        "u.Col_Name, t.Col_DQvItemName FROM qv_JobTitle t LEFT JOIN qv_User u ON u.Col_ID = "
                        "t.Col_DQvItemID WHERE t.Col_QvItemType = {} AND t.Col_DQvItemType = {} AND {}",
                        kItemTypeGroup, kItemTypeUser, condition),
            [&titles](CARecordset& row) {
                HeldTitle& held = titles.emplace_back();
                ReadColumns(row, held.groupId, held.userId, held.title, held.description);
                const std::optional<std::string> login = OptionalTextIn(row, 5);
                held.login = login.value_or("");
                held.name = TextIn(row, login ? 6 : 7);
            });
    return titles;
}

std::vector<HeldTitle> Roles::TitlesIn(int groupId, std::string_view title)
{
    std::vector<HeldTitle> titles = Titles(fmt::format("t.Col_QvItemID = {}", groupId));
    if (!title.empty()) {
        std::erase_if(titles, [&](const HeldTitle& held) { return !SameName(held.title, title); });
    }
    SortBy(titles, [](const HeldTitle& held) {
        return std::tuple(NameKey(held.title), held.title, NameKey(held.login), held.userId);
    });
    return titles;
}

std::vector<HeldTitle> Roles::TitlesOf(int userId)
{
    std::vector<HeldTitle> titles = Titles(fmt::format("t.Col_DQvItemID = {}", userId));
    SortBy(titles, [](const HeldTitle& held) { return std::tuple(held.groupId, NameKey(held.title), held.title); });
    return titles;
}

std::string Roles::ConditionOn(int groupId, int userId)
{
    return fmt::format("Col_QvItemID = {} AND Col_QvItemType = {} AND Col_DQvItemID = {} AND Col_DQvItemType = {}",
                       groupId, kItemTypeGroup, userId, kItemTypeUser);
}

std::vector<std::string> Roles::HeldAs(int groupId, int userId, std::string_view title)
{
    std::vector<std::string> spellings;
    EachRow(m_conn, "SELECT Col_JobTitle FROM qv_JobTitle WHERE " + ConditionOn(groupId, userId),
            [&](CARecordset& row) {
                const std::string held = TextIn(row, 1);
                if (SameName(held, title) && std::ranges::find(spellings, held) == spellings.end()) {
                    spellings.push_back(held);
                }
            });
    return spellings;
}

bool Roles::HoldsTitle(int groupId, int userId, std::string_view title)
{
    return !HeldAs(groupId, userId, title).empty();
}

void Roles::RequireDistinctTitle(int groupId, int userId, std::string_view title)
{
    const std::string condition = ConditionOn(groupId, userId);
    if (const auto other = FindConfused(m_conn, "qv_JobTitle", "Col_DQvItemID", "Col_JobTitle", title, condition)) {
        throw Error(ErrorCode::conflict,
                    FillPattern("this database takes the title {} for equal to {}, which user {} holds; nothing was "
                                "changed, see what `qvadmin db status` says",
                                Quoted(title), Quoted(other->name), userId));
    }
}

void Roles::GiveTitle(const HeldTitle& title)
{
    RequireDistinctTitle(title.groupId, title.userId, title.title);
    RequireFits(
        m_conn, "qv_JobTitle",
        {{"the title", "Col_JobTitle", title.title}, {"the description", "Col_JobTitle_Desc", title.description}});
    CJobTitleItem item;
    item.m_nQvItemID = title.groupId;
    item.m_nDQvItemID = title.userId;
    item.m_strJobTitle = EscapeLiteral(title.title);
    item.m_strDescription = EscapeLiteral(title.description);
    item.m_strDQvItemName = EscapeLiteral(title.name);
    Save("new job title", [&] { return item.SaveData(m_conn); });
}

void Roles::TakeTitle(int groupId, int userId, std::string_view title)
{
    for (const std::string& held : HeldAs(groupId, userId, title)) {
        RequireDistinctTitle(groupId, userId, held);
        Run(m_conn, [&] {
            return CQVBaseFun::DeleteJobTitle(m_conn, groupId, kItemTypeGroup, userId, kItemTypeUser,
                                              EscapeLiteral(held));
        });
    }
}

// ---- What an administrator does with roles --------------------------------------------------------------------------

RoleKey FindRole(Roles& roles, const std::string& argument, const RoleScope& scope)
{
    if (const std::optional<int> id = IdIn(argument, Translatable("a role"))) {
        return FindById(roles, *id);
    }
    const std::vector<RoleKey> found = roles.FindAll(argument, scope);
    if (found.empty()) {
        throw Error(ErrorCode::notFound,
                    FillPattern("there is no role {} of {} in domain {}; `qvadmin role list` shows all",
                                Quoted(argument), Visible(scope.application), scope.domainId));
    }
    if (found.size() > 1) {
        std::vector<Candidate> candidates;
        candidates.reserve(found.size());
        for (const RoleKey& role : found) {
            candidates.push_back({Named(role), fmt::format("id:{}", role.id)});
        }
        ThrowAmbiguous(argument, candidates);
    }
    return found.front();
}

std::vector<RoleKey> FindRoles(Roles& roles, const std::vector<std::string>& arguments, const RoleScope& scope)
{
    return FindEach(
        arguments, Translatable("roles"), Translatable("`qvadmin role list` shows all"),
        [&](const std::string& argument) { return FindRole(roles, argument, scope); }, &RoleKey::id);
}

int CreateRole(Roles& roles, const RoleData& role)
{
    CheckName("role", role.name);
    RequireFreeRoleName(roles, role.name, role.scope, std::nullopt);
    // The module looks for the default role in all domains, so there must not be another one in any.
    const std::optional<RoleKey> everyone = roles.Default();
    if (everyone && IsDefaultName(role.name, role.scope)) {
        throw Error(ErrorCode::conflict, FillPattern("there is the role of every user already: {}", Named(*everyone)));
    }
    // Whether it is the default role must not depend on whether case counts for the engine.
    if (IsDefaultName(role.name, role.scope) &&
        (role.name != kDefaultRole || role.scope.application != kOwnApplication)) {
        throw Error(ErrorCode::isProtected,
                    FillPattern("some databases would take the role {} of {} for the role of every user; `qvadmin role "
                                "default --create` makes that role",
                                Quoted(role.name), Visible(role.scope.application)));
    }
    const int id = roles.Create(role);
    RequireNoOtherDefault(roles, id, role.name);
    return id;
}

bool ChangeRole(Roles& roles, const RoleKey& role, const std::optional<std::string>& name,
                const std::optional<std::string>& description)
{
    const std::optional<RoleData> stored = roles.Load(role.id);
    if (!stored) {
        throw Error(ErrorCode::notFound, FillPattern("there is no role with id {} any more", role.id));
    }
    const std::string newName = name.value_or(stored->name);
    const std::string newDescription = description.value_or(stored->description);
    if (newName == stored->name && newDescription == stored->description) {
        return false;
    }
    if (newName != stored->name) {
        CheckNewName(roles, role, *stored, newName);
    }
    roles.Change(role.id, name, description);
    if (newName != stored->name) {
        RequireNoOtherDefault(roles, role.id, newName);
    }
    return true;
}

bool IsProtected(Roles& roles, const RoleKey& role)
{
    // Which name the engine takes for the default role depends on how it compares; only asking tells.
    const std::optional<RoleKey> everyone = roles.Default();
    const std::optional<RoleData> data = roles.Load(role.id);
    return (everyone && everyone->id == role.id) ||
           (data && data->name == kDefaultRole && data->scope.application == kOwnApplication);
}

Sentence Named(const RoleKey& role) { return FillPattern("{} (role {})", Visible(role.name), role.id); }

} // namespace management
