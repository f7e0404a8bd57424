#pragma once

#include "schema/Dialect.h"

#include <string>
#include <vector>

namespace schema {

struct Column {
    std::string name;
    bool isComputed = false; ///< from other columns, and cannot be written
    bool isCounted = false;  ///< the engine gives it a number of its own where none is written
};

struct Table {
    std::string name;
    std::vector<Column> columns;
};

/// The tables that a dialect's steps make, as the steps spell them, without the one of the version.
std::vector<Table> TablesOf(const Dialect& dialect);

} // namespace schema
