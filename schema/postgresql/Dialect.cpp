#include "schema/Dialect.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"
#include "schema/PostgresqlStatements.h"
#include "schema/Steps.h"

namespace schema::postgresql {

namespace {

constexpr const char* kReadCommitted = "SET SESSION CHARACTERISTICS AS TRANSACTION ISOLATION LEVEL READ COMMITTED";

CString TextOf(CAConnect& conn, const char* query)
{
    CString text;
    CARecordset rs;
    rs.Open(query, &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    rs.GetValue(1, text, true);
    return text;
}

// Names are found through upper(), which has to fold what CString::MakeUpper folds. 233 and 1103 are letters whose
// capitals are 201 and 1071. Other encodings refuse them in a statement.
void RequireCapitalsOfAllLetters(CAConnect& conn)
{
    const CString advice = "; make it with ENCODING 'UTF8', LOCALE 'C.UTF-8' and TEMPLATE template0";
    const CString encoding = TextOf(conn, "SELECT current_setting('server_encoding')");
    if (encoding != "UTF8") {
        throw CAException("this database cannot hold all letters, being in " + encoding + advice);
    }
    if (TextOf(conn, R"(SELECT CASE WHEN upper(U&'\00e9\044f') = U&'\00c9\042f' THEN 1 ELSE 0 END)") != "1") {
        throw CAException("the capitals of this database are those of a to z alone, so that login names could not be "
                          "found" +
                          advice);
    }
}

} // namespace

const Dialect& TheDialect()
{
    static const Dialect dialect{
        .steps =
            StepsOf({.tables = k_001_tables, .indexes = k_002_indexes, .audit = k_003_audit, .console = k_004_console}),
        .listTables = "SELECT tablename FROM pg_catalog.pg_tables WHERE schemaname = current_schema()",
        .rebuildIndexes = {}, // upper() is the server's own
        .stepIsTransaction = true,
        .locking = {.beforeBegin = {kReadCommitted},
                    // One statement, after which the connection's own longest wait for a lock holds again.
                    .take = "DO 'DECLARE present text := current_setting(''lock_timeout''); BEGIN "
                            "PERFORM set_config(''lock_timeout'', ''{seconds}s'', true); "
                            "PERFORM pg_advisory_xact_lock(hashtext(''qv_Directory'')); "
                            "PERFORM set_config(''lock_timeout'', present, true); END'",
                    .timeoutCode = "55P03"},
        .lastId = "SELECT lastval()",
        .check = RequireCapitalsOfAllLetters,
        .listLengths = "SELECT column_name, character_maximum_length FROM information_schema.columns "
                       "WHERE table_schema = current_schema() AND table_name = lower('{table}')",
        .mayWrite = "SELECT CASE WHEN has_table_privilege('qv_user', 'INSERT') AND has_table_privilege('qv_user', "
                    "'UPDATE') AND current_setting('transaction_read_only') = 'off' THEN 1 ELSE 0 END",
        // Whoever asks for some hundred rows of a table without statistics has all of it read. The cost of what is
        // turned off would have the server compile those statements that have no index.
        .preferIndexes = "SELECT set_config('enable_seqscan', 'off', true), set_config('jit', 'off', true)",
        .copying = {.beginReading = {"BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY"},
                    .identity = "SELECT concat_ws(' ', extract(epoch FROM pg_postmaster_start_time()), oid, "
                                "current_schema()) FROM pg_catalog.pg_database WHERE datname = current_database()",
                    // Else the count would see what was there before the lock was waited for.
                    .beginWriting = {kReadCommitted},
                    .lockTable = "LOCK TABLE {table} IN SHARE ROW EXCLUSIVE MODE",
                    .savepoint = "SAVEPOINT qv_Empty",
                    .rollbackToSavepoint = "ROLLBACK TO SAVEPOINT qv_Empty",
                    .greatestId = "SELECT pg_sequence_last_value(pg_get_serial_sequence('{table}', "
                                  "lower('{column}'))::regclass)",
                    .countsWrittenIds = false,
                    // What the target itself has given out may be greater.
                    .advanceSequence =
                        {"SELECT setval(id, GREATEST({id}, COALESCE(pg_sequence_last_value(id), 0))) FROM "
                         "(SELECT pg_get_serial_sequence('{table}', lower('{column}'))::regclass AS id) AS ids"}},
    };
    return dialect;
}

} // namespace schema::postgresql
