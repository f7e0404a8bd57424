#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "directory/GroupItem.h"
#include "directory/RelationItem.h"
#include "directory/ViewItem.h"
#include "tests/directory/Engines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using engines::Copied;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

// Every operation on groups and views, on every engine.

namespace {

const std::string kGroups = "SELECT Col_Name, Col_Description, Col_Creator_Name, Col_ItemIndex, Col_DomainID, "
                            "Col_Style FROM qv_Group ORDER BY Col_ID";
const std::string kViews = "SELECT Col_Name, Col_Type, Col_Description, Col_OwnerID, Col_ItemIndex, Col_Creator_Name, "
                           "Col_DomainID, Col_Style, Col_IsPublic FROM qv_View ORDER BY Col_ID";

// ---- Groups ------------------------------------------------------------------------------------------------------

class GroupsOnAnEngine : public engines::OnAnEngine {
protected:
    int Add(const char* name, int index = 10000)
    {
        CGroupItem item;
        item.m_strName = name;
        item.m_nItemIndex = index;
        EXPECT_EQ(item.SaveData(m_conn), 1);
        int id = 0;
        EXPECT_TRUE(CQVBaseFun::GetGroupIDByName(m_conn, "", id));
        return id;
    }

    void Relate(int holderID, int holderType, int id, int type, int relation = 1)
    {
        CRelationItem item;
        item.m_nQvItemID = holderID;
        item.m_nQvItemType = holderType;
        item.m_nDQvItemID = id;
        item.m_nDQvItemType = type;
        item.m_nRelType = relation;
        EXPECT_EQ(item.SaveData(m_conn), 1);
    }

    bool Exists(const char* name)
    {
        bool exists = false;
        EXPECT_TRUE(CQVBaseFun::ExistGroupName(m_conn, name, exists));
        return exists;
    }

    /// Whether a name is taken under a parent; both forms of the test must agree.
    bool ExistsUnder(const char* name, int parentID, int parentType)
    {
        bool exists = false;
        EXPECT_TRUE(CQVBaseFun::ExistGroupName(m_conn, name, parentID, parentType, exists));
        EXPECT_EQ(CQVBaseFun::ExistGroupName(m_conn, name, parentID, parentType) != 0, exists);
        return exists;
    }
};

TEST_P(GroupsOnAnEngine, ARecordIsSavedAndLoadedWithoutItsTimeOfDay)
{
    CGroupItem saved;
    saved.m_strName = Given(R"(Sa\les é Ю)");
    saved.m_strDescription = "Sells";
    saved.m_strCreatorName = "amy";
    saved.m_dtCreate = COleDateTime(1987, 6, 5, 4, 3, 2);
    saved.m_nItemIndex = 5;
    saved.m_nDomainID = 6;
    saved.m_nStyle = -7;
    EXPECT_EQ(saved.SaveData(m_conn), 1);
    EXPECT_EQ(saved.m_nID, 0);
    EXPECT_THAT(Rows(kGroups), ElementsAre(R"(Sa\les é Ю|Sells|amy|5|6|-7)"));

    CGroupItem item;
    EXPECT_TRUE(CQVBaseFun::GetGroupIDByName(m_conn, "", item.m_nID));
    EXPECT_TRUE(item.LoadInfoByID(m_conn));
    EXPECT_STREQ(item.m_strName, Stored(saved.m_strName));
    EXPECT_STREQ(item.m_strDescription, "Sells");
    EXPECT_STREQ(item.m_strCreatorName, "amy");
    EXPECT_EQ(item.m_dtCreate, COleDateTime(1987, 6, 5, 0, 0, 0));
    EXPECT_EQ(item.m_nItemIndex, 5);
    EXPECT_EQ(item.m_nDomainID, 6);
    EXPECT_EQ(item.m_nStyle, -7);
    ExpectNoError();
}

TEST_P(GroupsOnAnEngine, ARecordIsUpdatedButForItsCreationTime)
{
    CGroupItem item;
    item.m_dtCreate = COleDateTime(1987, 6, 5, 0, 0, 0);
    EXPECT_EQ(item.SaveData(m_conn), 1);
    Add("other");
    item.m_nID = 1;
    item.m_strName = "n";
    item.m_strDescription = "d";
    item.m_strCreatorName = "c";
    item.m_dtCreate = COleDateTime(2001, 2, 3, 0, 0, 0);
    item.m_nItemIndex = 5;
    item.m_nDomainID = 6;
    item.m_nStyle = 7;
    EXPECT_TRUE(item.Update(m_conn));
    EXPECT_THAT(Rows(kGroups), ElementsAre("n|d|c|5|6|7", "other|||10000|0|0"));
    CGroupItem read;
    read.m_nID = 1;
    EXPECT_TRUE(read.LoadInfoByID(m_conn));
    EXPECT_EQ(read.m_dtCreate, COleDateTime(1987, 6, 5, 0, 0, 0));
    item.m_nID = 4711;
    EXPECT_TRUE(item.Update(m_conn));
    ExpectNoError();
}

TEST_P(GroupsOnAnEngine, ARecordThatIsNotThereIsNotLoaded)
{
    CGroupItem item;
    item.m_nID = 4711;
    item.m_strName = "kept";
    EXPECT_FALSE(item.LoadInfoByID(m_conn));
    EXPECT_STREQ(item.m_strName, "kept");
    ExpectNoError();
}

TEST_P(GroupsOnAnEngine, AQuoteIsRefusedByEveryMethodOfTheRecordWithoutAMessage)
{
    CGroupItem item;
    item.m_strName = "o'n";
    EXPECT_EQ(item.SaveData(m_conn), 0);
    EXPECT_THAT(ErrorRecorder::Text(), StartsWith("directory/GroupItem.cpp("));
    EXPECT_FALSE(item.Update(m_conn));
    EXPECT_THAT(m_watch.messages, IsEmpty());
    EXPECT_THAT(Rows(kGroups), IsEmpty());
}

TEST_P(GroupsOnAnEngine, TheIdByNameIsTheHighestWhateverTheName)
{
    int id = 77;
    EXPECT_TRUE(CQVBaseFun::GetGroupIDByName(m_conn, "Sales", id));
    EXPECT_EQ(id, -1);
    const int sales = Add("Sales");
    const int stock = Add("Stock");
    EXPECT_GT(stock, sales);
    EXPECT_TRUE(CQVBaseFun::GetGroupIDByName(m_conn, "Sales", id));
    EXPECT_EQ(id, stock);
    EXPECT_TRUE(CQVBaseFun::GetGroupIDByName(m_conn, "o'nobody", id));
    EXPECT_EQ(id, stock);
    ExpectNoError();
}

TEST_P(GroupsOnAnEngine, TheIdByNameAndOwnerLooksAtNoTypes)
{
    const int sales = Add("Sales");
    Relate(5, 4, sales, 2);
    Relate(6, 3, sales, 1, 9);
    for (const int owner : {5, 6}) {
        int id = 77;
        EXPECT_TRUE(CQVBaseFun::GetGroupIDByNameAndOwner(m_conn, "Sales", id, owner));
        EXPECT_EQ(id, sales);
    }
    int id = 77;
    EXPECT_TRUE(CQVBaseFun::GetGroupIDByNameAndOwner(m_conn, "Sales", id, 7));
    EXPECT_EQ(id, -1);
    EXPECT_TRUE(CQVBaseFun::GetGroupIDByNameAndOwner(m_conn, "SALES", id, 5));
    EXPECT_EQ(id, TellsCase() ? -1 : sales);
    ExpectNoError();
}

TEST_P(GroupsOnAnEngine, ANameIsTakenInAnyLettersOfAnyAlphabet)
{
    EXPECT_FALSE(Exists("Sales"));
    const int sales = Add("Sales");
    const int yulia = Add("Юлия");
    Relate(5, 4, sales, 2);
    Relate(5, 4, yulia, 2);
    for (const char* name : {"Sales", "SALES", "sales"}) {
        EXPECT_TRUE(Exists(name)) << name;
        EXPECT_EQ(CQVBaseFun::ExistGroupName(m_conn, name, 5, 4), sales) << name;
        EXPECT_TRUE(ExistsUnder(name, 5, 4)) << name;
    }
    for (const char* name : {"Юлия", "ЮЛИЯ", "юлия"}) {
        EXPECT_TRUE(Exists(name)) << name;
        EXPECT_EQ(CQVBaseFun::ExistGroupName(m_conn, name, 5, 4), yulia) << name;
    }
    EXPECT_FALSE(Exists("Sale"));
    ExpectNoError();
}

TEST_P(GroupsOnAnEngine, ANameIsTakenUnderItsDirectParentOnly)
{
    const int sales = Add("Sales");
    const int inner = Add("Inner");
    const int far = Add("Far");
    const int loose = Add("Loose");
    Relate(5, 4, sales, 2);
    Relate(sales, 2, inner, 2);
    Relate(5, 4, far, 2, 2);
    Relate(5, 4, loose, 1);
    EXPECT_TRUE(ExistsUnder("Sales", 5, 4));
    EXPECT_TRUE(ExistsUnder("Inner", sales, 2));
    EXPECT_FALSE(ExistsUnder("Inner", 5, 4));
    EXPECT_FALSE(ExistsUnder("Sales", 5, 2));
    EXPECT_FALSE(ExistsUnder("Sales", 6, 4));
    EXPECT_FALSE(ExistsUnder("Far", 5, 4));
    EXPECT_FALSE(ExistsUnder("Loose", 5, 4));
    ExpectNoError();
}

TEST_P(GroupsOnAnEngine, TheGroupsUnderAParentAreListedByIndexAndName)
{
    const auto last = static_cast<unsigned>(Add("A", 3));
    const auto second = static_cast<unsigned>(Add("C", 1));
    const auto first = static_cast<unsigned>(Add("B", 1));
    const int elsewhere = Add("D", 0);
    for (const unsigned id : {last, second, first}) {
        Relate(5, 4, static_cast<int>(id), 2);
    }
    Relate(5, 4, elsewhere, 2, 2);
    Relate(5, 4, elsewhere, 1);
    Relate(5, 2, elsewhere, 2);
    Relate(6, 4, elsewhere, 2);
    CUIntArray ids;
    CStringArray names;
    ids.Add(9);
    names.Add("old");
    EXPECT_TRUE(CQVBaseFun::LoadGroup(m_conn, 5, 4, ids, names));
    EXPECT_THAT(Copied(ids), ElementsAre(9U, first, second, last));
    EXPECT_THAT(Copied(names), ElementsAre("old", "B", "C", "A"));
    ExpectNoError();
}

TEST_P(GroupsOnAnEngine, NameIndexAndDescriptionAreReadAndUpdatedAlone)
{
    const int id = Add("Sales", 5);
    Add("Stock", 6);
    Execute("UPDATE qv_Group SET Col_Creator_Name = 'c', Col_Style = 3, Col_DomainID = 4");
    EXPECT_TRUE(CQVBaseFun::UpdateGroupInfo(m_conn, id, "n", 7, "d"));
    EXPECT_THAT(Rows(kGroups), ElementsAre("n|d|c|7|4|3", "Stock||c|6|4|3"));
    CString name;
    int index = 0;
    CString description;
    EXPECT_TRUE(CQVBaseFun::LoadGroupInfo(m_conn, id, name, index, description));
    EXPECT_STREQ(name, "n");
    EXPECT_EQ(index, 7);
    EXPECT_STREQ(description, "d");
    EXPECT_TRUE(CQVBaseFun::LoadGroupInfo(m_conn, 4711, name, index, description));
    EXPECT_STREQ(name, "n");
    EXPECT_EQ(index, 7);
    ExpectNoError();
}

TEST_P(GroupsOnAnEngine, AStyleIsUpdatedAndRead)
{
    const int id = Add("Sales");
    const int other = Add("Stock");
    int style = 77;
    EXPECT_TRUE(CQVBaseFun::UpdateGroupStyle(m_conn, id, -2147483647));
    EXPECT_TRUE(CQVBaseFun::GetGroupStyle(m_conn, id, style));
    EXPECT_EQ(style, -2147483647);
    EXPECT_TRUE(CQVBaseFun::GetGroupStyle(m_conn, other, style));
    EXPECT_EQ(style, 0);
    style = 77;
    EXPECT_TRUE(CQVBaseFun::GetGroupStyle(m_conn, 4711, style));
    EXPECT_EQ(style, 0);
    ExpectNoError();
}

TEST_P(GroupsOnAnEngine, AGroupIsDeletedAndItsRelationsStay)
{
    const int id = Add("Sales");
    Add("Stock");
    Relate(5, 4, id, 2);
    EXPECT_TRUE(CQVBaseFun::DelGroupItemByID(m_conn, id));
    EXPECT_TRUE(CQVBaseFun::DelGroupItemByID(m_conn, 4711));
    EXPECT_THAT(Rows("SELECT Col_Name FROM qv_Group"), ElementsAre("Stock"));
    EXPECT_THAT(Rows("SELECT Col_DQvItemID FROM qv_Relation"), SizeIs(1));
    ExpectNoError();
}

TEST_P(GroupsOnAnEngine, AQuoteIsRefusedByEveryOperationThatSendsIt)
{
    int id = 77;
    bool exists = true;
    EXPECT_FALSE(CQVBaseFun::GetGroupIDByNameAndOwner(m_conn, "o'n", id, 5));
    EXPECT_EQ(id, -1);
    EXPECT_FALSE(CQVBaseFun::ExistGroupName(m_conn, "o'n", exists));
    EXPECT_FALSE(exists);
    EXPECT_FALSE(CQVBaseFun::ExistGroupName(m_conn, "o'n", 5, 4, exists));
    EXPECT_EQ(CQVBaseFun::ExistGroupName(m_conn, "o'n", 5, 4), 0);
    EXPECT_FALSE(CQVBaseFun::UpdateGroupInfo(m_conn, 1, "n", 1, "o'd"));
    EXPECT_THAT(m_watch.messages, SizeIs(5));
}

// ---- Views -------------------------------------------------------------------------------------------------------

class ViewsOnAnEngine : public engines::OnAnEngine {
protected:
    int Add(const char* name, int type = 1, int owner = 0, int index = 10000)
    {
        CViewItem item;
        item.m_strName = name;
        item.m_nType = type;
        item.m_nOwnerID = owner;
        item.m_nItemIndex = index;
        EXPECT_EQ(item.SaveData(m_conn), 1);
        int id = 0;
        EXPECT_TRUE(CQVBaseFun::GetViewIDByName(m_conn, name, type, id));
        return id;
    }

    /// The names of an owner's views of type 2.
    std::vector<std::string> Owned(int owner, bool createIfEmpty)
    {
        CUIntArray ids;
        CStringArray names;
        EXPECT_EQ(CQVBaseFun::LoadViewbyUserID(m_conn, owner, ids, names, 2, createIfEmpty), 1);
        EXPECT_EQ(ids.GetSize(), names.GetSize());
        return Copied(names);
    }

    void ExpectSystemViews(int expected)
    {
        int count = -7;
        EXPECT_TRUE(CQVBaseFun::GetSysViewCount(m_conn, count));
        EXPECT_EQ(count, expected);
        bool flag = expected == 0;
        EXPECT_TRUE(CQVBaseFun::HasNoSysView(m_conn, flag));
        EXPECT_EQ(flag, expected > 0);
    }
};

TEST_P(ViewsOnAnEngine, ARecordIsSavedAndLoadedWithoutItsTimeOfDay)
{
    CViewItem saved;
    saved.m_strName = Given(R"(Ma\in é Ю)");
    saved.m_nType = 3;
    saved.m_strDescription = "The main one";
    saved.m_nOwnerID = 4;
    saved.m_nItemIndex = 5;
    saved.m_strCreatorName = "amy";
    saved.m_dtCreate = COleDateTime(1987, 6, 5, 4, 3, 2);
    saved.m_nDomainID = 6;
    saved.m_nStyle = 7;
    saved.m_bIsPublic = true;
    EXPECT_EQ(saved.SaveData(m_conn), 1);
    EXPECT_EQ(saved.m_nID, 0);
    EXPECT_THAT(Rows(kViews), ElementsAre(R"(Ma\in é Ю|3|The main one|4|5|amy|6|7|1)"));

    CViewItem item;
    EXPECT_TRUE(CQVBaseFun::GetViewIDByName(m_conn, saved.m_strName, 3, item.m_nID));
    EXPECT_EQ(item.LoadInfoByID(m_conn), 1);
    EXPECT_STREQ(item.m_strName, Stored(saved.m_strName));
    EXPECT_EQ(item.m_nType, 3);
    EXPECT_STREQ(item.m_strDescription, "The main one");
    EXPECT_EQ(item.m_nOwnerID, 4);
    EXPECT_EQ(item.m_nItemIndex, 5);
    EXPECT_STREQ(item.m_strCreatorName, "amy");
    EXPECT_EQ(item.m_dtCreate, COleDateTime(1987, 6, 5, 0, 0, 0));
    EXPECT_EQ(item.m_nDomainID, 6);
    EXPECT_EQ(item.m_nStyle, 7);
    EXPECT_TRUE(item.m_bIsPublic);
    ExpectNoError();
}

TEST_P(ViewsOnAnEngine, ARecordIsUpdatedInNameDescriptionAndIndexAlone)
{
    CViewItem item;
    item.m_nID = Add("Main", 2, 3, 4);
    Add("Side");
    item.m_strName = "n";
    item.m_nType = 5;
    item.m_strDescription = "d";
    item.m_nOwnerID = 6;
    item.m_nItemIndex = 7;
    item.m_strCreatorName = "c";
    item.m_nDomainID = 8;
    item.m_nStyle = 9;
    item.m_bIsPublic = true;
    EXPECT_EQ(item.UpdateData(m_conn), 1);
    EXPECT_THAT(Rows(kViews), ElementsAre("n|2|d|3|7||0|0|0", "Side|1||0|10000||0|0|0"));
    item.m_nID = 4711;
    EXPECT_EQ(item.UpdateData(m_conn), 1);
    EXPECT_EQ(item.LoadInfoByID(m_conn), 0);
    EXPECT_STREQ(item.m_strName, "n");
    ExpectNoError();
}

TEST_P(ViewsOnAnEngine, AQuoteIsRefusedByTheRecordWithoutAMessage)
{
    CViewItem item;
    item.m_strName = "o'n";
    EXPECT_EQ(item.SaveData(m_conn), 0);
    EXPECT_THAT(ErrorRecorder::Text(), StartsWith("directory/ViewItem.cpp("));
    EXPECT_EQ(item.UpdateData(m_conn), 0);
    EXPECT_THAT(m_watch.messages, IsEmpty());
    EXPECT_THAT(Rows(kViews), IsEmpty());
}

TEST_P(ViewsOnAnEngine, ANameIsFoundExactlyAndTakenInAnyLetters)
{
    const int id = Add("José", 2);
    int found = 77;
    EXPECT_TRUE(CQVBaseFun::GetViewIDByName(m_conn, "José", 2, found));
    EXPECT_EQ(found, id);
    for (const char* name : {"JOSÉ", "josé"}) {
        EXPECT_TRUE(CQVBaseFun::GetViewIDByName(m_conn, name, 2, found));
        EXPECT_EQ(found, TellsCase() ? 0 : id) << name;
    }
    EXPECT_TRUE(CQVBaseFun::GetViewIDByName(m_conn, "Jos", 2, found));
    EXPECT_EQ(found, 0);
    EXPECT_TRUE(CQVBaseFun::GetViewIDByName(m_conn, "José", 1, found));
    EXPECT_EQ(found, 0);
    for (const char* name : {"José", "JOSÉ", "josé"}) {
        EXPECT_EQ(CQVBaseFun::ExistViewName(m_conn, name, 2), id) << name;
        EXPECT_EQ(CQVBaseFun::ExistViewName(m_conn, name, 1), 0) << name;
    }
    EXPECT_EQ(CQVBaseFun::ExistViewName(m_conn, "Jos", 2), 0);
    ExpectNoError();
}

TEST_P(ViewsOnAnEngine, TheViewsOfATypeAreListedByIndexAndName)
{
    const auto last = static_cast<unsigned>(Add("A", 2, 0, 3));
    const auto second = static_cast<unsigned>(Add("C", 2, 7, 1));
    const auto first = static_cast<unsigned>(Add("B", 2, 8, 1));
    Add("D", 1);
    CUIntArray ids;
    CStringArray names;
    EXPECT_TRUE(CQVBaseFun::LoadView(m_conn, ids, names, 2));
    EXPECT_THAT(Copied(ids), ElementsAre(first, second, last));
    EXPECT_THAT(Copied(names), ElementsAre("B", "C", "A"));
    ExpectNoError();
}

TEST_P(ViewsOnAnEngine, AnOwnersViewsAreListedByIndexAndNameAndNoneIsAdded)
{
    Add("B", 2, 5, 2);
    Add("A", 2, 5, 2);
    Add("C", 2, 5, 1);
    Add("D", 3, 5);
    Add("E", 2, 6);
    EXPECT_THAT(Owned(5, true), ElementsAre("C", "A", "B"));
    EXPECT_THAT(Rows(kViews), SizeIs(5));
    ExpectNoError();
}

TEST_P(ViewsOnAnEngine, AnOwnerWithoutViewsGetsOnePlaceholderWhenAskedFor)
{
    Add("Main", 1, 5);
    Add("Other", 2, 6);
    EXPECT_THAT(Owned(5, false), IsEmpty());
    EXPECT_THAT(Rows(kViews), SizeIs(2));
    EXPECT_THAT(Owned(5, true), ElementsAre("_Empty"));
    EXPECT_THAT(Owned(5, true), ElementsAre("_Empty"));
    EXPECT_THAT(Rows(kViews), SizeIs(3));
    EXPECT_THAT(Rows("SELECT Col_OwnerID, Col_Type FROM qv_View WHERE Col_Name = '_Empty'"), ElementsAre("5|2"));
    ExpectNoError();
}

TEST_P(ViewsOnAnEngine, ArraysWithEntriesNeverLeadToAPlaceholder)
{
    CUIntArray ids;
    CStringArray names;
    ids.Add(9);
    names.Add("old");
    EXPECT_EQ(CQVBaseFun::LoadViewbyUserID(m_conn, 5, ids, names, 2, true), 1);
    EXPECT_THAT(Copied(ids), ElementsAre(9U));
    EXPECT_THAT(Rows(kViews), IsEmpty());
}

TEST_P(ViewsOnAnEngine, TheDefaultSystemViewIsNamedOnce)
{
    CString name = "before";
    EXPECT_TRUE(CQVBaseFun::GetDefaultSysView(m_conn, name));
    EXPECT_STREQ(name, "");
    CUIntArray ids;
    CStringArray names;
    EXPECT_EQ(CQVBaseFun::LoadViewbyUserID(m_conn, 0, ids, names, 1, true), 1);
    Add("_Empty", 2, 0);
    Add("_Empty", 1, 5);
    EXPECT_TRUE(CQVBaseFun::GetDefaultSysView(m_conn, name));
    EXPECT_STREQ(name, "_Empty");
    EXPECT_TRUE(CQVBaseFun::UpdateDefaultSysView(m_conn, "Company"));
    EXPECT_TRUE(CQVBaseFun::GetDefaultSysView(m_conn, name));
    EXPECT_STREQ(name, "Company");
    EXPECT_TRUE(CQVBaseFun::UpdateDefaultSysView(m_conn, "Again"));
    EXPECT_THAT(Rows("SELECT Col_Name FROM qv_View ORDER BY Col_ID"), ElementsAre("Company", "_Empty", "_Empty"));
    ExpectNoError();
}

TEST_P(ViewsOnAnEngine, TheSystemViewsAreCountedAndTestedFor)
{
    Add("Own", 2, 5);
    ExpectSystemViews(0);
    Add("Main");
    ExpectSystemViews(1);
    Add("Side", 1, 5);
    ExpectSystemViews(2);
    ExpectNoError();
}

TEST_P(ViewsOnAnEngine, TheSystemViewsAreListedAsRecords)
{
    const int id = Add("Main", 1, 5, 6);
    Add("Own", 2, 5);
    Execute("UPDATE qv_View SET Col_Description = 'd', Col_Style = 7, Col_Creator_Name = 'c', Col_IsPublic = 1");
    CObList views;
    EXPECT_TRUE(CQVBaseFun::LoadSysView(m_conn, views));
    ASSERT_EQ(views.GetCount(), 1);
    const auto& view = dynamic_cast<const CViewItem&>(*views.GetHead());
    EXPECT_EQ(view.m_nID, id);
    EXPECT_STREQ(view.m_strName, "Main");
    EXPECT_EQ(view.m_nType, 1);
    EXPECT_STREQ(view.m_strDescription, "d");
    EXPECT_EQ(view.m_nItemIndex, 6);
    EXPECT_EQ(view.m_nOwnerID, 0);
    EXPECT_EQ(view.m_nStyle, 0);
    EXPECT_STREQ(view.m_strCreatorName, "");
    EXPECT_FALSE(view.m_bIsPublic);
    CQVBaseFun::DetachHumanList(views);
    EXPECT_TRUE(views.IsEmpty());
    ExpectNoError();
}

TEST_P(ViewsOnAnEngine, ANameIsReadAndUpdatedById)
{
    const int id = Add("Main");
    const int other = Add("Side");
    EXPECT_TRUE(CQVBaseFun::UpdateViewName(m_conn, id, "n"));
    CString name;
    EXPECT_TRUE(CQVBaseFun::GetViewNameByID(m_conn, id, name));
    EXPECT_STREQ(name, "n");
    EXPECT_TRUE(CQVBaseFun::GetViewNameByID(m_conn, other, name));
    EXPECT_STREQ(name, "Side");
    EXPECT_TRUE(CQVBaseFun::GetViewNameByID(m_conn, 4711, name));
    EXPECT_STREQ(name, "");
    ExpectNoError();
}

TEST_P(ViewsOnAnEngine, AViewIsDeletedAndItsRelationsStay)
{
    const int id = Add("Main");
    Add("Side");
    CRelationItem relation;
    relation.m_nQvItemID = id;
    relation.m_nQvItemType = 4;
    EXPECT_EQ(relation.SaveData(m_conn), 1);
    EXPECT_TRUE(CQVBaseFun::DeleteViewItem(m_conn, id));
    EXPECT_TRUE(CQVBaseFun::DeleteViewItem(m_conn, 4711));
    EXPECT_THAT(Rows("SELECT Col_Name FROM qv_View"), ElementsAre("Side"));
    EXPECT_THAT(Rows("SELECT Col_QvItemID FROM qv_Relation"), SizeIs(1));
    ExpectNoError();
}

TEST_P(ViewsOnAnEngine, AQuoteIsRefusedByEveryOperationThatSendsIt)
{
    int id = 77;
    EXPECT_FALSE(CQVBaseFun::GetViewIDByName(m_conn, "o'n", 1, id));
    EXPECT_EQ(id, 0);
    EXPECT_EQ(CQVBaseFun::ExistViewName(m_conn, "o'n", 1), 0);
    EXPECT_FALSE(CQVBaseFun::UpdateViewName(m_conn, 1, "o'n"));
    EXPECT_FALSE(CQVBaseFun::UpdateDefaultSysView(m_conn, "o'n"));
    EXPECT_THAT(m_watch.messages, SizeIs(4));
    EXPECT_THAT(ErrorRecorder::Text(), EndsWith("AND Col_OwnerID = 0 AND Col_Name = '_Empty' "));
}

INSTANTIATE_TEST_SUITE_P(Engines, GroupsOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);
INSTANTIATE_TEST_SUITE_P(Engines, ViewsOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);

} // namespace
