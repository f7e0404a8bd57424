#pragma once

#include "management/Command.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace console {

using namespace management;

/// How many names a completion offers at most.
inline constexpr std::size_t kMostNames = 500;

/// Gives the names of a kind that begin with a text, case not counting; none where there is no directory to be read.
/// @param db  of the command line, where it says so.
using FindNames = std::function<std::vector<std::string>(const std::optional<std::string>& db, Kind kind,
                                                         const std::string& beginning)>;

/// What completes a word of a command line: words of commands, options, choices and names.
/// @param words  those before it, without the program's name. @param beginning  the word, as far as it is written.
/// @return in order; what `names` throws comes out.
std::vector<std::string> Completions(const std::vector<std::string>& words, const std::string& beginning,
                                     const FindNames& names);

} // namespace console
