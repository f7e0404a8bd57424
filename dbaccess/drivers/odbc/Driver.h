#pragma once

#include "dbaccess/Driver.h"

#include <memory>
#include <string_view>

namespace dbaccess::odbc {

/// Opens "KEYWORD=VALUE;KEYWORD=VALUE...?option=value...", an ODBC connection string. Options: kind=N,
/// password-file=PATH.
/// @throws CAException, whose sentence never has the password in it, nor anything that could be a part of one.
std::unique_ptr<Session> OpenSession(std::string_view location);

} // namespace dbaccess::odbc
