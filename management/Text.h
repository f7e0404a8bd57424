#pragma once

#include "management/Sentence.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace management {

/// The text on one line, with nothing in it that acts on a terminal: control characters, line breaks, bytes that are no
/// UTF-8 and what turns the direction of writing come out as \n, \t, \xNN or \uNNNN.
std::string Visible(std::string_view text);
/// The visible form between single quotes, for sentences.
std::string Quoted(std::string_view text);
/// Columns that the text takes on a terminal. @param text  in its visible form.
std::size_t DisplayWidth(std::string_view text);

/// A word as a shell takes it for one; as it is where it needs no quotes.
std::string ShellQuoted(std::string_view word);

/// Whether a byte of UTF-8 goes on with the character of the one before it.
constexpr bool ContinuesCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// Whether a text stands between the quotes of a JSON string as it is: most do, and need none of the library's checks.
bool IsPlainInJson(std::string_view text);
/// What is between the commas of a text, in their order; of the empty text, one empty part.
std::vector<std::string> SplitAtCommas(std::string_view text);
/// The text without the mark of the byte order that a file in UTF-8 may begin with.
std::string_view WithoutByteOrderMark(std::string_view text);
/// The text with a to z for A to Z, and all else as it is.
std::string InSmallLetters(std::string_view text);
bool HasControlCharacter(std::string_view text);
bool HasOuterBlanks(std::string_view text);
/// "1 user", "3 users".
Sentence Counted(std::size_t count, std::string_view noun);
/// How fast something was done: "4.2 s, 300/s".
std::string PaceText(std::chrono::duration<double> elapsed, std::int64_t done);

} // namespace management
