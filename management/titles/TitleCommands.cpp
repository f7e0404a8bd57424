#include "basefun/ItemTypes.h"
#include "management/Command.h"
#include "management/Text.h"
#include "management/organisation/Organisation.h"
#include "management/roles/Roles.h"
#include "management/users/OneUser.h"
#include "management/users/Users.h"

#include <fmt/format.h>

namespace management::titles {

namespace {

constexpr std::string_view kTitleHelp = "the title as it is, case counting";

// ---- Parameters -----------------------------------------------------------------------------------------------------

struct OneTitle {
    std::string group;
    std::string user;
    std::string title;
};

constexpr Param<OneTitle> kOneParams[] = {
    {"GROUP", &OneTitle::group, Kind::group, kGroupHelp},
    {"USER", &OneTitle::user, Kind::user, kUserHelp},
    {"TITLE", &OneTitle::title, Kind::title, kTitleHelp},
};

struct TitleToGive : OneTitle {
    std::optional<std::string> description;
};

constexpr Param<TitleToGive> kGiveParams[] = {
    {"GROUP", &TitleToGive::group, Kind::group, kGroupHelp},
    {"USER", &TitleToGive::user, Kind::user, kUserHelp},
    {"TITLE", &TitleToGive::title, Kind::title, kTitleHelp},
    {"description", &TitleToGive::description, Kind::text, kDescriptionHelp},
};

struct TitleFilter {
    std::string group;
    std::optional<std::string> title;

    void Check() const
    {
        if (title) {
            CheckName("title", *title);
        }
    }
};

constexpr Param<TitleFilter> kListParams[] = {
    {"GROUP", &TitleFilter::group, Kind::group, kGroupHelp},
    {"TITLE", &TitleFilter::title, Kind::title, kTitleHelp},
};

constexpr Column kListColumns[] = {{"title"}, {"id", Kind::number}, {"login"}, {"name"}, {"description"}};
constexpr Column kOfUserColumns[] = {{"title"}, {"group_id", Kind::number}, {"group"}, {"description"}};

// ---- What is meant --------------------------------------------------------------------------------------------------

struct TitleRef {
    ItemKey group;
    UserKey user;
    std::string title;
};

TitleRef FindTitle(Call& call, const Organisation& organisation, const OneTitle& in)
{
    TitleRef title{organisation.FindGroup(in.group), FindUser(call.Directory(), in.user), in.title};
    CheckName("title", title.title);
    return title;
}

/// "amy (id 1) now holds 'Lead' in /Main/Sales (id 2)".
Outcome OutcomeOf(const Organisation& organisation, const TitleRef& title, std::string_view outcome, Pattern<3> pattern)
{
    return {"user", title.user.id, title.user.login, outcome,
            FillPattern(pattern, Named(title.user), Quoted(title.title), organisation.Named(title.group))};
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Result List(Call& call, const TitleFilter& in)
{
    const ItemKey group = Organisation(call.Connection()).FindGroup(in.group);
    for (const HeldTitle& held : Roles(call.Connection()).TitlesIn(group.id, in.title.value_or(""))) {
        if (!call.Row(held.title, std::int64_t{held.userId}, held.login, held.name, held.description)) {
            break;
        }
    }
    return {};
}

Result Check(Call& call, const OneTitle& in)
{
    const TitleRef title = FindTitle(call, Organisation(call.Connection()), in);
    return Verdict(Roles(call.Connection()).HoldsTitle(title.group.id, title.user.id, title.title));
}

Result OfUser(Call& call, const OneUser& in)
{
    const Organisation organisation(call.Connection());
    const UserKey user = FindUser(call.Directory(), in.user);
    for (const HeldTitle& held : Roles(call.Connection()).TitlesOf(user.id)) {
        if (!call.Row(held.title, std::int64_t{held.groupId}, organisation.PathOf({kItemTypeGroup, held.groupId}),
                      held.description)) {
            break;
        }
    }
    return {};
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Result Give(Call& call, const TitleToGive& in)
{
    const Organisation organisation(call.Connection());
    Roles roles(call.Connection());
    const TitleRef title = FindTitle(call, organisation, in);
    if (roles.HoldsTitle(title.group.id, title.user.id, title.title)) {
        call.Report(OutcomeOf(organisation, title, "unchanged", Translatable("{} already holds {} in {}")));
        return Unchanged();
    }
    roles.GiveTitle({title.group.id, title.user.id, title.title, in.description.value_or(""), title.user.login,
                     call.Directory().NameOfId(title.user.id)});
    call.Report(OutcomeOf(organisation, title, "given", Translatable("{} now holds {} in {}")));
    return {};
}

Result Take(Call& call, const OneTitle& in)
{
    const Organisation organisation(call.Connection());
    Roles roles(call.Connection());
    const TitleRef title = FindTitle(call, organisation, in);
    if (!roles.HoldsTitle(title.group.id, title.user.id, title.title)) {
        call.Report(OutcomeOf(organisation, title, "unchanged", Translatable("{} did not hold {} in {}")));
        return Unchanged();
    }
    roles.TakeTitle(title.group.id, title.user.id, title.title);
    call.Report(OutcomeOf(organisation, title, "taken", Translatable("{} no longer holds {} in {}")));
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"title", "give"},
     .summary = "give a user a title inside a group",
     .examples = {"qvadmin title give /Company/Sales amy Lead --description 'since May'"},
     .effect = Effect::create,
     .handler = Write<&Give, kGiveParams>()},
    {.path = {"title", "take"},
     .summary = "take a title from a user",
     .examples = {"qvadmin title take /Company/Sales amy Lead"},
     .effect = Effect::remove,
     .handler = Write<&Take, kOneParams>()},
    {.path = {"title", "list"},
     .summary = "who holds which title inside a group",
     .examples = {"qvadmin title list /Company/Sales", "qvadmin title list /Company/Sales Lead -o csv"},
     .columns = kListColumns,
     .handler = Read<&List, kListParams>()},
    {.path = {"title", "check"},
     .summary = "print true or false; ends with 0 or 3",
     .examples = {"qvadmin title check /Company/Sales amy Lead"},
     .handler = Read<&Check, kOneParams>()},
    {.path = {"user", "titles"},
     .summary = "the job titles of a user, and in which groups",
     .examples = {"qvadmin user titles amy"},
     .columns = kOfUserColumns,
     .handler = Read<&OfUser, kOneUserParams>()},
};

} // namespace

std::span<const Command> TitleCommands() { return kCommands; }

} // namespace management::titles
