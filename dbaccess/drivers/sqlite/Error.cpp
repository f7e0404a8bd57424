#include "dbaccess/drivers/sqlite/Error.h"

#include "dbaccess/CAException.h"
#include "platform/CodePage.h"

#include <sqlite3.h>

#include <system_error>

namespace dbaccess::sqlite {

void ThrowLastError(sqlite3* db, std::string_view what)
{
    const int code = sqlite3_extended_errcode(db);
    CString message{what};
    if (!message.IsEmpty()) {
        message += ": ";
    }
    message += platform::Utf8ToAnsi(sqlite3_errmsg(db));
    // The engine says only that a file would not open; the system knows why.
    const int systemError = sqlite3_system_errno(db);
    if ((code & 0xFF) == SQLITE_CANTOPEN && systemError != 0) {
        message += " (";
        message += std::generic_category().message(systemError).c_str();
        message += ")";
    }
    CString name;
    name.Format("SQLite %d", code);
    throw CAException(message, name);
}

} // namespace dbaccess::sqlite
