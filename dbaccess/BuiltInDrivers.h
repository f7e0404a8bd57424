#pragma once

#include "dbaccess/Driver.h"

#include <functional>
#include <string>

namespace dbaccess {

/// Hands every driver of this build to `add`.
void AddBuiltInDrivers(const std::function<void(const std::string& scheme, SessionFactory factory)>& add);

/// Hands every driver that was left out of this build to `add`, with the Debian package that it wants.
void AddLeftOutDrivers(const std::function<void(const std::string& scheme, const std::string& package)>& add);

} // namespace dbaccess
