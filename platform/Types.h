#pragma once

/// @file
/// Types that signatures need.

#if !defined(_WIN32)
/// The 64-bit number of the interface's signatures.
using __int64 = long long;
#endif
