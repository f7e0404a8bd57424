#include "dbaccess/drivers/sqlite/ImmutableFile.h"

#include "dbaccess/CAException.h"
#include "platform/CodePage.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace dbaccess::sqlite {

namespace {

// Where the file format has its read lock.
constexpr off_t kSharedBytes = 0x40000002;
constexpr off_t kSharedByteCount = 510;

[[noreturn]] void Refuse(const std::string& sentence) { throw CAException(platform::Utf8ToAnsi(sentence)); }

// Belongs to the open file and not to the process, so that no other connection's close gives it up.
bool LockForReading(int file)
{
    struct flock lock{};
    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = kSharedBytes;
    lock.l_len = kSharedByteCount;
    return ::fcntl(file, F_OFD_SETLK, &lock) == 0;
}

} // namespace

ImmutableFile::ImmutableFile(const std::string& path)
    : m_path(std::filesystem::canonical(path).string()), m_file(::open(m_path.c_str(), O_RDONLY | O_CLOEXEC))
{
    try {
        if (m_file < 0 || !LockForReading(m_file)) {
            Refuse("cannot read " + path + ": " + std::generic_category().message(errno));
        }
        ThrowIfChangesIn("-wal");
        ThrowIfChangesIn("-journal");
    } catch (const CAException&) {
        ::close(m_file);
        throw;
    }
}

ImmutableFile::~ImmutableFile() { ::close(m_file); }

std::string ImmutableFile::Uri() const
{
    std::string uri = "file:";
    for (const char ch : m_path) {
        uri += ch == '%' ? "%25" : ch == '?' ? "%3F" : ch == '#' ? "%23" : std::string(1, ch);
    }
    return uri + "?immutable=1";
}

void ImmutableFile::RequireUnchanged() const
{
    if (HasBeside("-wal")) {
        Refuse(m_path + " is being written by another program; open it again to read what it holds now");
    }
}

bool ImmutableFile::HasBeside(const char* suffix) const { return ::access((m_path + suffix).c_str(), F_OK) == 0; }

void ImmutableFile::ThrowIfChangesIn(const char* suffix) const
{
    if (HasBeside(suffix)) {
        Refuse(m_path + " has changes in " + m_path + suffix +
               ", which cannot be read in a folder that cannot be written; copy both files to one that can");
    }
}

} // namespace dbaccess::sqlite
