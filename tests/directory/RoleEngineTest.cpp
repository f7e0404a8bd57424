#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "directory/JobTitleItem.h"
#include "directory/RelationItem.h"
#include "directory/RoleItem.h"
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

// Every operation on roles and job titles, on every engine.

namespace {

// ---- Roles -------------------------------------------------------------------------------------------------------

class RolesOnAnEngine : public engines::OnAnEngine {
protected:
    unsigned Add(const char* name, const char* appName = "Tolvan", int domainID = 0)
    {
        CRoleItem item;
        item.m_strName = name;
        item.m_strDescription = CString("D-") + name;
        item.m_strAppName = appName;
        item.m_nDomainID = domainID;
        EXPECT_TRUE(item.SaveData(m_conn));
        int id = 0;
        EXPECT_TRUE(CQVBaseFun::GetRoleIDByName(m_conn, name, appName, domainID, id));
        return static_cast<unsigned>(id);
    }

    void Give(unsigned roleID, int userID, int relation = 1, int holderType = 3, int memberType = 1)
    {
        CRelationItem item;
        item.m_nQvItemID = static_cast<int>(roleID);
        item.m_nQvItemType = holderType;
        item.m_nDQvItemID = userID;
        item.m_nDQvItemType = memberType;
        item.m_nRelType = relation;
        EXPECT_EQ(item.SaveData(m_conn), 1);
    }

    bool Exists(const char* name, const char* appName, int domainID)
    {
        bool exists = false;
        EXPECT_TRUE(CQVBaseFun::ExistRoleName(m_conn, name, appName, domainID, exists));
        return exists;
    }
};

TEST_P(RolesOnAnEngine, ARecordIsSavedAndLoadedWithItsTimeOfDay)
{
    CRoleItem saved;
    saved.m_strName = Given(R"(cl\erk é Ю)");
    saved.m_strDescription = "d";
    saved.m_strCreatorName = "c";
    saved.m_strAppName = "a";
    saved.m_nItemIndex = 1;
    saved.m_nDomainID = 2;
    saved.m_bDisabled = true;
    saved.m_dtCreate = COleDateTime(1987, 6, 5, 4, 3, 2);
    saved.m_strGenre = "g";
    saved.m_nGClassID = 3;
    saved.m_nType = 4;
    EXPECT_TRUE(saved.SaveData(m_conn));
    EXPECT_EQ(saved.m_nID, 0);

    CRoleItem item;
    EXPECT_TRUE(CQVBaseFun::GetRoleIDByName(m_conn, saved.m_strName, "a", 2, item.m_nID));
    EXPECT_TRUE(item.LoadData(m_conn));
    EXPECT_STREQ(item.m_strName, Stored(saved.m_strName));
    EXPECT_STREQ(item.m_strDescription, "d");
    EXPECT_STREQ(item.m_strCreatorName, "c");
    EXPECT_STREQ(item.m_strAppName, "a");
    EXPECT_EQ(item.m_nItemIndex, 1);
    EXPECT_EQ(item.m_nDomainID, 2);
    EXPECT_TRUE(item.m_bDisabled);
    EXPECT_EQ(item.m_dtCreate, saved.m_dtCreate);
    EXPECT_STREQ(item.m_strGenre, "g");
    EXPECT_EQ(item.m_nGClassID, 3);
    EXPECT_EQ(item.m_nType, 4);
    ExpectNoError();
}

TEST_P(RolesOnAnEngine, ARecordIsUpdatedInNameAndDescriptionAlone)
{
    CRoleItem item;
    item.m_nID = static_cast<int>(Add("clerk", "Tolvan", 2));
    Add("boss");
    item.m_strName = "n";
    item.m_strDescription = "d";
    item.m_strAppName = "other";
    item.m_nDomainID = 7;
    item.m_nItemIndex = 8;
    item.m_bDisabled = true;
    EXPECT_TRUE(item.UpdateData(m_conn));
    EXPECT_THAT(Rows("SELECT Col_Name, Col_Description, Col_AppName, Col_DomainID, Col_ItemIndex, Col_Disabled FROM "
                     "qv_Role ORDER BY Col_ID"),
                ElementsAre("n|d|Tolvan|2|0|0", "boss|D-boss|Tolvan|0|0|0"));
    ExpectNoError();
}

TEST_P(RolesOnAnEngine, ARecordThatIsNotThereIsLoadedAndUpdatedToNoEffect)
{
    CRoleItem item;
    item.m_nID = 4711;
    item.m_strName = "kept";
    EXPECT_TRUE(item.LoadData(m_conn));
    EXPECT_TRUE(item.UpdateData(m_conn));
    EXPECT_STREQ(item.m_strName, "kept");
    EXPECT_STREQ(item.m_strAppName, "Tolvan");
    ExpectNoError();
}

TEST_P(RolesOnAnEngine, AQuoteIsRefusedByTheRecordWithoutAWord)
{
    CRoleItem item;
    item.m_strName = "o'n";
    EXPECT_FALSE(item.SaveData(m_conn));
    EXPECT_FALSE(item.UpdateData(m_conn));
    EXPECT_THAT(Rows("SELECT Col_Name FROM qv_Role"), IsEmpty());
    ExpectNoError();
}

TEST_P(RolesOnAnEngine, ANameIsFoundExactlyAndTakenInAnyLettersWithinApplicationAndDomain)
{
    const unsigned id = Add("José", "Tolvan", 2);
    int found = 77;
    EXPECT_TRUE(CQVBaseFun::GetRoleIDByName(m_conn, "José", "Tolvan", 2, found));
    EXPECT_EQ(found, static_cast<int>(id));
    EXPECT_TRUE(CQVBaseFun::GetRoleIDByName(m_conn, "JOSÉ", "Tolvan", 2, found));
    EXPECT_EQ(found, TellsCase() ? 0 : static_cast<int>(id));
    EXPECT_TRUE(CQVBaseFun::GetRoleIDByName(m_conn, "José", "TOLVAN", 2, found));
    EXPECT_EQ(found, TellsCase() ? 0 : static_cast<int>(id));
    EXPECT_TRUE(Exists("José", "Tolvan", 2));
    EXPECT_TRUE(Exists("JOSÉ", "tolvan", 2));
    EXPECT_FALSE(Exists("José", "Other", 2));
    EXPECT_FALSE(Exists("José", "Tolvan", 3));
    EXPECT_FALSE(Exists("Jos", "Tolvan", 2));
    ExpectNoError();
}

TEST_P(RolesOnAnEngine, TheRolesOfAnApplicationAndDomainAreListed)
{
    const unsigned clerk = Add("clerk", "Tolvan", 2);
    const unsigned boss = Add("boss", "Tolvan", 2);
    Add("far", "Tolvan", 3);
    Add("other", "Other", 2);
    CUIntArray ids;
    CStringArray names;
    EXPECT_TRUE(CQVBaseFun::LoadRole(m_conn, "Tolvan", 2, ids, names));
    EXPECT_THAT(Copied(ids), UnorderedElementsAre(clerk, boss));
    EXPECT_THAT(Copied(names), UnorderedElementsAre("clerk", "boss"));
    CUIntArray ids3;
    CStringArray names3;
    CStringArray descriptions;
    EXPECT_TRUE(CQVBaseFun::LoadRole(m_conn, "Tolvan", 2, ids3, names3, descriptions));
    EXPECT_EQ(Copied(ids3), Copied(ids));
    EXPECT_EQ(Copied(names3), Copied(names));
    EXPECT_THAT(Copied(descriptions), UnorderedElementsAre("D-clerk", "D-boss"));
    ExpectNoError();
}

TEST_P(RolesOnAnEngine, ANameIsReadById)
{
    const unsigned id = Add("clerk");
    CString name = "before";
    EXPECT_TRUE(CQVBaseFun::GetRoleNameByID(m_conn, static_cast<int>(id), name));
    EXPECT_STREQ(name, "clerk");
    EXPECT_TRUE(CQVBaseFun::GetRoleNameByID(m_conn, 4711, name));
    EXPECT_STREQ(name, "");
    ExpectNoError();
}

TEST_P(RolesOnAnEngine, ARoleIsDeletedAndItsRelationsStay)
{
    const unsigned id = Add("clerk");
    Add("boss");
    Give(id, 5);
    EXPECT_TRUE(CQVBaseFun::DeleteRole(m_conn, static_cast<int>(id)));
    EXPECT_TRUE(CQVBaseFun::DeleteRole(m_conn, 4711));
    EXPECT_THAT(Rows("SELECT Col_Name FROM qv_Role"), ElementsAre("boss"));
    EXPECT_THAT(Rows("SELECT Col_DQvItemID FROM qv_Relation"), SizeIs(1));
    ExpectNoError();
}

TEST_P(RolesOnAnEngine, TheDefaultRoleIsThatOfThisSystem)
{
    Add("everyone", "Other");
    if (TellsCase()) {
        Add("Everyone");
    }
    int id = 77;
    CString name = "n";
    CString description = "d";
    EXPECT_TRUE(CQVBaseFun::GetDefaultRoleInfo(m_conn, id, name, description));
    EXPECT_EQ(id, 0);
    EXPECT_STREQ(name, "n");
    EXPECT_STREQ(description, "d");
    id = 77;
    EXPECT_TRUE(CQVBaseFun::GetDefaultRoleID(m_conn, id));
    EXPECT_EQ(id, 0);
    const auto everyone = static_cast<int>(Add("everyone", "Tolvan", 9));
    EXPECT_TRUE(CQVBaseFun::GetDefaultRoleInfo(m_conn, id, name, description));
    EXPECT_EQ(id, everyone);
    EXPECT_STREQ(name, "everyone");
    EXPECT_STREQ(description, "D-everyone");
    id = 77;
    EXPECT_TRUE(CQVBaseFun::GetDefaultRoleID(m_conn, id));
    EXPECT_EQ(id, everyone);
    ExpectNoError();
}

// ---- A user's roles ----------------------------------------------------------------------------------------------

class RolesOfAUser : public RolesOnAnEngine {
protected:
    // User 5 is a clerk, in another way a boss, and has a role of another application. Others are tied to role "spare".
    RolesOfAUser() : m_clerk(Add("clerk", "Tolvan", 2)), m_boss(Add("boss")), m_other(Add("other", "Other"))
    {
        const unsigned spare = Add("spare");
        Give(m_clerk, 5);
        Give(m_boss, 5, 2);
        Give(m_other, 5);
        Give(spare, 6);
        Give(spare, 5, 1, 2);
        Give(spare, 5, 1, 3, 2);
    }

    unsigned m_clerk;
    unsigned m_boss;
    unsigned m_other;
};

TEST_P(RolesOfAUser, AreOfEveryApplicationAndRelationWithoutTheDefaultOneInTwoArrays)
{
    Add("everyone");
    CUIntArray ids;
    CStringArray names;
    EXPECT_TRUE(CQVBaseFun::LoadHMRole(m_conn, 5, ids, names));
    EXPECT_THAT(Copied(ids), UnorderedElementsAre(m_clerk, m_boss, m_other));
    EXPECT_THAT(Copied(names), UnorderedElementsAre("clerk", "boss", "other"));
    ExpectNoError();
}

TEST_P(RolesOfAUser, AreOfThisSystemAndEndWithTheDefaultOneInThreeArraysAndInOne)
{
    const unsigned everyone = Add("everyone");
    CUIntArray ids;
    CStringArray names;
    CStringArray descriptions;
    EXPECT_TRUE(CQVBaseFun::LoadHMRole(m_conn, 5, ids, names, descriptions));
    EXPECT_THAT(Copied(ids), UnorderedElementsAre(m_clerk, m_boss, everyone));
    EXPECT_EQ(Copied(ids).back(), everyone);
    EXPECT_THAT(Copied(names), UnorderedElementsAre("clerk", "boss", "everyone"));
    EXPECT_EQ(Copied(names).back(), "everyone");
    EXPECT_THAT(Copied(descriptions), UnorderedElementsAre("D-clerk", "D-boss", "D-everyone"));
    EXPECT_EQ(Copied(descriptions).back(), "D-everyone");
    CUIntArray alone;
    EXPECT_TRUE(CQVBaseFun::LoadHMRole(m_conn, 5, alone));
    EXPECT_EQ(Copied(alone), Copied(ids));
    ExpectNoError();
}

TEST_P(RolesOfAUser, WithoutLinksAreTheDefaultRole)
{
    const unsigned everyone = Add("everyone");
    CUIntArray ids;
    CStringArray names;
    CStringArray descriptions;
    EXPECT_TRUE(CQVBaseFun::LoadHMRole(m_conn, 4711, ids, names, descriptions));
    EXPECT_THAT(Copied(ids), ElementsAre(everyone));
    EXPECT_THAT(Copied(names), ElementsAre("everyone"));
    EXPECT_THAT(Copied(descriptions), ElementsAre("D-everyone"));
    CUIntArray alone;
    EXPECT_TRUE(CQVBaseFun::LoadHMRole(m_conn, 4711, alone));
    EXPECT_THAT(Copied(alone), ElementsAre(everyone));
    ExpectNoError();
}

TEST_P(RolesOfAUser, EndWithIdZeroAndEmptyTextsWhereThereIsNoDefaultRole)
{
    CUIntArray ids;
    CStringArray names;
    CStringArray descriptions;
    EXPECT_TRUE(CQVBaseFun::LoadHMRole(m_conn, 4711, ids, names, descriptions));
    EXPECT_THAT(Copied(ids), ElementsAre(0U));
    EXPECT_THAT(Copied(names), ElementsAre(""));
    EXPECT_THAT(Copied(descriptions), ElementsAre(""));
    CUIntArray alone;
    EXPECT_TRUE(CQVBaseFun::LoadHMRole(m_conn, 4711, alone));
    EXPECT_THAT(Copied(alone), ElementsAre(0U));
    ExpectNoError();
}

TEST_P(RolesOfAUser, HoldTheDefaultRoleTwiceWhenItIsLinkedToo)
{
    const unsigned everyone = Add("everyone");
    Give(everyone, 7);
    CUIntArray ids;
    CStringArray names;
    CStringArray descriptions;
    EXPECT_TRUE(CQVBaseFun::LoadHMRole(m_conn, 7, ids, names, descriptions));
    EXPECT_THAT(Copied(ids), ElementsAre(everyone, everyone));
    CUIntArray alone;
    EXPECT_TRUE(CQVBaseFun::LoadHMRole(m_conn, 7, alone));
    EXPECT_THAT(Copied(alone), ElementsAre(everyone, everyone));
    ExpectNoError();
}

TEST_P(RolesOnAnEngine, AQuoteIsRefusedByEveryOperationThatSendsIt)
{
    int id = 77;
    bool exists = true;
    CUIntArray ids;
    CStringArray names;
    EXPECT_FALSE(CQVBaseFun::GetRoleIDByName(m_conn, "o'n", "a", 1, id));
    EXPECT_EQ(id, 0);
    EXPECT_FALSE(CQVBaseFun::ExistRoleName(m_conn, "n", "o'a", 1, exists));
    EXPECT_FALSE(exists);
    EXPECT_FALSE(CQVBaseFun::LoadRole(m_conn, "o'a", 1, ids, names));
    EXPECT_FALSE(CQVBaseFun::LoadRole(m_conn, "o'a", 1, ids, names, names));
    EXPECT_THAT(m_watch.messages, SizeIs(4));
}

// ---- Job titles --------------------------------------------------------------------------------------------------

class JobTitlesOnAnEngine : public engines::OnAnEngine {
protected:
    void Give(int holderID, int memberID, const char* title, const char* memberName, int holderType = 2,
              int memberType = 1)
    {
        CJobTitleItem item;
        item.m_nQvItemID = holderID;
        item.m_nQvItemType = holderType;
        item.m_strJobTitle = title;
        item.m_nDQvItemID = memberID;
        item.m_nDQvItemType = memberType;
        item.m_strDQvItemName = memberName;
        EXPECT_TRUE(item.SaveData(m_conn));
    }

    bool Exists(int holderID, int holderType, int memberID, int memberType, const char* title)
    {
        bool exists = false;
        EXPECT_TRUE(CQVBaseFun::ExistJobTitle(m_conn, holderID, holderType, memberID, memberType, title, exists));
        return exists;
    }

    std::vector<std::string> Names(int holderID, int holderType, const char* title)
    {
        CUIntArray ids;
        CStringArray names;
        EXPECT_TRUE(CQVBaseFun::LoadJobTitleInfo(m_conn, holderID, holderType, ids, names, title));
        EXPECT_EQ(ids.GetSize(), names.GetSize());
        return Copied(names);
    }
};

TEST_P(JobTitlesOnAnEngine, ARecordIsSavedWithEveryMember)
{
    CJobTitleItem item;
    item.m_nQvItemID = 1;
    item.m_nQvItemType = 2;
    item.m_strJobTitle = Given(R"(Ch\ief é Ю)");
    item.m_nDQvItemID = 3;
    item.m_nDQvItemType = 4;
    item.m_strDescription = "d";
    item.m_strDQvItemName = "Amy";
    EXPECT_TRUE(item.SaveData(m_conn));
    EXPECT_THAT(Rows("SELECT Col_QvItemID, Col_QvItemType, Col_JobTitle, Col_DQvItemID, Col_DQvItemType, "
                     "Col_JobTitle_Desc, Col_DQvItemName FROM qv_JobTitle"),
                ElementsAre(R"(1|2|Ch\ief é Ю|3|4|d|Amy)"));
    ExpectNoError();
}

TEST_P(JobTitlesOnAnEngine, MembersAreListedByHolderAndTheTitlesLetters)
{
    Give(5, 41, "Chief", "Amy");
    Give(5, 42, "Chief", "Bob");
    Give(5, 43, "chief", "Cid");
    Give(6, 44, "Chief", "Dan");
    Give(5, 45, "Chief", "Eve", 4);
    if (TellsCase()) {
        EXPECT_THAT(Names(5, 2, "Chief"), UnorderedElementsAre("Amy", "Bob"));
        EXPECT_THAT(Names(5, 2, "chief"), ElementsAre("Cid"));
        EXPECT_THAT(Names(5, 2, "CHIEF"), IsEmpty());
    } else {
        EXPECT_THAT(Names(5, 2, "CHIEF"), UnorderedElementsAre("Amy", "Bob", "Cid"));
    }
    CUIntArray ids;
    CStringArray names;
    EXPECT_TRUE(CQVBaseFun::LoadJobTitleInfo(m_conn, 6, 2, ids, names, "Chief"));
    EXPECT_THAT(Copied(ids), ElementsAre(44U));
    ExpectNoError();
}

TEST_P(JobTitlesOnAnEngine, AMembersNameStaysAsItWasWhenTheTitleWasGiven)
{
    EXPECT_TRUE(CQVBaseFun::InsertUser(m_conn, "amy", "Amy"));
    int id = 0;
    EXPECT_TRUE(CQVBaseFun::GetHMIDByLoginName(m_conn, "amy", id));
    Give(5, id, "Chief", "Amy");
    EXPECT_TRUE(CQVBaseFun::UpdateHumanInfo(m_conn, id, "amy", "Amy Lee", "", "", "", "", "", "", "", "", 0));
    EXPECT_THAT(Names(5, 2, "Chief"), ElementsAre("Amy"));
    ExpectNoError();
}

TEST_P(JobTitlesOnAnEngine, ATitleIsTestedForAndDeletedByHolderMemberAndTitle)
{
    Give(5, 41, "Chief", "Amy");
    Give(5, 41, "Chief", "Amy");
    Give(5, 41, "Clerk", "Amy");
    Give(5, 42, "Chief", "Bob");
    Give(6, 41, "Chief", "Amy");
    Give(5, 41, "Chief", "Amy", 4);
    Give(5, 41, "Chief", "Amy", 2, 2);
    EXPECT_TRUE(Exists(5, 2, 41, 1, "Chief"));
    EXPECT_FALSE(Exists(7, 2, 41, 1, "Chief"));
    EXPECT_FALSE(Exists(5, 2, 43, 1, "Chief"));
    EXPECT_EQ(Exists(5, 2, 41, 1, "chief"), !TellsCase());
    EXPECT_TRUE(CQVBaseFun::DeleteJobTitle(m_conn, 5, 2, 41, 1, "Chief"));
    EXPECT_FALSE(Exists(5, 2, 41, 1, "Chief"));
    EXPECT_TRUE(Exists(5, 2, 41, 1, "Clerk"));
    EXPECT_TRUE(Exists(5, 2, 42, 1, "Chief"));
    EXPECT_TRUE(Exists(6, 2, 41, 1, "Chief"));
    EXPECT_TRUE(Exists(5, 4, 41, 1, "Chief"));
    EXPECT_TRUE(Exists(5, 2, 41, 2, "Chief"));
    EXPECT_TRUE(CQVBaseFun::DeleteJobTitle(m_conn, 5, 2, 41, 1, "Chief"));
    EXPECT_THAT(Rows("SELECT Col_JobTitle FROM qv_JobTitle"), SizeIs(5));
    ExpectNoError();
}

TEST_P(JobTitlesOnAnEngine, AQuoteIsRefusedByAllAndTheRecordSaysNothing)
{
    CJobTitleItem item;
    item.m_strDQvItemName = "O'Brien";
    EXPECT_FALSE(item.SaveData(m_conn));
    ExpectNoError();
    CUIntArray ids;
    CStringArray names;
    bool exists = true;
    EXPECT_FALSE(CQVBaseFun::LoadJobTitleInfo(m_conn, 5, 2, ids, names, "o't"));
    EXPECT_FALSE(CQVBaseFun::ExistJobTitle(m_conn, 5, 2, 41, 1, "o't", exists));
    EXPECT_FALSE(exists);
    EXPECT_FALSE(CQVBaseFun::DeleteJobTitle(m_conn, 5, 2, 41, 1, "o't"));
    EXPECT_THAT(m_watch.messages, SizeIs(3));
}

INSTANTIATE_TEST_SUITE_P(Engines, RolesOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);
INSTANTIATE_TEST_SUITE_P(Engines, RolesOfAUser, testing::ValuesIn(engines::All()), engines::NameOf);
INSTANTIATE_TEST_SUITE_P(Engines, JobTitlesOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);

} // namespace
