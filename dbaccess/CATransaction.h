#pragma once

#include "platform/Api.h"

class CAConnect;

/// A transaction of a connection, rolled back unless it is committed. One at a time on a connection, which has to
/// outlive it, and belongs to one thread at a time. schema::DirectoryTransaction also keeps other programs out.
class QV_API CATransaction {
public:
    /// Begins the transaction, as CAConnect::BeginTrans does. @throws CAException, also when the connection is not
    /// open; there is then nothing to end.
    explicit CATransaction(CAConnect& conn);
    CATransaction(const CATransaction&) = delete;
    CATransaction& operator=(const CATransaction&) = delete;
    /// Rolls back what was neither committed nor rolled back. A failure is not reported: what led here matters more.
    ~CATransaction();

    /// Commits the transaction; to be called once. @throws CAException; the transaction is then rolled back in the end.
    /// When the connection is lost meanwhile, it may have been committed or not.
    void Commit();
    /// Rolls the transaction back; does nothing once it has been committed or rolled back. @throws CAException.
    void Rollback();

private:
    CAConnect& m_conn;
    bool m_isOpen = true;
};
