#pragma once

#include "console/Commands.h"

namespace console::user {

void DeclareOne(CLI::App& app, Arguments& arguments);

} // namespace console::user
