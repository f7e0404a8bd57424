#pragma once

#include "console/Commands.h"

namespace console::role {

void DeclareList(CLI::App& app, Arguments& arguments);
void DeclareOne(CLI::App& app, Arguments& arguments);
void DeclareCreate(CLI::App& app, Arguments& arguments);
void DeclareSet(CLI::App& app, Arguments& arguments);
void DeclareDelete(CLI::App& app, Arguments& arguments);
void DeclareUsers(CLI::App& app, Arguments& arguments);
void DeclareDefault(CLI::App& app, Arguments& arguments);

Exit List(const Context& context);
Exit Show(const Context& context);
Exit Create(const Context& context);
Exit Set(const Context& context);
Exit Delete(const Context& context);
Exit Members(const Context& context);
Exit Add(const Context& context);
Exit Remove(const Context& context);
/// The roles of a user; also run by `user roles`.
Exit OfUser(const Context& context);
Exit Default(const Context& context);

} // namespace console::role
