#include "basefun/ItemTypes.h"
#include "management/Command.h"
#include "management/References.h"
#include "management/Text.h"
#include "management/roles/Roles.h"
#include "management/users/ChosenUsers.h"
#include "management/users/OneUser.h"
#include "management/users/Users.h"

#include <fmt/format.h>

#include <algorithm>

namespace management::roles {

namespace {

constexpr std::string_view kRoleHelp = "name, case not counting, or id:NUMBER";

// ---- Parameters -----------------------------------------------------------------------------------------------------

/// Whose roles are meant.
struct ScopeInput {
    std::optional<int> domain;
    std::optional<std::string> application;

    [[nodiscard]] RoleScope Scope() const
    {
        return {application.value_or(std::string(kOwnApplication)), domain.value_or(0)};
    }
};

template <class In>
constexpr Param<In> kDomainParam{"domain", &In::domain, Kind::number,
                                 "number of the domain whose roles are meant; 0 if not given"};
template <class In>
constexpr Param<In> kApplicationParam{"app", &In::application, Kind::text,
                                      "application whose roles are meant; this system's if not given"};

constexpr Param<ScopeInput> kScopeParams[] = {kDomainParam<ScopeInput>, kApplicationParam<ScopeInput>};

struct OneRole : ScopeInput {
    std::string role;
};

constexpr Param<OneRole> kOneParams[] = {
    {"ROLE", &OneRole::role, Kind::role, kRoleHelp}, kDomainParam<OneRole>, kApplicationParam<OneRole>};

struct NewRole : ScopeInput {
    std::string name;
    std::optional<std::string> description;

    void Check() const { CheckName("role", name); }
};

constexpr Param<NewRole> kCreateParams[] = {
    {"NAME", &NewRole::name, Kind::text, "name of the new role"},
    {"description", &NewRole::description, Kind::text, kDescriptionHelp},
    kDomainParam<NewRole>,
    kApplicationParam<NewRole>,
};

struct RoleToSet : OneRole {
    std::optional<std::string> name;
    std::optional<std::string> description;

    void Check() const
    {
        if (!name && !description) {
            ThrowNothingToSet("role");
        }
    }
};

constexpr Param<RoleToSet> kSetParams[] = {
    {"ROLE", &RoleToSet::role, Kind::role, kRoleHelp},
    kDomainParam<RoleToSet>,
    kApplicationParam<RoleToSet>,
    {"name", &RoleToSet::name, Kind::text, "name to have from now on"},
    {"description", &RoleToSet::description, Kind::text, kDescriptionHelp},
};

struct SeveralRoles : ScopeInput {
    std::vector<std::string> roles;
};

constexpr Param<SeveralRoles> kSeveralParams[] = {
    {"ROLE", &SeveralRoles::roles, Kind::role, kRoleHelp},
    kDomainParam<SeveralRoles>,
    kApplicationParam<SeveralRoles>,
};

struct RoleAndUsers : OneRole, UsersInput {};

constexpr auto kMembersParams =
    Joined(std::to_array<Param<RoleAndUsers>>({{"ROLE", &RoleAndUsers::role, Kind::role, kRoleHelp},
                                               kDomainParam<RoleAndUsers>,
                                               kApplicationParam<RoleAndUsers>}),
           kUsersParams<RoleAndUsers>);

struct DefaultRole {
    bool create = false;
};

constexpr Param<DefaultRole> kDefaultParams[] = {
    {"create", &DefaultRole::create, Kind::flag, "add the role when it is missing"}};

constexpr Column kListColumns[] = {{"id", Kind::number}, {"name"}, {"description"}, {"members", Kind::number}};
constexpr Column kRoleColumns[] = {{"id", Kind::number},
                                   {"name"},
                                   {"description"},
                                   {"application"},
                                   {"domain", Kind::number},
                                   {"creator"},
                                   {"created", Kind::date},
                                   {"sort_index", Kind::number},
                                   {"disabled", Kind::flag},
                                   {"genre"},
                                   {"class_id", Kind::number},
                                   {"type", Kind::number},
                                   {"members", Kind::number}};
constexpr Column kMembersColumns[] = {{"id", Kind::number}, {"login"}, {"name"}};
constexpr Column kOfUserColumns[] = {{"id", Kind::number},     {"name"},
                                     {"description"},          {"application"},
                                     {"domain", Kind::number}, {"default", Kind::flag}};

// ---- What is meant --------------------------------------------------------------------------------------------------

Outcome OutcomeOf(const RoleKey& role, std::string_view outcome, Sentence sentence)
{
    return {"role", role.id, role.name, outcome, std::move(sentence)};
}

Record AsRecord(Roles& roles, const RoleKey& role)
{
    const std::optional<RoleData> data = roles.Load(role.id);
    if (!data) {
        throw Error(ErrorCode::notFound, FillPattern("{} has just been deleted", Named(role)));
    }
    std::int64_t members = 0;
    roles.UsersOf({kItemTypeRole, role.id}, [&members](const LinkedUser&) { return ++members > 0; });
    return {
        {"id", std::int64_t{role.id}},
        {"name", data->name},
        {"description", data->description},
        {"application", data->scope.application},
        {"domain", std::int64_t{data->scope.domainId}},
        {"creator", data->creator},
        {"created", OrAbsent(data->created)},
        {"sort_index", std::int64_t{data->sortIndex}},
        {"disabled", data->disabled},
        {"genre", data->genre},
        {"class_id", std::int64_t{data->classId}},
        {"type", std::int64_t{data->type}},
        {"members", members},
    };
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Result List(Call& call, const ScopeInput& in)
{
    for (const ListedRole& role : Roles(call.Connection()).List(in.Scope())) {
        if (!call.Row(std::int64_t{role.id}, role.name, role.description, std::int64_t{role.members})) {
            break;
        }
    }
    return {};
}

Result Show(Call& call, const OneRole& in)
{
    Roles roles(call.Connection());
    return ResultOf(AsRecord(roles, FindRole(roles, in.role, in.Scope())));
}

Result Members(Call& call, const OneRole& in)
{
    Roles roles(call.Connection());
    const RoleKey role = FindRole(roles, in.role, in.Scope());
    roles.UsersOf({kItemTypeRole, role.id},
                  [&call](const LinkedUser& user) { return call.Row(std::int64_t{user.id}, user.login, user.name); });
    return {};
}

Result OfUser(Call& call, const OneUser& in)
{
    const UserKey user = FindUser(call.Directory(), in.user);
    for (const UserRole& role : Roles(call.Connection()).OfUser(user.id)) {
        if (!call.Row(std::int64_t{role.id}, role.name, role.description, role.scope.application,
                      std::int64_t{role.scope.domainId}, role.isDefault)) {
            break;
        }
    }
    return {};
}

Result ShowDefault(Call& call, const DefaultRole& /*in*/)
{
    Roles roles(call.Connection());
    const std::optional<RoleKey> everyone = roles.Default();
    if (!everyone) {
        throw Error(ErrorCode::notFound,
                    FillPattern("there is no role {}; `qvadmin role default --create` makes it", kDefaultRole));
    }
    return ResultOf(AsRecord(roles, *everyone));
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Result Create(Call& call, const NewRole& in)
{
    RoleData role;
    role.name = in.name;
    role.description = in.description.value_or("");
    role.scope = in.Scope();
    Roles roles(call.Connection());
    return ResultOf(Value(std::int64_t{CreateRole(roles, role)}));
}

Result Set(Call& call, const RoleToSet& in)
{
    Roles roles(call.Connection());
    const RoleKey role = FindRole(roles, in.role, in.Scope());
    if (!ChangeRole(roles, role, in.name, in.description)) {
        call.Report(OutcomeOf(role, "unchanged", FillPattern("nothing to change in {}", Named(role))));
        return Unchanged();
    }
    call.Report(OutcomeOf(role, "changed", FillPattern("changed {}", Named(role))));
    return {};
}

struct Deletion : Plan {
    std::vector<RoleKey> roles;

    bool operator==(const Deletion&) const = default;
};

Deletion PlanDeletion(Call& call, const SeveralRoles& in)
{
    Roles roles(call.Connection());
    Deletion deletion;
    deletion.roles = FindRoles(roles, in.roles, in.Scope());
    for (const RoleKey& role : deletion.roles) {
        if (IsProtected(roles, role)) {
            throw Error(ErrorCode::isProtected,
                        FillPattern("{} is the role of every user and stays; nothing was deleted", Named(role)));
        }
    }
    deletion.removed = deletion.roles.size();
    for (const RoleKey& role : deletion.roles) {
        const std::vector<Reference> references = roles.References(role.id);
        deletion.removed += CountOf(references);
        deletion.lines.push_back(FillPattern("delete {}{}", Named(role), WithReferences(references)));
    }
    deletion.question = FillPattern("Delete {}?", Counted(deletion.roles.size(), "role"));
    return deletion;
}

Result Delete(Call& call, const SeveralRoles& /*in*/, const Deletion& deletion)
{
    Roles roles(call.Connection());
    for (const RoleKey& role : deletion.roles) {
        roles.Delete(role.id);
    }
    const RoleKey named = deletion.roles.size() == 1 ? deletion.roles.front() : RoleKey{};
    call.Report(OutcomeOf(named, "deleted", FillPattern("deleted {}", Counted(deletion.roles.size(), "role"))));
    return {};
}

/// How the links of users to a role are changed.
struct LinkChange {
    bool (Roles::*change)(ItemKey, int); ///< gives whether there was anything to do
    std::string_view outcome;
    Pattern<2> done;
    Pattern<2> notNeeded;
};

constexpr LinkChange kAdding = {&Roles::Link, "added", Translatable("{} now has {}"),
                                Translatable("{} already has {}")};
constexpr LinkChange kRemoving = {&Roles::Unlink, "removed", Translatable("{} no longer has {}"),
                                  Translatable("{} was not linked to {}")};

/// A role, and the users who are to get or lose it.
struct Links : ChosenUsers {
    RoleKey role{};

    bool operator==(const Links&) const = default;
};

constexpr ChoiceMessages kAddingMessages = {Translatable("Give the role to {}?"),
                                            Translatable("nobody was given the role")};
constexpr ChoiceMessages kRemovingMessages = {Translatable("Take the role from {}?"),
                                              Translatable("the role was taken from nobody"), true};

Links PlanLinks(Call& call, const RoleAndUsers& in, const ChoiceMessages& messages)
{
    Roles roles(call.Connection());
    const RoleKey role = FindRole(roles, in.role, in.Scope());
    return {ChooseUsers(call, in, messages), role};
}

Links PlanAdding(Call& call, const RoleAndUsers& in) { return PlanLinks(call, in, kAddingMessages); }
Links PlanRemoving(Call& call, const RoleAndUsers& in) { return PlanLinks(call, in, kRemovingMessages); }

Result ChangeMembers(Call& call, const Links& links, const LinkChange& change)
{
    if (links.users.empty()) {
        return NobodySelected(call);
    }
    Roles roles(call.Connection());
    const RoleKey& role = links.role;
    Result result = Unchanged();
    for (const UserKey& user : links.users) {
        const bool isChanged = (roles.*change.change)({kItemTypeRole, role.id}, user.id);
        call.Report({"user", user.id, user.login, isChanged ? change.outcome : "unchanged",
                     FillPattern(isChanged ? change.done : change.notNeeded, Named(user), Named(role))});
        result.isChanged = result.isChanged || isChanged;
    }
    return result;
}

Result Add(Call& call, const RoleAndUsers& /*in*/, const Links& links) { return ChangeMembers(call, links, kAdding); }
Result Remove(Call& call, const RoleAndUsers& /*in*/, const Links& links)
{
    return ChangeMembers(call, links, kRemoving);
}

Result CreateDefault(Call& call, const DefaultRole& in)
{
    Roles roles(call.Connection());
    const bool isMissing = !roles.Default();
    if (isMissing) {
        RoleData role;
        role.name = kDefaultRole;
        const RoleKey created{CreateRole(roles, role), role.name};
        call.Report(OutcomeOf(created, "created", FillPattern("created {}", Named(created))));
    }
    Result result = ShowDefault(call, in);
    result.isChanged = isMissing;
    return result;
}

constexpr Command kCommands[] = {
    {.path = {"role", "list"},
     .summary = "roles by name",
     .examples = {"qvadmin role list", "qvadmin role list --domain 2 -o json"},
     .columns = kListColumns,
     .handler = Read<&List, kScopeParams>()},
    {.path = {"role", "show"},
     .summary = "everything about a role",
     .examples = {"qvadmin role show Editors", "qvadmin role show id:17 -o json"},
     .columns = kRoleColumns,
     .handler = Read<&Show, kOneParams>()},
    {.path = {"role", "create"},
     .summary = "add a role and print the new id",
     .examples = {"qvadmin role create Editors --description 'May change pages'"},
     .effect = Effect::create,
     .handler = Write<&Create, kCreateParams>()},
    {.path = {"role", "set"},
     .summary = "change what is given and leave all else",
     .examples = {"qvadmin role set Editors --name Authors", "qvadmin role set Editors --description ''"},
     .effect = Effect::change,
     .handler = Write<&Set, kSetParams>()},
    {.path = {"role", "delete"},
     .summary = "delete roles and what is kept about them elsewhere; asks first",
     .examples = {"qvadmin role delete Editors", "qvadmin role delete id:17 id:18 --yes"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanDeletion, &Delete, kSeveralParams>()},
    {.path = {"role", "members"},
     .summary = "the users who are linked to a role",
     .examples = {"qvadmin role members Editors"},
     .columns = kMembersColumns,
     .handler = Read<&Members, kOneParams>()},
    {.path = {"role", "add"},
     .summary = "give users a role",
     .examples = {"qvadmin role add Editors amy rory",
                  "qvadmin role add Editors --in /Company/Sales --where title~lead"},
     .effect = Effect::create,
     .asks = true,
     .handler = WritePlanned<&PlanAdding, &Add, kMembersParams>()},
    {.path = {"role", "remove"},
     .summary = "take a role from users",
     .examples = {"qvadmin role remove Editors amy", "qvadmin role remove Editors --role Editors --locked"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanRemoving, &Remove, kMembersParams>()},
    {.path = {"role", "of"},
     .summary = "the roles of a user, that of every user among them",
     .examples = {"qvadmin role of amy"},
     .columns = kOfUserColumns,
     .handler = Read<&OfUser, kOneUserParams>()},
    {.path = {"role", "default"},
     .summary = "show the role that every user has",
     .examples = {"qvadmin role default", "qvadmin role default --create"},
     .effect = Effect::create,
     .columns = kRoleColumns,
     .handler = ReadOrWrite<&DefaultRole::create, &ShowDefault, &CreateDefault, kDefaultParams>()},
    {.path = {"user", "roles"},
     .summary = "the roles of a user, that of every user among them",
     .examples = {"qvadmin user roles amy"},
     .columns = kOfUserColumns,
     .handler = Read<&OfUser, kOneUserParams>()},
};

} // namespace

std::span<const Command> RoleCommands() { return kCommands; }

} // namespace management::roles
