#include "management/rights/Explain.h"

#include "ConsoleFixture.h"
#include "basefun/ItemTypes.h"
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "management/DatabaseError.h"
#include "management/roles/Roles.h"
#include "management/users/Users.h"
#include "schema/Schema.h"
#include "tests/support/HardText.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>

using namespace management;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

using QuestionKind = Question::Kind;

/// A directory with amy, who has the roles Editors, Authors and, as all do, everyone.
class ExplainTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
        m_amy = CreateUser(m_directory, "amy", {});
        m_everyone = Make("everyone");
        m_editors = Make("Editors");
        m_authors = Make("Authors");
        m_roles.Link({kItemTypeRole, m_editors}, m_amy);
        m_roles.Link({kItemTypeRole, m_authors}, m_amy);
    }

    int Make(const std::string& name, const RoleScope& scope = {})
    {
        RoleData role;
        role.name = name;
        role.scope = scope;
        return CreateRole(m_roles, role);
    }

    void Execute(const std::string& sql) { m_conn.Execute(sql.c_str()); }

    /// Gives an item the right 'mail' 'send'.
    void Give(ItemKey holder, const std::string& power)
    {
        Execute(fmt::format("INSERT INTO qv_ItemAce VALUES ({}, {}, 'send', 'mail', {}, 0)", holder.id, holder.type,
                            power));
    }
    void Give(int roleId, int power) { Give({kItemTypeRole, roleId}, std::to_string(power)); }

    Explanation Ask(QuestionKind kind, std::uint32_t bits = 0)
    {
        return management::Explain(m_conn, m_amy, "mail", "send", {kind, bits});
    }

    CAConnect m_conn;
    Directory m_directory{m_conn};
    Roles m_roles{m_conn};
    int m_amy = 0;
    int m_everyone = 0;
    int m_editors = 0;
    int m_authors = 0;
};

std::vector<int> RolesIn(const Explanation& explanation)
{
    std::vector<int> ids;
    std::ranges::transform(explanation.rows, std::back_inserter(ids), &ConsideredRow::roleId);
    return ids;
}

std::vector<int> DecidersIn(const Explanation& explanation)
{
    std::vector<int> ids;
    for (const ConsideredRow& row : explanation.rows) {
        if (row.decides) {
            ids.push_back(row.roleId);
        }
    }
    return ids;
}

class ExplainConsoleTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
        Done({"user", "create", "amy"});
        Done({"role", "default", "--create"});
        Done({"role", "create", "Editors"});
        Done({"role", "add", "Editors", "amy"});
    }

    std::string Explained(const std::vector<std::string>& options)
    {
        std::vector<std::string> words = {"right", "explain", "amy", "mail", "send"};
        words.insert(words.end(), options.begin(), options.end());
        return Done(words);
    }

    /// Gives role everyone (1) or Editors (2) the right 'mail' 'send'.
    void Give(int roleId, int power)
    {
        Execute(fmt::format("INSERT INTO qv_ItemAce VALUES ({}, 3, 'send', 'mail', {}, 0)", roleId, power));
    }
};

} // namespace

// ---- Bits -----------------------------------------------------------------------------------------------------------

TEST_F(ExplainTest, ABitIsDecidedByTheFirstRowThatHasIt)
{
    Give(m_everyone, 2);
    Give(m_authors, 3);
    Give(m_editors, 5);
    for (const std::uint32_t bit : {1U, 4U}) {
        const Explanation explanation = Ask(QuestionKind::bit, bit);
        EXPECT_TRUE(explanation.ran);
        EXPECT_EQ(explanation.verdict, 1);
        EXPECT_EQ(explanation.reason, Reason::bit);
        ASSERT_THAT(explanation.rows, SizeIs(3));
        ASSERT_TRUE(explanation.decidedBy.has_value());
        for (std::size_t i = 0; i < explanation.rows.size(); ++i) {
            const bool has = (static_cast<std::uint32_t>(explanation.rows[i].power.value()) & bit) != 0;
            EXPECT_EQ(explanation.rows[i].decides, i == *explanation.decidedBy);
            EXPECT_TRUE(i < *explanation.decidedBy ? !has : has || i > *explanation.decidedBy);
        }
    }
    const Explanation none = Ask(QuestionKind::bit, 8);
    EXPECT_EQ(none.verdict, 0);
    EXPECT_EQ(none.reason, Reason::noBit);
    EXPECT_FALSE(none.decidedBy.has_value());
}

TEST_F(ExplainTest, AMaskTakesAnyOfItsBitsAndAnEmptyOneNone)
{
    Give(m_editors, 4);
    EXPECT_EQ(Ask(QuestionKind::mask, 6).verdict, 1);
    EXPECT_EQ(Ask(QuestionKind::mask, 3).reason, Reason::noBit);
    EXPECT_EQ(Ask(QuestionKind::mask, 0).reason, Reason::noBit);
    Give(m_authors, -1);
    const Explanation highest = Ask(QuestionKind::mask, 0x80000000U);
    EXPECT_EQ(highest.verdict, 1);
    EXPECT_THAT(DecidersIn(highest), ElementsAre(m_authors));
}

TEST_F(ExplainTest, AllBitsAreThoseOfAllRowsTogether)
{
    Give(m_editors, 1);
    Give(m_authors, 4);
    Give(m_everyone, 0);
    const Explanation explanation = Ask(QuestionKind::all);
    EXPECT_EQ(explanation.verdict, 5);
    EXPECT_EQ(explanation.reason, Reason::together);
    EXPECT_THAT(DecidersIn(explanation), testing::UnorderedElementsAre(m_editors, m_authors));
    EXPECT_FALSE(explanation.decidedBy.has_value());
    Give(m_everyone, -1);
    EXPECT_EQ(Ask(QuestionKind::all).verdict, 0xFFFFFFFF);
}

TEST_F(ExplainTest, WithoutARowNothingIsGrantedAndNothingLimited)
{
    for (const QuestionKind kind :
         {QuestionKind::all, QuestionKind::bit, QuestionKind::mask, QuestionKind::limit, QuestionKind::guest}) {
        const Explanation explanation = Ask(kind, 1);
        EXPECT_TRUE(explanation.ran);
        EXPECT_EQ(explanation.verdict, kind == QuestionKind::limit ? -1 : 0);
        EXPECT_EQ(explanation.reason, Reason::noRow);
        EXPECT_THAT(explanation.rows, IsEmpty());
    }
}

// ---- Limits ---------------------------------------------------------------------------------------------------------

TEST_F(ExplainTest, TheLargestLimitWins)
{
    Give(m_editors, 10);
    Give(m_authors, 50);
    Give(m_everyone, 0);
    const Explanation explanation = Ask(QuestionKind::limit);
    EXPECT_EQ(explanation.verdict, 50);
    EXPECT_EQ(explanation.reason, Reason::largestRow);
    EXPECT_THAT(DecidersIn(explanation), ElementsAre(m_authors));
}

TEST_F(ExplainTest, UnlimitedWinsOverEveryNumber)
{
    Give(m_editors, 10);
    Give(m_authors, -1);
    const Explanation explanation = Ask(QuestionKind::limit);
    EXPECT_EQ(explanation.verdict, -1);
    EXPECT_EQ(explanation.reason, Reason::unlimitedRow);
    EXPECT_THAT(DecidersIn(explanation), ElementsAre(m_authors));
}

TEST_F(ExplainTest, BelowMinusOneNothingIsSpecialAndMinusOneIsANumber)
{
    Give(m_editors, -5);
    EXPECT_EQ(Ask(QuestionKind::limit).verdict, -5);
    Give(m_authors, -1);
    const Explanation both = Ask(QuestionKind::limit);
    EXPECT_EQ(both.verdict, -1);
    EXPECT_EQ(both.reason, Reason::largestRow);
    Give(m_everyone, 7);
    const Explanation all = Ask(QuestionKind::limit);
    EXPECT_EQ(all.verdict, 7);
    EXPECT_THAT(DecidersIn(all), ElementsAre(m_everyone));
}

TEST_F(ExplainTest, RowsWithoutANumberDecideNothing)
{
    Give({kItemTypeRole, m_editors}, "NULL");
    const Explanation explanation = Ask(QuestionKind::limit);
    EXPECT_EQ(explanation.verdict, 0);
    EXPECT_EQ(explanation.reason, Reason::largestRow);
    EXPECT_FALSE(explanation.decidedBy.has_value());
    EXPECT_EQ(explanation.rows.at(0).power, std::nullopt);
    Give(m_authors, -1);
    EXPECT_THAT(DecidersIn(Ask(QuestionKind::limit)), ElementsAre(m_authors));
}

TEST_F(ExplainTest, RolesThatCannotBeReadLeaveAllAtItsPreset)
{
    Give(m_editors, 1);
    Execute("DROP TABLE qv_Role");
    for (const QuestionKind kind :
         {QuestionKind::all, QuestionKind::bit, QuestionKind::mask, QuestionKind::limit, QuestionKind::guest}) {
        const Explanation explanation = Ask(kind, 1);
        EXPECT_FALSE(explanation.ran);
        EXPECT_EQ(explanation.verdict, kind == QuestionKind::limit ? -1 : 0);
        EXPECT_EQ(explanation.reason, Reason::rolesUnread);
        EXPECT_THAT(explanation.trouble, HasSubstr("no such table"));
    }
}

TEST_F(ExplainTest, RightsThatCannotBeReadAreAnError)
{
    Execute("DROP TABLE qv_ItemAce");
    EXPECT_THROW(Ask(QuestionKind::limit), DatabaseError);
}

// ---- Rows -----------------------------------------------------------------------------------------------------------

TEST_F(ExplainTest, OnlyTheFirstRowCountsForGuests)
{
    std::vector<int> order = {m_everyone, m_editors, m_authors};
    std::ranges::sort(order);
    do {
        Execute("DELETE FROM qv_ItemAce");
        for (const int role : order) {
            Give(role, role == m_editors ? 7 : 8);
        }
        const Explanation explanation = Ask(QuestionKind::guest);
        EXPECT_EQ(explanation.reason, Reason::firstRow);
        EXPECT_EQ(explanation.decidedBy, 0U);
        EXPECT_THAT(DecidersIn(explanation), ElementsAre(RolesIn(explanation).front()));
        EXPECT_EQ(explanation.verdict, RolesIn(explanation).front() == m_editors ? 0 : 1);
    } while (std::ranges::next_permutation(order).found);
}

TEST_F(ExplainTest, RowsStandInTheOrderInWhichTheOperationsReadThem)
{
    std::vector<int> roles = {m_everyone, m_editors, m_authors};
    for (int i = 0; i < 40; ++i) {
        roles.push_back(Make(fmt::format("Role {}", i)));
        m_roles.Link({kItemTypeRole, roles.back()}, m_amy);
    }
    for (std::size_t i = 0; i < roles.size(); ++i) {
        Give(roles[i * 17 % roles.size()], static_cast<int>(i));
    }
    CString filter;
    ASSERT_TRUE(CQVBaseFun::GetHMRoleQueryParam(m_conn, m_amy, filter));
    const std::string sql =
        fmt::format("SELECT Col_Power FROM qv_ItemAce WHERE Col_FunGenre = 'mail' AND Col_FunName = 'send' AND ( {} )",
                    filter.View());
    CARecordset rs;
    rs.Open(sql.c_str(), &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    std::vector<std::optional<int>> expected;
    for (; rs.IsEOF() == 0; rs.MoveNext()) {
        int power = 0;
        rs.GetValue(1, power);
        expected.emplace_back(power);
    }
    std::vector<std::optional<int>> shown;
    std::ranges::transform(Ask(QuestionKind::all).rows, std::back_inserter(shown), &ConsideredRow::power);
    EXPECT_THAT(expected, SizeIs(roles.size()));
    EXPECT_EQ(shown, expected);
}

TEST_F(ExplainTest, ARowSaysWhoseItIsAndAppearsOnce)
{
    m_roles.Link({kItemTypeRole, m_everyone}, m_amy);
    Give(m_everyone, 1);
    Give(m_editors, 1);
    std::vector<ConsideredRow> rows = Ask(QuestionKind::all).rows;
    std::ranges::sort(rows, {}, &ConsideredRow::roleId);
    ASSERT_THAT(rows, SizeIs(2));
    EXPECT_EQ(rows[0].role, "everyone");
    EXPECT_TRUE(rows[0].isLinked);
    EXPECT_TRUE(rows[0].isDefault);
    EXPECT_EQ(rows[1].role, "Editors");
    EXPECT_TRUE(rows[1].isLinked);
    EXPECT_FALSE(rows[1].isDefault);
    m_roles.Unlink({kItemTypeRole, m_everyone}, m_amy);
    rows = Ask(QuestionKind::all).rows;
    const auto everyone = std::ranges::find(rows, m_everyone, &ConsideredRow::roleId);
    ASSERT_NE(everyone, rows.end());
    EXPECT_FALSE(everyone->isLinked);
    EXPECT_TRUE(everyone->isDefault);
}

TEST_F(ExplainTest, WithoutTheDefaultRoleRowsOfRoleZeroTakeItsPlace)
{
    Execute("DELETE FROM qv_Role WHERE Col_Name = 'everyone'");
    Give(0, 4);
    const Explanation explanation = Ask(QuestionKind::bit, 4);
    EXPECT_TRUE(explanation.lacksDefault);
    EXPECT_EQ(explanation.verdict, 1);
    EXPECT_THAT(explanation.rows,
                ElementsAre(AllOf(testing::Field(&ConsideredRow::roleId, 0), testing::Field(&ConsideredRow::role, ""),
                                  testing::Field(&ConsideredRow::isLinked, false),
                                  testing::Field(&ConsideredRow::isDefault, true))));
}

TEST_F(ExplainTest, WhatDoesNotCountIsListedForItself)
{
    const int archive = Make("Readers", {"Archive", 0});
    m_roles.Link({kItemTypeRole, archive}, m_amy);
    m_roles.Link({kItemTypeGroup, 7}, m_amy);
    m_roles.Link({kItemTypeView, 7}, m_amy);
    Give(m_editors, 1);
    Give(archive, 2);
    Give({kItemTypeUser, m_amy}, "3");
    Give({kItemTypeUser, 99}, "4");
    Give({kItemTypeGroup, 7}, "NULL");
    Give({kItemTypeGroup, 8}, "6");
    const Explanation explanation = Ask(QuestionKind::all);
    EXPECT_EQ(explanation.verdict, 1);
    ASSERT_THAT(explanation.ignored, SizeIs(3));
    EXPECT_EQ(explanation.ignored[0].holder, (ItemKey{kItemTypeUser, m_amy}));
    EXPECT_EQ(explanation.ignored[0].power, 3);
    EXPECT_EQ(explanation.ignored[1].holder, (ItemKey{kItemTypeGroup, 7}));
    EXPECT_EQ(explanation.ignored[1].power, std::nullopt);
    EXPECT_EQ(explanation.ignored[2].holder, (ItemKey{kItemTypeRole, archive}));
}

TEST_F(ExplainTest, AFunctionMayBeCalledAnything)
{
    CQVBaseFun::InsertItemAce(m_conn, m_editors, kItemTypeRole, m_conn.EscapeLiteral(CString(kHard)),
                              m_conn.EscapeLiteral(CString("it's")), 8, 0);
    for (const int engineKind : {m_conn.m_nDBType, 6}) {
        m_conn.m_nDBType = engineKind;
        const Explanation explanation = management::Explain(m_conn, m_amy, kHard, "it's", {QuestionKind::guest});
        EXPECT_EQ(explanation.verdict, 1);
        EXPECT_EQ(RolesIn(explanation), std::vector{m_editors});
        EXPECT_EQ(management::Explain(m_conn, m_amy, kHard, "it's", {QuestionKind::limit}).verdict, 8);
    }
    EXPECT_THROW(management::Explain(m_conn, m_amy, std::string_view("a\0b", 3), "x", {}), Error);
}

// ---- The command ----------------------------------------------------------------------------------------------------

TEST_F(ExplainConsoleTest, HelpHasExamples)
{
    EXPECT_THAT(Done({"right", "explain", "--help"}),
                AllOf(HasSubstr("Usage: qvadmin right explain [OPTIONS] USER GENRE FUNCTION\n"),
                      HasSubstr("Examples:\n  qvadmin right explain")));
}

TEST_F(ExplainConsoleTest, EveryQuestionHasItsSentence)
{
    EXPECT_EQ(Explained({}),
              "amy (id 1) has the bits 0x0 (0) in function 'send' of 'mail': no role has a row for it\n");
    EXPECT_EQ(Explained({"--limit"}),
              "amy (id 1) has no limit in function 'send' of 'mail': no role has a row for it\n");
    Give(2, 7);
    EXPECT_EQ(Explained({}),
              "amy (id 1) has the bits 0x7 (7) in function 'send' of 'mail': those of all rows together\n"
              "row  role_id  role     linked  default  power  decides\n"
              "  1        2  Editors  yes     no           7  yes\n");
    EXPECT_THAT(Explained({"--bit", "1"}),
                StartsWith("amy (id 1) has bit 1 in function 'send' of 'mail': the first row that has it is that of "
                           "Editors (role 2)\n"));
    EXPECT_THAT(Explained({"--bit", "0x10"}),
                StartsWith("amy (id 1) does not have bit 16 in function 'send' of 'mail': no row has it\n"));
    EXPECT_THAT(Explained({"--mask", "0x6"}), StartsWith("amy (id 1) has a bit of 0x6 in"));
    EXPECT_THAT(Explained({"--mask", "8"}), StartsWith("amy (id 1) does not have a bit of 0x8 in"));
    EXPECT_THAT(Explained({"--guest"}),
                StartsWith("amy (id 1) does not have the bit for guests in function 'send' of 'mail': only the first "
                           "row counts, in the engine's order, and that is of Editors (role 2)\n"));
    EXPECT_THAT(Explained({"--limit"}),
                StartsWith("amy (id 1) has the limit 7 in function 'send' of 'mail': the largest of these rows is that "
                           "of Editors (role 2)\n"));
}

TEST_F(ExplainConsoleTest, UnlimitedIsAWordForPeopleAndANumberForPrograms)
{
    Give(2, -1);
    EXPECT_THAT(Explained({"--limit"}),
                AllOf(HasSubstr("has no limit in function 'send' of 'mail': Editors (role 2) grants unlimited\n"),
                      HasSubstr("  unlimited  yes\n")));
    EXPECT_EQ(Explained({"--limit", "-o", "plain"}), "1\t2\tEditors\ttrue\tfalse\t-1\ttrue\n");
    EXPECT_EQ(nlohmann::json::parse(Explained({"--limit", "-o", "json"})).at("verdict"), -1);
    Give(1, -2);
    Give(1, 3);
    EXPECT_THAT(Explained({"--limit"}),
                AllOf(HasSubstr("has the limit 3"), Not(HasSubstr("unlimited  ")),
                      HasSubstr("note: beside a power below -1, a power of -1 does not mean unlimited\n")));
}

TEST_F(ExplainConsoleTest, ProgramsGetOneObjectWithEverything)
{
    Give(2, 6);
    Execute("INSERT INTO qv_ItemAce VALUES (1, 1, 'send', 'mail', 1, 0)");
    const nlohmann::json mask = nlohmann::json::parse(Explained({"--mask", "2", "-o", "json"}));
    EXPECT_EQ(mask, nlohmann::json::parse(R"({
        "user": "amy", "user_id": 1, "genre": "mail", "function": "send", "question": "mask", "bits": 2, "ran": true,
        "verdict": true, "decided_by": 2, "case": "bit",
        "rows": [{"role_id": 2, "role": "Editors", "linked": true, "default": false, "power": 6, "decides": true}],
        "ignored": [{"type": 1, "id": 1, "name": "amy", "power": 1}]})"));
    const nlohmann::json all = nlohmann::json::parse(Explained({"-o", "json"}));
    EXPECT_EQ(all.at("question"), "all");
    EXPECT_EQ(all.at("bits"), nullptr);
    EXPECT_EQ(all.at("verdict"), 6);
    EXPECT_EQ(all.at("decided_by"), nullptr);
    EXPECT_EQ(nlohmann::json::parse(Explained({"--guest", "-o", "json"})).at("case"), "first_row");
}

TEST_F(ExplainConsoleTest, RowsForProgramsStandAloneOnStandardOutput)
{
    Give(1, 4);
    const ChildResult csv = Run({"right", "explain", "amy", "mail", "send", "--bit", "4", "-o", "csv"});
    EXPECT_EQ(csv.out, "row,role_id,role,linked,default,power,decides\n1,1,everyone,false,true,4,true\n");
    EXPECT_THAT(csv.err, StartsWith("amy (id 1) has bit 4 in"));
    EXPECT_EQ(Explained({"-o", "jsonl"}), "{\"row\":1,\"role_id\":1,\"role\":\"everyone\",\"linked\":false,\"default\":"
                                          "true,\"power\":4,\"decides\":true}\n");
}

TEST_F(ExplainConsoleTest, WhatDoesNotCountIsMentioned)
{
    Done({"view", "create", "Company"});
    Done({"group", "create", "/Company/Sales"});
    Done({"member", "add", "/Company/Sales", "amy"});
    EXPECT_THAT(Explained({}), Not(HasSubstr("note: ")));
    Execute("INSERT INTO qv_ItemAce VALUES (1, 1, 'send', 'mail', 1, 0), (1, 2, 'send', 'mail', NULL, 0)");
    EXPECT_THAT(Explained({}), AllOf(HasSubstr("has the bits 0x0 (0)"),
                                     HasSubstr("note: rights of the user himself, of groups and of other applications' "
                                               "roles do not count, though there are some: user amy (id 1) with power "
                                               "1, group /Company/Sales (id 1) with no power\n")));
}

TEST_F(ExplainConsoleTest, AMissingDefaultRoleIsMentioned)
{
    Execute("DELETE FROM qv_Role WHERE Col_ID = 1");
    Give(0, 1);
    EXPECT_THAT(Explained({"--bit", "1"}), AllOf(HasSubstr("the first row that has it is that of role 0\n"),
                                                 HasSubstr("note: there is no role everyone; rows of role 0 count in "
                                                           "its place\n")));
}

TEST_F(ExplainConsoleTest, UnreadableRolesAreShownAndEndWithSix)
{
    Execute("DROP TABLE qv_Relation");
    const ChildResult text = Run({"right", "explain", "amy", "mail", "send", "--limit"});
    EXPECT_EQ(text.exit, 6);
    EXPECT_EQ(text.out, "amy (id 1) has no limit in function 'send' of 'mail': the roles could not be read\n");
    EXPECT_THAT(text.err, AllOf(StartsWith("qvadmin: the database refused: "), HasSubstr("no such table")));
    const ChildResult asJson = Run({"right", "explain", "amy", "mail", "send", "--bit", "1", "-o", "json"});
    EXPECT_EQ(asJson.exit, 6);
    const nlohmann::json object = nlohmann::json::parse(asJson.out);
    EXPECT_EQ(object.at("ran"), false);
    EXPECT_EQ(object.at("verdict"), false);
    EXPECT_EQ(object.at("case"), "roles_unread");
}

TEST_F(ExplainConsoleTest, WhatCannotBeAskedIsRefused)
{
    const auto with = [](std::vector<std::string> options) {
        options.insert(options.begin(), {"right", "explain", "amy", "mail", "send"});
        return options;
    };
    ExpectRefusal(with({"--bit", "3"}), 2, "--bit '3' is not the value of one bit");
    ExpectRefusal(with({"--bit", "0"}), 2, "not the value of one bit");
    ExpectRefusal(with({"--mask", "4294967296"}), 2, "invalid bits '4294967296'");
    ExpectRefusal(with({"--mask", "-1"}), 2, "invalid bits");
    ExpectRefusal(with({"--mask", "0x"}), 2, "invalid bits");
    ExpectRefusal(with({"--mask", "0x123456789"}), 2, "invalid bits");
    ExpectRefusal(with({"--limit", "--guest"}), 2, "ask one at a time");
    ExpectRefusal(with({"--bit", "1", "--mask", "1"}), 2, "ask one at a time");
    ExpectRefusal({"right", "explain", "nobody", "mail", "send"}, 3, "there is no user 'nobody'");
    ExpectRefusal({"right", "explain", "amy", "mail"}, 2, "FUNCTION");
}
