#pragma once

#include <string>

namespace dbaccess::sqlite {

/// A file in a folder that cannot be written, where no write-ahead log can be made to read it by. It is read as
/// immutable, without the library's locks. Other programs may still write it; they are found out: as long as this
/// lives, they cannot remove the log that they make, so the file is unchanged while there is none.
class ImmutableFile {
public:
    /// @param path  of a SQLite file that exists. @throws CAException when changes wait in a log or a journal, which
    /// would not be seen, and when the file is locked or cannot be read.
    explicit ImmutableFile(const std::string& path);
    ImmutableFile(const ImmutableFile&) = delete;
    ImmutableFile& operator=(const ImmutableFile&) = delete;
    ~ImmutableFile();

    /// The address that the library opens the file by.
    [[nodiscard]] std::string Uri() const;
    /// @throws CAException when another program has opened the file for writing: what was just read may be wrong.
    void RequireUnchanged() const;

private:
    /// @param suffix  of the file beside it: "-wal" or "-journal".
    [[nodiscard]] bool HasBeside(const char* suffix) const;
    void ThrowIfChangesIn(const char* suffix) const;

    std::string m_path; // with links followed, as the library names the files beside it
    int m_file;
};

} // namespace dbaccess::sqlite
