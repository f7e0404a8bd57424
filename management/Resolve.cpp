#include "management/Resolve.h"

#include "management/Errors.h"
#include "management/Text.h"

#include <fmt/format.h>

namespace management {

void ThrowAmbiguous(std::string_view name, const std::vector<Candidate>& candidates, std::string_view advice)
{
    std::string list;
    std::vector<std::string> arguments;
    arguments.reserve(candidates.size());
    for (const Candidate& candidate : candidates) {
        list += (list.empty() ? "" : ", ") + candidate.shown;
        arguments.push_back(candidate.argument);
    }
    throw Error(ErrorCode::conflict,
                FillPattern("{} may be any of {}; {}write {} for the first of them", Quoted(name), list,
                            Sentence(advice), arguments.front()),
                arguments);
}

} // namespace management
