#pragma once

#include "console/Commands.h"

namespace console::right {

void DeclareExplain(CLI::App& app, Arguments& arguments);

Exit Explain(const Context& context);

} // namespace console::right
