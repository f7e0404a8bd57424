#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace console {

/// Lines that somebody has typed, in a file that only its owner can open. Several programs may add to it at once.
class LineHistory {
public:
    /// Opens the file, and makes it and its folder where they are missing. @throws Error (failed).
    explicit LineHistory(const std::string& file);
    LineHistory(const LineHistory&) = delete;
    LineHistory& operator=(const LineHistory&) = delete;
    ~LineHistory();

    /// The latest lines, oldest first. A file that has grown long is cut to them.
    std::vector<std::string> Read();
    /// Adds a line without a line's end. What cannot be written is not kept.
    void Add(const std::string& line) const;

private:
    [[nodiscard]] std::string ReadAll() const;

    int m_file;
};

/// How many lines are kept at least.
inline constexpr std::size_t kMostHistory = 1000;

} // namespace console
