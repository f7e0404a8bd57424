#include "console/UserCommands.h"

#include <CLI/CLI.hpp>

namespace console::user {

void DeclareOne(CLI::App& app, Arguments& arguments)
{
    app.add_option("USER", arguments.user, std::string("login name, or id:NUMBER, or login:TEXT"))->required()->type_name("");
}

} // namespace console::user
