#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"
#include "schema/Schema.h"
#include "tests/basefun/ErrorRecorder.h"
#include "tests/servers/Servers.h"
#include "tests/support/Raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

// What callers see of a server that is killed under them. Each test has servers of its own.

namespace {

namespace fs = std::filesystem;

constexpr int kRows = 200'000;

class KilledServer : public testing::TestWithParam<const char*> {
protected:
    KilledServer()
    {
        std::string name = (fs::temp_directory_path() / "qv-killed-XXXXXX").string();
        m_folder = ::mkdtemp(name.data());
        m_folder += "/servers";
        Script("start " + m_folder + " " + GetParam());
        ::setenv("QV_TEST_SERVERS", m_folder.c_str(), 1);
        m_url = servers::NewDatabase(GetParam());
        m_conn.Open(m_url.c_str());
        schema::Upgrade(m_conn);
        m_watch.ListenTo(m_conn);
    }
    ~KilledServer() override
    {
        m_conn.Close();
        Script("stop " + m_folder);
        fs::remove_all(fs::path(m_folder).parent_path());
    }

    static void Script(const std::string& arguments)
    {
        EXPECT_EQ(std::system((std::string(QV_SERVERS_SCRIPT) + " " + arguments).c_str()), 0);
    }

    /// Ends the server and all that serves for it, as a machine does that loses its power.
    void Kill() const
    {
        std::ifstream file(m_folder + "/" + GetParam() + ".pid");
        int pid = 0;
        file >> pid;
        ASSERT_GT(pid, 1);
        if (GetParam() == std::string("postgresql")) {
            ::kill(pid, SIGSTOP); // so that it starts nobody anew for those who die first
            const std::string process = std::to_string(pid);
            std::ifstream children("/proc/" + process + "/task/" + process + "/children");
            for (int child = 0; children >> child;) {
                ::kill(child, SIGKILL);
            }
        }
        ::kill(pid, SIGKILL);
    }

    void AddMessages()
    {
        m_conn.BeginTrans();
        m_conn.Execute("INSERT INTO kel_Msg (Col_SendDate) VALUES ('2013-05-07 09:03:00')");
        for (int rows = 1; rows < kRows; rows *= 2) {
            m_conn.Execute("INSERT INTO kel_Msg (Col_SendDate) SELECT Col_SendDate FROM kel_Msg");
        }
        m_conn.CommitTrans();
    }

    void ExpectClosedAndNoWayBackIn()
    {
        EXPECT_FALSE(m_conn.IsOpen());
        const std::string error = Raised([this] { m_conn.Open(m_url.c_str()); });
        EXPECT_NE(error, kNothingRaised);
        EXPECT_THAT(error, Not(HasSubstr("\n")));
        EXPECT_FALSE(m_conn.IsOpen());
    }

    std::string m_folder;
    std::string m_url;
    ErrorRecorder m_watch;
    CAConnect m_conn;
};

TEST_P(KilledServer, UnderAListTheRowsBreakOffWithAnError)
{
    AddMessages();
    CARecordset rs;
    ASSERT_TRUE(rs.Open("SELECT Col_ID, Col_SendDate FROM kel_Msg", &m_conn, adbcCursorStatic, adbcLockOptimistic,
                        adbcCommandTable));
    Kill();
    int rows = 0;
    EXPECT_NE(Raised([&] {
                  for (; rs.IsEOF() == 0; rs.MoveNext()) {
                      ++rows;
                  }
              }),
              kNothingRaised);
    EXPECT_LT(rows, kRows);
    rs.Close();
    ExpectClosedAndNoWayBackIn();
}

TEST_P(KilledServer, UnderAWriteTheOperationFailsWithOneMessage)
{
    EXPECT_TRUE(CQVBaseFun::InsertUser(m_conn, "amy", "Amy"));
    Kill();
    EXPECT_FALSE(CQVBaseFun::InsertUser(m_conn, "bob", "Bob"));
    EXPECT_THAT(m_watch.messages, SizeIs(1));
    EXPECT_NE(ErrorRecorder::Text(), ErrorRecorder::kOlder);
    EXPECT_FALSE(m_conn.IsOpen());
    // From now on a read finds it closed, and says nothing; a write says so.
    int id = 77;
    EXPECT_FALSE(CQVBaseFun::GetHMIDByLoginName(m_conn, "amy", id));
    EXPECT_THAT(m_watch.messages, SizeIs(1));
    EXPECT_FALSE(CQVBaseFun::InsertUser(m_conn, "bob", "Bob"));
    EXPECT_THAT(ErrorRecorder::Text(), HasSubstr("not open"));
    ExpectClosedAndNoWayBackIn();
}

TEST_P(KilledServer, UnderAPurgeTheStepFailsAndTheNextOnesAreNotTried)
{
    AddMessages();
    std::thread killer([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        Kill();
    });
    EXPECT_FALSE(CQVBaseFun::ClearMsgData(m_conn, "2020-01-01"));
    killer.join();
    EXPECT_THAT(m_watch.messages, SizeIs(1));
    ExpectClosedAndNoWayBackIn();
}

INSTANTIATE_TEST_SUITE_P(Engines, KilledServer, testing::Values("postgresql", "mariadb"),
                         [](const testing::TestParamInfo<const char*>& engine) { return std::string(engine.param); });

} // namespace
