#pragma once

/// @file
/// The names of Windows that the interface uses. On Windows they are the system's own; elsewhere they are the very
/// types that ODBC's headers give these names, so that both can be included, in any order.

#if defined(_WIN32)
#include <windows.h>
#else
#include <cstdint>

/// A 32-bit number without a sign.
using UINT = unsigned int;
/// The first argument of a message, as wide as a pointer.
using WPARAM = std::uintptr_t;
/// The second argument of a message, as wide as a pointer.
using LPARAM = std::intptr_t;
/// The answer to a message, as wide as a pointer.
using LRESULT = std::intptr_t;
/// A message window; null is no window. Names a window, points to nothing; no two windows ever have the same.
using HWND = void*;

/// Names the ANSI code page in conversions.
inline constexpr UINT CP_ACP = 0;
/// The code page UTF-8.
inline constexpr UINT CP_UTF8 = 65001;
/// Asks for composed characters, the only form that there is.
inline constexpr unsigned int MB_PRECOMPOSED = 1;
/// Makes MultiByteToWideChar fail for an invalid byte.
inline constexpr unsigned int MB_ERR_INVALID_CHARS = 8;
#endif
