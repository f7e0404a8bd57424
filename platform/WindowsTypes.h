#pragma once

// The names of Windows that the interface uses. On Windows they are the system's own; elsewhere they are the very types
// that ODBC's headers give these names, so that both can be included, in any order.

#if defined(_WIN32)
#include <windows.h>
#else
#include <cstdint>

using UINT = unsigned int;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
/// A message window; null is no window. Names a window, points to nothing; no two windows ever have the same.
using HWND = void*;

/// Code pages: the ANSI code page, and UTF-8.
inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_UTF8 = 65001;
/// Flags of MultiByteToWideChar; the first says the only form there is.
inline constexpr unsigned int MB_PRECOMPOSED = 1;
inline constexpr unsigned int MB_ERR_INVALID_CHARS = 8;
#endif
