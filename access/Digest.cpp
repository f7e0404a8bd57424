#include "access/Digest.h"

#include <nettle/md5.h>

#include <array>
#include <cstdint>

CString Md5Hex(const void* bytes, std::size_t length)
{
    md5_ctx state;
    md5_init(&state);
    md5_update(&state, length, static_cast<const std::uint8_t*>(bytes));
    std::array<std::uint8_t, MD5_DIGEST_SIZE> digest{};
    md5_digest(&state, digest.size(), digest.data());
    CString hex;
    for (const std::uint8_t byte : digest) {
        CString digits;
        digits.Format("%02x", byte);
        hex += digits;
    }
    return hex;
}
