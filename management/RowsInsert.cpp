#include "management/RowsInsert.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/EngineKind.h"

#include <fmt/format.h>

namespace management {

namespace {

std::size_t RowsOfStatement(const CAConnect& conn, RowsInsert::Rows rows)
{
    constexpr std::size_t many = 1000;
    // SQLite, to which nothing has to travel, binds long texts to the kept statement of one row for less than it takes
    // to go through them in a statement of many.
    const bool isBound = rows == RowsInsert::Rows::ofLongTexts && conn.GetEngineName().View().starts_with("SQLite");
    return isBound || dbaccess::EngineKindOf(conn) == dbaccess::EngineKind::access ? 1 : many;
}

} // namespace

RowsInsert::RowsInsert(CAConnect& conn, std::string_view table, std::string_view columns, Rows rows)
    : m_conn(conn),
      m_head(fmt::format("INSERT INTO {} ({}) VALUES (", table, columns)),
      m_most(RowsOfStatement(conn, rows))
{
}

void RowsInsert::Finish()
{
    if (m_rows != 0) {
        m_sql += ')';
        m_conn.Execute(m_sql.c_str());
        m_sql.clear();
        m_rows = 0;
    }
}

} // namespace management
