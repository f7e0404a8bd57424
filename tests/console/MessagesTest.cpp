#include "management/messages/Messages.h"

#include "ConsoleFixture.h"
#include "RefusalOf.h"
#include "console/ExitCode.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "schema/Schema.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <thread>

using namespace console;
using namespace management;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

constexpr const char* kNewYear = "2020-01-01 00:00:00";
constexpr int kManyMessages = 4000;

int NumberIn(CAConnect& conn, const std::string& sql)
{
    CARecordset rows;
    rows.Open(sql.c_str(), &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    int number = 0;
    rows.GetValue(1, number);
    return number;
}

class MessagesTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
    }

    void Execute(const std::string& sql) { m_conn.Execute(sql.c_str()); }

    /// Adds a message with an attachment and two receipts.
    void Send(int id, const std::string& date)
    {
        Execute(fmt::format("INSERT INTO kel_Msg VALUES ({}, '{}')", id, date));
        Execute(fmt::format("INSERT INTO kel_Msg_AttachMent (Col_MsgID) VALUES ({})", id));
        Execute(fmt::format("INSERT INTO kel_Msg_Rece (Col_MsgID) VALUES ({0}), ({0})", id));
    }

    Table Entries(std::size_t limit)
    {
        Table table;
        m_log.Entries(
            limit, [&table](std::vector<std::string> columns) { table.columns = std::move(columns); },
            [&table](const std::vector<Value>& row) {
                table.rows.push_back(row);
                return true;
            });
        return table;
    }

    CAConnect m_conn;
    Messages m_messages{m_conn};
    LoginLog m_log{m_conn};
};

class MessageConsoleTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
        m_conn.Open(CString(std::string_view(DatabaseUrl())));
    }

    void TearDown() override
    {
        m_conn.Close();
        ConsoleFixture::TearDown();
    }

    void Execute(const std::string& sql) { m_conn.Execute(sql.c_str()); }
    int Count(const std::string& table) { return NumberIn(m_conn, "SELECT COUNT(*) FROM " + table); }

    /// Adds messages of one day, a second apart, each with an attachment and two receipts.
    void SendMany(int count)
    {
        const std::string ids =
            fmt::format("WITH RECURSIVE n(id) AS (SELECT 1 UNION ALL SELECT id + 1 FROM n WHERE id < {}) ", count);
        Execute(ids + "INSERT INTO kel_Msg SELECT id, datetime('2019-06-01', '+' || id || ' seconds') FROM n");
        Execute("INSERT INTO kel_Msg_AttachMent (Col_MsgID) SELECT Col_ID FROM kel_Msg");
        Execute("INSERT INTO kel_Msg_Rece (Col_MsgID) SELECT Col_ID FROM kel_Msg UNION ALL SELECT Col_ID FROM kel_Msg");
    }

    /// Starts a purge of all messages one by one, waits until some are gone, and sends the signal.
    ChildResult PurgeAndSignal(int signal)
    {
        const int before = Count("kel_Msg");
        ChildProcess child(QVADMIN_PROGRAM, {"message", "purge", "--before", "2020-01-01", "--batch", "1", "--yes"},
                           m_options);
        while (Count("kel_Msg") > before - 5) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        child.Signal(signal);
        return child.Finish();
    }

    /// Some messages are left, each with its attachment and its two receipts.
    void ExpectSomeAreLeftWhole()
    {
        const int left = Count("kel_Msg");
        EXPECT_GT(left, 0);
        EXPECT_EQ(Count("kel_Msg_AttachMent"), left);
        EXPECT_EQ(Count("kel_Msg_Rece"), 2 * left);
        EXPECT_EQ(Messages(m_conn).CountOrphans().attachments, 0);
        EXPECT_EQ(Messages(m_conn).CountOrphans().receipts, 0);
    }

    CAConnect m_conn;
};

} // namespace

// ---- The facade -----------------------------------------------------------------------------------------------------

TEST_F(MessagesTest, WhatIsBeforeADateIsNotAtIt)
{
    Send(1, "2019-12-31 23:59:59");
    Send(2, "2019-12-31 23:59:59.999");
    Send(3, "2020-01-01 00:00:00");
    Send(4, "2020-01-01 00:00:00.001");
    Execute("INSERT INTO kel_Msg VALUES (5, NULL)");
    const MessageCounts counts = m_messages.CountBefore(kNewYear);
    EXPECT_EQ(counts.messages, 2);
    EXPECT_EQ(counts.attachments, 2);
    EXPECT_EQ(counts.receipts, 4);
    const std::vector<MessageSlice> slices = m_messages.SlicesBefore(kNewYear, 10);
    ASSERT_EQ(slices.size(), 1U);
    const MessageCounts deleted = m_messages.DeleteBefore(kNewYear, slices.front());
    EXPECT_EQ(deleted.messages, 2);
    EXPECT_EQ(deleted.attachments, 2);
    EXPECT_EQ(deleted.receipts, 4);
    EXPECT_EQ(m_messages.Count().messages, 3);
    EXPECT_EQ(m_messages.Count().attachments, 2);
    EXPECT_EQ(m_messages.Count().receipts, 4);
    EXPECT_EQ(m_messages.CountOrphans().attachments, 0);
}

TEST_F(MessagesTest, SlicesAreFilledAndLeaveOutWhatStays)
{
    for (int id = 1; id <= 7; ++id) {
        Send(id, id % 3 == 0 ? "2021-01-01 00:00:00" : "2019-01-01 00:00:00");
    }
    const std::vector<MessageSlice> slices = m_messages.SlicesBefore(kNewYear, 2);
    const auto slice = [](int first, int last, std::size_t messages) {
        return AllOf(testing::Field(&MessageSlice::first, first), testing::Field(&MessageSlice::last, last),
                     testing::Field(&MessageSlice::messages, messages));
    };
    EXPECT_THAT(slices, ElementsAre(slice(1, 2, 2U), slice(4, 5, 2U), slice(7, 7, 1U)));
    EXPECT_EQ(m_messages.DeleteBefore(kNewYear, {1, 7, 5}).messages, 5);
    EXPECT_EQ(m_messages.Count().messages, 2);
    EXPECT_THAT(m_messages.SlicesBefore(kNewYear, 2), IsEmpty());
}

TEST_F(MessagesTest, IdsMayBeLong)
{
    Execute("INSERT INTO kel_Msg VALUES (5000000000, '2019-01-01 00:00:00')");
    ASSERT_EQ(m_messages.SlicesBefore(kNewYear, 2).size(), 1U);
    EXPECT_EQ(m_messages.SlicesBefore(kNewYear, 2).front().last, 5000000000);
    Execute("INSERT INTO kel_log VALUES (5000000000)");
    EXPECT_EQ(std::get<std::int64_t>(Entries(1).rows.front().front()), 5000000000);
}

TEST_F(MessagesTest, TheOldestIsFoundBehindThoseWithoutADate)
{
    EXPECT_EQ(m_messages.Oldest(), std::nullopt);
    EXPECT_EQ(m_messages.Newest(), std::nullopt);
    Execute("INSERT INTO kel_Msg VALUES (1, NULL)");
    EXPECT_EQ(m_messages.Oldest(), std::nullopt);
    Send(2, "2013-05-07 09:03:00");
    Send(3, "2014-05-07 09:03:00");
    EXPECT_EQ(m_messages.Oldest(), "2013-05-07 09:03:00");
    EXPECT_EQ(m_messages.Newest(), "2014-05-07 09:03:00");
    Execute("DELETE FROM kel_Msg WHERE Col_ID = 1");
    EXPECT_EQ(m_messages.Oldest(), "2013-05-07 09:03:00");
}

TEST_F(MessagesTest, OrphansAreCountedAsTheyAreDeleted)
{
    Send(1, "2019-01-01 00:00:00");
    Execute("INSERT INTO kel_Msg_AttachMent (Col_MsgID) VALUES (7), (8), (NULL)");
    Execute("INSERT INTO kel_Msg_Rece (Col_MsgID) VALUES (7)");
    EXPECT_EQ(m_messages.CountOrphans().attachments, 3);
    EXPECT_EQ(m_messages.CountOrphans().receipts, 1);
    m_messages.DeleteOrphans();
    EXPECT_EQ(m_messages.CountOrphans().attachments, 0);
    EXPECT_EQ(m_messages.Count().attachments, 1);
    EXPECT_EQ(m_messages.Count().receipts, 2);
}

TEST_F(MessagesTest, ARefusedWriteSaysWhy)
{
    Send(1, "2019-01-01 00:00:00");
    Execute("INSERT INTO kel_log VALUES (1)");
    Execute("PRAGMA query_only = 1");
    EXPECT_EQ(CodeOf([&] { m_messages.DeleteBefore(kNewYear, {1, 1, 1}); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_messages.DeleteOrphans(); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_log.Delete(1); }), Exit::database);
    m_conn.Close();
    EXPECT_EQ(CodeOf([&] { m_messages.Count(); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_messages.Oldest(); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_messages.CountBefore(kNewYear); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { Entries(1); }), Exit::database);
}

TEST_F(MessagesTest, TheLogIsShownWithAllColumnsThatThereAre)
{
    Execute(R"(ALTER TABLE kel_log ADD COLUMN "Who's\" TEXT)");
    Execute("INSERT INTO kel_log VALUES (1, 'O''Brien\\'), (2, NULL)");
    const Table table = Entries(10);
    EXPECT_THAT(table.columns, ElementsAre("id", "Who's\\"));
    ASSERT_EQ(table.rows.size(), 2U);
    EXPECT_EQ(std::get<std::int64_t>(table.rows[0][0]), 2);
    EXPECT_TRUE(std::holds_alternative<std::monostate>(table.rows[0][1]));
    EXPECT_EQ(std::get<std::int64_t>(table.rows[1][0]), 1);
    EXPECT_EQ(std::get<TextValue>(table.rows[1][1]), "O'Brien\\");
    EXPECT_EQ(Entries(1).rows.size(), 1U);
}

TEST(MessageDatesTest, OnlyRealDatesOfTheTwoShapesAreTaken)
{
    EXPECT_EQ(WholeDate("2020-02-29"), "2020-02-29 00:00:00");
    EXPECT_EQ(WholeDate("2020-02-29 23:59:59"), "2020-02-29 23:59:59");
    for (const char* text : {"", "2020", "2020-2-9", "2019-02-29", "2020-13-01", "2020-01-01 24:00:00", "01.02.2020",
                             "2020-01-01T00:00:00", "2020-01-01 00:00", "2020-01-01 00:00:00.5", "x020-01-01",
                             "2020-01-01'; --", " 2020-01-01"}) {
        EXPECT_EQ(CodeOf([&] { WholeDate(text); }), Exit::usage) << text;
    }
}

TEST(MessageRoomTest, EveryEngineHasAWordForIt)
{
    EXPECT_THAT(RoomAdvice("SQLite 3.40.1"), HasSubstr("VACUUM makes the file smaller"));
    EXPECT_THAT(RoomAdvice("PostgreSQL 15"), HasSubstr("VACUUM FULL"));
    EXPECT_THAT(RoomAdvice("MySQL 8"), HasSubstr("OPTIMIZE TABLE"));
    EXPECT_THAT(RoomAdvice("Microsoft SQL Server 2019"), HasSubstr("DBCC SHRINKDATABASE"));
    EXPECT_THAT(RoomAdvice("Microsoft Access"), HasSubstr("Compact and Repair"));
    EXPECT_THAT(RoomAdvice("another"), HasSubstr("the engine decides"));
}

// ---- The commands ---------------------------------------------------------------------------------------------------

TEST_F(MessageConsoleTest, HelpOfEveryVerbHasExamples)
{
    for (const char* verb : {"stats", "oldest", "purge", "sweep"}) {
        EXPECT_THAT(Done({"message", verb, "--help"}), HasSubstr("Examples:\n  qvadmin message")) << verb;
    }
    for (const char* verb : {"list", "delete"}) {
        EXPECT_THAT(Done({"loginlog", verb, "--help"}), HasSubstr("Examples:\n  qvadmin loginlog")) << verb;
    }
}

TEST_F(MessageConsoleTest, StatsCountEverything)
{
    const auto empty = nlohmann::json::parse(Done({"message", "stats", "-o", "json"}));
    EXPECT_EQ(empty["messages"], 0);
    EXPECT_TRUE(empty["oldest"].is_null());
    ExpectRefusal({"message", "oldest"}, 3, "there is no message");
    SendMany(3);
    Execute("INSERT INTO kel_Msg_AttachMent (Col_MsgID) VALUES (99)");
    EXPECT_EQ(Done({"message", "stats", "-o", "csv"}),
              "messages,attachments,receipts,orphaned_attachments,orphaned_receipts,oldest,newest\n"
              "3,4,6,1,0,2019-06-01 00:00:01,2019-06-01 00:00:03\n");
    EXPECT_EQ(nlohmann::json::parse(Done({"message", "stats", "-o", "json"}))["orphaned_attachments"], 1);
    EXPECT_EQ(Done({"message", "oldest"}), "2019-06-01 00:00:01\n");
}

TEST_F(MessageConsoleTest, PurgingTakesOneDateAndARealOne)
{
    SendMany(1);
    ExpectRefusal({"message", "purge", "--yes"}, 2, "--before or --keep-days");
    ExpectRefusal({"message", "purge", "--before", "2020-01-01", "--keep-days", "3", "--yes"}, 2,
                  "--before or --keep-days");
    for (const char* date : {"", "yesterday", "2019-02-29", "2020-01-01 25:00:00", "2020-01-01' OR 1=1 --"}) {
        ExpectRefusal({"message", "purge", "--before", date, "--yes"}, 2, "invalid date");
    }
    ExpectRefusal({"message", "purge", "--keep-days", "-1", "--yes"}, 2,
                  "--keep-days '-1' is not a whole number from 0 to 36500");
    ExpectRefusal({"message", "purge", "--keep-days", "36501", "--yes"}, 2, "--keep-days");
    ExpectRefusal({"message", "purge", "--before", "2020-01-01", "--batch", "0", "--yes"}, 2, "--batch '0'");
    EXPECT_EQ(Count("kel_Msg"), 1);
}

TEST_F(MessageConsoleTest, PurgingCountsAsksAndDeletesUpToTheSecond)
{
    SendMany(5);
    const std::vector<std::string> purge = {"message", "purge", "--before", "2019-06-01 00:00:04", "--batch", "2"};
    const ChildResult asked = Run(purge);
    EXPECT_EQ(asked.exit, 9);
    EXPECT_THAT(asked.err, StartsWith("delete 3 messages, 3 attachments, 6 receipts\n"));
    EXPECT_EQ(Count("kel_Msg"), 5);
    m_options.terminal = true;
    const ChildResult refused = RunWith("n\n", purge);
    EXPECT_EQ(refused.exit, 9);
    EXPECT_THAT(refused.err, HasSubstr("Delete 3 messages from before 2019-06-01 00:00:04? [y/N]"));
    const ChildResult done = RunWith("y\n", purge);
    EXPECT_EQ(done.exit, 0);
    EXPECT_THAT(done.err, AllOf(HasSubstr("deleted 3 messages, 3 attachments, 6 receipts ("),
                                HasSubstr("VACUUM makes the file smaller")));
    m_options.terminal = false;
    EXPECT_EQ(Done({"message", "stats", "-o", "csv"}),
              "messages,attachments,receipts,orphaned_attachments,orphaned_receipts,oldest,newest\n"
              "2,2,4,0,0,2019-06-01 00:00:04,2019-06-01 00:00:05\n");
    const ChildResult again = Run(purge);
    EXPECT_EQ(again.exit, 0);
    EXPECT_EQ(again.err, "there are no messages from before 2019-06-01 00:00:04\n");
}

TEST_F(MessageConsoleTest, ADayMeansItsBeginning)
{
    Execute("INSERT INTO kel_Msg VALUES (1, '2019-12-31 23:59:59.5'), (2, '2020-01-01 00:00:00')");
    Done({"message", "purge", "--before", "2020-01-01", "--yes"});
    EXPECT_EQ(Done({"message", "oldest"}), "2020-01-01 00:00:00\n");
}

TEST_F(MessageConsoleTest, KeptDaysAreWholeDaysBesideToday)
{
    Execute("INSERT INTO kel_Msg SELECT 1, datetime('now', 'localtime', 'start of day', '-3 days')");
    Execute("INSERT INTO kel_Msg SELECT 2, datetime('now', 'localtime', 'start of day', '-1 days')");
    Execute("INSERT INTO kel_Msg SELECT 3, datetime('now', 'localtime', 'start of day', '+12 hours')");
    EXPECT_THAT(Run({"message", "purge", "--keep-days", "2", "--yes"}).err, HasSubstr("deleted 1 message,"));
    EXPECT_THAT(Run({"message", "purge", "--keep-days", "0", "--yes"}).err, HasSubstr("deleted 1 message,"));
    EXPECT_EQ(Count("kel_Msg"), 1);
}

TEST_F(MessageConsoleTest, OrphansOfOthersStayWhenMessagesArePurged)
{
    SendMany(1);
    Execute("INSERT INTO kel_Msg_Rece (Col_MsgID) VALUES (99)");
    Done({"message", "purge", "--before", "2020-01-01", "--yes"});
    EXPECT_EQ(Count("kel_Msg_Rece"), 1);
}

TEST_F(MessageConsoleTest, ASignalStopsBetweenBatchesAndTheSameCommandGoesOn)
{
    SendMany(kManyMessages);
    for (const int signal : {SIGINT, SIGTERM}) {
        const int before = Count("kel_Msg");
        const ChildResult result = PurgeAndSignal(signal);
        const int deleted = before - Count("kel_Msg");
        EXPECT_EQ(result.exit, 1);
        EXPECT_THAT(result.err, HasSubstr(fmt::format("qvadmin: stopped; deleted {0} messages, {0} attachments, {1} "
                                                      "receipts, of {2} messages in all; the same command goes on",
                                                      deleted, 2 * deleted, before)));
        ExpectSomeAreLeftWhole();
    }
    Done({"message", "purge", "--before", "2020-01-01", "--yes"});
    EXPECT_EQ(Count("kel_Msg") + Count("kel_Msg_AttachMent") + Count("kel_Msg_Rece"), 0);
}

TEST_F(MessageConsoleTest, AKilledPurgeCanBeCarriedOn)
{
    SendMany(kManyMessages);
    EXPECT_EQ(PurgeAndSignal(SIGKILL).signal, SIGKILL);
    ExpectSomeAreLeftWhole();
    Done({"message", "purge", "--before", "2020-01-01", "--yes"});
    EXPECT_EQ(Count("kel_Msg") + Count("kel_Msg_AttachMent") + Count("kel_Msg_Rece"), 0);
}

TEST_F(MessageConsoleTest, OnATerminalItShowsHowFarItIs)
{
    SendMany(kManyMessages);
    m_options.terminal = true;
    const ChildResult result = Run({"message", "purge", "--before", "2020-01-01", "--batch", "1", "--yes"});
    EXPECT_EQ(result.exit, 0);
    EXPECT_THAT(result.err, AllOf(HasSubstr(fmt::format(" of {}, ", kManyMessages)),
                                  HasSubstr(fmt::format("deleted {} messages, ", kManyMessages))));
}

TEST_F(MessageConsoleTest, ABatchThatFailsIsLeftWholeAndThoseBeforeStayDone)
{
    SendMany(5);
    Execute("CREATE TRIGGER no BEFORE DELETE ON kel_Msg WHEN old.Col_ID = 4 BEGIN SELECT RAISE(ABORT, 'kept'); END");
    const ChildResult result = Run({"message", "purge", "--before", "2020-01-01", "--batch", "2", "--yes"});
    EXPECT_EQ(result.exit, 6);
    EXPECT_THAT(result.err, HasSubstr("deleted 2 messages, 2 attachments, 4 receipts, of 5 messages in all"));
    EXPECT_EQ(Count("kel_Msg"), 3);
    EXPECT_EQ(Count("kel_Msg_AttachMent"), 3);
    EXPECT_EQ(Count("kel_Msg_Rece"), 6);
}

TEST_F(MessageConsoleTest, SweepingCountsAsksAndDeletesOrphans)
{
    SendMany(2);
    EXPECT_EQ(Run({"message", "sweep"}).err, "there are no orphaned attachments or receipts\n");
    Execute("INSERT INTO kel_Msg_AttachMent (Col_MsgID) VALUES (7)");
    Execute("INSERT INTO kel_Msg_Rece (Col_MsgID) VALUES (7), (8)");
    EXPECT_EQ(Run({"message", "sweep"}).exit, 9);
    m_options.terminal = true;
    const ChildResult result = RunWith("y\n", {"message", "sweep"});
    EXPECT_EQ(result.exit, 0);
    EXPECT_THAT(result.err, AllOf(HasSubstr("Delete 1 orphaned attachment, 2 orphaned receipts? [y/N]"),
                                  HasSubstr("deleted 1 orphaned attachment, 2 orphaned receipts")));
    EXPECT_EQ(Count("kel_Msg_AttachMent"), 2);
    EXPECT_EQ(Count("kel_Msg_Rece"), 4);
}

TEST_F(MessageConsoleTest, ASweepThatFailsLeavesAllAsItWas)
{
    Execute("INSERT INTO kel_Msg_AttachMent (Col_MsgID) VALUES (7)");
    Execute("INSERT INTO kel_Msg_Rece (Col_MsgID) VALUES (7)");
    Execute("CREATE TRIGGER no BEFORE DELETE ON kel_Msg_Rece BEGIN SELECT RAISE(ABORT, 'kept'); END");
    ExpectRefusalAfterPlan({"message", "sweep", "--yes"}, 6, "kept");
    EXPECT_EQ(Count("kel_Msg_AttachMent"), 1);
}

TEST_F(MessageConsoleTest, TheLoginLogIsListedAndEntriesDeleted)
{
    Execute("ALTER TABLE kel_log ADD COLUMN Col_User TEXT");
    Execute("INSERT INTO kel_log VALUES (1, 'amy'), (2, 'a\\b''c'), (3, NULL)");
    EXPECT_EQ(Done({"loginlog", "list", "-o", "csv"}), "id,Col_User\n3,\n2,a\\b'c\n1,amy\n");
    EXPECT_EQ(nlohmann::json::parse(Done({"loginlog", "list", "--limit", "2", "-o", "json"})),
              nlohmann::json::parse(R"([{"id": 3, "Col_User": null}, {"id": 2, "Col_User": "a\\b'c"}])"));
    ExpectRefusal({"loginlog", "delete", "1", "9", "--yes"}, 3, "there is no entry 9 in the login log");
    ExpectRefusal({"loginlog", "delete", "8", "1", "9", "--yes"}, 3,
                  "there are no entries in the login log '8', '9'; nothing was deleted\n");
    ExpectRefusal({"loginlog", "delete", "1x", "--yes"}, 2, "ID '1x' is not a whole number from 1 to ");
    ExpectRefusal({"loginlog", "delete", "1"}, 9, "nothing was deleted");
    ExpectRefusal({"loginlog", "list", "--limit", "0"}, 2, "--limit");
    EXPECT_EQ(Count("kel_log"), 3);
    EXPECT_EQ(Run({"loginlog", "delete", "1", "3", "1", "--yes"}).err, "deleted 2 entries of the login log\n");
    EXPECT_EQ(Done({"loginlog", "list", "-o", "plain"}), "2\ta\\\\b'c\n");
}

TEST_F(MessageConsoleTest, AFailedDeletionOfEntriesDeletesNone)
{
    Execute("INSERT INTO kel_log VALUES (1), (2)");
    Execute("CREATE TRIGGER no BEFORE DELETE ON kel_log WHEN old.Col_ID = 2 BEGIN SELECT RAISE(ABORT, 'kept'); END");
    ExpectRefusal({"loginlog", "delete", "1", "2", "--yes"}, 6, "kept");
    EXPECT_EQ(Count("kel_log"), 2);
}
