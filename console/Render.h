#pragma once

#include "console/ExitCode.h"
#include "management/CsvWriter.h"
#include "management/Value.h"

#include <array>
#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace console {

enum class Format { table, csv, json, jsonl, plain };
/// Of each format, in their order.
inline constexpr std::array<std::string_view, 5> kFormatNames = {"table", "csv", "json", "jsonl", "plain"};

/// Whether a format is for programs that read JSON.
constexpr bool IsJson(Format format) { return format == Format::json || format == Format::jsonl; }

/// The format of that name.
std::optional<Format> FindFormat(std::string_view name);
std::string_view NameOf(Format format);

/// How a table for people looks.
struct TableLook {
    std::size_t width = 0; ///< columns that a line may take; 0: any number
    bool hasColor = false;
};

/// Writes a table row by row, as Render does, and holds no rows but those by which the widths of columns are measured.
class TableWriter {
public:
    static constexpr std::size_t kMeasuredRows = 1000;

    /// @param measured  how many rows decide the widths of a table for people; a longer value in a later row moves the
    /// rest of its line to the right.
    TableWriter(Format format, std::vector<std::string> columns, std::ostream& out, TableLook look = {},
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
    /// What gives way where a line is too long, one after the other. The first column that is not of numbers says which
    /// row it is, and is what the next command takes: up to half of the line it gives way last.
    enum class Narrowing : std::uint8_t { values, emptyColumns, headings, names };
    struct Column {
        std::size_t heading = 0; ///< its width
        std::size_t width = 0;
        bool isEmpty = true;      ///< no row has a value
        bool holdsNumber = false; ///< and nothing else
        bool holdsOther = false;

        [[nodiscard]] bool IsRight() const { return holdsNumber && !holdsOther; }
        /// To which a step may narrow it.
        [[nodiscard]] std::size_t LeastWidth(Narrowing step) const;
    };

    static Cell CellOf(std::string text);
    void Hold(const std::vector<Value>& row);
    void WriteHeld();
    /// Narrows columns, the widest first, until a line fits.
    void FitWidth();
    [[nodiscard]] std::size_t WidthOf(const std::vector<Cell>& cells) const;
    void WriteLine(const std::vector<Cell>& cells, std::ostream& out) const;

    Format m_format;
    std::vector<std::string> m_names;
    std::ostream& m_out;
    TableLook m_look;
    std::size_t m_measured;
    std::vector<Column> m_columns;
    std::vector<std::vector<Cell>> m_held;
    bool m_isMeasured = false;
    bool m_isFirst = true;
};

/// Writes rows. A table is aligned by what a terminal shows, and nothing in it is cut unless it is to fit a width; csv
/// follows RFC 4180 with LF; json is an array of objects and jsonl one object per line; plain has a tab between values
/// and no header.
void Render(Format format, const Table& table, std::ostream& out, TableLook look = {});
/// Writes one record: a line per property (table, plain), a header and a row (csv) or an object.
void Render(Format format, const Record& record, std::ostream& out);

/// Writes a record with its parts: below it in a table, inside it as arrays in json and jsonl; in csv and plain, which
/// have no room for rows in rows, each part is a property that counts them.
void Render(Format format, const Record& record, const std::vector<Part>& parts, std::ostream& out,
            TableLook look = {});

/// Writes one value in a line of its own: as JSON where that is asked for, else as programs read it.
void Render(Format format, const Value& value, std::ostream& out);

} // namespace console
