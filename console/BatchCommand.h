#pragma once

#include "console/LocalCommand.h"

#include <string>
#include <vector>

namespace console {

/// Whether a line says that a shell has no further ones: "exit" or "quit".
bool EndsShell(const std::vector<std::string>& words);

/// Runs the command lines of standard input as `batch -` does, up to one that ends a shell.
/// @throws Error (invalid) where one cannot be read.
Exit RunBatchOfInput(const LocalCall& call);

} // namespace console
