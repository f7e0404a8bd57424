#include "admin/BulletinItem.h"
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "tests/directory/BehaviourCase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

namespace server_behaviour {

using behaviour::Line;
using behaviour::Numbers;
using behaviour::ReadCase;
using behaviour::Texts;
using behaviour::WriteCase;
using scripted::Raise;
using scripted::Rows;
using testing::SizeIs;

namespace {

constexpr const char* kTime = "%Y-%m-%d %H:%M:%S";

// ---- Messages ----------------------------------------------------------------------------------------------------

// Asks with a date of 2020.
std::string OldestOf(CAConnect& conn)
{
    COleDateTime date(2020, 1, 1, 0, 0, 0);
    const bool ran = CQVBaseFun::GetMinDate(conn, "without effect", date);
    return Line(ran, date.Format(kTime));
}

std::vector<ReadCase> MessageLookUps()
{
    return {{"GetMinDate",
             OldestOf,
             {{"2013-05-07 09:03:00"}, {"2012-01-01 00:00:00"}},
             R"(true "2013-05-07 09:03:00")",
             R"(true "2020-01-01 00:00:00")",
             R"(true "2020-01-01 00:00:00")",
             R"(false "2020-01-01 00:00:00")"}};
}

std::vector<WriteCase> MessageWrites()
{
    return {
        {"DeleteMsgData", [](CAConnect& conn) { return CQVBaseFun::DeleteMsgData(conn, "2013-05-07"); }},
        {"DeleteAttachNoMsg", [](CAConnect& conn) { return CQVBaseFun::DeleteAttachNoMsg(conn); }},
        {"DeleteRecvNoMsg", [](CAConnect& conn) { return CQVBaseFun::DeleteRecvNoMsg(conn); }},
        {"DeleteLoginLogItem", [](CAConnect& conn) { return CQVBaseFun::DeleteLoginLogItem(conn, 41); }},
    };
}

class MessageBehaviour : public behaviour::Script {
protected:
    MessageBehaviour() : Script("admin/QVBaseFun_Messages.cpp") {}
};

TEST_F(MessageBehaviour, TheOldestDateIsReadFromTheFirstRow)
{
    ExpectAnswersAreRead(MessageLookUps());
    ExpectOnlyTheFirstRowIsRead(MessageLookUps());
    ExpectClosedReadsSayNothing(MessageLookUps());
    ExpectRefusedReadsAreReported(MessageLookUps());
}

TEST_F(MessageBehaviour, TheOldestDateTakesThePlaceOfALaterOneAloneAndLeavesItsStatus)
{
    for (const auto& [oldest, expected] : {std::pair{"2019-12-31 23:59:59", "2019-12-31 23:59:59"},
                                           std::pair{"2020-01-01 00:00:01", "2020-01-01 00:00:00"}}) {
        Connect();
        m_database->Answer(Rows({{oldest}}));
        COleDateTime date(2020, 1, 1, 0, 0, 0);
        date.SetStatus(COleDateTime::invalid);
        EXPECT_TRUE(CQVBaseFun::GetMinDate(*m_conn, "", date));
        EXPECT_EQ(date.GetStatus(), COleDateTime::invalid);
        date.SetStatus(COleDateTime::valid);
        EXPECT_STREQ(date.Format(kTime), expected);
    }
}

TEST_F(MessageBehaviour, WritesGiveTrueWhateverTheEngineCounts)
{
    ExpectWritesGiveTrueWhateverIsCounted(MessageWrites());
}

TEST_F(MessageBehaviour, RefusedWritesAreReported)
{
    ExpectRefusedWritesAreReported(MessageWrites());
    ExpectClosedWritesAreReported(MessageWrites());
}

TEST_F(MessageBehaviour, ATextThatIsNoDateIsRefusedAndNothingIsSent)
{
    for (const char* text : {"", "yesterday", "2013-02-30", "2013-05-07'", "07.05.2013"}) {
        Connect();
        EXPECT_FALSE(CQVBaseFun::DeleteMsgData(*m_conn, text)) << text;
        ExpectNothingSent();
        EXPECT_THAT(ErrorRecorder::Text(), testing::HasSubstr("is not a date")) << text;
        EXPECT_THAT(m_watch.messages, SizeIs(1)) << text;
        m_watch.messages.clear();

        Connect();
        EXPECT_FALSE(CQVBaseFun::ClearMsgData(*m_conn, text)) << text;
        ExpectNothingSent();
        m_watch.messages.clear();
    }
    CQVBaseFun::m_strLastError = ErrorRecorder::kOlder;
}

TEST_F(MessageBehaviour, ClearingStopsAtTheStepThatIsRefused)
{
    for (std::size_t refused = 0; refused < 3; ++refused) {
        Connect();
        for (std::size_t step = 0; step < 3; ++step) {
            m_database->Answer(step == refused ? Raise("refused") : Rows({}));
        }
        EXPECT_FALSE(CQVBaseFun::ClearMsgData(*m_conn, "2013-05-07"));
        EXPECT_THAT(m_database->executions, SizeIs(refused + 1));
        EXPECT_THAT(m_watch.messages, SizeIs(1));
        m_watch.messages.clear();
    }
    CQVBaseFun::m_strLastError = ErrorRecorder::kOlder;
    Connect();
    EXPECT_TRUE(CQVBaseFun::ClearMsgData(*m_conn, "2013-05-07"));
    EXPECT_THAT(m_database->executions, SizeIs(3));
    ExpectNoError();
}

// ---- Add-ins and packages ----------------------------------------------------------------------------------------

std::vector<ReadCase> AddInLookUps()
{
    return {
        {"ExistAddInInfo",
         [](CAConnect& conn) {
             int id = 77;
             const bool ran = CQVBaseFun::ExistAddInInfo(conn, "n", 1, id);
             return Line(ran, id);
         },
         {{"41"}, {"42"}},
         "true 41",
         "true 0",
         "true 0",
         "false 0"},
        {"ExistAddInItem",
         [](CAConnect& conn) {
             int id = 77;
             const bool ran = CQVBaseFun::ExistAddInItem(conn, 1, "n", "p", id);
             return Line(ran, id);
         },
         {{"41"}, {"42"}},
         "true 41",
         "true 0",
         "true 0",
         "false 0"},
        {"GetAddInInfo",
         [](CAConnect& conn) {
             CString data = "before";
             const bool ran = CQVBaseFun::GetAddInInfo(conn, "n", 1, data);
             return Line(ran, data);
         },
         {{"settings"}, {"others"}},
         R"(true "settings")",
         R"(true "before")",
         R"(true "before")",
         R"(false "before")"},
        {"GetAddInItemMaxIndex",
         [](CAConnect& conn) {
             int index = 77;
             const bool ran = CQVBaseFun::GetAddInItemMaxIndex(conn, index);
             return Line(ran, index);
         },
         {{"12"}},
         "true 12",
         "true 0",
         "true 0",
         "false 0"},
        {"GetAddInItemIndex",
         [](CAConnect& conn) {
             int index = 77;
             const bool ran = CQVBaseFun::GetAddInItemIndex(conn, 41, index);
             return Line(ran, index);
         },
         {{"12"}, {"13"}},
         "true 12",
         "true 0",
         "true 0",
         "false 0"},
        {"GetPackageInfo",
         [](CAConnect& conn) {
             int id = 77;
             int version = 78;
             const bool ran = CQVBaseFun::GetPackageInfo(conn, "p", id, version);
             return Line(ran, id, version);
         },
         {{"41", "3"}, {"42", "4"}},
         "true 41 3",
         "true 0 0",
         "true 0 0",
         "false 0 0"},
    };
}

std::vector<ReadCase> AddInLists()
{
    return {
        {"LoadKelAddIn, with its flags crosswise",
         [](CAConnect& conn) {
             Numbers ids;
             Numbers types;
             Texts names;
             Numbers disabled;
             Numbers isPublic;
             Texts descs;
             Texts packages;
             const bool ran = CQVBaseFun::LoadKelAddIn(conn, ids, types, names, disabled, isPublic, descs, packages);
             return Line(ran, ids, types, names, disabled, isPublic, descs, packages);
         },
         {{"41", "1", "n1", "1", "0", "d1", "p1"}, {"42", "2", "n2", "0", "1", "d2", "p2"}},
         "true [9,41,42] [9,1,2] [old,n1,n2] [9,0,1] [9,1,0] [old,d1,d2] [old,p1,p2]",
         "true [9] [9] [old] [9] [9] [old] [old]",
         "true [9,0] [9,0] [old,] [9,0] [9,0] [old,] [old,]",
         "false [9] [9] [old] [9] [9] [old] [old]"},
        {"LoadAddInPackageInfo",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             Texts versions;
             Texts descs;
             Numbers disabled;
             const bool ran = CQVBaseFun::LoadAddInPackageInfo(conn, ids, names, versions, descs, disabled);
             return Line(ran, ids, names, versions, descs, disabled);
         },
         {{"41", "p1", "3", "d1", "0"}, {"42", "p2", "4", "d2", "1"}},
         "true [9,41,42] [old,p1,p2] [old,3,4] [old,d1,d2] [9,0,1]",
         "true [9] [old] [old] [old] [9]",
         "true [9,0] [old,] [old,] [old,] [9,0]",
         "false [9] [old] [old] [old] [9]"},
    };
}

bool Switch(CAConnect& conn)
{
    bool disabled = true;
    const bool ran = CQVBaseFun::EnableAddInItem(conn, 41, disabled);
    EXPECT_TRUE(disabled);
    return ran;
}

std::vector<WriteCase> AddInWrites()
{
    return {
        {"InsertAddInInfo",
         [](CAConnect& conn) { return CQVBaseFun::InsertAddInInfo(conn, "n", "s", 1, true, "d", "p", 2); }},
        {"UpdateAddInInfo by name",
         [](CAConnect& conn) { return CQVBaseFun::UpdateAddInInfo(conn, "n", 1, "s", "d"); }},
        {"UpdateAddInInfo by id", [](CAConnect& conn) { return CQVBaseFun::UpdateAddInInfo(conn, 41, "s", "d"); }},
        {"EnableAddInItem", Switch},
        {"DeleteAddInItem", [](CAConnect& conn) { return CQVBaseFun::DeleteAddInItem(conn, 41); }},
        {"DeleteAddIn", [](CAConnect& conn) { return CQVBaseFun::DeleteAddIn(conn, "p"); }},
        {"UpdateAddInItemIndex", [](CAConnect& conn) { return CQVBaseFun::UpdateAddInItemIndex(conn, 41, 2); }},
        {"UpdatePackageInfo", [](CAConnect& conn) { return CQVBaseFun::UpdatePackageInfo(conn, "t", 3, "d", 41); }},
        {"DeletePackage", [](CAConnect& conn) { return CQVBaseFun::DeletePackage(conn, 41); }},
    };
}

class AddInBehaviour : public behaviour::Script {
protected:
    AddInBehaviour() : Script("admin/QVBaseFun_AddIns.cpp") {}

    static std::string Install(CAConnect& conn)
    {
        int id = 77;
        const bool ran = CQVBaseFun::InsertPackageInfo(conn, "p", "2013-05-07 09:03:00", 3, "d", id);
        return Line(ran, id);
    }
};

TEST_F(AddInBehaviour, ReadsGiveWhatTheRowsHoldOrTheirPresets)
{
    ExpectAnswersAreRead(AddInLookUps());
    ExpectAnswersAreRead(AddInLists());
}

TEST_F(AddInBehaviour, LookUpsReadTheFirstRowOnly) { ExpectOnlyTheFirstRowIsRead(AddInLookUps()); }

TEST_F(AddInBehaviour, ReadsOfAClosedConnectionGiveFalseAndSayNothing)
{
    ExpectClosedReadsSayNothing(AddInLookUps());
    ExpectClosedReadsSayNothing(AddInLists());
}

TEST_F(AddInBehaviour, WhatTheEngineRefusesIsReportedOnceWithALineOfItsOwn)
{
    ExpectRefusedReadsAreReported(AddInLookUps());
    ExpectRefusedReadsAreReported(AddInLists());
    ExpectRefusedWritesAreReported(AddInWrites());
}

TEST_F(AddInBehaviour, AListThatBreaksOffKeepsTheRowsReadSoFar) { ExpectBrokenListsKeepTheirRows(AddInLists()); }

TEST_F(AddInBehaviour, WritesGiveTrueWhateverTheEngineCounts) { ExpectWritesGiveTrueWhateverIsCounted(AddInWrites()); }

TEST_F(AddInBehaviour, WritesOnAClosedConnectionAreReportedAsErrors) { ExpectClosedWritesAreReported(AddInWrites()); }

TEST_F(AddInBehaviour, ANewPackageHasTheHighestId)
{
    Connect();
    m_database->Answer(Rows({}));
    m_database->Answer(Rows({{"41"}}));
    EXPECT_EQ(Install(*m_conn), "true 41");
    Connect(); // an empty table has no highest id
    m_database->Answer(Rows({}));
    m_database->Answer(Rows({{std::nullopt}}));
    EXPECT_EQ(Install(*m_conn), "true 77");
    Connect();
    EXPECT_EQ(Install(*m_conn), "true 77");
    ExpectNoError();
}

TEST_F(AddInBehaviour, ARefusedPackageIsReportedAndTheHighestIdGivenAllTheSame)
{
    Connect();
    m_database->Answer(Raise("refused"));
    m_database->Answer(Rows({{"41"}}));
    EXPECT_EQ(Install(*m_conn), "true 41");
    TakeError("refused [Script 1]", m_database->executions.at(0));
}

TEST_F(AddInBehaviour, APackageWhoseIdCannotBeReadIsThereAllTheSame)
{
    Connect();
    m_database->Answer(Rows({}));
    m_database->Answer(Raise("refused"));
    EXPECT_EQ(Install(*m_conn), "false 77");
    EXPECT_THAT(m_database->executions, SizeIs(1));
    TakeError("refused [Script 1]", m_database->queries.at(0));

    Connect();
    m_database->GoAway();
    EXPECT_EQ(Install(*m_conn), "false 77");
    EXPECT_THAT(m_watch.messages, SizeIs(1)); // of the write; the read says nothing
    m_watch.messages.clear();
    CQVBaseFun::m_strLastError = ErrorRecorder::kOlder;
}

// ---- Bulletin board ----------------------------------------------------------------------------------------------

std::vector<ReadCase> BoardLookUps()
{
    return {{"GetBulletinContent",
             [](CAConnect& conn) {
                 CString content = "before";
                 const bool ran = CQVBaseFun::GetBulletinContent(conn, "b1", content);
                 return Line(ran, content);
             },
             {{"Hello"}, {"Again"}},
             R"(true "Hello")",
             R"(true "before")",
             R"(true "before")",
             R"(false "before")",
             R"(true "before")"}};
}

std::vector<ReadCase> BoardLists()
{
    return {
        {"LoadBulletinInfo, with its texts crosswise",
         [](CAConnect& conn) {
             Texts ids;
             Texts subjects;
             Texts creators;
             Texts times;
             const bool ran = CQVBaseFun::LoadBulletinInfo(conn, ids, subjects, creators, times);
             return Line(ran, ids, subjects, creators, times);
         },
         {{"b1", "Amy", "Lunch", "2013-05-07 09:03:00"}, {"b2", "Bob", "Cake", "0987-06-05"}},
         "true [old,b1,b2] [old,Lunch,Cake] [old,Amy,Bob] [old,2013-05-07 09:03:00,0987-06-05 00:00:00]",
         "true [old] [old] [old] [old]",
         "true [old,] [old,] [old,] [old,]",
         "false [old] [old] [old] [old]",
         "true [old] [old] [old] [old]"},
        {"LoadBulletinAttachments",
         [](CAConnect& conn) {
             Texts names;
             const bool ran = CQVBaseFun::LoadBulletinAttachments(conn, "b1", names);
             return Line(ran, names);
         },
         {{"a.txt"}, {"b.txt"}},
         "true [old,a.txt,b.txt]",
         "true [old]",
         "true [old,]",
         "false [old]",
         "true [old]"},
        {"LoadBulletinReplyInfo",
         [](CAConnect& conn) {
             Numbers ids;
             Texts creators;
             Texts times;
             Texts contents;
             const bool ran = CQVBaseFun::LoadBulletinReplyInfo(conn, "b1", ids, creators, times, contents);
             return Line(ran, ids, creators, times, contents);
         },
         {{"41", "Amy", "2013-05-07 09:03:00", "yes"}, {"42", "Bob", "2013-12-31 23:59:59", "no"}},
         "true [9,41,42] [old,Amy,Bob] [old,2013-05-07 09:03:00,2013-12-31 23:59:59] [old,yes,no]",
         "true [9] [old] [old] [old]",
         "true [9,0] [old,] [old,] [old,]",
         "false [9] [old] [old] [old]",
         "true [9] [old] [old] [old]"},
        {"LoadBulletinVisiterInfo",
         [](CAConnect& conn) {
             Numbers ids;
             Texts items;
             Texts names;
             Texts times;
             Numbers flags;
             const bool ran = CQVBaseFun::LoadBulletinVisiterInfo(conn, "b1", ids, items, names, times, flags);
             return Line(ran, ids, items, names, times, flags);
         },
         {{"41", "1:5", "Amy", "2013-05-07 09:03:00", "1"}, {"42", "1:6", "Bob", "2013-05-08 00:00:00", "0"}},
         "true [9,41,42] [old,1:5,1:6] [old,Amy,Bob] [old,2013-05-07 09:03:00,2013-05-08 00:00:00] [9,1,0]",
         "true [9] [old] [old] [old] [9]",
         "true [9,0] [old,] [old,] [old,] [9,0]",
         "false [9] [old] [old] [old] [9]",
         "true [9] [old] [old] [old] [9]"},
    };
}

std::vector<WriteCase> BoardWrites()
{
    return {
        {"DeleteBulletinItem", [](CAConnect& conn) { return CQVBaseFun::DeleteBulletinItem(conn, "b1"); }},
        {"DeleteBulletinAttach", [](CAConnect& conn) { return CQVBaseFun::DeleteBulletinAttach(conn, "b1"); }},
        {"DeleteBulletinReply", [](CAConnect& conn) { return CQVBaseFun::DeleteBulletinReply(conn, "b1"); }},
        {"DeleteBulletinVisiter", [](CAConnect& conn) { return CQVBaseFun::DeleteBulletinVisiter(conn, "b1"); }},
    };
}

class BoardBehaviour : public behaviour::Script {
protected:
    BoardBehaviour() : Script("admin/QVBaseFun_Board.cpp") {}
};

TEST_F(BoardBehaviour, ReadsGiveWhatTheRowsHoldOrTheirPresets)
{
    ExpectAnswersAreRead(BoardLookUps());
    ExpectAnswersAreRead(BoardLists());
}

TEST_F(BoardBehaviour, TheContentIsThatOfTheFirstRow) { ExpectOnlyTheFirstRowIsRead(BoardLookUps()); }

TEST_F(BoardBehaviour, ReadsOfAClosedConnectionGiveTrueAllTheSame)
{
    ExpectClosedReadsSayNothing(BoardLookUps());
    ExpectClosedReadsSayNothing(BoardLists());
}

TEST_F(BoardBehaviour, WhatTheEngineRefusesIsReportedOnceWithALineOfItsOwn)
{
    ExpectRefusedReadsAreReported(BoardLookUps());
    ExpectRefusedReadsAreReported(BoardLists());
    ExpectRefusedWritesAreReported(BoardWrites());
}

TEST_F(BoardBehaviour, AListThatBreaksOffKeepsTheRowsReadSoFar) { ExpectBrokenListsKeepTheirRows(BoardLists()); }

TEST_F(BoardBehaviour, WritesGiveTrueWhateverTheEngineCounts) { ExpectWritesGiveTrueWhateverIsCounted(BoardWrites()); }

TEST_F(BoardBehaviour, WritesOnAClosedConnectionAreReportedAsErrors) { ExpectClosedWritesAreReported(BoardWrites()); }

TEST(BulletinItem, BeginsEmpty)
{
    static_assert(std::is_base_of_v<CObject, CBulletinItem>);
    const CBulletinItem item;
    EXPECT_EQ(Line(item.m_strID, item.m_strSubject, item.m_strCreatorName, item.m_strTime, item.m_strContent,
                   item.m_attachments),
              R"("" "" "" "" "" [])");
}

} // namespace

} // namespace server_behaviour
