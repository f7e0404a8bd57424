#pragma once

#include "management/Call.h"
#include "management/exchange/LineReader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace management {

/// The lines of a directory, by what they are about. Holds all of them.
class DirectoryLines {
public:
    /// Those of a directory, with secrets. @param scope  of the file that they are compared with.
    /// @param atOneMoment  false in a transaction of the caller's.
    /// @throws DatabaseError, Error (failed) when it was stopped.
    static DirectoryLines Of(Call& call, const ExportScope& scope, bool atOneMoment);
    /// Those of a file. @param reader  has read the first line. @throws Error (invalid) for a line that cannot be used,
    /// (failed) for a file that cannot be read.
    static DirectoryLines Of(LineReader& reader);

    /// What a file says that it has; of a directory, nothing.
    [[nodiscard]] const ExportScope& Scope() const { return m_scope; }
    /// Whether a file that has no line of a noun says by that that there is to be none.
    [[nodiscard]] bool HasNoun(const Noun& noun) const { return !m_isFile || m_nouns.contains(&noun); }
    /// How many lines of a directory mean something by not being in a file.
    [[nodiscard]] std::size_t CountCovered(const DirectoryLines& file) const;
    /// What a directory has and is not compared, since a file has no line of that noun, in a sentence; empty where
    /// there is nothing, and for a file that says which nouns it has. @param name  of the file.
    [[nodiscard]] Sentence NotCompared(const DirectoryLines& file, std::string_view name) const;
    /// All lines of a file about what one of its lines is about.
    [[nodiscard]] const std::vector<ExportedLine>& LinesAbout(const ExportedLine& line) const;

private:
    friend std::vector<struct DirectoryDifference> Differences(const DirectoryLines& here, const DirectoryLines& there);

    /// The place of a noun among all, and the names by which a line finds its row, case not counting.
    using Key = std::pair<std::ptrdiff_t, std::string>;

    static Key KeyOf(const ExportedLine& line);
    void Add(ExportedLine line);
    /// Whether it means something that a line of a directory is not in a file.
    [[nodiscard]] bool Covers(const ExportedLine& line, const DirectoryLines& here) const;
    /// Whether a line of a directory is not in a file that it should be in; secrets, which a file may be without, do
    /// not count.
    [[nodiscard]] bool Lacks(const ExportedLine& line, const DirectoryLines& here) const;
    /// Whether a line of a directory is the part's own: a group below it, or what names such a group, or a user whom
    /// the file has. The users themselves, views, roles, and groups above are needed elsewhere too.
    [[nodiscard]] bool IsOfPart(const ExportedLine& line) const;

    bool m_isFile = false;
    ExportScope m_scope;
    std::set<const Noun*> m_nouns; ///< of a file: what it has
    std::set<Key> m_part;          ///< of a directory: what is in the part that a file is
    std::map<Key, std::vector<ExportedLine>> m_lines;
};

/// One way in which two directories differ.
struct DirectoryDifference {
    enum class Kind : std::uint8_t { onlyHere, onlyThere, differs };

    const Noun* noun = nullptr;
    std::string name = {}; ///< of what the line is about, for people
    Kind kind = Kind::differs;
    std::string_view member = {}; ///< of a line that differs
    Value here = {};              ///< of the member; a secret is ***
    Value there = {};
    const ExportedLine* hereLine = nullptr; ///< of the DirectoryLines; null where there is none
    const ExportedLine* thereLine = nullptr;
};

/// The words for programs, by Kind.
inline constexpr std::array<std::string_view, 3> kDifferenceKinds = {"only here", "only there", "differs"};

/// What two directories differ in, in the order of nouns, then by names. Of lines that are about the same, the members
/// are compared that both have. What names an item is compared without case. A file may be without the secrets of
/// `here`, without the nouns that it has no line of, and, where it is a part, without all that is not of the part; of a
/// part, views, roles and groups above it are never only here. @param there  may be a file; outlives, as `here` does,
/// what is returned.
std::vector<DirectoryDifference> Differences(const DirectoryLines& here, const DirectoryLines& there);

} // namespace management
