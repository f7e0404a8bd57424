#include "web/Tokens.h"

#include "management/Errors.h"
#include "management/Sha256.h"

#include <nettle/memops.h>
#include <sys/random.h>

#include <array>
#include <cstdint>

namespace web {

std::string NewToken()
{
    std::array<std::uint8_t, 32> bytes{};
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw management::Error(management::ErrorCode::failed, "the system gives no random numbers for a token");
    }
    return management::Hexadecimal(bytes);
}

std::string Digest(std::string_view text)
{
    management::Sha256 digest;
    digest.Add(text);
    return digest.Finish();
}

bool IsSame(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && nettle_memeql_sec(a.data(), b.data(), a.size()) != 0;
}

} // namespace web
