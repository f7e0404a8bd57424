#include "management/plans/Plans.h"

#include "ConsoleFixture.h"
#include "RefusalOf.h"
#include "basefun/ItemTypes.h"
#include "console/ExitCode.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "schema/Schema.h"
#include "tests/support/HardText.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>

using namespace console;
using namespace management;
using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

class PlansTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
    }

    CAConnect m_conn;
    Plans m_plans{m_conn};
};

class PlanCommandsTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
    }

    json Shown(const std::string& plan) { return json::parse(Done({"plan", "show", plan, "-o", "json"})); }

    /// The assignments in the order in which they were made, as TYPE:ITEM:PLAN.
    std::string Assignments()
    {
        CAConnect conn;
        conn.Open(CString(std::string_view(DatabaseUrl())));
        CARecordset rows;
        rows.Open("SELECT Col_QvItem_Type || ':' || Col_QvItem_ID || ':' || Col_PlanID FROM Tab_Doc_Backup_Rel "
                  "ORDER BY Col_ID",
                  &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
        std::string list;
        for (; rows.IsEOF() == 0; rows.MoveNext()) {
            list += (list.empty() ? "" : " ") + std::string(rows.GetValueToStr(1, true).View());
        }
        return list;
    }

    /// Main with the groups Sales (1), Sales/North (2) and Zoo (3); amy (1) is in the first two, rory (2) in North and
    /// zoe (3) in Zoo.
    void MakeOrganisation()
    {
        Done({"view", "create", "Main"});
        for (const char* path : {"/Main/Sales", "/Main/Sales/North", "/Main/Zoo"}) {
            Done({"group", "create", path});
        }
        for (const char* login : {"amy", "rory", "zoe"}) {
            Done({"user", "create", login});
        }
        Done({"member", "add", "/Main/Sales", "amy"});
        Done({"member", "add", "/Main/Sales/North", "amy", "rory"});
        Done({"member", "add", "/Main/Zoo", "zoe"});
    }
};

using DocLogCommandsTest = PlanCommandsTest;

} // namespace

// ---- The facade -----------------------------------------------------------------------------------------------------

TEST_F(PlansTest, AnyTextGoesInAndComesOutAsItIs)
{
    const PlanData plan{kHard, kHard, kHard};
    const int id = m_plans.Create(plan);
    EXPECT_EQ(m_plans.Load(id), plan);
    EXPECT_EQ(FindPlan(m_plans, kHard).id, id);
    const PlanData other{"a\\b", "it's", "\\"};
    m_plans.Change(id, {other.name, other.description, other.data});
    EXPECT_EQ(m_plans.Load(id), other);
    m_plans.Change(id, {{}, {}, kHard});
    EXPECT_EQ(m_plans.Load(id), (PlanData{other.name, other.description, kHard}));
    DocLog log(m_conn);
    log.Add({1, 2, kHard, kHard, 3, kHard, ""});
    LogEntry entry;
    log.List({{}, {}, kHard, {}}, [&entry](const LogEntry& found) {
        entry = found;
        return true;
    });
    EXPECT_EQ(entry.type, kHard);
    EXPECT_EQ(entry.content, kHard);
    EXPECT_EQ(entry.creator, kHard);
}

TEST_F(PlansTest, TheEngineEscapesAndNobodyDoesItAgain)
{
    // The kind on which texts of other operations have their backslashes doubled by hand.
    m_conn.m_nDBType = 6;
    const PlanData plan{"a\\b", "c\\d", "e\\f"};
    EXPECT_EQ(m_plans.Load(m_plans.Create(plan)), plan);
}

TEST_F(PlansTest, PlansOfAnItemAreThoseOfItsAssignmentsAndNotOfTheirRows)
{
    for (const char* name : {"b", "A", "c"}) {
        m_plans.Create({name, "", ""});
    }
    const ItemKey amy{kItemTypeUser, 7};
    m_plans.Assign(3, amy);
    m_plans.Assign(2, amy);
    m_plans.Assign(2, amy);
    m_plans.Assign(1, {kItemTypeGroup, 7});
    EXPECT_THAT(m_plans.OfItem(amy),
                ElementsAre(testing::Field(&ListedPlan::name, "A"), testing::Field(&ListedPlan::name, "c")));
    EXPECT_EQ(m_plans.CountAssignments(2), 2);
    EXPECT_THAT(m_plans.ItemsOf(2), ElementsAre(amy));
    m_plans.Unassign(2, amy);
    EXPECT_THAT(m_plans.ItemsOf(2), IsEmpty());
    m_plans.Delete(3);
    EXPECT_THAT(m_plans.OfItem(amy), IsEmpty());
    EXPECT_EQ(m_plans.CountAssignments(1), 1);
}

TEST_F(PlansTest, ARefusedWriteSaysWhy)
{
    m_plans.Create({"a", "", ""});
    m_conn.Execute("PRAGMA query_only = 1");
    EXPECT_EQ(CodeOf([&] { m_plans.Create({"b", "", ""}); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_plans.Change(1, {"c", {}, {}}); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_plans.Assign(1, {1, 1}); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { DocLog(m_conn).Add({}); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_plans.Delete(1); }), Exit::database);
}

// ---- Plans ----------------------------------------------------------------------------------------------------------

TEST_F(PlanCommandsTest, HelpOfEveryVerbHasExamples)
{
    for (const char* verb : {"list", "show", "create", "set", "delete", "of", "assign", "unassign"}) {
        EXPECT_THAT(Done({"plan", verb, "--help"}), HasSubstr("Examples:\n  qvadmin plan ")) << verb;
    }
    EXPECT_THAT(Done({"plan", "assign", "--help"}), HasSubstr("Usage: qvadmin plan assign [OPTIONS] PLAN ITEM...\n"));
    for (const char* verb : {"add", "list"}) {
        EXPECT_THAT(Done({"doclog", verb, "--help"}), HasSubstr("Examples:\n  qvadmin doclog ")) << verb;
    }
}

TEST_F(PlanCommandsTest, PlansAreMadeShownChangedAndListed)
{
    EXPECT_EQ(Done({"plan", "create", kHard, "--description", "a\\b", "--data", kHard}), "1\n");
    WriteFile("plan.txt", "it's\\\nnightly\n");
    EXPECT_EQ(Done({"plan", "create", "nightly", "--data-file", Path("plan.txt")}), "2\n");
    EXPECT_EQ(Done({"plan", "list", "-o", "plain"}), "2\tnightly\t\n1\tO'Brien\\\\ \"%s\" 'x\\\\'; -- Żółw {}\t"
                                                     "a\\\\b\n");
    EXPECT_THAT(Done({"plan", "list", "-o", "csv"}), StartsWith("id,name,description\n2,nightly,\n"));
    EXPECT_EQ(Shown("id:2")["data"], "it's\\\nnightly\n");
    json expected = Shown(kHard);
    EXPECT_EQ(expected["data"], kHard);
    EXPECT_EQ(expected["description"], "a\\b");
    EXPECT_EQ(expected["users"], 0);
    EXPECT_EQ(Run({"plan", "set", "id:1", "--name", "O'Neil\\"}).exit, 0);
    expected["name"] = "O'Neil\\";
    EXPECT_EQ(Shown("O'Neil\\"), expected);
    Done({"plan", "set", "O'Neil\\", "--data", "", "--description", "'"});
    expected["data"] = "";
    expected["description"] = "'";
    EXPECT_EQ(Shown("O'Neil\\"), expected);
    EXPECT_EQ(Run({"plan", "set", "nightly", "--name", "nightly"}).err, "nothing to change in nightly (plan 2)\n");
    EXPECT_EQ(Run({"plan", "set", "nightly", "--name", "Nightly"}).err, "changed nightly (plan 2)\n");
}

TEST_F(PlanCommandsTest, SetLeavesNullsAsTheyAre)
{
    Execute("INSERT INTO Tab_Doc_Backup_Plan (Col_Name, Col_Desc, Col_Data) VALUES ('a', NULL, NULL), ('b', NULL, "
            "NULL)");
    Done({"plan", "set", "a", "--name", "A"});
    Done({"plan", "set", "b", "--data", "x"});
    CAConnect conn;
    conn.Open(CString(std::string_view(DatabaseUrl())));
    CARecordset rows;
    rows.Open("SELECT Col_Name || ':' || COALESCE(Col_Desc, 'NULL') || ':' || COALESCE(Col_Data, 'NULL') FROM "
              "Tab_Doc_Backup_Plan ORDER BY Col_ID",
              &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    EXPECT_EQ(rows.GetValueToStr(1, true).View(), "A:NULL:NULL");
    rows.MoveNext();
    EXPECT_EQ(rows.GetValueToStr(1, true).View(), "b:NULL:x");
}

TEST_F(PlanCommandsTest, NamesThatBeginAsIdsDoAreRefused)
{
    Done({"plan", "create", "Nightly"});
    for (const char* name : {"id:5", "id:"}) {
        ExpectRefusal({"plan", "create", name}, 2, "as only ids do");
        ExpectRefusal({"plan", "set", "Nightly", "--name", name}, 2, "as only ids do");
    }
    EXPECT_EQ(json::parse(Done({"plan", "list", "-o", "json"})).size(), 1U);
}

TEST_F(PlanCommandsTest, WhatCannotBeIsRefusedAndChangesNothing)
{
    Done({"plan", "create", "Nightly"});
    Done({"plan", "create", "Weekly"});
    ExpectRefusal({"plan", "create", "Nightly"}, 4, "the name 'Nightly' is taken by Nightly (plan 1)");
    ExpectRefusal({"plan", "set", "Weekly", "--name", "Nightly"}, 4, "is taken by");
    ExpectRefusal({"plan", "set", "Weekly"}, 2, "nothing to set");
    ExpectRefusal({"plan", "create", " x"}, 2, "blank");
    ExpectRefusal({"plan", "create", "NIGHTLY"}, 4, "the name 'NIGHTLY' is taken by Nightly (plan 1)");
    ExpectRefusal({"plan", "show", "nightl\u00FD"}, 3, "there is no backup plan 'nightl\u00FD'");
    ExpectRefusal({"plan", "show", "id:9"}, 3, "'id:9'");
    ExpectRefusal({"plan", "show", "id:x"}, 2, "'id:x'");
    ExpectRefusal({"plan", "create", "New", "--data-file", Path("missing")}, 1, "cannot read");
    ExpectRefusal({"plan", "create", "New", "--data-file", m_folder}, 1, "cannot read");
    WriteFile("bytes", "\xFF");
    ExpectRefusal({"plan", "create", "New", "--data-file", Path("bytes")}, 1, "is not UTF-8");
    WriteFile("bytes", std::string("a\0b", 3));
    ExpectRefusal({"plan", "create", "New", "--data-file", Path("bytes")}, 1, "NUL");
    ExpectRefusal({"plan", "create", "New", "--data", "a", "--data-file", Path("bytes")}, 2, "--data");
    EXPECT_EQ(json::parse(Done({"plan", "list", "-o", "json"})).size(), 2U);
}

TEST_F(PlanCommandsTest, PlansOfTheSameNameAreListedAndNothingIsChanged)
{
    MakeOrganisation();
    Execute("INSERT INTO Tab_Doc_Backup_Plan (Col_Name) VALUES ('Same'), ('Same')");
    for (const std::vector<std::string>& words : {std::vector<std::string>{"plan", "show", "Same"},
                                                  {"plan", "set", "Same", "--data", "x"},
                                                  {"plan", "delete", "Same", "--yes"},
                                                  {"plan", "assign", "Same", "user:amy"},
                                                  {"plan", "unassign", "Same", "user:amy"}}) {
        ExpectRefusal(words, 4, "'Same' may be any of Same (plan 1), Same (plan 2); write id:1");
    }
    EXPECT_EQ(Shown("id:2")["data"], "");
    EXPECT_EQ(Assignments(), "");
}

TEST_F(PlanCommandsTest, APlanIsDeletedWithItsAssignments)
{
    MakeOrganisation();
    Done({"plan", "create", "Nightly"});
    Done({"plan", "create", "Weekly"});
    Done({"plan", "assign", "Nightly", "user:amy", "user:rory"});
    Done({"plan", "assign", "Weekly", "user:amy"});
    ChildResult result = Run({"plan", "delete", "Nightly"});
    EXPECT_EQ(result.exit, 9);
    EXPECT_THAT(result.err, StartsWith("delete Nightly (plan 1), with 2 assignments\n"));
    Execute("CREATE TRIGGER refuse BEFORE DELETE ON Tab_Doc_Backup_Rel BEGIN SELECT RAISE(ABORT, 'not today'); END");
    ExpectRefusalAfterPlan({"plan", "delete", "Nightly", "--yes"}, 6, "not today");
    EXPECT_EQ(Shown("Nightly")["users"], 2);
    Execute("DROP TRIGGER refuse");
    EXPECT_THAT(Run({"plan", "delete", "Nightly", "--yes"}).err, HasSubstr("\ndeleted Nightly (plan 1)\n"));
    EXPECT_EQ(Assignments(), "1:1:2");
}

// ---- Assignments ----------------------------------------------------------------------------------------------------

TEST_F(PlanCommandsTest, AssigningTwiceAddsNothing)
{
    MakeOrganisation();
    Done({"plan", "create", "O'Neil\\"});
    EXPECT_EQ(Run({"plan", "assign", "O'Neil\\", "user:amy", "/Main/Sales", "user:AMY"}).err,
              "user amy (id 1) now has O'Neil\\ (plan 1)\ngroup /Main/Sales (id 1) now has O'Neil\\ (plan 1)\n");
    EXPECT_EQ(Run({"plan", "assign", "id:1", "user:amy"}).err, "user amy (id 1) already has O'Neil\\ (plan 1)\n");
    EXPECT_EQ(Assignments(), "1:1:1 2:1:1");
    EXPECT_EQ(Shown("id:1")["users"], 1);
    EXPECT_EQ(Shown("id:1")["groups"], 1);
    EXPECT_EQ(Done({"plan", "of", "/Main/Sales", "-o", "jsonl"}),
              "{\"id\":1,\"name\":\"O'Neil\\\\\",\"description\":\"\"}\n");
    EXPECT_EQ(Done({"plan", "of", "user:rory", "-o", "csv"}), "id,name,description\n");
    EXPECT_EQ(Run({"plan", "unassign", "id:1", "user:amy", "user:rory"}).err,
              "user amy (id 1) no longer has O'Neil\\ (plan 1)\nuser rory (id 2) did not have O'Neil\\ (plan 1)\n");
    EXPECT_EQ(Assignments(), "2:1:1");
}

TEST_F(PlanCommandsTest, ItemsThatCannotHavePlansAreRefusedAndNoneIsChanged)
{
    MakeOrganisation();
    Done({"plan", "create", "Nightly"});
    Done({"role", "create", "Editors"});
    ExpectRefusal({"plan", "assign", "Nightly", "user:amy", "role:Editors"}, 2, "neither a user nor a group");
    ExpectRefusal({"plan", "assign", "Nightly", "user:amy", "view:Main"}, 2, "neither a user nor a group");
    ExpectRefusal({"plan", "assign", "Nightly", "user:amy", "user:nobody"}, 3, "nobody");
    ExpectRefusal(
        {"plan", "assign", "Nightly", "user:x", "user:amy", "group:/Main/y"}, 3,
        "there are no users or groups 'user:x', 'group:/Main/y'; `qvadmin user list` and `qvadmin group tree` ");
    ExpectRefusal({"plan", "assign", "Nope", "user:amy"}, 3, "'Nope'");
    ExpectRefusal({"plan", "of", "role:Editors"}, 2, "neither a user nor a group");
    EXPECT_EQ(Assignments(), "");
}

TEST_F(PlanCommandsTest, AGroupTreeGetsAPlanOnceHoweverOftenItIsAssigned)
{
    MakeOrganisation();
    Done({"plan", "create", "Nightly"});
    ChildResult result = Run({"plan", "assign", "Nightly", "/Main/Sales", "--recursive"});
    EXPECT_EQ(result.exit, 9);
    EXPECT_EQ(result.err, "user amy (id 1)\n"
                          "user rory (id 2)\n"
                          "group /Main/Sales (id 1)\n"
                          "group /Main/Sales/North (id 2)\n"
                          "2 users and 2 groups\n"
                          "qvadmin: nothing was assigned; --yes goes on without asking\n");
    EXPECT_EQ(Assignments(), "");
    result = Run({"plan", "assign", "Nightly", "/Main/Sales", "/Main/Sales/North", "--recursive", "--yes"});
    EXPECT_EQ(result.exit, 0);
    EXPECT_EQ(Assignments(), "1:1:1 1:2:1 2:1:1 2:2:1");
    Done({"plan", "assign", "Nightly", "/Main/Sales", "--recursive", "--yes"});
    EXPECT_EQ(Assignments(), "1:1:1 1:2:1 2:1:1 2:2:1");
    Done({"plan", "assign", "Nightly", "user:zoe"});
    Done({"plan", "unassign", "Nightly", "/Main/Sales/North", "--recursive", "--yes"});
    EXPECT_EQ(Assignments(), "2:1:1 1:3:1");
}

TEST_F(PlanCommandsTest, OnATerminalItAsksBeforeAWholeTree)
{
    MakeOrganisation();
    Done({"plan", "create", "Nightly"});
    m_options.terminal = true;
    ChildResult result = RunWith("n\n", {"plan", "assign", "Nightly", "/Main/Sales", "--recursive"});
    EXPECT_EQ(result.exit, 9);
    EXPECT_THAT(result.err, HasSubstr("Assign Nightly (plan 1) to 2 users and 2 groups? [y/N]"));
    EXPECT_EQ(Assignments(), "");
    result = RunWith("y\n", {"plan", "assign", "Nightly", "/Main/Sales", "--recursive"});
    EXPECT_EQ(result.exit, 0);
    result = RunWith("y\n", {"plan", "unassign", "Nightly", "/Main/Sales", "--recursive"});
    EXPECT_THAT(result.err, HasSubstr("Take Nightly (plan 1) from 2 users and 2 groups? [y/N]"));
    EXPECT_EQ(Assignments(), "");
}

TEST_F(PlanCommandsTest, ManyItemsAreToldAsNumbers)
{
    MakeOrganisation();
    Done({"plan", "create", "Nightly"});
    Execute("INSERT INTO qv_User (Col_LoginName) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE "
            "i < 30) SELECT 'u' || i FROM n");
    Execute("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, Col_RelType) "
            "SELECT 3, 2, Col_ID, 1, 1 FROM qv_User WHERE Col_LoginName LIKE 'u%'");
    Done({"plan", "assign", "Nightly", "user:zoe"});
    EXPECT_EQ(Run({"plan", "assign", "Nightly", "/Main/Zoo", "--recursive", "--yes"}).err,
              "31 users and 1 group\n"
              "assigned Nightly (plan 1) to 30 users and 1 group; 1 user and 0 groups had it already\n");
    EXPECT_EQ(Shown("Nightly")["users"], 31);
    EXPECT_EQ(Run({"plan", "unassign", "Nightly", "/Main/Zoo", "--recursive", "--yes"}).err,
              "31 users and 1 group\ntook Nightly (plan 1) from 31 users and 1 group\n");
    EXPECT_EQ(Assignments(), "");
}

TEST_F(PlanCommandsTest, ACycleOfGroupsIsNamedAndNothingIsAssigned)
{
    MakeOrganisation();
    Done({"plan", "create", "Nightly"});
    Execute("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, Col_RelType) "
            "VALUES (2, 2, 1, 2, 1)");
    for (const char* verb : {"assign", "unassign"}) {
        ExpectRefusal({"plan", verb, "Nightly", "user:zoe", "/Main/Sales", "--recursive", "--yes"}, 4,
                      "/Main/Sales -> /Main/Sales/North -> /Main/Sales");
    }
    EXPECT_EQ(Assignments(), "");
    EXPECT_EQ(Run({"plan", "assign", "Nightly", "/Main/Sales"}).exit, 0);
    EXPECT_EQ(Assignments(), "2:1:1");
}

TEST_F(PlanCommandsTest, AnAssignmentThatFailsLeavesAllAsItWas)
{
    MakeOrganisation();
    Done({"plan", "create", "Nightly"});
    Execute("CREATE TRIGGER refuse BEFORE INSERT ON Tab_Doc_Backup_Rel WHEN NEW.Col_QvItem_Type = 2 BEGIN SELECT "
            "RAISE(ABORT, 'not today'); END");
    const ChildResult result = Run({"plan", "assign", "Nightly", "user:zoe", "/Main/Sales"});
    EXPECT_EQ(result.exit, 6);
    EXPECT_THAT(result.err, AllOf(HasSubstr("not today"), Not(HasSubstr("now has"))));
    EXPECT_EQ(Assignments(), "");
}

// ---- The document log -----------------------------------------------------------------------------------------------

TEST_F(DocLogCommandsTest, EntriesAreAddedAndListedInTheOrderOfTheTable)
{
    Done({"user", "create", "amy", "--name", "Amy O'Neil\\"});
    EXPECT_EQ(Run({"doclog", "add", "105", "17", "mo'ved\\", kHard, "--creator", "amy"}).err,
              "noted 'mo'ved\\' of object 17 of class 105\n");
    Done({"doclog", "add", "105", "18", "read", ""});
    Done({"doclog", "add", "-3", "17", "read", "twice"});
    const json entries = json::parse(Done({"doclog", "list", "-o", "json"}));
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0], (json{{"class_id", 105},
                                {"object_id", 17},
                                {"type", "mo'ved\\"},
                                {"content", kHard},
                                {"creator_id", 1},
                                {"creator", "Amy O'Neil\\"},
                                {"genre", "KelDoc"}}));
    EXPECT_EQ(Done({"doclog", "list", "--class", "105", "--limit", "1", "--type", "read", "-o", "csv"}),
              "class_id,object_id,type,content,creator_id,creator,genre\n105,18,read,,0,,KelDoc\n");
    EXPECT_EQ(Done({"doclog", "list", "--object", "17", "--class", "-3", "-o", "plain"}),
              "-3\t17\tread\ttwice\t0\t\tKelDoc\n");
    EXPECT_EQ(json::parse(Done({"doclog", "list", "--type", "mo'ved\\", "-o", "json"})).size(), 1U);
    EXPECT_EQ(json::parse(Done({"doclog", "list", "--limit", "2", "-o", "json"})).size(), 2U);
}

TEST_F(DocLogCommandsTest, WhatIsNoEntryIsRefused)
{
    ExpectRefusal({"doclog", "add", "x", "17", "read", ""}, 2, "CLASS_ID 'x'");
    ExpectRefusal({"doclog", "add", "105", "99999999999", "read", ""}, 2, "OBJECT_ID");
    ExpectRefusal({"doclog", "add", "105", "17", "", ""}, 2, "is empty");
    ExpectRefusal({"doclog", "add", "105", "17", "read", "", "--creator", "nobody"}, 3, "nobody");
    ExpectRefusal({"doclog", "list", "--limit", "0"}, 2, "--limit");
    EXPECT_EQ(Done({"doclog", "list", "-o", "json"}), "[]\n");
}
