#pragma once

#include "management/Sentence.h"

#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace management {

/// An entry of a directory of another kind.
struct LdifEntry {
    long line = 0; ///< on which it begins, from 1
    std::string dn;
    /// In their order; names in small letters, without those that have options such as ;lang-fr.
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<std::string> elsewhere; ///< the names of those whose values are in other files
    Sentence problem = {};              ///< why it cannot be used; empty when it can

    /// The first value of an attribute; null for none.
    [[nodiscard]] const std::string* Find(std::string_view name) const;
};

/// Reads entries as servers write them (RFC 2849): folded lines, base64, comments, LF or CRLF, with or without a byte
/// order mark. Records of changes are entries that cannot be used. What is not an entry (`version: 1`, the summary of a
/// search) is passed over. Holds one entry; one of more than 16 MiB cannot be used.
class LdifReader {
public:
    /// @param in  read from where it stands; outlives the reader.
    explicit LdifReader(std::istream& in) : m_in(in) {}

    /// The next entry, or nothing at the end and when the stream cannot be read.
    std::optional<LdifEntry> Next();
    /// Whether reading ended because the stream failed, rather than at its end.
    [[nodiscard]] bool Failed() const noexcept { return m_failed; }

private:
    struct Line {
        long number;
        std::string text;
    };

    LdifEntry ReadEntry(bool& isLast);
    std::optional<Line> ReadPhysical();
    std::optional<Line> ReadLine();
    static void Take(LdifEntry& entry, const std::string& line);

    std::istream& m_in;
    std::optional<Line> m_ahead;
    long m_lines = 0;
    bool m_failed = false;
};

/// A part of a distinguished name: the first attribute of it, its name in small letters.
struct RelativeName {
    std::string attribute;
    std::string value;
};

/// The parts of a distinguished name (RFC 4514), the nearest first. @throws Error (invalid) for what is none.
std::vector<RelativeName> ParseDn(std::string_view dn);
/// A value as a distinguished name has it.
std::string DnEscaped(std::string_view value);
/// A line of an entry, folded and in base64 where that is needed, with its end.
std::string LdifLine(std::string_view attribute, std::string_view value);

} // namespace management
