#pragma once

#include "management/Sentence.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

// What does not hold together in a directory: left over by other programs, by crashes, and by engines without
// constraints.

namespace management::check {

// Conditions on rows of users.
inline constexpr std::string_view kHasPlainPassword = "Col_PWord <> '' AND Col_EnType NOT IN (1, 2)";
/// Of users who are not locked.
inline constexpr std::string_view kHasNoPassword = "(Col_PWord = '' OR Col_PWord IS NULL) AND Col_Disabled = 0";

/// One kind of problem that was found.
struct Problem {
    std::string_view name; ///< a word for programs, such as "orphaned_links"
    Sentence sentence;     ///< such as "links of or to something that is gone"
    std::int64_t count = 0;
    Sentence example = {};
    Sentence repair;                          ///< what to do about it
    std::vector<std::string> statements = {}; ///< that mend it; none where somebody has to decide

    bool operator==(const Problem&) const = default;
};

/// Looks for every kind of problem; those of which there are none are left out. @throws DatabaseError.
/// @param progress  takes how many of the kinds were looked for.
std::vector<Problem> FindProblems(CAConnect& conn, const std::function<void(long done, long total)>& progress = {});

} // namespace management::check
