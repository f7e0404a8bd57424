#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace web {

/// Fills memory with random bytes. @throws management::Error (failed).
void FillRandom(std::span<std::uint8_t> bytes);
/// Random bytes. @throws management::Error (failed).
template <std::size_t Count>
std::array<std::uint8_t, Count> RandomBytes()
{
    std::array<std::uint8_t, Count> bytes{};
    FillRandom(bytes);
    return bytes;
}
/// 256 random bits, in letters that a cookie, a header and a URL can have. @throws management::Error (failed).
std::string NewToken();
/// SHA-256 in hexadecimal.
std::string Digest(std::string_view text);
/// SHA-256 in Base64 (RFC 4648), as headers have it.
std::string Base64Digest(std::string_view text);
/// Whether two texts are equal, in a time that does not tell where they differ.
bool IsSame(std::string_view a, std::string_view b);

} // namespace web
