#include "console/LocalCommand.h"
#include "console/TerminalFrontEnd.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace console {

// The tables of the files beside; nothing else of them is known here.
// NOLINTBEGIN(readability-redundant-declaration): the files may be compiled together with this one.
std::span<const LocalCommand> BatchCommands();
std::span<const LocalCommand> DbCommands();
std::span<const LocalCommand> CopyCommands();
std::span<const LocalCommand> DiffCommands();
std::span<const LocalCommand> ExportCommands();
std::span<const LocalCommand> ImportCommands();
std::span<const LocalCommand> CompletionCommands();
std::span<const LocalCommand> ConfigCommands();
std::span<const LocalCommand> ManualCommands();
std::span<const LocalCommand> ServeCommands();
std::span<const LocalCommand> ShellCommands();
// NOLINTEND(readability-redundant-declaration)

std::span<const LocalCommand> LocalCommands()
{
    static const std::vector<LocalCommand> commands = [] {
        std::vector<LocalCommand> all;
        for (const std::span<const LocalCommand> some :
             {DbCommands(), CopyCommands(), DiffCommands(), ExportCommands(), ImportCommands(), ServeCommands(),
              BatchCommands(), ShellCommands(), ConfigCommands(), CompletionCommands(), ManualCommands()}) {
            all.insert(all.end(), some.begin(), some.end());
        }
        return all;
    }();
    return commands;
}

void WriteDone(const LocalCall& call, Record record, bool isChanged, bool isDryRun)
{
    static constexpr Command kChange = {.path = {}, .summary = "", .effect = Effect::change};
    if (!IsJson(call.arguments.format)) {
        return;
    }
    CommandLine given = call.given;
    given.options.dryRun = isDryRun;
    Result result = ResultOf(std::move(record));
    result.isChanged = isChanged;
    TerminalFrontEnd(kChange, given, call.arguments.format, call.terminal).Finish(result);
}

const std::vector<const Command*>& AllCommands()
{
    static const std::vector<const Command*> commands = [] {
        std::vector<const Command*> all;
        std::ranges::transform(Commands(), std::back_inserter(all), [](const Command& command) { return &command; });
        std::ranges::transform(LocalCommands(), std::back_inserter(all),
                               [](const LocalCommand& own) { return &own.row; });
        return all;
    }();
    return commands;
}

bool IsHead(const Command& command)
{
    const bool isLocal =
        std::ranges::any_of(LocalCommands(), [&](const LocalCommand& own) { return &own.row == &command; });
    return command.handler.run == nullptr && !isLocal;
}

std::vector<std::string> PathOf(const Command& command)
{
    std::vector<std::string> path;
    for (const std::string_view word : command.path) {
        if (!word.empty()) {
            path.emplace_back(word);
        }
    }
    return path;
}

} // namespace console
