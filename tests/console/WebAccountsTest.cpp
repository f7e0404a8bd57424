#include "ConsoleFixture.h"
#include "dbaccess/CAConnect.h"
#include "management/Command.h"
#include "management/webconsole/ConsoleAccounts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using management::webconsole::ConsoleAccount;
using management::webconsole::ConsoleAccounts;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

// Who may use the web console, as commands see it.

namespace {

class WebAccountsTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
        Done({"user", "create", "boss", "--super"});
        Done({"user", "create", "amy"});
        m_conn.Open(CString(std::string_view(DatabaseUrl())));
    }

    std::string Done(const std::vector<std::string>& words)
    {
        const ChildResult result = Run(words);
        EXPECT_EQ(result.exit, 0) << result.err;
        return result.out + result.err;
    }
    /// The row of a user; null where there is none.
    json Row(const std::string& login)
    {
        for (const json& row : json::parse(Run({"console", "list", "-o", "json"}).out)) {
            if (row.at("login") == login) {
                return row;
            }
        }
        return {};
    }
    void GiveTotp(int user)
    {
        ConsoleAccount account = ConsoleAccounts(m_conn).Find(user);
        account.totp = "JBSWY3DPEHPK3PXP";
        account.recovery = {"one", "two"};
        ConsoleAccounts(m_conn).Save(user, account);
    }

    CAConnect m_conn;
};

TEST_F(WebAccountsTest, LevelsAreGivenAndTaken)
{
    EXPECT_EQ(Row("boss").at("level"), "full");
    EXPECT_TRUE(Row("amy").is_null());
    EXPECT_EQ(Done({"console", "set", "amy", "help-desk"}), "amy (id 2) now has the level help-desk\n");
    EXPECT_EQ(Row("amy").at("level"), "help-desk");
    EXPECT_EQ(Done({"console", "set", "amy", "help-desk"}), "amy (id 2) already has the level help-desk\n");
    Done({"console", "set", "AMY", "read-only"});
    EXPECT_EQ(Row("amy").at("level"), "read-only");
    EXPECT_EQ(Done({"console", "remove", "amy"}), "amy (id 2) has no level any more\n");
    EXPECT_TRUE(Row("amy").is_null());
    EXPECT_EQ(Done({"console", "remove", "amy"}), "amy (id 2) has no level\n");
    const ChildResult wrong = Run({"console", "set", "amy", "full"});
    EXPECT_EQ(wrong.exit, 2);
    EXPECT_THAT(wrong.err, HasSubstr("LEVEL 'full' is not one of read-only, help-desk"));
    const ChildResult super = Run({"console", "set", "boss", "read-only"});
    EXPECT_EQ(super.exit, 4);
    EXPECT_THAT(super.err, HasSubstr("boss (id 1) is a super user"));
}

TEST_F(WebAccountsTest, OneTimeCodesAreTakenAwayWithoutTheLevelAndNeverShown)
{
    Done({"console", "set", "amy", "help-desk"});
    GiveTotp(2);
    EXPECT_EQ(Row("amy").at("totp"), true);
    EXPECT_EQ(Row("amy").at("recovery_codes"), 2);
    EXPECT_EQ(Done({"console", "totp", "remove", "amy"}), "amy (id 2) signs in without one-time codes now\n");
    EXPECT_EQ(Row("amy").at("totp"), false);
    EXPECT_EQ(Row("amy").at("level"), "help-desk");
    EXPECT_EQ(Done({"console", "totp", "remove", "amy"}), "amy (id 2) signs in without one-time codes\n");
    const std::string entries = Done({"audit", "list", "--noun", "console", "-o", "json"});
    EXPECT_THAT(entries, HasSubstr("console totp remove amy"));
    const std::string shown = Done({"audit", "show", json::parse(entries).at(0).at("id").dump(), "-o", "json"});
    EXPECT_THAT(shown, HasSubstr("(not recorded)"));
    EXPECT_THAT(shown, Not(HasSubstr("JBSWY3DP")));
    const ChildResult undone = Run({"audit", "undo", json::parse(entries).at(0).at("id").dump(), "--yes"});
    EXPECT_EQ(undone.exit, 4);
    EXPECT_THAT(undone.err, HasSubstr("which is never recorded"));
}

TEST_F(WebAccountsTest, AnAccountGoesWithItsUserAndComesBackWithoutCodes)
{
    Done({"console", "set", "amy", "help-desk"});
    GiveTotp(2);
    EXPECT_THAT(Done({"user", "delete", "amy", "--yes"}), HasSubstr("1 web console account"));
    EXPECT_EQ(ConsoleAccounts(m_conn).Find(2), ConsoleAccount());
    const std::string id = json::parse(Run({"audit", "list", "--limit", "1", "-o", "json"}).out).at(0).at("id").dump();
    EXPECT_THAT(Done({"audit", "undo", id, "--yes"}), HasSubstr("has no one-time codes now: these are never recorded"));
    EXPECT_EQ(Row("amy").at("level"), "help-desk");
    EXPECT_EQ(Row("amy").at("totp"), false);
}

TEST_F(WebAccountsTest, AccountsOfUsersWhoAreGoneAreFound)
{
    Done({"console", "set", "amy", "help-desk"});
    m_conn.Execute("DELETE FROM qv_User WHERE Col_LoginName = 'amy'");
    const ChildResult found = Run({"db", "check"});
    EXPECT_EQ(found.exit, 8);
    EXPECT_THAT(found.out, HasSubstr("qv_ConsoleAccount"));
    Done({"db", "check", "--fix", "--yes"});
    EXPECT_EQ(ConsoleAccounts(m_conn).Find(2), ConsoleAccount());
}

} // namespace
