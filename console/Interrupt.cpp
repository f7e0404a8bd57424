#include "console/Interrupt.h"

namespace console {

namespace {

volatile std::sig_atomic_t requested = 0;

void Note(int /*signal*/) { requested = 1; }

} // namespace

Interrupt::Interrupt() : m_oldInterrupt(), m_oldTerminate()
{
    requested = 0;
    struct sigaction action = {};
    // No restart of system calls: a read that waits for input is to come back.
    action.sa_handler = &Note;
    // A second signal ends the program at once: the first is not seen while a server does not answer.
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, &m_oldInterrupt);
    sigaction(SIGTERM, &action, &m_oldTerminate);
}

Interrupt::~Interrupt()
{
    sigaction(SIGINT, &m_oldInterrupt, nullptr);
    sigaction(SIGTERM, &m_oldTerminate, nullptr);
}

bool Interrupt::Requested() noexcept { return requested != 0; }

} // namespace console
