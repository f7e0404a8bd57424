#include "console/PlanCommands.h"

#include "basefun/ItemTypes.h"
#include "console/Confirm.h"
#include "console/Engine.h"
#include "console/FindEach.h"
#include "console/Items.h"
#include "console/Names.h"
#include "console/Opened.h"
#include "console/Plans.h"
#include "console/Render.h"
#include "console/Text.h"
#include "console/TextFile.h"
#include "console/Users.h"
#include "console/Words.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>
#include <map>

namespace console::plan {

namespace {

using namespace words;

/// Longer lists of items are told as numbers.
constexpr std::size_t kLongestList = 20;

constexpr Field kPlan{"PLAN", "", {}, Field::Use::given, "name of a backup plan as it is, or id:NUMBER"};
constexpr Field kNewPlan{"NAME", "", {}, Field::Use::given, "name of the new backup plan"};
constexpr Field kNewName{"name", "", {}, Field::Use::given, "name to have from now on"};
constexpr Field kData{"data", "", {}, Field::Use::given, "settings, as the backup service understands them"};
constexpr Field kDataFile{"data_file", "", {}, Field::Use::given, "file with the settings, taken as it is"};
constexpr Field kItem{"ITEM", "", {}, Field::Use::given, "user:LOGIN or group:/VIEW/GROUP, also with id:NUMBER"};
constexpr Field kRecursive{
    "recursive", "", {}, Field::Use::given, "a group means also the groups below it and the users in them; asks first"};

// ---- What the words mean --------------------------------------------------------------------------------------------

void DeclareColumns(CLI::App& app, Arguments& arguments)
{
    DeclareOption(app, arguments, kDescription);
    DeclareOption(app, arguments, kData);
    const auto take = [&arguments](const std::string& path) { arguments.fields[&kDataFile] = path; };
    app.add_option_function<std::string>(OptionOf(kDataFile), take, std::string(kDataFile.help))
        ->type_name("FILE")
        ->excludes("--data");
}

std::optional<std::string> GivenData(const Arguments& arguments)
{
    const std::optional<std::string> path = Given(arguments, kDataFile);
    return path ? std::optional(ReadTextFile(*path)) : Given(arguments, kData);
}

PlanKey FindGiven(Plans& plans, const Arguments& arguments)
{
    return FindPlan(plans, Given(arguments, kPlan).value_or(""));
}

PlanData Load(Plans& plans, const PlanKey& plan)
{
    const std::optional<PlanData> data = plans.Load(plan.id);
    if (!data) {
        throw Refusal(Exit::notFound, fmt::format("{} has just been deleted", Named(plan)));
    }
    return *data;
}

Item FindUserOrGroup(CAConnect& conn, const std::string& argument)
{
    Item item = FindItem(conn, argument);
    if (item.key.type != kItemTypeUser && item.key.type != kItemTypeGroup) {
        throw Refusal(Exit::usage,
                      fmt::format("{} is neither a user nor a group; only these have backup plans", Named(item)));
    }
    return item;
}

void RefuseTaken(Plans& plans, const std::string& name, const std::optional<PlanKey>& self)
{
    const std::vector<ListedPlan> all = plans.List();
    const auto other = std::ranges::find_if(
        all, [&](const ListedPlan& plan) { return SameName(plan.name, name) && (!self || plan.id != self->id); });
    if (other != all.end()) {
        throw Refusal(Exit::conflict, fmt::format("the name {} is taken by {}", Quoted(name),
                                                  console::Named(PlanKey{other->id, other->name})));
    }
    const std::string others = fmt::format("Col_ID <> {}", self ? self->id : 0);
    if (const auto confused = FindConfused(plans.Connection(), "Tab_Doc_Backup_Plan", name, others)) {
        ThrowConfused("name", name, *confused);
    }
}

// ---- Who is meant ---------------------------------------------------------------------------------------------------

/// Users and groups by the names under which they are told.
using Items = std::map<ItemKey, std::string>;

/// A plan, and the items that it is to be assigned to or taken from.
struct Selection {
    PlanKey plan;
    Items items;
};

/// Adds what stands below groups, each item once however many ways lead to it.
class Expansion {
public:
    explicit Expansion(CAConnect& conn) : m_organisation(conn), m_members(m_organisation.LoadMembers()) {}

    void AddBelow(ItemKey group, Items& items) const
    {
        const std::vector<ItemKey> cycle = m_organisation.FindCycle(group);
        if (!cycle.empty()) {
            throw Refusal(Exit::conflict, fmt::format("groups hang below themselves: {}; nothing was changed",
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

Selection Select(CAConnect& conn, Plans& plans, const Arguments& arguments)
{
    Selection selection{FindGiven(plans, arguments), {}};
    const std::vector<Item> items = FindEach(
        arguments.users, "users or groups", "`qvadmin user list` and `qvadmin group tree` show all",
        [&conn](const std::string& argument) { return FindUserOrGroup(conn, argument); }, &Item::key);
    for (const Item& item : items) {
        selection.items.emplace(item.key, item.name);
    }
    if (Given(arguments, kRecursive)) {
        const Expansion expansion(conn);
        const Items named = selection.items;
        for (const auto& [key, name] : named) {
            if (key.type == kItemTypeGroup) {
                expansion.AddBelow(key, selection.items);
            }
        }
    }
    return selection;
}

std::size_t CountOf(const Items& items, int type)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(items, [type](const auto& item) { return item.first.type == type; }));
}

std::string CountedItems(const Items& items)
{
    return fmt::format("{} and {}", Counted(CountOf(items, kItemTypeUser), "user"),
                       Counted(CountOf(items, kItemTypeGroup), "group"));
}

/// What is told of an assignment and of its end.
struct Wording {
    std::string_view question;
    std::string_view done;
    std::string_view notNeeded;
    std::string_view doneInSum;
    std::string_view notNeededInSum;
    std::string_view nothingDone;
    bool removes;
};

constexpr Wording kAssigning = {
    "Assign {} to {}?",     "now has", "already has", "assigned {} to {}", "{} had it already",
    "nothing was assigned", false};
constexpr Wording kUnassigning = {"Take {} from {}?",
                                  "no longer has",
                                  "did not have",
                                  "took {} from {}",
                                  "{} did not have it",
                                  "nothing was taken away",
                                  true};

void Confirm(const Context& context, const Selection& selection, const Wording& wording)
{
    if (selection.items.size() <= kLongestList) {
        for (const auto& [key, name] : selection.items) {
            context.terminal.err << console::Named(Item{key, name}) << '\n';
        }
    }
    const std::string items = CountedItems(selection.items);
    context.terminal.err << items << '\n';
    RequireConfirmation(context, fmt::format(fmt::runtime(wording.question), Named(selection.plan), items),
                        wording.removes ? selection.items.size() : 0, wording.nothingDone);
}

std::string OutcomeInSum(const Selection& selection, const std::set<ItemKey>& changed, const Wording& wording)
{
    Items done;
    Items others;
    for (const auto& item : selection.items) {
        (changed.contains(item.first) ? done : others).insert(item);
    }
    std::string told = fmt::format(fmt::runtime(wording.doneInSum), Named(selection.plan), CountedItems(done));
    if (!others.empty()) {
        told += "; " + fmt::format(fmt::runtime(wording.notNeededInSum), CountedItems(others));
    }
    return told + "\n";
}

/// What became of each item, or the numbers where they are many.
std::string Outcome(const Selection& selection, const std::set<ItemKey>& changed, const Wording& wording)
{
    if (selection.items.size() > kLongestList) {
        return OutcomeInSum(selection, changed, wording);
    }
    std::string told;
    for (const auto& [key, name] : selection.items) {
        told += fmt::format("{} {} {}\n", console::Named(Item{key, name}),
                            changed.contains(key) ? wording.done : wording.notNeeded, Named(selection.plan));
    }
    return told;
}

struct Deletion {
    std::string shown;
    std::size_t removed;
};

Deletion PlanDeletion(Plans& plans, const PlanKey& plan)
{
    const auto count = static_cast<std::size_t>(plans.CountAssignments(plan.id));
    return {fmt::format("delete {}{}\n", Named(plan), count == 0 ? "" : ", with " + Counted(count, "assignment")),
            1 + count};
}

Exit ChangeItems(const Context& context, bool assign)
{
    const Arguments& arguments = context.arguments;
    const Wording& wording = assign ? kAssigning : kUnassigning;
    Opened opened(arguments);
    CAConnect& conn = opened.Directory().Connection();
    Plans plans(conn);
    const Selection told = Select(conn, plans, arguments);
    if (Given(arguments, kRecursive)) {
        Confirm(context, told, wording);
    }
    Transaction transaction(conn);
    const Selection present = Select(conn, plans, arguments);
    ThrowIfChanged(Named(told.plan), Named(present.plan), wording.nothingDone);
    ThrowIfChanged(told.items, present.items, wording.nothingDone);
    const std::set<ItemKey> holders = plans.ItemsOf(present.plan.id);
    std::set<ItemKey> changed;
    for (const auto& [key, name] : present.items) {
        if (holders.contains(key) != assign) {
            (plans.*(assign ? &Plans::Assign : &Plans::Unassign))(present.plan.id, key);
            changed.insert(key);
        }
    }
    transaction.Commit();
    context.terminal.err << Outcome(present, changed, wording);
    return Exit::done;
}

} // namespace

// ---- Arguments and options ------------------------------------------------------------------------------------------

void DeclareOne(CLI::App& app, Arguments& arguments) { DeclareArgument(app, arguments, kPlan); }

void DeclareCreate(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kNewPlan);
    DeclareColumns(app, arguments);
}

void DeclareSet(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareOption(app, arguments, kNewName);
    DeclareColumns(app, arguments);
}

void DeclareDelete(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareYes(app, arguments);
}

void DeclareOf(CLI::App& app, Arguments& arguments) { DeclareArgument(app, arguments, kItem); }

void DeclareItems(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareWords(app, arguments, "ITEM", std::string(kItem.help));
    DeclareFlag(app, arguments, kRecursive);
    DeclareYes(app, arguments);
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Exit List(const Context& context)
{
    Opened opened(context.arguments);
    Table table{{"id", "name", "description"}, {}};
    for (const ListedPlan& plan : Plans(opened.Directory().Connection()).List()) {
        table.rows.push_back({std::int64_t{plan.id}, plan.name, plan.description});
    }
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

Exit Show(const Context& context)
{
    Opened opened(context.arguments);
    Plans plans(opened.Directory().Connection());
    const PlanKey plan = FindGiven(plans, context.arguments);
    const PlanData data = Load(plans, plan);
    const std::set<ItemKey> items = plans.ItemsOf(plan.id);
    const auto countOf = [&items](int type) {
        return static_cast<std::int64_t>(std::ranges::count(items, type, &ItemKey::type));
    };
    const Record record = {
        {"id", std::int64_t{plan.id}},     {"name", data.name},
        {"description", data.description}, {"data", data.data},
        {"users", countOf(kItemTypeUser)}, {"groups", countOf(kItemTypeGroup)},
    };
    Render(context.arguments.format, record, context.terminal.out);
    return Exit::done;
}

Exit OfItem(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    const Item item = FindUserOrGroup(conn, Given(context.arguments, kItem).value_or(""));
    Table table{{"id", "name", "description"}, {}};
    for (const ListedPlan& plan : Plans(conn).OfItem(item.key)) {
        table.rows.push_back({std::int64_t{plan.id}, plan.name, plan.description});
    }
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Exit Create(const Context& context)
{
    PlanData plan;
    plan.name = Given(context.arguments, kNewPlan).value_or("");
    plan.description = Given(context.arguments, kDescription).value_or("");
    plan.data = GivenData(context.arguments).value_or("");
    CheckPlanName(plan.name);
    Opened opened(context.arguments);
    Transaction transaction(opened.Directory().Connection());
    Plans plans(opened.Directory().Connection());
    RefuseTaken(plans, plan.name, std::nullopt);
    const int id = plans.Create(plan);
    transaction.Commit();
    context.terminal.out << id << '\n';
    return Exit::done;
}

Exit Set(const Context& context)
{
    const PlanChanges changes{Given(context.arguments, kNewName), Given(context.arguments, kDescription),
                              GivenData(context.arguments)};
    if (!changes.name && !changes.description && !changes.data) {
        throw Refusal(Exit::usage, "there is nothing to set; `qvadmin plan set --help` lists what can be");
    }
    Opened opened(context.arguments);
    Transaction transaction(opened.Directory().Connection());
    Plans plans(opened.Directory().Connection());
    const PlanKey key = FindGiven(plans, context.arguments);
    const PlanData stored = Load(plans, key);
    const PlanData plan{changes.name.value_or(stored.name), changes.description.value_or(stored.description),
                        changes.data.value_or(stored.data)};
    if (plan.name != stored.name) {
        CheckPlanName(plan.name);
        RefuseTaken(plans, plan.name, key);
    }
    const bool changed = plan != stored;
    if (changed) {
        plans.Change(key.id, changes);
    }
    transaction.Commit();
    context.terminal.err << fmt::format("{} {}\n", changed ? "changed" : "nothing to change in", Named(key));
    return Exit::done;
}

Exit Delete(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Plans plans(conn);
    const PlanKey plan = FindGiven(plans, context.arguments);
    const auto [shown, removed] = PlanDeletion(plans, plan);
    context.terminal.err << shown;
    RequireConfirmation(context, fmt::format("Delete {}?", Named(plan)), removed);
    Transaction transaction(conn);
    ThrowIfChanged(shown, PlanDeletion(plans, FindGiven(plans, context.arguments)).shown);
    plans.Delete(plan.id);
    transaction.Commit();
    context.terminal.err << fmt::format("deleted {}\n", Named(plan));
    return Exit::done;
}

Exit Assign(const Context& context) { return ChangeItems(context, true); }

Exit Unassign(const Context& context) { return ChangeItems(context, false); }

} // namespace console::plan

namespace console::doclog {

namespace {

using namespace words;

constexpr Field kClass{"CLASS_ID", "", {}, Field::Use::given, "number of the kind of object"};
constexpr Field kObject{"OBJECT_ID", "", {}, Field::Use::given, "number of the object within its kind"};
constexpr Field kType{"TYPE", "", {}, Field::Use::given, "kind of event, a word as it is"};
constexpr Field kContent{"CONTENT", "", {}, Field::Use::given, "what happened"};
constexpr Field kCreatorLogin{"creator", "", {}, Field::Use::given, "login name of the user who did it"};
constexpr Field kOnlyClass{"class", "", {}, Field::Use::given, "only of objects of this kind"};
constexpr Field kOnlyObject{"object", "", {}, Field::Use::given, "only of objects of this number"};
constexpr Field kOnlyType{"type", "", {}, Field::Use::given, "only this kind of event"};

int NumberGiven(const Arguments& arguments, const Field& field)
{
    const std::string text = Given(arguments, field).value_or("");
    int number = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end) {
        throw Refusal(Exit::usage, fmt::format("{} {} is no whole number of 32 bits", field.name, Quoted(text)));
    }
    return number;
}

} // namespace

void DeclareAdd(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kClass);
    DeclareArgument(app, arguments, kObject);
    DeclareArgument(app, arguments, kType);
    DeclareArgument(app, arguments, kContent);
    DeclareOption(app, arguments, kCreatorLogin);
}

void DeclareList(CLI::App& app, Arguments& arguments)
{
    DeclareNumber(app, arguments, kOnlyClass);
    DeclareNumber(app, arguments, kOnlyObject);
    DeclareOption(app, arguments, kOnlyType);
    app.add_option("--limit", arguments.limit, "at most so many")
        ->type_name("N")
        ->check(CLI::Range(1, std::numeric_limits<int>::max(), ""));
}

Exit Add(const Context& context)
{
    const Arguments& arguments = context.arguments;
    LogEntry entry;
    entry.classId = NumberGiven(arguments, kClass);
    entry.objectId = NumberGiven(arguments, kObject);
    entry.type = Given(arguments, kType).value_or("");
    entry.content = Given(arguments, kContent).value_or("");
    CheckName("type", entry.type);
    Opened opened(arguments);
    Directory& directory = opened.Directory();
    Transaction transaction(directory.Connection());
    if (const std::optional<std::string> login = Given(arguments, kCreatorLogin)) {
        entry.creatorId = FindUser(directory, *login).id;
        entry.creator = directory.NameOfId(entry.creatorId);
    }
    DocLog(directory.Connection()).Add(entry);
    transaction.Commit();
    context.terminal.err << fmt::format("noted {} of object {} of class {}\n", Quoted(entry.type), entry.objectId,
                                        entry.classId);
    return Exit::done;
}

Exit List(const Context& context)
{
    const Arguments& arguments = context.arguments;
    Opened opened(arguments);
    const LogFilter filter{GivenNumber(arguments, kOnlyClass), GivenNumber(arguments, kOnlyObject),
                           Given(arguments, kOnlyType), arguments.limit};
    TableWriter writer(arguments.format, {"class_id", "object_id", "type", "content", "creator_id", "creator", "genre"},
                       context.terminal.out);
    DocLog(opened.Directory().Connection()).List(filter, [&writer](const LogEntry& entry) {
        return writer.Write(MakeRow(std::int64_t{entry.classId}, std::int64_t{entry.objectId}, entry.type,
                                    entry.content, std::int64_t{entry.creatorId}, entry.creator, entry.genre));
    });
    writer.Finish();
    return Exit::done;
}

} // namespace console::doclog
