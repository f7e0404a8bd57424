#include "console/TitleCommands.h"

#include "basefun/ItemTypes.h"
#include "console/Opened.h"
#include "console/Render.h"
#include "console/Words.h"
#include "management/DatabaseError.h"
#include "management/Text.h"
#include "management/roles/Roles.h"
#include "management/users/Users.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace console::title {

namespace {

using namespace words;

constexpr Field kGroup{"GROUP", "", {}, Field::Use::given, "/VIEW/GROUP, or id:NUMBER"};
constexpr Field kUser{"USER", "", {}, Field::Use::given, "login name, or id:NUMBER, or login:TEXT"};
constexpr Field kTitle{"TITLE", "", {}, Field::Use::given, "the title as it is, case counting"};

/// What the words of a command name.
struct Holding {
    ItemKey group;
    UserKey user;
    std::string title;
};

std::string TitleGiven(const Arguments& arguments)
{
    std::string title = Given(arguments, kTitle).value_or("");
    CheckName("title", title);
    return title;
}

Holding FindGiven(Directory& directory, const Organisation& organisation, const Arguments& arguments)
{
    return {organisation.FindGroup(Given(arguments, kGroup).value_or("")),
            FindUser(directory, Given(arguments, kUser).value_or("")), TitleGiven(arguments)};
}

/// "amy (id 1) now holds 'Lead' in /Main/Sales (id 2)".
std::string Told(const Organisation& organisation, const Holding& named, std::string_view what)
{
    return fmt::format("{} {} {} in {}\n", Named(named.user), what, Quoted(named.title),
                       organisation.Named(named.group));
}

} // namespace

// ---- Arguments and options ------------------------------------------------------------------------------------------

void DeclareOne(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kGroup);
    DeclareArgument(app, arguments, kUser);
    DeclareArgument(app, arguments, kTitle);
}

void DeclareGive(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareOption(app, arguments, kDescription);
}

void DeclareList(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kGroup);
    DeclareArgument(app, arguments, kTitle, false);
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Exit List(const Context& context)
{
    const std::string title = Given(context.arguments, kTitle) ? TitleGiven(context.arguments) : "";
    Opened opened(context.arguments);
    const Organisation organisation(opened.Directory().Connection());
    Roles roles(opened.Directory().Connection());
    const ItemKey group = organisation.FindGroup(Given(context.arguments, kGroup).value_or(""));
    Table table{{"title", "id", "login", "name", "description"}, {}};
    for (const HeldTitle& held : roles.TitlesIn(group.id, title)) {
        table.rows.push_back({held.title, std::int64_t{held.userId}, held.login, held.name, held.description});
    }
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

Exit Check(const Context& context)
{
    Opened opened(context.arguments);
    const Organisation organisation(opened.Directory().Connection());
    Roles roles(opened.Directory().Connection());
    const Holding named = FindGiven(opened.Directory(), organisation, context.arguments);
    const bool holds = roles.HoldsTitle(named.group.id, named.user.id, named.title);
    context.terminal.out << (holds ? "true\n" : "false\n");
    return holds ? Exit::done : Exit::notFound;
}

Exit OfUser(const Context& context)
{
    Opened opened(context.arguments);
    const Organisation organisation(opened.Directory().Connection());
    Roles roles(opened.Directory().Connection());
    const UserKey user = FindUser(opened.Directory(), context.arguments.user);
    Table table{{"title", "group_id", "group", "description"}, {}};
    for (const HeldTitle& held : roles.TitlesOf(user.id)) {
        table.rows.push_back({held.title, std::int64_t{held.groupId},
                              organisation.PathOf({kItemTypeGroup, held.groupId}), held.description});
    }
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Exit Give(const Context& context)
{
    Opened opened(context.arguments);
    Directory& directory = opened.Directory();
    Transaction transaction(directory.Connection());
    const Organisation organisation(directory.Connection());
    Roles roles(directory.Connection());
    const Holding named = FindGiven(directory, organisation, context.arguments);
    const bool holds = roles.HoldsTitle(named.group.id, named.user.id, named.title);
    if (!holds) {
        roles.GiveTitle({named.group.id, named.user.id, named.title,
                         Given(context.arguments, kDescription).value_or(""), named.user.login,
                         directory.NameOfId(named.user.id)});
    }
    transaction.Commit();
    context.terminal.err << Told(organisation, named, holds ? "already holds" : "now holds");
    return Exit::done;
}

Exit Take(const Context& context)
{
    Opened opened(context.arguments);
    Transaction transaction(opened.Directory().Connection());
    const Organisation organisation(opened.Directory().Connection());
    Roles roles(opened.Directory().Connection());
    const Holding named = FindGiven(opened.Directory(), organisation, context.arguments);
    const bool held = roles.HoldsTitle(named.group.id, named.user.id, named.title);
    if (held) {
        roles.TakeTitle(named.group.id, named.user.id, named.title);
    }
    transaction.Commit();
    context.terminal.err << Told(organisation, named, held ? "no longer holds" : "did not hold");
    return Exit::done;
}

} // namespace console::title
