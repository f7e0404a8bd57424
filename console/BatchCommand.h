#pragma once

#include "console/LocalCommand.h"

namespace console {

/// Runs the command lines of standard input as `batch -` does. @throws Error (invalid) where one cannot be read.
Exit RunBatchOfInput(const LocalCall& call);

} // namespace console
