#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "directory/GroupItem.h"
#include "directory/ViewItem.h"
#include "tests/directory/BehaviourCase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace group_behaviour {

using behaviour::Line;
using behaviour::Numbers;
using behaviour::ReadCase;
using behaviour::RecordCase;
using behaviour::Shown;
using behaviour::Texts;
using behaviour::WriteCase;
using scripted::Raise;
using scripted::Reply;
using scripted::Rows;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

// ---- Groups ------------------------------------------------------------------------------------------------------

std::vector<ReadCase> GroupLookUps()
{
    return {
        {"GetGroupIDByName",
         [](CAConnect& conn) {
             int id = 77;
             const bool ran = CQVBaseFun::GetGroupIDByName(conn, "Sales", id);
             return Line(ran, id);
         },
         {{"41"}},
         "true 41",
         "true -1",
         "true -1",
         "false -1"},
        {"GetGroupIDByNameAndOwner",
         [](CAConnect& conn) {
             int id = 77;
             const bool ran = CQVBaseFun::GetGroupIDByNameAndOwner(conn, "Sales", id, 5);
             return Line(ran, id);
         },
         {{"41"}, {"42"}},
         "true 41",
         "true -1",
         "true -1",
         "false -1"},
        {"ExistGroupName anywhere",
         [](CAConnect& conn) {
             bool exists = true;
             const bool ran = CQVBaseFun::ExistGroupName(conn, "Sales", exists);
             return Line(ran, exists);
         },
         {{"Sales"}},
         "true true",
         "true false",
         "true true",
         "false false"},
        {"ExistGroupName under a parent",
         [](CAConnect& conn) {
             bool exists = true;
             const bool ran = CQVBaseFun::ExistGroupName(conn, "Sales", 5, 4, exists);
             return Line(ran, exists);
         },
         {{"Sales"}},
         "true true",
         "true false",
         "true true",
         "false false"},
        {"ExistGroupName for its id",
         [](CAConnect& conn) { return Line(CQVBaseFun::ExistGroupName(conn, "Sales", 5, 4)); },
         {{"41"}, {"42"}},
         "41",
         "0",
         "0",
         "0"},
        {"LoadGroupInfo",
         [](CAConnect& conn) {
             CString name = "n";
             int index = 71;
             CString description = "d";
             const bool ran = CQVBaseFun::LoadGroupInfo(conn, 41, name, index, description);
             return Line(ran, name, index, description);
         },
         {{"Sales", "5", "Sells"}},
         R"(true "Sales" 5 "Sells")",
         R"(true "n" 71 "d")",
         R"(true "n" 71 "d")",
         R"(false "n" 71 "d")"},
        {"GetGroupStyle",
         [](CAConnect& conn) {
             int style = 77;
             const bool ran = CQVBaseFun::GetGroupStyle(conn, 41, style);
             return Line(ran, style);
         },
         {{"-2147483648"}},
         "true -2147483648",
         "true 0",
         "true 0",
         "false 0",
         "true 0"},
    };
}

std::vector<ReadCase> GroupLists()
{
    return {
        {"LoadGroup",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             const bool ran = CQVBaseFun::LoadGroup(conn, 5, 4, ids, names);
             return Line(ran, ids, names);
         },
         {{"41", "Sales"}, {"42", "Stock"}},
         "true [9,41,42] [old,Sales,Stock]",
         "true [9] [old]",
         "true [9,0] [old,]",
         "false [9] [old]"},
    };
}

std::vector<WriteCase> GroupWrites()
{
    return {
        {"UpdateGroupInfo", [](CAConnect& conn) { return CQVBaseFun::UpdateGroupInfo(conn, 41, "n", 5, "d"); }},
        {"UpdateGroupStyle", [](CAConnect& conn) { return CQVBaseFun::UpdateGroupStyle(conn, 41, 3); }},
        {"DelGroupItemByID", [](CAConnect& conn) { return CQVBaseFun::DelGroupItemByID(conn, 41); }},
    };
}

class GroupBehaviour : public behaviour::Script {
protected:
    GroupBehaviour() : Script("directory/QVBaseFun_Groups.cpp") {}
};

TEST_F(GroupBehaviour, ReadsGiveWhatTheRowsHoldOrTheirPresets)
{
    ExpectAnswersAreRead(GroupLookUps());
    ExpectAnswersAreRead(GroupLists());
}

TEST_F(GroupBehaviour, LookUpsReadTheFirstRowOnly) { ExpectOnlyTheFirstRowIsRead(GroupLookUps()); }

TEST_F(GroupBehaviour, ReadsOfAClosedConnectionSayNothingAndOnlyTheStyleIsGivenAllTheSame)
{
    ExpectClosedReadsSayNothing(GroupLookUps());
    ExpectClosedReadsSayNothing(GroupLists());
}

TEST_F(GroupBehaviour, WhatTheEngineRefusesIsReportedOnceWithALineOfItsOwn)
{
    ExpectRefusedReadsAreReported(GroupLookUps());
    ExpectRefusedReadsAreReported(GroupLists());
    ExpectRefusedWritesAreReported(GroupWrites());
}

TEST_F(GroupBehaviour, AListThatBreaksOffKeepsTheRowsReadSoFar) { ExpectBrokenListsKeepTheirRows(GroupLists()); }

TEST_F(GroupBehaviour, WritesGiveTrueWhateverTheEngineCounts) { ExpectWritesGiveTrueWhateverIsCounted(GroupWrites()); }

TEST_F(GroupBehaviour, WritesOnAClosedConnectionAreReportedAsErrors) { ExpectClosedWritesAreReported(GroupWrites()); }

TEST_F(GroupBehaviour, OfSeveralColumnsOneNullLeavesTheOthersRead)
{
    Connect();
    m_database->Answer(Rows({{"Sales", {}, "Sells"}}));
    CString name = "n";
    int index = 71;
    CString description = "d";
    EXPECT_TRUE(CQVBaseFun::LoadGroupInfo(*m_conn, 41, name, index, description));
    EXPECT_EQ(Line(name, index, description), R"("Sales" 71 "Sells")");
}

// ---- Views -------------------------------------------------------------------------------------------------------

std::vector<ReadCase> ViewLookUps()
{
    return {
        {"GetViewIDByName",
         [](CAConnect& conn) {
             int id = 77;
             const bool ran = CQVBaseFun::GetViewIDByName(conn, "Main", 1, id);
             return Line(ran, id);
         },
         {{"41"}, {"42"}},
         "true 41",
         "true 0",
         "true 0",
         "false 0"},
        {"ExistViewName",
         [](CAConnect& conn) { return Line(CQVBaseFun::ExistViewName(conn, "Main", 1)); },
         {{"41"}, {"42"}},
         "41",
         "0",
         "0",
         "0"},
        {"GetViewNameByID",
         [](CAConnect& conn) {
             CString name = "before";
             const bool ran = CQVBaseFun::GetViewNameByID(conn, 41, name);
             return Line(ran, name);
         },
         {{"Main"}, {"Side"}},
         R"(true "Main")",
         R"(true "")",
         R"(true "")",
         R"(false "")"},
        {"GetDefaultSysView",
         [](CAConnect& conn) {
             CString name = "before";
             const bool ran = CQVBaseFun::GetDefaultSysView(conn, name);
             return Line(ran, name);
         },
         {{"Main"}, {"Side"}},
         R"(true "Main")",
         R"(true "")",
         R"(true "")",
         R"(false "")"},
        {"HasNoSysView",
         [](CAConnect& conn) {
             bool flag = true;
             const bool ran = CQVBaseFun::HasNoSysView(conn, flag);
             return Line(ran, flag);
         },
         {{"2"}, {"0"}},
         "true true",
         "true false",
         "true false",
         "false false"},
        {"GetSysViewCount",
         [](CAConnect& conn) {
             int count = 77;
             const bool ran = CQVBaseFun::GetSysViewCount(conn, count);
             return Line(ran, count);
         },
         {{"2147483647"}},
         "true 2147483647",
         "true 0",
         "true 0",
         "false 0",
         "true 0"},
    };
}

/// What a list of views holds, which is then freed.
std::string ShownAndFreed(CObList& views)
{
    std::string shown;
    for (POSITION position = views.GetHeadPosition(); position != nullptr;) {
        const auto& view = dynamic_cast<const CViewItem&>(*views.GetNext(position));
        shown += "(" + Line(view.m_nID, view.m_nType, view.m_strName, view.m_strDescription, view.m_nItemIndex) + ")";
    }
    CQVBaseFun::DetachHumanList(views);
    return shown;
}

std::vector<ReadCase> ViewLists()
{
    return {
        {"LoadView",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             const bool ran = CQVBaseFun::LoadView(conn, ids, names, 1);
             return Line(ran, ids, names);
         },
         {{"41", "Main"}, {"42", "Side"}},
         "true [9,41,42] [old,Main,Side]",
         "true [9] [old]",
         "true [9,0] [old,]",
         "false [9] [old]"},
        {"LoadViewbyUserID with something in the arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             const int done = CQVBaseFun::LoadViewbyUserID(conn, 5, ids, names, 2, true);
             return Line(done, ids, names);
         },
         {{"41", "Main"}, {"42", "Side"}},
         "1 [9,41,42] [old,Main,Side]",
         "1 [9] [old]",
         "1 [9,0] [old,]",
         "0 [9] [old]"},
        {"LoadSysView",
         [](CAConnect& conn) {
             CObList views;
             auto old = std::make_unique<CViewItem>();
             old->m_nID = 9;
             views.AddTail(old.release());
             const bool ran = CQVBaseFun::LoadSysView(conn, views);
             return Shown(ran) + " " + ShownAndFreed(views);
         },
         {{"41", "Main", "The main one", "5"}, {"42", "Side", "Another", "6"}},
         R"(true (9 1 "" "" 10000)(41 1 "Main" "The main one" 5)(42 1 "Side" "Another" 6))",
         R"(true (9 1 "" "" 10000))",
         R"(true (9 1 "" "" 10000)(0 1 "" "" 10000))",
         R"(false (9 1 "" "" 10000))"},
    };
}

std::vector<WriteCase> ViewWrites()
{
    return {
        {"UpdateViewName", [](CAConnect& conn) { return CQVBaseFun::UpdateViewName(conn, 41, "n"); }},
        {"UpdateDefaultSysView", [](CAConnect& conn) { return CQVBaseFun::UpdateDefaultSysView(conn, "n"); }},
        {"DeleteViewItem", [](CAConnect& conn) { return CQVBaseFun::DeleteViewItem(conn, 41); }},
    };
}

class ViewBehaviour : public behaviour::Script {
protected:
    ViewBehaviour() : Script("directory/QVBaseFun_Views.cpp") {}

    /// The views of an owner into empty arrays, as Line shows it.
    std::string LoadOwned(bool createIfEmpty)
    {
        CUIntArray ids;
        CStringArray names;
        const int done = CQVBaseFun::LoadViewbyUserID(*m_conn, 5, ids, names, 2, createIfEmpty);
        return Line(done, ids, names);
    }
};

TEST_F(ViewBehaviour, ReadsGiveWhatTheRowsHoldOrTheirPresets)
{
    ExpectAnswersAreRead(ViewLookUps());
    ExpectAnswersAreRead(ViewLists());
}

TEST_F(ViewBehaviour, LookUpsReadTheFirstRowOnly) { ExpectOnlyTheFirstRowIsRead(ViewLookUps()); }

TEST_F(ViewBehaviour, ReadsOfAClosedConnectionSayNothingAndOnlyTheCountIsGivenAllTheSame)
{
    ExpectClosedReadsSayNothing(ViewLookUps());
    ExpectClosedReadsSayNothing(ViewLists());
}

TEST_F(ViewBehaviour, WhatTheEngineRefusesIsReportedOnceWithALineOfItsOwn)
{
    ExpectRefusedReadsAreReported(ViewLookUps());
    ExpectRefusedReadsAreReported(ViewLists());
    ExpectRefusedWritesAreReported(ViewWrites());
}

TEST_F(ViewBehaviour, AListThatBreaksOffKeepsTheRowsReadSoFar) { ExpectBrokenListsKeepTheirRows(ViewLists()); }

TEST_F(ViewBehaviour, WritesGiveTrueWhateverTheEngineCounts) { ExpectWritesGiveTrueWhateverIsCounted(ViewWrites()); }

TEST_F(ViewBehaviour, WritesOnAClosedConnectionAreReportedAsErrors) { ExpectClosedWritesAreReported(ViewWrites()); }

TEST_F(ViewBehaviour, TheTestForSystemViewsIsTrueWhenThereAreSomeOnEveryKind)
{
    for (const int kind : {0, 1, 3, 6}) {
        for (const char* count : {"-1", "0", "1", "2147483647"}) {
            Connect(kind);
            m_database->Answer(Rows({{count}}));
            bool flag = false;
            EXPECT_TRUE(CQVBaseFun::HasNoSysView(*m_conn, flag));
            EXPECT_EQ(flag, std::string(count) == "1" || std::string(count) == "2147483647") << count;
        }
    }
}

TEST_F(ViewBehaviour, TheTestForSystemViewsReadsItsCountIn64BitsOnKindSix)
{
    Connect(6);
    m_database->Answer(Rows({{"4294967296"}}));
    bool flag = false;
    EXPECT_TRUE(CQVBaseFun::HasNoSysView(*m_conn, flag));
    EXPECT_TRUE(flag);
}

TEST_F(ViewBehaviour, AnOwnersViewsAreReadAndNothingIsAdded)
{
    for (const bool createIfEmpty : {true, false}) {
        Connect();
        m_database->Answer(Rows({{"41", "Main"}}));
        EXPECT_EQ(LoadOwned(createIfEmpty), "1 [41] [Main]");
        EXPECT_THAT(m_database->queries, SizeIs(1));
        EXPECT_THAT(m_database->executions, IsEmpty());
    }
}

TEST_F(ViewBehaviour, AnOwnerWithoutViewsIsLeftSoUnlessAskedFor)
{
    Connect();
    EXPECT_EQ(LoadOwned(false), "1 [] []");
    EXPECT_THAT(m_database->queries, SizeIs(1));
    EXPECT_THAT(m_database->executions, IsEmpty());
    ExpectNoError();
}

TEST_F(ViewBehaviour, AnOwnerWithoutViewsGetsAPlaceholderThatIsReadBack)
{
    Connect();
    m_database->Answer(Rows({}));
    m_database->Answer(Rows({}));
    m_database->Answer(Rows({{"41", "_Empty"}}));
    EXPECT_EQ(LoadOwned(true), "1 [41] [_Empty]");
    EXPECT_THAT(m_database->queries, SizeIs(2));
    EXPECT_THAT(m_database->executions, SizeIs(1));
    ExpectNoError();
}

TEST_F(ViewBehaviour, APlaceholderThatIsNotSeenAtOnceIsAddedAgain)
{
    Connect();
    for (int i = 0; i < 4; ++i) {
        m_database->Answer(Rows({}));
    }
    m_database->Answer(Rows({{"41", "_Empty"}, {"42", "_Empty"}}));
    EXPECT_EQ(LoadOwned(true), "1 [41,42] [_Empty,_Empty]");
    EXPECT_THAT(m_database->queries, SizeIs(3));
    EXPECT_THAT(m_database->executions, SizeIs(2));
}

TEST_F(ViewBehaviour, APlaceholderThatIsRefusedGivesZeroAndIsReported)
{
    Connect();
    m_database->Answer(Rows({}));
    m_database->Answer(Raise("refused"));
    EXPECT_EQ(LoadOwned(true), "0 [] []");
    EXPECT_THAT(m_database->queries, SizeIs(1));
    ASSERT_THAT(m_database->executions, SizeIs(1));
    TakeError("refused [Script 1]", m_database->executions[0]);
}

TEST_F(ViewBehaviour, APlaceholderThatCannotBeReadBackGivesZeroAndStaysAdded)
{
    Connect();
    m_database->Answer(Rows({}));
    m_database->Answer(Rows({}));
    m_database->Answer(Raise("refused"));
    EXPECT_EQ(LoadOwned(true), "0 [] []");
    EXPECT_THAT(m_database->executions, SizeIs(1));
    ASSERT_THAT(m_database->queries, SizeIs(2));
    TakeError("refused [Script 1]", m_database->queries[1]);
}

TEST_F(ViewBehaviour, OnAClosedConnectionNoPlaceholderIsAdded)
{
    Connect();
    m_database->GoAway();
    EXPECT_EQ(LoadOwned(true), "0 [] []");
    ExpectNothingSent();
    ExpectNoError();
}

TEST_F(ViewBehaviour, AReadThatBreaksOffAddsNoPlaceholder)
{
    Connect();
    Reply reply;
    reply.raiseAtRow = 0;
    m_database->Answer(reply);
    EXPECT_EQ(LoadOwned(true), "0 [] []");
    EXPECT_THAT(m_database->executions, IsEmpty());
    TakeError("row refused [Script 2]", m_database->queries.at(0));
}

// ---- The records -------------------------------------------------------------------------------------------------

/// Calls a method of a new record, shown with its result.
template <class Record, class Result>
auto Calling(Result (Record::*method)(CAConnect&))
{
    return [method](CAConnect& conn) {
        Record item;
        return Line((item.*method)(conn));
    };
}

TEST(GroupItem, BeginsWithItsDefaults)
{
    const COleDateTime before = COleDateTime::GetCurrentTime();
    const CGroupItem item;
    const COleDateTime after = COleDateTime::GetCurrentTime();
    EXPECT_EQ(Line(item.m_nID, item.m_strName, item.m_strDescription, item.m_strCreatorName, item.m_nItemIndex,
                   item.m_nDomainID, item.m_nStyle),
              R"(0 "" "" "" 10000 0 0)");
    EXPECT_TRUE(before <= item.m_dtCreate && item.m_dtCreate <= after);
}

TEST(ViewItem, BeginsWithItsDefaults)
{
    const COleDateTime before = COleDateTime::GetCurrentTime();
    const CViewItem item;
    const COleDateTime after = COleDateTime::GetCurrentTime();
    EXPECT_EQ(Line(item.m_nID, item.m_strName, item.m_nType, item.m_strDescription, item.m_nOwnerID, item.m_nItemIndex,
                   item.m_strCreatorName, item.m_nDomainID, item.m_nStyle, item.m_bIsPublic),
              R"(0 "" 1 "" 0 10000 "" 0 0 false)");
    EXPECT_TRUE(before <= item.m_dtCreate && item.m_dtCreate <= after);
}

TEST(GroupItem, AndTheViewAreRecordsOfTheFramework)
{
    static_assert(std::is_base_of_v<CObject, CGroupItem> && std::is_base_of_v<CObject, CViewItem>);
    CObList list;
    list.AddTail(std::make_unique<CGroupItem>().release());
    list.AddTail(std::make_unique<CViewItem>().release());
    CQVBaseFun::DetachHumanList(list);
    EXPECT_TRUE(list.IsEmpty());
}

class GroupItemOnAScript : public behaviour::Script {
protected:
    GroupItemOnAScript() : Script("directory/GroupItem.cpp")
    {
        m_item.m_nID = 41;
        m_item.m_strName = "n";
        m_item.m_strDescription = "d";
        m_item.m_strCreatorName = "c";
        m_item.m_dtCreate = COleDateTime(1987, 6, 5, 4, 3, 2);
        m_item.m_nItemIndex = 71;
        m_item.m_nDomainID = 72;
        m_item.m_nStyle = 73;
    }

    [[nodiscard]] std::string Item() const
    {
        return Line(m_item.m_nID, m_item.m_strName, m_item.m_strDescription, m_item.m_strCreatorName,
                    m_item.m_dtCreate.Format("%Y-%m-%d %H:%M:%S"), m_item.m_nItemIndex, m_item.m_nDomainID,
                    m_item.m_nStyle);
    }

    static std::vector<RecordCase> Methods()
    {
        return {
            {"SaveData", Calling(&CGroupItem::SaveData), "0", true, false},
            {"LoadInfoByID", Calling(&CGroupItem::LoadInfoByID), "false", true, false},
            {"Update", Calling(&CGroupItem::Update), "false", true, true},
        };
    }

    CGroupItem m_item;
    const std::string m_before = R"(41 "n" "d" "c" "1987-06-05 04:03:02" 71 72 73)";
};

TEST_F(GroupItemOnAScript, ErrorsKeepTheirTextAndAreNotNotified)
{
    ExpectRefusedRecordsKeepOrDropTheText(Methods());
    ExpectClosedRecordsFail(Methods());
}

TEST_F(GroupItemOnAScript, SavingAndUpdatingSucceedAndLeaveTheRecord)
{
    Connect();
    EXPECT_EQ(m_item.SaveData(*m_conn), 1);
    EXPECT_TRUE(m_item.Update(*m_conn));
    EXPECT_EQ(Item(), m_before);
    ExpectNoError();
}

TEST_F(GroupItemOnAScript, LoadingReadsEachColumnIntoItsMember)
{
    Connect();
    m_database->Answer(Rows({{"N", "D", "C", "2001-02-03", "1", "2", "3"}, {"other", "", "", "", "", "", ""}}));
    EXPECT_TRUE(m_item.LoadInfoByID(*m_conn));
    EXPECT_EQ(Item(), R"(41 "N" "D" "C" "2001-02-03 00:00:00" 1 2 3)");
    ExpectNoError();
}

TEST_F(GroupItemOnAScript, LoadingWithoutARowGivesFalseAndLeavesTheRecord)
{
    Connect();
    EXPECT_FALSE(m_item.LoadInfoByID(*m_conn));
    EXPECT_EQ(Item(), m_before);
    ExpectNoError();
}

TEST_F(GroupItemOnAScript, LoadingNullsOnlyGivesTrueAndLeavesTheRecord)
{
    Connect();
    m_database->Answer(Rows({std::vector<scripted::Value>(7)}));
    EXPECT_TRUE(m_item.LoadInfoByID(*m_conn));
    EXPECT_EQ(Item(), m_before);
    ExpectNoError();
}

TEST_F(GroupItemOnAScript, LoadingThatBreaksOffGivesFalseAndKeepsWhatIsReadSoFar)
{
    Connect();
    m_database->Answer(Rows({{"N", "D"}}));
    EXPECT_FALSE(m_item.LoadInfoByID(*m_conn));
    EXPECT_EQ(Item(), R"(41 "N" "D" "c" "1987-06-05 04:03:02" 71 72 73)");
    TakeText("column 3 is out of range: the result has 2", OnlyStatement());
    ExpectNoError();
}

class ViewItemOnAScript : public behaviour::Script {
protected:
    ViewItemOnAScript() : Script("directory/ViewItem.cpp")
    {
        m_item.m_nID = 41;
        m_item.m_strName = "n";
        m_item.m_nType = 71;
        m_item.m_strDescription = "d";
        m_item.m_nOwnerID = 72;
        m_item.m_nItemIndex = 73;
        m_item.m_strCreatorName = "c";
        m_item.m_dtCreate = COleDateTime(1987, 6, 5, 4, 3, 2);
        m_item.m_nDomainID = 74;
        m_item.m_nStyle = 75;
        m_item.m_bIsPublic = true;
    }

    [[nodiscard]] std::string Item() const
    {
        return Line(m_item.m_nID, m_item.m_strName, m_item.m_nType, m_item.m_strDescription, m_item.m_nOwnerID,
                    m_item.m_nItemIndex, m_item.m_strCreatorName, m_item.m_dtCreate.Format("%Y-%m-%d %H:%M:%S"),
                    m_item.m_nDomainID, m_item.m_nStyle, m_item.m_bIsPublic);
    }

    static std::vector<RecordCase> Methods()
    {
        return {
            {"SaveData", Calling(&CViewItem::SaveData), "0", true, false},
            {"LoadInfoByID", Calling(&CViewItem::LoadInfoByID), "0", true, false},
            {"UpdateData", Calling(&CViewItem::UpdateData), "0", true, true},
        };
    }

    CViewItem m_item;
    const std::string m_before = R"(41 "n" 71 "d" 72 73 "c" "1987-06-05 04:03:02" 74 75 true)";
};

TEST_F(ViewItemOnAScript, ErrorsKeepTheirTextAndAreNotNotified)
{
    ExpectRefusedRecordsKeepOrDropTheText(Methods());
    ExpectClosedRecordsFail(Methods());
}

TEST_F(ViewItemOnAScript, SavingAndUpdatingGiveOneAndLeaveTheRecord)
{
    Connect();
    EXPECT_EQ(m_item.SaveData(*m_conn), 1);
    EXPECT_EQ(m_item.UpdateData(*m_conn), 1);
    EXPECT_EQ(Item(), m_before);
    ExpectNoError();
}

TEST_F(ViewItemOnAScript, LoadingReadsEachColumnIntoItsMember)
{
    Connect();
    m_database->Answer(Rows({{"N", "1", "D", "2", "3", "C", "2001-02-03", "4", "5", "0"}}));
    EXPECT_EQ(m_item.LoadInfoByID(*m_conn), 1);
    EXPECT_EQ(Item(), R"(41 "N" 1 "D" 2 3 "C" "2001-02-03 00:00:00" 4 5 false)");
    ExpectNoError();
}

TEST_F(ViewItemOnAScript, LoadingWithoutARowGivesZeroAndLeavesTheRecord)
{
    Connect();
    EXPECT_EQ(m_item.LoadInfoByID(*m_conn), 0);
    EXPECT_EQ(Item(), m_before);
    ExpectNoError();
}

TEST_F(ViewItemOnAScript, LoadingNullsOnlyGivesOneAndLeavesTheRecord)
{
    Connect();
    m_database->Answer(Rows({std::vector<scripted::Value>(10)}));
    EXPECT_EQ(m_item.LoadInfoByID(*m_conn), 1);
    EXPECT_EQ(Item(), m_before);
    ExpectNoError();
}

} // namespace

} // namespace group_behaviour
