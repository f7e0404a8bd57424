#pragma once

#include "console/Commands.h"

namespace console::db {

void DeclareCopy(CLI::App& app, Arguments& arguments);
Exit Copy(const Context& context);

} // namespace console::db
