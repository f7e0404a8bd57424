#include "dbaccess/CACommFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"
#include "dbaccess/Driver.h"
#include "testing/ScriptedDriver.h"
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

std::string FailureText(const CAConnect& conn)
{
    return conn.GetFailure() == nullptr ? "" : conn.GetFailure()->GetErrorText().GetString();
}

TEST(Connect, KnowsWhyTheLastStatementFailed)
{
    CAConnect conn;
    conn.Open("sqlite::memory:");
    EXPECT_EQ(FailureText(conn), "");
    CARecordset rs;
    Raised([&] { rs.Open("SELECT * FROM a", &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable); });
    EXPECT_EQ(FailureText(conn), "no such table: a");
    Raised([&] { conn.Execute("DROP TABLE b"); });
    EXPECT_EQ(FailureText(conn), "no such table: b");
    conn.Execute("CREATE TABLE b (c)");
    EXPECT_EQ(FailureText(conn), "");
}

TEST(Connect, KnowsInATransactionWhyTheFirstStatementFailed)
{
    CAConnect conn;
    conn.Open("sqlite::memory:");
    Raised([&] { conn.Execute("DROP TABLE before"); });
    conn.BeginTrans();
    EXPECT_EQ(FailureText(conn), "");
    Raised([&] { conn.Execute("DROP TABLE a"); });
    conn.Execute("CREATE TABLE b (c)");
    Raised([&] { conn.Execute("DROP TABLE d"); });
    EXPECT_EQ(FailureText(conn), "no such table: a");
    conn.RollbackTrans();
    EXPECT_EQ(FailureText(conn), "");
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
    EXPECT_EQ(Raised([&] { conn.Open("sqlite::memory:?kind=2"); }), "the connection option kind must be 0, 1, 3 or 6");
    EXPECT_EQ(Raised([&] { conn.Open("sqlite::memory:?mode=ro&kind"); }),
              "connection option 2 is not of the form name=value");
    EXPECT_EQ(Raised([&] { conn.Open("sqlite::memory:?kind=1&mode=ro&kind=1"); }),
              "connection option 3 is given twice");
    const std::string unknown = "sqlite: unknown connection option or value; the options are mode=ro|rw|rwc, "
                                "busy_timeout=MILLISECONDS, statement-cache=NUMBER and kind=0|1|3|6";
    EXPECT_EQ(Raised([&] { conn.Open("sqlite::memory:?colour=red"); }), unknown);
    EXPECT_EQ(Raised([&] { conn.Open("sqlite::memory:?mode=x"); }), unknown);
    EXPECT_EQ(Raised([&] { conn.Open("sqlite::memory:?busy_timeout=soon"); }), unknown);
    for (const char* number : {"", "-1", "1001", "5x", "off"}) {
        EXPECT_EQ(Raised([&] { conn.Open(CString("sqlite::memory:?statement-cache=") + number); }),
                  "the connection option statement-cache must be a number from 0 to 1000");
    }
    EXPECT_EQ(Raised([&] { conn.Open("sqlite::memory:?statement-cache=1000"); }), kNothingRaised);
    conn.Close();
    EXPECT_EQ(Raised([&] { conn.Open("sqlite://host/people.db@x"); }),
              "sqlite: takes the path of a file and no server; write sqlite:PATH");
    EXPECT_THAT(Raised([&] { conn.Open(CString("sqlite:a\0b", 10)); }), HasSubstr("NUL"));
    EXPECT_FALSE(conn.IsOpen());
}

// A password with a character that is a URL's own is cut in pieces there, and each would be taken for something else.
TEST(ConnectUrl, RepeatsNothingThatMayBeAPieceOfAPassword)
{
    for (const char* url : {"sqlite:/x/y?password=SECRET",
                            "sqlite:/x/y?password=a;SECRET",
                            "sqlite:/x/y?password=a&SECRET",
                            "sqlite:/x/y?password=a&SECRET=1",
                            "sqlite:/x/y?SECRET=1&SECRET=1",
                            "sqlite:/x/y?mode=SECRET",
                            "sqlite:/x/y?kind=SECRET",
                            "sqlite:/x/y?busy_timeout=SECRET",
                            "sqlite://u:SECRET@h",
                            "sqlite://u:SECRET@h/d",
                            "sqlite://u:p/SECRET@h/d",
                            "sqlite://u:SECRET",
                            "sqlite://SECRET@h",
                            "sqlite:u:SECRET@h/d",
                            "PWD=SECRET;Server=tcp:h",
                            "//u:SECRET@h",
                            "mysql://u@h/d?password=SECRET",
                            "mysql://u@h/d?password=a;SECRET",
                            "mysql://u@h/d?password=a&SECRET",
                            "mysql://u@h/d?password=a&SECRET=1",
                            "mysql://u@h/d?ssl-verify=SECRET",
                            "mysql://u@h/d?connect_timeout=SECRET",
                            "mysql://u@h/d?kind=SECRET",
                            "postgresql://u@h/d?password=a&SECRET",
                            "postgresql://u@h/d?password=a&SECRET=1",
                            "postgresql://u@h/d?password=a&kind=SECRET",
                            "odbc:DSN=x?kind=SECRET",
                            "odbc:DSN=x;PWD=a?SECRET=1",
                            "odbc:DSN=x;PWD=a;SECRET",
                            "odbc:DSN=x?password=a&SECRET=1"}) {
        CAConnect conn;
        const std::string error = Raised([&] { conn.Open(url); });
        EXPECT_NE(error, kNothingRaised) << url;
        EXPECT_THAT(error, testing::Not(HasSubstr("SECRET"))) << url;
    }
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
    EXPECT_EQ(dbaccess::ParseLocation("/a%3fb%253f%4a").path, "/a?b%3f%4a");
    EXPECT_EQ(dbaccess::ParseLocation("/a%3Fb?mode=ro&kind=1").options.at("kind"), "1");
}

TEST(Connect, ForgetsAnOpenTransactionWhenItIsClosed)
{
    CAConnect conn;
    conn.Open("sqlite::memory:");
    conn.BeginTrans();
    conn.Close();
    conn.Open("sqlite::memory:");
    EXPECT_NE(Raised([&] { conn.Execute("nonsense"); }), kNothingRaised);
    EXPECT_NE(conn.GetFailure(), nullptr);
    conn.Execute("CREATE TABLE t (a)");
    EXPECT_EQ(conn.GetFailure(), nullptr);
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
