#include "schema/Dialect.h"

#include "schema/SqliteStatements.h"
#include "schema/Steps.h"

namespace schema::sqlite {

const Dialect& TheDialect()
{
    static const Dialect dialect{
        .steps =
            StepsOf({.tables = k_001_tables, .indexes = k_002_indexes, .audit = k_003_audit, .console = k_004_console}),
        .listTables = "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite%'",
        .rebuildIndexes = "REINDEX",
        .stepIsTransaction = true,
        .locking = {}, // a transaction begins with the right to write, which one program has at a time
        .lastId = "SELECT last_insert_rowid()",
        .check = {},
        // The tables must be in the file before its log fills a disk: with nothing in the log that must be kept, a
        // copy that fails can remove it.
        .copying = {.beginReading = {"BEGIN"},
                    .identity = "SELECT file FROM pragma_database_list WHERE name = 'main'",
                    .beginWriting = {"PRAGMA wal_checkpoint(TRUNCATE)"},
                    .keepsEveryValue = true,
                    .greatestId = "SELECT seq FROM sqlite_sequence WHERE name = '{table}' COLLATE NOCASE"},
    };
    return dialect;
}

} // namespace schema::sqlite
