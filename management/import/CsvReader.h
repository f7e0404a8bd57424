#pragma once

#include "management/Sentence.h"

#include <csv.h>

#include <cstddef>
#include <istream>
#include <optional>
#include <string>
#include <vector>

namespace management {

struct CsvRecord {
    long line = 0; ///< the line that the record starts on, from 1
    std::vector<std::string> fields;
    Sentence problem;      ///< why it cannot be read; empty when it can
    std::string text = {}; ///< the first line of one that cannot be read, without its end
};

/// Reads comma-separated values (RFC 4180, UTF-8 with or without a byte order mark, LF or CRLF).
///
/// A record that cannot be read costs only its own first line: reading goes on with the line after it, so that a quote
/// that is never closed does not swallow the rest of the file. Blank lines are skipped. Blanks around values belong to
/// them. Holds little more than the record at hand, whatever is read: a record of more than 1 MiB or 4096 values is one
/// that cannot be read.
class CsvReader {
public:
    /// @param in  read from its position; outlives the reader. @param delimiter  between values.
    explicit CsvReader(std::istream& in, char delimiter = ',');
    CsvReader(const CsvReader&) = delete;
    CsvReader& operator=(const CsvReader&) = delete;
    ~CsvReader();

    /// The next record, or nothing at the end and when the stream cannot be read.
    std::optional<CsvRecord> Next();
    /// Whether reading ended because the stream failed, rather than at its end.
    [[nodiscard]] bool Failed() const noexcept { return m_failed; }

private:
    struct Line {
        long number = 0;
        std::string text; ///< ends with a line break; cut when too long
        bool tooLong = false;
    };

    std::optional<Line> ReadLine();
    int ReadByte();
    void StartParser();
    bool Feed(const std::string& text);
    std::optional<CsvRecord> ReadRecord(const Line& first);
    CsvRecord GiveUp(const Line& first, Sentence problem, const std::string& further);

    std::istream& m_in;
    char m_delimiter;
    csv_parser m_parser;
    std::string m_again;  ///< lines to be read a second time, as records of their own
    std::size_t m_at = 0; ///< in these
    long m_lines = 0;
    bool m_failed = false;
    std::vector<std::string> m_fields;
    bool m_complete = false;
    bool m_outOfMemory = false;
};

} // namespace management
