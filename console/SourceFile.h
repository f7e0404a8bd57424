#pragma once

#include "console/FileBuffer.h"

#include <istream>
#include <memory>
#include <optional>
#include <string>

namespace console {

/// What stands for standard input or output in place of a file.
inline constexpr std::string_view kStandardStream = "-";

/// A file to import, or standard input.
class SourceFile {
public:
    /// @param path  - for standard input. @throws Error (failed) for what cannot be read.
    SourceFile(std::string path, std::istream& standardInput);

    /// Where the rows come from.
    [[nodiscard]] std::istream& Stream() { return IsStandardInput() ? m_standardInput : m_file; }
    /// For sentences.
    [[nodiscard]] std::string Name() const;
    [[nodiscard]] const std::string& Path() const { return m_path; }
    [[nodiscard]] bool IsStandardInput() const { return m_path == kStandardStream; }
    /// What the stream gives at once; it is put back. @throws Error (failed).
    [[nodiscard]] std::string Beginning();

    /// Reads from the beginning of what is still to be read. @throws Error (invalid) that names another encoding or
    /// kind of file than comma-separated values in UTF-8, (failed) for what cannot be read.
    void RequireCsv();
    /// How many rows of comma-separated values there are after the header. Not known of what can be read only once.
    [[nodiscard]] std::optional<long> CountRows() const;
    /// The same of lines after the first one.
    [[nodiscard]] std::optional<long> CountLines() const;

private:
    [[nodiscard]] bool IsRegularFile() const;
    [[nodiscard]] std::string ReadBeginning();
    [[nodiscard]] std::unique_ptr<FileBuffer> Open() const;
    [[noreturn]] void ThrowUnreadable() const;

    std::string m_path;
    std::istream& m_standardInput;
    std::unique_ptr<FileBuffer> m_buffer;
    std::istream m_file;
};

} // namespace console
