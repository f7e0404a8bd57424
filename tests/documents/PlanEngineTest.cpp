#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "directory/RelationItem.h"
#include "tests/directory/Engines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using engines::Copied;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

// Every operation on backup plans and the document log, on every engine.

namespace {

class PlansOnAnEngine : public engines::OnAnEngine {
protected:
    int Add(const char* name)
    {
        EXPECT_TRUE(CQVBaseFun::InsertBackupPlanInfo(m_conn, name, CString("D-") + name, CString("S-") + name));
        int id = 0;
        EXPECT_TRUE(CQVBaseFun::GetBackupPlanID(m_conn, name, id));
        return id;
    }

    void Join(int groupID, int memberID, int memberType)
    {
        CRelationItem item;
        item.m_nQvItemID = groupID;
        item.m_nQvItemType = 2;
        item.m_nDQvItemID = memberID;
        item.m_nDQvItemType = memberType;
        EXPECT_EQ(item.SaveData(m_conn), 1);
    }

    std::vector<std::string> Assigned()
    {
        return Rows("SELECT Col_QvItem_Type, Col_QvItem_ID, Col_PlanID FROM Tab_Doc_Backup_Rel ORDER BY Col_ID");
    }
};

TEST_P(PlansOnAnEngine, APlanIsAddedFoundChangedAndDeleted)
{
    int id = 77;
    EXPECT_TRUE(CQVBaseFun::GetBackupPlanID(m_conn, "nightly", id));
    EXPECT_EQ(id, 77);
    bool exists = true;
    EXPECT_TRUE(CQVBaseFun::ExistBackupPlan(m_conn, "nightly", exists));
    EXPECT_FALSE(exists);
    id = Add("nightly");
    const int other = Add("weekly");
    EXPECT_TRUE(CQVBaseFun::ExistBackupPlan(m_conn, "nightly", exists));
    EXPECT_TRUE(exists);
    CString data = "before";
    EXPECT_TRUE(CQVBaseFun::GetFileBackPlanInfo(m_conn, 4711, data));
    EXPECT_STREQ(data, "before");
    EXPECT_TRUE(CQVBaseFun::GetFileBackPlanInfo(m_conn, id, data));
    EXPECT_STREQ(data, "S-nightly");
    EXPECT_TRUE(CQVBaseFun::UpdateBackupPlanInfo(m_conn, id, "daily", Given(R"(d\)"), "s"));
    CUIntArray ids;
    CStringArray names;
    CStringArray descriptions;
    EXPECT_TRUE(CQVBaseFun::LoadFileBackPlan(m_conn, ids, names, descriptions));
    EXPECT_THAT(Copied(names), UnorderedElementsAre("daily", "weekly"));
    EXPECT_THAT(Copied(descriptions), UnorderedElementsAre(R"(d\)", "D-weekly"));
    EXPECT_TRUE(CQVBaseFun::DeleteBackupPlan(m_conn, id));
    CUIntArray left;
    EXPECT_TRUE(CQVBaseFun::LoadFileBackPlan(m_conn, left, names));
    EXPECT_THAT(Copied(left), ElementsAre(static_cast<unsigned>(other)));
    ExpectNoError();
}

TEST_P(PlansOnAnEngine, PlansOfAnItemAreListedByThePlanOrByTheRowsOwnId)
{
    const int first = Add("first");
    const int second = Add("second");
    const int third = Add("third");
    EXPECT_TRUE(CQVBaseFun::InsertFileBackPlan(m_conn, 1, 41, third));
    EXPECT_TRUE(CQVBaseFun::InsertFileBackPlan(m_conn, 2, 41, second));
    EXPECT_TRUE(CQVBaseFun::InsertFileBackPlan(m_conn, 1, 42, first));
    CUIntArray ids;
    CStringArray names;
    CStringArray descriptions;
    EXPECT_TRUE(CQVBaseFun::LoadItemFileBackPlanInfo(m_conn, 41, 1, ids, names, descriptions));
    EXPECT_THAT(Copied(ids), ElementsAre(static_cast<unsigned>(third)));
    EXPECT_THAT(Copied(descriptions), ElementsAre("D-third"));
    // The row's own id is 1, and so is the first plan's.
    CUIntArray byRow;
    EXPECT_TRUE(CQVBaseFun::LoadItemFileBackPlanInfo(m_conn, 41, 1, byRow, names));
    EXPECT_THAT(Copied(byRow), ElementsAre(static_cast<unsigned>(first)));
    EXPECT_THAT(Copied(names), ElementsAre("third", "first"));
    ExpectNoError();
}

TEST_P(PlansOnAnEngine, AnAssignmentIsFoundDoubledAndTaken)
{
    bool exists = true;
    EXPECT_TRUE(CQVBaseFun::ExistItemFileBackPlanRel(m_conn, 1, 41, 7, exists));
    EXPECT_FALSE(exists);
    EXPECT_TRUE(CQVBaseFun::InsertFileBackPlan(m_conn, 1, 41, 7));
    EXPECT_TRUE(CQVBaseFun::InsertFileBackPlan(m_conn, 1, 41, 7));
    EXPECT_TRUE(CQVBaseFun::InsertFileBackPlan(m_conn, 1, 41, 8));
    EXPECT_TRUE(CQVBaseFun::ExistItemFileBackPlanRel(m_conn, 1, 41, 7, exists));
    EXPECT_TRUE(exists);
    EXPECT_TRUE(CQVBaseFun::ExistItemFileBackPlanRel(m_conn, 41, 1, 7, exists));
    EXPECT_FALSE(exists);
    EXPECT_TRUE(CQVBaseFun::DeleteBackupRel(m_conn, 2)); // a row's own id
    EXPECT_THAT(Assigned(), ElementsAre("1|41|7", "1|41|8"));
    EXPECT_TRUE(CQVBaseFun::DeleteFileBackPlan(m_conn, 1, 41, 7));
    EXPECT_THAT(Assigned(), ElementsAre("1|41|8"));
    ExpectNoError();
}

TEST_P(PlansOnAnEngine, AGroupBringsItsGroupsAndUsersAlongAndTwiceOnRequest)
{
    Join(10, 12, 2);
    Join(12, 13, 1);
    Join(12, 14, 1);
    Join(10, 15, 4); // neither user nor group
    EXPECT_TRUE(CQVBaseFun::InsertGroupFileBackPlan(m_conn, 10, 7));
    EXPECT_THAT(Assigned(), ElementsAre("2|10|7", "2|12|7", "1|13|7", "1|14|7"));
    EXPECT_TRUE(CQVBaseFun::InsertGroupFileBackPlan(m_conn, 12, 7));
    EXPECT_THAT(Assigned(), ElementsAre("2|10|7", "2|12|7", "1|13|7", "1|14|7", "2|12|7", "1|13|7", "1|14|7"));
    EXPECT_TRUE(CQVBaseFun::InsertGroupFileBackPlan(m_conn, 99, 7)); // of no members
    EXPECT_THAT(Assigned(), testing::Contains("2|99|7"));

    Execute("DELETE FROM qv_Relation WHERE Col_DQvItemID = 14");
    EXPECT_TRUE(CQVBaseFun::DeleteGroupFileBackPlan(m_conn, 10, 7));
    EXPECT_THAT(Assigned(), ElementsAre("1|14|7", "1|14|7", "2|99|7")); // 14 has left the group
    ExpectNoError();
}

TEST_P(PlansOnAnEngine, TheLogTakesEveryTextAndItsOwnGenre)
{
    EXPECT_TRUE(CQVBaseFun::InsertDocLog(m_conn, 105, 7, Given(R"(opened\ é)"), "open", 41, "Amy"));
    EXPECT_THAT(Rows("SELECT Col_Content, Col_Type, Col_R_ClassID, Col_R_ObjID, Col_Creator_ID, Col_Creator_Name, "
                     "Col_Genre FROM Tab_Doc_Log"),
                ElementsAre(R"(opened\ é|open|105|7|41|Amy|KelDoc)"));
    EXPECT_FALSE(CQVBaseFun::InsertDocLog(m_conn, 105, 7, "o'c", "open", 41, "Amy"));
    EXPECT_THAT(Rows("SELECT Col_Content FROM Tab_Doc_Log"), testing::SizeIs(1));
}

INSTANTIATE_TEST_SUITE_P(Engines, PlansOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);

} // namespace
