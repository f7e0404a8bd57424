#include "management/rights/Rights.h"

#include "ConsoleFixture.h"
#include "RefusalOf.h"
#include "basefun/ItemTypes.h"
#include "console/ExitCode.h"
#include "dbaccess/CAConnect.h"
#include "management/Items.h"
#include "management/roles/Roles.h"
#include "management/users/Users.h"
#include "schema/Schema.h"
#include "tests/support/HardText.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

using namespace console;
using namespace management;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

using Json = nlohmann::json;

constexpr ItemKey kRole{kItemTypeRole, 7};
constexpr ItemKey kView{kItemTypeView, 7};

class RightsTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
    }

    int MakeRole(const std::string& name, const RoleScope& scope = {})
    {
        RoleData role;
        role.name = name;
        role.scope = scope;
        return CreateRole(m_roles, role);
    }

    void Execute(const std::string& sql) { m_conn.Execute(sql.c_str()); }

    std::string Found(const std::string& argument) { return Named(FindItem(m_conn, argument)).English(); }

    CAConnect m_conn;
    Directory m_directory{m_conn};
    Roles m_roles{m_conn};
    Rights m_rights{m_conn};
};

class RightConsoleTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
        Done({"user", "create", "amy"});
        Done({"role", "create", "Editors"});
        Done({"role", "create", "Authors"});
        Done({"view", "create", "Main"});
        Done({"group", "create", "/Main/Sales"});
    }
};

} // namespace

// ---- Items ----------------------------------------------------------------------------------------------------------

TEST_F(RightsTest, AnItemIsFoundByEveryWordThatMayNameIt)
{
    CreateUser(m_directory, "amy", {});
    MakeRole("Editors");
    Execute("INSERT INTO qv_View (Col_ID, Col_Name, Col_Type) VALUES (4, 'Main', 1), (5, '6', 1)");
    Execute("INSERT INTO qv_Group (Col_ID, Col_Name) VALUES (2, 'Sales')");
    Execute("INSERT INTO qv_Relation VALUES (4, 4, 2, 2, 1, 0, 0)");
    for (const char* argument : {"user:AMY", "user:id:1", "user:login:amy"}) {
        EXPECT_EQ(Found(argument), "user amy (id 1)") << argument;
    }
    for (const char* argument : {"group:/main/sales", "group:id:2", "/Main/Sales", "view:4/sales", "view:id:4/Sales"}) {
        EXPECT_EQ(Found(argument), "group /Main/Sales (id 2)") << argument;
    }
    for (const char* argument : {"role:editors", "role:id:1"}) {
        EXPECT_EQ(Found(argument), "role Editors (id 1)") << argument;
    }
    for (const char* argument : {"view:main", "view:4", "view:id:4", "view:/Main", "/Main"}) {
        EXPECT_EQ(Found(argument), "view Main (id 4)") << argument;
    }
    EXPECT_EQ(Found("/6"), "view 6 (id 5)");
}

TEST_F(RightsTest, WhatNamesNoItemIsRefused)
{
    Execute("INSERT INTO qv_View (Col_ID, Col_Name, Col_Type) VALUES (4, 'Main', 1)");
    for (const char* argument : {"", ":", "amy", "id:1", "team:a", "role:id:x", "view:id:x", "group:id:x", "group:a",
                                 "group:/Main", "user:id:x", "/", "/Main/"}) {
        EXPECT_EQ(CodeOf([&] { Found(argument); }), Exit::usage) << argument;
    }
    for (const char* argument : {"user:", "user:amy", "role:", "role:id:9", "view:", "view:5", "view:id:5", "view:Mai",
                                 "group:id:9", "/Other", "group:/Main/Sales"}) {
        EXPECT_EQ(CodeOf([&] { Found(argument); }), Exit::notFound) << argument;
    }
}

TEST_F(RightsTest, AnArgumentThatMayBeSeveralItemsListsThem)
{
    Execute("INSERT INTO qv_View (Col_ID, Col_Name, Col_Type) VALUES (4, 'Main', 1), (5, 'MAIN', 1)");
    for (const char* argument : {"view:Main", "/Main"}) {
        try {
            FindItem(m_conn, argument);
            FAIL() << "found one";
        } catch (const Error& e) {
            EXPECT_EQ(ExitFor(e.Code()), Exit::conflict);
            EXPECT_THAT(e.what(), AllOf(HasSubstr("(view 4)"), HasSubstr("(view 5)")));
        }
    }
}

TEST_F(RightsTest, ItemsThatAreGoneAndTypesThatNobodyKnowsHaveNoName)
{
    CreateUser(m_directory, "amy", {});
    NameCache namer(m_conn);
    EXPECT_EQ(namer.NameOf({kItemTypeUser, 1}), "amy");
    for (int type = 0; type <= 5; ++type) {
        EXPECT_EQ(namer.NameOf({type, 99}), "") << type;
        EXPECT_EQ(NameOf(m_conn, {type, 99}), "") << type;
    }
    EXPECT_EQ(Named(namer.Find({kItemTypeRole, 99})), "role (id 99)");
    EXPECT_EQ(Named(namer.Find({8, 99})), "8 (id 99)");
    EXPECT_EQ(Named(Item{{kItemTypeRole, 2}, "a\nb"}), "role a\\nb (id 2)");
}

TEST_F(RightsTest, ANamerKeepsWhatItHasRead)
{
    CreateUser(m_directory, "amy", {});
    NameCache namer(m_conn);
    EXPECT_EQ(namer.NameOf({kItemTypeUser, 1}), "amy");
    Execute("DELETE FROM qv_User");
    EXPECT_EQ(namer.NameOf({kItemTypeUser, 1}), "amy");
}

// ---- The facade -----------------------------------------------------------------------------------------------------

TEST_F(RightsTest, AnyTextGoesInAndComesOutAsItIs)
{
    const Function hard{kHard, std::string("\\") + kHard};
    EXPECT_FALSE(m_rights.Exists(kRole, hard));
    m_rights.Grant(kRole, hard, {1, -2});
    EXPECT_TRUE(m_rights.Exists(kRole, hard));
    m_rights.Set(kRole, hard, -1);
    EXPECT_THAT(m_rights.Of(kRole, kHard), ElementsAre(ItemRight{hard, {-1, -2}}));
    EXPECT_THAT(m_rights.Of(kRole, "x"), IsEmpty());
    EXPECT_THAT(m_rights.Find(kRole, hard), SizeIs(1));
    EXPECT_THAT(m_rights.Of(kView), IsEmpty());
    m_rights.Revoke(kRole, hard);
    EXPECT_THAT(m_rights.Of(kRole), IsEmpty());
}

TEST_F(RightsTest, AnyTextNamesARightOnAnItemToo)
{
    const RightOn right{{kHard, std::string("\\") + kHard}, kRole, kView, {1, 2}};
    EXPECT_FALSE(m_rights.ExistsOn(kRole, kView, right.function));
    m_rights.GrantOn(right);
    EXPECT_TRUE(m_rights.ExistsOn(kRole, kView, right.function));
    EXPECT_THAT(m_rights.FindOn(kRole, kView, right.function), ElementsAre(right));
    m_rights.SetOn(kRole, kView, right.function, -3, -4);
    EXPECT_THAT(m_rights.HeldOn(kView, right.function), ElementsAre(RightOn{right.function, kRole, kView, {-3, -4}}));
    m_rights.RevokeOn(kRole, kView, right.function);
    EXPECT_THAT(m_rights.Between(kRole, Side::either), IsEmpty());
    m_rights.GrantOn(right);
    m_rights.RevokeOnFromAll(kView, right.function);
    EXPECT_THAT(m_rights.Between(kRole, Side::either), IsEmpty());
}

TEST_F(RightsTest, TheEngineEscapesAndNobodyDoesItAgain)
{
    // The kind on which texts of other operations have their backslashes doubled by hand.
    m_conn.m_nDBType = 6;
    const Function function{"a\\b", "c\\d"};
    m_rights.Grant(kRole, function, {1, 0});
    m_rights.GrantOn({function, kRole, kView, {1, 0}});
    EXPECT_THAT(m_rights.Of(kRole, "a\\b"), ElementsAre(ItemRight{function, {1, 0}}));
    EXPECT_THAT(m_rights.HeldOn(kView, function), SizeIs(1));
}

TEST_F(RightsTest, RightsOfItemsOfTheSameNumberStayApart)
{
    m_rights.Grant(kRole, {"g", "f"}, {1, 0});
    m_rights.Grant(kView, {"g", "f"}, {2, 0});
    m_rights.GrantOn({{"g", "f"}, kRole, kView, {3, 0}});
    m_rights.RevokeAll(kRole);
    EXPECT_THAT(m_rights.Of(kRole), IsEmpty());
    EXPECT_THAT(m_rights.Of(kView), SizeIs(1));
    EXPECT_THAT(m_rights.Between(kView, Side::holder), IsEmpty());
    EXPECT_THAT(m_rights.Between(kView, Side::dependent), SizeIs(1));
    EXPECT_THAT(m_rights.Between(kRole, Side::holder), SizeIs(1));
    EXPECT_THAT(m_rights.Between(kRole, Side::dependent), IsEmpty());
}

TEST_F(RightsTest, ARightOfAnItemOnItselfIsListedOnce)
{
    m_rights.GrantOn({{"g", "f"}, kRole, kRole, {1, 0}});
    EXPECT_THAT(m_rights.Between(kRole, Side::either), SizeIs(1));
}

TEST_F(RightsTest, AMissingDefaultRoleIsNoRole)
{
    const int amy = CreateUser(m_directory, "amy", {});
    EXPECT_FALSE(m_rights.HasRole(amy));
    EXPECT_THAT(m_rights.FunctionsOf(amy), IsEmpty());
    EXPECT_THAT(m_rights.ViewFunctionsOf(amy), IsEmpty());
    m_roles.Link({kItemTypeRole, MakeRole("Readers", {"Archive", 0})}, amy);
    EXPECT_FALSE(m_rights.HasRole(amy));
    MakeRole("everyone");
    EXPECT_TRUE(m_rights.HasRole(amy));
}

TEST_F(RightsTest, ARefusedWriteSaysWhy)
{
    Execute("PRAGMA query_only = 1");
    const Function function{"g", "f"};
    EXPECT_EQ(CodeOf([&] { m_rights.Grant(kRole, function, {}); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_rights.Set(kRole, function, 1); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_rights.RevokeAll(kRole); }), Exit::database);
    try {
        m_rights.GrantOn({function, kRole, kView, {}});
        FAIL() << "written";
    } catch (const Error& e) {
        EXPECT_THAT(e.what(), HasSubstr("readonly"));
    }
}

// ---- Rights of items ------------------------------------------------------------------------------------------------

TEST_F(RightConsoleTest, HelpOfEveryVerbHasExamples)
{
    for (const char* verb : {"list", "show", "grant", "set", "revoke", "on", "matrix", "effective", "views"}) {
        EXPECT_THAT(Done({"right", verb, "--help"}), HasSubstr("Examples:\n  qvadmin right")) << verb;
    }
    EXPECT_THAT(Done({"right", "matrix", "--help"}), HasSubstr("Usage: qvadmin right matrix [OPTIONS] ROLE...\n"));
    for (const char* word : {"list", "show", "grant", "set", "revoke", "clear"}) {
        EXPECT_THAT(Done({"right", "on", word, "--help"}), HasSubstr(fmt::format("Usage: qvadmin right on {} ", word)));
    }
}

TEST_F(RightConsoleTest, SeveralRightsAreEditedAsOneChange)
{
    Done({"role", "create", "A/B"});
    Done({"right", "grant", "role:Editors", "mail", "size", "4"});
    Done({"right", "grant", "role:A/B", "mail", "send", "1"});
    const auto edit = [](std::vector<std::string> edits) {
        edits.insert(edits.begin(), {"right", "edit"});
        return edits;
    };
    const std::vector<std::string> edits =
        edit({"/editors/mail/size=unlimited", "/A\\/B/mail/send=none", "/id:1/pages/edit=0x1F", "--yes"});
    EXPECT_THAT(Told(edits), HasSubstr("changed 3 rights\n"));
    EXPECT_EQ(Done({"right", "matrix", "Editors", "A/B", "-o", "csv"}),
              "genre,function,Editors,A/B\nmail,size,-1,\npages,edit,31,\n");
    EXPECT_THAT(Told(edits), HasSubstr("every right is as it is to be"));
    const Json entries = Json::parse(Done({"audit", "list", "--limit", "1", "-o", "json"}));
    Done({"audit", "undo", entries.at(0).at("id").dump(), "--yes"});
    EXPECT_EQ(Done({"right", "matrix", "Editors", "A/B", "-o", "csv"}),
              "genre,function,Editors,A/B\nmail,send,,1\nmail,size,4,\n");
    EXPECT_EQ(Run(edit({"/Editors/mail/size=5"})).exit, static_cast<int>(Exit::confirmationRequired));
    ExpectRefusal(edit({"/Editors/mail=5", "--yes"}), static_cast<int>(Exit::usage),
                  "write /ROLE/GENRE/FUNCTION=POWER");
    ExpectRefusal(edit({"Editors/mail/size=5", "--yes"}), static_cast<int>(Exit::usage),
                  "write /ROLE/GENRE/FUNCTION=POWER");
    ExpectRefusal(edit({"/Editors/mail/size=much", "--yes"}), static_cast<int>(Exit::usage), "much");
    ExpectRefusal(edit({"/Editors/mail/size=5", "/id:1/mail/size=6", "--yes"}), static_cast<int>(Exit::usage),
                  "two edits");
    ExpectRefusal(edit({"/Editors/ mail/size=5", "--yes"}), static_cast<int>(Exit::usage), "genre");
    EXPECT_EQ(Run(edit({"/Nobody/mail/size=5", "--yes"})).exit, static_cast<int>(Exit::notFound));
}

TEST_F(RightConsoleTest, RightsAreGrantedSetShownAndRevoked)
{
    EXPECT_EQ(Told({"right", "grant", "role:editors", kHard, kHard, "3", "--unpower", "-7"}),
              fmt::format("role Editors (id 1) now has the right '{0}' '{0}', power 3\n", kHard));
    Done({"right", "grant", "role:Editors", "mail", "size", "unlimited"});
    Done({"right", "grant", "role:Editors", "mail", "bits", "0x80000001"});
    EXPECT_EQ(Done({"right", "list", "role:Editors", "--genre", "mail", "-o", "plain"}),
              "mail\tbits\t-2147483647\t0\nmail\tsize\t-1\t0\n");
    const Json list = Json::parse(Done({"right", "list", "role:id:1", "-o", "json"}));
    ASSERT_THAT(list, SizeIs(3));
    EXPECT_EQ(list[0], (Json{{"genre", kHard}, {"function", kHard}, {"power", 3}, {"unpower", -7}}));
    EXPECT_EQ(
        Told({"right", "set", "role:Editors", kHard, kHard, "-2147483648"}),
        fmt::format("role Editors (id 1) has the right '{0}' '{0}' with power -2147483648 now, in 1 row\n", kHard));
    const Json shown = Json::parse(Done({"right", "show", "role:Editors", kHard, kHard, "-o", "json"}));
    EXPECT_EQ(shown, (Json::array({{{"genre", kHard}, {"function", kHard}, {"power", -2147483648}, {"unpower", -7}}})));
    EXPECT_EQ(Told({"right", "revoke", "role:Editors", "mail", "size"}),
              "role Editors (id 1) no longer has the right 'mail' 'size'; deleted 1 row\n");
    EXPECT_THAT(Json::parse(Done({"right", "list", "role:Editors", "-o", "json"})), SizeIs(2));
}

TEST_F(RightConsoleTest, AnyKindOfItemHoldsRights)
{
    for (const char* item : {"user:amy", "/Main/Sales", "role:Editors", "view:Main"}) {
        Done({"right", "grant", item, "user", "list", "1"});
        EXPECT_EQ(Done({"right", "list", item, "-o", "plain"}), "user\tlist\t1\t0\n") << item;
    }
}

TEST_F(RightConsoleTest, ARightThatIsThereIsNotGrantedAgainAndOneThatIsNotIsNotSet)
{
    Done({"right", "grant", "role:Editors", "mail", "send", "1"});
    ExpectRefusal({"right", "grant", "role:Editors", "mail", "send", "2"}, 4, "`qvadmin right set` changes its power");
    ExpectRefusal({"right", "set", "role:Editors", "mail", "Send", "2"}, 3, "does not have the right 'mail' 'Send'");
    ExpectRefusal({"right", "show", "role:Authors", "mail", "send"}, 3, "role Authors (id 2) does not have");
    ExpectRefusal({"right", "revoke", "role:Editors", "send", "mail"}, 3, "does not have the right 'send' 'mail'");
    EXPECT_EQ(Done({"right", "list", "role:Editors", "-o", "plain"}), "mail\tsend\t1\t0\n");
}

TEST_F(RightConsoleTest, PowersAndNamesThatNobodyMeansAreRefused)
{
    for (const char* power : {"", "x", "1x", "2147483648", "-2147483649", "0x", "0x100000000", "-0x1", "1.5", " 1"}) {
        ExpectRefusal({"right", "grant", "role:Editors", "mail", "send", power}, 2, "invalid power");
        ExpectRefusal({"right", "set", "role:Editors", "mail", "send", power}, 2, "invalid power");
    }
    ExpectRefusal({"right", "grant", "role:Editors", "mail", "send", "1", "--unpower", "x"}, 2, "invalid power");
    ExpectRefusal({"right", "grant", "role:Editors", "", "send", "1"}, 2, "the name of the genre is empty");
    ExpectRefusal({"right", "grant", "role:Editors", "mail", " send", "1"}, 2, "begins or ends with a blank");
    ExpectRefusal({"right", "grant", "role:Editors", "mail", "se\nnd", "1"}, 2, "holds a control character");
    ExpectRefusal({"right", "grant", "Editors", "mail", "send", "1"}, 2, "invalid item 'Editors': expected user:LOGIN");
    ExpectRefusal({"right", "grant", "role:Nobody", "mail", "send", "1"}, 3, "there is no role 'Nobody'");
    EXPECT_EQ(Done({"right", "list", "role:Editors", "-o", "plain"}), "");
}

TEST_F(RightConsoleTest, RowsOfOneRightAreAllShownSetAndRevoked)
{
    Execute("INSERT INTO qv_ItemAce VALUES (1, 3, 'send', 'mail', 4, 9), (1, 3, 'send', 'mail', -1, 8), "
            "(1, 1, 'send', 'mail', 2, 0), (1, 3, 'send', '', 2, 0)");
    EXPECT_EQ(Done({"right", "show", "role:Editors", "mail", "send", "-o", "plain"}),
              "mail\tsend\t-1\t8\nmail\tsend\t4\t9\n");
    EXPECT_EQ(Done({"right", "list", "role:Editors", "--genre", "", "-o", "plain"}), "\tsend\t2\t0\n");
    EXPECT_THAT(Told({"right", "set", "role:Editors", "mail", "send", "5"}), HasSubstr("power 5 now, in 2 rows\n"));
    EXPECT_EQ(Done({"right", "show", "role:Editors", "mail", "send", "-o", "plain"}),
              "mail\tsend\t5\t8\nmail\tsend\t5\t9\n");
    EXPECT_THAT(Told({"right", "revoke", "role:Editors", "mail", "send"}), HasSubstr("deleted 2 rows\n"));
    EXPECT_EQ(Done({"right", "list", "role:Editors", "-o", "plain"}), "\tsend\t2\t0\n");
    EXPECT_EQ(Done({"right", "list", "user:amy", "-o", "plain"}), "mail\tsend\t2\t0\n");
}

TEST_F(RightConsoleTest, AllRightsOfAnItemEndTogetherAfterAsking)
{
    for (const char* name : {"read", "send"}) {
        Done({"right", "grant", "role:Editors", "mail", name, "1"});
    }
    Done({"right", "on", "grant", "role:Editors", "view:Main", "pages", "see"});
    const ChildResult asked = Run({"right", "revoke", "role:Editors", "--all"});
    EXPECT_EQ(asked.exit, 9);
    EXPECT_THAT(asked.err, HasSubstr("role Editors (id 1) has 2 rights\nqvadmin: no right was ended"));
    EXPECT_THAT(Json::parse(Done({"right", "list", "role:Editors", "-o", "json"})), SizeIs(2));
    EXPECT_THAT(
        Told({"right", "revoke", "role:Editors", "--all", "--yes"}),
        HasSubstr("ended 2 rights of role Editors (id 1)\nleft alone: 1 right on other items; see `qvadmin right "
                  "on list role:id:1 --as holder`\n"));
    EXPECT_EQ(Done({"right", "list", "role:Editors", "-o", "plain"}), "");
    EXPECT_THAT(Told({"right", "revoke", "role:Editors", "--all"}),
                AllOf(StartsWith("role Editors (id 1) has no rights of its own\n"), HasSubstr("1 right on other")));
    EXPECT_EQ(Told({"right", "revoke", "role:Authors", "--all"}), "role Authors (id 2) has no rights of its own\n");
}

TEST_F(RightConsoleTest, OneRightOrAllOfThemIsToBeRevokedAndNotBoth)
{
    const std::string advice = "name the genre and the function of one right, or give --all";
    ExpectRefusal({"right", "revoke", "role:Editors"}, 2, advice);
    ExpectRefusal({"right", "revoke", "role:Editors", "mail"}, 2, advice);
    ExpectRefusal({"right", "revoke", "role:Editors", "mail", "--all", "--yes"}, 2, advice);
    ExpectRefusal({"right", "revoke", "role:Editors", "mail", "send", "--all", "--yes"}, 2, advice);
}

TEST_F(RightConsoleTest, NothingChangesWhenAnItemMayBeSeveral)
{
    Execute("INSERT INTO qv_Role (Col_Name, Col_AppName) VALUES ('EDITORS', 'Tolvan')");
    Execute("INSERT INTO qv_ItemAce VALUES (1, 3, 'send', 'mail', 4, 0)");
    const std::string named = "Editors (role 1), EDITORS (role 3)";
    ExpectRefusal({"right", "grant", "role:Editors", "mail", "read", "1"}, 4, named);
    ExpectRefusal({"right", "set", "role:Editors", "mail", "send", "1"}, 4, named);
    ExpectRefusal({"right", "revoke", "role:Editors", "mail", "send"}, 4, named);
    ExpectRefusal({"right", "revoke", "role:Editors", "--all", "--yes"}, 4, named);
    ExpectRefusal({"right", "matrix", "Authors", "Editors"}, 4, named);
    EXPECT_EQ(Done({"right", "list", "role:id:1", "-o", "plain"}), "mail\tsend\t4\t0\n");
}

// ---- Rights of items on items ---------------------------------------------------------------------------------------

TEST_F(RightConsoleTest, RightsOnItemsAreGrantedSetShownAndRevoked)
{
    EXPECT_EQ(Told({"right", "on", "grant", "role:Editors", "view:Main", kHard, kHard}),
              fmt::format("role Editors (id 1) now has the right '{0}' '{0}' on view Main (id 1), power 1\n", kHard));
    Done({"right", "on", "grant", "user:amy", "/Main/Sales", "pages", "see", "-1", "--unpower", "0x5"});
    ExpectRefusal({"right", "on", "grant", "user:amy", "/Main/Sales", "pages", "see"}, 4,
                  "on group /Main/Sales (id 1) already; `qvadmin right on set`");
    Done({"right", "on", "set", "user:amy", "/Main/Sales", "pages", "see", "7"});
    EXPECT_EQ(Done({"right", "on", "show", "user:amy", "/Main/Sales", "pages", "see", "-o", "plain"}),
              "pages\tsee\tuser\t1\tamy\tgroup\t1\t/Main/Sales\t7\t5\n");
    Done({"right", "on", "set", "user:amy", "/Main/Sales", "pages", "see", "8", "--unpower", "0"});
    EXPECT_EQ(Json::parse(Done({"right", "on", "list", "user:amy", "-o", "json"})),
              (Json::array({{{"genre", "pages"},
                             {"function", "see"},
                             {"holder_type", "user"},
                             {"holder_id", 1},
                             {"holder", "amy"},
                             {"on_type", "group"},
                             {"on_id", 1},
                             {"on", "/Main/Sales"},
                             {"power", 8},
                             {"unpower", 0}}})));
    EXPECT_EQ(
        Told({"right", "on", "revoke", "role:Editors", "view:Main", kHard, kHard}),
        fmt::format("role Editors (id 1) no longer has the right '{0}' '{0}' on view Main (id 1); deleted 1 row\n",
                    kHard));
    EXPECT_EQ(Done({"right", "on", "list", "view:Main", "-o", "plain"}), "");
}

TEST_F(RightConsoleTest, RightsOnItemsAreListedFromEitherSide)
{
    Done({"right", "on", "grant", "role:Editors", "user:amy", "pages", "see"});
    Done({"right", "on", "grant", "user:amy", "view:Main", "pages", "see"});
    // Of an item that is gone, and of a type that nobody knows.
    Execute("INSERT INTO qv_BIIAce VALUES (99, 3, 1, 1, 'a', 'b', 1, 0), (1, 1, 5, 8, 'z', 'z', 1, 0)");
    const std::string asHolder = "pages\tsee\tuser\t1\tamy\tview\t1\tMain\t1\t0\nz\tz\tuser\t1\tamy\t8\t5\t\t1\t0\n";
    const std::string asDependent =
        "a\tb\trole\t99\t\tuser\t1\tamy\t1\t0\npages\tsee\trole\t1\tEditors\tuser\t1\tamy\t1\t0\n";
    EXPECT_EQ(Done({"right", "on", "list", "user:amy", "--as", "holder", "-o", "plain"}), asHolder);
    EXPECT_EQ(Done({"right", "on", "list", "user:amy", "--as", "dependent", "-o", "plain"}), asDependent);
    EXPECT_THAT(Json::parse(Done({"right", "on", "list", "user:amy", "-o", "json"})), SizeIs(4));
    ExpectRefusal({"right", "on", "list", "user:amy", "--as", "both"}, 2, "is not one of holder, dependent");
    ExpectRefusal({"right", "on", "list", "user:amy", "--as", ""}, 2, "is not one of holder, dependent");
}

TEST_F(RightConsoleTest, WhatIsNotThereOnAnItemIsNeitherSetNorRevoked)
{
    Done({"right", "on", "grant", "role:Editors", "view:Main", "pages", "see"});
    const std::string missing = "does not have the right 'pages' 'see' on view Main (id 1); `qvadmin right on list`";
    for (const char* word : {"show", "revoke"}) {
        ExpectRefusal({"right", "on", word, "role:Authors", "view:Main", "pages", "see"}, 3, missing);
    }
    ExpectRefusal({"right", "on", "set", "role:Authors", "view:Main", "pages", "see", "1"}, 3, missing);
    ExpectRefusal({"right", "on", "clear", "view:Main", "pages", "edit"}, 3, "nobody has the right 'pages' 'edit' on");
    ExpectRefusal({"right", "on", "grant", "role:Editors", "view:Main", "pages", "edit", "x"}, 2, "invalid power");
    ExpectRefusal({"right", "on", "grant", "role:Editors", "view:Main", "pages", ""}, 2, "is empty");
    ExpectRefusal({"right", "on"}, 2, "name what to do");
}

TEST_F(RightConsoleTest, SecondPowersStayInEveryRowUnlessOneIsGiven)
{
    Execute("INSERT INTO qv_BIIAce VALUES (1, 3, 1, 4, 'pages', 'see', 1, 8), (1, 3, 1, 4, 'pages', 'see', 2, 9)");
    EXPECT_THAT(Told({"right", "on", "set", "role:Editors", "view:Main", "pages", "see", "5"}), HasSubstr("2 rows\n"));
    EXPECT_THAT(Done({"right", "on", "show", "role:Editors", "view:Main", "pages", "see", "-o", "csv"}),
                AllOf(HasSubstr(",5,8\n"), HasSubstr(",5,9\n")));
    EXPECT_THAT(Told({"right", "on", "set", "role:Editors", "view:Main", "pages", "see", "3", "--unpower", "8"}),
                HasSubstr("power 3 now, in 2 rows\n"));
    EXPECT_THAT(Told({"right", "on", "set", "role:Editors", "view:Main", "pages", "see", "4"}), HasSubstr("2 rows\n"));
    EXPECT_THAT(Told({"right", "on", "revoke", "role:Editors", "view:Main", "pages", "see"}),
                HasSubstr("deleted 2 rows\n"));
}

TEST_F(RightConsoleTest, ARightOnAnItemEndsForEveryoneAfterAsking)
{
    Done({"right", "on", "grant", "role:Editors", "view:Main", "pages", "see"});
    Done({"right", "on", "grant", "role:Editors", "view:Main", "pages", "edit"});
    Done({"right", "on", "grant", "role:Authors", "view:Main", "pages", "see", "-1"});
    Done({"right", "on", "grant", "role:Authors", "user:amy", "pages", "see"});
    const ChildResult asked = Run({"right", "on", "clear", "view:Main", "pages", "see"});
    EXPECT_EQ(asked.exit, 9);
    EXPECT_THAT(asked.err, StartsWith("role Editors (id 1) has it, power 1\nrole Authors (id 2) has it, power -1\n"));
    EXPECT_THAT(Told({"right", "on", "clear", "view:Main", "pages", "see", "--yes"}),
                HasSubstr("nobody has the right 'pages' 'see' on view Main (id 1) any more; deleted 2 rows\n"));
    EXPECT_THAT(Done({"right", "on", "list", "view:Main", "-o", "csv"}),
                AllOf(HasSubstr("edit"), Not(HasSubstr("see"))));
    EXPECT_THAT(Json::parse(Done({"right", "on", "list", "user:amy", "-o", "json"})), SizeIs(1));
}

// ---- The matrix -----------------------------------------------------------------------------------------------------

TEST_F(RightConsoleTest, TheMatrixPutsRolesSideBySide)
{
    Done({"right", "grant", "role:Editors", "mail", "send", "-1"});
    Done({"right", "grant", "role:Authors", "mail", "send", "0"});
    Done({"right", "grant", "role:Authors", "O'Neil", "a\\b", "2"});
    Execute("INSERT INTO qv_ItemAce VALUES (1, 3, 'send', 'mail', -5, 0), (1, 1, 'x', 'user', 1, 0)");
    EXPECT_EQ(Done({"right", "matrix", "editors", "Authors"}), "genre   function  Editors  Authors\n"
                                                               "O'Neil  a\\b                      2\n"
                                                               "mail    send      -5,-1          0\n");
    EXPECT_EQ(Done({"right", "matrix", "Editors", "Authors", "-o", "csv"}),
              "genre,function,Editors,Authors\nO'Neil,a\\b,,2\nmail,send,\"-5,-1\",0\n");
    EXPECT_EQ(Done({"right", "matrix", "Editors", "Authors", "-o", "plain"}),
              "O'Neil\ta\\\\b\t\t2\nmail\tsend\t-5,-1\t0\n");
    EXPECT_EQ(Json::parse(Done({"right", "matrix", "Editors", "Authors", "-o", "json"})),
              (Json::array({{{"genre", "O'Neil"}, {"function", "a\\b"}, {"Editors", nullptr}, {"Authors", 2}},
                            {{"genre", "mail"}, {"function", "send"}, {"Editors", "-5,-1"}, {"Authors", 0}}})));
    EXPECT_THAT(Done({"right", "matrix", "id:2", "authors", "-o", "jsonl"}),
                StartsWith("{\"genre\":\"O'Neil\",\"function\":\"a\\\\b\",\"Authors\":2}\n"));
    ExpectRefusal({"right", "matrix", "Editors", "Nobody"}, 3, "there is no role 'Nobody'");
    ExpectRefusal({"right", "matrix"}, 2, "ROLE");
}

TEST_F(RightConsoleTest, NoTwoColumnsOfTheMatrixHaveOneName)
{
    Done({"role", "create", "Editors", "--domain", "2"});
    Done({"role", "create", "genre"});
    Execute("INSERT INTO qv_Role (Col_Name, Col_AppName) VALUES ('a' || char(10) || 'b', 'Tolvan')");
    Done({"right", "grant", "role:genre", "mail", "send", "1"});
    EXPECT_EQ(Done({"right", "matrix", "id:1", "id:3", "genre", "-o", "csv"}),
              "genre,function,Editors (role 1),Editors (role 3),genre (role 4)\nmail,send,,,1\n");
    EXPECT_EQ(Done({"right", "matrix", "id:5"}), "genre  function  a\\nb\n");
}

// ---- What users may -------------------------------------------------------------------------------------------------

TEST_F(RightConsoleTest, WhatAUserMayIsWhatTheModuleSays)
{
    Done({"role", "add", "Editors", "amy"});
    Done({"role", "default", "--create"});
    Done({"right", "grant", "role:Editors", "mail", "size", "10"});
    Done({"right", "grant", "role:everyone", "mail", "size", "58"});
    Done({"right", "grant", "role:Editors", "mail", "rate", "10"});
    Done({"right", "grant", "role:everyone", "mail", "rate", "unlimited"});
    Done({"right", "grant", "role:Editors", kHard, kHard, "8"});
    // Nothing of these counts for amy.
    Done({"right", "grant", "role:Authors", "mail", "other", "1"});
    Done({"right", "grant", "user:amy", "mail", "size", "1024"});
    EXPECT_EQ(
        Json::parse(Done({"right", "effective", "amy", "-o", "json"})),
        (Json::array(
            {{{"genre", kHard}, {"function", kHard}, {"bits", 8}, {"publish", false}, {"guest", true}, {"limit", 8}},
             {{"genre", "mail"},
              {"function", "rate"},
              {"bits", 4294967295},
              {"publish", true},
              {"guest", true},
              {"limit", -1}},
             {{"genre", "mail"},
              {"function", "size"},
              {"bits", 58},
              {"publish", false},
              {"guest", true},
              {"limit", 58}}})));
    EXPECT_THAT(Done({"right", "effective", "amy"}), HasSubstr("  4294967295  yes      yes    unlimited\n"));
    EXPECT_THAT(Done({"right", "effective", "id:1", "-o", "csv"}), HasSubstr("mail,rate,4294967295,true,true,-1\n"));
    ExpectRefusal({"right", "effective", "nobody"}, 3, "there is no user 'nobody'");
}

TEST_F(RightConsoleTest, AUserWithoutAnyRoleIsToldSo)
{
    const std::string advice = "amy (id 1) has no role of this system, and the role everyone is missing";
    Done({"right", "grant", "user:amy", "mail", "send", "1"});
    ExpectRefusal({"right", "effective", "amy"}, 3, advice);
    ExpectRefusal({"right", "views", "amy"}, 3, advice);
    ExpectRefusal({"right", "views", "amy", "pages", "see"}, 3, advice);
    Done({"role", "add", "Editors", "amy"});
    EXPECT_EQ(Done({"right", "effective", "amy", "-o", "json"}), "[]\n");
    EXPECT_EQ(Done({"right", "views", "amy", "-o", "json"}), "[]\n");
    Done({"role", "remove", "Editors", "amy"});
    Done({"role", "default", "--create"});
    EXPECT_EQ(Done({"right", "effective", "amy", "-o", "json"}), "[]\n");
}

TEST_F(RightConsoleTest, TheViewsOfAUserAreThoseWithAPowerOfExactlyOne)
{
    Done({"role", "add", "Editors", "amy"});
    Done({"role", "default", "--create"});
    Done({"view", "create", "Second"});
    Done({"right", "on", "grant", "role:Editors", "view:Main", kHard, kHard});
    Done({"right", "on", "grant", "role:everyone", "view:Main", kHard, kHard});
    Done({"right", "on", "grant", "role:everyone", "view:Second", "pages", "see"});
    Execute("INSERT INTO qv_BIIAce VALUES (1, 3, 99, 4, 'pages', 'see', 1, 0)");
    // No view, another power, another role, no role.
    Done({"right", "on", "grant", "role:Editors", "/Main/Sales", "pages", "see"});
    Done({"right", "on", "grant", "role:Editors", "view:Main", "pages", "see", "3"});
    Done({"right", "on", "grant", "role:Authors", "view:Main", "pages", "see"});
    Done({"right", "on", "grant", "user:amy", "view:Main", "pages", "see"});
    EXPECT_EQ(Json::parse(Done({"right", "views", "amy", "-o", "json"})),
              (Json::array({{{"genre", kHard}, {"function", kHard}, {"id", 1}, {"name", "Main"}},
                            {{"genre", "pages"}, {"function", "see"}, {"id", 2}, {"name", "Second"}},
                            {{"genre", "pages"}, {"function", "see"}, {"id", 99}, {"name", ""}}})));
    EXPECT_EQ(Done({"right", "views", "amy", "pages", "see", "-o", "plain"}),
              "pages\tsee\t2\tSecond\npages\tsee\t99\t\n");
    EXPECT_EQ(Done({"right", "views", "amy", "pages", "edit", "-o", "plain"}), "");
    ExpectRefusal({"right", "views", "amy", "pages"}, 2, "name the function too");
}
