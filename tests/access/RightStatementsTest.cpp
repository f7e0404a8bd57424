#include "access/AceItem.h"
#include "access/TabBIOAceItem.h"
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "tests/directory/StatementCase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace right_statements {

using statements::ExpectTable;
using statements::kAllKinds;
using statements::Read;
using statements::Sent;
using statements::StatementCase;
using statements::Write;

namespace {

// Every text holds a quote and a backslash, so that what is doubled shows; no two arguments of a call are the same, so
// that an exchange shows.

constexpr const char* kGenre = R"(ge'n\re)";
constexpr const char* kName = R"(na'm\e)";

struct Outputs {
    bool flag = false;
    int number = 0;
    unsigned long bits = 0;
    CString text;
    CUIntArray ids;
    CUIntArray types;
    CUIntArray holders;
    CUIntArray powers;
    CStringArray names;
};

std::vector<StatementCase> ItemRights()
{
    return {
        {"InsertItemAce", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::InsertItemAce(conn, 501, 602, kGenre, kName, 703, 804); },
         Write("INSERT INTO qv_ItemAce ( Col_QvItemID, Col_QvItemType, Col_FunName, Col_FunGenre, Col_Power, "
               "Col_UnPower ) VALUES ( 501, 602, 'na'm\\e', 'ge'n\\re', 703, 804 )")},
        {"UpdateItemAce", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::UpdateItemAce(conn, 501, 602, kGenre, kName, 703); },
         Write("UPDATE qv_ItemAce SET Col_Power = 703 WHERE Col_QvItemID = 501 AND Col_QvItemType = 602 AND "
               "Col_FunName = 'na'm\\e' AND Col_FunGenre = 'ge'n\\re'")},
        {"DeleteItemAce of one right", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::DeleteItemAce(conn, 501, 602, kGenre, kName); },
         Write("DELETE FROM qv_ItemAce WHERE Col_QvItemID = 501 AND Col_QvItemType = 602 AND Col_FunGenre = "
               "'ge'n\\re' AND Col_FunName = 'na'm\\e'")},
        {"DeleteItemAce of all rights", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteItemAce(conn, 501, 602); },
         Write("DELETE FROM qv_ItemAce WHERE Col_QvItemID = 501 AND Col_QvItemType = 602")},
        {"ExistItemAce", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistItemAce(conn, 501, 602, kGenre, kName, out.flag);
         },
         Read("SELECT Col_QvItemID FROM qv_ItemAce WHERE Col_QvItemID = 501 AND Col_QvItemType = 602 AND Col_FunName "
              "= 'na'm\\e' AND Col_FunGenre = 'ge'n\\re'")},
        {"LoadItemAceInfo of one right", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadItemAceInfo(conn, 501, 602, kGenre, kName, out.number);
         },
         Read("SELECT Col_Power FROM qv_ItemAce WHERE Col_QvItemID = 501 AND Col_QvItemType = 602 AND Col_FunGenre = "
              "'ge'n\\re' AND Col_FunName = 'na'm\\e'")},
        {"LoadItemAceInfo of a genre", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadItemAceInfo(conn, 501, 602, kGenre, out.names, out.powers);
         },
         Read("SELECT Col_FunName, Col_Power FROM qv_ItemAce WHERE Col_QvItemID = 501 AND Col_QvItemType = 602 AND "
              "Col_FunGenre = 'ge'n\\re'")},
        {"CAceItem::SaveData, which lacks a parenthesis", kAllKinds,
         [](CAConnect& conn) {
             CAceItem item;
             item.m_nQvItemID = 1001;
             item.m_nQvItemType = 1002;
             item.m_strFunGenre = kGenre;
             item.m_strFunName = kName;
             item.m_nPower = 1003;
             item.m_nUnPower = 1004;
             item.SaveData(conn);
         },
         Write("INSERT INTO qv_ItemAce ( Col_QvItemID, Col_QvItemType, Col_FunName, Col_FunGenre, Col_Power, "
               "Col_UnPower ) VALUES ( 1001, 1002, 'na'm\\e', 'ge'n\\re', 1003, 1004 ")},
    };
}

const Sent kPowerOnItem = Read("SELECT Col_Power FROM qv_BIIAce WHERE Col_QvItemID = 501 AND Col_QvItemType = 602 AND "
                               "Col_DQvItemID = 703 AND Col_DQvItemType = 804 AND Col_FunGenre = 'ge'n\\re' AND "
                               "Col_FunName = 'na'm\\e'");

std::vector<StatementCase> RightsOnItems()
{
    return {
        {"InsertBIIAceInfo", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::InsertBIIAceInfo(conn, 501, 602, 703, 804, kGenre, kName, 905, 1006); },
         Write("INSERT INTO qv_BIIAce ( Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, Col_FunGenre, "
               "Col_FunName, Col_Power, Col_UnPower ) VALUES ( 501, 602, 703, 804, 'ge'n\\re', 'na'm\\e', 905, 1006 "
               ")")},
        {"UpdateBIIAceInfo", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::UpdateBIIAceInfo(conn, 501, 602, 703, 804, kGenre, kName, 905, 1006); },
         Write("UPDATE qv_BIIAce SET Col_Power = 905, Col_UnPower = 1006 WHERE Col_QvItemID = 501 AND Col_QvItemType "
               "= 602 AND Col_DQvItemID = 703 AND Col_DQvItemType = 804 AND Col_FunGenre = 'ge'n\\re' AND "
               "Col_FunName = 'na'm\\e'")},
        {"DeleteBIIAceInfo of one holder", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::DeleteBIIAceInfo(conn, 501, 602, 703, 804, kGenre, kName); },
         Write("DELETE FROM qv_BIIAce WHERE Col_QvItemID = 501 AND Col_QvItemType = 602 AND Col_DQvItemID = 703 AND "
               "Col_DQvItemType = 804 AND Col_FunName = 'na'm\\e' AND Col_FunGenre = 'ge'n\\re'")},
        {"DeleteBIIAceInfo of all holders", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::DeleteBIIAceInfo(conn, 703, 804, kGenre, kName); },
         Write("DELETE FROM qv_BIIAce WHERE Col_DQvItemID = 703 AND Col_DQvItemType = 804 AND Col_FunName = "
               "'na'm\\e' AND Col_FunGenre = 'ge'n\\re'")},
        {"ExistBIIAceInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistBIIAceInfo(conn, 501, 602, 703, 804, kGenre, kName, out.flag);
         },
         kPowerOnItem},
        {"GetBIIAceInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetBIIAceInfo(conn, 501, 602, 703, 804, kGenre, kName, out.number);
         },
         kPowerOnItem},
        {"LoadBIIAceInfo, whose name comes first", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadBIIAceInfo(conn, 703, 804, kName, kGenre, out.holders, out.types);
         },
         Read("SELECT Col_QvItemID, Col_QvItemType FROM qv_BIIAce WHERE Col_DQvItemID = 703 AND Col_DQvItemType = 804 "
              "AND Col_FunName = 'na'm\\e' AND Col_FunGenre = 'ge'n\\re' AND Col_Power = 1")},
    };
}

// ---- Effective rights --------------------------------------------------------------------------------------------

// What the operations send before their own statement, of which nothing comes back here: the role 0 stands for the
// default role.
Sent AfterTheRoles(const std::string& statement)
{
    return {{"SELECT qv_Role.Col_ID, qv_Role.Col_Name, qv_Role.Col_Description FROM qv_Role,qv_Relation WHERE "
             "qv_Role.Col_ID = qv_Relation.Col_QvItemID AND qv_Relation.Col_QvItemType = 3 AND "
             "qv_Relation.Col_DQvItemID = 501 AND qv_Relation.Col_DQvItemType = 1 AND qv_Role.Col_AppName = 'Tolvan'",
             "SELECT Col_ID FROM qv_Role WHERE Col_Name = 'everyone' AND Col_AppName = 'Tolvan' ", statement},
            {}};
}

const Sent kPowers = AfterTheRoles("SELECT Col_Power FROM qv_ItemAce WHERE Col_FunGenre = 'ge'n\\re' AND Col_FunName = "
                                   "'na'm\\e' AND ( ( Col_QvItemID = 0 AND Col_QvItemType = 3 ) )");
const Sent kLimit = AfterTheRoles("SELECT COUNT(*), MAX(Col_Power), MIN(Col_Power) FROM qv_ItemAce WHERE Col_FunGenre "
                                  "= 'ge'n\\re' AND Col_FunName = 'na'm\\e' AND ( ( Col_QvItemID = 0 AND "
                                  "Col_QvItemType = 3 ) )");

std::vector<StatementCase> EffectiveRights()
{
    Sent roles = AfterTheRoles("");
    roles.reads.pop_back();
    return {
        {"GetHMRoleQueryParam", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetHMRoleQueryParam(conn, 501, out.text);
         },
         roles},
        {"GetAfficheACE", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetAfficheACE(conn, 501, kGenre, kName, out.flag);
         },
         kPowers},
        {"HaveBaseACE", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::HaveBaseACE(conn, 501, kGenre, kName, 602, out.number);
         },
         kPowers},
        {"GetHMBaseACE", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetHMBaseACE(conn, 501, kGenre, kName, out.bits);
         },
         kPowers},
        {"GetACEGuestUser", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetACEGuestUser(conn, 501, kGenre, kName, out.flag);
         },
         kPowers},
        {"GetAttachmentSizeACE", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetAttachmentSizeACE(conn, 501, kGenre, kName, out.number);
         },
         kLimit},
        {"GetMultiSendCountACE", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetMultiSendCountACE(conn, 501, kGenre, kName, out.number);
         },
         kLimit},
        {"GetRateLimitACE", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetRateLimitACE(conn, 501, kGenre, kName, out.number);
         },
         kLimit},
        {"LoadHMRoleView", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadHMRoleView(conn, 501, kGenre, kName, out.ids);
         },
         AfterTheRoles("SELECT DISTINCT Col_DQvItemID FROM qv_BIIAce WHERE Col_DQvItemType = 4 AND Col_FunName = "
                       "'na'm\\e' AND Col_FunGenre = 'ge'n\\re' AND Col_Power = 1 AND ( ( Col_QvItemID = 0 AND "
                       "Col_QvItemType = 3 ) )")},
    };
}

TEST(EffectiveRightStatements, EveryRoleHasItsTermAndTheDefaultRoleComesLast)
{
    scripted::Database database;
    CAConnect conn;
    database.Connect(conn, 3);
    database.Answer(scripted::Rows({{"5", "n", "d"}, {"9", "n", "d"}}));
    database.Answer(scripted::Rows({{"7"}}));
    Outputs out;
    EXPECT_TRUE(CQVBaseFun::GetHMBaseACE(conn, 501, "G", "N", out.bits));
    EXPECT_THAT(database.queries,
                testing::Contains("SELECT Col_Power FROM qv_ItemAce WHERE Col_FunGenre = 'G' AND Col_FunName = 'N' AND "
                                  "( ( Col_QvItemID = 5 AND Col_QvItemType = 3 ) OR ( Col_QvItemID = 9 AND "
                                  "Col_QvItemType = 3 ) OR ( Col_QvItemID = 7 AND Col_QvItemType = 3 ) )"));
}

// ---- Object rights -----------------------------------------------------------------------------------------------

std::vector<StatementCase> ObjectRights()
{
    return {
        {"LoadTabBIOAceInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadTabBIOAceInfo(conn, 501, 602, kName, out.ids, out.types, out.holders, out.names,
                                           out.powers);
         },
         Read("SELECT Col_ID, Col_QvItemType, Col_QvItemID, Col_QvItemName, Col_Power FROM Tab_BIOAce WHERE "
              "Col_ClassID = 501 AND Col_ObjID = 602 AND Col_FunName = 'na'm\\e' ORDER BY Col_QvItemType")},
        {"ExistTabBIOAceItem", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistTabBIOAceItem(conn, 501, 602, 703, 804, kName, kGenre, out.number);
         },
         Read("SELECT Col_ID FROM Tab_BIOAce WHERE Col_ClassID = 501 AND Col_ObjID = 602 AND Col_QvItemID = 703 AND "
              "Col_QvItemType = 804 AND Col_FunName = 'na'm\\e' AND Col_FunGenre = 'ge'n\\re'")},
        {"ExistTabBIOAce, whose last text does not count", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistTabBIOAce(conn, 501, 602, kName, kGenre, out.flag);
         },
         Read("SELECT COUNT(*) AS ITEM_COUNT FROM Tab_BIOAce WHERE Col_ClassID = 501 AND Col_ObjID = 602 AND "
              "Col_FunName = 'na'm\\e'")},
        {"LoadACEInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             int power = 0;
             CQVBaseFun::LoadACEInfo(conn, 501, out.number, out.text, power);
         },
         Read("SELECT Col_QvItemType, Col_QvItemName, Col_Power FROM Tab_BIOAce WHERE Col_ID = 501")},
        {"UpdateTabBIOAceInfo", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::UpdateTabBIOAceInfo(conn, 501, 602, 703); },
         Write("UPDATE Tab_BIOAce SET Col_Power = 602, Col_UnPower = 703 WHERE Col_ID = 501")},
        {"DeleteTabBIOAceItem", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteTabBIOAceItem(conn, 501); },
         Write("DELETE FROM Tab_BIOAce WHERE Col_ID = 501")},
        {"CTabBIOAceItem::SaveData", kAllKinds,
         [](CAConnect& conn) {
             CTabBIOAceItem item;
             item.m_nID = 1000;
             item.m_nQvItemID = 1001;
             item.m_nQvItemType = 1002;
             item.m_nClassID = 1003;
             item.m_nObjID = 1004;
             item.m_strFunName = kName;
             item.m_strFunGenre = kGenre;
             item.m_nPower = 1005;
             item.m_nUnPower = 1006;
             item.m_strQvItemName = R"(ho'l\der)";
             item.m_nCreatorID = 1007;
             item.m_strCreatorName = R"(cr'e\ator)";
             item.m_dtCreate = COleDateTime(1987, 6, 5, 4, 3, 2);
             item.SaveData(conn);
         },
         Write("INSERT INTO Tab_BIOAce ( Col_QvItemID, Col_QvItemType, Col_ClassID, Col_ObjID, Col_FunName, "
               "Col_FunGenre, Col_Power, Col_UnPower, Col_QvItemName, Col_Creator_ID, Col_Creator_Name, Col_Dt_Create "
               ") VALUES ( 1001, 1002, 1003, 1004, 'na'm\\e', 'ge'n\\re', 1005, 1006, 'ho''l\\der', 1007, "
               "'cr''e\\ator', '1987-06-05 04:03:02' )")},
    };
}

TEST(ItemRightStatements, AreSentByteForByte) { ExpectTable(ItemRights()); }

TEST(ItemRightStatements, ThoseWithRespectToASecondItemAreSentByteForByte) { ExpectTable(RightsOnItems()); }

TEST(EffectiveRightStatements, AreSentByteForByteAfterThoseOfTheRoles) { ExpectTable(EffectiveRights()); }

TEST(ObjectRightStatements, AreSentByteForByte) { ExpectTable(ObjectRights()); }

} // namespace

} // namespace right_statements
