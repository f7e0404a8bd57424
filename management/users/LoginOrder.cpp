#include "management/users/LoginOrder.h"

#include "dbaccess/CAConnect.h"
#include "management/DatabaseError.h"

namespace management {

std::string OrderByLogin(const CAConnect& conn)
{
    const CString engine = WithDatabaseErrors(conn, [&] { return conn.GetEngineName(); });
    const auto isMadeBy = [&engine](std::string_view name) { return engine.View().starts_with(name); };
    if (isMadeBy("SQLite")) {
        return " ORDER BY upper(Col_LoginName), Col_LoginName, Col_ID";
    }
    if (isMadeBy("PostgreSQL")) {
        return R"( ORDER BY upper(Col_LoginName) COLLATE "C" NULLS FIRST, Col_LoginName COLLATE "C", Col_ID)";
    }
    if (isMadeBy("MariaDB") || isMadeBy("MySQL")) {
        return " ORDER BY CAST(UPPER(Col_LoginName) AS BINARY), CAST(Col_LoginName AS BINARY), Col_ID";
    }
    return {};
}

} // namespace management
