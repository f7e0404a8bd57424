#pragma once

#include "console/Terminal.h"

#include <chrono>
#include <optional>
#include <string>

namespace console {

/// How far a long run is: on a terminal a line that renews itself, elsewhere nothing.
class Progress {
public:
    using Clock = std::chrono::steady_clock;

    explicit Progress(Terminal& terminal) : m_terminal(terminal) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { Clear(); }

    /// Shows the count, if the last time was a while ago. @param total  how many there are, where that is known.
    void Show(long done, std::optional<long> total);
    /// Takes the line away, so that something else can be written.
    void Clear() noexcept;
    /// "4.2 s, 300/s".
    [[nodiscard]] std::string Pace(long done) const;

private:
    [[nodiscard]] double Seconds() const;

    Terminal& m_terminal;
    Clock::time_point m_begin = Clock::now();
    Clock::time_point m_shown = m_begin;
    bool m_onScreen = false;
};

} // namespace console
