#include "basefun/ItemTypes.h"
#include "management/Command.h"
#include "management/Items.h"
#include "management/Text.h"
#include "management/audit/AuditLog.h"
#include "management/audit/Undo.h"
#include "management/messages/Messages.h"
#include "management/roles/Roles.h"
#include "management/users/Users.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <functional>

namespace management::audit {

namespace {

constexpr int kRowsShown = 1000;

// ---- Parameters -----------------------------------------------------------------------------------------------------

/// The words with which commands of the record begin.
std::vector<std::string_view> RecordedNouns()
{
    std::vector<std::string_view> nouns;
    for (const Command& command : Commands()) {
        if (command.effect != Effect::read && std::ranges::find(nouns, command.path[0]) == nouns.end()) {
            nouns.push_back(command.path[0]);
        }
    }
    nouns.emplace_back("import"); // of front ends
    return nouns;
}

struct Filter {
    std::optional<std::string> since;
    std::optional<std::string> before;
    std::optional<std::string> who;
    std::optional<std::string> noun;
    std::optional<std::string> item;
    std::optional<int> limit;
};

constexpr Param<Filter> kListParams[] = {
    {"since", &Filter::since, Kind::date, "from this time on, in UTC: YYYY-MM-DD or 'YYYY-MM-DD HH:MM:SS'"},
    {"before", &Filter::before, Kind::date, "before this time, in UTC"},
    {"who", &Filter::who, Kind::text, "by this login name of the system"},
    {"noun", &Filter::noun, Kind::choice, "by commands that begin with this word, such as user", &RecordedNouns},
    {"item", &Filter::item, Kind::item, "about this user, group, role or view; by KIND:id:N also one that is gone"},
    {"limit", &Filter::limit, Kind::number, "at most so many", kLimit},
};

struct OneEntry {
    int id = 0;
    std::optional<int> limit;
};

constexpr Param<OneEntry> kShowParams[] = {
    {"ID", &OneEntry::id, Kind::number, "number of an entry", kIds},
    {"limit", &OneEntry::limit, Kind::number, "at most so many rows; 1000 if not given", kLimit},
};

struct SeveralEntries {
    std::vector<std::string> ids;
};

constexpr Param<SeveralEntries> kUndoParams[] = {{"ID", &SeveralEntries::ids, Kind::text, "number of an entry"}};

struct Prune {
    std::string before;
};

constexpr Param<Prune> kPruneParams[] = {
    {"BEFORE", &Prune::before, Kind::date, "delete what is older, in UTC: YYYY-MM-DD or 'YYYY-MM-DD HH:MM:SS'"}};

struct OneItem {
    std::string item;
};

constexpr Param<OneItem> kUserParams[] = {{"USER", &OneItem::item, Kind::user, "login name or id:NUMBER"}};
constexpr Param<OneItem> kGroupParams[] = {{"GROUP", &OneItem::item, Kind::group, "/VIEW/GROUP or id:NUMBER"}};
constexpr Param<OneItem> kRoleParams[] = {{"ROLE", &OneItem::item, Kind::role, "name or id:NUMBER"}};

constexpr Column kListColumns[] = {{"id", Kind::number},   {"time", Kind::date}, {"who"},
                                   {"front_end"},          {"command"},          {"reason"},
                                   {"rows", Kind::number}, {"undoes"},           {"undone_by", Kind::number}};
constexpr Column kShowColumns[] = {{"id", Kind::number},   {"time", Kind::date}, {"who"},
                                   {"front_end"},          {"command"},          {"reason"},
                                   {"rows", Kind::number}, {"undoes"},           {"undone_by", Kind::number},
                                   {"changes", Kind::rows}};
constexpr Column kHistoryColumns[] = {{"entry", Kind::number},
                                      {"time", Kind::date},
                                      {"who"},
                                      {"command"},
                                      {"reason"},
                                      {"change"},
                                      {"what"},
                                      {"column"},
                                      {"before"},
                                      {"after"}};
constexpr Column kVerifyColumns[] = {{"entries", Kind::number}, {"first_altered", Kind::number}, {"last_digest"}};

// ---- Reading --------------------------------------------------------------------------------------------------------

Value NumberOrAbsent(int number) { return number == 0 ? Value() : Value(std::int64_t{number}); }

std::optional<std::string> TimeIn(const std::optional<std::string>& given)
{
    return given ? std::optional(WholeDate(*given)) : std::nullopt;
}

/// "user:id:17" means a number whether or not there is such a user; all else is looked up.
std::string ItemIn(CAConnect& conn, const std::string& given)
{
    constexpr std::string_view id = ":id:";
    const std::size_t colon = given.find(id);
    if (colon != std::string::npos) {
        for (const int type : {kItemTypeUser, kItemTypeGroup, kItemTypeRole, kItemTypeView}) {
            if (given.substr(0, colon) == TypeName(type)) {
                const std::string number = given.substr(colon + id.size());
                return fmt::format("{}:{}", type, binding::ReadNumber("item", number, kIds, kIds));
            }
        }
    }
    const ItemKey key = FindItem(conn, given).key;
    return fmt::format("{}:{}", key.type, key.id);
}

Result List(Call& call, const Filter& in)
{
    EntryFilter filter{.since = TimeIn(in.since),
                       .before = TimeIn(in.before),
                       .who = in.who.value_or(""),
                       .noun = in.noun.value_or(""),
                       .item = in.item ? ItemIn(call.Connection(), *in.item) : ""};
    AuditLog(call.Connection())
        .Each(
            filter,
            [&call](const Entry& entry) {
                return call.Row(std::int64_t{entry.id}, entry.data.time, entry.data.who, entry.data.frontEnd,
                                entry.data.command, entry.data.reason, entry.rows, entry.data.undoes,
                                NumberOrAbsent(entry.undoneBy));
            },
            in.limit.value_or(static_cast<int>(kLimit.most)));
    return {};
}

/// One column of one row that changed.
struct ChangedValue {
    std::string_view change; ///< "added", "removed" or "changed"
    std::string what;
    std::string column = {};
    std::optional<std::string> before = {};
    std::optional<std::string> after = {};
};

std::string_view ChangeIn(const StoredRow& row)
{
    return row.count > 0 ? "added" : row.count < 0 ? "removed" : "changed";
}

bool HasCell(const AuditedRow& cells, const std::string& column)
{
    return std::ranges::find(cells, column, &AuditedRow::value_type::first) != cells.end();
}

/// @param missing  what is given where there is no such cell.
std::optional<std::string> CellOr(const AuditedRow& cells, const std::string& column,
                                  const std::optional<std::string>& missing)
{
    const auto found = std::ranges::find(cells, column, &AuditedRow::value_type::first);
    return found == cells.end() ? missing : found->second;
}

bool SaysNothing(const std::optional<std::string>& text) { return !text || *text == "0"; }

std::vector<ChangedValue> ValuesOf(NameCache& names, const StoredRow& row)
{
    const AuditedTable* table = FindAuditedTable(row.table);
    const std::string_view change = ChangeIn(row);
    if (table == nullptr || (!row.before && !row.after)) {
        return {
            {change, Counted(static_cast<std::size_t>(std::abs(row.count)), table == nullptr ? "row" : table->noun)}};
    }
    std::vector<ChangedValue> values;
    const AuditedRow before = Unpacked(row.before.value_or("{}"));
    const AuditedRow after = Unpacked(row.after.value_or("{}"));
    const bool stays = row.count == 0;
    const std::optional<std::string> missing = stays ? std::optional<std::string>("") : std::nullopt;
    for (const std::string& column : ColumnsOf(*table)) {
        if (!HasCell(before, column) && !HasCell(after, column)) {
            continue;
        }
        ChangedValue changed{change, Described(names, row), column, CellOr(before, column, missing),
                             CellOr(after, column, missing)};
        if (stays || !SaysNothing(changed.before) || !SaysNothing(changed.after)) {
            values.push_back(std::move(changed));
        }
    }
    return values;
}

Result Show(Call& call, const OneEntry& in)
{
    AuditLog log(call.Connection());
    const Entry entry = log.Find(in.id);
    NameCache names(call.Connection());
    Table changes{{"change", "what", "column", "before", "after"}, {}};
    for (const NumberedRow& row : log.Rows(entry, in.limit.value_or(kRowsShown))) {
        for (const ChangedValue& value : ValuesOf(names, row.row)) {
            changes.rows.push_back(MakeRow(std::string(value.change), value.what, value.column, OrAbsent(value.before),
                                           OrAbsent(value.after)));
        }
    }
    return ResultOf(Record{{"id", std::int64_t{entry.id}},
                           {"time", entry.data.time},
                           {"who", entry.data.who},
                           {"front_end", entry.data.frontEnd},
                           {"command", entry.data.command},
                           {"reason", entry.data.reason},
                           {"rows", entry.rows},
                           {"undoes", entry.data.undoes},
                           {"undone_by", NumberOrAbsent(entry.undoneBy)}},
                    {{"changes", std::move(changes)}});
}

/// What a history says of a row: of one that came or went, what it was about, in one line.
std::vector<ChangedValue> SummaryOf(NameCache& names, const StoredRow& row)
{
    std::vector<ChangedValue> values = ValuesOf(names, row);
    if (row.count == 0 || values.empty()) {
        return values;
    }
    std::vector<std::string> items;
    for (const std::string& item : {row.item, row.otherItem}) {
        if (!item.empty()) {
            items.push_back(Named(names.Find(KeyOf(item))));
        }
    }
    const bool isItem = FindAuditedTable(row.table) != nullptr && FindAuditedTable(row.table)->itemType != 0;
    std::string what = values.front().what;
    what += isItem || items.empty() ? "" : fmt::format(" of {}", fmt::join(items, " and "));
    return {{values.front().change, std::move(what)}};
}

Result GiveHistory(Call& call, ItemKey key)
{
    const std::string item = fmt::format("{}:{}", key.type, key.id);
    AuditLog log(call.Connection());
    std::vector<Entry> entries;
    NameCache names(call.Connection());
    log.Each({.item = item}, [&entries](const Entry& entry) {
        entries.push_back(entry);
        return true;
    });
    for (const Entry& entry : entries) {
        for (const NumberedRow& row : log.RowsAbout(entry, item)) {
            for (const ChangedValue& value : SummaryOf(names, row.row)) {
                if (!call.Row(std::int64_t{entry.id}, entry.data.time, entry.data.who, entry.data.command,
                              entry.data.reason, std::string(value.change), value.what, value.column,
                              OrAbsent(value.before), OrAbsent(value.after))) {
                    return {};
                }
            }
        }
    }
    return {};
}

Result UserHistory(Call& call, const OneItem& in)
{
    return GiveHistory(call, {kItemTypeUser, FindUser(call.Directory(), in.item).id});
}

Result GroupHistory(Call& call, const OneItem& in)
{
    return GiveHistory(call, Organisation(call.Connection()).FindGroup(in.item));
}

Result RoleHistory(Call& call, const OneItem& in)
{
    Roles roles(call.Connection());
    return GiveHistory(call, {kItemTypeRole, FindRole(roles, in.item, RoleScope()).id});
}

Result Verify(Call& call)
{
    const auto progress = [&call](long done, long total) { call.ShowProgress(done, total); };
    const Verification found = AuditLog(call.Connection()).Verify(progress);
    Result result = ResultOf(Record{{"entries", found.entries},
                                    {"first_altered", NumberOrAbsent(found.firstAltered)},
                                    {"last_digest", found.lastDigest}});
    if (found.firstAltered != 0) {
        result.error.emplace(
            ErrorCode::conflict,
            FillPattern("the record was altered: entry {} is not as it was written, or does not follow "
                        "the one before it",
                        found.firstAltered));
    }
    return result;
}

// ---- Undoing --------------------------------------------------------------------------------------------------------

struct UndoPlan : Plan {
    std::vector<int> ids; ///< the latest first

    bool operator==(const UndoPlan&) const = default;
};

UndoPlan PlanUndo(Call& call, const SeveralEntries& in)
{
    AuditLog log(call.Connection());
    std::map<int, Entry, std::greater<>> entries;
    for (const std::string& text : in.ids) {
        const auto id = static_cast<int>(binding::ReadNumber("ID", text, kIds, kIds));
        Entry entry = log.Find(id);
        if (entry.undoneBy != 0) {
            throw Error(ErrorCode::conflict,
                        FillPattern("{} was undone already, by {}; nothing was undone", Named(entry), entry.undoneBy));
        }
        entries.emplace(entry.id, std::move(entry));
    }
    UndoPlan plan;
    plan.nothingDone = Translatable("nothing was undone");
    for (const auto& [id, entry] : entries) {
        plan.ids.push_back(id);
        plan.removed += static_cast<std::size_t>(entry.rows);
        plan.lines.push_back(
            FillPattern("undo {}: {}", Named(entry), Counted(static_cast<std::size_t>(entry.rows), "changed row")));
    }
    plan.question = FillPattern("Undo {}?", Counted(plan.ids.size(), "change"));
    return plan;
}

Result UndoEntries(Call& call, const SeveralEntries& /*in*/, const UndoPlan& plan)
{
    AuditLog log(call.Connection());
    Undo undo(call.Connection(), log);
    for (const int id : plan.ids) {
        const Entry entry = log.Find(id);
        undo.Apply(entry);
        call.Report({"entry", id, std::to_string(id), "undone", FillPattern("undid {}", Named(entry))});
    }
    undo.Check();
    for (const auto& [what, secret] : undo.AllWithoutSecret()) {
        call.Report({"user", 0, what, "without_password",
                     FillPattern("{} has no {} now: these are never recorded", what, secret)});
    }
    call.SetUndoes(fmt::format("{}", fmt::join(plan.ids, " ")));
    return {};
}

// ---- Pruning --------------------------------------------------------------------------------------------------------

struct PrunePlan : Plan {
    int first = 0; ///< that stays

    bool operator==(const PrunePlan&) const = default;
};

PrunePlan PlanPrune(Call& call, const Prune& in)
{
    AuditLog log(call.Connection());
    const std::string before = WholeDate(in.before);
    PrunePlan plan;
    plan.first = log.FirstFrom(before);
    const auto count = static_cast<std::size_t>(log.CountBelow(plan.first));
    if (count != 0) {
        plan.removed = count;
        plan.lines.push_back(FillPattern("delete {} of the record from before {}; they can no longer be undone",
                                         Counted(count, "entry"), before));
        plan.question = FillPattern("Delete {}?", Counted(count, "entry"));
    }
    return plan;
}

Result PruneEntries(Call& call, const Prune& /*in*/, const PrunePlan& plan)
{
    if (plan.removed == 0) {
        call.Report({"entry", 0, "", "unchanged", Translatable("there are no entries that old")});
        return Unchanged();
    }
    // The deletion itself stays in the record, and follows the last entry.
    call.SetRecordedAnyway();
    AuditLog(call.Connection()).DeleteBelow(plan.first);
    call.Report({"entry", 0, "", "deleted", FillPattern("deleted {}", Counted(plan.removed, "entry"))});
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"audit", "list"},
     .summary = "changes made through this console, the latest first",
     .examples = {"qvadmin audit list --limit 20", "qvadmin audit list --since 2026-05-01 --noun user",
                  "qvadmin audit list --item user:amy"},
     .columns = kListColumns,
     .handler = Read<&List, kListParams>()},
    {.path = {"audit", "show"},
     .summary = "a change, with every value before and after",
     .examples = {"qvadmin audit show 17"},
     .columns = kShowColumns,
     .handler = Read<&Show, kShowParams>()},
    {.path = {"audit", "undo"},
     .summary = "put rows back as they were before changes; asks first",
     .examples = {"qvadmin audit undo 17", "qvadmin audit undo 17 18 19 --dry-run"},
     .effect = Effect::change,
     .asks = true,
     .handler = WritePlanned<&PlanUndo, &UndoEntries, kUndoParams>()},
    {.path = {"audit", "verify"},
     .summary = "whether the record is as it was written",
     .examples = {"qvadmin audit verify"},
     .duration = Duration::longRunning,
     .columns = kVerifyColumns,
     .handler = ReadSnapshot<&Verify>()},
    {.path = {"audit", "prune"},
     .summary = "delete old entries of the record; asks first",
     .examples = {"qvadmin audit prune 2025-01-01"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanPrune, &PruneEntries, kPruneParams>()},
    {.path = {"user", "history"},
     .summary = "what was changed about a user, the latest first",
     .examples = {"qvadmin user history amy"},
     .columns = kHistoryColumns,
     .handler = Read<&UserHistory, kUserParams>()},
    {.path = {"group", "history"},
     .summary = "what was changed about a group, the latest first",
     .examples = {"qvadmin group history /Company/Sales"},
     .columns = kHistoryColumns,
     .handler = Read<&GroupHistory, kGroupParams>()},
    {.path = {"role", "history"},
     .summary = "what was changed about a role, the latest first",
     .examples = {"qvadmin role history Editors"},
     .columns = kHistoryColumns,
     .handler = Read<&RoleHistory, kRoleParams>()},
};

} // namespace

std::span<const Command> AuditCommands() { return kCommands; }

} // namespace management::audit
