#include "dbaccess/drivers/common/StatementShape.h"

#include <array>
#include <charconv>
#include <limits>
#include <utility>

namespace dbaccess {

namespace {

// Longer statements are run as they are: what is kept of one stays small.
constexpr std::size_t kLongestStatement = 65536;
constexpr std::size_t kDeepestNesting = 32;
constexpr std::size_t kMostDigits = 18;
constexpr std::size_t kLongestKeyword = 9;

enum class Byte : std::uint8_t {
    forbidden,
    blank,
    letter,
    digit,
    quote,
    comparison,
    minus,
    open,
    close,
    comma,
    end,
    other
};

constexpr std::array<Byte, 256> kBytes = [] {
    std::array<Byte, 256> bytes{};
    const auto mark = [&bytes](std::string_view characters, Byte kind) {
        for (const char ch : characters) {
            bytes[static_cast<unsigned char>(ch)] = kind;
        }
    };
    mark(" \t\r\n\f", Byte::blank);
    mark("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_", Byte::letter);
    mark("0123456789", Byte::digit);
    mark("'", Byte::quote);
    mark("=<>!", Byte::comparison);
    mark("-", Byte::minus);
    mark("(", Byte::open);
    mark(")", Byte::close);
    mark(",", Byte::comma);
    mark(";", Byte::end);
    mark("+*/%|.", Byte::other);
    return bytes;
}();

Byte KindOf(char ch) { return kBytes[static_cast<unsigned char>(ch)]; }

// Looked up for nearly every byte of a statement, hence in tables.
template <class Predicate>
constexpr std::array<bool, 256> TableOf(Predicate holds)
{
    std::array<bool, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i] = holds(kBytes[i]);
    }
    return table;
}

constexpr auto kWordBytes = TableOf([](Byte kind) { return kind == Byte::letter || kind == Byte::digit; });
constexpr auto kColumnListBytes =
    TableOf([](Byte kind) { return kind == Byte::letter || kind == Byte::blank || kind == Byte::comma; });

bool IsWordByte(char ch) { return kWordBytes[static_cast<unsigned char>(ch)]; }

enum class Token : std::uint8_t {
    start,
    name,
    text,
    number,
    comparison,
    open,
    close,
    comma,
    other,
    end,
    // keywords
    kAnd,
    kOr,
    kFrom,
    kWhere,
    kSet,
    kInto,
    kValues,
    kSelect,
    kInsert,
    kUpdate,
    kDelete,
    kUpper,
    kReturning,
    kClause, // one of those after which nothing is cut
};

// The first eight letters in lower case, as a number.
constexpr std::uint64_t KeyOf(std::string_view word)
{
    std::uint64_t key = 0;
    for (const char ch : word.substr(0, 8)) {
        key = key << 8U | (static_cast<unsigned char>(ch) | 0x20U);
    }
    return key;
}

Token WordToken(std::string_view word)
{
    if (word.size() > kLongestKeyword) {
        return Token::name;
    }
    const char ninth = word.size() == kLongestKeyword ? static_cast<char>(word[8] | 0x20) : '\0';
    const auto with = [ninth](char wanted, Token token) { return ninth == wanted ? token : Token::name; };
    switch (KeyOf(word)) {
    case KeyOf("and"):
        return Token::kAnd;
    case KeyOf("or"):
        return Token::kOr;
    case KeyOf("from"):
        return Token::kFrom;
    case KeyOf("where"):
        return Token::kWhere;
    case KeyOf("set"):
        return Token::kSet;
    case KeyOf("into"):
        return Token::kInto;
    case KeyOf("values"):
        return Token::kValues;
    case KeyOf("select"):
        return Token::kSelect;
    case KeyOf("insert"):
        return Token::kInsert;
    case KeyOf("update"):
        return Token::kUpdate;
    case KeyOf("delete"):
        return Token::kDelete;
    case KeyOf("upper"):
        return Token::kUpper;
    case KeyOf("returnin"):
        return with('g', Token::kReturning);
    case KeyOf("intersec"):
        return with('t', Token::kClause);
    case KeyOf("order"):
    case KeyOf("group"):
    case KeyOf("having"):
    case KeyOf("limit"):
    case KeyOf("union"):
    case KeyOf("except"):
    case KeyOf("on"):
    case KeyOf("with"):
    case KeyOf("window"):
    case KeyOf("using"):
        return Token::kClause;
    default:
        return Token::name;
    }
}

/// The next byte of a text literal that may end it or be an escape.
std::size_t FindSign(std::string_view sql, ShapeSyntax syntax, std::size_t at)
{
    if (!syntax.backslashEscapes) {
        return sql.find('\'', at);
    }
    // find_first_of() calls a function for each byte.
    while (at < sql.size() && sql[at] != '\'' && sql[at] != '\\') {
        ++at;
    }
    return at < sql.size() ? at : std::string_view::npos;
}

/// Reads a text literal from its quote on. @return its end; npos for one that must be left alone.
std::size_t EndOfText(std::string_view sql, ShapeSyntax syntax, CutLiteral& literal)
{
    literal.hasEscapes = false;
    for (std::size_t at = literal.begin + 1;; at += 2) {
        at = FindSign(sql, syntax, at);
        if (at == std::string_view::npos) {
            return at;
        }
        const char next = at + 1 < sql.size() ? sql[at + 1] : '\0';
        if (sql[at] == '\'' && next != '\'') {
            literal.length = at + 1 - literal.begin;
            return at + 1;
        }
        if (sql[at] == '\\' && next != '\\' && next != '\'') {
            return std::string_view::npos;
        }
        literal.hasEscapes = true;
    }
}

/// Reads a number from its sign or first digit on. @return whether it is a whole one in its shortest form.
bool ReadPlainNumber(std::string_view sql, CutLiteral& literal)
{
    const bool isNegative = sql[literal.begin] == '-';
    const std::size_t digits = literal.begin + (isNegative ? 1 : 0);
    std::size_t at = digits;
    bool isWhole = true;
    for (; at < sql.size() && (IsWordByte(sql[at]) || sql[at] == '.'); ++at) {
        isWhole = isWhole && KindOf(sql[at]) == Byte::digit;
    }
    literal.length = at - literal.begin;
    const std::size_t count = at - digits;
    if (!isWhole || count == 0 || count > kMostDigits || (sql[digits] == '0' && (count > 1 || isNegative))) {
        return false;
    }
    std::from_chars(sql.data() + literal.begin, sql.data() + at, literal.number);
    return true;
}

/// Whether the planner looks at the number where it stands.
bool TellsPlanner(const CutLiteral& literal)
{
    return literal.isCompared && literal.number >= -1 && literal.number <= 1;
}

// By its digits: the sign is an operator before them.
bool IsLong(const CutLiteral& literal)
{
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    return literal.number > most || literal.number < -most;
}

/// Reads a statement once from its front to its end and notes the literals that can be cut. Every function that gives
/// a bool gives false for a text that must be left alone.
class Scanner {
public:
    Scanner(std::string_view sql, ShapeSyntax syntax, std::vector<CutLiteral>& literals)
        : m_sql(sql), m_syntax(syntax), m_literals(literals)
    {
    }

    bool Run()
    {
        while (m_at < m_sql.size()) {
            if (KindOf(m_sql[m_at]) == Byte::blank) {
                ++m_at;
            } else if (!ReadToken()) {
                return false;
            }
        }
        return m_end || Take(Token::end);
    }

private:
    // Where in a query, or in parentheses inside of it, reading is.
    enum class Place : std::uint8_t {
        columns, // whose texts are the names of the result's columns
        sources,
        where,
        set,
        inert,
    };
    struct Level {
        Place place;
        bool isQuery; // and not just parentheses in one
    };

    enum class InsertPart : std::uint8_t { into, table, columnsOrValues, columns, values, open, list, nothing };

    [[nodiscard]] char Next(std::size_t offset) const
    {
        return m_at + offset < m_sql.size() ? m_sql[m_at + offset] : '\0';
    }

    bool ReadToken()
    {
        const std::size_t begin = m_at;
        switch (KindOf(m_sql[m_at])) {
        case Byte::letter:
            return Take(ReadWord());
        case Byte::digit:
            return ReadNumber();
        case Byte::quote:
            return ReadText();
        case Byte::comparison:
            return Take(ReadComparison());
        case Byte::minus:
            return ReadMinus();
        case Byte::open:
            ++m_at;
            return Take(Token::open);
        case Byte::close:
            ++m_at;
            return Take(Token::close);
        case Byte::comma:
            ++m_at;
            return Take(Token::comma);
        case Byte::end:
            ++m_at;
            return TakeSemicolon();
        case Byte::other:
            ++m_at;
            return (m_sql[begin] != '/' || Next(0) != '*') && Take(Token::other);
        default:
            return false;
        }
    }

    bool TakeSemicolon()
    {
        const bool taken = Take(Token::end);
        m_end = true;
        return taken;
    }

    // With the names before it, as in table.column.
    Token ReadWord()
    {
        const std::size_t begin = m_at;
        do {
            ++m_at; // a letter, or the point before one
            while (m_at < m_sql.size() && IsWordByte(m_sql[m_at])) {
                ++m_at;
            }
        } while (Next(0) == '.' && KindOf(Next(1)) == Byte::letter);
        return WordToken(m_sql.substr(begin, m_at - begin));
    }

    Token ReadComparison()
    {
        const std::size_t begin = m_at;
        while (KindOf(Next(0)) == Byte::comparison) {
            ++m_at;
        }
        const std::string_view text = m_sql.substr(begin, m_at - begin);
        const bool isKnown =
            text == "=" || text == "<>" || text == "!=" || text == "<" || text == "<=" || text == ">" || text == ">=";
        return isKnown ? Token::comparison : Token::other;
    }

    bool ReadMinus()
    {
        if (Next(1) == '-') {
            return false;
        }
        const bool isSign = Is(0, Token::comparison) || Is(0, Token::open) || Is(0, Token::comma);
        if (isSign && KindOf(Next(1)) == Byte::digit) {
            return ReadNumber();
        }
        ++m_at;
        return Take(Token::other);
    }

    bool ReadNumber()
    {
        CutLiteral literal{m_at, 0, false, false, Here() == Place::where, 0};
        const bool isPlain = ReadPlainNumber(m_sql, literal);
        m_at += literal.length;
        return TakeLiteral(Token::number, literal, isPlain && !TellsPlanner(literal) && IsCutPlace());
    }

    bool ReadText()
    {
        CutLiteral literal{m_at, 0, true, false, Here() == Place::where, 0};
        if (m_at > 0 && IsWordByte(m_sql[m_at - 1])) {
            return false;
        }
        m_at = EndOfText(m_sql, m_syntax, literal);
        if (m_at == std::string_view::npos || IsWordByte(Next(0))) {
            return false;
        }
        const bool isInUpper = IsUpperPlace();
        if (!TakeLiteral(Token::text, literal, isInUpper || IsCutPlace())) {
            return false;
        }
        m_closesUpper = isInUpper;
        return true;
    }

    bool TakeLiteral(Token token, const CutLiteral& literal, bool isCut)
    {
        if (!Take(token)) {
            return false;
        }
        if (isCut) {
            m_literals.push_back(literal);
            m_wantsDelimiter = true;
        }
        return true;
    }

    // What was read last (0), and before.
    [[nodiscard]] bool Is(unsigned int before, Token token) const
    {
        return static_cast<Token>(m_history >> (before * 8) & 0xFFU) == token;
    }

    [[nodiscard]] Place Here() const { return m_levels[m_depth].place; }
    [[nodiscard]] bool IsConditionOrAssignment() const { return Here() == Place::where || Here() == Place::set; }

    [[nodiscard]] bool IsCutPlace() const
    {
        if (m_isInsert) {
            return m_insertPart == InsertPart::list && m_depth == 1 && (Is(0, Token::open) || Is(0, Token::comma));
        }
        return !m_isBehindClauses && IsConditionOrAssignment() && Is(0, Token::comparison) &&
               (Is(1, Token::name) || Is(1, Token::close));
    }

    // As name = upper('...').
    [[nodiscard]] bool IsUpperPlace() const
    {
        return !m_isBehindClauses && IsConditionOrAssignment() && Is(0, Token::open) && Is(1, Token::kUpper) &&
               Is(2, Token::comparison) && (Is(3, Token::name) || Is(3, Token::close));
    }

    [[nodiscard]] bool IsDelimiter(Token token) const
    {
        switch (token) {
        case Token::close:
        case Token::comma:
            return true;
        case Token::end:
        case Token::kAnd:
        case Token::kOr:
        case Token::kWhere:
        case Token::kClause:
            return !m_isInsert;
        default:
            return false;
        }
    }

    bool Take(Token token)
    {
        if (m_end || token == Token::kReturning) {
            return false;
        }
        if (m_wantsDelimiter) {
            if (m_closesUpper ? token != Token::close : !IsDelimiter(token)) {
                return false;
            }
            m_wantsDelimiter = std::exchange(m_closesUpper, false);
        }
        const bool taken = Is(0, Token::start) ? TakeFirst(token) : m_isInsert ? TakeOfInsert(token) : TakeNext(token);
        m_history = m_history << 8U | static_cast<std::uint32_t>(token);
        return taken;
    }

    bool TakeFirst(Token token)
    {
        m_isInsert = token == Token::kInsert;
        m_isUpdate = token == Token::kUpdate;
        m_levels[0] = {token == Token::kSelect ? Place::columns : Place::sources, true};
        return m_isInsert || m_isUpdate || token == Token::kSelect || token == Token::kDelete;
    }

    bool TakeNext(Token token)
    {
        Level& level = m_levels[m_depth];
        switch (token) {
        case Token::open:
            return Open(level.place == Place::columns ? Place::inert : level.place);
        case Token::close:
            return Close();
        case Token::kSelect:
            return BeginQuery(level);
        case Token::kFrom:
            MoveTo(Place::sources, level);
            return true;
        case Token::kWhere:
            MoveTo(Place::where, level);
            return true;
        case Token::kSet:
            if (m_isUpdate && m_depth == 0) {
                MoveTo(Place::set, level);
            }
            return true;
        case Token::kClause:
            m_isBehindClauses = true;
            return true;
        case Token::end:
            return m_depth == 0;
        default:
            return true;
        }
    }

    static void MoveTo(Place place, Level& level)
    {
        if (level.isQuery && level.place != Place::inert) {
            level.place = place;
        }
    }

    // Elsewhere than in parentheses of its own it belongs to a compound.
    bool BeginQuery(Level& level) const
    {
        if (!Is(0, Token::open)) {
            return m_isBehindClauses;
        }
        level = {level.place == Place::inert ? Place::inert : Place::columns, true};
        return true;
    }

    bool Open(Place place)
    {
        if (++m_depth == m_levels.size()) {
            return false;
        }
        m_levels[m_depth] = {place, false};
        return true;
    }

    bool Close() { return m_depth-- > 0; }

    // INSERT INTO name [(columns)] VALUES (values), and nothing more.
    bool TakeOfInsert(Token token)
    {
        switch (m_insertPart) {
        case InsertPart::into:
            return Expect(token, Token::kInto, InsertPart::table);
        case InsertPart::table:
            return Expect(token, Token::name, InsertPart::columnsOrValues);
        case InsertPart::columnsOrValues:
            if (token == Token::open) {
                m_insertPart = InsertPart::columns;
                SkipColumns();
                return true;
            }
            return Expect(token, Token::kValues, InsertPart::open);
        case InsertPart::columns:
            m_insertPart = token == Token::close ? InsertPart::values : InsertPart::columns;
            return token != Token::open && token != Token::end;
        case InsertPart::values:
            return Expect(token, Token::kValues, InsertPart::open);
        case InsertPart::open:
            return Expect(token, Token::open, InsertPart::list) && Open(Place::inert);
        case InsertPart::list:
            return TakeOfList(token);
        case InsertPart::nothing:
            break;
        }
        return token == Token::end;
    }

    // Their names are a good part of a statement, and nothing is done with them.
    void SkipColumns()
    {
        while (m_at < m_sql.size() && kColumnListBytes[static_cast<unsigned char>(m_sql[m_at])]) {
            ++m_at;
        }
    }

    bool TakeOfList(Token token)
    {
        if (token == Token::open) {
            return Open(Place::inert);
        }
        if (token == Token::close) {
            m_insertPart = m_depth == 1 ? InsertPart::nothing : InsertPart::list;
            return Close();
        }
        return token != Token::end;
    }

    bool Expect(Token token, Token expected, InsertPart next)
    {
        m_insertPart = next;
        return token == expected;
    }

    std::string_view m_sql;
    ShapeSyntax m_syntax;
    std::vector<CutLiteral>& m_literals;
    std::size_t m_at = 0;
    std::uint32_t m_history = 0;
    std::array<Level, kDeepestNesting> m_levels{};
    std::size_t m_depth = 0;
    InsertPart m_insertPart = InsertPart::into;
    bool m_isInsert = false;
    bool m_isUpdate = false;
    bool m_isBehindClauses = false;
    bool m_wantsDelimiter = false; // after a literal that is cut
    bool m_closesUpper = false;    // that literal is upper()'s
    bool m_end = false;
};

/// Reads a literal where another one was. @return its end; npos where the statement has to be read anew.
std::size_t EndOfSuccessor(std::string_view statement, ShapeSyntax syntax, CutLiteral& literal)
{
    const char first = statement[literal.begin];
    if (literal.isText) {
        return first == '\'' ? EndOfText(statement, syntax, literal) : std::string_view::npos;
    }
    const bool wasLong = IsLong(literal);
    const bool isSame = (first == '-' || KindOf(first) == Byte::digit) && ReadPlainNumber(statement, literal) &&
                        !TellsPlanner(literal) && IsLong(literal) == wasLong;
    return isSame ? literal.begin + literal.length : std::string_view::npos;
}

void AppendTypedPlaceholder(std::string& text, std::size_t index, const CutLiteral& literal)
{
    std::array<char, 24> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), index + 1);
    text += '$';
    text.append(digits.data(), written.ptr);
    if (!literal.isText) {
        text += IsLong(literal) ? "::int8" : "::int4";
    }
}

} // namespace

// Statements come in rows of one shape. What lies between the literals is the same then, so that reading it again
// would lead to the same places.
bool StatementShape::CutAsBefore(std::string_view statement)
{
    if (m_parts.empty()) {
        return false;
    }
    const std::string_view shape = m_text;
    std::size_t at = 0;
    for (std::size_t i = 0;; ++i) {
        const auto [begin, end] = m_parts[i];
        const std::string_view part = shape.substr(begin, end - begin);
        if (i == m_literals.size()) {
            return statement.substr(at) == part;
        }
        CutLiteral& literal = m_literals[i];
        literal.begin = at + part.size();
        if (literal.begin >= statement.size() || statement.compare(at, part.size(), part) != 0) {
            return false;
        }
        at = EndOfSuccessor(statement, m_syntax, literal);
        if (at == std::string_view::npos) {
            return false;
        }
    }
}

bool StatementShape::Cut(std::string_view statement)
{
    if (statement.size() <= kLongestStatement && CutAsBefore(statement)) {
        return true;
    }
    m_literals.clear();
    m_parts.clear();
    if (statement.size() > kLongestStatement || !Scanner(statement, m_syntax, m_literals).Run()) {
        return false;
    }
    m_text.clear();
    std::size_t copied = 0;
    const auto append = [&](std::size_t end) {
        const std::size_t begin = m_text.size();
        m_text.append(statement, copied, end - copied);
        m_parts.emplace_back(begin, m_text.size());
    };
    for (std::size_t i = 0; i < m_literals.size(); ++i) {
        const CutLiteral& literal = m_literals[i];
        append(literal.begin);
        copied = literal.begin + literal.length;
        if (m_syntax.typedPlaceholders) {
            AppendTypedPlaceholder(m_text, i, literal);
        } else {
            m_text += '?';
        }
    }
    append(statement.size());
    return true;
}

std::string_view StatementShape::UnescapeInPlace(char* statement, const CutLiteral& literal) const noexcept
{
    char* const begin = statement + literal.begin + 1;
    const char* const end = begin + literal.length - 2;
    if (!literal.hasEscapes) {
        return {begin, static_cast<std::size_t>(end - begin)};
    }
    char* to = begin;
    for (const char* from = begin; from < end; ++from) {
        // What was cut has both signs only before what they replace.
        const bool isFirstOfTwo = *from == '\'' || (*from == '\\' && m_syntax.backslashEscapes);
        from += isFirstOfTwo ? 1 : 0;
        *to++ = *from;
    }
    return {begin, static_cast<std::size_t>(to - begin)};
}

} // namespace dbaccess
