#pragma once

#include "console/Commands.h"

namespace console::group {

void DeclareTree(CLI::App& app, Arguments& arguments);
void DeclareList(CLI::App& app, Arguments& arguments);
void DeclareOne(CLI::App& app, Arguments& arguments);
void DeclareCreate(CLI::App& app, Arguments& arguments);
void DeclareSet(CLI::App& app, Arguments& arguments);
void DeclareRename(CLI::App& app, Arguments& arguments);
void DeclareMove(CLI::App& app, Arguments& arguments);
void DeclareStyle(CLI::App& app, Arguments& arguments);
void DeclareDelete(CLI::App& app, Arguments& arguments);
void DeclareFind(CLI::App& app, Arguments& arguments);

Exit Tree(const Context& context);
Exit List(const Context& context);
Exit Show(const Context& context);
Exit Create(const Context& context);
Exit Set(const Context& context);
Exit Rename(const Context& context);
Exit Move(const Context& context);
Exit Style(const Context& context);
Exit Delete(const Context& context);
Exit Find(const Context& context);

} // namespace console::group
