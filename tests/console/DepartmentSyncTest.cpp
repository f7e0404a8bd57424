#include "management/organisation/DepartmentSync.h"

#include "ConsoleFixture.h"
#include "basefun/ItemTypes.h"
#include "console/Render.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "management/organisation/Organisation.h"
#include "schema/Schema.h"
#include "tests/support/CountingSession.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <sstream>

using namespace console;
using namespace management;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr ItemKey kMain{kItemTypeView, 1};

ItemKey Group(int id) { return {kItemTypeGroup, id}; }

class DepartmentSyncTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_conn.Open(std::make_unique<CountingSession>(dbaccess::FindDriver("sqlite")(":memory:"), m_counts));
        schema::Upgrade(m_conn);
        Execute("INSERT INTO qv_View (Col_ID, Col_Name, Col_Type) VALUES (1, 'Main', 1), (2, 'Other', 1)");
        AddGroup(1, "Sales", kMain);
        AddGroup(2, "North", Group(1));
        AddGroup(3, "Service", kMain);
        m_counts.executed.clear();
    }

    void Execute(const std::string& sql) { m_conn.Execute(sql.c_str()); }

    void AddGroup(int id, const std::string& name, ItemKey parent)
    {
        Execute(fmt::format("INSERT INTO qv_Group (Col_ID, Col_Name) VALUES ({}, '{}')", id, name));
        Organisation(m_conn).AddMember(parent, Group(id));
    }

    /// Adds a user whose row has this department.
    void AddUser(int id, int departmentId, const std::string& department)
    {
        Execute(fmt::format("INSERT INTO qv_User (Col_ID, Col_LoginName, Col_DeptID, Col_DeptInfo) VALUES ({0}, "
                            "'user{0}', {1}, '{2}')",
                            id, departmentId, department));
        m_counts.executed.clear();
    }

    /// "1 Sales", of each user by id.
    std::vector<std::string> Departments()
    {
        std::vector<std::string> departments;
        CARecordset rows;
        rows.Open("SELECT Col_DeptID, Col_DeptInfo FROM qv_User ORDER BY Col_ID", &m_conn, adbcCursorStatic,
                  adbcLockOptimistic, adbcCommandTable);
        for (; rows.IsEOF() == 0; rows.MoveNext()) {
            departments.push_back(
                fmt::format("{} {}", rows.GetValueToStr(1, true).View(), rows.GetValueToStr(2, true).View()));
        }
        return departments;
    }

    std::size_t Rename(int group, const std::string& name)
    {
        Organisation before(m_conn);
        before.ChangeGroup(group, {name, {}, {}, {}});
        m_counts.executed.clear();
        return SyncDepartments(before, Group(group));
    }

    std::size_t Move(int group, ItemKey from, ItemKey to)
    {
        Organisation before(m_conn);
        before.RemoveMember(from, Group(group));
        before.AddMember(to, Group(group));
        m_counts.executed.clear();
        return SyncDepartments(before, Group(group));
    }

    std::size_t Delete(int group)
    {
        Organisation before(m_conn);
        std::vector<int> ids;
        for (const ItemKey key : before.OrphanedBy(Group(group))) {
            ids.push_back(key.id);
        }
        before.DeleteGroups(ids);
        m_counts.executed.clear();
        return SyncDepartments(before, Group(group));
    }

    SessionCounts m_counts;
    CAConnect m_conn;
};

} // namespace

TEST_F(DepartmentSyncTest, ARenamedGroupIsRenamedInTheDepartmentsBelowAndInNoOthers)
{
    AddUser(1, 1, "sales");
    AddUser(2, 2, "Sales/North");
    AddUser(3, 0, "SALES/north");
    AddUser(4, 3, "Service");
    AddUser(5, 0, "Salesmen");
    AddUser(6, 0, "");
    AddUser(7, 1, "in the tower");
    AddUser(8, 0, "Sales\\");
    EXPECT_EQ(Rename(1, "O'Br\\ien/x"), 4U);
    EXPECT_THAT(Departments(), ElementsAre("1 O'Br\\\\ien\\/x", "2 O'Br\\\\ien\\/x/North", "0 O'Br\\\\ien\\/x/North",
                                           "3 Service", "0 Salesmen", "0 ", "1 O'Br\\\\ien\\/x", "0 Sales\\"));
    EXPECT_EQ(Rename(1, "Sales"), 4U);
    EXPECT_EQ(Rename(2, "North"), 0U);
}

TEST_F(DepartmentSyncTest, AMovedGroupTakesTheDepartmentsBelowAlong)
{
    AddUser(1, 2, "Sales/North");
    AddUser(2, 0, "sales/north");
    AddUser(3, 1, "Sales");
    EXPECT_EQ(Move(2, Group(1), Group(3)), 2U);
    EXPECT_THAT(Departments(), ElementsAre("2 Service/North", "0 Service/North", "1 Sales"));
    EXPECT_EQ(Move(3, kMain, Group(1)), 2U);
    EXPECT_THAT(Departments(), ElementsAre("2 Sales/Service/North", "0 Sales/Service/North", "1 Sales"));
    // A department says nothing of the view.
    EXPECT_EQ(Move(1, kMain, {kItemTypeView, 2}), 0U);
}

TEST_F(DepartmentSyncTest, TheDepartmentOfADeletedGroupIsEmptied)
{
    AddUser(1, 1, "Sales");
    AddUser(2, 2, "Sales/North");
    AddUser(3, 0, "Sales/North");
    AddUser(4, 3, "Service");
    AddUser(5, 2, "Service");
    AddUser(6, 3, "Sales");
    EXPECT_EQ(Delete(1), 5U);
    EXPECT_THAT(Departments(), ElementsAre("0 ", "0 ", "0 ", "3 Service", "0 Service", "3 "));
}

TEST_F(DepartmentSyncTest, AGroupInSeveralPlacesKeepsTheTextsOfThePlacesThatDidNotChange)
{
    Organisation(m_conn).AddMember(Group(3), Group(2));
    AddUser(1, 2, "Sales/North");
    AddUser(2, 2, "service/north");
    AddUser(3, 0, "Service/North");
    EXPECT_EQ(Rename(1, "Sellers"), 1U);
    EXPECT_THAT(Departments(), ElementsAre("2 Sellers/North", "2 service/north", "0 Service/North"));
    // It stays in its other places.
    EXPECT_EQ(Delete(1), 1U);
    EXPECT_THAT(Departments(), ElementsAre("2 Service/North", "2 service/north", "0 Service/North"));
}

TEST_F(DepartmentSyncTest, ATextThatStillNamesAGroupStaysUnlessTheIdSaysOtherwise)
{
    AddGroup(4, "Sales", {kItemTypeView, 2});
    AddUser(1, 0, "Sales");
    AddUser(2, 4, "Sales");
    AddUser(3, 1, "Sales");
    AddUser(4, 1, "Service");
    EXPECT_EQ(Rename(1, "Sellers"), 2U);
    EXPECT_THAT(Departments(), ElementsAre("0 Sales", "4 Sales", "1 Sellers", "1 Sellers"));
}

TEST_F(DepartmentSyncTest, AViewThatIsDeletedChangesOnlyDepartmentsThatItLedTo)
{
    Organisation before(m_conn);
    before.AddMember({kItemTypeView, 2}, Group(2));
    AddUser(1, 2, "North");
    AddUser(2, 2, "Sales/North");
    const Organisation snapshot(m_conn);
    before.DeleteView(2);
    EXPECT_EQ(SyncDepartments(snapshot, {kItemTypeView, 2}), 1U);
    EXPECT_THAT(Departments(), ElementsAre("2 Sales/North", "2 Sales/North"));
    const Organisation later(m_conn);
    before.DeleteView(1);
    EXPECT_EQ(SyncDepartments(later, kMain), 0U);
}

TEST_F(DepartmentSyncTest, GroupsThatHangBelowThemselvesAreRenamedToo)
{
    Organisation(m_conn).AddMember(Group(2), Group(1));
    AddUser(1, 1, "Sales/North/Sales");
    AddUser(2, 2, "Sales/North");
    EXPECT_EQ(Rename(1, "S"), 2U);
    EXPECT_THAT(Departments(), ElementsAre("1 S/North/S", "2 S/North"));
}

TEST_F(DepartmentSyncTest, OneStatementRenamesTheDepartmentOfThousands)
{
    Execute("WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 6000) "
            "INSERT INTO qv_User (Col_ID, Col_LoginName, Col_DeptID, Col_DeptInfo) "
            "SELECT i, 'user' || i, 1 + i % 2, CASE i % 2 WHEN 0 THEN 'Sales' ELSE 'Sales/North' END FROM n");
    EXPECT_EQ(Rename(1, "Sellers"), 6000U);
    EXPECT_EQ(m_counts.executed.size(), 2U);
    // Those who are in step already are not written again, which takes a list of the others.
    AddUser(6001, 2, "North");
    Execute("UPDATE qv_User SET Col_DeptInfo = 'S/North' WHERE Col_ID = 1");
    EXPECT_EQ(Rename(1, "S"), 6000U);
    EXPECT_EQ(m_counts.executed.size(), 1U + 6U);
}

TEST_F(DepartmentSyncTest, WhoLeavesTheGroupOfHisDepartmentHasNone)
{
    AddUser(1, 1, "Sales");
    AddUser(2, 0, "SALES");
    AddUser(3, 3, "Service");
    AddUser(4, 1, "Service");
    AddUser(5, 1, "in the tower");
    const Organisation organisation(m_conn);
    EXPECT_EQ(SyncLeft(organisation, Group(1), {1, 2, 3, 4, 5}), 4U);
    EXPECT_THAT(Departments(), ElementsAre("0 ", "0 ", "3 Service", "0 Service", "0 "));
    EXPECT_EQ(SyncLeft(organisation, kMain, {3}), 0U);
}

TEST_F(DepartmentSyncTest, WhoJoinsTheGroupThatHisDepartmentNamesGetsItsId)
{
    AddUser(1, 0, "sales/north");
    AddUser(2, 77, "Sales/North");
    AddUser(3, 3, "Sales/North");
    AddUser(4, 0, "");
    EXPECT_EQ(SyncJoined(Organisation(m_conn), Group(2), {1, 2, 3, 4}), 2U);
    EXPECT_THAT(Departments(), ElementsAre("2 sales/north", "2 Sales/North", "3 Sales/North", "0 "));
    m_counts.executed.clear();
    EXPECT_EQ(SyncJoined(Organisation(m_conn), Group(2), {}), 0U);
    EXPECT_THAT(m_counts.executed, IsEmpty());
}

// ---- The program ----------------------------------------------------------------------------------------------------

namespace {

class DepartmentCommandsTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
        WriteFile("in.csv", "login,department\namy,Sales/North\nrory,sales\nkim,Service\n");
        Told({"user", "import", "in.csv", "--departments", "Main", "--make-view"});
    }

    /// Imports what a list of users gives, which is to change nothing.
    void ExpectInStep()
    {
        std::ostringstream file;
        WriteCsvRow({"login", "department"}, file);
        for (const auto& user : nlohmann::json::parse(Run({"user", "list", "-o", "json"}).out)) {
            WriteCsvRow({user["login"], user["department"]}, file);
        }
        WriteFile("out.csv", file.str());
        const ChildResult again = Run({"user", "import", "out.csv", "--departments", "Main", "--update"});
        EXPECT_THAT(again.err, HasSubstr(" 0 updated, 3 unchanged, "));
        EXPECT_THAT(again.err, HasSubstr("departments: made 0 groups\n"));
    }
};

} // namespace

TEST_F(DepartmentCommandsTest, RenameMoveAndDeleteTellHowManyDepartmentsChangedAndAnImportUndoesNothing)
{
    EXPECT_EQ(Told({"group", "rename", "/Main/Sales", "O'Br\\ien/x"}),
              "renamed /Main/Sales (id 1) to O'Br\\ien/x; the department of 2 people was changed with it\n");
    ExpectInStep();
    EXPECT_EQ(
        Told({"group", "move", "id:2", "/Main/Service"}),
        "moved /Main/O'Br\\\\ien\\/x/North (id 2) to /Main/Service (id 3); the department of 1 person was changed "
        "with it\n");
    ExpectInStep();
    EXPECT_THAT(Told({"group", "delete", "id:3", "--recursive", "--yes"}),
                HasSubstr("deleted 2 groups; the department of 2 people was changed with it\n"));
    ExpectInStep();
    EXPECT_EQ(Told({"group", "rename", "id:1", "Sales"}),
              "renamed /Main/O'Br\\\\ien\\/x (id 1) to Sales; the department of 1 person was changed with it\n");
    EXPECT_EQ(Told({"view", "rename", "Main", "Company"}), "renamed /Main (view 1) to Company\n");
    EXPECT_EQ(Run({"user", "list", "-o", "plain", "--match", "rory"}).out, "2\trory\trory\t0\t\t\tSales\t\tfalse\n");
}

TEST_F(DepartmentCommandsTest, MembersWhoLeaveTheirDepartmentHaveNone)
{
    EXPECT_EQ(Told({"member", "remove", "/Main/Sales", "rory"}),
              "rory (id 2) is no longer a member of /Main/Sales (id 1)\nthe department of 1 person was changed with "
              "it\n");
    EXPECT_EQ(Told({"member", "remove", "/Main/Sales", "rory"}), "rory (id 2) was no member of /Main/Sales (id 1)\n");
    EXPECT_THAT(Told({"member", "detach", "amy", "--yes"}),
                HasSubstr("ended 1 membership of amy (id 1); the department of 1 person was changed with it\n"));
    ExpectInStep();
    Told({"user", "set", "amy", "--department-text", "service"});
    EXPECT_THAT(Told({"member", "add", "/Main/Service", "amy"}),
                HasSubstr("\nthe department of 1 person was changed with it\n"));
    ExpectInStep();
}

TEST_F(DepartmentCommandsTest, AChangeThatIsNotWrittenLeavesTheGroupsToo)
{
    CAConnect conn;
    conn.Open(CString(std::string_view(DatabaseUrl())));
    conn.Execute("CREATE TRIGGER t BEFORE UPDATE OF Col_DeptInfo ON qv_User BEGIN SELECT RAISE(ABORT, 'not now'); END");
    const ChildResult result = Run({"group", "rename", "/Main/Sales", "X"});
    EXPECT_EQ(result.exit, 6);
    EXPECT_THAT(result.err, HasSubstr("not now"));
    EXPECT_THAT(Run({"group", "list", "-o", "plain"}).out, HasSubstr("1\tSales\t"));
}
