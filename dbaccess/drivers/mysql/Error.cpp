#include "dbaccess/drivers/mysql/Error.h"

#include "platform/CodePage.h"

#include <mysql.h>

#include <algorithm>
#include <array>

namespace dbaccess::mysql {

CString ErrorCode(unsigned int number)
{
    CString code;
    code.Format("MySQL %u", number);
    return code;
}

CAException LastError(st_mysql* handle)
{
    return CAException(platform::Utf8ToAnsi(mysql_error(handle)), ErrorCode(mysql_errno(handle)));
}

bool IsLost(st_mysql* handle)
{
    // Shutdown, killed, and closed after a long silence: the server says so and then closes its end.
    constexpr std::array kLastWords = {1053U, 1927U, 4031U};
    return mysql_get_socket(handle) == MARIADB_INVALID_SOCKET ||
           std::ranges::find(kLastWords, mysql_errno(handle)) != kLastWords.end();
}

bool IsForAnotherServer(unsigned int number)
{
    // From the server: too many connections, not ready, shutting down, network trouble, blocked or unknown client
    // machine, too many connections of this user. From the client library: no connection, or lost during the greeting.
    constexpr std::array kNotHere = {1040U, 1047U, 1053U, 1158U, 1159U, 1160U, 1161U, 1129U, 1130U, 1203U,
                                     1226U, 2002U, 2003U, 2004U, 2005U, 2006U, 2012U, 2013U, 2055U};
    return std::ranges::find(kNotHere, number) != kNotHere.end();
}

} // namespace dbaccess::mysql
