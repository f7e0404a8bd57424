#include "dbaccess/drivers/odbc/Statement.h"

#include "dbaccess/CAException.h"
#include "dbaccess/drivers/odbc/ConnectionString.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>

namespace dbaccess::odbc {

namespace {

constexpr std::string_view kBlanks = " \t\r\n\v\f";

char Lower(char ch) { return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch + ('a' - 'A')) : ch; }

// Bytes above ASCII are letters of names on every engine.
bool IsNameByte(char ch)
{
    return (Lower(ch) >= 'a' && Lower(ch) <= 'z') || (ch >= '0' && ch <= '9') || ch == '_' ||
           static_cast<unsigned char>(ch) >= 0x80;
}

/// Goes through a text by what the engine reads as one thing: a quoted text or name, a comment, a character.
class Scanner {
public:
    Scanner(std::string_view text, Dialect dialect) : m_text(text), m_dialect(dialect) {}

    [[nodiscard]] bool AtEnd() const { return m_at >= m_text.size(); }
    [[nodiscard]] std::size_t At() const { return m_at; }
    [[nodiscard]] char Current() const { return m_text[m_at]; }

    /// Passes over one thing. @return whether it was one that an engine runs: no blank, no comment.
    bool Next()
    {
        const std::size_t comment = CommentLength();
        if (comment != 0) {
            m_at += comment;
            return false;
        }
        const bool runs = kBlanks.find(Current()) == std::string_view::npos;
        m_at += QuotedLength();
        return runs;
    }

private:
    [[nodiscard]] std::string_view Rest() const { return m_text.substr(m_at); }
    [[nodiscard]] bool Is(Dialect dialect) const { return m_dialect == dialect; }

    [[nodiscard]] std::size_t UpTo(std::string_view end, std::size_t from) const
    {
        const std::size_t found = Rest().find(end, from);
        return found == std::string_view::npos ? Rest().size() : found + end.size();
    }

    // 0 where no comment begins. MySQL runs what stands in /*! ... */.
    [[nodiscard]] std::size_t CommentLength() const
    {
        const std::string_view rest = Rest();
        const bool isMysql = Is(Dialect::mysql);
        if (Is(Dialect::access)) {
            return 0;
        }
        const bool dashes =
            rest.starts_with("--") && (!isMysql || rest.size() == 2 || static_cast<unsigned char>(rest[2]) <= ' ');
        if (dashes || (isMysql && rest.starts_with('#'))) {
            return UpTo("\n", 0);
        }
        if (!rest.starts_with("/*") || (isMysql && (rest.starts_with("/*!") || rest.starts_with("/*M!")))) {
            return 0;
        }
        return Is(Dialect::postgresql) || Is(Dialect::sqlServer) ? NestedCommentLength() : UpTo("*/", 2);
    }

    [[nodiscard]] std::size_t NestedCommentLength() const
    {
        const std::string_view rest = Rest();
        std::size_t depth = 0;
        for (std::size_t i = 0; i < rest.size(); ++i) {
            const std::string_view two = rest.substr(i, 2);
            if (two == "/*" || two == "*/") {
                depth = two == "/*" ? depth + 1 : depth - 1;
                ++i;
            }
            if (depth == 0) {
                return i + 1;
            }
        }
        return rest.size();
    }

    // 1 where nothing quoted begins.
    [[nodiscard]] std::size_t QuotedLength() const
    {
        switch (Current()) {
        case '\'':
            return UpToQuote('\'', Is(Dialect::mysql) || (Is(Dialect::postgresql) && IsBehindE()));
        case '"':
            return UpToQuote('"', Is(Dialect::mysql));
        case '`':
            return Is(Dialect::mysql) || Is(Dialect::sqlite) || Is(Dialect::access) ? UpToQuote('`', false) : 1;
        case '[':
            return Is(Dialect::sqlServer) || Is(Dialect::sqlite) || Is(Dialect::access) ? UpToQuote(']', false) : 1;
        case '$':
            return Is(Dialect::postgresql) ? DollarQuotedLength() : 1;
        default:
            return 1;
        }
    }

    // A doubled quote stands for itself; of brackets only on SQL Server.
    [[nodiscard]] std::size_t UpToQuote(char quote, bool backslashEscapes) const
    {
        const std::string_view rest = Rest();
        const bool canBeDoubled = quote != ']' || Is(Dialect::sqlServer);
        for (std::size_t i = 1; i < rest.size(); ++i) {
            const bool isDoubled = rest[i] == quote && canBeDoubled && rest.substr(i + 1).starts_with(quote);
            if (isDoubled || (backslashEscapes && rest[i] == '\\')) {
                ++i;
            } else if (rest[i] == quote) {
                return i + 1;
            }
        }
        return rest.size();
    }

    // E'...', and no longer name that ends with an E.
    [[nodiscard]] bool IsBehindE() const
    {
        return m_at > 0 && Lower(m_text[m_at - 1]) == 'e' &&
               (m_at == 1 || (!IsNameByte(m_text[m_at - 2]) && m_text[m_at - 2] != '$'));
    }

    // $tag$...$tag$, unless the $ belongs to a name or a parameter.
    [[nodiscard]] std::size_t DollarQuotedLength() const
    {
        const std::string_view rest = Rest();
        std::size_t tag = 1;
        while (tag < rest.size() && IsNameByte(rest[tag])) {
            ++tag;
        }
        const bool isTag = tag < rest.size() && rest[tag] == '$' && (rest[1] < '0' || rest[1] > '9');
        const bool isInName = m_at > 0 && (IsNameByte(m_text[m_at - 1]) || m_text[m_at - 1] == '$');
        return isTag && !isInName ? UpTo(rest.substr(0, tag + 1), tag + 1) : 1;
    }

    std::string_view m_text;
    Dialect m_dialect;
    std::size_t m_at = 0;
};

// From where on there is something to run.
std::string_view WithoutCommentsInFront(std::string_view text, Dialect dialect)
{
    Scanner scanner(text, dialect);
    std::size_t begin = 0;
    while (!scanner.AtEnd() && !scanner.Next()) {
        begin = scanner.At();
    }
    return text.substr(begin);
}

// @return how long the statement in front is, up to its semicolon. One in parentheses ends nothing (rules).
std::size_t StatementLength(std::string_view text, Dialect dialect)
{
    int depth = 0;
    for (Scanner scanner(text, dialect); !scanner.AtEnd(); scanner.Next()) {
        const char ch = scanner.Current();
        depth += ch == '(' ? 1 : ch == ')' ? -1 : 0;
        if (ch == ';' && (depth <= 0 || dialect != Dialect::postgresql)) {
            return scanner.At();
        }
    }
    return text.size();
}

bool HasStatement(std::string_view text, Dialect dialect)
{
    for (Scanner scanner(text, dialect); !scanner.AtEnd();) {
        const bool isSemicolon = scanner.Current() == ';';
        if (scanner.Next() && !isSemicolon) {
            return true;
        }
    }
    return false;
}

// Their bodies have semicolons of their own; these engines look for a second statement themselves.
bool HasBody(std::string_view statement, Dialect dialect)
{
    constexpr std::array kBodies = {"trigger", "procedure", "function", "event", "package"};
    return (dialect == Dialect::mysql || dialect == Dialect::sqlite) && BeginsWithOneOf(statement, "create") &&
           std::ranges::any_of(
               kBodies, [&](const char* word) { return Mentions(statement.substr(0, statement.find(';')), word); });
}

} // namespace

Dialect DialectOf(std::string_view name)
{
    constexpr std::pair<const char*, Dialect> kNames[] = {
        {"sql server", Dialect::sqlServer},  {"access", Dialect::access}, {"mdbtools", Dialect::access},
        {"postgresql", Dialect::postgresql}, {"mariadb", Dialect::mysql}, {"mysql", Dialect::mysql},
        {"sqlite", Dialect::sqlite},
    };
    const auto* found = std::ranges::find_if(kNames, [name](const auto& one) { return Mentions(name, one.first); });
    return found == std::end(kNames) ? Dialect::other : found->second;
}

std::string_view OneStatement(std::string_view text, Dialect dialect)
{
    const std::string_view statement = WithoutCommentsInFront(text, dialect);
    if (!HasStatement(statement, dialect)) {
        throw CAException("there is no statement in the text");
    }
    if (HasBody(statement, dialect)) {
        return text;
    }
    const std::size_t length = StatementLength(text, dialect);
    if (!HasStatement(text.substr(0, length), dialect) || HasStatement(text.substr(length), dialect)) {
        throw CAException("there is more than one statement in the text");
    }
    return text.substr(0, length);
}

bool BeginsWithOneOf(std::string_view statement, std::string_view words)
{
    std::string word;
    while (word.size() < statement.size() && IsNameByte(statement[word.size()])) {
        word += Lower(statement[word.size()]);
    }
    while (!words.empty() && !word.empty()) {
        const std::string_view one = words.substr(0, words.find(' '));
        if (one == word) {
            return true;
        }
        words.remove_prefix(std::min(words.size(), one.size() + 1));
    }
    return false;
}

bool EndsTransaction(std::string_view statement, Dialect dialect)
{
    const std::string_view text = WithoutCommentsInFront(statement, dialect);
    if (BeginsWithOneOf(text, "rollback")) {
        return !Mentions(text, " to ");
    }
    if (BeginsWithOneOf(text, "begin commit end abort start")) {
        return true;
    }
    return dialect == Dialect::mysql && !Mentions(text.substr(0, text.find('(')), "temporary") &&
           BeginsWithOneOf(text, "create alter drop rename truncate lock grant revoke analyze optimize repair flush");
}

} // namespace dbaccess::odbc
