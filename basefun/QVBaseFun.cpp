#include "basefun/QVBaseFun.h"

#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"
#include "dbaccess/EngineKind.h"
#include "platform/CodePage.h"

#include <cstddef>
#include <memory>
#include <string>

CString CQVBaseFun::m_strLastError;

CQVBaseFun::CQVBaseFun() = default;
CQVBaseFun::CQVBaseFun(const CQVBaseFun&) = default;
CQVBaseFun& CQVBaseFun::operator=(const CQVBaseFun&) = default;
CQVBaseFun::~CQVBaseFun() = default;

CString CQVBaseFun::ReplaceSysSQL(CString sql)
{
    sql.Replace("\\", "");
    COleDateTime now = COleDateTime::GetCurrentTime();
    // The marker holds a %s of its own: it must be gone before the others are filled in.
    sql.Replace("#%s#", "#" + FormatDBTIMEToStr(now) + "#");
    sql.Replace("%s", "11");
    sql.Replace("%d", "0");
    return sql;
}

CString CQVBaseFun::FormatDBTIMEToStr(COleDateTime& time)
{
    CString text;
    text.Format("%d-%d-%d %d:%d:%d", time.GetYear(), time.GetMonth(), time.GetDay(), time.GetHour(), time.GetMinute(),
                time.GetSecond());
    return text;
}

int CQVBaseFun::ToUTF8String(CString& text)
{
    const std::size_t wideLength = text.View().size() + 1;
    std::u16string wide(wideLength, u'\0');
    MultiByteToWideChar(CP_ACP, 0, text, -1, wide.data(), static_cast<int>(wideLength));
    const int size = WideCharToMultiByte(CP_UTF8, 0, wide.data(), -1, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), -1, utf8.data(), size, nullptr, nullptr);
    text = utf8.c_str();
    return 1;
}

bool CQVBaseFun::IsDataBaseValid(CAConnect& conn, int dbType, CString dbName, bool& valid)
{
    valid = false;
    constexpr const char* table = "qv_User";
    CString sql;
    switch (static_cast<dbaccess::EngineKind>(dbType)) {
    case dbaccess::EngineKind::access:
        sql = FormatSql("SELECT name from MSysObjects where name = '%s'", table);
        break;
    case dbaccess::EngineKind::sqlServer:
        sql = FormatSql(
            "SELECT name from sysobjects where id = object_id(N'%s') and OBJECTPROPERTY(id,N'IsUserTable') = 1", table);
        break;
    case dbaccess::EngineKind::comparesInCapitals:
        valid = true;
        return true;
    case dbaccess::EngineKind::mysql:
        // No blank before `where`: the engine reads it as it stands.
        sql = FormatSql("select `TABLE_NAME` from `INFORMATION_SCHEMA`.`TABLES`where `TABLE_SCHEMA`='%s' and "
                        "`TABLE_NAME`='%s'",
                        dbName, table);
        break;
    default:
        return false;
    }
    return frame::ReadFirst(conn, sql, frame::Found(valid));
}

void CQVBaseFun::WriteToLogFileEx(CString /*text*/) {}
