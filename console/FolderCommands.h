#pragma once

#include "console/Commands.h"

namespace console::folder {

void DeclareTree(CLI::App& app, Arguments& arguments);
void DeclareList(CLI::App& app, Arguments& arguments);
void DeclareOne(CLI::App& app, Arguments& arguments);
void DeclareCreate(CLI::App& app, Arguments& arguments);
void DeclareRename(CLI::App& app, Arguments& arguments);
void DeclareStyle(CLI::App& app, Arguments& arguments);
void DeclareLink(CLI::App& app, Arguments& arguments);
void DeclareUnlink(CLI::App& app, Arguments& arguments);
void DeclareDelete(CLI::App& app, Arguments& arguments);

Exit Tree(const Context& context);
Exit List(const Context& context);
Exit Show(const Context& context);
Exit Create(const Context& context);
Exit Rename(const Context& context);
Exit Style(const Context& context);
Exit Link(const Context& context);
Exit Unlink(const Context& context);
Exit Delete(const Context& context);

} // namespace console::folder
