#include "ConsoleOnEngine.h"

#include <fmt/format.h>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// A file has the people of a part of the directory: who is not in it has left.

namespace {

class SynchronisationTest : public ConsoleOnEngine {
protected:
    void SetUp() override
    {
        ConsoleOnEngine::SetUp();
        std::string people = "login,department\n";
        for (int i = 0; i < 20; ++i) {
            people += fmt::format("user{},{}\n", i, i % 2 == 0 ? "Sales" : "Sales/North");
        }
        WriteFile("all.csv", people);
        Done({"user", "import", Path("all.csv"), "--departments", "Company", "--make-view"});
        Done({"group", "create", "/Company/Left"});
        Done({"user", "create", "visitor"});
        Done({"user", "create", "Admin"});
        Done({"member", "add", "/Company/Sales", "Admin"});
    }

    /// @param count  how many of the people the file still has.
    ChildResult Synchronise(int count, const std::vector<std::string>& options)
    {
        std::string people = "login,note\n";
        for (int i = 0; i < count; ++i) {
            people += fmt::format("USER{},known\n", i);
        }
        WriteFile("people.csv", people);
        return Run(With({"user", "import", Path("people.csv"), "--sync", "--scope", "/Company/Sales"}, options));
    }

    bool Exists(const std::string& login) { return Run({"user", "exists", login}).exit == 0; }
    nlohmann::json Shown(const std::string& login)
    {
        return nlohmann::json::parse(Done({"user", "show", login, "-o", "json"}));
    }
};

INSTANTIATE_TEST_SUITE_P(Engines, SynchronisationTest, Engines(), EngineName);

} // namespace

TEST_P(SynchronisationTest, LeaversAreListed)
{
    const ChildResult result = Synchronise(10, {});
    EXPECT_EQ(result.exit, 0) << result.err;
    EXPECT_THAT(result.err, AllOf(HasSubstr("10 updated"),
                                  HasSubstr("leavers: 10 of 21 users in /Company/Sales are not in the file\n")));
    const std::string outcomes = ReadFile("people.csv.result.csv");
    EXPECT_THAT(outcomes, AllOf(HasSubstr("\n,user10,11,leaver,\n"), HasSubstr("\n,user19,20,leaver,\n"),
                                Not(HasSubstr("user9,")), Not(HasSubstr("visitor")), Not(HasSubstr("Admin"))));
    EXPECT_EQ(Shown("user10").at("locked"), false);
}

TEST_P(SynchronisationTest, LeaversAreLockedOnce)
{
    const ChildResult result = Synchronise(19, {"--leavers", "lock"});
    EXPECT_EQ(result.exit, 0) << result.err;
    EXPECT_THAT(result.err,
                HasSubstr("leavers: 1 of 21 users in /Company/Sales is not in the file; lock: 1 done, 0 failed\n"));
    EXPECT_EQ(Shown("user19").at("locked"), true);
    EXPECT_EQ(Shown("user18").at("locked"), false);
    // Who has left before is no leaver of the next day.
    const ChildResult next = Synchronise(18, {"--leavers", "lock"});
    EXPECT_EQ(next.exit, 0) << next.err;
    EXPECT_EQ(Shown("user18").at("locked"), true);
    const std::string before = Dump();
    const nlohmann::json entry = LatestEntry();
    EXPECT_THAT(Synchronise(18, {"--leavers", "lock"}).err,
                AllOf(HasSubstr("18 unchanged"), HasSubstr("leavers: 0 of 21")));
    EXPECT_EQ(Dump(), before);
    EXPECT_EQ(LatestEntry(), entry);
}

TEST_P(SynchronisationTest, LeaversAreMoved)
{
    const ChildResult inside = Synchronise(19, {"--leavers", "move:/Company/Sales/North"});
    EXPECT_EQ(inside.exit, 2);
    EXPECT_THAT(inside.err,
                HasSubstr("/Company/Sales/North is in the scope /Company/Sales itself; nothing was imported"));
    const ChildResult result = Synchronise(19, {"--leavers", "move:/Company/Left"});
    EXPECT_EQ(result.exit, 0) << result.err;
    EXPECT_EQ(Shown("user19").at("department"), "Left");
    EXPECT_THAT(Done({"user", "groups", "user19"}), AllOf(HasSubstr("/Company/Left"), Not(HasSubstr("Sales"))));
    EXPECT_THAT(Synchronise(19, {"--leavers", "move:/Company/Left"}).err, HasSubstr("leavers: 0 of 20"));
}

TEST_P(SynchronisationTest, LeaversAreDeletedAndTheWholeIsOneEntryOfTheRecord)
{
    ExpectRecordedAndUndone("user import", [&] { return Synchronise(19, {"--leavers", "delete"}); });
    EXPECT_TRUE(Exists("user19"));
    Synchronise(19, {"--leavers", "delete"});
    EXPECT_FALSE(Exists("user19"));
    EXPECT_TRUE(Exists("visitor"));
}

TEST_P(SynchronisationTest, TooManyLeaversAreRefusedBeforeAnythingIsImported)
{
    const std::string before = Dump();
    const ChildResult result = Synchronise(15, {"--leavers", "delete"});
    EXPECT_EQ(result.exit, 4);
    EXPECT_THAT(result.err,
                HasSubstr("5 of 21 users in /Company/Sales are not in the file, and --max-leavers allows 5%; "
                          "nothing was imported"));
    EXPECT_EQ(Synchronise(15, {"--leavers", "delete", "--max-leavers", "4"}).exit, 4);
    EXPECT_EQ(Synchronise(15, {"--leavers", "delete", "--max-leavers", "23%"}).exit, 4);
    EXPECT_EQ(Synchronise(0, {"--leavers", "lock"}).exit, 4);
    EXPECT_EQ(Dump(), before);
    EXPECT_EQ(Synchronise(15, {"--leavers", "delete", "--max-leavers", "24%"}).exit, 0);
    EXPECT_EQ(Synchronise(14, {"--leavers", "delete", "--max-leavers", "1"}).exit, 0);
    EXPECT_FALSE(Exists("user14"));
}

TEST_P(SynchronisationTest, SuperUsersNeedAWordOfTheirOwn)
{
    Done({"user", "set", "user19", "--super"});
    const ChildResult refused = Synchronise(19, {"--leavers", "delete"});
    EXPECT_EQ(refused.exit, 7);
    EXPECT_THAT(refused.err, HasSubstr("is a super or system user, which needs --allow-privileges"));
    EXPECT_TRUE(Exists("user19"));
    EXPECT_EQ(Synchronise(19, {"--leavers", "delete", "--allow-privileges"}).exit, 0);
    EXPECT_FALSE(Exists("user19"));
}

TEST_P(SynchronisationTest, ADryRunChangesNothing)
{
    const std::string before = Dump();
    const ChildResult result = Synchronise(19, {"--leavers", "delete", "--dry-run"});
    EXPECT_EQ(result.exit, 0) << result.err;
    EXPECT_THAT(ReadFile("people.csv.result.csv"), HasSubstr("\n,user19,20,deleted,\n"));
    EXPECT_EQ(Dump(), before);
}

TEST_P(SynchronisationTest, RowsThatCannotBeReadMayBeAboutAnybody)
{
    WriteFile("people.csv", "login,note\nuser0,a\n,b\n");
    const ChildResult result = Run({"user", "import", Path("people.csv"), "--sync", "--scope", "/Company", "--leavers",
                                    "delete", "--max-leavers", "100%"});
    EXPECT_EQ(result.exit, 7);
    EXPECT_THAT(result.err, HasSubstr("nothing was done about them, since 1 row has no login name that can be read"));
    EXPECT_TRUE(Exists("user1"));
}

TEST_P(SynchronisationTest, OptionsThatDoNotFitAreRefused)
{
    const std::string before = Dump();
    const std::pair<std::vector<std::string>, const char*> kWrong[] = {
        {{"--scope", "/Company"}, "--scope requires --sync"},
        {{"--leavers", "lock"}, "--leavers requires --sync"},
        {{"--sync"}, "--sync requires --scope"},
        {{"--sync", "--scope", "/Company", "--leavers", "forget"}, "is none of list, lock"},
        {{"--sync", "--scope", "/Company", "--max-leavers", "5x"}, "is not a whole number"},
        {{"--sync", "--scope", "/Company", "--leavers", "move:/Nowhere"}, "/Nowhere"},
        {{"--sync", "--scope", "/Nowhere"}, "/Nowhere"}};
    WriteFile("people.csv", "login\nkim\n");
    for (const auto& [options, sentence] : kWrong) {
        const ChildResult result = Run(With({"user", "import", Path("people.csv")}, options));
        EXPECT_NE(result.exit, 0);
        EXPECT_THAT(result.err, HasSubstr(sentence));
    }
    EXPECT_THAT(RunWith("login\n", {"user", "import", "-", "--sync", "--scope", "Company"}).err,
                HasSubstr("--sync reads the rows twice; give a file"));
    EXPECT_EQ(Dump(), before);
}
