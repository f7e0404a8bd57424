#include "schema/Privileges.h"

#include "dbaccess/CARecordset.h"
#include "schema/Dialect.h"

namespace schema {

bool MayWrite(CAConnect& conn)
{
    const std::string& query = DialectOf(conn).mayWrite;
    if (query.empty()) {
        return true;
    }
    CARecordset rs;
    int may = 0;
    rs.Open(query.c_str(), &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    rs.GetValue(1, may);
    return may != 0;
}

} // namespace schema
