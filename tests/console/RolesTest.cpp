#include "management/roles/Roles.h"

#include "ConsoleFixture.h"
#include "RefusalOf.h"
#include "basefun/ItemTypes.h"
#include "console/ExitCode.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "management/users/Users.h"
#include "schema/Schema.h"
#include "tests/support/HardText.h"

#include <fmt/format.h>

#include <algorithm>

using namespace console;
using namespace management;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

class RolesTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
    }

    int Make(const std::string& name, const RoleScope& scope = {}, const std::string& description = "")
    {
        RoleData role;
        role.name = name;
        role.description = description;
        role.scope = scope;
        return CreateRole(m_roles, role);
    }

    void Execute(const std::string& sql) { m_conn.Execute(sql.c_str()); }

    CAConnect m_conn;
    Directory m_directory{m_conn};
    Roles m_roles{m_conn};
};

ItemKey Holder(int roleId) { return {kItemTypeRole, roleId}; }

class RoleConsoleTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
    }
};

} // namespace

// ---- The facade -----------------------------------------------------------------------------------------------------

TEST_F(RolesTest, AnyTextGoesInAndComesOutAsItIs)
{
    const int id = Make(kHard, {kHard, 3}, kHard);
    const std::optional<RoleData> role = m_roles.Load(id);
    EXPECT_EQ(role.value().name, kHard);
    EXPECT_EQ(role->description, kHard);
    EXPECT_EQ(role->scope.application, kHard);
    EXPECT_EQ(role->scope.domainId, 3);
    EXPECT_EQ(FindRole(m_roles, kHard, {kHard, 3}).id, id);
    EXPECT_THAT(m_roles.List({kHard, 3}), ElementsAre(testing::Field(&ListedRole::description, kHard)));
    m_roles.Change(id, "a\\b", {});
    EXPECT_EQ(m_roles.Load(id).value().description, kHard);
    m_roles.Change(id, {}, "it's");
    EXPECT_EQ(m_roles.Load(id).value().name, "a\\b");
    EXPECT_EQ(m_roles.Load(id).value().description, "it's");
}

TEST_F(RolesTest, TheEngineEscapesAndNobodyDoesItAgain)
{
    // The kind on which texts of other operations have their backslashes doubled by hand.
    m_conn.m_nDBType = 6;
    const int id = Make("a\\b");
    m_roles.GiveTitle({1, 2, "e\\f", "g\\h", "", "i\\j"});
    EXPECT_EQ(m_roles.Load(id).value().name, "a\\b");
    EXPECT_TRUE(m_roles.HoldsTitle(1, 2, "e\\f"));
    EXPECT_THAT(m_roles.TitlesIn(1, "e\\f"), ElementsAre(AllOf(testing::Field(&HeldTitle::description, "g\\h"),
                                                               testing::Field(&HeldTitle::name, "i\\j"))));
    m_roles.TakeTitle(1, 2, "e\\f");
    EXPECT_THAT(m_roles.TitlesOf(2), IsEmpty());
}

TEST_F(RolesTest, ARoleNameIsTakenInItsScopeWhateverItsCase)
{
    Make("Żółw");
    EXPECT_EQ(CodeOf([&] { Make("żÓŁW"); }), Exit::conflict);
    EXPECT_NO_THROW(Make("żÓŁW", {std::string(kOwnApplication), 1}));
    EXPECT_NO_THROW(Make("żÓŁW", {"other", 0}));
    EXPECT_EQ(m_roles.List({}).size(), 1U);
}

TEST_F(RolesTest, NamesThatNobodyCouldTypeAreRefused)
{
    for (const char* name : {"", " a", "a ", "a\tb", "\n"}) {
        EXPECT_EQ(CodeOf([&] { Make(name); }), Exit::usage) << name;
    }
}

TEST_F(RolesTest, ARoleIsFoundByNameOrByIdAndNotGuessed)
{
    const int id = Make("Editors");
    EXPECT_EQ(FindRole(m_roles, "eDITORS", {}).id, id);
    EXPECT_EQ(FindRole(m_roles, fmt::format("id:{}", id), {"other", 9}).id, id);
    EXPECT_EQ(CodeOf([&] { FindRole(m_roles, "Editors", {"other", 0}); }), Exit::notFound);
    EXPECT_EQ(CodeOf([&] { FindRole(m_roles, "id:99", {}); }), Exit::notFound);
    EXPECT_EQ(CodeOf([&] { FindRole(m_roles, "id:1x", {}); }), Exit::usage);
    Execute("INSERT INTO qv_Role (Col_Name, Col_AppName) VALUES ('EDITORS', 'Tolvan')");
    try {
        FindRole(m_roles, "Editors", {});
        FAIL() << "found one";
    } catch (const Error& e) {
        EXPECT_EQ(ExitFor(e.Code()), Exit::conflict);
        EXPECT_THAT(e.what(), AllOf(HasSubstr("Editors (role 1)"), HasSubstr("EDITORS (role 2)")));
    }
}

TEST_F(RolesTest, TheNewIdIsThatOfTheNewRoleAmongSeveralOfItsName)
{
    Make("Editors");
    const int other = Make("Editors", {"other", 0});
    EXPECT_EQ(m_roles.Load(other).value().scope.application, "other");
}

TEST_F(RolesTest, MembersAreCountedOnceAndOnlyWhenTheyAreThere)
{
    const int id = Make("Editors");
    const int amy = CreateUser(m_directory, "amy", {});
    EXPECT_TRUE(m_roles.Link(Holder(id), amy));
    EXPECT_FALSE(m_roles.Link(Holder(id), amy));
    // A second link by another relation, and one to nobody.
    Execute(fmt::format("INSERT INTO qv_Relation VALUES ({0}, 3, {1}, 1, 2, 0, 0), ({0}, 3, 99, 1, 1, 0, 0)", id, amy));
    EXPECT_THAT(m_roles.List({}), ElementsAre(testing::Field(&ListedRole::members, 1)));
    std::vector<std::string> logins;
    m_roles.UsersOf(Holder(id), [&logins](const LinkedUser& user) {
        logins.push_back(user.login);
        return true;
    });
    EXPECT_THAT(logins, ElementsAre("amy"));
    EXPECT_TRUE(m_roles.Unlink(Holder(id), amy));
    EXPECT_FALSE(m_roles.Unlink(Holder(id), amy));
    EXPECT_THAT(m_roles.OfUser(amy), IsEmpty());
}

TEST_F(RolesTest, AUserHasTheDefaultRoleOnceAndNoPlaceholder)
{
    const int amy = CreateUser(m_directory, "amy", {});
    EXPECT_THAT(m_roles.OfUser(amy), IsEmpty());
    const int everyone = Make("everyone");
    const int other = Make("Readers", {"Archive", 2});
    m_roles.Link(Holder(everyone), amy);
    m_roles.Link(Holder(other), amy);
    EXPECT_THAT(
        m_roles.OfUser(amy),
        ElementsAre(AllOf(testing::Field(&UserRole::id, other), testing::Field(&UserRole::isDefault, false)),
                    AllOf(testing::Field(&UserRole::id, everyone), testing::Field(&UserRole::isDefault, true))));
}

TEST_F(RolesTest, TheDefaultRoleKeepsItsNameAndNoOtherTakesIt)
{
    const int everyone = Make("everyone");
    const int editors = Make("Editors", {std::string(kOwnApplication), 4});
    EXPECT_EQ(CodeOf([&] { ChangeRole(m_roles, {everyone, "everyone"}, "Everyone", {}); }), Exit::isProtected);
    EXPECT_EQ(CodeOf([&] { ChangeRole(m_roles, {editors, "Editors"}, "everyone", {}); }), Exit::isProtected);
    EXPECT_EQ(CodeOf([&] { Make("everyone", {std::string(kOwnApplication), 4}); }), Exit::conflict);
    EXPECT_TRUE(ChangeRole(m_roles, {everyone, "everyone"}, {}, "all of us"));
    EXPECT_FALSE(ChangeRole(m_roles, {everyone, "everyone"}, "everyone", "all of us"));
    EXPECT_NO_THROW(Make("everyone", {"other", 0}));
    EXPECT_FALSE(IsProtected(m_roles, {editors, "Editors"}));
}

TEST_F(RolesTest, ASecondRoleOfTheDefaultNameIsProtectedToo)
{
    Make("everyone");
    Execute("INSERT INTO qv_Role (Col_ID, Col_Name, Col_AppName, Col_DomainID) VALUES (9, 'everyone', 'Tolvan', 5)");
    EXPECT_TRUE(IsProtected(m_roles, {9, "everyone"}));
}

TEST_F(RolesTest, DeletingTakesWhatStandsElsewhereAndNothingOfOthers)
{
    const int id = Make("Editors");
    const std::string rows = "({0}, 3, 1, 1), ({0}, 2, 1, 1)";
    Execute(fmt::format(fmt::runtime("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, "
                                     "Col_DQvItemType) VALUES " +
                                     rows + ", (5, 2, {0}, 3)"),
                        id));
    Execute(fmt::format(fmt::runtime("INSERT INTO qv_BIIAce (Col_QvItemID, Col_QvItemType, Col_DQvItemID, "
                                     "Col_DQvItemType) VALUES " +
                                     rows + ", (5, 2, {0}, 3)"),
                        id));
    for (const char* table : {"qv_ItemAce", "Tab_BIOAce"}) {
        Execute(fmt::format("INSERT INTO {} (Col_QvItemID, Col_QvItemType) VALUES ({}, 3), ({}, 1)", table, id, id));
    }
    std::string traces;
    for (const Reference& trace : m_roles.References(id)) {
        traces += fmt::format("{} {}, ", trace.count, trace.noun);
    }
    EXPECT_EQ(traces, "2 relation, 1 right, 2 right between items, 1 right on documents, ");
    m_roles.Delete(id);
    EXPECT_THAT(m_roles.References(id), IsEmpty());
    EXPECT_FALSE(m_roles.Load(id).has_value());
    // The rows of the group and of the user of the same number.
    EXPECT_THAT(m_directory.References(id), Not(IsEmpty()));
    CARecordset left;
    left.Open("SELECT (SELECT COUNT(*) FROM qv_Relation) + (SELECT COUNT(*) FROM qv_BIIAce)", &m_conn, adbcCursorStatic,
              adbcLockOptimistic, adbcCommandTable);
    int count = 0;
    left.GetValue(1, count);
    EXPECT_EQ(count, 2);
}

TEST_F(RolesTest, ARefusedWriteSaysWhy)
{
    Make("Editors");
    Execute("PRAGMA query_only = 1");
    EXPECT_EQ(CodeOf([&] { Make("Readers"); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_roles.Change(1, "a", "b"); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_roles.Delete(1); }), Exit::database);
    try {
        m_roles.GiveTitle({1, 1, "Lead", "", "", ""});
        FAIL() << "written";
    } catch (const Error& e) {
        EXPECT_THAT(e.what(), HasSubstr("readonly"));
    }
}

// ---- The commands ---------------------------------------------------------------------------------------------------

TEST_F(RoleConsoleTest, HelpOfEveryVerbHasExamples)
{
    for (const char* verb : {"list", "show", "create", "set", "delete", "members", "add", "remove", "of", "default"}) {
        EXPECT_THAT(Done({"role", verb, "--help"}), HasSubstr("Examples:\n  qvadmin role")) << verb;
    }
    EXPECT_THAT(Done({"role", "delete", "--help"}), HasSubstr("Usage: qvadmin role delete [OPTIONS] ROLE...\n"));
    EXPECT_THAT(Done({"role", "add", "--help"}), HasSubstr("Usage: qvadmin role add [OPTIONS] ROLE USER...\n"));
}

TEST_F(RoleConsoleTest, RolesAreMadeShownChangedAndListed)
{
    EXPECT_EQ(Done({"role", "create", kHard, "--description", "a\\b"}), "1\n");
    EXPECT_EQ(Done({"role", "create", "authors"}), "2\n");
    EXPECT_EQ(Done({"role", "create", "Readers", "--domain", "3", "--app", "O'Neil"}), "3\n");
    EXPECT_THAT(Done({"role", "list", "-o", "csv"}), AllOf(StartsWith("id,name,description,members\n2,authors,,0\n1,"),
                                                           HasSubstr(",a\\b,0\n"), Not(HasSubstr("Readers"))));
    EXPECT_EQ(Done({"role", "list", "--domain", "3", "--app", "O'Neil", "-o", "plain"}), "3\tReaders\t\t0\n");
    EXPECT_THAT(Done({"role", "show", "id:3", "-o", "plain"}),
                AllOf(HasSubstr("application\tO'Neil\n"), HasSubstr("domain\t3\n"), HasSubstr("members\t0\n")));
    EXPECT_EQ(Run({"role", "set", "AUTHORS", "--name", "Authors"}).err, "changed authors (role 2)\n");
    EXPECT_EQ(Run({"role", "set", "Authors", "--name", "Authors"}).err, "nothing to change in Authors (role 2)\n");
    ExpectRefusal({"role", "set", "Authors"}, 2, "nothing to set");
    ExpectRefusal({"role", "set", "Authors", "--name", kHard}, 4, "is taken by");
    ExpectRefusal({"role", "create", "Authors"}, 4, "is taken by");
    ExpectRefusal({"role", "show", "Nobody"}, 3, "there is no role 'Nobody'");
}

TEST_F(RoleConsoleTest, UsersComeAndGo)
{
    Done({"user", "create", "amy", "--name", "Amy Holt"});
    Done({"user", "create", "rory"});
    Done({"role", "create", "Editors"});
    EXPECT_EQ(Run({"role", "add", "editors", "amy", "rory"}).err,
              "amy (id 1) now has Editors (role 1)\nrory (id 2) now has Editors (role 1)\n");
    EXPECT_EQ(Run({"role", "add", "editors", "amy"}).err, "amy (id 1) already has Editors (role 1)\n");
    EXPECT_EQ(Done({"role", "members", "Editors", "-o", "plain"}), "1\tamy\tAmy Holt\n2\trory\trory\n");
    ExpectRefusal({"role", "remove", "Editors", "amy", "nobody"}, 3, "there is no user");
    EXPECT_EQ(Done({"role", "list", "-o", "plain"}), "1\tEditors\t\t2\n");
    EXPECT_EQ(Run({"role", "remove", "Editors", "amy"}).err, "amy (id 1) no longer has Editors (role 1)\n");
    EXPECT_EQ(Run({"role", "remove", "Editors", "amy"}).err, "amy (id 1) was not linked to Editors (role 1)\n");
    EXPECT_EQ(Done({"role", "list", "-o", "plain"}), "1\tEditors\t\t1\n");
}

TEST_F(RoleConsoleTest, TheDefaultRoleIsMadeShownAndProtected)
{
    Done({"user", "create", "amy"});
    EXPECT_EQ(Done({"role", "of", "amy", "-o", "plain"}), "");
    ExpectRefusal({"role", "default"}, 3, "`qvadmin role default --create` makes it");
    const ChildResult made = Run({"role", "default", "--create", "-o", "plain"});
    EXPECT_EQ(made.err, "created everyone (role 1)\n");
    EXPECT_THAT(made.out, HasSubstr("name\teveryone\n"));
    EXPECT_EQ(Run({"role", "default", "--create", "-o", "plain"}).err, "");
    Done({"role", "add", "everyone", "amy"});
    EXPECT_EQ(Done({"role", "of", "amy", "-o", "plain"}), "1\teveryone\t\tTolvan\t0\ttrue\n");
    EXPECT_EQ(Done({"user", "roles", "amy", "-o", "plain"}), "1\teveryone\t\tTolvan\t0\ttrue\n");
    Done({"role", "create", "Editors"});
    ExpectRefusal({"role", "delete", "Editors", "everyone", "--yes"}, 5, "nothing was deleted");
    ExpectRefusal({"role", "delete", "x", "Editors", "y", "--yes"}, 3,
                  "there are no roles 'x', 'y'; `qvadmin role list` shows");
    ExpectRefusal({"role", "set", "everyone", "--name", "all"}, 5, "keeps its name");
    EXPECT_EQ(Run({"role", "show", "Editors"}).exit, 0);
}

TEST_F(RoleConsoleTest, DeletingSaysWhatGoesAndAsks)
{
    Done({"user", "create", "amy"});
    Done({"role", "create", "Editors"});
    Done({"role", "add", "Editors", "amy"});
    Execute("INSERT INTO qv_ItemAce (Col_QvItemID, Col_QvItemType) VALUES (1, 3), (1, 3)");
    const ChildResult asked = Run({"role", "delete", "Editors"});
    EXPECT_EQ(asked.exit, 9);
    EXPECT_THAT(asked.err, HasSubstr("delete Editors (role 1), with 1 relation, 2 rights\n"));
    EXPECT_EQ(Run({"role", "show", "Editors"}).exit, 0);
    EXPECT_THAT(Run({"role", "delete", "Editors", "id:1", "--yes"}).err, HasSubstr("deleted 1 role\n"));
    EXPECT_EQ(Run({"role", "show", "Editors"}).exit, 3);
    EXPECT_THAT(Run({"user", "delete", "amy"}).err, HasSubstr("delete amy (id 1)\n"));
}
