#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace console {

enum class Format { table, csv, json, jsonl, plain };

/// The format of that name.
std::optional<Format> FindFormat(std::string_view name);

/// A number that stands for a word: programs get the number, people the word.
struct Choice {
    std::int64_t number;
    std::string_view word;
};

/// The text of a value. Not a std::string itself: a std::variant of types that the standard library declares never to
/// leave it empty (std::string, std::vector, ...) destroys what was never constructed when memory runs out while it is
/// copied (libstdc++ 12).
struct TextValue : std::string {
    using std::string::string;
    TextValue(std::string text) noexcept : std::string(std::move(text)) {}
};

/// One value of a row; the first alternative is "absent".
using Value = std::variant<std::monostate, std::int64_t, bool, Choice, TextValue>;

struct Table {
    std::vector<std::string> columns;
    std::vector<std::vector<Value>> rows;
};

/// One thing with all its properties.
using Record = std::vector<std::pair<std::string, Value>>;

/// A row of these values. Unlike a braced list it makes no copies.
template <class... Values>
std::vector<Value> MakeRow(Values&&... values)
{
    std::vector<Value> row;
    row.reserve(sizeof...(values));
    (row.emplace_back(std::forward<Values>(values)), ...);
    return row;
}

/// Writes a table row by row, as Render does, and holds no rows but those by which the widths of columns are measured.
class TableWriter {
public:
    static constexpr std::size_t kMeasuredRows = 1000;

    /// @param measured  how many rows decide the widths of a table for people; a longer value in a later row moves the
    /// rest of its line to the right.
    TableWriter(Format format, std::vector<std::string> columns, std::ostream& out,
                std::size_t measured = kMeasuredRows);

    /// @param row  a value for each column. @return false when nothing can be written any more.
    bool Write(const std::vector<Value>& row);
    /// After the last row.
    void Finish();

    [[nodiscard]] std::size_t HeldRows() const { return m_held.size(); }

private:
    struct Cell {
        std::string text;
        std::size_t width = 0;
    };
    struct Column {
        std::size_t width = 0;
        bool holdsNumber = false; ///< and nothing else
        bool holdsOther = false;
    };

    static Cell CellOf(std::string text);
    void Hold(const std::vector<Value>& row);
    void WriteHeld();
    void WriteLine(const std::vector<Cell>& cells);

    Format m_format;
    std::vector<std::string> m_names;
    std::ostream& m_out;
    std::size_t m_measured;
    std::vector<Column> m_columns;
    std::vector<std::vector<Cell>> m_held;
    bool m_isMeasured = false;
    bool m_isFirst = true;
};

/// Writes rows. A table is aligned by what a terminal shows, and nothing in it is cut; csv follows RFC 4180 with LF;
/// json is an array of objects and jsonl one object per line; plain has a tab between values and no header.
void Render(Format format, const Table& table, std::ostream& out);
/// Writes one record: a line per property (table, plain), a header and a row (csv) or an object.
void Render(Format format, const Record& record, std::ostream& out);

/// Writes one row of csv.
void WriteCsvRow(const std::vector<std::string>& fields, std::ostream& out);

} // namespace console
