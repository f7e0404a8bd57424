#pragma once

#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "platform/CString.h"
#include "platform/CStringArray.h"
#include "platform/CUIntArray.h"
#include "platform/Types.h"
#include "testing/ScriptedDriver.h"
#include "tests/basefun/ErrorRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// Tables of what operations make of every kind of answer, and the fixture that plays the answers to them.

namespace behaviour {

inline std::string Shown(bool flag) { return flag ? "true" : "false"; }
inline std::string Shown(int number) { return std::to_string(number); }
inline std::string Shown(__int64 number) { return std::to_string(number); }
inline std::string Shown(unsigned int number) { return std::to_string(number); }
inline std::string Shown(unsigned long number) { return std::to_string(number); }
inline std::string Shown(const CString& text) { return "\"" + std::string(text.View()) + "\""; }

template <class Array>
std::string ShownArray(const Array& array)
{
    std::string shown;
    for (int i = 0; i < array.GetSize(); ++i) {
        shown += i == 0 ? "" : ",";
        if constexpr (std::is_same_v<Array, CUIntArray>) {
            shown += std::to_string(array[i]);
        } else {
            shown += array[i].View();
        }
    }
    return "[" + shown + "]";
}
inline std::string Shown(const CUIntArray& array) { return ShownArray(array); }
inline std::string Shown(const CStringArray& array) { return ShownArray(array); }

/// A call's result and its outputs, such as: true 41 "Amy".
template <class... Values>
std::string Line(const Values&... values)
{
    std::string line;
    ((line += (line.empty() ? "" : " ") + Shown(values)), ...);
    return line;
}

/// An array that holds something before the call.
struct Numbers : CUIntArray {
    Numbers() { Add(9); }
};
struct Texts : CStringArray {
    Texts() { Add("old"); }
};

/// What a read makes of every kind of answer, as Line shows it.
struct ReadCase {
    std::string name;
    std::function<std::string(CAConnect&)> call;
    std::vector<std::vector<scripted::Value>> rows;
    std::string read;            // given these rows
    std::string empty;           // given none
    std::string nulls;           // given one row of NULLs
    std::string failed;          // the engine refused
    std::string closed = failed; // the connection is not open
};

struct WriteCase {
    std::string name;
    std::function<bool(CAConnect&)> call;
};

/// A method of a record class.
struct RecordCase {
    std::string name;
    std::function<std::string(CAConnect&)> call;
    std::string failed;  // the engine refused, or the connection is not open
    bool keepsText;      // of an error, in m_strLastError
    bool raisesOnClosed; // as writes do that are done unless something was raised
};

/// Plays answers to the operations or methods of one source file, as a connection with a window.
class Script : public testing::Test {
protected:
    explicit Script(std::string file) : m_file(std::move(file)) {}

    /// A connection to a new script, which the watch listens to.
    void Connect(int dbType = 3)
    {
        m_database.emplace();
        m_conn.emplace();
        m_database->Connect(*m_conn, dbType);
        m_watch.ListenTo(*m_conn);
    }

    void ExpectNoError() const
    {
        EXPECT_EQ(ErrorRecorder::Text(), ErrorRecorder::kOlder);
        EXPECT_THAT(m_watch.messages, testing::IsEmpty());
    }

    void ExpectNothingSent() const
    {
        EXPECT_THAT(m_database->queries, testing::IsEmpty());
        EXPECT_THAT(m_database->executions, testing::IsEmpty());
    }

    /// The only statement that was sent.
    [[nodiscard]] std::string OnlyStatement() const
    {
        EXPECT_EQ(m_database->queries.size() + m_database->executions.size(), 1U);
        return m_database->queries.empty() ? m_database->executions.at(0) : m_database->queries.at(0);
    }

    /// The text of an error in a statement of this file. Forgets it.
    /// @return the line that the text names.
    int TakeText(const std::string& messageAndCode, const std::string& statement)
    {
        const std::string text = ErrorRecorder::Text();
        const std::string begin = m_file + "(";
        const auto line =
            static_cast<int>(text.starts_with(begin) ? std::strtol(text.c_str() + begin.size(), nullptr, 10) : 0);
        EXPECT_GT(line, 0);
        EXPECT_EQ(text, begin + std::to_string(line) + "): " + messageAndCode + ": " + statement);
        CQVBaseFun::m_strLastError = ErrorRecorder::kOlder;
        return line;
    }

    /// The text of an error and its one message. Forgets both.
    int TakeError(const std::string& messageAndCode, const std::string& statement)
    {
        EXPECT_THAT(m_watch.messages, testing::SizeIs(1));
        for (const ErrorRecorder::Message& message : m_watch.messages) {
            EXPECT_EQ(message.message, ErrorRecorder::kMessage);
            EXPECT_EQ(message.wParam, 0U);
            EXPECT_EQ(message.lParam, reinterpret_cast<LPARAM>(&CQVBaseFun::m_strLastError));
            EXPECT_EQ(message.text, ErrorRecorder::Text());
        }
        m_watch.messages.clear();
        return TakeText(messageAndCode, statement);
    }

    // ---- Tables ----

    void ExpectAnswersAreRead(const std::vector<ReadCase>& reads)
    {
        for (const ReadCase& read : reads) {
            Connect();
            m_database->Answer(scripted::Rows(read.rows));
            EXPECT_EQ(read.call(*m_conn), read.read) << read.name;
            Connect();
            EXPECT_EQ(read.call(*m_conn), read.empty) << read.name << " without a row";
            Connect();
            m_database->Answer(scripted::Rows({std::vector<scripted::Value>(read.rows.front().size())}));
            EXPECT_EQ(read.call(*m_conn), read.nulls) << read.name << " of NULLs";
            ExpectNoError();
        }
    }

    void ExpectOnlyTheFirstRowIsRead(const std::vector<ReadCase>& lookUps)
    {
        for (const ReadCase& read : lookUps) {
            Connect();
            scripted::Reply reply = scripted::Rows({read.rows.front(), read.rows.front()});
            reply.raiseAtRow = 1;
            m_database->Answer(reply);
            EXPECT_EQ(read.call(*m_conn), read.read) << read.name;
            ExpectNoError();
        }
    }

    void ExpectClosedReadsSayNothing(const std::vector<ReadCase>& reads)
    {
        for (const ReadCase& read : reads) {
            CAConnect never;
            m_watch.ListenTo(never);
            EXPECT_EQ(read.call(never), read.closed) << read.name;
            Connect();
            m_database->GoAway();
            EXPECT_EQ(read.call(*m_conn), read.closed) << read.name;
            ExpectNothingSent();
            ExpectNoError();
        }
    }

    void ExpectRefusedReadsAreReported(const std::vector<ReadCase>& reads)
    {
        for (const ReadCase& read : reads) {
            SCOPED_TRACE(read.name);
            Connect();
            m_database->Answer(scripted::Raise("no such\n\ttable"));
            EXPECT_EQ(read.call(*m_conn), read.failed);
            NoteLine(read.name, TakeError("no such table [Script 1]", OnlyStatement()));
        }
    }

    /// A list whose second row is refused keeps the first, in all its arrays.
    void ExpectBrokenListsKeepTheirRows(const std::vector<ReadCase>& lists)
    {
        for (const ReadCase& list : lists) {
            SCOPED_TRACE(list.name);
            Connect();
            m_database->Answer(scripted::Rows({list.rows.front()}));
            const std::string whole = list.call(*m_conn);
            ExpectNoError();

            Connect();
            scripted::Reply broken = scripted::Rows(list.rows);
            broken.raiseAtRow = 1;
            m_database->Answer(broken);
            EXPECT_EQ(list.call(*m_conn), FirstWord(list.failed) + whole.substr(FirstWord(whole).size()));
            TakeError("row refused [Script 2]", OnlyStatement());
        }
    }

    void ExpectWritesGiveTrueWhateverIsCounted(const std::vector<WriteCase>& writes)
    {
        for (const WriteCase& write : writes) {
            for (const auto& rows : {scripted::Rows({}), scripted::Rows({{"changed"}})}) {
                Connect();
                m_database->Answer(rows);
                EXPECT_TRUE(write.call(*m_conn)) << write.name;
                EXPECT_THAT(m_database->executions, testing::SizeIs(1)) << write.name;
                ExpectNoError();
            }
        }
    }

    void ExpectRefusedWritesAreReported(const std::vector<WriteCase>& writes)
    {
        for (const WriteCase& write : writes) {
            SCOPED_TRACE(write.name);
            Connect();
            m_database->Answer(scripted::Raise("disk full"));
            EXPECT_FALSE(write.call(*m_conn));
            NoteLine(write.name, TakeError("disk full [Script 1]", OnlyStatement()));
        }
    }

    // A write is done unless something was raised, so a closed connection has to raise.
    void ExpectClosedWritesAreReported(const std::vector<WriteCase>& writes)
    {
        for (const WriteCase& write : writes) {
            Connect();
            m_database->GoAway();
            EXPECT_FALSE(write.call(*m_conn)) << write.name;
            ExpectNothingSent();
            EXPECT_THAT(ErrorRecorder::Text(), testing::HasSubstr("the database connection is not open")) << write.name;
            EXPECT_THAT(m_watch.messages, testing::SizeIs(1)) << write.name;
            m_watch.messages.clear();
        }
        CQVBaseFun::m_strLastError = ErrorRecorder::kOlder;
    }

    void ExpectRefusedRecordsKeepOrDropTheText(const std::vector<RecordCase>& methods)
    {
        for (const RecordCase& method : methods) {
            SCOPED_TRACE(method.name);
            Connect();
            m_database->Answer(scripted::Raise("refused"));
            EXPECT_EQ(method.call(*m_conn), method.failed);
            const std::string statement = OnlyStatement();
            if (method.keepsText) {
                NoteLine(method.name, TakeText("refused [Script 1]", statement));
            }
            ExpectNoError();
        }
    }

    void ExpectClosedRecordsFail(const std::vector<RecordCase>& methods)
    {
        for (const RecordCase& method : methods) {
            SCOPED_TRACE(method.name);
            Connect();
            m_database->GoAway();
            EXPECT_EQ(method.call(*m_conn), method.failed);
            ExpectNothingSent();
            if (method.raisesOnClosed && method.keepsText) {
                EXPECT_THAT(ErrorRecorder::Text(), testing::HasSubstr("the database connection is not open"));
                CQVBaseFun::m_strLastError = ErrorRecorder::kOlder;
            }
            ExpectNoError();
        }
    }

    ErrorRecorder m_watch;
    std::optional<scripted::Database> m_database;
    std::optional<CAConnect> m_conn;

private:
    static std::string FirstWord(const std::string& line) { return line.substr(0, line.find(' ')); }

    // No two operations of a test name the same line, so that an error tells which one it was.
    void NoteLine(const std::string& name, int line)
    {
        EXPECT_TRUE(m_lines.emplace(line, name).second)
            << name << " names the line " << line << " of " << m_lines[line];
    }

    std::string m_file;
    std::map<int, std::string> m_lines;
};

} // namespace behaviour
