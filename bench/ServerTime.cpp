#include "bench/ServerTime.h"

#include <ctime>
#include <stdexcept>

namespace bench {

double ProcessorSeconds(pid_t process)
{
    constexpr double nanoseconds = 1e-9;
    clockid_t clock = 0;
    timespec time{};
    if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &time) != 0) {
        throw std::runtime_error("the processor time of the server is not to be had");
    }
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * nanoseconds;
}

} // namespace bench
