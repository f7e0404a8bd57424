#include "StoppingSession.h"
#include "dbaccess/CAConnect.h"
#include "platform/CodePage.h"
#include "schema/Dialect.h"
#include "schema/Schema.h"
#include "tests/dbaccess/Query.h"
#include "tests/servers/Servers.h"
#include "tests/support/Raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

using schema::State;

// Upgrades that are stopped before each of their statements, and run once more.

namespace {

class StoppedUpgrade : public testing::TestWithParam<const char*> {
protected:
    StoppedUpgrade() { std::remove(m_file.c_str()); }
    ~StoppedUpgrade() override { std::remove(m_file.c_str()); }

    std::string NewDatabase()
    {
        std::remove(m_file.c_str());
        return GetParam() == std::string("sqlite") ? "sqlite:" + m_file : servers::NewDatabase(GetParam());
    }

    /// The engine's steps without the statements on most tables: what happens at each of them is the same.
    static std::vector<schema::Step> ShortSteps(const std::string& url)
    {
        CAConnect conn;
        conn.Open(url.c_str());
        std::vector<schema::Step> steps = schema::DialectOf(conn).steps;
        for (schema::Step& step : steps) {
            std::erase_if(step.statements, [](const std::string& statement) {
                return statement.find("qv_User") == std::string::npos &&
                       statement.find("Kel_Board ") == std::string::npos;
            });
        }
        return steps;
    }

    std::string m_file = testing::TempDir() + "qv-stopped-" + std::to_string(::getpid()) + ".db";
};

/// @return whether it was stopped.
bool UpgradeAndStop(const std::string& url, const std::vector<schema::Step>& steps, int statements)
{
    CAConnect conn;
    StoppingSession::Open(conn, url, statements);
    const std::string error = Raised([&] { schema::Upgrade(conn, steps, {}); });
    EXPECT_THAT(error, testing::AnyOf("stopped", "the database connection is not open", kNothingRaised));
    return error != kNothingRaised;
}

void ExpectWhole(CAConnect& conn)
{
    EXPECT_EQ(schema::Inspect(conn).state, State::current);
    EXPECT_EQ(TextOf(conn, "SELECT COUNT(*) FROM qv_Schema"), "2");
    EXPECT_EQ(TextOf(conn, "SELECT Col_Value FROM qv_Schema WHERE Col_Name = 'upper'"), platform::UnicodeVersion());
    EXPECT_FALSE(schema::FindShortcoming(conn));
}

TEST_P(StoppedUpgrade, OfAnEmptyDatabaseIsCompletedByTheNext)
{
    bool wasStopped = true;
    for (int statements = 0; wasStopped; ++statements) {
        ASSERT_LT(statements, 200);
        SCOPED_TRACE(statements);
        const std::string url = NewDatabase();
        const std::vector<schema::Step> steps = ShortSteps(url);
        wasStopped = UpgradeAndStop(url, steps, statements);
        CAConnect conn;
        conn.Open(url.c_str());
        schema::Upgrade(conn, steps, {});
        ExpectWhole(conn);
    }
}

TEST_P(StoppedUpgrade, OfADirectoryWithRowsKeepsThemAndIsCompletedByTheNext)
{
    bool wasStopped = true;
    for (int statements = 0; wasStopped; ++statements) {
        ASSERT_LT(statements, 200);
        SCOPED_TRACE(statements);
        const std::string url = NewDatabase();
        std::vector<schema::Step> steps = ShortSteps(url);
        CAConnect conn;
        conn.Open(url.c_str());
        schema::Upgrade(conn, {steps[0], steps[1]}, {});
        conn.Execute("INSERT INTO qv_User (Col_LoginName, Col_PWord) VALUES ('ren\xC3\xA9', 'a'), ('rene', 'b')");
        conn.Execute("INSERT INTO Kel_Board (Col_ID) VALUES ('a'), ('b')");
        wasStopped = UpgradeAndStop(url, steps, statements);
        schema::Upgrade(conn, steps, {});
        ExpectWhole(conn);
        EXPECT_EQ(TextOf(conn, "SELECT COUNT(*) FROM qv_User"), "2");
        EXPECT_EQ(TextOf(conn, "SELECT COUNT(*) FROM Kel_Board"), "2");
        EXPECT_EQ(TextOf(conn, "SELECT Col_Password FROM qv_User WHERE Col_LoginName = 'ren\xC3\xA9'"), "a");
        EXPECT_EQ(TextOf(conn, "SELECT Col_Password FROM qv_User WHERE Col_LoginName = 'rene'"), "b");
    }
}

// Earlier versions could leave such a directory behind.
TEST_P(StoppedUpgrade, ThatLeftTheVersionOfTheRulesOutIsCompletedByTheNext)
{
    const std::string url = NewDatabase();
    CAConnect conn;
    conn.Open(url.c_str());
    schema::Upgrade(conn);
    conn.Execute("DELETE FROM qv_Schema WHERE Col_Name = 'upper'");
    schema::Upgrade(conn);
    schema::RefreshIndexes(conn);
    ExpectWhole(conn);
}

INSTANTIATE_TEST_SUITE_P(Engines, StoppedUpgrade, testing::Values("sqlite", "postgresql", "mariadb"),
                         [](const testing::TestParamInfo<const char*>& engine) { return std::string(engine.param); });

} // namespace
