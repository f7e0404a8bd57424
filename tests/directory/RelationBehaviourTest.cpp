#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "directory/HumanItem.h"
#include "directory/RelationItem.h"
#include "tests/directory/BehaviourCase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace relation_behaviour {

using behaviour::Line;
using behaviour::Numbers;
using behaviour::ReadCase;
using behaviour::Shown;
using behaviour::Texts;
using behaviour::WriteCase;
using scripted::Raise;
using scripted::Reply;
using scripted::Rows;
using testing::HasSubstr;
using testing::SizeIs;

namespace {

/// What a list of users holds, which is then freed.
std::string ShownAndFreed(CObList& users)
{
    std::string shown;
    for (POSITION position = users.GetHeadPosition(); position != nullptr;) {
        const auto& user = dynamic_cast<const CHumanItem&>(*users.GetNext(position));
        shown += "(" +
                 Line(user.m_nID, user.m_strLoginName, user.m_strName, user.m_nSex, user.m_strMobile, user.m_strEMail,
                      user.m_strDeptInfo, user.m_strJobTitle, user.m_bDisabled, user.m_nItemIndex, user.m_bIsSuper) +
                 ")";
    }
    CQVBaseFun::DetachHumanList(users);
    return shown;
}

constexpr const char* kOldUser = R"((9 "" "" 0 "" "" "" "" false 10000 false))";

using Records = bool(CAConnect&, int, CObList&);

ReadCase OfRecords(const char* name, Records* load)
{
    const auto call = [load](CAConnect& conn) {
        CObList users;
        auto old = std::make_unique<CHumanItem>();
        old->m_nID = 9;
        users.AddTail(old.release());
        const bool ran = load(conn, 5, users);
        return Shown(ran) + " " + ShownAndFreed(users);
    };
    return {
        name,
        call,
        {{"41", "l1", "n1", "3", "m1", "e1", "d1", "t1", "1"}, {"42", "l2", "n2", "4", "m2", "e2", "d2", "t2", "0"}},
        std::string("true ") + kOldUser + R"((41 "l1" "n1" 3 "m1" "e1" "d1" "t1" true 10000 false))" +
            R"((42 "l2" "n2" 4 "m2" "e2" "d2" "t2" false 10000 false))",
        std::string("true ") + kOldUser,
        std::string("true ") + kOldUser + R"((0 "" "" 0 "" "" "" "" false 10000 false))",
        std::string("false ") + kOldUser};
}

using Arrays = bool(CAConnect&, int, CUIntArray&, CStringArray&, CStringArray&);

ReadCase OfArrays(const char* name, Arrays* load)
{
    const auto call = [load](CAConnect& conn) {
        Numbers ids;
        Texts logins;
        Texts names;
        const bool ran = load(conn, 5, ids, logins, names);
        return Line(ran, ids, logins, names);
    };
    return {name,
            call,
            {{"41", "l1", "n1"}, {"42", "l2", "n2"}},
            "true [9,41,42] [old,l1,l2] [old,n1,n2]",
            "true [9] [old] [old]",
            "true [9,0] [old,] [old,]",
            "false [9] [old] [old]"};
}

bool LoadUserNotInView4(CAConnect& conn, int id, CUIntArray& ids, CStringArray& logins, CStringArray& names)
{
    return CQVBaseFun::LoadUserNotIn(conn, id, 4, ids, logins, names);
}

std::vector<ReadCase> Lists()
{
    return {
        OfRecords("LoadGroupUser into records", &CQVBaseFun::LoadGroupUser),
        OfRecords("LoadViewUser into records", &CQVBaseFun::LoadViewUser),
        OfArrays("LoadGroupUser into arrays", &CQVBaseFun::LoadGroupUser),
        OfArrays("LoadViewUser into arrays", &CQVBaseFun::LoadViewUser),
        OfArrays("LoadUserNotInGroup", &CQVBaseFun::LoadUserNotInGroup),
        OfArrays("LoadUserNotInView", &CQVBaseFun::LoadUserNotInView),
        OfArrays("LoadUserNotIn", &LoadUserNotInView4),
        {"LoadSubMember",
         [](CAConnect& conn) {
             Numbers ids;
             Numbers types;
             const bool ran = CQVBaseFun::LoadSubMember(conn, 5, 4, ids, types);
             return Line(ran, ids, types);
         },
         {{"41", "1"}, {"42", "2"}},
         "true [9,41,42] [9,1,2]",
         "true [9] [9]",
         "true [9,0] [9,0]",
         "false [9] [9]"},
    };
}

std::vector<ReadCase> LookUps()
{
    return {
        {"ExitMemberRelation",
         [](CAConnect& conn) {
             bool exists = true;
             const bool ran = CQVBaseFun::ExitMemberRelation(conn, 5, 2, 41, 1, exists);
             return Line(ran, exists);
         },
         {{"5"}},
         "true true",
         "true false",
         "true true",
         "false false"},
    };
}

std::vector<WriteCase> Writes()
{
    return {
        {"DeleteRelation", [](CAConnect& conn) { return CQVBaseFun::DeleteRelation(conn, 5, 2, 41, 1); }},
        {"DelRelation", [](CAConnect& conn) { return CQVBaseFun::DelRelation(conn, 5, 2, 41, 1); }},
        {"DelRelationByQvItem", [](CAConnect& conn) { return CQVBaseFun::DelRelationByQvItem(conn, 5, 2); }},
    };
}

// It gives the engine's count, so what is true of the others is not of it.
std::vector<WriteCase> CountedWrites()
{
    return {
        {"DelRelationByDQVItem", [](CAConnect& conn) { return CQVBaseFun::DelRelationByDQVItem(conn, 41, 1) != 0; }}};
}

class RelationBehaviour : public behaviour::Script {
protected:
    RelationBehaviour() : Script("directory/QVBaseFun_Relations.cpp") {}

    // The answer to the members of view 501: user 11, group 21, user 13.
    static Reply Members() { return Rows({{"11", "1"}, {"21", "2"}, {"13", "1"}}); }

    bool StampView() { return CQVBaseFun::UpdateRelationViewID(*m_conn, 501, 4, 703); }

    void ExpectStamped(const std::vector<int>& users) const
    {
        ASSERT_THAT(m_database->executions, SizeIs(users.size()));
        for (std::size_t i = 0; i < users.size(); ++i) {
            EXPECT_THAT(m_database->executions[i], HasSubstr(" Col_DQvItemID = " + std::to_string(users[i]) + " "));
        }
    }
};

TEST_F(RelationBehaviour, ReadsGiveWhatTheRowsHoldOrTheirPresets)
{
    ExpectAnswersAreRead(Lists());
    ExpectAnswersAreRead(LookUps());
}

TEST_F(RelationBehaviour, LookUpsReadTheFirstRowOnly) { ExpectOnlyTheFirstRowIsRead(LookUps()); }

TEST_F(RelationBehaviour, ReadsOfAClosedConnectionGiveFalseAndSayNothing)
{
    ExpectClosedReadsSayNothing(Lists());
    ExpectClosedReadsSayNothing(LookUps());
}

TEST_F(RelationBehaviour, WhatTheEngineRefusesIsReportedOnceWithALineOfItsOwn)
{
    ExpectRefusedReadsAreReported(Lists());
    ExpectRefusedReadsAreReported(LookUps());
    ExpectRefusedWritesAreReported(Writes());
    ExpectRefusedWritesAreReported(CountedWrites());
}

TEST_F(RelationBehaviour, AListThatBreaksOffKeepsTheRowsReadSoFar) { ExpectBrokenListsKeepTheirRows(Lists()); }

TEST_F(RelationBehaviour, WritesGiveTrueWhateverTheEngineCounts) { ExpectWritesGiveTrueWhateverIsCounted(Writes()); }

TEST_F(RelationBehaviour, WritesOnAClosedConnectionAreReportedAsErrors)
{
    ExpectClosedWritesAreReported(Writes());
    ExpectClosedWritesAreReported(CountedWrites());
}

TEST_F(RelationBehaviour, DeletingByTheDependentGivesTheEnginesCount)
{
    for (const int count : {0, 1, 3}) {
        Connect();
        m_database->Answer(Rows(std::vector<std::vector<scripted::Value>>(static_cast<std::size_t>(count))));
        EXPECT_EQ(CQVBaseFun::DelRelationByDQVItem(*m_conn, 41, 1), count);
        ExpectNoError();
    }
}

TEST_F(RelationBehaviour, RowsOfARecordListReadNullsAsTheRecordsDefaults)
{
    Connect();
    m_database->Answer(Rows({{"41", {}, "n1", {}, "m1", {}, "d1", {}, "1"}}));
    CObList users;
    EXPECT_TRUE(CQVBaseFun::LoadGroupUser(*m_conn, 5, users));
    EXPECT_EQ(ShownAndFreed(users), R"((41 "" "n1" 0 "m1" "" "d1" "" true 10000 false))");
}

// ---- The walk over a tree ----------------------------------------------------------------------------------------

TEST_F(RelationBehaviour, TheWalkGoesDownAtAGroupBeforeItGoesOn)
{
    Connect();
    m_database->Answer(Members());
    m_database->Answer(Rows({}));
    m_database->Answer(Rows({{"22", "2"}, {"12", "1"}}));
    m_database->Answer(Rows({{"14", "1"}}));
    EXPECT_TRUE(StampView());
    EXPECT_THAT(m_database->queries, SizeIs(3));
    ExpectStamped({11, 14, 12, 13});
    ExpectNoError();
}

TEST_F(RelationBehaviour, TheWalkSkipsRolesViewsAndUnknownThings)
{
    Connect();
    m_database->Answer(Rows({{"31", "3"}, {"41", "4"}, {"51", "0"}, {"61", "5"}}));
    EXPECT_TRUE(StampView());
    EXPECT_THAT(m_database->queries, SizeIs(1));
    ExpectStamped({});
}

TEST_F(RelationBehaviour, TheWalkStopsAtAStampThatIsRefused)
{
    Connect();
    m_database->Answer(Members());
    m_database->Answer(Raise("refused"));
    EXPECT_FALSE(StampView());
    EXPECT_THAT(m_database->queries, SizeIs(1));
    ExpectStamped({11});
    TakeError("refused [Script 1]", m_database->executions.back());
}

TEST_F(RelationBehaviour, TheWalkStopsAtAStampThatIsRefusedBelow)
{
    Connect();
    m_database->Answer(Members());
    m_database->Answer(Rows({}));
    m_database->Answer(Rows({{"12", "1"}, {"14", "1"}}));
    m_database->Answer(Raise("refused"));
    EXPECT_FALSE(StampView());
    ExpectStamped({11, 12});
    TakeError("refused [Script 1]", m_database->executions.back());
}

TEST_F(RelationBehaviour, TheWalkTakesMembersThatCannotBeReadForNoneAndGoesOn)
{
    Connect();
    m_database->Answer(Members());
    m_database->Answer(Rows({}));
    m_database->Answer(Raise("refused"));
    EXPECT_TRUE(StampView());
    ExpectStamped({11, 13});
    TakeError("refused [Script 1]", m_database->queries.at(1));
}

TEST_F(RelationBehaviour, TheWalkStampsTheMembersReadBeforeTheReadBrokeOff)
{
    Connect();
    Reply reply = Rows({{"11", "1"}, {"12", "1"}, {"13", "1"}});
    reply.raiseAtRow = 2;
    m_database->Answer(reply);
    EXPECT_TRUE(StampView());
    ExpectStamped({11, 12});
    TakeError("row refused [Script 2]", m_database->queries.at(0));
}

TEST_F(RelationBehaviour, TheWalkOnAClosedConnectionFindsNoMembersAndGivesTrue)
{
    Connect();
    m_database->GoAway();
    EXPECT_TRUE(StampView());
    ExpectNothingSent();
    ExpectNoError();
}

// ---- The record --------------------------------------------------------------------------------------------------

TEST(RelationItem, BeginsWithItsDefaults)
{
    const CRelationItem item;
    EXPECT_EQ(Line(item.m_nQvItemID, item.m_nQvItemType, item.m_nDQvItemID, item.m_nDQvItemType, item.m_nRelType,
                   item.m_nRef, item.m_nViewID),
              "0 0 0 0 1 0 0");
}

TEST(RelationItem, IsARecordOfTheFramework)
{
    static_assert(std::is_base_of_v<CObject, CRelationItem>);
    const std::unique_ptr<CObject> record = std::make_unique<CRelationItem>();
    EXPECT_NE(dynamic_cast<CRelationItem*>(record.get()), nullptr);
}

class RelationItemOnAScript : public behaviour::Script {
protected:
    RelationItemOnAScript() : Script("directory/RelationItem.cpp") {}

    static std::vector<behaviour::RecordCase> Methods()
    {
        return {
            {"SaveData", [](CAConnect& conn) { return Line(CRelationItem().SaveData(conn)); }, "0", true, false},
            {"DelData", [](CAConnect& conn) { return Line(CRelationItem().DelData(conn)); }, "0", true, false},
        };
    }
};

TEST_F(RelationItemOnAScript, ErrorsKeepTheirTextAndAreNotNotified)
{
    ExpectRefusedRecordsKeepOrDropTheText(Methods());
    ExpectClosedRecordsFail(Methods());
}

TEST_F(RelationItemOnAScript, SavingAndDeletingGiveOneWhateverIsCounted)
{
    for (const auto& rows : {Rows({}), Rows({{"1"}, {"2"}})}) {
        Connect();
        m_database->Answer(rows);
        m_database->Answer(rows);
        CRelationItem item;
        EXPECT_EQ(item.SaveData(*m_conn), 1);
        EXPECT_EQ(item.DelData(*m_conn), 1);
        ExpectNoError();
    }
}

} // namespace

} // namespace relation_behaviour
