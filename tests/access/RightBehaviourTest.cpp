#include "access/AceItem.h"
#include "access/TabBIOAceItem.h"
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "tests/directory/BehaviourCase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <type_traits>
#include <vector>

namespace right_behaviour {

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

// ---- Item rights -------------------------------------------------------------------------------------------------

std::vector<ReadCase> LookUps()
{
    return {
        {"ExistItemAce",
         [](CAConnect& conn) {
             bool exists = true;
             const bool ran = CQVBaseFun::ExistItemAce(conn, 5, 3, "G", "N", exists);
             return Line(ran, exists);
         },
         {{"5"}, {"5"}},
         "true true",
         "true false",
         "true true",
         "false false"},
        {"LoadItemAceInfo of one right",
         [](CAConnect& conn) {
             int power = 77;
             const bool ran = CQVBaseFun::LoadItemAceInfo(conn, 5, 3, "G", "N", power);
             return Line(ran, power);
         },
         {{"-4"}, {"8"}},
         "true -4",
         "true 77",
         "true 77",
         "false 77"},
        {"ExistBIIAceInfo",
         [](CAConnect& conn) {
             bool exists = true;
             const bool ran = CQVBaseFun::ExistBIIAceInfo(conn, 5, 3, 6, 4, "G", "N", exists);
             return Line(ran, exists);
         },
         {{"0"}},
         "true true",
         "true false",
         "true true",
         "false false"},
        {"GetBIIAceInfo",
         [](CAConnect& conn) {
             int power = 77;
             const bool ran = CQVBaseFun::GetBIIAceInfo(conn, 5, 3, 6, 4, "G", "N", power);
             return Line(ran, power);
         },
         {{"-4"}, {"8"}},
         "true -4",
         "true 0",
         "true 0",
         "false 0"},
    };
}

std::vector<ReadCase> Lists()
{
    return {
        {"LoadItemAceInfo of a genre",
         [](CAConnect& conn) {
             Texts names;
             Numbers powers;
             const bool ran = CQVBaseFun::LoadItemAceInfo(conn, 5, 3, "G", names, powers);
             return Line(ran, names, powers);
         },
         {{"n1", "41"}, {"n2", "-1"}},
         "true [old,n1,n2] [9,41,4294967295]",
         "true [old] [9]",
         "true [old,] [9,0]",
         "false [old] [9]"},
        {"LoadBIIAceInfo",
         [](CAConnect& conn) {
             Numbers ids;
             Numbers types;
             const bool ran = CQVBaseFun::LoadBIIAceInfo(conn, 6, 4, "N", "G", ids, types);
             return Line(ran, ids, types);
         },
         {{"41", "3"}, {"42", "2"}},
         "true [9,41,42] [9,3,2]",
         "true [9] [9]",
         "true [9,0] [9,0]",
         "false [9] [9]"},
    };
}

std::vector<WriteCase> Writes()
{
    return {
        {"InsertItemAce", [](CAConnect& conn) { return CQVBaseFun::InsertItemAce(conn, 5, 3, "G", "N", 1, 2); }},
        {"UpdateItemAce", [](CAConnect& conn) { return CQVBaseFun::UpdateItemAce(conn, 5, 3, "G", "N", 1); }},
        {"DeleteItemAce of one right", [](CAConnect& conn) { return CQVBaseFun::DeleteItemAce(conn, 5, 3, "G", "N"); }},
        {"DeleteItemAce of all rights", [](CAConnect& conn) { return CQVBaseFun::DeleteItemAce(conn, 5, 3); }},
        {"InsertBIIAceInfo",
         [](CAConnect& conn) { return CQVBaseFun::InsertBIIAceInfo(conn, 5, 3, 6, 4, "G", "N", 1, 2); }},
        {"UpdateBIIAceInfo",
         [](CAConnect& conn) { return CQVBaseFun::UpdateBIIAceInfo(conn, 5, 3, 6, 4, "G", "N", 1, 2); }},
        {"DeleteBIIAceInfo of one holder",
         [](CAConnect& conn) { return CQVBaseFun::DeleteBIIAceInfo(conn, 5, 3, 6, 4, "G", "N"); }},
        {"DeleteBIIAceInfo of all holders",
         [](CAConnect& conn) { return CQVBaseFun::DeleteBIIAceInfo(conn, 6, 4, "G", "N"); }},
    };
}

class ItemRightBehaviour : public behaviour::Script {
protected:
    ItemRightBehaviour() : Script("access/QVBaseFun_ItemRights.cpp") {}
};

TEST_F(ItemRightBehaviour, ReadsGiveWhatTheRowsHoldOrTheirPresets)
{
    ExpectAnswersAreRead(LookUps());
    ExpectAnswersAreRead(Lists());
}

TEST_F(ItemRightBehaviour, LookUpsReadTheFirstRowOnly) { ExpectOnlyTheFirstRowIsRead(LookUps()); }

TEST_F(ItemRightBehaviour, ReadsOfAClosedConnectionGiveFalseAndSayNothing)
{
    ExpectClosedReadsSayNothing(LookUps());
    ExpectClosedReadsSayNothing(Lists());
}

TEST_F(ItemRightBehaviour, WhatTheEngineRefusesIsReportedOnceWithALineOfItsOwn)
{
    ExpectRefusedReadsAreReported(LookUps());
    ExpectRefusedReadsAreReported(Lists());
    ExpectRefusedWritesAreReported(Writes());
}

TEST_F(ItemRightBehaviour, AListThatBreaksOffKeepsTheRowsReadSoFar) { ExpectBrokenListsKeepTheirRows(Lists()); }

TEST_F(ItemRightBehaviour, WritesGiveTrueWhateverTheEngineCounts) { ExpectWritesGiveTrueWhateverIsCounted(Writes()); }

TEST_F(ItemRightBehaviour, WritesOnAClosedConnectionAreReportedAsErrors) { ExpectClosedWritesAreReported(Writes()); }

// ---- Object rights -----------------------------------------------------------------------------------------------

std::vector<ReadCase> ObjectLookUps()
{
    return {
        {"ExistTabBIOAceItem",
         [](CAConnect& conn) {
             int id = 77;
             const bool ran = CQVBaseFun::ExistTabBIOAceItem(conn, 1, 2, 5, 3, "N", "G", id);
             return Line(ran, id);
         },
         {{"41"}, {"42"}},
         "true 41",
         "true 0",
         "true 0",
         "false 0"},
        {"ExistTabBIOAce",
         [](CAConnect& conn) {
             bool exists = true;
             const bool ran = CQVBaseFun::ExistTabBIOAce(conn, 1, 2, "N", "unused", exists);
             return Line(ran, exists);
         },
         {{"2"}, {"0"}},
         "true true",
         "true false",
         "true false",
         "false false"},
        {"LoadACEInfo",
         [](CAConnect& conn) {
             int type = 77;
             CString name = "n";
             int power = 78;
             const bool ran = CQVBaseFun::LoadACEInfo(conn, 41, type, name, power);
             return Line(ran, type, name, power);
         },
         {{"3", "Editors", "-1"}, {"1", "Amy", "2"}},
         R"(true 3 "Editors" -1)",
         R"(true 77 "n" 78)",
         R"(true 77 "n" 78)",
         R"(false 77 "n" 78)"},
    };
}

std::vector<ReadCase> ObjectLists()
{
    return {
        {"LoadTabBIOAceInfo",
         [](CAConnect& conn) {
             Numbers ids;
             Numbers types;
             Numbers holders;
             Texts names;
             Numbers powers;
             const bool ran = CQVBaseFun::LoadTabBIOAceInfo(conn, 1, 2, "N", ids, types, holders, names, powers);
             return Line(ran, ids, types, holders, names, powers);
         },
         {{"41", "1", "51", "Amy", "-1"}, {"42", "3", "52", "Editors", "8"}},
         "true [9,41,42] [9,1,3] [9,51,52] [old,Amy,Editors] [9,4294967295,8]",
         "true [9] [9] [9] [old] [9]",
         "true [9,0] [9,0] [9,0] [old,] [9,0]",
         "false [9] [9] [9] [old] [9]"},
    };
}

std::vector<WriteCase> ObjectWrites()
{
    return {
        {"UpdateTabBIOAceInfo", [](CAConnect& conn) { return CQVBaseFun::UpdateTabBIOAceInfo(conn, 41, 1, 2); }},
        {"DeleteTabBIOAceItem", [](CAConnect& conn) { return CQVBaseFun::DeleteTabBIOAceItem(conn, 41); }},
    };
}

class ObjectRightBehaviour : public behaviour::Script {
protected:
    ObjectRightBehaviour() : Script("access/QVBaseFun_ObjectRights.cpp") {}
};

TEST_F(ObjectRightBehaviour, ReadsGiveWhatTheRowsHoldOrTheirPresets)
{
    ExpectAnswersAreRead(ObjectLookUps());
    ExpectAnswersAreRead(ObjectLists());
}

TEST_F(ObjectRightBehaviour, LookUpsReadTheFirstRowOnly) { ExpectOnlyTheFirstRowIsRead(ObjectLookUps()); }

TEST_F(ObjectRightBehaviour, ReadsOfAClosedConnectionGiveFalseAndSayNothing)
{
    ExpectClosedReadsSayNothing(ObjectLookUps());
    ExpectClosedReadsSayNothing(ObjectLists());
}

TEST_F(ObjectRightBehaviour, WhatTheEngineRefusesIsReportedOnceWithALineOfItsOwn)
{
    ExpectRefusedReadsAreReported(ObjectLookUps());
    ExpectRefusedReadsAreReported(ObjectLists());
    ExpectRefusedWritesAreReported(ObjectWrites());
}

TEST_F(ObjectRightBehaviour, AListThatBreaksOffKeepsTheRowsReadSoFar) { ExpectBrokenListsKeepTheirRows(ObjectLists()); }

TEST_F(ObjectRightBehaviour, WritesGiveTrueWhateverTheEngineCounts)
{
    ExpectWritesGiveTrueWhateverIsCounted(ObjectWrites());
}

TEST_F(ObjectRightBehaviour, WritesOnAClosedConnectionAreReportedAsErrors)
{
    ExpectClosedWritesAreReported(ObjectWrites());
}

TEST_F(ObjectRightBehaviour, ACountIsAsWideAsTheEngineKindMakesIt)
{
    for (const int kind : {0, 1, 3, 6}) {
        Connect(kind);
        m_database->Answer(Rows({{"4294967296"}})); // 2^32, of which an int sees 0
        bool exists = false;
        EXPECT_TRUE(CQVBaseFun::ExistTabBIOAce(*m_conn, 1, 2, "N", "", exists));
        EXPECT_EQ(exists, kind == 6) << kind;
    }
}

// ---- Effective rights --------------------------------------------------------------------------------------------

/// An effective right: what it makes of the powers of the user's roles.
struct RightCase {
    std::string name;
    std::function<std::string(CAConnect&)> call;
    std::vector<std::vector<scripted::Value>> rows; // of its own statement
    std::string read;                               // given these rows
    std::string empty;                              // given none
    std::string nulls;                              // given one row of NULLs
    std::string failed;                             // for any reason
};

template <class Output>
std::function<std::string(CAConnect&)> Asking(bool (*operation)(CAConnect&, int, CString, CString, Output&),
                                              Output before)
{
    return [=](CAConnect& conn) {
        Output out = before;
        const bool ran = operation(conn, 5, "G", "N", out);
        return Line(ran, out);
    };
}

std::string HaveBits(CAConnect& conn, unsigned long mask)
{
    int has = 77;
    const bool ran = CQVBaseFun::HaveBaseACE(conn, 5, "G", "N", mask, has);
    return Line(ran, has);
}

std::string LoadViews(CAConnect& conn)
{
    Numbers viewIDs;
    const bool ran = CQVBaseFun::LoadHMRoleView(conn, 5, "G", "N", viewIDs);
    return Line(ran, viewIDs);
}

std::vector<RightCase> Rights()
{
    return {
        {"GetAfficheACE",
         Asking(&CQVBaseFun::GetAfficheACE, true),
         {{"2"}, {"3"}},
         "true true",
         "true false",
         "true false",
         "false false"},
        {"HaveBaseACE",
         [](CAConnect& conn) { return HaveBits(conn, 6); },
         {{"1"}, {"4"}},
         "true 1",
         "true 0",
         "true 0",
         "false 0"},
        {"GetHMBaseACE",
         Asking(&CQVBaseFun::GetHMBaseACE, 77UL),
         {{"1"}, {"2"}, {"4"}},
         "true 7",
         "true 0",
         "true 0",
         "false 0"},
        {"GetACEGuestUser",
         Asking(&CQVBaseFun::GetACEGuestUser, true),
         {{"12"}, {"0"}},
         "true true",
         "true false",
         "true false",
         "false false"},
        {"GetAttachmentSizeACE",
         Asking(&CQVBaseFun::GetAttachmentSizeACE, 77),
         {{"2", "50", "10"}},
         "true 50",
         "true -1",
         "true -1",
         "false -1"},
        {"GetMultiSendCountACE",
         Asking(&CQVBaseFun::GetMultiSendCountACE, 77),
         {{"2", "50", "10"}},
         "true 50",
         "true -1",
         "true -1",
         "false -1"},
        {"GetRateLimitACE",
         Asking(&CQVBaseFun::GetRateLimitACE, 77),
         {{"2", "50", "10"}},
         "true 50",
         "true -1",
         "true -1",
         "false -1"},
        {"LoadHMRoleView", LoadViews, {{"41"}, {"42"}}, "true [9,41,42]", "true [9]", "true [9,0]", "false [9]"},
    };
}

class EffectiveRightBehaviour : public behaviour::Script {
protected:
    EffectiveRightBehaviour() : Script("access/QVBaseFun_EffectiveRights.cpp") {}

    // A connection whose next answers are one linked role, the default role, and these powers.
    void ConnectWithRoles(Reply powers, int dbType = 3)
    {
        Connect(dbType);
        m_database->Answer(Rows({{"8", "n", "d"}}));
        m_database->Answer(Rows({{"7"}}));
        m_database->Answer(std::move(powers));
    }

    // Forgets the error of a statement on roles.
    void TakeRolesError()
    {
        EXPECT_THAT(ErrorRecorder::Text(), testing::StartsWith("directory/QVBaseFun_Roles.cpp("));
        EXPECT_THAT(m_watch.messages, SizeIs(1));
        m_watch.messages.clear();
        CQVBaseFun::m_strLastError = ErrorRecorder::kOlder;
    }

    std::string Limit(const std::string& count, const std::string& largest, const std::string& smallest, int dbType = 3)
    {
        ConnectWithRoles(Rows({{count, largest, smallest}}), dbType);
        return Asking(&CQVBaseFun::GetRateLimitACE, 77)(*m_conn);
    }
};

TEST_F(EffectiveRightBehaviour, ReadsGiveWhatTheRolesHoldOrTheirPresets)
{
    for (const RightCase& right : Rights()) {
        ConnectWithRoles(Rows(right.rows));
        EXPECT_EQ(right.call(*m_conn), right.read) << right.name;
        ConnectWithRoles(Rows({}));
        EXPECT_EQ(right.call(*m_conn), right.empty) << right.name << " without a row";
        ConnectWithRoles(Rows({std::vector<scripted::Value>(right.rows.front().size())}));
        EXPECT_EQ(right.call(*m_conn), right.nulls) << right.name << " of NULLs";
        ExpectNoError();
    }
}

TEST_F(EffectiveRightBehaviour, WithoutAnyRoleNothingIsAskedAndThePresetStands)
{
    for (const RightCase& right : Rights()) {
        Connect();
        m_database->Answer(Rows({}));
        m_database->Answer(Raise("no default role can be read"));
        EXPECT_EQ(right.call(*m_conn), right.failed) << right.name;
        EXPECT_THAT(m_database->queries, SizeIs(2)) << right.name;
        TakeRolesError();
    }
}

TEST_F(EffectiveRightBehaviour, RolesThatCannotBeReadAreReportedAndThePresetStands)
{
    for (const RightCase& right : Rights()) {
        Connect();
        m_database->Answer(Raise("no such table"));
        EXPECT_EQ(right.call(*m_conn), right.failed) << right.name;
        EXPECT_THAT(m_database->queries, SizeIs(1)) << right.name;
        TakeRolesError();
    }
}

TEST_F(EffectiveRightBehaviour, PowersThatCannotBeReadAreReportedOnceWithALineOfTheirOwn)
{
    std::vector<int> lines;
    for (const RightCase& right : Rights()) {
        SCOPED_TRACE(right.name);
        ConnectWithRoles(Raise("no such table"));
        EXPECT_EQ(right.call(*m_conn), right.failed);
        ASSERT_THAT(m_database->queries, SizeIs(3));
        lines.push_back(TakeError("no such table [Script 1]", m_database->queries[2]));
        EXPECT_THAT(std::vector<int>(lines.begin(), lines.end() - 1), testing::Each(testing::Ne(lines.back())));
    }
}

TEST_F(EffectiveRightBehaviour, AClosedConnectionGivesThePresetsAndSaysNothing)
{
    for (const RightCase& right : Rights()) {
        CAConnect never;
        m_watch.ListenTo(never);
        EXPECT_EQ(right.call(never), right.failed) << right.name;
        Connect();
        m_database->GoAway();
        EXPECT_EQ(right.call(*m_conn), right.failed) << right.name;
        ExpectNothingSent();
        ExpectNoError();
    }
}

TEST_F(EffectiveRightBehaviour, TheFilterHasOneTermPerRoleAndIsEmptyWithoutOne)
{
    const auto filter = [this] {
        CString text = "before";
        const bool ran = CQVBaseFun::GetHMRoleQueryParam(*m_conn, 5, text);
        return Line(ran, text);
    };
    ConnectWithRoles(Rows({}));
    EXPECT_EQ(filter(),
              R"x(true "( Col_QvItemID = 8 AND Col_QvItemType = 3 ) OR ( Col_QvItemID = 7 AND Col_QvItemType = 3 )")x");
    ExpectNoError();

    Connect();
    m_database->Answer(Rows({{"7", "n", "d"}}));
    m_database->Answer(Raise("refused"));
    EXPECT_EQ(filter(), R"x(true "( Col_QvItemID = 7 AND Col_QvItemType = 3 )")x");
    TakeRolesError();

    Connect();
    m_database->Answer(Rows({}));
    m_database->Answer(Raise("refused"));
    EXPECT_EQ(filter(), R"(true "")");
    TakeRolesError();

    Connect();
    m_database->Answer(Raise("refused"));
    EXPECT_EQ(filter(), R"(false "")");
    TakeRolesError();
}

TEST_F(EffectiveRightBehaviour, FlagsAndMasksStopAtTheFirstRowThatDecides)
{
    Reply powers = Rows({{"9"}, {"0"}});
    powers.raiseAtRow = 1;
    ConnectWithRoles(powers);
    EXPECT_EQ(Asking(&CQVBaseFun::GetAfficheACE, false)(*m_conn), "true true");
    ConnectWithRoles(powers);
    EXPECT_EQ(HaveBits(*m_conn, 8), "true 1");
    ConnectWithRoles(powers);
    EXPECT_EQ(Asking(&CQVBaseFun::GetACEGuestUser, false)(*m_conn), "true true");
    ExpectNoError();
}

TEST_F(EffectiveRightBehaviour, GuestsGoByTheFirstRowWhateverTheOthersSay)
{
    ConnectWithRoles(Rows({{"7"}, {"8"}}));
    EXPECT_EQ(Asking(&CQVBaseFun::GetACEGuestUser, true)(*m_conn), "true false");
}

TEST_F(EffectiveRightBehaviour, APowerOfMinusOneHasAll32BitsAndNoMore)
{
    ConnectWithRoles(Rows({{"-1"}}));
    EXPECT_EQ(Asking(&CQVBaseFun::GetHMBaseACE, 0UL)(*m_conn), "true 4294967295");
    for (const unsigned long mask : {1UL, 0x80000000UL, 0xFFFFFFFFUL}) {
        ConnectWithRoles(Rows({{"-1"}}));
        EXPECT_EQ(HaveBits(*m_conn, mask), "true 1") << mask;
    }
    for (const unsigned long mask : {0UL, ~0xFFFFFFFFUL}) {
        ConnectWithRoles(Rows({{"-1"}}));
        EXPECT_EQ(HaveBits(*m_conn, mask), "true 0") << mask;
    }
}

TEST_F(EffectiveRightBehaviour, ALimitIsTheLargestUnlessNoneOrMinusOneIsThere)
{
    EXPECT_EQ(Limit("2", "50", "10"), "true 50");
    EXPECT_EQ(Limit("2", "10", "-1"), "true -1");
    EXPECT_EQ(Limit("1", "0", "0"), "true 0");
    EXPECT_EQ(Limit("0", "50", "10"), "true -1");
    EXPECT_EQ(Limit("2", "10", "-2"), "true 10"); // less than -1 is a number like any other
    EXPECT_EQ(Limit("1", "-2", "-2"), "true -2");
}

TEST_F(EffectiveRightBehaviour, ALimitsRowsAreCountedAsWideAsTheEngineKindMakesThem)
{
    for (const int kind : {0, 1, 3}) {
        EXPECT_EQ(Limit("4294967296", "50", "10", kind), "true -1") << kind; // 2^32, of which an int sees 0
    }
    EXPECT_EQ(Limit("4294967296", "50", "10", 6), "true 50");
}

TEST_F(EffectiveRightBehaviour, WhatWasReadBeforeAFailureStands)
{
    Reply powers = Rows({{"1"}, {"2"}, {"4"}});
    powers.raiseAtRow = 2;
    ConnectWithRoles(powers);
    EXPECT_EQ(Asking(&CQVBaseFun::GetHMBaseACE, 0UL)(*m_conn), "false 3");
    TakeError("row refused [Script 2]", m_database->queries.at(2));
    powers.raiseAtRow = 1;
    ConnectWithRoles(powers);
    EXPECT_EQ(LoadViews(*m_conn), "false [9,1]");
    TakeError("row refused [Script 2]", m_database->queries.at(2));
}

// ---- The records -------------------------------------------------------------------------------------------------

class AceItemOnAScript : public behaviour::Script {
protected:
    AceItemOnAScript() : Script("access/AceItem.cpp") {}
};

TEST_F(AceItemOnAScript, BeginsEmpty)
{
    static_assert(std::is_base_of_v<CObject, CAceItem>);
    const CAceItem item;
    EXPECT_EQ(Line(item.m_nQvItemID, item.m_nQvItemType, item.m_strFunGenre, item.m_strFunName, item.m_nPower,
                   item.m_nUnPower),
              R"(0 0 "" "" 0 0)");
}

TEST_F(AceItemOnAScript, SaysWhetherItWasTakenAndDropsAnErrorsText)
{
    Connect();
    EXPECT_TRUE(CAceItem().SaveData(*m_conn));
    const std::vector<RecordCase> methods = {
        {"SaveData", [](CAConnect& conn) { return Line(CAceItem().SaveData(conn)); }, "false", false, true}};
    ExpectRefusedRecordsKeepOrDropTheText(methods);
    ExpectClosedRecordsFail(methods);
}

class ObjectRightOnAScript : public behaviour::Script {
protected:
    ObjectRightOnAScript() : Script("access/TabBIOAceItem.cpp") {}
};

TEST_F(ObjectRightOnAScript, BeginsEmptyAndNow)
{
    static_assert(std::is_base_of_v<CObject, CTabBIOAceItem>);
    const COleDateTime before = COleDateTime::GetCurrentTime();
    const CTabBIOAceItem item;
    const COleDateTime after = COleDateTime::GetCurrentTime();
    EXPECT_EQ(Line(item.m_nID, item.m_nQvItemID, item.m_nQvItemType, item.m_nClassID, item.m_nObjID, item.m_strFunName,
                   item.m_strFunGenre, item.m_nPower, item.m_nUnPower, item.m_strQvItemName, item.m_nCreatorID,
                   item.m_strCreatorName),
              R"(0 0 0 0 0 "" "" 0 0 "" 0 "")");
    EXPECT_TRUE(before <= item.m_dtCreate && item.m_dtCreate <= after);
}

TEST_F(ObjectRightOnAScript, KeepsTheQuotesThatSavingDoubledInItsNamesAlone)
{
    for (const int kind : {0, 1, 3, 6}) {
        CTabBIOAceItem item;
        item.m_strQvItemName = R"(O'Neil\)";
        item.m_strCreatorName = "d'Arc";
        item.m_strFunName = "f'n";
        item.m_strFunGenre = "f'g";
        Connect(kind);
        EXPECT_TRUE(item.SaveData(*m_conn));
        EXPECT_EQ(Line(item.m_strQvItemName, item.m_strCreatorName, item.m_strFunName, item.m_strFunGenre),
                  R"("O''Neil\" "d''Arc" "f'n" "f'g")");
    }
}

TEST_F(ObjectRightOnAScript, SaysWhetherItWasTakenAndDropsAnErrorsText)
{
    Connect();
    EXPECT_TRUE(CTabBIOAceItem().SaveData(*m_conn));
    const std::vector<RecordCase> methods = {
        {"SaveData", [](CAConnect& conn) { return Line(CTabBIOAceItem().SaveData(conn)); }, "false", false, true}};
    ExpectRefusedRecordsKeepOrDropTheText(methods);
    ExpectClosedRecordsFail(methods);
}

} // namespace

} // namespace right_behaviour
