#include "dbaccess/drivers/odbc/Statement.h"

#include "dbaccess/CAException.h"
#include "dbaccess/drivers/odbc/Text.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace dbaccess::odbc {

namespace {

using WordList = std::initializer_list<std::string_view>;

bool IsDigit(char ch) { return ch >= '0' && ch <= '9'; }

// Bytes above ASCII are letters of names on every engine.
bool BeginsName(char ch)
{
    return (Lower(ch) >= 'a' && Lower(ch) <= 'z') || ch == '_' || static_cast<unsigned char>(ch) >= 0x80;
}

bool GoesOnInName(char ch) { return BeginsName(ch) || IsDigit(ch); }

/// What an engine reads as one thing.
struct Token {
    enum class Kind { blank, word, quoted, mark }; // a comment is a blank
    Kind kind = Kind::blank;
    std::string_view text;

    [[nodiscard]] bool IsWord(std::string_view lower) const
    {
        return kind == Kind::word && EqualIgnoringCase(text, lower);
    }
    [[nodiscard]] bool IsWordOf(WordList lower) const
    {
        return std::ranges::any_of(lower, [this](std::string_view word) { return IsWord(word); });
    }
    [[nodiscard]] bool IsMark(char ch) const { return kind == Kind::mark && text.front() == ch; }
};

/// Takes a text apart by an engine's rules.
class Scanner {
public:
    Scanner(std::string_view text, Dialect dialect) : m_rest(text), m_dialect(dialect) {}

    /// @return false at the end.
    bool Next(Token& token)
    {
        if (m_rest.empty()) {
            return false;
        }
        token = Front();
        NoteEscapes(token);
        m_rest.remove_prefix(token.text.size());
        return true;
    }

    /// The next word, passing over all else. @return false without one.
    bool NextWord(Token& token)
    {
        while (Next(token)) {
            if (token.kind == Token::Kind::word) {
                return true;
            }
        }
        return false;
    }

private:
    [[nodiscard]] bool Is(Dialect dialect) const { return m_dialect == dialect; }

    [[nodiscard]] Token Of(Token::Kind kind, std::size_t length) const { return {kind, m_rest.substr(0, length)}; }

    [[nodiscard]] Token Front() const
    {
        if (const std::size_t comment = CommentLength(); comment != 0) {
            return Of(Token::Kind::blank, comment);
        }
        if (const std::size_t quoted = QuotedLength(); quoted != 0) {
            return Of(Token::Kind::quoted, quoted);
        }
        if (BeginsName(m_rest.front())) {
            return Of(Token::Kind::word, While([](char ch) { return GoesOnInName(ch) || ch == '$'; }, 1));
        }
        if (IsDigit(m_rest.front())) {
            return Of(Token::Kind::mark, While(IsDigit, 1));
        }
        if (IsRunComment()) {
            return Of(Token::Kind::mark, While(IsDigit, m_rest.find('!') + 1));
        }
        const bool isBlank = kBlanks.find(m_rest.front()) != std::string_view::npos;
        return Of(isBlank ? Token::Kind::blank : Token::Kind::mark, 1);
    }

    template <class Fits>
    [[nodiscard]] std::size_t While(Fits fits, std::size_t from) const
    {
        const auto* end = std::find_if_not(m_rest.begin() + from, m_rest.end(), fits);
        return static_cast<std::size_t>(end - m_rest.begin());
    }

    [[nodiscard]] std::size_t UpTo(std::string_view end, std::size_t from) const
    {
        const std::size_t found = m_rest.find(end, from);
        return found == std::string_view::npos ? m_rest.size() : found + end.size();
    }

    // MySQL runs the contents of /*! ... */.
    [[nodiscard]] bool IsRunComment() const
    {
        return Is(Dialect::mysql) && (m_rest.starts_with("/*!") || m_rest.starts_with("/*M!"));
    }

    // 0 where no comment begins.
    [[nodiscard]] std::size_t CommentLength() const
    {
        const bool isMysql = Is(Dialect::mysql);
        if (Is(Dialect::access)) {
            return 0;
        }
        const bool dashes = m_rest.starts_with("--") &&
                            (!isMysql || m_rest.size() == 2 || static_cast<unsigned char>(m_rest[2]) <= ' ');
        if (dashes || (isMysql && m_rest.starts_with('#'))) {
            return std::min(m_rest.size(), m_rest.find_first_of(Is(Dialect::postgresql) ? "\r\n" : "\n"));
        }
        if (!m_rest.starts_with("/*") || IsRunComment()) {
            return 0;
        }
        return Is(Dialect::postgresql) || Is(Dialect::sqlServer) ? NestedCommentLength() : UpTo("*/", 2);
    }

    [[nodiscard]] std::size_t NestedCommentLength() const
    {
        std::size_t depth = 0;
        for (std::size_t i = 0; i < m_rest.size(); ++i) {
            const std::string_view two = m_rest.substr(i, 2);
            if (two == "/*" || two == "*/") {
                depth = two == "/*" ? depth + 1 : depth - 1;
                ++i;
            }
            if (depth == 0) {
                return i + 1;
            }
        }
        return m_rest.size();
    }

    // 0 where nothing quoted begins.
    [[nodiscard]] std::size_t QuotedLength() const
    {
        switch (m_rest.front()) {
        case '\'':
            return UpToQuote('\'', Is(Dialect::mysql) || m_escapes);
        case '"':
            return UpToQuote('"', Is(Dialect::mysql));
        case '`':
            return Is(Dialect::mysql) || Is(Dialect::sqlite) || Is(Dialect::access) ? UpToQuote('`', false) : 0;
        case '[':
            return Is(Dialect::sqlServer) || Is(Dialect::sqlite) || Is(Dialect::access) ? UpToQuote(']', false) : 0;
        case '$':
            return Is(Dialect::postgresql) ? DollarQuotedLength() : 0;
        default:
            return 0;
        }
    }

    // A doubled quote is a quote; of brackets only on SQL Server.
    [[nodiscard]] std::size_t UpToQuote(char quote, bool backslashEscapes) const
    {
        const bool canBeDoubled = quote != ']' || Is(Dialect::sqlServer);
        for (std::size_t i = 1; i < m_rest.size(); ++i) {
            const bool isDoubled = m_rest[i] == quote && canBeDoubled && m_rest.substr(i + 1).starts_with(quote);
            if (isDoubled || (backslashEscapes && m_rest[i] == '\\')) {
                ++i;
            } else if (m_rest[i] == quote) {
                return i + 1;
            }
        }
        return m_rest.size();
    }

    // $tag$...$tag$; a parameter's $1 is none.
    [[nodiscard]] std::size_t DollarQuotedLength() const
    {
        const std::size_t tag = While(GoesOnInName, 1);
        const bool isTag = tag < m_rest.size() && m_rest[tag] == '$' && !IsDigit(m_rest[1]);
        return isTag ? UpTo(m_rest.substr(0, tag + 1), tag + 1) : 0;
    }

    // PostgreSQL's E'...', which goes on in further quotes on the lines below it.
    void NoteEscapes(const Token& token)
    {
        const bool begins = token.IsWord("e") && m_rest.substr(1).starts_with('\'');
        const bool goesOn = token.kind == Token::Kind::blank || token.text.front() == '\'';
        m_escapes = Is(Dialect::postgresql) && (begins || (m_escapes && goesOn));
    }

    std::string_view m_rest;
    Dialect m_dialect;
    bool m_escapes = false; // whether backslashes escape in the next quotes
};

// How long the text is up to the end of a token of it.
std::size_t EndOf(const Token& token, std::string_view text)
{
    return static_cast<std::size_t>(token.text.data() - text.data()) + token.text.size();
}

std::string_view WithoutCommentsInFront(std::string_view text, Dialect dialect)
{
    std::size_t begin = 0;
    Scanner scanner(text, dialect);
    for (Token token; scanner.Next(token) && token.kind == Token::Kind::blank;) {
        begin = EndOf(token, text);
    }
    return text.substr(begin);
}

bool HasStatement(std::string_view text, Dialect dialect)
{
    Scanner scanner(text, dialect);
    for (Token token; scanner.Next(token);) {
        if (token.kind != Token::Kind::blank && !token.IsMark(';')) {
            return true;
        }
    }
    return false;
}

// @return how long the statement in front is, up to its semicolon. One in parentheses ends nothing (rules).
std::size_t StatementLength(std::string_view text, Dialect dialect)
{
    int depth = 0;
    Scanner scanner(text, dialect);
    for (Token token; scanner.Next(token);) {
        depth += token.IsMark('(') ? 1 : token.IsMark(')') ? -1 : 0;
        if (token.IsMark(';') && (depth <= 0 || dialect != Dialect::postgresql)) {
            return EndOf(token, text) - 1;
        }
    }
    return text.size();
}

// CREATE [TEMP] TRIGGER ... BEGIN statement; statement; END
bool IsSqliteTrigger(std::string_view statement)
{
    Scanner scanner(statement, Dialect::sqlite);
    Token token;
    return scanner.NextWord(token) && token.IsWord("create") && scanner.NextWord(token) &&
           (!token.IsWordOf({"temp", "temporary"}) || scanner.NextWord(token)) && token.IsWord("trigger");
}

// @return how long a trigger is: up to the first END that is alone between semicolons.
std::size_t SqliteTriggerLength(std::string_view text)
{
    std::size_t length = 0;
    while (length < text.size()) {
        const std::string_view rest = text.substr(length);
        const std::string_view piece = rest.substr(0, StatementLength(rest, Dialect::sqlite));
        Scanner scanner(piece, Dialect::sqlite);
        Token token;
        const bool isEnd = scanner.NextWord(token) && token.IsWord("end") &&
                           !HasStatement(piece.substr(EndOf(token, piece)), Dialect::sqlite);
        length += piece.size();
        if (isEnd) {
            return length;
        }
        ++length;
    }
    return text.size();
}

// CREATE [OR REPLACE] [DEFINER = ...] TRIGGER and the like: their bodies have semicolons of their own, and the server
// looks for a second statement itself.
bool HasMysqlBody(std::string_view statement)
{
    Scanner scanner(statement, Dialect::mysql);
    Token token;
    if (!scanner.NextWord(token) || !token.IsWord("create")) {
        return false;
    }
    while (scanner.NextWord(token) && token.IsWordOf({"or", "replace"})) {
    }
    return token.IsWordOf({"definer", "aggregate", "trigger", "procedure", "function", "event", "package"});
}

// MySQL commits before these. What touches a temporary table alone is none of them.
bool CommitsOnMysql(std::string_view statement)
{
    Scanner scanner(statement, Dialect::mysql);
    Token token;
    scanner.NextWord(token);
    if (token.IsWord("set")) {
        return HasWord(statement, Dialect::mysql, {"autocommit", "password", "statement", "role"});
    }
    if (token.IsWordOf({"create", "drop"})) {
        while (scanner.NextWord(token) && token.IsWordOf({"or", "replace"})) {
        }
        return !token.IsWord("temporary");
    }
    return token.IsWordOf({"alter", "rename", "truncate", "lock", "unlock", "grant", "revoke", "analyze", "check",
                           "optimize", "repair", "flush", "cache", "load", "install", "uninstall", "change", "reset",
                           "stop"});
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
    if (dialect == Dialect::mysql && HasMysqlBody(statement)) {
        return statement;
    }
    const bool isTrigger = dialect == Dialect::sqlite && IsSqliteTrigger(statement);
    const std::size_t length = isTrigger ? SqliteTriggerLength(statement) : StatementLength(statement, dialect);
    if (length == 0 || HasStatement(statement.substr(length), dialect)) {
        throw CAException("there is more than one statement in the text");
    }
    return statement.substr(0, length);
}

bool BeginsWithOneOf(std::string_view statement, Dialect dialect, WordList words)
{
    Token token;
    return Scanner(statement, dialect).NextWord(token) && token.IsWordOf(words);
}

bool HasWord(std::string_view statement, Dialect dialect, WordList words)
{
    Scanner scanner(statement, dialect);
    for (Token token; scanner.NextWord(token);) {
        if (token.IsWordOf(words)) {
            return true;
        }
    }
    return false;
}

bool EndsTransaction(std::string_view statement, Dialect dialect)
{
    if (BeginsWithOneOf(statement, dialect, {"rollback"})) {
        return !HasWord(statement, dialect, {"to"});
    }
    return BeginsWithOneOf(statement, dialect, {"begin", "commit", "end", "abort", "start"}) ||
           (dialect == Dialect::mysql && CommitsOnMysql(statement));
}

} // namespace dbaccess::odbc
