#include "dbaccess/CACommFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"
#include "dbaccess/Driver.h"
#include "tests/scripted/ScriptedDriver.h"
#include "tests/support/Raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

using testing::HasSubstr;

namespace {

TEST(Connect, IsClosedUntilItIsOpened)
{
    CAConnect conn;
    EXPECT_FALSE(conn.IsOpen());
    conn.Open("sqlite::memory:");
    EXPECT_TRUE(conn.IsOpen());
    conn.Close();
    EXPECT_FALSE(conn.IsOpen());
    conn.Close();
}

TEST(Connect, OpensAgainAfterClosing)
{
    CAConnect conn;
    conn.Open("sqlite::memory:");
    conn.Execute("CREATE TABLE t (a)");
    conn.Open("sqlite::memory:");
    EXPECT_THAT(Raised([&] { conn.Execute("DROP TABLE t"); }), HasSubstr("no such table"));
}

TEST(Connect, ReportsAClosedConnectionByValueToReadsAndRunSql)
{
    CAConnect conn;
    CARecordset rs;
    EXPECT_FALSE(rs.Open("SELECT 1", &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable));
    EXPECT_FALSE(rs.Open("SELECT 1", nullptr, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable));
    EXPECT_EQ(CACommFun::RunSQL(&conn, "SELECT 1", "", -1), 0);
    EXPECT_EQ(CACommFun::RunSQL(nullptr, "SELECT 1", "", -1), 0);
}

TEST(Connect, RaisesOnAClosedConnectionWhereAValueWouldLookLikeSuccess)
{
    CAConnect conn;
    const std::string closed = "the database connection is not open";
    EXPECT_EQ(Raised([&] { conn.Execute("SELECT 1"); }), closed);
    EXPECT_EQ(Raised([&] { conn.BeginTrans(); }), closed);
    EXPECT_EQ(Raised([&] { conn.CommitTrans(); }), closed);
    EXPECT_EQ(Raised([&] { conn.RollbackTrans(); }), closed);
    EXPECT_EQ(Raised([&] { conn.GetDateStrOnSQL("2013-05-07"); }), closed);
    EXPECT_EQ(Raised([&] { (void)conn.EscapeLiteral("x"); }), closed);
    EXPECT_EQ(Raised([&] { (void)conn.GetEngineName(); }), closed);
}

std::string FailureOf(const CAConnect& conn)
{
    return conn.GetFailure() == nullptr ? "" : conn.GetFailure()->GetErrorText().GetString();
}

TEST(Connect, KnowsWhyTheLastStatementFailed)
{
    CAConnect conn;
    conn.Open("sqlite::memory:");
    EXPECT_EQ(FailureOf(conn), "");
    CARecordset rs;
    Raised([&] { rs.Open("SELECT * FROM a", &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable); });
    EXPECT_EQ(FailureOf(conn), "no such table: a");
    Raised([&] { conn.Execute("DROP TABLE b"); });
    EXPECT_EQ(FailureOf(conn), "no such table: b");
    conn.Execute("CREATE TABLE b (c)");
    EXPECT_EQ(FailureOf(conn), "");
}

TEST(Connect, KnowsInATransactionWhyTheFirstStatementFailed)
{
    CAConnect conn;
    conn.Open("sqlite::memory:");
    Raised([&] { conn.Execute("DROP TABLE before"); });
    conn.BeginTrans();
    EXPECT_EQ(FailureOf(conn), "");
    Raised([&] { conn.Execute("DROP TABLE a"); });
    conn.Execute("CREATE TABLE b (c)");
    Raised([&] { conn.Execute("DROP TABLE d"); });
    EXPECT_EQ(FailureOf(conn), "no such table: a");
    conn.RollbackTrans();
    EXPECT_EQ(FailureOf(conn), "");
}

TEST(Connect, IsClosedOnceTheEngineIsGone)
{
    scripted::Database database;
    CAConnect conn;
    database.Connect(conn);
    EXPECT_TRUE(conn.IsOpen());
    database.GoAway();
    EXPECT_FALSE(conn.IsOpen());
    EXPECT_EQ(CACommFun::RunSQL(&conn, "UPDATE t SET a = 1", "", -1), 0);
    EXPECT_TRUE(database.executions.empty());
}

TEST(Connect, RunSqlRunsTheStatementAndRaisesWhatTheEngineRefuses)
{
    scripted::Database database;
    database.Answer({});
    database.Answer(scripted::Raise("refused"));
    CAConnect conn;
    database.Connect(conn);
    EXPECT_EQ(CACommFun::RunSQL(&conn, "INSERT 1", "", -1), 1);
    EXPECT_EQ(Raised([&] { CACommFun::RunSQL(&conn, "INSERT 2", "", -1); }), "refused");
    EXPECT_THAT(database.executions, testing::ElementsAre("INSERT 1", "INSERT 2"));
}

TEST(Connect, KeepsTheNotificationFieldsSideBySide)
{
    const CAConnect conn;
    const auto message = reinterpret_cast<std::uintptr_t>(&conn.m_nNotifyMsg);
    const auto window = reinterpret_cast<std::uintptr_t>(&conn.m_hNotifyWnd);
    EXPECT_EQ(window, (message + sizeof(UINT) + alignof(HWND) - 1) / alignof(HWND) * alignof(HWND));
}

TEST(ConnectUrl, SaysWhatIsWrongWithIt)
{
    CAConnect conn;
    EXPECT_EQ(Raised([&] { conn.Open("people.db"); }), "a connection URL begins with its scheme, such as sqlite:PATH");
    EXPECT_THAT(Raised([&] { conn.Open("nosuch:x"); }), HasSubstr("no database driver for \"nosuch:\"; there is "));
    EXPECT_THAT(Raised([&] { conn.Open("nosuch:x"); }), HasSubstr("sqlite:"));
    EXPECT_THAT(Raised([&] { conn.Open("sqlite:"); }), HasSubstr("names no file"));
    EXPECT_THAT(Raised([&] { conn.Open("sqlite::memory:?kind=2"); }), HasSubstr("kind=2 is no engine kind"));
    EXPECT_THAT(Raised([&] { conn.Open("sqlite::memory:?kind"); }), HasSubstr("not of the form name=value"));
    EXPECT_THAT(Raised([&] { conn.Open("sqlite::memory:?kind=1&kind=1"); }), HasSubstr("given twice"));
    EXPECT_THAT(Raised([&] { conn.Open("sqlite::memory:?colour=red"); }), HasSubstr("but not colour=red"));
    EXPECT_THAT(Raised([&] { conn.Open("sqlite::memory:?mode=x"); }), HasSubstr("but not mode=x"));
    EXPECT_THAT(Raised([&] { conn.Open("sqlite::memory:?busy_timeout=soon"); }),
                HasSubstr("no number of milliseconds"));
    EXPECT_THAT(Raised([&] { conn.Open(CString("sqlite:a\0b", 10)); }), HasSubstr("NUL"));
    EXPECT_FALSE(conn.IsOpen());
}

TEST(ConnectUrl, OverridesTheEngineKind)
{
    CAConnect conn;
    conn.Open("sqlite::memory:");
    EXPECT_EQ(conn.m_nDBType, 3);
    for (const int kind : {0, 1, 3, 6}) {
        conn.Open(("sqlite::memory:?kind=" + std::to_string(kind)).c_str());
        EXPECT_EQ(conn.m_nDBType, kind);
    }
}

TEST(ConnectUrl, EscapesQuestionMarkAndPercentInThePathOnly)
{
    EXPECT_EQ(dbaccess::ParseLocation("/a%3Fb%253F%41?mode=ro").path, "/a?b%3F%41");
    EXPECT_EQ(dbaccess::ParseLocation("/a%3Fb?mode=ro&kind=1").options.at("kind"), "1");
}

TEST(ConnectTexts, RefusesANulByteInAText)
{
    CAConnect conn;
    conn.Open("sqlite::memory:");
    EXPECT_THAT(Raised([&] { (void)conn.EscapeLiteral(CString("a\0b", 3)); }), HasSubstr("NUL"));
    EXPECT_STREQ(conn.EscapeLiteral("O'Brien \\ ''"), "O''Brien \\ ''''");
}

TEST(ConnectDates, GivesTheEnginesLiteralForRealDatesOnly)
{
    CAConnect conn;
    conn.Open("sqlite::memory:");
    EXPECT_STREQ(conn.GetDateStrOnSQL("2013-05-07"), "'2013-05-07 00:00:00'");
    EXPECT_STREQ(conn.GetDateStrOnSQL("2013-05-07 09:03:02"), "'2013-05-07 09:03:02'");
    EXPECT_THAT(Raised([&] { conn.GetDateStrOnSQL("2013-02-30"); }), HasSubstr("\"2013-02-30\" is not a date"));
    EXPECT_THAT(Raised([&] { conn.GetDateStrOnSQL("' OR 1=1"); }), HasSubstr("is not a date"));
}

TEST(ConnectRegistry, SaysWhichPackageBringsADriverThatWasLeftOut)
{
    dbaccess::RegisterLeftOutDriver("missing", "libmissing-dev");
    CAConnect conn;
    EXPECT_EQ(Raised([&] { conn.Open("missing:x"); }),
              "this build has no database driver for \"missing:\"; install the Debian package libmissing-dev and build "
              "again");
    EXPECT_THAT(Raised([&] { conn.Open("nosuch:x"); }), testing::Not(HasSubstr("missing:")));
    dbaccess::RegisterLeftOutDriver("sqlite", "libsqlite3-dev");
    conn.Open("sqlite::memory:");
    EXPECT_TRUE(conn.IsOpen());
}

TEST(ConnectRegistry, TakesADriverOfTheCallers)
{
    dbaccess::RegisterDriver("played", [](std::string_view location) -> std::unique_ptr<dbaccess::Session> {
        throw CAException(CString("asked for ") + CString(location));
    });
    CAConnect conn;
    EXPECT_EQ(Raised([&] { conn.Open("played:here?x=1"); }), "asked for here?x=1");
}

} // namespace
