#pragma once

#include "management/exchange/JsonLine.h"
#include "management/exchange/Nouns.h"

#include <cstddef>
#include <istream>
#include <optional>
#include <string>
#include <utility>

namespace management {

/// A line of an exported directory.
struct ExportedLine {
    long number = 0; ///< in the file, from 1
    const Noun* noun = nullptr;
    JsonObject object;   ///< without the noun
    std::string problem; ///< why it cannot be used; empty where it can so far
};

/// Reads an exported directory line by line; holds one of them.
class LineReader {
public:
    /// @param in  read from where it stands; outlives the reader. @param name  of the file, for sentences.
    LineReader(std::istream& in, std::string name) : m_in(in), m_name(std::move(name)) {}

    /// Reads the first line. @throws Error (invalid) for another one than that of an exported directory.
    void RequireHead();
    /// The next line that is not blank; nothing at the end and when the stream cannot be read.
    std::optional<ExportedLine> Next();
    /// Whether reading ended because the stream failed, rather than at its end.
    [[nodiscard]] bool Failed() const { return m_failed; }
    /// How many bytes the lines had since the last time.
    std::size_t TakeBytes() { return std::exchange(m_bytes, 0); }

private:
    std::optional<std::string> ReadText();
    [[nodiscard]] ExportedLine Parsed(const std::string& text) const;

    std::istream& m_in;
    std::string m_name;
    long m_number = 0;
    std::size_t m_bytes = 0;
    bool m_failed = false;
};

} // namespace management
