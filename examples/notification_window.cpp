// Gives a connection a notification window, which is sent every error of an operation:
// notification_window sqlite:/var/lib/quorvel/directory.db
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"

#include <iostream>

int main(int argc, char* argv[])
{
    if (argc != 2) {
        std::cerr << "usage: notification_window URL\n";
        return 2;
    }
    constexpr UINT kDatabaseError = 0x0400 + 1; // a number of the program's own choice
    int errors = 0;
    // The window belongs to this thread. An operation that fails on this thread calls the handler before it returns;
    // one on another thread waits until this thread calls PumpMessages.
    const HWND window = CreateMessageWindow([&](UINT message, WPARAM, LPARAM text) -> LRESULT {
        if (message == kDatabaseError) {
            // The text is valid during the call only.
            std::cout << "notified: " << reinterpret_cast<const CString*>(text)->GetString() << '\n';
            ++errors;
        }
        return 0;
    });

    CAConnect conn;
    try {
        conn.Open(argv[1]);
    } catch (const CAException& e) {
        // Opening is not an operation: it reports by exception, and no window is notified.
        std::cerr << e.GetErrorText().GetString() << '\n';
        return 1;
    }
    conn.m_hNotifyWnd = window;
    conn.m_nNotifyMsg = kDatabaseError;

    // IsSuperUser puts its text into the statement as it is, so the quote breaks the statement.
    bool isSuper = false;
    const bool ran = CQVBaseFun::IsSuperUser(conn, "o'brien", isSuper);
    std::cout << (ran ? "the statement ran" : "the operation returned false") << '\n';

    DestroyMessageWindow(window);
    return !ran && errors == 1 ? 0 : 1;
}
