#pragma once

#include "dbaccess/CATransaction.h"
#include "schema/Schema.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class CAConnect;

namespace schema {

/// What copying a directory needs to know of an engine. In statements, {table}, {column} and {id} stand for those.
struct CopyRules {
    /// Begin a transaction in which all reads of a source see one moment; ROLLBACK ends it. Empty: there is none.
    std::vector<std::string> beginReading = {};
    /// Put back what those have set for the connection's later transactions; run after ROLLBACK.
    std::vector<std::string> endReading = {};
    /// Whether rows can be asked for in an order.
    bool sortsRows = true;
    /// Gives in column 1 what no other database has that can be reached; empty where that cannot be told.
    std::string identity = {};
    /// Make the connection to a target take ids as they are written, and its transactions keep what they hold.
    std::vector<std::string> beginWriting = {};
    /// Keeps others from writing to a table until the writing transaction ends; run for each. Empty where the
    /// transaction does that by itself, and where the next does.
    std::string lockTable = {};
    /// Counts the rows of a target's table as they are now, whatever the transaction has seen of it before.
    std::string countNow = "SELECT COUNT(*) FROM {table}";
    /// Mark the transaction where nothing is written yet, and take back what was written since. Empty: another one is
    /// begun, where the lock outlives it.
    std::string savepoint = {};
    std::string rollbackToSavepoint = {};
    /// Stand around a name.
    char nameBegin = '"';
    char nameEnd = '"';
    /// Whether a column keeps whatever is written to it; else some text that is no number becomes one, and so with
    /// days.
    bool keepsEveryValue = false;
    /// The server's setting for how many bytes a statement may have; empty: there is none.
    std::string longestStatement = {};
    /// Stand around the rows of a table whose ids the engine gives.
    std::string beginIds = {};
    std::string endIds = {};
    std::size_t rowsPerInsert = 500;
    /// Stands before the first quote of a text.
    std::string stringPrefix = {};
    /// Gives the greatest id that a table has ever given out, or NULL, or no row; empty where that cannot be asked.
    std::string greatestId = {};
    /// Whether ids that are written are never given out afterwards.
    bool countsWrittenIds = true;
    /// Make sure that neither an id nor any below it will be given out; run where the rows written do not see to that.
    std::vector<std::string> advanceSequence = {"INSERT INTO {table} ({column}) VALUES ({id})",
                                                "DELETE FROM {table} WHERE {column} = {id}"};
};

/// How an engine keeps others out of a directory. In statements, {seconds} stands for the longest wait.
struct LockRules {
    /// Make transactions see what was committed before the lock was taken, not before they began; run before them.
    std::vector<std::string> beforeBegin = {};
    /// Takes the lock; empty where the transaction itself keeps other writers out, and where an engine has no lock.
    std::string take = {};
    /// Gives it back; empty where it ends with the transaction, in which it then has to be taken.
    std::string release = {};
    /// Whether `take` gives 1 in column 1 when the lock was taken; else it is refused with this code when it was not.
    bool givesOne = false;
    std::string timeoutCode = {};
};

/// What the tables need to know of an engine.
struct Dialect {
    std::vector<Step> steps;
    /// Gives the names of all tables in column 1.
    std::string listTables;
    /// Puts every index in the order of the current rules; empty where no order depends on this program's rules.
    std::string rebuildIndexes;
    /// Whether a step is applied in one transaction; else its statements can be run again.
    bool stepIsTransaction = true;
    /// How others are kept out of the directory.
    LockRules locking = {};
    /// Gives in column 1 the id that the engine gave to the row which this connection has inserted last.
    std::string lastId;
    /// Looks at the server's settings. @throws CAException that says what to change. Empty: nothing to look at.
    std::function<void(CAConnect& conn)> check;
    /// See FindShortcoming. Empty: there can be none.
    std::function<std::optional<Shortcoming>(CAConnect& conn)> findShortcoming = {};
    /// Gives the names of the columns of {table} that hold texts of limited length, and how many characters they take.
    /// Empty: as the steps have them.
    std::string listLengths = {};
    /// Whether letters beyond the first 65536 count twice there.
    bool lengthsInUtf16 = false;
    /// Gives in column 1 whether the account may add and change users, 1 or 0, without writing. Empty: the engine has
    /// no accounts, or does not tell.
    std::string mayWrite = {};
    /// Lets the engine look rows up by indexes until the transaction ends, whatever it estimates. Empty: it does so
    /// anyway.
    std::string preferIndexes = {};
    CopyRules copying = {};
};

/// The dialect of the engine behind a connection. @throws CAException when there are no tables for it.
const Dialect& DialectOf(CAConnect& conn);

/// Runs the statements in order. @throws CAException for the first that fails; the rest are not run then.
void ExecuteAll(CAConnect& conn, const std::vector<std::string>& statements);

/// How long another upgrade or copy is waited for.
inline constexpr std::chrono::seconds kLongestTableWork{600};

/// Waits for the directory's lock, if the engine has one.
/// @param longest  more than nothing.
/// @throws LockTimeout when it was waited for in vain, and any other CAException that the engine raises.
void Lock(CAConnect& conn, const Dialect& dialect, std::chrono::seconds longest);
/// Takes the lock and begins the transaction under it. A lock that outlives transactions comes first: the first read
/// could otherwise be older than the lock, and the open transaction of who waits could block the holder.
/// @param transaction  empty; holds the transaction afterwards, and stays empty when this throws, as Lock does.
void BeginLocked(CAConnect& conn, const Dialect& dialect, std::chrono::seconds longest,
                 std::optional<CATransaction>& transaction);
/// Gives it back. Tells of no failure: what the lock was for has been done or given up, and it goes with its
/// connection.
void Unlock(CAConnect& conn, const Dialect& dialect) noexcept;

namespace sqlite {
const Dialect& TheDialect();
}
namespace postgresql {
const Dialect& TheDialect();
}
namespace mysql {
const Dialect& TheDialect();
}
namespace sqlserver {
const Dialect& TheDialect();
}
namespace access {
const Dialect& TheDialect();
}

} // namespace schema
