#include "management/users/LoginOrder.h"

#include "dbaccess/CAConnect.h"
#include "management/DatabaseError.h"

#include <fmt/format.h>

namespace management {

namespace {

/// An engine whose order is known.
struct OrderedEngine {
    std::string_view login;    ///< the order by login names
    std::string_view text;     ///< what makes a text of a column sort so
    std::string_view first;    ///< what puts NULL before all else
    std::string_view lastDown; ///< the same where the order is turned round
};

constexpr OrderedEngine kSqlite = {"upper(Col_LoginName), Col_LoginName, Col_ID", "upper({})", "", ""};
constexpr OrderedEngine kPostgresql = {
    R"(upper(Col_LoginName) COLLATE "C" NULLS FIRST, Col_LoginName COLLATE "C", Col_ID)", R"(upper({}) COLLATE "C")",
    " NULLS FIRST", " NULLS LAST"};
constexpr OrderedEngine kMysql = {"CAST(UPPER(Col_LoginName) AS BINARY), CAST(Col_LoginName AS BINARY), Col_ID",
                                  "CAST(UPPER({}) AS BINARY)", "", ""};

const OrderedEngine* EngineOf(const CAConnect& conn)
{
    const CString name = WithDatabaseErrors(conn, [&] { return conn.GetEngineName(); });
    const auto isMadeBy = [&name](std::string_view maker) { return name.View().starts_with(maker); };
    return isMadeBy("SQLite")                         ? &kSqlite
           : isMadeBy("PostgreSQL")                   ? &kPostgresql
           : isMadeBy("MariaDB") || isMadeBy("MySQL") ? &kMysql
                                                      : nullptr;
}

} // namespace

std::string OrderByLogin(const CAConnect& conn)
{
    const OrderedEngine* engine = EngineOf(conn);
    return engine == nullptr ? "" : fmt::format(" ORDER BY {}", engine->login);
}

std::string OrderBy(const CAConnect& conn, const Field& field, bool isDescending)
{
    const OrderedEngine* engine = EngineOf(conn);
    if (engine == nullptr) {
        return {};
    }
    if (field.name == "login" && !isDescending) {
        return OrderByLogin(conn);
    }
    const std::string key =
        field.IsText() ? fmt::format(fmt::runtime(engine->text), field.column) : std::string(field.column);
    return fmt::format(" ORDER BY {}{}, {}", key,
                       isDescending ? fmt::format(" DESC{}", engine->lastDown) : std::string(engine->first),
                       engine->login);
}

} // namespace management
