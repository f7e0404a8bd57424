#include "management/users/LoginOrder.h"

#include "dbaccess/CAConnect.h"
#include "management/roles/Roles.h"
#include "management/users/UserSelection.h"
#include "schema/Schema.h"
#include "tests/support/CountingSession.h"
#include "tests/support/Memory.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <limits>

using namespace management;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::size_t kEverybody = std::numeric_limits<std::size_t>::max();
constexpr int kManyLogins = 20'000;
constexpr std::size_t kLittle = 2'000'000; // the users would take more than twice of it

/// Gives what a list of everybody reads.
void ListAll(CAConnect& conn, std::size_t limit, const std::function<bool(const UserRow&)>& take)
{
    ListUsers(conn, {}, {.fields = {FindField("name")}, .limit = limit}, take);
}

/// A directory with many users on an engine of this name.
class LoginOrderTest : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        m_conn.Open(std::make_unique<CountingSession>(dbaccess::FindDriver("sqlite")(":memory:"), m_counts));
        schema::Upgrade(m_conn);
        m_conn.Execute(
            fmt::format("WITH RECURSIVE n (i) AS (SELECT {0} UNION ALL SELECT i - 1 FROM n WHERE i > 1) "
                        "INSERT INTO qv_User (Col_ID, Col_LoginName) SELECT i, CASE i % 2 WHEN 0 THEN 'user' "
                        "ELSE 'USER' END || substr('00000' || i, -6) FROM n",
                        kManyLogins)
                .c_str());
        m_counts.rows = 0;
        m_counts.engineName = GetParam();
    }

    std::vector<std::string> FirstLogins(std::size_t limit)
    {
        std::vector<std::string> logins;
        ListAll(m_conn, limit, [&logins](const UserRow& user) {
            logins.push_back(user.login);
            return true;
        });
        return logins;
    }

    SessionCounts m_counts;
    CAConnect m_conn;
};

using WellKnownEngine = LoginOrderTest;

} // namespace

TEST_P(LoginOrderTest, TheFirstUsersAreThoseOfTheFirstLoginNames)
{
    EXPECT_THAT(FirstLogins(3), ElementsAre("USER000001", "user000002", "USER000003"));
    const std::vector<std::string> all = FirstLogins(kEverybody);
    ASSERT_EQ(all.size(), kManyLogins);
    EXPECT_EQ(all.back(), "user020000");
}

TEST_P(LoginOrderTest, WithALimitFewUsersAreHeld)
{
    const std::size_t before = MemoryInUse();
    std::size_t most = 0;
    ListAll(m_conn, 10, [&](const UserRow& /*user*/) {
        most = std::max(most, MemoryInUse());
        return true;
    });
    EXPECT_GT(most, 0U);
    EXPECT_LT(most, before + kLittle);
}

INSTANTIATE_TEST_SUITE_P(Engines, LoginOrderTest, testing::Values("", "Unheard of 1.0"));

TEST_P(WellKnownEngine, NoMoreRowsAreReadThanAreWanted)
{
    EXPECT_EQ(FirstLogins(10).size(), 10U);
    EXPECT_EQ(m_counts.rows, 10U);
    m_counts.rows = 0;
    ListAll(m_conn, kEverybody, [](const UserRow& /*user*/) { return false; });
    EXPECT_EQ(m_counts.rows, 1U);
    m_conn.Execute("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) "
                   "SELECT 1, 2, Col_ID, 1 FROM qv_User");
    m_counts.rows = 0;
    Roles(m_conn).UsersOf({2, 1}, [](const LinkedUser& /*user*/) { return false; });
    EXPECT_EQ(m_counts.rows, 1U);
}

TEST_P(WellKnownEngine, AListOfAllIsReadInTheMemoryOfAFew)
{
    const std::size_t before = MemoryInUse();
    std::size_t most = 0;
    std::size_t users = 0;
    ListAll(m_conn, kEverybody, [&](const UserRow& /*user*/) {
        most = ++users % 1000 == 0 ? std::max(most, MemoryInUse()) : most;
        return true;
    });
    EXPECT_EQ(users, kManyLogins);
    EXPECT_LT(most, before + kLittle);
}

INSTANTIATE_TEST_SUITE_P(Engines, WellKnownEngine, testing::Values(""));

TEST(LoginOrder, HoldsTheFirstOnesOnly)
{
    std::vector<std::string> taken;
    LoginOrder<LinkedUser> order(false, 2, [&taken](const LinkedUser& user) {
        taken.push_back(fmt::format("{} {}", user.login, user.id));
        return true;
    });
    for (const auto& [id, login] : std::vector<std::pair<int, std::string>>{
             {1, "zoe"}, {5, "amy"}, {2, "AMY"}, {3, "rory"}, {4, "amy"}, {6, "\xC3\xA9mile"}}) {
        EXPECT_TRUE(order.Add({id, login, ""}));
        EXPECT_LE(order.HeldUsers(), 2U);
    }
    EXPECT_THAT(taken, IsEmpty());
    order.Finish();
    EXPECT_THAT(taken, ElementsAre("AMY 2", "amy 4"));
}
