#include "management/audit/WriteStatement.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <span>

namespace management::audit {

namespace {

constexpr char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }
constexpr bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
constexpr bool IsNameByte(char c)
{
    return (Lower(c) >= 'a' && Lower(c) <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '.';
}

std::string_view Trimmed(std::string_view text)
{
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

bool EqualsWord(std::string_view text, std::string_view lower)
{
    return text.size() == lower.size() && std::ranges::equal(text, lower, {}, Lower);
}

// Asked for nearly every byte of a statement, hence a table.
constexpr std::array<bool, 256> kMayEndExpression = [] {
    std::array<bool, 256> bytes{};
    for (const char c : std::string_view("'(),wW")) {
        bytes[static_cast<unsigned char>(c)] = true;
    }
    return bytes;
}();

/// Goes through a statement: words, literals, brackets.
class Scanner {
public:
    Scanner(std::string_view sql, bool backslashEscapes) : m_rest(sql), m_backslashEscapes(backslashEscapes) {}

    /// Takes the next word, if it is this one. @param lower  in small letters.
    bool Take(std::string_view lower)
    {
        Scanner ahead = *this;
        if (!EqualsWord(ahead.TakeName(), lower)) {
            return false;
        }
        *this = ahead;
        return true;
    }
    std::string_view TakeName()
    {
        SkipBlanks();
        std::size_t length = 0;
        while (length < m_rest.size() && IsNameByte(m_rest[length])) {
            ++length;
        }
        return Cut(length);
    }
    bool TakeByte(char byte)
    {
        SkipBlanks();
        const bool isThere = m_rest.starts_with(byte);
        m_rest.remove_prefix(isThere ? 1 : 0);
        return isThere;
    }
    /// Takes all up to a comma, a closing bracket, or the word WHERE, outside literals and inner brackets.
    std::string_view TakeExpression()
    {
        std::size_t at = 0;
        int depth = 0;
        for (; at < m_rest.size(); ++at) {
            const char c = m_rest[at];
            if (!kMayEndExpression[static_cast<unsigned char>(c)]) {
                continue;
            }
            if (c == '\'') {
                at = EndOfLiteral(at);
            } else if (c == '(') {
                ++depth;
            } else if (depth == 0 && (c == ')' || c == ',' || IsWhereAt(at))) {
                break;
            } else if (c == ')') {
                --depth;
            }
        }
        return Trimmed(Cut(std::min(at, m_rest.size())));
    }
    std::string_view TakeRest() { return Trimmed(Cut(m_rest.size())); }
    [[nodiscard]] std::size_t Left() const { return m_rest.size(); }

private:
    void SkipBlanks()
    {
        while (!m_rest.empty() && IsBlank(m_rest.front())) {
            m_rest.remove_prefix(1);
        }
    }
    std::string_view Cut(std::size_t length)
    {
        const std::string_view cut = m_rest.substr(0, length);
        m_rest.remove_prefix(cut.size());
        return cut;
    }
    /// The place of the quote that ends a literal. A doubled quote ends one and begins the next.
    [[nodiscard]] std::size_t EndOfLiteral(std::size_t begin) const
    {
        std::size_t at = begin + 1;
        while (m_backslashEscapes && at < m_rest.size() && m_rest[at] != '\'') {
            at += m_rest[at] == '\\' ? 2 : 1;
        }
        return std::min(m_rest.find('\'', at), m_rest.size());
    }
    [[nodiscard]] bool IsWhereAt(std::size_t at) const
    {
        constexpr std::string_view where = "where";
        const bool begins = at > 0 && Lower(m_rest[at]) == 'w' && !IsNameByte(m_rest[at - 1]);
        const std::size_t end = at + where.size();
        return begins && EqualsWord(m_rest.substr(at, where.size()), where) &&
               (end >= m_rest.size() || !IsNameByte(m_rest[end]));
    }

    std::string_view m_rest;
    bool m_backslashEscapes;
};

std::vector<std::string_view> TakeList(Scanner& scanner, bool& isWhole)
{
    constexpr std::size_t usual = 40;
    std::vector<std::string_view> list;
    list.reserve(usual);
    isWhole = isWhole && scanner.TakeByte('(');
    do {
        list.push_back(scanner.TakeExpression());
    } while (scanner.TakeByte(','));
    isWhole = isWhole && scanner.TakeByte(')');
    return list;
}

/// Takes the values of one row. @param isWhole  becomes false where there is not one for each column.
Assignments TakeRow(Scanner& scanner, std::span<const std::string_view> columns, bool& isWhole)
{
    Assignments row;
    row.reserve(columns.size());
    isWhole = isWhole && scanner.TakeByte('(');
    for (const std::string_view column : columns) {
        isWhole = isWhole && (row.empty() || scanner.TakeByte(','));
        row.emplace_back(column, scanner.TakeExpression());
    }
    isWhole = isWhole && scanner.TakeByte(')');
    return row;
}

/// @param columns  of the values that come next.
WriteStatement ReadValues(Scanner& scanner, std::string_view table, std::span<const std::string_view> columns)
{
    WriteStatement statement{WriteStatement::Kind::insert, table};
    statement.assignments = TakeRow(scanner, columns, statement.isWhole);
    while (statement.isWhole && scanner.TakeByte(',')) {
        statement.furtherRows.push_back(TakeRow(scanner, columns, statement.isWhole));
    }
    statement.isWhole = statement.isWhole && scanner.TakeRest().empty();
    return statement;
}

/// @param sql  what the scanner goes through, past its first words.
WriteStatement ReadInsert(Scanner& scanner, std::string_view sql, InsertHead& head)
{
    WriteStatement statement{WriteStatement::Kind::insert, scanner.TakeName()};
    const std::vector<std::string_view> columns = TakeList(scanner, statement.isWhole);
    if (statement.isWhole && scanner.Take("select")) {
        statement.query = fmt::format("SELECT {}", scanner.TakeRest());
        for (const std::string_view column : columns) {
            statement.assignments.emplace_back(column, "");
        }
        return statement;
    }
    statement.isWhole = statement.isWhole && scanner.Take("values");
    if (!statement.isWhole) {
        return statement;
    }
    head.text = sql.substr(0, sql.size() - scanner.Left());
    const auto inHead = [&](std::string_view part) {
        return std::string_view(head.text).substr(static_cast<std::size_t>(part.data() - sql.data()), part.size());
    };
    head.table = inHead(statement.table);
    head.columns.clear();
    std::ranges::transform(columns, std::back_inserter(head.columns), inHead);
    return ReadValues(scanner, head.table, head.columns);
}

WriteStatement ReadUpdate(Scanner& scanner)
{
    WriteStatement statement{WriteStatement::Kind::update, scanner.TakeName()};
    statement.isWhole = scanner.Take("set");
    do {
        const std::string_view column = scanner.TakeName();
        statement.isWhole = statement.isWhole && scanner.TakeByte('=');
        statement.assignments.emplace_back(column, scanner.TakeExpression());
    } while (scanner.TakeByte(','));
    statement.condition = scanner.TakeRest();
    return statement;
}

} // namespace

std::optional<WriteStatement> ParseWrite(std::string_view sql, bool backslashEscapes, InsertHead& head)
{
    if (!head.text.empty() && sql.starts_with(head.text)) {
        Scanner values(sql.substr(head.text.size()), backslashEscapes);
        return ReadValues(values, head.table, head.columns);
    }
    Scanner scanner(sql, backslashEscapes);
    if (scanner.Take("insert") && scanner.Take("into")) {
        return ReadInsert(scanner, sql, head);
    }
    if (scanner.Take("update")) {
        return ReadUpdate(scanner);
    }
    if (scanner.Take("delete") && scanner.Take("from")) {
        WriteStatement statement{WriteStatement::Kind::remove, scanner.TakeName()};
        statement.condition = scanner.TakeRest();
        return statement;
    }
    return std::nullopt;
}

std::optional<std::vector<std::int64_t>> IdsOf(std::string_view condition)
{
    Scanner scanner(condition, false);
    if (!scanner.Take("where") || !scanner.Take("col_id")) {
        return std::nullopt;
    }
    const bool isList = scanner.Take("in") && scanner.TakeByte('(');
    if (!isList && !scanner.TakeByte('=')) {
        return std::nullopt;
    }
    std::vector<std::int64_t> ids;
    do {
        const std::string_view digits = scanner.TakeName();
        const char* const end = digits.data() + digits.size();
        const auto read = std::from_chars(digits.data(), end, ids.emplace_back());
        if (digits.empty() || read.ec != std::errc() || read.ptr != end) {
            return std::nullopt;
        }
    } while (isList && scanner.TakeByte(','));
    const bool isWhole = (!isList || scanner.TakeByte(')')) && scanner.TakeRest().empty();
    return isWhole ? std::optional(std::move(ids)) : std::nullopt;
}

bool IsNull(std::string_view expression) { return EqualsWord(Trimmed(expression), "null"); }

std::optional<std::string> ValueOfLiteral(std::string_view literal, bool backslashEscapes)
{
    literal = Trimmed(literal);
    const std::string_view digits = literal.starts_with('-') ? literal.substr(1) : literal;
    if (!digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos) {
        return std::string(literal);
    }
    if (literal.size() < 2 || literal.front() != '\'' || literal.back() != '\'') {
        return std::nullopt;
    }
    const std::string_view inner = literal.substr(1, literal.size() - 2);
    std::string value;
    for (std::size_t i = 0; i < inner.size(); ++i) {
        const bool isEscape = inner[i] == '\'' || (backslashEscapes && inner[i] == '\\');
        if (isEscape && (i + 1 == inner.size() || (inner[i + 1] != '\'' && inner[i + 1] != '\\'))) {
            return std::nullopt;
        }
        i += isEscape ? 1 : 0;
        value += inner[i];
    }
    return value;
}

} // namespace management::audit
