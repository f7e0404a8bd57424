#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "directory/JobTitleItem.h"
#include "directory/RoleItem.h"
#include "tests/directory/BehaviourCase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace role_behaviour {

using behaviour::Line;
using behaviour::Numbers;
using behaviour::ReadCase;
using behaviour::RecordCase;
using behaviour::Texts;
using behaviour::WriteCase;
using scripted::Raise;
using scripted::Reply;
using scripted::Rows;
using testing::SizeIs;

namespace {

// ---- Roles -------------------------------------------------------------------------------------------------------

std::vector<ReadCase> LookUps()
{
    return {
        {"GetRoleIDByName",
         [](CAConnect& conn) {
             int id = 77;
             const bool ran = CQVBaseFun::GetRoleIDByName(conn, "clerk", "Tolvan", 2, id);
             return Line(ran, id);
         },
         {{"41"}, {"42"}},
         "true 41",
         "true 0",
         "true 0",
         "false 0"},
        {"ExistRoleName",
         [](CAConnect& conn) {
             bool exists = true;
             const bool ran = CQVBaseFun::ExistRoleName(conn, "clerk", "Tolvan", 2, exists);
             return Line(ran, exists);
         },
         {{"41"}},
         "true true",
         "true false",
         "true true",
         "false false"},
        {"GetRoleNameByID",
         [](CAConnect& conn) {
             CString name = "before";
             const bool ran = CQVBaseFun::GetRoleNameByID(conn, 41, name);
             return Line(ran, name);
         },
         {{"clerk"}, {"boss"}},
         R"(true "clerk")",
         R"(true "")",
         R"(true "")",
         R"(false "")",
         R"(true "")"},
        {"GetDefaultRoleInfo",
         [](CAConnect& conn) {
             int id = 77;
             CString name = "n";
             CString description = "d";
             const bool ran = CQVBaseFun::GetDefaultRoleInfo(conn, id, name, description);
             return Line(ran, id, name, description);
         },
         {{"41", "everyone", "All"}, {"42", "everyone", "Again"}},
         R"(true 41 "everyone" "All")",
         R"(true 0 "n" "d")",
         R"(true 0 "n" "d")",
         R"(false 0 "n" "d")"},
        {"GetDefaultRoleID",
         [](CAConnect& conn) {
             int id = 77;
             const bool ran = CQVBaseFun::GetDefaultRoleID(conn, id);
             return Line(ran, id);
         },
         {{"41"}, {"42"}},
         "true 41",
         "true 0",
         "true 0",
         "false 0"},
    };
}

std::vector<ReadCase> Lists()
{
    return {
        {"LoadRole into two arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             const bool ran = CQVBaseFun::LoadRole(conn, "Tolvan", 2, ids, names);
             return Line(ran, ids, names);
         },
         {{"41", "n1"}, {"42", "n2"}},
         "true [9,41,42] [old,n1,n2]",
         "true [9] [old]",
         "true [9,0] [old,]",
         "false [9] [old]"},
        {"LoadRole into three arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             Texts descriptions;
             const bool ran = CQVBaseFun::LoadRole(conn, "Tolvan", 2, ids, names, descriptions);
             return Line(ran, ids, names, descriptions);
         },
         {{"41", "n1", "d1"}, {"42", "n2", "d2"}},
         "true [9,41,42] [old,n1,n2] [old,d1,d2]",
         "true [9] [old] [old]",
         "true [9,0] [old,] [old,]",
         "false [9] [old] [old]"},
        {"LoadHMRole into two arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             const bool ran = CQVBaseFun::LoadHMRole(conn, 5, ids, names);
             return Line(ran, ids, names);
         },
         {{"41", "n1"}, {"42", "n2"}},
         "true [9,41,42] [old,n1,n2]",
         "true [9] [old]",
         "true [9,0] [old,]",
         "false [9] [old]"},
    };
}

std::string LoadThree(CAConnect& conn)
{
    Numbers ids;
    Texts names;
    Texts descriptions;
    const bool ran = CQVBaseFun::LoadHMRole(conn, 5, ids, names, descriptions);
    return Line(ran, ids, names, descriptions);
}

std::string LoadIds(CAConnect& conn)
{
    Numbers ids;
    const bool ran = CQVBaseFun::LoadHMRole(conn, 5, ids);
    return Line(ran, ids);
}

// They end with the default role: id 0 here, since the script has no answer to the second statement.
std::vector<ReadCase> ListsWithTheDefaultRole()
{
    return {
        {"LoadHMRole into three arrays",
         LoadThree,
         {{"41", "n1", "d1"}, {"42", "n2", "d2"}},
         "true [9,41,42,0] [old,n1,n2,] [old,d1,d2,]",
         "true [9,0] [old,] [old,]",
         "true [9,0,0] [old,,] [old,,]",
         "false [9] [old] [old]"},
        {"LoadHMRole into one array",
         LoadIds,
         {{"41", "n1", "d1"}, {"42", "n2", "d2"}},
         "true [9,41,42,0]",
         "true [9,0]",
         "true [9,0,0]",
         "false [9]"},
    };
}

std::vector<WriteCase> Writes()
{
    return {{"DeleteRole", [](CAConnect& conn) { return CQVBaseFun::DeleteRole(conn, 41); }}};
}

class RoleBehaviour : public behaviour::Script {
protected:
    RoleBehaviour() : Script("directory/QVBaseFun_Roles.cpp") {}
};

TEST_F(RoleBehaviour, ReadsGiveWhatTheRowsHoldOrTheirPresets)
{
    ExpectAnswersAreRead(LookUps());
    ExpectAnswersAreRead(Lists());
    ExpectAnswersAreRead(ListsWithTheDefaultRole());
}

TEST_F(RoleBehaviour, LookUpsReadTheFirstRowOnly) { ExpectOnlyTheFirstRowIsRead(LookUps()); }

TEST_F(RoleBehaviour, ReadsOfAClosedConnectionSayNothingAndOnlyTheNameIsGivenAllTheSame)
{
    ExpectClosedReadsSayNothing(LookUps());
    ExpectClosedReadsSayNothing(Lists());
    ExpectClosedReadsSayNothing(ListsWithTheDefaultRole());
}

TEST_F(RoleBehaviour, WhatTheEngineRefusesIsReportedOnceWithALineOfItsOwn)
{
    ExpectRefusedReadsAreReported(LookUps());
    ExpectRefusedReadsAreReported(Lists());
    ExpectRefusedReadsAreReported(ListsWithTheDefaultRole());
    ExpectRefusedWritesAreReported(Writes());
}

TEST_F(RoleBehaviour, AListThatBreaksOffKeepsTheRowsReadSoFar) { ExpectBrokenListsKeepTheirRows(Lists()); }

TEST_F(RoleBehaviour, WritesGiveTrueWhateverTheEngineCounts) { ExpectWritesGiveTrueWhateverIsCounted(Writes()); }

TEST_F(RoleBehaviour, WritesOnAClosedConnectionAreReportedAsErrors) { ExpectClosedWritesAreReported(Writes()); }

TEST_F(RoleBehaviour, TheDefaultRoleComesLastAndTwiceWhenItIsLinkedToo)
{
    Connect();
    m_database->Answer(Rows({{"7", "everyone", "All"}, {"41", "n1", "d1"}}));
    m_database->Answer(Rows({{"7", "everyone", "All"}}));
    EXPECT_EQ(LoadThree(*m_conn), "true [9,7,41,7] [old,everyone,n1,everyone] [old,All,d1,All]");
    Connect();
    m_database->Answer(Rows({{"7", "everyone", "All"}, {"41", "n1", "d1"}}));
    m_database->Answer(Rows({{"7"}}));
    EXPECT_EQ(LoadIds(*m_conn), "true [9,7,41,7]");
    ExpectNoError();
}

TEST_F(RoleBehaviour, ADefaultRoleThatCannotBeReadIsReportedAndLeftOut)
{
    Connect();
    m_database->Answer(Rows({{"41", "n1", "d1"}}));
    m_database->Answer(Raise("refused"));
    EXPECT_EQ(LoadThree(*m_conn), "true [9,41] [old,n1] [old,d1]");
    TakeError("refused [Script 1]", m_database->queries.at(1));
    Connect();
    m_database->Answer(Rows({{"41", "n1", "d1"}}));
    m_database->Answer(Raise("refused"));
    EXPECT_EQ(LoadIds(*m_conn), "true [9,41]");
    TakeError("refused [Script 1]", m_database->queries.at(1));
}

TEST_F(RoleBehaviour, AUsersRolesThatBreakOffEndWithoutTheDefaultRole)
{
    const std::vector<std::vector<scripted::Value>> rows = {{"41", "n1", "d1"}, {"42", "n2", "d2"}};
    for (const auto& [load, expected] : std::vector<std::pair<std::string (*)(CAConnect&), const char*>>{
             {LoadThree, "false [9,41] [old,n1] [old,d1]"}, {LoadIds, "false [9,41]"}}) {
        Connect();
        Reply reply = Rows(rows);
        reply.raiseAtRow = 1;
        m_database->Answer(reply);
        EXPECT_EQ(load(*m_conn), expected);
        TakeError("row refused [Script 2]", OnlyStatement());
    }
}

// ---- Job titles --------------------------------------------------------------------------------------------------

std::vector<ReadCase> TitleLookUps()
{
    return {
        {"ExistJobTitle",
         [](CAConnect& conn) {
             bool exists = true;
             const bool ran = CQVBaseFun::ExistJobTitle(conn, 5, 2, 41, 1, "Chief", exists);
             return Line(ran, exists);
         },
         {{"Amy"}},
         "true true",
         "true false",
         "true true",
         "false false"},
    };
}

std::vector<ReadCase> TitleLists()
{
    return {
        {"LoadJobTitleInfo",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             const bool ran = CQVBaseFun::LoadJobTitleInfo(conn, 5, 2, ids, names, "Chief");
             return Line(ran, ids, names);
         },
         {{"41", "Amy"}, {"42", "Bob"}},
         "true [9,41,42] [old,Amy,Bob]",
         "true [9] [old]",
         "true [9,0] [old,]",
         "false [9] [old]"},
    };
}

std::vector<WriteCase> TitleWrites()
{
    return {{"DeleteJobTitle", [](CAConnect& conn) { return CQVBaseFun::DeleteJobTitle(conn, 5, 2, 41, 1, "Chief"); }}};
}

class JobTitleBehaviour : public behaviour::Script {
protected:
    JobTitleBehaviour() : Script("directory/QVBaseFun_JobTitles.cpp") {}
};

TEST_F(JobTitleBehaviour, ReadsGiveWhatTheRowsHoldOrTheirPresets)
{
    ExpectAnswersAreRead(TitleLookUps());
    ExpectAnswersAreRead(TitleLists());
}

TEST_F(JobTitleBehaviour, LookUpsReadTheFirstRowOnly) { ExpectOnlyTheFirstRowIsRead(TitleLookUps()); }

TEST_F(JobTitleBehaviour, ReadsOfAClosedConnectionGiveFalseAndSayNothing)
{
    ExpectClosedReadsSayNothing(TitleLookUps());
    ExpectClosedReadsSayNothing(TitleLists());
}

TEST_F(JobTitleBehaviour, WhatTheEngineRefusesIsReportedOnceWithALineOfItsOwn)
{
    ExpectRefusedReadsAreReported(TitleLookUps());
    ExpectRefusedReadsAreReported(TitleLists());
    ExpectRefusedWritesAreReported(TitleWrites());
}

TEST_F(JobTitleBehaviour, AListThatBreaksOffKeepsTheRowsReadSoFar) { ExpectBrokenListsKeepTheirRows(TitleLists()); }

TEST_F(JobTitleBehaviour, WritesGiveTrueWhateverTheEngineCounts)
{
    ExpectWritesGiveTrueWhateverIsCounted(TitleWrites());
}

TEST_F(JobTitleBehaviour, WritesOnAClosedConnectionAreReportedAsErrors)
{
    ExpectClosedWritesAreReported(TitleWrites());
}

// ---- The records -------------------------------------------------------------------------------------------------

TEST(RoleItem, BeginsWithItsDefaults)
{
    const COleDateTime before = COleDateTime::GetCurrentTime();
    const CRoleItem item;
    const COleDateTime after = COleDateTime::GetCurrentTime();
    EXPECT_EQ(Line(item.m_nID, item.m_strName, item.m_strDescription, item.m_strCreatorName, item.m_strAppName,
                   item.m_nItemIndex, item.m_nDomainID, item.m_bDisabled, item.m_strGenre, item.m_nGClassID,
                   item.m_nType),
              R"(0 "" "" "" "Tolvan" 0 0 false "" 0 0)");
    EXPECT_TRUE(before <= item.m_dtCreate && item.m_dtCreate <= after);
}

TEST(JobTitleItem, BeginsWithItsDefaults)
{
    const CJobTitleItem item;
    EXPECT_EQ(Line(item.m_nQvItemID, item.m_nQvItemType, item.m_strJobTitle, item.m_nDQvItemID, item.m_nDQvItemType,
                   item.m_strDescription, item.m_strDQvItemName),
              R"(0 2 "" 0 1 "" "")");
}

TEST(RoleItem, AndTheJobTitleAreRecordsOfTheFramework)
{
    static_assert(std::is_base_of_v<CObject, CRoleItem> && std::is_base_of_v<CObject, CJobTitleItem>);
    CObList list;
    list.AddTail(std::make_unique<CRoleItem>().release());
    list.AddTail(std::make_unique<CJobTitleItem>().release());
    CQVBaseFun::DetachHumanList(list);
    EXPECT_TRUE(list.IsEmpty());
}

class RoleItemOnAScript : public behaviour::Script {
protected:
    RoleItemOnAScript() : Script("directory/RoleItem.cpp")
    {
        m_item.m_nID = 41;
        m_item.m_strName = "n";
        m_item.m_strDescription = "d";
        m_item.m_strCreatorName = "c";
        m_item.m_strAppName = "a";
        m_item.m_nItemIndex = 71;
        m_item.m_nDomainID = 72;
        m_item.m_bDisabled = true;
        m_item.m_dtCreate = COleDateTime(1987, 6, 5, 4, 3, 2);
        m_item.m_strGenre = "g";
        m_item.m_nGClassID = 73;
        m_item.m_nType = 74;
    }

    [[nodiscard]] std::string Item() const
    {
        return Line(m_item.m_nID, m_item.m_strName, m_item.m_strDescription, m_item.m_strCreatorName,
                    m_item.m_strAppName, m_item.m_nItemIndex, m_item.m_nDomainID, m_item.m_bDisabled,
                    m_item.m_dtCreate.Format("%Y-%m-%d %H:%M:%S"), m_item.m_strGenre, m_item.m_nGClassID,
                    m_item.m_nType);
    }

    static std::vector<RecordCase> Methods()
    {
        return {
            {"SaveData", [](CAConnect& conn) { return Line(CRoleItem().SaveData(conn)); }, "false", false, true},
            {"LoadData", [](CAConnect& conn) { return Line(CRoleItem().LoadData(conn)); }, "false", false, false},
            {"UpdateData", [](CAConnect& conn) { return Line(CRoleItem().UpdateData(conn)); }, "false", false, true},
        };
    }

    CRoleItem m_item;
    const std::string m_before = R"(41 "n" "d" "c" "a" 71 72 true "1987-06-05 04:03:02" "g" 73 74)";
};

TEST_F(RoleItemOnAScript, ErrorsDropTheirText)
{
    ExpectRefusedRecordsKeepOrDropTheText(Methods());
    ExpectClosedRecordsFail(Methods());
}

TEST_F(RoleItemOnAScript, SavingAndUpdatingGiveTrueWhateverIsCountedAndLeaveTheRecord)
{
    for (const auto& rows : {Rows({}), Rows({{"1"}, {"2"}})}) {
        Connect();
        m_database->Answer(rows);
        m_database->Answer(rows);
        EXPECT_TRUE(m_item.SaveData(*m_conn));
        EXPECT_TRUE(m_item.UpdateData(*m_conn));
        EXPECT_EQ(Item(), m_before);
        ExpectNoError();
    }
}

TEST_F(RoleItemOnAScript, LoadingReadsEachColumnOfTheFirstRowIntoItsMember)
{
    Connect();
    Reply reply = Rows({{"N", "D", "2001-02-03 04:05:06", "C", "1", "2", "0", "A", "G", "3", "4"}});
    reply.rows.push_back(reply.rows.front());
    reply.raiseAtRow = 1;
    m_database->Answer(reply);
    EXPECT_TRUE(m_item.LoadData(*m_conn));
    EXPECT_EQ(Item(), R"(41 "N" "D" "C" "A" 1 2 false "2001-02-03 04:05:06" "G" 3 4)");
    ExpectNoError();
}

TEST_F(RoleItemOnAScript, LoadingWithoutARowOrOfNullsGivesTrueAndLeavesTheRecord)
{
    for (const auto& reply : {Rows({}), Rows({std::vector<scripted::Value>(11)})}) {
        Connect();
        m_database->Answer(reply);
        EXPECT_TRUE(m_item.LoadData(*m_conn));
        EXPECT_EQ(Item(), m_before);
        ExpectNoError();
    }
}

class JobTitleItemOnAScript : public behaviour::Script {
protected:
    JobTitleItemOnAScript() : Script("directory/JobTitleItem.cpp") {}
};

TEST_F(JobTitleItemOnAScript, ErrorsDropTheirText)
{
    const std::vector<RecordCase> methods = {
        {"SaveData", [](CAConnect& conn) { return Line(CJobTitleItem().SaveData(conn)); }, "false", false, true}};
    ExpectRefusedRecordsKeepOrDropTheText(methods);
    ExpectClosedRecordsFail(methods);
}

TEST_F(JobTitleItemOnAScript, SavingGivesTrueWhateverIsCounted)
{
    for (const auto& rows : {Rows({}), Rows({{"1"}, {"2"}})}) {
        Connect();
        m_database->Answer(rows);
        EXPECT_TRUE(CJobTitleItem().SaveData(*m_conn));
        EXPECT_THAT(m_database->executions, SizeIs(1));
        ExpectNoError();
    }
}

} // namespace

} // namespace role_behaviour
