#pragma once

#include <string>
#include <string_view>

namespace dbaccess {

/// A text on one line: blanks at its beginning are left out, and each other run of them becomes a space.
/// @param blanks  what counts as a blank.
inline std::string OnOneLine(std::string_view text, std::string_view blanks)
{
    std::string line;
    line.reserve(text.size());
    for (const char ch : text) {
        if (blanks.find(ch) == std::string_view::npos) {
            line += ch;
        } else if (!line.empty() && line.back() != ' ') {
            line += ' ';
        }
    }
    return line;
}

} // namespace dbaccess
