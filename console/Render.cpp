#include "console/Render.h"

#include "console/Overloaded.h"
#include "console/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <ostream>

namespace console {

namespace {

using Json = nlohmann::ordered_json;

bool IsNumber(const Value& value) { return std::holds_alternative<std::int64_t>(value); }
bool IsAbsent(const Value& value) { return std::holds_alternative<std::monostate>(value); }

std::string ForPeople(const Value& value)
{
    return std::visit(Overloaded{[](std::monostate) { return std::string(); },
                                 [](std::int64_t number) { return std::to_string(number); },
                                 [](bool flag) { return std::string(flag ? "yes" : "no"); },
                                 [](const Choice& choice) { return std::string(choice.word); },
                                 [](const std::string& text) { return Visible(text); }},
                      value);
}

std::string ForPrograms(const Value& value)
{
    return std::visit(Overloaded{[](std::monostate) { return std::string(); },
                                 [](std::int64_t number) { return std::to_string(number); },
                                 [](bool flag) { return std::string(flag ? "true" : "false"); },
                                 [](const Choice& choice) { return std::to_string(choice.number); },
                                 [](const std::string& text) { return text; }},
                      value);
}

Json AsJson(const Value& value)
{
    return std::visit(Overloaded{[](std::monostate) { return Json(nullptr); },
                                 [](std::int64_t number) { return Json(number); }, [](bool flag) { return Json(flag); },
                                 [](const Choice& choice) { return Json(choice.number); },
                                 [](const std::string& text) { return Json(text); }},
                      value);
}

std::string Written(const Json& json, int indent)
{
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

std::string PlainText(const Value& value)
{
    std::string plain;
    for (const char ch : ForPrograms(value)) {
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

void WriteCsvField(const std::string& field, std::ostream& out)
{
    if (field.find_first_of(",\"\r\n") == std::string::npos) {
        out << field;
        return;
    }
    out << '"';
    for (const char ch : field) {
        out << (ch == '"' ? "\"\"" : std::string_view(&ch, 1));
    }
    out << '"';
}

struct Cell {
    std::string text;
    std::size_t width;
};

Cell CellOf(std::string text)
{
    const std::size_t width = DisplayWidth(text);
    return {std::move(text), width};
}

struct Layout {
    std::vector<std::size_t> widths;
    std::vector<bool> alignedRight;
};

void Pad(std::size_t count, std::ostream& out)
{
    for (; count > 0; --count) {
        out << ' ';
    }
}

void WriteLine(const std::vector<Cell>& cells, const Layout& layout, std::ostream& out)
{
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::size_t missing = layout.widths[i] - cells[i].width;
        Pad(i == 0 ? 0 : 2, out);
        Pad(layout.alignedRight[i] ? missing : 0, out);
        out << cells[i].text;
        // No blanks at the end of a line: a narrow terminal would wrap them.
        Pad(layout.alignedRight[i] || i + 1 == cells.size() ? 0 : missing, out);
    }
    out << '\n';
}

bool HoldsNumbersOnly(const Table& table, std::size_t column)
{
    const auto fits = [column](const auto& row) { return IsNumber(row[column]) || IsAbsent(row[column]); };
    const auto isNumber = [column](const auto& row) { return IsNumber(row[column]); };
    return std::ranges::all_of(table.rows, fits) && std::ranges::any_of(table.rows, isNumber);
}

Layout Measured(const Table& table, const std::vector<std::vector<Cell>>& lines)
{
    Layout layout;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        std::size_t widest = 0;
        for (const std::vector<Cell>& line : lines) {
            widest = std::max(widest, line[i].width);
        }
        layout.widths.push_back(widest);
        layout.alignedRight.push_back(HoldsNumbersOnly(table, i));
    }
    return layout;
}

void WriteTable(const Table& table, std::ostream& out)
{
    std::vector<std::vector<Cell>> lines(1);
    std::ranges::transform(table.columns, std::back_inserter(lines.front()),
                           [](const std::string& name) { return CellOf(Visible(name)); });
    for (const std::vector<Value>& row : table.rows) {
        std::vector<Cell>& line = lines.emplace_back();
        std::ranges::transform(row, std::back_inserter(line),
                               [](const Value& value) { return CellOf(ForPeople(value)); });
    }
    const Layout layout = Measured(table, lines);
    for (const std::vector<Cell>& line : lines) {
        WriteLine(line, layout, out);
    }
}

void WriteCsv(const Table& table, std::ostream& out)
{
    WriteCsvRow(table.columns, out);
    for (const std::vector<Value>& row : table.rows) {
        std::vector<std::string> fields;
        std::ranges::transform(row, std::back_inserter(fields), ForPrograms);
        WriteCsvRow(fields, out);
    }
}

Json AsObject(const Table& table, const std::vector<Value>& row)
{
    Json object = Json::object();
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        object[table.columns[i]] = AsJson(row[i]);
    }
    return object;
}

void WriteJson(const Table& table, std::ostream& out)
{
    const char* between = "";
    out << '[';
    for (const std::vector<Value>& row : table.rows) {
        out << between << "\n  " << Written(AsObject(table, row), -1);
        between = ",";
    }
    out << (table.rows.empty() ? "]\n" : "\n]\n");
}

void WriteJsonLines(const Table& table, std::ostream& out)
{
    for (const std::vector<Value>& row : table.rows) {
        out << Written(AsObject(table, row), -1) << '\n';
    }
}

void WritePlain(const Table& table, std::ostream& out)
{
    for (const std::vector<Value>& row : table.rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            out << (i == 0 ? "" : "\t") << PlainText(row[i]);
        }
        out << '\n';
    }
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
    std::vector<Cell> names;
    std::ranges::transform(record, std::back_inserter(names),
                           [](const auto& property) { return CellOf(Visible(property.first)); });
    const std::size_t widest = names.empty() ? 0 : std::ranges::max(names, {}, &Cell::width).width;
    for (std::size_t i = 0; i < record.size(); ++i) {
        const std::string text = ForPeople(record[i].second);
        out << names[i].text;
        Pad(text.empty() ? 0 : widest + 2 - names[i].width, out);
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
    constexpr std::array<std::pair<std::string_view, Format>, 5> kFormats = {{{"table", Format::table},
                                                                              {"csv", Format::csv},
                                                                              {"json", Format::json},
                                                                              {"jsonl", Format::jsonl},
                                                                              {"plain", Format::plain}}};
    const auto* found = std::ranges::find(kFormats, name, &std::pair<std::string_view, Format>::first);
    return found == kFormats.end() ? std::nullopt : std::optional(found->second);
}

void Render(Format format, const Table& table, std::ostream& out)
{
    switch (format) {
    case Format::table:
        WriteTable(table, out);
        break;
    case Format::csv:
        WriteCsv(table, out);
        break;
    case Format::json:
        WriteJson(table, out);
        break;
    case Format::jsonl:
        WriteJsonLines(table, out);
        break;
    case Format::plain:
        WritePlain(table, out);
        break;
    }
}

void Render(Format format, const Record& record, std::ostream& out)
{
    const auto object = [&record] {
        const Table table = AsRow(record);
        return AsObject(table, table.rows.front());
    };
    switch (format) {
    case Format::table:
        WriteProperties(record, out);
        break;
    case Format::csv:
        WriteCsv(AsRow(record), out);
        break;
    case Format::json:
        out << Written(object(), 2) << '\n';
        break;
    case Format::jsonl:
        out << Written(object(), -1) << '\n';
        break;
    case Format::plain:
        WritePlain(record, out);
        break;
    }
}

void WriteCsvRow(const std::vector<std::string>& fields, std::ostream& out)
{
    const char* between = "";
    for (const std::string& field : fields) {
        out << between;
        WriteCsvField(field, out);
        between = ",";
    }
    out << '\n';
}

} // namespace console
