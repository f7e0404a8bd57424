#include "dbaccess/CARecordset.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CADateTime.h"
#include "dbaccess/CAException.h"
#include "dbaccess/DateText.h"
#include "dbaccess/Driver.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>
#include <utility>

using dbaccess::Field;

namespace {

// As C's atoi: blanks, a sign, digits; what follows is passed over. Numbers beyond 64 bits stop at the limit.
std::int64_t NumberOfText(std::string_view text)
{
    text.remove_prefix(std::min(text.size(), text.find_first_not_of(" \t\n\v\f\r")));
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    std::int64_t number = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc::result_out_of_range) {
        return text.starts_with('-') ? INT64_MIN : INT64_MAX;
    }
    return number;
}

std::int64_t NumberOfReal(double real)
{
    constexpr double limit = 9223372036854775808.0;
    if (std::isnan(real)) {
        return 0;
    }
    return real >= limit ? INT64_MAX : real < -limit ? INT64_MIN : static_cast<std::int64_t>(real);
}

std::int64_t NumberOf(const Field& field)
{
    switch (field.kind) {
    case Field::Kind::integer:
        return field.value.integer;
    case Field::Kind::real:
        return NumberOfReal(field.value.real);
    case Field::Kind::text:
        return NumberOfText(field.View());
    case Field::Kind::null:
        break;
    }
    return 0;
}

CString TextOf(const Field& field)
{
    char digits[32];
    std::to_chars_result written{};
    switch (field.kind) {
    case Field::Kind::text:
        return {field.value.bytes, field.length};
    case Field::Kind::integer:
        written = std::to_chars(digits, digits + sizeof digits, field.value.integer);
        break;
    case Field::Kind::real:
        written = std::to_chars(digits, digits + sizeof digits, field.value.real);
        break;
    case Field::Kind::null:
        return {};
    }
    return {digits, static_cast<std::size_t>(written.ptr - digits)};
}

bool EqualIgnoringCase(std::string_view a, std::string_view b)
{
    const auto lower = [](char ch) { return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch + ('a' - 'A')) : ch; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

// Apart from the check, which is made for every value.
[[noreturn]] void ThrowNoSuchColumn(long column, long columns)
{
    CString text;
    text.Format("column %ld is out of range: the result has %ld", column, columns);
    throw CAException(text);
}

template <class Number, class Target>
bool Assign(const Field& field, Target& out)
{
    if (field.kind == Field::Kind::null) {
        return false;
    }
    out = static_cast<Target>(static_cast<Number>(NumberOf(field)));
    return true;
}

} // namespace

CARecordset::CARecordset() = default;
CARecordset::~CARecordset() { Close(); }

bool CARecordset::Open(const char* sql, CAConnect* conn, AdbcCursorType /*cursor*/, AdbcLockType /*lock*/,
                       AdbcCommandType /*command*/)
{
    Close();
    if (conn == nullptr || !conn->IsOpen()) {
        return false;
    }
    auto cursor = conn->Query(sql);
    m_hasRow = cursor->Step();
    m_onFirst = true;
    m_columns = cursor->ColumnCount();
    m_cursor = std::move(cursor);
    m_session = conn->m_session;
    return true;
}

void CARecordset::Close() noexcept
{
    m_cursor.reset();
    m_session.reset();
    m_columns = 0;
    m_hasRow = false;
    m_onFirst = false;
}

int CARecordset::MoveFirst()
{
    if (m_cursor != nullptr && !m_onFirst) {
        m_hasRow = false;
        m_cursor->Restart();
        m_hasRow = m_cursor->Step();
        m_onFirst = true;
    }
    return m_hasRow ? 1 : 0;
}

int CARecordset::MoveNext()
{
    if (m_hasRow) {
        m_onFirst = false;
        m_hasRow = false;
        m_hasRow = m_cursor->Step();
    }
    return m_hasRow ? 1 : 0;
}

int CARecordset::IsEOF() const { return m_hasRow ? 0 : 1; }

void CARecordset::CheckColumn(long column) const
{
    if (column < 1 || column > m_columns) {
        ThrowNoSuchColumn(column, m_columns);
    }
}

Field CARecordset::Read(long column)
{
    CheckColumn(column);
    return m_hasRow ? m_cursor->Read(static_cast<int>(column - 1)) : Field::Null();
}

bool CARecordset::GetValue(long column, int& out) { return Assign<std::int32_t>(Read(column), out); }

bool CARecordset::GetValue(long column, bool& out)
{
    const Field field = Read(column);
    if (field.kind == Field::Kind::null) {
        return false;
    }
    out = NumberOf(field) != 0;
    return true;
}

bool CARecordset::GetValue(long column, unsigned long& out) { return Assign<std::uint32_t>(Read(column), out); }

bool CARecordset::GetValue(long column, __int64& out) { return Assign<std::int64_t>(Read(column), out); }

bool CARecordset::GetValue(long column, CADateTime& out)
{
    const Field field = Read(column);
    if (field.kind != Field::Kind::text) {
        return false;
    }
    const auto date = dbaccess::ParseEngineDate(field.View());
    if (!date) {
        return false;
    }
    out = CADateTime(date->year, date->month, date->day, date->hour, date->minute, date->second);
    return true;
}

bool CARecordset::GetValue(long column, CString& out, bool /*flag*/)
{
    const Field field = Read(column);
    if (field.kind == Field::Kind::null) {
        return false;
    }
    out = TextOf(field);
    return true;
}

CString CARecordset::GetValueToStr(long column, bool /*flag*/) { return TextOf(Read(column)); }

bool CARecordset::GetValueByName(const char* column, int& out) { return GetValue(GetColumnNumber(column), out); }

bool CARecordset::GetValueByName(const char* column, bool& out) { return GetValue(GetColumnNumber(column), out); }

CString CARecordset::GetValueToStrByName(const char* column, bool flag)
{
    return GetValueToStr(GetColumnNumber(column), flag);
}

long CARecordset::GetColumnNumber(const char* column) const
{
    for (long i = 0; i < m_columns; ++i) {
        if (EqualIgnoringCase(m_cursor->ColumnName(static_cast<int>(i)), column)) {
            return i + 1;
        }
    }
    throw CAException(CString("the result has no column ") + column);
}

long CARecordset::GetColumnCount() const { return m_columns; }

CString CARecordset::GetColumnName(long column) const
{
    CheckColumn(column);
    return CString(m_cursor->ColumnName(static_cast<int>(column - 1)));
}
