#pragma once

#include <functional>
#include <map>
#include <string>

namespace bench {

/// In a process that CountInstructions has started: counts those of `run`.
/// @param name  what the count is for; no blanks or quotes.
void CountIn(const std::string& name, const std::function<void()>& run);

/// Runs a program under valgrind and gives the instructions that it counted by their names; nothing, with a line on
/// standard error, where there is no valgrind.
/// @param folder  for its files; without blanks. @throws std::runtime_error when the program fails.
std::map<std::string, double> CountInstructions(const std::string& folder, const std::string& command);

} // namespace bench
