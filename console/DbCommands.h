#pragma once

#include "console/Commands.h"

namespace console::db {

/// The option --parents, for the commands that make a file. @param parents  set when it is given.
void DeclareParents(CLI::App& app, bool& parents);

void DeclareInit(CLI::App& app, Arguments& arguments);
Exit Init(const Context& context);
Exit Status(const Context& context);

} // namespace console::db
