#include "console/RoleCommands.h"

#include "basefun/ItemTypes.h"
#include "console/Confirm.h"
#include "console/Opened.h"
#include "console/Render.h"
#include "console/UserCommands.h"
#include "console/Words.h"
#include "management/DatabaseError.h"
#include "management/Text.h"
#include "management/roles/Roles.h"
#include "management/users/Users.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace console::role {

namespace {

using namespace words;

constexpr const char* kRoleHelp = "name, case not counting, or id:NUMBER";

constexpr Field kRole{"ROLE", "", {}, Field::Use::given, kRoleHelp};
constexpr Field kNewRole{"NAME", "", {}, Field::Use::given, "name of the new role"};
constexpr Field kNewName{"name", "", {}, Field::Use::given, "name to have from now on"};
constexpr Field kDomain{
    "domain", "", {}, Field::Use::given, "number of the domain whose roles are meant; 0 if not given"};
constexpr Field kApplication{
    "app", "", {}, Field::Use::given, "application whose roles are meant; this system's if not given"};
constexpr Field kCreate{"create", "", {}, Field::Use::given, "add the role when it is missing"};

void DeclareScope(CLI::App& app, Arguments& arguments)
{
    DeclareNumber(app, arguments, kDomain);
    DeclareOption(app, arguments, kApplication);
}

RoleScope ScopeOf(const Arguments& arguments)
{
    return {Given(arguments, kApplication).value_or(std::string(kOwnApplication)),
            GivenNumber(arguments, kDomain).value_or(0)};
}

RoleKey FindGiven(Roles& roles, const Arguments& arguments)
{
    return FindRole(roles, Given(arguments, kRole).value_or(""), ScopeOf(arguments));
}

Record AsRecord(int id, const RoleData& role, std::size_t members)
{
    return {
        {"id", std::int64_t{id}},
        {"name", role.name},
        {"description", role.description},
        {"application", role.scope.application},
        {"domain", std::int64_t{role.scope.domainId}},
        {"creator", role.creator},
        {"created", role.created ? Value(*role.created) : Value()},
        {"sort_index", std::int64_t{role.sortIndex}},
        {"disabled", role.disabled},
        {"genre", role.genre},
        {"class_id", std::int64_t{role.classId}},
        {"type", std::int64_t{role.type}},
        {"members", static_cast<std::int64_t>(members)},
    };
}

void ShowRole(const Context& context, Roles& roles, const RoleKey& role)
{
    const std::optional<RoleData> data = roles.Load(role.id);
    if (!data) {
        throw Error(ErrorCode::notFound, fmt::format("{} has just been deleted", Named(role)));
    }
    std::size_t members = 0;
    roles.UsersOf({kItemTypeRole, role.id}, [&members](const LinkedUser&) { return ++members > 0; });
    Render(context.arguments.format, AsRecord(role.id, *data, members), context.terminal.out);
}

void RefuseProtected(Roles& roles, const std::vector<RoleKey>& several)
{
    for (const RoleKey& role : several) {
        if (IsProtected(roles, role)) {
            throw Error(ErrorCode::isProtected,
                        fmt::format("{} is the role of every user and stays; nothing was deleted", Named(role)));
        }
    }
}

struct Deletion {
    std::vector<RoleKey> roles;
    std::string shown;
    std::size_t removed = 0; ///< the roles and what goes along
};

Deletion PlanDeletion(Roles& roles, const Arguments& arguments)
{
    Deletion deletion{FindRoles(roles, arguments.users, ScopeOf(arguments)), {}};
    deletion.removed = deletion.roles.size();
    RefuseProtected(roles, deletion.roles);
    for (const RoleKey& role : deletion.roles) {
        const std::vector<Reference> traces = roles.References(role.id);
        deletion.removed += CountOf(traces);
        deletion.shown += fmt::format("delete {}{}\n", Named(role), WithReferences(traces));
    }
    return deletion;
}

/// Changes the link of each user to the role. @param change  of Roles: whether there was anything to do.
Exit ChangeMembers(const Context& context, bool (Roles::*change)(ItemKey, int), std::string_view done,
                   std::string_view notNeeded)
{
    Opened opened(context.arguments);
    Transaction transaction(opened.Directory().Connection());
    Roles roles(opened.Directory().Connection());
    const RoleKey role = FindGiven(roles, context.arguments);
    std::string told;
    for (const UserKey& user : FindUsers(opened.Directory(), context.arguments.users)) {
        const bool changed = (roles.*change)({kItemTypeRole, role.id}, user.id);
        told += fmt::format("{} {} {}\n", Named(user), changed ? done : notNeeded, Named(role));
    }
    transaction.Commit();
    context.terminal.err << told;
    return Exit::done;
}

void MakeDefault(const Context& context, Roles& roles)
{
    Transaction transaction(roles.Connection());
    if (roles.Default()) {
        return;
    }
    RoleData role;
    role.name = kDefaultRole;
    const int id = CreateRole(roles, role);
    transaction.Commit();
    context.terminal.err << fmt::format("created {}\n", Named(RoleKey{id, role.name}));
}

} // namespace

// ---- Arguments and options ------------------------------------------------------------------------------------------

void DeclareList(CLI::App& app, Arguments& arguments) { DeclareScope(app, arguments); }

void DeclareOne(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kRole);
    DeclareScope(app, arguments);
}

void DeclareCreate(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kNewRole);
    DeclareOption(app, arguments, kDescription);
    DeclareScope(app, arguments);
}

void DeclareSet(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareOption(app, arguments, kNewName);
    DeclareOption(app, arguments, kDescription);
}

void DeclareDelete(CLI::App& app, Arguments& arguments)
{
    DeclareWords(app, arguments, "ROLE", kRoleHelp);
    DeclareScope(app, arguments);
    DeclareYes(app, arguments);
}

void DeclareUsers(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kRole);
    user::DeclareSeveral(app, arguments);
    DeclareScope(app, arguments);
}

void DeclareDefault(CLI::App& app, Arguments& arguments) { DeclareFlag(app, arguments, kCreate); }

// ---- Reading --------------------------------------------------------------------------------------------------------

Exit List(const Context& context)
{
    Opened opened(context.arguments);
    Roles roles(opened.Directory().Connection());
    Table table{{"id", "name", "description", "members"}, {}};
    for (const ListedRole& role : roles.List(ScopeOf(context.arguments))) {
        table.rows.push_back({std::int64_t{role.id}, role.name, role.description, std::int64_t{role.members}});
    }
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

Exit Show(const Context& context)
{
    Opened opened(context.arguments);
    Roles roles(opened.Directory().Connection());
    ShowRole(context, roles, FindGiven(roles, context.arguments));
    return Exit::done;
}

Exit Members(const Context& context)
{
    Opened opened(context.arguments);
    Roles roles(opened.Directory().Connection());
    const RoleKey role = FindGiven(roles, context.arguments);
    TableWriter writer(context.arguments.format, {"id", "login", "name"}, context.terminal.out);
    roles.UsersOf({kItemTypeRole, role.id}, [&writer](const LinkedUser& user) {
        return writer.Write(MakeRow(std::int64_t{user.id}, user.login, user.name));
    });
    writer.Finish();
    return Exit::done;
}

Exit OfUser(const Context& context)
{
    Opened opened(context.arguments);
    Roles roles(opened.Directory().Connection());
    const UserKey user = FindUser(opened.Directory(), context.arguments.user);
    Table table{{"id", "name", "description", "application", "domain", "default"}, {}};
    for (const UserRole& role : roles.OfUser(user.id)) {
        table.rows.push_back({std::int64_t{role.id}, role.name, role.description, role.scope.application,
                              std::int64_t{role.scope.domainId}, role.isDefault});
    }
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Exit Create(const Context& context)
{
    RoleData role;
    role.name = Given(context.arguments, kNewRole).value_or("");
    role.description = Given(context.arguments, kDescription).value_or("");
    role.scope = ScopeOf(context.arguments);
    CheckName("role", role.name);
    Opened opened(context.arguments);
    Transaction transaction(opened.Directory().Connection());
    Roles roles(opened.Directory().Connection());
    const int id = CreateRole(roles, role);
    transaction.Commit();
    context.terminal.out << id << '\n';
    return Exit::done;
}

Exit Set(const Context& context)
{
    const std::optional<std::string> name = Given(context.arguments, kNewName);
    const std::optional<std::string> description = Given(context.arguments, kDescription);
    if (!name && !description) {
        throw Error(ErrorCode::invalid, "there is nothing to set; `qvadmin role set --help` lists what can be");
    }
    Opened opened(context.arguments);
    Transaction transaction(opened.Directory().Connection());
    Roles roles(opened.Directory().Connection());
    const RoleKey role = FindGiven(roles, context.arguments);
    const bool changed = ChangeRole(roles, role, name, description);
    transaction.Commit();
    context.terminal.err << fmt::format("{} {}\n", changed ? "changed" : "nothing to change in", Named(role));
    return Exit::done;
}

Exit Delete(const Context& context)
{
    Opened opened(context.arguments);
    Roles roles(opened.Directory().Connection());
    const auto [several, shown, removed] = PlanDeletion(roles, context.arguments);
    context.terminal.err << shown;
    RequireConfirmation(context, fmt::format("Delete {}?", Counted(several.size(), "role")), removed);
    Transaction transaction(opened.Directory().Connection());
    ThrowIfChanged(shown, PlanDeletion(roles, context.arguments).shown);
    for (const RoleKey& role : several) {
        roles.Delete(role.id);
    }
    transaction.Commit();
    context.terminal.err << fmt::format("deleted {}\n", Counted(several.size(), "role"));
    return Exit::done;
}

Exit Add(const Context& context) { return ChangeMembers(context, &Roles::Link, "now has", "already has"); }

Exit Remove(const Context& context)
{
    return ChangeMembers(context, &Roles::Unlink, "no longer has", "was not linked to");
}

Exit Default(const Context& context)
{
    Opened opened(context.arguments);
    Roles roles(opened.Directory().Connection());
    if (Given(context.arguments, kCreate)) {
        MakeDefault(context, roles);
    }
    const std::optional<RoleKey> everyone = roles.Default();
    if (!everyone) {
        throw Error(ErrorCode::notFound,
                    fmt::format("there is no role {}; `qvadmin role default --create` makes it", kDefaultRole));
    }
    ShowRole(context, roles, *everyone);
    return Exit::done;
}

} // namespace console::role
