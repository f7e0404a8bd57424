#include "management/audit/Undo.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "dbaccess/EngineKind.h"
#include "management/Escape.h"
#include "management/Items.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/References.h"
#include "management/Text.h"
#include "schema/Schema.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <limits>

namespace management::audit {

namespace {

constexpr int kRowsAtOnce = 200;

const AuditedTable& TableOf(const StoredRow& row)
{
    const AuditedTable* table = FindAuditedTable(row.table);
    if (table == nullptr) {
        throw Error(ErrorCode::failed, FillPattern("the record names a table {} that there is not", Quoted(row.table)));
    }
    return *table;
}

bool IsMark(const AuditedTable& table, const AuditedRow& row, const AuditedRow::value_type& cell)
{
    return cell.second == kSecretMark && IsSecret(table, row, cell.first);
}

/// @param recorded  of a row that stayed, only the columns that changed.
bool IsAsRecorded(const AuditedTable& table, const AuditedRow& present, const AuditedRow& recorded)
{
    return std::ranges::all_of(recorded, [&](const auto& cell) {
        return IsMark(table, recorded, cell) || ValueIn(present, cell.first) == cell.second;
    });
}

bool HasSecret(const AuditedTable& table, const AuditedRow& row)
{
    return std::ranges::any_of(row, [&](const auto& cell) { return IsMark(table, row, cell); });
}

AuditedRow WithoutMarks(const AuditedTable& table, AuditedRow row)
{
    for (auto& cell : row) {
        if (IsMark(table, row, cell)) {
            cell.second = "";
        }
    }
    return row;
}

} // namespace

Sentence Described(NameCache& names, const StoredRow& row)
{
    const AuditedTable& table = TableOf(row);
    const AuditedRow content = row.after || row.before ? Unpacked(row.after ? *row.after : *row.before) : AuditedRow();
    const std::string name = table.nameColumn.empty() ? "" : ValueIn(content, table.nameColumn).value_or("");
    if (name.empty() && table.itemType != 0) {
        return Named(names.Find(KeyOf(row.item)));
    }
    const std::string text = fmt::format("{}{}{}", table.noun, name.empty() ? "" : " ", Visible(name));
    return row.key.empty() ? text : fmt::format("{} (id {})", text, Visible(row.key));
}

ItemKey KeyOf(const std::string& item)
{
    ItemKey key{};
    const std::size_t colon = item.find(':');
    std::from_chars(item.data(), item.data() + colon, key.type);
    std::from_chars(item.data() + colon + 1, item.data() + item.size(), key.id);
    return key;
}

// ---- Putting rows back ----------------------------------------------------------------------------------------------

void Undo::Apply(const Entry& entry)
{
    bool isAny = false;
    for (const int part : m_log.Parts(entry)) {
        std::vector<NumberedRow> rows;
        for (int below = std::numeric_limits<int>::max();
             !(rows = m_log.RowsBackwards(part, below, kRowsAtOnce)).empty(); below = rows.back().id) {
            ApplyRows(entry, rows);
            isAny = true;
        }
    }
    if (!isAny) {
        throw Error(
            ErrorCode::conflict,
            FillPattern("{} cannot be undone: the record has no row that it changed; nothing was undone", entry.id));
    }
}

void Undo::ApplyRows(const Entry& entry, const std::vector<NumberedRow>& rows)
{
    for (std::size_t i = 0; i < rows.size();) {
        const std::size_t next = RemoveAdded(entry, rows, i);
        if (next == i) {
            ApplyRow(entry, rows[i++].row);
        } else {
            i = next;
        }
    }
}

/// Deletes rows of one table that were added, all at once. @return the place after them; `begin` where there are none.
std::size_t Undo::RemoveAdded(const Entry& entry, const std::vector<NumberedRow>& rows, std::size_t begin)
{
    const AuditedTable& table = TableOf(rows[begin].row);
    std::size_t end = begin;
    std::string ids;
    for (; end < rows.size() && rows[end].row.table == table.name && table.keeping == Keeping::byId &&
           rows[end].row.count > 0;
         ++end) {
        ids += (ids.empty() ? "" : ", ") + Literal(m_conn, rows[end].row.key);
    }
    if (end == begin) {
        return begin;
    }
    const std::string condition = fmt::format("WHERE Col_ID IN ({})", ids);
    std::map<std::string, AuditedRow> present;
    for (AuditedRow& row : Rows(table, condition)) {
        present.emplace(ValueIn(row, "Col_ID").value_or(""), std::move(row));
    }
    for (std::size_t i = begin; i < end; ++i) {
        const StoredRow& row = rows[i].row;
        const auto found = present.find(row.key);
        if (found == present.end() ||
            !IsAsRecorded(table, found->second, Completed(table, Unpacked(row.after.value_or("{}"))))) {
            ThrowInTheWay(entry, row);
        }
        if (table.itemType != 0) {
            m_removedItems.emplace(row.item, Described(m_names, row));
            m_linkedItems.erase(row.item); // it was changed in a later part, which is undone already
        }
    }
    Execute(m_conn, fmt::format("DELETE FROM {} {}", table.name, condition));
    return end;
}

void Undo::ApplyRow(const Entry& entry, const StoredRow& row)
{
    const AuditedTable& table = TableOf(row);
    RequireRecorded(entry, table, row);
    for (const std::string& item : {row.item, row.otherItem}) {
        if (!item.empty() && row.count <= 0) {
            m_linkedItems.insert(item);
        }
    }
    if (table.keeping == Keeping::byContent) {
        RestoreContent(entry, table, row);
    } else if (row.count < 0) {
        Restore(entry, table, row);
    } else {
        ChangeBack(entry, table, row);
    }
}

void Undo::RequireRecorded(const Entry& entry, const AuditedTable& table, const StoredRow& row)
{
    if (table.keeping == Keeping::countOnly) {
        throw Error(ErrorCode::conflict,
                    FillPattern("{} cannot be undone: it deleted {}, of which the record has the number alone; nothing "
                                "was undone",
                                entry.id, Counted(static_cast<std::size_t>(-row.count), table.noun)));
    }
    const bool stays = row.count == 0 || table.keeping == Keeping::byContent;
    const AuditedRow content = Unpacked(row.after ? *row.after : row.before.value_or("{}"));
    const AuditedRow earlier = Unpacked(row.before.value_or("{}"));
    if (stays && (HasSecret(table, content) || HasSecret(table, earlier))) {
        throw Error(
            ErrorCode::conflict,
            FillPattern("{} cannot be undone: it changed {} of {}, which is never recorded; nothing was undone",
                        entry.id,
                        Sentence(table.name == "qv_User" ? Translatable("the password") : Translatable("the value")),
                        Described(m_names, row)));
    }
}

void Undo::Restore(const Entry& entry, const AuditedTable& table, const StoredRow& row)
{
    if (!Rows(table, WithKey(row.key)).empty()) {
        ThrowInTheWay(entry, row);
    }
    const AuditedRow content = Completed(table, Unpacked(row.before.value_or("{}")));
    if (HasSecret(table, content)) {
        m_withoutSecret.push_back({Described(m_names, row), table.name == "qv_User" ? "password" : "one-time codes"});
    }
    Insert(table, WithoutMarks(table, content));
    m_named.emplace(&table, row.key);
}

void Undo::ChangeBack(const Entry& entry, const AuditedTable& table, const StoredRow& row)
{
    const std::string condition = WithKey(row.key);
    const std::vector<AuditedRow> present = Rows(table, condition);
    // A column that became empty is not in what was packed.
    const AuditedRow before = Unpacked(row.before.value_or("{}"));
    const AuditedRow after = Unpacked(row.after.value_or("{}"));
    std::set<std::string> columns;
    for (const auto& cells : {before, after}) {
        for (const auto& cell : cells) {
            columns.insert(cell.first);
        }
    }
    const AuditedRow wholeBefore = Completed(table, before);
    AuditedRow wholeAfter = Completed(table, after);
    std::erase_if(wholeAfter, [&columns](const auto& cell) { return !columns.contains(cell.first); });
    if (present.empty() || !IsAsRecorded(table, present.front(), wholeAfter)) {
        ThrowInTheWay(entry, row);
    }
    std::string assignments;
    for (const std::string& column : columns) {
        const auto value = ValueIn(wholeBefore, column);
        assignments += fmt::format("{}{} = {}", assignments.empty() ? "" : ", ", column, LiteralOrNull(m_conn, value));
    }
    Execute(m_conn, fmt::format("UPDATE {} SET {} {}", table.name, assignments, condition));
    if (columns.contains(std::string(table.nameColumn))) {
        m_named.emplace(&table, row.key);
    }
}

// Rows without ids are deleted by their content, which the engine may compare with less care: what it takes for equal
// and is not, is put back.
void Undo::RestoreContent(const Entry& entry, const AuditedTable& table, const StoredRow& row)
{
    const AuditedRow content =
        Completed(table, Unpacked(row.count > 0 ? row.after.value_or("{}") : row.before.value_or("{}")));
    const std::string condition = ConditionOf(content);
    const std::vector<AuditedRow> alike = Rows(table, condition);
    const std::int64_t equal = std::ranges::count(alike, content);
    if (row.count > 0 ? equal < row.count : equal != 0) {
        ThrowInTheWay(entry, row);
    }
    if (row.count > 0) {
        Execute(m_conn, fmt::format("DELETE FROM {} {}", table.name, condition));
        std::int64_t left = row.count;
        for (const AuditedRow& other : alike) {
            if (other != content || --left < 0) {
                Insert(table, other);
            }
        }
        return;
    }
    for (std::int64_t i = row.count; i < 0; ++i) {
        Insert(table, content);
    }
    if (table.name == "qv_Relation" && ValueIn(content, "Col_RelType") == std::to_string(kMembership)) {
        m_links.emplace(row.item, row.otherItem);
    }
}

void Undo::ThrowInTheWay(const Entry& entry, const StoredRow& row)
{
    const std::optional<Entry> later = m_log.LaterChange(entry, row);
    throw Error(ErrorCode::conflict,
                FillPattern("{} cannot be undone: {} was changed later, by {}; nothing was undone", entry.id,
                            Described(m_names, row), later ? Named(*later) : Translatable("another program")));
}

std::string Undo::ConditionOf(const AuditedRow& row) const
{
    std::string condition;
    for (const auto& [column, value] : row) {
        condition += fmt::format("{} {} {}", condition.empty() ? "WHERE" : " AND", column,
                                 value ? "= " + Literal(m_conn, *value) : "IS NULL");
    }
    return condition;
}

std::string Undo::WithKey(const std::string& key) const { return "WHERE Col_ID = " + Literal(m_conn, key); }

std::vector<AuditedRow> Undo::Rows(const AuditedTable& table, const std::string& condition)
{
    return WithDatabaseErrors(m_conn, [&] { return ReadRows(m_conn, table, condition); });
}

void Undo::Insert(const AuditedTable& table, const AuditedRow& row)
{
    std::string columns;
    std::string values;
    for (const auto& [column, value] : row) {
        columns += (columns.empty() ? "" : ", ") + column;
        values += fmt::format("{}{}", values.empty() ? "" : ", ", LiteralOrNull(m_conn, value));
    }
    const std::string sql = fmt::format("INSERT INTO {} ({}) VALUES ({})", table.name, columns, values);
    if (table.keeping == Keeping::byId) {
        WithDatabaseErrors(m_conn, [&] { schema::ExecuteWithIds(m_conn, std::string(table.name), sql); });
    } else {
        Execute(m_conn, sql);
    }
}

// ---- Whether the directory holds together ---------------------------------------------------------------------------

void Undo::Check()
{
    CheckNothingLeft();
    CheckItemsThere();
    CheckNames();
    CheckGroups();
}

void Undo::CheckNothingLeft()
{
    std::map<int, std::vector<int>> idsOf;
    for (const auto& removed : m_removedItems) {
        const ItemKey key = KeyOf(removed.first);
        idsOf[key.type].push_back(key.id);
    }
    for (const auto& [type, ids] : idsOf) {
        for (std::size_t begin = 0; begin < ids.size(); begin += kRowsAtOnce) {
            const auto first = ids.begin() + static_cast<std::ptrdiff_t>(begin);
            const std::size_t count = std::min<std::size_t>(kRowsAtOnce, ids.size() - begin);
            const std::vector<int> some(first, first + static_cast<std::ptrdiff_t>(count));
            if (!CountReferences(m_conn, type, some).empty()) {
                RequireUnused(type, some);
            }
        }
    }
}

void Undo::RequireUnused(int type, const std::vector<int>& ids)
{
    for (const int id : ids) {
        const std::vector<Reference> references = CountReferences(m_conn, type, {id});
        if (!references.empty()) {
            throw Error(ErrorCode::conflict,
                        FillPattern("{} is in use by now{}; nothing was undone",
                                    m_removedItems.at(fmt::format("{}:{}", type, id)), WithReferences(references)));
        }
    }
}

void Undo::CheckItemsThere()
{
    NameCache names(m_conn); // of what is there now
    for (const std::string& item : m_linkedItems) {
        const ItemKey key = KeyOf(item);
        if (key.id > 0 && key.type >= kItemTypeUser && key.type <= kItemTypeView && names.NameOf(key).empty()) {
            throw Error(ErrorCode::conflict,
                        FillPattern("what would come back belongs to {} id {}, which is gone; undo its deletion first. "
                                    "Nothing was undone",
                                    TypeName(key.type), key.id));
        }
    }
}

void Undo::CheckNames()
{
    for (const auto& [table, key] : m_named) {
        if (!table->hasOneOfEachName) {
            continue;
        }
        const std::vector<AuditedRow> rows = Rows(*table, WithKey(key));
        const std::string name = rows.empty() ? "" : ValueIn(rows.front(), table->nameColumn).value_or("");
        if (name.empty()) {
            continue;
        }
        const std::string value = Literal(m_conn, name);
        const std::string folded = dbaccess::EngineKindOf(m_conn) == dbaccess::EngineKind::comparesInCapitals
                                       ? fmt::format("upper({}) = upper({})", table->nameColumn, value)
                                       : fmt::format("{} = {}", table->nameColumn, value);
        for (const AuditedRow& other : Rows(*table, "WHERE " + folded)) {
            const auto scopeOf = [](const AuditedRow& row) {
                return std::tuple(ValueIn(row, "Col_AppName"), ValueIn(row, "Col_DomainID"), ValueIn(row, "Col_Type"),
                                  ValueIn(row, "Col_OwnerID"));
            };
            if (ValueIn(other, "Col_ID") != key && scopeOf(other) == scopeOf(rows.front()) &&
                SameName(ValueIn(other, table->nameColumn).value_or(""), name)) {
                throw Error(ErrorCode::conflict,
                            FillPattern("there is another {} {} by now (id {}); nothing was undone", table->noun,
                                        Visible(name), ValueIn(other, "Col_ID").value_or("")));
            }
        }
    }
}

void Undo::CheckGroups()
{
    const auto isGroup = [](const auto& link) { return KeyOf(link.second).type == kItemTypeGroup; };
    const AuditedTable* const groups = FindAuditedTable("qv_Group");
    const bool isNamed = std::ranges::any_of(m_named, [groups](const auto& row) { return row.first == groups; });
    if (!isNamed && std::ranges::none_of(m_links, isGroup)) {
        return;
    }
    const Organisation organisation(m_conn);
    for (const auto& [holder, member] : m_links) {
        const ItemKey group = KeyOf(member);
        if (group.type == kItemTypeGroup && organisation.Find(group) != nullptr) {
            RequireNoCycle(organisation, KeyOf(holder), group);
            RequireOneOfItsName(organisation, KeyOf(holder), group);
        }
    }
    for (const auto& [table, key] : m_named) {
        const Node* group =
            table == groups ? organisation.Find(KeyOf(fmt::format("{}:{}", kItemTypeGroup, key))) : nullptr;
        for (std::size_t i = 0; group != nullptr && i < group->parents.size(); ++i) {
            RequireOneOfItsName(organisation, organisation.Nodes()[group->parents[i]].key, group->key);
        }
    }
}

void Undo::RequireNoCycle(const Organisation& organisation, ItemKey parent, ItemKey group)
{
    if (const auto cycle = organisation.CycleClosedBy(parent, group); !cycle.empty()) {
        throw Error(ErrorCode::conflict, FillPattern("the groups would form a cycle: {}; nothing was undone",
                                                     organisation.CycleText(cycle)));
    }
}

void Undo::RequireOneOfItsName(const Organisation& organisation, ItemKey parent, ItemKey group)
{
    if (organisation.ChildrenNamed(parent, organisation.Find(group)->name).size() > 1) {
        throw Error(ErrorCode::conflict,
                    FillPattern("there would be two groups {}; nothing was undone", organisation.PathOf(group)));
    }
}

} // namespace management::audit
