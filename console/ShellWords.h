#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace console {

/// The words of a command line, by a shell's rules for blanks, '...', "..." and \; nothing is expanded, and # begins a
/// comment where a word could begin. @throws Error (invalid) for a quote that is not closed.
std::vector<std::string> SplitShellWords(std::string_view line);
/// The words of a command line for this program, whose name may be its first word and is left out. @throws Error
/// (invalid) for a quote that is not closed.
std::vector<std::string> SplitCommandLine(std::string_view line);

/// A line for this program that is being written, up to the cursor.
struct UnfinishedLine {
    std::vector<std::string> words;   ///< those that are over, without the program's name
    std::string last;                 ///< the word at the cursor; empty after a blank
    std::string_view lastAsWritten{}; ///< with its quotes, one of which may be open; a part of the line
};
UnfinishedLine SplitUnfinishedLine(std::string_view line);

} // namespace console
