#pragma once

#include "dbaccess/CAConnect.h"
#include "dbaccess/Driver.h"

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// A database that plays what a test has written down: it notes every statement and answers with the next reply.
namespace scripted {

using Value = std::optional<std::string>; // none is NULL

/// What the database answers to one statement.
struct Reply {
    std::vector<std::string> columns; // names; empty gives "c1", "c2", ... as the first row needs
    bool noColumns = false;           // a result that raises whatever is read from it
    std::vector<std::vector<Value>> rows;
    std::optional<std::string> raise;      // raised when the statement is run
    std::optional<std::size_t> raiseAtRow; // raised when this row (from 0) is stepped to
};

/// Rows of texts without names.
Reply Rows(std::vector<std::vector<Value>> rows);
Reply Raise(std::string message);

/// The script and the log of one connection. Outlives the connection.
class Database {
public:
    /// Opens a connection of an engine kind that plays this script.
    void Connect(CAConnect& conn, int dbType = 3);

    /// Replies are used up in order; without one, a statement gives no rows.
    void Answer(Reply reply) { m_replies.push_back(std::move(reply)); }
    /// The connection is closed from now on, as if the server were gone.
    void GoAway() { m_alive = false; }

    std::string engineName = "Script";
    std::vector<std::string> queries;    // texts of reads, in order
    std::vector<std::string> executions; // texts of writes, in order

private:
    friend class PlayedSession;

    Reply Next();

    std::deque<Reply> m_replies;
    bool m_alive = true;
};

} // namespace scripted
