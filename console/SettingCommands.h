#pragma once

#include "console/Commands.h"

namespace console::setting {

void DeclareList(CLI::App& app, Arguments& arguments);
void DeclareGet(CLI::App& app, Arguments& arguments);
void DeclareSet(CLI::App& app, Arguments& arguments);
void DeclareDelete(CLI::App& app, Arguments& arguments);
void DeclareThreads(CLI::App& app, Arguments& arguments);
void DeclareFlags(CLI::App& app, Arguments& arguments);
void DeclarePicture(CLI::App& app, Arguments& arguments);
void DeclareEncryptionKey(CLI::App& app, Arguments& arguments);

Exit List(const Context& context);
Exit Get(const Context& context);
Exit Set(const Context& context);
Exit Delete(const Context& context);
Exit Threads(const Context& context);
Exit Flags(const Context& context);
Exit Picture(const Context& context);
Exit EncryptionKey(const Context& context);

} // namespace console::setting
