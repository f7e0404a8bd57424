#include "basefun/ItemTypes.h"
#include "management/Command.h"
#include "management/Paths.h"
#include "management/Query.h"
#include "management/Text.h"
#include "management/organisation/Links.h"
#include "management/organisation/Organisation.h"
#include "management/roles/Roles.h"
#include "management/users/ChosenUsers.h"
#include "management/users/UserDepartment.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <span>

namespace management::organisation {

namespace {

struct UsersToMove : UsersInput {
    std::string to;
    std::optional<std::string> from;
};

constexpr auto kMoveParams =
    Joined(kUsersParams<UsersToMove>,
           std::to_array<Param<UsersToMove>>({
               {"TO", &UsersToMove::to, Kind::group, "the group to move to: /VIEW/GROUP, or id:NUMBER"},
               {"from", &UsersToMove::from, Kind::group, "the group to leave, of users who are in several"},
           }));

/// Users, the group that each of them leaves, if any, and the one that all enter.
struct Move : ChosenUsers {
    ItemKey to{};
    std::vector<std::optional<ItemKey>> from; ///< of each user

    bool operator==(const Move&) const = default;
};

constexpr ChoiceMessages kMoving = {Translatable("Move {}?"), Translatable("nobody was moved")};

/// The groups that users are directly in, without those that are gone.
std::map<int, std::vector<ItemKey>> GroupsOf(const Organisation& organisation, const std::vector<UserKey>& users)
{
    std::map<int, std::vector<ItemKey>> groups;
    std::vector<int> ids;
    std::ranges::transform(users, std::back_inserter(ids), &UserKey::id);
    ForEachPart(ids, [&](std::span<const int> part) {
        groups.merge(HoldersOf(organisation.Connection(), kItemTypeUser, {part.begin(), part.end()}));
    });
    for (auto& [user, holders] : groups) {
        std::erase_if(holders, [&organisation](ItemKey holder) {
            return holder.type != kItemTypeGroup || organisation.Find(holder) == nullptr;
        });
    }
    return groups;
}

/// @throws Error (conflict, notFound) that names all users of whom it is not clear what they leave, if there are any.
void RequireClear(const Organisation& organisation, std::optional<ItemKey> from, const std::vector<Sentence>& unclear)
{
    if (unclear.empty()) {
        return;
    }
    const Sentence count = Counted(unclear.size(), "user");
    if (from) {
        throw Error(ErrorCode::notFound,
                    FillPlural("{} is not in {}: {}; nobody was moved", "{} are not in {}: {}; nobody was moved",
                               unclear.size(), count, organisation.Named(*from), Joined(unclear, ", ")));
    }
    throw Error(ErrorCode::conflict,
                FillPlural("{} is in several groups; nobody was moved, --from says which one to leave: {}",
                           "{} are in several groups; nobody was moved, --from says which one to leave: {}",
                           unclear.size(), count, Joined(unclear, "; ")));
}

/// @throws Error (conflict, notFound) where it is not clear what somebody leaves.
void FindFrom(Move& move, const Organisation& organisation, std::optional<ItemKey> from)
{
    const std::map<int, std::vector<ItemKey>> groupsOf = GroupsOf(organisation, move.users);
    std::vector<Sentence> unclear;
    for (const UserKey& user : move.users) {
        const auto found = groupsOf.find(user.id);
        std::vector<ItemKey> groups = found == groupsOf.end() ? std::vector<ItemKey>() : found->second;
        const bool isInFrom = from && std::ranges::find(groups, *from) != groups.end();
        std::erase(groups, move.to);
        if (from && !isInFrom) {
            unclear.push_back(Named(user));
        } else if (!from && groups.size() > 1) {
            unclear.push_back(FillPattern("{} is in {}", Named(user), PathsOf(organisation, groups)));
        }
        move.from.push_back(from ? from : groups.empty() ? std::nullopt : std::optional(groups.front()));
    }
    RequireClear(organisation, from, unclear);
}

Move PlanMove(Call& call, const UsersToMove& in)
{
    const Organisation organisation(call.Connection());
    Move move{ChooseUsers(call, in, kMoving), organisation.FindGroup(in.to), {}};
    const std::optional<ItemKey> from = in.from ? std::optional(organisation.FindGroup(*in.from)) : std::nullopt;
    if (from == move.to) {
        throw Error(ErrorCode::invalid, "--from names the group to move to; nobody was moved");
    }
    FindFrom(move, organisation, from);
    return move;
}

/// Moves users one by one.
class Mover {
public:
    Mover(Call& call, const std::string& to)
        : m_call(call),
          m_organisation(call.Connection()),
          m_roles(call.Connection()),
          m_department(call.Connection(), to)
    {
        m_department.AddTo(m_values);
    }

    /// @return whether anything was different before.
    bool MoveOne(const UserKey& user, ItemKey to, std::optional<ItemKey> from)
    {
        const FieldValues stored = m_call.Directory().Load(user.id).value_or(FieldValues());
        const std::vector<ItemKey> departments = DepartmentGroups(m_organisation, m_roles, user.id, stored);
        // A department that is neither left nor entered stays.
        const bool keepsDepartment = std::ranges::any_of(
            departments, [&](ItemKey department) { return department != from && department != to; });
        const bool hasLeft = from && m_roles.Unlink(*from, user.id);
        const bool hasEntered = m_roles.Link(to, user.id);
        const bool isChanged = !keepsDepartment && ChangeUser(m_call.Directory(), user.id, m_values);
        Report(user, to, from, hasLeft || hasEntered || isChanged);
        return hasLeft || hasEntered || isChanged;
    }

private:
    void Report(const UserKey& user, ItemKey to, std::optional<ItemKey> from, bool isChanged)
    {
        const Sentence name = Named(user);
        const Sentence group = m_organisation.Named(to);
        m_call.Report(
            {"user", user.id, user.login, isChanged ? "moved" : "unchanged",
             !isChanged ? FillPattern("{} is in {} already", name, group)
             : from     ? FillPattern("{} is now in {} and no longer in {}", name, group, m_organisation.Named(*from))
                        : FillPattern("{} is now in {}", name, group)});
    }

    Call& m_call;
    Organisation m_organisation;
    Roles m_roles;
    UserDepartment m_department;
    FieldValues m_values;
};

Result MoveUsers(Call& call, const UsersToMove& in, const Move& move)
{
    if (move.users.empty()) {
        return NobodySelected(call);
    }
    Mover mover(call, in.to);
    std::size_t moved = 0;
    for (std::size_t i = 0; i < move.users.size(); ++i) {
        moved += mover.MoveOne(move.users[i], move.to, move.from[i]) ? 1 : 0;
    }
    if (move.users.size() > 1) {
        call.Report({"user", 0, "", moved > 0 ? "moved" : "unchanged",
                     FillPattern("moved {} of {}", moved, Counted(move.users.size(), "user"))});
    }
    return moved > 0 ? Result() : Unchanged();
}

constexpr Command kCommands[] = {
    {.path = {"user", "move"},
     .summary = "move users to another group, their departments with them",
     .examples = {"qvadmin user move amy rory /Company/Sales",
                  "qvadmin user move amy /Company/Sales --from /Company/Service",
                  "qvadmin user move --in /Company/Service --where title=Trainee /Company/Sales"},
     .effect = Effect::change,
     .asks = true,
     .handler = WritePlanned<&PlanMove, &MoveUsers, kMoveParams>()},
};

} // namespace

std::span<const Command> UserMoveCommands() { return kCommands; }

} // namespace management::organisation
