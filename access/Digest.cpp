#include "access/Digest.h"

#include <openssl/evp.h>

#include <array>
#include <stdexcept>

CString Md5Hex(const void* bytes, std::size_t length)
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    if (EVP_Digest(bytes, length, digest.data(), &size, EVP_md5(), nullptr) != 1) {
        throw std::runtime_error("MD5 is not to be had from the system's cryptography library");
    }
    CString hex;
    for (unsigned int i = 0; i < size; ++i) {
        CString byte;
        byte.Format("%02x", digest[i]);
        hex += byte;
    }
    return hex;
}
