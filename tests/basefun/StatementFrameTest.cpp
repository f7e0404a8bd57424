#include "basefun/StatementFrame.h"

#include "basefun/QVBaseFun.h"
#include "basefun/SourceLocation.h"
#include "dbaccess/CAConnect.h"
#include "platform/CObject.h"
#include "testing/ScriptedDriver.h"
#include "tests/basefun/ErrorRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

using frame::Columns;
using frame::OnError;
using scripted::Raise;
using scripted::Reply;
using scripted::Rows;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

struct Record : CObject {
    Record() { ++alive; }
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;
    ~Record() override { --alive; }

    int number = -1;
    bool flag = true;
    CString text = "preset";

    static int alive;
};
int Record::alive = 0;

constexpr std::array<frame::NamedMember<Record>, 3> kMembers = {
    {{"Number", &Record::number}, {"Flag", &Record::flag}, {"Text", &Record::text}}};

class StatementFrame : public testing::Test {
protected:
    StatementFrame()
    {
        m_database.Connect(m_conn);
        m_watch.ListenTo(m_conn);
    }

    /// The error of a statement that was run by this line of this file.
    static std::string ErrorAt(unsigned line, const std::string& rest)
    {
        return "tests/basefun/StatementFrameTest.cpp(" + std::to_string(line) + "): " + rest;
    }

    ErrorRecorder m_watch;
    scripted::Database m_database;
    CAConnect m_conn;
};

TEST_F(StatementFrame, NamesTheFileFromTheProjectsRootAndTheLineOfTheCall)
{
    m_database.Answer(Raise("refused"));
    const unsigned line = SourceLocation::current().line() + 1;
    EXPECT_FALSE(frame::Execute(m_conn, "DELETE"));
    EXPECT_EQ(ErrorRecorder::Text(), ErrorAt(line, "refused [Script 1]: DELETE"));
}

TEST_F(StatementFrame, NamesTheLineOfTheCallInEveryShape)
{
    for (int i = 0; i < 5; ++i) {
        m_database.Answer(Raise("refused"));
    }
    const auto nothing = [](CARecordset&) {};
    unsigned line = SourceLocation::current().line() + 1;
    EXPECT_FALSE(frame::ReadFirst(m_conn, "S1", nothing));
    EXPECT_EQ(ErrorRecorder::Text(), ErrorAt(line, "refused [Script 1]: S1"));
    line = SourceLocation::current().line() + 1;
    EXPECT_FALSE(frame::ReadEach(m_conn, "S2", nothing));
    EXPECT_EQ(ErrorRecorder::Text(), ErrorAt(line, "refused [Script 1]: S2"));
    CObList list;
    line = SourceLocation::current().line() + 1;
    EXPECT_FALSE(frame::ReadObjects<Record>(m_conn, "S3", list, frame::MembersByName(kMembers)));
    EXPECT_EQ(ErrorRecorder::Text(), ErrorAt(line, "refused [Script 1]: S3"));
    bool found = true;
    line = SourceLocation::current().line() + 1;
    EXPECT_FALSE(frame::TestExists(m_conn, "S4", found));
    EXPECT_EQ(ErrorRecorder::Text(), ErrorAt(line, "refused [Script 1]: S4"));
    line = SourceLocation::current().line() + 1;
    EXPECT_EQ(frame::Run(m_conn, "S5", OnError::keep), 0);
    EXPECT_EQ(ErrorRecorder::Text(), ErrorAt(line, "refused [Script 1]: S5"));
}

TEST_F(StatementFrame, NotifiesOnceWithTheAddressOfTheText)
{
    m_database.Answer(Raise("refused"));
    EXPECT_FALSE(frame::Execute(m_conn, "DELETE"));
    ASSERT_THAT(m_watch.messages, SizeIs(1));
    EXPECT_EQ(m_watch.messages[0].message, ErrorRecorder::kMessage);
    EXPECT_EQ(m_watch.messages[0].wParam, 0U);
    EXPECT_EQ(m_watch.messages[0].lParam, reinterpret_cast<LPARAM>(&CQVBaseFun::m_strLastError));
    EXPECT_EQ(m_watch.messages[0].text, ErrorRecorder::Text());
}

TEST_F(StatementFrame, KeepsTheTextWithoutAWindow)
{
    m_conn.m_hNotifyWnd = nullptr;
    m_database.Answer(Raise("refused"));
    EXPECT_FALSE(frame::Execute(m_conn, "DELETE"));
    EXPECT_NE(ErrorRecorder::Text(), ErrorRecorder::kOlder);
    EXPECT_THAT(m_watch.messages, IsEmpty());
}

TEST_F(StatementFrame, NotifiesOnlyWhereThePolicySaysSo)
{
    m_database.Answer(Raise("kept"));
    EXPECT_FALSE(frame::Execute(m_conn, "DELETE", OnError::keep));
    EXPECT_THAT(ErrorRecorder::Text(), testing::HasSubstr("kept"));
    const std::string kept = ErrorRecorder::Text();
    m_database.Answer(Raise("dropped"));
    EXPECT_FALSE(frame::Execute(m_conn, "DELETE", OnError::drop));
    EXPECT_EQ(ErrorRecorder::Text(), kept);
    EXPECT_THAT(m_watch.messages, IsEmpty());
}

TEST_F(StatementFrame, RunsAStatementAndGivesOneOrZero)
{
    EXPECT_EQ(frame::Run(m_conn, "INSERT", OnError::keep), 1);
    EXPECT_THAT(m_database.executions, ElementsAre("INSERT"));
    m_database.GoAway();
    EXPECT_EQ(frame::Run(m_conn, "INSERT", OnError::keep), 0);
    EXPECT_THAT(m_database.executions, SizeIs(1));
    EXPECT_EQ(ErrorRecorder::Text(), ErrorRecorder::kOlder);
}

TEST_F(StatementFrame, LetsOtherExceptionsThrough)
{
    m_database.Answer(Rows({{"1"}}));
    const auto row = [](CARecordset&) { throw std::runtime_error("not the library's"); };
    EXPECT_THROW(frame::ReadFirst(m_conn, "SELECT", row), std::runtime_error);
    EXPECT_EQ(ErrorRecorder::Text(), ErrorRecorder::kOlder);
    EXPECT_THAT(m_watch.messages, IsEmpty());
}

TEST_F(StatementFrame, LetsTheWindowsExceptionsThrough)
{
    const HWND window =
        CreateMessageWindow([](UINT, WPARAM, LPARAM) -> LRESULT { throw std::runtime_error("window"); });
    m_conn.m_hNotifyWnd = window;
    m_database.Answer(Raise("refused"));
    EXPECT_THROW(frame::Execute(m_conn, "DELETE"), std::runtime_error);
    DestroyMessageWindow(window);
}

TEST_F(StatementFrame, ReadsColumnsInTheOrderOfTheOutputs)
{
    m_database.Answer(Rows({{"1", "2", "3", "x", "5", "y"}, {"ignored"}}));
    int number = 0;
    bool flag = false;
    __int64 big = 0;
    CString text;
    CUIntArray numbers;
    CStringArray texts;
    EXPECT_TRUE(frame::ReadFirst(m_conn, "SELECT", Columns(number, flag, big, text, numbers, texts)));
    EXPECT_EQ(number, 1);
    EXPECT_TRUE(flag);
    EXPECT_EQ(big, 3);
    EXPECT_STREQ(text, "x");
    ASSERT_EQ(numbers.GetSize(), 1);
    EXPECT_EQ(numbers[0], 5U);
    ASSERT_EQ(texts.GetSize(), 1);
    EXPECT_STREQ(texts[0], "y");
}

TEST_F(StatementFrame, KeepsNegativeNumbersOfAListAsTheir32Bits)
{
    m_database.Answer(Rows({{"-1"}}));
    CUIntArray numbers;
    EXPECT_TRUE(frame::ReadEach(m_conn, "SELECT", Columns(numbers)));
    ASSERT_EQ(numbers.GetSize(), 1);
    EXPECT_EQ(numbers[0], 0xFFFFFFFFU);
}

TEST_F(StatementFrame, TellsFoundByARowAloneAndReadsOnInBothCases)
{
    bool found = true;
    m_database.Answer(Rows({{{}}}));
    EXPECT_TRUE(frame::TestExists(m_conn, "SELECT", found));
    EXPECT_TRUE(found);
    EXPECT_TRUE(frame::TestExists(m_conn, "SELECT", found));
    EXPECT_FALSE(found);

    Reply raising;
    raising.noColumns = true;
    found = true;
    m_database.Answer(raising);
    EXPECT_FALSE(frame::TestExists(m_conn, "SELECT", found));
    EXPECT_FALSE(found);
}

TEST_F(StatementFrame, ReadsUntilARowIsTheOneLookedFor)
{
    Reply rows = Rows({{"1"}, {"2"}, {"3"}});
    rows.raiseAtRow = 2;
    m_database.Answer(rows);
    int rowsRead = 0;
    EXPECT_TRUE(frame::ReadUntil(m_conn, "S", [&](CARecordset& row) {
        ++rowsRead;
        int number = 0;
        row.GetValue(1, number);
        return number == 2;
    }));
    EXPECT_EQ(rowsRead, 2);
    EXPECT_EQ(ErrorRecorder::Text(), ErrorRecorder::kOlder);
}

TEST_F(StatementFrame, GoesOnWithoutRowsWhereAReadDoesNotAskWhetherItOpened)
{
    const auto never = [](CARecordset&) { ADD_FAILURE(); };
    m_database.GoAway();
    EXPECT_TRUE(frame::ReadFirstIgnoringClosed(m_conn, "S", never));
    EXPECT_TRUE(frame::ReadEachIgnoringClosed(m_conn, "S", never));
    EXPECT_FALSE(frame::ReadEach(m_conn, "S", never));
    EXPECT_EQ(ErrorRecorder::Text(), ErrorRecorder::kOlder);
}

TEST_F(StatementFrame, ReportsWhatGoesWrongBeforeThereIsAStatementWithoutOne)
{
    const auto build = []() -> CString { throw CAException("no such date"); };
    const unsigned line = SourceLocation::current().line() + 1;
    EXPECT_FALSE(frame::ExecuteBuilt(m_conn, build));
    EXPECT_EQ(ErrorRecorder::Text(), ErrorAt(line, "no such date"));
    EXPECT_THAT(m_watch.messages, SizeIs(1));
    EXPECT_THAT(m_database.executions, IsEmpty());

    m_database.Answer(Raise("refused"));
    EXPECT_FALSE(frame::ExecuteBuilt(m_conn, [] { return CString("DELETE"); }));
    EXPECT_THAT(ErrorRecorder::Text(), testing::EndsWith("refused [Script 1]: DELETE"));
    EXPECT_TRUE(frame::ExecuteBuilt(m_conn, [] { return CString("DELETE"); }));
    EXPECT_THAT(m_database.executions, ElementsAre("DELETE", "DELETE"));
}

TEST_F(StatementFrame, WritesDatesAsTexts)
{
    m_database.Answer(Rows({{"2013-05-07 09:03:00", "2013-05-07 09:03:00", "0987-06-05", "0987-06-05"},
                            {std::nullopt, "no date", std::nullopt, "no date"}}));
    CStringArray days;
    CStringArray times;
    CString day = "old";
    CString time = "old";
    EXPECT_TRUE(frame::ReadEach(m_conn, "S",
                                Columns(frame::AsDate(days, "%d.%m.%Y"), frame::AsDateAndTime(times),
                                        frame::AsDate(day, "%d.%m."), frame::AsDateAndTime(time))));
    EXPECT_THAT(std::vector<std::string>(days.begin(), days.end()), ElementsAre("07.05.2013", ""));
    EXPECT_THAT(std::vector<std::string>(times.begin(), times.end()), ElementsAre("2013-05-07 09:03:00", ""));
    EXPECT_STREQ(day, "");
    EXPECT_STREQ(time, "");

    m_database.Answer(Rows({{"0987-06-05", "0987-06-05"}}));
    EXPECT_TRUE(frame::ReadFirst(m_conn, "S", Columns(frame::AsDate(day, "%d.%m."), frame::AsDateAndTime(time))));
    EXPECT_STREQ(day, "05.06.");
    EXPECT_STREQ(time, "0987-06-05 00:00:00");
}

TEST_F(StatementFrame, TakesADatesValueAndLeavesTheStatus)
{
    COleDateTime date(2000, 1, 1, 0, 0, 0);
    date.SetStatus(COleDateTime::null);
    frame::TakeValue(date, COleDateTime(2013, 5, 7, 9, 3, 0));
    EXPECT_EQ(date.GetStatus(), COleDateTime::null);
    date.SetStatus(COleDateTime::valid);
    EXPECT_EQ(date, COleDateTime(2013, 5, 7, 9, 3, 0));
}

TEST_F(StatementFrame, CountsIn64BitsOnKindSixAlone)
{
    for (const int kind : {0, 1, 3, 6}) {
        m_conn.m_nDBType = kind;
        m_database.Answer(Rows({{"4294967297"}, {std::nullopt}}));
        std::vector<__int64> counts;
        EXPECT_TRUE(frame::ReadEach(m_conn, "S",
                                    [&](CARecordset& row) { counts.push_back(frame::ReadCount(m_conn, row, 1)); }));
        EXPECT_THAT(counts, ElementsAre(kind == 6 ? 4294967297 : 1, 0)) << kind;
    }
}

TEST_F(StatementFrame, FreesTheRecordOfARowThatFails)
{
    Reply reply;
    reply.columns = {"text", "number", "FLAG"};
    reply.rows = {{"a", "1", "0"}, {"b", "2", "1"}};
    reply.raiseAtRow = 1;
    m_database.Answer(reply);
    CObList list;
    EXPECT_FALSE(frame::ReadObjects<Record>(m_conn, "SELECT", list, frame::MembersByName(kMembers)));
    ASSERT_EQ(list.GetCount(), 1);
    EXPECT_EQ(Record::alive, 1);
    const auto& record = dynamic_cast<const Record&>(*list.GetHead());
    EXPECT_EQ(record.number, 1);
    EXPECT_FALSE(record.flag);
    EXPECT_STREQ(record.text, "a");

    reply.columns[1] = "other";
    reply.raiseAtRow.reset();
    m_database.Answer(reply);
    EXPECT_FALSE(frame::ReadObjects<Record>(m_conn, "SELECT", list, frame::MembersByName(kMembers)));
    EXPECT_EQ(list.GetCount(), 1);
    EXPECT_EQ(Record::alive, 1);
    CQVBaseFun::DetachHumanList(list);
    EXPECT_EQ(Record::alive, 0);
}

} // namespace
