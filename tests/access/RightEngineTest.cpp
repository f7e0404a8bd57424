#include "access/AceItem.h"
#include "access/TabBIOAceItem.h"
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "tests/directory/Engines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using engines::Copied;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

// Every operation on rights, on every engine.

namespace {

// ---- Item rights -------------------------------------------------------------------------------------------------

class ItemRightsOnAnEngine : public engines::OnAnEngine {
protected:
    void Grant(int itemID, const char* genre, const char* name, int power, int itemType = 3)
    {
        EXPECT_TRUE(CQVBaseFun::InsertItemAce(m_conn, itemID, itemType, genre, name, power, 7));
    }

    bool Exists(int itemID, int itemType, const char* genre, const char* name)
    {
        bool exists = false;
        EXPECT_TRUE(CQVBaseFun::ExistItemAce(m_conn, itemID, itemType, genre, name, exists));
        return exists;
    }

    std::vector<std::string> All()
    {
        return Rows("SELECT Col_QvItemID, Col_QvItemType, Col_FunGenre, Col_FunName, Col_Power, Col_UnPower FROM "
                    "qv_ItemAce");
    }
};

TEST_P(ItemRightsOnAnEngine, ARightIsGivenFoundChangedAndTaken)
{
    const CString genre = Given(R"(g\ é)");
    Grant(5, genre, "n", -1);
    EXPECT_THAT(All(), ElementsAre(R"(5|3|g\ é|n|-1|7)"));
    EXPECT_TRUE(Exists(5, 3, genre, "n"));
    EXPECT_FALSE(Exists(5, 2, genre, "n"));
    EXPECT_FALSE(Exists(5, 3, "n", genre));
    int power = 77;
    EXPECT_TRUE(CQVBaseFun::LoadItemAceInfo(m_conn, 5, 3, genre, "n", power));
    EXPECT_EQ(power, -1);
    EXPECT_TRUE(CQVBaseFun::UpdateItemAce(m_conn, 5, 3, genre, "n", 4));
    EXPECT_THAT(All(), ElementsAre(R"(5|3|g\ é|n|4|7)"));
    EXPECT_TRUE(CQVBaseFun::DeleteItemAce(m_conn, 5, 3, genre, "n"));
    EXPECT_THAT(All(), IsEmpty());
    ExpectNoError();
}

TEST_P(ItemRightsOnAnEngine, EqualRightsAreKeptSideBySide)
{
    Grant(5, "g", "n", 1);
    Grant(5, "g", "n", 1);
    EXPECT_THAT(All(), SizeIs(2));
    EXPECT_TRUE(CQVBaseFun::UpdateItemAce(m_conn, 5, 3, "g", "n", 2));
    EXPECT_THAT(All(), ElementsAre("5|3|g|n|2|7", "5|3|g|n|2|7"));
}

TEST_P(ItemRightsOnAnEngine, WhatIsNotThereIsChangedAndTakenToNoEffect)
{
    int power = 77;
    EXPECT_TRUE(CQVBaseFun::UpdateItemAce(m_conn, 5, 3, "g", "n", 2));
    EXPECT_TRUE(CQVBaseFun::DeleteItemAce(m_conn, 5, 3, "g", "n"));
    EXPECT_TRUE(CQVBaseFun::DeleteItemAce(m_conn, 5, 3));
    EXPECT_TRUE(CQVBaseFun::LoadItemAceInfo(m_conn, 5, 3, "g", "n", power));
    EXPECT_EQ(power, 77);
    EXPECT_THAT(All(), IsEmpty());
    ExpectNoError();
}

TEST_P(ItemRightsOnAnEngine, AGenreIsListedAsOftenAsItIsAskedFor)
{
    Grant(5, "g", "n1", 1);
    Grant(5, "g", "n2", -1);
    Grant(5, "h", "n3", 1);
    Grant(6, "g", "n4", 1);
    Grant(5, "g", "n5", 1, 2);
    CStringArray names;
    CUIntArray powers;
    EXPECT_TRUE(CQVBaseFun::LoadItemAceInfo(m_conn, 5, 3, "g", names, powers));
    EXPECT_THAT(Copied(names), UnorderedElementsAre("n1", "n2"));
    EXPECT_THAT(Copied(powers), UnorderedElementsAre(1U, 4294967295U));
    EXPECT_TRUE(CQVBaseFun::LoadItemAceInfo(m_conn, 5, 3, "g", names, powers));
    EXPECT_THAT(Copied(names), SizeIs(4));
    EXPECT_THAT(Copied(powers), SizeIs(4));
}

TEST_P(ItemRightsOnAnEngine, AllRightsOfAnItemGoAndNoOthers)
{
    Grant(5, "g", "n", 1);
    Grant(5, "h", "n", 1);
    Grant(5, "g", "n", 1, 2);
    Grant(6, "g", "n", 1);
    EXPECT_TRUE(CQVBaseFun::DeleteItemAce(m_conn, 5, 3));
    EXPECT_THAT(All(), UnorderedElementsAre("5|2|g|n|1|7", "6|3|g|n|1|7"));
}

TEST_P(ItemRightsOnAnEngine, TheRecordsStatementIsRefusedWithoutAWord)
{
    CAceItem item;
    item.m_strFunGenre = "g";
    item.m_strFunName = "n";
    EXPECT_FALSE(item.SaveData(m_conn));
    EXPECT_THAT(All(), IsEmpty());
    ExpectNoError();
}

TEST_P(ItemRightsOnAnEngine, AQuoteBreaksTheStatementAndChangesNothing)
{
    EXPECT_FALSE(CQVBaseFun::InsertItemAce(m_conn, 5, 3, "o'g", "n", 1, 0));
    EXPECT_FALSE(CQVBaseFun::InsertItemAce(m_conn, 5, 3, "g", "o'n", 1, 0));
    bool exists = true;
    EXPECT_FALSE(CQVBaseFun::ExistItemAce(m_conn, 5, 3, "o'g", "n", exists));
    EXPECT_FALSE(exists);
    EXPECT_THAT(All(), IsEmpty());
    EXPECT_THAT(m_watch.messages, SizeIs(3));
}

// ---- Item rights with respect to a second item -------------------------------------------------------------------

class RightsOnItemsOnAnEngine : public engines::OnAnEngine {
protected:
    void Grant(int itemID, int dItemID, const char* name, int power, int itemType = 3, int dItemType = 4)
    {
        EXPECT_TRUE(CQVBaseFun::InsertBIIAceInfo(m_conn, itemID, itemType, dItemID, dItemType, "g", name, power, 7));
    }

    std::vector<std::string> All()
    {
        return Rows("SELECT Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, Col_FunGenre, Col_FunName, "
                    "Col_Power, Col_UnPower FROM qv_BIIAce");
    }
};

TEST_P(RightsOnItemsOnAnEngine, ARightIsGivenFoundChangedAndTaken)
{
    Grant(5, 6, "n", 2);
    Grant(5, 60, "n", 2);
    EXPECT_THAT(All(), UnorderedElementsAre("5|3|6|4|g|n|2|7", "5|3|60|4|g|n|2|7"));
    bool exists = false;
    int power = 77;
    EXPECT_TRUE(CQVBaseFun::ExistBIIAceInfo(m_conn, 5, 3, 6, 4, "g", "n", exists));
    EXPECT_TRUE(exists);
    EXPECT_TRUE(CQVBaseFun::GetBIIAceInfo(m_conn, 5, 3, 6, 4, "g", "n", power));
    EXPECT_EQ(power, 2);
    EXPECT_TRUE(CQVBaseFun::UpdateBIIAceInfo(m_conn, 5, 3, 6, 4, "g", "n", -1, 8));
    EXPECT_THAT(All(), UnorderedElementsAre("5|3|6|4|g|n|-1|8", "5|3|60|4|g|n|2|7"));
    EXPECT_TRUE(CQVBaseFun::DeleteBIIAceInfo(m_conn, 5, 3, 6, 4, "g", "n"));
    EXPECT_THAT(All(), ElementsAre("5|3|60|4|g|n|2|7"));
    ExpectNoError();
}

TEST_P(RightsOnItemsOnAnEngine, WhatIsNotThereReadsAsZeroAndIsChangedToNoEffect)
{
    bool exists = true;
    int power = 77;
    EXPECT_TRUE(CQVBaseFun::ExistBIIAceInfo(m_conn, 5, 3, 6, 4, "g", "n", exists));
    EXPECT_FALSE(exists);
    EXPECT_TRUE(CQVBaseFun::GetBIIAceInfo(m_conn, 5, 3, 6, 4, "g", "n", power));
    EXPECT_EQ(power, 0);
    EXPECT_TRUE(CQVBaseFun::UpdateBIIAceInfo(m_conn, 5, 3, 6, 4, "g", "n", 1, 1));
    EXPECT_THAT(All(), IsEmpty());
    ExpectNoError();
}

TEST_P(RightsOnItemsOnAnEngine, HoldersOfPowerOneAreListedAndNoOthers)
{
    Grant(5, 6, "n", 1);
    Grant(7, 6, "n", 1, 2);
    Grant(8, 6, "n", 3);
    Grant(9, 6, "n", -1);
    Grant(5, 60, "n", 1);
    CUIntArray ids;
    CUIntArray types;
    EXPECT_TRUE(CQVBaseFun::LoadBIIAceInfo(m_conn, 6, 4, "n", "g", ids, types));
    EXPECT_THAT(Copied(ids), UnorderedElementsAre(5U, 7U));
    EXPECT_THAT(Copied(types), UnorderedElementsAre(3U, 2U));
    EXPECT_TRUE(CQVBaseFun::LoadBIIAceInfo(m_conn, 6, 4, "g", "n", ids, types)); // the genre where the name belongs
    EXPECT_THAT(Copied(ids), SizeIs(2));
}

TEST_P(RightsOnItemsOnAnEngine, AFunctionIsTakenFromEveryHolderOfAnItem)
{
    Grant(5, 6, "n", 1);
    Grant(7, 6, "n", 2, 2);
    Grant(5, 6, "m", 1);
    Grant(5, 60, "n", 1);
    EXPECT_TRUE(CQVBaseFun::DeleteBIIAceInfo(m_conn, 6, 4, "g", "n"));
    EXPECT_THAT(All(), UnorderedElementsAre("5|3|6|4|g|m|1|7", "5|3|60|4|g|n|1|7"));
}

// ---- Effective rights --------------------------------------------------------------------------------------------

class EffectiveRightsOnAnEngine : public engines::OnAnEngine {
protected:
    static constexpr int kUser = 41;

    EffectiveRightsOnAnEngine()
    {
        Execute("INSERT INTO qv_Role (Col_ID, Col_Name, Col_AppName) VALUES (7, 'everyone', 'Tolvan')");
        Execute("INSERT INTO qv_Role (Col_ID, Col_Name, Col_AppName) VALUES (8, 'clerk', 'Tolvan')");
        Execute("INSERT INTO qv_Role (Col_ID, Col_Name, Col_AppName) VALUES (9, 'boss', 'Tolvan')");
        Execute("INSERT INTO qv_Role (Col_ID, Col_Name, Col_AppName) VALUES (10, 'other', 'Elsewhere')");
        for (const char* role : {"8", "9", "10"}) {
            Execute(std::string("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, "
                                "Col_DQvItemType, Col_RelType) VALUES (") +
                    role + ", 3, 41, 1, 1)");
        }
    }

    void Grant(int roleID, int power, int itemType = 3)
    {
        EXPECT_TRUE(CQVBaseFun::InsertItemAce(m_conn, roleID, itemType, "g", "n", power, 0));
    }

    int Limit(bool (*operation)(CAConnect&, int, CString, CString, int&))
    {
        int limit = 77;
        EXPECT_TRUE(operation(m_conn, kUser, "g", "n", limit));
        return limit;
    }

    unsigned long Bits(int userID = kUser)
    {
        unsigned long bits = 77;
        EXPECT_TRUE(CQVBaseFun::GetHMBaseACE(m_conn, userID, "g", "n", bits));
        return bits;
    }
};

TEST_P(EffectiveRightsOnAnEngine, TheFilterNamesTheLinkedRolesOfThisSystemAndTheDefaultRole)
{
    CString filter;
    EXPECT_TRUE(CQVBaseFun::GetHMRoleQueryParam(m_conn, kUser, filter));
    EXPECT_STREQ(filter, "( Col_QvItemID = 8 AND Col_QvItemType = 3 ) OR ( Col_QvItemID = 9 AND Col_QvItemType = 3 ) "
                         "OR ( Col_QvItemID = 7 AND Col_QvItemType = 3 )");
    EXPECT_TRUE(CQVBaseFun::GetHMRoleQueryParam(m_conn, 42, filter));
    EXPECT_STREQ(filter, "( Col_QvItemID = 7 AND Col_QvItemType = 3 )");
}

TEST_P(EffectiveRightsOnAnEngine, BitsOfAllRolesComeTogether)
{
    EXPECT_EQ(Bits(), 0UL);
    Grant(7, 1);
    Grant(8, 2);
    Grant(9, 4);
    Grant(10, 16);       // of another application
    Grant(kUser, 32, 1); // of the user himself
    EXPECT_EQ(Bits(), 7UL);
    EXPECT_EQ(Bits(42), 1UL);
    Grant(8, -1);
    EXPECT_EQ(Bits(), 4294967295UL);
}

TEST_P(EffectiveRightsOnAnEngine, FlagsAndMasksAskForBits)
{
    bool allowed = true;
    int has = 77;
    Grant(8, 6);
    EXPECT_TRUE(CQVBaseFun::GetAfficheACE(m_conn, kUser, "g", "n", allowed));
    EXPECT_FALSE(allowed);
    EXPECT_TRUE(CQVBaseFun::HaveBaseACE(m_conn, kUser, "g", "n", 1, has));
    EXPECT_EQ(has, 0);
    EXPECT_TRUE(CQVBaseFun::HaveBaseACE(m_conn, kUser, "g", "n", 5, has));
    EXPECT_EQ(has, 1);
    EXPECT_TRUE(CQVBaseFun::HaveBaseACE(m_conn, kUser, "g", "n", 0, has));
    EXPECT_EQ(has, 0);
    EXPECT_TRUE(CQVBaseFun::GetACEGuestUser(m_conn, kUser, "g", "n", allowed));
    EXPECT_FALSE(allowed);
    Grant(9, 1);
    EXPECT_TRUE(CQVBaseFun::GetAfficheACE(m_conn, kUser, "g", "n", allowed));
    EXPECT_TRUE(allowed);
    EXPECT_TRUE(CQVBaseFun::GetACEGuestUser(m_conn, 42, "g", "n", allowed));
    EXPECT_FALSE(allowed);
    Grant(7, 8);
    EXPECT_TRUE(CQVBaseFun::GetACEGuestUser(m_conn, 42, "g", "n", allowed));
    EXPECT_TRUE(allowed);
    ExpectNoError();
}

TEST_P(EffectiveRightsOnAnEngine, TheWidestLimitWins)
{
    for (const auto operation :
         {&CQVBaseFun::GetAttachmentSizeACE, &CQVBaseFun::GetMultiSendCountACE, &CQVBaseFun::GetRateLimitACE}) {
        Execute("DELETE FROM qv_ItemAce");
        EXPECT_EQ(Limit(operation), -1);
        Grant(8, 0);
        EXPECT_EQ(Limit(operation), 0);
        Grant(9, 10);
        Grant(7, 50);
        EXPECT_EQ(Limit(operation), 50);
        Grant(8, -2);
        EXPECT_EQ(Limit(operation), 50);
        Grant(8, -1);
        EXPECT_EQ(Limit(operation), 50); // -2 is the smallest now, and only the smallest is looked at
        Execute("DELETE FROM qv_ItemAce WHERE Col_Power = -2");
        EXPECT_EQ(Limit(operation), -1);
    }
    ExpectNoError();
}

TEST_P(EffectiveRightsOnAnEngine, ViewsAreThoseOnWhichARoleHasThePowerOne)
{
    const auto grant = [this](int roleID, int viewID, int power, int itemType = 3, int viewType = 4) {
        EXPECT_TRUE(CQVBaseFun::InsertBIIAceInfo(m_conn, roleID, itemType, viewID, viewType, "g", "n", power, 0));
    };
    grant(8, 101, 1);
    grant(9, 101, 1);
    grant(7, 102, 1);
    grant(8, 103, 3);
    grant(10, 104, 1);
    grant(8, 105, 1, 2);
    grant(8, 106, 1, 3, 2);
    CUIntArray viewIDs;
    EXPECT_TRUE(CQVBaseFun::LoadHMRoleView(m_conn, kUser, "g", "n", viewIDs));
    EXPECT_THAT(Copied(viewIDs), UnorderedElementsAre(101U, 102U));
    EXPECT_TRUE(CQVBaseFun::LoadHMRoleView(m_conn, 42, "g", "n", viewIDs));
    EXPECT_THAT(Copied(viewIDs), UnorderedElementsAre(101U, 102U, 102U));
    ExpectNoError();
}

TEST_P(EffectiveRightsOnAnEngine, WithoutTheDefaultRoleAUserWithoutRolesHasNoRights)
{
    Execute("DELETE FROM qv_Role WHERE Col_ID = 7");
    Grant(7, 1);
    EXPECT_EQ(Bits(42), 0UL);
    EXPECT_EQ(Bits(), 0UL);
    Grant(0, 2); // no role has the id 0, which stands in for the default role
    EXPECT_EQ(Bits(42), 2UL);
    ExpectNoError();
}

TEST_P(EffectiveRightsOnAnEngine, AQuoteInAFunctionsTextsIsRefused)
{
    int limit = 77;
    unsigned long bits = 77;
    CUIntArray viewIDs;
    EXPECT_FALSE(CQVBaseFun::GetRateLimitACE(m_conn, kUser, "o'g", "n", limit));
    EXPECT_EQ(limit, -1);
    EXPECT_FALSE(CQVBaseFun::GetHMBaseACE(m_conn, kUser, "g", "o'n", bits));
    EXPECT_EQ(bits, 0UL);
    EXPECT_FALSE(CQVBaseFun::LoadHMRoleView(m_conn, kUser, "g", "o'n", viewIDs));
    EXPECT_THAT(m_watch.messages, SizeIs(3));
}

// ---- Object rights -----------------------------------------------------------------------------------------------

class ObjectRightsOnAnEngine : public engines::OnAnEngine {
protected:
    void Grant(int classID, int objID, int itemID, int itemType, const char* name, const char* genre, int power)
    {
        CTabBIOAceItem item;
        item.m_nClassID = classID;
        item.m_nObjID = objID;
        item.m_nQvItemID = itemID;
        item.m_nQvItemType = itemType;
        item.m_strFunName = name;
        item.m_strFunGenre = genre;
        item.m_nPower = power;
        item.m_nUnPower = 7;
        item.m_strQvItemName = "holder";
        EXPECT_TRUE(item.SaveData(m_conn));
    }

    int IdOf(int classID, int objID, int itemID, int itemType, const char* name, const char* genre)
    {
        int id = 77;
        EXPECT_TRUE(CQVBaseFun::ExistTabBIOAceItem(m_conn, classID, objID, itemID, itemType, name, genre, id));
        return id;
    }
};

TEST_P(ObjectRightsOnAnEngine, ARecordIsSavedWithEveryMember)
{
    CTabBIOAceItem item;
    item.m_nQvItemID = 1;
    item.m_nQvItemType = 2;
    item.m_nClassID = 3;
    item.m_nObjID = 4;
    item.m_strFunName = Given(R"(n\ é)");
    item.m_strFunGenre = "g";
    item.m_nPower = -1;
    item.m_nUnPower = 5;
    item.m_strQvItemName = Given(R"(O'Neil\ Ю)");
    item.m_nCreatorID = 6;
    item.m_strCreatorName = "d'Arc";
    item.m_dtCreate = COleDateTime(1987, 6, 5, 4, 3, 2);
    EXPECT_TRUE(item.SaveData(m_conn));
    EXPECT_STREQ(item.m_strQvItemName, Given(R"(O''Neil\ Ю)"));
    EXPECT_THAT(Rows("SELECT Col_QvItemID, Col_QvItemType, Col_ClassID, Col_ObjID, Col_FunName, Col_FunGenre, "
                     "Col_Power, Col_UnPower, Col_QvItemName, Col_Creator_ID, Col_Creator_Name, Col_Dt_Create FROM "
                     "Tab_BIOAce"),
                ElementsAre(R"(1|2|3|4|n\ é|g|-1|5|O'Neil\ Ю|6|d'Arc|1987-06-05 04:03:02)"));
    ExpectNoError();
}

TEST_P(ObjectRightsOnAnEngine, AnObjectsRightsAreListedByHolderTypeOfEveryGenre)
{
    Grant(1, 2, 50, 3, "n", "g", 8);
    Grant(1, 2, 51, 1, "n", "h", -1);
    Grant(1, 2, 52, 1, "m", "g", 1);
    Grant(1, 3, 53, 1, "n", "g", 1);
    Grant(2, 2, 54, 1, "n", "g", 1);
    CUIntArray ids;
    CUIntArray types;
    CUIntArray holders;
    CStringArray names;
    CUIntArray powers;
    EXPECT_TRUE(CQVBaseFun::LoadTabBIOAceInfo(m_conn, 1, 2, "n", ids, types, holders, names, powers));
    EXPECT_THAT(Copied(types), ElementsAre(1U, 3U));
    EXPECT_THAT(Copied(holders), ElementsAre(51U, 50U));
    EXPECT_THAT(Copied(names), ElementsAre("holder", "holder"));
    EXPECT_THAT(Copied(powers), ElementsAre(4294967295U, 8U));
    EXPECT_THAT(Copied(ids), ElementsAre(static_cast<unsigned>(IdOf(1, 2, 51, 1, "n", "h")),
                                         static_cast<unsigned>(IdOf(1, 2, 50, 3, "n", "g"))));
    EXPECT_TRUE(CQVBaseFun::LoadTabBIOAceInfo(m_conn, 9, 9, "n", ids, types, holders, names, powers));
    EXPECT_THAT(Copied(ids), SizeIs(2));
    ExpectNoError();
}

TEST_P(ObjectRightsOnAnEngine, ARightIsFoundByItsHolderAndAFunctionByItsNameAlone)
{
    Grant(1, 2, 50, 3, "n", "g", 8);
    EXPECT_GT(IdOf(1, 2, 50, 3, "n", "g"), 0);
    EXPECT_EQ(IdOf(1, 2, 50, 2, "n", "g"), 0);
    EXPECT_EQ(IdOf(1, 2, 50, 3, "n", "h"), 0);
    bool exists = false;
    EXPECT_TRUE(CQVBaseFun::ExistTabBIOAce(m_conn, 1, 2, "n", "another genre", exists));
    EXPECT_TRUE(exists);
    EXPECT_TRUE(CQVBaseFun::ExistTabBIOAce(m_conn, 1, 2, "m", "g", exists));
    EXPECT_FALSE(exists);
    ExpectNoError();
}

TEST_P(ObjectRightsOnAnEngine, ARightIsReadChangedAndTakenByItsId)
{
    Grant(1, 2, 50, 3, "n", "g", 8);
    Grant(1, 2, 51, 3, "n", "g", 9);
    const int id = IdOf(1, 2, 50, 3, "n", "g");
    EXPECT_TRUE(CQVBaseFun::UpdateTabBIOAceInfo(m_conn, id, -1, 6));
    int type = 77;
    CString name;
    int power = 77;
    EXPECT_TRUE(CQVBaseFun::LoadACEInfo(m_conn, id, type, name, power));
    EXPECT_EQ(type, 3);
    EXPECT_STREQ(name, "holder");
    EXPECT_EQ(power, -1);
    EXPECT_THAT(Rows("SELECT Col_Power, Col_UnPower FROM Tab_BIOAce"), UnorderedElementsAre("-1|6", "9|7"));
    EXPECT_TRUE(CQVBaseFun::DeleteTabBIOAceItem(m_conn, id));
    EXPECT_THAT(Rows("SELECT Col_QvItemID FROM Tab_BIOAce"), ElementsAre("51"));
    EXPECT_TRUE(CQVBaseFun::LoadACEInfo(m_conn, id, type, name, power));
    EXPECT_EQ(power, -1);
    ExpectNoError();
}

INSTANTIATE_TEST_SUITE_P(Engines, ItemRightsOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);
INSTANTIATE_TEST_SUITE_P(Engines, RightsOnItemsOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);
INSTANTIATE_TEST_SUITE_P(Engines, EffectiveRightsOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);
INSTANTIATE_TEST_SUITE_P(Engines, ObjectRightsOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);

} // namespace
