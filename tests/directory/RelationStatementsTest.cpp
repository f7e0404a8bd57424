#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "directory/RelationItem.h"
#include "tests/directory/StatementCase.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace relation_statements {

using statements::ExpectTable;
using statements::kAllKinds;
using statements::Read;
using statements::StatementCase;
using statements::Write;

namespace {

// No two arguments of a call are the same, so that an exchange shows.

struct Outputs {
    bool flag = false;
    CObList list;
    CUIntArray ids;
    CUIntArray types;
    CStringArray logins;
    CStringArray names;
};

std::vector<StatementCase> Users()
{
    return {
        {"LoadGroupUser into records", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadGroupUser(conn, 501, out.list);
         },
         Read("SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name, qv_User.Col_Sex, qv_User.Col_Mobile, "
              "qv_User.Col_EMail, qv_User.Col_DeptInfo, qv_User.Col_o_JobTitle, qv_User.Col_Disabled FROM "
              "qv_User,qv_Relation WHERE qv_Relation.Col_QvItemType = 2 AND qv_Relation.Col_QvItemID = 501 AND "
              "qv_Relation.Col_DQvItemType = 1 AND qv_Relation.Col_DQvItemID = qv_User.Col_ID AND "
              "qv_Relation.Col_RelType = 1")},
        {"LoadGroupUser into arrays", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadGroupUser(conn, 501, out.ids, out.logins, out.names);
         },
         Read("SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name FROM qv_User,qv_Relation WHERE "
              "qv_Relation.Col_QvItemType = 2 AND qv_Relation.Col_QvItemID = 501 AND qv_Relation.Col_DQvItemType = 1 "
              "AND qv_Relation.Col_DQvItemID = qv_User.Col_ID AND qv_Relation.Col_RelType = 1 ")},
        {"LoadViewUser into records", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadViewUser(conn, 501, out.list);
         },
         Read("SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name, qv_User.Col_Sex, qv_User.Col_Mobile, "
              "qv_User.Col_EMail, qv_User.Col_DeptInfo, qv_User.Col_o_JobTitle, qv_User.Col_Disabled FROM "
              "qv_User,qv_Relation WHERE qv_Relation.Col_QvItemType = 4 AND qv_Relation.Col_QvItemID = 501 AND "
              "qv_Relation.Col_DQvItemType = 1 AND qv_Relation.Col_DQvItemID = qv_User.Col_ID AND "
              "qv_Relation.Col_RelType = 1")},
        {"LoadViewUser into arrays", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadViewUser(conn, 501, out.ids, out.logins, out.names);
         },
         Read("SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name FROM qv_User,qv_Relation WHERE "
              "qv_Relation.Col_QvItemType = 4 AND qv_Relation.Col_QvItemID = 501 AND qv_Relation.Col_DQvItemType = 1 "
              "AND qv_Relation.Col_DQvItemID = qv_User.Col_ID AND qv_Relation.Col_RelType = 1")},
        {"LoadUserNotInGroup", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadUserNotInGroup(conn, 501, out.ids, out.logins, out.names);
         },
         Read("SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name FROM qv_User WHERE qv_User.Col_ID NOT IN "
              "(SELECT qv_Relation.Col_DQvItemID FROM qv_Relation WHERE qv_Relation.Col_DQvItemType = 1 AND "
              "qv_Relation.Col_QvItemID = 501 AND qv_Relation.Col_QvItemType = 2 AND qv_Relation.Col_RelType = 1)")},
        {"LoadUserNotInView", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadUserNotInView(conn, 501, out.ids, out.logins, out.names);
         },
         Read("SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name FROM qv_User WHERE qv_User.Col_ID NOT IN "
              "(SELECT qv_Relation.Col_DqvItemID FROM qv_Relation WHERE qv_Relation.Col_DQvItemType = 1 AND "
              "qv_Relation.Col_QvItemID = 501 AND qv_Relation.Col_QvItemType = 4 AND qv_Relation.Col_RelType = 1)")},
        {"LoadUserNotIn", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadUserNotIn(conn, 501, 602, out.ids, out.logins, out.names);
         },
         Read("SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name FROM qv_User WHERE qv_User.Col_ID NOT IN "
              "(SELECT qv_Relation.Col_DqvItemID FROM qv_Relation WHERE qv_Relation.Col_DQvItemType = 1 AND "
              "qv_Relation.Col_QvItemID = 501 AND qv_Relation.Col_QvItemType = 602 AND qv_Relation.Col_RelType = 1)")},
    };
}

std::vector<StatementCase> Links()
{
    return {
        {"LoadSubMember", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadSubMember(conn, 501, 602, out.ids, out.types);
         },
         Read("SELECT Col_DQvItemID, Col_DQvItemType FROM qv_Relation WHERE Col_QvItemID = 501 AND Col_QvItemType = "
              "602 AND Col_RelType = 1 ")},
        {"ExitMemberRelation", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExitMemberRelation(conn, 501, 602, 703, 804, out.flag);
         },
         Read("SELECT Col_QvItemID FROM qv_Relation WHERE Col_QvItemID = 501 AND Col_QvItemType = 602 AND "
              "Col_DQvItemID = 703 AND Col_DQvItemType = 804 AND Col_RelType = 1 ")},
        {"DeleteRelation", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteRelation(conn, 501, 602, 703, 804); },
         Write("DELETE FROM qv_Relation WHERE Col_QvItemID = 501 AND Col_QvItemType = 602 AND Col_DQvItemID = 703 AND "
               "Col_DQvItemType = 804 AND Col_RelType = 1")},
        {"DelRelation", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DelRelation(conn, 501, 602, 703, 804); },
         Write("DELETE FROM qv_Relation WHERE Col_QvItemID = 501 AND Col_QvItemType = 602 AND Col_DQvItemID = 703 AND "
               "Col_DQvItemType = 804")},
        {"DelRelationByQvItem", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DelRelationByQvItem(conn, 501, 602); },
         Write("DELETE FROM qv_Relation WHERE Col_QvItemID = 501 AND Col_QvItemType = 602")},
        {"DelRelationByDQVItem", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DelRelationByDQVItem(conn, 501, 602); },
         Write("DELETE FROM qv_Relation WHERE Col_DQvItemID = 501 AND Col_DQvItemType = 602")},
        {"UpdateRelationViewID of an item without members", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::UpdateRelationViewID(conn, 501, 602, 703); },
         Read("SELECT Col_DQvItemID, Col_DQvItemType FROM qv_Relation WHERE Col_QvItemID = 501 AND Col_QvItemType = "
              "602 AND Col_RelType = 1 ")},
    };
}

void Fill(CRelationItem& item)
{
    item.m_nQvItemID = 1001;
    item.m_nQvItemType = 1002;
    item.m_nDQvItemID = 1003;
    item.m_nDQvItemType = 1004;
    item.m_nRelType = 1005;
    item.m_nRef = 1006;
    item.m_nViewID = 1007;
}

std::vector<StatementCase> Records()
{
    return {
        {"CRelationItem::SaveData", kAllKinds,
         [](CAConnect& conn) {
             CRelationItem item;
             Fill(item);
             item.SaveData(conn);
         },
         Write("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, Col_RelType, "
               "Col_Ref, Col_ViewID ) VALUES (1001,1002,1003,1004,1005,1006,1007 )")},
        {"CRelationItem::DelData", kAllKinds,
         [](CAConnect& conn) {
             CRelationItem item;
             Fill(item);
             item.DelData(conn);
         },
         Write("DELETE FROM qv_Relation WHERE Col_QvItemID = 1001 AND Col_QvItemType = 1002 AND Col_DQvItemID = 1003 "
               "AND Col_DQvItemType = 1004 AND Col_RelType = 1005 AND Col_Ref = 1006")},
    };
}

TEST(RelationStatements, ListsOfUsersSendTheirTextsByteForByte) { ExpectTable(Users()); }

TEST(RelationStatements, LinksSendTheirTextsByteForByte) { ExpectTable(Links()); }

TEST(RelationStatements, TheRecordSendsItsTextsByteForByte) { ExpectTable(Records()); }

TEST(RelationStatements, TheWalkOverATreeReadsEveryGroupAndStampsEveryUserInTheOrderOfTheMembers)
{
    scripted::Database database;
    CAConnect conn;
    database.Connect(conn);
    // View 501: user 11, group 21 with user 12, role 31, view 41, user 13.
    database.Answer(scripted::Rows({{"11", "1"}, {"21", "2"}, {"31", "3"}, {"41", "4"}, {"13", "1"}}));
    database.Answer(scripted::Rows({}));
    database.Answer(scripted::Rows({{"12", "1"}}));
    CQVBaseFun::UpdateRelationViewID(conn, 501, 4, 703);
    EXPECT_EQ(database.queries,
              (std::vector<std::string>{"SELECT Col_DQvItemID, Col_DQvItemType FROM qv_Relation WHERE Col_QvItemID = "
                                        "501 AND Col_QvItemType = 4 AND Col_RelType = 1 ",
                                        "SELECT Col_DQvItemID, Col_DQvItemType FROM qv_Relation WHERE Col_QvItemID = "
                                        "21 AND Col_QvItemType = 2 AND Col_RelType = 1 "}));
    EXPECT_EQ(database.executions,
              (std::vector<std::string>{"UPDATE qv_Relation SET Col_ViewID = 703 WHERE Col_QvItemID = 501 AND "
                                        "Col_QvItemType = 4 AND Col_DQvItemID = 11 AND Col_DQvItemType = 1",
                                        "UPDATE qv_Relation SET Col_ViewID = 703 WHERE Col_QvItemID = 21 AND "
                                        "Col_QvItemType = 2 AND Col_DQvItemID = 12 AND Col_DQvItemType = 1",
                                        "UPDATE qv_Relation SET Col_ViewID = 703 WHERE Col_QvItemID = 501 AND "
                                        "Col_QvItemType = 4 AND Col_DQvItemID = 13 AND Col_DQvItemType = 1"}));
}

} // namespace

} // namespace relation_statements
