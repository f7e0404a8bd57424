#pragma once

#include "management/Errors.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace management {

/// What several arguments mean, each once, in their order.
/// @param plural  names several of the items, @param advice  says how to see what there is; both for a sentence.
/// @param find    gives what one argument means, and throws Error (notFound) when that is nothing.
/// @param id      the member that tells items apart.
/// @throws Error (notFound) that names all arguments that mean nothing, and at once what else `find` throws.
template <class Find, class Id>
auto FindEach(const std::vector<std::string>& arguments, const char* plural, const char* advice, Find find, Id id)
{
    std::vector<decltype(find(arguments.front()))> found;
    std::vector<std::string> missing;
    Sentence sentenceOnOne;
    for (const std::string& argument : arguments) {
        try {
            auto item = find(argument);
            if (std::ranges::find(found, std::invoke(id, item), id) == found.end()) {
                found.push_back(std::move(item));
            }
        } catch (const Error& e) {
            if (e.Code() != ErrorCode::notFound) {
                throw;
            }
            sentenceOnOne = e.Why();
            if (std::ranges::find(missing, Quoted(argument)) == missing.end()) {
                missing.push_back(Quoted(argument));
            }
        }
    }
    if (missing.size() == 1) {
        throw Error(ErrorCode::notFound, sentenceOnOne);
    }
    if (!missing.empty()) {
        throw Error(ErrorCode::notFound, FillPattern("there are no {} {}; {}", Sentence(plural),
                                                     fmt::join(missing, ", "), Sentence(advice)));
    }
    return found;
}

} // namespace management
