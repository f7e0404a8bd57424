#pragma once

#include "console/Commands.h"
#include "console/Render.h"

#include <string>
#include <vector>

namespace console {

/// Rows that belong to one thing, under a name.
struct Part {
    std::string name;
    Table rows;
};

/// Writes a record with its parts: below it in a table, inside it as arrays in json and jsonl; in csv and plain, which
/// have no room for rows in rows, each part is a property that counts them.
void Render(Format format, const Record& record, const std::vector<Part>& parts, std::ostream& out);

} // namespace console

namespace console::addin {

void DeclareList(CLI::App& app, Arguments& arguments);
void DeclareOne(CLI::App& app, Arguments& arguments);
void DeclareSeveral(CLI::App& app, Arguments& arguments);
void DeclareCreate(CLI::App& app, Arguments& arguments);
void DeclareSet(CLI::App& app, Arguments& arguments);
void DeclareMove(CLI::App& app, Arguments& arguments);
void DeclareDelete(CLI::App& app, Arguments& arguments);

Exit List(const Context& context);
Exit Show(const Context& context);
Exit Create(const Context& context);
Exit Set(const Context& context);
Exit Enable(const Context& context);
Exit Disable(const Context& context);
Exit Move(const Context& context);
Exit Delete(const Context& context);

} // namespace console::addin

namespace console::package {

void DeclareOne(CLI::App& app, Arguments& arguments);
void DeclareInstall(CLI::App& app, Arguments& arguments);
void DeclareRemove(CLI::App& app, Arguments& arguments);

Exit List(const Context& context);
Exit Show(const Context& context);
Exit Install(const Context& context);
Exit Remove(const Context& context);

} // namespace console::package
