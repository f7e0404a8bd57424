#include "schema/Schema.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"
#include "platform/CodePage.h"
#include "schema/Dialect.h"
#include "schema/DirectoryTransaction.h"
#include "schema/Tables.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace schema {

namespace {

constexpr const char* kCreateVersionTable =
    "CREATE TABLE qv_Schema (Col_Name VARCHAR(64) NOT NULL PRIMARY KEY, Col_Value VARCHAR(64) NOT NULL)";

std::vector<CString> ReadTexts(CAConnect& conn, const char* sql)
{
    std::vector<CString> texts;
    CARecordset rs;
    if (!rs.Open(sql, &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable)) {
        throw CAException("the database connection is not open");
    }
    for (rs.MoveFirst(); rs.IsEOF() == 0; rs.MoveNext()) {
        texts.push_back(rs.GetValueToStr(1, true));
    }
    return texts;
}

/// One step's worth of changes: in a transaction where the engine can, under a lock where another run could come
/// between. What is not committed is rolled back.
class SchemaTransaction {
public:
    SchemaTransaction(CAConnect& conn, const Dialect& dialect) : m_conn(conn), m_dialect(dialect)
    {
        if (m_dialect.stepIsTransaction) {
            m_transaction.emplace(m_conn, kLongestTableWork);
        } else {
            Lock(m_conn, m_dialect, kLongestTableWork);
        }
    }
    SchemaTransaction(const SchemaTransaction&) = delete;
    SchemaTransaction& operator=(const SchemaTransaction&) = delete;
    ~SchemaTransaction()
    {
        if (!m_transaction) {
            Unlock(m_conn, m_dialect);
        }
    }

    void Commit()
    {
        if (m_transaction) {
            m_transaction->Commit();
        }
    }

private:
    CAConnect& m_conn;
    const Dialect& m_dialect;
    std::optional<DirectoryTransaction> m_transaction;
};

CString ReadSetting(CAConnect& conn, const char* name)
{
    CString sql;
    sql.Format("SELECT Col_Value FROM qv_Schema WHERE Col_Name = '%s'", name);
    const std::vector<CString> values = ReadTexts(conn, sql);
    return values.empty() ? CString() : values.front();
}

void WriteSetting(CAConnect& conn, const char* name, const char* value)
{
    // Not by the count of an update, which some engines make of the rows that it really changes.
    CString sql;
    sql.Format("DELETE FROM qv_Schema WHERE Col_Name = '%s'", name);
    conn.Execute(sql);
    sql.Format("INSERT INTO qv_Schema (Col_Name, Col_Value) VALUES ('%s', '%s')", name, value);
    conn.Execute(sql);
}

// 0, the version of no tables at all, for anything but a number.
int NumberIn(const CString& text)
{
    int number = 0;
    std::from_chars(text.View().data(), text.View().data() + text.View().size(), number);
    return number;
}

Status InspectFor(CAConnect& conn, int newest)
{
    const std::vector<CString> tables = ReadTexts(conn, DialectOf(conn).listTables.c_str());
    if (tables.empty()) {
        return {State::empty, 0, newest};
    }
    if (std::ranges::none_of(tables, [](const CString& name) { return SameName(name.View(), kVersionTable); })) {
        return {State::foreign, 0, newest};
    }
    const int version = NumberIn(ReadSetting(conn, "version"));
    return {version < newest ? State::older : version > newest ? State::newer : State::current, version, newest};
}

std::vector<std::string> FurtherStatements(CAConnect& conn, const Step& step)
{
    return step.furtherStatements ? step.furtherStatements(conn) : std::vector<std::string>();
}

// Where a step is no transaction, the run that made the tables may have ended before it wrote this. Where indexes
// depend on the rules, only a database without tables is known to follow these; RefreshIndexes sees to the others.
void EnsureUnicodeVersion(CAConnect& conn, int version)
{
    if ((version == 0 || DialectOf(conn).rebuildIndexes.empty()) && ReadSetting(conn, "upper").IsEmpty()) {
        WriteSetting(conn, "upper", platform::UnicodeVersion());
    }
}

// What earlier runs could not do, or did not come to.
void CatchUp(CAConnect& conn, const std::vector<Step>& steps, const Progress& progress)
{
    EnsureUnicodeVersion(conn, static_cast<int>(steps.size()));
    int version = 0;
    for (const Step& step : steps) {
        ++version;
        const std::vector<std::string> statements = FurtherStatements(conn, step);
        if (progress && !statements.empty()) {
            progress(version, step.title);
        }
        ExecuteAll(conn, statements);
    }
}

void ApplyStep(CAConnect& conn, const Step& step, int version)
{
    ExecuteAll(conn, step.statements);
    ExecuteAll(conn, FurtherStatements(conn, step));
    CString number;
    number.Format("%d", version);
    WriteSetting(conn, "version", number);
}

// One step. The version is read again inside it: another run may have been quicker.
Status NextStep(CAConnect& conn, const std::vector<Step>& steps, const Progress& progress)
{
    const int newest = static_cast<int>(steps.size());
    SchemaTransaction change(conn, DialectOf(conn));
    const Status status = InspectFor(conn, newest);
    if (status.state == State::foreign) {
        throw CAException("the database holds other tables than a directory's");
    }
    if (status.state == State::newer) {
        CString text;
        text.Format("the directory is of version %d, made by a later program; this one knows %d", status.version,
                    newest);
        throw CAException(text);
    }
    if (status.state == State::current) {
        CatchUp(conn, steps, progress);
        change.Commit();
        return status;
    }
    if (status.state == State::empty) {
        conn.Execute(kCreateVersionTable);
    }
    EnsureUnicodeVersion(conn, status.version);
    const Step& step = steps[static_cast<std::size_t>(status.version)];
    if (progress) {
        progress(status.version + 1, step.title);
    }
    ApplyStep(conn, step, status.version + 1);
    change.Commit();
    return {status.version + 1 == newest ? State::current : State::older, status.version + 1, newest};
}

} // namespace

void ExecuteAll(CAConnect& conn, const std::vector<std::string>& statements)
{
    for (const std::string& statement : statements) {
        conn.Execute(statement.c_str());
    }
}

const Dialect& DialectOf(CAConnect& conn)
{
    const CString engine = conn.GetEngineName();
    if (engine.View().starts_with("SQLite")) {
        return sqlite::TheDialect();
    }
    if (engine.View().starts_with("PostgreSQL")) {
        return postgresql::TheDialect();
    }
    if (engine.View().starts_with("MariaDB") || engine.View().starts_with("MySQL")) {
        return mysql::TheDialect();
    }
    if (engine.View().starts_with("Microsoft SQL Server")) {
        return sqlserver::TheDialect();
    }
    // As its own driver says it, and the one for reading its files elsewhere.
    if (engine.View().starts_with("ACCESS") || engine.View().starts_with("MDBTOOLS")) {
        return access::TheDialect();
    }
    throw CAException("there are no tables for the engine " + engine);
}

void Lock(CAConnect& conn, const Dialect& dialect, std::chrono::seconds longest)
{
    const LockRules& rules = dialect.locking;
    if (rules.take.empty()) {
        return;
    }
    CString take = rules.take.c_str();
    take.Replace("{seconds}", std::to_string(longest.count()).c_str());
    if (rules.givesOne) {
        const std::vector<CString> given = ReadTexts(conn, take);
        if (given.empty() || given.front().IsEmpty()) {
            // A server that is about to end the connection gives NULL too; the next statement tells.
            conn.Execute(rules.release.c_str());
            throw CAException("the wait for this directory's lock was ended; this change was not made");
        }
        if (NumberIn(given.front()) != 1) {
            throw LockTimeout(longest);
        }
        return;
    }
    try {
        conn.Execute(take);
    } catch (const CAException& e) {
        if (e.GetErrorCode().View().find(rules.timeoutCode) != std::string_view::npos) {
            throw LockTimeout(longest);
        }
        throw;
    }
}

void BeginLocked(CAConnect& conn, const Dialect& dialect, std::chrono::seconds longest,
                 std::optional<CATransaction>& transaction)
{
    const bool endsWithTransaction = dialect.locking.release.empty();
    if (!endsWithTransaction) {
        Lock(conn, dialect, longest);
    }
    try {
        transaction.emplace(conn);
        if (endsWithTransaction) {
            Lock(conn, dialect, longest);
        }
    } catch (...) {
        transaction.reset();
        Unlock(conn, dialect);
        throw;
    }
}

void Unlock(CAConnect& conn, const Dialect& dialect) noexcept
{
    try {
        if (!dialect.locking.release.empty()) {
            conn.Execute(dialect.locking.release.c_str());
        }
    } catch (...) { // see its declaration
    }
}

Status Inspect(CAConnect& conn)
{
    try {
        return InspectFor(conn, static_cast<int>(DialectOf(conn).steps.size()));
    } catch (const CAException&) {
        // Tables that a restored copy has may not be found for what the server is.
        if (conn.IsOpen()) {
            RequireSuitable(conn);
        }
        throw;
    }
}

void RequireSuitable(CAConnect& conn)
{
    if (const auto& check = DialectOf(conn).check) {
        check(conn);
    }
}

std::optional<Shortcoming> FindShortcoming(CAConnect& conn)
{
    const auto& find = DialectOf(conn).findShortcoming;
    return find ? find(conn) : std::nullopt;
}

void Upgrade(CAConnect& conn, const std::vector<Step>& steps, const Progress& progress)
{
    RequireSuitable(conn);
    while (NextStep(conn, steps, progress).state != State::current) {
    }
}

void Upgrade(CAConnect& conn, const Progress& progress) { Upgrade(conn, DialectOf(conn).steps, progress); }

int LastInsertedId(CAConnect& conn)
{
    const std::vector<CString> ids = ReadTexts(conn, DialectOf(conn).lastId.c_str());
    return ids.empty() ? 0 : NumberIn(ids.front());
}

const std::vector<TableColumns>& Tables()
{
    static const std::vector<TableColumns> tables = [] {
        std::vector<TableColumns> all;
        for (const Table& table : TablesOf(sqlite::TheDialect())) {
            TableColumns& written = all.emplace_back(TableColumns{table.name, {}});
            for (const Column& column : table.columns) {
                if (!column.isComputed) {
                    written.columns.push_back(column.name);
                }
            }
        }
        return all;
    }();
    return tables;
}

void ExecuteWithIds(CAConnect& conn, const std::string& table, const std::string& sql)
{
    const CopyRules& rules = DialectOf(conn).copying;
    const auto run = [&](const std::string& statement) {
        if (!statement.empty()) {
            CString text = statement.c_str();
            text.Replace("{table}", table.c_str());
            conn.Execute(text);
        }
    };
    run(rules.beginIds);
    conn.Execute(sql.c_str());
    run(rules.endIds);
}

void PreferIndexes(CAConnect& conn)
{
    const std::string& statement = DialectOf(conn).preferIndexes;
    if (!statement.empty()) {
        conn.Execute(statement.c_str());
    }
}

void RefreshIndexes(CAConnect& conn)
{
    const Dialect& dialect = DialectOf(conn);
    if (dialect.rebuildIndexes.empty() || ReadSetting(conn, "upper") == platform::UnicodeVersion()) {
        return;
    }
    SchemaTransaction change(conn, dialect);
    conn.Execute(dialect.rebuildIndexes.c_str());
    WriteSetting(conn, "upper", platform::UnicodeVersion());
    change.Commit();
}

} // namespace schema
