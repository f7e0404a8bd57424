#include "basefun/ItemTypes.h"
#include "management/Command.h"
#include "management/Names.h"
#include "management/Paths.h"
#include "management/References.h"
#include "management/Text.h"
#include "management/TreeDrawing.h"
#include "management/organisation/DepartmentSync.h"
#include "management/organisation/Organisation.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <map>

namespace management::organisation {

namespace {

constexpr std::string_view kHolderHelp = "/VIEW/GROUP, or id:NUMBER of a group, or view:NUMBER";

// ---- Parameters -----------------------------------------------------------------------------------------------------

struct TreeToDraw {
    std::optional<std::string> top;
    std::optional<int> depth;
    bool users = false;
};

constexpr Param<TreeToDraw> kTreeParams[] = {
    {"PATH", &TreeToDraw::top, Kind::group, kHolderHelp},
    {"depth", &TreeToDraw::depth, Kind::number, "so many levels and no more",
     Range{0, std::numeric_limits<int>::max()}},
    {"users", &TreeToDraw::users, Kind::flag, "show the users too"},
};

struct GroupFilter {
    std::optional<std::string> parent;
};

constexpr Param<GroupFilter> kListParams[] = {{"PATH", &GroupFilter::parent, Kind::group, kHolderHelp}};

struct OneGroup {
    std::string group;
};

constexpr Param<OneGroup> kOneParams[] = {{"GROUP", &OneGroup::group, Kind::group, kGroupHelp}};

struct NewGroupAt {
    std::string path;
    std::optional<std::string> description;
    std::optional<int> sortIndex;
    std::optional<int> style;
    std::optional<std::string> creator;
    bool parents = false;
};

constexpr Param<NewGroupAt> kCreateParams[] = {
    {"PATH", &NewGroupAt::path, Kind::text, "where to add it: path of the parent, / and the new name"},
    {"description", &NewGroupAt::description, Kind::text, kDescriptionHelp},
    {"sort_index", &NewGroupAt::sortIndex, Kind::number, kSortIndexHelp},
    {"style", &NewGroupAt::style, Kind::number, "style number"},
    {"creator", &NewGroupAt::creator, Kind::text, "who made it"},
    {"parents", &NewGroupAt::parents, Kind::flag, "add the groups above that are missing too"},
};

struct GroupToSet {
    std::string group;
    std::optional<std::string> description;
    std::optional<int> sortIndex;
    std::optional<int> domainId;
};

constexpr Param<GroupToSet> kSetParams[] = {
    {"GROUP", &GroupToSet::group, Kind::group, kGroupHelp},
    {"description", &GroupToSet::description, Kind::text, kDescriptionHelp},
    {"sort_index", &GroupToSet::sortIndex, Kind::number, kSortIndexHelp},
    {"domain_id", &GroupToSet::domainId, Kind::number, "domain number"},
};

struct GroupToRename {
    std::string group;
    std::string name;
};

constexpr Param<GroupToRename> kRenameParams[] = {
    {"GROUP", &GroupToRename::group, Kind::group, kGroupHelp},
    {"NAME", &GroupToRename::name, Kind::text, "the name as it is, not as in a path"},
};

struct GroupToMove {
    std::string group;
    std::string parent;
    std::optional<std::string> from;
};

constexpr Param<GroupToMove> kMoveParams[] = {
    {"GROUP", &GroupToMove::group, Kind::group, kGroupHelp},
    {"PARENT", &GroupToMove::parent, Kind::group, kHolderHelp},
    {"from", &GroupToMove::from, Kind::group, "the parent to leave, when the group has several"},
};

struct GroupToStyle {
    std::string group;
    std::optional<int> style;
};

constexpr Param<GroupToStyle> kStyleParams[] = {
    {"GROUP", &GroupToStyle::group, Kind::group, kGroupHelp},
    {"N", &GroupToStyle::style, Kind::number, "style number to set"},
};

struct GroupToDelete {
    std::string group;
    bool recursive = false;
};

constexpr Param<GroupToDelete> kDeleteParams[] = {
    {"GROUP", &GroupToDelete::group, Kind::group, kGroupHelp},
    {"recursive", &GroupToDelete::recursive, Kind::flag, "delete the groups below too; users stay"},
};

struct PartOfName {
    std::string text;
};

constexpr Param<PartOfName> kFindParams[] = {
    {"TEXT", &PartOfName::text, Kind::text, "part of the name, case not counting"}};

constexpr Column kTreeColumns[] = {
    {"depth", Kind::number},       {"type"}, {"id", Kind::number}, {"name"}, {"path"}, {"users", Kind::number},
    {"users_below", Kind::number}, {"mark"}};
constexpr Column kListColumns[] = {
    {"id", Kind::number},    {"name"}, {"path"}, {"sort_index", Kind::number}, {"users", Kind::number},
    {"groups", Kind::number}};
constexpr Column kShowColumns[] = {
    {"id", Kind::number},
    {"name"},
    {"path"},
    {"parents"},
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
constexpr Column kStyleColumns[] = {{"style", Kind::number}};
constexpr Column kFindColumns[] = {{"id", Kind::number}, {"path"}};

// ---- What is meant --------------------------------------------------------------------------------------------------

template <class IsWanted>
std::vector<ItemKey> GroupsWhere(const Organisation& organisation, IsWanted isWanted)
{
    std::vector<ItemKey> groups;
    for (const Node& place : organisation.Nodes()) {
        if (place.key.type == kItemTypeGroup && isWanted(place)) {
            groups.push_back(place.key);
        }
    }
    return groups;
}

void RequireFreeName(const Organisation& organisation, ItemKey parent, const std::string& name, ItemKey self)
{
    organisation.RequireNoOther(organisation.ChildrenNamed(parent, name), name, self);
    if (const auto other = organisation.FindConfusedChild(parent, name, self)) {
        ThrowConfused("name", name, *other);
    }
}

GroupData LoadGroup(Organisation& organisation, ItemKey key)
{
    return organisation.LoadGroup(key.id).value_or(GroupData{});
}

/// The parent that a group leaves when it is moved; nothing for one without a parent.
std::optional<ItemKey> ParentToLeave(const Organisation& organisation, ItemKey group,
                                     const std::optional<std::string>& from)
{
    const std::vector<ItemKey> parents = organisation.Keys(organisation.Find(group)->parents);
    if (from) {
        const ItemKey parent = organisation.FindHolder(*from);
        if (std::ranges::find(parents, parent) == parents.end()) {
            throw Error(ErrorCode::notFound, FillPattern("{} is not directly under {}", organisation.Named(group),
                                                         organisation.Named(parent)));
        }
        return parent;
    }
    if (parents.size() > 1) {
        throw Error(ErrorCode::conflict,
                    FillPattern("{} is in several places; say with --from which of {} it is to leave",
                                organisation.Named(group), Visible(PathsOf(organisation, parents))));
    }
    return parents.empty() ? std::nullopt : std::optional(parents.front());
}

void ThrowIfCycle(const Organisation& organisation, ItemKey parent, ItemKey group)
{
    const std::vector<ItemKey> cycle = organisation.CycleClosedBy(parent, group);
    if (!cycle.empty()) {
        throw Error(ErrorCode::conflict, FillPattern("{} cannot go there, it would be below itself: {}",
                                                     organisation.Named(group), organisation.CycleText(cycle)));
    }
}

std::vector<int> Ids(const std::vector<ItemKey>& keys)
{
    std::vector<int> ids;
    std::ranges::transform(keys, std::back_inserter(ids), &ItemKey::id);
    return ids;
}

// ---- The tree -------------------------------------------------------------------------------------------------------

/// Hands the lines of the organisation's tree to the front end.
class TreeRows {
public:
    using Members = std::map<ItemKey, std::vector<Member>>;

    TreeRows(const Call& call, const Organisation& organisation, const Members& members)
        : m_call(call), m_organisation(organisation), m_nodes(organisation.Nodes()), m_members(members)
    {
    }

    [[nodiscard]] TreeNodes Nodes() const
    {
        return {m_nodes.size(),
                [this](std::size_t node) { return std::span<const std::size_t>(m_nodes[node].children); },
                [this](std::size_t node) { return MembersOf(node).size(); }};
    }

    [[nodiscard]] bool Give(const TreeLine& line) const
    {
        const auto depth = static_cast<std::int64_t>(line.depth);
        if (!line.node) {
            return m_call.TreeRow(line.Drawn("In no view:"), depth, "nowhere", Value(), "", Value(), Value(), Value(),
                                  "");
        }
        if (line.leaf) {
            const Member& user = MembersOf(*line.node)[*line.leaf];
            return m_call.TreeRow(line.Drawn(fmt::format("{}: {}", Visible(user.login), Visible(user.name))), depth,
                                  "user", std::int64_t{user.id}, user.login, Value(), Value(), Value(), "");
        }
        const Node& place = m_nodes[*line.node];
        const int usersBelow = m_organisation.UsersBelow(place.key);
        const std::string below = place.children.empty() ? std::string() : fmt::format(", {} below", usersBelow);
        return m_call.TreeRow(line.Drawn(fmt::format("{} ({}{})", Visible(place.name), place.users, below)), depth,
                              place.key.type == kItemTypeView ? "view" : "group", std::int64_t{place.key.id},
                              place.name, m_organisation.PathOf(place.key), std::int64_t{place.users},
                              std::int64_t{usersBelow}, TextValue(std::string(NameOf(line.mark))));
    }

private:
    [[nodiscard]] std::span<const Member> MembersOf(std::size_t node) const
    {
        const auto found = m_members.find(m_nodes[node].key);
        return found == m_members.end() ? std::span<const Member>() : std::span(found->second);
    }

    const Call& m_call;
    const Organisation& m_organisation;
    std::span<const Node> m_nodes;
    const Members& m_members;
};

Result Tree(Call& call, const TreeToDraw& in)
{
    Organisation organisation(call.Connection());
    const TreeRows::Members members = in.users ? organisation.LoadMembers() : TreeRows::Members();
    const TreeRows rows(call, organisation, members);
    TreeDrawing drawing(rows.Nodes(), in.depth, [&rows](const TreeLine& line) { return rows.Give(line); });
    if (in.top) {
        drawing.Draw(organisation.NumberOf(organisation.FindHolder(*in.top)));
        return {};
    }
    const auto isRoot = [](const Node& place) {
        return place.key.type == kItemTypeView && place.viewType == kSystemView;
    };
    const auto isUnrooted = [](const Node& place) { return !place.isReachable && !place.parent; };
    drawing.DrawAll(NumbersWhere(organisation.Nodes(), isRoot), NumbersWhere(organisation.Nodes(), isUnrooted));
    return {};
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Result List(Call& call, const GroupFilter& in)
{
    const Organisation organisation(call.Connection());
    const std::vector<ItemKey> groups =
        in.parent ? organisation.Keys(organisation.Find(organisation.FindHolder(*in.parent))->children)
                  : GroupsWhere(organisation, [](const Node&) { return true; });
    for (const ItemKey key : groups) {
        const Node& place = *organisation.Find(key);
        if (!call.Row(std::int64_t{key.id}, place.name, organisation.PathOf(key), std::int64_t{place.sortIndex},
                      std::int64_t{place.users}, static_cast<std::int64_t>(place.children.size()))) {
            break;
        }
    }
    return {};
}

Result Show(Call& call, const OneGroup& in)
{
    Organisation organisation(call.Connection());
    const ItemKey key = organisation.FindGroup(in.group);
    const Node& place = *organisation.Find(key);
    const GroupData group = LoadGroup(organisation, key);
    return ResultOf(Record{
        {"id", std::int64_t{key.id}},
        {"name", group.name},
        {"path", organisation.PathOf(key)},
        {"parents", PathsOf(organisation, organisation.Keys(place.parents))},
        {"description", group.description},
        {"creator", group.creator},
        {"created", OrAbsent(group.created)},
        {"sort_index", std::int64_t{group.sortIndex}},
        {"domain_id", std::int64_t{group.domainId}},
        {"style", std::int64_t{group.style}},
        {"groups", static_cast<std::int64_t>(place.children.size())},
        {"users", std::int64_t{place.users}},
        {"users_below", std::int64_t{organisation.UsersBelow(key)}},
    });
}

Result ShowStyle(Call& call, const GroupToStyle& in)
{
    Organisation organisation(call.Connection());
    const int style = organisation.GroupStyle(organisation.FindGroup(in.group).id);
    return ResultOf(Record{{"style", std::int64_t{style}}});
}

Result Find(Call& call, const PartOfName& in)
{
    const Organisation organisation(call.Connection());
    const std::string part = NameKey(in.text);
    const std::vector<ItemKey> groups =
        GroupsWhere(organisation, [&part](const Node& place) { return place.nameKey.find(part) != std::string::npos; });
    for (const ItemKey key : groups) {
        if (!call.Row(std::int64_t{key.id}, organisation.PathOf(key))) {
            break;
        }
    }
    return {};
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Result Create(Call& call, const NewGroupAt& in)
{
    CheckName("group", SplitLast(in.path).name);
    Organisation organisation(call.Connection());
    const NewPath path = SplitNewPath(in.path, in.parents, &SplitLast, [&organisation](const std::string& parent) {
        return !organisation.FindAll(parent).empty();
    });
    ItemKey key = organisation.FindHolder(path.parent);
    for (const std::string& name : path.names) {
        CheckName("group", name);
    }
    RequireFreeName(organisation, key, path.names.front(), {});
    for (const std::string& name : path.names) {
        GroupData group;
        group.name = name;
        if (&name == &path.names.back()) {
            group.description = in.description.value_or("");
            group.creator = in.creator.value_or("");
            group.sortIndex = in.sortIndex.value_or(group.sortIndex);
            group.style = in.style.value_or(0);
        }
        key = {kItemTypeGroup, organisation.CreateGroup(key, group)};
    }
    return ResultOf(Value(std::int64_t{key.id}));
}

Result Set(Call& call, const GroupToSet& in)
{
    if (!in.description && !in.sortIndex && !in.domainId) {
        ThrowNothingToSet("group");
    }
    Organisation organisation(call.Connection());
    const ItemKey key = organisation.FindGroup(in.group);
    const GroupData stored = LoadGroup(organisation, key);
    GroupData group = stored;
    group.description = in.description.value_or(stored.description);
    group.sortIndex = in.sortIndex.value_or(stored.sortIndex);
    group.domainId = in.domainId.value_or(stored.domainId);
    if (group == stored) {
        call.Report(
            organisation.OutcomeOf(key, "unchanged", FillPattern("nothing to change in {}", organisation.Named(key))));
        return Unchanged();
    }
    organisation.ChangeGroup(key.id, {{}, in.description, in.sortIndex, in.domainId});
    call.Report(organisation.OutcomeOf(key, "changed", FillPattern("changed {}", organisation.Named(key))));
    return {};
}

Result Rename(Call& call, const GroupToRename& in)
{
    CheckName("group", in.name);
    Organisation organisation(call.Connection());
    const ItemKey key = organisation.FindGroup(in.group);
    for (const ItemKey parent : organisation.Keys(organisation.Find(key)->parents)) {
        RequireFreeName(organisation, parent, in.name, key);
    }
    organisation.ChangeGroup(key.id, {in.name, {}, {}, {}});
    const std::size_t departments = SyncDepartments(organisation, key);
    call.Report(organisation.OutcomeOf(
        key, "renamed",
        FillPattern("renamed {} to {}{}", organisation.Named(key), Visible(in.name), WithDepartments(departments))));
    return {};
}

Result Move(Call& call, const GroupToMove& in)
{
    Organisation organisation(call.Connection());
    const ItemKey group = organisation.FindGroup(in.group);
    const ItemKey parent = organisation.FindHolder(in.parent);
    const std::optional<ItemKey> left = ParentToLeave(organisation, group, in.from);
    if (left == parent) {
        call.Report(
            organisation.OutcomeOf(group, "unchanged", FillPattern("{} is there already", organisation.Named(group))));
        return Unchanged();
    }
    ThrowIfCycle(organisation, parent, group);
    RequireFreeName(organisation, parent, organisation.Find(group)->name, group);
    const std::vector<ItemKey> parents = organisation.Keys(organisation.Find(group)->parents);
    if (left) {
        organisation.RemoveMember(*left, group);
    }
    if (std::ranges::find(parents, parent) == parents.end()) {
        organisation.AddMember(parent, group);
    }
    const std::size_t departments = SyncDepartments(organisation, group);
    call.Report(organisation.OutcomeOf(group, "moved",
                                       FillPattern("moved {} to {}{}", organisation.Named(group),
                                                   organisation.Named(parent), WithDepartments(departments))));
    return {};
}

Result SetStyle(Call& call, const GroupToStyle& in)
{
    Organisation organisation(call.Connection());
    const ItemKey key = organisation.FindGroup(in.group);
    organisation.SetGroupStyle(key.id, *in.style);
    call.Report(organisation.OutcomeOf(key, "changed", FillPattern("changed {}", organisation.Named(key))));
    return {};
}

struct Deletion : Plan {
    ItemKey group{};
    std::vector<int> ids; ///< of the group and those that go along

    bool operator==(const Deletion&) const = default;
};

void ThrowIfHolding(Organisation& organisation, ItemKey group)
{
    const Node& place = *organisation.Find(group);
    if (place.children.empty() && place.users == 0) {
        return;
    }
    const std::vector<ItemKey> below = organisation.Below(group);
    std::vector<int> ids = Ids(below);
    ids.push_back(group.id);
    throw Error(ErrorCode::conflict,
                FillPattern("{} holds {} and {}, on all levels; add --recursive to delete it, and the groups, all the "
                            "same",
                            organisation.Named(group), Counted(below.size(), "group"),
                            Counted(organisation.CountMembers(ids).users, "user")));
}

/// Who the members are, to end a sentence with.
Sentence WithMembers(const MemberCounts& members)
{
    return members.users == 0 ? ""
                              : FillPattern("; members: {}, of whom {} will be in no group",
                                            Counted(members.users, "user"), members.inNoOther);
}

Deletion PlanDeletion(Call& call, const GroupToDelete& in)
{
    Organisation organisation(call.Connection());
    Deletion deletion;
    deletion.group = organisation.FindGroup(in.group);
    if (!in.recursive) {
        ThrowIfHolding(organisation, deletion.group);
    }
    deletion.ids = Ids(organisation.OrphanedBy(deletion.group));
    const std::size_t below = deletion.ids.size() - 1;
    const Sentence named = organisation.Named(deletion.group);
    const Sentence subject = below == 0 ? named : FillPattern("{} and {} below", named, Counted(below, "group"));
    const std::vector<Reference> references = organisation.References(kItemTypeGroup, deletion.ids);
    deletion.lines.push_back(FillPattern("delete {}{}{}", subject, WithReferences(references),
                                         WithMembers(organisation.CountMembers(deletion.ids))));
    deletion.question = FillPattern("Delete {}?", subject);
    deletion.removed = deletion.ids.size() + CountOf(references);
    return deletion;
}

Result Delete(Call& call, const GroupToDelete& /*in*/, const Deletion& deletion)
{
    Organisation organisation(call.Connection());
    organisation.DeleteGroups(deletion.ids);
    const std::size_t departments = SyncDepartments(organisation, deletion.group);
    call.Report(organisation.OutcomeOf(
        deletion.group, "deleted",
        FillPattern("deleted {}{}", Counted(deletion.ids.size(), "group"), WithDepartments(departments))));
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"group", "tree"},
     .summary = "draw the organisation, with how many people are where",
     .examples = {"qvadmin group tree", "qvadmin group tree /Company/Sales --depth 2 --users"},
     .columns = kTreeColumns,
     .isTree = true,
     .handler = ReadSnapshot<&Tree, kTreeParams>()},
    {.path = {"group", "list"},
     .summary = "all groups, or those directly under a view or group",
     .examples = {"qvadmin group list", "qvadmin group list /Company -o csv"},
     .columns = kListColumns,
     .handler = Read<&List, kListParams>()},
    {.path = {"group", "show"},
     .summary = "everything about a group",
     .examples = {"qvadmin group show /Company/Sales", "qvadmin group show id:17 -o json"},
     .columns = kShowColumns,
     .handler = Read<&Show, kOneParams>()},
    {.path = {"group", "create"},
     .summary = "add a group and print the new id",
     .examples = {"qvadmin group create /Company/Sales --description 'Sells things'",
                  "qvadmin group create /Company/Sales/North/Team --parents",
                  "qvadmin group create '/Company/Research\\/Development'"},
     .effect = Effect::create,
     .handler = Write<&Create, kCreateParams>()},
    {.path = {"group", "set"},
     .summary = "change what is given and leave all else",
     .examples = {"qvadmin group set /Company/Sales --sort-index 10"},
     .effect = Effect::change,
     .handler = Write<&Set, kSetParams>()},
    {.path = {"group", "rename"},
     .summary = "give a group another name",
     .examples = {"qvadmin group rename /Company/Sales Selling"},
     .effect = Effect::change,
     .handler = Write<&Rename, kRenameParams>()},
    {.path = {"group", "move"},
     .summary = "move a group, with all below it, to another parent",
     .examples = {"qvadmin group move /Company/Sales/North /Company/Service",
                  "qvadmin group move id:17 /Company --from /Old"},
     .effect = Effect::change,
     .handler = Write<&Move, kMoveParams>()},
    {.path = {"group", "style"},
     .summary = "print a group's style, or set it",
     .examples = {"qvadmin group style /Company/Sales", "qvadmin group style /Company/Sales 2"},
     .effect = Effect::change,
     .columns = kStyleColumns,
     .handler = ReadOrWrite<&GroupToStyle::style, &ShowStyle, &SetStyle, kStyleParams>()},
    {.path = {"group", "delete"},
     .summary = "delete a group and what is kept about it elsewhere; asks first",
     .examples = {"qvadmin group delete /Company/Sales", "qvadmin group delete id:17 --recursive --yes"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanDeletion, &Delete, kDeleteParams>()},
    {.path = {"group", "find"},
     .summary = "groups with a text in the name, wherever they are",
     .examples = {"qvadmin group find sales"},
     .columns = kFindColumns,
     .handler = Read<&Find, kFindParams>()},
};

} // namespace

std::span<const Command> GroupCommands() { return kCommands; }

} // namespace management::organisation
