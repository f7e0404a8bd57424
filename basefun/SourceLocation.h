#pragma once

#if __has_include(<source_location>)
#include <source_location>
#endif

// Clang 14 on this standard library has no std::source_location; the analysis and fuzz builds use the stand-in.
#if defined(__cpp_lib_source_location)
using SourceLocation = std::source_location;
#else
#include <cstdint>

class SourceLocation {
public:
    static constexpr SourceLocation current(const char* file = __builtin_FILE(),
                                            std::uint_least32_t line = __builtin_LINE()) noexcept
    {
        return {file, line};
    }
    [[nodiscard]] constexpr const char* file_name() const noexcept { return m_file; }
    [[nodiscard]] constexpr std::uint_least32_t line() const noexcept { return m_line; }

private:
    constexpr SourceLocation(const char* file, std::uint_least32_t line) noexcept : m_file(file), m_line(line) {}

    const char* m_file;
    std::uint_least32_t m_line;
};
#endif
