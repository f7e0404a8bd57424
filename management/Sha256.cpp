#include "management/Sha256.h"

#include <fmt/format.h>

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

std::array<std::uint8_t, SHA256_DIGEST_SIZE> Sha256::FinishBytes()
{
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> bytes{};
    sha256_digest(&m_state, bytes.size(), bytes.data());
    return bytes;
}

std::string Sha256::Finish() { return Hexadecimal(FinishBytes()); }

} // namespace management
