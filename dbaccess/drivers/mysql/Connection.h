#pragma once

#include "dbaccess/drivers/common/PendingResult.h"
#include "dbaccess/drivers/common/StatementCache.h"

#include <mysql.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dbaccess::mysql {

/// Where a server listens. Without a host: on a socket of this machine, the client library's usual one when none is
/// named.
struct Server {
    std::string host;
    unsigned int port = 0;
    std::string socket;
};

/// All that is needed to connect. Texts are UTF-8.
struct Settings {
    std::vector<Server> servers;
    std::string user;
    std::optional<std::string> password;
    std::string database;
    std::string defaultsFile;
    std::optional<bool> tls; // without a value: on for a server that is not on this machine
    bool tlsVerify = false;
    std::string tlsCa;
    std::string tlsCert;
    std::string tlsKey;
    bool cleartextPassword = false;   // may go out as it is over a connection that is not encrypted
    unsigned int connectTimeout = 10; // seconds, here and below; until the session is ready for statements
    unsigned int readTimeout = 3600;
    unsigned int writeTimeout = 3600;
    std::optional<unsigned int> syncWait;
    std::size_t keptStatements = 0; // prepared ones; 0 for none
};

struct CloseHandle {
    void operator()(MYSQL* handle) const noexcept { mysql_close(handle); }
};
using Handle = std::unique_ptr<MYSQL, CloseHandle>;

struct FreeResult {
    void operator()(MYSQL_RES* result) const noexcept { mysql_free_result(result); }
};
using Result = std::unique_ptr<MYSQL_RES, FreeResult>;

struct CloseStatement {
    void operator()(MYSQL_STMT* statement) const noexcept { mysql_stmt_close(statement); }
};
using Statement = std::unique_ptr<MYSQL_STMT, CloseStatement>;

/// A connection, shared by its session and the cursors that read from it. Statements are UTF-8.
class Connection {
public:
    /// Connects to the first server that takes us in. @throws CAException.
    explicit Connection(Settings settings);

    [[nodiscard]] MYSQL* Get() const noexcept { return m_handle.get(); }
    [[nodiscard]] bool IsAlive() const noexcept { return m_alive; }

    /// Runs a statement to the end. @return rows that it found to change; 0 for one that gives rows, which are dropped.
    /// @throws CAException, as do the functions below.
    std::int64_t Execute(std::string_view sql);
    /// Runs a statement. @return its rows, none read yet; null when it gives none. OnResultDone or Abandon must follow
    /// when
    ///         there are any; until then the result is held by `reader`.
    Result Open(std::string_view sql, PendingResult& reader);
    /// To be called when the last row has been fetched, or fetching has failed.
    void OnResultDone();
    /// Ends a statement whose rows were not all fetched.
    void Abandon(MYSQL_RES* rows) noexcept;

    void Begin();
    void Commit();
    void Rollback();

private:
    using Statements = StatementCache<Statement>;

    void MakeReady();
    [[nodiscard]] bool IsTransactionLost() const noexcept;
    void ThrowIfTransactionLost() const;
    Statements::Lease TakeKept(std::string_view sql);
    Statement Prepare(const std::string& shape, std::size_t values);
    bool RunKept(const Statements::Lease& kept);
    void Send(std::string_view sql);
    void SkipResults();
    void NoteFailure() noexcept;
    [[noreturn]] void Fail();
    bool Interrupt() noexcept;

    Settings m_settings;
    Server m_server;         // the one of the list that this connection is to
    Statements m_statements; // outlives the handle, so that ending a session does not close them one by one
    Handle m_handle;
    std::string m_identity;
    PendingResult* m_arriving = nullptr;
    bool m_alive = true;
    bool m_inTransaction = false;
    bool m_transactionLost = false;
};

} // namespace dbaccess::mysql
