#include "console/GroupCommands.h"

#include "basefun/ItemTypes.h"
#include "console/Confirm.h"
#include "console/Opened.h"
#include "console/Render.h"
#include "console/Words.h"
#include "management/DatabaseError.h"
#include "management/Names.h"
#include "management/Text.h"
#include "management/organisation/DepartmentSync.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <map>

namespace console::group {

namespace {

using namespace words;

constexpr const char* kPlaceHelp = "/VIEW/GROUP, or id:NUMBER of a group, or view:NUMBER";
constexpr Field kGroup{"GROUP", "", {}, Field::Use::given, "/VIEW/GROUP, or id:NUMBER"};
constexpr Field kPlace{"PATH", "", {}, Field::Use::given, kPlaceHelp};
constexpr Field kNewPath{"PATH", "", {}, Field::Use::given, "where to add it: path of the parent, / and the new name"};
constexpr Field kParent{"PARENT", "", {}, Field::Use::given, kPlaceHelp};
constexpr Field kNewStyle{"N", "", {}, Field::Use::given, "style number to set"};
constexpr Field kText{"TEXT", "", {}, Field::Use::given, "part of the name, case not counting"};
constexpr Field kDepth{"depth", "", {}, Field::Use::given, "so many levels and no more"};
constexpr Field kUsers{"users", "", {}, Field::Use::given, "show the users too"};
constexpr Field kParents{"parents", "", {}, Field::Use::given, "add the groups above that are missing too"};
constexpr Field kFrom{"from", "", {}, Field::Use::given, "the parent to leave, when the group has several"};
constexpr Field kRecursive{"recursive", "", {}, Field::Use::given, "delete the groups below too; users stay"};

// ---- The tree -------------------------------------------------------------------------------------------------------

/// Why a group's children are not drawn below it.
enum class Mark { none, cycle, above };

/// A line of the tree: a view or group, a user, or the heading of what hangs nowhere.
struct Line {
    std::string prefix; ///< box characters
    std::size_t depth = 0;
    const Place* place = nullptr;
    const Member* user = nullptr;
    int usersBelow = 0;
    Mark mark = Mark::none;
};

/// Lays the organisation out in lines. A group that has been drawn already is drawn again without what hangs below it,
/// so that neither cycles nor groups in several places make the tree endless.
class TreeDrawing {
public:
    using Members = std::map<ItemKey, std::vector<Member>>;

    TreeDrawing(const Organisation& organisation, const Members& members, std::size_t deepest)
        : m_organisation(organisation),
          m_members(members),
          m_deepest(deepest),
          m_state(organisation.Places().size(), State::unseen)
    {
    }

    void Draw(std::size_t root)
    {
        Enter(root, "", "");
        Finish();
    }

    void DrawNowhere(const std::vector<std::size_t>& roots)
    {
        m_lines.emplace_back();
        m_steps.push_back({std::nullopt, "", roots, 0});
        Finish();
    }

    [[nodiscard]] const std::vector<Line>& Lines() const { return m_lines; }

private:
    enum class State : char { unseen, onWay, drawn };
    struct Step {
        std::optional<std::size_t> place; ///< none for the heading
        std::string indent;
        std::vector<std::size_t> children;
        std::size_t next = 0;
    };

    void Finish()
    {
        while (!m_steps.empty()) {
            Step& step = m_steps.back();
            if (step.next == step.children.size()) {
                if (step.place) {
                    m_state[*step.place] = State::drawn;
                }
                m_steps.pop_back();
                continue;
            }
            const std::size_t child = step.children[step.next++];
            const bool isLast = step.next == step.children.size();
            const std::string prefix = step.indent + (isLast ? "└── " : "├── ");
            const std::string indent = step.indent + (isLast ? "    " : "│   ");
            Enter(child, prefix, indent);
        }
    }

    void Enter(std::size_t index, const std::string& prefix, const std::string& indent)
    {
        const Place& place = m_organisation.Places()[index];
        const Mark mark = m_state[index] == State::onWay                              ? Mark::cycle
                          : m_state[index] == State::drawn && !place.children.empty() ? Mark::above
                                                                                      : Mark::none;
        const std::size_t depth = m_steps.size();
        m_lines.push_back({prefix, depth, &place, nullptr, m_organisation.UsersBelow(place.key), mark});
        if (mark != Mark::none || depth >= m_deepest) {
            return;
        }
        AddUsers(place, indent, depth + 1);
        m_state[index] = State::onWay;
        m_steps.push_back({index, indent, place.children});
    }

    void AddUsers(const Place& place, const std::string& indent, std::size_t depth)
    {
        const auto found = m_members.find(place.key);
        if (found == m_members.end()) {
            return;
        }
        for (const Member& user : found->second) {
            const bool isLast = place.children.empty() && &user == &found->second.back();
            m_lines.push_back({indent + (isLast ? "└── " : "├── "), depth, nullptr, &user});
        }
    }

    const Organisation& m_organisation;
    const Members& m_members;
    std::size_t m_deepest;
    std::vector<State> m_state;
    std::vector<Step> m_steps;
    std::vector<Line> m_lines;
};

std::string MarkText(Mark mark)
{
    return mark == Mark::cycle ? " [cycle: leads back to itself]" : mark == Mark::above ? " [shown above]" : "";
}

std::string Drawn(const Line& line)
{
    if (line.user != nullptr) {
        return fmt::format("{}{}: {}", line.prefix, Visible(line.user->login), Visible(line.user->name));
    }
    if (line.place == nullptr) {
        return "In no view:";
    }
    const std::string below = line.place->children.empty() ? std::string() : fmt::format(", {} below", line.usersBelow);
    return fmt::format("{}{} ({}{}){}", line.prefix, Visible(line.place->name), line.place->users, below,
                       MarkText(line.mark));
}

Table AsTable(const Organisation& organisation, const std::vector<Line>& lines)
{
    Table table{{"depth", "type", "id", "name", "path", "users", "users_below", "mark"}, {}};
    for (const Line& line : lines) {
        const auto depth = static_cast<std::int64_t>(line.depth);
        if (line.user != nullptr) {
            table.rows.push_back({depth, "user", std::int64_t{line.user->id}, line.user->login, {}, {}, {}, ""});
        } else if (line.place != nullptr) {
            const Place& place = *line.place;
            const char* mark = line.mark == Mark::cycle ? "cycle" : line.mark == Mark::above ? "above" : "";
            table.rows.push_back({depth, place.key.type == kItemTypeView ? "view" : "group", std::int64_t{place.key.id},
                                  place.name, organisation.PathOf(place.key), std::int64_t{place.users},
                                  std::int64_t{line.usersBelow}, mark});
        } else {
            table.rows.push_back({depth, "nowhere", {}, "", {}, {}, {}, ""});
        }
    }
    return table;
}

void DrawAll(const Organisation& organisation, TreeDrawing& drawing)
{
    std::vector<std::size_t> nowhere;
    const std::span<const Place> places = organisation.Places();
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (places[i].key.type == kItemTypeView && places[i].viewType == kSystemView) {
            drawing.Draw(i);
        } else if (!places[i].hangsInView && !places[i].via) {
            nowhere.push_back(i);
        }
    }
    if (!nowhere.empty()) {
        drawing.DrawNowhere(nowhere);
    }
}

// ---- Others ---------------------------------------------------------------------------------------------------------

template <class IsWanted>
std::vector<ItemKey> GroupsWhere(const Organisation& organisation, IsWanted isWanted)
{
    std::vector<ItemKey> groups;
    for (const Place& place : organisation.Places()) {
        if (place.key.type == kItemTypeGroup && isWanted(place)) {
            groups.push_back(place.key);
        }
    }
    return groups;
}

std::vector<ItemKey> Keys(const Organisation& organisation, const std::vector<std::size_t>& places)
{
    std::vector<ItemKey> keys;
    std::ranges::transform(places, std::back_inserter(keys),
                           [&](std::size_t place) { return organisation.Places()[place].key; });
    return keys;
}

std::string Paths(const Organisation& organisation, const std::vector<ItemKey>& keys)
{
    std::string text;
    for (const ItemKey key : keys) {
        text += (text.empty() ? "" : ", ") + organisation.PathOf(key);
    }
    return text;
}

void RefuseTaken(const Organisation& organisation, ItemKey parent, const std::string& name, ItemKey except)
{
    for (const ItemKey other : organisation.ChildrenNamed(parent, name)) {
        if (other != except) {
            throw Error(ErrorCode::conflict,
                        fmt::format("the name {} is taken by {}", Quoted(name), organisation.Named(other)));
        }
    }
    if (const auto other = organisation.FindConfusedChild(parent, name, except)) {
        ThrowConfused("name", name, *other);
    }
}

/// The parent of a new group, and the names to add below it; without --parents only one.
struct NewPlace {
    ItemKey parent;
    std::vector<std::string> names;
};

bool HasOneName(const std::string& path)
{
    return path.starts_with('/') ? SplitPath(path).size() == 1 : path.find('/') == std::string::npos;
}

NewPlace FindNewPlace(const Organisation& organisation, const std::string& path, bool withParents)
{
    ParentAndName parts = SplitLast(path);
    std::vector<std::string> names = {parts.name};
    while (withParents && !HasOneName(parts.parent) && organisation.FindAll(parts.parent).empty()) {
        parts = SplitLast(parts.parent);
        names.insert(names.begin(), parts.name);
    }
    return {organisation.FindHolder(parts.parent), names};
}

int CreateAt(Organisation& organisation, const NewPlace& place, const GroupData& group)
{
    RefuseTaken(organisation, place.parent, place.names.front(), {});
    ItemKey parent = place.parent;
    for (const std::string& name : place.names) {
        GroupData added = &name == &place.names.back() ? group : GroupData{};
        added.name = name;
        parent = {kItemTypeGroup, organisation.CreateGroup(parent, added)};
    }
    return parent.id;
}

GroupData LoadGroup(Organisation& organisation, ItemKey key)
{
    return organisation.LoadGroup(key.id).value_or(GroupData{});
}

/// The parent that a group leaves when it is moved; nothing for one that hangs nowhere.
std::optional<ItemKey> ParentToLeave(const Organisation& organisation, ItemKey group,
                                     const std::optional<std::string>& from)
{
    const std::vector<ItemKey> parents = Keys(organisation, organisation.Find(group)->parents);
    if (from) {
        const ItemKey parent = organisation.FindHolder(*from);
        if (std::ranges::find(parents, parent) == parents.end()) {
            throw Error(ErrorCode::notFound, fmt::format("{} is not directly under {}", organisation.Named(group),
                                                         organisation.Named(parent)));
        }
        return parent;
    }
    if (parents.size() > 1) {
        throw Error(ErrorCode::conflict,
                    fmt::format("{} is in several places; say with --from which of {} it is to leave",
                                organisation.Named(group), Visible(Paths(organisation, parents))));
    }
    return parents.empty() ? std::nullopt : std::optional(parents.front());
}

void RefuseCycle(const Organisation& organisation, ItemKey parent, ItemKey group)
{
    const std::vector<ItemKey> cycle = organisation.CycleClosedBy(parent, group);
    if (!cycle.empty()) {
        throw Error(ErrorCode::conflict, fmt::format("{} cannot go there, it would hang below itself: {}",
                                                     organisation.Named(group), organisation.CycleText(cycle)));
    }
}

std::vector<int> Ids(const std::vector<ItemKey>& keys)
{
    std::vector<int> ids;
    std::ranges::transform(keys, std::back_inserter(ids), &ItemKey::id);
    return ids;
}

/// What a deletion takes along.
struct Going {
    ItemKey group;
    std::string groupName; ///< with its id
    std::vector<int> ids;
    std::vector<Reference> traces;
    MemberCounts members;

    bool operator==(const Going&) const = default;
};

Going WhatGoes(Organisation& organisation, const Arguments& arguments)
{
    const ItemKey group = organisation.FindGroup(Given(arguments, kGroup).value_or(""));
    const Place& place = *organisation.Find(group);
    const bool isRecursive = Given(arguments, kRecursive).has_value();
    if (!isRecursive && (!place.children.empty() || place.users > 0)) {
        const std::vector<ItemKey> below = organisation.Below(group);
        std::vector<int> ids = Ids(below);
        ids.push_back(group.id);
        throw Error(ErrorCode::conflict,
                    fmt::format("{} holds {} and {}, on all levels; add --recursive to delete it, and the groups, all "
                                "the same",
                                organisation.Named(group), Counted(below.size(), "group"),
                                Counted(organisation.CountMembers(ids).users, "user")));
    }
    Going going{group, organisation.Named(group), Ids(organisation.GoneWith(group)), {}, {}};
    going.traces = organisation.References(kItemTypeGroup, going.ids);
    going.members = organisation.CountMembers(going.ids);
    return going;
}

std::string Described(const Going& going)
{
    const std::size_t below = going.ids.size() - 1;
    return going.groupName + (below == 0 ? "" : " and " + Counted(below, "group") + " below");
}

/// Who the members are, to end a sentence with.
std::string WithMembers(const MemberCounts& members)
{
    return members.users == 0 ? ""
                              : fmt::format("; members: {}, of whom {} will be in no group",
                                            Counted(members.users, "user"), members.inNoOther);
}

} // namespace

// ---- Arguments and options ------------------------------------------------------------------------------------------

void DeclareTree(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kPlace, false);
    DeclareNumber(app, arguments, kDepth);
    DeclareFlag(app, arguments, kUsers);
}

void DeclareList(CLI::App& app, Arguments& arguments) { DeclareArgument(app, arguments, kPlace, false); }

void DeclareOne(CLI::App& app, Arguments& arguments) { DeclareArgument(app, arguments, kGroup); }

void DeclareCreate(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kNewPath);
    DeclareOption(app, arguments, kDescription);
    DeclareNumber(app, arguments, kSortIndex);
    DeclareNumber(app, arguments, kStyle);
    DeclareOption(app, arguments, kCreator);
    DeclareFlag(app, arguments, kParents);
}

void DeclareSet(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareOption(app, arguments, kDescription);
    DeclareNumber(app, arguments, kSortIndex);
    DeclareNumber(app, arguments, kDomainId);
}

void DeclareRename(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareArgument(app, arguments, kName);
}

void DeclareMove(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareArgument(app, arguments, kParent);
    DeclareOption(app, arguments, kFrom);
}

void DeclareStyle(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    app.add_option_function<int>(
           std::string(kNewStyle.name),
           [&arguments](int number) { arguments.fields[&kNewStyle] = std::to_string(number); },
           std::string(kNewStyle.help))
        ->type_name("");
}

void DeclareDelete(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareFlag(app, arguments, kRecursive);
    DeclareYes(app, arguments);
}

void DeclareFind(CLI::App& app, Arguments& arguments) { DeclareArgument(app, arguments, kText); }

// ---- Reading --------------------------------------------------------------------------------------------------------

Exit Tree(const Context& context)
{
    const Arguments& arguments = context.arguments;
    const std::optional<int> depth = GivenNumber(arguments, kDepth);
    if (depth && *depth < 0) {
        throw Error(ErrorCode::invalid, "--depth is below 0");
    }
    Opened opened(arguments);
    Organisation organisation(opened.Directory().Connection());
    const TreeDrawing::Members members = Given(arguments, kUsers) ? organisation.LoadMembers() : TreeDrawing::Members{};
    TreeDrawing drawing(organisation, members,
                        depth ? static_cast<std::size_t>(*depth) : std::numeric_limits<std::size_t>::max());
    if (const std::optional<std::string> path = Given(arguments, kPlace)) {
        drawing.Draw(organisation.NumberOf(organisation.FindHolder(*path)));
    } else {
        DrawAll(organisation, drawing);
    }
    if (arguments.format != Format::table) {
        Render(arguments.format, AsTable(organisation, drawing.Lines()), context.terminal.out);
        return Exit::done;
    }
    for (const Line& line : drawing.Lines()) {
        context.terminal.out << Drawn(line) << '\n';
    }
    return Exit::done;
}

Exit List(const Context& context)
{
    Opened opened(context.arguments);
    const Organisation organisation(opened.Directory().Connection());
    const std::optional<std::string> path = Given(context.arguments, kPlace);
    const std::vector<ItemKey> groups =
        path ? Keys(organisation, organisation.Find(organisation.FindHolder(*path))->children)
             : GroupsWhere(organisation, [](const Place&) { return true; });
    TableWriter writer(context.arguments.format, {"id", "name", "path", "sort_index", "users", "groups"},
                       context.terminal.out);
    for (const ItemKey key : groups) {
        const Place& place = *organisation.Find(key);
        if (!writer.Write(MakeRow(std::int64_t{key.id}, place.name, organisation.PathOf(key),
                                  std::int64_t{place.sortIndex}, std::int64_t{place.users},
                                  static_cast<std::int64_t>(place.children.size())))) {
            break;
        }
    }
    writer.Finish();
    return Exit::done;
}

Exit Show(const Context& context)
{
    Opened opened(context.arguments);
    Organisation organisation(opened.Directory().Connection());
    const ItemKey key = organisation.FindGroup(Given(context.arguments, kGroup).value_or(""));
    const Place& place = *organisation.Find(key);
    const GroupData group = LoadGroup(organisation, key);
    const Record record = {
        {"id", std::int64_t{key.id}},
        {"name", group.name},
        {"path", organisation.PathOf(key)},
        {"parents", Paths(organisation, Keys(organisation, place.parents))},
        {"description", group.description},
        {"creator", group.creator},
        {"created", group.created ? Value(*group.created) : Value()},
        {"sort_index", std::int64_t{group.sortIndex}},
        {"domain_id", std::int64_t{group.domainId}},
        {"style", std::int64_t{group.style}},
        {"groups", static_cast<std::int64_t>(place.children.size())},
        {"users", std::int64_t{place.users}},
        {"users_below", std::int64_t{organisation.UsersBelow(key)}},
    };
    Render(context.arguments.format, record, context.terminal.out);
    return Exit::done;
}

Exit Find(const Context& context)
{
    Opened opened(context.arguments);
    const Organisation organisation(opened.Directory().Connection());
    const std::string part = NameKey(Given(context.arguments, kText).value_or(""));
    const std::vector<ItemKey> groups = GroupsWhere(
        organisation, [&part](const Place& place) { return place.nameKey.find(part) != std::string::npos; });
    TableWriter writer(context.arguments.format, {"id", "path"}, context.terminal.out);
    for (const ItemKey key : groups) {
        if (!writer.Write(MakeRow(std::int64_t{key.id}, organisation.PathOf(key)))) {
            break;
        }
    }
    writer.Finish();
    return Exit::done;
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Exit Create(const Context& context)
{
    const Arguments& arguments = context.arguments;
    const std::string path = Given(arguments, kNewPath).value_or("");
    CheckName("group", SplitLast(path).name);
    GroupData group;
    group.description = Given(arguments, kDescription).value_or("");
    group.creator = Given(arguments, kCreator).value_or("");
    group.sortIndex = GivenNumber(arguments, kSortIndex).value_or(group.sortIndex);
    group.style = GivenNumber(arguments, kStyle).value_or(0);
    Opened opened(arguments);
    Transaction transaction(opened.Directory().Connection());
    Organisation organisation(opened.Directory().Connection());
    const NewPlace place = FindNewPlace(organisation, path, Given(arguments, kParents).has_value());
    for (const std::string& name : place.names) {
        CheckName("group", name);
    }
    const int id = CreateAt(organisation, place, group);
    transaction.Commit();
    context.terminal.out << id << '\n';
    return Exit::done;
}

Exit Set(const Context& context)
{
    const Arguments& arguments = context.arguments;
    const GroupChanges changes{
        {}, Given(arguments, kDescription), GivenNumber(arguments, kSortIndex), GivenNumber(arguments, kDomainId)};
    if (!changes.description && !changes.sortIndex && !changes.domainId) {
        throw Error(ErrorCode::invalid, "there is nothing to set; `qvadmin group set --help` lists what can be");
    }
    Opened opened(arguments);
    Transaction transaction(opened.Directory().Connection());
    Organisation organisation(opened.Directory().Connection());
    const ItemKey key = organisation.FindGroup(Given(arguments, kGroup).value_or(""));
    const GroupData stored = LoadGroup(organisation, key);
    GroupData group = stored;
    group.description = changes.description.value_or(stored.description);
    group.sortIndex = changes.sortIndex.value_or(stored.sortIndex);
    group.domainId = changes.domainId.value_or(stored.domainId);
    const bool changed = group != stored;
    if (changed) {
        organisation.ChangeGroup(key.id, changes);
    }
    transaction.Commit();
    context.terminal.err << fmt::format("{} {}\n", changed ? "changed" : "nothing to change in",
                                        organisation.Named(key));
    return Exit::done;
}

Exit Rename(const Context& context)
{
    const std::string name = Given(context.arguments, kName).value_or("");
    CheckName("group", name);
    Opened opened(context.arguments);
    Transaction transaction(opened.Directory().Connection());
    Organisation organisation(opened.Directory().Connection());
    const ItemKey key = organisation.FindGroup(Given(context.arguments, kGroup).value_or(""));
    for (const ItemKey parent : Keys(organisation, organisation.Find(key)->parents)) {
        RefuseTaken(organisation, parent, name, key);
    }
    organisation.ChangeGroup(key.id, {name, {}, {}, {}});
    const std::size_t departments = SyncDepartments(organisation, key);
    transaction.Commit();
    context.terminal.err << fmt::format("renamed {} to {}{}\n", organisation.Named(key), Visible(name),
                                        WithDepartments(departments));
    return Exit::done;
}

Exit Move(const Context& context)
{
    const Arguments& arguments = context.arguments;
    Opened opened(arguments);
    Transaction transaction(opened.Directory().Connection());
    Organisation organisation(opened.Directory().Connection());
    const ItemKey group = organisation.FindGroup(Given(arguments, kGroup).value_or(""));
    const ItemKey parent = organisation.FindHolder(Given(arguments, kParent).value_or(""));
    const std::optional<ItemKey> left = ParentToLeave(organisation, group, Given(arguments, kFrom));
    if (left == parent) {
        context.terminal.err << fmt::format("{} is there already\n", organisation.Named(group));
        return Exit::done;
    }
    RefuseCycle(organisation, parent, group);
    RefuseTaken(organisation, parent, organisation.Find(group)->name, group);
    const std::vector<ItemKey> parents = Keys(organisation, organisation.Find(group)->parents);
    if (left) {
        organisation.RemoveMember(*left, group);
    }
    if (std::ranges::find(parents, parent) == parents.end()) {
        organisation.AddMember(parent, group);
    }
    const std::size_t departments = SyncDepartments(organisation, group);
    transaction.Commit();
    context.terminal.err << fmt::format("moved {} to {}{}\n", organisation.Named(group), organisation.Named(parent),
                                        WithDepartments(departments));
    return Exit::done;
}

Exit Style(const Context& context)
{
    const std::string written = Given(context.arguments, kGroup).value_or("");
    const std::optional<int> style = GivenNumber(context.arguments, kNewStyle);
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    if (!style) {
        Organisation organisation(conn);
        const int present = organisation.GroupStyle(organisation.FindGroup(written).id);
        Render(context.arguments.format, Record{{"style", std::int64_t{present}}}, context.terminal.out);
        return Exit::done;
    }
    Transaction transaction(conn);
    Organisation organisation(conn);
    const ItemKey key = organisation.FindGroup(written);
    organisation.SetGroupStyle(key.id, *style);
    transaction.Commit();
    context.terminal.err << fmt::format("changed {}\n", organisation.Named(key));
    return Exit::done;
}

Exit Delete(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Organisation organisation(conn);
    const Going told = WhatGoes(organisation, context.arguments);
    const std::string described = Described(told);
    context.terminal.err << fmt::format("delete {}{}{}\n", described, WithReferences(told.traces),
                                        WithMembers(told.members));
    RequireConfirmation(context, fmt::format("Delete {}?", described), told.ids.size() + CountOf(told.traces));
    Transaction transaction(conn);
    Organisation present(conn);
    ThrowIfChanged(told, WhatGoes(present, context.arguments));
    present.DeleteGroups(told.ids);
    const std::size_t departments = SyncDepartments(present, told.group);
    transaction.Commit();
    context.terminal.err << fmt::format("deleted {}{}\n", Counted(told.ids.size(), "group"),
                                        WithDepartments(departments));
    return Exit::done;
}

} // namespace console::group
