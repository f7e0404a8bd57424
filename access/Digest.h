#pragma once

#include "platform/CString.h"

#include <cstddef>

/// The MD5 digest of the bytes as 32 lower-case hexadecimal digits.
/// Whatever the system's cryptography settings refuse. @throws std::bad_alloc.
CString Md5Hex(const void* bytes, std::size_t length);
