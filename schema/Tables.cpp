#include "schema/Tables.h"

#include "platform/CodePage.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>

namespace schema {

namespace {

std::string_view CutLine(std::string_view& text)
{
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    return line;
}

std::string_view CutWord(std::string_view& line)
{
    line.remove_prefix(std::min(line.size(), line.find_first_not_of(' ')));
    const std::string_view word = line.substr(0, line.find(' '));
    line.remove_prefix(word.size());
    return word;
}

template <class Words>
bool Holds(const Words& words, std::string_view word)
{
    return std::ranges::find(words, word) != words.end();
}

bool IsCounted(std::string_view type)
{
    constexpr std::array marks = {"AUTOINCREMENT", "AUTO_INCREMENT", "IDENTITY", "COUNTER"};
    return std::ranges::any_of(marks, [&](const char* mark) { return type.find(mark) != std::string_view::npos; });
}

bool IsComputed(std::string_view type) { return type.find(" AS (") != std::string_view::npos; }

Kind KindOf(std::string_view type)
{
    constexpr std::array<std::string_view, 5> numbers = {"INTEGER", "INT", "BIGINT", "LONG", "COUNTER"};
    constexpr std::array<std::string_view, 4> datetimes = {"DATE", "DATETIME", "DATETIME2", "TIMESTAMP"};
    std::string_view word = CutWord(type);
    word = word.substr(0, word.find_first_of(",("));
    return Holds(numbers, word) ? Kind::number : Holds(datetimes, word) ? Kind::datetime : Kind::text;
}

/// TEXT(128) is 128 characters long; TEXT has no length.
std::size_t LengthOf(std::string_view type)
{
    const std::string_view word = CutWord(type);
    const std::size_t bracket = word.find('(');
    std::size_t length = 0;
    if (bracket != std::string_view::npos) {
        std::from_chars(word.data() + bracket + 1, word.data() + word.size(), length);
    }
    return length;
}

// Columns are on lines of their own, and all of them are named Col_SOMETHING; nothing else is.
std::optional<Column> ReadColumn(std::string_view line)
{
    const std::string_view name = CutWord(line);
    if (!name.starts_with("Col_")) {
        return std::nullopt;
    }
    const std::string type = platform::UpperUtf8(line);
    const Kind kind = KindOf(type);
    return Column{std::string(name), kind, IsComputed(type), IsCounted(type), kind == Kind::text ? LengthOf(type) : 0};
}

std::optional<Table> ReadTable(std::string_view statement)
{
    constexpr std::string_view create = "CREATE TABLE ";
    constexpr std::string_view unlessThere = "IF NOT EXISTS ";
    if (!statement.starts_with(create)) {
        return std::nullopt;
    }
    statement.remove_prefix(create.size());
    statement.remove_prefix(statement.starts_with(unlessThere) ? unlessThere.size() : 0);
    std::string_view head = CutLine(statement);
    Table table{std::string(CutWord(head)), {}};
    while (!statement.empty()) {
        if (auto column = ReadColumn(CutLine(statement))) {
            table.columns.push_back(std::move(*column));
        }
    }
    return table;
}

} // namespace

bool SameName(std::string_view a, std::string_view b) { return platform::UpperUtf8(a) == platform::UpperUtf8(b); }

std::vector<Table> TablesOf(const Dialect& dialect)
{
    std::vector<Table> tables;
    for (const Step& step : dialect.steps) {
        for (const std::string& statement : step.statements) {
            if (auto table = ReadTable(statement)) {
                tables.push_back(std::move(*table));
            }
        }
    }
    return tables;
}

} // namespace schema
