#include "dbaccess/drivers/common/PasswordFile.h"

#include "dbaccess/CAException.h"
#include "platform/CodePage.h"

#include <sys/stat.h>

#include <cerrno>
#include <system_error>

namespace dbaccess {

void RequireClosedToOthers(const std::string& path)
{
    struct stat status{};
    if (::stat(path.c_str(), &status) != 0) {
        throw CAException(platform::Utf8ToAnsi("cannot read the password file " + path + ": " +
                                               std::generic_category().message(errno)));
    }
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        throw CAException(platform::Utf8ToAnsi("the password file " + path +
                                               " is open to others than its owner; chmod 600 closes it"));
    }
}

} // namespace dbaccess
