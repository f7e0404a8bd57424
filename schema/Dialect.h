#pragma once

#include "schema/Schema.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

class CAConnect;

namespace schema {

/// What copying a directory needs to know of an engine. In statements, {table}, {column} and {id} stand for those.
struct CopyRules {
    /// Begin a transaction in which all reads of a source see one moment; ROLLBACK ends it. Empty: there is none.
    std::vector<std::string> beginReading = {};
    /// Whether rows can be asked for in an order.
    bool sortsRows = true;
    /// Gives in column 1 what no other database has that can be reached; empty where that cannot be told.
    std::string identity = {};
    /// Make the connection to a target take ids as they are written.
    std::vector<std::string> beginWriting = {};
    /// Stand around the rows of a table whose ids the engine gives.
    std::string beginIds = {};
    std::string endIds = {};
    std::size_t rowsPerInsert = 500;
    /// Stands before the first quote of a text.
    std::string textMark = {};
    /// Gives the greatest id that a table has ever given out, or NULL, or no row; empty where that cannot be asked.
    std::string greatestId = {};
    /// Whether ids that are written are never given out afterwards.
    bool countsWrittenIds = true;
    /// Make sure that neither an id nor any below it will be given out; run where the rows written do not see to that.
    std::vector<std::string> passIds = {"INSERT INTO {table} ({column}) VALUES ({id})",
                                        "DELETE FROM {table} WHERE {column} = {id}"};
};

/// What the tables need to know of an engine.
struct Dialect {
    std::vector<Step> steps;
    /// Gives the names of all tables in column 1.
    std::string listTables;
    /// Puts every index in the order of the current rules; empty where no order depends on this program's rules.
    std::string rebuildIndexes;
    /// Whether a step is applied in one transaction; else its statements can be run again.
    bool stepIsTransaction = true;
    /// Statements that keep a second run waiting; empty where a transaction does.
    std::string lock;
    std::string unlock;
    /// Looks at the server's settings. @throws CAException that says what to change. Empty: nothing to look at.
    std::function<void(CAConnect& conn)> check;
    CopyRules copying = {};
};

/// The dialect of the engine behind a connection. @throws CAException when there are no tables for it.
const Dialect& DialectOf(CAConnect& conn);

namespace sqlite {
const Dialect& TheDialect();
}
namespace postgresql {
const Dialect& TheDialect();
}
namespace mysql {
const Dialect& TheDialect();
}
namespace sqlserver {
const Dialect& TheDialect();
}
namespace access {
const Dialect& TheDialect();
}

} // namespace schema
