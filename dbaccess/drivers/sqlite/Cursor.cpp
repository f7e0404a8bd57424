#include "dbaccess/drivers/sqlite/Cursor.h"

#include "dbaccess/drivers/sqlite/Error.h"

#include <sqlite3.h>

#include <utility>

namespace dbaccess::sqlite {

Rows::Rows(RunningStatement statement, std::shared_ptr<const ImmutableFile> file, int first)
    : m_file(std::move(file)), m_statement(std::move(statement)), m_first(first)
{
}

bool Rows::Step()
{
    const int first = std::exchange(m_first, SQLITE_OK);
    const int code = first == SQLITE_OK ? sqlite3_step(m_statement.Get()) : first;
    if (m_file != nullptr) {
        m_file->RequireUnchanged();
    }
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        ThrowLastError(sqlite3_db_handle(m_statement.Get()));
    }
    // Counted here, since a step prepares the statement again when its tables have been changed.
    m_texts.SetColumns(ColumnCount());
    return code == SQLITE_ROW;
}

void Rows::Restart()
{
    m_first = SQLITE_OK;
    sqlite3_reset(m_statement.Get());
}

int Rows::ColumnCount() const { return sqlite3_column_count(m_statement.Get()); }

std::string_view Rows::ColumnName(int column) const
{
    const char* name = sqlite3_column_name(m_statement.Get(), column);
    return name ? name : "";
}

Field Rows::Read(int column)
{
    sqlite3_value* value = sqlite3_column_value(m_statement.Get(), column);
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
    return m_texts.Text(column, bytes, length);
}

} // namespace dbaccess::sqlite
