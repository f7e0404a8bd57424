#include "console/Confirm.h"

#include "console/ExitCode.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <istream>

namespace console {

namespace {

/// What a quick y may remove; for more, who answers has to have read the number.
constexpr std::size_t kMostForYes = 20;

} // namespace

std::string WithReferences(const std::vector<Reference>& traces)
{
    std::string list;
    for (const Reference& trace : traces) {
        list += (list.empty() ? ", with " : ", ") + Counted(static_cast<std::size_t>(trace.count), trace.noun);
    }
    return list;
}

std::size_t CountOf(const std::vector<Reference>& traces)
{
    std::size_t count = 0;
    for (const Reference& trace : traces) {
        count += static_cast<std::size_t>(trace.count);
    }
    return count;
}

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
