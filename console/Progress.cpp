#include "console/Progress.h"

#include "console/Translation.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <iomanip>

namespace console {

namespace {

constexpr std::chrono::milliseconds kInterval(200);
constexpr double kShortest = 0.001;

} // namespace

void Progress::Show(long done, std::optional<long> total)
{
    const Clock::time_point now = Clock::now();
    if (!m_terminal.errIsTerminal || now - m_shown < kInterval) {
        return;
    }
    m_shown = now;
    m_onScreen = true;
    const std::string pace = fmt::format("{:.0f}", static_cast<double>(done) / Seconds());
    const Sentence shown =
        total ? FillPattern("{} of {}, {}/s", done, *total, pace) : FillPattern("{}, {}/s", done, pace);
    m_terminal.err << '\r' << Translated(shown) << "   " << std::flush;
}

void Progress::Clear() noexcept
{
    if (m_onScreen) {
        m_terminal.err << '\r' << std::setw(60) << "" << '\r';
        m_onScreen = false;
    }
}

std::string Progress::Pace(long done) const { return management::PaceText(Clock::now() - m_begin, done); }

double Progress::Seconds() const
{
    return std::max(std::chrono::duration<double>(Clock::now() - m_begin).count(), kShortest);
}

} // namespace console
