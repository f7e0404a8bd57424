#include "dbaccess/drivers/odbc/Cursor.h"

#include "dbaccess/DateText.h"
#include "dbaccess/drivers/common/NumberText.h"
#include "dbaccess/drivers/odbc/Text.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <utility>

namespace dbaccess::odbc {

namespace {

constexpr std::size_t kFirstPiece = 4096;
constexpr std::size_t kLargestPiece = 1U << 20U;
// A character in UTF-8 that a driver does not cut in two leaves so many bytes of a piece free.
constexpr std::size_t kLeftFree = 3;

SQLUSMALLINT Number(std::size_t column) { return static_cast<SQLUSMALLINT>(column + 1); }

Value TextValue(std::string_view bytes)
{
    Value value;
    value.kind = Field::Kind::text;
    value.text = platform::AnsiIsUtf8() ? CString(bytes) : platform::Utf8ToAnsi(bytes);
    return value;
}

Value IntegerValue(std::int64_t number)
{
    Value value;
    value.kind = Field::Kind::integer;
    value.integer = number;
    return value;
}

Value RealValue(double number)
{
    Value value;
    value.kind = Field::Kind::real;
    value.real = number;
    return value;
}

// A whole number beyond 64 bits with a sign stays the text that it came as.
Value NumberValue(std::string_view text)
{
    if (const auto integer = IntegerIn(text)) {
        return IntegerValue(*integer);
    }
    const bool isWhole = text.find_first_not_of("+-0123456789") == std::string_view::npos;
    const auto real = isWhole ? std::nullopt : RealIn(text);
    return real ? RealValue(*real) : TextValue(text);
}

// Of MySQL: the first byte is the highest.
std::int64_t IntegerOfBits(std::string_view bytes)
{
    std::uint64_t number = 0;
    for (const char byte : bytes) {
        number = number << 8U | static_cast<unsigned char>(byte);
    }
    return static_cast<std::int64_t>(number);
}

// Engines whose columns of dates can hold what is no date, or whose texts of dates are the ones that are wanted.
bool GivesDatesAsText(Dialect dialect)
{
    return dialect == Dialect::sqlite || dialect == Dialect::mysql || dialect == Dialect::postgresql;
}

// SQLite's columns hold values of any type, which are read as what they look like.
Shape ShapeOf(SQLSMALLINT type, Dialect dialect)
{
    switch (type) {
    case SQL_BIT:
        return dialect == Dialect::sqlite ? Shape::number : Shape::bit;
    case SQL_TINYINT:
    case SQL_SMALLINT:
    case SQL_INTEGER:
    case SQL_BIGINT:
    case SQL_NUMERIC:
    case SQL_DECIMAL:
    case SQL_REAL:
        return Shape::number;
    case SQL_FLOAT:
    case SQL_DOUBLE:
        return dialect == Dialect::sqlite ? Shape::number : Shape::real;
    case SQL_TYPE_DATE:
        return GivesDatesAsText(dialect) ? Shape::text : Shape::day;
    case SQL_DATETIME:
    case SQL_TIMESTAMP:
    case SQL_TYPE_TIMESTAMP:
        return GivesDatesAsText(dialect) ? Shape::text : Shape::moment;
    case SQL_BINARY:
    case SQL_VARBINARY:
    case SQL_LONGVARBINARY:
        return Shape::bytes;
    default:
        return Shape::text;
    }
}

Field FieldOf(const Value& value)
{
    switch (value.kind) {
    case Field::Kind::integer:
        return Field::Integer(value.integer);
    case Field::Kind::real:
        return Field::Real(value.real);
    case Field::Kind::text:
        return Field::Text(value.text.GetString(), value.text.View().size());
    case Field::Kind::null:
        break;
    }
    return Field::Null();
}

template <class Part>
void Append(std::string& bytes, const Part& part)
{
    bytes.append(reinterpret_cast<const char*>(&part), sizeof part);
}

template <class Part>
Part Taken(const std::string& bytes, std::size_t& at)
{
    Part part{};
    std::memcpy(&part, bytes.data() + at, sizeof part);
    at += sizeof part;
    return part;
}

} // namespace

void BufferedRows::Add(const std::vector<Value>& row)
{
    for (const Value& value : row) {
        Append(m_bytes, value.kind);
        if (value.kind == Field::Kind::integer) {
            Append(m_bytes, value.integer);
        } else if (value.kind == Field::Kind::real) {
            Append(m_bytes, value.real);
        } else if (value.kind == Field::Kind::text) {
            Append(m_bytes, value.text.View().size());
            m_bytes.append(value.text.View());
        }
    }
}

bool BufferedRows::Next(std::vector<Value>& row)
{
    if (m_next == m_bytes.size()) {
        return false;
    }
    for (Value& value : row) {
        value.kind = Taken<Field::Kind>(m_bytes, m_next);
        if (value.kind == Field::Kind::integer) {
            value.integer = Taken<std::int64_t>(m_bytes, m_next);
        } else if (value.kind == Field::Kind::real) {
            value.real = Taken<double>(m_bytes, m_next);
        } else if (value.kind == Field::Kind::text) {
            const auto length = Taken<std::size_t>(m_bytes, m_next);
            value.text = CString(std::string_view(m_bytes).substr(m_next, length));
            m_next += length;
        }
    }
    return true;
}

Rows::Rows(std::shared_ptr<Connection> connection, std::string sql)
    : m_connection(std::move(connection)), m_sql(std::move(sql)), m_buffer(kFirstPiece)
{
    Open();
}

Rows::~Rows() { End(); }

void Rows::Open()
{
    m_statement = m_connection->Open(m_sql, *this);
    m_arriving = m_statement != nullptr;
    try {
        Describe();
    } catch (...) {
        End();
        throw;
    }
}

void Rows::Describe()
{
    SQLSMALLINT count = 0;
    if (m_statement != nullptr) {
        SQLNumResultCols(m_statement.get(), &count);
    }
    m_columns.clear();
    for (SQLSMALLINT i = 1; i <= count; ++i) {
        std::array<SQLCHAR, 1024> name{};
        SQLSMALLINT length = 0;
        SQLSMALLINT type = 0;
        SQLULEN size = 0;
        SQLSMALLINT digits = 0;
        SQLSMALLINT nullable = 0;
        SQLDescribeCol(m_statement.get(), static_cast<SQLUSMALLINT>(i), name.data(),
                       static_cast<SQLSMALLINT>(name.size()), &length, &type, &size, &digits, &nullable);
        m_columns.push_back(
            {TextValue(reinterpret_cast<const char*>(name.data())).text, ShapeAt(static_cast<SQLUSMALLINT>(i), type)});
    }
    m_row.resize(m_columns.size());
}

// MySQL's BIT of several bits is described as binary.
Shape Rows::ShapeAt(SQLUSMALLINT number, SQLSMALLINT type) const
{
    const Shape shape = ShapeOf(type, m_connection->Engine());
    if (shape != Shape::bytes || m_connection->Engine() != Dialect::mysql) {
        return shape;
    }
    std::array<char, 64> name{};
    SQLSMALLINT length = 0;
    SQLColAttribute(m_statement.get(), number, SQL_DESC_TYPE_NAME, name.data(), static_cast<SQLSMALLINT>(name.size()),
                    &length, nullptr);
    return EqualIgnoringCase(name.data(), "bit") ? Shape::bits : shape;
}

void Rows::End() noexcept
{
    m_hasRow = false;
    if (std::exchange(m_arriving, false)) {
        m_connection->Abandon(m_statement.get());
    }
    m_statement.reset();
    m_kept.reset();
    m_failure.reset();
}

void Rows::Restart()
{
    End();
    Open();
}

bool Rows::Step()
{
    m_hasRow = m_kept && m_kept->Next(m_row);
    if (m_hasRow) {
        m_fetched = m_columns.size();
        return true;
    }
    if (m_failure) {
        throw CAException(*m_failure);
    }
    if (m_arriving) {
        m_fetched = 0;
        m_hasRow = Fetch();
    }
    return m_hasRow;
}

// @return whether there was one more row. From the end on, as after a failure, the connection is free.
bool Rows::Fetch()
{
    m_arriving = false;
    if (!m_connection->Fetch(m_statement.get())) {
        m_connection->OnResultDone(m_statement.get());
        return false;
    }
    m_arriving = true;
    return true;
}

void Rows::KeepRest()
{
    m_kept.emplace();
    try {
        if (m_hasRow) {
            FetchColumnsUpTo(m_columns.size());
        }
        std::vector<Value> row(m_columns.size());
        while (Fetch()) {
            for (std::size_t i = 0; i < row.size(); ++i) {
                row[i] = FetchValue(i);
            }
            m_kept->Add(row);
        }
    } catch (const CAException& e) {
        m_failure = e;
    } catch (const std::bad_alloc&) {
        End();
        m_failure = CAException("there is not enough memory for the rows left of a result");
    }
}

std::string_view Rows::ColumnName(int column) const { return m_columns[static_cast<std::size_t>(column)].name.View(); }

Field Rows::Read(int column)
{
    const auto index = static_cast<std::size_t>(column);
    if (index >= m_fetched && m_failure) {
        throw CAException(*m_failure);
    }
    FetchColumnsUpTo(index + 1);
    return FieldOf(m_row[index]);
}

void Rows::FetchColumnsUpTo(std::size_t count)
{
    for (; m_fetched < count; ++m_fetched) {
        m_row[m_fetched] = FetchValue(m_fetched);
    }
}

Value Rows::FetchValue(std::size_t column)
{
    const Shape shape = m_columns[column].shape;
    if (shape == Shape::bit) {
        return FetchBit(column);
    }
    if (shape == Shape::real) {
        return FetchReal(column);
    }
    if (shape == Shape::day || shape == Shape::moment) {
        return FetchMoment(column, shape == Shape::moment);
    }
    if (!FetchPieces(column, shape != Shape::bytes && shape != Shape::bits)) {
        return {};
    }
    if (shape == Shape::number) {
        return NumberValue(m_pieces);
    }
    if (shape == Shape::bits) {
        return IntegerValue(IntegerOfBits(m_pieces));
    }
    Value value;
    if (shape == Shape::bytes) {
        value.kind = Field::Kind::text;
        value.text = CString(std::string_view(m_pieces));
        return value;
    }
    return TextValue(m_pieces);
}

// The connection is free after it, and so is the rest of the row lost.
void Rows::Fail()
{
    m_arriving = false;
    try {
        m_connection->Fail(m_statement.get());
    } catch (const CAException& e) {
        m_failure = e;
        throw;
    }
}

// Reads a value of a fixed size. @return false for NULL.
template <class Fixed>
bool Rows::FetchFixed(std::size_t column, SQLSMALLINT type, Fixed& fixed)
{
    SQLLEN length = 0;
    if (!SQL_SUCCEEDED(SQLGetData(m_statement.get(), Number(column), type, &fixed, sizeof fixed, &length))) {
        Fail();
    }
    return length != SQL_NULL_DATA;
}

Value Rows::FetchBit(std::size_t column)
{
    unsigned char bit = 0;
    return FetchFixed(column, SQL_C_BIT, bit) ? IntegerValue(bit) : Value{};
}

Value Rows::FetchReal(std::size_t column)
{
    double number = 0;
    return FetchFixed(column, SQL_C_DOUBLE, number) ? RealValue(number) : Value{};
}

Value Rows::FetchMoment(std::size_t column, bool hasTime)
{
    SQL_TIMESTAMP_STRUCT moment{};
    if (!FetchFixed(column, SQL_C_TYPE_TIMESTAMP, moment)) {
        return {};
    }
    Value value;
    value.kind = Field::Kind::text;
    value.text = DateText({moment.year, moment.month, moment.day, moment.hour, moment.minute, moment.second, hasTime});
    if (!hasTime) {
        value.text = CString(value.text.View().substr(0, 10));
    }
    return value;
}

// Reads a value into m_pieces. @return false for NULL.
bool Rows::FetchPieces(std::size_t column, bool asText)
{
    const std::size_t ending = asText ? 1 : 0;
    m_pieces.clear();
    for (;;) {
        std::fill_n(m_buffer.end() - kLeftFree - 1, kLeftFree + 1, '\1');
        SQLLEN length = 0;
        const SQLRETURN read =
            SQLGetData(m_statement.get(), Number(column), static_cast<SQLSMALLINT>(asText ? SQL_C_CHAR : SQL_C_BINARY),
                       m_buffer.data(), static_cast<SQLLEN>(m_buffer.size()), &length);
        if (read == SQL_NO_DATA) {
            return true;
        }
        if (!SQL_SUCCEEDED(read)) {
            Fail();
        }
        if (length == SQL_NULL_DATA) {
            return false;
        }
        const std::size_t room = m_buffer.size() - ending;
        if (length >= 0 && static_cast<std::size_t>(length) <= room) {
            m_pieces.append(m_buffer.data(), static_cast<std::size_t>(length));
            return true;
        }
        // The last NUL among them is the driver's; others are the text's.
        const std::string_view piece(m_buffer.data(), m_buffer.size());
        m_pieces.append(piece.substr(0, asText ? piece.rfind('\0') : room));
        m_buffer.resize(std::min(m_buffer.size() * 4, kLargestPiece));
    }
}

} // namespace dbaccess::odbc
