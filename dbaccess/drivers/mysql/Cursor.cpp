#include "dbaccess/drivers/mysql/Cursor.h"

#include "dbaccess/drivers/common/NumberText.h"

#include <cstring>
#include <limits>
#include <utility>

namespace dbaccess::mysql {

namespace {

constexpr unsigned long kNull = std::numeric_limits<unsigned long>::max();

// A number beyond 64 bits with a sign stays the text that it came as.
Field IntegerOf(std::string_view text)
{
    const auto number = IntegerIn(text);
    return number ? Field::Integer(*number) : Field::Text(text.data(), text.size());
}

Field RealOf(std::string_view text)
{
    const auto number = RealIn(text);
    return number ? Field::Real(*number) : Field::Text(text.data(), text.size());
}

// Bits come as bytes, the highest first.
Field IntegerOfBits(const char* bytes, std::size_t length)
{
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < length; ++i) {
        number = number << 8U | static_cast<unsigned char>(bytes[i]);
    }
    return Field::Integer(static_cast<std::int64_t>(number));
}

} // namespace

void BufferedRows::Add(MYSQL_ROW row, const unsigned long* lengths)
{
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        const unsigned long length = row[i] == nullptr ? kNull : lengths[i];
        m_bytes.append(reinterpret_cast<const char*>(&length), sizeof length);
        if (row[i] != nullptr) {
            m_bytes.append(row[i], length);
        }
    }
}

bool BufferedRows::Next()
{
    if (m_next == m_bytes.size()) {
        return false;
    }
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        unsigned long length = 0;
        std::memcpy(&length, m_bytes.data() + m_next, sizeof length);
        m_next += sizeof length;
        m_values[i] = length == kNull ? nullptr : m_bytes.data() + m_next;
        m_lengths[i] = length == kNull ? 0 : length;
        m_next += m_lengths[i];
    }
    return true;
}

Rows::Rows(std::shared_ptr<Connection> connection, std::string sql)
    : m_connection(std::move(connection)), m_sql(std::move(sql))
{
    Open();
}

Rows::~Rows() { End(); }

void Rows::Open()
{
    m_result = m_connection->Open(m_sql, *this);
    m_arriving = m_result != nullptr;
    m_fields = m_arriving ? mysql_fetch_fields(m_result.get()) : nullptr;
    m_texts.SetColumns(ColumnCount(), [this](int column) { return m_fields[column].name; });
}

void Rows::End() noexcept
{
    m_row = nullptr;
    if (std::exchange(m_arriving, false)) {
        m_connection->Abandon(m_result.get());
    }
    m_result.reset();
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
    if (m_kept) {
        return StepKept();
    }
    if (!m_arriving) {
        return false;
    }
    if (Fetch()) {
        return true;
    }
    m_arriving = false;
    m_connection->OnResultDone();
    return false;
}

bool Rows::Fetch()
{
    m_row = mysql_fetch_row(m_result.get());
    m_lengths = m_row == nullptr ? nullptr : mysql_fetch_lengths(m_result.get());
    return m_row != nullptr;
}

bool Rows::StepKept()
{
    if (m_kept->Next()) {
        m_row = m_kept->Values();
        m_lengths = m_kept->Lengths();
        return true;
    }
    m_row = nullptr;
    if (m_failure) {
        throw CAException(*m_failure);
    }
    return false;
}

void Rows::KeepRest()
{
    m_kept.emplace(static_cast<std::size_t>(ColumnCount()));
    const bool standsOnRow = m_row != nullptr;
    if (standsOnRow) {
        m_kept->Add(m_row, m_lengths);
    }
    while (Fetch()) {
        m_kept->Add(m_row, m_lengths);
    }
    m_arriving = false;
    try {
        m_connection->OnResultDone();
    } catch (const CAException& e) {
        m_failure = e;
    }
    if (standsOnRow) {
        StepKept();
    }
}

int Rows::ColumnCount() const { return m_result == nullptr ? 0 : static_cast<int>(mysql_num_fields(m_result.get())); }

std::string_view Rows::ColumnName(int column) const
{
    if (m_texts.Converts()) {
        return m_texts.Name(column);
    }
    return {m_fields[column].name, m_fields[column].name_length};
}

Field Rows::Read(int column)
{
    const char* bytes = m_row[column];
    if (bytes == nullptr) {
        return Field::Null();
    }
    const std::size_t length = m_lengths[column];
    switch (m_fields[column].type) {
    case MYSQL_TYPE_TINY:
    case MYSQL_TYPE_SHORT:
    case MYSQL_TYPE_INT24:
    case MYSQL_TYPE_LONG:
    case MYSQL_TYPE_LONGLONG:
    case MYSQL_TYPE_YEAR:
        return IntegerOf({bytes, length});
    case MYSQL_TYPE_BIT:
        return IntegerOfBits(bytes, length);
    case MYSQL_TYPE_FLOAT:
    case MYSQL_TYPE_DOUBLE:
    case MYSQL_TYPE_DECIMAL:
    case MYSQL_TYPE_NEWDECIMAL:
        return RealOf({bytes, length});
    default:
        return m_texts.Text(column, bytes, length);
    }
}

} // namespace dbaccess::mysql
