#include "bench/RoleRights.h"

#include "bench/ByHand.h"

namespace bench {

namespace {

/// Have no divisor in common with what they are taken modulo, so that their multiples reach everything.
constexpr std::size_t kUserStride = 7919;
constexpr std::size_t kFunctionStride = 211;

// The numbers from 1 to `last` as the column id of a table ids.
std::string Ids(int last)
{
    return "WITH RECURSIVE ids(id) AS (SELECT 1 UNION ALL SELECT id + 1 FROM ids WHERE id < " + std::to_string(last) +
           ") ";
}

} // namespace

int RoleRights::UserOf(std::size_t call) const
{
    return EveryUser() * (1 + static_cast<int>(call * kUserStride % static_cast<std::size_t>(UsersWithRoles())));
}

std::string RoleRights::FunctionOf(std::size_t call)
{
    return "Function " + std::to_string(call * kFunctionStride % std::size_t{kFunctions});
}

void RoleRights::Insert(ByHand& db) const
{
    const std::string functions = ", functions(f) AS (SELECT 0 UNION ALL SELECT f + 1 FROM functions WHERE f < " +
                                  std::to_string(kFunctions - 1) + ") ";
    const std::string ids = Ids(kRoles);
    const std::string idsAndFunctions = ids.substr(0, ids.size() - 1) + functions;
    db.Run((ids + "INSERT INTO qv_Role (Col_ID, Col_Name, Col_AppName) SELECT id, CASE id WHEN 1 THEN 'everyone' ELSE "
                  "'Role ' || id END, 'Tolvan' FROM ids")
               .c_str());
    // Rights are given function by function, as they come with a program's versions. No power has the bits 1 and 8 that
    // are asked for: every row is read.
    db.Run((idsAndFunctions +
            "INSERT INTO qv_ItemAce (Col_QvItemID, Col_QvItemType, Col_FunName, Col_FunGenre, Col_Power, Col_UnPower) "
            "SELECT id, 3, 'Function ' || f, '" +
            kGenre + "', 16 * (1 + (id * 7 + f) % 60), 0 FROM functions, ids ORDER BY f, id")
               .c_str());
    db.Run((ids +
            "INSERT INTO qv_BIIAce (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, Col_FunName, "
            "Col_FunGenre, Col_Power, Col_UnPower) SELECT id, 3, 1 + (id * 3 + views.v) % " +
            std::to_string(kViews) +
            ", 4, 'See', 'Views', 1, 0 FROM ids, (SELECT 0 AS v UNION ALL SELECT 1 UNION ALL SELECT 2) AS views")
               .c_str());
    db.Run((Ids(UsersWithRoles()) +
            "INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, Col_RelType, "
            "Col_Ref, Col_ViewID) SELECT 2 + (id * 37 + n.k * 41) % " +
            std::to_string(kRoles - 1) + ", 3, id * " + std::to_string(EveryUser()) +
            ", 1, 1, 0, 0 FROM ids, (SELECT 0 AS k UNION ALL SELECT 1 UNION ALL SELECT 2 UNION ALL SELECT 3 UNION ALL "
            "SELECT 4) AS n")
               .c_str());
}

} // namespace bench
