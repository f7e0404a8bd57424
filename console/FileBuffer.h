#pragma once

#include "management/Sentence.h"

#include <array>
#include <ios>
#include <streambuf>
#include <string>

namespace console {

/// Reads an open file. Unlike the library's own buffers, it gives up when Interrupt asks for that, a read that waits
/// too. Reading @throws std::ios_base::failure when the system reports an error, and when it gives up.
class FileBuffer final : public std::streambuf {
public:
    /// @param file  taken over: closed in the end.
    explicit FileBuffer(int file) : m_file(file), m_bytes() {}
    FileBuffer(const FileBuffer&) = delete;
    FileBuffer& operator=(const FileBuffer&) = delete;
    ~FileBuffer() override;

protected:
    int_type underflow() override;

private:
    int m_file;
    std::array<char, 65536> m_bytes;
};

/// Opens a file for a FileBuffer. @return its descriptor. @throws management::Error (failed).
int OpenForReading(const std::string& path);
/// @param name  of the file, as it is shown. @param error  of the system.
management::Sentence UnreadableSentence(const std::string& name, int error);
/// @param error  of the system. @throws management::Error (failed), always.
[[noreturn]] void ThrowUnreadable(const std::string& path, int error);

/// Opens a file and reads from it. @return what `read` returns. @throws management::Error (failed) where the system
/// does not let it be opened or read.
template <class Read>
auto ReadFile(const std::string& path, Read read)
{
    FileBuffer buffer(OpenForReading(path));
    try {
        return read(buffer);
    } catch (const std::ios_base::failure& e) {
        ThrowUnreadable(path, e.code().value());
    }
}

} // namespace console
