#include "ConsoleFixture.h"

#include <nlohmann/json.hpp>

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

class ViewCommandsTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
    }

    json Shown(const std::string& view) { return json::parse(Done({"view", "show", view, "-o", "json"})); }
};

} // namespace

TEST_F(ViewCommandsTest, ANewViewIsShownWithWhatWasGiven)
{
    EXPECT_EQ(Done({"view", "create", "Main", "--description", "it's\\", "--sort-index", "-5", "--style", "3",
                    "--domain-id", "4", "--creator", "O'Brien"}),
              "1\n");
    const json view = Shown("MAIN");
    EXPECT_EQ(view["name"], "Main");
    EXPECT_EQ(view["path"], "/Main");
    EXPECT_EQ(view["type"], 1);
    EXPECT_EQ(view["owner_id"], 0);
    EXPECT_EQ(view["public"], false);
    EXPECT_EQ(view["description"], "it's\\");
    EXPECT_EQ(view["creator"], "O'Brien");
    EXPECT_EQ(view["sort_index"], -5);
    EXPECT_EQ(view["style"], 3);
    EXPECT_EQ(view["domain_id"], 4);
    EXPECT_EQ(Shown("view:1"), view);
    EXPECT_EQ(Shown("/main"), view);
}

TEST_F(ViewCommandsTest, NamesWithQuotesSlashesAndBackslashesComeThrough)
{
    for (const char* name : {"O'Brien", "a\\b", "a/b", "view 1", "'"}) {
        Done({"view", "create", name});
        EXPECT_EQ(Shown(name)["name"], name);
        EXPECT_EQ(Shown(Shown(name)["path"])["name"], name);
        Done({"view", "rename", name, std::string(name) + "\\'"});
        EXPECT_EQ(Shown(std::string(name) + "\\'")["name"], std::string(name) + "\\'");
    }
}

TEST_F(ViewCommandsTest, NamesThatAreTakenOrNoneAreRefused)
{
    Done({"view", "create", "Żółw"});
    Done({"view", "create", "B"});
    ExpectRefusal({"view", "create", "żÓŁW"}, 4, "is taken by /Żółw (view 1)");
    ExpectRefusal({"view", "rename", "B", "żÓŁW"}, 4, "is taken by");
    Done({"view", "rename", "Żółw", "żÓŁW"});
    for (const char* name : {"", " x", "a\nb"}) {
        ExpectRefusal({"view", "create", name}, 2, "name");
        ExpectRefusal({"view", "rename", "B", name}, 2, "name");
    }
    ExpectRefusal({"view", "show", "C"}, 3, "there is no view 'C'; `qvadmin view list` shows all");
    ExpectRefusal({"view", "show", "view:x"}, 2, "is not an id");
    ExpectRefusal({"view", "show", "id:1"}, 3, "'id:1'");
}

TEST_F(ViewCommandsTest, TheListHasSystemViewsAndOthersWhenAsked)
{
    Done({"view", "create", "Main"});
    Execute("INSERT INTO qv_View (Col_Name, Col_Type, Col_OwnerID) VALUES ('Own', 5, 7)");
    EXPECT_EQ(Done({"view", "list", "-o", "csv"}),
              "id,name,type,owner_id,sort_index,users,groups\n1,Main,1,0,10000,0,0\n");
    EXPECT_EQ(Done({"view", "list", "--all", "-o", "plain"}),
              "1\tMain\t1\t0\t10000\t0\t0\n2\tOwn\t5\t7\t10000\t0\t0\n");
    ExpectRefusal({"view", "show", "Own"}, 3, "'Own'");
    EXPECT_EQ(Shown("view:2")["owner_id"], 7);
    Done({"view", "rename", "view:2", "Main"});
    EXPECT_EQ(Shown("view:2")["name"], "Main");
}

TEST_F(ViewCommandsTest, SetChangesWhatIsGivenAndNothingElse)
{
    Done({"view", "create", "Main", "--style", "3", "--creator", "amy"});
    json expected = Shown("Main");
    Done({"view", "set", "Main", "--description", "O'Brien\\"});
    expected["description"] = "O'Brien\\";
    EXPECT_EQ(Shown("Main"), expected);
    EXPECT_THAT(Run({"view", "set", "Main", "--sort-index", "3"}).err, StartsWith("changed /Main (view 1)"));
    expected["sort_index"] = 3;
    EXPECT_EQ(Shown("Main"), expected);
    EXPECT_THAT(Run({"view", "set", "Main", "--sort-index", "3"}).err, StartsWith("nothing to change"));
    ExpectRefusal({"view", "set", "Main"}, 2, "nothing to set");
}

TEST_F(ViewCommandsTest, TheDefaultViewIsNamedOnceOnly)
{
    ExpectRefusal({"view", "default"}, 3, "there is no default view");
    ExpectRefusal({"view", "default", "x"}, 3, "there is no default view");
    Done({"view", "create", "_Empty"});
    Done({"view", "create", "Other"});
    EXPECT_EQ(Done({"view", "default"}), "name  _Empty\n");
    ExpectRefusal({"view", "default", "OTHER"}, 4, "is taken by /Other");
    ExpectRefusal({"view", "default", " x"}, 2, "blank");
    Done({"view", "default", "O'Brien\\"});
    EXPECT_EQ(Done({"view", "default", "-o", "jsonl"}), "{\"name\":\"O'Brien\\\\\"}\n");
    ExpectRefusal({"view", "default", "Again"}, 4, "is called 'O'Brien\\' already");
}

TEST_F(ViewCommandsTest, TwoPlaceholdersAreNotGivenOneName)
{
    Execute("INSERT INTO qv_View (Col_Name) VALUES ('_Empty'), ('_Empty')");
    ExpectRefusal({"view", "default", "Main"}, 4, "2 views");
    ExpectRefusal({"view", "show", "_Empty"}, 4, "/_Empty (view 1), /_Empty (view 2)");
    EXPECT_EQ(Shown("view:2")["name"], "_Empty");
}

TEST_F(ViewCommandsTest, DeletingSaysWhatGoesAndAsks)
{
    Done({"view", "create", "Main"});
    Done({"group", "create", "/Main/A"});
    const ChildResult asked = Run({"view", "delete", "Main"});
    EXPECT_EQ(asked.exit, 9);
    EXPECT_THAT(asked.err, StartsWith("delete /Main (view 1), with 1 relation; 1 group directly below"));
    EXPECT_EQ(Shown("Main")["groups"], 1);
    Done({"view", "delete", "Main", "--yes"});
    EXPECT_EQ(Done({"view", "list", "-o", "json"}), "[]\n");
    EXPECT_EQ(Done({"group", "tree"}), "In no view:\n└── A (0)\n");
}

TEST_F(ViewCommandsTest, StampingMarksTheLinksOfUsersBelow)
{
    Done({"view", "create", "Other"});
    Done({"view", "create", "Main"});
    Done({"group", "create", "/Main/A/B", "--parents"});
    Execute("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES "
            "(2, 2, 1, 1), (1, 4, 1, 1)");
    EXPECT_EQ(Run({"view", "stamp", "Main"}).err, "stamped /Main (view 2)\n");
    Execute("CREATE TABLE Proof (stamped INTEGER CHECK (stamped = 1))");
    Execute("INSERT INTO Proof SELECT COUNT(*) FROM qv_Relation WHERE Col_ViewID = 2");
}

TEST_F(ViewCommandsTest, EachVerbHasHelpWithExamples)
{
    for (const char* verb : {"list", "show", "create", "set", "rename", "default", "delete", "stamp"}) {
        EXPECT_THAT(Done({"view", verb, "--help"}), HasSubstr("Examples:\n  qvadmin view ")) << verb;
    }
}
