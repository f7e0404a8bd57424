#include "console/MemberCommands.h"

#include "basefun/ItemTypes.h"
#include "console/Confirm.h"
#include "console/Opened.h"
#include "console/Render.h"
#include "console/UserCommands.h"
#include "console/Words.h"
#include "management/DatabaseError.h"
#include "management/Text.h"
#include "management/organisation/DepartmentSync.h"
#include "management/roles/Roles.h"
#include "management/users/Users.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>

namespace console::member {

namespace {

using namespace words;

constexpr Field kHolder{
    "GROUP", "", {}, Field::Use::given, "/VIEW or /VIEW/GROUP, or id:NUMBER of a group, or view:NUMBER"};

ItemKey FindGiven(const Organisation& organisation, const Arguments& arguments)
{
    return organisation.FindHolder(Given(arguments, kHolder).value_or(""));
}

/// Changes the membership of each user. @param change  of Roles: whether there was anything to do. @param sync  brings
/// the departments of those users in step whose membership has changed.
Exit ChangeMembers(const Context& context, bool (Roles::*change)(ItemKey, int), decltype(SyncJoined)& sync,
                   std::string_view done, std::string_view notNeeded)
{
    Opened opened(context.arguments);
    Transaction transaction(opened.Directory().Connection());
    const Organisation organisation(opened.Directory().Connection());
    Roles roles(opened.Directory().Connection());
    const ItemKey holder = FindGiven(organisation, context.arguments);
    const std::string name = organisation.Named(holder);
    std::string told;
    std::vector<int> changedUsers;
    for (const UserKey& user : FindUsers(opened.Directory(), context.arguments.users)) {
        const bool changed = (roles.*change)(holder, user.id);
        told += fmt::format("{} {} {}\n", Named(user), changed ? done : notNeeded, name);
        if (changed) {
            changedUsers.push_back(user.id);
        }
    }
    const std::size_t departments = sync(organisation, holder, changedUsers);
    if (departments > 0) {
        told += DepartmentsChanged(departments) + "\n";
    }
    transaction.Commit();
    context.terminal.err << told;
    return Exit::done;
}

constexpr std::string_view kNothingEnded = "no membership was ended";

struct Detaching {
    UserKey user;
    std::vector<ItemKey> holders;
    std::string shown;
};

Detaching PlanDetaching(Directory& directory, const Arguments& arguments)
{
    const Organisation organisation(directory.Connection());
    Detaching detaching{FindUser(directory, arguments.user), {}, {}};
    detaching.holders = Roles(directory.Connection()).HoldersOf({kItemTypeUser, detaching.user.id});
    for (const ItemKey holder : detaching.holders) {
        detaching.shown += fmt::format("leave {}\n", organisation.Named(holder));
    }
    return detaching;
}

} // namespace

// ---- Arguments and options ------------------------------------------------------------------------------------------

void DeclareList(CLI::App& app, Arguments& arguments) { DeclareArgument(app, arguments, kHolder); }

void DeclareUsers(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kHolder);
    user::DeclareSeveral(app, arguments);
}

void DeclareDetach(CLI::App& app, Arguments& arguments)
{
    user::DeclareOne(app, arguments);
    DeclareYes(app, arguments);
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Exit List(const Context& context)
{
    Opened opened(context.arguments);
    const Organisation organisation(opened.Directory().Connection());
    Roles roles(opened.Directory().Connection());
    const ItemKey holder = FindGiven(organisation, context.arguments);
    TableWriter writer(context.arguments.format, {"type", "id", "login", "name"}, context.terminal.out);
    for (const std::size_t child : organisation.Find(holder)->children) {
        const Place& group = organisation.Places()[child];
        writer.Write(MakeRow("group", std::int64_t{group.key.id}, Value(), group.name));
    }
    roles.UsersOf(holder, [&writer](const LinkedUser& user) {
        return writer.Write(MakeRow("user", std::int64_t{user.id}, user.login, user.name));
    });
    writer.Finish();
    return Exit::done;
}

Exit OfUser(const Context& context)
{
    Opened opened(context.arguments);
    const Organisation organisation(opened.Directory().Connection());
    Roles roles(opened.Directory().Connection());
    const UserKey user = FindUser(opened.Directory(), context.arguments.user);
    Table table{{"type", "id", "path"}, {}};
    for (const ItemKey holder : roles.HoldersOf({kItemTypeUser, user.id})) {
        table.rows.push_back(
            {holder.type == kItemTypeView ? "view" : "group", std::int64_t{holder.id}, organisation.PathOf(holder)});
    }
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Exit Add(const Context& context)
{
    return ChangeMembers(context, &Roles::Link, SyncJoined, "is now a member of", "is a member already of");
}

Exit Remove(const Context& context)
{
    return ChangeMembers(context, &Roles::Unlink, SyncLeft, "is no longer a member of", "was no member of");
}

Exit Detach(const Context& context)
{
    Opened opened(context.arguments);
    const auto [user, holders, shown] = PlanDetaching(opened.Directory(), context.arguments);
    if (holders.empty()) {
        context.terminal.err << fmt::format("{} is in no group and no view\n", Named(user));
        return Exit::done;
    }
    context.terminal.err << shown;
    RequireConfirmation(context, fmt::format("End {} of {}?", Counted(holders.size(), "membership"), Named(user)),
                        holders.size(), kNothingEnded);
    Transaction transaction(opened.Directory().Connection());
    const Detaching present = PlanDetaching(opened.Directory(), context.arguments);
    ThrowIfChanged(Named(user), Named(present.user), kNothingEnded);
    ThrowIfChanged(shown, present.shown, kNothingEnded);
    const Organisation organisation(opened.Directory().Connection());
    Roles roles(opened.Directory().Connection());
    std::size_t departments = 0;
    for (const ItemKey holder : holders) {
        roles.Unlink(holder, user.id);
        departments = std::max(departments, SyncLeft(organisation, holder, {user.id}));
    }
    transaction.Commit();
    context.terminal.err << fmt::format("ended {} of {}{}\n", Counted(holders.size(), "membership"), Named(user),
                                        WithDepartments(departments));
    return Exit::done;
}

} // namespace console::member
