#pragma once

#include "console/Commands.h"
#include "console/Secrets.h"
#include "management/passwords/Passwords.h"

#include <optional>
#include <string>
#include <string_view>

namespace console {

/// A third word of the command line, below a noun's verb: its app, which sets `chosen` to `run` when it is named.
CLI::App* AddThirdWord(CLI::App& verb, const std::string& name, const std::string& summary,
                       Exit (*&chosen)(const Context&), Exit (*run)(const Context&));

namespace user {

void DeclarePassword(CLI::App& app, Arguments& arguments);
Exit Password(const Context& context);

} // namespace user

} // namespace console
