#include "web/Tokens.h"

#include "management/Errors.h"

#include <fmt/format.h>
#include <nettle/memops.h>
#include <nettle/sha2.h>
#include <sys/random.h>

#include <array>
#include <cstdint>

namespace web {

namespace {

template <std::size_t Count>
std::string Hexadecimal(const std::array<std::uint8_t, Count>& bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += fmt::format("{:02x}", byte);
    }
    return text;
}

} // namespace

std::string NewToken()
{
    std::array<std::uint8_t, 32> bytes{};
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw management::Error(management::ErrorCode::failed, "the system gives no random numbers for a token");
    }
    return Hexadecimal(bytes);
}

std::string Digest(std::string_view text)
{
    sha256_ctx state{};
    sha256_init(&state);
    sha256_update(&state, text.size(), reinterpret_cast<const std::uint8_t*>(text.data()));
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> bytes{};
    sha256_digest(&state, bytes.size(), bytes.data());
    return Hexadecimal(bytes);
}

bool IsSame(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && nettle_memeql_sec(a.data(), b.data(), a.size()) != 0;
}

} // namespace web
