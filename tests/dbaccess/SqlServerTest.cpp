#include "dbaccess/CAConnect.h"
#include "dbaccess/CADateTime.h"
#include "dbaccess/CARecordset.h"
#include "tests/dbaccess/Query.h"
#include "tests/platform/AnsiCodePageScope.h"
#include "tests/servers/Servers.h"
#include "tests/support/Raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// The ODBC driver over FreeTDS, against what speaks SQL Server's protocol (tests/servers/tds_responder.py): what is
// tested is the way there and back, not that engine.

namespace {

class SqlServerTest : public testing::Test {
protected:
    SqlServerTest() : m_url(servers::NewDatabase("sqlserver")) { m_conn.Open(m_url.c_str()); }

    void Execute(const std::string& sql) { m_conn.Execute(sql.c_str()); }

    std::string TextOf(const std::string& sql) { return ::TextOf(m_conn, sql); }
    std::string ErrorOf(const std::string& sql)
    {
        return RaisedWithCode([&] { Execute(sql); });
    }

    /// The URL with one thing in it exchanged for another.
    [[nodiscard]] std::string UrlWith(const std::string& other, const std::string& thing) const
    {
        std::string url = m_url;
        return url.replace(url.find(thing), thing.size(), other);
    }

    void MakeNumbers()
    {
        Execute("CREATE TABLE n (id INTEGER, name NVARCHAR(100))");
        Execute("INSERT INTO n (id, name) VALUES (1, 'row')");
        for (int rows = 1; rows < 1024; rows *= 2) {
            Execute("INSERT INTO n (id, name) SELECT id + " + std::to_string(rows) + ", name FROM n");
        }
    }

    /// Ends the session on the server, as an administrator does.
    void EndSession()
    {
        const std::string session = TextOf("SELECT @@SPID");
        CAConnect admin;
        admin.Open(m_url.c_str());
        admin.Execute(("KILL " + session).c_str());
    }

    const AnsiCodePageScope m_utf8{CP_UTF8};
    std::string m_url;
    CAConnect m_conn;
};

TEST_F(SqlServerTest, IsOfKind1UnlessTheUrlSaysOtherwise)
{
    EXPECT_EQ(m_conn.m_nDBType, 1);
    EXPECT_THAT(m_conn.GetEngineName().GetString(), StartsWith("Microsoft SQL Server"));
    CAConnect other;
    other.Open(UrlWith("", "?kind=1").c_str());
    EXPECT_EQ(other.m_nDBType, 1);
    other.Open(UrlWith("kind=3", "kind=1").c_str());
    EXPECT_EQ(other.m_nDBType, 3);
}

TEST_F(SqlServerTest, SaysWhyItDoesNotOpenAndNeverThePassword)
{
    CAConnect conn;
    const std::string password = RaisedWithCode([&] { conn.Open(UrlWith("PWD=guess-7391", "PWD=secret").c_str()); });
    EXPECT_THAT(password, AllOf(HasSubstr("Login failed for user 'sa'"), Not(HasSubstr("7391"))));
    EXPECT_FALSE(conn.IsOpen());
    EXPECT_THAT(RaisedWithCode([&] { conn.Open(UrlWith("Database=nowhere", "Database=qv").c_str()); }),
                AllOf(HasSubstr("Cannot open database \"nowhere"), Not(HasSubstr("secret"))));
    EXPECT_FALSE(conn.IsOpen());
}

TEST_F(SqlServerTest, RaisesTheEnginesNumbersAndMessages)
{
    Execute("CREATE TABLE k (id INTEGER NOT NULL PRIMARY KEY, name NVARCHAR(5), day DATE)");
    Execute("INSERT INTO k (id) VALUES (1)");
    EXPECT_THAT(ErrorOf("INSERT INTO k (id) VALUES (2"), AllOf(HasSubstr("Incorrect syntax"), HasSubstr(" 102]")));
    EXPECT_EQ(ErrorOf("UPDATE k SET nobody = 1"), "Invalid column name 'nobody'. [ODBC 42S22 207]");
    EXPECT_EQ(ErrorOf("DELETE FROM nowhere"), "Invalid object name 'nowhere'. [ODBC 42S02 208]");
    EXPECT_THAT(ErrorOf("INSERT INTO k (id) VALUES (1)"), AllOf(HasSubstr("duplicate key"), HasSubstr(" 2627]")));
    EXPECT_THAT(ErrorOf("INSERT INTO k (id, name) VALUES (3, 'longer')"), HasSubstr(" 2628]"));
    EXPECT_THAT(ErrorOf("INSERT INTO k (id, day) VALUES (4, 'tuesday')"), HasSubstr(" 241]"));
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM k"), "1");
}

TEST_F(SqlServerTest, ReadsLongTextsThatComeInPiecesOfUnknownNumber)
{
    Execute("CREATE TABLE t (id INTEGER, content NVARCHAR(MAX))");
    std::string text;
    for (int i = 0; i < 30'000; ++i) {
        text += i % 7 == 0 ? "\u4e2d" : i % 11 == 0 ? "\U0001f600" : "x"; // so that pieces end inside characters
    }
    for (const std::string& written : {text, std::string(2048, 'a'), std::string(4095, 'b'), std::string()}) {
        Execute("DELETE FROM t");
        Execute("INSERT INTO t (id, content) VALUES (1, '" + written + "')");
        EXPECT_TRUE(TextOf("SELECT content FROM t") == written) << written.size();
    }
    Execute("UPDATE t SET content = NULL");
    CARecordset rs;
    Open(rs, "SELECT content, id FROM t", m_conn);
    CString untouched = "before";
    EXPECT_FALSE(rs.GetValue(1, untouched, true));
    EXPECT_STREQ(untouched, "before");
    EXPECT_STREQ(rs.GetValueToStr(2, true), "1");
}

TEST_F(SqlServerTest, ReadsDatesOfEveryType)
{
    Execute("CREATE TABLE d (day DATE, moment DATETIME2(0), old DATETIME)");
    Execute("INSERT INTO d (day, moment, old) VALUES ('2013-05-07', '2013-05-07 09:03:59', '1899-12-31 23:59:58')");
    Execute("INSERT INTO d (day) VALUES (NULL)");
    CARecordset rs;
    Open(rs, "SELECT day, moment, old FROM d", m_conn);
    CADateTime day;
    EXPECT_STREQ(rs.GetValueToStr(1, true), "2013-05-07");
    EXPECT_TRUE(rs.GetValue(1, day));
    EXPECT_EQ(day.GetOleDateTime(), COleDateTime(2013, 5, 7, 0, 0, 0));
    EXPECT_STREQ(rs.GetValueToStr(2, true), "2013-05-07 09:03:59");
    EXPECT_TRUE(rs.GetValue(2, day));
    EXPECT_EQ(day.GetOleDateTime(), COleDateTime(2013, 5, 7, 9, 3, 59));
    EXPECT_TRUE(rs.GetValue(3, day));
    EXPECT_EQ(day.GetOleDateTime(), COleDateTime(1899, 12, 31, 23, 59, 58));
    rs.MoveNext();
    EXPECT_FALSE(rs.GetValue(1, day));
    EXPECT_FALSE(rs.GetValue(2, day));
}

// One result at a time arrives on a connection.
TEST_F(SqlServerTest, RunsAnotherStatementWhileAResultIsOpen)
{
    MakeNumbers();
    CARecordset outer;
    Open(outer, "SELECT id FROM n ORDER BY id", m_conn);
    int rows = 0;
    for (; outer.IsEOF() == 0; outer.MoveNext()) {
        ++rows;
        int id = 0;
        outer.GetValue(1, id);
        EXPECT_EQ(id, rows);
        if (rows % 100 == 0) {
            EXPECT_EQ(TextOf("SELECT id FROM n WHERE id = " + std::to_string(rows)), std::to_string(rows));
            EXPECT_EQ(m_conn.Execute("UPDATE n SET name = 'seen' WHERE id = 1"), 1);
        }
    }
    EXPECT_EQ(rows, 1024);
}

// A thousand million rows: reading them to the end would take the rest of the day.
TEST_F(SqlServerTest, EndsAGreatResultOnTheServerWhenItIsClosedEarly)
{
    MakeNumbers();
    for (int again = 0; again < 3; ++again) {
        CARecordset rs;
        Open(rs, "SELECT a.id, b.name FROM n a, n b, n c", m_conn);
        for (int row = 0; row < 1000; ++row) {
            rs.MoveNext();
        }
        EXPECT_EQ(rs.IsEOF(), 0);
        rs.Close();
        EXPECT_EQ(TextOf("SELECT COUNT(*) FROM n"), "1024");
    }
    EXPECT_TRUE(m_conn.IsOpen());
}

TEST_F(SqlServerTest, KeepsAndDropsTransactionsWhole)
{
    Execute("CREATE TABLE t (id INTEGER)");
    m_conn.BeginTrans();
    Execute("INSERT INTO t (id) VALUES (1)");
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM t"), "1");
    m_conn.RollbackTrans();
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM t"), "0");
    m_conn.BeginTrans();
    Execute("INSERT INTO t (id) VALUES (2)");
    m_conn.CommitTrans();
    {
        CAConnect other;
        other.Open(m_url.c_str());
        EXPECT_EQ(::TextOf(other, "SELECT id FROM t"), "2");
        other.BeginTrans();
        other.Execute("DELETE FROM t");
    }
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM t"), "1");
    Execute("INSERT INTO t (id) VALUES (3)");
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM t"), "2");
}

TEST_F(SqlServerTest, IsClosedOnceItsSessionHasBeenEnded)
{
    EndSession();
    EXPECT_NE(ErrorOf("CREATE TABLE t (id INTEGER)"), kNothingRaised);
    EXPECT_FALSE(m_conn.IsOpen());
    m_conn.Open(m_url.c_str());
    EXPECT_EQ(TextOf("SELECT 7"), "7");
}

TEST_F(SqlServerTest, LosesATransactionWithItsSession)
{
    Execute("CREATE TABLE t (id INTEGER)");
    m_conn.BeginTrans();
    Execute("INSERT INTO t (id) VALUES (1)");
    EndSession();
    EXPECT_NE(ErrorOf("INSERT INTO t (id) VALUES (2)"), kNothingRaised);
    EXPECT_NE(RaisedWithCode([&] { m_conn.CommitTrans(); }), kNothingRaised);
    m_conn.Close();
    m_conn.Open(m_url.c_str());
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM t"), "0");
}

TEST_F(SqlServerTest, FindsTextsOfADoubleByteCodePage)
{
    const AnsiCodePageScope gbk(936);
    Execute("CREATE TABLE t (id INTEGER, name NVARCHAR(100), note NVARCHAR(MAX))");
    // The second byte of the first character is a backslash.
    Execute("INSERT INTO t (id, name, note) VALUES (1, '\x95\x5c\xd6\xd0\xce\xc4', 'O''\x95\x5c')");
    EXPECT_EQ(TextOf("SELECT name FROM t WHERE name = '\x95\x5c\xd6\xd0\xce\xc4'"), "\x95\x5c\xd6\xd0\xce\xc4");
    EXPECT_EQ(TextOf("SELECT note FROM t"), "O'\x95\x5c");
    EXPECT_THAT(ErrorOf("DELETE FROM \x95\x5c"), Not(HasSubstr(kNothingRaised)));
}

TEST_F(SqlServerTest, ComparesTextsWithoutTheirCaseAndTheBlanksAtTheirEnds)
{
    Execute("CREATE TABLE t (name NVARCHAR(100))");
    Execute("INSERT INTO t (name) VALUES ('Jos\u00e9')");
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM t WHERE name = 'JOS\u00c9  '"), "1");
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM t WHERE name = 'Jose'"), "0");
}

} // namespace
