#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "directory/HumanItem.h"
#include "tests/basefun/ErrorRecorder.h"
#include "tests/directory/Engines.h"
#include "tests/directory/HumanMembers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using engines::Copied;
using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// Every operation on users, on every engine.

namespace {

class UsersOnAnEngine : public engines::OnAnEngine {
protected:
    int Add(const char* loginName, const char* name = "")
    {
        EXPECT_TRUE(CQVBaseFun::InsertUser(m_conn, loginName, name));
        return IdOf(loginName);
    }

    int IdOf(const char* loginName)
    {
        int id = 0;
        EXPECT_TRUE(CQVBaseFun::GetHMIDByLoginName(m_conn, loginName, id));
        return id;
    }

    bool Exists(const char* loginName)
    {
        bool exists = false;
        EXPECT_TRUE(CQVBaseFun::ExistLoginName(m_conn, loginName, exists));
        return exists;
    }

    int IdInAnyLetters(const char* loginName)
    {
        int id = -7;
        EXPECT_TRUE(CQVBaseFun::ExistLoginNameEx(m_conn, loginName, id));
        return id;
    }

    int Count()
    {
        int count = -7;
        EXPECT_TRUE(CQVBaseFun::GetUserItemCount(m_conn, count));
        return count;
    }

    void Relate(int holderId, int holderType, int id, int type, int relation)
    {
        CString sql;
        sql.Format("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, "
                   "Col_RelType) VALUES (%d, %d, %d, %d, %d)",
                   holderId, holderType, id, type, relation);
        m_conn.Execute(sql);
    }

    std::string Column(int id, const char* column)
    {
        CString sql;
        sql.Format("SELECT %s FROM qv_User WHERE Col_ID = %d", column, id);
        CARecordset rs;
        EXPECT_TRUE(rs.Open(sql, &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable));
        EXPECT_EQ(rs.IsEOF(), 0) << "no user " << id;
        return std::string(rs.GetValueToStr(1, true).View());
    }

    std::string Day(int id, const char* column) { return Column(id, column).substr(0, 10); }

    /// Whether the columns hold the record's texts, numbers and flags of these names.
    void ExpectColumns(int id, const CHumanItem& item, const std::vector<std::pair<const char*, const char*>>& columns)
    {
        for (const auto& [column, member] : columns) {
            EXPECT_EQ(Column(id, column), Stored(Value(item, member).c_str()).View()) << column;
        }
    }

    static std::string Value(const CHumanItem& item, const std::string& member)
    {
        for (const human::Text& text : human::kTexts) {
            if (member == text.name) {
                return std::string((item.*text.member).View());
            }
        }
        for (const human::Number& number : human::kNumbers) {
            if (member == number.name) {
                return std::to_string(item.*number.member);
            }
        }
        for (const human::Flag& flag : human::kFlags) {
            if (member == flag.name) {
                return item.*flag.member ? "1" : "0";
            }
        }
        ADD_FAILURE() << "no member " << member;
        return {};
    }
};

// What SaveData and Update both write.
const std::vector<std::pair<const char*, const char*>> kWrittenByBoth = {
    {"Col_LoginName", "login"},
    {"Col_Name", "name"},
    {"Col_PWord", "pword"},
    {"Col_IsSuper", "isSuper"},
    {"Col_IsSystem", "isSystem"},
    {"Col_Disabled", "disabled"},
    {"Col_EnType", "enType"},
    {"Col_DomainID", "domainID"},
    {"Col_ItemIndex", "itemIndex"},
    {"Col_Creator_Name", "creator"},
    {"Col_Note", "note"},
    {"Col_EMail", "eMail"},
    {"Col_Mobile", "mobile"},
    {"Col_Sex", "sex"},
    {"Col_Description", "description"},
    {"Col_h_Province", "hProvince"},
    {"Col_h_City", "hCity"},
    {"Col_h_Address", "hAddress"},
    {"Col_h_PostCode", "hPostCode"},
    {"Col_h_Phone", "hPhone"},
    {"Col_h_Fax", "hFax"},
    {"Col_o_CompanyName", "oCompany"},
    {"Col_o_Address", "oAddress"},
    {"Col_o_PostCode", "oPostCode"},
    {"Col_o_JobTitle", "oJobTitle"},
    {"Col_o_Phone", "oPhone"},
    {"Col_o_Fax", "oFax"},
    {"Col_ECard", "eCard"},
    {"Col_DeptInfo", "deptInfo"},
    {"Col_DeptID", "deptID"},
};

TEST_P(UsersOnAnEngine, AUserIsAddedWithNamesAlone)
{
    const int id = Add("amy", "Amy Lee");
    EXPECT_GT(id, 0);
    EXPECT_EQ(Column(id, "Col_LoginName"), "amy");
    EXPECT_EQ(Column(id, "Col_Name"), "Amy Lee");
    EXPECT_EQ(Column(id, "Col_PWord"), "");
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, AUserIsAddedWithAPassword)
{
    EXPECT_TRUE(CQVBaseFun::InsertUser(m_conn, "amy", "Amy Lee", "c0ffee", 2));
    const int id = IdOf("amy");
    EXPECT_EQ(Column(id, "Col_LoginName"), "amy");
    EXPECT_EQ(Column(id, "Col_Name"), "Amy Lee");
    EXPECT_EQ(Column(id, "Col_PWord"), "c0ffee");
    EXPECT_EQ(Column(id, "Col_EnType"), "2");
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, AQuoteInAQuickInsertIsRefusedAndReported)
{
    EXPECT_FALSE(CQVBaseFun::InsertUser(m_conn, "o'brien", "O"));
    EXPECT_THAT(ErrorRecorder::Text(), testing::StartsWith("directory/QVBaseFun_Users.cpp("));
    EXPECT_THAT(ErrorRecorder::Text(),
                testing::EndsWith(": INSERT INTO qv_User ( Col_LoginName, Col_Name ) VALUES ('o'brien','O')"));
    EXPECT_THAT(m_watch.messages, testing::SizeIs(1));
    EXPECT_EQ(Count(), 0);
}

TEST_P(UsersOnAnEngine, LookUpsFindTheirUser)
{
    Add("bob", "Bob");
    const int id = Add("amy", "Amy Lee");
    Execute("UPDATE qv_User SET Col_IsSuper = 1, Col_ItemIndex = 5, Col_Sex = 2, Col_Mobile = '0123', Col_EMail = "
            "'a@b.c', Col_o_JobTitle = 'Chief' WHERE Col_LoginName = 'amy'");
    CString text;
    EXPECT_TRUE(CQVBaseFun::GetHMLoginName(m_conn, id, text));
    EXPECT_STREQ(text, "amy");
    EXPECT_TRUE(CQVBaseFun::GetHMLoginName(m_conn, "Amy Lee", text));
    EXPECT_STREQ(text, "amy");
    EXPECT_TRUE(CQVBaseFun::GetHMUserName(m_conn, id, text));
    EXPECT_STREQ(text, "Amy Lee");
    EXPECT_TRUE(CQVBaseFun::GetHMUserName(m_conn, "bob", text));
    EXPECT_STREQ(text, "Bob");
    int read = 0;
    EXPECT_TRUE(CQVBaseFun::LoadUserInfo(m_conn, "amy", read, text));
    EXPECT_EQ(read, id);
    EXPECT_STREQ(text, "Amy Lee");
    bool isSuper = false;
    EXPECT_TRUE(CQVBaseFun::IsSuperUser(m_conn, "amy", isSuper));
    EXPECT_TRUE(isSuper);
    EXPECT_TRUE(CQVBaseFun::IsSuperUser(m_conn, "bob", isSuper));
    EXPECT_FALSE(isSuper);

    CString name;
    CString mobile;
    CString eMail;
    CString title;
    int index = 0;
    int sex = 0;
    EXPECT_TRUE(CQVBaseFun::GetUserInfo(m_conn, id, text, name, index, sex, mobile, eMail, title));
    EXPECT_STREQ(text, "amy");
    EXPECT_STREQ(name, "Amy Lee");
    EXPECT_EQ(index, 5);
    EXPECT_EQ(sex, 2);
    EXPECT_STREQ(mobile, "0123");
    EXPECT_STREQ(eMail, "a@b.c");
    EXPECT_STREQ(title, "Chief");
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, LookUpsOfUnknownUsersSucceedAndGiveTheirPresets)
{
    Add("amy", "Amy Lee");
    EXPECT_EQ(IdOf("bob"), -1);
    EXPECT_EQ(IdInAnyLetters("bob"), 0);
    EXPECT_FALSE(Exists("bob"));
    bool flag = true;
    EXPECT_TRUE(CQVBaseFun::IsSuperUser(m_conn, "bob", flag));
    EXPECT_FALSE(flag);
    flag = true;
    EXPECT_TRUE(CQVBaseFun::IsUserLocked(m_conn, "bob", flag));
    EXPECT_FALSE(flag);
    CString text = "before";
    EXPECT_TRUE(CQVBaseFun::GetHMLoginName(m_conn, 4711, text));
    EXPECT_STREQ(text, "");
    text = "before";
    EXPECT_TRUE(CQVBaseFun::GetHMLoginName(m_conn, "Bob", text));
    EXPECT_STREQ(text, "");
    text = "before";
    EXPECT_TRUE(CQVBaseFun::GetHMUserName(m_conn, 4711, text));
    EXPECT_STREQ(text, "");
    text = "before";
    EXPECT_TRUE(CQVBaseFun::GetHMUserName(m_conn, "bob", text));
    EXPECT_STREQ(text, "");
    int id = 77;
    text = "before";
    EXPECT_TRUE(CQVBaseFun::LoadUserInfo(m_conn, "bob", id, text));
    EXPECT_EQ(id, 0);
    EXPECT_STREQ(text, "");
    CString kept = "kept";
    int number = 77;
    EXPECT_TRUE(CQVBaseFun::GetUserInfo(m_conn, 4711, kept, kept, number, number, kept, kept, kept));
    EXPECT_STREQ(kept, "kept");
    EXPECT_EQ(number, 77);
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, LookUpsThatDoubleQuotesFindNamesWithQuotes)
{
    CHumanItem item;
    item.m_strLoginName = "O'Brien";
    item.m_strName = "Conor 'Con' O'Brien";
    EXPECT_EQ(item.SaveData(m_conn), 1);
    const int id = IdOf("O'Brien");
    EXPECT_GT(id, 0);
    EXPECT_TRUE(Exists("o'brien"));
    EXPECT_EQ(IdInAnyLetters("o'BRIEN"), id);
    CString text;
    EXPECT_TRUE(CQVBaseFun::GetHMLoginName(m_conn, "Conor 'Con' O'Brien", text));
    EXPECT_STREQ(text, "O'Brien");
    EXPECT_TRUE(CQVBaseFun::GetHMUserName(m_conn, "O'Brien", text));
    EXPECT_STREQ(text, "Conor 'Con' O'Brien");
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, LookUpsThatDoNotDoubleQuotesAreRefusedOnes)
{
    bool flag = true;
    int id = 77;
    CString text = "before";
    EXPECT_FALSE(CQVBaseFun::IsSuperUser(m_conn, "o'brien", flag));
    EXPECT_FALSE(flag);
    flag = true;
    EXPECT_FALSE(CQVBaseFun::IsUserLocked(m_conn, "o'brien", flag));
    EXPECT_FALSE(flag);
    EXPECT_FALSE(CQVBaseFun::LoadUserInfo(m_conn, "o'brien", id, text));
    EXPECT_EQ(id, 0);
    EXPECT_STREQ(text, "");
    EXPECT_FALSE(CQVBaseFun::UpdateUserDeptInfo(m_conn, 1, 2, "o'dept", true));
    EXPECT_FALSE(CQVBaseFun::InsertUser(m_conn, "o'brien", "O", "c0ffee", 1));
    EXPECT_THAT(m_watch.messages, testing::SizeIs(5));
}

TEST_P(UsersOnAnEngine, ALoginNameIsTakenInAnyLettersOfAnyAlphabet)
{
    const int jose = Add("José");
    const int yulia = Add("Юлия");
    for (const char* name : {"José", "JOSÉ", "josé"}) {
        EXPECT_TRUE(Exists(name)) << name;
        EXPECT_EQ(IdInAnyLetters(name), jose) << name;
    }
    for (const char* name : {"Юлия", "ЮЛИЯ", "юлия"}) {
        EXPECT_TRUE(Exists(name)) << name;
        EXPECT_EQ(IdInAnyLetters(name), yulia) << name;
    }
    EXPECT_FALSE(Exists("josef"));
    EXPECT_EQ(IdInAnyLetters("Юли"), 0);
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, UsersAreCounted)
{
    EXPECT_EQ(Count(), 0);
    Add("amy");
    Add("bob");
    EXPECT_EQ(Count(), 2);
    __int64 count = -7;
    EXPECT_TRUE(CQVBaseFun::GetUserItemCount(m_conn, count));
    EXPECT_EQ(count, 2);
}

// ---- Lists -------------------------------------------------------------------------------------------------------

TEST_P(UsersOnAnEngine, AllUsersAreListedIntoThreeArraysBehindWhatIsThere)
{
    const auto amy = static_cast<unsigned>(Add("amy", "Amy"));
    const auto bob = static_cast<unsigned>(Add("bob", "Bob"));
    CUIntArray ids;
    CStringArray logins;
    CStringArray names;
    EXPECT_TRUE(CQVBaseFun::LoadHumanInfo(m_conn, ids, logins, names));
    EXPECT_TRUE(CQVBaseFun::LoadUserInfo(m_conn, ids, logins, names));
    EXPECT_THAT(Copied(ids), ElementsAre(amy, bob, amy, bob));
    EXPECT_THAT(Copied(logins), ElementsAre("amy", "bob", "amy", "bob"));
    EXPECT_THAT(Copied(names), ElementsAre("Amy", "Bob", "Amy", "Bob"));
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, AllUsersAreListedWithWhatAListShows)
{
    const auto amy = static_cast<unsigned>(Add("amy", "Amy"));
    Execute("UPDATE qv_User SET Col_Sex = 2, Col_Mobile = 'm', Col_EMail = 'e', Col_DeptInfo = 'd', Col_o_JobTitle = "
            "'t', Col_Disabled = 1");
    CUIntArray ids;
    CStringArray logins;
    CStringArray names;
    CUIntArray sexes;
    CStringArray mobiles;
    CStringArray eMails;
    CStringArray depts;
    CStringArray titles;
    CUIntArray disabled;
    EXPECT_TRUE(CQVBaseFun::LoadHumanInfo(m_conn, ids, logins, names, sexes, mobiles, eMails, depts, titles, disabled));
    EXPECT_THAT(Copied(ids), ElementsAre(amy));
    EXPECT_THAT(Copied(logins), ElementsAre("amy"));
    EXPECT_THAT(Copied(names), ElementsAre("Amy"));
    EXPECT_THAT(Copied(sexes), ElementsAre(2U));
    EXPECT_THAT(Copied(mobiles), ElementsAre("m"));
    EXPECT_THAT(Copied(eMails), ElementsAre("e"));
    EXPECT_THAT(Copied(depts), ElementsAre("d"));
    EXPECT_THAT(Copied(titles), ElementsAre("t"));
    EXPECT_THAT(Copied(disabled), ElementsAre(1U));
    ExpectNoError();
}

class HeldUsers : public UsersOnAnEngine {
protected:
    // Amy is a member of group 5 twice, Bob once; Cid is tied to it otherwise; Dan is in view 5, a group of Eve's id is
    // a member of group 5.
    HeldUsers()
    {
        for (const char* login : {"amy", "bob", "cid", "dan", "eve"}) {
            Add(login, (std::string("N-") + login).c_str());
        }
        Execute("UPDATE qv_User SET Col_Sex = 2, Col_Mobile = 'm', Col_EMail = 'e', Col_DeptInfo = 'd', "
                "Col_o_JobTitle = 't'");
        Relate(5, 2, IdOf("amy"), 1, 1);
        Relate(5, 2, IdOf("amy"), 1, 1);
        Relate(5, 2, IdOf("bob"), 1, 1);
        Relate(5, 2, IdOf("cid"), 1, 2);
        Relate(5, 4, IdOf("dan"), 1, 1);
        Relate(5, 2, IdOf("eve"), 2, 1);
        // An exchange of holder id and type would find this.
        Relate(2, 5, IdOf("eve"), 1, 1);
    }
};

TEST_P(HeldUsers, AreListedByRelationsOfAnyType)
{
    CUIntArray ids;
    CStringArray logins;
    CStringArray names;
    CUIntArray sexes;
    CStringArray mobiles;
    CStringArray eMails;
    CStringArray depts;
    CStringArray titles;
    EXPECT_TRUE(CQVBaseFun::LoadHumanInfo(m_conn, 5, 2, ids, logins, names, sexes, mobiles, eMails, depts, titles));
    EXPECT_THAT(Copied(logins), UnorderedElementsAre("amy", "amy", "bob", "cid"));
    ASSERT_EQ(ids.GetSize(), 4);
    ASSERT_EQ(names.GetSize(), 4);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(static_cast<int>(ids[i]), IdOf(logins[i]));
        EXPECT_EQ(names[i], "N-" + logins[i]);
    }
    EXPECT_THAT(Copied(sexes), ElementsAre(2U, 2U, 2U, 2U));
    EXPECT_THAT(Copied(mobiles), ElementsAre("m", "m", "m", "m"));
    EXPECT_THAT(Copied(eMails), ElementsAre("e", "e", "e", "e"));
    EXPECT_THAT(Copied(depts), ElementsAre("d", "d", "d", "d"));
    EXPECT_THAT(Copied(titles), ElementsAre("t", "t", "t", "t"));
    ExpectNoError();
}

TEST_P(HeldUsers, AreListedOnceEachAsMembers)
{
    CUIntArray ids;
    CStringArray names;
    EXPECT_TRUE(CQVBaseFun::LoadUsers(m_conn, 5, 2, ids, names));
    EXPECT_THAT(Copied(names), UnorderedElementsAre("N-amy", "N-bob"));
    EXPECT_THAT(Copied(ids),
                UnorderedElementsAre(static_cast<unsigned>(IdOf("amy")), static_cast<unsigned>(IdOf("bob"))));
    ExpectNoError();
}

TEST_P(HeldUsers, AreListedOncePerMembershipWithTheirTitles)
{
    CUIntArray ids;
    CStringArray logins;
    CStringArray names;
    CStringArray titles;
    EXPECT_TRUE(CQVBaseFun::LoadUsers(m_conn, 5, 2, ids, logins, names, titles));
    EXPECT_THAT(Copied(logins), UnorderedElementsAre("amy", "amy", "bob"));
    EXPECT_THAT(Copied(names), UnorderedElementsAre("N-amy", "N-amy", "N-bob"));
    EXPECT_THAT(Copied(titles), ElementsAre("t", "t", "t"));
    ASSERT_EQ(ids.GetSize(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(static_cast<int>(ids[i]), IdOf(logins[i]));
    }
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, RecordsAreListedByLevelWithTheirPasswordsAndFreed)
{
    EXPECT_TRUE(CQVBaseFun::InsertUser(m_conn, "amy", "Amy", "secret1", 1));
    EXPECT_TRUE(CQVBaseFun::InsertUser(m_conn, "bob", "Bob", "secret2", 1));
    Execute("UPDATE qv_User SET Col_Level = 2, Col_IsSuper = 1 WHERE Col_LoginName = 'amy'");
    Execute("UPDATE qv_User SET Col_Level = 1 WHERE Col_LoginName = 'bob'");
    CObList users;
    users.AddTail(nullptr);
    EXPECT_TRUE(CQVBaseFun::LoadHumanInfo(m_conn, users));
    ASSERT_EQ(users.GetCount(), 3);
    POSITION position = users.GetHeadPosition();
    EXPECT_EQ(users.GetNext(position), nullptr);
    const auto& bob = dynamic_cast<const CHumanItem&>(*users.GetNext(position));
    EXPECT_EQ(bob.m_nID, IdOf("bob"));
    EXPECT_STREQ(bob.m_strLoginName, "bob");
    EXPECT_STREQ(bob.m_strName, "Bob");
    EXPECT_STREQ(bob.m_strPWord, "secret2");
    EXPECT_FALSE(bob.m_bIsSuper);
    const auto& amy = dynamic_cast<const CHumanItem&>(*users.GetNext(position));
    EXPECT_STREQ(amy.m_strPWord, "secret1");
    EXPECT_TRUE(amy.m_bIsSuper);
    CQVBaseFun::DetachHumanList(users);
    EXPECT_TRUE(users.IsEmpty());
    ExpectNoError();
}

// ---- Writes ------------------------------------------------------------------------------------------------------

TEST_P(UsersOnAnEngine, AUserIsLockedAndFreedAgain)
{
    const int id = Add("amy");
    Add("bob");
    bool locked = false;
    EXPECT_TRUE(CQVBaseFun::SetUserLocked(m_conn, id, true));
    EXPECT_TRUE(CQVBaseFun::IsUserLocked(m_conn, "amy", locked));
    EXPECT_TRUE(locked);
    EXPECT_TRUE(CQVBaseFun::IsUserLocked(m_conn, "bob", locked));
    EXPECT_FALSE(locked);
    EXPECT_TRUE(CQVBaseFun::SetUserLocked(m_conn, id, false));
    EXPECT_TRUE(CQVBaseFun::IsUserLocked(m_conn, "amy", locked));
    EXPECT_FALSE(locked);
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, ADepartmentIsSetAlwaysOrOnlyWhereThereIsNone)
{
    const int id = Add("amy");
    const int other = Add("bob");
    EXPECT_TRUE(CQVBaseFun::UpdateUserDeptInfo(m_conn, id, 7, "Sales", false));
    EXPECT_EQ(Column(id, "Col_DeptID"), "7");
    EXPECT_EQ(Column(id, "Col_DeptInfo"), "Sales");
    EXPECT_TRUE(CQVBaseFun::UpdateUserDeptInfo(m_conn, id, 8, "Stock", false));
    EXPECT_EQ(Column(id, "Col_DeptID"), "7");
    EXPECT_EQ(Column(id, "Col_DeptInfo"), "Sales");
    EXPECT_TRUE(CQVBaseFun::UpdateUserDeptInfo(m_conn, id, 8, "Stock", true));
    EXPECT_EQ(Column(id, "Col_DeptID"), "8");
    EXPECT_EQ(Column(id, "Col_DeptInfo"), "Stock");
    EXPECT_EQ(Column(other, "Col_DeptID"), "0");
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, WhatAUserMayChangeIsUpdatedWithQuotes)
{
    const int other = Add("bob", "Bob");
    const int id = Add("amy");
    EXPECT_TRUE(CQVBaseFun::UpdateHumanInfo(m_conn, id, "a'1", "a'2", "a'3", "a'4", "a'5", "a'6", "a'7", "a'8", "a'9",
                                            "a'10", 7));
    const std::vector<const char*> columns = {"Col_LoginName", "Col_Name",   "Col_DeptInfo", "Col_o_JobTitle",
                                              "Col_o_Phone",   "Col_Mobile", "Col_o_Fax",    "Col_EMail",
                                              "Col_UserData",  "Col_h_Phone"};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        EXPECT_EQ(Column(id, columns[i]), "a'" + std::to_string(i + 1)) << columns[i];
    }
    EXPECT_EQ(Column(id, "Col_DeptID"), "7");
    EXPECT_EQ(Column(other, "Col_Name"), "Bob");
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, AUserIsDeletedButNeverTheAdministrator)
{
    const int admin = Add("Admin");
    const int amy = Add("amy");
    Add("bob");
    EXPECT_TRUE(CQVBaseFun::DeleteUserItemByID(m_conn, admin));
    EXPECT_EQ(Count(), 3);
    EXPECT_TRUE(CQVBaseFun::DeleteUserItemByID(m_conn, amy));
    EXPECT_EQ(Count(), 2);
    EXPECT_EQ(IdOf("amy"), -1);
    EXPECT_EQ(IdOf("Admin"), admin);
    EXPECT_TRUE(CQVBaseFun::DeleteUserItemByID(m_conn, 4711));
    EXPECT_EQ(Count(), 2);
    ExpectNoError();
}

// ---- The record --------------------------------------------------------------------------------------------------

// Texts that end with a backslash and letters of other alphabets; a quote only where it is doubled.
void FillForSaving(CHumanItem& item, const CString& ending)
{
    human::Fill(item, ending);
    for (CString CHumanItem::* member :
         {&CHumanItem::m_strLoginName, &CHumanItem::m_strName, &CHumanItem::m_strCreatorName, &CHumanItem::m_strNote,
          &CHumanItem::m_strEMail, &CHumanItem::m_strDescription, &CHumanItem::m_strHomeProvince,
          &CHumanItem::m_strHomeCity, &CHumanItem::m_strHomeAddress, &CHumanItem::m_strCompanyName,
          &CHumanItem::m_strOfficeAddress, &CHumanItem::m_strJobTitle, &CHumanItem::m_strECard,
          &CHumanItem::m_strDeptInfo, &CHumanItem::m_strUserData}) {
        item.*member += " ''";
    }
}

TEST_P(UsersOnAnEngine, ARecordIsSavedWithEveryMemberThatItWrites)
{
    for (const bool isSuper : {true, false}) {
        CHumanItem item;
        FillForSaving(item, Given(" \\ é Ю"));
        item.m_strLoginName += isSuper ? "1" : "2";
        item.m_bIsSuper = isSuper;
        item.m_bIsSystem = !isSuper;
        item.m_bDisabled = true;
        item.m_bIsFarUser = true;
        EXPECT_EQ(item.SaveData(m_conn), 1);
        const int id = IdOf(item.m_strLoginName);
        ExpectColumns(id, item, kWrittenByBoth);
        ExpectColumns(id, item, {{"Col_UserData", "userData"}, {"Col_Picture", "picture"}});
        EXPECT_EQ(Day(id, "Col_Birthday"), "1987-06-05");
        EXPECT_EQ(Column(id, "Col_IsFarUser"), "0");
        EXPECT_EQ(Column(id, "Col_FarServer"), "");
    }
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, ARecordIsUpdatedWithEveryMemberThatItWritesAndNoOther)
{
    const int id = Add("amy");
    const int other = Add("bob", "Bob");
    Execute("UPDATE qv_User SET Col_Picture = 'p', Col_UserData = 'u', Col_Level = 3");
    for (const bool isSuper : {true, false}) {
        CHumanItem item;
        FillForSaving(item, Given(" \\ é Ю"));
        item.m_nID = id;
        item.m_bIsSuper = isSuper;
        item.m_bIsSystem = !isSuper;
        item.m_bIsFarUser = true;
        EXPECT_EQ(item.Update(m_conn), 1);
        ExpectColumns(id, item, kWrittenByBoth);
        ExpectColumns(id, item, {{"Col_IsFarUser", "isFarUser"}, {"Col_FarServer", "farServer"}});
        EXPECT_EQ(Day(id, "Col_Birthday"), "1987-06-05");
        EXPECT_EQ(Column(id, "Col_Picture"), "p");
        EXPECT_EQ(Column(id, "Col_UserData"), "u");
        EXPECT_EQ(Column(id, "Col_Level"), "3");
    }
    EXPECT_EQ(Column(other, "Col_Name"), "Bob");
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, UpdatingARecordWithoutARowGivesOne)
{
    CHumanItem item;
    item.m_nID = 4711;
    EXPECT_EQ(item.Update(m_conn), 1);
    EXPECT_EQ(Count(), 0);
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, ARecordIsLoadedByItsId)
{
    CHumanItem saved;
    FillForSaving(saved, Given(" \\ é Ю"));
    saved.m_bIsSuper = true;
    EXPECT_EQ(saved.SaveData(m_conn), 1);
    Execute("UPDATE qv_User SET Col_FarServer = 'far'");

    CHumanItem item;
    item.m_nID = IdOf(saved.m_strLoginName);
    item.m_bDisabled = true;
    EXPECT_TRUE(item.LoadInfoByID(m_conn));
    for (const human::Text& text : human::kTexts) {
        const std::string name = text.name;
        const bool isUnread = name.starts_with("extra") || name == "creator" || name == "userData";
        const CString expected = isUnread              ? CString()
                                 : name == "farServer" ? CString("far")
                                                       : Stored(saved.*text.member);
        EXPECT_STREQ(item.*text.member, expected) << name;
    }
    EXPECT_EQ(item.m_nEnType, saved.m_nEnType);
    EXPECT_EQ(item.m_nItemIndex, saved.m_nItemIndex);
    EXPECT_EQ(item.m_nSex, saved.m_nSex);
    EXPECT_EQ(item.m_nDomainID, 0);
    EXPECT_EQ(item.m_nDeptID, 0);
    EXPECT_TRUE(item.m_bIsSuper);
    EXPECT_FALSE(item.m_bDisabled);
    EXPECT_EQ(item.m_dtBirthday, COleDateTime(1987, 6, 5, 0, 0, 0));
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, LoadingARecordWithANullBirthdayLeavesTheMember)
{
    CHumanItem item;
    item.m_nID = Add("amy", "Amy");
    item.m_dtBirthday = COleDateTime(1987, 6, 5, 4, 3, 2);
    EXPECT_TRUE(item.LoadInfoByID(m_conn));
    EXPECT_STREQ(item.m_strName, "Amy");
    EXPECT_EQ(item.m_dtBirthday, COleDateTime(1987, 6, 5, 4, 3, 2));
}

TEST_P(UsersOnAnEngine, LoadingARecordThatIsNotThereGivesTrueAndLeavesIt)
{
    CHumanItem item;
    human::Fill(item, "");
    EXPECT_TRUE(item.LoadInfoByID(m_conn));
    for (const human::Text& text : human::kTexts) {
        EXPECT_STREQ(item.*text.member, text.name);
    }
    for (const human::Number& number : human::kNumbers) {
        EXPECT_EQ(item.*number.member, number.value) << number.name;
    }
    EXPECT_EQ(item.m_dtBirthday, COleDateTime(1987, 6, 5, 4, 3, 2));
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, ANewRecordIsSavedWithTodaysBirthdayAndItsDefaults)
{
    const CString before = COleDateTime::GetCurrentTime().Format("%Y-%m-%d");
    CHumanItem item;
    item.m_strLoginName = "amy";
    EXPECT_EQ(item.SaveData(m_conn), 1);
    const CString after = COleDateTime::GetCurrentTime().Format("%Y-%m-%d");
    const int id = IdOf("amy");
    EXPECT_THAT(Day(id, "Col_Birthday"), AnyOf(before.GetString(), after.GetString()));
    EXPECT_EQ(Column(id, "Col_EnType"), "1");
    EXPECT_EQ(Column(id, "Col_ItemIndex"), "10000");
}

TEST_P(UsersOnAnEngine, AQuoteInANameIsSavedAndTheRecordKeepsItSingle)
{
    CHumanItem item;
    item.m_strLoginName = "amy";
    item.m_strName = "O'Brien";
    EXPECT_EQ(item.SaveData(m_conn), 1);
    EXPECT_EQ(Column(IdOf("amy"), "Col_Name"), "O'Brien");
    EXPECT_STREQ(item.m_strName, "O'Brien");
    ExpectNoError();
}

TEST_P(UsersOnAnEngine, AQuoteInAMobileNumberIsRefusedAndOnlySavingKeepsTheText)
{
    CHumanItem item;
    item.m_strLoginName = "amy";
    item.m_strMobile = "01'23";
    EXPECT_EQ(item.Update(m_conn), 0);
    ExpectNoError();
    EXPECT_EQ(item.SaveData(m_conn), 0);
    EXPECT_THAT(ErrorRecorder::Text(), testing::StartsWith("directory/HumanItem.cpp("));
    EXPECT_THAT(ErrorRecorder::Text(), HasSubstr(": INSERT INTO qv_User (Col_LoginName,"));
    EXPECT_THAT(m_watch.messages, IsEmpty());
    EXPECT_EQ(Count(), 0);
}

TEST_P(UsersOnAnEngine, TheTablesAreFoundToBeThere)
{
    bool valid = false;
    const std::string name = m_conn.m_nDBType == 6 ? Rows("SELECT DATABASE()").front() : "";
    EXPECT_TRUE(CQVBaseFun::IsDataBaseValid(m_conn, m_conn.m_nDBType, name.c_str(), valid));
    EXPECT_TRUE(valid);
    ExpectNoError();
}

INSTANTIATE_TEST_SUITE_P(Engines, UsersOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);
INSTANTIATE_TEST_SUITE_P(Engines, HeldUsers, testing::ValuesIn(engines::All()), engines::NameOf);

} // namespace
