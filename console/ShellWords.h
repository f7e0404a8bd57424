#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace console {

/// The words of a command line, by a shell's rules for blanks, '...', "..." and \; nothing is expanded, and # begins a
/// comment where a word could begin. @throws Error (invalid) for a quote that is not closed.
std::vector<std::string> SplitShellWords(std::string_view line);

} // namespace console
