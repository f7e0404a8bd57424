#include "console/Confirm.h"

#include "console/Errors.h"
#include "console/Text.h"

#include <fmt/format.h>

#include <istream>

namespace console {

std::string WithTraces(const std::vector<Trace>& traces)
{
    std::string list;
    for (const Trace& trace : traces) {
        list += (list.empty() ? ", with " : ", ") + Counted(static_cast<std::size_t>(trace.count), trace.noun);
    }
    return list;
}

bool CanAsk(const Terminal& terminal) { return terminal.inIsTerminal && terminal.errIsTerminal; }

void RequireConfirmation(const Context& context, const std::string& question, std::string_view nothingDone)
{
    if (context.arguments.yes) {
        return;
    }
    Terminal& terminal = context.terminal;
    if (!CanAsk(terminal)) {
        throw Refusal(Exit::needsYes, fmt::format("{}; --yes goes on without asking", nothingDone));
    }
    terminal.err << question << " [y/N] " << std::flush;
    std::string answer;
    std::getline(terminal.in, answer);
    if (answer != "y" && answer != "Y" && answer != "yes") {
        throw Refusal(Exit::needsYes, std::string(nothingDone));
    }
}

void RequireStillSo(bool isStillSo)
{
    if (!isStillSo) {
        throw Refusal(Exit::conflict,
                      "somebody else has changed what was shown in the meantime; nothing was deleted, look again");
    }
}

} // namespace console
