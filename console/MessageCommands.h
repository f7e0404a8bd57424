#pragma once

#include "console/Commands.h"

#include <cstddef>

namespace console {

/// An argument of which a command takes several; the words are in Arguments::users, whatever they name.
void DeclareWords(CLI::App& app, Arguments& arguments, const char* name, const char* help);

/// --limit, for lists.
void DeclareLimit(CLI::App& app, Arguments& arguments);
/// As many as there can be where it was not given.
std::size_t LimitOf(const Arguments& arguments);

} // namespace console

namespace console::message {

void DeclarePurge(CLI::App& app, Arguments& arguments);
void DeclareSweep(CLI::App& app, Arguments& arguments);

Exit Stats(const Context& context);
Exit Oldest(const Context& context);
Exit Purge(const Context& context);
Exit Sweep(const Context& context);

} // namespace console::message

namespace console::loginlog {

void DeclareList(CLI::App& app, Arguments& arguments);
void DeclareDelete(CLI::App& app, Arguments& arguments);

Exit List(const Context& context);
Exit Delete(const Context& context);

} // namespace console::loginlog
