#include "schema/DirectoryTransaction.h"

#include "dbaccess/CAConnect.h"
#include "schema/Dialect.h"

#include <string>
#include <utility>

namespace schema {

LockTimeout::LockTimeout(std::chrono::seconds waited)
    : CAException(("somebody else has kept this directory locked for " + std::to_string(waited.count()) +
                   " seconds; this change was not made, try again when they are done")
                      .c_str())
{
}

DirectoryTransaction::DirectoryTransaction(CAConnect& conn, std::chrono::seconds longest)
    : m_conn(conn), m_dialect(DialectOf(conn))
{
    ExecuteAll(m_conn, m_dialect.locking.beforeBegin);
    BeginLocked(m_conn, m_dialect, longest, m_transaction);
}

DirectoryTransaction::~DirectoryTransaction() { Rollback(); }

void DirectoryTransaction::Commit()
{
    m_transaction->Commit();
    m_open = false;
    Unlock(m_conn, m_dialect);
}

void DirectoryTransaction::Rollback() noexcept
{
    if (!std::exchange(m_open, false)) {
        return;
    }
    m_transaction.reset();
    Unlock(m_conn, m_dialect);
}

} // namespace schema
