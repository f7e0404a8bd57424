#pragma once

#include "dbaccess/Driver.h"

#include <functional>
#include <string>

namespace dbaccess {

/// Hands every driver of this build to `add`.
void AddBuiltInDrivers(const std::function<void(const std::string& scheme, SessionFactory factory)>& add);

} // namespace dbaccess
