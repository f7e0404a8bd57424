#include "dbaccess/drivers/sqlite/Cursor.h"

#include "dbaccess/drivers/sqlite/Error.h"
#include "platform/CodePage.h"

#include <sqlite3.h>

#include <utility>

namespace dbaccess::sqlite {

void Finalize::operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }

Rows::Rows(Statement statement, std::shared_ptr<const ImmutableFile> file)
    : m_file(std::move(file)), m_statement(std::move(statement)), m_convert(!platform::AnsiIsUtf8())
{
    if (m_convert) {
        m_converted.resize(static_cast<std::size_t>(ColumnCount()));
    }
}

bool Rows::Step()
{
    const int code = sqlite3_step(m_statement.get());
    if (m_file != nullptr) {
        m_file->RequireUnchanged();
    }
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        ThrowLastError(sqlite3_db_handle(m_statement.get()));
    }
    return code == SQLITE_ROW;
}

void Rows::Restart() { sqlite3_reset(m_statement.get()); }

int Rows::ColumnCount() const { return sqlite3_column_count(m_statement.get()); }

std::string_view Rows::ColumnName(int column) const
{
    const char* name = sqlite3_column_name(m_statement.get(), column);
    return name ? name : "";
}

Field Rows::Read(int column)
{
    sqlite3_value* value = sqlite3_column_value(m_statement.get(), column);
    switch (sqlite3_value_type(value)) {
    case SQLITE_NULL:
        return Field::Null();
    case SQLITE_INTEGER:
        return Field::Integer(sqlite3_value_int64(value));
    case SQLITE_FLOAT:
        return Field::Real(sqlite3_value_double(value));
    default:
        break;
    }
    const char* bytes = reinterpret_cast<const char*>(sqlite3_value_text(value));
    if (bytes == nullptr) {
        throw std::bad_alloc();
    }
    const auto length = static_cast<std::size_t>(sqlite3_value_bytes(value));
    if (!m_convert) {
        return Field::Text(bytes, length);
    }
    CString& converted = m_converted[static_cast<std::size_t>(column)];
    converted = platform::Utf8ToAnsi({bytes, length});
    return Field::Text(converted.GetString(), converted.View().size());
}

} // namespace dbaccess::sqlite
