#include "CountedDirectory.h"
#include "dbaccess/CARecordset.h"
#include "management/import/Import.h"
#include "management/import/Synchronisation.h"
#include "management/organisation/Organisation.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <sstream>
#include <string>

using namespace console;
using namespace management;
using testing::AllOf;
using testing::HasSubstr;

// Some hundred rows are asked for and written at a time. What becomes of each is the same as if it came alone.

namespace {

constexpr int kPeopleOfAnImport = 2000;

class ImportBlocksTest : public CountedDirectory {
protected:
    /// @return the outcomes, as a result file has them.
    std::string Import(const std::string& rows, ImportOptions options, bool dryRun = false)
    {
        options.longestBlock = std::chrono::hours(1); // what is counted must not depend on how fast this machine is
        std::istringstream in(rows);
        CallOptions callOptions;
        callOptions.dryRun = dryRun;
        m_report = {};
        return RunCall(callOptions, [&](Call& call, auto&) { ImportUsers(call, {in, "in.csv"}, options, m_report); });
    }

    /// As many people as kPeopleOfAnImport, spread over departments of three levels. @param shift  moves each to
    /// another one.
    static std::string People(int shift = 0)
    {
        std::string rows = "login,name,department\n";
        for (int i = 0; i < kPeopleOfAnImport; ++i) {
            const int group = (i + shift) % 9;
            rows += fmt::format("user{},User {},Office/Area {}/Team {}\n", i, i, group / 3, group % 3);
        }
        return rows;
    }

    /// Synchronises, and deals with who is not among the rows. @return how many these are.
    std::size_t Leavers(const std::string& rows, LeaverAction action)
    {
        std::istringstream in(rows);
        std::size_t leavers = 0;
        RunCall({}, [&](Call& call, FrontEnd& frontEnd) {
            frontEnd.TakeColumns({"line", "login", "id", "outcome", "reason"});
            Synchronisation sync(call, {in, "in.csv"}, {}, {.scope = "/Main", .action = action});
            sync.Apply(call);
            leavers = sync.Report().leavers;
        });
        return leavers;
    }

    [[nodiscard]] double StatementsPerRow() const
    {
        return static_cast<double>(m_counts.statements) / static_cast<double>(m_report.rows);
    }

    /// How many users each group and view has, by path.
    std::string Members()
    {
        const Organisation organisation(m_conn);
        std::string text;
        for (const management::Node& node : organisation.Nodes()) {
            text += fmt::format("{} {}\n", organisation.PathOf(node.key), node.users);
        }
        return text;
    }

    void Execute(const char* sql) { m_conn.Execute(sql); }

    ImportReport m_report;
};

ImportOptions IntoMain(bool update)
{
    ImportOptions options;
    options.departments = "Main";
    options.makeView = true;
    options.update = update;
    return options;
}

} // namespace

TEST_F(ImportBlocksTest, NewPeopleTakeHardlyAStatement)
{
    Import("login\nzoe\n", {});
    Import(People(), {});
    EXPECT_EQ(m_report.CountOf(RowFate::created), kPeopleOfAnImport);
    EXPECT_LE(StatementsPerRow(), 0.1);
}

TEST_F(ImportBlocksTest, DepartmentsTakeNoStatementForEachPerson)
{
    Import(People(), IntoMain(false));
    EXPECT_EQ(m_report.CountOf(RowFate::created), kPeopleOfAnImport);
    EXPECT_EQ(m_report.madeGroups.size(), 13U);
    EXPECT_EQ(m_report.madeGroups.back().users, static_cast<std::size_t>(kPeopleOfAnImport / 9));
    EXPECT_LE(StatementsPerRow(), 0.1);
    EXPECT_THAT(Members(), AllOf(HasSubstr("/Main 0\n"), HasSubstr("/Main/Office/Area 0/Team 0 223\n"),
                                 HasSubstr("/Main/Office/Area 2/Team 2 222\n")));
}

TEST_F(ImportBlocksTest, WhatIsSoAlreadyIsFoundOutBlockByBlock)
{
    Import(People(), IntoMain(false));
    const std::string before = Members();
    Import(People(), IntoMain(true));
    EXPECT_EQ(m_report.CountOf(RowFate::unchanged), kPeopleOfAnImport);
    EXPECT_LE(StatementsPerRow(), 0.1);
    Import(People(), IntoMain(true), true);
    EXPECT_EQ(m_report.CountOf(RowFate::unchanged), kPeopleOfAnImport);
    EXPECT_LE(StatementsPerRow(), 0.1);
    Import(People(), IntoMain(false));
    EXPECT_EQ(m_report.CountOf(RowFate::exists), kPeopleOfAnImport);
    EXPECT_LE(StatementsPerRow(), 0.1);
    EXPECT_EQ(Members(), before);
}

TEST_F(ImportBlocksTest, ANightlySynchronisationWithoutAChangeCostsHardlyAStatement)
{
    Import(People(), IntoMain(false));
    ImportOptions options = IntoMain(true);
    const std::string people = People();
    options.takeFailed = [](const CsvRecord&) {};
    m_counts = {};
    EXPECT_EQ(Leavers(people, LeaverAction::lock), 0U);
    const auto before = m_counts.statements;
    Import(people, options);
    EXPECT_EQ(m_report.CountOf(RowFate::unchanged), kPeopleOfAnImport);
    EXPECT_LE(static_cast<double>(before + m_counts.statements) / kPeopleOfAnImport, 0.1);
    EXPECT_EQ(Leavers(people.substr(0, people.rfind('\n', people.size() - 2) + 1), LeaverAction::lock), 1U);
}

// Beside the row and the leaving, what each of them was before is read for the record of changes.
TEST_F(ImportBlocksTest, WhoMovesTakesAFewStatements)
{
    Import(People(), IntoMain(false));
    Import(People(1), IntoMain(true));
    EXPECT_EQ(m_report.CountOf(RowFate::updated), kPeopleOfAnImport);
    EXPECT_LE(StatementsPerRow(), 5.2);
    EXPECT_THAT(Members(), AllOf(HasSubstr("/Main 0\n"), HasSubstr("/Main/Office/Area 0/Team 1 223\n"),
                                 HasSubstr("/Main/Office/Area 0/Team 0 222\n")));
}

TEST_F(ImportBlocksTest, LoginNamesThatTheEngineTakesForEqualAreFoundInOneBlock)
{
    // The i without a dot has the same capital as the other one.
    const std::string outcomes = Import("login\namy\nkim\nk\u0131m\nrory\n", {});
    EXPECT_THAT(outcomes,
                AllOf(HasSubstr("\n2,amy,1,created,"), HasSubstr("\n3,kim,2,created,"),
                      HasSubstr("\n4,k\u0131m,,failed,\"the login name 'k\u0131m' is taken: this database takes "
                                "it for equal to 'kim' (id 2)"),
                      HasSubstr("\n5,rory,3,created,")));
    const std::string again = Import("login\nk\u0131m\nzoe\nkim\n", {});
    EXPECT_THAT(again, AllOf(HasSubstr("\n2,k\u0131m,,failed,\"the login name"), HasSubstr("\n3,zoe,4,created,"),
                             HasSubstr("\n4,kim,2,exists,")));
}

TEST_F(ImportBlocksTest, OfSeveralWhoDifferInCaseTheExactOneIsMeant)
{
    Execute("INSERT INTO qv_User (Col_LoginName, Col_Name) VALUES ('amy', 'a'), ('AMY', 'b')");
    ImportOptions options;
    options.update = true;
    EXPECT_THAT(Import("login,note\nAMY,x\nrory,x\n", options),
                AllOf(HasSubstr("\n2,AMY,2,updated,"), HasSubstr("\n3,rory,3,created,")));
    EXPECT_THAT(Import("login,note\nAmy,y\n", options), HasSubstr("\n2,Amy,,failed,\"'Amy' may be any of amy (id 1)"));
    EXPECT_THAT(Import("login,note\nAmy,y\n", {}), HasSubstr("\n2,Amy,1,exists,"));
}

TEST_F(ImportBlocksTest, ARowThatTheEngineRefusesCostsNoOtherItsBirthdayOrMembership)
{
    Execute(
        "CREATE TRIGGER refuse BEFORE INSERT ON qv_Relation WHEN NEW.Col_DQvItemType = 1 AND EXISTS (SELECT 1 FROM "
        "qv_User WHERE Col_ID = NEW.Col_DQvItemID AND Col_LoginName = 'rory') BEGIN SELECT RAISE(ABORT, 'not him'); "
        "END");
    const std::string outcomes =
        Import("login,department,birthday\namy,Sales,\nrory,Sales,\nkim,Sales,1989-11-28\n", IntoMain(false));
    EXPECT_THAT(outcomes, AllOf(HasSubstr("\n2,amy,1,created,"), HasSubstr("\n3,rory,,failed,"), HasSubstr("not him"),
                                HasSubstr("\n4,kim,2,created,")));
    EXPECT_THAT(Members(), HasSubstr("/Main/Sales 2\n"));
    CARecordset rs;
    rs.Open("SELECT Col_LoginName FROM qv_User WHERE Col_Birthday IS NULL", &m_conn, adbcCursorStatic,
            adbcLockOptimistic, adbcCommandTable);
    EXPECT_EQ(rs.GetValueToStr(1, true), "amy");
    rs.MoveNext();
    EXPECT_NE(rs.IsEOF(), 0);
}
