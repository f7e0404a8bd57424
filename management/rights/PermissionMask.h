#pragma once

#include <cstdint>
#include <string>

namespace management {

/// The power of a right that limits nothing.
inline constexpr int kUnlimited = -1;

/// What PowerFrom understands, for help texts.
inline constexpr const char* kPowerHelp = "a number, also as 0x and hexadecimal digits, or unlimited, which is -1";

/// The power that an argument means: a decimal number of 32 bits with a sign, 32 bits as 0x1F, or unlimited.
/// @throws Error (invalid).
int PowerFrom(const std::string& text);

/// The bits that an argument means: a number from 0 to 4294967295, decimal or as 0x1F. @throws Error (invalid).
std::uint32_t BitsFrom(const std::string& text);
/// The one bit that an argument of --bit means. @throws Error (invalid).
std::uint32_t BitFrom(const std::string& text);

} // namespace management
