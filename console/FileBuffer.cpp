#include "console/FileBuffer.h"

#include "console/Interrupt.h"

#include <unistd.h>

#include <cerrno>
#include <ios>
#include <system_error>

namespace console {

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

} // namespace console
