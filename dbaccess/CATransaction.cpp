#include "dbaccess/CATransaction.h"

#include "dbaccess/CAConnect.h"

#include <utility>

CATransaction::CATransaction(CAConnect& conn) : m_conn(conn) { m_conn.BeginTrans(); }

CATransaction::~CATransaction()
{
    try {
        Rollback();
    } catch (...) { // see its declaration
    }
}

void CATransaction::Commit()
{
    m_conn.CommitTrans();
    m_isOpen = false;
}

void CATransaction::Rollback()
{
    if (std::exchange(m_isOpen, false)) {
        m_conn.RollbackTrans();
    }
}
