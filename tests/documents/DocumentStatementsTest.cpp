#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "documents/DocFolderItem.h"
#include "documents/DocFolderLinkItem.h"
#include "documents/DocRootItem.h"
#include "documents/DocRootLinkItem.h"
#include "tests/directory/StatementCase.h"

#include <gtest/gtest.h>

#include <vector>

namespace document_statements {

using statements::ExpectTable;
using statements::kAllKinds;
using statements::Read;
using statements::StatementCase;
using statements::Write;

namespace {

// Every text holds a quote and a backslash, so that what is doubled shows; no two arguments of a call are the same, so
// that an exchange shows.

constexpr const char* kName = R"(na'm\e)";

struct Outputs {
    int id = 0;
    bool flag = false;
    unsigned long style = 0;
    CString name;
    CString text;
    CUIntArray ids;
    CUIntArray numbers;
    CStringArray names;
    CStringArray paths;
    CStringArray times;
};

std::vector<StatementCase> Roots()
{
    return {
        {"LoadDocRootInfo into five arrays", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadDocRootInfo(conn, out.ids, out.names, out.paths, out.times, out.numbers);
         },
         Read("SELECT Col_ID, Col_Name, Col_DataPath, Col_Dt_Create, Col_Type FROM Tab_Doc_Root")},
        {"LoadDocRootInfo of a type into five arrays", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadDocRootInfo(conn, 501, out.ids, out.names, out.paths, out.times, out.numbers);
         },
         Read("SELECT Col_ID, Col_Name, Col_DataPath, Col_Dt_Create, Col_Style FROM Tab_Doc_Root WHERE Col_Type = "
              "501")},
        {"LoadDocRootInfoEx", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadDocRootInfoEx(conn, out.ids, out.names, out.paths, out.times, out.numbers);
         },
         Read("SELECT Col_ID, Col_Name, Col_DataPath, Col_Dt_Create, Col_Type FROM Tab_Doc_Root WHERE Col_Type = 1 OR "
              "Col_Type = 2")},
        {"LoadDocRootInfo into three arrays", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadDocRootInfo(conn, out.ids, out.names, out.numbers);
         },
         Read("SELECT Col_ID, Col_Name, Col_Type FROM Tab_Doc_Root")},
        {"LoadDocRootInfo of a type into two arrays", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadDocRootInfo(conn, out.ids, out.names, 501);
         },
         Read("SELECT Col_ID, Col_Name FROM Tab_Doc_Root WHERE Col_Type = 501")},
        {"ExistDocRootItem", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistDocRootItem(conn, kName, 501, out.flag);
         },
         Read(R"(SELECT Col_ID FROM Tab_Doc_Root WHERE Col_Name = 'na'm\e' AND Col_Type = 501)")},
        {"GetDRItemIDByName, with a blank at the end", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetDRItemIDByName(conn, kName, 501, out.id);
         },
         Read(R"(SELECT Col_ID FROM Tab_Doc_Root WHERE Col_Name = 'na'm\e' AND Col_Type = 501 )")},
        {"GetDocRootID", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetDocRootID(conn, kName, 501, out.id);
         },
         Read(R"(SELECT Col_ID FROM Tab_Doc_Root WHERE Col_Name = 'na'm\e' AND Col_Type = 501)")},
        {"GetDocRootInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetDocRootInfo(conn, kName, 501, out.text, out.style);
         },
         Read(R"(SELECT Col_DataPath, Col_Style FROM Tab_Doc_Root WHERE Col_Name = 'na'm\e' AND Col_Type = 501)")},
        {"HasNoDefCorpDocRoot", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::HasNoDefCorpDocRoot(conn, out.flag);
         },
         Read("SELECT COUNT(*) AS COL_COUNT FROM Tab_Doc_Root WHERE Col_Type = 1")},
        {"UpdateDocRoot",
         {0, 1, 3},
         [](CAConnect& conn) { CQVBaseFun::UpdateDocRoot(conn, 501, kName, R"(C:\pa'th)", 602); },
         Write("UPDATE Tab_Doc_Root SET Col_Name = 'na'm\\e', Col_DataPath='C:\\pa'th', Col_Style = 602 WHERE Col_ID = "
               "501")},
        {"UpdateDocRoot",
         {6},
         [](CAConnect& conn) { CQVBaseFun::UpdateDocRoot(conn, 501, kName, R"(C:\pa'th)", 602); },
         Write("UPDATE Tab_Doc_Root SET Col_Name = 'na'm\\e', Col_DataPath='C:\\\\pa'th', Col_Style = 602 WHERE Col_ID "
               "= 501")},
        {"DeleteDRItem", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteDRItem(conn, 501); },
         Write("DELETE FROM Tab_Doc_Root WHERE Col_ID = 501")},
        {"DeleteDocRoot by id", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteDocRoot(conn, 501); },
         Write("DELETE FROM Tab_Doc_Root WHERE Col_ID = 501")},
        {"DeleteDocRoot by name", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteDocRoot(conn, kName, 501); },
         Write(R"(DELETE FROM Tab_Doc_Root WHERE Col_Name = 'na'm\e' AND Col_Type = 501)")},
        {"DeleteDocRootLink", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteDocRootLink(conn, 501, 602, 703); },
         Write("DELETE FROM Tab_Doc_Root_Link WHERE Col_P_ObjID = 501 AND Col_S_ClassID = 602 AND Col_S_ObjID = 703")},
    };
}

std::vector<StatementCase> Folders()
{
    return {
        {"GetMaxIDFromDocVFolder", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetMaxIDFromDocVFolder(conn, out.id);
         },
         Read("SELECT MAX(Col_ID) FROM Tab_Doc_VFolder")},
        {"ExistFolderInRootLink", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistFolderInRootLink(conn, kName, 501, out.flag);
         },
         Read("SELECT Tab_Doc_VFolder.Col_ID FROM Tab_Doc_VFolder, Tab_Doc_Root_Link WHERE Tab_Doc_VFolder.Col_Name = "
              "'na'm\\e' AND Tab_Doc_VFolder.Col_ID = Tab_Doc_Root_Link.Col_S_ObjID AND "
              "Tab_Doc_Root_Link.Col_S_ClassID = 105 AND Tab_Doc_Root_Link.Col_P_ObjID = 501")},
        {"ExistFolderInVFolderLink", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistFolderInVFolderLink(conn, kName, 501, out.flag);
         },
         Read("SELECT Tab_Doc_VFolder.Col_ID FROM Tab_Doc_VFolder, Tab_Doc_VFolder_Link WHERE Tab_Doc_VFolder.Col_Name "
              "= 'na'm\\e' AND Tab_Doc_VFolder.Col_ID = Tab_Doc_VFolder_Link.Col_S_ObjID AND "
              "Tab_Doc_VFolder_Link.Col_S_ClassID = 105 AND Tab_Doc_VFolder_Link.Col_P_ObjID = 501")},
        {"LoadDocRootFolder", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadDocRootFolder(conn, 501, out.names, out.ids);
         },
         Read("SELECT Tab_Doc_VFolder.Col_ID, Tab_Doc_VFolder.Col_Name FROM Tab_Doc_VFolder, Tab_Doc_Root_Link WHERE "
              "Tab_Doc_Root_Link.Col_P_ObjID = 501 AND Tab_Doc_Root_Link.Col_S_ClassID = 105 AND "
              "Tab_Doc_Root_Link.Col_S_ObjID = Tab_Doc_VFolder.Col_ID")},
        {"LoadFolderSubFolder", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadFolderSubFolder(conn, 501, out.names, out.ids);
         },
         Read("SELECT Tab_Doc_VFolder.Col_ID, Tab_Doc_VFolder.Col_Name FROM Tab_Doc_VFolder, Tab_Doc_VFolder_Link "
              "WHERE Tab_Doc_VFolder_Link.Col_P_ObjID = 501 AND Tab_Doc_VFolder_Link.Col_S_ClassID = 105 AND "
              "Tab_Doc_VFolder_Link.Col_S_ObjID = Tab_Doc_VFolder.Col_ID")},
        {"GetFolerInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetFolerInfo(conn, 501, out.name, out.text);
         },
         Read("SELECT Col_Name, Col_Dt_Create FROM Tab_Doc_VFolder WHERE Col_ID = 501")},
        {"UpdateFolderStyle", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::UpdateFolderStyle(conn, 501, 0x80000000UL); },
         Write("UPDATE Tab_Doc_VFolder SET Col_Style = -2147483648 WHERE Col_ID = 501")},
        {"UpdateFolderName", kAllKinds, [](CAConnect& conn) { CQVBaseFun::UpdateFolderName(conn, 501, kName); },
         Write(R"(UPDATE Tab_Doc_VFolder SET Col_Name = 'na'm\e' WHERE Col_ID = 501)")},
        {"DeleteDocVFolder", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteDocVFolder(conn, 501); },
         Write("DELETE FROM Tab_Doc_VFolder WHERE Col_ID = 501")},
        {"DeleteDocVFolderLink", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::DeleteDocVFolderLink(conn, 501, 602, 703); },
         Write("DELETE FROM Tab_Doc_VFolder_Link WHERE Col_P_ObjID = 501 AND Col_S_ClassID = 602 AND Col_S_OBJID = "
               "703")},
    };
}

// ---- The records -------------------------------------------------------------------------------------------------

void Fill(CDocRootItem& item)
{
    item.m_nID = 1001;
    item.m_strName = kName;
    item.m_strDesc = R"(de's\c)";
    item.m_strDataPath = R"(C:\pa'th\x)";
    item.m_dtCreate = COleDateTime(1987, 6, 5, 4, 3, 2);
    item.m_nMaxSize = 1002;
    item.m_nUsedSize = 1003;
    item.m_strDispName = R"(di's\p)";
    item.m_bHaveSubItem = true;
    item.m_nType = 1004;
    item.m_ulStyle = 0x80000001UL;
    item.m_nOwnerID = 1005;
}

void Fill(DocLink& link)
{
    link.m_nID = 1000;
    link.m_strDispName = R"(di's\p)";
    link.m_nStyle = 1001;
    link.m_nHaveSubItem = 1002;
    link.m_nPObjID = 1003;
    link.m_nSClassID = 1004;
    link.m_nSObjID = 1005;
    link.m_bIsRef = true;
    link.m_nRelType = 1006;
    link.m_nAce = 1007;
    link.m_nCreatorID = 1008;
    link.m_strCreatorName = R"(cr'e\ator)";
    link.m_strNote = R"(no't\e)";
    link.m_nOrder = 1009;
}

std::vector<StatementCase> Records()
{
    return {
        {"CDocRootItem::SaveData",
         {0, 1, 3},
         [](CAConnect& conn) {
             CDocRootItem item;
             Fill(item);
             item.SaveData(conn);
         },
         Write("INSERT INTO Tab_Doc_Root (Col_Name, Col_Desc, Col_DataPath, Col_Dt_Create, Col_MaxSize, Col_UsedSize, "
               "Col_DispName, Col_HaveSubItem, Col_Type, Col_Style, Col_OwnerID) VALUES ('na'm\\e', 'de's\\c', "
               "'C:\\pa'th\\x', '1987-06-05 04:03:02', 1002, 1003, 'di's\\p', 1, 1004, -2147483647, 1005 )")},
        {"CDocRootItem::SaveData",
         {6},
         [](CAConnect& conn) {
             CDocRootItem item;
             Fill(item);
             item.SaveData(conn);
         },
         Write("INSERT INTO Tab_Doc_Root (Col_Name, Col_Desc, Col_DataPath, Col_Dt_Create, Col_MaxSize, Col_UsedSize, "
               "Col_DispName, Col_HaveSubItem, Col_Type, Col_Style, Col_OwnerID) VALUES ('na'm\\e', 'de's\\c', "
               "'C:\\\\pa'th\\\\x', '1987-06-05 04:03:02', 1002, 1003, 'di's\\p', 1, 1004, -2147483647, 1005 )")},
        {"CDocRootItem::LoadData", kAllKinds,
         [](CAConnect& conn) {
             CDocRootItem item;
             item.m_nID = 1001;
             item.LoadData(conn);
         },
         Read("SELECT Col_Name, Col_Desc, Col_DataPath, Col_MaxSize, Col_UsedSize, Col_DispName, Col_HaveSubItem, "
              "Col_Type, Col_Style, Col_OwnerID, Col_Dt_Create FROM Tab_Doc_Root WHERE Col_ID = 1001")},
        {"CDocRootItem::UpdateData, which doubles nothing", kAllKinds,
         [](CAConnect& conn) {
             CDocRootItem item;
             Fill(item);
             item.UpdateData(conn);
         },
         Write("UPDATE Tab_Doc_Root SET Col_Name = 'na'm\\e', Col_Desc = 'de's\\c', Col_DataPath = 'C:\\pa'th\\x', "
               "Col_MaxSize = 1002, Col_UsedSize = 1003, Col_DispName = 'di's\\p', Col_HaveSubItem = 1, Col_Type = "
               "1004, Col_Style = -2147483647, Col_OwnerID = 1005 WHERE Col_ID = 1001")},
        {"CDocRootLinkItem::SaveData", kAllKinds,
         [](CAConnect& conn) {
             CDocRootLinkItem item;
             Fill(item);
             item.SaveData(conn);
         },
         Write("INSERT INTO Tab_Doc_Root_Link (Col_DispName,Col_Style, Col_HaveSubItem,Col_P_ObjID, Col_S_ClassID, "
               "Col_S_ObjID, Col_IsRef, Col_RelType, Col_Ace, Col_Creator_ID, Col_Creator_Name, Col_Note, Col_Order) "
               "VALUES ('di's\\p',1001,1002, 1003,1004,1005,1,1006,1007,1008,'cr'e\\ator','no't\\e',1009 )")},
        {"CDocFolderItem::SaveData", kAllKinds,
         [](CAConnect& conn) {
             CDocFolderItem item;
             item.m_nID = 1000;
             item.m_strName = kName;
             item.m_nStyle = 1001;
             item.m_bHaveSubItem = true;
             item.m_nGClassID = 1002;
             item.m_nGObjID = 1003;
             item.m_nCreatorID = 1004;
             item.m_strCreatorName = R"(cr'e\ator)";
             item.m_dtCreate = COleDateTime(1987, 6, 5, 4, 3, 2);
             item.SaveData(conn);
         },
         Write("INSERT INTO Tab_Doc_VFolder (Col_Name,Col_Style,Col_HaveSubItem, Col_G_ClassID, Col_G_ObjID, "
               "Col_Creator_ID, Col_Creator_Name, Col_Dt_Create ) VALUES "
               "('na'm\\e',1001,1,1002,1003,1004,'cr'e\\ator','1987-06-05 04:03:02')")},
        {"CDocFolderLinkItem::SaveData, with its own spellings", kAllKinds,
         [](CAConnect& conn) {
             CDocFolderLinkItem item;
             Fill(item);
             item.SaveData(conn);
         },
         Write("INSERT INTO Tab_Doc_VFolder_LINK (Col_DispName,Col_Style, Col_HaveSubItem, Col_P_ObjID, "
               "Col_S_ClassID, Col_S_ObjID, Col_IsRef, Col_RelType, Col_Ace, Col_Creator_ID, Col_Creator_name, "
               "Col_Note, Col_Order ) VALUES ( 'di's\\p',1001,1002,1003,1004,1005,1,1006,1007,1008, 'cr'e\\ator', "
               "'no't\\e', 1009 ) ")},
    };
}

TEST(DocumentStatements, OfRootsAreSentByteForByte) { ExpectTable(Roots()); }

TEST(DocumentStatements, OfFoldersAreSentByteForByte) { ExpectTable(Folders()); }

TEST(DocumentStatements, OfTheRecordsAreSentByteForByte) { ExpectTable(Records()); }

} // namespace

} // namespace document_statements
