#pragma once

#include "console/Commands.h"

namespace console::message {

void DeclarePurge(CLI::App& app, Arguments& arguments);
void DeclareSweep(CLI::App& app, Arguments& arguments);

Exit Stats(const Context& context);
Exit Oldest(const Context& context);
Exit Purge(const Context& context);
Exit Sweep(const Context& context);

} // namespace console::message

namespace console::loginlog {

void DeclareList(CLI::App& app, Arguments& arguments);
void DeclareDelete(CLI::App& app, Arguments& arguments);

Exit List(const Context& context);
Exit Delete(const Context& context);

} // namespace console::loginlog
