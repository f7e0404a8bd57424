#include "dbaccess/CACommFun.h"

#include "dbaccess/CAConnect.h"

int CACommFun::RunSQL(CAConnect* conn, CString sql, CString /*second*/, int /*third*/)
{
    if (conn == nullptr || !conn->IsOpen()) {
        return 0;
    }
    conn->Execute(sql);
    return 1;
}
