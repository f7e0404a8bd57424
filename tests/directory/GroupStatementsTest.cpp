#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "directory/GroupItem.h"
#include "directory/ViewItem.h"
#include "tests/directory/StatementCase.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace group_statements {

using statements::ExpectTable;
using statements::kAllKinds;
using statements::Read;
using statements::StatementCase;
using statements::Write;

namespace {

// Every text holds a quote and a backslash, so that what is doubled shows; no two arguments of a call are the same, so
// that an exchange shows.

struct Outputs {
    int id = 0;
    int index = 0;
    bool flag = false;
    CString name;
    CString text;
    CObList list;
    CUIntArray ids;
    CStringArray names;
};

std::vector<StatementCase> Groups()
{
    return {
        {"GetGroupIDByName", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetGroupIDByName(conn, R"(na'm\e)", out.id);
         },
         Read("SELECT MAX(Col_ID) FROM qv_Group")},
        {"GetGroupIDByNameAndOwner", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetGroupIDByNameAndOwner(conn, R"(na'm\e)", out.id, 501);
         },
         Read("SELECT qv_Group.Col_ID FROM qv_Group,QV_RELATION WHERE qv_Group.Col_Name = 'na'm\\e' AND "
              "QV_RELATION.COL_QVITEMID = 501 AND QV_RELATION.COL_DQVITEMID = qv_Group.Col_ID")},
        {"ExistGroupName anywhere",
         {0, 1, 6},
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistGroupName(conn, R"(na'm\e)", out.flag);
         },
         Read(R"(SELECT Col_Name FROM qv_Group WHERE Col_Name = 'na'm\e')")},
        {"ExistGroupName anywhere",
         {3},
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistGroupName(conn, R"(na'm\e)", out.flag);
         },
         Read(R"(SELECT Col_Name FROM qv_Group WHERE upper(Col_Name) = upper('na'm\e'))")},
        {"ExistGroupName under a parent",
         {0, 1, 6},
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistGroupName(conn, R"(na'm\e)", 501, 602, out.flag);
         },
         Read("SELECT qv_Group.Col_Name FROM qv_Group, qv_Relation WHERE qv_Group.Col_Name = 'na'm\\e' AND "
              "qv_Group.Col_ID = qv_Relation.Col_DQvItemID AND qv_Relation.Col_QvItemID = 501 AND "
              "qv_Relation.Col_QvItemType = 602 AND Col_DQvItemType = 2 AND Col_RelType = 1 ")},
        {"ExistGroupName under a parent",
         {3},
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistGroupName(conn, R"(na'm\e)", 501, 602, out.flag);
         },
         Read("SELECT qv_Group.Col_Name FROM qv_Group, qv_Relation WHERE upper(qv_Group.Col_Name) = upper('na'm\\e') "
              "AND qv_Group.Col_ID = qv_Relation.Col_DQvItemID AND qv_Relation.Col_QvItemID = 501 AND "
              "qv_Relation.Col_QvItemType = 602 AND Col_DQvItemType = 2 AND Col_RelType = 1 ")},
        {"ExistGroupName for its id",
         {0, 1, 6},
         [](CAConnect& conn) { CQVBaseFun::ExistGroupName(conn, R"(na'm\e)", 501, 602); },
         Read("SELECT qv_Group.Col_ID FROM qv_Group, qv_Relation WHERE qv_Group.Col_Name = 'na'm\\e' AND "
              "qv_Group.Col_ID = qv_Relation.Col_DQvItemID AND qv_Relation.Col_QvItemID = 501 AND "
              "qv_Relation.Col_QvItemType = 602 AND Col_DQvItemType = 2 AND Col_RelType = 1 ")},
        {"ExistGroupName for its id",
         {3},
         [](CAConnect& conn) { CQVBaseFun::ExistGroupName(conn, R"(na'm\e)", 501, 602); },
         Read("SELECT qv_Group.Col_ID FROM qv_Group, qv_Relation WHERE upper(qv_Group.Col_Name) = upper('na'm\\e') AND "
              "qv_Group.Col_ID = qv_Relation.Col_DQvItemID AND qv_Relation.Col_QvItemID = 501 AND "
              "qv_Relation.Col_QvItemType = 602 AND Col_DQvItemType = 2 AND Col_RelType = 1 ")},
        {"LoadGroup", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadGroup(conn, 501, 602, out.ids, out.names);
         },
         Read("SELECT qv_Group.Col_ID, qv_Group.Col_Name FROM qv_Group,qv_Relation WHERE qv_Relation.Col_DQvItemID = "
              "qv_Group.Col_ID AND qv_Relation.Col_DQvItemType=2 AND qv_Relation.Col_QvItemID = 501 AND "
              "qv_Relation.Col_QvItemType = 602 AND qv_Relation.Col_RelType = 1 ORDER BY qv_Group.Col_ItemIndex, "
              "qv_Group.Col_Name")},
        {"LoadGroupInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadGroupInfo(conn, 501, out.name, out.index, out.text);
         },
         Read("SELECT Col_Name, Col_ItemIndex, Col_Description FROM qv_Group WHERE Col_ID = 501")},
        {"UpdateGroupInfo", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::UpdateGroupInfo(conn, 501, R"(na'm\e)", 602, R"(de's\c)"); },
         Write(" UPDATE qv_Group SET Col_Name = 'na'm\\e', Col_Description = 'de's\\c', Col_ItemIndex = 602 WHERE "
               "Col_ID = 501")},
        {"GetGroupStyle", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetGroupStyle(conn, 501, out.index);
         },
         Read("SELECT Col_Style FROM qv_Group WHERE Col_ID = 501")},
        {"UpdateGroupStyle", kAllKinds, [](CAConnect& conn) { CQVBaseFun::UpdateGroupStyle(conn, 501, -602); },
         Write("UPDATE qv_Group SET Col_Style = -602 WHERE Col_ID = 501")},
        {"DelGroupItemByID", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DelGroupItemByID(conn, 501); },
         Write("DELETE FROM qv_Group WHERE Col_ID = 501")},
    };
}

std::vector<StatementCase> Views()
{
    return {
        {"GetViewIDByName", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetViewIDByName(conn, R"(na'm\e)", 602, out.id);
         },
         Read(R"(SELECT Col_ID FROM qv_View WHERE Col_Name = 'na'm\e' AND Col_Type = 602)")},
        {"ExistViewName",
         {0, 1, 6},
         [](CAConnect& conn) { CQVBaseFun::ExistViewName(conn, R"(na'm\e)", 602); },
         Read(R"(SELECT Col_ID FROM qv_View WHERE Col_Name = 'na'm\e' AND Col_Type = 602)")},
        {"ExistViewName",
         {3},
         [](CAConnect& conn) { CQVBaseFun::ExistViewName(conn, R"(na'm\e)", 602); },
         Read(R"(SELECT Col_ID FROM qv_View WHERE upper(Col_Name) = upper('na'm\e') AND Col_Type = 602)")},
        {"LoadView", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadView(conn, out.ids, out.names, 602);
         },
         Read("SELECT Col_ID, Col_Name FROM qv_View WHERE Col_Type = 602 ORDER BY Col_ItemIndex, Col_Name")},
        {"LoadViewbyUserID", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadViewbyUserID(conn, 501, out.ids, out.names, 602, false);
         },
         Read("SELECT Col_ID, Col_Name FROM qv_View WHERE Col_OwnerID = 501 AND Col_Type = 602 ORDER BY Col_ItemIndex, "
              "Col_Name")},
        {"LoadSysView", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadSysView(conn, out.list);
         },
         Read("SELECT Col_ID, Col_Name, Col_Description, Col_ItemIndex FROM qv_View WHERE Col_Type = 1")},
        {"GetViewNameByID", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetViewNameByID(conn, 501, out.name);
         },
         Read("SELECT Col_Name FROM qv_View WHERE Col_ID = 501")},
        {"UpdateViewName", kAllKinds, [](CAConnect& conn) { CQVBaseFun::UpdateViewName(conn, 501, R"(na'm\e)"); },
         Write(R"(UPDATE qv_View SET Col_Name = 'na'm\e' WHERE Col_ID = 501)")},
        {"GetDefaultSysView", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetDefaultSysView(conn, out.name);
         },
         Read("SELECT Col_Name FROM qv_View WHERE Col_Type = 1 AND Col_OwnerID = 0 ")},
        {"UpdateDefaultSysView", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::UpdateDefaultSysView(conn, R"(na'm\e)"); },
         Write("UPDATE qv_View SET Col_Name = 'na'm\\e' WHERE Col_Type = 1 AND Col_OwnerID = 0 AND Col_Name = "
               "'_Empty' ")},
        {"HasNoSysView", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::HasNoSysView(conn, out.flag);
         },
         Read("SELECT COUNT(*) AS COL_COUNT FROM qv_View WHERE Col_Type = 1")},
        {"GetSysViewCount", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetSysViewCount(conn, out.index);
         },
         Read("SELECT COUNT(*) FROM qv_View WHERE Col_Type = 1")},
        {"DeleteViewItem", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteViewItem(conn, 501); },
         Write("DELETE FROM qv_View WHERE Col_ID = 501")},
    };
}

void Fill(CGroupItem& item)
{
    item.m_nID = 1001;
    item.m_strName = R"(na'm\e)";
    item.m_strDescription = R"(de's\c)";
    item.m_strCreatorName = R"(cr'e\ator)";
    item.m_dtCreate = COleDateTime(1987, 6, 5, 4, 3, 2);
    item.m_nItemIndex = 1002;
    item.m_nDomainID = 1003;
    item.m_nStyle = 1004;
}

void Fill(CViewItem& item)
{
    item.m_nID = 1001;
    item.m_strName = R"(na'm\e)";
    item.m_nType = 1002;
    item.m_strDescription = R"(de's\c)";
    item.m_nOwnerID = 1003;
    item.m_nItemIndex = 1004;
    item.m_strCreatorName = R"(cr'e\ator)";
    item.m_dtCreate = COleDateTime(1987, 6, 5, 4, 3, 2);
    item.m_nDomainID = 1005;
    item.m_nStyle = 1006;
}

std::vector<StatementCase> GroupRecords()
{
    return {
        {"CGroupItem::SaveData", kAllKinds,
         [](CAConnect& conn) {
             CGroupItem item;
             Fill(item);
             item.SaveData(conn);
         },
         Write("INSERT INTO qv_Group (Col_Name,Col_Description,Col_Creator_Name,Col_Dt_Create,Col_ItemIndex, "
               "Col_DomainID, Col_Style) VALUES ( 'na'm\\e','de's\\c','cr'e\\ator','1987-06-05',1002, 1003, 1004 )")},
        {"CGroupItem::LoadInfoByID", kAllKinds,
         [](CAConnect& conn) {
             CGroupItem item;
             Fill(item);
             item.LoadInfoByID(conn);
         },
         Read("SELECT Col_Name, Col_Description, Col_Creator_Name, Col_Dt_Create, Col_ItemIndex, Col_DomainID, "
              "Col_Style FROM qv_Group WHERE Col_ID = 1001")},
        {"CGroupItem::Update", kAllKinds,
         [](CAConnect& conn) {
             CGroupItem item;
             Fill(item);
             item.Update(conn);
         },
         Write("UPDATE qv_Group SET Col_Name = 'na'm\\e', Col_Description = 'de's\\c', Col_Creator_Name = "
               "'cr'e\\ator', Col_ItemIndex = 1002, Col_Style = 1004, Col_DomainID = 1003 WHERE Col_ID = 1001")},
    };
}

std::vector<StatementCase> ViewRecords()
{
    return {
        {"CViewItem::SaveData of a public view", kAllKinds,
         [](CAConnect& conn) {
             CViewItem item;
             Fill(item);
             item.m_bIsPublic = true;
             item.SaveData(conn);
         },
         Write("INSERT INTO qv_View (Col_Name,Col_Type,Col_Description,Col_OwnerID, Col_ItemIndex, Col_Creator_Name, "
               "Col_Dt_Create, Col_DomainID, Col_Style, Col_IsPublic) VALUES "
               "('na'm\\e',1002,'de's\\c',1003,1004,'cr'e\\ator','1987-06-05',1005,1006, 1)")},
        {"CViewItem::SaveData of a private view", kAllKinds,
         [](CAConnect& conn) {
             CViewItem item;
             Fill(item);
             item.m_bIsPublic = false;
             item.SaveData(conn);
         },
         Write("INSERT INTO qv_View (Col_Name,Col_Type,Col_Description,Col_OwnerID, Col_ItemIndex, Col_Creator_Name, "
               "Col_Dt_Create, Col_DomainID, Col_Style, Col_IsPublic) VALUES "
               "('na'm\\e',1002,'de's\\c',1003,1004,'cr'e\\ator','1987-06-05',1005,1006, 0)")},
        {"CViewItem::LoadInfoByID", kAllKinds,
         [](CAConnect& conn) {
             CViewItem item;
             Fill(item);
             item.LoadInfoByID(conn);
         },
         Read("SELECT Col_Name, Col_Type, Col_Description, Col_OwnerID, Col_ItemIndex, Col_Creator_Name, "
              "Col_Dt_Create, Col_DomainID, Col_Style, Col_IsPublic FROM qv_View WHERE Col_ID = 1001")},
        {"CViewItem::UpdateData", kAllKinds,
         [](CAConnect& conn) {
             CViewItem item;
             Fill(item);
             item.UpdateData(conn);
         },
         Write("UPDATE qv_View SET Col_Name ='na'm\\e', Col_Description = 'de's\\c', Col_ItemIndex = 1004 WHERE Col_ID "
               "= 1001")},
    };
}

TEST(GroupStatements, OperationsSendTheirTextsByteForByte) { ExpectTable(Groups()); }

TEST(GroupStatements, TheRecordSendsItsTextsByteForByte) { ExpectTable(GroupRecords()); }

TEST(ViewStatements, OperationsSendTheirTextsByteForByte) { ExpectTable(Views()); }

TEST(ViewStatements, TheRecordSendsItsTextsByteForByte) { ExpectTable(ViewRecords()); }

TEST(ViewStatements, ThePlaceholderIsAddedWithItsNumbersInQuotesAndThenReadByTheSameText)
{
    const std::string select = "SELECT Col_ID, Col_Name FROM qv_View WHERE Col_OwnerID = 501 AND Col_Type = 602 ORDER "
                               "BY Col_ItemIndex, Col_Name";
    scripted::Database database;
    CAConnect conn;
    database.Connect(conn);
    database.Answer(scripted::Rows({}));
    database.Answer(scripted::Rows({}));
    database.Answer(scripted::Rows({{"41", "_Empty"}}));
    Outputs out;
    CQVBaseFun::LoadViewbyUserID(conn, 501, out.ids, out.names, 602, true);
    EXPECT_EQ(database.queries, (std::vector<std::string>{select, select}));
    EXPECT_EQ(database.executions,
              (std::vector<std::string>{
                  "INSERT INTO qv_View (Col_Name,Col_OwnerID,Col_Type) VALUES ( '_Empty','501','602' )"}));
}

} // namespace

} // namespace group_statements
