#pragma once

#include "platform/CString.h"

#include <cstddef>

/// The MD5 digest of the bytes as 32 lower-case hexadecimal digits.
/// @throws std::runtime_error where the system's cryptography library refuses MD5.
CString Md5Hex(const void* bytes, std::size_t length);
