#include "ConsoleOnEngine.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

using nlohmann::json;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Key;
using testing::Not;

// What does not hold together in a directory, found and mended.

namespace {

class CheckOn : public ConsoleOnEngine {
protected:
    /// Amy is in a department and has a password.
    void SetUp() override
    {
        ConsoleOnEngine::SetUp();
        Done({"view", "create", "Main"});
        Done({"group", "create", "/Main/Sales"});
        Done({"group", "create", "/Main/Service"});
        Done({"user", "create", "amy"});
        Done({"user", "set", "amy", "--department", "/Main/Sales"});
        Done({"user", "password", "set", "amy", "--generate"});
        Done({"role", "create", "everyone"});
    }

    /// How many of each kind of problem there are.
    std::map<std::string, int> Problems()
    {
        const ChildResult result = Run({"db", "check", "-o", "json"});
        std::map<std::string, int> problems;
        for (const json& problem : json::parse(result.out)) {
            problems[problem.at("check")] += problem.at("count").get<int>();
            EXPECT_NE(problem.at("example"), "") << problem;
            EXPECT_NE(problem.at("repair"), "") << problem;
        }
        EXPECT_EQ(result.exit, problems.empty() ? 0 : 8) << result.err;
        return problems;
    }

    void Damage()
    {
        // The second link is there twice.
        Execute("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES "
                "(99, 2, 1, 1)");
        for (int i = 0; i < 2; ++i) {
            Execute("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES "
                    "(2, 2, 1, 1)");
        }
        Execute("INSERT INTO qv_ItemAce (Col_QvItemID, Col_QvItemType, Col_FunName) VALUES (77, 3, 'send')");
        Execute("INSERT INTO Tab_Doc_Backup_Rel (Col_QvItem_Type, Col_QvItem_ID, Col_PlanID) VALUES (1, 1, 5)");
        Execute("INSERT INTO Tab_Doc_VFolder_Link (Col_P_ObjID, Col_S_ClassID, Col_S_ObjID) VALUES (8, 105, 9)");
        Execute("UPDATE qv_User SET Col_DeptInfo = 'Old name' WHERE Col_LoginName = 'amy'");
        Execute("INSERT INTO qv_User (Col_LoginName, Col_PWord, Col_DeptID, Col_DeptInfo) VALUES ('rory', 'x', 88, "
                "'Gone')");
        Execute("UPDATE qv_User SET Col_EnType = 0 WHERE Col_LoginName = 'rory'");
    }
};

TEST_P(CheckOn, ASoundDirectoryHasNoProblems)
{
    EXPECT_THAT(Problems(), testing::IsEmpty());
    EXPECT_EQ(Run({"db", "check", "--fix", "--yes"}).exit, 0);
}

TEST_P(CheckOn, EachProblemIsFoundAndWhatNeedsNoDecisionMended)
{
    Damage();
    const std::map<std::string, int> found = {{"orphans", 4},
                                              {"doubled_links", 1},
                                              {"stale_departments", 1},
                                              {"lost_departments", 1},
                                              {"plain_passwords", 1}};
    EXPECT_EQ(Problems(), found);
    const std::string damaged = Dump();
    EXPECT_EQ(Run({"db", "check", "--fix", "--yes", "--dry-run"}).exit, 8);
    EXPECT_EQ(Dump(), damaged);
    Done({"db", "check", "--fix", "--yes"});
    EXPECT_EQ(Problems(), (std::map<std::string, int>{{"plain_passwords", 1}}));
    EXPECT_THAT(Dump(), AllOf(HasSubstr("<Sales>"), Not(HasSubstr("<Old name>")), Not(HasSubstr("<Gone>"))));
    const json entry = LatestEntry();
    EXPECT_EQ(entry.at("command"), "db check --fix");
    // What was broken does not come back.
    const std::string mended = Dump();
    const ChildResult undo = Run({"audit", "undo", entry.at("id").dump(), "--yes"});
    EXPECT_EQ(undo.exit, 4);
    EXPECT_THAT(undo.err, HasSubstr("othing was undone"));
    EXPECT_EQ(Dump(), mended);
}

TEST_P(CheckOn, NamesThatAreTakenTwiceOrLookAlikeAreFound)
{
    Execute("INSERT INTO qv_User (Col_LoginName, Col_PWord) VALUES ('AMY', 'x')");
    EXPECT_THAT(Problems(), Contains(Key("doubled_logins")));
    Execute("UPDATE qv_User SET Col_LoginName = 'a\u200Bmy' WHERE Col_LoginName = 'AMY' AND Col_PWord = 'x'");
    EXPECT_THAT(Problems(), AllOf(Contains(Key("alike_logins")), Not(Contains(Key("doubled_logins")))));
    Execute("INSERT INTO qv_Role (Col_Name, Col_AppName) SELECT Col_Name, Col_AppName FROM qv_Role");
    EXPECT_THAT(Problems(), Contains(Key("default_roles")));
}

TEST_P(CheckOn, UsersWithoutAPasswordGroupsWithoutAViewAndCyclesAreFound)
{
    Done({"user", "create", "rory"});
    Execute("INSERT INTO qv_Group (Col_Name) VALUES ('Lost')");
    const std::map<std::string, int> problems = Problems();
    EXPECT_EQ(problems, (std::map<std::string, int>{{"no_password", 1}, {"groups_without_view", 1}}));
    Done({"user", "lock", "rory"});
    Execute(
        "INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES (3, 2, 3, 2)");
    EXPECT_THAT(Problems(), AllOf(Contains(Key("cycles")), Not(Contains(Key("no_password")))));
}

INSTANTIATE_TEST_SUITE_P(Engines, CheckOn, Engines(), EngineName);

} // namespace
