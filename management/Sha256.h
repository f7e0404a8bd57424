#pragma once

#include <nettle/sha2.h>

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace management {

/// Two small letters or digits for each byte.
std::string Hexadecimal(std::span<const std::uint8_t> bytes);

/// SHA-256 of what is added, piece by piece. Needs no memory of its own.
class Sha256 {
public:
    Sha256() { sha256_init(&m_state); }

    void Add(std::string_view bytes);
    /// The digest; nothing is to be added after it.
    [[nodiscard]] std::array<std::uint8_t, SHA256_DIGEST_SIZE> FinishBytes();
    /// The digest in hexadecimal; nothing is to be added after it.
    [[nodiscard]] std::string Finish();

private:
    sha256_ctx m_state{};
};

} // namespace management
