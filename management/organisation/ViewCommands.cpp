#include "basefun/ItemTypes.h"
#include "management/Command.h"
#include "management/Names.h"
#include "management/References.h"
#include "management/Text.h"
#include "management/organisation/DepartmentSync.h"
#include "management/organisation/Organisation.h"

#include <fmt/format.h>

namespace management::organisation {

namespace {

constexpr std::string_view kPlaceholder = "_Empty";

constexpr std::string_view kViewHelp = "name of a system view, or view:NUMBER";
constexpr std::string_view kNameHelp = "the name as it is, not as in a path";

// ---- Parameters -----------------------------------------------------------------------------------------------------

struct ViewFilter {
    bool all = false;
};

constexpr Param<ViewFilter> kListParams[] = {{"all", &ViewFilter::all, Kind::flag, "the views of single users too"}};

struct OneView {
    std::string view;
};

constexpr Param<OneView> kOneParams[] = {{"VIEW", &OneView::view, Kind::view, kViewHelp}};

struct NewView {
    std::string name;
    std::optional<std::string> description;
    std::optional<int> sortIndex;
    std::optional<int> style;
    std::optional<int> domainId;
    std::optional<std::string> creator;
};

constexpr Param<NewView> kCreateParams[] = {
    {"NAME", &NewView::name, Kind::text, kNameHelp},
    {"description", &NewView::description, Kind::text, kDescriptionHelp},
    {"sort_index", &NewView::sortIndex, Kind::number, kSortIndexHelp},
    {"style", &NewView::style, Kind::number, "style number"},
    {"domain_id", &NewView::domainId, Kind::number, "domain number"},
    {"creator", &NewView::creator, Kind::text, "who made it"},
};

struct ViewToSet {
    std::string view;
    std::optional<std::string> description;
    std::optional<int> sortIndex;
};

constexpr Param<ViewToSet> kSetParams[] = {
    {"VIEW", &ViewToSet::view, Kind::view, kViewHelp},
    {"description", &ViewToSet::description, Kind::text, kDescriptionHelp},
    {"sort_index", &ViewToSet::sortIndex, Kind::number, kSortIndexHelp},
};

struct ViewToRename {
    std::string view;
    std::string name;
};

constexpr Param<ViewToRename> kRenameParams[] = {
    {"VIEW", &ViewToRename::view, Kind::view, kViewHelp},
    {"NAME", &ViewToRename::name, Kind::text, kNameHelp},
};

struct DefaultView {
    std::optional<std::string> name;
};

constexpr Param<DefaultView> kDefaultParams[] = {{"NAME", &DefaultView::name, Kind::text, kNameHelp}};

constexpr Column kListColumns[] = {{"id", Kind::number},         {"name"},
                                   {"type", Kind::number},       {"owner_id", Kind::number},
                                   {"sort_index", Kind::number}, {"users", Kind::number},
                                   {"groups", Kind::number}};
constexpr Column kShowColumns[] = {
    {"id", Kind::number},
    {"name"},
    {"path"},
    {"type", Kind::number},
    {"owner_id", Kind::number},
    {"public", Kind::flag},
    {"description"},
    {"creator"},
    {"created", Kind::date},
    {"sort_index", Kind::number},
    {"domain_id", Kind::number},
    {"style", Kind::number},
    {"groups", Kind::number},
    {"users", Kind::number},
    {"users_below", Kind::number},
};
constexpr Column kDefaultColumns[] = {{"name"}};

// ---- What is meant --------------------------------------------------------------------------------------------------

void RequireFreeName(const Organisation& organisation, const std::string& name, ItemKey self)
{
    organisation.RequireNoOther(organisation.SystemViewsNamed(name), name, self);
    const std::string others = fmt::format("Col_Type = {} AND Col_ID <> {}", kSystemView, self.id);
    if (const auto other = FindConfused(organisation.Connection(), "qv_View", name, others)) {
        ThrowConfused("name", name, *other);
    }
}

ViewData LoadView(Organisation& organisation, ItemKey key)
{
    return organisation.LoadView(key.id).value_or(ViewData{});
}

Value ShownType(int type) { return type == kSystemView ? Value(Choice{type, "system"}) : Value(std::int64_t{type}); }

/// The system view without an owner that bears the placeholder's name.
ItemKey FindPlaceholder(const Organisation& organisation)
{
    std::vector<ItemKey> found = organisation.SystemViewsNamed(kPlaceholder);
    std::erase_if(found, [&](ItemKey key) {
        const Node& place = *organisation.Find(key);
        return place.name != kPlaceholder || place.viewOwner != 0;
    });
    if (found.size() != 1) {
        throw Error(ErrorCode::conflict, FillPattern("there are {} of the name {}; rename them one by one",
                                                     Counted(found.size(), "view"), kPlaceholder));
    }
    return found.front();
}

std::string PresentDefault(Organisation& organisation)
{
    std::string name = organisation.DefaultViewName();
    if (name.empty()) {
        throw Error(ErrorCode::notFound, "there is no default view; `qvadmin view create` adds one");
    }
    return name;
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Result List(Call& call, const ViewFilter& in)
{
    const Organisation organisation(call.Connection());
    for (const Node& place : organisation.Nodes()) {
        const bool isWanted = place.key.type == kItemTypeView && (in.all || place.viewType == kSystemView);
        if (isWanted && !call.Row(std::int64_t{place.key.id}, place.name, ShownType(place.viewType),
                                  std::int64_t{place.viewOwner}, std::int64_t{place.sortIndex},
                                  std::int64_t{place.users}, static_cast<std::int64_t>(place.children.size()))) {
            break;
        }
    }
    return {};
}

Result Show(Call& call, const OneView& in)
{
    Organisation organisation(call.Connection());
    const ItemKey key = organisation.FindView(in.view);
    const Node& place = *organisation.Find(key);
    const ViewData view = LoadView(organisation, key);
    return ResultOf(Record{
        {"id", std::int64_t{key.id}},
        {"name", view.name},
        {"path", organisation.PathOf(key)},
        {"type", ShownType(view.type)},
        {"owner_id", std::int64_t{view.ownerId}},
        {"public", view.isPublic},
        {"description", view.description},
        {"creator", view.creator},
        {"created", OrAbsent(view.created)},
        {"sort_index", std::int64_t{view.sortIndex}},
        {"domain_id", std::int64_t{view.domainId}},
        {"style", std::int64_t{view.style}},
        {"groups", static_cast<std::int64_t>(place.children.size())},
        {"users", std::int64_t{place.users}},
        {"users_below", std::int64_t{organisation.UsersBelow(key)}},
    });
}

Result ShowDefault(Call& call, const DefaultView& /*in*/)
{
    Organisation organisation(call.Connection());
    return ResultOf(Record{{"name", PresentDefault(organisation)}});
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Result Create(Call& call, const NewView& in)
{
    CheckName("view", in.name);
    ViewData view;
    view.name = in.name;
    view.description = in.description.value_or("");
    view.creator = in.creator.value_or("");
    view.sortIndex = in.sortIndex.value_or(view.sortIndex);
    view.style = in.style.value_or(0);
    view.domainId = in.domainId.value_or(0);
    Organisation organisation(call.Connection());
    RequireFreeName(organisation, view.name, {});
    return ResultOf(Value(std::int64_t{organisation.CreateView(view)}));
}

Result Set(Call& call, const ViewToSet& in)
{
    if (!in.description && !in.sortIndex) {
        ThrowNothingToSet("view");
    }
    Organisation organisation(call.Connection());
    const ItemKey key = organisation.FindView(in.view);
    const ViewData stored = LoadView(organisation, key);
    ViewData view = stored;
    view.description = in.description.value_or(stored.description);
    view.sortIndex = in.sortIndex.value_or(stored.sortIndex);
    if (view == stored) {
        call.Report(
            organisation.OutcomeOf(key, "unchanged", FillPattern("nothing to change in {}", organisation.Named(key))));
        return Unchanged();
    }
    organisation.ChangeView(key.id, {in.description, in.sortIndex});
    call.Report(organisation.OutcomeOf(key, "changed", FillPattern("changed {}", organisation.Named(key))));
    return {};
}

Result Rename(Call& call, const ViewToRename& in)
{
    CheckName("view", in.name);
    Organisation organisation(call.Connection());
    const ItemKey key = organisation.FindView(in.view);
    // The views of single users may share their names.
    if (organisation.Find(key)->viewType == kSystemView) {
        RequireFreeName(organisation, in.name, key);
    }
    organisation.RenameView(key.id, in.name);
    call.Report(organisation.OutcomeOf(key, "renamed",
                                       FillPattern("renamed {} to {}", organisation.Named(key), Visible(in.name))));
    return {};
}

Result NameDefault(Call& call, const DefaultView& in)
{
    CheckName("view", *in.name);
    Organisation organisation(call.Connection());
    const std::string present = PresentDefault(organisation);
    if (present != kPlaceholder) {
        throw Error(ErrorCode::conflict,
                    FillPattern("the default view is called {} already; `qvadmin view rename` gives "
                                "it another name",
                                Quoted(present)));
    }
    const ItemKey view = FindPlaceholder(organisation);
    RequireFreeName(organisation, *in.name, view);
    organisation.NameDefaultView(*in.name);
    call.Report(organisation.OutcomeOf(view, "renamed", FillPattern("named the default view {}", Visible(*in.name))));
    return {};
}

struct Deletion : Plan {
    ItemKey view{};
    std::string name; ///< with its id

    bool operator==(const Deletion&) const = default;
};

Deletion PlanDeletion(Call& call, const OneView& in)
{
    Organisation organisation(call.Connection());
    Deletion deletion;
    deletion.view = organisation.FindView(in.view);
    deletion.name = organisation.Named(deletion.view);
    const std::size_t groups = organisation.Find(deletion.view)->children.size();
    const std::vector<Reference> references = organisation.References(kItemTypeView, {deletion.view.id});
    deletion.lines.push_back(FillPattern(
        "delete {}{}{}", deletion.name, WithReferences(references),
        groups == 0 ? "" : FillPattern("; {} directly below stay, without this view", Counted(groups, "group"))));
    deletion.question = FillPattern("Delete {}?", deletion.name);
    deletion.removed = 1 + CountOf(references);
    return deletion;
}

Result Delete(Call& call, const OneView& /*in*/, const Deletion& deletion)
{
    Organisation organisation(call.Connection());
    organisation.DeleteView(deletion.view.id);
    const std::size_t departments = SyncDepartments(organisation, deletion.view);
    call.Report(organisation.OutcomeOf(deletion.view, "deleted",
                                       FillPattern("deleted {}{}", deletion.name, WithDepartments(departments))));
    return {};
}

Result Stamp(Call& call, const OneView& in)
{
    Organisation organisation(call.Connection());
    const ItemKey key = organisation.FindView(in.view);
    const std::vector<ItemKey> cycle = organisation.FindCycle(key);
    if (!cycle.empty()) {
        throw Error(ErrorCode::conflict, FillPattern("{} cannot be stamped, groups are below themselves: {}",
                                                     organisation.Named(key), organisation.CycleText(cycle)));
    }
    organisation.StampView(key.id);
    call.Report(organisation.OutcomeOf(key, "stamped", FillPattern("stamped {}", organisation.Named(key))));
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"view", "list"},
     .summary = "the system's views",
     .examples = {"qvadmin view list", "qvadmin view list --all"},
     .columns = kListColumns,
     .handler = Read<&List, kListParams>()},
    {.path = {"view", "show"},
     .summary = "everything about a view",
     .examples = {"qvadmin view show Company", "qvadmin view show view:4"},
     .columns = kShowColumns,
     .handler = Read<&Show, kOneParams>()},
    {.path = {"view", "create"},
     .summary = "add a view of the system and print the new id",
     .examples = {"qvadmin view create Company --description 'Who works where'"},
     .effect = Effect::create,
     .handler = Write<&Create, kCreateParams>()},
    {.path = {"view", "set"},
     .summary = "change what is given and leave all else",
     .examples = {"qvadmin view set Company --sort-index 10"},
     .effect = Effect::change,
     .handler = Write<&Set, kSetParams>()},
    {.path = {"view", "rename"},
     .summary = "give a view another name",
     .examples = {"qvadmin view rename Company 'The Company'"},
     .effect = Effect::change,
     .handler = Write<&Rename, kRenameParams>()},
    {.path = {"view", "default"},
     .summary = "print the name of the default view, or name it for the first time",
     .examples = {"qvadmin view default", "qvadmin view default Company"},
     .effect = Effect::change,
     .columns = kDefaultColumns,
     .handler = ReadOrWrite<&DefaultView::name, &ShowDefault, &NameDefault, kDefaultParams>()},
    {.path = {"view", "delete"},
     .summary = "delete a view and its links; asks first",
     .examples = {"qvadmin view delete view:4"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanDeletion, &Delete, kOneParams>()},
    {.path = {"view", "stamp"},
     .summary = "write the view's id into the links of all users below it",
     .examples = {"qvadmin view stamp Company"},
     .effect = Effect::change,
     .handler = Write<&Stamp, kOneParams>()},
};

} // namespace

std::span<const Command> ViewCommands() { return kCommands; }

} // namespace management::organisation
