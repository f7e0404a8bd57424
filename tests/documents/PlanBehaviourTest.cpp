#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "platform/Window.h"
#include "tests/directory/BehaviourCase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace plan_behaviour {

using behaviour::Line;
using behaviour::Numbers;
using behaviour::ReadCase;
using behaviour::Texts;
using behaviour::WriteCase;
using scripted::Raise;
using scripted::Rows;
using testing::SizeIs;

namespace {

std::vector<ReadCase> LookUps()
{
    return {
        {"GetFileBackPlanInfo",
         [](CAConnect& conn) {
             CString data = "before";
             const bool ran = CQVBaseFun::GetFileBackPlanInfo(conn, 41, data);
             return Line(ran, data);
         },
         {{"settings"}, {"others"}},
         R"(true "settings")",
         R"(true "before")",
         R"(true "before")",
         R"(false "before")"},
        {"GetBackupPlanID",
         [](CAConnect& conn) {
             int id = 77;
             const bool ran = CQVBaseFun::GetBackupPlanID(conn, "n", id);
             return Line(ran, id);
         },
         {{"41"}, {"42"}},
         "true 41",
         "true 77",
         "true 77",
         "false 77"},
        {"ExistBackupPlan",
         [](CAConnect& conn) {
             bool exists = true;
             const bool ran = CQVBaseFun::ExistBackupPlan(conn, "n", exists);
             return Line(ran, exists);
         },
         {{"41"}, {"0"}},
         "true true",
         "true false",
         "true false",
         "true false"},
        {"ExistItemFileBackPlanRel",
         [](CAConnect& conn) {
             bool exists = true;
             const bool ran = CQVBaseFun::ExistItemFileBackPlanRel(conn, 1, 41, 7, exists);
             return Line(ran, exists);
         },
         {{"41"}},
         "true true",
         "true false",
         "true true",
         "false false"},
    };
}

std::vector<ReadCase> Lists()
{
    return {
        {"LoadFileBackPlan into three arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             Texts descriptions;
             const bool ran = CQVBaseFun::LoadFileBackPlan(conn, ids, names, descriptions);
             return Line(ran, ids, names, descriptions);
         },
         {{"41", "n1", "d1"}, {"42", "n2", "d2"}},
         "true [9,41,42] [old,n1,n2] [old,d1,d2]",
         "true [9] [old] [old]",
         "true [9,0] [old,] [old,]",
         "false [9] [old] [old]"},
        {"LoadFileBackPlan into two arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             const bool ran = CQVBaseFun::LoadFileBackPlan(conn, ids, names);
             return Line(ran, ids, names);
         },
         {{"41", "n1"}, {"42", "n2"}},
         "true [9,41,42] [old,n1,n2]",
         "true [9] [old]",
         "true [9,0] [old,]",
         "false [9] [old]"},
        {"LoadItemFileBackPlanInfo into two arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             const bool ran = CQVBaseFun::LoadItemFileBackPlanInfo(conn, 5, 1, ids, names);
             return Line(ran, ids, names);
         },
         {{"41", "n1"}, {"42", "n2"}},
         "true [9,41,42] [old,n1,n2]",
         "true [9] [old]",
         "true [9,0] [old,]",
         "false [9] [old]"},
        {"LoadItemFileBackPlanInfo into three arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             Texts descriptions;
             const bool ran = CQVBaseFun::LoadItemFileBackPlanInfo(conn, 5, 1, ids, names, descriptions);
             return Line(ran, ids, names, descriptions);
         },
         {{"41", "n1", "d1"}, {"42", "n2", "d2"}},
         "true [9,41,42] [old,n1,n2] [old,d1,d2]",
         "true [9] [old] [old]",
         "true [9,0] [old,] [old,]",
         "false [9] [old] [old]"},
    };
}

std::vector<WriteCase> Writes()
{
    return {
        {"InsertBackupPlanInfo", [](CAConnect& conn) { return CQVBaseFun::InsertBackupPlanInfo(conn, "n", "d", "s"); }},
        {"UpdateBackupPlanInfo",
         [](CAConnect& conn) { return CQVBaseFun::UpdateBackupPlanInfo(conn, 41, "n", "d", "s"); }},
        {"DeleteBackupPlan", [](CAConnect& conn) { return CQVBaseFun::DeleteBackupPlan(conn, 41); }},
        {"DeleteBackupRel", [](CAConnect& conn) { return CQVBaseFun::DeleteBackupRel(conn, 41); }},
        {"InsertFileBackPlan", [](CAConnect& conn) { return CQVBaseFun::InsertFileBackPlan(conn, 1, 41, 7); }},
        {"DeleteFileBackPlan", [](CAConnect& conn) { return CQVBaseFun::DeleteFileBackPlan(conn, 1, 41, 7); }},
        {"InsertDocLog", [](CAConnect& conn) { return CQVBaseFun::InsertDocLog(conn, 105, 41, "c", "t", 5, "Amy"); }},
    };
}

class PlanBehaviour : public behaviour::Script {
protected:
    PlanBehaviour() : Script("documents/QVBaseFun_BackupPlans.cpp") {}
};

TEST_F(PlanBehaviour, ReadsGiveWhatTheRowsHoldOrTheirPresets)
{
    ExpectAnswersAreRead(LookUps());
    ExpectAnswersAreRead(Lists());
}

TEST_F(PlanBehaviour, LookUpsReadTheFirstRowOnly) { ExpectOnlyTheFirstRowIsRead(LookUps()); }

TEST_F(PlanBehaviour, ReadsOfAClosedConnectionSayNothing)
{
    ExpectClosedReadsSayNothing(LookUps());
    ExpectClosedReadsSayNothing(Lists());
}

TEST_F(PlanBehaviour, WhatTheEngineRefusesIsReportedOnce)
{
    // One operation asks through another, whose line an error names.
    std::vector<ReadCase> lookUps = LookUps();
    const ReadCase asksThroughAnother = lookUps[2];
    lookUps.erase(lookUps.begin() + 2);
    ExpectRefusedReadsAreReported(lookUps);
    ExpectRefusedReadsAreReported(Lists());
    ExpectRefusedWritesAreReported(Writes());

    Connect();
    m_database->Answer(Raise("refused"));
    EXPECT_EQ(asksThroughAnother.call(*m_conn), asksThroughAnother.failed);
    TakeError("refused [Script 1]", OnlyStatement());
}

TEST_F(PlanBehaviour, AListThatBreaksOffKeepsTheRowsReadSoFar) { ExpectBrokenListsKeepTheirRows(Lists()); }

TEST_F(PlanBehaviour, WritesGiveTrueWhateverTheEngineCounts) { ExpectWritesGiveTrueWhateverIsCounted(Writes()); }

TEST_F(PlanBehaviour, WritesOnAClosedConnectionAreReportedAsErrors) { ExpectClosedWritesAreReported(Writes()); }

TEST_F(PlanBehaviour, APlanExistsWhenItsIdIsAboveZero)
{
    for (const auto& [id, expected] : {std::pair{"0", false}, std::pair{"-3", false}, std::pair{"1", true}}) {
        Connect();
        m_database->Answer(Rows({{id}}));
        bool exists = !expected;
        EXPECT_TRUE(CQVBaseFun::ExistBackupPlan(*m_conn, "n", exists));
        EXPECT_EQ(exists, expected) << id;
    }
}

// What the preset is when the look-up fails: the window already sees it, and it stays when the window throws.
TEST_F(PlanBehaviour, APlanDoesNotExistBeforeItIsLookedUp)
{
    const std::vector<std::pair<std::string, bool (*)(CAConnect&, bool&)>> tests = {
        {"ExistBackupPlan",
         [](CAConnect& conn, bool& exists) { return CQVBaseFun::ExistBackupPlan(conn, "n", exists); }},
        {"ExistItemFileBackPlanRel",
         [](CAConnect& conn, bool& exists) { return CQVBaseFun::ExistItemFileBackPlanRel(conn, 1, 41, 7, exists); }}};
    for (const auto& [name, test] : tests) {
        Connect();
        bool exists = true;
        std::vector<bool> seen;
        const HWND window = CreateMessageWindow([&](UINT, WPARAM, LPARAM) -> LRESULT {
            seen.push_back(exists);
            throw std::runtime_error("window");
        });
        m_conn->m_hNotifyWnd = window;
        m_database->Answer(Raise("refused"));
        EXPECT_THROW(test(*m_conn, exists), std::runtime_error) << name;
        EXPECT_EQ(seen, std::vector{false}) << name;
        EXPECT_FALSE(exists) << name;
        DestroyMessageWindow(window);
    }
}

// ---- Groups ------------------------------------------------------------------------------------------------------

using Walk = bool (*)(CAConnect&, int, int);

class PlanOfAGroup : public PlanBehaviour, public testing::WithParamInterface<Walk> {
protected:
    // A group of user 11, group 12 (of user 13) and user 14; each step is the answer to one statement.
    void Answer(std::size_t refusedStep)
    {
        Connect();
        const std::vector<scripted::Reply> steps = {
            Rows({}),                                      // row of group 10
            Rows({{"11", "1"}, {"12", "2"}, {"14", "1"}}), // its members
            Rows({}),                                      // user 11
            Rows({}),                                      // group 12
            Rows({{"13", "1"}}),                           // its members
            Rows({}),                                      // user 13
            Rows({}),                                      // user 14
        };
        for (std::size_t i = 0; i < steps.size(); ++i) {
            m_database->Answer(i == refusedStep ? Raise("refused") : steps[i]);
        }
    }

    [[nodiscard]] std::size_t Sent() const { return m_database->queries.size() + m_database->executions.size(); }

    static constexpr std::size_t kSteps = 7;
};

TEST_P(PlanOfAGroup, GoesThroughAllMembers)
{
    Answer(kSteps);
    EXPECT_TRUE(GetParam()(*m_conn, 10, 7));
    EXPECT_EQ(Sent(), kSteps);
    EXPECT_THAT(m_database->executions, SizeIs(5));
    ExpectNoError();
}

TEST_P(PlanOfAGroup, StopsAtTheFirstRefusalAndLeavesWhatIsDone)
{
    for (std::size_t step = 0; step < kSteps; ++step) {
        Answer(step);
        EXPECT_FALSE(GetParam()(*m_conn, 10, 7)) << step;
        EXPECT_EQ(Sent(), step + 1);
        EXPECT_THAT(m_watch.messages, SizeIs(1));
        m_watch.messages.clear();
    }
    CQVBaseFun::m_strLastError = ErrorRecorder::kOlder;
}

TEST_P(PlanOfAGroup, FailsOnAClosedConnectionAtItsFirstWrite)
{
    CAConnect never;
    m_watch.ListenTo(never);
    EXPECT_FALSE(GetParam()(never, 10, 7));
    EXPECT_THAT(m_watch.messages, SizeIs(1));
    CQVBaseFun::m_strLastError = ErrorRecorder::kOlder;
}

INSTANTIATE_TEST_SUITE_P(Walks, PlanOfAGroup,
                         testing::Values(&CQVBaseFun::InsertGroupFileBackPlan, &CQVBaseFun::DeleteGroupFileBackPlan));

} // namespace

} // namespace plan_behaviour
