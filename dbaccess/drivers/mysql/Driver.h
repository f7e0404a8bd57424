#pragma once

#include "dbaccess/Driver.h"

#include <memory>
#include <string_view>

namespace dbaccess::mysql {

/// Opens "//USER:PASSWORD@HOST:PORT,HOST:PORT/DATABASE?option=value..." on a MariaDB or MySQL server; README.md beside
/// this file lists the options.
/// @throws CAException, whose sentence never has the password in it, nor anything that could be a part of one.
std::unique_ptr<Session> OpenSession(std::string_view location);

} // namespace dbaccess::mysql
