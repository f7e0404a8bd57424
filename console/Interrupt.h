#pragma once

#include <csignal>

namespace console {

/// While it lives, SIGINT and SIGTERM are noted instead of ending the program.
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
