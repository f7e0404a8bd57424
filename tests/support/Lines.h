#pragma once

#include <sstream>
#include <string>
#include <vector>

/// The lines of a text, without their ends.
inline std::vector<std::string> LinesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}
