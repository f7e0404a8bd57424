#pragma once

#include "console/Commands.h"

namespace console::title {

void DeclareGive(CLI::App& app, Arguments& arguments);
void DeclareOne(CLI::App& app, Arguments& arguments);
void DeclareList(CLI::App& app, Arguments& arguments);

Exit Give(const Context& context);
Exit Take(const Context& context);
Exit List(const Context& context);
Exit Check(const Context& context);
/// The titles of a user, as run by `user titles`.
Exit OfUser(const Context& context);

} // namespace console::title
