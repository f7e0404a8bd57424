#pragma once

#include <sys/types.h>

namespace bench {

/// Under this name a benchmark's result has the processor time, in seconds, that the server took for it.
inline constexpr const char* kServerTime = "server";

/// The processor time that a process of this machine has taken, in seconds. @throws std::runtime_error.
double ProcessorSeconds(pid_t process);

} // namespace bench
