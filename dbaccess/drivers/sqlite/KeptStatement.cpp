#include "dbaccess/drivers/sqlite/KeptStatement.h"

#include "dbaccess/drivers/sqlite/Error.h"

#include <sqlite3.h>

namespace dbaccess::sqlite {

void Finalize::operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }

RunningStatement::RunningStatement(Statements::Lease kept) : m_kept(std::move(kept))
{
    if (!m_kept) {
        return;
    }
    int code = SQLITE_OK;
    int place = 0;
    for (const ShapeValue& value : m_kept.Values()) {
        ++place;
        code |= value.isText ? sqlite3_bind_text(Get(), place, value.text.data(), static_cast<int>(value.text.size()),
                                                 SQLITE_STATIC)
                             : sqlite3_bind_int64(Get(), place, value.number);
    }
    if (code != SQLITE_OK) {
        ThrowLastError(sqlite3_db_handle(Get()));
    }
}

RunningStatement::~RunningStatement()
{
    if (m_kept) {
        sqlite3_reset(Get());
        sqlite3_clear_bindings(Get());
    }
}

} // namespace dbaccess::sqlite
