#include "ConsoleOnEngine.h"
#include "management/users/UserSelection.h"
#include "schema/Schema.h"
#include "tests/support/CountingSession.h"
#include "tests/support/Lines.h"
#include "tests/support/Memory.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

using namespace management;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

using Words = std::vector<std::string>;

/// People in two branches of a company, and some in none.
class SelectionTest : public ConsoleOnEngine {
protected:
    void SetUp() override
    {
        ConsoleOnEngine::SetUp();
        Done({"user", "create", "danny", "--name", "100% _sure_! [x] \\ it's", "--email", "Danny@Example.org"});
        WriteFile("setup.txt", "view create Company\n"
                               "group create /Company/Sales\n"
                               "group create /Company/Sales/North\n"
                               "group create /Company/Service\n"
                               "user create Admin\n"
                               "user create amy --name 'Amy Müller' --title Lead --home-city Leeds --sex female "
                               "--birthday 1989-11-28 --sort-index 5\n"
                               "user create Rory --name 'Rory MÜLLER' --title Trainee --locked --birthday 1980-01-02\n"
                               "user create clara --name 'Clara Muller' --title 'team lead' --super\n"
                               "user create émile --name Émile --home-city leeds\n"
                               "member add /Company/Sales amy\n"
                               "member add /Company/Sales/North Rory clara\n"
                               "member add /Company danny\n"
                               "role create Editors\n"
                               "role add Editors amy clara\n"
                               "title give /Company/Sales amy Chef\n"
                               "title give /Company/Service Rory CHEF\n"
                               "title give /Company/Service danny Chéf\n");
        ASSERT_EQ(Run({"batch", "setup.txt", "--stop-on-error"}).exit, 0);
    }

    /// The login names that a list gives.
    std::vector<std::string> Logins(const Words& options)
    {
        return LinesOf(Done(With({"-o", "plain", "user", "list", "--fields", "login"}, options)));
    }

    ChildResult AnswerOnTerminal(const std::string& answer, const Words& words)
    {
        ChildOptions options = m_options;
        options.terminal = true;
        options.input = answer + "\n";
        ChildProcess child(QVADMIN_PROGRAM, words, options);
        return child.Finish();
    }
};

} // namespace

TEST_P(SelectionTest, WhoIsWhereAndWhat)
{
    EXPECT_THAT(Logins({}), ElementsAre("Admin", "amy", "clara", "danny", "Rory", "émile"));
    EXPECT_THAT(Logins({"--in", "/Company/Sales"}), ElementsAre("amy"));
    EXPECT_THAT(Logins({"--in", "/Company/Sales", "--deep"}), ElementsAre("amy", "clara", "Rory"));
    EXPECT_THAT(Logins({"--in", "/Company"}), ElementsAre("danny"));
    EXPECT_THAT(Logins({"--in", "/Company", "--deep"}), ElementsAre("amy", "clara", "danny", "Rory"));
    EXPECT_THAT(Logins({"--in", "/Company/Service", "--deep"}), IsEmpty());
    EXPECT_THAT(Logins({"--no-group"}), ElementsAre("Admin", "émile"));
    EXPECT_THAT(Logins({"--role", "editors"}), ElementsAre("amy", "clara"));
    EXPECT_THAT(Logins({"--title", "chef"}), ElementsAre("amy", "Rory"));
    EXPECT_THAT(Logins({"--title", "CHÉF"}), ElementsAre("danny"));
    EXPECT_THAT(Logins({"--title", "nobody has it"}), IsEmpty());
    EXPECT_THAT(Logins({"--super"}), AllOf(testing::Contains("clara"), Not(testing::Contains("amy"))));
    EXPECT_THAT(Logins({"--locked"}), ElementsAre("Rory"));
    EXPECT_THAT(Logins({"--active", "--in", "/Company", "--deep", "--role", "Editors", "--super"}),
                ElementsAre("clara"));
}

TEST_P(SelectionTest, UsersWhoFitAreDeletedAfterTheyWereShown)
{
    const std::string before = Dump();
    const ChildResult refused = AnswerOnTerminal("n", {"user", "delete", "--role", "editors"});
    EXPECT_EQ(refused.exit, 9);
    EXPECT_THAT(refused.err,
                AllOf(HasSubstr("delete amy (id "), HasSubstr("delete clara (id "), HasSubstr("with 2 relations"),
                      HasSubstr("Delete 2 users? [y/N]"), HasSubstr("nothing was deleted")));
    EXPECT_EQ(Run({"user", "delete", "--role", "editors"}).exit, 9) << "nobody can be asked";
    EXPECT_EQ(Run({"user", "delete", "amy", "--role", "editors"}).exit, 2);
    EXPECT_EQ(Run({"user", "delete"}).exit, 2);
    const ChildResult admin = Run({"user", "delete", "--no-group", "--yes"});
    EXPECT_EQ(admin.exit, 5);
    EXPECT_THAT(Run({"user", "delete", "--title", "nobody has it", "--yes"}).err, HasSubstr("nobody fits"));
    EXPECT_EQ(Dump(), before);
    EXPECT_EQ(AnswerOnTerminal("y", {"user", "delete", "--role", "editors"}).exit, 0);
    EXPECT_THAT(Logins({}), ElementsAre("Admin", "danny", "Rory", "émile"));
    EXPECT_EQ(RunWith("danny\n", {"user", "delete", "-", "--yes"}).exit, 0);
    EXPECT_THAT(Logins({}), ElementsAre("Admin", "Rory", "émile"));
}

TEST_P(SelectionTest, TextsAreComparedAsNamesAre)
{
    EXPECT_THAT(Logins({"--where", "name~müller"}), ElementsAre("amy", "Rory"));
    EXPECT_THAT(Logins({"--where", "name~muller"}), ElementsAre("clara"));
    EXPECT_THAT(Logins({"--where", "name=AMY MÜLLER"}), ElementsAre("amy"));
    EXPECT_THAT(Logins({"--where", "login=ÉMILE"}), ElementsAre("émile"));
    EXPECT_THAT(Logins({"--where", "login=emile"}), IsEmpty());
    EXPECT_THAT(Logins({"--where", "login=rory"}), ElementsAre("Rory"));
    EXPECT_THAT(Logins({"--match", "MÜL"}), ElementsAre("amy", "Rory"));
    EXPECT_THAT(Logins({"--match", "danny@example"}), ElementsAre("danny"));
    for (const char* part : {"100% _", "% _s", "_!", "! [x]", "[x] \\", "\\ it's"}) {
        EXPECT_THAT(Logins({"--where", std::string("name~") + part}), ElementsAre("danny")) << part;
    }
    // Letters with the same capital are not the same.
    Done({"user", "create", "james", "--name", "James Kırk"});
    EXPECT_THAT(Logins({"--where", "name~kirk"}), IsEmpty());
    EXPECT_THAT(Logins({"--where", "name=JAMES KıRK"}), ElementsAre("james"));
    EXPECT_EQ(Done({"user", "count", "--where", "name~kirk"}), "0\n");
    Done({"title", "give", "/Company/Sales", "james", "Kırk"});
    Done({"title", "give", "/Company/Sales", "amy", "Kirk"});
    EXPECT_THAT(Logins({"--title", "kirk"}), ElementsAre("amy"));
    EXPECT_THAT(Logins({"--where", "name~100_"}), IsEmpty());
    EXPECT_THAT(Logins({"--where", "name~[abc]"}), IsEmpty());
}

TEST_P(SelectionTest, AllConditionsHoldAndFieldsOfAllKindsCanBeAskedFor)
{
    EXPECT_THAT(Logins({"--where", "title~lead", "--where", "super=no"}), ElementsAre("amy"));
    EXPECT_THAT(Logins({"--where", "title=lead"}), ElementsAre("amy"));
    EXPECT_THAT(Logins({"--where", "home_city=LEEDS"}), ElementsAre("amy", "émile"));
    EXPECT_THAT(Logins({"--where", "birthday=1989-11-28"}), ElementsAre("amy"));
    EXPECT_THAT(Logins({"--where", "birthday=", "--in", "/Company", "--deep"}), ElementsAre("clara", "danny"));
    EXPECT_THAT(Logins({"--where", "sex=female"}), ElementsAre("amy"));
    EXPECT_THAT(Logins({"--where", "sort_index=5"}), ElementsAre("amy"));
    EXPECT_THAT(Logins({"--where", "locked=yes"}), ElementsAre("Rory"));
    EXPECT_THAT(Logins({"--where", "email=", "--no-group", "--where", "login~mi"}), ElementsAre("Admin", "émile"));
    const std::string id = LinesOf(Done({"-o", "plain", "user", "list", "--fields", "id", "--where", "login=amy"}))[0];
    EXPECT_THAT(Logins({"--where", "id=" + id}), ElementsAre("amy"));
}

TEST_P(SelectionTest, ColumnsThatHoldNothingAreEmptyOrZero)
{
    Execute("UPDATE qv_User SET Col_EMail = NULL, Col_Disabled = NULL, Col_Sex = NULL WHERE Col_LoginName = 'clara'");
    EXPECT_THAT(Logins({"--active", "--in", "/Company/Sales", "--deep"}), ElementsAre("amy", "clara"));
    EXPECT_THAT(Logins({"--where", "email=", "--where", "sex=0", "--in", "/Company/Sales/North"}),
                ElementsAre("clara", "Rory"));
    const nlohmann::json listed =
        nlohmann::json::parse(Done({"user", "list", "--where", "login=clara", "-o", "json"})).front();
    EXPECT_EQ(listed["email"], "");
    EXPECT_EQ(listed["locked"], false);
    EXPECT_EQ(listed["sex"], 0);
}

TEST_P(SelectionTest, ColumnsOrderAndPart)
{
    const Words sales = {"--in", "/Company", "--deep"};
    EXPECT_THAT(Logins(With({"--sort", "-login"}, sales)), ElementsAre("Rory", "danny", "clara", "amy"));
    EXPECT_THAT(Logins(With({"--sort", "title"}, sales)), ElementsAre("danny", "amy", "clara", "Rory"));
    EXPECT_THAT(Logins(With({"--sort", "-title"}, sales)), ElementsAre("Rory", "clara", "amy", "danny"));
    EXPECT_THAT(Logins(With({"--sort", "birthday"}, sales)), ElementsAre("clara", "danny", "Rory", "amy"));
    EXPECT_THAT(Logins(With({"--sort", "-birthday"}, sales)), ElementsAre("amy", "Rory", "clara", "danny"));
    EXPECT_THAT(Logins(With({"--sort", "sort_index"}, sales)), ElementsAre("amy", "clara", "danny", "Rory"));
    EXPECT_THAT(Logins({"--offset", "2", "--limit", "2"}), ElementsAre("clara", "danny"));
    EXPECT_THAT(Logins({"--offset", "4"}), ElementsAre("Rory", "émile"));
    EXPECT_THAT(Logins({"--offset", "9"}), IsEmpty());
    EXPECT_EQ(Done({"-o", "csv", "user", "list", "--fields", "login,Birthday,super", "--role", "Editors"}),
              "login,birthday,super\namy,1989-11-28,false\nclara,,true\n");
    EXPECT_EQ(Done({"user", "count", "--in", "/Company", "--deep"}), "4\n");
    EXPECT_EQ(Done({"user", "count", "--where", "name~müller"}), "2\n");
    EXPECT_EQ(Done({"user", "count"}), "6\n");
}

TEST_P(SelectionTest, WhatCannotBeIsRefused)
{
    for (const auto& [options, sentence] : std::vector<std::pair<Words, std::string>>{
             {{"--where", "shoe=43"}, "there is no field 'shoe'; there are id, login, name, "},
             {{"--where", "password=x"}, "there is no field 'password'"},
             {{"--fields", "login,,name"}, "there is no field ''"},
             {{"--fields", "login,name,Login"}, "the field login is named twice"},
             {{"--sort", "shoe"}, "there is no field 'shoe'"},
             {{"--where", "lead"}, "write FIELD=VALUE or FIELD~PART"},
             {{"--where", "=x"}, "write FIELD=VALUE or FIELD~PART"},
             {{"--where", "sex~f"}, "sex is not a text to look into"},
             {{"--where", "level=x"}, "level 'x' is not a whole number"},
             {{"--where", "birthday=yesterday"}, "is not a date"},
             {{"--deep"}, "name a group with --in"},
             {{"--no-group", "--in", "/Company"}, "take one of --in and --no-group away"}}) {
        const ChildResult result = Run(With({"user", "list"}, options));
        EXPECT_EQ(result.exit, 2) << result.err;
        EXPECT_THAT(result.err, HasSubstr(sentence));
    }
    EXPECT_EQ(Run({"user", "list", "--in", "/Company/Nowhere"}).exit, 3);
    EXPECT_EQ(Run({"user", "list", "--role", "Nobody"}).exit, 3);
}

TEST_P(SelectionTest, UsersAreChangedByWhatTheyAre)
{
    EXPECT_THAT(Run({"user", "lock", "--in", "/Company/Sales", "--deep", "--yes"}).err,
                AllOf(HasSubstr("amy (id "), HasSubstr("3 users\n"), HasSubstr("locked clara (id ")));
    EXPECT_THAT(Logins({"--locked"}), ElementsAre("amy", "clara", "Rory"));
    Done({"user", "unlock", "--where", "title~lead", "--yes"});
    EXPECT_THAT(Logins({"--locked"}), ElementsAre("Rory"));
    Done({"role", "add", "Editors", "--locked", "--yes"});
    EXPECT_THAT(Logins({"--role", "Editors"}), ElementsAre("amy", "clara", "Rory"));
    Done({"role", "remove", "Editors", "--role", "Editors", "--in", "/Company/Sales/North", "--yes"});
    EXPECT_THAT(Logins({"--role", "Editors"}), ElementsAre("amy"));
    Done({"member", "add", "/Company/Service", "--no-group", "--where", "login~mile", "--yes"});
    EXPECT_THAT(Logins({"--in", "/Company/Service"}), ElementsAre("émile"));
    Done({"member", "remove", "/Company/Sales/North", "--super", "--yes"});
    EXPECT_THAT(Logins({"--in", "/Company/Sales/North"}), ElementsAre("Rory"));
    Done({"plan", "create", "Nightly"});
    Done({"plan", "assign", "Nightly", "--in", "/Company/Sales", "--deep", "--yes"});
    EXPECT_THAT(Done({"plan", "of", "user:rory"}), HasSubstr("Nightly"));
    EXPECT_THAT(Done({"plan", "of", "user:clara"}), Not(HasSubstr("Nightly")));
    Done({"plan", "unassign", "Nightly", "--locked", "--yes"});
    EXPECT_THAT(Done({"plan", "of", "user:rory"}), Not(HasSubstr("Nightly")));
    EXPECT_THAT(Done({"plan", "of", "user:amy"}), HasSubstr("Nightly"));
}

TEST_P(SelectionTest, ASelectionIsAskedAbout)
{
    const Words lock = {"user", "lock", "--in", "/Company/Sales", "--deep"};
    const std::string before = Dump();
    const ChildResult unattended = Run(lock);
    EXPECT_EQ(unattended.exit, 9);
    EXPECT_THAT(unattended.err, HasSubstr("nobody was locked; --yes goes on without asking"));
    const ChildResult refused = AnswerOnTerminal("n", lock);
    EXPECT_EQ(refused.exit, 9);
    EXPECT_THAT(refused.err, HasSubstr("Lock 3 users? [y/N] "));
    EXPECT_EQ(Dump(), before);
    EXPECT_EQ(AnswerOnTerminal("y", lock).exit, 0);
    EXPECT_EQ(Done({"user", "count", "--locked"}), "3\n");
}

TEST_P(SelectionTest, ASelectionOfNobodyChangesNothing)
{
    const std::string before = Dump();
    Done({"plan", "create", "Nightly"});
    Done({"plan", "delete", "Nightly", "--yes"});
    for (const Words& words : std::vector<Words>{{"user", "lock"},
                                                 {"user", "unlock"},
                                                 {"role", "add", "Editors"},
                                                 {"role", "remove", "Editors"},
                                                 {"member", "add", "/Company/Sales"},
                                                 {"member", "remove", "/Company/Sales"},
                                                 {"user", "move", "/Company/Sales"},
                                                 {"user", "password", "set"}}) {
        const ChildResult result = Run(With(words, {"--where", "name=nobody at all"}));
        EXPECT_EQ(result.exit, 0) << result.err;
        EXPECT_THAT(result.err, HasSubstr("nobody fits the selection; nothing was changed"));
    }
    EXPECT_EQ(Dump(), before);
}

TEST_P(SelectionTest, NamesAndASelectionExcludeEachOther)
{
    const std::string before = Dump();
    for (const Words& words : std::vector<Words>{{"user", "lock"},
                                                 {"user", "lock", "amy", "--locked"},
                                                 {"user", "lock", "-", "--locked"},
                                                 {"user", "lock", "-"},
                                                 {"role", "add", "Editors"},
                                                 {"plan", "assign", "Nightly"},
                                                 {"plan", "assign", "Nightly", "user:amy", "--locked"},
                                                 {"user", "move", "/Company/Sales"}}) {
        const ChildResult result = Run(words);
        EXPECT_EQ(result.exit, 2) << testing::PrintToString(words) << result.err;
    }
    EXPECT_EQ(Dump(), before);
}

TEST_P(SelectionTest, ChangesBySelectionAreRecordedAndUndone)
{
    const Words all = {"--in", "/Company", "--deep", "--yes"};
    for (const Words& words : std::vector<Words>{{"user", "lock"},
                                                 {"user", "unlock"},
                                                 {"role", "add", "Editors"},
                                                 {"member", "add", "/Company/Service"},
                                                 {"user", "move", "/Company/Service"}}) {
        ExpectRecordedAndUndone(words[0] + " " + words[1], [&] { return Run(With(words, all)); });
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, SelectionTest, Engines(), EngineName);

namespace {

constexpr int kManyUsers = 20'000;

/// A directory of many on an engine whose order is known, or on another.
class ManyUsersTest : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        m_conn.Open(std::make_unique<CountingSession>(dbaccess::FindDriver("sqlite")(":memory:"), m_counts));
        schema::Upgrade(m_conn);
        m_conn.Execute(fmt::format("WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < {}) "
                                   "INSERT INTO qv_User (Col_ID, Col_LoginName, Col_ItemIndex, Col_Note) SELECT i, "
                                   "'user' || substr('00000' || (i * 7919 % 20000), -6), i % 100 - 50, 'n' || (i % 3) "
                                   "FROM n",
                                   kManyUsers)
                           .c_str());
        m_counts.rows = 0;
        m_counts.statements = 0;
        m_counts.engineName = GetParam();
    }

    std::vector<int> Ids(const SelectionInput& input, const UserPage& page)
    {
        std::vector<int> ids;
        ListUsers(m_conn, UserSelection(m_conn, input), page, [&ids](const UserRow& user) {
            ids.push_back(user.id);
            return true;
        });
        return ids;
    }

    SessionCounts m_counts;
    CAConnect m_conn;
};

using OrderedManyUsersTest = ManyUsersTest;

} // namespace

TEST_P(ManyUsersTest, AnEngineWithoutAKnownOrderGivesTheSame)
{
    SelectionInput input;
    input.where = {"note=N1"};
    UserPage page;
    page.sortedBy = &RequireField("sort_index");
    page.isDescending = true;
    page.offset = 3;
    page.limit = 5;
    const std::vector<int> ids = Ids(input, page);
    m_counts.engineName = "";
    EXPECT_EQ(ids.size(), 5U);
    EXPECT_EQ(ids, Ids(input, page));
    page.isDescending = false;
    m_counts.engineName = GetParam();
    const std::vector<int> ascending = Ids(input, page);
    m_counts.engineName = "";
    EXPECT_EQ(ascending, Ids(input, page));
}

INSTANTIATE_TEST_SUITE_P(Engines, ManyUsersTest, testing::Values("", "Unheard of 1.0"));

TEST_P(OrderedManyUsersTest, NoMoreIsReadThanIsWanted)
{
    UserPage page;
    page.limit = 10;
    page.offset = 5;
    EXPECT_EQ(Ids({}, page).size(), 10U);
    EXPECT_EQ(m_counts.rows, 15U);
    EXPECT_EQ(m_counts.statements, 1U);
    m_counts.rows = 0;
    SelectionInput input;
    input.where = {"note~N1", "sort_index=7"};
    EXPECT_EQ(Ids(input, page).size(), 10U);
    EXPECT_EQ(m_counts.rows, 15U) << "the engine leaves out who does not fit";
}

TEST_P(OrderedManyUsersTest, CountingReadsOneRow)
{
    SelectionInput input;
    input.where = {"sort_index=7"};
    EXPECT_EQ(CountUsers(m_conn, UserSelection(m_conn, input)), kManyUsers / 100);
    EXPECT_EQ(m_counts.rows, 1U);
}

INSTANTIATE_TEST_SUITE_P(Engines, OrderedManyUsersTest, testing::Values(""));
