#pragma once

#include "dbaccess/Driver.h"

#include <string>
#include <string_view>
#include <vector>

namespace dbaccess {

/// The schemes of the driver modules that are installed beside this library, sorted.
std::vector<std::string> InstalledDriverModules();

/// Loads the driver module of a scheme. It is looked for in the folder of modules beside this library, and nowhere
/// else: no search path and no environment variable leads to another one. A module that is loaded stays loaded.
/// @return the module's factory; empty when no such module is installed.
/// @throws CAException when there is a module that cannot be loaded, for instance without its engine's client library.
SessionFactory LoadDriverModule(std::string_view scheme);

} // namespace dbaccess
