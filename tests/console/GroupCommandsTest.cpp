#include "ConsoleFixture.h"

#include <nlohmann/json.hpp>

#include <algorithm>

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

class GroupCommandsTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
        Done({"view", "create", "Main"});
    }

    void Create(const std::string& path) { Done({"group", "create", path}); }

    json Shown(const std::string& group) { return json::parse(Done({"group", "show", group, "-o", "json"})); }

    std::string Tree(const std::vector<std::string>& more = {})
    {
        std::vector<std::string> words = {"group", "tree"};
        words.insert(words.end(), more.begin(), more.end());
        return Done(words);
    }

    void Link(int holder, int holderType, int member, int memberType)
    {
        Execute("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES (" +
                std::to_string(holder) + ", " + std::to_string(holderType) + ", " + std::to_string(member) + ", " +
                std::to_string(memberType) + ")");
    }
};

} // namespace

// ---- Creating -------------------------------------------------------------------------------------------------------

TEST_F(GroupCommandsTest, ANewGroupIsShownWithWhatWasGiven)
{
    EXPECT_EQ(Done({"group", "create", "/main/Sales", "--description", "it's\\", "--sort-index", "-5", "--style", "3",
                    "--creator", "O'Brien"}),
              "1\n");
    const json group = Shown("/MAIN/SALES");
    EXPECT_EQ(group["id"], 1);
    EXPECT_EQ(group["name"], "Sales");
    EXPECT_EQ(group["path"], "/Main/Sales");
    EXPECT_EQ(group["parents"], "/Main");
    EXPECT_EQ(group["description"], "it's\\");
    EXPECT_EQ(group["creator"], "O'Brien");
    EXPECT_EQ(group["sort_index"], -5);
    EXPECT_EQ(group["style"], 3);
    EXPECT_EQ(group["domain_id"], 0);
}

TEST_F(GroupCommandsTest, NamesWithQuotesSlashesAndBackslashesComeThrough)
{
    Create("/Main/O'Brien");
    Create("/Main/O'Brien/a\\\\b");
    Create(R"(/Main/O'Brien/a\\b/a\/b)");
    EXPECT_EQ(Done({"group", "list", "-o", "plain"}), "3\ta/b\t/Main/O'Brien/a\\\\\\\\b/a\\\\/b\t10000\t0\t0\n"
                                                      "2\ta\\\\b\t/Main/O'Brien/a\\\\\\\\b\t10000\t0\t1\n"
                                                      "1\tO'Brien\t/Main/O'Brien\t10000\t0\t1\n");
    EXPECT_EQ(Shown(Shown("id:3")["path"])["id"], 3);
    Done({"group", "rename", "id:3", "'\\/"});
    EXPECT_EQ(Shown("/main/o'brien/a\\\\b/'\\\\\\/")["name"], "'\\/");
}

TEST_F(GroupCommandsTest, ParentsAreAddedOnlyWhenAskedFor)
{
    ExpectRefusal({"group", "create", "/Main/A/B/C"}, 3, "'/Main/A/B'");
    EXPECT_EQ(Done({"group", "create", "/Main/A/B/C", "--parents", "--description", "deep"}), "3\n");
    EXPECT_EQ(Done({"group", "create", "/Main/a/D", "--parents"}), "4\n");
    EXPECT_EQ(Shown("/Main/A/B/C")["description"], "deep");
    EXPECT_EQ(Shown("/Main/A/B")["description"], "");
    EXPECT_EQ(Tree(), "Main (0, 0 below)\n"
                      "└── A (0, 0 below)\n"
                      "    ├── B (0, 0 below)\n"
                      "    │   └── C (0)\n"
                      "    └── D (0)\n");
    ExpectRefusal({"group", "create", "/Nope/A", "--parents"}, 3, "'/Nope'");
    ExpectRefusal({"group", "create", "/N\\/o/A", "--parents"}, 3, "'/N\\/o'");
    ExpectRefusal({"group", "create", "/Main/A/ x/y", "--parents"}, 2, "blank");
}

TEST_F(GroupCommandsTest, NamesThatAreTakenOrNoneAreRefused)
{
    Create("/Main/Żółw");
    ExpectRefusal({"group", "create", "/Main/żÓŁW"}, 4, "is taken by /Main/Żółw (id 1)");
    Create("/Main/B");
    ExpectRefusal({"group", "rename", "/Main/B", "żÓŁW"}, 4, "is taken by");
    for (const char* name : {" x", "x ", "a\tb"}) {
        ExpectRefusal({"group", "create", std::string("/Main/") + name}, 2, "the group name");
        ExpectRefusal({"group", "rename", "/Main/B", name}, 2, "the group name");
    }
    ExpectRefusal({"group", "rename", "/Main/B", ""}, 2, "is empty");
    for (const char* path : {"Main/x", "/Main", "/Main/", "/Main//x", "/Main/a\\b", "x"}) {
        ExpectRefusal({"group", "create", path}, 2, path);
    }
    Done({"group", "rename", "/Main/B", "b"});
    EXPECT_EQ(Shown("id:2")["name"], "b");
}

// ---- The tree -------------------------------------------------------------------------------------------------------

TEST_F(GroupCommandsTest, TheTreeCountsPeopleAndShowsThemWhenAsked)
{
    Create("/Main/Sales");
    Create("/Main/Sales/North");
    Create("/Main/Zoo");
    Done({"user", "create", "amy", "--name", "Amy\x1B"});
    Done({"user", "create", "rory"});
    Link(1, 2, 1, 1);
    Link(2, 2, 1, 1);
    Link(2, 2, 2, 1);
    EXPECT_EQ(Tree(), "Main (0, 3 below)\n"
                      "├── Sales (1, 2 below)\n"
                      "│   └── North (2)\n"
                      "└── Zoo (0)\n");
    EXPECT_EQ(Tree({"/main/sales", "--users"}), "Sales (1, 2 below)\n"
                                                "├── amy: Amy\\x1B\n"
                                                "└── North (2)\n"
                                                "    ├── amy: Amy\\x1B\n"
                                                "    └── rory: rory\n");
    EXPECT_EQ(Tree({"--depth", "1"}), "Main (0, 3 below)\n"
                                      "├── Sales (1, 2 below)\n"
                                      "└── Zoo (0)\n");
    EXPECT_EQ(Tree({"--depth", "0"}), "Main (0, 3 below)\n");
    ExpectRefusal({"group", "tree", "--depth", "-1"}, 2, "--depth");
    const json lines = json::parse(Tree({"--users", "-o", "json"}));
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_EQ(lines[1]["users_below"], 2);
    EXPECT_EQ(lines[2]["type"], "user");
    EXPECT_EQ(lines[2]["name"], "amy");
    EXPECT_EQ(lines[3]["depth"], 2);
    EXPECT_EQ(lines[3]["path"], "/Main/Sales/North");
    EXPECT_THAT(Tree({"-o", "csv"}), StartsWith("depth,type,id,name,path,users,users_below,mark\n0,view,1,Main,"));
}

TEST_F(GroupCommandsTest, TheTreeMarksCyclesAndWhatItHasShownAndListsWhatHangsNowhere)
{
    Create("/Main/A");
    Create("/Main/A/B");
    Create("/Main/C");
    Link(2, 2, 1, 2);
    Link(3, 2, 2, 2);
    Execute("INSERT INTO qv_Group (Col_ID, Col_Name) VALUES (10, 'Lost'), (11, 'L1'), (12, 'L2'), (13, 'Under')");
    Link(10, 2, 13, 2);
    Link(11, 2, 12, 2);
    Link(12, 2, 11, 2);
    EXPECT_EQ(Tree(), "Main (0, 0 below)\n"
                      "├── A (0, 0 below)\n"
                      "│   └── B (0, 0 below)\n"
                      "│       └── A (0, 0 below) [cycle: leads back to itself]\n"
                      "└── C (0, 0 below)\n"
                      "    └── B (0, 0 below) [shown above]\n"
                      "In no view:\n"
                      "├── L1 (0, 0 below)\n"
                      "│   └── L2 (0, 0 below)\n"
                      "│       └── L1 (0, 0 below) [cycle: leads back to itself]\n"
                      "└── Lost (0, 0 below)\n"
                      "    └── Under (0)\n");
    const std::string lines = Tree({"-o", "jsonl"});
    EXPECT_THAT(lines, AllOf(HasSubstr("\"mark\":\"cycle\""), HasSubstr("\"type\":\"nowhere\"")));
    EXPECT_THAT(Done({"group", "find", "l2", "-o", "plain"}), "12\tid:11/L2\n");
    ExpectRefusal({"view", "stamp", "Main"}, 4, "/Main/A -> /Main/A/B -> /Main/A");
}

TEST_F(GroupCommandsTest, ListAndFindGiveGroupsInEveryFormat)
{
    Create("/Main/Sales");
    Create("/Main/Sales/Nord'est");
    EXPECT_EQ(Done({"group", "list", "/Main", "-o", "csv"}),
              "id,name,path,sort_index,users,groups\n1,Sales,/Main/Sales,10000,0,1\n");
    EXPECT_EQ(json::parse(Done({"group", "list", "-o", "json"})).size(), 2U);
    EXPECT_EQ(Done({"group", "find", "D'E", "-o", "jsonl"}), "{\"id\":2,\"path\":\"/Main/Sales/Nord'est\"}\n");
    EXPECT_EQ(Done({"group", "find", "x", "-o", "json"}), "[]\n");
    ExpectRefusal({"group", "list", "/Main/x"}, 3, "there is no group or view '/Main/x'");
}

// ---- Changing -------------------------------------------------------------------------------------------------------

TEST_F(GroupCommandsTest, SetChangesWhatIsGivenAndNothingElse)
{
    Done({"group", "create", "/Main/A", "--description", "old", "--style", "4", "--creator", "amy"});
    json expected = Shown("/Main/A");
    EXPECT_THAT(Run({"group", "set", "/Main/A", "--sort-index", "7", "--domain-id", "2"}).err, StartsWith("changed"));
    expected["sort_index"] = 7;
    expected["domain_id"] = 2;
    EXPECT_EQ(Shown("/Main/A"), expected);
    Done({"group", "set", "/Main/A", "--description", "O'Brien\\"});
    expected["description"] = "O'Brien\\";
    EXPECT_EQ(Shown("/Main/A"), expected);
    EXPECT_THAT(Run({"group", "set", "/Main/A", "--domain-id", "2"}).err, StartsWith("nothing to change"));
    ExpectRefusal({"group", "set", "/Main/A"}, 2, "nothing to set");
    ExpectRefusal({"group", "set", "/Main/A", "--sort-index", "x"}, 2, "--sort-index");
    ExpectRefusal({"group", "set", "/Main/B", "--sort-index", "1"}, 3, "'/Main/B'");
}

TEST_F(GroupCommandsTest, StyleIsShownAndSet)
{
    Create("/Main/A");
    EXPECT_EQ(Done({"group", "style", "/Main/A", "-o", "plain"}), "style\t0\n");
    Done({"group", "style", "/Main/A", "-3"});
    EXPECT_EQ(Done({"group", "style", "/Main/A"}), "style  -3\n");
    ExpectRefusal({"group", "style", "/Main/A", "many"}, 2, "N");
}

TEST_F(GroupCommandsTest, AMovedGroupTakesAllBelowAlong)
{
    Create("/Main/A");
    Create("/Main/A/B");
    Create("/Main/A/B/C");
    Create("/Main/D");
    Done({"group", "move", "/Main/A/B", "/Main/D"});
    EXPECT_EQ(Shown("id:3")["path"], "/Main/D/B/C");
    EXPECT_EQ(Shown("/Main/A")["groups"], 0);
    Done({"group", "move", "id:2", "/Main"});
    EXPECT_EQ(Shown("id:3")["path"], "/Main/B/C");
    EXPECT_THAT(Run({"group", "move", "id:2", "/Main"}).err, HasSubstr("is there already"));
}

TEST_F(GroupCommandsTest, AMoveThatMakesACycleNamesItAndChangesNothing)
{
    Create("/Main/A");
    Create("/Main/A/B");
    Create("/Main/A/B/C");
    const std::string before = Tree();
    ExpectRefusal({"group", "move", "/Main/A", "/Main/A/B/C"}, 4, "/Main/A -> /Main/A/B -> /Main/A/B/C -> /Main/A");
    ExpectRefusal({"group", "move", "/Main/A", "/Main/A"}, 4, "/Main/A -> /Main/A");
    EXPECT_EQ(Tree(), before);
}

TEST_F(GroupCommandsTest, AMoveRefusesANameThatIsTaken)
{
    Create("/Main/A");
    Create("/Main/A/b");
    Create("/Main/B");
    ExpectRefusal({"group", "move", "/Main/A/b", "/Main"}, 4, "is taken by /Main/B (id 3)");
    EXPECT_EQ(Shown("id:2")["path"], "/Main/A/b");
}

TEST_F(GroupCommandsTest, AGroupInSeveralPlacesIsMovedFromTheOneThatIsSaid)
{
    Create("/Main/A");
    Create("/Main/B");
    Create("/Main/A/S");
    Create("/Main/C");
    Link(2, 2, 3, 2);
    ExpectRefusal({"group", "move", "id:3", "/Main/C"}, 4, "/Main/A, /Main/B");
    ExpectRefusal({"group", "move", "id:3", "/Main/C", "--from", "/Main/C"}, 3, "is not directly under");
    Done({"group", "move", "id:3", "/Main/C", "--from", "/Main/B"});
    EXPECT_EQ(Shown("id:3")["parents"], "/Main/A, /Main/C");
    Done({"group", "move", "id:3", "/Main/C", "--from", "/Main/A"});
    EXPECT_EQ(Shown("id:3")["parents"], "/Main/C");
}

TEST_F(GroupCommandsTest, AGroupThatHangsNowhereCanBeMovedBack)
{
    Execute("INSERT INTO qv_Group (Col_ID, Col_Name) VALUES (10, 'Lost')");
    EXPECT_EQ(Shown("id:10")["path"], "id:10");
    Done({"group", "move", "id:10", "/Main"});
    EXPECT_EQ(Shown("/Main/Lost")["id"], 10);
}

// ---- Deleting -------------------------------------------------------------------------------------------------------

TEST_F(GroupCommandsTest, AnEmptyGroupIsDeletedWithItsTraces)
{
    Create("/Main/A");
    Execute("INSERT INTO qv_ItemAce (Col_QvItemID, Col_QvItemType) VALUES (1, 2), (1, 1)");
    Execute("INSERT INTO qv_JobTitle (Col_QvItemID, Col_QvItemType) VALUES (1, 2)");
    const ChildResult asked = Run({"group", "delete", "/Main/A"});
    EXPECT_EQ(asked.exit, 9);
    EXPECT_THAT(asked.err, AllOf(StartsWith("delete /Main/A (id 1), with 1 relation, 1 job title, 1 right\n"),
                                 HasSubstr("--yes")));
    EXPECT_EQ(Shown("id:1")["name"], "A");
    EXPECT_THAT(Run({"group", "delete", "/Main/A", "--yes"}).err, HasSubstr("deleted 1 group\n"));
    EXPECT_EQ(Tree(), "Main (0)\n");
    EXPECT_EQ(Run({"group", "delete", "id:1", "--yes"}).exit, 3);
}

TEST_F(GroupCommandsTest, AGroupThatHoldsSomethingIsDeletedOnlyRecursivelyAndUsersStay)
{
    Create("/Main/A");
    Create("/Main/A/B");
    Create("/Main/A/B/C");
    Create("/Main/A/S");
    Create("/Main/D");
    Link(5, 2, 4, 2);
    Done({"user", "create", "amy"});
    Link(1, 2, 1, 1);
    ExpectRefusal({"group", "delete", "/Main/A", "--yes"}, 4,
                  "/Main/A (id 1) holds 3 groups and 1 user, on all levels");
    ExpectRefusal({"group", "delete", "/Main/A/B", "--yes"}, 4, "holds 1 group and 0 users");
    const ChildResult result = Run({"group", "delete", "/Main/A", "--recursive", "--yes"});
    EXPECT_EQ(result.exit, 0);
    EXPECT_EQ(result.err, "delete /Main/A (id 1) and 2 groups below, with 5 relations; members: 1 user, of whom 1 will "
                          "be in no group\ndeleted 3 groups\n");
    EXPECT_EQ(Tree(), "Main (0, 0 below)\n"
                      "└── D (0, 0 below)\n"
                      "    └── S (0)\n");
    EXPECT_EQ(Done({"user", "count"}), "1\n");
}

TEST_F(GroupCommandsTest, DeletingCountsPeopleOnAllLevelsOnceAndThoseWhoAreLeftWithoutAGroup)
{
    Create("/Main/A");
    Create("/Main/A/B");
    Create("/Main/C");
    for (const char* login : {"amy", "rory", "kim"}) {
        Done({"user", "create", login});
    }
    Link(2, 2, 1, 1);
    Link(2, 2, 2, 1);
    Link(2, 2, 3, 1);
    Link(1, 2, 2, 1);
    Link(3, 2, 3, 1);
    Link(2, 2, 77, 1);
    ExpectRefusal({"group", "delete", "/Main/A"}, 4, "holds 1 group and 3 users, on all levels");
    const ChildResult asked = Run({"group", "delete", "/Main/A", "--recursive"});
    EXPECT_EQ(asked.exit, 9);
    EXPECT_THAT(asked.err, HasSubstr("; members: 3 users, of whom 2 will be in no group\n"));
    EXPECT_THAT(Run({"group", "delete", "/Main/C", "--recursive"}).err,
                HasSubstr("; members: 1 user, of whom 0 will be in no group\n"));
}

TEST_F(GroupCommandsTest, OnATerminalItAsks)
{
    Create("/Main/A");
    m_options.terminal = true;
    ChildResult result = RunWith("n\n", {"group", "delete", "/Main/A"});
    EXPECT_EQ(result.exit, 9);
    EXPECT_THAT(result.err, HasSubstr("Delete /Main/A (id 1)? [y/N]"));
    result = RunWith("y\n", {"group", "delete", "/Main/A"});
    EXPECT_EQ(result.exit, 0);
    m_options.terminal = false;
    EXPECT_EQ(Tree(), "Main (0)\n");
}

TEST_F(GroupCommandsTest, ADeletionThatFailsLeavesAllAsItWas)
{
    Create("/Main/A");
    Create("/Main/A/B");
    const std::string before = Tree();
    Execute("CREATE TRIGGER refuse BEFORE DELETE ON qv_Relation BEGIN SELECT RAISE(ABORT, 'not today'); END");
    const ChildResult result = Run({"group", "delete", "/Main/A", "--recursive", "--yes"});
    EXPECT_EQ(result.exit, 6);
    EXPECT_THAT(result.err, AllOf(HasSubstr("not today"), Not(HasSubstr("deleted 2 groups"))));
    EXPECT_EQ(Tree(), before);
}

TEST_F(GroupCommandsTest, EachVerbHasHelpWithExamples)
{
    for (const char* verb : {"tree", "list", "show", "create", "set", "rename", "move", "style", "delete", "find"}) {
        EXPECT_THAT(Done({"group", verb, "--help"}), HasSubstr("Examples:\n  qvadmin group ")) << verb;
    }
}
