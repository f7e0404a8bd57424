#include "basefun/StatementFrame.h"

#include "basefun/QVBaseFun.h"
#include "dbaccess/CACommFun.h"
#include "dbaccess/CADateTime.h"
#include "dbaccess/CAException.h"
#include "dbaccess/EngineKind.h"

#include <array>
#include <mutex>
#include <string_view>
#include <utility>

namespace frame {

namespace detail {

void Report(CAConnect& conn, const CAException& e, const CString& sql, OnError policy, SourceLocation at)
{
    CString text = e.GetErrorEx(at.file_name(), static_cast<int>(at.line()), sql);
    if (policy == OnError::drop) {
        return;
    }
    {
        // Callers on other threads may fail now, too. Not held during the notification: the window's thread may be one
        // of them.
        static std::mutex writers;
        const std::lock_guard guard(writers);
        CQVBaseFun::m_strLastError = std::move(text);
    }
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

CString FetchDateText(CARecordset& row, long column, const char* format)
{
    CADateTime value;
    if (!row.GetValue(column, value)) {
        return {};
    }
    if (format != nullptr) {
        return value.GetOleDateTime().Format(format);
    }
    std::array<char, 20> text;
    const auto write = [&text](std::size_t at, std::size_t digits, int number) {
        while (digits > 0) {
            text[at + --digits] = static_cast<char>('0' + number % 10);
            number /= 10;
        }
    };
    text = {"0000-00-00 00:00:00"};
    write(0, 4, value.GetYear());
    write(5, 2, value.GetMonth());
    write(8, 2, value.GetDay());
    write(11, 2, value.GetHour());
    write(14, 2, value.GetMinute());
    write(17, 2, value.GetSecond());
    return CString(std::string_view(text.data(), text.size() - 1));
}

} // namespace detail

void TakeValue(COleDateTime& date, const COleDateTime& from)
{
    const COleDateTime::DateTimeStatus status = date.GetStatus();
    date = from;
    date.SetStatus(status);
}

__int64 ReadCount(const CAConnect& conn, CARecordset& row, long column)
{
    __int64 wide = 0;
    int narrow = 0;
    if (dbaccess::EngineKindOf(conn) == dbaccess::EngineKind::mysql) {
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
