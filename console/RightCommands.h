#pragma once

#include "console/Commands.h"

namespace console::right {

void DeclareList(CLI::App& app, Arguments& arguments);
void DeclareOne(CLI::App& app, Arguments& arguments);
void DeclareGrant(CLI::App& app, Arguments& arguments);
void DeclareSet(CLI::App& app, Arguments& arguments);
void DeclareRevoke(CLI::App& app, Arguments& arguments);
void DeclareOn(CLI::App& app, Arguments& arguments);
void DeclareMatrix(CLI::App& app, Arguments& arguments);
void DeclareViews(CLI::App& app, Arguments& arguments);

Exit List(const Context& context);
Exit Show(const Context& context);
Exit Grant(const Context& context);
Exit Set(const Context& context);
Exit Revoke(const Context& context);
/// Runs the third word of `right on`.
Exit On(const Context& context);
Exit Matrix(const Context& context);
Exit Effective(const Context& context);
Exit Views(const Context& context);

} // namespace console::right
