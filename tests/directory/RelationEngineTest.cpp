#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "directory/HumanItem.h"
#include "directory/RelationItem.h"
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

// Every operation on relations, on every engine.

namespace {

constexpr int kUser = 1;
constexpr int kGroup = 2;
constexpr int kRole = 3;
constexpr int kView = 4;

const std::string kRelations = "SELECT Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, Col_RelType, "
                               "Col_Ref, Col_ViewID FROM qv_Relation";

class RelationsOnAnEngine : public engines::OnAnEngine {
protected:
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

    unsigned IdOf(const char* loginName)
    {
        int id = 0;
        EXPECT_TRUE(CQVBaseFun::GetHMIDByLoginName(m_conn, loginName, id));
        return static_cast<unsigned>(id);
    }

    bool IsMember(int holderID, int holderType, int id, int type)
    {
        bool exists = false;
        EXPECT_TRUE(CQVBaseFun::ExitMemberRelation(m_conn, holderID, holderType, id, type, exists));
        return exists;
    }

    std::size_t Count() { return Rows(kRelations).size(); }

    using Load = bool(CAConnect&, int, CUIntArray&, CStringArray&, CStringArray&);

    /// The login names that a list of arrays gives for holder 5, behind what was there.
    std::vector<std::string> Logins(Load* load)
    {
        CUIntArray ids;
        CStringArray logins;
        CStringArray names;
        EXPECT_TRUE(load(m_conn, 5, ids, logins, names));
        EXPECT_EQ(ids.GetSize(), logins.GetSize());
        EXPECT_EQ(names.GetSize(), logins.GetSize());
        for (int i = 0; i < logins.GetSize(); ++i) {
            EXPECT_EQ(ids[i], IdOf(logins[i]));
            EXPECT_EQ(names[i], "N-" + logins[i]);
        }
        return Copied(logins);
    }
};

class UsersOfHolders : public RelationsOnAnEngine {
protected:
    // Amy is in group 5, Bob twice; Cid is tied to it otherwise; Dan is in view 5, Eve in role 5, a group of Eve's id
    // in group 5 and in view 5.
    UsersOfHolders()
    {
        for (const char* login : {"amy", "bob", "cid", "dan", "eve"}) {
            EXPECT_TRUE(CQVBaseFun::InsertUser(m_conn, login, CString("N-") + login));
        }
        Relate(5, kGroup, Id("amy"), kUser);
        Relate(5, kGroup, Id("bob"), kUser);
        Relate(5, kGroup, Id("bob"), kUser);
        Relate(5, kGroup, Id("cid"), kUser, 2);
        Relate(5, kView, Id("dan"), kUser);
        Relate(5, kView, Id("cid"), kUser, 2);
        Relate(5, kRole, Id("eve"), kUser);
        Relate(5, kGroup, Id("eve"), kGroup);
        Relate(5, kView, Id("eve"), kGroup);
        Relate(6, kGroup, Id("eve"), kUser);
        Relate(6, kView, Id("eve"), kUser);
    }

    int Id(const char* loginName) { return static_cast<int>(IdOf(loginName)); }
};

TEST_P(UsersOfHolders, AreListedByNamesOncePerMembership)
{
    EXPECT_THAT(Logins(&CQVBaseFun::LoadGroupUser), UnorderedElementsAre("amy", "bob", "bob"));
    EXPECT_THAT(Logins(&CQVBaseFun::LoadViewUser), UnorderedElementsAre("dan"));
    ExpectNoError();
}

TEST_P(UsersOfHolders, AreListedAsRecordsWithWhatAListShows)
{
    Execute("UPDATE qv_User SET Col_Sex = 2, Col_Mobile = 'm', Col_EMail = 'e', Col_DeptInfo = 'd', Col_o_JobTitle = "
            "'t', Col_Disabled = 1, Col_Note = 'hidden'");
    CObList users;
    users.AddTail(nullptr);
    EXPECT_TRUE(CQVBaseFun::LoadViewUser(m_conn, 5, users));
    ASSERT_EQ(users.GetCount(), 2);
    const auto& dan = dynamic_cast<const CHumanItem&>(*users.GetTail());
    EXPECT_EQ(dan.m_nID, Id("dan"));
    EXPECT_STREQ(dan.m_strLoginName, "dan");
    EXPECT_STREQ(dan.m_strName, "N-dan");
    EXPECT_EQ(dan.m_nSex, 2);
    EXPECT_STREQ(dan.m_strMobile, "m");
    EXPECT_STREQ(dan.m_strEMail, "e");
    EXPECT_STREQ(dan.m_strDeptInfo, "d");
    EXPECT_STREQ(dan.m_strJobTitle, "t");
    EXPECT_TRUE(dan.m_bDisabled);
    EXPECT_STREQ(dan.m_strNote, "");
    EXPECT_TRUE(CQVBaseFun::LoadGroupUser(m_conn, 5, users));
    EXPECT_EQ(users.GetCount(), 5);
    CQVBaseFun::DetachHumanList(users);
    ExpectNoError();
}

TEST_P(UsersOfHolders, OthersAreListedWhateverElseTiesThem)
{
    EXPECT_THAT(Logins(&CQVBaseFun::LoadUserNotInGroup), UnorderedElementsAre("cid", "dan", "eve"));
    EXPECT_THAT(Logins(&CQVBaseFun::LoadUserNotInView), UnorderedElementsAre("amy", "bob", "cid", "eve"));
    CUIntArray ids;
    CStringArray logins;
    CStringArray names;
    EXPECT_TRUE(CQVBaseFun::LoadUserNotIn(m_conn, 5, kRole, ids, logins, names));
    EXPECT_THAT(Copied(logins), UnorderedElementsAre("amy", "bob", "cid", "dan"));
    ExpectNoError();
}

TEST_P(UsersOfHolders, AreAllOthersOfAHolderWithoutMembers)
{
    CUIntArray ids;
    CStringArray logins;
    CStringArray names;
    EXPECT_TRUE(CQVBaseFun::LoadUserNotInGroup(m_conn, 4711, ids, logins, names));
    EXPECT_EQ(ids.GetSize(), 5);
    EXPECT_TRUE(CQVBaseFun::LoadGroupUser(m_conn, 4711, ids, logins, names));
    EXPECT_EQ(ids.GetSize(), 5);
    ExpectNoError();
}

// ---- Links -------------------------------------------------------------------------------------------------------

TEST_P(RelationsOnAnEngine, ARecordIsSavedAsOftenAsAskedAndDeletedByAllButItsView)
{
    CRelationItem item;
    item.m_nQvItemID = 1;
    item.m_nQvItemType = 2;
    item.m_nDQvItemID = 3;
    item.m_nDQvItemType = 4;
    item.m_nRelType = 5;
    item.m_nRef = 6;
    item.m_nViewID = 7;
    EXPECT_EQ(item.SaveData(m_conn), 1);
    EXPECT_EQ(item.SaveData(m_conn), 1);
    EXPECT_THAT(Rows(kRelations), ElementsAre("1|2|3|4|5|6|7", "1|2|3|4|5|6|7"));
    for (int CRelationItem::* member :
         {&CRelationItem::m_nQvItemID, &CRelationItem::m_nQvItemType, &CRelationItem::m_nDQvItemID,
          &CRelationItem::m_nDQvItemType, &CRelationItem::m_nRelType, &CRelationItem::m_nRef}) {
        ++(item.*member);
        EXPECT_EQ(item.DelData(m_conn), 1);
        EXPECT_EQ(Count(), 2U);
        --(item.*member);
    }
    item.m_nViewID = 99;
    EXPECT_EQ(item.DelData(m_conn), 1);
    EXPECT_EQ(Count(), 0U);
    ExpectNoError();
}

TEST_P(RelationsOnAnEngine, TheDirectMembersAreListed)
{
    Relate(5, kView, 11, kUser);
    Relate(5, kView, 21, kGroup);
    Relate(21, kGroup, 12, kUser);
    Relate(5, kView, 13, kUser, 2);
    Relate(5, kGroup, 14, kUser);
    CUIntArray ids;
    CUIntArray types;
    ids.Add(9);
    types.Add(9);
    EXPECT_TRUE(CQVBaseFun::LoadSubMember(m_conn, 5, kView, ids, types));
    ASSERT_EQ(ids.GetSize(), types.GetSize());
    std::vector<std::string> members;
    for (int i = 0; i < ids.GetSize(); ++i) {
        members.push_back(std::to_string(ids[i]) + "|" + std::to_string(types[i]));
    }
    EXPECT_EQ(members.front(), "9|9");
    EXPECT_THAT(members, UnorderedElementsAre("9|9", "11|1", "21|2"));
    ExpectNoError();
}

TEST_P(RelationsOnAnEngine, AMembershipIsTestedForInItsDirectionAndTypeOnly)
{
    Relate(5, kGroup, 11, kUser);
    Relate(6, kGroup, 11, kUser, 2);
    EXPECT_TRUE(IsMember(5, kGroup, 11, kUser));
    EXPECT_FALSE(IsMember(6, kGroup, 11, kUser));
    EXPECT_FALSE(IsMember(11, kUser, 5, kGroup));
    EXPECT_FALSE(IsMember(5, kView, 11, kUser));
    EXPECT_FALSE(IsMember(5, kGroup, 11, kGroup));
    EXPECT_FALSE(IsMember(5, kGroup, 12, kUser));
    ExpectNoError();
}

TEST_P(RelationsOnAnEngine, OneDeleteTakesTheMembershipsTheOtherEveryRelation)
{
    for (const int relation : {1, 1, 2, 3}) {
        Relate(5, kGroup, 11, kUser, relation);
    }
    Relate(5, kGroup, 12, kUser);
    Relate(5, kView, 11, kUser);
    Relate(5, kGroup, 11, kGroup);
    EXPECT_TRUE(CQVBaseFun::DeleteRelation(m_conn, 5, kGroup, 11, kUser));
    EXPECT_EQ(Count(), 5U);
    EXPECT_FALSE(IsMember(5, kGroup, 11, kUser));
    EXPECT_TRUE(CQVBaseFun::DelRelation(m_conn, 5, kGroup, 11, kUser));
    EXPECT_THAT(Rows(kRelations), UnorderedElementsAre("5|2|12|1|1|0|0", "5|4|11|1|1|0|0", "5|2|11|2|1|0|0"));
    EXPECT_TRUE(CQVBaseFun::DelRelation(m_conn, 5, kGroup, 4711, kUser));
    EXPECT_EQ(Count(), 3U);
    ExpectNoError();
}

TEST_P(RelationsOnAnEngine, TheRelationsOfAnItemAreDeletedOnEitherSide)
{
    Relate(5, kGroup, 11, kUser);
    Relate(5, kGroup, 12, kUser, 2);
    Relate(5, kView, 11, kUser);
    Relate(6, kView, 5, kGroup);
    Relate(7, kView, 5, kGroup, 2);
    Relate(6, kView, 5, kUser);
    EXPECT_TRUE(CQVBaseFun::DelRelationByQvItem(m_conn, 5, kGroup));
    EXPECT_EQ(Count(), 4U);
    EXPECT_EQ(CQVBaseFun::DelRelationByDQVItem(m_conn, 5, kGroup), 2);
    EXPECT_THAT(Rows(kRelations), UnorderedElementsAre("5|4|11|1|1|0|0", "6|4|5|1|1|0|0"));
    EXPECT_EQ(CQVBaseFun::DelRelationByDQVItem(m_conn, 5, kGroup), 0);
    ExpectNoError();
}

TEST_P(RelationsOnAnEngine, AViewIsStampedOntoTheUserLinksAtEveryDepthAndNoOthers)
{
    Relate(5, kView, 11, kUser);
    Relate(5, kView, 21, kGroup);
    Relate(21, kGroup, 12, kUser);
    Relate(21, kGroup, 22, kGroup);
    Relate(22, kGroup, 23, kGroup);
    Relate(23, kGroup, 13, kUser);
    Relate(5, kView, 31, kRole);
    Relate(31, kRole, 14, kUser);
    Relate(6, kView, 11, kUser);
    Relate(5, kView, 15, kUser, 2);
    Relate(21, kView, 16, kUser);
    EXPECT_TRUE(CQVBaseFun::UpdateRelationViewID(m_conn, 5, kView, 77));
    EXPECT_THAT(Rows("SELECT Col_QvItemID, Col_DQvItemID FROM qv_Relation WHERE Col_ViewID = 77"),
                UnorderedElementsAre("5|11", "21|12", "23|13"));
    EXPECT_THAT(Rows("SELECT Col_QvItemID FROM qv_Relation WHERE Col_ViewID = 0"), SizeIs(8));
    EXPECT_TRUE(CQVBaseFun::UpdateRelationViewID(m_conn, 4711, kView, 88));
    EXPECT_THAT(Rows("SELECT Col_QvItemID FROM qv_Relation WHERE Col_ViewID = 88"), IsEmpty());
    ExpectNoError();
}

// Once a user is a member, the stamp goes by the two items, whatever their relation.
TEST_P(RelationsOnAnEngine, AStampMarksEveryRelationBetweenAMemberAndItsHolder)
{
    Relate(5, kView, 11, kUser);
    Relate(5, kView, 11, kUser, 2);
    EXPECT_TRUE(CQVBaseFun::UpdateRelationViewID(m_conn, 5, kView, 77));
    EXPECT_THAT(Rows(kRelations), UnorderedElementsAre("5|4|11|1|1|0|77", "5|4|11|1|2|0|77"));
}

INSTANTIATE_TEST_SUITE_P(Engines, RelationsOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);
INSTANTIATE_TEST_SUITE_P(Engines, UsersOfHolders, testing::ValuesIn(engines::All()), engines::NameOf);

} // namespace
