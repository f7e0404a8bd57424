#include "basefun/ItemTypes.h"
#include "management/Command.h"
#include "management/Text.h"
#include "management/organisation/DepartmentSync.h"
#include "management/organisation/Organisation.h"
#include "management/roles/Roles.h"
#include "management/users/ChosenUsers.h"
#include "management/users/OneUser.h"
#include "management/users/Users.h"

#include <fmt/format.h>

#include <algorithm>

namespace management::organisation {

namespace {

constexpr std::string_view kHolderHelp = "/VIEW or /VIEW/GROUP, or id:NUMBER of a group, or view:NUMBER";

// ---- Parameters -----------------------------------------------------------------------------------------------------

struct OneHolder {
    std::string holder;
};

constexpr Param<OneHolder> kListParams[] = {{"GROUP", &OneHolder::holder, Kind::group, kHolderHelp}};

struct HolderAndUsers : UsersInput {
    std::string holder;
};

constexpr auto kMembersParams =
    Joined(std::to_array<Param<HolderAndUsers>>({{"GROUP", &HolderAndUsers::holder, Kind::group, kHolderHelp}}),
           kUsersParams<HolderAndUsers>);

constexpr Column kListColumns[] = {{"type"}, {"id", Kind::number}, {"login"}, {"name"}};
constexpr Column kOfUserColumns[] = {{"type"}, {"id", Kind::number}, {"path"}};

// ---- Reading --------------------------------------------------------------------------------------------------------

Result List(Call& call, const OneHolder& in)
{
    const Organisation organisation(call.Connection());
    const ItemKey holder = organisation.FindHolder(in.holder);
    for (const std::size_t child : organisation.Find(holder)->children) {
        const Node& group = organisation.Nodes()[child];
        if (!call.Row("group", std::int64_t{group.key.id}, Value(), group.name)) {
            return {};
        }
    }
    Roles(call.Connection()).UsersOf(holder, [&call](const LinkedUser& user) {
        return call.Row("user", std::int64_t{user.id}, user.login, user.name);
    });
    return {};
}

Result OfUser(Call& call, const OneUser& in)
{
    const Organisation organisation(call.Connection());
    const UserKey user = FindUser(call.Directory(), in.user);
    for (const ItemKey holder : Roles(call.Connection()).HoldersOf({kItemTypeUser, user.id})) {
        if (!call.Row(holder.type == kItemTypeView ? "view" : "group", std::int64_t{holder.id},
                      organisation.PathOf(holder))) {
            break;
        }
    }
    return {};
}

// ---- Changing -------------------------------------------------------------------------------------------------------

/// How memberships are changed.
struct MembershipChange {
    bool (Roles::*change)(ItemKey, int);   ///< gives whether there was anything to do
    decltype(SyncJoined)* syncDepartments; ///< of those users whose membership has changed
    std::string_view outcome;
    Pattern<2> done;
    Pattern<2> notNeeded;
};

constexpr MembershipChange kJoining = {&Roles::Link, &SyncJoined, "added", Translatable("{} is now a member of {}"),
                                       Translatable("{} is a member already of {}")};
constexpr MembershipChange kLeaving = {&Roles::Unlink, &SyncLeft, "removed",
                                       Translatable("{} is no longer a member of {}"),
                                       Translatable("{} was no member of {}")};

void ReportDepartments(Call& call, std::size_t users)
{
    if (users > 0) {
        call.Report({"user", 0, "", "department_changed", DepartmentsChanged(users)});
    }
}

/// A group or view, and the users who are to enter or leave it.
struct Memberships : ChosenUsers {
    ItemKey holder{};

    bool operator==(const Memberships&) const = default;
};

constexpr ChoiceMessages kJoiningMessages = {Translatable("Make {} members?"), Translatable("nobody became a member")};
constexpr ChoiceMessages kLeavingMessages = {Translatable("End the membership of {}?"),
                                             Translatable("no membership was ended"), true};

Memberships PlanMemberships(Call& call, const HolderAndUsers& in, const ChoiceMessages& messages)
{
    const ItemKey holder = Organisation(call.Connection()).FindHolder(in.holder);
    return {ChooseUsers(call, in, messages), holder};
}

Memberships PlanJoining(Call& call, const HolderAndUsers& in) { return PlanMemberships(call, in, kJoiningMessages); }
Memberships PlanLeaving(Call& call, const HolderAndUsers& in) { return PlanMemberships(call, in, kLeavingMessages); }

Result ChangeMembers(Call& call, const Memberships& memberships, const MembershipChange& change)
{
    if (memberships.users.empty()) {
        return NobodySelected(call);
    }
    const Organisation organisation(call.Connection());
    Roles roles(call.Connection());
    const ItemKey holder = memberships.holder;
    const Sentence name = organisation.Named(holder);
    std::vector<int> changedUsers;
    for (const UserKey& user : memberships.users) {
        const bool isChanged = (roles.*change.change)(holder, user.id);
        call.Report({"user", user.id, user.login, isChanged ? change.outcome : "unchanged",
                     FillPattern(isChanged ? change.done : change.notNeeded, Named(user), name)});
        if (isChanged) {
            changedUsers.push_back(user.id);
        }
    }
    ReportDepartments(call, change.syncDepartments(organisation, holder, changedUsers));
    return changedUsers.empty() ? Unchanged() : Result();
}

Result Add(Call& call, const HolderAndUsers& /*in*/, const Memberships& memberships)
{
    return ChangeMembers(call, memberships, kJoining);
}

Result Remove(Call& call, const HolderAndUsers& /*in*/, const Memberships& memberships)
{
    return ChangeMembers(call, memberships, kLeaving);
}

/// A user and all that the user is to leave.
struct Detachment : Plan {
    UserKey user;
    std::vector<ItemKey> holders;

    bool operator==(const Detachment&) const = default;
};

Detachment PlanDetachment(Call& call, const OneUser& in)
{
    const Organisation organisation(call.Connection());
    Detachment detachment;
    detachment.nothingDone = Translatable("no membership was ended");
    detachment.user = FindUser(call.Directory(), in.user);
    detachment.holders = Roles(call.Connection()).HoldersOf({kItemTypeUser, detachment.user.id});
    detachment.removed = detachment.holders.size();
    for (const ItemKey holder : detachment.holders) {
        detachment.lines.push_back(FillPattern("leave {}", organisation.Named(holder)));
    }
    if (!detachment.holders.empty()) {
        detachment.question =
            FillPattern("End {} of {}?", Counted(detachment.holders.size(), "membership"), Named(detachment.user));
    }
    return detachment;
}

Result Detach(Call& call, const OneUser& /*in*/, const Detachment& detachment)
{
    const UserKey& user = detachment.user;
    const std::vector<ItemKey>& holders = detachment.holders;
    if (holders.empty()) {
        call.Report(
            {"user", user.id, user.login, "unchanged", FillPattern("{} is in no group and no view", Named(user))});
        return Unchanged();
    }
    const Organisation organisation(call.Connection());
    Roles roles(call.Connection());
    std::size_t departments = 0;
    for (const ItemKey holder : holders) {
        roles.Unlink(holder, user.id);
        departments = std::max(departments, SyncLeft(organisation, holder, {user.id}));
    }
    call.Report({"user", user.id, user.login, "removed",
                 FillPattern("ended {} of {}{}", Counted(holders.size(), "membership"), Named(user),
                             WithDepartments(departments))});
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"member", "list"},
     .summary = "the groups and users directly in a group or view",
     .examples = {"qvadmin member list /Company/Sales", "qvadmin member list /Company -o json"},
     .columns = kListColumns,
     .handler = Read<&List, kListParams>()},
    {.path = {"member", "add"},
     .summary = "make users members of a group or view",
     .examples = {"qvadmin member add /Company/Sales amy rory",
                  "qvadmin member add /Company/Sales --no-group --where department~sales"},
     .effect = Effect::create,
     .asks = true,
     .handler = WritePlanned<&PlanJoining, &Add, kMembersParams>()},
    {.path = {"member", "remove"},
     .summary = "end the membership of users in a group or view",
     .examples = {"qvadmin member remove /Company/Sales amy",
                  "qvadmin member remove /Company/Sales --in /Company/Sales --locked"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanLeaving, &Remove, kMembersParams>()},
    {.path = {"member", "detach"},
     .summary = "take a user out of all groups and views; asks first",
     .examples = {"qvadmin member detach amy"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanDetachment, &Detach, kOneUserParams>()},
    {.path = {"user", "groups"},
     .summary = "the groups and views that a user is in",
     .examples = {"qvadmin user groups amy"},
     .columns = kOfUserColumns,
     .handler = Read<&OfUser, kOneUserParams>()},
};

} // namespace

std::span<const Command> MemberCommands() { return kCommands; }

} // namespace management::organisation
