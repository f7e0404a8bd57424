#pragma once

#include "dbaccess/CAException.h"
#include "dbaccess/CATransaction.h"
#include "platform/Api.h"

#include <chrono>
#include <optional>

class CAConnect;

namespace schema {

struct Dialect;

/// Another program kept a directory's lock for as long as it was waited for.
class QV_API LockTimeout : public CAException {
public:
    /// @param waited  how long, for the message.
    explicit LockTimeout(std::chrono::seconds waited);
};

/// A transaction that holds its directory's lock, for whatever reads a directory to decide what it writes: one program
/// at a time does so, whatever it is about, and sees all that the one before it has committed. So read names, ids and
/// what was shown to somebody after construction, or once more.
///
/// Programs that take no lock are not kept out, unless the engine lets one program write at a time (SQLite). Access has
/// no such lock: there it is an ordinary transaction. In a Galera cluster the lock is a node's own.
///
/// Rolled back unless it is committed. One at a time on a connection, which has to outlive it.
class QV_API DirectoryTransaction {
public:
    /// Long enough for what one command writes, and shorter than the silence for which servers are waited.
    static constexpr std::chrono::seconds kLongestWait{30};

    /// Waits for the lock and begins the transaction.
    /// @param longest  whole seconds, more than none; on SQLite the driver waits as long as it always does.
    /// @throws LockTimeout when the lock was waited for in vain, and any other CAException that the engine raises.
    explicit DirectoryTransaction(CAConnect& conn, std::chrono::seconds longest = kLongestWait);
    DirectoryTransaction(const DirectoryTransaction&) = delete;
    DirectoryTransaction& operator=(const DirectoryTransaction&) = delete;
    /// Rolls back, unless Commit or Rollback was called.
    ~DirectoryTransaction();

    /// Commits the transaction and gives the lock back.
    /// @throws CAException; the transaction can then only be rolled back.
    void Commit();
    /// Rolls the transaction back and gives the lock back; does nothing after Commit or Rollback. A failure is not
    /// reported: what led here matters more.
    void Rollback() noexcept;

private:
    CAConnect& m_conn;
    const Dialect& m_dialect;
    std::optional<CATransaction> m_transaction;
    bool m_open = true;
};

} // namespace schema
