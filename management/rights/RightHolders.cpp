#include "management/rights/RightHolders.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CARecordset.h"
#include "management/Escape.h"
#include "management/Query.h"
#include "management/rights/PermissionMask.h"
#include "management/roles/Roles.h"
#include "management/users/UserSelection.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

namespace management {

namespace {

constexpr int kNobody = -1;

std::uint32_t BitsOf(const RoleRow& row) { return static_cast<std::uint32_t>(row.power.value_or(0)); }

/// As the module reads a limit: unlimited where there is no row, or where the smallest power says so.
std::int64_t LimitOf(const std::vector<const RoleRow*>& rows)
{
    std::optional<int> smallest;
    std::optional<int> largest;
    for (const RoleRow* row : rows) {
        if (row->power) {
            smallest = std::min(*row->power, smallest.value_or(*row->power));
            largest = std::max(*row->power, largest.value_or(*row->power));
        }
    }
    return rows.empty() || smallest == kUnlimited ? kUnlimited : largest.value_or(0);
}

} // namespace

RightHolders::RightHolders(CAConnect& conn, std::string_view genre, std::string_view function, const Question& question)
    : m_conn(conn), m_question(question)
{
    const std::optional<RoleKey> everyone = Roles(conn).Default();
    m_defaultId = everyone ? everyone->id : 0;
    ReadRows(fmt::format("Col_FunGenre = {} AND Col_FunName = {}", Literal(conn, genre), Literal(conn, function)));
    ReadLinks();
}

void RightHolders::ReadRows(const std::string& function)
{
    std::map<int, std::string> names;
    EachRow(m_conn,
            fmt::format("SELECT Col_ID, Col_Name FROM qv_Role WHERE Col_AppName = {} AND Col_ID IN (SELECT "
                        "Col_QvItemID FROM qv_ItemAce WHERE {} AND Col_QvItemType = {})",
                        Literal(m_conn, kOwnApplication), function, kItemTypeRole),
            [&names](CARecordset& row) { names[NumberIn(row, 1)] = TextIn(row, 2); });
    EachRow(m_conn,
            fmt::format("SELECT Col_QvItemID, Col_Power FROM qv_ItemAce WHERE {} AND Col_QvItemType = {}", function,
                        kItemTypeRole),
            [&](CARecordset& row) {
                RoleRow found;
                ReadColumns(row, found.roleId, found.power);
                found.isDefault = found.roleId == m_defaultId;
                const auto name = names.find(found.roleId);
                found.role = name == names.end() ? "" : name->second;
                if (found.isDefault || name != names.end()) {
                    m_rows.push_back(std::move(found));
                }
            });
    std::ranges::sort(m_rows, {}, [](const RoleRow& row) { return std::tie(row.roleId, row.power); });
}

void RightHolders::ReadLinks()
{
    std::set<int> roles;
    std::ranges::transform(m_rows, std::inserter(roles, roles.end()), &RoleRow::roleId);
    if (roles.empty()) {
        return;
    }
    EachRow(m_conn,
            fmt::format("SELECT Col_DQvItemID, Col_QvItemID FROM qv_Relation WHERE Col_QvItemID IN ({}) AND "
                        "Col_QvItemType = {} AND Col_DQvItemType = {}",
                        fmt::join(roles, ", "), kItemTypeRole, kItemTypeUser),
            [this](CARecordset& row) { m_links.emplace_back(NumberIn(row, 1), NumberIn(row, 2)); });
    std::ranges::sort(m_links);
    m_links.erase(std::unique(m_links.begin(), m_links.end()), m_links.end());
}

std::int64_t RightHolders::CountLinked(int roleId) const
{
    return std::ranges::count(m_links, roleId, &std::pair<int, int>::second);
}

std::vector<const RoleRow*> RightHolders::RowsOf(int userId) const
{
    std::vector<const RoleRow*> rows;
    for (const RoleRow& row : m_rows) {
        if (row.isDefault || std::ranges::binary_search(m_links, std::pair(userId, row.roleId))) {
            rows.push_back(&row);
        }
    }
    return rows;
}

std::int64_t RightHolders::VerdictOf(const std::vector<const RoleRow*>& rows) const
{
    if (m_question.kind == Question::Kind::limit) {
        return LimitOf(rows);
    }
    std::uint32_t bits = 0;
    for (const RoleRow* row : rows) {
        bits |= BitsOf(*row);
    }
    return m_question.kind == Question::Kind::all ? bits : (bits & m_question.bits) != 0 ? 1 : 0;
}

void RightHolders::ListUsers(const std::function<bool(std::int64_t verdict)>& isWanted,
                             const std::function<bool(const RightHolder&)>& take) const
{
    // Who is linked to none of the roles has what everybody has.
    const bool isEverybody = isWanted(VerdictOf(RowsOf(kNobody)));
    std::set<int> roles;
    std::ranges::transform(m_rows, std::inserter(roles, roles.end()), &RoleRow::roleId);
    if (!isEverybody && roles.empty()) {
        return;
    }
    const UserSelection selection =
        isEverybody ? UserSelection()
                    : UserSelection(fmt::format("Col_ID IN (SELECT Col_DQvItemID FROM qv_Relation WHERE Col_QvItemID "
                                                "IN ({}) AND Col_QvItemType = {} AND Col_DQvItemType = {})",
                                                fmt::join(roles, ", "), kItemTypeRole, kItemTypeUser));
    const UserPage page{.fields = {FindField("name")}};
    management::ListUsers(m_conn, selection, page, [&](const UserRow& user) {
        RightHolder holder{{user.id, user.login}, user.values.front().value_or(""), 0, RowsOf(user.id)};
        holder.verdict = VerdictOf(holder.rows);
        return !isWanted(holder.verdict) || take(holder);
    });
}

} // namespace management
