#include "tests/dbaccess/PreparedStatements.h"

#include "platform/Api.h"

#include <dlfcn.h>
#include <sqlite3.h>

namespace {

int prepared = 0;

} // namespace

// The driver's calls come by here, since a program's own functions go before a library's.
extern "C" QV_API int sqlite3_prepare_v3(sqlite3* db, const char* sql, int length, unsigned int flags,
                                         sqlite3_stmt** statement, const char** tail)
{
    static const auto real = reinterpret_cast<decltype(&sqlite3_prepare_v3)>(::dlsym(RTLD_NEXT, "sqlite3_prepare_v3"));
    ++prepared;
    return real(db, sql, length, flags, statement, tail);
}

int PreparedStatements() { return prepared; }
