#pragma once

#include <csignal>

namespace console {

/// While it lives, the first SIGINT and the first SIGTERM are noted instead of ending the program.
class Interrupt {
public:
    Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    [[nodiscard]] static bool Requested() noexcept;

private:
    struct sigaction m_oldInterrupt;
    struct sigaction m_oldTerminate;
};

} // namespace console
