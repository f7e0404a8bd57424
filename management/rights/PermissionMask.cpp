#include "management/rights/PermissionMask.h"

#include "management/Errors.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <bit>
#include <charconv>
#include <optional>
#include <string_view>

namespace management {

namespace {

template <class Number>
std::optional<Number> Read(std::string_view digits, int base)
{
    Number number = 0;
    const char* end = digits.data() + digits.size();
    const auto read = std::from_chars(digits.data(), end, number, base);
    return read.ec == std::errc() && read.ptr == end ? std::optional(number) : std::nullopt;
}

/// Nothing when the text is no hexadecimal number of 32 bits.
std::optional<std::uint32_t> ReadHex(std::string_view text)
{
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    return isHex ? Read<std::uint32_t>(text.substr(2), 16) : std::nullopt;
}

} // namespace

int PowerFrom(const std::string& text)
{
    if (text == "unlimited") {
        return kUnlimited;
    }
    if (const std::optional<std::uint32_t> bits = ReadHex(text)) {
        return static_cast<int>(*bits);
    }
    if (const std::optional<int> number = Read<int>(text, 10)) {
        return *number;
    }
    throw Error(ErrorCode::invalid,
                FillPattern("invalid power {}: expected a whole number from -2147483648 to 2147483647, 0x "
                            "and up to 8 hexadecimal digits, or unlimited",
                            Quoted(text)));
}

std::uint32_t BitsFrom(const std::string& text)
{
    const std::optional<std::uint32_t> hex = ReadHex(text);
    const std::optional<std::uint32_t> bits = hex ? hex : Read<std::uint32_t>(text, 10);
    if (!bits) {
        throw Error(ErrorCode::invalid,
                    FillPattern("invalid bits {}: expected a whole number from 0 to 4294967295, or 0x "
                                "and up to 8 hexadecimal digits",
                                Quoted(text)));
    }
    return *bits;
}

std::uint32_t BitFrom(const std::string& text)
{
    const std::uint32_t bit = BitsFrom(text);
    if (!std::has_single_bit(bit)) {
        throw Error(ErrorCode::invalid,
                    FillPattern("--bit {} is not the value of one bit, such as 1, 2, 4 or 8; --mask "
                                "takes several",
                                Quoted(text)));
    }
    return bit;
}

} // namespace management
