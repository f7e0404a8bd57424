#include "management/import/UserBlock.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "dbaccess/EngineKind.h"
#include "directory/RelationItem.h"
#include "management/Escape.h"
#include "management/Names.h"
#include "management/Query.h"

#include <fmt/format.h>

#include <algorithm>

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

std::optional<std::vector<int>> IdsOfAdded(CAConnect& conn, const std::vector<std::string>& logins)
{
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

void ClearBirthdays(CAConnect& conn, const std::vector<int>& users)
{
    if (!users.empty()) {
        Execute(conn,
                fmt::format("UPDATE qv_User SET Col_Birthday = NULL WHERE Col_ID IN ({})", fmt::join(users, ", ")));
    }
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
