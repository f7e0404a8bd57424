#include "ConsoleFixture.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace {

class MembersTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
        Done({"view", "create", "Main"});
        Done({"group", "create", "/Main/Sales"});
        Done({"group", "create", R"(/Main/Sales/R\/D \\ it's)"});
        Done({"user", "create", "amy", "--name", "Amy O'Neil\\"});
        Done({"user", "create", "rory"});
    }
};

} // namespace

TEST_F(MembersTest, UsersAreAddedToGroupsAndViewsOnce)
{
    EXPECT_EQ(Run({"member", "add", "/Main/Sales", "amy", "rory"}).err,
              "amy (id 1) is now a member of /Main/Sales (id 1)\nrory (id 2) is now a member of /Main/Sales (id 1)\n");
    EXPECT_EQ(Run({"member", "add", "/main/sales", "AMY"}).err,
              "amy (id 1) is a member already of /Main/Sales (id 1)\n");
    Done({"member", "add", "/Main", "amy"});
    EXPECT_EQ(Done({"member", "list", "/Main/Sales", "-o", "csv"}),
              "type,id,login,name\ngroup,2,,R/D \\ it's\nuser,1,amy,Amy O'Neil\\\nuser,2,rory,rory\n");
    EXPECT_EQ(Done({"member", "list", "view:1", "-o", "plain"}), "group\t1\t\tSales\nuser\t1\tamy\tAmy O'Neil\\\\\n");
    // The relation is there once.
    EXPECT_THAT(Run({"user", "delete", "amy"}).err, HasSubstr("amy (id 1), with 2 relations\n"));
}

TEST_F(MembersTest, OneWhoIsNotFoundKeepsAllFromBeingAdded)
{
    ExpectRefusal({"member", "add", "/Main/Sales", "amy", "nobody"}, 3, "there is no user 'nobody'");
    ExpectRefusal({"member", "add", "/Main/Sales", "x", "amy", "id:99", "x"}, 3,
                  "there are no users 'x', 'id:99'; `qvadmin user list` shows all\n");
    ExpectRefusal({"member", "add", "/Main/Nowhere", "amy"}, 3, "'/Main/Nowhere'");
    EXPECT_EQ(Done({"user", "groups", "amy", "-o", "plain"}), "");
}

TEST_F(MembersTest, RemovingEndsThatMembershipAndNoOther)
{
    Done({"member", "add", "/Main", "amy"});
    Done({"member", "add", "/Main/Sales", "amy", "rory"});
    // A relation of another type, and the role of the group's number.
    Execute("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, Col_RelType) "
            "VALUES (1, 2, 1, 1, 2), (1, 3, 1, 1, 1)");
    EXPECT_EQ(Run({"member", "remove", "/Main/Sales", "amy"}).err,
              "amy (id 1) is no longer a member of /Main/Sales (id 1)\n");
    EXPECT_EQ(Run({"member", "remove", "/Main/Sales", "amy"}).err, "amy (id 1) was no member of /Main/Sales (id 1)\n");
    EXPECT_EQ(Done({"user", "groups", "amy", "-o", "plain"}), "view\t1\t/Main\n");
    EXPECT_EQ(Done({"user", "groups", "rory", "-o", "plain"}), "group\t1\t/Main/Sales\n");
    EXPECT_THAT(Run({"user", "delete", "amy"}).err, HasSubstr("with 3 relations\n"));
}

TEST_F(MembersTest, TheGroupsOfAUserAreShownAsPathsThatCanBeGiven)
{
    Done({"member", "add", "id:2", "amy"});
    const std::string path = R"(/Main/Sales/R\/D \\ it's)";
    EXPECT_EQ(Done({"user", "groups", "amy", "-o", "csv"}), "type,id,path\ngroup,2," + path + "\n");
    EXPECT_EQ(Done({"member", "list", path, "-o", "plain"}), "user\t1\tamy\tAmy O'Neil\\\\\n");
}

TEST_F(MembersTest, DetachingSaysFromWhichAndAsks)
{
    Done({"member", "add", "/Main", "amy"});
    Done({"member", "add", "/Main/Sales", "amy", "rory"});
    // A membership in a group that is gone.
    Execute("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES (77, 2, 1, "
            "1)");
    const ChildResult asked = Run({"member", "detach", "amy"});
    EXPECT_EQ(asked.exit, 9);
    EXPECT_THAT(asked.err, StartsWith("leave /Main/Sales (id 1)\nleave id:77 (id 77)\nleave /Main (view 1)\n"));
    EXPECT_THAT(Done({"user", "groups", "amy"}), HasSubstr("/Main/Sales"));
    EXPECT_THAT(Run({"member", "detach", "amy", "--yes"}).err, HasSubstr("ended 3 memberships of amy (id 1)\n"));
    EXPECT_EQ(Done({"user", "groups", "amy", "-o", "plain"}), "");
    EXPECT_EQ(Done({"user", "groups", "rory", "-o", "plain"}), "group\t1\t/Main/Sales\n");
    EXPECT_EQ(Run({"member", "detach", "amy"}).err, "amy (id 1) is in no group and no view\n");
}
