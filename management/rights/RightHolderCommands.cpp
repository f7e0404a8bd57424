#include "management/Command.h"
#include "management/Text.h"
#include "management/rights/PermissionMask.h"
#include "management/rights/RightHolders.h"
#include "management/users/Users.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace management::rights {

namespace {

struct WhoQuery {
    std::string genre;
    std::string function;
    std::optional<std::string> bit;
    std::optional<std::string> mask;
    std::optional<int> limit;

    void Check() const
    {
        if (int{bit.has_value()} + int{mask.has_value()} + int{limit.has_value()} > 1) {
            throw Error(ErrorCode::invalid, "--bit, --mask and --limit are questions of their own; ask one at a time");
        }
        (void)Asked();
    }

    /// @throws Error (invalid).
    [[nodiscard]] Question Asked() const
    {
        return bit     ? Question{Question::Kind::bit, BitFrom(*bit)}
               : mask  ? Question{Question::Kind::mask, BitsFrom(*mask)}
               : limit ? Question{Question::Kind::limit}
                       : Question{};
    }

    /// Whether somebody with this verdict is meant.
    [[nodiscard]] bool IsWanted(std::int64_t verdict) const
    {
        return limit ? verdict == kUnlimited || verdict >= *limit : verdict != 0;
    }
};

constexpr Param<WhoQuery> kWhoParams[] = {
    {"GENRE", &WhoQuery::genre, Kind::text, "genre of the function, as it is"},
    {"FUNCTION", &WhoQuery::function, Kind::text, "name of the function, as it is"},
    {"bit", &WhoQuery::bit, Kind::number, "who has this bit among the rights: 1, 2, 4, 8, also as 0x10"},
    {"mask", &WhoQuery::mask, Kind::number, "who has one of these bits among the rights, such as 6 or 0x6"},
    {"limit", &WhoQuery::limit, Kind::number, "who has at least this limit, or none", kLimit},
};

constexpr Column kWhoColumns[] = {{"type"},  {"id", Kind::number}, {"name"}, {"display_name"}, {"power", Kind::power},
                                  {"users"}, {"through"}};

Value ShownPower(const WhoQuery& in, std::int64_t power)
{
    return in.limit && power == kUnlimited ? Value(Choice{power, "unlimited"}) : Value(power);
}

/// Whether a row says something about what is asked.
bool IsRelevant(const WhoQuery& in, const RoleRow& row)
{
    const std::uint32_t bits = static_cast<std::uint32_t>(row.power.value_or(0));
    return (!in.bit && !in.mask) || (bits & in.Asked().bits) != 0;
}

/// @return false when no more rows are wanted.
bool GiveRoles(const Call& call, const WhoQuery& in, const RightHolders& holders)
{
    return std::ranges::all_of(holders.Rows(), [&](const RoleRow& row) {
        const Value users = row.isDefault ? Value("everybody") : Value(holders.CountLinked(row.roleId));
        return !IsRelevant(in, row) || call.Row("role", std::int64_t{row.roleId}, row.role, Value(),
                                                row.power ? ShownPower(in, *row.power) : Value(), users, Value());
    });
}

std::string ThroughText(const WhoQuery& in, const RightHolder& holder)
{
    std::set<int> known;
    std::string text;
    for (const RoleRow* row : holder.rows) {
        if (IsRelevant(in, *row) && known.insert(row->roleId).second) {
            text += (text.empty() ? "" : ", ") + (row->role.empty() ? fmt::format("role {}", row->roleId) : row->role);
        }
    }
    return text;
}

Result Who(Call& call, const WhoQuery& in)
{
    const RightHolders holders(call.Connection(), in.genre, in.function, in.Asked());
    if (!GiveRoles(call, in, holders)) {
        return {};
    }
    holders.ListUsers([&in](std::int64_t verdict) { return in.IsWanted(verdict); },
                      [&](const RightHolder& holder) {
                          return call.Row("user", std::int64_t{holder.user.id}, holder.user.login, holder.name,
                                          ShownPower(in, holder.verdict), Value(), ThroughText(in, holder));
                      });
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"right", "who"},
     .summary = "the roles that have a right, and the users who have it through them",
     .examples = {"qvadmin right who mail send", "qvadmin right who mail send --bit 1",
                  "qvadmin right who mail size --limit 2048 -o json"},
     .columns = kWhoColumns,
     .handler = ReadSnapshot<&Who, kWhoParams>()},
};

} // namespace

std::span<const Command> RightHolderCommands() { return kCommands; }

} // namespace management::rights
