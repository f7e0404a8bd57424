#include "console/DbCommands.h"

#include "console/Opened.h"
#include "console/Render.h"
#include "console/Url.h"
#include "management/Changes.h"
#include "management/DatabaseError.h"
#include "management/Text.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace console::db {

namespace {

bool& Parents()
{
    static bool parents = false;
    return parents;
}

std::string WhatWasDone(const schema::Status& before, const schema::Status& after, bool didSomething)
{
    if (before.state == schema::State::current) {
        return didSomething ? fmt::format("completed the directory of version {}", after.version)
                            : fmt::format("nothing to do, the directory is of version {} already", after.version);
    }
    if (before.version == 0) {
        return fmt::format("made a directory of version {}", after.version);
    }
    return fmt::format("upgraded the directory from version {} to {}", before.version, after.version);
}

schema::Status Inspect(CAConnect& conn)
{
    return WithDatabaseErrors(conn, [&] { return schema::Inspect(conn); });
}

} // namespace

void DeclareParents(CLI::App& app, bool& parents)
{
    app.add_flag("--parents", parents, "make the directories above a SQLite file that are missing");
}

void DeclareInit(CLI::App& app, Arguments& /*arguments*/)
{
    Parents() = false;
    DeclareParents(app, Parents());
}

Exit Init(const Context& context)
{
    const std::string url = ChooseUrl(context.arguments.db);
    PrepareDirectory(url, Parents() || IsDefault(context.arguments.db));
    CAConnect conn;
    Connect(conn, url, context.arguments);
    const schema::Status before = Inspect(conn);
    bool didSomething = false;
    const auto tell = [&](int version, const std::string& title) {
        didSomething = true;
        context.terminal.err << fmt::format("version {}: {}\n", version, Visible(title));
    };
    Changes::NoteCommit();
    WithDatabaseErrors(conn, [&] { schema::Upgrade(conn, tell); });
    context.terminal.err << fmt::format("{} in {}\n", WhatWasDone(before, Inspect(conn), didSomething), ShownUrl(url));
    return Exit::done;
}

Exit Status(const Context& context)
{
    const std::string url = ChooseUrl(context.arguments.db);
    CAConnect conn;
    Connect(conn, WithoutCreating(url), context.arguments);
    const schema::Status status = Inspect(conn);
    const bool isCurrent = status.state == schema::State::current;
    const CString engine = WithDatabaseErrors(conn, [&] { return conn.GetEngineName(); });
    const Record record = {{"engine", std::string(engine.View())},
                           {"url", ShownUrl(url)},
                           {"state", std::string(NameOf(status.state))},
                           {"version", std::int64_t{status.version}},
                           {"newest", std::int64_t{status.newest}},
                           {"users", isCurrent ? Value(std::int64_t{Directory(conn).Count()}) : Value()}};
    Render(context.arguments.format, record, context.terminal.out);
    try {
        schema::RequireSuitable(conn);
    } catch (const CAException& e) {
        if (!conn.IsOpen()) {
            throw ErrorFrom(conn, e);
        }
        context.terminal.err << fmt::format("qvadmin: {}\n", ErrorFrom(conn, e).EngineLine());
        return Exit::findings;
    }
    const auto shortcoming = WithDatabaseErrors(conn, [&] { return schema::FindShortcoming(conn); });
    if (shortcoming) {
        context.terminal.err << fmt::format(
            "qvadmin: {}{}\n", Visible(shortcoming->text),
            shortcoming->isCuredByUpgrade ? fmt::format("; run `{}`", InitCommand(context.arguments)) : "");
    }
    return isCurrent && !shortcoming ? Exit::done : Exit::findings;
}

} // namespace console::db
