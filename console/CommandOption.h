#pragma once

#include "management/Command.h"

#include <string>
#include <string_view>
#include <vector>

namespace console {

using namespace management;

/// An option of a command as a command line has it: what is declared, completed and described.
struct CommandOption {
    std::string name;        ///< with its dashes, such as --sort-index
    std::string placeholder; ///< of its value, such as FILE; empty: it is a flag
    std::string help;
    bool isNegatable = false; ///< there is a --no- form too
};

/// The options of a command beside those of every command; of a parameter, in the order of parameters.
std::vector<CommandOption> OptionsOf(const Command& command);

/// The option of a parameter's name, such as --sort-index.
std::string OptionName(std::string_view name);
/// The form that turns an option off.
std::string NegativeOf(const std::string& option);
/// What stands for a value of a kind in help.
std::string_view PlaceholderOf(Kind kind);
/// Whether a command takes --dry-run and --reason.
bool TakesWritingOptions(const Command& command);

inline constexpr Pattern<1> kSecretInputHelp = Translatable("the {} is the first line of standard input");
inline constexpr Pattern<1> kSecretFileHelp = Translatable("the {} is the first line of this file");
inline constexpr const char* kYesHelp = "do not ask";
inline constexpr const char* kDryRunHelp = "try everything and change nothing; ends with 8 for a change";
inline constexpr const char* kReasonHelp = "why, for the record";
inline constexpr const char* kFileHelp = "names to add, one on each line; - for standard input, as in their place";
inline constexpr const char* kNullHelp = "names that are read end with a NUL byte, not with a line's end";

} // namespace console
