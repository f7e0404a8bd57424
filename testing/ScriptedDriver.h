#pragma once

#include "dbaccess/CAConnect.h"
#include "dbaccess/Driver.h"

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// A database that plays what a test has written down: it notes every statement and answers with the next reply. Where
/// the environment variable QV_NOTE_STATEMENTS names a file, every statement is also added to it: the engine kind, a
/// tab, the text and a NUL. A database and its connections belong to one thread at a time.
namespace scripted {

using Value = std::optional<std::string>; ///< None is NULL.

/// What the database answers to one statement.
struct Reply {
    std::vector<std::string> columns;      ///< Names; empty gives "c1", "c2", ... as the first row needs.
    bool noColumns = false;                ///< Gives a result that raises whatever is read from it.
    std::vector<std::vector<Value>> rows;  ///< Values in the order of the columns.
    std::optional<std::string> raise;      ///< The message of a CAException that running the statement throws.
    std::optional<std::size_t> raiseAtRow; ///< Stepping to this row, counted from 0, throws a CAException.
};

/// @return a reply of rows without column names.
Reply Rows(std::vector<std::vector<Value>> rows);
/// @return a reply that throws a CAException with this message when the statement is run.
Reply Raise(std::string message);

/// The script and the log of a connection, which it has to outlive.
class Database {
public:
    /// Opens a connection that plays this script; one that was open is closed first.
    /// @param dbType  the engine kind that CAConnect::m_nDBType will show.
    void Connect(CAConnect& conn, int dbType = 3);

    /// Adds a reply to the script. Replies are used up in order; without one, a statement gives no rows.
    void Answer(Reply reply) { m_replies.push_back(std::move(reply)); }
    /// Closes the connection, as if the server were gone.
    void GoAway() { m_alive = false; }

    std::string engineName = "Script";   ///< Shown as the engine's name and version.
    std::vector<std::string> queries;    ///< The texts of reads so far, in order.
    std::vector<std::string> executions; ///< The texts of writes so far, in order.
    std::string transactions;            ///< "begin", "commit" and "rollback" so far, with a blank before each.
    bool refusesCommit = false;          ///< Whether a commit throws a CAException.

private:
    friend class ScriptedSession;

    Reply Next();

    std::deque<Reply> m_replies;
    bool m_alive = true;
};

} // namespace scripted
