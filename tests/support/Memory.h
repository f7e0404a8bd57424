#pragma once

#include <unistd.h>

#include <cstddef>
#include <fstream>

#ifdef __SANITIZE_ADDRESS__
// The compiler comes without the sanitizer's header for it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

/// What this process holds, in bytes: to see that reading does not keep what it has read.
inline std::size_t MemoryInUse()
{
#ifdef __SANITIZE_ADDRESS__
    return __sanitizer_get_current_allocated_bytes(); // the sanitizer holds back what was given free
#else
    std::size_t pages = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
#endif
}

/// What reading any number of rows may add to it.
inline constexpr std::size_t kFlatMemory = 8'000'000;
