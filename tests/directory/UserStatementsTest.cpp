#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "directory/HumanItem.h"
#include "platform/CodePage.h"
#include "tests/directory/HumanMembers.h"
#include "tests/directory/StatementCase.h"
#include "tests/platform/AnsiCodePageScope.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace user_statements {

using statements::ExpectTable;
using statements::kAllKinds;
using statements::Nothing;
using statements::Read;
using statements::StatementCase;
using statements::Write;

namespace {

// Every text holds a quote and a backslash, so that what is doubled and what is not both show; no two arguments of a
// call are the same, so that an exchange shows.

struct Outputs {
    int id = 0;
    int index = 0;
    int sex = 0;
    __int64 count = 0;
    bool flag = false;
    CString login;
    CString name;
    CString mobile;
    CString eMail;
    CString jobTitle;
    CObList list;
    CUIntArray ids;
    CUIntArray sexes;
    CUIntArray disabled;
    CStringArray logins;
    CStringArray names;
    CStringArray mobiles;
    CStringArray eMails;
    CStringArray deptInfos;
    CStringArray jobTitles;
};

std::vector<StatementCase> LookUps()
{
    return {
        {"GetHMIDByLoginName", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetHMIDByLoginName(conn, R"(lo'g\in)", out.id);
         },
         Read(R"(SELECT Col_ID FROM qv_User WHERE Col_LoginName = 'lo''g\in')")},
        {"ExistLoginName",
         {0, 1, 6},
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistLoginName(conn, R"(jo's\é)", out.flag);
         },
         Read(R"(SELECT Col_LoginName FROM qv_User WHERE Col_LoginName = 'JO''S\É')")},
        {"ExistLoginName",
         {3},
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistLoginName(conn, R"(jo's\é)", out.flag);
         },
         Read(R"(SELECT Col_LoginName FROM qv_User WHERE upper(Col_LoginName) = 'JO''S\É')")},
        {"ExistLoginNameEx",
         {0, 1, 6},
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistLoginNameEx(conn, R"(jo's\é)", out.id);
         },
         Read(R"(SELECT Col_ID FROM qv_User WHERE Col_LoginName = 'JO''S\É')")},
        {"ExistLoginNameEx",
         {3},
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistLoginNameEx(conn, R"(jo's\é)", out.id);
         },
         Read(R"(SELECT Col_ID FROM qv_User WHERE upper(Col_LoginName) = 'JO''S\É')")},
        {"IsSuperUser", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::IsSuperUser(conn, R"(lo'g\in)", out.flag);
         },
         Read(R"(SELECT Col_IsSuper FROM qv_User WHERE Col_LoginName = 'lo'g\in')")},
        {"IsUserLocked", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::IsUserLocked(conn, R"(lo'g\in)", out.flag);
         },
         Read(R"(SELECT Col_Disabled FROM qv_User WHERE Col_LoginName = 'lo'g\in')")},
        {"GetHMLoginName by id", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetHMLoginName(conn, 4711, out.login);
         },
         Read("SELECT Col_LoginName FROM qv_User WHERE Col_ID = 4711")},
        {"GetHMLoginName by name", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetHMLoginName(conn, R"(na'm\e)", out.login);
         },
         Read(R"(SELECT Col_LoginName FROM qv_User WHERE Col_Name = 'na''m\e')")},
        {"GetHMUserName by login name", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetHMUserName(conn, R"(lo'g\in)", out.name);
         },
         Read(R"(SELECT Col_Name FROM qv_User WHERE Col_LoginName = 'lo''g\in')")},
        {"GetHMUserName by id", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetHMUserName(conn, -4711, out.name);
         },
         Read("SELECT Col_Name FROM qv_User WHERE Col_ID = -4711")},
        {"LoadUserInfo by login name", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadUserInfo(conn, R"(lo'g\in)", out.id, out.name);
         },
         Read(R"(SELECT Col_ID, Col_Name FROM qv_User WHERE Col_LoginName = 'lo'g\in')")},
        {"GetUserInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetUserInfo(conn, 4711, out.login, out.name, out.index, out.sex, out.mobile, out.eMail,
                                     out.jobTitle);
         },
         Read("SELECT Col_LoginName, Col_Name, Col_ItemIndex, Col_Sex, Col_Mobile, Col_EMail, Col_o_JobTitle FROM "
              "qv_User WHERE Col_ID = 4711")},
        {"GetUserItemCount as int", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetUserItemCount(conn, out.id);
         },
         Read("SELECT COUNT(*) FROM qv_User")},
        {"GetUserItemCount as __int64", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetUserItemCount(conn, out.count);
         },
         Read("SELECT COUNT(*) FROM qv_User")},
    };
}

std::vector<StatementCase> Lists()
{
    return {
        {"LoadHumanInfo into a list of records", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadHumanInfo(conn, out.list);
         },
         Read("SELECT * FROM qv_User ORDER BY Col_Level")},
        {"LoadHumanInfo into three arrays", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadHumanInfo(conn, out.ids, out.logins, out.names);
         },
         Read("SELECT Col_ID, Col_LoginName, Col_Name FROM qv_User")},
        {"LoadUserInfo into three arrays", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadUserInfo(conn, out.ids, out.logins, out.names);
         },
         Read("SELECT Col_ID, Col_LoginName, Col_Name FROM qv_User")},
        {"LoadHumanInfo into nine arrays", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadHumanInfo(conn, out.ids, out.logins, out.names, out.sexes, out.mobiles, out.eMails,
                                       out.deptInfos, out.jobTitles, out.disabled);
         },
         Read("SELECT Col_ID,Col_LoginName,Col_Name,Col_Sex, Col_Mobile,Col_EMail,Col_DeptInfo,Col_o_JobTitle, "
              "Col_Disabled FROM qv_User")},
        {"LoadHumanInfo by holder", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadHumanInfo(conn, 501, 602, out.ids, out.logins, out.names, out.sexes, out.mobiles,
                                       out.eMails, out.deptInfos, out.jobTitles);
         },
         Read("SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name, qv_User.Col_Sex, qv_User.Col_Mobile, "
              "qv_User.Col_EMail, qv_User.Col_DeptInfo, qv_User.Col_o_JobTitle FROM qv_User, qv_Relation WHERE "
              "qv_Relation.Col_QvItemID = 501 AND qv_Relation.Col_QvItemType = 602 AND qv_Relation.Col_DQvItemID = "
              "qv_User.Col_ID AND qv_Relation.Col_DQvItemType = 1")},
        {"LoadUsers into two arrays", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadUsers(conn, 501, 602, out.ids, out.names);
         },
         Read("SELECT qv_User.Col_ID, qv_User.Col_Name FROM qv_User where col_id in(select Col_DQvItemid from "
              "qv_Relation where qv_Relation.Col_QvItemType = 602 AND qv_Relation.Col_QvItemID = 501 AND "
              "qv_Relation.Col_DQvItemType = 1 AND qv_Relation.Col_DQvItemID = qv_User.Col_ID AND "
              "qv_Relation.Col_RelType = 1)")},
        {"LoadUsers into four arrays", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadUsers(conn, 501, 602, out.ids, out.logins, out.names, out.jobTitles);
         },
         Read("SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name, qv_User.Col_o_JobTitle FROM "
              "qv_User,qv_Relation WHERE qv_Relation.Col_QvItemType = 602 AND qv_Relation.Col_QvItemID = 501 AND "
              "qv_Relation.Col_DQvItemType = 1 AND qv_Relation.Col_DQvItemID = qv_User.Col_ID AND "
              "qv_Relation.Col_RelType = 1")},
    };
}

std::vector<StatementCase> Writes()
{
    return {
        {"DeleteUserItemByID", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteUserItemByID(conn, 4711); },
         Write("DELETE FROM qv_User WHERE Col_ID = 4711 AND Col_LoginName <> 'Admin'")},
        {"SetUserLocked to locked", kAllKinds, [](CAConnect& conn) { CQVBaseFun::SetUserLocked(conn, 4711, true); },
         Write("UPDATE qv_User SET Col_Disabled = 1 WHERE Col_ID = 4711")},
        {"SetUserLocked to free", kAllKinds, [](CAConnect& conn) { CQVBaseFun::SetUserLocked(conn, 4711, false); },
         Write("UPDATE qv_User SET Col_Disabled = 0 WHERE Col_ID = 4711")},
        {"UpdateUserDeptInfo always", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::UpdateUserDeptInfo(conn, 501, 602, R"(de'p\t)", true); },
         Write(R"(UPDATE qv_User SET Col_DeptID = 602, Col_DeptInfo = 'de'p\t' WHERE Col_ID = 501)")},
        {"UpdateUserDeptInfo where empty", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::UpdateUserDeptInfo(conn, 501, 602, R"(de'p\t)", false); },
         Write(
             R"(UPDATE qv_User SET Col_DeptID = 602, Col_DeptInfo = 'de'p\t' WHERE Col_ID = 501 AND Col_DeptID = 0)")},
        {"InsertUser", kAllKinds, [](CAConnect& conn) { CQVBaseFun::InsertUser(conn, R"(lo'g\in)", R"(na'm\e)"); },
         Write(R"(INSERT INTO qv_User ( Col_LoginName, Col_Name ) VALUES ('lo'g\in','na'm\e'))")},
        {"InsertUser with a password", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::InsertUser(conn, R"(lo'g\in)", R"(na'm\e)", R"(pa's\s)", 602); },
         Write(R"(INSERT INTO qv_User ( Col_LoginName, Col_Name, Col_PWord, Col_EnType ) VALUES )"
               R"(('lo'g\in','na'm\e','pa's\s', 602))")},
        {"UpdateHumanInfo", kAllKinds,
         [](CAConnect& conn) {
             CQVBaseFun::UpdateHumanInfo(conn, 501, R"(t'\1)", R"(t'\2)", R"(t'\3)", R"(t'\4)", R"(t'\5)", R"(t'\6)",
                                         R"(t'\7)", R"(t'\8)", R"(t'\9)", R"(t'\10)", 602);
         },
         Write(R"(UPDATE qv_User Set Col_LoginName = 't''\1', Col_Name = 't''\2', Col_DeptInfo = 't''\3', )"
               R"(Col_o_JobTitle = 't''\4', Col_o_Phone = 't''\5', Col_Mobile = 't''\6', Col_o_Fax = 't''\7', )"
               R"(Col_EMail = 't''\8', Col_UserData = 't''\9', Col_h_Phone = 't''\10', Col_DeptID = 602 )"
               R"(WHERE Col_ID = 501)")},
    };
}

// Two records tell four flags apart: no two flags have the same values in both.
CHumanItem& WithFlags(CHumanItem& item, bool isSuper)
{
    human::Fill(item, R"('\)");
    item.m_bIsSuper = isSuper;
    item.m_bIsSystem = !isSuper;
    item.m_bDisabled = true;
    item.m_bIsFarUser = false;
    return item;
}

std::string InsertWithFlags(const char* flags)
{
    return std::string("INSERT INTO qv_User (Col_LoginName, Col_Name, Col_PWord, Col_IsSuper, Col_IsSystem, "
                       "Col_Disabled, Col_Entype, Col_DomainID, Col_ItemIndex, Col_Creator_Name, Col_Note, Col_EMail, "
                       "Col_Mobile, Col_Sex, Col_Description, Col_Birthday, Col_h_Province, Col_h_City, "
                       "Col_h_Address, Col_h_PostCode, Col_h_Phone, Col_h_Fax, Col_o_CompanyName, Col_o_Address, "
                       "Col_o_PostCode, Col_o_JobTitle, Col_o_Phone, Col_o_Fax, Col_ECard, Col_DeptInfo, "
                       "Col_UserData, Col_DeptID, Col_Picture ) VALUES ") +
           R"(('login''\','name''\','pword'\',)" + flags +
           R"(,1002,1003,1004,'creator''\','note''\', 'eMail''\','mobile'\',1006,'description''\','1987-06-05',)"
           R"('hProvince''\','hCity''\', 'hAddress''\','hPostCode'\','hPhone'\','hFax'\','oCompany''\', )"
           R"('oAddress''\','oPostCode'\','oJobTitle''\','oPhone'\','oFax'\', 'eCard''\','deptInfo''\', )"
           R"('userData''\', 1007, 'picture'\'))";
}

std::string UpdateWithFlags(int isSuper, int isSystem)
{
    return R"(UPDATE qv_User Set Col_LoginName = 'login''\', Col_Name = 'name''\', Col_PWord = 'pword'\', )"
           R"(Col_IsSuper = )" +
           std::to_string(isSuper) + ", Col_IsSystem = " + std::to_string(isSystem) +
           R"(, Col_Disabled = 1, Col_Entype = 1002, Col_IsFarUser = 0, Col_FarServer = 'farServer'\', )"
           R"(Col_DomainID = 1003, Col_ItemIndex = 1004, Col_Creator_Name = 'creator''\', Col_Note = 'note''\', )"
           R"(Col_EMail = 'eMail''\', Col_Mobile = 'mobile'\', Col_Sex = 1006, Col_Description = 'description''\', )"
           R"(Col_Birthday = '1987-06-05', Col_h_Province = 'hProvince''\', Col_h_City = 'hCity''\', )"
           R"(Col_h_Address = 'hAddress''\', Col_h_PostCode = 'hPostCode'\', Col_h_Phone = 'hPhone'\', )"
           R"(Col_h_Fax = 'hFax'\', Col_o_CompanyName = 'oCompany''\', Col_o_Address = 'oAddress''\', )"
           R"(Col_o_PostCode = 'oPostCode'\', Col_o_JobTitle = 'oJobTitle''\', Col_o_Phone = 'oPhone'\', )"
           R"(Col_o_Fax = 'oFax'\', Col_ECard = 'eCard''\', Col_DeptInfo = 'deptInfo''\', Col_DeptID = 1007 )"
           R"(WHERE Col_ID = 1001)";
}

std::vector<StatementCase> Records()
{
    return {
        {"CHumanItem::SaveData of a super user", kAllKinds,
         [](CAConnect& conn) {
             CHumanItem item;
             WithFlags(item, true).SaveData(conn);
         },
         Write(InsertWithFlags("1,0,1"))},
        {"CHumanItem::SaveData of a system account", kAllKinds,
         [](CAConnect& conn) {
             CHumanItem item;
             WithFlags(item, false).SaveData(conn);
         },
         Write(InsertWithFlags("0,1,1"))},
        {"CHumanItem::Update of a super user", kAllKinds,
         [](CAConnect& conn) {
             CHumanItem item;
             WithFlags(item, true).Update(conn);
         },
         Write(UpdateWithFlags(1, 0))},
        {"CHumanItem::Update of a system account", kAllKinds,
         [](CAConnect& conn) {
             CHumanItem item;
             WithFlags(item, false).Update(conn);
         },
         Write(UpdateWithFlags(0, 1))},
        {"CHumanItem::LoadInfoByID", kAllKinds,
         [](CAConnect& conn) {
             CHumanItem item;
             WithFlags(item, true).LoadInfoByID(conn);
         },
         Read("SELECT Col_ID,Col_LoginName,Col_Name,Col_PWord,Col_IsSuper,Col_Disabled, Col_Note, Col_EMail, "
              "Col_Mobile, Col_Sex, Col_Description, Col_Birthday, Col_h_Province, Col_h_City, Col_h_Address, "
              "Col_h_PostCode, Col_h_Phone, Col_h_Fax, Col_o_CompanyName, Col_o_Address, Col_o_PostCode, "
              "Col_o_JobTitle, Col_o_Phone, Col_o_Fax, Col_ECard, Col_DeptInfo, Col_ItemIndex, Col_Picture, "
              "Col_FarServer, Col_EnType FROM qv_User WHERE Col_ID = 1001")},
    };
}

// The kind is an argument here; the connection's own plays no part.
StatementCase ValidityCase(const char* name, int dbType, statements::Sent sent,
                           SourceLocation at = SourceLocation::current())
{
    const auto call = [dbType](CAConnect& conn) {
        Outputs out;
        CQVBaseFun::IsDataBaseValid(conn, dbType, R"(d'b\n)", out.flag);
    };
    return {name, kAllKinds, call, std::move(sent), at};
}

std::vector<StatementCase> Validity()
{
    return {
        ValidityCase("IsDataBaseValid of kind 0", 0, Read("SELECT name from MSysObjects where name = 'qv_User'")),
        ValidityCase("IsDataBaseValid of kind 1", 1,
                     Read("SELECT name from sysobjects where id = object_id(N'qv_User') and "
                          "OBJECTPROPERTY(id,N'IsUserTable') = 1")),
        ValidityCase("IsDataBaseValid of kind 6", 6,
                     Read(R"(select `TABLE_NAME` from `INFORMATION_SCHEMA`.`TABLES`where `TABLE_SCHEMA`='d'b\n' and )"
                          R"(`TABLE_NAME`='qv_User')")),
        ValidityCase("IsDataBaseValid of kind 3", 3, Nothing()),
        ValidityCase("IsDataBaseValid of kind 2", 2, Nothing()),
        ValidityCase("IsDataBaseValid of kind -1", -1, Nothing()),
        ValidityCase("IsDataBaseValid of kind 7", 7, Nothing()),
    };
}

class UserStatements : public testing::Test {
private:
    AnsiCodePageScope m_utf8{CP_UTF8};
};

TEST_F(UserStatements, LookUpsSendTheirTextsByteForByte) { ExpectTable(LookUps()); }

TEST_F(UserStatements, ListsSendTheirTextsByteForByte) { ExpectTable(Lists()); }

TEST_F(UserStatements, WritesSendTheirTextsByteForByte) { ExpectTable(Writes()); }

TEST_F(UserStatements, TheRecordSendsItsTextsByteForByte) { ExpectTable(Records()); }

TEST_F(UserStatements, TheSearchForTheTablesSendsItsTextsByteForByte) { ExpectTable(Validity()); }

} // namespace

} // namespace user_statements
