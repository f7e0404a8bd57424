#include "management/audit/Recorder.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"
#include "management/Escape.h"
#include "management/Query.h"
#include "management/RowsInsert.h"
#include "management/audit/Chain.h"
#include "management/audit/WriteStatement.h"
#include "schema/Schema.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <span>

namespace management::audit {

namespace {

constexpr std::size_t kRowsPerQuery = 200;

std::string Now()
{
    return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}",
                       std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()));
}

/// Whether a row's values can be told without asking the engine.
bool AreLiterals(const Assignments& row, bool backslashEscapes)
{
    return std::ranges::all_of(row, [backslashEscapes](const auto& cell) {
        return IsNull(cell.second) || ValueOfLiteral(cell.second, backslashEscapes);
    });
}

/// The row that an insert adds, where it says all of it by literals.
std::optional<AuditedRow> WholeRow(const AuditedTable& table, const Assignments& assignments, bool backslashEscapes)
{
    AuditedRow row;
    for (const std::string& column : ColumnsOf(table)) {
        const auto given = std::ranges::find_if(
            assignments, [&column](const auto& assignment) { return SameIdentifier(assignment.first, column); });
        if (given == assignments.end()) {
            return std::nullopt;
        }
        auto value = ValueOfLiteral(given->second, backslashEscapes);
        if (!value && !IsNull(given->second)) {
            return std::nullopt;
        }
        row.emplace_back(column, std::move(value));
    }
    return row;
}

/// The first row that is in one list more often than in the other.
std::optional<AuditedRow> FirstBeyond(const std::vector<AuditedRow>& rows, std::vector<AuditedRow> known)
{
    for (const AuditedRow& row : rows) {
        const auto found = std::ranges::find(known, row);
        if (found == known.end()) {
            return row;
        }
        known.erase(found);
    }
    return std::nullopt;
}

using TouchedRow = std::pair<const AuditedTable*, std::string>; ///< and its id

/// The rows of one table as they are now, by their ids.
std::map<std::string, AuditedRow> ReadTouched(CAConnect& conn, std::span<const TouchedRow> touched)
{
    std::string ids;
    for (const TouchedRow& row : touched) {
        ids += (ids.empty() ? "" : ", ") + Literal(conn, row.second);
    }
    std::map<std::string, AuditedRow> rows;
    for (AuditedRow& row : ReadRows(conn, *touched.front().first, fmt::format("WHERE Col_ID IN ({})", ids))) {
        rows.emplace(ValueIn(row, "Col_ID").value_or(""), std::move(row));
    }
    return rows;
}

/// What differs; nothing where that is nothing. @param before, after  nothing where there is no such row.
std::optional<RowChange> Compared(const AuditedTable& table, const std::string& id, std::optional<AuditedRow> before,
                                  std::optional<AuditedRow> after)
{
    if (!before && !after) {
        return std::nullopt;
    }
    RowChange change{&table, id, 0};
    if (!before || !after) {
        change.count = before ? -1 : 1;
        change.before = std::move(before);
        change.after = std::move(after);
        return change;
    }
    change.before.emplace();
    change.after.emplace();
    for (std::size_t i = 0; i < before->size(); ++i) {
        if ((*before)[i] != (*after)[i]) {
            change.before->push_back((*before)[i]);
            change.after->push_back((*after)[i]);
        }
    }
    if (change.before->empty()) {
        return std::nullopt;
    }
    change.items = ItemsOf(table, *after);
    return change;
}

/// Where a column is in the rows of a table; nothing where it has no such column.
std::optional<std::size_t> PlaceOf(const AuditedTable& table, std::string_view column)
{
    const std::vector<std::string>& columns = ColumnsOf(table);
    const auto found =
        std::ranges::find_if(columns, [column](const std::string& name) { return SameIdentifier(name, column); });
    return found == columns.end() ? std::nullopt : std::optional(static_cast<std::size_t>(found - columns.begin()));
}

} // namespace

Recorder::Recorder(CAConnect& conn)
    : m_conn(conn), m_outer(conn.SetObserver(this)), m_backslashEscapes(EscapesBackslashes(conn))
{
}

Recorder::~Recorder() { m_conn.SetObserver(m_outer); }

// ---- Watching -------------------------------------------------------------------------------------------------------

void Recorder::BeforeExecute(CAConnect& /*conn*/, const char* sql)
{
    m_statement = ParseWrite(sql, m_backslashEscapes, m_head);
    m_table = m_statement ? FindAuditedTable(m_statement->table) : nullptr;
    // What cannot be read and an engine accepts all the same is refused afterwards.
    if (m_table == nullptr || !m_statement->isWhole || m_table->keeping == Keeping::countOnly) {
        return;
    }
    if (!m_statement->query.empty()) {
        NoteQueriedBefore(*m_table, *m_statement);
    } else if (m_statement->kind == WriteStatement::Kind::insert) {
        NoteInsertBefore(*m_table, *m_statement);
    } else if (m_table->keeping == Keeping::byId) {
        NoteRowsBefore(*m_table, *m_statement);
    } else {
        NoteContentsBefore(*m_table, *m_statement);
    }
}

void Recorder::AfterExecute(CAConnect& /*conn*/, const char* /*sql*/, int rows)
{
    if (m_table == nullptr) {
        return;
    }
    const bool isInsert = m_statement->kind == WriteStatement::Kind::insert;
    const bool isUnknown = !m_statement->query.empty() && m_table->keeping == Keeping::byId;
    if (!m_statement->isWhole || isUnknown || AddsUnknownContents(*m_table, *m_statement)) {
        throw CAException("internal error: this change cannot be recorded, and was not made");
    }
    if (m_table->keeping == Keeping::countOnly) {
        const auto inserted = static_cast<std::int64_t>(m_statement->furtherRows.size()) + 1;
        AddContent(*m_table, {}, isInsert ? inserted : -std::int64_t{std::max(rows, 0)});
    } else if (isInsert && m_statement->query.empty()) {
        NoteInserted(*m_table, *m_statement);
    }
}

/// Whether several rows without ids are added that only the engine can tell apart.
bool Recorder::AddsUnknownContents(const AuditedTable& table, const WriteStatement& insert) const
{
    if (table.keeping != Keeping::byContent || insert.furtherRows.empty()) {
        return false;
    }
    bool areKnown = true;
    auto added = m_added.begin();
    insert.ForEachRow([&](const Assignments& row) {
        areKnown = areKnown && ((added++)->row || AreLiterals(row, m_backslashEscapes));
    });
    return !areKnown;
}

void Recorder::NoteInsertBefore(const AuditedTable& table, const WriteStatement& statement)
{
    if (table.keeping == Keeping::byId) {
        NoteGreatestId(table);
        return;
    }
    m_added.clear();
    statement.ForEachRow([&](const Assignments& row) {
        AddedContent& added = m_added.emplace_back(AddedContent{WholeRow(table, row, m_backslashEscapes), {}});
        if (!added.row) {
            added.equalBefore = RowsLike(table, row);
        }
    });
}

// What these are at the end is read then.
bool Recorder::IsOfInserted(const AuditedTable& table, const WriteStatement& update)
{
    const auto inserted = m_inserted.find(&table);
    const auto ids = update.kind == WriteStatement::Kind::update ? IdsOf(update.condition) : std::nullopt;
    if (inserted == m_inserted.end() || !ids ||
        std::ranges::any_of(*ids, [&](std::int64_t id) { return id <= inserted->second.greatestId; }) ||
        std::ranges::any_of(update.assignments, [&](const auto& assignment) {
            const std::optional<std::size_t> place = PlaceOf(table, assignment.first);
            return place && *place < inserted->second.known.size() && inserted->second.known[*place];
        })) {
        return false;
    }
    for (const std::int64_t id : *ids) {
        inserted->second.changed.insert(std::to_string(id));
    }
    return true;
}

void Recorder::NoteRowsBefore(const AuditedTable& table, const WriteStatement& statement)
{
    if (IsOfInserted(table, statement)) {
        return;
    }
    for (AuditedRow& row : ReadRows(m_conn, table, std::string(statement.condition))) {
        const std::string key = ValueIn(row, "Col_ID").value_or("");
        Touch(table, key, std::move(row));
    }
}

void Recorder::NoteContentsBefore(const AuditedTable& table, const WriteStatement& statement)
{
    const std::vector<std::string>& columns = ColumnsOf(table);
    std::string wanted = ColumnList(table);
    for (const std::string& column : columns) {
        const auto given = std::ranges::find_if(statement.assignments, [&column](const auto& assignment) {
            return SameIdentifier(assignment.first, column);
        });
        wanted += ", ";
        wanted += given == statement.assignments.end() ? std::string_view(column) : given->second;
    }
    CARecordset rows;
    rows.Open(fmt::format("SELECT {} FROM {} {}", wanted, table.name, statement.condition).c_str(), &m_conn,
              adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    for (; rows.IsEOF() == 0; rows.MoveNext()) {
        AddContent(table, ReadRow(rows, table), -1);
        if (statement.kind == WriteStatement::Kind::update) {
            AddContent(table, ReadRow(rows, table, static_cast<long>(columns.size()) + 1), 1);
        }
    }
}

void Recorder::NoteInserted(const AuditedTable& table, const WriteStatement& statement)
{
    if (table.keeping == Keeping::byContent) {
        NoteInsertedContent(table, statement);
        return;
    }
    Inserted& inserted = m_inserted[&table];
    FindPlaces(inserted, table, statement);
    statement.ForEachRow([&](const Assignments& row) { NoteInsertedRow(table, inserted, row); });
}

void Recorder::NoteInsertedRow(const AuditedTable& table, Inserted& inserted, const Assignments& assignments)
{
    KnownRow known;
    known.reserve(assignments.size());
    for (std::size_t i = 0; i < assignments.size(); ++i) {
        const auto& [column, literal] = assignments[i];
        // Engines bring dates and long texts into a form of their own.
        const bool isText = literal.starts_with('\'');
        if (isText && !SameIdentifier(column, table.nameColumn) && !SameIdentifier(column, "Col_ID")) {
            continue;
        }
        auto value = ValueOfLiteral(literal, m_backslashEscapes);
        if (value && SameIdentifier(column, "Col_ID")) {
            Touch(table, *value, std::nullopt);
            return;
        }
        if (value && inserted.places[i]) {
            known.emplace_back(*inserted.places[i], std::move(*value));
        }
    }
    for (const auto& [place, value] : known) {
        inserted.known[place] = true;
    }
    inserted.rows.push_back(std::move(known));
}

// Inserts come in rows that name the same columns.
void Recorder::FindPlaces(Inserted& inserted, const AuditedTable& table, const WriteStatement& insert)
{
    if (std::ranges::equal(inserted.given, insert.assignments, {}, {},
                           &std::pair<std::string_view, std::string_view>::first)) {
        return;
    }
    inserted.known.resize(ColumnsOf(table).size());
    inserted.given.clear();
    inserted.places.clear();
    for (const auto& [column, literal] : insert.assignments) {
        inserted.given.emplace_back(column);
        inserted.places.push_back(PlaceOf(table, column));
    }
}

/// Takes the first of the rows that does not differ from this one in what is known of it. @return whether there was
/// one.
bool Recorder::TakeKnown(std::deque<KnownRow>& pending, const AuditedRow& row)
{
    const auto found = std::ranges::find_if(pending, [&row](const KnownRow& known) {
        return std::ranges::all_of(known, [&row](const auto& cell) { return row[cell.first].second == cell.second; });
    });
    if (found == pending.end()) {
        return false;
    }
    pending.erase(found);
    return true;
}

void Recorder::NoteInsertedContent(const AuditedTable& table, const WriteStatement& statement)
{
    auto noted = m_added.begin();
    statement.ForEachRow([&](const Assignments& row) {
        const AddedContent& added = *noted++;
        const auto content = added.row ? added.row : FirstBeyond(RowsLike(table, row), added.equalBefore);
        if (content) {
            AddContent(table, *content, 1);
        }
    });
}

void Recorder::NoteQueriedBefore(const AuditedTable& table, const WriteStatement& statement)
{
    CARecordset rows;
    rows.Open(statement.query.c_str(), &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    for (; rows.IsEOF() == 0; rows.MoveNext()) {
        AuditedRow row;
        for (const std::string& name : ColumnsOf(table)) {
            const auto given = std::ranges::find_if(statement.assignments, [&name](const auto& assignment) {
                return SameIdentifier(assignment.first, name);
            });
            const long column = given - statement.assignments.begin() + 1;
            row.emplace_back(name, given == statement.assignments.end() ? std::nullopt : OptionalTextIn(rows, column));
        }
        AddContent(table, row, 1);
    }
}

// Asking for the id of each row as it is inserted would double the statements of an import.
void Recorder::NoteGreatestId(const AuditedTable& table)
{
    if (m_inserted.contains(&table)) {
        return;
    }
    __int64 greatest = 0;
    CARecordset rows;
    rows.Open(fmt::format("SELECT MAX(Col_ID) FROM {}", table.name).c_str(), &m_conn, adbcCursorStatic,
              adbcLockOptimistic, adbcCommandTable);
    rows.GetValue(1, greatest);
    m_inserted[&table].greatestId = greatest;
}

void Recorder::Touch(const AuditedTable& table, const std::string& key, std::optional<AuditedRow> before)
{
    if (m_before.try_emplace({&table, key}, std::move(before)).second) {
        m_touched.emplace_back(&table, key);
    }
}

void Recorder::AddContent(const AuditedTable& table, const AuditedRow& row, std::int64_t count)
{
    const Key key{&table, row.empty() ? std::string() : Packed(row)};
    if (m_rows.try_emplace(key, row).second) {
        m_contents.push_back(key);
    }
    m_counts[key] += count;
}

// The engine may take for equal what is not, so the values are compared once more.
std::vector<AuditedRow> Recorder::RowsLike(const AuditedTable& table, const Assignments& assignments)
{
    constexpr std::size_t longest = 128;
    std::string condition;
    AuditedRow given;
    for (const auto& [column, literal] : assignments) {
        const auto value = ValueOfLiteral(literal, m_backslashEscapes);
        const bool isNull = IsNull(literal);
        if (value || isNull) {
            given.emplace_back(column, value);
        }
        if (isNull || (value && value->size() <= longest)) {
            condition +=
                fmt::format("{} {} {} {}", condition.empty() ? "WHERE" : " AND", column, isNull ? "IS" : "=", literal);
        }
    }
    std::vector<AuditedRow> rows = ReadRows(m_conn, table, condition);
    std::erase_if(rows, [&given](const AuditedRow& row) {
        return std::ranges::any_of(given, [&row](const auto& cell) {
            const auto same = [&cell](const auto& other) { return SameIdentifier(other.first, cell.first); };
            const auto found = std::ranges::find_if(row, same);
            return found != row.end() && found->second != cell.second;
        });
    });
    return rows;
}

void Recorder::TakeInserted(std::vector<StoredRow>& stored)
{
    for (auto& [table, inserted] : m_inserted) {
        if (!inserted.rows.empty() || !inserted.changed.empty()) {
            TakeInserted(*table, std::move(inserted), stored);
        }
    }
    m_inserted.clear();
}

void Recorder::TakeInserted(const AuditedTable& table, Inserted inserted, std::vector<StoredRow>& stored)
{
    std::deque<KnownRow>& pending = inserted.rows;
    std::vector<Key> unknown; // that were changed without being read before
    const std::string condition = fmt::format("WHERE Col_ID > {} ORDER BY Col_ID", inserted.greatestId);
    RowChange change{.table = &table, .after = NullRow(table)}; // one row for all, whose memory is used again
    CARecordset rows;
    for (OpenRows(rows, m_conn, table, condition); rows.IsEOF() == 0; rows.MoveNext()) {
        ReadInto(*change.after, rows);
        const Key key{&table, ValueIn(*change.after, "Col_ID").value_or("")};
        if (TakeKnown(pending, *change.after)) {
            if (m_before.erase(key) != 0) {
                std::erase(m_touched, key);
            }
            change.key = key.second;
            stored.push_back(Stored(change));
        } else if (inserted.changed.contains(key.second)) {
            unknown.push_back(key);
        }
    }
    // What was added and deleted again, or is known by other values now.
    for (auto& [key, before] : m_before) {
        if (key.first == &table && before && TakeKnown(pending, *before)) {
            before.reset();
        }
    }
    const auto isInserted = [this](const Key& key) {
        const auto found = m_before.find(key);
        return found != m_before.end() && !found->second;
    };
    if (!pending.empty() || !std::ranges::all_of(unknown, isInserted)) {
        throw CAException("internal error: a new row cannot be recorded, and the change was not made");
    }
}

// ---- Writing --------------------------------------------------------------------------------------------------------

void Recorder::TakeRowChanges(std::vector<StoredRow>& stored)
{
    for (auto begin = m_touched.begin(); begin != m_touched.end();) {
        const AuditedTable* table = begin->first;
        const auto most = std::min<std::ptrdiff_t>(m_touched.end() - begin, kRowsPerQuery);
        const auto end = std::find_if(begin, begin + most, [table](const Key& key) { return key.first != table; });
        std::map<std::string, AuditedRow> present = ReadTouched(m_conn, {begin, end});
        for (; begin != end; ++begin) {
            const auto found = present.find(begin->second);
            std::optional<AuditedRow> after;
            if (found != present.end()) {
                after = std::move(found->second);
            }
            if (auto change = Compared(*table, begin->second, std::move(m_before.at(*begin)), std::move(after))) {
                stored.push_back(Stored(*change));
            }
        }
    }
}

std::vector<StoredRow> Recorder::TakeChanges()
{
    std::vector<StoredRow> stored;
    TakeInserted(stored);
    std::ranges::stable_sort(m_touched, {}, &Key::first);
    TakeRowChanges(stored);
    for (const Key& key : m_contents) {
        const std::int64_t count = m_counts.at(key);
        if (count != 0) {
            RowChange change{key.first, "", count};
            AuditedRow& row = m_rows.at(key);
            if (!row.empty()) {
                (count < 0 ? change.before : change.after) = std::move(row);
            }
            stored.push_back(Stored(change));
        }
    }
    m_touched.clear();
    m_before.clear();
    m_contents.clear();
    m_counts.clear();
    m_rows.clear();
    return stored;
}

void Recorder::AppendValues(std::string& sql, int entry, const StoredRow& row) const
{
    const auto append = [&](std::string_view text) {
        sql += '\'';
        sql += EscapeLiteral(m_conn, text).View();
        sql += '\'';
    };
    sql += fmt::format("{}, ", entry);
    append(row.table);
    sql += ", ";
    append(row.key);
    sql += fmt::format(", {}", row.count);
    for (const std::string* text : {&row.item, &row.otherItem}) {
        sql += ", ";
        append(*text);
    }
    for (const auto* text : {&row.before, &row.after}) {
        sql += ", ";
        if (*text) {
            append(**text);
        } else {
            sql += "NULL";
        }
    }
}

int Recorder::Write(const EntryData& data, bool isForced)
{
    // What is written here is not itself a change of the directory.
    dbaccess::StatementObserver* const self = m_conn.SetObserver(nullptr);
    struct Restore {
        CAConnect& conn;
        dbaccess::StatementObserver* observer;
        ~Restore() { conn.SetObserver(observer); }
    } const restore{m_conn, self};

    const std::vector<StoredRow> rows = TakeChanges();
    if (rows.empty() && !isForced) {
        return 0;
    }
    StoredEntry entry{.time = Now(),
                      .who = data.who,
                      .frontEnd = data.frontEnd,
                      .command = data.command,
                      .reason = data.reason,
                      .partOf = data.partOf,
                      .undoes = data.undoes,
                      .rows = static_cast<int>(rows.size()),
                      .previous = LastDigest(m_conn)};
    entry.digest = DigestOf(entry, rows);
    const auto literal = [this](std::string_view text) { return Literal(m_conn, text); };
    m_conn.Execute(fmt::format("INSERT INTO qv_AuditEntry (Col_Time, Col_Who, Col_FrontEnd, Col_Command, Col_Reason, "
                               "Col_PartOf, Col_Undoes, Col_Rows, Col_Previous, Col_Digest) VALUES ({}, {}, {}, {}, "
                               "{}, {}, {}, {}, {}, {})",
                               literal(entry.time), literal(entry.who), literal(entry.frontEnd), literal(entry.command),
                               literal(entry.reason), entry.partOf, literal(entry.undoes), entry.rows,
                               literal(entry.previous), literal(entry.digest))
                       .c_str());
    const int id = schema::LastInsertedId(m_conn);
    RowsInsert insert(m_conn, "qv_AuditRow",
                      "Col_EntryID, Col_Table, Col_Key, Col_Count, Col_Item, Col_OtherItem, Col_Before, Col_After");
    for (const StoredRow& row : rows) {
        insert.Add([&](std::string& sql) { AppendValues(sql, id, row); });
    }
    insert.Finish();
    return id;
}

} // namespace management::audit
