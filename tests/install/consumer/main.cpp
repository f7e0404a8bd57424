// Looks a user up: consumer URL LOGIN gives 0 when there is one, 2 when there is none, and 1 when that cannot be told.
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "schema/Schema.h"

#include <cstdio>

int main(int argc, char* argv[])
{
    if (argc != 3) {
        return 1;
    }
    CAConnect conn;
    try {
        conn.Open(argv[1]);
        schema::Upgrade(conn);
    } catch (const CAException& e) {
        std::puts(e.GetErrorText());
        return 1;
    }
    int id = -1;
    if (!CQVBaseFun::GetHMIDByLoginName(conn, argv[2], id)) {
        std::puts(CQVBaseFun::m_strLastError);
        return 1;
    }
    return id == -1 ? 2 : 0;
}
