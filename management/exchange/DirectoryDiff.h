#pragma once

#include "management/Call.h"
#include "management/exchange/LineSource.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace management {

/// The lines of a directory, by what they are about. Holds all of them.
class DirectoryLines {
public:
    /// Those of a directory at one moment, with secrets. @throws DatabaseError, Error (failed) when it was stopped.
    static DirectoryLines Of(Call& call);
    /// Those of a file, after its first line. @param name  for sentences. @throws Error (invalid) for a line that
    /// cannot be used, (failed) for a file that cannot be read.
    static DirectoryLines Of(LineSource& source, const std::string& name);

private:
    friend std::vector<struct DirectoryDifference> Differences(const DirectoryLines& here, const DirectoryLines& there,
                                                               bool lacksSecrets);

    /// The place of a noun among all, and the names by which a line finds its row, case not counting.
    using Key = std::pair<std::ptrdiff_t, std::string>;

    void Add(ExportedLine line);

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
};

/// The words for programs, by Kind.
inline constexpr std::array<std::string_view, 3> kDifferenceKinds = {"only here", "only there", "differs"};

/// What two directories differ in, in the order of nouns, then by names. Of lines that are about the same, the members
/// are compared that both have. What names an item is compared without case.
/// @param lacksSecrets  whether `there` may be without the secrets of `here`, as an export is.
std::vector<DirectoryDifference> Differences(const DirectoryLines& here, const DirectoryLines& there,
                                             bool lacksSecrets);

} // namespace management
