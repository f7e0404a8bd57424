#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>

namespace web {

/// Slows down guessing of passwords: each further try of a login name, or from an address, that has failed five times
/// within 15 minutes waits for 1, 2, 4 ... 60 seconds. Nobody is locked out. The caller guards it against other
/// threads.
class Throttle {
public:
    using Clock = std::chrono::steady_clock;

    enum class Outcome : std::uint8_t {
        right,
        wrong,
        unfinished ///< right as far as it went: neither counts nor forgives
    };

    /// Takes a try. @return how long it is to wait; nothing: it is refused, since ten came within the last second or
    /// four of this address wait already. One that is taken is to be ended.
    std::optional<Clock::duration> Begin(const std::string& login, const std::string& address, Clock::time_point now);
    /// Ends a try.
    void End(const std::string& login, const std::string& address, Outcome outcome, Clock::time_point now);

private:
    struct Failures {
        std::size_t count = 0;
        Clock::time_point last = {};
    };

    [[nodiscard]] Clock::duration DelayOf(const std::string& key, Clock::time_point now) const;
    void Note(const std::string& key, Clock::time_point now);

    std::map<std::string, Failures> m_failures;   ///< by what failed
    std::map<std::string, std::size_t> m_waiting; ///< tries that were taken and not ended, by address
    std::deque<Clock::time_point> m_recent;
};

} // namespace web
