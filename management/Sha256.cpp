#include "management/Sha256.h"

#include <fmt/format.h>

#include <array>

namespace management {

std::string Hexadecimal(std::span<const std::uint8_t> bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += fmt::format("{:02x}", byte);
    }
    return text;
}

void Sha256::Add(std::string_view bytes)
{
    sha256_update(&m_state, bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()));
}

std::string Sha256::Finish()
{
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> bytes{};
    sha256_digest(&m_state, bytes.size(), bytes.data());
    return Hexadecimal(bytes);
}

} // namespace management
