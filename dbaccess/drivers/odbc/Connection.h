#pragma once

#include "dbaccess/drivers/common/PendingResult.h"
#include "dbaccess/drivers/odbc/ConnectionString.h"
#include "dbaccess/drivers/odbc/Error.h"
#include "dbaccess/drivers/odbc/Odbc.h"
#include "dbaccess/drivers/odbc/Statement.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace dbaccess::odbc {

template <SQLSMALLINT Type>
struct FreeHandle {
    void operator()(SQLHANDLE handle) const noexcept { SQLFreeHandle(Type, handle); }
};
using Environment = std::unique_ptr<void, FreeHandle<SQL_HANDLE_ENV>>;
using Handle = std::unique_ptr<void, FreeHandle<SQL_HANDLE_DBC>>;
using Statement = std::unique_ptr<void, FreeHandle<SQL_HANDLE_STMT>>;

/// A connection, shared by its session and the cursors that read from it. All texts are UTF-8.
class Connection {
public:
    /// Connects. @throws CAException, as do all functions that are not noexcept.
    explicit Connection(const ConnectionString& string);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    [[nodiscard]] bool IsAlive() const noexcept { return m_alive; }
    [[nodiscard]] Dialect Engine() const noexcept { return m_dialect; }
    /// Takes the engine for another one than its name says.
    void SetEngine(Dialect dialect) noexcept { m_dialect = dialect; }
    /// A text of SQLGetInfo. @param what  SQL_DBMS_NAME, for one.
    [[nodiscard]] std::string Info(SQLUSMALLINT what) const;

    /// Makes the settings of the session that statements rely on.
    void Prepare();
    /// Runs a statement to the end. @return rows that it changed, 0 for one that changes none, -1 when the driver does
    ///         not know.
    std::int64_t Execute(std::string_view text);
    /// Runs a statement. @return its rows, none read yet; null when it gives none. Until OnResultDone or Abandon the
    /// result
    ///         is held by `reader`.
    Statement Open(std::string_view text, PendingResult& reader);
    /// Goes to a result's next row. @return false after the last.
    bool Fetch(SQLHSTMT statement);
    /// To be called after the last row of a result.
    void OnResultDone(SQLHSTMT statement);
    /// Ends a result whose rows were not all fetched, or could not be.
    void Abandon(SQLHSTMT statement) noexcept;
    /// Closes a statement and raises what it failed with.
    [[noreturn]] void Fail(SQLHSTMT statement);

    void Begin();
    void Commit();
    void Rollback();

private:
    void Connect(const ConnectionString& string);
    void MakeReady();
    void ThrowIfTransactionLost() const;
    Statement NewStatement();
    Statement Run(std::string_view text);
    void NoteFailure(const Failure& failure) noexcept;
    void SetAutocommit(bool on);
    void EndTransaction(SQLSMALLINT how);
    void EndSqliteTransaction(SQLSMALLINT how);
    void EndAnyTransaction(SQLSMALLINT how);

    Environment m_environment;
    Handle m_handle;
    Dialect m_dialect = Dialect::other;
    PendingResult* m_arriving = nullptr;
    bool m_connected = false;
    bool m_alive = true;
    bool m_inTransaction = false;
    bool m_transactionLost = false;
};

} // namespace dbaccess::odbc
