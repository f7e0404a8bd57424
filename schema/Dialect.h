#pragma once

#include "schema/Schema.h"

#include <string>
#include <vector>

class CAConnect;

namespace schema {

/// What the tables need to know of an engine.
struct Dialect {
    std::vector<Step> steps;
    /// Gives the names of all tables in column 1.
    std::string listTables;
    /// Puts every index in the order of the current rules.
    std::string rebuildIndexes;
};

/// The dialect of the engine behind a connection. @throws CAException when there are no tables for it.
const Dialect& DialectOf(CAConnect& conn);

namespace sqlite {
const Dialect& TheDialect();
}

} // namespace schema
