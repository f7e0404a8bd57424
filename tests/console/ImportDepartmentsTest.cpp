#include "ConsoleFixture.h"
#include "dbaccess/CAConnect.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr const char* kPeople = EXAMPLES_DIRECTORY "/people.csv";

class ImportDepartmentsTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
    }

    /// Runs a command that is to succeed. @return what it printed.
    std::string Done(const std::vector<std::string>& words)
    {
        const ChildResult result = Run(words);
        EXPECT_EQ(result.exit, 0) << result.err;
        return result.out;
    }

    /// Imports rows of login and department.
    ChildResult Import(const std::string& rows, const std::vector<std::string>& more = {"--update"})
    {
        WriteFile("in.csv", "login,department\n" + rows);
        std::vector<std::string> words = {"user", "import", "in.csv", "--departments", "Main"};
        words.insert(words.end(), more.begin(), more.end());
        return Run(words);
    }

    /// The groups and views that a user is in, a line each.
    std::string PlacesOf(const std::string& user) { return Done({"user", "groups", user, "-o", "plain"}); }

    std::string AllGroups() { return Done({"group", "list", "-o", "plain"}); }

    std::string Shown(const std::string& user) { return Done({"user", "show", user, "-o", "plain"}); }

    void Execute(const std::string& sql)
    {
        CAConnect conn;
        conn.Open(CString(std::string_view(DatabaseUrl())));
        conn.Execute(sql.c_str());
    }
};

} // namespace

TEST_F(ImportDepartmentsTest, MissingGroupsAndTheViewAreMadeAndUsersPlacedInTheLast)
{
    const ChildResult result = Import("amy,Head office/Sales\nrory,head OFFICE/Sales/North\nkim,\n");
    EXPECT_EQ(result.exit, 0);
    EXPECT_THAT(result.err, HasSubstr("\ndepartments: made 3 groups and the view Main\n"));
    EXPECT_EQ(PlacesOf("amy"), "group\t2\t/Main/Head office/Sales\n");
    EXPECT_EQ(PlacesOf("rory"), "group\t3\t/Main/Head office/Sales/North\n");
    EXPECT_EQ(PlacesOf("kim"), "");
    EXPECT_THAT(Shown("amy"), AllOf(HasSubstr("\ndepartment\tHead office/Sales\n"), HasSubstr("\ndepartment_id\t2\n")));
    EXPECT_THAT(Shown("kim"), HasSubstr("\ndepartment_id\t0\n"));
}

TEST_F(ImportDepartmentsTest, TheSameFileAgainChangesNothing)
{
    const std::vector<std::string> words = {"user",    "import",        kPeople, "--result",
                                            "out.csv", "--departments", "Main",  "--update"};
    Done(words);
    const std::string groups = AllGroups();
    const std::string tree = Done({"group", "tree", "--users"});
    const ChildResult again = Run(words);
    EXPECT_EQ(again.exit, 0);
    EXPECT_THAT(again.err, AllOf(HasSubstr(" 320 unchanged, "), HasSubstr("\ndepartments: made 0 groups\n")));
    EXPECT_EQ(AllGroups(), groups);
    EXPECT_EQ(Done({"group", "tree", "--users"}), tree);
    EXPECT_THAT(Run({"user", "delete", "jiayi.zhou"}).err, HasSubstr(", with 1 relation\n"));
}

TEST_F(ImportDepartmentsTest, WithoutUpdateThoseWhoAreThereStayWhereTheyAre)
{
    Import("amy,Sales\n");
    const ChildResult again = Import("amy,Service\n", {});
    EXPECT_EQ(again.exit, 7);
    EXPECT_THAT(again.err, HasSubstr("\ndepartments: made 0 groups\n"));
    EXPECT_EQ(PlacesOf("amy"), "group\t1\t/Main/Sales\n");
}

TEST_F(ImportDepartmentsTest, AUserOfAChangedDepartmentMovesAndStaysElsewhere)
{
    Import("amy,Sales/North\n");
    Done({"view", "create", "Other"});
    Done({"group", "create", "/Other/Choir"});
    Done({"group", "create", "/Main/Club"});
    Done({"member", "add", "/Other/Choir", "amy"});
    Done({"member", "add", "/Main/Club", "amy"});
    EXPECT_THAT(Import("amy,Sales/South\n").err, HasSubstr(" 1 updated, "));
    EXPECT_EQ(PlacesOf("amy"), "group\t3\t/Other/Choir\ngroup\t4\t/Main/Club\ngroup\t5\t/Main/Sales/South\n");
    EXPECT_THAT(Shown("amy"), AllOf(HasSubstr("department\tSales/South\n"), HasSubstr("department_id\t5\n")));
}

TEST_F(ImportDepartmentsTest, ADepartmentOfAnotherViewIsNotLeft)
{
    Import("amy,Sales\n");
    const ChildResult other = Run({"user", "import", "in.csv", "--departments", "/Other", "--update"});
    EXPECT_THAT(other.err, HasSubstr("made 1 group and the view Other"));
    EXPECT_EQ(PlacesOf("amy"), "group\t1\t/Main/Sales\ngroup\t2\t/Other/Sales\n");
}

TEST_F(ImportDepartmentsTest, TheOldDepartmentIsKnownByItsTextWhereItsIdIsNot)
{
    Import("amy,Sales\n");
    Execute("UPDATE qv_User SET Col_DeptID = 0");
    Import("amy,Service\n");
    EXPECT_EQ(PlacesOf("amy"), "group\t2\t/Main/Service\n");
}

TEST_F(ImportDepartmentsTest, AMembershipThatWasEndedIsMadeAgain)
{
    Import("amy,Sales\n");
    Done({"member", "remove", "/Main/Sales", "amy"});
    EXPECT_THAT(Import("amy,Sales\n", {"--update", "--dry-run"}).err, HasSubstr(" 1 updated, "));
    EXPECT_EQ(PlacesOf("amy"), "");
    EXPECT_THAT(Import("amy,Sales\n").err, HasSubstr(" 1 updated, "));
    EXPECT_EQ(PlacesOf("amy"), "group\t1\t/Main/Sales\n");
}

TEST_F(ImportDepartmentsTest, ADryRunSaysHowManyGroupsWouldBeMadeAndMakesNone)
{
    const std::string rows = "amy,Sales/North\nrory,sales/South\nkim,Sales/NORTH\n";
    const ChildResult result = Import(rows, {"--dry-run"});
    EXPECT_EQ(result.exit, 0);
    EXPECT_THAT(result.err, HasSubstr("\ndepartments: would make 3 groups and the view Main\n"));
    EXPECT_EQ(AllGroups(), "");
    EXPECT_EQ(Done({"view", "list", "-o", "plain"}), "");
    Import("zoe,Sales/North\n");
    EXPECT_THAT(Import(rows, {"--dry-run"}).err, HasSubstr("would make 1 group\n"));
    EXPECT_THAT(Import("zoe,Sales/North\n", {"--update", "--dry-run"}).err, HasSubstr(" 1 unchanged, "));
}

TEST_F(ImportDepartmentsTest, AnyNameGoesIn)
{
    const ChildResult result =
        Import("amy,O'Brien's/R\\/D \\\\ x/Zespół Żółw\nrory,o'brien's/r\\/d \\\\ X/ZESPÓŁ ŻÓŁW\n");
    EXPECT_THAT(result.err, HasSubstr("made 3 groups"));
    EXPECT_EQ(PlacesOf("rory"), PlacesOf("amy"));
    EXPECT_EQ(Done({"user", "groups", "amy", "-o", "csv"}),
              "type,id,path\ngroup,3,/Main/O'Brien's/R\\/D \\\\ x/Zespół Żółw\n");
}

TEST_F(ImportDepartmentsTest, ADepartmentThatIsNoPathFailsItsRowAlone)
{
    const ChildResult result = Import("amy,Sales//North\nrory,Sales/ North\nkim,Sales\\North\nzoe,Sales\n");
    EXPECT_EQ(result.exit, 7);
    EXPECT_THAT(result.err, AllOf(HasSubstr("in.csv:2: "), HasSubstr("in.csv:3: "), HasSubstr("in.csv:4: "),
                                  HasSubstr("made 1 group and")));
    EXPECT_EQ(Done({"user", "list", "-o", "plain"}).substr(0, 6), "1\tzoe\t");
}

TEST_F(ImportDepartmentsTest, AnAmbiguousDepartmentFailsItsRow)
{
    Import("amy,Sales\n");
    Execute("INSERT INTO qv_Group (Col_ID, Col_Name) VALUES (9, 'SALES')");
    Execute(
        "INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES (1, 4, 9, 2)");
    const ChildResult result = Import("rory,Sales/North\n");
    EXPECT_EQ(result.exit, 7);
    EXPECT_THAT(result.err, HasSubstr("in.csv:2: the department 'Sales' may be any of the groups 1, 9\n"));
    EXPECT_EQ(Run({"user", "exists", "rory"}).exit, 3);
}

TEST_F(ImportDepartmentsTest, GroupsOfARowThatTheEngineRefusesAreNotFoundAgain)
{
    Execute("CREATE TRIGGER refuse BEFORE INSERT ON qv_User WHEN NEW.Col_LoginName = 'amy' "
            "BEGIN SELECT RAISE(ABORT, 'not her'); END");
    const ChildResult result = Import("amy,Sales/North\nrory,Sales/North\n");
    EXPECT_EQ(result.exit, 7);
    EXPECT_THAT(result.err, AllOf(HasSubstr("not her"), HasSubstr("made 2 groups and the view Main")));
    EXPECT_EQ(PlacesOf("rory"), "group\t2\t/Main/Sales/North\n");
    EXPECT_THAT(Shown("rory"), HasSubstr("department_id\t2\n"));
}

TEST_F(ImportDepartmentsTest, WhatCannotBeTheViewIsRefusedBeforeAnything)
{
    WriteFile("in.csv", "login,department\namy,Sales\n");
    WriteFile("plain.csv", "login\namy\n");
    EXPECT_EQ(Run({"user", "import", "in.csv", "--departments", "view:7"}).exit, 3);
    EXPECT_EQ(Run({"user", "import", "in.csv", "--departments", "/Main/Sales"}).exit, 2);
    EXPECT_EQ(Run({"user", "import", "in.csv", "--departments", ""}).exit, 2);
    const ChildResult noColumn = Run({"user", "import", "plain.csv", "--departments", "Main"});
    EXPECT_EQ(noColumn.exit, 2);
    EXPECT_THAT(noColumn.err, HasSubstr("plain.csv has no column department, which --departments needs"));
    EXPECT_EQ(Done({"user", "count"}), "0\n");
}

TEST_F(ImportDepartmentsTest, WithoutTheOptionADepartmentIsATextAndNoMore)
{
    WriteFile("in.csv", "login,department\namy,Sales//North\n");
    EXPECT_THAT(Run({"user", "import", "in.csv"}).err, Not(HasSubstr("departments:")));
    EXPECT_THAT(Shown("amy"), AllOf(HasSubstr("department\tSales//North\n"), HasSubstr("department_id\t0\n")));
    EXPECT_EQ(AllGroups(), "");
}
