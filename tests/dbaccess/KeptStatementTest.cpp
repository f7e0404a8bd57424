#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "tests/dbaccess/PreparedStatements.h"
#include "tests/dbaccess/Query.h"
#include "tests/platform/AnsiCodePageScope.h"
#include "tests/servers/Servers.h"
#include "tests/support/Raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <random>
#include <regex>
#include <string>
#include <vector>

using testing::HasSubstr;

namespace {

std::string Quoted(const std::string& text) { return "'" + text + "'"; }

/// Some errors name the database, of which the tests have several.
std::string WithoutDatabase(const std::string& error)
{
    static const std::regex name("qv_[0-9]+_[0-9]+");
    return std::regex_replace(error, name, "database");
}

/// Column names and rows of a query, or what it raises.
/// @param sorted  without regard to the order of the rows, and to which of them are within a limit.
std::string ReadAll(CAConnect& conn, const std::string& sql, bool sorted)
{
    std::vector<std::string> rows;
    std::string names;
    const std::string raised = RaisedWithCode([&] {
        CARecordset rs;
        Open(rs, sql, conn);
        for (long i = 1; i <= rs.GetColumnCount(); ++i) {
            names.append(rs.GetColumnName(i).GetString()).append("|");
        }
        for (; rs.IsEOF() == 0; rs.MoveNext()) {
            std::string row;
            for (long i = 1; i <= rs.GetColumnCount(); ++i) {
                CString text;
                row.append(rs.GetValue(i, text, true) ? text.GetString() : "NULL").append("|");
            }
            rows.push_back(row);
        }
    });
    if (sorted) {
        std::ranges::sort(rows);
        rows.resize(sql.find("LIMIT") == std::string::npos ? rows.size() : 0);
    }
    std::string all = WithoutDatabase(raised) + "\n" + names + "\n";
    for (const std::string& row : rows) {
        all += row + "\n";
    }
    return all;
}

std::string Write(CAConnect& conn, const std::string& sql)
{
    int changed = 0;
    const std::string raised = RaisedWithCode([&] { changed = conn.Execute(sql.c_str()); });
    return WithoutDatabase(raised) + " " + std::to_string(changed);
}

std::string FailureOf(const CAConnect& conn)
{
    const CAException* failure = conn.GetFailure();
    return failure == nullptr
               ? "none"
               : WithoutDatabase(failure->GetErrorText().GetString()) + failure->GetErrorCode().GetString();
}

// ---- Made statements ------------------------------------------------------------------------------------------------

/// Statements put together at random, of few shapes and many literals, some of which no engine takes.
class Maker {
public:
    explicit Maker(bool backslashesEscape) : m_backslashesEscape(backslashesEscape) {}

    std::string Statement()
    {
        std::string statement = Plain();
        if (Chance(6)) {
            Mutate(statement);
        }
        return statement;
    }
    static bool IsQuery(const std::string& statement) { return statement.starts_with("SELECT"); }

private:
    template <std::size_t N>
    const char* OneOf(const char* const (&texts)[N])
    {
        return texts[m_random() % N];
    }
    bool Chance(unsigned int of) { return m_random() % of == 0; }

    std::string Text()
    {
        std::string text = OneOf({"x",          "X",
                                  "amy",        "O''Neil",
                                  "''",         "",
                                  "?",          "$1",
                                  ":a",         "\\\\",
                                  "\\''",       "C:\\\\",
                                  "5",          "05",
                                  "5.0",        " 5",
                                  "-1",         "1e3",
                                  "é",          "Зоя",
                                  "😀",         "--",
                                  "/*",         "; DROP TABLE t",
                                  "a\nb",       "%",
                                  "_",          "NULL",
                                  "2013-05-07", "2013-05-07 09:03:02",
                                  "not a date", "900150983cd24fb0d6963f7d28e17f72"});
        if (m_backslashesEscape && Chance(6)) {
            text = OneOf({"O\\'Neil", "a\\nb", "100\\%", R"(\\\')"});
        } else if (!m_backslashesEscape && Chance(12)) {
            text = OneOf({"C:\\", "\\'' OR 1", "\\n"});
        }
        return Quoted(text);
    }

    std::string Number()
    {
        return OneOf({"0",
                      "1",
                      "-1",
                      "2",
                      "5",
                      "-5",
                      "42",
                      "2147483647",
                      "2147483648",
                      "-2147483648",
                      "-2147483649",
                      "999999999999999999",
                      "-999999999999999999",
                      "9223372036854775807",
                      "9223372036854775808",
                      "007",
                      "00",
                      "-0",
                      "1.5",
                      "-1.5",
                      "1e3",
                      "1e400",
                      ".5",
                      "5.",
                      "0x10",
                      "+5",
                      "- 5",
                      "NULL"});
    }

    std::string Literal() { return Chance(2) ? Text() : Number(); }
    /// A column and a literal that fits it mostly.
    std::string Pair(const char* comparison)
    {
        switch (m_random() % 6) {
        case 0:
            return std::string("i") + comparison + (Chance(5) ? Text() : Number());
        case 1:
            return std::string("b") + comparison + (Chance(5) ? Text() : Number());
        case 2:
            return std::string("n") + comparison + Literal();
        case 3:
            return std::string("d") + comparison + (Chance(4) ? Text() : Quoted("2013-05-07 00:00:00"));
        default:
            return std::string("s") + comparison + (Chance(8) ? Number() : Text());
        }
    }

    std::string Condition(int depth)
    {
        switch (m_random() % (depth > 0 ? 12 : 7)) {
        case 7:
            return Condition(depth - 1) + " AND " + Condition(depth - 1);
        case 8:
            return "(" + Condition(depth - 1) + " OR " + Condition(depth - 1) + ")";
        case 9:
            return "i IN (SELECT k FROM u WHERE v " + std::string(OneOf({"=", "<>"})) + " " + Text() + ")";
        case 10:
            return "(SELECT COUNT(*) FROM u WHERE " + std::string(Chance(2) ? "k = " + Number() : "v = " + Text()) +
                   ") = " + Number();
        case 11:
            return "NOT " + Condition(depth - 1);
        case 5:
            return "upper(s) = upper(" + Text() + ")";
        case 6:
            return OneOf({"s LIKE 'a%'", "i BETWEEN 2 AND 50", "i IN (1, 5, 42)", "s IS NOT NULL", "i = 5 + 0",
                          "length(s) > 2"});
        default:
            return Pair(OneOf({" = ", "=", " <> ", " != ", " < ", " <= ", " > ", ">="}));
        }
    }

    std::string Assignments()
    {
        std::string list = Pair(" = ");
        const std::size_t first = list.find(' ');
        const std::string second = Pair(" = ");
        // The same column twice is an error to some engines.
        return second.starts_with(list.substr(0, first)) && !Chance(10) ? list : list + ", " + second;
    }

    std::string Plain()
    {
        switch (m_random() % 10) {
        case 0:
        case 1:
            return "INSERT INTO t (id, i, b, n, s, d) VALUES (" + std::to_string(m_random() % 60) + ", " + Number() +
                   "," + Number() + ", " + Literal() + ", " + Text() + ", " +
                   (Chance(4) ? Text() : Quoted("2013-05-07")) + ")";
        case 2:
            return "INSERT INTO u VALUES (" + Number() + ", " + Text() + ")" + OneOf({"", ";", " ;\n"});
        case 3:
        case 4:
            return "UPDATE t SET " + Assignments() + " WHERE id " + OneOf({"=", "<", ">"}) + " " +
                   std::to_string(m_random() % 60);
        case 5:
            return "DELETE FROM " +
                   std::string(Chance(2) ? "t WHERE " + Condition(1) + " AND id = " + std::to_string(m_random() % 60)
                                         : "u WHERE k = " + Number());
        case 6:
            return "SELECT * FROM t WHERE " + Condition(2) + OneOf({"", " ORDER BY id", " ORDER BY s, id LIMIT 3"});
        case 7:
            return "SELECT t.id, u.v FROM t, u WHERE t.i = u.k AND " +
                   std::string(Chance(2) ? "u.v = " + Text() : "t.id < " + Number()) + " ORDER BY t.id, u.v";
        case 8:
            return "SELECT s, COUNT(*), MAX(i) FROM t WHERE " + Condition(1) +
                   " GROUP BY s HAVING COUNT(*) > 0 ORDER BY s";
        default:
            return "SELECT id, s FROM t WHERE id = " + std::to_string(m_random() % 60);
        }
    }

    void Mutate(std::string& statement)
    {
        const auto at = [&] { return m_random() % (statement.size() + 1); };
        switch (m_random() % 4) {
        case 0:
            statement.erase(std::min(at(), statement.size() - 1), 1 + m_random() % 3);
            break;
        case 1:
            statement.insert(at(), OneOf({"'", "''", "(", ")", ",", ";", "--", "/*", "-", "+", " AND ", " OR ", " NOT ",
                                          "?", "\\", "\"", "5", "'x'", " "}));
            break;
        case 2:
            statement += OneOf({" COLLATE x", " || 'x'", " + 1", " IS NULL", " LIMIT 2", " GROUP BY id", ";",
                                "; SELECT 1", " -- x", " UNION SELECT 1", "\x01"});
            break;
        default: {
            const std::size_t place = statement.find("t ");
            if (place != std::string::npos) {
                statement.insert(place, "no_such_");
            }
            break;
        }
        }
    }

    std::mt19937 m_random{20130507};
    bool m_backslashesEscape;
};

struct Engine {
    std::string name;
    std::function<std::string()> freshUrl;
    int statements;
    bool keepsOrder; // of rows that are not asked for in any, whatever the plan
};

std::ostream& operator<<(std::ostream& out, const Engine& engine) { return out << engine.name; }

std::string WithOption(const std::string& url, const std::string& option)
{
    return url + (url.find('?') == std::string::npos ? '?' : '&') + option;
}

class KeptStatements : public testing::TestWithParam<Engine> {
protected:
    KeptStatements()
    {
        m_keeping.Open(GetParam().freshUrl().c_str());
        m_plain.Open(WithOption(GetParam().freshUrl(), "statement-cache=0").c_str());
        for (const char* table : {"CREATE TABLE t (id INTEGER PRIMARY KEY, i INTEGER, b BIGINT, n NUMERIC(10,2), s "
                                  "VARCHAR(40), d TIMESTAMP NULL)",
                                  "CREATE TABLE u (k INTEGER, v VARCHAR(20))", "CREATE INDEX ix_u ON u (k)"}) {
            m_keeping.Execute(table);
            m_plain.Execute(table);
        }
    }

    void RequireSame(const std::string& statement)
    {
        if (Maker::IsQuery(statement)) {
            const bool sorted = !GetParam().keepsOrder;
            ASSERT_EQ(ReadAll(m_keeping, statement, sorted), ReadAll(m_plain, statement, sorted)) << statement;
        } else {
            ASSERT_EQ(Write(m_keeping, statement), Write(m_plain, statement)) << statement;
        }
        ASSERT_EQ(FailureOf(m_keeping), FailureOf(m_plain)) << statement;
    }

    CAConnect m_keeping;
    CAConnect m_plain;
};

TEST_P(KeptStatements, DoWhatTheirTextsDo)
{
    Maker maker(m_keeping.m_nDBType == 6);
    bool inTransaction = false;
    for (int i = 0; i < GetParam().statements; ++i) {
        if (i % 25 == 24) {
            ASSERT_EQ(RaisedWithCode([&] { inTransaction ? m_keeping.RollbackTrans() : m_keeping.BeginTrans(); }),
                      RaisedWithCode([&] { inTransaction ? m_plain.RollbackTrans() : m_plain.BeginTrans(); }));
            inTransaction = !inTransaction;
        }
        const std::string statement = maker.Statement();
        ASSERT_NO_FATAL_FAILURE(RequireSame(statement)) << i;
    }
    m_keeping.RollbackTrans();
    m_plain.RollbackTrans();
    for (const char* dump : {"SELECT * FROM t ORDER BY id", "SELECT k, v FROM u ORDER BY k, v"}) {
        const std::string rows = ReadAll(m_keeping, dump, true);
        EXPECT_EQ(rows, ReadAll(m_plain, dump, true));
        EXPECT_GT(std::ranges::count(rows, '\n'), 10) << "hardly anything was written";
    }
}

TEST_P(KeptStatements, TakeTextsOfAnyCodePage)
{
    const AnsiCodePageScope scope(936);
    for (const char* text : {"\x95\x5c\xd6\xd0", "a\x95\x5c", "\x95\x5c''", "\x95"}) {
        RequireSame("INSERT INTO u VALUES (5, " + Quoted(text) + ")");
        RequireSame("SELECT v FROM u WHERE v = " + Quoted(text));
    }
    RequireSame("SELECT v FROM u WHERE k = 5");
}

class KeptStatementsOfSeveral : public testing::TestWithParam<Engine> {};

TEST_P(KeptStatementsOfSeveral, FollowATableThatAnotherConnectionChanges)
{
    const std::string url = GetParam().freshUrl();
    CAConnect conn;
    conn.Open(url.c_str());
    conn.Execute("CREATE TABLE w (a INTEGER, s VARCHAR(20))");
    CAConnect other;
    other.Open(url.c_str());
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(conn.Execute("INSERT INTO w VALUES (5, 'x')"), 1);
        EXPECT_THAT(ReadAll(conn, "SELECT * FROM w WHERE a = 5", true), HasSubstr("a|s|\n"));
    }
    other.Execute("ALTER TABLE w ADD COLUMN more VARCHAR(20) DEFAULT 'new'");
    EXPECT_THAT(ReadAll(conn, "SELECT * FROM w WHERE a = 5", true), HasSubstr("a|s|more|\n5|x|new|\n"));
    EXPECT_THAT(Write(conn, "INSERT INTO w (a, s) VALUES (6, 'y')"), HasSubstr(" 1"));
    EXPECT_THAT(Write(conn, "UPDATE w SET s = 'z' WHERE a = 5"), HasSubstr(" 3"));
    EXPECT_THAT(Write(conn, "UPDATE w SET s = 'z' WHERE a = 6"), HasSubstr(" 1"));
    other.Execute("DROP TABLE w");
    EXPECT_NE(RaisedWithCode([&] { conn.Execute("UPDATE w SET s = 'z' WHERE a = 7"); }), kNothingRaised);
    EXPECT_NE(FailureOf(conn), "none");
    EXPECT_THAT(ReadAll(conn, "SELECT * FROM w WHERE a = 8", true), testing::Not(HasSubstr(kNothingRaised)));
    EXPECT_NE(FailureOf(conn), "none");
    other.Execute("CREATE TABLE w (s VARCHAR(20), a VARCHAR(20))");
    EXPECT_THAT(Write(conn, "INSERT INTO w VALUES ('5', 'x')"), HasSubstr(" 1"));
    EXPECT_THAT(ReadAll(conn, "SELECT * FROM w WHERE s = '5'", true), HasSubstr("s|a|\n5|x|\n"));
    EXPECT_THAT(ReadAll(conn, "SELECT * FROM w WHERE s = '6'", true), testing::EndsWith("s|a|\n"));
}

std::string FreshFile()
{
    static int number = 0;
    const auto file = std::filesystem::temp_directory_path() /
                      ("qv-kept-" + std::to_string(::getpid()) + "-" + std::to_string(++number) + ".db");
    for (const char* suffix : {"", "-wal", "-shm"}) {
        std::filesystem::remove(file.string() + suffix);
    }
    return "sqlite:" + file.string();
}

const Engine kInMemory{"sqlite", [] { return std::string("sqlite::memory:"); }, 6000, true};
const Engine kFile{"sqlite_file", &FreshFile, 500, true};
const Engine kPostgresql{"postgresql", [] { return servers::NewDatabase("postgresql"); }, 1500, false};
const Engine kMariadb{"mariadb", [] { return servers::NewDatabase("mariadb"); }, 1500, false};

std::string NameOf(const testing::TestParamInfo<Engine>& instance) { return instance.param.name; }

INSTANTIATE_TEST_SUITE_P(Engines, KeptStatements, testing::Values(kInMemory, kFile, kPostgresql, kMariadb), &NameOf);
INSTANTIATE_TEST_SUITE_P(Engines, KeptStatementsOfSeveral, testing::Values(kFile, kPostgresql, kMariadb), &NameOf);

// ---- SQLite ---------------------------------------------------------------------------------------------------------

class KeptSqliteStatements : public testing::Test {
protected:
    KeptSqliteStatements()
    {
        m_conn.Open("sqlite::memory:");
        m_conn.Execute("CREATE TABLE t (a INTEGER, s TEXT)");
        for (int i = 1; i <= 100; ++i) {
            m_conn.Execute(("INSERT INTO t VALUES (" + std::to_string(i) + ", 'x')").c_str());
        }
    }

    CAConnect m_conn;
};

TEST_F(KeptSqliteStatements, ArePreparedTwiceForAnyNumberOfCalls)
{
    int before = PreparedStatements();
    for (int i = 2; i < 90; ++i) {
        EXPECT_EQ(TextOf(m_conn, "SELECT a FROM t WHERE a = " + std::to_string(i)), std::to_string(i));
        EXPECT_EQ(m_conn.Execute(("UPDATE t SET s = 'O''Neil' WHERE a = " + std::to_string(i)).c_str()), 1);
    }
    EXPECT_EQ(PreparedStatements() - before, 4); // the first text of each shape, and the shape
    m_conn.Open("sqlite::memory:?statement-cache=0");
    before = PreparedStatements();
    for (int i = 2; i < 90; ++i) {
        EXPECT_EQ(TextOf(m_conn, "SELECT 5"), "5");
    }
    EXPECT_EQ(PreparedStatements() - before, 88);
}

TEST_F(KeptSqliteStatements, ServeOneRecordsetEach)
{
    CARecordset first;
    CARecordset second;
    for (int i = 0; i < 3; ++i) {
        Open(first, "SELECT a FROM t WHERE a > 5", m_conn);
        Open(second, "SELECT a FROM t WHERE a > 50", m_conn);
        first.MoveNext();
        EXPECT_STREQ(first.GetValueToStr(1, true), "7");
        EXPECT_STREQ(second.GetValueToStr(1, true), "51");
        second.MoveNext();
        EXPECT_NE(first.MoveFirst(), 0);
        EXPECT_STREQ(first.GetValueToStr(1, true), "6");
        EXPECT_STREQ(second.GetValueToStr(1, true), "52");
    }
}

TEST_F(KeptSqliteStatements, OutliveTheirConnectionInAnOpenRecordset)
{
    CARecordset rs;
    for (int i = 0; i < 3; ++i) {
        Open(rs, "SELECT a FROM t WHERE a > 5", m_conn);
    }
    m_conn.Close();
    EXPECT_NE(rs.MoveNext(), 0);
    EXPECT_STREQ(rs.GetValueToStr(1, true), "7");
    EXPECT_NE(rs.MoveFirst(), 0);
    EXPECT_STREQ(rs.GetValueToStr(1, true), "6");
}

TEST_F(KeptSqliteStatements, GiveTheirRowsAsTheyAreComputed)
{
    for (int i = 0; i < 3; ++i) { // all of them would take for ever
        EXPECT_EQ(TextOf(m_conn, "SELECT t1.a FROM t t1, t t2, t t3, t t4, t t5, t t6 WHERE t1.a <> 999"), "1");
    }
}

TEST_F(KeptSqliteStatements, LeaveTheirTableFreeWhenTheyAreGivenBack)
{
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(TextOf(m_conn, "SELECT a FROM t WHERE a > 5"), "6");
        m_conn.Execute("UPDATE t SET s = 'y' WHERE a = 7");
    }
    m_conn.BeginTrans();
    m_conn.Execute("DROP TABLE t");
    m_conn.RollbackTrans();
    m_conn.Execute("VACUUM");
    EXPECT_EQ(TextOf(m_conn, "SELECT s FROM t WHERE a = 7"), "y");
    m_conn.Execute("DROP TABLE t");
    EXPECT_THAT(ReadAll(m_conn, "SELECT a FROM t WHERE a > 5", false), HasSubstr("no such table: t [SQLite 1]"));
}

TEST_F(KeptSqliteStatements, FailOnceInAStatementThatFailsForItsValues)
{
    m_conn.Execute("CREATE TABLE k (id INTEGER PRIMARY KEY, c INTEGER CHECK (c < 100))");
    for (int i = 2; i < 6; ++i) {
        EXPECT_EQ(m_conn.Execute(("INSERT INTO k VALUES (" + std::to_string(i) + ", 5)").c_str()), 1);
        EXPECT_THAT(Write(m_conn, "INSERT INTO k VALUES (" + std::to_string(i) + ", 6)"), HasSubstr("UNIQUE"));
        EXPECT_THAT(FailureOf(m_conn), HasSubstr("UNIQUE"));
        EXPECT_THAT(Write(m_conn, "INSERT INTO k VALUES (77, " + std::to_string(99 + i) + ")"), HasSubstr("CHECK"));
        EXPECT_THAT(ReadAll(m_conn, "SELECT abs(-9223372036854775807 - 1) FROM k WHERE c = 5", false),
                    HasSubstr("integer overflow"));
    }
    EXPECT_EQ(TextOf(m_conn, "SELECT COUNT(*) FROM k"), "4");
}

TEST_F(KeptSqliteStatements, WaitForAnotherWriterOnce)
{
    const std::string url = FreshFile() + "?busy_timeout=300";
    CAConnect conn;
    conn.Open(url.c_str());
    conn.Execute("CREATE TABLE t (a INTEGER)");
    for (int i = 0; i < 3; ++i) {
        conn.Execute("INSERT INTO t VALUES (5)");
    }
    CAConnect writer;
    writer.Open(url.c_str());
    writer.BeginTrans();
    EXPECT_THAT(Write(conn, "INSERT INTO t VALUES (6)"), HasSubstr("locked [SQLite 5]"));
    writer.RollbackTrans();
    EXPECT_EQ(conn.Execute("INSERT INTO t VALUES (6)"), 1);
}

// ---- Servers --------------------------------------------------------------------------------------------------------

class KeptPostgresqlStatements : public testing::Test {
protected:
    KeptPostgresqlStatements()
    {
        m_conn.Open(servers::NewDatabase("postgresql").c_str());
        m_conn.Execute("CREATE TABLE t (a integer, s varchar(20))");
    }

    std::string Prepared() { return TextOf(m_conn, "SELECT COUNT(*) FROM pg_prepared_statements -- once"); }

    CAConnect m_conn;
};

TEST_F(KeptPostgresqlStatements, ArePreparedOnce)
{
    for (int i = 2; i < 20; ++i) {
        EXPECT_EQ(m_conn.Execute(("INSERT INTO t VALUES (" + std::to_string(i) + ", 'O''Neil')").c_str()), 1);
        EXPECT_EQ(TextOf(m_conn, "SELECT s FROM t WHERE a = " + std::to_string(i)), "O'Neil");
    }
    EXPECT_EQ(Prepared(), "2");
}

TEST_F(KeptPostgresqlStatements, GiveWayToNewOnes)
{
    m_conn.Open(WithOption(servers::NewDatabase("postgresql"), "statement-cache=3").c_str());
    m_conn.Execute("CREATE TABLE t (a integer)");
    m_conn.BeginTrans();
    for (int i = 0; i < 8; ++i) {
        for (int j = 0; j < 3; ++j) {
            EXPECT_EQ(m_conn.Execute(
                          ("INSERT INTO t VALUES (" + std::string(static_cast<std::size_t>(i), ' ') + "5)").c_str()),
                      1);
        }
    }
    m_conn.CommitTrans();
    EXPECT_EQ(Prepared(), "3");
    EXPECT_EQ(TextOf(m_conn, "SELECT COUNT(*) FROM t"), "24");
}

TEST_F(KeptPostgresqlStatements, KeepTheirTransactionWhenTheServerRefusesTheirShape)
{
    for (int i = 0; i < 3; ++i) {
        m_conn.BeginTrans();
        m_conn.Execute("INSERT INTO t VALUES (5, 'x')");
        EXPECT_THAT(Write(m_conn, "UPDATE t SET s = 'y' WHERE s = 7"), HasSubstr("operator does not exist"));
        m_conn.RollbackTrans();
    }
    // A literal of no type is a text here, while the server cannot tell the type of a placeholder.
    for (int i = 0; i < 3; ++i) {
        m_conn.BeginTrans();
        m_conn.Execute("INSERT INTO t VALUES (5, 'x')");
        EXPECT_THAT(Write(m_conn, "UPDATE t SET s = 'y' WHERE NULL = 'z' OR a = 5"),
                    HasSubstr(" " + std::to_string(i + 1)));
        m_conn.CommitTrans();
    }
}

TEST_F(KeptPostgresqlStatements, AreRunAsTextsWhenTheServerHasLostThem)
{
    const auto insert = [this] { return Write(m_conn, "INSERT INTO t VALUES (5, 'x')"); };
    const std::string done = std::string(kNothingRaised) + " 1";
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(insert(), done);
    }
    EXPECT_EQ(Prepared(), "1");
    // Behind our back, as a pooler would.
    m_conn.Execute(
        "CREATE FUNCTION lose() RETURNS integer LANGUAGE plpgsql AS 'BEGIN EXECUTE ''DEALLOCATE ALL''; RETURN 1; END'");
    EXPECT_EQ(TextOf(m_conn, "SELECT lose()"), "1");
    EXPECT_EQ(insert(), done);
    EXPECT_EQ(FailureOf(m_conn), "none");
    EXPECT_EQ(insert(), done);
    for (const char* statement : {"DEALLOCATE ALL", " discard ALL"}) {
        m_conn.Execute(statement);
        m_conn.BeginTrans();
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(insert(), done);
        }
        m_conn.CommitTrans();
    }
    EXPECT_EQ(Prepared(), "1");
}

TEST_F(KeptPostgresqlStatements, ReadBackslashesAsTheSessionDoes)
{
    m_conn.Execute("SET standard_conforming_strings TO off");
    for (int i = 0; i < 3; ++i) {
        m_conn.Execute("INSERT INTO t VALUES (5, 'a\\\\b')");
    }
    EXPECT_EQ(TextOf(m_conn, "SELECT string_agg(s, ',') FROM t"), "a\\b,a\\b,a\\b");
}

TEST(KeptMariadbStatements, ArePreparedOnceAndClosedByWhatChangesTheSession)
{
    CAConnect conn;
    conn.Open(servers::NewDatabase("mariadb").c_str());
    conn.Execute("CREATE TABLE t (a integer, s varchar(20))");
    const auto status = [&conn](const std::string& name) {
        CARecordset rs;
        Open(rs, "SELECT VARIABLE_VALUE FROM information_schema.SESSION_STATUS WHERE VARIABLE_NAME = '" + name + "'",
             conn);
        return std::string(rs.GetValueToStr(1, true));
    };
    for (int i = 2; i < 20; ++i) {
        EXPECT_EQ(conn.Execute(("INSERT INTO t VALUES (" + std::to_string(i) + ", 'O\\'Neil')").c_str()), 1);
        EXPECT_EQ(TextOf(conn, "SELECT s FROM t WHERE a = " + std::to_string(i)), "O'Neil");
    }
    EXPECT_EQ(status("Com_stmt_prepare"), "1");
    EXPECT_EQ(status("Com_stmt_execute"), "17");
    conn.Execute("SET sql_mode = 'NO_BACKSLASH_ESCAPES'");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(conn.Execute("INSERT INTO t VALUES (100, 'C:\\')"), 1);
    }
    EXPECT_EQ(TextOf(conn, "SELECT GROUP_CONCAT(s) FROM t WHERE a = 100"), "C:\\,C:\\,C:\\");
    EXPECT_EQ(status("Com_stmt_close"), "1");
}

TEST(KeptMariadbStatements, AreTextsWhereTheServerHasEnough)
{
    CAConnect conn;
    conn.Open(servers::NewDatabase("mariadb").c_str());
    conn.Execute("CREATE TABLE t (a integer)");
    const std::string limit = TextOf(conn, "SELECT @@GLOBAL.max_prepared_stmt_count");
    conn.Execute("SET GLOBAL max_prepared_stmt_count = 0");
    conn.BeginTrans();
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(Write(conn, "INSERT INTO t VALUES (5)"), std::string(kNothingRaised) + " 1");
    }
    EXPECT_EQ(RaisedWithCode([&] { conn.CommitTrans(); }), kNothingRaised);
    conn.Execute(("SET GLOBAL max_prepared_stmt_count = " + limit).c_str());
    EXPECT_EQ(TextOf(conn, "SELECT COUNT(*) FROM t"), "4");
}

} // namespace
