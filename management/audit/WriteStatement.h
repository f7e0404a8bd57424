#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace management::audit {

/// A statement that writes rows of one table, taken apart.
struct WriteStatement {
    enum class Kind : std::uint8_t { insert, update, remove };

    Kind kind = Kind::insert;
    std::string table;
    /// Columns with what they are given, as written: literals, or expressions in an update.
    std::vector<std::pair<std::string, std::string>> assignments = {};
    std::string condition = {}; ///< from WHERE on; empty where there is none
    std::string query = {};     ///< of an insert that takes its rows from one; its assignments then have no values
    bool isWhole = true;        ///< false where the assignments could not be read
};

/// Takes apart `INSERT INTO t (c, ...) VALUES (v, ...)`, the same with a SELECT in place of VALUES, `UPDATE t SET c =
/// v, ... [WHERE ...]` and `DELETE FROM t [WHERE
/// ...]`. @param backslashEscapes  whether the engine takes "\'" for a quote within a literal.
/// @return nothing for any other statement.
std::optional<WriteStatement> ParseWrite(std::string_view sql, bool backslashEscapes);

/// The value of a literal: a whole number's digits, or a text without its quotes.
/// @return nothing for anything else, NULL among it.
std::optional<std::string> ValueOfLiteral(std::string_view literal, bool backslashEscapes);

} // namespace management::audit
