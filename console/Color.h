#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace console {

struct Terminal;

enum class Style : std::uint8_t { heading, error };

/// Writes a text in a style, where colours are wanted; else as it is.
void WriteStyled(std::ostream& out, std::string_view text, Style style, bool hasColor);

/// What --color takes.
inline constexpr std::array<std::string_view, 3> kColorWords = {"auto", "always", "never"};

/// Whether the words of a command line have --color.
bool HasColorOption(const std::vector<std::string>& words);

/// Turns colours on or off, by the words of a command line: those of --color, else as the configuration says, else
/// where a terminal is and neither NO_COLOR nor TERM=dumb is in the environment.
/// @param configured  of kColorWords.
void ChooseColors(Terminal& terminal, const std::vector<std::string>& words, std::string_view configured = "auto");

} // namespace console
