#pragma once

#include "console/Commands.h"

namespace console::db {

Exit Init(const Context& context);
Exit Status(const Context& context);

} // namespace console::db
