#include "web/Totp.h"

#include "management/Errors.h"
#include "web/Tokens.h"

#include <fmt/format.h>
#include <liboath/oath.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>

namespace web {

using management::Error;
using management::ErrorCode;

namespace {

constexpr int kDigits = 6;
constexpr std::size_t kSecretBytes = 20;
constexpr std::size_t kRecoveryBytes = 10;
constexpr std::size_t kRecoveryCodes = 10;
constexpr std::size_t kRecoveryGroup = 4;

/// Memory of the library's.
struct Freed {
    void operator()(char* text) const { std::free(text); }
};
using OathText = std::unique_ptr<char, Freed>;

void Require(int result)
{
    if (result != OATH_OK) {
        throw Error(ErrorCode::failed,
                    management::FillPattern("one-time codes cannot be worked out: {}", oath_strerror(result)));
    }
}

/// @throws Error (failed).
void Begin()
{
    static const int result = oath_init();
    Require(result);
}

std::string InBase32(std::span<const std::uint8_t> bytes)
{
    Begin();
    char* text = nullptr;
    std::size_t size = 0;
    Require(oath_base32_encode(reinterpret_cast<const char*>(bytes.data()), bytes.size(), &text, &size));
    return {OathText(text).get(), size};
}

/// What people may leave out or add when they type a code.
std::string Typed(std::string_view code)
{
    std::string typed;
    for (const char letter : code) {
        if (letter != ' ' && letter != '-') {
            typed += static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
        }
    }
    return typed;
}

} // namespace

std::string NewTotpSecret() { return InBase32(RandomBytes<kSecretBytes>()); }

std::string TotpUri(std::string_view secret, std::string_view login)
{
    std::string name;
    for (const char letter : login) {
        const auto byte = static_cast<unsigned char>(letter);
        const bool isPlain = std::isalnum(byte) != 0 && byte < 0x80;
        name += isPlain ? std::string(1, letter) : fmt::format("%{:02X}", byte);
    }
    return fmt::format("otpauth://totp/Quorvel:{}?secret={}&issuer=Quorvel", name, secret);
}

std::string TotpCode(std::string_view secret, int step)
{
    Begin();
    char* bytes = nullptr;
    std::size_t size = 0;
    Require(oath_base32_decode(secret.data(), secret.size(), &bytes, &size));
    const OathText owned(bytes);
    std::array<char, kDigits + 1> code{};
    Require(oath_totp_generate(bytes, size, std::time_t{step} * kTotpSeconds, kTotpSeconds, 0, kDigits, code.data()));
    return code.data();
}

std::optional<int> StepOfCode(std::string_view secret, std::string_view code, std::time_t now)
{
    const std::string typed = Typed(code);
    const int present = static_cast<int>(now / kTotpSeconds);
    std::optional<int> found;
    // All of them, so that the time does not tell which one it was.
    for (int step = present - 1; step <= present + 1; ++step) {
        if (IsSame(typed, TotpCode(secret, step))) {
            found = step;
        }
    }
    return found;
}

RecoveryCodes NewRecoveryCodes()
{
    RecoveryCodes made;
    for (std::size_t i = 0; i < kRecoveryCodes; ++i) {
        std::string code;
        for (const char letter : InBase32(RandomBytes<kRecoveryBytes>())) {
            code += code.size() % (kRecoveryGroup + 1) == kRecoveryGroup ? "-" : "";
            code += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
        }
        made.digests.push_back(RecoveryDigest(code));
        made.codes.push_back(std::move(code));
    }
    return made;
}

std::string RecoveryDigest(std::string_view code) { return Digest(Typed(code)); }

} // namespace web
