#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace management {

/// One of the things that an ambiguous name may mean.
struct Candidate {
    std::string shown;    ///< for sentences
    std::string argument; ///< what means this one alone
};

/// Says that a name means several things. @param advice  what else may help, such as "add --type, or ".
/// @throws Error (conflict) with the candidates, always.
[[noreturn]] void ThrowAmbiguous(std::string_view name, const std::vector<Candidate>& candidates,
                                 std::string_view advice = {});

} // namespace management
