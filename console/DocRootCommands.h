#pragma once

#include "console/Commands.h"

namespace console::docroot {

void DeclareList(CLI::App& app, Arguments& arguments);
void DeclareOne(CLI::App& app, Arguments& arguments);
void DeclareCreate(CLI::App& app, Arguments& arguments);
void DeclareSet(CLI::App& app, Arguments& arguments);
void DeclareDelete(CLI::App& app, Arguments& arguments);

Exit List(const Context& context);
Exit Show(const Context& context);
Exit Create(const Context& context);
Exit Set(const Context& context);
Exit Delete(const Context& context);
Exit Default(const Context& context);

} // namespace console::docroot
