#include "management/audit/WriteStatement.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace management::audit {

namespace {

bool IsBlank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
bool IsNameByte(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '.'; }

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

bool EqualsWord(std::string_view text, std::string_view upper)
{
    return std::ranges::equal(text, upper,
                              [](char a, char b) { return std::toupper(static_cast<unsigned char>(a)) == b; });
}

/// Goes through a statement: words, literals, brackets.
class Scanner {
public:
    Scanner(std::string_view sql, bool backslashEscapes) : m_rest(sql), m_backslashEscapes(backslashEscapes) {}

    /// Takes the next word, if it is this one. @param upper  in capitals.
    bool Take(std::string_view upper)
    {
        Scanner ahead = *this;
        if (!EqualsWord(ahead.TakeName(), upper)) {
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
        while (at < m_rest.size() && m_rest[at] != '\'') {
            at += m_backslashEscapes && m_rest[at] == '\\' ? 2 : 1;
        }
        return at;
    }
    [[nodiscard]] bool IsWhereAt(std::size_t at) const
    {
        constexpr std::string_view where = "WHERE";
        const bool begins = at > 0 && !IsNameByte(m_rest[at - 1]);
        const std::size_t end = at + where.size();
        return begins && EqualsWord(m_rest.substr(at, where.size()), where) &&
               (end >= m_rest.size() || !IsNameByte(m_rest[end]));
    }

    std::string_view m_rest;
    bool m_backslashEscapes;
};

std::vector<std::string> TakeList(Scanner& scanner, bool& isWhole)
{
    std::vector<std::string> list;
    isWhole = isWhole && scanner.TakeByte('(');
    do {
        list.emplace_back(scanner.TakeExpression());
    } while (scanner.TakeByte(','));
    isWhole = isWhole && scanner.TakeByte(')');
    return list;
}

WriteStatement ReadInsert(Scanner& scanner)
{
    WriteStatement statement{WriteStatement::Kind::insert, std::string(scanner.TakeName())};
    const std::vector<std::string> columns = TakeList(scanner, statement.isWhole);
    if (statement.isWhole && scanner.Take("SELECT")) {
        statement.query = fmt::format("SELECT {}", scanner.TakeRest());
        for (const std::string& column : columns) {
            statement.assignments.emplace_back(column, "");
        }
        return statement;
    }
    statement.isWhole = statement.isWhole && scanner.Take("VALUES");
    const std::vector<std::string> values = TakeList(scanner, statement.isWhole);
    statement.isWhole = statement.isWhole && values.size() == columns.size() && scanner.TakeRest().empty();
    for (std::size_t i = 0; statement.isWhole && i < columns.size(); ++i) {
        statement.assignments.emplace_back(columns[i], values[i]);
    }
    return statement;
}

WriteStatement ReadUpdate(Scanner& scanner)
{
    WriteStatement statement{WriteStatement::Kind::update, std::string(scanner.TakeName())};
    statement.isWhole = scanner.Take("SET");
    do {
        const std::string_view column = scanner.TakeName();
        statement.isWhole = statement.isWhole && scanner.TakeByte('=');
        statement.assignments.emplace_back(column, scanner.TakeExpression());
    } while (scanner.TakeByte(','));
    statement.condition = scanner.TakeRest();
    return statement;
}

} // namespace

std::optional<WriteStatement> ParseWrite(std::string_view sql, bool backslashEscapes)
{
    Scanner scanner(sql, backslashEscapes);
    if (scanner.Take("INSERT") && scanner.Take("INTO")) {
        return ReadInsert(scanner);
    }
    if (scanner.Take("UPDATE")) {
        return ReadUpdate(scanner);
    }
    if (scanner.Take("DELETE") && scanner.Take("FROM")) {
        WriteStatement statement{WriteStatement::Kind::remove, std::string(scanner.TakeName())};
        statement.condition = scanner.TakeRest();
        return statement;
    }
    return std::nullopt;
}

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
