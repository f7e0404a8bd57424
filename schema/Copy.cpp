#include "schema/Copy.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"
#include "platform/CodePage.h"
#include "schema/Tables.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>
#include <utility>

namespace schema {

namespace {

// A statement of this many bytes is sent; engines take more, and gain nothing by it.
constexpr std::size_t kBytesPerInsert = std::size_t{256} * 1024;
constexpr const char* kKey = "Col_ID";
constexpr const char* kVersionTable = "qv_Schema"; // each directory has its own

CString TextOf(const std::string& text) { return CString(std::string_view(text)); }

bool SameName(std::string_view a, std::string_view b) { return platform::UpperUtf8(a) == platform::UpperUtf8(b); }

void OpenRows(CARecordset& rs, CAConnect& conn, const std::string& sql)
{
    if (!rs.Open(sql.c_str(), &conn, adbcCursorForwardOnly, adbcLockReadOnly, adbcCommandText)) {
        throw CAException("the database connection is not open");
    }
}

void ExecuteAll(CAConnect& conn, const std::vector<std::string>& statements)
{
    for (const std::string& statement : statements) {
        conn.Execute(statement.c_str());
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

bool Holds(const std::vector<std::string>& names, std::string_view name)
{
    return std::ranges::any_of(names, [&](const std::string& held) { return SameName(held, name); });
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
    const auto counted = std::ranges::find_if(table.columns, &Column::isCounted);
    return counted == table.columns.end() ? nullptr : &*counted;
}

void FillIn(std::string& statement, std::string_view place, std::string_view text)
{
    for (std::size_t at = statement.find(place); at != std::string::npos; at = statement.find(place, at)) {
        statement.replace(at, place.size(), text);
        at += text.size();
    }
}

std::string Filled(std::string statement, const Table& table, const Column& counted, std::int64_t id = 0)
{
    FillIn(statement, "{table}", table.name);
    FillIn(statement, "{column}", counted.name);
    FillIn(statement, "{id}", std::to_string(id));
    return statement;
}

/// Where all reads of the source see one moment.
class Snapshot {
public:
    explicit Snapshot(CAConnect& conn) : m_conn(conn), m_isOpen(!DialectOf(conn).copying.beginReading.empty())
    {
        ExecuteAll(conn, DialectOf(conn).copying.beginReading);
    }
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;
    ~Snapshot()
    {
        try {
            if (m_isOpen) {
                m_conn.Execute("ROLLBACK");
            }
        } catch (const CAException&) { // it has been read, and goes with its connection
        }
    }

private:
    CAConnect& m_conn;
    bool m_isOpen;
};

/// The transaction that fills the target; a second copy to it waits. Rolled back unless it is committed.
class Writing {
public:
    explicit Writing(CAConnect& conn) : m_conn(conn), m_dialect(DialectOf(conn))
    {
        ExecuteAll(m_conn, m_dialect.copying.beginWriting);
        Begin();
    }
    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;
    ~Writing()
    {
        try {
            End();
        } catch (const CAException&) { // what led here is being reported already
        }
    }

    /// Takes back all that was written, and begins anew.
    void BeginAnew()
    {
        End();
        Begin();
    }
    void Commit()
    {
        m_conn.CommitTrans();
        m_isOpen = false;
        Execute(m_dialect.unlock);
    }

private:
    void Begin()
    {
        m_conn.BeginTrans();
        m_isOpen = true;
        try {
            Execute(m_dialect.lock);
        } catch (const CAException&) {
            m_conn.RollbackTrans();
            throw;
        }
    }
    void End()
    {
        if (std::exchange(m_isOpen, false)) {
            m_conn.RollbackTrans();
            Execute(m_dialect.unlock);
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
    bool m_isOpen = false;
};

/// A row as it stands in an INSERT.
struct WrittenRow {
    std::string values;
    std::string name; ///< which it is, for people
};

/// Writes the rows of one table, many in a statement.
class Writer {
public:
    /// @param head  the statement up to its values.
    Writer(CAConnect& conn, Writing& writing, const std::string& table, std::string head)
        : m_conn(conn),
          m_writing(writing),
          m_mostRows(DialectOf(conn).copying.rowsPerInsert),
          m_table(table),
          m_head(std::move(head))
    {
    }

    /// @return whether the rows so far have been written.
    bool Add(WrittenRow row)
    {
        const bool isFull =
            !m_rows.empty() && (m_rows.size() == m_mostRows || m_bytes + row.values.size() > kBytesPerInsert);
        if (isFull) {
            Flush();
        }
        m_bytes += row.values.size();
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

    /// @throws CAException that says at which row it happened.
    [[noreturn]] static void Refuse(const std::string& table, const std::string& row, const CAException& e)
    {
        throw CAException(TextOf(table + ", " + row + ": ") + e.GetErrorText(), e.GetErrorCode());
    }

private:
    /// Finds the row that the engine refuses, by writing each by itself where nothing is at stake any more.
    [[noreturn]] void Blame(const CAException& refusal)
    {
        if (m_rows.size() > 1 && m_conn.IsOpen()) {
            m_writing.BeginAnew();
            for (const WrittenRow& row : m_rows) {
                TryAlone(row);
            }
        }
        // Only beside rows that were written before is it wrong, or the engine has no room.
        const std::string last = m_rows.size() > 1 ? " to " + m_rows.back().name : "";
        Refuse(m_table, m_rows.front().name + last, refusal);
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
    Writing& m_writing;
    std::size_t m_mostRows;
    const std::string& m_table;
    std::string m_head;
    std::vector<WrittenRow> m_rows;
    std::size_t m_bytes = 0;
};

/// The columns of a table that are copied, by their numbers in the source's rows.
struct Carried {
    std::vector<std::pair<long, std::string>> columns;
    long key = 0;     ///< that by which people name a row; 0 when there is none
    long counted = 0; ///< the one that the target counts by itself; 0 when it is not copied
};

class Copier {
public:
    Copier(CAConnect& from, CAConnect& to, const CopyProgress& progress)
        : m_from(from), m_to(to), m_progress(progress), m_rules(DialectOf(to).copying)
    {
    }

    Copied Run()
    {
        const Snapshot snapshot(m_from);
        Writing writing(m_to);
        if (CountRows(m_to) != 0) {
            throw CAException("somebody else has begun to fill the target");
        }
        const std::vector<Table> sources = TablesOf(DialectOf(m_from));
        for (const Table& target : TablesOf(DialectOf(m_to))) {
            CopyTable(*Find(sources, target.name), target, writing);
            if (m_copied.stopped) {
                return m_copied;
            }
            ++m_copied.tables;
        }
        m_copied.others = OthersThan(sources);
        writing.Commit();
        return m_copied;
    }

private:
    void CopyTable(const Table& source, const Table& target, Writing& writing)
    {
        CARecordset rs;
        OpenSource(rs, source);
        const Carried carried = WhatIsCarried(rs, source, target);
        const Column* counted = carried.counted == 0 ? nullptr : CountedOf(target);
        m_greatestId = 0;
        m_tableRows = 0;
        ExecuteFor(m_rules.beginIds, target, counted);
        CopyRows(rs, carried, target.name, writing);
        rs.Close();
        if (counted != nullptr && !m_copied.stopped) {
            CarryCounter(source, target, *counted);
        }
        ExecuteFor(m_rules.endIds, target, counted);
        Tell(target.name, true);
    }

    void OpenSource(CARecordset& rs, const Table& source)
    {
        const Column* order = DialectOf(m_from).copying.sortsRows ? CountedOf(source) : nullptr;
        const std::string sql = "SELECT * FROM " + source.name + (order == nullptr ? "" : " ORDER BY " + order->name);
        Reading(source.name, [&] { OpenRows(rs, m_from, sql); });
    }

    /// Runs the body; a failure is told as the source's.
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

    // A column that the source's own steps make and the target's do not is the engine's affair, such as a number for
    // rows that have none. Any other would be lost.
    Carried WhatIsCarried(CARecordset& rs, const Table& source, const Table& target)
    {
        CARecordset none;
        OpenRows(none, m_to, "SELECT * FROM " + target.name + " WHERE 1 = 0");
        const std::vector<std::string> taken = ColumnNames(none);
        Carried carried;
        long column = 0;
        for (const std::string& name : ColumnNames(rs)) {
            ++column;
            const Column* given = Find(source.columns, name);
            const Column* here = Find(target.columns, name);
            if ((given != nullptr && given->isComputed) || (here != nullptr && here->isComputed)) {
                continue;
            }
            if (Holds(taken, name)) {
                carried.counted = here != nullptr && here->isCounted ? column : carried.counted;
                carried.columns.emplace_back(column, name);
            } else if (given == nullptr) {
                throw CAException(TextOf("the source's " + source.name + " has a column " + name +
                                         " that the target's has not; add it there first"));
            }
        }
        carried.key = Find(source.columns, kKey) == nullptr ? 0 : rs.GetColumnNumber(kKey);
        return carried;
    }

    void CopyRows(CARecordset& rs, const Carried& carried, const std::string& table, Writing& writing)
    {
        Writer writer(m_to, writing, table, HeadOf(carried, table));
        while (rs.IsEOF() == 0 && !m_copied.stopped) {
            NoteId(rs, carried);
            ++m_tableRows;
            if (writer.Add(Written(rs, carried, table))) {
                Tell(table, false);
            }
            Reading(table, [&] { rs.MoveNext(); });
        }
        if (!m_copied.stopped) {
            writer.Flush();
        }
        m_copied.rows += m_tableRows;
    }

    static std::string HeadOf(const Carried& carried, const std::string& table)
    {
        std::string names;
        for (const auto& [column, name] : carried.columns) {
            names += (names.empty() ? "" : ",") + name;
        }
        return "INSERT INTO " + table + " (" + names + ") VALUES ";
    }

    void NoteId(CARecordset& rs, const Carried& carried)
    {
        __int64 id = 0;
        if (carried.counted != 0 && rs.GetValue(carried.counted, id)) {
            m_greatestId = std::max<std::int64_t>(m_greatestId, id);
        }
    }

    WrittenRow Written(CARecordset& rs, const Carried& carried, const std::string& table)
    {
        WrittenRow row;
        row.name = carried.key == 0 ? "row " + std::to_string(m_tableRows)
                                    : "Col_ID " + std::string(rs.GetValueToStr(carried.key, true).View());
        try {
            for (const auto& [column, name] : carried.columns) {
                row.values += row.values.empty() ? '(' : ',';
                AppendValue(row.values, rs, column);
            }
        } catch (const CAException& e) {
            Writer::Refuse(table, row.name, e);
        }
        row.values += ')';
        return row;
    }

    // Engines read numbers and dates from texts by what their column is.
    void AppendValue(std::string& values, CARecordset& rs, long column)
    {
        CString text;
        if (!rs.GetValue(column, text, true)) {
            values += "NULL";
            return;
        }
        values += m_rules.textMark;
        values += '\'';
        values += m_to.EscapeText(text).View();
        values += '\'';
    }

    // An id that is given again would pass on what still names its first bearer.
    void CarryCounter(const Table& source, const Table& target, const Column& counted)
    {
        const CopyRules& rules = DialectOf(m_from).copying;
        const Column* given = Find(source.columns, counted.name);
        std::int64_t greatest = m_greatestId;
        if (!rules.greatestId.empty() && given != nullptr && given->isCounted) {
            greatest = std::max(greatest, NumberOf(m_from, Filled(rules.greatestId, source, *given)));
        }
        if (greatest > (m_rules.countsWrittenIds ? m_greatestId : 0)) {
            for (const std::string& statement : m_rules.passIds) {
                m_to.Execute(Filled(statement, target, counted, greatest).c_str());
            }
        }
    }

    void Tell(const std::string& table, bool isDone)
    {
        const std::int64_t rows = m_copied.rows + (isDone ? 0 : m_tableRows);
        m_copied.stopped = m_copied.stopped || !m_progress({table, m_tableRows, isDone, rows});
    }

    [[nodiscard]] std::vector<std::string> OthersThan(const std::vector<Table>& tables)
    {
        std::vector<std::string> others = TableNames(m_from);
        std::erase_if(others, [&](const std::string& name) {
            return Find(tables, name) != nullptr || SameName(name, kVersionTable);
        });
        return others;
    }

    CAConnect& m_from;
    CAConnect& m_to;
    const CopyProgress& m_progress;
    const CopyRules& m_rules; // of the target's engine
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

std::int64_t CountRows(CAConnect& conn)
{
    const std::vector<std::string> present = TableNames(conn);
    std::int64_t rows = 0;
    for (const Table& table : TablesOf(DialectOf(conn))) {
        rows += Holds(present, table.name) ? NumberOf(conn, "SELECT COUNT(*) FROM " + table.name) : 0;
    }
    return rows;
}

Copied Copy(CAConnect& from, CAConnect& to, const CopyProgress& progress) { return Copier(from, to, progress).Run(); }

} // namespace schema
