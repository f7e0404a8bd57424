#include "schema/DirectoryTransaction.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "schema/Dialect.h"
#include "tests/servers/Servers.h"
#include "tests/support/Raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>

using schema::DirectoryTransaction;
using testing::HasSubstr;

namespace {

constexpr std::chrono::seconds kSecond{1};

struct Engine {
    const char* name;
    /// Counts in column 1 who waits for the lock of the connection's database.
    const char* countWaiting;
    /// Makes reads of a transaction see what was there at its first, unless the transaction itself says otherwise.
    const char* seeOneMoment;
};

constexpr const char* kPostgresqlWaiting =
    "SELECT COUNT(*) FROM pg_locks WHERE NOT granted AND locktype = 'advisory' AND database = "
    "(SELECT oid FROM pg_database WHERE datname = current_database())";
constexpr const char* kMariadbWaiting =
    "SELECT COUNT(*) FROM information_schema.PROCESSLIST WHERE STATE = 'User lock' AND DB = DATABASE()";
constexpr const char* kPostgresqlOneMoment = "SET default_transaction_isolation = 'repeatable read'";
constexpr const char* kMariadbOneMoment = "SET SESSION TRANSACTION ISOLATION LEVEL REPEATABLE READ";

constexpr Engine kEngines[] = {{"postgresql", kPostgresqlWaiting, kPostgresqlOneMoment},
                               {"mariadb", kMariadbWaiting, kMariadbOneMoment},
                               {"postgresql over ODBC", kPostgresqlWaiting, kPostgresqlOneMoment},
                               {"mariadb over ODBC", kMariadbWaiting, kMariadbOneMoment}};

int NumberOf(CAConnect& conn, const char* sql)
{
    CARecordset rs;
    int number = -1;
    EXPECT_TRUE(rs.Open(sql, &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable)) << sql;
    rs.GetValue(1, number);
    return number;
}

class LockedDirectory : public testing::TestWithParam<Engine> {
protected:
    LockedDirectory()
    {
        const std::string name = GetParam().name;
        const std::string engine = name.substr(0, name.find(' '));
        const std::string url = servers::NewDatabase(engine);
        m_watch.Open(url.c_str());
        m_watch.Execute("CREATE TABLE Held (Col_ID INTEGER PRIMARY KEY)");
        m_url = name == engine ? url : servers::OverOdbc(engine, url) + (engine == "mariadb" ? "?kind=6" : "?kind=3");
        m_first.Open(m_url.c_str());
        m_second.Open(m_url.c_str());
    }

    std::string m_url;
    CAConnect m_watch;
    CAConnect m_first;
    CAConnect m_second;
};

TEST_P(LockedDirectory, IsWaitedForNoLongerThanSaid)
{
    DirectoryTransaction holder(m_first);
    EXPECT_THAT(Raised([&] { DirectoryTransaction(m_second, kSecond); }),
                AllOf(HasSubstr("somebody else"), HasSubstr(" 1 seconds"), HasSubstr("try again")));
    EXPECT_THROW(DirectoryTransaction(m_second, kSecond), schema::LockTimeout);
    holder.Commit();
    EXPECT_EQ(Raised([&] { DirectoryTransaction(m_second, kSecond); }), kNothingRaised);
}

TEST_P(LockedDirectory, ShowsWhatWasCommittedWhileItWasWaitedFor)
{
    m_second.Execute(GetParam().seeOneMoment);
    std::optional<DirectoryTransaction> holder(std::in_place, m_first);
    int seen = -1;
    std::thread waiting([&] {
        const DirectoryTransaction transaction(m_second);
        seen = NumberOf(m_second, "SELECT COUNT(*) FROM Held");
    });
    while (NumberOf(m_watch, GetParam().countWaiting) == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    m_first.Execute("INSERT INTO Held VALUES (1)");
    holder->Commit();
    waiting.join();
    EXPECT_EQ(seen, 1);
}

TEST_P(LockedDirectory, IsFreeAfterARollbackAndAfterATransactionThatCouldNotBegin)
{
    {
        const DirectoryTransaction given(m_first);
        m_first.Execute("INSERT INTO Held VALUES (1)");
    }
    EXPECT_EQ(NumberOf(m_watch, "SELECT COUNT(*) FROM Held"), 0);
    m_first.BeginTrans();
    EXPECT_THAT(Raised([&] { const DirectoryTransaction inAnother(m_first); }), HasSubstr("open"));
    m_first.RollbackTrans();
    EXPECT_EQ(Raised([&] { DirectoryTransaction(m_second, kSecond); }), kNothingRaised);
}

TEST_P(LockedDirectory, IsFreeWhenItsHolderIsGone)
{
    std::optional<DirectoryTransaction> holder(std::in_place, m_first);
    m_first.Close();
    EXPECT_EQ(Raised([&] { const DirectoryTransaction next(m_second); }), kNothingRaised);
}

INSTANTIATE_TEST_SUITE_P(Engines, LockedDirectory, testing::ValuesIn(kEngines), [](const auto& engine) {
    std::string name = engine.param.name;
    std::erase(name, ' ');
    return name;
});

TEST(LockOnPostgresql, LeavesTheConnectionItsOwnLongestWait)
{
    CAConnect conn;
    conn.Open(servers::NewDatabase("postgresql").c_str());
    conn.Execute("SET lock_timeout = 7");
    const DirectoryTransaction transaction(conn);
    EXPECT_EQ(NumberOf(conn, "SELECT setting FROM pg_settings WHERE name = 'lock_timeout'"), 7);
}

TEST(LockOnMariadb, AWaitThatIsEndedIsNotTakenForALongOne)
{
    const std::string url = servers::NewDatabase("mariadb");
    CAConnect holder;
    CAConnect conn;
    holder.Open(url.c_str());
    conn.Open(url.c_str());
    const DirectoryTransaction held(holder);
    const int id = NumberOf(conn, "SELECT CONNECTION_ID()");
    std::string raised;
    std::thread waiting([&] { raised = Raised([&] { DirectoryTransaction{conn}; }); });
    const std::string isWaiting =
        "SELECT COUNT(*) FROM information_schema.PROCESSLIST WHERE STATE = 'User lock' AND ID = " + std::to_string(id);
    while (NumberOf(holder, isWaiting.c_str()) == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    holder.Execute(("KILL QUERY " + std::to_string(id)).c_str());
    waiting.join();
    EXPECT_THAT(raised, AllOf(HasSubstr("was ended"), HasSubstr("this change was not made")));
}

TEST(LockOnSqlServer, IsWaitedForNoLongerThanSaid)
{
    const std::string url = servers::NewDatabase("sqlserver");
    CAConnect holder;
    CAConnect conn;
    holder.Open(url.c_str());
    conn.Open(url.c_str());
    std::optional<DirectoryTransaction> held(std::in_place, holder);
    EXPECT_THROW(DirectoryTransaction(conn, kSecond), schema::LockTimeout);
    held->Commit();
    EXPECT_EQ(Raised([&] { DirectoryTransaction(conn, kSecond); }), kNothingRaised);
}

TEST(LockOnSqlite, IsTheRightToWrite)
{
    const std::string file = testing::TempDir() + "directory_transaction.db";
    CAConnect holder;
    CAConnect conn;
    holder.Open(("sqlite:" + file).c_str());
    conn.Open(("sqlite:" + file).c_str());
    conn.Execute("PRAGMA busy_timeout = 1");
    const DirectoryTransaction transaction(holder);
    EXPECT_THAT(Raised([&] { DirectoryTransaction(conn, kSecond); }), HasSubstr("locked"));
}

} // namespace
