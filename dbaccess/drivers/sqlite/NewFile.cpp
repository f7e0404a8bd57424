#include "dbaccess/drivers/sqlite/NewFile.h"

#include "dbaccess/CAException.h"
#include "platform/CodePage.h"

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace dbaccess::sqlite {

namespace {

constexpr int kMostLinks = 40; // as many as the system follows
constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

// A link may lead to a file that is yet to be made.
std::filesystem::path WithoutLinks(std::filesystem::path file)
{
    std::error_code ignored;
    for (int links = 0; links < kMostLinks && std::filesystem::is_symlink(file, ignored); ++links) {
        file = file.parent_path() / std::filesystem::read_symlink(file, ignored);
    }
    return file;
}

} // namespace

void MakeFile(const std::string& path)
{
    const std::filesystem::path file = WithoutLinks(path);
    // Not by open: the close after it would give up the locks of this process's other connections to the file.
    if (::mknod(file.c_str(), S_IFREG | kOwnerOnly, 0) == 0) {
        ::chmod(file.c_str(), kOwnerOnly);
    } else if (errno != EEXIST) {
        throw CAException(platform::Utf8ToAnsi("cannot make " + path + ": " + std::generic_category().message(errno)),
                          "SQLite 14");
    }
}

} // namespace dbaccess::sqlite
