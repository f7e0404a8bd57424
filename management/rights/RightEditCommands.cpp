#include "basefun/ItemTypes.h"
#include "management/Command.h"
#include "management/Names.h"
#include "management/Paths.h"
#include "management/Text.h"
#include "management/rights/PermissionMask.h"
#include "management/rights/Rights.h"
#include "management/roles/Roles.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <set>
#include <tuple>

namespace management::rights {

namespace {

constexpr std::string_view kNone = "none";

struct Edits {
    std::vector<std::string> edits;
};

constexpr Param<Edits> kEditParams[] = {
    {"EDIT", &Edits::edits, Kind::text,
     "/ROLE/GENRE/FUNCTION=POWER, with \\/ for a slash in a name; none for POWER takes the right away"},
};

/// What one right of a role is to be.
struct Edit {
    RoleKey role;
    Function function;
    std::optional<int> power;     ///< none: the right is taken away
    std::vector<ItemRight> found; ///< its rows before

    [[nodiscard]] bool ChangesSomething() const
    {
        return power
                   ? found.empty() ||
                         std::ranges::any_of(found, [this](const ItemRight& row) { return row.powers.power != *power; })
                   : !found.empty();
    }
    [[nodiscard]] std::string Right() const
    {
        return fmt::format("{} {}", Quoted(function.genre), Quoted(function.name));
    }

    bool operator==(const Edit& other) const
    {
        return role.id == other.role.id && function == other.function && power == other.power && found == other.found;
    }
};

struct PlannedEdits : Plan {
    std::vector<Edit> edits;

    bool operator==(const PlannedEdits& other) const { return Plan::operator==(other) && edits == other.edits; }
};

Edit ReadEdit(Rights& rights, Roles& roles, const std::string& text)
{
    const std::size_t equals = text.rfind('=');
    const std::vector<std::string> names = equals == std::string::npos || !text.starts_with('/')
                                               ? std::vector<std::string>()
                                               : SplitPath(text.substr(0, equals));
    if (names.size() != 3) {
        throw Error(ErrorCode::invalid,
                    FillPattern("{} is not an edit; write /ROLE/GENRE/FUNCTION=POWER", Quoted(text)));
    }
    const std::string power = text.substr(equals + 1);
    Edit edit{FindRole(roles, names[0], {}), {names[1], names[2]}, {}, {}};
    if (power != kNone) {
        edit.power = PowerFrom(power);
    }
    edit.found = rights.Find({kItemTypeRole, edit.role.id}, edit.function);
    if (edit.power && edit.found.empty()) {
        CheckName("genre", edit.function.genre);
        CheckName("function", edit.function.name);
    }
    return edit;
}

std::string PowersBefore(const Edit& edit)
{
    std::vector<int> powers;
    std::ranges::transform(edit.found, std::back_inserter(powers),
                           [](const ItemRight& row) { return row.powers.power; });
    return powers.empty() ? std::string(kNone) : fmt::format("{}", fmt::join(powers, ","));
}

PlannedEdits PlanEdits(Call& call, const Edits& in)
{
    Rights rights(call.Connection());
    Roles roles(call.Connection());
    PlannedEdits plan;
    plan.nothingDone = Translatable("no right was changed");
    std::set<std::tuple<int, std::string, std::string>> seen;
    for (const std::string& text : in.edits) {
        Edit edit = ReadEdit(rights, roles, text);
        if (!seen.emplace(edit.role.id, edit.function.genre, edit.function.name).second) {
            throw Error(ErrorCode::invalid,
                        FillPattern("two edits are about the right {} of {}", edit.Right(), Named(edit.role)));
        }
        if (!edit.ChangesSomething()) {
            continue;
        }
        plan.lines.push_back(FillPattern("{}: {} from {} to {}", Named(edit.role), edit.Right(), PowersBefore(edit),
                                         edit.power ? std::to_string(*edit.power) : std::string(kNone)));
        plan.removed += edit.power ? 0 : edit.found.size();
        plan.edits.push_back(std::move(edit));
    }
    if (!plan.edits.empty()) {
        plan.question = FillPattern("Change {}?", Counted(plan.edits.size(), "right"));
    }
    return plan;
}

Result Apply(Call& call, const Edits& /*in*/, const PlannedEdits& plan)
{
    Rights rights(call.Connection());
    for (const Edit& edit : plan.edits) {
        const ItemKey holder{kItemTypeRole, edit.role.id};
        if (!edit.power) {
            rights.Revoke(holder, edit.function);
        } else if (edit.found.empty()) {
            rights.Grant(holder, edit.function, {*edit.power, 0});
        } else {
            rights.Set(holder, edit.function, *edit.power);
        }
    }
    if (plan.edits.empty()) {
        call.Report({"right", 0, "", "unchanged", Translatable("every right is as it is to be")});
        return Unchanged();
    }
    call.Report({"right", 0, "", "changed", FillPattern("changed {}", Counted(plan.edits.size(), "right"))});
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"right", "edit"},
     .summary = "change several rights of roles as one change",
     .examples = {"qvadmin right edit /Editors/mail/size=10 /Authors/mail/send=none",
                  "qvadmin right edit /id:17/mail/size=unlimited --dry-run"},
     .effect = Effect::change,
     .asks = true,
     .handler = WritePlanned<&PlanEdits, &Apply, kEditParams>()},
};

} // namespace

std::span<const Command> RightEditCommands() { return kCommands; }

} // namespace management::rights
