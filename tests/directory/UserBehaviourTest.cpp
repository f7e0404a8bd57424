#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "directory/HumanItem.h"
#include "testing/ScriptedDriver.h"
#include "tests/basefun/ErrorRecorder.h"
#include "tests/directory/BehaviourCase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace user_behaviour {

using behaviour::Line;
using behaviour::Numbers;
using behaviour::ReadCase;
using behaviour::Shown;
using behaviour::Texts;
using behaviour::WriteCase;
using scripted::Raise;
using scripted::Reply;
using scripted::Rows;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

std::vector<ReadCase> LookUps()
{
    return {
        {"GetHMIDByLoginName",
         [](CAConnect& conn) {
             int id = 77;
             const bool ran = CQVBaseFun::GetHMIDByLoginName(conn, "amy", id);
             return Line(ran, id);
         },
         {{"41"}, {"42"}},
         "true 41",
         "true -1",
         "true -1",
         "false -1"},
        {"ExistLoginName",
         [](CAConnect& conn) {
             bool exists = false;
             const bool ran = CQVBaseFun::ExistLoginName(conn, "amy", exists);
             return Line(ran, exists);
         },
         {{"amy"}},
         "true true",
         "true false",
         "true true",
         "false true"},
        {"ExistLoginNameEx",
         [](CAConnect& conn) {
             int id = 77;
             const bool ran = CQVBaseFun::ExistLoginNameEx(conn, "amy", id);
             return Line(ran, id);
         },
         {{"41"}, {"42"}},
         "true 41",
         "true 0",
         "true 0",
         "false 0"},
        {"IsSuperUser",
         [](CAConnect& conn) {
             bool isSuper = true;
             const bool ran = CQVBaseFun::IsSuperUser(conn, "amy", isSuper);
             return Line(ran, isSuper);
         },
         {{"1"}, {"0"}},
         "true true",
         "true false",
         "true false",
         "false false"},
        {"IsUserLocked",
         [](CAConnect& conn) {
             bool locked = true;
             const bool ran = CQVBaseFun::IsUserLocked(conn, "amy", locked);
             return Line(ran, locked);
         },
         {{"1"}, {"0"}},
         "true true",
         "true false",
         "true false",
         "false false"},
        {"GetHMLoginName by id",
         [](CAConnect& conn) {
             CString login = "before";
             const bool ran = CQVBaseFun::GetHMLoginName(conn, 41, login);
             return Line(ran, login);
         },
         {{"amy"}, {"bob"}},
         R"(true "amy")",
         R"(true "")",
         R"(true "")",
         R"(false "")"},
        {"GetHMLoginName by name",
         [](CAConnect& conn) {
             CString login = "before";
             const bool ran = CQVBaseFun::GetHMLoginName(conn, "Amy Lee", login);
             return Line(ran, login);
         },
         {{"amy"}, {"bob"}},
         R"(true "amy")",
         R"(true "")",
         R"(true "")",
         R"(false "")"},
        {"GetHMUserName by login name",
         [](CAConnect& conn) {
             CString name = "before";
             const bool ran = CQVBaseFun::GetHMUserName(conn, "amy", name);
             return Line(ran, name);
         },
         {{"Amy Lee"}, {"Bob"}},
         R"(true "Amy Lee")",
         R"(true "")",
         R"(true "")",
         R"(false "")"},
        {"GetHMUserName by id",
         [](CAConnect& conn) {
             CString name = "before";
             const bool ran = CQVBaseFun::GetHMUserName(conn, 41, name);
             return Line(ran, name);
         },
         {{"Amy Lee"}, {"Bob"}},
         R"(true "Amy Lee")",
         R"(true "")",
         R"(true "")",
         R"(false "")"},
        {"LoadUserInfo by login name",
         [](CAConnect& conn) {
             int id = 77;
             CString name = "before";
             const bool ran = CQVBaseFun::LoadUserInfo(conn, "amy", id, name);
             return Line(ran, id, name);
         },
         {{"41", "Amy Lee"}, {"42", "Bob"}},
         R"(true 41 "Amy Lee")",
         R"(true 0 "")",
         R"(true 0 "")",
         R"(false 0 "")"},
        {"GetUserInfo",
         [](CAConnect& conn) {
             CString login = "l";
             CString name = "n";
             int index = 71;
             int sex = 72;
             CString mobile = "m";
             CString eMail = "e";
             CString title = "t";
             const bool ran = CQVBaseFun::GetUserInfo(conn, 41, login, name, index, sex, mobile, eMail, title);
             return Line(ran, login, name, index, sex, mobile, eMail, title);
         },
         {{"amy", "Amy Lee", "5", "2", "0123", "a@b.c", "Chief"}},
         R"(true "amy" "Amy Lee" 5 2 "0123" "a@b.c" "Chief")",
         R"(true "l" "n" 71 72 "m" "e" "t")",
         R"(true "l" "n" 71 72 "m" "e" "t")",
         R"(false "l" "n" 71 72 "m" "e" "t")"},
        {"GetUserItemCount as int",
         [](CAConnect& conn) {
             int count = 77;
             const bool ran = CQVBaseFun::GetUserItemCount(conn, count);
             return Line(ran, count);
         },
         {{"2147483647"}},
         "true 2147483647",
         "true 0",
         "true 0",
         "false 0"},
        {"GetUserItemCount as __int64",
         [](CAConnect& conn) {
             __int64 count = 77;
             const bool ran = CQVBaseFun::GetUserItemCount(conn, count);
             return Line(ran, count);
         },
         {{"5000000000"}},
         "true 5000000000",
         "true 0",
         "true 0",
         "false 0"},
    };
}

std::vector<ReadCase> ArrayLists()
{
    return {
        {"LoadHumanInfo into three arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts logins;
             Texts names;
             const bool ran = CQVBaseFun::LoadHumanInfo(conn, ids, logins, names);
             return Line(ran, ids, logins, names);
         },
         {{"41", "amy", "Amy"}, {"42", "bob", "Bob"}},
         "true [9,41,42] [old,amy,bob] [old,Amy,Bob]",
         "true [9] [old] [old]",
         "true [9,0] [old,] [old,]",
         "false [9] [old] [old]"},
        {"LoadUserInfo into three arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts logins;
             Texts names;
             const bool ran = CQVBaseFun::LoadUserInfo(conn, ids, logins, names);
             return Line(ran, ids, logins, names);
         },
         {{"41", "amy", "Amy"}, {"42", "bob", "Bob"}},
         "true [9,41,42] [old,amy,bob] [old,Amy,Bob]",
         "true [9] [old] [old]",
         "true [9,0] [old,] [old,]",
         "false [9] [old] [old]"},
        {"LoadHumanInfo into nine arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts logins;
             Texts names;
             Numbers sexes;
             Texts mobiles;
             Texts eMails;
             Texts depts;
             Texts titles;
             Numbers disabled;
             const bool ran =
                 CQVBaseFun::LoadHumanInfo(conn, ids, logins, names, sexes, mobiles, eMails, depts, titles, disabled);
             return Line(ran, ids, logins, names, sexes, mobiles, eMails, depts, titles, disabled);
         },
         {{"41", "l1", "n1", "3", "m1", "e1", "d1", "t1", "1"}, {"42", "l2", "n2", "4", "m2", "e2", "d2", "t2", "0"}},
         "true [9,41,42] [old,l1,l2] [old,n1,n2] [9,3,4] [old,m1,m2] [old,e1,e2] [old,d1,d2] [old,t1,t2] [9,1,0]",
         "true [9] [old] [old] [9] [old] [old] [old] [old] [9]",
         "true [9,0] [old,] [old,] [9,0] [old,] [old,] [old,] [old,] [9,0]",
         "false [9] [old] [old] [9] [old] [old] [old] [old] [9]"},
        {"LoadHumanInfo by holder",
         [](CAConnect& conn) {
             Numbers ids;
             Texts logins;
             Texts names;
             Numbers sexes;
             Texts mobiles;
             Texts eMails;
             Texts depts;
             Texts titles;
             const bool ran =
                 CQVBaseFun::LoadHumanInfo(conn, 5, 2, ids, logins, names, sexes, mobiles, eMails, depts, titles);
             return Line(ran, ids, logins, names, sexes, mobiles, eMails, depts, titles);
         },
         {{"41", "l1", "n1", "3", "m1", "e1", "d1", "t1"}, {"42", "l2", "n2", "4", "m2", "e2", "d2", "t2"}},
         "true [9,41,42] [old,l1,l2] [old,n1,n2] [9,3,4] [old,m1,m2] [old,e1,e2] [old,d1,d2] [old,t1,t2]",
         "true [9] [old] [old] [9] [old] [old] [old] [old]",
         "true [9,0] [old,] [old,] [9,0] [old,] [old,] [old,] [old,]",
         "false [9] [old] [old] [9] [old] [old] [old] [old]"},
        {"LoadUsers into two arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             const bool ran = CQVBaseFun::LoadUsers(conn, 5, 2, ids, names);
             return Line(ran, ids, names);
         },
         {{"41", "Amy"}, {"42", "Bob"}},
         "true [9,41,42] [old,Amy,Bob]",
         "true [9] [old]",
         "true [9,0] [old,]",
         "false [9] [old]"},
        {"LoadUsers into four arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts logins;
             Texts names;
             Texts titles;
             const bool ran = CQVBaseFun::LoadUsers(conn, 5, 2, ids, logins, names, titles);
             return Line(ran, ids, logins, names, titles);
         },
         {{"41", "l1", "n1", "t1"}, {"42", "l2", "n2", "t2"}},
         "true [9,41,42] [old,l1,l2] [old,n1,n2] [old,t1,t2]",
         "true [9] [old] [old] [old]",
         "true [9,0] [old,] [old,] [old,]",
         "false [9] [old] [old] [old]"},
    };
}

/// Ids and names of a list of records, the list's own things freed.
std::string ShownAndFreed(CObList& users)
{
    std::string shown;
    for (POSITION position = users.GetHeadPosition(); position != nullptr;) {
        const auto& user = dynamic_cast<const CHumanItem&>(*users.GetNext(position));
        shown += "(" + Line(user.m_nID, user.m_strLoginName, user.m_strName, user.m_strPWord, user.m_bIsSuper) + ")";
    }
    CQVBaseFun::DetachHumanList(users);
    return shown;
}

std::string LoadRecords(CAConnect& conn)
{
    CObList users;
    auto old = std::make_unique<CHumanItem>();
    old->m_nID = 9;
    users.AddTail(old.release());
    const bool ran = CQVBaseFun::LoadHumanInfo(conn, users);
    return Shown(ran) + " " + ShownAndFreed(users);
}

// Given by name, so the columns stand in another order and in other letters than the ones asked for.
Reply RecordRows()
{
    Reply reply;
    reply.columns = {"col_level", "COL_ISSUPER", "col_password", "Col_name", "col_loginname", "Col_Note", "col_id"};
    reply.rows = {{"1", "1", "secret1", "Amy", "amy", "note1", "41"},
                  {"2", "0", "secret2", "Bob", "bob", "note2", "42"}};
    return reply;
}

std::vector<ReadCase> Reads()
{
    std::vector<ReadCase> all = LookUps();
    for (ReadCase& list : ArrayLists()) {
        all.push_back(std::move(list));
    }
    all.push_back({"LoadHumanInfo into a list of records", LoadRecords, {}, "", "", "", R"(false (9 "" "" "" false))"});
    return all;
}

std::vector<WriteCase> Writes()
{
    return {
        {"DeleteUserItemByID", [](CAConnect& conn) { return CQVBaseFun::DeleteUserItemByID(conn, 41); }},
        {"SetUserLocked", [](CAConnect& conn) { return CQVBaseFun::SetUserLocked(conn, 41, true); }},
        {"UpdateUserDeptInfo always",
         [](CAConnect& conn) { return CQVBaseFun::UpdateUserDeptInfo(conn, 41, 7, "Sales", true); }},
        {"UpdateUserDeptInfo where empty",
         [](CAConnect& conn) { return CQVBaseFun::UpdateUserDeptInfo(conn, 41, 7, "Sales", false); }},
        {"InsertUser", [](CAConnect& conn) { return CQVBaseFun::InsertUser(conn, "amy", "Amy"); }},
        {"InsertUser with a password",
         [](CAConnect& conn) { return CQVBaseFun::InsertUser(conn, "amy", "Amy", "secret", 1); }},
        {"UpdateHumanInfo",
         [](CAConnect& conn) {
             return CQVBaseFun::UpdateHumanInfo(conn, 41, "1", "2", "3", "4", "5", "6", "7", "8", "9", "10", 7);
         }},
    };
}

class UserBehaviour : public behaviour::Script {
protected:
    UserBehaviour() : Script("directory/QVBaseFun_Users.cpp") {}

    /// The text and one message of an error in the only statement that was sent. Forgets both.
    /// @return the line that the text names.
    int TakeError(const std::string& messageAndCode) { return Script::TakeError(messageAndCode, OnlyStatement()); }
};

TEST_F(UserBehaviour, LookUpsReadTheFirstRowAndListsAppendEveryRow)
{
    for (const auto& table : {LookUps(), ArrayLists()}) {
        for (const ReadCase& read : table) {
            Connect();
            m_database->Answer(Rows(read.rows));
            EXPECT_EQ(read.call(*m_conn), read.read) << read.name;
            ExpectNoError();
        }
    }
}

TEST_F(UserBehaviour, WithoutARowTheOutputsKeepTheirPresets)
{
    for (const auto& table : {LookUps(), ArrayLists()}) {
        for (const ReadCase& read : table) {
            Connect();
            EXPECT_EQ(read.call(*m_conn), read.empty) << read.name;
            EXPECT_THAT(m_database->queries, SizeIs(1)) << read.name;
            ExpectNoError();
        }
    }
}

TEST_F(UserBehaviour, ANullLeavesAnOutputAsItWasAndAppendsNothingButAnEmptyElement)
{
    for (const auto& table : {LookUps(), ArrayLists()}) {
        for (const ReadCase& read : table) {
            Connect();
            m_database->Answer(Rows({std::vector<scripted::Value>(read.rows.front().size())}));
            EXPECT_EQ(read.call(*m_conn), read.nulls) << read.name;
            ExpectNoError();
        }
    }
}

TEST_F(UserBehaviour, OfSeveralColumnsOneNullLeavesTheOthersRead)
{
    Connect();
    m_database->Answer(Rows({{"41", {}, "Amy"}, {{}, "bob", {}}}));
    CUIntArray ids;
    CStringArray logins;
    CStringArray names;
    EXPECT_TRUE(CQVBaseFun::LoadHumanInfo(*m_conn, ids, logins, names));
    EXPECT_EQ(Line(ids, logins, names), "[41,0] [,bob] [Amy,]");
}

TEST_F(UserBehaviour, ReadsOfAClosedConnectionGiveFalseAndSayNothing) { ExpectClosedReadsSayNothing(Reads()); }

TEST_F(UserBehaviour, WritesOnAClosedConnectionAreReportedAsErrors) { ExpectClosedWritesAreReported(Writes()); }

TEST_F(UserBehaviour, WritesGiveTrueWhateverTheEngineCounts) { ExpectWritesGiveTrueWhateverIsCounted(Writes()); }

TEST_F(UserBehaviour, ARefusedReadGivesFalseItsTextAndOneMessage)
{
    for (const ReadCase& read : Reads()) {
        SCOPED_TRACE(read.name);
        Connect();
        m_database->Answer(Raise("no such table:\n\tqv_User"));
        EXPECT_EQ(read.call(*m_conn), read.failed);
        TakeError("no such table: qv_User [Script 1]");
    }
}

TEST_F(UserBehaviour, ARefusedWriteGivesFalseItsTextAndOneMessage)
{
    for (const WriteCase& write : Writes()) {
        SCOPED_TRACE(write.name);
        Connect();
        m_database->Answer(Raise("disk full\r\nreally"));
        EXPECT_FALSE(write.call(*m_conn));
        TakeError("disk full really [Script 1]");
    }
}

TEST_F(UserBehaviour, EveryOperationNamesALineOfItsOwn)
{
    std::map<int, std::string> lines;
    const auto note = [&](const std::string& name, const auto& call) {
        Connect();
        m_database->Answer(Raise("refused"));
        call(*m_conn);
        const int line = TakeError("refused [Script 1]");
        EXPECT_TRUE(lines.emplace(line, name).second) << name << " and " << lines[line] << " both name line " << line;
    };
    for (const ReadCase& read : Reads()) {
        note(read.name, read.call);
    }
    for (const WriteCase& write : Writes()) {
        if (write.name != "UpdateUserDeptInfo where empty") { // one operation with the row before
            note(write.name, write.call);
        }
    }
}

TEST_F(UserBehaviour, AnErrorsTextIsOneLineThoughTheStatementIsNot)
{
    Connect();
    m_database->Answer(Raise("refused"));
    EXPECT_FALSE(CQVBaseFun::InsertUser(*m_conn, "a\nb", "c\t\td"));
    EXPECT_THAT(ErrorRecorder::Text(), testing::EndsWith("VALUES ('a b','c d')"));
    EXPECT_THAT(ErrorRecorder::Text(), Not(testing::ContainsRegex("[\n\t]")));
}

TEST_F(UserBehaviour, WithoutAWindowTheTextIsKeptAndNoMessageSent)
{
    Connect();
    m_conn->m_hNotifyWnd = nullptr;
    m_database->Answer(Raise("refused"));
    EXPECT_FALSE(CQVBaseFun::SetUserLocked(*m_conn, 41, true));
    EXPECT_THAT(ErrorRecorder::Text(), StartsWith("directory/QVBaseFun_Users.cpp("));
    EXPECT_THAT(m_watch.messages, IsEmpty());
}

TEST_F(UserBehaviour, AnErrorOutlivesLaterSuccessesUntilTheNextError)
{
    Connect();
    m_database->Answer(Raise("first"));
    EXPECT_FALSE(CQVBaseFun::SetUserLocked(*m_conn, 41, true));
    const std::string first = ErrorRecorder::Text();
    int id = 0;
    EXPECT_TRUE(CQVBaseFun::SetUserLocked(*m_conn, 41, true));
    EXPECT_TRUE(CQVBaseFun::GetHMIDByLoginName(*m_conn, "amy", id));
    m_database->GoAway();
    EXPECT_FALSE(CQVBaseFun::GetHMIDByLoginName(*m_conn, "amy", id));
    EXPECT_EQ(ErrorRecorder::Text(), first);

    Connect();
    m_database->Answer(Raise("second"));
    EXPECT_FALSE(CQVBaseFun::SetUserLocked(*m_conn, 41, true));
    EXPECT_THAT(ErrorRecorder::Text(), testing::HasSubstr("second [Script 1]"));
    EXPECT_THAT(m_watch.messages, SizeIs(2));
}

TEST_F(UserBehaviour, AListThatBreaksOffKeepsTheRowsReadSoFarWithItsArraysParallel)
{
    for (const ReadCase& list : ArrayLists()) {
        SCOPED_TRACE(list.name);
        Connect();
        m_database->Answer(Rows({list.rows.front()}));
        std::string expected = list.call(*m_conn);
        expected.replace(0, 4, "false");

        Connect();
        Reply broken = Rows(list.rows);
        broken.raiseAtRow = 1;
        m_database->Answer(broken);
        EXPECT_EQ(list.call(*m_conn), expected);
        TakeError("row refused [Script 2]");
    }
}

TEST_F(UserBehaviour, ALookUpDoesNotReadBehindTheFirstRow)
{
    for (const ReadCase& read : LookUps()) {
        Connect();
        Reply reply = Rows({read.rows.front(), read.rows.front()});
        reply.raiseAtRow = 1;
        m_database->Answer(reply);
        EXPECT_EQ(read.call(*m_conn), read.read) << read.name;
        ExpectNoError();
    }
}

// Some libraries raise when they are read past the end; then the answer is out before the failure.
TEST_F(UserBehaviour, TheTestForALoginNameHasItsAnswerBeforeTheReadThatMayRaise)
{
    Connect();
    Reply reply;
    reply.noColumns = true;
    m_database->Answer(reply);
    bool exists = true;
    EXPECT_FALSE(CQVBaseFun::ExistLoginName(*m_conn, "amy", exists));
    EXPECT_FALSE(exists);
    TakeError("column 1 is out of range: the result has 0");
}

TEST_F(UserBehaviour, TheTestForALoginNameThatIsRefusedLeavesItTaken)
{
    Connect();
    m_database->Answer(Raise("refused"));
    bool exists = false;
    EXPECT_FALSE(CQVBaseFun::ExistLoginName(*m_conn, "amy", exists));
    EXPECT_TRUE(exists);
    TakeError("refused [Script 1]");
}

// ---- Lists of records --------------------------------------------------------------------------------------------

TEST_F(UserBehaviour, RecordsAreReadByColumnNameInAnyOrderAndAnyLetters)
{
    Connect();
    m_database->Answer(RecordRows());
    EXPECT_EQ(LoadRecords(*m_conn), R"(true (9 "" "" "" false))"
                                    R"((41 "amy" "Amy" "secret1" true))"
                                    R"((42 "bob" "Bob" "secret2" false))");
    ExpectNoError();
}

TEST_F(UserBehaviour, RecordsOfAListKeepTheDefaultsOfTheirOtherMembers)
{
    Connect();
    m_database->Answer(RecordRows());
    CObList users;
    EXPECT_TRUE(CQVBaseFun::LoadHumanInfo(*m_conn, users));
    ASSERT_EQ(users.GetCount(), 2);
    const auto& user = dynamic_cast<const CHumanItem&>(*users.GetHead());
    EXPECT_STREQ(user.m_strNote, "");
    EXPECT_EQ(user.m_nItemIndex, 10000);
    EXPECT_EQ(user.m_nEnType, 1);
    EXPECT_FALSE(user.m_bDisabled);
    CQVBaseFun::DetachHumanList(users);
}

TEST_F(UserBehaviour, NullsInARecordsRowLeaveItsDefaults)
{
    Connect();
    Reply reply = RecordRows();
    reply.rows = {std::vector<scripted::Value>(reply.columns.size())};
    m_database->Answer(reply);
    CObList users;
    EXPECT_TRUE(CQVBaseFun::LoadHumanInfo(*m_conn, users));
    ASSERT_EQ(users.GetCount(), 1);
    const CHumanItem defaults;
    EXPECT_EQ(dynamic_cast<const CHumanItem&>(*users.GetHead()).m_nID, defaults.m_nID);
    EXPECT_EQ(ShownAndFreed(users), R"((0 "" "" "" false))");
}

TEST_F(UserBehaviour, AColumnThatRecordsNeedAndTheTableLacksFailsAtTheFirstRow)
{
    for (std::size_t missing : {1U, 2U, 3U, 4U, 6U}) {
        Connect();
        Reply reply = RecordRows();
        const std::string name = reply.columns[missing];
        reply.columns[missing] = "other";
        m_database->Answer(reply);
        EXPECT_EQ(LoadRecords(*m_conn), R"(false (9 "" "" "" false))") << name;
        EXPECT_THAT(m_watch.messages, SizeIs(1));
        EXPECT_THAT(ErrorRecorder::Text(), testing::ContainsRegex("the result has no column Col_")) << name;
        m_watch.messages.clear();
        CQVBaseFun::m_strLastError = ErrorRecorder::kOlder;
    }
}

TEST_F(UserBehaviour, AMissingPasswordColumnGoesUnnoticedWithoutARow)
{
    Connect();
    Reply reply;
    reply.columns = {"Col_ID", "Col_LoginName", "Col_Name", "Col_PWord", "Col_IsSuper"};
    m_database->Answer(reply);
    EXPECT_EQ(LoadRecords(*m_conn), R"(true (9 "" "" "" false))");
    ExpectNoError();
}

TEST_F(UserBehaviour, AListOfRecordsThatBreaksOffKeepsTheRowsReadSoFar)
{
    Connect();
    Reply reply = RecordRows();
    reply.raiseAtRow = 1;
    m_database->Answer(reply);
    EXPECT_EQ(LoadRecords(*m_conn), R"(false (9 "" "" "" false)(41 "amy" "Amy" "secret1" true))");
    TakeError("row refused [Script 2]");
}

// ---- Freeing lists -----------------------------------------------------------------------------------------------

/// Notes its number when it is destroyed.
class Noting : public CObject {
public:
    Noting(std::vector<int>& log, int number) : m_log(log), m_number(number) {}
    ~Noting() override { m_log.push_back(m_number); }
    Noting(const Noting&) = delete;
    Noting& operator=(const Noting&) = delete;

private:
    std::vector<int>& m_log;
    int m_number;
};

TEST(DetachHumanList, DeletesRecordsOfAnyClassFromHeadToTailAndEmptiesTheList)
{
    std::vector<int> destroyed;
    CObList list;
    list.AddTail(std::make_unique<Noting>(destroyed, 1).release());
    list.AddTail(std::make_unique<CHumanItem>().release());
    list.AddTail(std::make_unique<Noting>(destroyed, 2).release());
    CQVBaseFun::DetachHumanList(list);
    EXPECT_THAT(destroyed, ElementsAre(1, 2));
    EXPECT_TRUE(list.IsEmpty());
}

TEST(DetachHumanList, SkipsNullEntries)
{
    std::vector<int> destroyed;
    CObList list;
    list.AddTail(nullptr);
    list.AddTail(std::make_unique<Noting>(destroyed, 1).release());
    list.AddTail(nullptr);
    CQVBaseFun::DetachHumanList(list);
    EXPECT_THAT(destroyed, ElementsAre(1));
    EXPECT_EQ(list.GetCount(), 0);
}

TEST(DetachHumanList, LeavesAnEmptyListEmptyAndUsable)
{
    CObList list;
    CQVBaseFun::DetachHumanList(list);
    EXPECT_TRUE(list.IsEmpty());
    std::vector<int> destroyed;
    list.AddTail(std::make_unique<Noting>(destroyed, 1).release());
    CQVBaseFun::DetachHumanList(list);
    EXPECT_THAT(destroyed, ElementsAre(1));
}

} // namespace

} // namespace user_behaviour
