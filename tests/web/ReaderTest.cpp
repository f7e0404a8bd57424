#include "web/Reader.h"

#include "ServerFixture.h"
#include "management/Query.h"
#include "tests/console/ChildProcess.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace std::chrono_literals;

namespace {

class ReaderTest : public ServerFixture {
protected:
    /// How many people the reader shows after some time.
    int UsersAfter(std::chrono::seconds time)
    {
        m_now += time;
        return nlohmann::json::parse(m_reader.Overview().body).at("users");
    }
    void AddFromAnotherProcess(const std::string& login) const
    {
        ChildOptions options;
        options.directory = m_folder;
        const ChildResult result =
            ChildProcess(QVADMIN_PROGRAM, {"user", "create", login, "--db", Url()}, options).Finish();
        ASSERT_EQ(result.exit, 0) << result.err;
    }

    std::chrono::steady_clock::time_point m_now = std::chrono::steady_clock::now();
    web::Results m_results;
    web::Reader m_reader{[this] {
                             auto conn = std::make_shared<CAConnect>();
                             conn->Open(Url().c_str());
                             return conn;
                         },
                         m_results, [this] { return m_now; }};
};

TEST_F(ReaderTest, ChangesOfAnotherProcessAreSeenAndNothingIsReadAgainWithoutAny)
{
    EXPECT_EQ(UsersAfter(0s), 0);
    // What the reader's own connection writes is no change of another's, so that only reading all again shows it.
    management::Execute(m_reader.Connection(), "INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    EXPECT_EQ(UsersAfter(61s), 0);
    EXPECT_EQ(UsersAfter(61s), 0);
    AddFromAnotherProcess("rory");
    EXPECT_EQ(UsersAfter(1s), 0) << "a snapshot is good for a minute";
    EXPECT_EQ(UsersAfter(61s), 2);
    management::Execute(m_reader.Connection(), "INSERT INTO qv_User (Col_LoginName) VALUES ('bill')");
    EXPECT_EQ(UsersAfter(61s), 2);
    m_reader.NoteChange();
    EXPECT_EQ(UsersAfter(0s), 3);
}

TEST_F(ReaderTest, WhileSomebodyLooksTheSameHoldsAtRest)
{
    EXPECT_EQ(UsersAfter(0s), 0);
    management::Execute(m_reader.Connection(), "INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    m_now += 31s;
    m_reader.Refresh();
    EXPECT_EQ(UsersAfter(0s), 0);
    AddFromAnotherProcess("rory");
    m_now += 31s;
    m_reader.Refresh();
    EXPECT_EQ(UsersAfter(0s), 2);
}

} // namespace
