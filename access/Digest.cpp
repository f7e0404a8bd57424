#include "access/Digest.h"

#include <openssl/evp.h>
#include <openssl/provider.h>

#include <array>
#include <new>

namespace {

// Of a library context that the system's settings do not reach: they may allow certified algorithms alone. Kept until
// the process is gone, as threads may still encode while it ends.
const EVP_MD* Md5()
{
    static const EVP_MD* const md5 = [] {
        OSSL_LIB_CTX* context = OSSL_LIB_CTX_new();
        OSSL_PROVIDER_load(context, "default");
        return EVP_MD_fetch(context, "MD5", "-fips");
    }();
    return md5;
}

} // namespace

CString Md5Hex(const void* bytes, std::size_t length)
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    if (EVP_Digest(bytes, length, digest.data(), &size, Md5(), nullptr) != 1) {
        throw std::bad_alloc();
    }
    CString hex;
    for (unsigned int i = 0; i < size; ++i) {
        CString byte;
        byte.Format("%02x", digest[i]);
        hex += byte;
    }
    return hex;
}
