#include "management/passwords/Passwords.h"

#include "ConsoleFixture.h"
#include "RefusalOf.h"
#include "console/ExitCode.h"
#include "dbaccess/CAConnect.h"
#include "management/settings/Settings.h"
#include "management/users/Directory.h"
#include "schema/Schema.h"

#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include <set>
#include <thread>

using namespace console;
using namespace management;
using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

namespace {

class PasswordsTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
    }

    UserKey Added(const std::string& login)
    {
        m_directory.Insert(login, "somebody");
        return {m_directory.FindId(login).value(), login};
    }

    std::string Stored(const UserKey& user)
    {
        return m_directory.Load(user.id).value().at(FindField("password")).value_or("");
    }

    CAConnect m_conn;
    Directory m_directory{m_conn};
    Passwords m_passwords{m_directory};
};

class PasswordCommandsTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
        ASSERT_EQ(Run({"user", "create", "amy"}).exit, 0);
    }

    json Status(const std::string& user)
    {
        return json::parse(Run({"user", "password", "status", user, "-o", "json"}).out);
    }

    int Check(const std::string& user, const std::string& password)
    {
        return RunWith(password + "\n", {"user", "password", "check", user, "--password-stdin"}).exit;
    }

    void SetPassword(const std::string& user, const std::string& password, const std::string& type = "2")
    {
        ASSERT_EQ(RunWith(password + "\n", {"user", "password", "set", user, "--password-stdin", "--type", type}).exit,
                  0);
    }

    /// A refusal that tells nothing of the secret, and leaves the password as it was.
    void ExpectRefusal(const ChildResult& result, int exit, const std::string& part)
    {
        EXPECT_EQ(result.exit, exit) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, AllOf(HasSubstr("qvadmin: "), HasSubstr(part), Not(HasSubstr("s3cret"))));
    }
};

} // namespace

// ---- The facade -----------------------------------------------------------------------------------------------------

TEST_F(PasswordsTest, APasswordIsStoredByItsTypeWithTheLoginNameAsItIs)
{
    const UserKey user = Added("O'Brien\\");
    const Secret password("pw'é");
    m_passwords.Set(user, password, 0);
    EXPECT_EQ(Stored(user), "pw'é");
    m_passwords.Set(user, password, 1);
    EXPECT_EQ(Stored(user), "13837421cda99fbe9181c37d0257aa91");
    m_passwords.Set(user, password, 2);
    EXPECT_EQ(Stored(user), "4c0161d2811765609efae514e6304bb8");
}

TEST_F(PasswordsTest, OnlyTheSamePasswordMatchesWhateverTheTypeAndTheLoginName)
{
    for (const char* login : {"amy", "O'Brien", "a\\b", "\\'", "Żółw"}) {
        const UserKey user = Added(login);
        for (const int type : {0, 1, 2}) {
            m_passwords.Set(user, Secret("O'Neil\\ 王"), type);
            EXPECT_TRUE(m_passwords.Matches(user, Secret("O'Neil\\ 王"))) << login << type;
            EXPECT_FALSE(m_passwords.Matches(user, Secret("o'Neil\\ 王"))) << login << type;
            EXPECT_FALSE(m_passwords.Matches(user, Secret())) << login << type;
        }
    }
}

TEST_F(PasswordsTest, AnEmptyStoredTextMatchesTheEmptyPasswordOnly)
{
    for (const char* login : {"amy", "O'Brien"}) {
        const UserKey user = Added(login);
        m_conn.Execute("UPDATE qv_User SET Col_EnType = 2");
        EXPECT_TRUE(m_passwords.Matches(user, Secret())) << login;
        EXPECT_FALSE(m_passwords.Matches(user, Secret("x"))) << login;
    }
}

TEST_F(PasswordsTest, StatusTellsWhatIsStored)
{
    const UserKey user = Added("amy");
    EXPECT_FALSE(m_passwords.Status(user).isSet);
    EXPECT_FALSE(m_passwords.Status(user).IsPlainText());
    m_passwords.Set(user, Secret("x"), 0);
    EXPECT_TRUE(m_passwords.Status(user).IsPlainText());
    m_passwords.Set(user, Secret("x"), 2);
    EXPECT_TRUE(m_passwords.Status(user).isSet);
    EXPECT_EQ(m_passwords.Status(user).type, 2);
    EXPECT_FALSE(m_passwords.Status(user).IsPlainText());
}

TEST_F(PasswordsTest, TheTypeIsThatOfTheSetting)
{
    Settings settings(m_conn);
    EXPECT_EQ(m_passwords.EncodingType(), 2);
    settings.Insert("PasswordEncoding", "1", "Other");
    EXPECT_EQ(m_passwords.EncodingType(), 2);
    settings.Insert("PasswordEncoding", "0", "Console");
    EXPECT_EQ(m_passwords.EncodingType(), 0);
    for (const char* value : {"3", "", "-1", "12", "two"}) {
        settings.UpdateAll("PasswordEncoding", value);
        EXPECT_EQ(CodeOf([&] { m_passwords.EncodingType(); }), Exit::conflict) << value;
    }
    settings.UpdateAll("PasswordEncoding", "1");
    settings.Insert("PasswordEncoding", "1", "Console");
    EXPECT_EQ(CodeOf([&] { m_passwords.EncodingType(); }), Exit::conflict);
}

TEST_F(PasswordsTest, ALoginNameThatSeveralHaveIsRefused)
{
    const UserKey user = Added("amy");
    m_directory.Insert("AMY", "another");
    m_passwords.Set(user, Secret("x"), 1);
    EXPECT_EQ(Stored({m_directory.FindId("AMY").value(), "AMY"}), "");
    m_directory.Insert("amy", "a twin");
    EXPECT_EQ(CodeOf([&] { m_passwords.Set(user, Secret("y"), 1); }), Exit::conflict);
    EXPECT_EQ(CodeOf([&] { m_passwords.Matches(user, Secret("x")); }), Exit::conflict);
}

TEST_F(PasswordsTest, APasswordThatIsNotStoredAsGivenIsRefused)
{
    const UserKey user = Added("amy");
    m_conn.Execute("CREATE TRIGGER cut AFTER UPDATE OF Col_PWord ON qv_User WHEN length(NEW.Col_PWord) > 8 BEGIN "
                   "UPDATE qv_User SET Col_PWord = substr(NEW.Col_PWord, 1, 8) WHERE Col_ID = NEW.Col_ID; END");
    EXPECT_EQ(CodeOf([&] { m_passwords.Set(user, Secret("x"), 2); }), Exit::failed);
}

TEST_F(PasswordsTest, NoErrorRepeatsThePassword)
{
    const UserKey user = Added("amy");
    m_conn.Execute("CREATE TRIGGER refuse BEFORE UPDATE ON qv_User BEGIN SELECT RAISE(ABORT, 'not today'); END");
    for (const std::string& password : {std::string("s3cret"), std::string("s3cret\0", 7), std::string("s3cret\xFF")}) {
        try {
            m_passwords.Set(user, Secret(password), 0);
            FAIL();
        } catch (const Error& e) {
            EXPECT_THAT(e.what(), Not(HasSubstr("s3cret")));
        }
    }
}

TEST(SecretTest, NothingIsAddedBeyondTheLongest)
{
    Secret secret;
    for (std::size_t i = 0; i < Secret::kLongest; ++i) {
        ASSERT_TRUE(secret.Append('x'));
    }
    EXPECT_FALSE(secret.Append('x'));
    EXPECT_EQ(secret.View().size(), Secret::kLongest);
}

TEST(SecretTest, GeneratedPasswordsDifferAndHaveNoLookAlikes)
{
    std::set<std::string> seen;
    for (int i = 0; i < 100; ++i) {
        const Secret password = GeneratedPassword();
        EXPECT_THAT(std::string(password.View()), MatchesRegex("[a-km-np-z2-9]{20}"));
        EXPECT_TRUE(seen.emplace(password.View()).second);
    }
}

// ---- The commands ---------------------------------------------------------------------------------------------------

TEST_F(PasswordCommandsTest, APasswordIsSetAndChecked)
{
    EXPECT_EQ(Status("amy")["set"], false);
    const ChildResult set = RunWith("s3cret \r\nmore\n", {"user", "password", "set", "AMY", "--password-stdin"});
    EXPECT_EQ(set.exit, 0);
    EXPECT_EQ(set.out, "");
    EXPECT_EQ(set.err, "set the password of amy (id 1)\n");
    EXPECT_EQ(Status("amy"), json({{"id", 1}, {"login", "amy"}, {"set", true}, {"type", 2}, {"plain_text", false}}));
    const ChildResult right = RunWith("s3cret ", {"user", "password", "check", "amy", "--password-stdin"});
    EXPECT_EQ(right.exit, 0);
    EXPECT_EQ(right.out, "true\n");
    const ChildResult wrong = RunWith("s3cret", {"user", "password", "check", "amy", "--password-stdin"});
    EXPECT_EQ(wrong.exit, 3);
    EXPECT_EQ(wrong.out, "false\n");
}

TEST_F(PasswordCommandsTest, TheFirstLineOfAFileIsAPassword)
{
    WriteSecretFile("secret.txt", "s3cret\nmore");
    EXPECT_EQ(Run({"user", "password", "set", "amy", "--password-file", "secret.txt", "--type", "0"}).exit, 0);
    EXPECT_EQ(Run({"user", "password", "check", "amy", "--password-file", "secret.txt"}).exit, 0);
    EXPECT_EQ(Status("amy")["plain_text"], true);
    ExpectRefusal(Run({"user", "password", "set", "amy", "--password-file", "none"}), 1, "cannot read none");
    ExpectRefusal(Run({"user", "password", "set", "amy", "--password-file", "."}), 1, "no password to read");
}

TEST_F(PasswordCommandsTest, APasswordFileThatOthersCanOpenIsRefused)
{
    WriteSecretFile("secret.txt", "s3cret");
    for (const mode_t mode : {0640U, 0604U, 0620U, 0601U}) {
        ASSERT_EQ(::chmod(Path("secret.txt").c_str(), mode), 0);
        for (const std::vector<std::string>& words :
             std::vector<std::vector<std::string>>{{"user", "password", "set", "amy"},
                                                   {"user", "password", "check", "amy"},
                                                   {"user", "rename", "amy", "amelia"}}) {
            std::vector<std::string> withFile = words;
            withFile.insert(withFile.end(), {"--password-file", "secret.txt"});
            ExpectRefusal(Run(withFile), 1,
                          "the password file secret.txt is open to others than its owner; nothing was changed, chmod "
                          "600 closes it");
        }
    }
    EXPECT_EQ(Run({"user", "count"}).out, "1\n");
    EXPECT_EQ(Status("amy")["set"], false);
}

TEST_F(PasswordCommandsTest, APasswordFileMayBeAPipe)
{
    ASSERT_EQ(::mkfifo(Path("pipe").c_str(), 0644), 0);
    std::thread writer([&] { WriteFile("pipe", "s3cret\n"); });
    const ChildResult result = Run({"user", "password", "set", "amy", "--password-file", "pipe"});
    writer.join();
    EXPECT_EQ(result.exit, 0) << result.err;
}

TEST_F(PasswordCommandsTest, AGeneratedPasswordIsPrintedAndFits)
{
    const ChildResult result = Run({"user", "password", "set", "amy", "--generate"});
    EXPECT_EQ(result.exit, 0);
    ASSERT_THAT(result.out, MatchesRegex("[a-z2-9]{20}\n"));
    EXPECT_THAT(result.err, Not(HasSubstr(result.out.substr(0, 20))));
    EXPECT_EQ(Check("amy", result.out.substr(0, 20)), 0);
    const ChildResult asObject = Run({"user", "password", "set", "amy", "--generate", "-o", "json"});
    EXPECT_EQ(asObject.exit, 0);
    EXPECT_EQ(asObject.err, "");
    const std::string password = json::parse(asObject.out).at("password");
    EXPECT_THAT(password, MatchesRegex("[a-z2-9]{20}"));
    EXPECT_EQ(Check("amy", password), 0);
}

TEST_F(PasswordCommandsTest, AGeneratedPasswordThatNobodyCanReadIsNotKept)
{
    SetPassword("amy", "s3cret");
    m_options.output = "/dev/full";
    for (const char* format : {"table", "json"}) {
        const ChildResult result = Run({"user", "password", "set", "amy", "--generate", "-o", format});
        EXPECT_EQ(result.exit, 1) << format;
        EXPECT_THAT(result.err, HasSubstr("nothing was changed")) << format;
        EXPECT_EQ(result.err.find('\n') + 1, result.err.size()) << result.err;
    }
    m_options.output.reset();
    EXPECT_EQ(Check("amy", "s3cret"), 0);
}

TEST_F(PasswordCommandsTest, WhatIsNoPasswordIsRefusedWithoutBeingRepeated)
{
    const std::vector<std::string> kSet = {"user", "password", "set", "amy", "--password-stdin"};
    ExpectRefusal(RunWith(std::string("s3cret\0\n", 8), kSet), 2, "NUL");
    ExpectRefusal(RunWith("s3cret\xFF\n", kSet), 2, "UTF-8");
    ExpectRefusal(RunWith("\n", kSet), 2, "--allow-empty");
    ExpectRefusal(RunWith("", kSet), 1, "no password to read");
    ExpectRefusal(RunWith(std::string(Secret::kLongest + 1, 'x'), kSet), 2, "longer");
    ExpectRefusal(Run({"user", "password", "set", "amy"}), 2, "--password-stdin, --password-file or --generate");
    ExpectRefusal(Run({"user", "password", "set", "amy", "--password", "s3cret"}), 2, "could be read by others");
    ExpectRefusal(Run({"user", "password", "set", "amy", "--password=s3cret"}), 2, "could be read by others");
    ExpectRefusal(Run({"user", "password", "set", "amy", "--generate", "--type", "3"}), 2, "--type");
    ExpectRefusal(Run({"user", "password", "set", "nobody", "--generate"}), 3, "nobody");
    ExpectRefusal(Run({"user", "password"}), 2, "name what to do");
    ExpectRefusal(Run({"user", "password", "frob"}), 2,
                  "user password has no verb 'frob'; there are set, check, status");
    EXPECT_EQ(Status("amy")["set"], false);
}

TEST_F(PasswordCommandsTest, AnEmptyPasswordIsTakenWhenThatIsMeant)
{
    EXPECT_EQ(RunWith("\n", {"user", "password", "set", "amy", "--password-stdin", "--allow-empty"}).exit, 0);
    EXPECT_EQ(Check("amy", ""), 0);
    EXPECT_EQ(Check("amy", "x"), 3);
}

TEST_F(PasswordCommandsTest, TheSettingChoosesTheType)
{
    ASSERT_EQ(Run({"setting", "set", "PasswordEncoding", "1", "--genre", "Console"}).exit, 0);
    EXPECT_EQ(Run({"user", "password", "set", "amy", "--generate"}).exit, 0);
    EXPECT_EQ(Status("amy")["type"], 1);
    ASSERT_EQ(Run({"setting", "set", "PasswordEncoding", "9"}).exit, 0);
    ExpectRefusal(Run({"user", "password", "set", "amy", "--generate"}), 4, "PasswordEncoding of Console is '9'");
}

TEST_F(PasswordCommandsTest, OnATerminalItAsksTwiceWithoutShowingWhatIsTyped)
{
    m_options.terminal = true;
    const ChildResult set = RunWith("s3cret\ns3cret\n", {"user", "password", "set", "amy"});
    EXPECT_EQ(set.exit, 0);
    EXPECT_THAT(set.err, AllOf(HasSubstr("New password of amy (id 1): "), HasSubstr("Once more: ")));
    const ChildResult differing = RunWith("other\nanother\n", {"user", "password", "set", "amy"});
    EXPECT_EQ(differing.exit, 1);
    EXPECT_THAT(differing.err, HasSubstr("the two answers differ"));
    EXPECT_EQ(RunWith("s3cret\n", {"user", "password", "check", "amy"}).out, "true\n");
}

TEST_F(PasswordCommandsTest, RenameTakesANewPasswordInsteadOfOneThatWouldNotFit)
{
    SetPassword("amy", "s3cret");
    ExpectRefusal(Run({"user", "rename", "amy", "pond"}), 4,
                  "--password-stdin, --password-file or --generate, or drop it with --drop-password");
    ExpectRefusal(RunWith("\n", {"user", "rename", "amy", "pond", "--password-stdin"}), 2, "empty");
    ExpectRefusal(Run({"user", "rename", "amy", "pond", "--generate", "--drop-password"}), 2, "excludes");
    EXPECT_EQ(Check("amy", "s3cret"), 0);
    EXPECT_EQ(RunWith("new\n", {"user", "rename", "amy", "O'Pond\\", "--password-stdin"}).exit, 0);
    EXPECT_EQ(Check("O'Pond\\", "new"), 0);
    const ChildResult generated = Run({"user", "rename", "id:1", "amy", "--generate"});
    EXPECT_EQ(generated.exit, 0);
    EXPECT_EQ(Check("amy", generated.out.substr(0, 20)), 0);
    const ChildResult dropped = Run({"user", "rename", "amy", "pond", "--drop-password"});
    EXPECT_EQ(dropped.exit, 0);
    EXPECT_THAT(dropped.err, HasSubstr("nobody can log in"));
    EXPECT_EQ(Check("pond", ""), 3);
    EXPECT_EQ(Check("pond", "!"), 3);
}

TEST_F(PasswordCommandsTest, RenameAsksOnATerminalOnlyWhereItMust)
{
    SetPassword("amy", "s3cret", "1");
    m_options.terminal = true;
    EXPECT_EQ(Run({"user", "rename", "amy", "pond"}).exit, 0);
    m_options.terminal = false;
    EXPECT_EQ(Check("pond", "s3cret"), 0);
    SetPassword("pond", "s3cret", "2");
    m_options.terminal = true;
    const ChildResult asked = RunWith("new\nnew\n", {"user", "rename", "pond", "amy"});
    EXPECT_EQ(asked.exit, 0);
    EXPECT_THAT(asked.err, HasSubstr("New password of amy: "));
    const ChildResult taken = RunWith("new\nnew\n", {"user", "rename", "amy", " x"});
    EXPECT_EQ(taken.exit, 2);
    EXPECT_THAT(taken.err, Not(HasSubstr("New password")));
    m_options.terminal = false;
    EXPECT_EQ(Check("amy", "new"), 0);
}
