#include "schema/Dialect.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"
#include "schema/MysqlStatements.h"
#include "schema/StatementSplitter.h"

namespace schema::mysql {

namespace {

// Statements spell some tables in two ways.
void RequireTableNamesOfAnyCase(CAConnect& conn)
{
    CARecordset rs;
    int setting = 0;
    rs.Open("SELECT @@lower_case_table_names", &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    rs.GetValue(1, setting);
    if (setting == 0) {
        throw CAException("this server tells the names of tables apart by case, and a directory cannot be kept on it; "
                          "set lower_case_table_names=1 in its configuration (a MySQL server wants that before its "
                          "first start)");
    }
}

} // namespace

const Dialect& TheDialect()
{
    static const Dialect dialect{
        .steps = {{"tables", SplitStatements(k_001_tables)}, {"indexes", {}}}, // indexes come with their tables
        .listTables = "SELECT TABLE_NAME FROM information_schema.TABLES WHERE TABLE_SCHEMA = DATABASE()",
        .rebuildIndexes = {},
        .stepIsTransaction = false,
        .lock = "SELECT GET_LOCK(CONCAT('qv_Schema.', DATABASE()), 600)",
        .unlock = "SELECT RELEASE_LOCK(CONCAT('qv_Schema.', DATABASE()))",
        .check = RequireTableNamesOfAnyCase,
    };
    return dialect;
}

} // namespace schema::mysql
