#include "management/import/UserBlock.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "dbaccess/EngineKind.h"
#include "directory/RelationItem.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/RowsInsert.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>

namespace management {

namespace {

/// What the engine compares login names by.
std::string_view ComparedLogin(const CAConnect& conn)
{
    return dbaccess::EngineKindOf(conn) == dbaccess::EngineKind::comparesInCapitals ? "upper(Col_LoginName)"
                                                                                    : "Col_LoginName";
}

/// What users with one of the login names meet, case not counting as far as the engine can tell.
std::string ConditionOn(const CAConnect& conn, const std::vector<std::string>& logins)
{
    std::string list;
    const auto add = [&](std::string_view text) {
        list += fmt::format("{}'{}'", list.empty() ? "" : ", ", EscapeLiteral(conn, text).View());
    };
    for (const std::string& login : logins) {
        CString capitals{std::string_view(login)};
        capitals.MakeUpper();
        add(capitals.View());
        if (dbaccess::EngineKindOf(conn) != dbaccess::EngineKind::comparesInCapitals && capitals.View() != login) {
            add(login);
        }
    }
    return fmt::format("{} IN ({})", ComparedLogin(conn), list);
}

struct NewColumn {
    const Field* field;
    std::string absent; ///< the literal for a user who has no value for it
};

/// The columns that users have values for, and those that an engine has no value for by itself.
std::vector<NewColumn> ColumnsOf(std::span<const NewUser> users)
{
    std::set<const Field*> wanted = {FindField("login"), FindField("name"), FindField("ecard"), FindField("user_data")};
    for (const NewUser& user : users) {
        for (const auto& [field, value] : user.values) {
            wanted.insert(field);
        }
    }
    const CHumanItem untouched;
    std::vector<NewColumn> columns;
    columns.reserve(wanted.size());
    for (const Field* field : wanted) {
        columns.push_back({field, field->IsDate() ? "NULL" : field->IsText() ? "''" : WrittenBy(untouched, *field)});
    }
    return columns;
}

std::string LiteralIn(const CAConnect& conn, const NewUser& user, const NewColumn& column)
{
    const auto value = user.values.find(column.field);
    const bool isGiven = value != user.values.end() && value->second;
    if (!isGiven) {
        const bool isLogin = column.field->name == "login" || column.field->name == "name";
        return isLogin ? Literal(conn, user.login) : column.absent;
    }
    const bool isNumber = !column.field->IsText() && !column.field->IsDate();
    return isNumber ? *value->second : Literal(conn, *value->second);
}

} // namespace

UserBlock::UserBlock(CAConnect& conn, const std::vector<std::string>& logins, std::span<const Field* const> fields)
{
    if (logins.empty()) {
        return;
    }
    std::string columns;
    for (const Field* field : fields) {
        columns += fmt::format(", {}", field->column);
    }
    EachRow(conn,
            fmt::format("SELECT Col_ID, Col_LoginName{} FROM qv_User WHERE {} ORDER BY Col_ID", columns,
                        ConditionOn(conn, logins)),
            [&](CARecordset& row) {
                User user;
                ReadColumns(row, user.key.id, user.key.login);
                long column = 2;
                for (const Field* field : fields) {
                    user.stored[field] = OptionalTextIn(row, ++column);
                }
                m_users[NameKey(user.key.login)].push_back(std::move(user));
            });
    if (m_users.empty()) {
        return;
    }
    std::vector<std::string> added = logins;
    std::erase_if(added, [this](const std::string& login) { return !Find(NameKey(login)).empty(); });
    m_hasConfused = !added.empty() &&
                    Number(conn, fmt::format("SELECT COUNT(*) FROM qv_User WHERE {}", ConditionOn(conn, added))) > 0;
}

std::span<const UserBlock::User> UserBlock::Find(const std::string& key) const
{
    const auto found = m_users.find(key);
    return found == m_users.end() ? std::span<const User>() : found->second;
}

std::vector<int> UserBlock::Ids() const
{
    std::vector<int> ids;
    for (const auto& [key, users] : m_users) {
        std::ranges::transform(users, std::back_inserter(ids), [](const User& user) { return user.key.id; });
    }
    return ids;
}

void AddUsers(CAConnect& conn, std::span<const NewUser> users)
{
    const std::vector<NewColumn> columns = ColumnsOf(users);
    std::string names;
    for (const NewColumn& column : columns) {
        names += fmt::format("{}{}", names.empty() ? "" : ", ", column.field->column);
    }
    RowsInsert insert(conn, "qv_User", names);
    WithDatabaseErrors(conn, [&] {
        for (const NewUser& user : users) {
            insert.Add([&](std::string& sql) {
                std::string_view separator;
                for (const NewColumn& column : columns) {
                    sql += std::exchange(separator, ", ");
                    sql += LiteralIn(conn, user, column);
                }
            });
        }
        insert.Finish();
    });
}

std::optional<std::vector<int>> IdsOfAdded(CAConnect& conn, std::span<const NewUser> users)
{
    std::vector<std::string> logins;
    std::ranges::transform(users, std::back_inserter(logins), &NewUser::login);
    std::unordered_map<std::string, int> ids;
    bool isConfused = false;
    EachRow(conn,
            fmt::format("SELECT MAX(Col_LoginName), MAX(Col_ID), COUNT(*) FROM qv_User WHERE {} GROUP BY {}",
                        ConditionOn(conn, logins), ComparedLogin(conn)),
            [&](CARecordset& row) {
                ids[TextIn(row, 1)] = NumberIn(row, 2);
                isConfused = isConfused || NumberIn(row, 3) != 1;
            });
    std::vector<int> inOrder;
    for (const std::string& login : logins) {
        const auto found = ids.find(login);
        isConfused = isConfused || found == ids.end();
        inOrder.push_back(found == ids.end() ? 0 : found->second);
    }
    return isConfused ? std::nullopt : std::optional(inOrder);
}

void JoinDepartments(CAConnect& conn, const std::vector<int>& users)
{
    if (users.empty()) {
        return;
    }
    const CRelationItem membership;
    Execute(conn, fmt::format("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, "
                              "Col_RelType, Col_Ref, Col_ViewID) SELECT Col_DeptID, {}, Col_ID, {}, {}, {}, {} FROM "
                              "qv_User WHERE Col_ID IN ({}) ORDER BY Col_ID",
                              kItemTypeGroup, kItemTypeUser, kMembership, membership.m_nRef, membership.m_nViewID,
                              fmt::join(users, ", ")));
}

} // namespace management
