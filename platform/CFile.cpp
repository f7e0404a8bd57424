#include "platform/CFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace {

constexpr unsigned kShareMask = 0x0070;
constexpr mode_t kNewFileMode = 0666;

int CauseOf(int osError)
{
    switch (osError) {
    case ENOENT:
        return CFileException::fileNotFound;
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
        return CFileException::badPath;
    case EMFILE:
    case ENFILE:
        return CFileException::tooManyOpenFiles;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
        return CFileException::accessDenied;
    case EBADF:
        return CFileException::invalidFile;
    case ESPIPE:
        return CFileException::badSeek;
    case EIO:
        return CFileException::hardIO;
    case EWOULDBLOCK:
        return CFileException::sharingViolation;
    case ENOSPC:
    case EDQUOT:
        return CFileException::diskFull;
    default:
        return CFileException::genericException;
    }
}

template <class Call>
auto Retried(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

bool IsForWriting(unsigned flags) { return (flags & (CFile::modeWrite | CFile::modeReadWrite)) != 0; }

int OpenMode(unsigned flags)
{
    const int access = (flags & CFile::modeReadWrite) ? O_RDWR : (flags & CFile::modeWrite) ? O_WRONLY : O_RDONLY;
    return access | O_CLOEXEC | ((flags & CFile::modeCreate) ? O_CREAT : 0);
}

bool Lock(int file, unsigned flags)
{
    const unsigned share = flags & kShareMask;
    if (share == 0 || share == CFile::shareDenyNone) {
        return true;
    }
    const bool shared = share == CFile::shareDenyWrite && !IsForWriting(flags);
    return Retried([&] { return ::flock(file, (shared ? LOCK_SH : LOCK_EX) | LOCK_NB); }) == 0;
}

// Devices have no length to cut.
bool CutIfAsked(int file, unsigned flags)
{
    struct stat status{};
    if ((flags & CFile::modeCreate) == 0 || (flags & CFile::modeNoTruncate) != 0 || !IsForWriting(flags)) {
        return true;
    }
    return ::fstat(file, &status) == 0 &&
           (!S_ISREG(status.st_mode) || Retried([&] { return ::ftruncate(file, 0); }) == 0);
}

// The content goes only once the lock is held: a refused opener must not empty what another is writing.
int OpenedFile(const char* path, unsigned flags)
{
    const int file = Retried([&] { return ::open(path, OpenMode(flags), kNewFileMode); });
    if (file == -1 || (Lock(file, flags) && CutIfAsked(file, flags))) {
        return file;
    }
    const int osError = errno;
    ::close(file);
    errno = osError;
    return -1;
}

} // namespace

CFileException::CFileException(int cause, int osError, const char* fileName)
    : m_cause(cause), m_lOsError(osError), m_strFileName(fileName)
{
}

CFileException::~CFileException() = default;

CString CFileException::GetErrorMessage() const
{
    const std::string reason = std::system_category().message(m_lOsError);
    return m_strFileName + ": " + reason.c_str();
}

CFile::~CFile()
{
    if (m_file != -1) {
        ::close(m_file);
    }
}

bool CFile::Open(const char* path, unsigned flags, CFileException* error)
{
    const CString name(path);
    const int file = m_file == -1 ? OpenedFile(name, flags) : -1;
    if (file == -1) {
        const int osError = m_file == -1 ? errno : EBUSY;
        if (error != nullptr) {
            error->m_cause = CauseOf(osError);
            error->m_lOsError = osError;
            error->m_strFileName = name;
        }
        return false;
    }
    m_file = file;
    m_path = name;
    return true;
}

std::uint64_t CFile::SeekToEnd()
{
    const off_t offset = ::lseek(m_file, 0, SEEK_END);
    if (offset == -1) {
        Throw(errno);
    }
    return static_cast<std::uint64_t>(offset);
}

void CFile::Write(const void* bytes, unsigned count)
{
    const char* next = static_cast<const char*>(bytes);
    do {
        const ssize_t written = Retried([&] { return ::write(m_file, next, count); });
        if (written == -1) {
            Throw(errno);
        }
        next += written;
        count -= static_cast<unsigned>(written);
    } while (count != 0);
}

unsigned CFile::Read(void* bytes, unsigned count)
{
    const ssize_t got = Retried([&] { return ::read(m_file, bytes, count); });
    if (got == -1) {
        Throw(errno);
    }
    return static_cast<unsigned>(got);
}

void CFile::Close()
{
    if (m_file == -1) {
        return;
    }
    const int result = ::close(m_file);
    m_file = -1;
    // Interrupted or not, the descriptor is gone; to close it again could hit another's file.
    if (result == -1 && errno != EINTR) {
        Throw(errno);
    }
}

void CFile::Throw(int osError) const { throw new CFileException(CauseOf(osError), osError, m_path); }
