#pragma once

#include "console/Commands.h"

#include <optional>
#include <string>

namespace console::member {

void DeclareList(CLI::App& app, Arguments& arguments);
void DeclareUsers(CLI::App& app, Arguments& arguments);
void DeclareDetach(CLI::App& app, Arguments& arguments);

Exit List(const Context& context);
Exit Add(const Context& context);
Exit Remove(const Context& context);
Exit Detach(const Context& context);
/// The groups and views that a user is in, as run by `user groups`.
Exit OfUser(const Context& context);

} // namespace console::member
