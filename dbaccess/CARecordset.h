#pragma once

/// @file
/// Results, and what callers pass when they open one.

#include "platform/Api.h"
#include "platform/CString.h"
#include "platform/Types.h"

#include <memory>

class CAConnect;
class CADateTime;

namespace dbaccess {
class Cursor;
class Session;
struct Field;
} // namespace dbaccess

/// How a caller wishes to move; without effect, since results are read forward only.
enum AdbcCursorType : int {
    adbcCursorForwardOnly = 0,
    adbcCursorKeyset = 1,
    adbcCursorDynamic = 2,
    adbcCursorStatic = 3
};
/// How a caller wishes rows to be locked; without effect.
enum AdbcLockType : int { adbcLockReadOnly = 1, adbcLockPessimistic = 2, adbcLockOptimistic = 3 };
/// What a caller passes as text; without effect, since it is always run as a statement.
enum AdbcCommandType : int { adbcCommandText = 1, adbcCommandTable = 2 };

/// The rows of one query, read from the first to the last. The destructor closes it.
///
/// Reads: a NULL, or a read with no current row, gives false and leaves the output as it was (a text getter gives the
/// empty text). A number read from a text column, and a text read from a number column, convert as C's atoi and "%d"
/// do. Columns are numbered from 1; names are found without regard to case.
/// @throws CAException for what the engine refuses, a column number out of range and an unknown column name.
class QV_API CARecordset {
public:
    /// Nothing is open.
    CARecordset();
    CARecordset(const CARecordset&) = delete;
    CARecordset& operator=(const CARecordset&) = delete;
    /// Ends the query.
    virtual ~CARecordset();

    /// Runs a query and moves to its first row; a result that is open is closed first. The text is run as one
    /// statement whatever the last three arguments say.
    /// @return false when there is no connection or it is not open; true also when there are no rows.
    /// @throws CAException for what the engine refuses.
    bool Open(const char* sql, CAConnect* conn, AdbcCursorType cursor, AdbcLockType lock, AdbcCommandType command);
    /// Ends the query and frees its memory; nothing happens when none is open. The statement may still be running on
    /// the server: it is ended there.
    void Close() noexcept;

    /// Goes to the first row; the query is run again when rows have been passed. @return non-zero when there is one.
    /// @throws CAException for what the engine refuses.
    int MoveFirst();
    /// Goes to the next row. @return non-zero when there is one. @throws CAException for what the engine refuses.
    int MoveNext();
    /// Non-zero when there is no current row.
    [[nodiscard]] int IsEOF() const;

    /// Reads a number, of which the lower 32 bits are kept. @return false for NULL and without a current row; `out`
    /// then stays. @throws CAException for a column out of range.
    bool GetValue(long column, int& out);
    /// Reads a flag: whether the number is not 0. @return false for NULL and without a current row; `out` then stays.
    /// @throws CAException for a column out of range.
    bool GetValue(long column, bool& out);
    /// Reads a number, of which the lower 32 bits are kept without a sign. @return false for NULL and without a current
    /// row; `out` then stays. @throws CAException for a column out of range.
    bool GetValue(long column, unsigned long& out);
    /// Reads a 64-bit number. @return false for NULL and without a current row; `out` then stays.
    /// @throws CAException for a column out of range.
    bool GetValue(long column, __int64& out);
    /// Reads a date. @return false for NULL, for a value that is not a date, and without a current row; `out` then
    /// stays.
    /// @throws CAException for a column out of range.
    bool GetValue(long column, CADateTime& out);
    /// Reads a text. @param flag  without effect; callers pass true. @return false for NULL and without a current row;
    /// `out` then stays. @throws CAException for a column out of range.
    bool GetValue(long column, CString& out, bool flag);
    /// Reads a text. @param flag  without effect; callers pass true. @return the empty text for NULL and without a
    /// current row. @throws CAException for a column out of range.
    CString GetValueToStr(long column, bool flag);

    /// Reads a number by the name of its column, in any case; its lower 32 bits are kept. @return false for NULL and
    /// without a current row; `out` then stays. @throws CAException for an unknown name.
    bool GetValueByName(const char* column, int& out);
    /// Reads a flag by the name of its column, in any case. @return false for NULL and without a current row; `out`
    /// then stays. @throws CAException for an unknown name.
    bool GetValueByName(const char* column, bool& out);
    /// Reads a text by the name of its column, in any case. @param flag  without effect; callers pass true. @return the
    /// empty text for NULL and without a current row. @throws CAException for an unknown name.
    CString GetValueToStrByName(const char* column, bool flag);

    /// The number of a column, from 1, to read it by number in every row. @param column  its name, in any case.
    /// @throws CAException for an unknown name.
    [[nodiscard]] long GetColumnNumber(const char* column) const;
    /// The number of columns; 0 when nothing is open.
    [[nodiscard]] long GetColumnCount() const;
    /// The name of a column as the engine gives it. @throws CAException for a column out of range.
    [[nodiscard]] CString GetColumnName(long column) const;

private:
    void CheckColumn(long column) const;
    [[nodiscard]] dbaccess::Field Read(long column);

    std::shared_ptr<dbaccess::Session> m_session;
    std::unique_ptr<dbaccess::Cursor> m_cursor;
    long m_columns = 0;
    bool m_hasRow = false;
    bool m_onFirst = false;
};
