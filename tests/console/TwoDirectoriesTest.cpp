#include "console/Arguments.h"
#include "console/TerminalFrontEnd.h"
#include "dbaccess/CAConnect.h"
#include "management/Command.h"
#include "schema/Schema.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

// Commands on several directories that one process has open keep nothing for each other.

namespace {

using Words = std::vector<std::string>;

class TwoDirectoriesTest : public testing::Test {
protected:
    void SetUp() override
    {
        for (CAConnect& conn : m_conns) {
            conn.Open("sqlite::memory:");
            schema::Upgrade(conn);
        }
    }

    /// @param meanwhile  what else is done once the command has begun. @return the rows, as CSV, or the id of what is
    /// new.
    std::string Run(CAConnect& conn, const Words& words, std::function<void()> meanwhile = {})
    {
        console::Request request = console::ParseCommandLine(words);
        request.given.options.yes = true;
        request.given.options.who = "admin";
        request.given.options.command = fmt::format("{}", fmt::join(words, " "));
        std::istringstream in;
        std::ostringstream out;
        std::ostringstream err;
        console::Terminal terminal{in, out, err, false, false};
        console::TerminalFrontEnd frontEnd(*request.command, request.given, console::Format::csv, terminal);
        const auto open = [&]() -> CAConnect& {
            if (meanwhile) {
                std::exchange(meanwhile, nullptr)();
            }
            return conn;
        };
        management::Call call(open, frontEnd, request.given.options);
        frontEnd.Finish(request.command->handler.run(call, request.given));
        return out.str();
    }

    std::string Users(CAConnect& conn) { return Run(conn, {"user", "list", "--fields", "login,name,locked"}); }
    std::string Recorded(CAConnect& conn) { return Run(conn, {"audit", "list", "--noun", "user"}); }

    std::array<CAConnect, 2> m_conns;
    CAConnect& m_first = m_conns[0];
    CAConnect& m_second = m_conns[1];
};

} // namespace

TEST_F(TwoDirectoriesTest, CommandsTakeTurnsAndOneBeginsWithinAnother)
{
    Run(m_first, {"view", "create", "Main"});
    Run(m_second, {"view", "create", "Other"});
    Run(m_first, {"user", "create", "amy", "--name", "Amy"},
        [this] { Run(m_second, {"user", "create", "amy", "--name", "Another Amy"}); });
    Run(m_second, {"user", "lock", "amy"}, [this] { Run(m_first, {"user", "create", "rory"}); });
    EXPECT_EQ(Users(m_first), "login,name,locked\namy,Amy,false\nrory,rory,false\n");
    EXPECT_EQ(Users(m_second), "login,name,locked\namy,Another Amy,true\n");
    EXPECT_EQ(Run(m_first, {"view", "list"}).find("Other"), std::string::npos);
    EXPECT_NE(Run(m_second, {"view", "list"}).find("Other"), std::string::npos);
}

TEST_F(TwoDirectoriesTest, EachHasItsOwnRecordAndIsUndoneByItself)
{
    Run(m_first, {"user", "create", "amy"}, [this] { Run(m_second, {"user", "create", "bob"}); });
    Run(m_second, {"user", "rename", "bob", "rob"});
    Run(m_first, {"audit", "undo", "1"}, [this] { Run(m_second, {"audit", "undo", "2"}); });
    EXPECT_EQ(Users(m_first), "login,name,locked\n");
    EXPECT_EQ(Users(m_second), "login,name,locked\nbob,bob,false\n");
    EXPECT_EQ(Recorded(m_first).find("bob"), std::string::npos);
    EXPECT_EQ(Recorded(m_second).find("amy"), std::string::npos);
}
