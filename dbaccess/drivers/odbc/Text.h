#pragma once

#include <algorithm>
#include <string_view>

namespace dbaccess::odbc {

inline constexpr std::string_view kBlanks = " \t\r\n\v\f";

/// Of ASCII only: nothing that is compared this way has other letters.
inline char Lower(char ch) { return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch + ('a' - 'A')) : ch; }

inline bool EqualIgnoringCase(std::string_view a, std::string_view b)
{
    return std::ranges::equal(a, b, {}, Lower, Lower);
}

/// Whether a text holds another one, in any case. @param lower  in lower case.
inline bool Mentions(std::string_view text, std::string_view lower)
{
    const auto sameLetter = [](char a, char b) { return Lower(a) == b; };
    return std::search(text.begin(), text.end(), lower.begin(), lower.end(), sameLetter) != text.end();
}

inline std::string_view WithoutBlanksAround(std::string_view text)
{
    text.remove_prefix(std::min(text.size(), text.find_first_not_of(kBlanks)));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

} // namespace dbaccess::odbc
