#pragma once

#include "console/Commands.h"

namespace console::user {

void DeclareOne(CLI::App& app, Arguments& arguments);
void DeclareImport(CLI::App& app, Arguments& arguments);

Exit Import(const Context& context);

} // namespace console::user
