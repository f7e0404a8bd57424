#include "ConsoleOnEngine.h"

#include <gmock/gmock.h>

#include <map>
#include <set>
#include <sstream>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

class ManyPasswordsTest : public ConsoleOnEngine {
protected:
    void SetUp() override
    {
        ConsoleOnEngine::SetUp();
        for (const char* user : {"amy", "o'brien, the \"first\"", "clara"}) {
            Done({"user", "create", user});
        }
    }

    bool Fits(const std::string& user, const std::string& password)
    {
        return RunWith(password + "\n", {"user", "password", "check", user, "--password-stdin"}).exit == 0;
    }
};

} // namespace

TEST_P(ManyPasswordsTest, GeneratedOnesGoToANewFileOfTheOwner)
{
    Done({"user", "password", "set", "amy", "o'brien, the \"first\"", "--generate", "--result", "new.csv"});
    const std::string file = ReadFile("new.csv");
    ASSERT_THAT(file, StartsWith("login,password\namy,"));
    const std::string amys = file.substr(file.find("amy,") + 4, 20);
    EXPECT_TRUE(Fits("amy", amys));
    const std::string quoted = R"("o'brien, the ""first""",)";
    ASSERT_THAT(file, HasSubstr(quoted));
    const std::string obriens = file.substr(file.find(quoted) + quoted.size(), 20);
    EXPECT_TRUE(Fits("o'brien, the \"first\"", obriens));
    EXPECT_NE(amys, obriens);
    EXPECT_EQ(std::filesystem::status(Path("new.csv")).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    EXPECT_EQ(LatestEntry().at("command"),
              "user password set amy 'o'\\''brien, the \"first\"' --generate --result new.csv");
}

TEST_P(ManyPasswordsTest, NothingIsEverOverwritten)
{
    WriteFile("new.csv", "login,password\namy,secret\n");
    const std::string before = Dump();
    const ChildResult refused = Run({"user", "password", "set", "amy", "clara", "--generate", "--result", "new.csv"});
    EXPECT_EQ(refused.exit, 4);
    EXPECT_THAT(refused.err, HasSubstr("new.csv is there already; nothing was changed, name a new file with --result"));
    EXPECT_EQ(ReadFile("new.csv"), "login,password\namy,secret\n");
    const ChildResult nowhere =
        Run({"user", "password", "set", "amy", "clara", "--generate", "--result", "no/folder.csv"});
    EXPECT_EQ(nowhere.exit, 1);
    EXPECT_EQ(Dump(), before);
}

TEST_P(ManyPasswordsTest, ManyAreNotPrinted)
{
    const std::string before = Dump();
    const ChildResult refused = Run({"user", "password", "set", "amy", "clara", "--generate"});
    EXPECT_EQ(refused.exit, 2);
    EXPECT_THAT(refused.err, HasSubstr("the passwords of 2 users cannot be printed; no password was set, name a file "
                                       "for them with --result"));
    EXPECT_EQ(Run({"user", "password", "set", "amy", "--result", "new.csv"}).exit, 2);
    EXPECT_EQ(Dump(), before);
}

TEST_P(ManyPasswordsTest, ADryRunMakesNoFile)
{
    EXPECT_EQ(Run({"user", "password", "set", "amy", "clara", "--generate", "--result", "new.csv", "--dry-run"}).exit,
              8);
    EXPECT_FALSE(std::filesystem::exists(Path("new.csv")));
    EXPECT_FALSE(std::filesystem::exists(Path("new.csv.partial")));
}

TEST_P(ManyPasswordsTest, OneForAllIsGivenInOneChange)
{
    EXPECT_EQ(RunWith("a good one\n", {"user", "password", "set", "amy", "clara", "--password-stdin"}).exit, 0);
    EXPECT_TRUE(Fits("amy", "a good one"));
    EXPECT_TRUE(Fits("clara", "a good one"));
    EXPECT_EQ(LatestEntry().at("rows"), 2);
    Done({"user", "password", "set", "--where", "login~o'b", "--generate", "--result", "one.csv", "--yes"});
    EXPECT_THAT(ReadFile("one.csv"), AllOf(HasSubstr("o'brien"), Not(HasSubstr("clara"))));
}

TEST_P(ManyPasswordsTest, EverythingAboutSeveralUsers)
{
    EXPECT_THAT(
        Done({"user", "show", "clara", "amy"}),
        AllOf(HasSubstr("login            clara\n"), HasSubstr("\n\nid "), HasSubstr("login            amy\n")));
    const nlohmann::json both = nlohmann::json::parse(Done({"user", "show", "clara", "amy", "-o", "json"}));
    ASSERT_EQ(both.size(), 2U);
    EXPECT_EQ(both[0], nlohmann::json::parse(Done({"user", "show", "clara", "-o", "json"})));
    EXPECT_EQ(both[1]["login"], "amy");
    const std::string csv = Done({"user", "show", "clara", "amy", "-o", "csv"});
    EXPECT_THAT(csv, AllOf(StartsWith("id,login,name"), HasSubstr(",clara,"), HasSubstr(",amy,")));
    const ChildResult missing = Run({"user", "show", "amy", "nobody", "noone"});
    EXPECT_EQ(missing.exit, 3);
    EXPECT_THAT(missing.err, HasSubstr("there are no users 'nobody', 'noone'"));
    EXPECT_EQ(missing.out, "");
}

INSTANTIATE_TEST_SUITE_P(Engines, ManyPasswordsTest, Engines(), EngineName);
