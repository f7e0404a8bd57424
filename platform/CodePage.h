#pragma once

/// @file
/// Conversions between code pages, and rules of capitals and case.

#include "platform/Api.h"
#include "platform/WindowsTypes.h"

#include <cstddef>
#include <string>
#include <string_view>

class CString;

/// Sets the process's ANSI code page, in which all texts of the module are kept: 65001 (UTF-8), 936, 950, 932, 949, 874
/// or 1250 to 1258. It is preset from the environment variable QV_ANSI_CODEPAGE, or UTF-8 where that names none.
/// Call it before texts are made and before other threads run.
/// @return false, and nothing changed, for a code page that is not known.
QV_API bool SetAnsiCodePage(UINT codePage);

// On Windows the system has these.
#if !defined(_WIN32)
/// The number of the ANSI code page.
QV_API UINT GetACP();

/// Converts text of a code page (CP_ACP is the ANSI code page) to UTF-16.
/// A byte that does not begin a valid character becomes U+FFFD by itself, unless MB_ERR_INVALID_CHARS is set.
/// @param length  bytes to convert, or -1 for a text that ends with NUL (which is converted too).
/// @param outLength  room in 16-bit units; 0 asks for the size needed.
/// @return units written or needed; 0 for an unknown code page, a length of 0, too little room, or, with
///         MB_ERR_INVALID_CHARS, an invalid byte.
QV_API int MultiByteToWideChar(UINT codePage, unsigned int flags, const char* text, int length, char16_t* out,
                               int outLength);

/// Converts UTF-16 to text of a code page. A character that it does not have becomes `defaultChar`, or "?" without one;
/// in UTF-8, a lone surrogate becomes U+FFFD.
/// @param length  16-bit units to convert, or -1 for a text that ends with NUL (which is converted too).
/// @param outLength  room in bytes; 0 asks for the size needed.
/// @return bytes written or needed; 0 for an unknown code page, a length of 0 and too little room.
/// @param defaultChar  when not null: points to one character of the code page; UTF-8 does without it.
/// @param usedDefaultChar  when not null: set to whether a character was replaced.
QV_API int WideCharToMultiByte(UINT codePage, unsigned int flags, const char16_t* text, int length, char* out,
                               int outLength, const char* defaultChar, int* usedDefaultChar);

/// Compares two texts character by character, by character code, case counting: negative, 0 or positive.
QV_API int _mbscmp(const unsigned char* a, const unsigned char* b);
#endif

/// Conversions by the rules of the library, and the body of the arrays.
namespace platform {

/// Whether the ANSI code page is UTF-8, so that texts go to and from an engine unchanged.
QV_API bool AnsiIsUtf8() noexcept;

/// Converts text of the ANSI code page to UTF-8; a byte that does not begin a valid character becomes U+FFFD by itself.
QV_API std::string AnsiToUtf8(std::string_view text);
/// Converts UTF-8 to text of the ANSI code page; a character that the code page does not have becomes "?".
QV_API CString Utf8ToAnsi(std::string_view text);

/// How many bytes of the ANSI code page the character at the front of `text` takes; 1 for a byte that begins no valid
/// character. `text` must not be empty.
QV_API std::size_t AnsiCharLength(std::string_view text) noexcept;

/// Whether the text is well-formed UTF-8.
QV_API bool IsValidUtf8(std::string_view text) noexcept;

/// Upper-cases UTF-8 text by Unicode's one-to-one rules, the same in every language; bytes that are no valid character
/// stay as they are. CString::MakeUpper and the upper() of engines that leave it to us both use these rules.
QV_API std::string UpperUtf8(std::string_view text);

/// Upper-cases text of the ANSI code page by Unicode's one-to-one rules; a letter whose capital the code page lacks
/// stays as it is.
QV_API std::string UpperAnsi(std::string_view text);

/// Folds the case of UTF-8 text by Unicode's one-to-one rules, the same in every language, to compare it with other
/// text in which only case does not count; bytes that are no valid character stay as they are. Texts that are equal
/// then are equal by UpperUtf8 too, so that engines that compare capitals find them: a letter whose folded form has
/// another capital (the signs for kelvin and ohm) stays as it is.
QV_API std::string FoldUtf8(std::string_view text);

/// The version of the Unicode rules behind UpperUtf8, such as "15.0".
QV_API const char* UnicodeVersion() noexcept;

} // namespace platform
