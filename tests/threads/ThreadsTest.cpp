#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "testing/ScriptedDriver.h"
#include "tests/servers/Servers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <barrier>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <vector>

// Several threads, each with a connection of its own. The preset tsan runs these tests under the thread sanitizer.

namespace {

constexpr int kThreads = 8;

/// Runs `body(i)` on all threads at once.
template <class Body>
void OnAllThreads(Body body)
{
    std::barrier start(kThreads);
    std::vector<std::jthread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&start, &body, i] {
            start.arrive_and_wait();
            body(i);
        });
    }
}

/// Too long to be kept inside a CString, so that every error frees the text of the one before.
std::string Message(int thread)
{
    return "refused for the thread " + std::string(100, static_cast<char>('a' + thread));
}

TEST(Threads, FailAtOnceAndLeaveTheWholeTextOfOneError)
{
    constexpr int kFailures = 2000;
    std::vector<scripted::Database> databases(kThreads);
    std::vector<CAConnect> conns(kThreads);
    std::vector<testing::Matcher<std::string>> texts;
    for (std::size_t i = 0; i < kThreads; ++i) {
        databases[i].Connect(conns[i]);
        for (int n = 0; n < kFailures; ++n) {
            databases[i].Answer(scripted::Raise(Message(static_cast<int>(i))));
        }
        texts.push_back(testing::HasSubstr("): " + Message(static_cast<int>(i)) + " [Script 1]: DELETE FROM qv_User"));
    }
    OnAllThreads([&conns](int i) {
        for (int n = 0; n < kFailures; ++n) {
            EXPECT_FALSE(CQVBaseFun::DeleteUserItemByID(conns[static_cast<std::size_t>(i)], i));
        }
    });
    EXPECT_THAT(std::string(CQVBaseFun::m_strLastError.View()), testing::AnyOfArray(texts));
}

class ThreadsOnAnEngine : public testing::TestWithParam<std::string> {
protected:
    [[nodiscard]] static std::string NewUrl()
    {
        return GetParam() == "sqlite" ? "sqlite:" + File() : servers::NewDatabase(GetParam());
    }
    ~ThreadsOnAnEngine() override { std::remove(File().c_str()); }

private:
    static std::string File() { return testing::TempDir() + "qv-threads-" + std::to_string(::getpid()) + ".db"; }
};

TEST_P(ThreadsOnAnEngine, OpenFailAndReadAtOnce)
{
    const std::string url = NewUrl();
    OnAllThreads([&url](int i) {
        for (int opened = 0; opened < 3; ++opened) {
            CAConnect conn;
            conn.Open(url.c_str());
            for (int n = 0; n < 20; ++n) {
                EXPECT_FALSE(CQVBaseFun::DeleteUserItemByID(conn, i));
                CARecordset rs;
                EXPECT_TRUE(rs.Open(("SELECT " + std::to_string(i)).c_str(), &conn, adbcCursorStatic,
                                    adbcLockOptimistic, adbcCommandTable));
                EXPECT_EQ(rs.GetValueToStr(1, true), std::to_string(i).c_str());
            }
        }
    });
    EXPECT_THAT(std::string(CQVBaseFun::m_strLastError.View()), testing::HasSubstr(": DELETE FROM qv_User"));
}

INSTANTIATE_TEST_SUITE_P(Engines, ThreadsOnAnEngine, testing::Values("sqlite", "postgresql", "mariadb", "sqlserver"),
                         [](const auto& engine) { return engine.param; });

} // namespace
