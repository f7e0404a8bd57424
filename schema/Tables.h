#pragma once

#include "schema/Dialect.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace schema {

/// What a column is for.
enum class Kind : std::uint8_t { text, number, datetime };

struct Column {
    std::string name;
    Kind kind = Kind::text;
    bool isComputed = false;      ///< from other columns, and cannot be written
    bool isAutoIncrement = false; ///< the engine gives it a number of its own where none is written
    std::size_t length = 0;       ///< how many characters it takes; 0 for any
};

struct Table {
    std::string name;
    std::vector<Column> columns;
};

/// Every directory has this table from its first step on, with its own version; it tells our files from others.
inline constexpr const char* kVersionTable = "qv_Schema";

/// Whether engines, none of which tells capitals of names from small letters, take them for the same name.
bool SameName(std::string_view a, std::string_view b);

/// The tables that a dialect's steps make, as the steps spell them, without the one of the version.
std::vector<Table> TablesOf(const Dialect& dialect);

} // namespace schema
