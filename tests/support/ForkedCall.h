#pragma once

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>

/// A call in a process of its own, forked from the test.
class ForkedCall {
public:
    /// @param body  what the child does; its result comes back by Result.
    explicit ForkedCall(const std::function<std::string()>& body)
    {
        std::array<int, 2> ends{};
        if (::pipe(ends.data()) != 0) {
            throw std::runtime_error("pipe");
        }
        m_pid = ::fork();
        if (m_pid == 0) {
            const std::string result = body();
            const bool written = ::write(ends[1], result.data(), result.size()) == static_cast<ssize_t>(result.size());
            ::_exit(written ? 0 : 1);
        }
        ::close(ends[1]);
        m_read = ends[0];
    }
    ForkedCall(const ForkedCall&) = delete;
    ForkedCall& operator=(const ForkedCall&) = delete;
    ~ForkedCall()
    {
        Wait();
        ::close(m_read);
    }

    /// Waits for the end. @return what the body gave; what it had written when it was killed: nothing.
    std::string Result()
    {
        std::string result;
        std::array<char, 4096> buffer{};
        for (ssize_t count = 0; (count = ::read(m_read, buffer.data(), buffer.size())) > 0;) {
            result.append(buffer.data(), static_cast<std::size_t>(count));
        }
        Wait();
        return result;
    }

    /// Waits for the end. @return whether the body came to its end.
    bool Finished()
    {
        Wait();
        return WIFEXITED(m_status) && WEXITSTATUS(m_status) == 0;
    }

private:
    void Wait()
    {
        if (m_pid > 0) {
            ::waitpid(m_pid, &m_status, 0);
            m_pid = -1;
        }
    }

    pid_t m_pid = -1;
    int m_read = -1;
    int m_status = 0;
};

/// To be called in a child: permission bits hold for it from here on, though the test may run as root.
inline void DropPrivileges()
{
    constexpr int kNobody = 65534;
    if (::geteuid() == 0 && (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)) {
        std::abort();
    }
}
