#pragma once

#include "management/Command.h"
#include "management/JsonWriter.h"

#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The table of commands, and what commands give, as data for other programs.

namespace management {

/// Writes what programs may know of a row, as an object. A set of options comes out as these options.
/// @param withExamples  also the command lines of its examples, which forms do not need.
void WriteAsData(const Command& command, JsonWriter& json, bool withExamples);

/// The names of the columns and parameters of rows, and of what imports tell of theirs, in small letters, each once.
std::set<std::string> NamesIn(std::span<const Command> commands);

/// Writes the member `outcomes`: what became of each thing that a command was about.
void WriteOutcomes(JsonWriter& json, const std::vector<Outcome>& outcomes);

/// The word by which programs know a kind of error, such as "not_found".
std::string_view NameOf(ErrorCode code);

/// A command as the record keeps it: a very long one is cut.
std::string Shortened(std::string command);

} // namespace management
