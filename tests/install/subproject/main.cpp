// Asks SQLite for a number, and gives 0 when it is the right one.
#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"

#include <cstdio>

int main()
{
    int number = 0;
    try {
        CAConnect conn;
        conn.Open("sqlite::memory:");
        CARecordset rows;
        rows.Open("SELECT 40 + 2", &conn, adbcCursorForwardOnly, adbcLockReadOnly, adbcCommandText);
        rows.GetValue(1L, number);
    } catch (const CAException& e) {
        std::puts(e.GetErrorText());
        return 1;
    }
    return number == 42 ? 0 : 1;
}
