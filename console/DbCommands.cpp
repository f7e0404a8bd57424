#include "console/LocalCommand.h"
#include "console/Render.h"
#include "console/Session.h"
#include "console/Translation.h"
#include "console/Url.h"
#include "management/DatabaseError.h"
#include "management/Text.h"

#include <fmt/format.h>

namespace console {

namespace {

struct InitInput {
    bool parents = false;
};

constexpr Param<InitInput> kInitParams[] = {
    {"parents", &InitInput::parents, Kind::flag, "make the directories above a SQLite file that are missing"}};

constexpr Column kStatusColumns[] = {
    {"engine"}, {"url"}, {"state"}, {"version", Kind::number}, {"newest", Kind::number}, {"users", Kind::number}};

Sentence WhatWasDone(const schema::Status& before, const schema::Status& after, bool didSomething)
{
    if (before.state == schema::State::current) {
        return didSomething ? FillPattern("completed the directory of version {}", after.version)
                            : FillPattern("nothing to do, the directory is of version {} already", after.version);
    }
    if (before.version == 0) {
        return FillPattern("made a directory of version {}", after.version);
    }
    return FillPattern("upgraded the directory from version {} to {}", before.version, after.version);
}

schema::Status Inspect(CAConnect& conn)
{
    return WithDatabaseErrors(conn, [&] { return schema::Inspect(conn); });
}

Exit Init(const LocalCall& context)
{
    const auto in = binding::ReadInput<kInitParams>(context.given);
    const std::string url = ChooseUrl(context.arguments.db);
    PrepareDirectory(url, in.parents || IsDefault(context.arguments.db));
    CAConnect conn;
    Connect(conn, url, context.arguments);
    const schema::Status before = Inspect(conn);
    bool didSomething = false;
    const auto tell = [&](int version, const std::string& title) {
        didSomething = true;
        context.terminal.err << Translated(FillPattern("version {}: {}", version, Visible(title))) << '\n';
    };
    *context.terminal.mayHaveChanged = true;
    WithDatabaseErrors(conn, [&] { schema::Upgrade(conn, tell); });
    const schema::Status after = Inspect(conn);
    context.terminal.err << Translated(FillPattern("{} in {}", WhatWasDone(before, after, didSomething), ShownUrl(url)))
                         << '\n';
    WriteDone(context, {{"url", ShownUrl(url)}, {"version", std::int64_t{after.version}}}, didSomething);
    return Exit::done;
}

Exit Status(const LocalCall& context)
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
        return Exit::checkFailed;
    }
    const auto shortcoming = WithDatabaseErrors(conn, [&] { return schema::FindShortcoming(conn); });
    if (shortcoming) {
        const std::string text = Visible(shortcoming->text);
        context.terminal.err << "qvadmin: "
                             << Translated(shortcoming->isCuredByUpgrade
                                               ? FillPattern("{}; run `{}`", text, InitCommand(context.arguments))
                                               : Sentence(text))
                             << '\n';
    }
    return isCurrent && !shortcoming ? Exit::done : Exit::checkFailed;
}

constexpr LocalCommand kDbCommands[] = {
    {{.path = {"db", "init"},
      .summary = "make the database, or bring it up to this program's version",
      .examples = {"qvadmin db init", "qvadmin --db sqlite:/srv/directory.db db init"},
      .effect = Effect::change,
      .handler = {&InfosOf<kInitParams>}},
     &Init},
    {{.path = {"db", "status"},
      .summary = "what there is; ends with 0 when the database is ready for use, else with 8",
      .examples = {"qvadmin db status -o json"},
      .columns = kStatusColumns},
     &Status},
};

} // namespace

std::span<const LocalCommand> DbCommands() { return kDbCommands; }

} // namespace console
