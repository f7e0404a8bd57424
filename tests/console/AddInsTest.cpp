#include "management/addins/AddIns.h"

#include "ConsoleFixture.h"
#include "RefusalOf.h"
#include "console/ExitCode.h"
#include "dbaccess/CAConnect.h"
#include "schema/Schema.h"
#include "tests/support/HardText.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>
#include <random>

using namespace console;
using namespace management;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

namespace {

constexpr int kHighest = std::numeric_limits<int>::max();

class AddInsTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
    }

    int Make(const std::string& name, int type = 1, std::optional<int> index = std::nullopt)
    {
        NewAddIn addIn;
        addIn.name = name;
        addIn.type = type;
        addIn.index = index;
        return CreateAddIn(m_addIns, addIn);
    }

    /// The names in their order.
    std::string Order()
    {
        std::string names;
        for (const AddIn& addIn : m_addIns.List({})) {
            names += addIn.name;
        }
        return names;
    }

    int IndexOf(const std::string& name) { return FindAddIn(m_addIns, name, {}).index; }

    bool Put(const std::string& name, Move move) { return MoveAddIn(m_addIns, FindAddIn(m_addIns, name, {}), move); }

    /// Moves add-ins of few indexes, and looks after each move whether they stand as they should.
    void MoveAtRandom(unsigned seed)
    {
        std::mt19937 random(seed);
        std::string names = "abcdefgh";
        for (const char name : names) {
            Make(std::string(1, name), 1, static_cast<int>(random() % 4));
        }
        names = Order();
        for (int i = 0; i < 300; ++i) {
            const std::size_t at = random() % names.size();
            const std::string name(1, names[at]);
            const auto move = static_cast<Move>(random() % 3);
            Put(name, move);
            names.erase(at, 1);
            const std::size_t up = at == 0 ? 0 : at - 1;
            names.insert(move == Move::top ? 0 : move == Move::up ? up : std::min(at + 1, names.size()), name);
            ASSERT_EQ(Order(), names) << "move " << i;
            if (i % 20 == 0) {
                Execute("UPDATE kel_AddIn SET Col_Index = Col_Index / 3");
                names = Order();
            }
        }
    }

    void Execute(const std::string& sql) { m_conn.Execute(sql.c_str()); }

    CAConnect m_conn;
    AddIns m_addIns{m_conn};
    Packages m_packages{m_conn};
};

class AddInConsoleTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
    }

    nlohmann::json Shown(const std::string& addIn)
    {
        return nlohmann::json::parse(Done({"addin", "show", addIn, "-o", "json"}));
    }
};

} // namespace

// ---- Add-ins --------------------------------------------------------------------------------------------------------

TEST_F(AddInsTest, AnyTextGoesInAndComesOutAsItIs)
{
    const int id = CreateAddIn(m_addIns, {kHard, 2, kHard, true, kHard, kHard, {}});
    const AddIn addIn = FindAddIn(m_addIns, kHard, 2);
    EXPECT_EQ(addIn.id, id);
    EXPECT_EQ(addIn.name, kHard);
    EXPECT_EQ(addIn.description, kHard);
    EXPECT_EQ(addIn.package, kHard);
    EXPECT_TRUE(addIn.isPublic);
    EXPECT_FALSE(addIn.isDisabled);
    EXPECT_EQ(m_addIns.Data(id), kHard);
    EXPECT_EQ(m_addIns.List({kHard, 2}).size(), 1U);
    AddInChanges changes;
    changes.data = std::string("\\'") + kHard;
    changes.description = "it's \\";
    m_addIns.Change(id, changes);
    EXPECT_EQ(m_addIns.Data(id), *changes.data);
    EXPECT_EQ(m_addIns.Load(id).value().description, "it's \\");
    m_addIns.DeleteOfPackage(kHard);
    EXPECT_THAT(m_addIns.List({}), IsEmpty());
}

TEST_F(AddInsTest, TextsComeBackAsTheyWereWhateverKindTheEngineIsTakenFor)
{
    for (const int kind : {0, 1, 3, 6}) {
        m_conn.m_nDBType = kind;
        const int id = CreateAddIn(m_addIns, {"a\\b", kind, "c\\'d\\", false, "e\\f", "g\\h", {}});
        const AddIn addIn = m_addIns.Load(id).value();
        EXPECT_EQ(addIn.name, "a\\b");
        EXPECT_EQ(addIn.description, "e\\f");
        EXPECT_EQ(addIn.package, "g\\h");
        EXPECT_EQ(m_addIns.Data(id), "c\\'d\\") << kind;
    }
}

TEST_F(AddInsTest, AnIdOfAnotherTypeIsNotFoundAndANameThatMeansAnIdIsNone)
{
    const int id = CreateAddIn(m_addIns, {"a", 1, "", false, "", "", {}});
    const std::string byId = "id:" + std::to_string(id);
    EXPECT_EQ(FindAddIn(m_addIns, byId, 1).name, "a");
    EXPECT_EQ(CodeOf([&] { FindAddIn(m_addIns, byId, 2); }), Exit::notFound);
    EXPECT_EQ(CodeOf([&] { CreateAddIn(m_addIns, {"id:7", 1, "", false, "", "", {}}); }), Exit::usage);
}

TEST_F(AddInsTest, ANulByteIsRefusedWhereverItStands)
{
    const std::string nul("a\0b", 3);
    EXPECT_EQ(CodeOf([&] { CreateAddIn(m_addIns, {"x", 1, nul, false, "", "", {}}); }), Exit::failed);
    EXPECT_EQ(CodeOf([&] { CreateAddIn(m_addIns, {"x", 1, "", false, nul, "", {}}); }), Exit::failed);
    EXPECT_THAT(m_packages.FindAll(nul), IsEmpty());
    EXPECT_THAT(m_addIns.List({}), IsEmpty());
}

TEST_F(AddInsTest, ANameIsTakenInItsTypeOnly)
{
    const int first = Make("Clock", 1);
    const int second = Make("Clock", 2);
    EXPECT_NE(first, second);
    EXPECT_EQ(CodeOf([&] { Make("Clock", 2); }), Exit::conflict);
    Make("Dial", 1);
    AddInChanges changes;
    changes.name = "Dial";
    EXPECT_EQ(CodeOf([&] { ChangeAddIn(m_addIns, *m_addIns.Load(first), changes); }), Exit::conflict);
    EXPECT_NO_THROW(ChangeAddIn(m_addIns, *m_addIns.Load(second), changes));
    EXPECT_EQ(CodeOf([&] { Make(" a"); }), Exit::usage);
}

TEST_F(AddInsTest, ANewOneComesFirstUnlessItHasAnIndex)
{
    Make("a");
    EXPECT_EQ(IndexOf("a"), 1);
    Make("b", 1, -5);
    Make("c");
    EXPECT_EQ(Order(), "cab");
    Make("d", 1, kHighest);
    EXPECT_EQ(CodeOf([&] { Make("e"); }), Exit::conflict);
    EXPECT_NO_THROW(Make("e", 1, 3));
}

TEST_F(AddInsTest, MovingExchangesNeighbours)
{
    for (const char* name : {"c", "b", "a"}) {
        Make(name);
    }
    EXPECT_TRUE(Put("c", Move::up));
    EXPECT_EQ(Order(), "acb");
    EXPECT_TRUE(Put("a", Move::down));
    EXPECT_EQ(Order(), "cab");
    EXPECT_TRUE(Put("b", Move::top));
    EXPECT_EQ(Order(), "bca");
    EXPECT_EQ(IndexOf("b"), 4);
    EXPECT_FALSE(Put("b", Move::top));
    EXPECT_FALSE(Put("b", Move::up));
    EXPECT_FALSE(Put("a", Move::down));
    EXPECT_EQ(Order(), "bca");
}

TEST_F(AddInsTest, EqualIndexesMoveToo)
{
    for (const char* name : {"a", "b", "c", "d"}) {
        Make(name, 1, 5);
    }
    EXPECT_TRUE(Put("c", Move::up));
    EXPECT_EQ(Order(), "acbd");
    EXPECT_EQ(IndexOf("b"), 5);
    EXPECT_EQ(IndexOf("d"), 5) << "two that nothing was done to";
    EXPECT_TRUE(Put("b", Move::down));
    EXPECT_EQ(Order(), "acdb");
    EXPECT_TRUE(Put("d", Move::top));
    EXPECT_EQ(Order(), "dacb");
}

TEST_F(AddInsTest, TheFirstOfEqualOnesIsPutOverThem)
{
    Make("a", 1, 5);
    Make("b", 1, 5);
    EXPECT_TRUE(Put("a", Move::up));
    EXPECT_EQ(IndexOf("a"), 6);
    EXPECT_FALSE(Put("a", Move::up));
}

TEST_F(AddInsTest, WhereIndexesRunOutAllGetNewOnes)
{
    Make("a", 1, kHighest);
    Make("b", 1, kHighest);
    Make("c", 1, -7);
    EXPECT_TRUE(Put("b", Move::up));
    EXPECT_EQ(Order(), "bac");
    EXPECT_EQ(IndexOf("b"), 3);
    EXPECT_EQ(IndexOf("c"), 1);
}

TEST_F(AddInsTest, AnyMoveInAnyListGivesTheOrderThatWasWanted) { MoveAtRandom(7); }

TEST_F(AddInsTest, EnablingEnables)
{
    const int id = Make("a");
    m_addIns.Enable(id, false);
    EXPECT_TRUE(m_addIns.Load(id).value().isDisabled);
    m_addIns.Enable(id, true);
    EXPECT_FALSE(m_addIns.Load(id).value().isDisabled);
}

TEST_F(AddInsTest, NullColumnsAreEmptyAndStayNullUntilTheyAreSet)
{
    Execute("INSERT INTO kel_AddIn VALUES (1, 'a', NULL, NULL, NULL, NULL, NULL, NULL, NULL)");
    AddInChanges changes;
    changes.isPublic = true;
    m_addIns.Change(1, changes);
    EXPECT_EQ(m_addIns.Data(1), "");
    Execute("UPDATE kel_AddIn SET Col_Name = 'still' WHERE Col_Data IS NULL AND Col_Desc IS NULL");
    EXPECT_EQ(m_addIns.Load(1).value().name, "still");
}

TEST_F(AddInsTest, ARefusedWriteSaysWhy)
{
    const int id = Make("a");
    Execute("PRAGMA query_only = 1");
    EXPECT_EQ(CodeOf([&] { Make("b"); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_addIns.Enable(id, true); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_addIns.Delete(id); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_addIns.SetIndex(id, 4); }), Exit::database);
    Package package;
    package.name = "p";
    EXPECT_EQ(CodeOf([&] { m_packages.Insert(package); }), Exit::database);
    m_conn.Close();
    EXPECT_EQ(CodeOf([&] { m_addIns.List({}); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_packages.List(); }), Exit::database);
}

// ---- Packages -------------------------------------------------------------------------------------------------------

TEST_F(AddInsTest, PackagesKeepAnyText)
{
    Package package;
    package.name = kHard;
    package.version = -3;
    package.description = kHard;
    package.modified = "2020-01-01 00:00:00";
    package.id = m_packages.Insert(package);
    const std::vector<Package> found = m_packages.FindAll(kHard);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front().id, package.id);
    EXPECT_EQ(found.front().version, -3);
    EXPECT_EQ(found.front().description, kHard);
    EXPECT_EQ(found.front().modified, "2020-01-01 00:00:00");
    package.description = "a\\b'c";
    m_packages.Update(package);
    EXPECT_EQ(m_packages.List().front().description, "a\\b'c");
}

TEST_F(AddInsTest, TheIdIsThatOfThePackageAndNotTheHighest)
{
    // A trigger stands for another program's row that comes behind it.
    Execute("CREATE TRIGGER more AFTER INSERT ON kel_Package WHEN new.Col_Name = 'p' BEGIN INSERT INTO kel_Package "
            "(Col_Name) VALUES ('other'); END");
    Package package;
    package.name = "p";
    EXPECT_EQ(m_packages.Insert(package), 1);
}

// ---- The commands ---------------------------------------------------------------------------------------------------

TEST_F(AddInConsoleTest, HelpOfEveryVerbHasExamples)
{
    for (const char* verb : {"list", "show", "create", "set", "enable", "disable", "move", "delete"}) {
        EXPECT_THAT(Done({"addin", verb, "--help"}), HasSubstr("Examples:\n  qvadmin addin")) << verb;
    }
    for (const char* verb : {"list", "show", "install", "remove"}) {
        EXPECT_THAT(Done({"package", verb, "--help"}), HasSubstr("Examples:\n  qvadmin package")) << verb;
    }
}

TEST_F(AddInConsoleTest, AddInsAreMadeShownAndListed)
{
    EXPECT_EQ(Done({"addin", "create", kHard, "--type", "2", "--data", kHard, "--public", "--description", "a\\b",
                    "--package", "O'Neil"}),
              "1\n");
    EXPECT_EQ(Done({"addin", "create", "Clock", "--type", "-1", "--index", "-4"}), "2\n");
    EXPECT_EQ(Done({"addin", "list", "-o", "csv"}).substr(0, 62),
              "id,type,name,public,disabled,description,package,index\n1,2,\"O'");
    EXPECT_EQ(Done({"addin", "list", "--type", "-1", "-o", "plain"}), "2\t-1\tClock\tfalse\tfalse\t\t\t-4\n");
    EXPECT_THAT(Done({"addin", "list", "--package", "O'Neil", "-o", "plain"}), StartsWith("1\t"));
    EXPECT_EQ(Done({"addin", "list", "--package", "O'Neil", "--type", "-1", "-o", "plain"}), "");
    const nlohmann::json shown = Shown(kHard);
    EXPECT_EQ(shown["data"], kHard);
    EXPECT_EQ(shown["package"], "O'Neil");
    EXPECT_EQ(shown["public"], true);
    EXPECT_EQ(shown["index"], 1);
    EXPECT_EQ(Shown("id:2")["name"], "Clock");
}

TEST_F(AddInConsoleTest, WhatCannotBeMadeIsRefused)
{
    Done({"addin", "create", "Clock", "--type", "1"});
    ExpectRefusal({"addin", "create", "Clock", "--type", "1"}, 4, "there is an add-in 'Clock' of type 1 already");
    ExpectRefusal({"addin", "create", "Dial"}, 2, "--type");
    ExpectRefusal({"addin", "create", "", "--type", "1"}, 2, "is empty");
    ExpectRefusal({"addin", "create", "Dial", "--type", "x"}, 2, "--type");
    ExpectRefusal({"addin", "create", "Dial", "--type", "1", "--data", "a", "--data-file", "b"}, 2, "--data-file");
    ExpectRefusal({"addin", "create", "Dial", "--type", "1", "--data-file", "none"}, 1, "cannot read none");
    ExpectRefusal({"addin", "create", "Dial", "--type", "1", "--data-file", "."}, 1, "cannot read .");
    WriteFile("bytes", "\xFF");
    ExpectRefusal({"addin", "create", "Dial", "--type", "1", "--data-file", "bytes"}, 1, "bytes is not UTF-8");
    ExpectRefusal({"addin", "show", "Dial"}, 3, "there is no add-in 'Dial'");
    ExpectRefusal({"addin", "show", "id:9"}, 3, "there is no add-in with id 9");
    ExpectRefusal({"addin", "show", "id:x"}, 2, "'id:x' is not the id of an add-in");
}

TEST_F(AddInConsoleTest, DataComeFromAFileAsTheyAre)
{
    const std::string data = std::string("one\r\n\t'two'\\\n") + kHard + "\n";
    WriteFile("data.xml", data);
    WriteFile("empty", "");
    Done({"addin", "create", "Clock", "--type", "1", "--data-file", "data.xml"});
    EXPECT_EQ(Shown("Clock")["data"], data);
    Done({"addin", "set", "Clock", "--data-file", "empty"});
    EXPECT_EQ(Shown("Clock")["data"], "");
}

TEST_F(AddInConsoleTest, SettingChangesWhatIsGivenAndNothingElse)
{
    Done(
        {"addin", "create", "Clock", "--type", "1", "--data", "d", "--public", "--description", "e", "--package", "p"});
    nlohmann::json expected = Shown("Clock");
    EXPECT_EQ(Told({"addin", "set", "Clock", "--data", kHard}), "changed Clock (add-in 1)\n");
    expected["data"] = kHard;
    EXPECT_EQ(Shown("Clock"), expected);
    Done({"addin", "set", "Clock", "--name", "O'Clock\\", "--no-public", "--description", "", "--package", "a\\'b",
          "--index", "7"});
    expected["name"] = "O'Clock\\";
    expected["public"] = false;
    expected["description"] = "";
    expected["package"] = "a\\'b";
    expected["index"] = 7;
    EXPECT_EQ(Shown("O'Clock\\"), expected);
    ExpectRefusal({"addin", "set", "id:1"}, 2, "nothing to set");
    ExpectRefusal({"addin", "set", "id:1", "--public", "--no-public"}, 2, "contradict");
    Done({"addin", "create", "Dial", "--type", "1"});
    ExpectRefusal({"addin", "set", "Dial", "--name", "O'Clock\\"}, 4, "already");
}

TEST_F(AddInConsoleTest, ANameOfSeveralChangesNothing)
{
    Done({"addin", "create", "Clock", "--type", "1"});
    Done({"addin", "create", "Clock", "--type", "2"});
    Done({"addin", "create", "Dial", "--type", "1"});
    const std::string before = Done({"addin", "list"});
    const std::string both = "Clock (add-in 1) of type 1, Clock (add-in 2) of type 2";
    ExpectRefusal({"addin", "show", "Clock"}, 4, both);
    ExpectRefusal({"addin", "set", "Clock", "--data", "x"}, 4, both);
    ExpectRefusal({"addin", "disable", "Dial", "Clock"}, 4, both);
    ExpectRefusal({"addin", "move", "Clock", "top"}, 4, both);
    ExpectRefusal({"addin", "delete", "Dial", "Clock", "--yes"}, 4, both);
    ExpectRefusal({"addin", "delete", "x", "Dial", "y", "--yes"}, 3,
                  "there are no add-ins 'x', 'y'; `qvadmin addin list`");
    EXPECT_EQ(Done({"addin", "list"}), before);
    EXPECT_EQ(Told({"addin", "disable", "Clock", "--type", "2"}), "disabled Clock (add-in 2)\n");
    EXPECT_EQ(Shown("id:2")["disabled"], true);
    EXPECT_EQ(Shown("id:1")["disabled"], false);
}

TEST_F(AddInConsoleTest, AddInsAreSwitchedOffAndOn)
{
    Done({"addin", "create", "a", "--type", "1"});
    Done({"addin", "create", "b", "--type", "1"});
    EXPECT_EQ(Told({"addin", "disable", "a", "id:1", "b"}), "disabled a (add-in 1)\ndisabled b (add-in 2)\n");
    EXPECT_EQ(Told({"addin", "disable", "a"}), "a (add-in 1) was disabled already\n");
    ExpectRefusal({"addin", "enable", "a", "nothing"}, 3, "there is no add-in");
    EXPECT_EQ(Shown("a")["disabled"], true);
    EXPECT_EQ(Told({"addin", "enable", "a"}), "enabled a (add-in 1)\n");
    EXPECT_EQ(Shown("a")["disabled"], false);
}

TEST_F(AddInConsoleTest, AddInsMoveAmongEqualIndexes)
{
    for (const char* name : {"a", "b", "c"}) {
        Done({"addin", "create", name, "--type", "1", "--index", "0"});
    }
    EXPECT_EQ(Told({"addin", "move", "c", "up"}), "moved c (add-in 3)\n");
    const std::string order = Done({"addin", "list", "-o", "plain"});
    EXPECT_LT(order.find("\ta\t"), order.find("\tc\t"));
    EXPECT_LT(order.find("\tc\t"), order.find("\tb\t"));
    EXPECT_EQ(Told({"addin", "move", "b", "down"}), "b (add-in 2) is at the bottom already\n");
    EXPECT_EQ(Told({"addin", "move", "a", "top"}), "a (add-in 1) is at the top already\n");
    ExpectRefusal({"addin", "move", "a", "sideways"}, 2, "WHERE 'sideways' is not one of up, down, top");
}

TEST_F(AddInConsoleTest, AMoveThatFailsLeavesAllIndexes)
{
    Done({"addin", "create", "a", "--type", "1"});
    Done({"addin", "create", "b", "--type", "1"});
    const std::string before = Done({"addin", "list"});
    Execute("CREATE TRIGGER no BEFORE UPDATE ON kel_AddIn WHEN old.Col_Name = 'b' BEGIN SELECT RAISE(ABORT, 'kept'); "
            "END");
    ExpectRefusal({"addin", "move", "a", "up"}, 6, "kept");
    EXPECT_EQ(Done({"addin", "list"}), before);
}

TEST_F(AddInConsoleTest, DeletingAsks)
{
    Done({"addin", "create", "a", "--type", "1"});
    Done({"addin", "create", "b", "--type", "1"});
    const ChildResult asked = Run({"addin", "delete", "a", "b"});
    EXPECT_EQ(asked.exit, 9);
    EXPECT_THAT(asked.err, StartsWith("delete a (add-in 1) of type 1\ndelete b (add-in 2) of type 1\n"));
    EXPECT_THAT(Told({"addin", "delete", "a", "--yes"}), HasSubstr("deleted 1 add-in\n"));
    ExpectRefusal({"addin", "show", "a"}, 3, "there is no add-in");
    EXPECT_EQ(Shown("b")["id"], 2);
}

TEST_F(AddInConsoleTest, PackagesAreInstalledAndBroughtToOtherVersions)
{
    EXPECT_EQ(
        Done({"package", "install", kHard, "--version", "3", "--description", "a\\b'c", "--modified", "2020-01-01"}),
        "1\n");
    EXPECT_EQ(Done({"package", "list", "-o", "plain"}).substr(std::string("1\tO'").size() - 4, 2), "1\t");
    EXPECT_EQ(Done({"package", "install", "Basic", "--version", "1"}), "2\n");
    EXPECT_THAT(Done({"package", "list", "-o", "csv"}),
                MatchesRegex("id,name,version,description,modified,disabled\n2,Basic,1,,....-..-.. ..:..:..,false\n1,.*"
                             ",3,a\\\\b'c,2020-01-01 00:00:00,false\n"));
    const ChildResult updated =
        Run({"package", "install", kHard, "--version", "4", "--modified", "2020-02-02 10:11:12"});
    EXPECT_EQ(updated.out, "1\n");
    EXPECT_THAT(updated.err, StartsWith("updated to version 4 of O'Brien"));
    ExpectRefusal({"package", "install", kHard, "--version", "2"}, 4, "--downgrade goes back");
    const auto shown = nlohmann::json::parse(Done({"package", "show", kHard, "-o", "json"}));
    EXPECT_EQ(shown["version"], 4);
    EXPECT_EQ(shown["description"], "a\\b'c");
    EXPECT_EQ(shown["modified"], "2020-02-02 10:11:12");
    EXPECT_EQ(Done({"package", "install", kHard, "--version", "2", "--downgrade", "--description", "d"}), "1\n");
    EXPECT_THAT(Done({"package", "show", kHard, "-o", "plain"}),
                AllOf(HasSubstr("version\t2\n"), HasSubstr("description\td\n")));
}

TEST_F(AddInConsoleTest, WhatCannotBeInstalledIsRefused)
{
    ExpectRefusal({"package", "install", "p"}, 2, "--version");
    ExpectRefusal({"package", "install", "p", "--version", "x"}, 2, "--version");
    ExpectRefusal({"package", "install", " p", "--version", "1"}, 2, "blank");
    ExpectRefusal({"package", "install", "p", "--version", "1", "--modified", "today"}, 2, "invalid date");
    ExpectRefusal({"package", "show", "p"}, 3, "there is no package 'p'");
    ExpectRefusal({"package", "remove", "p"}, 3, "there is no package 'p'");
    EXPECT_EQ(Done({"package", "list", "-o", "plain"}), "");
}

TEST_F(AddInConsoleTest, APackageIsShownWithItsAddIns)
{
    Done({"package", "install", "p", "--version", "1"});
    EXPECT_THAT(Done({"package", "show", "p"}), AllOf(HasSubstr("add_ins      0\n"), Not(HasSubstr("add_ins:"))));
    Done({"addin", "create", "a'\\", "--type", "1", "--package", "p"});
    Done({"addin", "create", "b", "--type", "1", "--package", "p"});
    Done({"addin", "create", "c", "--type", "1"});
    const auto shown = nlohmann::json::parse(Done({"package", "show", "p", "-o", "json"}));
    ASSERT_EQ(shown["add_ins"].size(), 2U);
    EXPECT_EQ(shown["add_ins"][0]["name"], "b");
    EXPECT_EQ(shown["add_ins"][1]["name"], "a'\\");
    EXPECT_THAT(Done({"package", "show", "p", "-o", "jsonl"}), MatchesRegex("\\{[^\n]*\\}\n"));
    EXPECT_THAT(Done({"package", "show", "p"}), HasSubstr("\nadd_ins:\nid  type  name  public"));
    EXPECT_THAT(Done({"package", "show", "p", "-o", "csv"}), HasSubstr("disabled,add_ins\n1,p,1,"));
}

TEST_F(AddInConsoleTest, RemovingAPackageTakesItsAddIns)
{
    Done({"package", "install", "O'Neil\\", "--version", "1"});
    Done({"package", "install", "other", "--version", "1"});
    Done({"addin", "create", "a", "--type", "1", "--package", "O'Neil\\"});
    Done({"addin", "create", "b", "--type", "1", "--package", "other"});
    ExpectRefusal({"package", "remove", "O'Neil\\"}, 9, "nothing was removed");
    m_options.terminal = true;
    const ChildResult removed = RunWith("y\n", {"package", "remove", "O'Neil\\"});
    EXPECT_EQ(removed.exit, 0);
    EXPECT_THAT(removed.err, HasSubstr("Remove the package O'Neil\\, with 1 add-in? [y/N]"));
    m_options.terminal = false;
    EXPECT_THAT(Done({"package", "list", "-o", "plain"}), StartsWith("2\tother\t"));
    EXPECT_THAT(Done({"addin", "list", "-o", "plain"}), StartsWith("2\t1\tb\t"));
}

TEST_F(AddInConsoleTest, PackagesOfOneNameAreRemovedTogetherAndNothingElseIsDoneToThem)
{
    Execute("INSERT INTO kel_Package (Col_Name, Col_Ver) VALUES ('p', 1), ('p', 2)");
    ExpectRefusal({"package", "show", "p"}, 4, "2 packages are called 'p'");
    ExpectRefusal({"package", "install", "p", "--version", "3"}, 4, "2 packages are called 'p'");
    EXPECT_EQ(Told({"package", "remove", "p", "--yes"}), "removed p (2 packages), with 0 add-ins\n");
    EXPECT_EQ(Done({"package", "list", "-o", "plain"}), "");
}

TEST_F(AddInConsoleTest, ARemovalThatFailsLeavesAllAsItWas)
{
    Done({"package", "install", "p", "--version", "1"});
    Done({"addin", "create", "a", "--type", "1", "--package", "p"});
    Execute("CREATE TRIGGER no BEFORE DELETE ON kel_Package BEGIN SELECT RAISE(ABORT, 'kept'); END");
    ExpectRefusal({"package", "remove", "p", "--yes"}, 6, "kept");
    EXPECT_EQ(Shown("a")["package"], "p");
}
