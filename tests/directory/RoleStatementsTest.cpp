#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "directory/JobTitleItem.h"
#include "directory/RoleItem.h"
#include "tests/directory/StatementCase.h"

#include <gtest/gtest.h>

#include <vector>

namespace role_statements {

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
    bool flag = false;
    CString name;
    CString text;
    CUIntArray ids;
    CStringArray names;
    CStringArray texts;
};

std::vector<StatementCase> Roles()
{
    return {
        {"GetRoleIDByName", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetRoleIDByName(conn, R"(na'm\e)", R"(ap'p\n)", 501, out.id);
         },
         Read("SELECT Col_ID FROM qv_Role WHERE Col_Name = 'na'm\\e' AND Col_AppName = 'ap'p\\n' AND Col_DomainID = "
              "501")},
        {"ExistRoleName",
         {0, 1, 6},
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistRoleName(conn, R"(na'm\e)", R"(ap'p\n)", 501, out.flag);
         },
         Read("SELECT Col_ID FROM qv_Role WHERE Col_Name = 'na'm\\e' AND Col_AppName = 'ap'p\\n' AND Col_DomainID = "
              "501")},
        {"ExistRoleName",
         {3},
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistRoleName(conn, R"(na'm\e)", R"(ap'p\n)", 501, out.flag);
         },
         Read("SELECT Col_ID FROM qv_Role WHERE upper(Col_Name) = upper('na'm\\e') AND upper(Col_AppName) = "
              "upper('ap'p\\n') AND Col_DomainID = 501")},
        {"LoadRole into two arrays", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadRole(conn, R"(ap'p\n)", 501, out.ids, out.names);
         },
         Read(R"(SELECT Col_ID, Col_Name FROM qv_Role WHERE Col_DomainID = 501 AND Col_AppName = 'ap'p\n')")},
        {"LoadRole into three arrays", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadRole(conn, R"(ap'p\n)", 501, out.ids, out.names, out.texts);
         },
         Read("SELECT Col_ID, Col_Name, Col_Description FROM qv_Role WHERE Col_DomainID = 501 AND Col_AppName = "
              "'ap'p\\n' ")},
        {"GetRoleNameByID", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetRoleNameByID(conn, 501, out.name);
         },
         Read("SELECT Col_Name FROM qv_Role WHERE Col_ID = 501")},
        {"DeleteRole", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteRole(conn, 501); },
         Write("DELETE FROM qv_Role WHERE Col_ID = 501")},
        {"LoadHMRole into two arrays", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadHMRole(conn, 501, out.ids, out.names);
         },
         Read("SELECT qv_Role.Col_ID, qv_Role.Col_Name FROM qv_Role,qv_Relation WHERE qv_Role.Col_ID = "
              "qv_Relation.Col_QvItemID AND qv_Relation.Col_QvItemType = 3 AND qv_Relation.Col_DQvItemID = 501 AND "
              "qv_Relation.Col_DQvItemType = 1")},
        {"GetDefaultRoleInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetDefaultRoleInfo(conn, out.id, out.name, out.text);
         },
         Read("SELECT Col_ID,Col_Name,Col_Description FROM qv_Role WHERE Col_Name = 'everyone' AND Col_AppName = "
              "'Tolvan' ")},
        {"GetDefaultRoleID", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetDefaultRoleID(conn, out.id);
         },
         Read("SELECT Col_ID FROM qv_Role WHERE Col_Name = 'everyone' AND Col_AppName = 'Tolvan' ")},
        {"LoadHMRole into three arrays",
         kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadHMRole(conn, 501, out.ids, out.names, out.texts);
         },
         {{"SELECT qv_Role.Col_ID, qv_Role.Col_Name, qv_Role.Col_Description FROM qv_Role,qv_Relation WHERE "
           "qv_Role.Col_ID = qv_Relation.Col_QvItemID AND qv_Relation.Col_QvItemType = 3 AND qv_Relation.Col_DQvItemID "
           "= 501 AND qv_Relation.Col_DQvItemType = 1 AND Col_AppName = 'Tolvan'",
           "SELECT Col_ID,Col_Name,Col_Description FROM qv_Role WHERE Col_Name = 'everyone' AND Col_AppName = "
           "'Tolvan' "},
          {}}},
        {"LoadHMRole into one array",
         kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadHMRole(conn, 501, out.ids);
         },
         {{"SELECT qv_Role.Col_ID, qv_Role.Col_Name, qv_Role.Col_Description FROM qv_Role,qv_Relation WHERE "
           "qv_Role.Col_ID = qv_Relation.Col_QvItemID AND qv_Relation.Col_QvItemType = 3 AND qv_Relation.Col_DQvItemID "
           "= 501 AND qv_Relation.Col_DQvItemType = 1 AND qv_Role.Col_AppName = 'Tolvan'",
           "SELECT Col_ID FROM qv_Role WHERE Col_Name = 'everyone' AND Col_AppName = 'Tolvan' "},
          {}}},
    };
}

std::vector<StatementCase> JobTitles()
{
    return {
        {"LoadJobTitleInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadJobTitleInfo(conn, 501, 602, out.ids, out.names, R"(ti't\le)");
         },
         Read("SELECT Col_DQvItemID, Col_DQvItemName FROM qv_JobTitle WHERE Col_QvItemID = 501 AND Col_QvItemType = "
              "602 AND Col_JobTitle = 'ti't\\le' ")},
        {"ExistJobTitle", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistJobTitle(conn, 501, 602, 703, 804, R"(ti't\le)", out.flag);
         },
         Read("SELECT Col_DQvItemName FROM qv_JobTitle WHERE Col_QvItemID = 501 AND Col_QvItemType = 602 AND "
              "Col_DQvItemID = 703 AND Col_DQvItemType = 804 AND Col_JobTitle = 'ti't\\le'")},
        {"DeleteJobTitle", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::DeleteJobTitle(conn, 501, 602, 703, 804, R"(ti't\le)"); },
         Write("DELETE FROM qv_JobTitle WHERE Col_QvItemID = 501 AND Col_QvItemType = 602 AND Col_JobTitle = "
               "'ti't\\le' AND Col_DQvItemID = 703 AND Col_DQvItemType = 804 ")},
    };
}

void Fill(CRoleItem& item)
{
    item.m_nID = 1001;
    item.m_strName = R"(na'm\e)";
    item.m_strDescription = R"(de's\c)";
    item.m_strCreatorName = R"(cr'e\ator)";
    item.m_strAppName = R"(ap'p\n)";
    item.m_nItemIndex = 1002;
    item.m_nDomainID = 1003;
    item.m_dtCreate = COleDateTime(1987, 6, 5, 4, 3, 2);
    item.m_strGenre = R"(ge'n\re)";
    item.m_nGClassID = 1004;
    item.m_nType = 1005;
}

void Fill(CJobTitleItem& item)
{
    item.m_nQvItemID = 1001;
    item.m_nQvItemType = 1002;
    item.m_strJobTitle = R"(ti't\le)";
    item.m_nDQvItemID = 1003;
    item.m_nDQvItemType = 1004;
    item.m_strDescription = R"(de's\c)";
    item.m_strDQvItemName = R"(na'm\e)";
}

std::vector<StatementCase> RoleRecords()
{
    return {
        {"CRoleItem::SaveData of a role switched off", kAllKinds,
         [](CAConnect& conn) {
             CRoleItem item;
             Fill(item);
             item.m_bDisabled = true;
             item.SaveData(conn);
         },
         Write("INSERT INTO qv_Role (Col_Name,Col_Description, Col_Dt_Create, Col_Creator_Name, Col_ItemIndex, "
               "Col_DomainID, Col_Disabled, Col_AppName, Col_Genre, Col_G_ClassID, Col_Type ) VALUES ( 'na'm\\e', "
               "'de's\\c', '1987-06-05 04:03:02', 'cr'e\\ator', 1002, 1003, 1, 'ap'p\\n', 'ge'n\\re', 1004, 1005 )")},
        {"CRoleItem::SaveData of a role switched on", kAllKinds,
         [](CAConnect& conn) {
             CRoleItem item;
             Fill(item);
             item.m_bDisabled = false;
             item.SaveData(conn);
         },
         Write("INSERT INTO qv_Role (Col_Name,Col_Description, Col_Dt_Create, Col_Creator_Name, Col_ItemIndex, "
               "Col_DomainID, Col_Disabled, Col_AppName, Col_Genre, Col_G_ClassID, Col_Type ) VALUES ( 'na'm\\e', "
               "'de's\\c', '1987-06-05 04:03:02', 'cr'e\\ator', 1002, 1003, 0, 'ap'p\\n', 'ge'n\\re', 1004, 1005 )")},
        {"CRoleItem::LoadData", kAllKinds,
         [](CAConnect& conn) {
             CRoleItem item;
             Fill(item);
             item.LoadData(conn);
         },
         Read("SELECT Col_Name, Col_Description, Col_Dt_Create, Col_Creator_Name, Col_ItemIndex, Col_DomainID, "
              "Col_Disabled, Col_AppName, Col_Genre, Col_G_ClassID, Col_Type FROM qv_Role WHERE Col_ID = 1001")},
        {"CRoleItem::UpdateData", kAllKinds,
         [](CAConnect& conn) {
             CRoleItem item;
             Fill(item);
             item.UpdateData(conn);
         },
         Write(R"(UPDATE qv_Role SET Col_Name = 'na'm\e', Col_Description = 'de's\c' WHERE Col_ID = 1001)")},
    };
}

std::vector<StatementCase> JobTitleRecords()
{
    return {
        {"CJobTitleItem::SaveData", kAllKinds,
         [](CAConnect& conn) {
             CJobTitleItem item;
             Fill(item);
             item.SaveData(conn);
         },
         Write("INSERT INTO qv_JobTitle (Col_QvItemID,Col_QvItemType,Col_JobTitle, Col_DQvItemID, Col_DQvItemType, "
               "Col_JobTitle_Desc, Col_DQvItemName) VALUES (1001,1002,'ti't\\le',1003,1004,'de's\\c','na'm\\e') ")},
    };
}

TEST(RoleStatements, OperationsSendTheirTextsByteForByte) { ExpectTable(Roles()); }

TEST(RoleStatements, TheRecordSendsItsTextsByteForByte) { ExpectTable(RoleRecords()); }

TEST(JobTitleStatements, OperationsSendTheirTextsByteForByte) { ExpectTable(JobTitles()); }

TEST(JobTitleStatements, TheRecordSendsItsTextsByteForByte) { ExpectTable(JobTitleRecords()); }

} // namespace

} // namespace role_statements
