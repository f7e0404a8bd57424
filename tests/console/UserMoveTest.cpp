#include "ConsoleOnEngine.h"

#include <gmock/gmock.h>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

using Words = std::vector<std::string>;

/// Two departments below one view, and a project below another.
class UserMoveTest : public ConsoleOnEngine {
protected:
    void SetUp() override
    {
        ConsoleOnEngine::SetUp();
        WriteFile("setup.txt", "view create Company\n"
                               "view create Projects\n"
                               "group create /Company/Sales\n"
                               "group create '/Company/Head\\/office/North' --parents\n"
                               "group create /Projects/Moon\n"
                               "user create amy --department /Company/Sales\n"
                               "user create rory --department /Company/Sales\n"
                               "user create clara\n"
                               "user create danny --department /Company/Sales\n"
                               "member add /Projects/Moon danny\n");
        ASSERT_EQ(Run({"batch", "setup.txt", "--stop-on-error"}).exit, 0);
    }

    /// Where a user is, and the department in the user's row: its text and the name of its group.
    std::string PlaceOf(const std::string& user)
    {
        std::string place;
        for (const nlohmann::json& group : nlohmann::json::parse(Done({"user", "groups", user, "-o", "json"}))) {
            place += group["path"].get<std::string>() + " ";
        }
        const nlohmann::json record = nlohmann::json::parse(Done({"user", "show", user, "-o", "json"}));
        place += "| " + record["department"].get<std::string>() + " | ";
        if (record["department_id"] != 0) {
            const std::string id = "id:" + record["department_id"].dump();
            place += nlohmann::json::parse(Done({"group", "show", id, "-o", "json"}))["name"].get<std::string>();
        }
        return place;
    }
};

} // namespace

TEST_P(UserMoveTest, MembershipAndDepartmentMoveTogether)
{
    ASSERT_EQ(PlaceOf("amy"), "/Company/Sales | Sales | Sales");
    EXPECT_THAT(Run({"user", "move", "amy", "rory", "clara", "/Company/Head\\/office/North"}).err,
                AllOf(HasSubstr("amy (id "), HasSubstr(" is now in /Company/Head\\/office/North (id "),
                      HasSubstr(" and no longer in /Company/Sales (id "), HasSubstr("moved 3 of 3 users\n")));
    for (const char* user : {"amy", "rory", "clara"}) {
        EXPECT_EQ(PlaceOf(user), "/Company/Head\\/office/North | Head\\/office/North | North") << user;
    }
    const ChildResult again = Run({"user", "move", "amy", "/Company/Head\\/office/North", "--dry-run"});
    EXPECT_EQ(again.exit, 0) << "nothing to change";
    EXPECT_THAT(again.err, HasSubstr("is in /Company/Head\\/office/North"));
}

TEST_P(UserMoveTest, WhoIsInSeveralGroupsNeedsTheOneToLeave)
{
    Done({"member", "add", "/Projects/Moon", "rory"});
    const std::string before = Dump();
    const ChildResult refused = Run({"user", "move", "amy", "danny", "rory", "/Company/Head\\/office"});
    EXPECT_EQ(refused.exit, 4);
    EXPECT_THAT(refused.err,
                AllOf(HasSubstr("2 users are in several groups; nobody was moved, --from says which one to leave: "),
                      HasSubstr("danny (id "), HasSubstr(" is in /Company/Sales, /Projects/Moon; rory (id "),
                      Not(HasSubstr("amy"))));
    EXPECT_EQ(Dump(), before);
    Done({"user", "move", "danny", "/Company/Head\\/office", "--from", "/Company/Sales"});
    EXPECT_EQ(PlaceOf("danny"), "/Company/Head\\/office /Projects/Moon | Head\\/office | Head/office");
}

TEST_P(UserMoveTest, ADepartmentThatIsNotLeftStays)
{
    Done({"group", "create", "/Projects/Mars"});
    Done({"user", "move", "danny", "/Projects/Mars", "--from", "/Projects/Moon"});
    EXPECT_EQ(PlaceOf("danny"), "/Company/Sales /Projects/Mars | Sales | Sales");
}

TEST_P(UserMoveTest, NobodyIsMovedUnlessAllCanBe)
{
    const std::string before = Dump();
    const ChildResult missing = Run({"user", "move", "amy", "nobody", "noone", "/Company/Head\\/office"});
    EXPECT_EQ(missing.exit, 3);
    EXPECT_THAT(missing.err, HasSubstr("there are no users 'nobody', 'noone'"));
    const ChildResult elsewhere =
        Run({"user", "move", "amy", "clara", "danny", "/Company/Head\\/office", "--from", "/Projects/Moon"});
    EXPECT_EQ(elsewhere.exit, 3);
    EXPECT_THAT(elsewhere.err, AllOf(HasSubstr("2 users are not in /Projects/Moon (id "), HasSubstr("amy (id "),
                                     HasSubstr(", clara (id "), HasSubstr("; nobody was moved")));
    EXPECT_EQ(Run({"user", "move", "amy", "/Company/Nowhere"}).exit, 3);
    EXPECT_EQ(Run({"user", "move", "amy", "/Company/Sales", "--from", "/Company/Sales"}).exit, 2);
    EXPECT_EQ(Run({"user", "move", "amy"}).exit, 2);
    EXPECT_EQ(Run({"user", "move"}).exit, 2);
    EXPECT_EQ(Dump(), before);
}

TEST_P(UserMoveTest, NamesCanComeFromElsewhere)
{
    EXPECT_EQ(RunWith("amy\nrory\n", {"user", "move", "-", "/Company/Head\\/office"}).exit, 0);
    EXPECT_EQ(PlaceOf("rory"), "/Company/Head\\/office | Head\\/office | Head/office");
    WriteFile("names.txt", "amy\n");
    EXPECT_EQ(Run({"user", "move", "/Company/Sales", "--file", "names.txt"}).exit, 0);
    EXPECT_EQ(PlaceOf("amy"), "/Company/Sales | Sales | Sales");
    EXPECT_EQ(
        Run({"user", "move", "--where", "login=amy", "--where", "name=amy", "/Company/Head\\/office", "--yes"}).exit,
        0);
    EXPECT_EQ(PlaceOf("amy"), "/Company/Head\\/office | Head\\/office | Head/office");
    EXPECT_EQ(RunWith("", {"user", "move", "-", "/Company/Sales"}).exit, 2);
    EXPECT_THAT(Done({"user", "move", "--help"}), HasSubstr("Usage: qvadmin user move [OPTIONS] USER... TO\n"));
}

TEST_P(UserMoveTest, IsRecordedAsOneChange)
{
    ExpectRecordedAndUndone("user move",
                            [&] { return Run({"user", "move", "amy", "rory", "/Company/Head\\/office"}); });
}

INSTANTIATE_TEST_SUITE_P(Engines, UserMoveTest, Engines(), EngineName);
