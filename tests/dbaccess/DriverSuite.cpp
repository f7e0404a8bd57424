#include "tests/dbaccess/DriverSuite.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CADateTime.h"
#include "dbaccess/CARecordset.h"
#include "platform/CodePage.h"
#include "tests/platform/AnsiCodePageScope.h"
#include "tests/servers/Servers.h"
#include "tests/support/Raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

std::string FreshOdbcUrl(const std::string& engine)
{
    if (engine == "sqlite") {
        return "odbc:Driver=SQLite3;Database=:memory:";
    }
    return servers::OverOdbc(engine, servers::NewDatabase(engine));
}

// What every driver does alike. A new driver is one more Quirks value at the end of this file.

namespace {

class DriverSuite : public testing::TestWithParam<Quirks> {
protected:
    DriverSuite() { m_conn.Open(GetParam().freshUrl().c_str()); }

    void MakeTable() { m_conn.Execute("CREATE TABLE t (id INTEGER, name VARCHAR(100), day DATE)"); }

    CString TextOf(const std::string& sql)
    {
        CARecordset rs;
        EXPECT_TRUE(rs.Open(sql.c_str(), &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable));
        return rs.GetValueToStr(1, true);
    }

    int Count() { return std::atoi(TextOf("SELECT COUNT(*) FROM t")); }

    CAConnect m_conn;
};

TEST_P(DriverSuite, TellsHowManyRowsAWriteChanged)
{
    MakeTable();
    EXPECT_EQ(m_conn.Execute("INSERT INTO t (id, name) VALUES (1, 'a')"), 1);
    EXPECT_EQ(m_conn.Execute("INSERT INTO t (id, name) VALUES (2, 'b')"), 1);
    EXPECT_EQ(m_conn.Execute("UPDATE t SET name = 'c'"), 2);
    EXPECT_EQ(m_conn.Execute("DELETE FROM t WHERE id = 7"), 0);
    EXPECT_EQ(m_conn.Execute("CREATE TABLE u (id INTEGER)"), 0);
}

TEST_P(DriverSuite, RaisesTheEnginesMessageAndCode)
{
    CARecordset rs;
    const std::string read = RaisedWithCode(
        [&] { rs.Open("SELECT a FROM nowhere", &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable); });
    EXPECT_THAT(read, testing::HasSubstr("nowhere"));
    EXPECT_THAT(read, testing::HasSubstr(GetParam().missingTableCode));
    EXPECT_EQ(RaisedWithCode([&] { m_conn.Execute("DELETE FROM nowhere"); }), read);
}

TEST_P(DriverSuite, RefusesASecondStatementBeforeAnythingRuns)
{
    MakeTable();
    for (const char* text :
         {"INSERT INTO t (id) VALUES (1); INSERT INTO t (id) VALUES (2)", "INSERT INTO t (id) VALUES (1); garbage",
          "INSERT INTO t (id) VALUES (1) ; /* x */ DROP TABLE t"}) {
        EXPECT_NE(RaisedWithCode([&] { m_conn.Execute(text); }), kNothingRaised) << text;
        EXPECT_EQ(Count(), 0) << text;
    }
    CARecordset rs;
    EXPECT_NE(RaisedWithCode([&] {
                  rs.Open("SELECT 1; DROP TABLE t", &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
              }),
              kNothingRaised);
    EXPECT_EQ(Count(), 0);
}

TEST_P(DriverSuite, RefusesATextWithoutAStatement)
{
    for (const char* text : {"", "  \n", ";", "-- nothing"}) {
        EXPECT_NE(RaisedWithCode([&] { m_conn.Execute(text); }), kNothingRaised) << text;
    }
}

TEST_P(DriverSuite, TakesAClosingSemicolonAndBlanks)
{
    MakeTable();
    EXPECT_EQ(m_conn.Execute("INSERT INTO t (id) VALUES (1) ; \n"), 1);
    EXPECT_EQ(Count(), 1);
}

TEST_P(DriverSuite, GivesTextsBackByteForByte)
{
    MakeTable();
    for (const std::string text : {"O'Brien", "a\\b", "C:\\", "'", "''", "\\'", "100 %s %d", "Зоя 王芳 José", "\"x\"",
                                   "a\r\n\tb", "?", "{fn x}", " blank ", "#", "--"}) {
        m_conn.Execute("DELETE FROM t");
        m_conn.Execute(
            ("INSERT INTO t (name) VALUES ('" + std::string(m_conn.EscapeLiteral(text.c_str())) + "')").c_str());
        EXPECT_EQ(std::string(TextOf("SELECT name FROM t")), text);
    }
}

TEST_P(DriverSuite, ReadsDateColumns)
{
    MakeTable();
    m_conn.Execute("INSERT INTO t (day) VALUES ('2013-05-07')");
    CARecordset rs;
    rs.Open("SELECT day FROM t", &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    CADateTime day;
    EXPECT_TRUE(rs.GetValue(1, day));
    EXPECT_EQ(day.GetOleDateTime(), COleDateTime(2013, 5, 7, 0, 0, 0));
}

TEST_P(DriverSuite, WritesDateLiterals)
{
    EXPECT_STREQ(m_conn.GetDateStrOnSQL("2013-05-07"), GetParam().dateLiteral.c_str());
}

TEST_P(DriverSuite, AppliesOrDropsATransactionWhole)
{
    MakeTable();
    m_conn.BeginTrans();
    m_conn.Execute("INSERT INTO t (id) VALUES (1)");
    m_conn.RollbackTrans();
    EXPECT_EQ(Count(), 0);
    m_conn.BeginTrans();
    m_conn.Execute("INSERT INTO t (id) VALUES (1)");
    m_conn.CommitTrans();
    EXPECT_EQ(Count(), 1);
    m_conn.RollbackTrans();
    EXPECT_EQ(Count(), 1);
}

TEST_P(DriverSuite, RefusesATransactionInsideATransactionAndACommitWithoutOne)
{
    EXPECT_NE(RaisedWithCode([&] { m_conn.CommitTrans(); }), kNothingRaised);
    m_conn.BeginTrans();
    EXPECT_NE(RaisedWithCode([&] { m_conn.BeginTrans(); }), kNothingRaised);
    m_conn.RollbackTrans();
}

TEST_P(DriverSuite, IsReadyForTheNextStatementWhenAResultIsClosedEarly)
{
    MakeTable();
    for (int i = 0; i < 100; ++i) {
        m_conn.Execute("INSERT INTO t (id) VALUES (1)");
    }
    {
        CARecordset rs;
        rs.Open("SELECT id FROM t", &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
        rs.MoveNext();
    }
    EXPECT_EQ(m_conn.Execute("DELETE FROM t"), 100);
    m_conn.Execute("DROP TABLE t");
}

TEST_P(DriverSuite, RaisesInTheMiddleOfAStatementWithoutHalfDoingIt)
{
    m_conn.Execute("CREATE TABLE k (id INTEGER NOT NULL PRIMARY KEY)");
    m_conn.Execute("INSERT INTO k (id) VALUES (5)");
    EXPECT_NE(RaisedWithCode([&] { m_conn.Execute("INSERT INTO k (id) SELECT id - 1 FROM k UNION ALL SELECT 5"); }),
              kNothingRaised);
    EXPECT_STREQ(TextOf("SELECT COUNT(*) FROM k"), "1");
}

struct CodePageText {
    UINT codePage;
    const char* bytes; // in the code page; among them characters whose second byte is a backslash
    const char* utf8;
};

TEST_P(DriverSuite, ConvertsTextsOfTheAnsiCodePageAtItsEdge)
{
    const CodePageText texts[] = {
        {936, "\x95\x5c\xd6\xd0\xce\xc4", "\u661e\u4e2d\u6587"},
        {950, "\xa5\x5c\xb3\x5c", "\u529f\u8a31"},
        {932, "\x83\x5c\x95\x5c", "\u30bd\u8868"},
        {949, "\xb0\xa1", "\uac00"},
        {1252, "Jos\xe9 \x80", "Jos\u00e9 \u20ac"},
        {1251, "\xdE\xEB\xE8\xFF", "\u042e\u043b\u0438\u044f"},
        {874, "\xa1\xd2", "\u0e01\u0e32"},
    };
    MakeTable();
    for (const CodePageText& text : texts) {
        m_conn.Execute("DELETE FROM t");
        {
            const AnsiCodePageScope guard(text.codePage);
            m_conn.Execute((std::string("INSERT INTO t (name) VALUES ('") + text.bytes + "')").c_str());
            EXPECT_STREQ(TextOf("SELECT name FROM t"), text.bytes) << text.codePage;
            EXPECT_STREQ(TextOf(std::string("SELECT name FROM t WHERE name = '") + text.bytes + "'"), text.bytes);
        }
        EXPECT_STREQ(TextOf("SELECT name FROM t"), text.utf8) << text.codePage;
    }
}

TEST_P(DriverSuite, NeverLetsABrokenCharacterSwallowTheQuoteBehindIt)
{
    MakeTable();
    const AnsiCodePageScope guard(936);
    m_conn.Execute("INSERT INTO t (name, id) VALUES ('\x95', 7)");
    EXPECT_EQ(Count(), 1);
    EXPECT_STREQ(TextOf("SELECT name FROM t WHERE id = 7"), "?");
    EXPECT_EQ(m_conn.Execute("UPDATE t SET name = 'a\x95' WHERE id = 7"), 1);
    EXPECT_STREQ(TextOf("SELECT name FROM t WHERE id = 7"), "a?");
}

TEST_P(DriverSuite, NamesItsEngine) { EXPECT_FALSE(m_conn.GetEngineName().IsEmpty()); }

INSTANTIATE_TEST_SUITE_P(
    Engines, DriverSuite,
    testing::Values(
        Quirks{"sqlite", [] { return std::string("sqlite::memory:"); }, "SQLite 1", "'2013-05-07 00:00:00'"},
        Quirks{"sqlite_keeping_nothing", [] { return std::string("sqlite::memory:?statement-cache=0"); }, "SQLite 1",
               "'2013-05-07 00:00:00'"},
        Quirks{"mysql_keeping_nothing", [] { return servers::NewDatabase("mariadb") + "&statement-cache=0"; },
               "MySQL 1146", "'2013-05-07 00:00:00'"},
        Quirks{"postgresql_keeping_nothing", [] { return servers::NewDatabase("postgresql") + "&statement-cache=0"; },
               "PostgreSQL 42P01", "'2013-05-07 00:00:00'"},
        Quirks{"mysql", [] { return servers::NewDatabase("mariadb"); }, "MySQL 1146", "'2013-05-07 00:00:00'"},
        Quirks{"postgresql", [] { return servers::NewDatabase("postgresql"); }, "PostgreSQL 42P01",
               "'2013-05-07 00:00:00'"},
        Quirks{"odbc_sqlite", [] { return FreshOdbcUrl("sqlite"); }, "ODBC HY000 1", "'2013-05-07 00:00:00'"},
        Quirks{"odbc_mariadb", [] { return FreshOdbcUrl("mariadb"); }, "ODBC 42S02 1146", "'2013-05-07 00:00:00'"},
        Quirks{"odbc_postgresql", [] { return FreshOdbcUrl("postgresql"); }, "ODBC 42P01 1", "'2013-05-07 00:00:00'"},
        Quirks{"odbc_sqlserver", [] { return servers::NewDatabase("sqlserver"); }, "ODBC 42S02 208",
               "'2013-05-07 00:00:00'"}),
    [](const auto& instance) { return instance.param.name; });

} // namespace
