#include "basefun/ItemTypes.h"
#include "management/Command.h"
#include "management/FindEach.h"
#include "management/Items.h"
#include "management/Names.h"
#include "management/Text.h"
#include "management/organisation/Organisation.h"
#include "management/plans/Plans.h"
#include "management/users/ChosenUsers.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

namespace management::plans {

namespace {

/// More items than these are reported as numbers.
constexpr std::size_t kLongestList = 20;

constexpr std::string_view kPlanHelp = "name of a backup plan as it is, or id:NUMBER";
constexpr std::string_view kNewNameHelp = "name to have from now on";
constexpr std::string_view kDataHelp = "settings, as the backup service understands them";
constexpr std::string_view kDataFileHelp = "file with the settings, taken as it is";
constexpr std::string_view kItemHelp = "user:LOGIN or group:/VIEW/GROUP, also with id:NUMBER";

// ---- Parameters -----------------------------------------------------------------------------------------------------

struct OnePlan {
    std::string plan;
};

constexpr Param<OnePlan> kOneParams[] = {{"PLAN", &OnePlan::plan, Kind::plan, kPlanHelp}};

struct NewPlan {
    std::string name;
    std::optional<std::string> description;
    std::optional<std::string> data;
    std::optional<std::string> dataFile;
};

constexpr Param<NewPlan> kCreateParams[] = {
    {"NAME", &NewPlan::name, Kind::text, "name of the new backup plan"},
    {"description", &NewPlan::description, Kind::text, kDescriptionHelp},
    {"data", &NewPlan::data, Kind::text, kDataHelp},
    {"data_file", &NewPlan::dataFile, Kind::file, kDataFileHelp, {}, "data"},
};

struct PlanToSet {
    std::string plan;
    std::optional<std::string> name;
    std::optional<std::string> description;
    std::optional<std::string> data;
    std::optional<std::string> dataFile;
};

constexpr Param<PlanToSet> kSetParams[] = {
    {"PLAN", &PlanToSet::plan, Kind::plan, kPlanHelp},
    {"name", &PlanToSet::name, Kind::text, kNewNameHelp},
    {"description", &PlanToSet::description, Kind::text, kDescriptionHelp},
    {"data", &PlanToSet::data, Kind::text, kDataHelp},
    {"data_file", &PlanToSet::dataFile, Kind::file, kDataFileHelp, {}, "data"},
};

struct OneItem {
    std::string item;
};

constexpr Param<OneItem> kOfParams[] = {{"ITEM", &OneItem::item, Kind::holder, kItemHelp}};

struct PlanAndItems : SelectionInput {
    std::string plan;
    OptionalTexts items;
    bool recursive = false;

    void Check() const
    {
        if (items.has_value() == !IsEmpty()) {
            throw Error(ErrorCode::invalid,
                        items ? Translatable("items are named and users selected at once; do one of both")
                              : Translatable("ITEM is required, or options that select users, such "
                                             "as --in GROUP"));
        }
        SelectionInput::Check();
    }
};

constexpr auto kItemsParams =
    Joined(std::to_array<Param<PlanAndItems>>({
               {"PLAN", &PlanAndItems::plan, Kind::plan, kPlanHelp},
               {"ITEM", &PlanAndItems::items, Kind::holder,
                "user:LOGIN or group:/VIEW/GROUP, also with id:NUMBER; or none, and options that select users"},
               {"recursive", &PlanAndItems::recursive, Kind::flag,
                "a group means also the groups below it and the users in them; asks first"},
           }),
           kSelectionParams<PlanAndItems>);

constexpr Column kListColumns[] = {{"id", Kind::number}, {"name"}, {"description"}};
constexpr Column kShowColumns[] = {
    {"id", Kind::number}, {"name"}, {"description"}, {"data"}, {"users", Kind::number}, {"groups", Kind::number}};

// ---- What is meant --------------------------------------------------------------------------------------------------

Outcome OutcomeOf(const PlanKey& plan, std::string_view outcome, Sentence sentence)
{
    return {"plan", plan.id, plan.name, outcome, std::move(sentence)};
}

PlanData Load(Plans& plans, const PlanKey& plan)
{
    const std::optional<PlanData> data = plans.Load(plan.id);
    if (!data) {
        throw Error(ErrorCode::notFound, FillPattern("{} has just been deleted", Named(plan)));
    }
    return *data;
}

Item FindUserOrGroup(CAConnect& conn, const std::string& argument)
{
    Item item = FindItem(conn, argument);
    if (item.key.type != kItemTypeUser && item.key.type != kItemTypeGroup) {
        throw Error(ErrorCode::invalid,
                    FillPattern("{} is neither a user nor a group; only these have backup plans", Named(item)));
    }
    return item;
}

void RequireFreeName(Plans& plans, const std::string& name, const std::optional<PlanKey>& self)
{
    const std::vector<ListedPlan> all = plans.List();
    const auto other = std::ranges::find_if(
        all, [&](const ListedPlan& plan) { return SameName(plan.name, name) && (!self || plan.id != self->id); });
    if (other != all.end()) {
        throw Error(ErrorCode::conflict, FillPattern("the name {} is taken by {}", Quoted(name),
                                                     management::Named(PlanKey{other->id, other->name})));
    }
    const std::string others = fmt::format("Col_ID <> {}", self ? self->id : 0);
    if (const auto confused = FindConfused(plans.Connection(), "Tab_Doc_Backup_Plan", name, others)) {
        ThrowConfused("name", name, *confused);
    }
}

/// Users and groups by the names that sentences use.
using Items = std::map<ItemKey, std::string>;

/// A plan, and the items that it is to be assigned to or taken from.
struct Selection : Plan {
    PlanKey plan;
    Items items;

    bool operator==(const Selection&) const = default;
};

/// Adds what is below groups, each item once however many ways lead to it.
class Expansion {
public:
    explicit Expansion(CAConnect& conn) : m_organisation(conn), m_members(m_organisation.LoadMembers()) {}

    void AddBelow(ItemKey group, Items& items) const
    {
        const std::vector<ItemKey> cycle = m_organisation.FindCycle(group);
        if (!cycle.empty()) {
            throw Error(ErrorCode::conflict, FillPattern("groups are below themselves: {}; nothing was changed",
                                                         m_organisation.CycleText(cycle)));
        }
        AddUsers(group, items);
        for (const ItemKey below : m_organisation.Below(group)) {
            items.emplace(below, m_organisation.PathOf(below));
            AddUsers(below, items);
        }
    }

private:
    void AddUsers(ItemKey group, Items& items) const
    {
        const auto found = m_members.find(group);
        if (found == m_members.end()) {
            return;
        }
        for (const Member& user : found->second) {
            items.emplace(ItemKey{kItemTypeUser, user.id}, user.login);
        }
    }

    Organisation m_organisation;
    std::map<ItemKey, std::vector<Member>> m_members;
};

std::size_t CountOf(const Items& items, int type)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(items, [type](const auto& item) { return item.first.type == type; }));
}

Sentence CountedItems(const Items& items)
{
    return FillPattern("{} and {}", Counted(CountOf(items, kItemTypeUser), "user"),
                       Counted(CountOf(items, kItemTypeGroup), "group"));
}

/// What is said of an assignment and of its end.
struct Messages {
    Pattern<2> question;
    Pattern<2> done;
    Pattern<2> notNeeded;
    Pattern<2> doneInSum;
    Pattern<1> notNeededInSum;
    const char* nothingDone;
    std::string_view outcome;
    bool removes;
};

constexpr Messages kAssigning = {Translatable("Assign {} to {}?"),
                                 Translatable("{} now has {}"),
                                 Translatable("{} already has {}"),
                                 Translatable("assigned {} to {}"),
                                 Translatable("{} had it already"),
                                 Translatable("nothing was assigned"),
                                 "assigned",
                                 false};
constexpr Messages kUnassigning = {Translatable("Take {} from {}?"),
                                   Translatable("{} no longer has {}"),
                                   Translatable("{} did not have {}"),
                                   Translatable("took {} from {}"),
                                   Translatable("{} did not have it"),
                                   Translatable("nothing was taken away"),
                                   "unassigned",
                                   true};

/// Shows what nobody has named, and asks about it.
void AskAbout(Selection& selection, const Messages& messages)
{
    if (selection.items.empty()) {
        return;
    }
    if (selection.items.size() <= kLongestList) {
        for (const auto& [key, name] : selection.items) {
            selection.lines.push_back(Named(Item{key, name}));
        }
    }
    selection.lines.push_back(CountedItems(selection.items));
    selection.question = FillPattern(messages.question, Named(selection.plan), selection.lines.back());
    selection.removed = messages.removes ? selection.items.size() : 0;
}

Selection Select(Call& call, const PlanAndItems& in, const Messages& messages)
{
    CAConnect& conn = call.Connection();
    Plans plans(conn);
    Selection selection;
    selection.plan = FindPlan(plans, in.plan);
    selection.nothingDone = messages.nothingDone;
    if (!in.items) {
        for (const UserKey& user : SelectedUsers(conn, UserSelection(conn, in))) {
            selection.items.emplace(ItemKey{kItemTypeUser, user.id}, user.login);
        }
        AskAbout(selection, messages);
        return selection;
    }
    const std::vector<Item> items = FindEach(
        *in.items, Translatable("users or groups"),
        Translatable("`qvadmin user list` and `qvadmin group tree` show all"),
        [&conn](const std::string& argument) { return FindUserOrGroup(conn, argument); }, &Item::key);
    for (const Item& item : items) {
        selection.items.emplace(item.key, item.name);
    }
    if (!in.recursive) {
        return selection;
    }
    const Expansion expansion(conn);
    const Items named = selection.items;
    for (const auto& [key, name] : named) {
        if (key.type == kItemTypeGroup) {
            expansion.AddBelow(key, selection.items);
        }
    }
    AskAbout(selection, messages);
    return selection;
}

Sentence OutcomeInSum(const Selection& selection, const std::set<ItemKey>& changed, const Messages& messages)
{
    Items done;
    Items others;
    for (const auto& item : selection.items) {
        (changed.contains(item.first) ? done : others).insert(item);
    }
    const Sentence sum = FillPattern(messages.doneInSum, Named(selection.plan), CountedItems(done));
    return others.empty() ? sum : sum + "; " + FillPattern(messages.notNeededInSum, CountedItems(others));
}

/// Reports what became of each item, or the numbers where they are many.
void ReportItems(Call& call, const Selection& selection, const std::set<ItemKey>& changed, const Messages& messages)
{
    if (selection.items.size() > kLongestList) {
        call.Report(OutcomeOf(selection.plan, messages.outcome, OutcomeInSum(selection, changed, messages)));
        return;
    }
    for (const auto& [key, name] : selection.items) {
        const Item item{key, name};
        const bool isChanged = changed.contains(key);
        call.Report({key.type == kItemTypeUser ? "user" : "group", key.id, name,
                     isChanged ? messages.outcome : "unchanged",
                     FillPattern(isChanged ? messages.done : messages.notNeeded, Named(item), Named(selection.plan))});
    }
}

Result ChangeItems(Call& call, const Selection& selection, bool assign)
{
    if (selection.items.empty()) {
        return NobodySelected(call);
    }
    Plans plans(call.Connection());
    const std::set<ItemKey> holders = plans.ItemsOf(selection.plan.id);
    std::set<ItemKey> changed;
    for (const auto& [key, name] : selection.items) {
        if (holders.contains(key) != assign) {
            (plans.*(assign ? &Plans::Assign : &Plans::Unassign))(selection.plan.id, key);
            changed.insert(key);
        }
    }
    ReportItems(call, selection, changed, assign ? kAssigning : kUnassigning);
    return changed.empty() ? Unchanged() : Result();
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Result GiveRows(const Call& call, const std::vector<ListedPlan>& plans)
{
    for (const ListedPlan& plan : plans) {
        if (!call.Row(std::int64_t{plan.id}, plan.name, plan.description)) {
            break;
        }
    }
    return {};
}

Result List(Call& call) { return GiveRows(call, Plans(call.Connection()).List()); }

Result Show(Call& call, const OnePlan& in)
{
    Plans plans(call.Connection());
    const PlanKey plan = FindPlan(plans, in.plan);
    const PlanData data = Load(plans, plan);
    const std::set<ItemKey> items = plans.ItemsOf(plan.id);
    const auto countOf = [&items](int type) {
        return static_cast<std::int64_t>(std::ranges::count(items, type, &ItemKey::type));
    };
    return ResultOf(Record{
        {"id", std::int64_t{plan.id}},
        {"name", data.name},
        {"description", data.description},
        {"data", data.data},
        {"users", countOf(kItemTypeUser)},
        {"groups", countOf(kItemTypeGroup)},
    });
}

Result OfItem(Call& call, const OneItem& in)
{
    const Item item = FindUserOrGroup(call.Connection(), in.item);
    return GiveRows(call, Plans(call.Connection()).OfItem(item.key));
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Result Create(Call& call, const NewPlan& in)
{
    const PlanData plan{in.name, in.description.value_or(""), call.TextOrFile(in.data, in.dataFile).value_or("")};
    CheckPlanName(plan.name);
    Plans plans(call.Connection());
    RequireFreeName(plans, plan.name, std::nullopt);
    return ResultOf(Value(std::int64_t{plans.Create(plan)}));
}

Result Set(Call& call, const PlanToSet& in)
{
    const PlanChanges changes{in.name, in.description, call.TextOrFile(in.data, in.dataFile)};
    if (!changes.name && !changes.description && !changes.data) {
        ThrowNothingToSet("plan");
    }
    Plans plans(call.Connection());
    const PlanKey key = FindPlan(plans, in.plan);
    const PlanData stored = Load(plans, key);
    const PlanData plan{changes.name.value_or(stored.name), changes.description.value_or(stored.description),
                        changes.data.value_or(stored.data)};
    if (plan == stored) {
        call.Report(OutcomeOf(key, "unchanged", FillPattern("nothing to change in {}", Named(key))));
        return Unchanged();
    }
    if (plan.name != stored.name) {
        CheckPlanName(plan.name);
        RequireFreeName(plans, plan.name, key);
    }
    plans.Change(key.id, changes);
    call.Report(OutcomeOf(key, "changed", FillPattern("changed {}", Named(key))));
    return {};
}

struct Deletion : Plan {
    PlanKey plan;

    bool operator==(const Deletion&) const = default;
};

Deletion PlanDeletion(Call& call, const OnePlan& in)
{
    Plans plans(call.Connection());
    Deletion deletion;
    deletion.plan = FindPlan(plans, in.plan);
    const auto count = static_cast<std::size_t>(plans.CountAssignments(deletion.plan.id));
    deletion.lines.push_back(FillPattern("delete {}{}", Named(deletion.plan),
                                         count == 0 ? "" : FillPattern(", with {}", Counted(count, "assignment"))));
    deletion.question = FillPattern("Delete {}?", Named(deletion.plan));
    deletion.removed = 1 + count;
    return deletion;
}

Result Delete(Call& call, const OnePlan& /*in*/, const Deletion& deletion)
{
    Plans(call.Connection()).Delete(deletion.plan.id);
    call.Report(OutcomeOf(deletion.plan, "deleted", FillPattern("deleted {}", Named(deletion.plan))));
    return {};
}

Selection PlanAssignment(Call& call, const PlanAndItems& in) { return Select(call, in, kAssigning); }
Selection PlanUnassignment(Call& call, const PlanAndItems& in) { return Select(call, in, kUnassigning); }

Result Assign(Call& call, const PlanAndItems& /*in*/, const Selection& selection)
{
    return ChangeItems(call, selection, true);
}

Result Unassign(Call& call, const PlanAndItems& /*in*/, const Selection& selection)
{
    return ChangeItems(call, selection, false);
}

constexpr Command kCommands[] = {
    {.path = {"plan", "list"},
     .summary = "backup plans by name",
     .examples = {"qvadmin plan list -o json"},
     .columns = kListColumns,
     .handler = Read<&List>()},
    {.path = {"plan", "show"},
     .summary = "everything about a backup plan, and how many users and groups have it",
     .examples = {"qvadmin plan show Nightly", "qvadmin plan show id:3 -o json"},
     .columns = kShowColumns,
     .handler = Read<&Show, kOneParams>()},
    {.path = {"plan", "create"},
     .summary = "add a backup plan and print the new id",
     .examples = {"qvadmin plan create Nightly --description 'Each night' --data-file nightly.txt"},
     .effect = Effect::create,
     .handler = Write<&Create, kCreateParams>()},
    {.path = {"plan", "set"},
     .summary = "change what is given and leave all else",
     .examples = {"qvadmin plan set Nightly --name Weekly", "qvadmin plan set Nightly --data ''"},
     .effect = Effect::change,
     .handler = Write<&Set, kSetParams>()},
    {.path = {"plan", "delete"},
     .summary = "delete a backup plan and its assignments; asks first",
     .examples = {"qvadmin plan delete Nightly", "qvadmin plan delete id:3 --yes"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanDeletion, &Delete, kOneParams>()},
    {.path = {"plan", "of"},
     .summary = "the backup plans that are assigned to a user or group",
     .examples = {"qvadmin plan of user:amy", "qvadmin plan of group:/Company/Sales"},
     .columns = kListColumns,
     .handler = Read<&OfItem, kOfParams>()},
    {.path = {"plan", "assign"},
     .summary = "assign a backup plan to users and groups",
     .examples = {"qvadmin plan assign Nightly user:amy user:rory",
                  "qvadmin plan assign Nightly group:/Company/Sales --recursive",
                  "qvadmin plan assign Nightly --in /Company --deep --active"},
     .effect = Effect::change,
     .asks = true,
     .handler = WritePlanned<&PlanAssignment, &Assign, kItemsParams>()},
    {.path = {"plan", "unassign"},
     .summary = "take a backup plan from users and groups",
     .examples = {"qvadmin plan unassign Nightly user:amy",
                  "qvadmin plan unassign Nightly group:/Company/Sales --recursive --yes",
                  "qvadmin plan unassign Nightly --locked"},
     .effect = Effect::change,
     .asks = true,
     .handler = WritePlanned<&PlanUnassignment, &Unassign, kItemsParams>()},
};

} // namespace

std::span<const Command> PlanCommands() { return kCommands; }

} // namespace management::plans
