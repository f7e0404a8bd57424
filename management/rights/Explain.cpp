#include "management/rights/Explain.h"

#include "basefun/ItemTypes.h"
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/Query.h"
#include "management/rights/PermissionMask.h"
#include "management/roles/Roles.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace management {

namespace {

using Asked = Question::Kind;

constexpr std::uint32_t kPublishBit = 1;

/// The function's texts as statements have them.
struct FunctionTexts {
    CString genre;
    CString name;
};

// ---- What the module says -------------------------------------------------------------------------------------------

/// Runs an operation and notes what it returns and what it leaves in its output.
template <class Output, class Operation>
void Note(Explanation& explanation, Operation operation)
{
    Output output{};
    explanation.ran = operation(output);
    explanation.verdict = static_cast<std::int64_t>(output);
}

void Ask(CAConnect& conn, int userId, const FunctionTexts& function, const Question& question, Explanation& explanation)
{
    const CString& genre = function.genre;
    const CString& name = function.name;
    if (question.kind == Asked::limit) {
        Note<int>(explanation,
                  [&](int& limit) { return CQVBaseFun::GetRateLimitACE(conn, userId, genre, name, limit); });
    } else if (question.kind == Asked::guest) {
        Note<bool>(explanation,
                   [&](bool& allowed) { return CQVBaseFun::GetACEGuestUser(conn, userId, genre, name, allowed); });
    } else if (question.kind == Asked::all) {
        Note<unsigned long>(explanation, [&](unsigned long& rights) {
            return CQVBaseFun::GetHMBaseACE(conn, userId, genre, name, rights);
        });
    } else if (question.kind == Asked::bit && question.bits == kPublishBit) {
        Note<bool>(explanation,
                   [&](bool& allowed) { return CQVBaseFun::GetAfficheACE(conn, userId, genre, name, allowed); });
    } else {
        Note<int>(explanation,
                  [&](int& has) { return CQVBaseFun::HaveBaseACE(conn, userId, genre, name, question.bits, has); });
    }
}

// ---- The rows behind it ---------------------------------------------------------------------------------------------

/// Who of the roles in the filter is there for which reason.
struct RoleSet {
    std::set<int> linked;
    int defaultId = 0; ///< 0: missing
};

RoleSet LoadRoleSet(CAConnect& conn, int userId)
{
    CUIntArray ids;
    RoleSet set;
    if (!CQVBaseFun::LoadHMRole(conn, userId, ids) || !CQVBaseFun::GetDefaultRoleID(conn, set.defaultId)) {
        throw ModuleError(conn);
    }
    // The last one is of the default role, also where there is none.
    for (int i = 0; i + 1 < ids.GetSize(); ++i) {
        set.linked.insert(static_cast<int>(ids[i]));
    }
    return set;
}

std::string NameOfRole(Roles& roles, int id)
{
    const std::optional<RoleData> role = roles.Load(id);
    return role ? role->name : "";
}

/// The module's own statement, which has the powers only, with the holder beside it. No index holds a power, so the
/// engine finds the rows in the same way, and the order is the same.
std::vector<ConsideredRow> LoadRows(CAConnect& conn, const RoleSet& set, const FunctionTexts& function,
                                    const CString& filter)
{
    std::vector<ConsideredRow> rows;
    EachRow(conn,
            fmt::format("SELECT Col_Power, Col_QvItemID FROM qv_ItemAce WHERE Col_FunGenre = '{}' AND Col_FunName = "
                        "'{}' AND ( {} )",
                        function.genre.View(), function.name.View(), filter.View()),
            [&](CARecordset& row) {
                ConsideredRow& considered = rows.emplace_back();
                ReadColumns(row, considered.power, considered.roleId);
                considered.isLinked = set.linked.contains(considered.roleId);
                considered.isDefault = considered.roleId == set.defaultId;
            });
    Roles roles(conn);
    for (ConsideredRow& row : rows) {
        row.role = NameOfRole(roles, row.roleId);
    }
    return rows;
}

std::vector<IgnoredRow> LoadIgnored(CAConnect& conn, int userId, const FunctionTexts& function, const CString& filter)
{
    const std::string holders =
        fmt::format("Col_QvItemID IN (SELECT Col_QvItemID FROM qv_Relation WHERE Col_DQvItemID = {} AND "
                    "Col_DQvItemType = {} AND Col_QvItemType = ",
                    userId, kItemTypeUser);
    std::vector<IgnoredRow> rows;
    EachRow(conn,
            fmt::format("SELECT Col_QvItemType, Col_QvItemID, Col_Power FROM qv_ItemAce WHERE Col_FunGenre = '{0}' AND "
                        "Col_FunName = '{1}' AND ((Col_QvItemType = {2} AND Col_QvItemID = {3}) OR (Col_QvItemType = "
                        "{4} AND {5}{4} AND Col_RelType = {6})) OR (Col_QvItemType = {7} AND {5}{7}) AND NOT ({8}))) "
                        "ORDER BY Col_QvItemType, Col_QvItemID",
                        function.genre.View(), function.name.View(), kItemTypeUser, userId, kItemTypeGroup, holders,
                        kMembership, kItemTypeRole, filter.View()),
            [&rows](CARecordset& row) {
                IgnoredRow& ignored = rows.emplace_back();
                ReadColumns(row, ignored.holder.type, ignored.holder.id, ignored.power);
            });
    return rows;
}

// ---- Which of them decide -------------------------------------------------------------------------------------------

/// Marks the first row that fits as the one that decides alone. @return whether there is one.
template <class Fits>
bool MarkDecisive(Explanation& explanation, Fits fits)
{
    const auto row = std::ranges::find_if(explanation.rows, fits, &ConsideredRow::power);
    if (row == explanation.rows.end()) {
        return false;
    }
    row->decides = true;
    explanation.decidedBy = static_cast<std::size_t>(row - explanation.rows.begin());
    return true;
}

void DecideBits(Explanation& explanation, std::uint32_t bits)
{
    const auto hasBit = [bits](const std::optional<int>& power) {
        return (static_cast<std::uint32_t>(power.value_or(0)) & bits) != 0;
    };
    explanation.reason = MarkDecisive(explanation, hasBit) ? Reason::bit : Reason::noBit;
}

void DecideTogether(Explanation& explanation)
{
    explanation.reason = Reason::together;
    for (ConsideredRow& row : explanation.rows) {
        row.decides = row.power.value_or(0) != 0;
    }
}

/// Only a smallest power of exactly -1 means unlimited: beside one below that, -1 is a number like others.
void DecideLimit(Explanation& explanation)
{
    std::optional<int> smallest;
    std::optional<int> largest;
    for (const ConsideredRow& row : explanation.rows) {
        if (row.power) {
            smallest = std::min(*row.power, smallest.value_or(*row.power));
            largest = std::max(*row.power, largest.value_or(*row.power));
        }
    }
    const bool isUnlimited = smallest == kUnlimited;
    explanation.reason = isUnlimited ? Reason::unlimitedRow : Reason::largestRow;
    const std::optional<int> wanted = isUnlimited ? smallest : largest;
    MarkDecisive(explanation, [&wanted](const std::optional<int>& power) { return power && power == wanted; });
}

void Decide(Explanation& explanation, const Question& question)
{
    if (explanation.rows.empty()) {
        explanation.reason = Reason::noRow;
    } else if (question.kind == Asked::limit) {
        DecideLimit(explanation);
    } else if (question.kind == Asked::all) {
        DecideTogether(explanation);
    } else if (question.kind == Asked::guest) {
        explanation.reason = Reason::firstRow;
        MarkDecisive(explanation, [](const std::optional<int>&) { return true; });
    } else {
        DecideBits(explanation, question.bits);
    }
}

} // namespace

Explanation Explain(CAConnect& conn, int userId, std::string_view genre, std::string_view function,
                    const Question& question)
{
    const FunctionTexts escaped{EscapeLiteral(conn, genre), EscapeLiteral(conn, function)};
    Explanation explanation;
    CQVBaseFun::m_strLastError.Empty();
    CString filter;
    const bool hasRoles = CQVBaseFun::GetHMRoleQueryParam(conn, userId, filter) && !filter.IsEmpty();
    if (!hasRoles) {
        explanation.trouble = ModuleError(conn).EngineLine();
    }
    Ask(conn, userId, escaped, question, explanation);
    if (!hasRoles && !explanation.ran) {
        return explanation;
    }
    if (!hasRoles || !explanation.ran) {
        throw ModuleError(conn);
    }
    const RoleSet set = LoadRoleSet(conn, userId);
    explanation.lacksDefault = set.defaultId == 0;
    explanation.rows = LoadRows(conn, set, escaped, filter);
    explanation.ignored = LoadIgnored(conn, userId, escaped, filter);
    Decide(explanation, question);
    return explanation;
}

} // namespace management
