#include "web/Tokens.h"

#include "management/Errors.h"
#include "management/Sha256.h"

#include <nettle/base64.h>
#include <nettle/memops.h>
#include <sys/random.h>

namespace web {

void FillRandom(std::span<std::uint8_t> bytes)
{
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw management::Error(management::ErrorCode::failed, "the system gives no random numbers for a token");
    }
}

std::string NewToken()
{
    constexpr std::size_t size = 32;
    return management::Hexadecimal(RandomBytes<size>());
}

std::string Digest(std::string_view text)
{
    management::Sha256 digest;
    digest.Add(text);
    return digest.Finish();
}

std::string Base64Digest(std::string_view text)
{
    management::Sha256 digest;
    digest.Add(text);
    const auto bytes = digest.FinishBytes();
    std::string letters(BASE64_ENCODE_RAW_LENGTH(bytes.size()), '\0');
    base64_encode_raw(letters.data(), bytes.size(), bytes.data());
    return letters;
}

bool IsSame(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && nettle_memeql_sec(a.data(), b.data(), a.size()) != 0;
}

} // namespace web
