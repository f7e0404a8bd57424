#include "basefun/StatementFrame.h"

#include "basefun/QVBaseFun.h"
#include "dbaccess/CACommFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CADateTime.h"
#include "dbaccess/CAException.h"

#include <utility>

namespace frame {

namespace detail {

void Report(CAConnect& conn, const CAException& e, const CString& sql, OnError policy, SourceLocation at)
{
    CString text = e.GetErrorEx(at.file_name(), static_cast<int>(at.line()), sql);
    if (policy == OnError::drop) {
        return;
    }
    CQVBaseFun::m_strLastError = std::move(text);
    if (policy == OnError::keep_and_notify && conn.m_hNotifyWnd != nullptr) {
        SendMessageA(conn.m_hNotifyWnd, conn.m_nNotifyMsg, 0, reinterpret_cast<LPARAM>(&CQVBaseFun::m_strLastError));
    }
}

bool OpenResult(CARecordset& rs, const CString& sql, CAConnect& conn)
{
    return rs.Open(sql, &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
}

void Fetch(CARecordset& row, long column, COleDateTime& out)
{
    CADateTime value;
    if (row.GetValue(column, value)) {
        out = value.GetOleDateTime();
    }
}

} // namespace detail

__int64 ReadCount(const CAConnect& conn, CARecordset& row, long column)
{
    constexpr int countsIn64Bits = 6;
    __int64 wide = 0;
    int narrow = 0;
    if (conn.m_nDBType == countsIn64Bits) {
        row.GetValue(column, wide);
    } else {
        row.GetValue(column, narrow);
    }
    return wide + narrow;
}

bool TestExists(CAConnect& conn, const CString& sql, bool& found, SourceLocation at)
{
    CARecordset rs;
    return detail::Guarded(conn, sql, OnError::keep_and_notify, at, [&] {
        if (!detail::OpenResult(rs, sql, conn)) {
            return false;
        }
        rs.MoveFirst();
        if (rs.IsEOF() != 0) {
            found = false;
        }
        rs.GetValueToStr(1, true);
        return true;
    });
}

bool Execute(CAConnect& conn, const CString& sql, OnError policy, SourceLocation at)
{
    return detail::Guarded(conn, sql, policy, at, [&] {
        conn.Execute(sql);
        return true;
    });
}

int ExecuteCounted(CAConnect& conn, const CString& sql, SourceLocation at)
{
    return detail::Guarded(conn, sql, OnError::keep_and_notify, at, [&] { return conn.Execute(sql); });
}

int Run(CAConnect& conn, const CString& sql, OnError policy, SourceLocation at)
{
    return detail::Guarded(conn, sql, policy, at, [&] { return CACommFun::RunSQL(&conn, sql, "", -1); });
}

} // namespace frame
