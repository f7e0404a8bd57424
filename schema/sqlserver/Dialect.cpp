#include "schema/Dialect.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"
#include "schema/SqlserverStatements.h"
#include "schema/Steps.h"

namespace schema::sqlserver {

namespace {

// Statements spell tables and columns in several ways, and look for names in whatever case they come.
void RequireTextsOfAnyCase(CAConnect& conn)
{
    constexpr int kIgnoresCase = 1;
    CARecordset rs;
    int style = 0;
    rs.Open("SELECT CAST(COLLATIONPROPERTY(CAST(DATABASEPROPERTYEX(DB_NAME(), 'Collation') AS nvarchar(128)), "
            "'ComparisonStyle') AS int)",
            &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    rs.GetValue(1, style);
    if ((style & kIgnoresCase) == 0) {
        throw CAException("this database tells names and texts apart by case, and a directory cannot be kept in it; "
                          "make it with a collation that has CI in its name, such as "
                          "Latin1_General_100_CI_AS_SC_UTF8");
    }
}

} // namespace

const Dialect& TheDialect()
{
    static const Dialect dialect{
        .steps =
            StepsOf({.tables = k_001_tables, .indexes = k_002_indexes, .audit = k_003_audit, .console = k_004_console}),
        .listTables = "SELECT TABLE_NAME FROM INFORMATION_SCHEMA.TABLES WHERE TABLE_TYPE = 'BASE TABLE' AND "
                      "TABLE_SCHEMA = SCHEMA_NAME()",
        .rebuildIndexes = {}, // the engine's own rules
        .stepIsTransaction = true,
        // The session's, since with some drivers a transaction has not begun before a table is touched. The procedure
        // only answers with a number when it waited in vain. No semicolons: connections take one statement at a time.
        .locking = {.take = "DECLARE @given int EXEC @given = sp_getapplock @Resource = 'qv_Directory', "
                            "@LockMode = 'Exclusive', @LockOwner = 'Session', @LockTimeout = {seconds}000 "
                            "IF @given < 0 RAISERROR('the lock was not given', 16, 1)",
                    .release = "EXEC sp_releaseapplock @Resource = 'qv_Directory', @LockOwner = 'Session'",
                    .timeoutCode = " 50000"},
        .lastId = "SELECT CAST(@@IDENTITY AS int)",
        .check = RequireTextsOfAnyCase,
        .listLengths = "SELECT COLUMN_NAME, CHARACTER_MAXIMUM_LENGTH FROM INFORMATION_SCHEMA.COLUMNS "
                       "WHERE TABLE_SCHEMA = SCHEMA_NAME() AND TABLE_NAME = '{table}'",
        .lengthsInUtf16 = true,
        .mayWrite = "SELECT CASE WHEN HAS_PERMS_BY_NAME('qv_User', 'OBJECT', 'INSERT') = 1 AND "
                    "HAS_PERMS_BY_NAME('qv_User', 'OBJECT', 'UPDATE') = 1 AND "
                    "DATABASEPROPERTYEX(DB_NAME(), 'Updateability') = 'READ_WRITE' THEN 1 ELSE 0 END",
        .copying = {.beginReading = {"SET TRANSACTION ISOLATION LEVEL SERIALIZABLE", "BEGIN TRANSACTION"},
                    .endReading = {"SET TRANSACTION ISOLATION LEVEL READ COMMITTED"},
                    .identity = "SELECT CONCAT(@@SERVERNAME, ' ', DB_NAME(), ' ', SCHEMA_NAME())",
                    .countNow = "SELECT COUNT(*) FROM {table} WITH (TABLOCK, HOLDLOCK)",
                    .nameBegin = '[',
                    .nameEnd = ']',
                    .beginIds = "SET IDENTITY_INSERT {table} ON",
                    .endIds = "SET IDENTITY_INSERT {table} OFF",
                    .stringPrefix = "N",
                    .greatestId = "SELECT CAST(last_value AS bigint) FROM sys.identity_columns "
                                  "WHERE object_id = OBJECT_ID('{table}')"},
    };
    return dialect;
}

} // namespace schema::sqlserver
