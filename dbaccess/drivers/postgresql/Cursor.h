#pragma once

#include "dbaccess/CAException.h"
#include "dbaccess/Driver.h"
#include "dbaccess/drivers/common/RowTexts.h"
#include "dbaccess/drivers/common/StatementCache.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

struct pg_cancel;
struct pg_conn;
struct pg_result;

namespace dbaccess::postgresql {

struct FinishConnection {
    void operator()(pg_conn* db) const noexcept;
};
struct FreeCancel {
    void operator()(pg_cancel* cancel) const noexcept;
};
struct ClearResult {
    void operator()(pg_result* result) const noexcept;
};
using Handle = std::unique_ptr<pg_conn, FinishConnection>;
using Cancel = std::unique_ptr<pg_cancel, FreeCancel>;
using Result = std::unique_ptr<pg_result, ClearResult>;

/// The name of a statement that the server has prepared for us; empty for none.
class PreparedName {
public:
    PreparedName() = default;
    explicit PreparedName(std::string name) : m_name(std::move(name)) {}

    explicit operator bool() const noexcept { return !m_name.empty(); }
    [[nodiscard]] const std::string& Get() const noexcept { return m_name; }

private:
    std::string m_name;
};

class Rows;

/// A connection, and the one query that can be running on it. All statements are UTF-8.
class Connection {
public:
    /// @param keptStatements  how many prepared statements are kept; 0 for none.
    Connection(Handle db, std::size_t keptStatements);

    [[nodiscard]] pg_conn* Db() const noexcept { return m_db.get(); }
    [[nodiscard]] bool IsAlive() const noexcept;

    /// Takes the rest of a query that is still being read into its reader's memory, so that another can run.
    void MakeReady();
    /// Runs a statement to its end; rows are dropped. @return the end of its result. @throws CAException.
    Result Run(const std::string& sql);
    /// Begins a query. @return as Next. @throws CAException.
    Result Start(const std::string& sql, Rows& reader);
    /// @return the running query's next row, or its end, which has no row; the connection is then free for the next
    ///         statement, as it is after an exception. @throws CAException.
    Result Next();
    /// Ends the query that is being read, whatever is left of it.
    void Abandon() noexcept;
    [[nodiscard]] bool IsReadBy(const Rows* reader) const noexcept { return m_reader == reader; }

private:
    using Statements = StatementCache<PreparedName>;

    Result Begin(const std::string& sql, Rows* reader);
    Statements::Lease TakeKept(const std::string& sql);
    PreparedName Prepare(const std::string& shape, const PreparedName& evicted);
    bool RunCommand(const char* sql) noexcept;
    void Send(const std::string& sql);
    void SendKept(const Statements::Lease& kept);
    void SendGuarded(const std::string& sql);
    Result CheckResult(Result result);
    void ReadToEnd();
    void DropToEnd() noexcept;
    void RequestCancel() noexcept;
    [[noreturn]] void ThrowCopyUnsupported(bool in);
    bool DropWhatHasArrived() noexcept;

    Handle m_db;
    Cancel m_cancel;
    Statements m_statements;
    std::string m_namePrefix;   // no other session's: behind a pooler theirs may be on the same server connection
    std::size_t m_prepared = 0; // names that were given out; none is given twice
    Rows* m_reader = nullptr;
    bool m_cancellable = false; // of the running query: nothing that counts is lost when it is cancelled
    bool m_inSavepoint = false; // of the running statement: it is a query after a savepoint
};

/// The rows of a query, which the server computes as they are read.
class Rows final : public Cursor {
public:
    /// Restart runs the query, the first time too.
    Rows(std::shared_ptr<Connection> connection, std::string sql);
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;
    ~Rows() override;

    bool Step() override;
    void Restart() override;
    [[nodiscard]] int ColumnCount() const override;
    [[nodiscard]] std::string_view ColumnName(int column) const override;
    Field Read(int column) override;

    /// Reads the rows that are left into memory. A failure there is raised when reading comes to it.
    void KeepRest();

private:
    void End() noexcept;
    void Append(const pg_result* result);

    std::shared_ptr<Connection> m_connection;
    std::string m_sql;
    Result m_result; // holds the current row, or the next one where m_row is -1
    int m_row = -1;
    Result m_kept; // the rows after those of m_result, once they are in memory
    std::optional<CAException> m_failure;
    RowTexts m_texts;
};

} // namespace dbaccess::postgresql
