#include "schema/Copy.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CADateTime.h"
#include "dbaccess/CARecordset.h"
#include "dbaccess/CATransaction.h"
#include "platform/CodePage.h"
#include "schema/Snapshot.h"
#include "schema/Tables.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

namespace schema {

namespace {

// A statement of this many bytes is sent; engines take more, and gain nothing by it.
constexpr std::size_t kBytesPerInsert = std::size_t{256} * 1024;
constexpr const char* kKey = "Col_ID";

CString TextOf(const std::string& text) { return CString(std::string_view(text)); }

void OpenRows(CARecordset& rs, CAConnect& conn, const std::string& sql)
{
    if (!rs.Open(sql.c_str(), &conn, adbcCursorForwardOnly, adbcLockReadOnly, adbcCommandText)) {
        throw CAException("the database connection is not open");
    }
}

std::int64_t NumberOf(CAConnect& conn, const std::string& sql)
{
    __int64 number = 0;
    CARecordset rs;
    OpenRows(rs, conn, sql);
    rs.GetValue(1, number);
    return number;
}

std::vector<std::string> TableNames(CAConnect& conn)
{
    std::vector<std::string> names;
    CARecordset rs;
    for (OpenRows(rs, conn, DialectOf(conn).listTables); rs.IsEOF() == 0; rs.MoveNext()) {
        names.emplace_back(rs.GetValueToStr(1, true).View());
    }
    return names;
}

std::vector<std::string> ColumnNames(CARecordset& rs)
{
    std::vector<std::string> names;
    for (long column = 1; column <= rs.GetColumnCount(); ++column) {
        names.emplace_back(rs.GetColumnName(column).View());
    }
    return names;
}

/// Null when it is not among them.
const std::string* FindName(const std::vector<std::string>& names, std::string_view name)
{
    const auto found = std::ranges::find_if(names, [&](const std::string& held) { return SameName(held, name); });
    return found == names.end() ? nullptr : &*found;
}

/// Null when there is none. Of tables and of columns.
template <class Named>
const Named* Find(const std::vector<Named>& all, std::string_view name)
{
    const auto found = std::ranges::find_if(all, [&](const Named& one) { return SameName(one.name, name); });
    return found == all.end() ? nullptr : &*found;
}

const Column* CountedOf(const Table& table)
{
    const auto counted = std::ranges::find_if(table.columns, &Column::isAutoIncrement);
    return counted == table.columns.end() ? nullptr : &*counted;
}

void FillIn(std::string& statement, std::string_view place, std::string_view text)
{
    for (std::size_t at = statement.find(place); at != std::string::npos; at = statement.find(place, at)) {
        statement.replace(at, place.size(), text);
        at += text.size();
    }
}

std::string Filled(std::string statement, const Table& table)
{
    FillIn(statement, "{table}", table.name);
    return statement;
}

std::string Filled(std::string statement, const Table& table, const Column& counted, std::int64_t id = 0)
{
    statement = Filled(std::move(statement), table);
    FillIn(statement, "{column}", counted.name);
    FillIn(statement, "{id}", std::to_string(id));
    return statement;
}

std::int64_t RowsBy(CAConnect& conn, const std::string& count)
{
    const std::vector<std::string> present = TableNames(conn);
    std::int64_t rows = 0;
    for (const Table& table : TablesOf(DialectOf(conn))) {
        rows += FindName(present, table.name) != nullptr ? NumberOf(conn, Filled(count, table)) : 0;
    }
    return rows;
}

/// The name as statements have it, whatever is in it.
std::string Quoted(const std::string& name, const CopyRules& rules)
{
    std::string quoted(1, rules.nameBegin);
    for (const char ch : name) {
        quoted.append(ch == rules.nameEnd ? 2 : 1, ch);
    }
    return quoted + rules.nameEnd;
}

bool IsWholeNumber(std::string_view text)
{
    const std::string_view digits = text.substr(text.starts_with('-') ? 1 : 0);
    return !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
}

// Fractions of a second may follow a date, but no zone: a server would pass over it.
bool IsDatetime(CARecordset& rs, long column, std::string_view text)
{
    CADateTime datetime;
    return rs.GetValue(column, datetime) && text.find_first_not_of("0123456789-: T.") == std::string_view::npos &&
           std::ranges::count(text, '-') == 2;
}

/// The transaction that fills the target; nobody else writes to it, and a second copy waits. Rolled back unless it is
/// committed.
class TargetTransaction {
public:
    /// @param replaces  whether all rows that are there are deleted first.
    TargetTransaction(CAConnect& conn, bool replaces) : m_conn(conn), m_dialect(DialectOf(conn)), m_replaces(replaces)
    {
        ExecuteAll(m_conn, m_dialect.copying.beginWriting);
        BeginLocked(m_conn, m_dialect, kLongestTableWork, m_transaction);
        try {
            HoldTables();
            DeleteRows();
            Execute(m_dialect.copying.savepoint);
        } catch (...) {
            GiveUp();
            throw;
        }
    }
    TargetTransaction(const TargetTransaction&) = delete;
    TargetTransaction& operator=(const TargetTransaction&) = delete;
    ~TargetTransaction() { GiveUp(); }

    /// Takes back all that was written, and lets no second copy in.
    void Restart()
    {
        if (m_dialect.copying.rollbackToSavepoint.empty()) {
            m_transaction->Rollback();
            m_transaction.emplace(m_conn);
            DeleteRows();
        } else {
            Execute(m_dialect.copying.rollbackToSavepoint);
        }
    }
    void Commit()
    {
        m_transaction->Commit();
        m_isOpen = false;
        Unlock(m_conn, m_dialect);
    }

private:
    void HoldTables()
    {
        if (!m_dialect.copying.lockTable.empty()) {
            for (const Table& table : TablesOf(m_dialect)) {
                Execute(Filled(m_dialect.copying.lockTable, table));
            }
        }
    }
    void DeleteRows()
    {
        if (m_replaces) {
            for (const Table& table : TablesOf(m_dialect)) {
                m_conn.Execute(("DELETE FROM " + table.name).c_str());
            }
        }
    }
    void GiveUp() noexcept
    {
        if (std::exchange(m_isOpen, false)) {
            m_transaction.reset();
            Unlock(m_conn, m_dialect);
        }
    }
    void Execute(const std::string& statement)
    {
        if (!statement.empty()) {
            m_conn.Execute(statement.c_str());
        }
    }

    CAConnect& m_conn;
    const Dialect& m_dialect;
    bool m_replaces;
    std::optional<CATransaction> m_transaction;
    bool m_isOpen = true;
};

/// A row as an INSERT has it.
struct WrittenRow {
    std::string values;
    std::string name; ///< which it is, for people
};

/// How many bytes a server takes in a statement, by a setting of its own.
struct StatementSizeLimit {
    std::string setting;
    std::size_t bytes = std::numeric_limits<std::size_t>::max();
};

StatementSizeLimit StatementSizeLimitOf(CAConnect& conn)
{
    const std::string& setting = DialectOf(conn).copying.longestStatement;
    return setting.empty()
               ? StatementSizeLimit{}
               : StatementSizeLimit{setting, static_cast<std::size_t>(NumberOf(conn, "SELECT @@" + setting))};
}

/// Writes the rows of one table, many in a statement.
class Writer {
public:
    /// @param head  the statement up to its values.
    Writer(CAConnect& conn, TargetTransaction& transaction, const StatementSizeLimit& sizeLimit,
           const std::string& table, std::string head)
        : m_conn(conn),
          m_transaction(transaction),
          m_sizeLimit(sizeLimit),
          m_mostRows(DialectOf(conn).copying.rowsPerInsert),
          m_table(table),
          m_head(std::move(head))
    {
    }

    /// @return whether the rows so far have been written.
    bool Add(WrittenRow row)
    {
        RequireRoom(row);
        const std::size_t bytes = m_bytes + BytesOf(row);
        const bool isFull = !m_rows.empty() && (m_rows.size() == m_mostRows || bytes > kBytesPerInsert ||
                                                m_head.size() + bytes + kBytesAround > m_sizeLimit.bytes);
        if (isFull) {
            Flush();
        }
        m_bytes += BytesOf(row);
        m_rows.push_back(std::move(row));
        return isFull;
    }

    void Flush()
    {
        if (m_rows.empty()) {
            return;
        }
        try {
            std::string sql = m_head;
            for (const WrittenRow& row : m_rows) {
                sql += &row == &m_rows.front() ? "" : ",";
                sql += row.values;
            }
            m_conn.Execute(sql.c_str());
        } catch (const CAException& e) {
            Blame(e);
        }
        m_rows.clear();
        m_bytes = 0;
    }

    [[noreturn]] static void Refuse(const std::string& table, const std::string& row, const CAException& e)
    {
        throw RowRefused(AtRow(table, row, e), e.GetErrorCode());
    }

private:
    static constexpr std::size_t kBytesAround = 64; // that a client puts around a statement

    static CString AtRow(const std::string& table, const std::string& row, const CAException& e)
    {
        return TextOf(table + ", " + row + ": ") + e.GetErrorText();
    }

    static std::size_t BytesOf(const WrittenRow& row) { return row.values.size() + 1; } // and a comma

    // The server would hang up.
    void RequireRoom(const WrittenRow& row) const
    {
        const std::size_t bytes = m_head.size() + BytesOf(row) + kBytesAround;
        if (bytes > m_sizeLimit.bytes) {
            const std::string text = "it takes a statement of " + std::to_string(bytes) + " bytes, and the server's " +
                                     m_sizeLimit.setting + " is " + std::to_string(m_sizeLimit.bytes) +
                                     "; raise that if the row is to stay as it is";
            Refuse(m_table, row.name, CAException(TextOf(text)));
        }
    }

    /// Finds the row that the engine refuses, by writing each by itself where nothing is at stake any more.
    [[noreturn]] void Blame(const CAException& refusal)
    {
        if (m_rows.size() == 1) {
            Refuse(m_table, m_rows.front().name, refusal);
        }
        if (m_conn.IsOpen() && IsBegunAnew()) {
            for (const WrittenRow& row : m_rows) {
                TryAlone(row);
            }
        }
        // Only beside rows that were written before is it wrong, or the engine has no room.
        throw CAException(AtRow(m_table, m_rows.front().name + " to " + m_rows.back().name, refusal),
                          refusal.GetErrorCode());
    }

    bool IsBegunAnew()
    {
        try {
            m_transaction.Restart();
            return true;
        } catch (const CAException&) { // the refusal is the better thing to report
            return false;
        }
    }

    void TryAlone(const WrittenRow& row)
    {
        try {
            m_conn.Execute((m_head + row.values).c_str());
        } catch (const CAException& e) {
            Refuse(m_table, row.name, e);
        }
    }

    CAConnect& m_conn;
    TargetTransaction& m_transaction;
    const StatementSizeLimit& m_sizeLimit;
    std::size_t m_mostRows;
    const std::string& m_table;
    std::string m_head;
    std::vector<WrittenRow> m_rows;
    std::size_t m_bytes = 0;
};

struct CarriedColumn {
    long number = 0;  ///< in the source's rows
    std::string name; ///< as statements of the target have it
    Kind kind = Kind::text;
};

/// What is copied of a table.
struct TableMapping {
    const Table& source;
    const Table& target;
    std::vector<CarriedColumn> columns;
    long key = 0;     ///< column of the source by which people name a row; 0 when there is none
    long counted = 0; ///< the one that the target counts by itself; 0 when it is not copied
};

class Copier {
public:
    Copier(CAConnect& from, CAConnect& to, const CopyProgress& progress)
        : m_from(from),
          m_to(to),
          m_progress(progress),
          m_rules(DialectOf(to).copying),
          m_sources(TablesOf(DialectOf(from))),
          m_targets(TablesOf(DialectOf(to)))
    {
    }

    /// @param replaces  whether the target's rows are deleted first.
    Copied Run(bool replaces)
    {
        const Snapshot snapshot(m_from);
        TargetTransaction transaction(m_to, replaces);
        RequireRows(0);
        m_sizeLimit = StatementSizeLimitOf(m_to);
        for (const TableMapping& carried : MapTables()) {
            CopyTable(carried, transaction);
            if (m_copied.stopped) {
                return m_copied;
            }
            ++m_copied.tables;
        }
        m_copied.others = Others();
        RequireRows(m_copied.rows); // no lock keeps out what a target does by itself
        transaction.Commit();
        return m_copied;
    }

private:
    void RequireRows(std::int64_t rows)
    {
        if (RowsBy(m_to, m_rules.countNow) != rows) {
            throw CopyConflict("somebody else has begun to fill the target");
        }
    }

    void CopyTable(const TableMapping& carried, TargetTransaction& transaction)
    {
        const Table& target = carried.target;
        CARecordset rs;
        OpenSource(rs, carried.source);
        const Column* counted = carried.counted == 0 ? nullptr : CountedOf(target);
        m_greatestId = 0;
        m_tableRows = 0;
        ExecuteFor(m_rules.beginIds, target, counted);
        CopyRows(rs, carried, transaction);
        rs.Close();
        if (counted != nullptr && !m_copied.stopped) {
            CarryCounter(carried.source, target, *counted);
        }
        ExecuteFor(m_rules.endIds, target, counted);
        ReportProgress(target.name, true);
    }

    void OpenSource(CARecordset& rs, const Table& source)
    {
        const Column* order = DialectOf(m_from).copying.sortsRows ? CountedOf(source) : nullptr;
        const std::string sql = "SELECT * FROM " + source.name + (order == nullptr ? "" : " ORDER BY " + order->name);
        Reading(source.name, [&] { OpenRows(rs, m_from, sql); });
    }

    /// Runs the body; a failure is reported as the source's.
    template <class Body>
    static void Reading(const std::string& table, Body body)
    {
        try {
            body();
        } catch (const CAException& e) {
            throw CAException(TextOf("reading " + table + " of the source: ") + e.GetErrorText(), e.GetErrorCode());
        }
    }

    void ExecuteFor(const std::string& statement, const Table& table, const Column* counted)
    {
        if (!statement.empty() && counted != nullptr) {
            m_to.Execute(Filled(statement, table, *counted).c_str());
        }
    }

    /// Of all tables, before anything is written.
    std::vector<TableMapping> MapTables()
    {
        std::vector<TableMapping> all;
        all.reserve(m_targets.size());
        for (const Table& target : m_targets) {
            all.push_back(MapTables(*Find(m_sources, target.name), target));
        }
        return all;
    }

    // A column that the source's own steps make and the target's do not is the engine's affair, such as a number for
    // rows that have none. Any other would be lost.
    TableMapping MapTables(const Table& source, const Table& target)
    {
        std::vector<std::string> names;
        Reading(source.name, [&] { names = ColumnNamesOf(m_from, source); });
        const std::vector<std::string> taken = ColumnNamesOf(m_to, target);
        TableMapping carried{source, target, {}};
        for (long number = 1; const std::string& name : names) {
            Add(carried, name, number++, FindName(taken, name));
        }
        return carried;
    }

    static std::vector<std::string> ColumnNamesOf(CAConnect& conn, const Table& table)
    {
        CARecordset none;
        OpenRows(none, conn, "SELECT * FROM " + table.name + " WHERE 1 = 0");
        return ColumnNames(none);
    }

    /// @param taken  how the target's table spells it; null when it has no such column.
    void Add(TableMapping& carried, const std::string& name, long number, const std::string* taken) const
    {
        const Column* given = Find(carried.source.columns, name);
        const Column* here = Find(carried.target.columns, name);
        if (given != nullptr && SameName(name, kKey)) {
            carried.key = number;
        }
        if ((given != nullptr && given->isComputed) || (here != nullptr && here->isComputed)) {
            return;
        }
        if (taken != nullptr) {
            carried.counted = here != nullptr && here->isAutoIncrement ? number : carried.counted;
            carried.columns.push_back(here != nullptr ? CarriedColumn{number, here->name, here->kind}
                                                      : CarriedColumn{number, Quoted(*taken, m_rules)});
        } else if (given == nullptr) {
            throw CopyConflict(TextOf("the source's " + carried.source.name + " has a column " + name +
                                      " that the target's has not; add it there first"));
        }
    }

    void CopyRows(CARecordset& rs, const TableMapping& carried, TargetTransaction& transaction)
    {
        const std::string& table = carried.target.name;
        Writer writer(m_to, transaction, m_sizeLimit, table, HeadOf(carried));
        while (rs.IsEOF() == 0 && !m_copied.stopped) {
            NoteId(rs, carried);
            ++m_tableRows;
            if (writer.Add(Written(rs, carried))) {
                ReportProgress(table, false);
            }
            Reading(table, [&] { rs.MoveNext(); });
        }
        if (!m_copied.stopped) {
            writer.Flush();
        }
        m_copied.rows += m_tableRows;
    }

    static std::string HeadOf(const TableMapping& carried)
    {
        std::string names;
        for (const CarriedColumn& column : carried.columns) {
            names += (names.empty() ? "" : ",") + column.name;
        }
        return "INSERT INTO " + carried.target.name + " (" + names + ") VALUES ";
    }

    void NoteId(CARecordset& rs, const TableMapping& carried)
    {
        __int64 id = 0;
        if (carried.counted != 0 && rs.GetValue(carried.counted, id)) {
            m_greatestId = std::max<std::int64_t>(m_greatestId, id);
        }
    }

    WrittenRow Written(CARecordset& rs, const TableMapping& carried)
    {
        WrittenRow row;
        row.name = carried.key == 0 ? "row " + std::to_string(m_tableRows)
                                    : "Col_ID " + std::string(rs.GetValueToStr(carried.key, true).View());
        try {
            for (const CarriedColumn& column : carried.columns) {
                row.values += row.values.empty() ? '(' : ',';
                AppendValue(row.values, rs, column);
            }
        } catch (const CAException& e) {
            Writer::Refuse(carried.target.name, row.name, e);
        }
        row.values += ')';
        return row;
    }

    // Engines read numbers and dates from texts by what their column is.
    void AppendValue(std::string& values, CARecordset& rs, const CarriedColumn& column)
    {
        CString text;
        if (!rs.GetValue(column.number, text, true)) {
            values += "NULL";
            return;
        }
        if (!m_rules.keepsEveryValue) {
            RequireFit(rs, column, text.View());
        }
        values += m_rules.stringPrefix;
        values += '\'';
        values += m_to.EscapeLiteral(text).View();
        values += '\'';
    }

    static void RequireFit(CARecordset& rs, const CarriedColumn& column, std::string_view text)
    {
        if (column.kind == Kind::number && !IsWholeNumber(text)) {
            throw CAException(TextOf(column.name + " holds what is no whole number"));
        }
        if (column.kind == Kind::datetime && !IsDatetime(rs, column.number, text)) {
            throw CAException(TextOf(column.name + " holds what is no date, or one with a time zone"));
        }
    }

    // An id that is given again would pass on what still names its first bearer.
    void CarryCounter(const Table& source, const Table& target, const Column& counted)
    {
        const CopyRules& rules = DialectOf(m_from).copying;
        const Column* given = Find(source.columns, counted.name);
        std::int64_t greatest = m_greatestId;
        if (!rules.greatestId.empty() && given != nullptr && given->isAutoIncrement) {
            greatest = std::max(greatest, NumberOf(m_from, Filled(rules.greatestId, source, *given)));
        }
        if (greatest > (m_rules.countsWrittenIds ? m_greatestId : 0)) {
            for (const std::string& statement : m_rules.advanceSequence) {
                m_to.Execute(Filled(statement, target, counted, greatest).c_str());
            }
        }
    }

    void ReportProgress(const std::string& table, bool isDone)
    {
        const std::int64_t rows = m_copied.rows + (isDone ? 0 : m_tableRows);
        m_copied.stopped = m_copied.stopped || !m_progress({table, m_tableRows, isDone, rows});
    }

    [[nodiscard]] std::vector<std::string> Others()
    {
        std::vector<std::string> others = TableNames(m_from);
        std::erase_if(others, [&](const std::string& name) {
            return Find(m_sources, name) != nullptr || SameName(name, kVersionTable);
        });
        return others;
    }

    CAConnect& m_from;
    CAConnect& m_to;
    const CopyProgress& m_progress;
    const CopyRules& m_rules; // of the target's engine
    std::vector<Table> m_sources;
    std::vector<Table> m_targets;
    StatementSizeLimit m_sizeLimit;
    Copied m_copied;
    std::int64_t m_tableRows = 0;  // of the table in hand, as is the next
    std::int64_t m_greatestId = 0; // 0 when it has none above
};

std::optional<CString> IdentityOf(CAConnect& conn)
{
    const std::string& query = DialectOf(conn).copying.identity;
    CString identity;
    CARecordset rs;
    if (!query.empty()) {
        OpenRows(rs, conn, query);
        rs.GetValue(1, identity, true);
    }
    return identity.IsEmpty() ? std::nullopt : std::optional(identity);
}

} // namespace

bool IsSameDatabase(CAConnect& a, CAConnect& b)
{
    const std::optional<CString> identity = IdentityOf(a);
    return &DialectOf(a) == &DialectOf(b) && identity && identity == IdentityOf(b);
}

std::int64_t CountRows(CAConnect& conn) { return RowsBy(conn, "SELECT COUNT(*) FROM {table}"); }

Copied Copy(CAConnect& from, CAConnect& to, const CopyProgress& progress)
{
    return Copier(from, to, progress).Run(false);
}

Copied Replace(CAConnect& from, CAConnect& to, const CopyProgress& progress)
{
    return Copier(from, to, progress).Run(true);
}

} // namespace schema
