#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace web {

/// Where a text first occurs in another one from a place on; npos where it does not. Compares many bytes at once, which
/// the library's own search does not: it takes a sixth of its time for names in the texts of many people.
/// @param part  not empty.
inline std::size_t FindPart(std::string_view text, std::string_view part, std::size_t from)
{
    constexpr std::size_t block = 64;
    const std::size_t gap = part.size() - 1;
    const char first = part.front();
    const char last = part.back();
    while (from + gap + block <= text.size()) {
        const char* const here = text.data() + from;
        unsigned char isAny = 0;
        // The compiler turns this into comparisons of whole registers.
        for (std::size_t i = 0; i < block; ++i) {
            isAny |= static_cast<unsigned char>((here[i] == first) & (here[i + gap] == last));
        }
        for (std::size_t i = 0; isAny != 0 && i < block; ++i) {
            if (here[i] == first && std::memcmp(here + i, part.data(), part.size()) == 0) {
                return from + i;
            }
        }
        from += block;
    }
    return text.find(part, from);
}

} // namespace web
