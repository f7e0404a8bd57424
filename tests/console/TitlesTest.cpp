#include "ConsoleFixture.h"
#include "dbaccess/CAConnect.h"

using testing::HasSubstr;

namespace {

constexpr const char* kHardTitle = R"(Head of O'Brien\'s "%s"; --)";

class TitlesTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
        Done({"view", "create", "Main"});
        Done({"group", "create", "/Main/Sales"});
        Done({"group", "create", "/Main/Service"});
        Done({"user", "create", "amy", "--name", "Amy O'Neil\\"});
        Done({"user", "create", "rory"});
    }
};

} // namespace

TEST_F(TitlesTest, ATitleOfAnyTextIsGivenListedCheckedAndTaken)
{
    EXPECT_EQ(Run({"title", "give", "/Main/Sales", "amy", kHardTitle, "--description", "it's a\\b"}).err,
              std::string("amy (id 1) now holds 'Head of O'Brien\\'s \"%s\"; --' in /Main/Sales (id 1)\n"));
    EXPECT_EQ(Done({"title", "check", "/main/sales", "AMY", kHardTitle}), "true\n");
    EXPECT_EQ(Done({"title", "list", "/Main/Sales", "-o", "csv"}),
              "title,id,login,name,description\n"
              "\"Head of O'Brien\\'s \"\"%s\"\"; --\",1,amy,Amy O'Neil\\,it's a\\b\n");
    EXPECT_EQ(Done({"title", "list", "id:1", kHardTitle, "-o", "plain"}),
              Done({"title", "list", "id:1", "-o", "plain"}));
    EXPECT_EQ(Run({"title", "take", "/Main/Sales", "amy", kHardTitle}).exit, 0);
    const ChildResult gone = Run({"title", "check", "/Main/Sales", "amy", kHardTitle});
    EXPECT_EQ(gone.exit, 3);
    EXPECT_EQ(gone.out, "false\n");
    EXPECT_EQ(gone.err, "");
}

TEST_F(TitlesTest, GivingTwiceAddsNothingAndTakingTwiceTakesNothing)
{
    Done({"title", "give", "/Main/Sales", "amy", "Lead"});
    EXPECT_THAT(Run({"title", "give", "/Main/Sales", "amy", "Lead"}).err, HasSubstr("already holds 'Lead'"));
    EXPECT_EQ(Done({"title", "list", "/Main/Sales", "-o", "plain"}), "Lead\t1\tamy\tAmy O'Neil\\\\\t\n");
    Done({"title", "take", "/Main/Sales", "amy", "Lead"});
    EXPECT_THAT(Run({"title", "take", "/Main/Sales", "amy", "Lead"}).err, HasSubstr("did not hold 'Lead'"));
}

TEST_F(TitlesTest, TakingLeavesOtherTitlesUsersAndGroups)
{
    Done({"title", "give", "/Main/Sales", "amy", "Lead"});
    Done({"title", "give", "/Main/Sales", "amy", "Buyer"});
    Done({"title", "give", "/Main/Sales", "rory", "Lead"});
    Done({"title", "give", "/Main/Service", "amy", "Lead"});
    Done({"title", "take", "/Main/Sales", "amy", "Lead"});
    EXPECT_EQ(Done({"title", "list", "/Main/Sales", "-o", "plain"}),
              "Buyer\t1\tamy\tAmy O'Neil\\\\\t\nLead\t2\trory\trory\t\n");
    EXPECT_EQ(Done({"title", "list", "/Main/Sales", "Lead", "-o", "plain"}), "Lead\t2\trory\trory\t\n");
    EXPECT_EQ(Done({"user", "titles", "amy", "-o", "plain"}), "Buyer\t1\t/Main/Sales\t\nLead\t2\t/Main/Service\t\n");
}

TEST_F(TitlesTest, ATitleOfAUserWhoIsGoneShowsTheNameBesideIt)
{
    Done({"title", "give", "/Main/Sales", "amy", "Lead"});
    CAConnect conn;
    conn.Open(CString(std::string_view(DatabaseUrl())));
    conn.Execute("DELETE FROM qv_User WHERE Col_ID = 1");
    EXPECT_EQ(Done({"title", "list", "/Main/Sales", "-o", "plain"}), "Lead\t1\t\tAmy O'Neil\\\\\t\n");
}

TEST_F(TitlesTest, WhatIsNotThereOrNoTitleIsRefused)
{
    ExpectRefusal({"title", "give", "/Main/Sales", "nobody", "Lead"}, 3, "there is no user 'nobody'");
    ExpectRefusal({"title", "give", "/Main/Nowhere", "amy", "Lead"}, 3, "'/Main/Nowhere'");
    ExpectRefusal({"title", "give", "/Main", "amy", "Lead"}, 2, "is a view, not a group");
    ExpectRefusal({"title", "give", "/Main/Sales", "amy", ""}, 2, "title is empty");
    ExpectRefusal({"title", "list", "/Main/Sales", " Lead"}, 2, "begins or ends with a blank");
    EXPECT_EQ(Done({"title", "list", "/Main/Sales", "-o", "plain"}), "");
}
