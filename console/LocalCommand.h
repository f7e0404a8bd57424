#pragma once

#include "console/Commands.h"
#include "management/Command.h"

#include <span>

namespace console {

/// What a command of the terminal program works with.
struct LocalCall {
    const CommandLine& given;
    const Arguments& arguments;
    Terminal& terminal;
};

/// A row of the table that the terminal program has alone: it works on databases that need not hold a directory, on
/// files of the caller, or on the table itself. Its parameters are declared like those of all rows; `row.handler.run`
/// is unused.
struct LocalCommand {
    Command row;
    Exit (*run)(const LocalCall& call);
};

std::span<const LocalCommand> LocalCommands();

/// Writes what a command has done to standard output as one object, as commands of the directory do, where JSON is
/// asked for. Nothing otherwise: people read sentences on standard error.
/// @param record  members of the object. @param isChanged  whether there was anything to change.
void WriteDone(const LocalCall& call, Record record, bool isChanged, bool isDryRun = false);

/// All rows of the table, in the order in which help lists them.
const std::vector<const Command*>& AllCommands();
/// Whether a row heads those that have its two words and a third.
bool IsHead(const Command& command);
/// The words of a row's path.
std::vector<std::string> PathOf(const Command& command);

} // namespace console
