#include "schema/Dialect.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"
#include "schema/AccessStatements.h"
#include "schema/Steps.h"

namespace schema::access {

namespace {

// What the file itself is made of has flags.
constexpr const char* kListTables = "SELECT Name FROM MSysObjects WHERE Type = 1 AND Flags = 0";

// Directories are looked for in this table too, long after they are made.
void RequireAListOfTables(CAConnect& conn)
{
    try {
        CARecordset rs;
        rs.Open(kListTables, &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    } catch (const CAException& error) {
        throw CAException("the list of this file's tables cannot be read; give the user of the connection the right to "
                          "read MSysObjects (" +
                          error.GetErrorText() + ")");
    }
}

} // namespace

const Dialect& TheDialect()
{
    static const Dialect dialect{
        .steps =
            StepsOf({.tables = k_001_tables, .indexes = k_002_indexes, .audit = k_003_audit, .console = k_004_console}),
        .listTables = kListTables,
        .rebuildIndexes = {}, // the engine's own rules
        .stepIsTransaction = true,
        .locking = {}, // the engine has no lock that a program can name
        .lastId = "SELECT @@IDENTITY",
        .check = RequireAListOfTables,
        .copying = {.sortsRows = false, .nameBegin = '[', .nameEnd = ']', .rowsPerInsert = 1},
    };
    return dialect;
}

} // namespace schema::access
