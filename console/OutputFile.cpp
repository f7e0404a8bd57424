#include "console/OutputFile.h"

#include "console/ExitCode.h"
#include "management/Text.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace console {

namespace {

namespace fs = std::filesystem;

/// A file that is closed in the end.
class Handle {
public:
    explicit Handle(int file) : m_file(file) {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle()
    {
        if (m_file >= 0) {
            ::close(m_file);
        }
    }
    [[nodiscard]] int Get() const { return m_file; }

private:
    int m_file;
};

std::string Earlier(const std::string& path) { return path + ".1"; }

/// What there is under a name itself, not where a link leads; nothing when there is nothing.
std::optional<fs::file_type> TypeOf(const std::string& path)
{
    std::error_code error;
    const fs::file_type type = fs::symlink_status(path, error).type();
    return type == fs::file_type::not_found || type == fs::file_type::none ? std::nullopt : std::optional(type);
}

std::string_view NameOf(fs::file_type type)
{
    switch (type) {
    case fs::file_type::directory:
        return "a directory";
    case fs::file_type::symlink:
        return "a symbolic link";
    case fs::file_type::fifo:
        return "a pipe";
    case fs::file_type::socket:
        return "a socket";
    default:
        return "a device";
    }
}

/// Whether two names lead to one file, also one that is not there yet.
bool IsSame(const fs::path& a, const fs::path& b)
{
    std::error_code error;
    if (fs::equivalent(a, b, error)) {
        return true;
    }
    const auto resolved = [&error](const fs::path& path) {
        return fs::weakly_canonical(fs::absolute(path, error).parent_path(), error) / path.filename();
    };
    return resolved(a) == resolved(b);
}

enum class Content { none, firstLineOnly, more, ofAnotherKind };

Content ContentOf(int file, const std::string& firstLine)
{
    std::string text(firstLine.size() + 2, '\0');
    const ssize_t count = ::pread(file, text.data(), text.size(), 0);
    if (count <= 0) {
        return count == 0 ? Content::none : Content::ofAnotherKind;
    }
    text.resize(static_cast<std::size_t>(count));
    const std::string line = firstLine + "\n";
    return !text.starts_with(line) ? Content::ofAnotherKind : text == line ? Content::firstLineOnly : Content::more;
}

/// Locks a file against other programs that do the same, and makes sure that it still has its name. Where there are no
/// locks, the name alone decides.
bool HoldsAlone(int file, const std::string& path)
{
    if (::flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        return false;
    }
    struct stat opened = {};
    struct stat named = {};
    return ::fstat(file, &opened) == 0 && ::lstat(path.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
           opened.st_ino == named.st_ino;
}

int OpenThere(const std::string& path) { return ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC); }

} // namespace

OutputFile::OutputFile(Description description)
    : m_description(std::move(description)), m_partial(m_description.target + ".partial")
{
    const std::string& target = m_description.target;
    for (const std::string& path : {target, m_partial}) {
        for (const std::string& name : {path, Earlier(path)}) {
            RequireFree(name);
            RequireReplaceable(name);
        }
    }
    TakeAwayPartial();
    m_file = ::open(m_partial.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kForItsOwner);
    if (m_file < 0) {
        ThrowUnwritable(std::strerror(errno));
    }
    if (!HoldsAlone(m_file, m_partial)) {
        ::close(m_file);
        ThrowBusy(m_partial);
    }
    m_pending << m_description.firstLine << '\n';
    try {
        Flush();
    } catch (const Error&) {
        ::unlink(m_partial.c_str());
        ::close(m_file);
        throw;
    }
    m_hasContent = false;
}

OutputFile::~OutputFile()
{
    ::close(m_file);
    if (!m_finished && !m_hasContent) {
        ::unlink(m_partial.c_str());
    }
}

void OutputFile::Flush()
{
    const std::string text = m_pending.str();
    m_pending.str("");
    std::string_view rest = text;
    while (!rest.empty()) {
        const ssize_t count = ::write(m_file, rest.data(), rest.size());
        if (count < 0 && errno != EINTR) {
            ThrowUnwritable(std::strerror(errno));
        }
        rest.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    m_hasContent = m_hasContent || !text.empty();
}

void OutputFile::Finish()
{
    Flush();
    if (::fsync(m_file) != 0) {
        ThrowUnwritable(std::strerror(errno));
    }
    // Kept from here on: an import that had no rows has an outcome too.
    m_hasContent = true;
    const std::string& target = m_description.target;
    RequireReplaceable(target);
    if (TypeOf(target)) {
        KeepEarlier(target);
    }
    if (::rename(m_partial.c_str(), target.c_str()) != 0) {
        ThrowUnwritable(std::strerror(errno));
    }
    m_finished = true;
}

std::string OutputFile::Name() const { return Visible(m_finished ? m_description.target : m_partial); }

void OutputFile::RequireFree(const std::string& path) const
{
    for (const InUse& other : m_description.others) {
        if (IsSame(path, other.path)) {
            throw Error(ErrorCode::invalid, FillPattern("{} is {}; name another file with {}", Visible(path), other.as,
                                                        m_description.option));
        }
    }
}

void OutputFile::RequireReplaceable(const std::string& path) const
{
    const std::optional<fs::file_type> type = TypeOf(path);
    if (!type) {
        return;
    }
    if (*type != fs::file_type::regular) {
        throw Error(ErrorCode::failed,
                    FillPattern("cannot write {}: it is {}, not a file; name a file with {}, or - for standard output",
                                Visible(path), NameOf(*type), m_description.option));
    }
    const Handle file(OpenThere(path));
    if (file.Get() < 0) {
        ThrowUnwritable(fmt::format("what is there cannot be read ({})", std::strerror(errno)));
    }
    if (ContentOf(file.Get(), m_description.firstLine) == Content::ofAnotherKind) {
        throw Error(ErrorCode::conflict,
                    FillPattern("{} is there already and is not such a list; it was left as it is: name another file "
                                "with {}",
                                Visible(path), m_description.option));
    }
}

/// What a run that was cut short has left.
void OutputFile::TakeAwayPartial() const
{
    const std::string path = m_partial;
    const Handle file(OpenThere(path));
    if (file.Get() < 0) {
        return; // nothing there, or making it will say why not
    }
    if (!HoldsAlone(file.Get(), path)) {
        ThrowBusy(path);
    }
    if (ContentOf(file.Get(), m_description.firstLine) == Content::more) {
        KeepEarlier(path);
    } else {
        ::unlink(path.c_str());
    }
}

void OutputFile::KeepEarlier(const std::string& path) const
{
    const std::string earlier = Earlier(path);
    RequireReplaceable(earlier);
    if (::rename(path.c_str(), earlier.c_str()) != 0 && errno != ENOENT) {
        ThrowUnwritable(std::strerror(errno));
    }
}

void OutputFile::ThrowBusy(const std::string& path) const
{
    throw Error(ErrorCode::conflict, FillPattern("{} is being written by another qvadmin; wait for its end, or name "
                                                 "another file with {}",
                                                 Visible(path), m_description.option));
}

void OutputFile::ThrowUnwritable(const std::string& reason) const
{
    throw Error(ErrorCode::failed, FillPattern("cannot write {}: {}; name another file with {}",
                                               Visible(m_description.target), reason, m_description.option));
}

} // namespace console
