#pragma once

#include "dbaccess/Driver.h"

#include <memory>
#include <string_view>

namespace dbaccess::postgresql {

/// Opens "//USER@HOST:PORT,HOST:PORT/DATABASE?option=value...". Options: kind=N,
/// statement-cache=N, cleartext-password=on|off, and those of the client library.
/// @throws CAException; what it says never holds a password.
std::unique_ptr<Session> OpenSession(std::string_view location);

} // namespace dbaccess::postgresql
