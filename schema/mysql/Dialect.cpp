#include "schema/Dialect.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"
#include "schema/MysqlStatements.h"
#include "schema/Steps.h"
#include "schema/mysql/Collation.h"

namespace schema::mysql {

namespace {

// MySQL 8 keeps what it tells of tables for a day; MariaDB has no such setting.
constexpr const char* kFreshStatistics =
    "SET SESSION autocommit = 1 /*!80000 , SESSION information_schema_stats_expiry = 0 */";

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

// Rights that the account has by a role or as anybody belong to names without a host.
constexpr const char* kMayWrite =
    "SELECT CASE WHEN @@global.read_only = 0 AND COUNT(DISTINCT PRIVILEGE_TYPE) = 2 THEN 1 ELSE 0 END FROM ("
    "SELECT GRANTEE, PRIVILEGE_TYPE FROM information_schema.USER_PRIVILEGES UNION ALL "
    "SELECT GRANTEE, PRIVILEGE_TYPE FROM information_schema.SCHEMA_PRIVILEGES WHERE DATABASE() LIKE TABLE_SCHEMA "
    "UNION ALL SELECT GRANTEE, PRIVILEGE_TYPE FROM information_schema.TABLE_PRIVILEGES "
    "WHERE TABLE_SCHEMA = DATABASE() AND TABLE_NAME = 'qv_User') AS given "
    "WHERE PRIVILEGE_TYPE IN ('INSERT', 'UPDATE') AND (GRANTEE NOT LIKE '%@%' OR GRANTEE LIKE '%@''''' OR "
    "GRANTEE = CONCAT('''', REPLACE(CURRENT_USER(), '@', '''@'''), ''''))";

} // namespace

const Dialect& TheDialect()
{
    static const Dialect dialect{
        .steps = StepsOf(
            {.tables = k_001_tables, .audit = k_003_audit, .console = k_004_console, .namesOf = CollationStatements}),
        .listTables = "SELECT TABLE_NAME FROM information_schema.TABLES WHERE TABLE_SCHEMA = DATABASE()",
        .rebuildIndexes = {},
        .stepIsTransaction = false,
        // The server's, whatever the database: names are of 64 characters at most, and a database's may have as many.
        .locking = {.take = "SELECT GET_LOCK(CONCAT('qv_Directory.', MD5(LOWER(DATABASE()))), {seconds})",
                    .release = "SELECT RELEASE_LOCK(CONCAT('qv_Directory.', MD5(LOWER(DATABASE()))))",
                    .givesOne = true},
        .lastId = "SELECT LAST_INSERT_ID()",
        .check = RequireTableNamesOfAnyCase,
        .findShortcoming = FindCollationShortcoming,
        .listLengths = "SELECT COLUMN_NAME, CHARACTER_MAXIMUM_LENGTH FROM information_schema.COLUMNS "
                       "WHERE TABLE_SCHEMA = DATABASE() AND TABLE_NAME = '{table}'",
        .mayWrite = kMayWrite,
        .copying = {.beginReading = {kFreshStatistics, "SET TRANSACTION ISOLATION LEVEL REPEATABLE READ",
                                     "START TRANSACTION WITH CONSISTENT SNAPSHOT, READ ONLY"},
                    .identity = "SELECT CONCAT_WS(' ', @@hostname, @@port, @@server_id, @@datadir, DATABASE())",
                    // Else a written 0 would be taken for no id, and the count would not hold what lies between rows.
                    .beginWriting = {"SET SESSION sql_mode = CONCAT(@@sql_mode, ',NO_AUTO_VALUE_ON_ZERO')",
                                     "SET SESSION TRANSACTION ISOLATION LEVEL REPEATABLE READ"},
                    .countNow = "SELECT COUNT(*) FROM {table} LOCK IN SHARE MODE",
                    .nameBegin = '`',
                    .nameEnd = '`',
                    .longestStatement = "max_allowed_packet",
                    .greatestId = "SELECT AUTO_INCREMENT - 1 FROM information_schema.TABLES "
                                  "WHERE TABLE_SCHEMA = DATABASE() AND TABLE_NAME = '{table}'"},
    };
    return dialect;
}

} // namespace schema::mysql
