#pragma once

#include "schema/Schema.h"

#include <functional>
#include <string>
#include <vector>

class CAConnect;

namespace schema {

/// What the tables need to know of an engine.
struct Dialect {
    std::vector<Step> steps;
    /// Gives the names of all tables in column 1.
    std::string listTables;
    /// Puts every index in the order of the current rules; empty where no order depends on this program's rules.
    std::string rebuildIndexes;
    /// Whether a step is applied in one transaction; else its statements can be run again.
    bool stepIsTransaction = true;
    /// Queries that keep a second run waiting; empty where a transaction does.
    std::string lock;
    std::string unlock;
    /// Looks at the server's settings. @throws CAException that says what to change. Empty: nothing to look at.
    std::function<void(CAConnect& conn)> check;
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

} // namespace schema
