#include "management/RowsInsert.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/EngineKind.h"

#include <fmt/format.h>

namespace management {

namespace {

constexpr std::size_t kMostRows = 1000;

} // namespace

RowsInsert::RowsInsert(CAConnect& conn, std::string_view table, std::string_view columns)
    : m_conn(conn),
      m_head(fmt::format("INSERT INTO {} ({}) VALUES (", table, columns)),
      m_most(dbaccess::EngineKindOf(conn) == dbaccess::EngineKind::access ? 1 : kMostRows)
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
