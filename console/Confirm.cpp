#include "console/Confirm.h"

#include "console/ExitCode.h"

#include <fmt/format.h>

#include <istream>

namespace console {

namespace {

/// What a quick y may remove; for more, who answers has to have read the number.
constexpr std::size_t kMostForYes = 20;

} // namespace

bool CanAsk(const Terminal& terminal) { return terminal.inIsTerminal && terminal.errIsTerminal; }

void RequireConfirmation(const Context& context, const std::string& question, std::size_t removed,
                         std::string_view nothingDone)
{
    if (context.arguments.yes) {
        return;
    }
    Terminal& terminal = context.terminal;
    if (!CanAsk(terminal)) {
        throw Error(ErrorCode::confirmationRequired, fmt::format("{}; --yes goes on without asking", nothingDone));
    }
    const bool isMuch = removed > kMostForYes;
    terminal.err << question
                 << (isMuch ? fmt::format(" This removes {0} things; type {0} to go on: ", removed) : " [y/N] ")
                 << std::flush;
    std::string answer;
    std::getline(terminal.in, answer);
    const bool isYes = isMuch ? answer == std::to_string(removed) : answer == "y" || answer == "Y" || answer == "yes";
    if (!isYes) {
        throw Error(ErrorCode::confirmationRequired, std::string(nothingDone));
    }
}

void ThrowChanged(std::string_view nothingDone)
{
    throw Error(ErrorCode::conflict,
                fmt::format("somebody else has changed what was shown in the meantime; {}, look again", nothingDone));
}

} // namespace console
