#pragma once

#include "console/Commands.h"

namespace console::board {

void DeclareList(CLI::App& app, Arguments& arguments);
void DeclareOne(CLI::App& app, Arguments& arguments);
void DeclareDelete(CLI::App& app, Arguments& arguments);

Exit List(const Context& context);
Exit Show(const Context& context);
Exit Delete(const Context& context);

} // namespace console::board
