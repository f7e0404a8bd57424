#pragma once

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

// The library reads forward only, whatever is asked for; the values are part of the interface.
enum AdbcCursorType : int {
    adbcCursorForwardOnly = 0,
    adbcCursorKeyset = 1,
    adbcCursorDynamic = 2,
    adbcCursorStatic = 3
};
enum AdbcLockType : int { adbcLockReadOnly = 1, adbcLockPessimistic = 2, adbcLockOptimistic = 3 };
enum AdbcCommandType : int { adbcCommandText = 1, adbcCommandTable = 2 };

/// The rows of one query, read from the first to the last. The destructor closes it.
///
/// Reads: a NULL, or a read with no current row, gives false and leaves the output as it was (a text getter gives the
/// empty text). A number read from a text column, and a text read from a number column, convert as C's atoi and "%d"
/// do. Columns are numbered from 1; names are found without regard to case.
/// @throws CAException for what the engine refuses, a column number out of range and an unknown column name.
class QV_API CARecordset {
public:
    CARecordset();
    CARecordset(const CARecordset&) = delete;
    CARecordset& operator=(const CARecordset&) = delete;
    virtual ~CARecordset();

    /// Runs a query and stands on its first row; a result that is open is closed first. The text is run as one
    /// statement whatever the last three arguments say.
    /// @return false when there is no connection or it is not open.
    bool Open(const char* sql, CAConnect* conn, AdbcCursorType cursor, AdbcLockType lock, AdbcCommandType command);
    void Close() noexcept;

    /// Goes to the first row; the query is run again when rows have been passed. @return non-zero when there is one.
    int MoveFirst();
    /// Goes to the next row. @return non-zero when there is one.
    int MoveNext();
    /// Non-zero when there is no current row.
    [[nodiscard]] int IsEOF() const;

    bool GetValue(long column, int& out);
    bool GetValue(long column, bool& out);
    /// A 32-bit number: 0 to 2^32-1 on every platform.
    bool GetValue(long column, unsigned long& out);
    bool GetValue(long column, __int64& out);
    /// A text that is no date is as NULL.
    bool GetValue(long column, CADateTime& out);
    /// @param flag  without effect; callers pass true.
    bool GetValue(long column, CString& out, bool flag);
    CString GetValueToStr(long column, bool flag);

    bool GetValueByName(const char* column, int& out);
    bool GetValueByName(const char* column, bool& out);
    CString GetValueToStrByName(const char* column, bool flag);

    /// The number of a column, to read it by number in every row.
    [[nodiscard]] long GetColumnNumber(const char* column) const;
    [[nodiscard]] long GetColumnCount() const;
    /// The name of a column as the engine gives it.
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
