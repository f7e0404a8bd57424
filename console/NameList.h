#pragma once

#include "console/CommandLine.h"
#include "console/Terminal.h"

namespace console {

/// Puts the names in place of the argument - and adds those of the file. @throws Error (invalid) where there are none
/// at all, and for names that are not UTF-8; (failed) for a file that cannot be read.
void ReadNames(const Command& command, CommandLine& given, Terminal& terminal);

} // namespace console
