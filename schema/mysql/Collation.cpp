#include "schema/mysql/Collation.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"
#include "platform/CodePage.h"
#include "schema/Tables.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <string_view>

namespace schema::mysql {

namespace {

std::vector<std::vector<std::string>> ReadRows(CAConnect& conn, const std::string& sql)
{
    std::vector<std::vector<std::string>> rows;
    CARecordset rs;
    for (rs.Open(sql.c_str(), &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable); rs.IsEOF() == 0;
         rs.MoveNext()) {
        std::vector<std::string>& row = rows.emplace_back();
        for (long column = 1; column <= rs.GetColumnCount(); ++column) {
            row.emplace_back(rs.GetValueToStr(column, true).View());
        }
    }
    return rows;
}

struct Known {
    std::string_view listed; ///< MariaDB lists the newer ones without their character set
    std::string_view name;
};

/// MariaDB's, then MySQL's, whose names newer servers of MariaDB know too.
constexpr std::array<Known, 3> kSuitable = {{{"uca1400_nopad_as_ci", "utf8mb4_uca1400_nopad_as_ci"},
                                             {"utf8mb4_uca1400_nopad_as_ci", "utf8mb4_uca1400_nopad_as_ci"},
                                             {"utf8mb4_0900_as_ci", "utf8mb4_0900_as_ci"}}};

/// The collation to give to tables; empty where the server has none that suits.
std::string BestCollation(CAConnect& conn)
{
    std::string names;
    for (const Known& known : kSuitable) {
        names += (names.empty() ? "'" : ", '") + std::string(known.listed) + "'";
    }
    std::set<std::string> listed;
    for (const auto& row :
         ReadRows(conn,
                  "SELECT COLLATION_NAME FROM information_schema.COLLATIONS WHERE COLLATION_NAME IN (" + names + ")")) {
        listed.insert(row.front());
    }
    const auto isListed = [&listed](const Known& known) { return listed.contains(std::string(known.listed)); };
    const auto* const best = std::ranges::find_if(kSuitable, isListed);
    return best == kSuitable.end() ? "" : std::string(best->name);
}

/// Whether a collation compares names as it should. Those of administrators' own choice may do as well as ours.
bool Suits(CAConnect& conn, const std::string& collation)
{
    if (!collation.starts_with("utf8mb4_")) {
        return false;
    }
    // As bytes, since texts may be sent in another character set: a, e acute, ya, two smileys, and a blank.
    const auto equal = [&collation](const std::string& a, const std::string& b) {
        return "(_utf8mb4 X'" + a + "' = _utf8mb4 X'" + b + "' COLLATE " + collation + ")";
    };
    const std::string sql = "SELECT CASE WHEN " + equal("61", "41") + " AND " + equal("C3A9", "C389") + " AND " +
                            equal("D18F", "D0AF") + " AND NOT " + equal("65", "C3A9") + " AND NOT " +
                            equal("F09F9880", "F09F9882") + " AND NOT " + equal("61", "6120") + " THEN 1 ELSE 0 END";
    return ReadRows(conn, sql).front().front() == "1";
}

/// A directory's tables, in their own order, each with a collation of its texts that does not suit.
struct Unsuitable {
    std::string table;
    std::string collation;
};

std::vector<Unsuitable> FindUnsuitable(CAConnect& conn)
{
    std::map<std::string, std::vector<std::string>> tablesOf;
    for (const auto& row : ReadRows(conn, "SELECT DISTINCT COLLATION_NAME, UPPER(TABLE_NAME) FROM "
                                          "information_schema.COLUMNS WHERE TABLE_SCHEMA = DATABASE() AND "
                                          "COLLATION_NAME IS NOT NULL")) {
        tablesOf[row[0]].push_back(row[1]);
    }
    std::map<std::string, std::string> collationOf;
    for (const auto& [collation, tables] : tablesOf) {
        if (!Suits(conn, collation)) {
            for (const std::string& table : tables) {
                collationOf[table] = collation;
            }
        }
    }
    std::vector<Unsuitable> found;
    for (const Table& table : TablesOf(TheDialect())) {
        if (const auto entry = collationOf.find(platform::UpperUtf8(table.name)); entry != collationOf.end()) {
            found.push_back({table.name, entry->second});
        }
    }
    return found;
}

// Of all texts only these are unique.
void RequireDistinctNotices(CAConnect& conn, const std::string& collation)
{
    const auto equal =
        ReadRows(conn, "SELECT GROUP_CONCAT(QUOTE(Col_ID) ORDER BY Col_ID SEPARATOR ', ') FROM Kel_Board "
                       "GROUP BY CONVERT(Col_ID USING utf8mb4) COLLATE " +
                           collation + " HAVING COUNT(*) > 1");
    if (!equal.empty()) {
        throw CAException(("the notices " + equal.front().front() +
                           " (Col_ID in Kel_Board) would have the same id in the collation " + collation +
                           "; delete all but one of them or give them other ids. Nothing was converted")
                              .c_str());
    }
}

} // namespace

std::vector<std::string> CollationStatements(CAConnect& conn)
{
    const std::string best = BestCollation(conn);
    const std::vector<Unsuitable> tables = best.empty() ? std::vector<Unsuitable>() : FindUnsuitable(conn);
    if (tables.empty()) {
        return {};
    }
    if (std::ranges::find(tables, "Kel_Board", &Unsuitable::table) != tables.end()) {
        RequireDistinctNotices(conn, best);
    }
    std::vector<std::string> statements;
    statements.reserve(tables.size());
    for (const Unsuitable& unsuitable : tables) {
        statements.push_back("ALTER TABLE " + unsuitable.table + " CONVERT TO CHARACTER SET utf8mb4 COLLATE " + best);
    }
    return statements;
}

std::optional<Shortcoming> FindCollationShortcoming(CAConnect& conn)
{
    const std::string best = BestCollation(conn);
    if (best.empty()) {
        return Shortcoming{"this server has no collation in which accents and emoji count, so that names which differ "
                           "in nothing else cannot be used side by side; MariaDB has one from version 10.10 on, MySQL "
                           "from 8.0 on",
                           false};
    }
    const std::vector<Unsuitable> tables = FindUnsuitable(conn);
    if (tables.empty()) {
        return std::nullopt;
    }
    const std::string table = tables.size() == 1
                                  ? tables.front().table
                                  : std::to_string(tables.size()) + " tables, such as " + tables.front().table + ",";
    return Shortcoming{"the collation " + tables.front().collation + " of " + table +
                           " takes different names for equal, such as rene and ren\xC3\xA9; an upgrade converts to " +
                           best,
                       true};
}

} // namespace schema::mysql
