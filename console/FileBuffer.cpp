#include "console/FileBuffer.h"

#include "console/Interrupt.h"
#include "management/Errors.h"
#include "management/Text.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ios>
#include <system_error>

namespace console {

using namespace management;

FileBuffer::~FileBuffer() { ::close(m_file); }

FileBuffer::int_type FileBuffer::underflow()
{
    ssize_t count = -1;
    errno = EINTR;
    while (count < 0 && errno == EINTR && !Interrupt::Requested()) {
        count = ::read(m_file, m_bytes.data(), m_bytes.size());
    }
    if (count < 0) {
        throw std::ios_base::failure("read", std::error_code(errno, std::generic_category()));
    }
    setg(m_bytes.data(), m_bytes.data(), m_bytes.data() + count);
    return count == 0 ? traits_type::eof() : traits_type::to_int_type(m_bytes[0]);
}

int OpenForReading(const std::string& path)
{
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        ThrowUnreadable(path, errno);
    }
    return file;
}

Sentence UnreadableSentence(const std::string& name, int error)
{
    return FillPattern("cannot read {}: {}", name, std::strerror(error));
}

void ThrowUnreadable(const std::string& path, int error)
{
    throw Error(ErrorCode::failed, UnreadableSentence(path.empty() ? "''" : Visible(path), error));
}

} // namespace console
