#include "ConsoleFixture.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr const char* kDepartmentPeople = EXAMPLES_DIRECTORY "/people.csv";

class ImportDepartmentsTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
    }

    /// Imports rows of login and department.
    ChildResult Import(const std::string& rows, const std::vector<std::string>& more = {"--update"})
    {
        return ImportInto({"Main", "--make-view"}, rows, more);
    }

    ChildResult ImportInto(const std::vector<std::string>& view, const std::string& rows,
                           const std::vector<std::string>& more)
    {
        WriteFile("in.csv", "login,department\n" + rows);
        std::vector<std::string> words = {"user", "import", "in.csv", "--departments"};
        words.insert(words.end(), view.begin(), view.end());
        words.insert(words.end(), more.begin(), more.end());
        return Run(words);
    }

    /// The groups and views that a user is in, a line each.
    std::string PlacesOf(const std::string& user) { return Done({"user", "groups", user, "-o", "plain"}); }

    std::string AllGroups() { return Done({"group", "list", "-o", "plain"}); }

    std::string Shown(const std::string& user) { return Done({"user", "show", user, "-o", "plain"}); }
};

} // namespace

TEST_F(ImportDepartmentsTest, MissingGroupsAndTheViewAreMadeAndUsersPlacedInTheLast)
{
    const ChildResult result = Import("amy,Head office/Sales\nrory,head OFFICE/Sales/North\nkim,\n");
    EXPECT_EQ(result.exit, 0);
    EXPECT_THAT(result.err, HasSubstr("\ndepartments: made 3 groups and the view /Main\n"
                                      "  /Main/Head office: 0 users\n"
                                      "  /Main/Head office/Sales: 1 user\n"
                                      "  /Main/Head office/Sales/North: 1 user\n"));
    EXPECT_EQ(PlacesOf("amy"), "group\t2\t/Main/Head office/Sales\n");
    EXPECT_EQ(PlacesOf("rory"), "group\t3\t/Main/Head office/Sales/North\n");
    EXPECT_EQ(PlacesOf("kim"), "");
    EXPECT_THAT(Shown("amy"), AllOf(HasSubstr("\ndepartment\tHead office/Sales\n"), HasSubstr("\ndepartment_id\t2\n")));
    EXPECT_THAT(Shown("kim"), HasSubstr("\ndepartment_id\t0\n"));
}

TEST_F(ImportDepartmentsTest, TheSameFileAgainChangesNothing)
{
    const std::vector<std::string> words = {"user",          "import", kDepartmentPeople, "--result",   "out.csv",
                                            "--departments", "Main",   "--update",        "--make-view"};
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
    EXPECT_EQ(again.exit, 0);
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
    const ChildResult other = Run({"user", "import", "in.csv", "--departments", "/Other", "--update", "--make-view"});
    EXPECT_THAT(other.err, HasSubstr("made 1 group and the view /Other\n  /Other/Sales: 1 user\n"));
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

TEST_F(ImportDepartmentsTest, ADryRunNamesTheGroupsThatWouldBeMadeAndMakesNone)
{
    const std::string rows = "amy,Sales/North\nrory,sales/South\nkim,Sales/NORTH\n";
    const ChildResult result = Import(rows, {"--dry-run"});
    EXPECT_EQ(result.exit, 0);
    EXPECT_THAT(result.err, HasSubstr("\ndepartments: would make 3 groups and the view /Main\n"
                                      "  /Main/Sales: 0 users\n"
                                      "  /Main/Sales/North: 2 users\n"
                                      "  /Main/Sales/South: 1 user\n"));
    EXPECT_EQ(AllGroups(), "");
    EXPECT_EQ(Done({"view", "list", "-o", "plain"}), "");
    Import("zoe,Sales/North\n");
    EXPECT_THAT(Import(rows, {"--dry-run"}).err, HasSubstr("would make 1 group\n  /Main/Sales/South: 1 user\n"));
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
    EXPECT_THAT(result.err, AllOf(HasSubstr("not her"), HasSubstr("made 2 groups and the view /Main\n"
                                                                  "  /Main/Sales: 0 users\n"
                                                                  "  /Main/Sales/North: 1 user\n")));
    EXPECT_EQ(PlacesOf("rory"), "group\t2\t/Main/Sales/North\n");
    EXPECT_THAT(Shown("rory"), HasSubstr("department_id\t2\n"));
}

TEST_F(ImportDepartmentsTest, WhatCannotBeTheViewIsRefusedBeforeAnything)
{
    WriteFile("in.csv", "login,department\namy,Sales\n");
    WriteFile("plain.csv", "login\namy\n");
    EXPECT_EQ(Run({"user", "import", "in.csv", "--departments", "view:7", "--make-view"}).exit, 3);
    EXPECT_EQ(Run({"user", "import", "in.csv", "--departments", "/Main/Sales", "--make-view"}).exit, 2);
    EXPECT_EQ(Run({"user", "import", "in.csv", "--departments", "", "--make-view"}).exit, 2);
    EXPECT_EQ(Run({"user", "import", "in.csv", "--make-view"}).exit, 2);
    const ChildResult noColumn = Run({"user", "import", "plain.csv", "--departments", "Main"});
    EXPECT_EQ(noColumn.exit, 2);
    EXPECT_THAT(noColumn.err, HasSubstr("plain.csv has no column department, which --departments needs"));
    EXPECT_EQ(Done({"user", "count"}), "0\n");
}

TEST_F(ImportDepartmentsTest, AMisspeltViewOrDepartmentIsNotMade)
{
    const ChildResult noView = ImportInto({"Mian"}, "amy,Sales\n", {});
    EXPECT_EQ(noView.exit, 3);
    EXPECT_EQ(noView.err, "qvadmin: there is no view 'Mian'; `qvadmin view list` shows all, --make-view makes it\n");
    Import("amy,Sales/North\n");
    const std::string rows = "rory,Sales/Nroth\nkim,sales/north\n";
    for (const auto& [option, exit] : {std::pair{"--dry-run", 8}, std::pair{"--update", 7}}) {
        const ChildResult result = ImportInto({"Main"}, rows, {"--no-new-groups", option});
        EXPECT_EQ(result.exit, exit);
        EXPECT_THAT(result.err, AllOf(HasSubstr("in.csv:2: there is no group '/Main/Sales/Nroth'\n"),
                                      HasSubstr("\ndepartments: ")));
    }
    EXPECT_EQ(Run({"user", "exists", "rory"}).exit, 3);
    EXPECT_EQ(PlacesOf("kim"), "group\t2\t/Main/Sales/North\n");
    EXPECT_EQ(AllGroups().find("Nroth"), std::string::npos);
    EXPECT_EQ(Done({"view", "list", "-o", "plain"}).find("Mian"), std::string::npos);
}

TEST_F(ImportDepartmentsTest, NoGroupIsMadeForARowThatIsRefused)
{
    WriteFile("in.csv", "login,department,super\namy,Sales,yes\nrory,Service,\n");
    const ChildResult result = Run({"user", "import", "in.csv", "--departments", "Main", "--make-view"});
    EXPECT_EQ(result.exit, 7);
    EXPECT_THAT(result.err, HasSubstr("made 1 group and the view /Main\n  /Main/Service: 1 user\n"));
}

TEST_F(ImportDepartmentsTest, WithoutTheOptionATextIsNotChangedWithoutItsMembership)
{
    Import("amy,Sales\nkim,\n");
    WriteFile("in.csv", "login,department,note\namy,Service,x\nkim,Anything,x\n");
    const ChildResult result = Run({"user", "import", "in.csv", "--update"});
    EXPECT_EQ(result.exit, 7);
    EXPECT_THAT(result.err,
                HasSubstr("in.csv:2: the department changes, and amy would stay a member of /Main/Sales (id "
                          "1); give --departments VIEW, and both change\n"));
    EXPECT_THAT(Shown("amy"), AllOf(HasSubstr("department\tSales\n"), HasSubstr("note\t\n")));
    EXPECT_THAT(Shown("kim"), HasSubstr("department\tAnything\n"));
    // Where other programs have left no id, the text says which group is meant.
    Execute("UPDATE qv_User SET Col_DeptID = 0");
    EXPECT_EQ(Run({"user", "import", "in.csv", "--update"}).exit, 7);
    Done({"member", "remove", "/Main/Sales", "amy"});
    Done({"user", "import", "in.csv", "--update"});
    EXPECT_THAT(Shown("amy"), HasSubstr("department\tService\n"));
}

TEST_F(ImportDepartmentsTest, SettingTheDepartmentOfAUserSetsTextIdAndMembership)
{
    Import("amy,Sales/North\n");
    Done({"group", "create", "/Main/Service"});
    for (const auto& [argument, text, path] :
         {std::tuple{"/main/sales", "sales", "/Main/Sales"}, std::tuple{"id:3", "Service", "/Main/Service"},
          std::tuple{"Sales/North", "Sales/North", "/Main/Sales/North"}}) {
        Done({"user", "set", "amy", "--department", argument});
        EXPECT_THAT(Shown("amy"), HasSubstr(std::string("department\t") + text + "\n"));
        const std::string places = PlacesOf("amy");
        EXPECT_EQ(places.substr(places.rfind('\t') + 1), std::string(path) + "\n");
        EXPECT_THAT(Shown("amy"), HasSubstr("department_id\t" + places.substr(6, 1) + "\n"));
    }
    EXPECT_THAT(Run({"user", "set", "amy", "--department", "Sales/North"}).err, HasSubstr("nothing to change in amy"));
    Done({"member", "remove", "/Main/Sales/North", "amy"});
    EXPECT_THAT(Run({"user", "set", "amy", "--department", "Sales/North"}).err, HasSubstr("changed amy"));
    Done({"user", "set", "amy", "--department", ""});
    EXPECT_EQ(PlacesOf("amy"), "");
    EXPECT_THAT(Shown("amy"), AllOf(HasSubstr("department\t\n"), HasSubstr("department_id\t0\n")));
    Done({"user", "create", "rory", "--department", "Service"});
    EXPECT_EQ(PlacesOf("rory"), "group\t3\t/Main/Service\n");
}

TEST_F(ImportDepartmentsTest, ADepartmentWithoutAGroupIsRefusedUnlessItIsATextAlone)
{
    Import("amy,Sales\n");
    const std::string before = Shown("amy");
    for (const char* department : {"Slaes", "/Main/Slaes", "id:77", "Sales//North", "/Main"}) {
        const ChildResult result = Run({"user", "set", "amy", "--department", department});
        EXPECT_THAT(result.exit, testing::AnyOf(2, 3)) << department;
        EXPECT_EQ(Shown("amy"), before);
        EXPECT_NE(Run({"user", "create", "rory", "--department", department}).exit, 0);
    }
    EXPECT_EQ(Run({"user", "set", "amy", "--department", "Slaes"}).err,
              "qvadmin: there is no group 'Slaes' below any view; make it with `qvadmin group create`, or set the text "
              "alone with --department-text\n");
    Done({"user", "set", "amy", "--department-text", "Slaes"});
    EXPECT_THAT(Shown("amy"), AllOf(HasSubstr("department\tSlaes\n"), HasSubstr("department_id\t1\n")));
    EXPECT_EQ(PlacesOf("amy"), "group\t1\t/Main/Sales\n");
    EXPECT_EQ(Run({"user", "set", "amy", "--department-text", "x", "--department", "Sales"}).exit, 2);
    // A text that several groups fit.
    Done({"view", "create", "Other"});
    Done({"group", "create", "/Other/Sales"});
    const ChildResult several = Run({"user", "set", "amy", "--department", "Sales"});
    EXPECT_EQ(several.exit, 4);
    EXPECT_THAT(several.err, HasSubstr("may be any of the groups /Main/Sales (id 1), /Other/Sales (id 2); write id:1"));
}

TEST_F(ImportDepartmentsTest, InADirectoryWithoutGroupsADepartmentIsAText)
{
    Done({"user", "create", "amy", "--department", "Sales"});
    Done({"user", "set", "amy", "--department", "Service"});
    EXPECT_THAT(Shown("amy"), AllOf(HasSubstr("department\tService\n"), HasSubstr("department_id\t0\n")));
}

TEST_F(ImportDepartmentsTest, WithoutTheOptionADepartmentIsATextAndNoMore)
{
    WriteFile("in.csv", "login,department\namy,Sales//North\n");
    EXPECT_THAT(Run({"user", "import", "in.csv"}).err, Not(HasSubstr("departments:")));
    EXPECT_THAT(Shown("amy"), AllOf(HasSubstr("department\tSales//North\n"), HasSubstr("department_id\t0\n")));
    EXPECT_EQ(AllGroups(), "");
}
