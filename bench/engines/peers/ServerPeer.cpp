#include "bench/engines/peers/ServerPeer.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace bench {

pid_t MariadbProcess()
{
    const char* folder = std::getenv("QV_TEST_SERVERS");
    std::ifstream file(std::string(folder == nullptr ? "" : folder) + "/mariadb.pid");
    pid_t process = 0;
    if (!(file >> process)) {
        throw std::runtime_error("there is no MariaDB of the tests");
    }
    return process;
}

std::string FindStatement(const std::string& loginName)
{
    return "SELECT Col_ID FROM qv_User WHERE Col_LoginName = '" + DoubledQuotes(loginName) + "'";
}

std::string Numbered(const std::string& sql, const std::string& sign)
{
    std::string numbered;
    int count = 0;
    for (const char ch : sql) {
        if (ch == '?') {
            numbered += sign + std::to_string(++count);
        } else {
            numbered += ch;
        }
    }
    return numbered;
}

} // namespace bench
