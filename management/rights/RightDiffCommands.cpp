#include "basefun/ItemTypes.h"
#include "management/Command.h"
#include "management/rights/PermissionMask.h"
#include "management/rights/Rights.h"
#include "management/roles/Roles.h"
#include "management/users/Users.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

namespace management::rights {

namespace {

struct TwoUsers {
    std::string first;
    std::string second;
};

constexpr Param<TwoUsers> kUsersToCompare[] = {
    {"USER", &TwoUsers::first, Kind::user, kUserHelp},
    {"OTHER", &TwoUsers::second, Kind::user, "the user to compare with, named likewise"},
};

struct TwoRoles {
    std::string first;
    std::string second;
};

constexpr Param<TwoRoles> kRolesToCompare[] = {
    {"ROLE", &TwoRoles::first, Kind::role, "name, case not counting, or id:NUMBER"},
    {"OTHER", &TwoRoles::second, Kind::role, "the role to compare with, named likewise"},
};

constexpr Column kUserColumns[] = {{"genre"},
                                   {"function"},
                                   {"bits", Kind::number},
                                   {"other_bits", Kind::number},
                                   {"publish", Kind::flag},
                                   {"other_publish", Kind::flag},
                                   {"guest", Kind::flag},
                                   {"other_guest", Kind::flag},
                                   {"limit", Kind::number},
                                   {"other_limit", Kind::number}};
constexpr Column kRoleColumns[] = {{"genre"}, {"function"}, {"power", Kind::power}, {"other_power", Kind::power}};

Value ShownLimit(int limit)
{
    return limit == kUnlimited ? Value(Choice{limit, "unlimited"}) : Value(std::int64_t{limit});
}

Result DiffUsers(Call& call, const TwoUsers& in)
{
    Rights rights(call.Connection());
    const UserKey first = FindUser(call.Directory(), in.first);
    const UserKey second = FindUser(call.Directory(), in.second);
    std::set<Function> functions;
    for (const UserKey& user : {first, second}) {
        std::ranges::copy(rights.FunctionsOf(user.id), std::inserter(functions, functions.end()));
    }
    for (const Function& function : functions) {
        const EffectiveRight a = rights.Effective(first.id, function);
        const EffectiveRight b = rights.Effective(second.id, function);
        if (!(a == b) && !call.Row(function.genre, function.name, std::int64_t{a.bits}, std::int64_t{b.bits}, a.publish,
                                   b.publish, a.guest, b.guest, ShownLimit(a.limit), ShownLimit(b.limit))) {
            break;
        }
    }
    return {};
}

/// The powers of a role by function; other programs may have granted one several times.
std::map<Function, std::vector<int>> PowersOf(Rights& rights, const RoleKey& role)
{
    std::map<Function, std::vector<int>> powers;
    for (const ItemRight& right : rights.Of({kItemTypeRole, role.id})) {
        powers[right.function].push_back(right.powers.power);
    }
    return powers;
}

Value Shown(const std::vector<int>& powers)
{
    return powers.empty()       ? Value()
           : powers.size() == 1 ? Value(std::int64_t{powers.front()})
                                : Value(fmt::format("{}", fmt::join(powers, ",")));
}

Result DiffRoles(Call& call, const TwoRoles& in)
{
    Roles roles(call.Connection());
    Rights rights(call.Connection());
    std::map<Function, std::vector<int>> first = PowersOf(rights, FindRole(roles, in.first, {}));
    std::map<Function, std::vector<int>> second = PowersOf(rights, FindRole(roles, in.second, {}));
    for (const auto& [function, powers] : second) {
        first[function];
    }
    for (const auto& [function, powers] : first) {
        const std::vector<int>& others = second[function];
        if (powers != others && !call.Row(function.genre, function.name, Shown(powers), Shown(others))) {
            break;
        }
    }
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"right", "diff"},
     .summary = "the functions on which two users have different rights",
     .examples = {"qvadmin right diff amy rory", "qvadmin right diff amy rory -o json"},
     .columns = kUserColumns,
     .handler = ReadSnapshot<&DiffUsers, kUsersToCompare>()},
    {.path = {"role", "diff"},
     .summary = "the functions on which two roles have different powers",
     .examples = {"qvadmin role diff Editors Authors", "qvadmin role diff id:17 id:18 -o csv"},
     .columns = kRoleColumns,
     .handler = ReadSnapshot<&DiffRoles, kRolesToCompare>()},
};

} // namespace

std::span<const Command> RightDiffCommands() { return kCommands; }

} // namespace management::rights
