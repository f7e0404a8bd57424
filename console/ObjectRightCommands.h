#pragma once

#include "console/Commands.h"

namespace console::objright {

void DeclareList(CLI::App& app, Arguments& arguments);
void DeclareOne(CLI::App& app, Arguments& arguments);
void DeclareGrant(CLI::App& app, Arguments& arguments);
void DeclareSet(CLI::App& app, Arguments& arguments);
void DeclareRevoke(CLI::App& app, Arguments& arguments);
void DeclareCheck(CLI::App& app, Arguments& arguments);

Exit List(const Context& context);
Exit Show(const Context& context);
Exit Grant(const Context& context);
Exit Set(const Context& context);
Exit Revoke(const Context& context);
Exit Check(const Context& context);

} // namespace console::objright
