#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace management::audit {

/// What an insert of values begins with, up to its VALUES. Inserts come in rows with one head, which is then read once.
struct InsertHead {
    std::string text = {}; ///< empty until one was read
    std::string_view table = {};
    std::vector<std::string_view> columns = {}; ///< like the table's name, in `text`
};

/// Columns with what they are given, as written: literals, or expressions in an update.
using Assignments = std::vector<std::pair<std::string_view, std::string_view>>;

/// A statement that writes rows of one table, taken apart. Its parts lie in the statement's text, the names of an
/// insert's in its head.
struct WriteStatement {
    enum class Kind : std::uint8_t { insert, update, remove };

    Kind kind = Kind::insert;
    std::string_view table = {};
    Assignments assignments = {};              ///< of an insert of several rows, those of the first one
    std::vector<Assignments> furtherRows = {}; ///< of such an insert, those of all others
    std::string_view condition = {};           ///< from WHERE on; empty where there is none
    std::string query = {}; ///< of an insert that takes its rows from one; its assignments then have no values
    bool isWhole = true;    ///< false where the assignments could not be read

    /// Gives the assignments of each row of an insert to `take`.
    template <class Take>
    void ForEachRow(Take take) const
    {
        take(assignments);
        for (const Assignments& row : furtherRows) {
            take(row);
        }
    }
};

/// Takes apart `INSERT INTO t (c, ...) VALUES (v, ...), ...`, the same with a SELECT in place of VALUES, `UPDATE t SET
/// c = v, ... [WHERE ...]` and `DELETE FROM t [WHERE ...]`.
/// @param backslashEscapes  whether the engine takes "\'" for a quote within a literal.
/// @param head  of an insert before; stays where it is as long as what is returned, and until the next call.
/// @return nothing for any other statement.
std::optional<WriteStatement> ParseWrite(std::string_view sql, bool backslashEscapes, InsertHead& head);

/// The ids that a condition names, as in `WHERE Col_ID = 5` and `WHERE Col_ID IN (5, 6)`; nothing for any other one.
std::optional<std::vector<std::int64_t>> IdsOf(std::string_view condition);

/// Whether an expression is NULL.
bool IsNull(std::string_view expression);

/// The value of a literal: a whole number's digits, or a text without its quotes.
/// @return nothing for anything else, NULL among it.
std::optional<std::string> ValueOfLiteral(std::string_view literal, bool backslashEscapes);

} // namespace management::audit
