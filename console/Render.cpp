#include "console/Render.h"

#include "console/Color.h"
#include "console/Translation.h"
#include "management/JsonWriter.h"
#include "management/Overloaded.h"
#include "management/Text.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <sstream>
#include <utility>

namespace console {

namespace {

constexpr std::size_t kGap = 2;       ///< blanks between columns
constexpr std::size_t kNarrowest = 4; ///< that a column is made to fit a width

bool IsNumber(const Value& value) { return std::holds_alternative<std::int64_t>(value); }
bool IsAbsent(const Value& value) { return std::holds_alternative<std::monostate>(value); }

std::string ForPeople(const Value& value)
{
    return std::visit(Overloaded{[](std::monostate) { return std::string(); },
                                 [](std::int64_t number) { return std::to_string(number); },
                                 [](bool flag) { return Translated(flag ? Translatable("yes") : Translatable("no")); },
                                 [](const Choice& choice) { return std::string(choice.word); },
                                 [](const std::string& text) { return Visible(text); },
                                 [](const Sentence& sentence) { return Visible(Translated(sentence)); }},
                      value);
}

std::string PlainText(const Value& value)
{
    std::string plain;
    for (const char ch : TextForPrograms(value)) {
        switch (ch) {
        case '\\':
            plain += "\\\\";
            break;
        case '\t':
            plain += "\\t";
            break;
        case '\n':
            plain += "\\n";
            break;
        case '\r':
            plain += "\\r";
            break;
        default:
            plain += ch;
        }
    }
    return plain;
}

void Pad(std::size_t count, std::ostream& out)
{
    for (; count > 0; --count) {
        out << ' ';
    }
}

/// A text in its visible form that takes no more columns than these, with a mark where it was cut.
std::string Shortened(const std::string& text, std::size_t width)
{
    std::string shortened;
    for (std::size_t begin = 0; begin < text.size();) {
        std::size_t end = begin + 1;
        while (end < text.size() && ContinuesCharacter(text[end])) {
            ++end;
        }
        std::string longer = shortened + text.substr(begin, end - begin);
        if (DisplayWidth(longer) >= width) {
            break;
        }
        shortened = std::move(longer);
        begin = end;
    }
    return shortened + "…";
}

void WriteJson(const Record& record, JsonWriter::Layout layout, std::ostream& out)
{
    JsonWriter json(out, layout);
    json.BeginObject();
    json.WriteMembers(record);
    json.End();
    out << '\n';
}

void WritePlainRow(const std::vector<Value>& row, std::ostream& out)
{
    for (std::size_t i = 0; i < row.size(); ++i) {
        out << (i == 0 ? "" : "\t") << PlainText(row[i]);
    }
    out << '\n';
}

/// The record as a table of one row.
Table AsRow(const Record& record)
{
    Table table;
    std::vector<Value>& row = table.rows.emplace_back();
    for (const auto& [name, value] : record) {
        table.columns.push_back(name);
        row.push_back(value);
    }
    return table;
}

void WriteProperties(const Record& record, std::ostream& out)
{
    std::size_t widest = 0;
    for (const auto& [name, value] : record) {
        widest = std::max(widest, DisplayWidth(Visible(name)));
    }
    for (const auto& [name, value] : record) {
        const std::string text = ForPeople(value);
        const std::string shown = Visible(name);
        out << shown;
        Pad(text.empty() ? 0 : widest + 2 - DisplayWidth(shown), out);
        out << text << '\n';
    }
}

void WritePlain(const Record& record, std::ostream& out)
{
    for (const auto& [name, value] : record) {
        out << name << '\t' << PlainText(value) << '\n';
    }
}

} // namespace

std::optional<Format> FindFormat(std::string_view name)
{
    const auto* found = std::ranges::find(kFormatNames, name);
    return found == kFormatNames.end() ? std::nullopt
                                       : std::optional(static_cast<Format>(found - kFormatNames.begin()));
}

std::string_view NameOf(Format format) { return kFormatNames.at(static_cast<std::size_t>(format)); }

TableWriter::TableWriter(Format format, std::vector<std::string> columns, std::ostream& out, TableLook look,
                         std::size_t measured)
    : m_format(format),
      m_names(std::move(columns)),
      m_out(out),
      m_look(look),
      m_measured(measured),
      m_columns(m_names.size())
{
    if (m_format == Format::csv) {
        WriteCsvRow(m_names, m_out);
    } else if (m_format == Format::json) {
        m_out << '[';
    } else if (m_format == Format::table) {
        std::vector<Cell>& header = m_held.emplace_back();
        std::ranges::transform(m_names, std::back_inserter(header),
                               [](const std::string& name) { return CellOf(Visible(name)); });
        for (std::size_t i = 0; i < header.size(); ++i) {
            m_columns[i].heading = header[i].width;
            m_columns[i].width = header[i].width;
        }
    }
}

bool TableWriter::Write(const std::vector<Value>& row)
{
    switch (m_format) {
    case Format::table:
        Hold(row);
        break;
    case Format::csv:
        WriteCsvRow(TextsForPrograms(row), m_out);
        break;
    case Format::json:
        m_out << (m_isFirst ? "\n  " : ",\n  ");
        JsonWriter(m_out, JsonWriter::Layout::line).WriteRow(m_names, row);
        break;
    case Format::jsonl:
        JsonWriter(m_out, JsonWriter::Layout::line).WriteRow(m_names, row);
        m_out << '\n';
        break;
    case Format::plain:
        WritePlainRow(row, m_out);
        break;
    }
    m_isFirst = false;
    return !m_out.fail();
}

void TableWriter::Finish()
{
    if (m_format == Format::json) {
        m_out << (m_isFirst ? "]\n" : "\n]\n");
    } else if (m_format == Format::table) {
        WriteHeld();
    }
}

TableWriter::Cell TableWriter::CellOf(std::string text)
{
    const std::size_t width = DisplayWidth(text);
    return {std::move(text), width};
}

void TableWriter::Hold(const std::vector<Value>& row)
{
    std::vector<Cell>& cells = m_held.emplace_back();
    std::ranges::transform(row, std::back_inserter(cells), [](const Value& value) { return CellOf(ForPeople(value)); });
    if (m_isMeasured) {
        WriteHeld();
        return;
    }
    for (std::size_t i = 0; i < row.size(); ++i) {
        Column& column = m_columns[i];
        column.width = std::max(column.width, cells[i].width);
        column.isEmpty = column.isEmpty && cells[i].width == 0;
        column.holdsNumber = column.holdsNumber || IsNumber(row[i]);
        column.holdsOther = column.holdsOther || !(IsNumber(row[i]) || IsAbsent(row[i]));
    }
    if (m_held.size() > m_measured) {
        WriteHeld();
    }
}

void TableWriter::WriteHeld()
{
    if (!m_isMeasured && m_look.width > 0) {
        FitWidth();
    }
    const bool hasHeading = !std::exchange(m_isMeasured, true);
    for (std::size_t i = 0; i < m_held.size(); ++i) {
        if (i == 0 && hasHeading && m_look.hasColor) {
            std::ostringstream heading;
            WriteLine(m_held[i], heading);
            std::string line = heading.str();
            line.pop_back();
            WriteStyled(m_out, line, Style::heading, true);
            m_out << '\n';
        } else {
            WriteLine(m_held[i], m_out);
        }
    }
    m_held.clear();
}

std::size_t TableWriter::WidthOf(const std::vector<Cell>& cells) const
{
    std::size_t width = 0;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        width += (i == 0 ? 0 : kGap) + std::max(m_columns[i].width, cells[i].width);
    }
    return width;
}

void TableWriter::FitWidth()
{
    std::size_t width = m_columns.empty() ? 0 : kGap * (m_columns.size() - 1);
    for (const Column& column : m_columns) {
        width += column.width;
    }
    const auto naming = std::ranges::find_if_not(m_columns, &Column::IsRight) - m_columns.begin();
    for (const Narrowing step : {Narrowing::values, Narrowing::emptyColumns, Narrowing::headings, Narrowing::names}) {
        const auto surplusOf = [&](const Column& column) {
            const bool isKept = step != Narrowing::names && &column - m_columns.data() == naming;
            const std::size_t least = isKept ? std::max(kNarrowest, m_look.width / 2) : column.LeastWidth(step);
            return column.width > least ? column.width : 0;
        };
        while (width > m_look.width) {
            const auto widest = std::ranges::max_element(m_columns, {}, surplusOf);
            if (surplusOf(*widest) == 0) {
                break;
            }
            --widest->width;
            --width;
        }
    }
}

std::size_t TableWriter::Column::LeastWidth(Narrowing step) const
{
    const bool isHeadingCut = step >= (isEmpty ? Narrowing::emptyColumns : Narrowing::headings);
    return IsRight() ? width : isHeadingCut ? kNarrowest : std::max(kNarrowest, heading);
}

void TableWriter::WriteLine(const std::vector<Cell>& cells, std::ostream& out) const
{
    const bool isFitted = m_look.width > 0 && WidthOf(cells) > m_look.width;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const Column& column = m_columns[i];
        const bool isCut = isFitted && cells[i].width > column.width && !column.IsRight();
        const Cell cell = isCut ? CellOf(Shortened(cells[i].text, column.width)) : cells[i];
        const std::size_t missing = column.width - std::min(column.width, cell.width);
        Pad(i == 0 ? 0 : kGap, out);
        Pad(column.IsRight() ? missing : 0, out);
        out << cell.text;
        // No blanks at the end of a line: a narrow terminal would wrap them.
        Pad(column.IsRight() || i + 1 == cells.size() ? 0 : missing, out);
    }
    out << '\n';
}

void Render(Format format, const Table& table, std::ostream& out, TableLook look)
{
    TableWriter writer(format, table.columns, out, look, table.rows.size());
    for (const std::vector<Value>& row : table.rows) {
        if (!writer.Write(row)) {
            return;
        }
    }
    writer.Finish();
}

void Render(Format format, const Value& value, std::ostream& out)
{
    if (IsJson(format)) {
        JsonWriter(out, JsonWriter::Layout::line).Write(value);
    } else {
        out << TextForPrograms(value);
    }
    out << '\n';
}

void Render(Format format, const Record& record, std::ostream& out)
{
    switch (format) {
    case Format::table:
        WriteProperties(record, out);
        break;
    case Format::csv:
        Render(format, AsRow(record), out);
        break;
    case Format::json:
        WriteJson(record, JsonWriter::Layout::indented, out);
        break;
    case Format::jsonl:
        WriteJson(record, JsonWriter::Layout::line, out);
        break;
    case Format::plain:
        WritePlain(record, out);
        break;
    }
}

void Render(Format format, const Record& record, const std::vector<Part>& parts, std::ostream& out, TableLook look)
{
    if (IsJson(format)) {
        JsonWriter json(out, format == Format::json ? JsonWriter::Layout::indented : JsonWriter::Layout::line);
        json.BeginObject();
        json.WriteMembers(record);
        for (const Part& part : parts) {
            json.WriteName(part.name);
            json.BeginArray();
            for (const std::vector<Value>& row : part.rows.rows) {
                json.WriteRow(part.rows.columns, row);
            }
            json.End();
        }
        json.End();
        out << '\n';
        return;
    }
    Record counted = record;
    for (const Part& part : parts) {
        counted.emplace_back(part.name, static_cast<std::int64_t>(part.rows.rows.size()));
    }
    Render(format, counted, out);
    for (const Part& part : parts) {
        if (format == Format::table && !part.rows.rows.empty()) {
            out << '\n' << part.name << ":\n";
            Render(format, part.rows, out, look);
        }
    }
}

} // namespace console
