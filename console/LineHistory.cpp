#include "console/LineHistory.h"

#include "management/Errors.h"
#include "management/Text.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <sstream>
#include <system_error>

namespace console {

using management::Error;
using management::ErrorCode;
using management::FillPattern;
using management::Visible;

namespace {

/// Keeps others from writing the file.
class FileLock {
public:
    explicit FileLock(int file) : m_file(file) { ::flock(m_file, LOCK_EX); }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock() { ::flock(m_file, LOCK_UN); }

private:
    int m_file;
};

void MakeFolder(const std::filesystem::path& folder)
{
    std::error_code ignored;
    if (folder.empty() || std::filesystem::exists(folder, ignored)) {
        return;
    }
    MakeFolder(folder.parent_path());
    ::mkdir(folder.c_str(), S_IRWXU);
}

void WriteAll(int file, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = ::write(file, text.data(), text.size());
        if (count <= 0) {
            return;
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

} // namespace

LineHistory::LineHistory(const std::string& file)
{
    MakeFolder(std::filesystem::path(file).parent_path());
    m_file = ::open(file.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, S_IRUSR | S_IWUSR);
    struct stat state = {};
    const bool isOpen = m_file >= 0 && ::fstat(m_file, &state) == 0;
    const bool isOwn = isOpen && S_ISREG(state.st_mode) && ::fchmod(m_file, S_IRUSR | S_IWUSR) == 0;
    if (!isOwn) {
        const std::string reason =
            isOpen && !S_ISREG(state.st_mode) ? "it is not a file" : std::generic_category().message(errno);
        ::close(m_file);
        throw Error(ErrorCode::failed, FillPattern("what is typed is not kept: {}: {}", Visible(file), reason));
    }
}

LineHistory::~LineHistory() { ::close(m_file); }

std::string LineHistory::ReadAll() const
{
    std::string text;
    std::array<char, 65536> buffer{};
    for (ssize_t count = 0;
         (count = ::pread(m_file, buffer.data(), buffer.size(), static_cast<off_t>(text.size()))) > 0;) {
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return text;
}

std::vector<std::string> LineHistory::Read()
{
    const FileLock lock(m_file);
    std::vector<std::string> lines;
    std::istringstream text(ReadAll());
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    if (lines.size() <= kMostHistory) {
        return lines;
    }
    const bool isLong = lines.size() > 2 * kMostHistory;
    lines.erase(lines.begin(), lines.end() - kMostHistory);
    if (isLong && ::ftruncate(m_file, 0) == 0) {
        WriteAll(m_file, fmt::format("{}\n", fmt::join(lines, "\n")));
    }
    return lines;
}

void LineHistory::Add(const std::string& line) const
{
    const FileLock lock(m_file);
    WriteAll(m_file, line + "\n");
}

} // namespace console
