#pragma once

#include "console/Commands.h"

namespace console::user {

void DeclareList(CLI::App& app, Arguments& arguments);
void DeclareOne(CLI::App& app, Arguments& arguments);
void DeclareSeveral(CLI::App& app, Arguments& arguments);
void DeclareCreate(CLI::App& app, Arguments& arguments);
void DeclareSet(CLI::App& app, Arguments& arguments);
void DeclareRename(CLI::App& app, Arguments& arguments);
void DeclareDelete(CLI::App& app, Arguments& arguments);
void DeclareExists(CLI::App& app, Arguments& arguments);

Exit List(const Context& context);
Exit Show(const Context& context);
Exit Create(const Context& context);
Exit Set(const Context& context);
Exit Rename(const Context& context);
Exit Lock(const Context& context);
Exit Unlock(const Context& context);
Exit Delete(const Context& context);
Exit Count(const Context& context);
Exit Exists(const Context& context);

} // namespace console::user
