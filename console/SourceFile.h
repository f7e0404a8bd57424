#pragma once

#include "console/FileBuffer.h"
#include "management/import/DecodingBuffer.h"

#include <ios>
#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace console {

/// What stands for standard input or output in place of a file.
inline constexpr std::string_view kStandardStream = "-";

/// A file to import, or standard input.
class SourceFile {
public:
    /// @param path  - for standard input. @throws Error (failed) for what cannot be read.
    SourceFile(std::string path, std::istream& standardInput);

    /// Where the rows come from.
    [[nodiscard]] std::istream& Stream()
    {
        return m_decoder ? m_decoded : IsStandardInput() ? m_standardInput : m_file;
    }
    /// For sentences.
    [[nodiscard]] std::string Name() const;
    [[nodiscard]] const std::string& Path() const { return m_path; }
    [[nodiscard]] bool IsStandardInput() const { return m_path == kStandardStream; }
    /// What the stream gives at once; it is put back. @throws Error (failed).
    [[nodiscard]] std::string Beginning();

    /// Looks at what is still to be read, and has the stream give comma-separated values in UTF-8, whatever their
    /// encoding.
    /// @param encoding  of the file; none: UTF-8, or the one that it seems to have.
    /// @return an encoding that was guessed; empty for none. @throws Error (invalid) that names another kind of file,
    /// or an encoding that is not known, (failed) for what cannot be read.
    std::string ReadAsCsv(const std::optional<std::string>& encoding);
    /// How many rows of comma-separated values there are after the header, to be asked after ReadAsCsv. Not known of
    /// what can be read only once.
    [[nodiscard]] std::optional<long> CountRows(char delimiter) const;
    /// How many lines there are after the first one. Not known of what can be read only once.
    [[nodiscard]] std::optional<long> CountLines() const;

private:
    [[nodiscard]] bool IsRegularFile() const;
    [[nodiscard]] std::string ReadBeginning();
    [[nodiscard]] std::unique_ptr<FileBuffer> Open() const;
    [[noreturn]] void ThrowNothingImported(const std::ios_base::failure& e) const;

    std::string m_path;
    std::istream& m_standardInput;
    std::unique_ptr<FileBuffer> m_buffer;
    std::istream m_file;
    std::string m_encoding; ///< empty for UTF-8
    std::unique_ptr<management::DecodingBuffer> m_decoder;
    std::istream m_decoded;
};

} // namespace console
