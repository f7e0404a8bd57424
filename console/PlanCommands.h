#pragma once

#include "console/Commands.h"

namespace console::plan {

void DeclareOne(CLI::App& app, Arguments& arguments);
void DeclareCreate(CLI::App& app, Arguments& arguments);
void DeclareSet(CLI::App& app, Arguments& arguments);
void DeclareDelete(CLI::App& app, Arguments& arguments);
void DeclareOf(CLI::App& app, Arguments& arguments);
void DeclareItems(CLI::App& app, Arguments& arguments);

Exit List(const Context& context);
Exit Show(const Context& context);
Exit Create(const Context& context);
Exit Set(const Context& context);
Exit Delete(const Context& context);
Exit OfItem(const Context& context);
Exit Assign(const Context& context);
Exit Unassign(const Context& context);

} // namespace console::plan

namespace console::doclog {

void DeclareAdd(CLI::App& app, Arguments& arguments);
void DeclareList(CLI::App& app, Arguments& arguments);

Exit Add(const Context& context);
Exit List(const Context& context);

} // namespace console::doclog
