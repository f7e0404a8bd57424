#include "schema/Schema.h"

#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "tests/dbaccess/Query.h"
#include "tests/dbaccess/SystemCalls.h"
#include "tests/support/ForkedCall.h"
#include "tests/support/Raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

using schema::State;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

namespace fs = std::filesystem;

class SchemaTest : public testing::Test {
protected:
    SchemaTest()
    {
        std::string name = (fs::temp_directory_path() / "qv-schema-XXXXXX").string();
        m_folder = ::mkdtemp(name.data());
    }
    ~SchemaTest() override { fs::remove_all(m_folder); }

    [[nodiscard]] std::string Url() const { return "sqlite:" + File(); }
    [[nodiscard]] std::string File() const { return (m_folder / "d.db").string(); }

    void OpenFile() { m_conn.Open(Url().c_str()); }
    void OpenDirectory()
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
    }

    // Runs a statement as another program would, which knows nothing of our upper(). Gives its message, or "".
    [[nodiscard]] std::string RunElsewhere(const char* sql) const
    {
        sqlite3* db = nullptr;
        EXPECT_EQ(sqlite3_open(File().c_str(), &db), SQLITE_OK);
        const bool done = sqlite3_exec(db, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
        std::string message = done ? "" : sqlite3_errmsg(db);
        sqlite3_close(db);
        return message;
    }

    fs::path m_folder;
    CAConnect m_conn;
};

std::vector<std::string> ReadStatements()
{
    std::vector<std::string> lines;
    std::ifstream in(QV_STATEMENTS);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.front() != '#') {
            lines.push_back(line);
        }
    }
    return lines;
}

TEST_F(SchemaTest, ServesEveryStatementOfTheSystem)
{
    OpenDirectory();
    const std::vector<std::string> statements = ReadStatements();
    ASSERT_GT(statements.size(), 200U);
    for (const std::string& statement : statements) {
        if (statement.starts_with("INSERT")) {
            m_conn.Execute(statement.c_str());
        }
    }
    for (const std::string& statement : statements) {
        const bool mustFail = statement.front() == '!';
        m_conn.BeginTrans();
        const std::string error = Raised([&] { m_conn.Execute(statement.c_str() + (mustFail ? 1 : 0)); });
        EXPECT_EQ(error == kNothingRaised, !mustFail) << statement << "\n" << error;
        m_conn.RollbackTrans();
    }
}

TEST_F(SchemaTest, ReadsThePasswordUnderBothNames)
{
    OpenDirectory();
    m_conn.Execute("INSERT INTO qv_User (Col_LoginName, Col_PWord) VALUES ('amy', 'digest')");
    EXPECT_EQ(TextOf(m_conn, "SELECT Col_Password FROM qv_User"), "digest");
    m_conn.Execute("UPDATE qv_User SET Col_PWord = 'other'");
    EXPECT_EQ(TextOf(m_conn, "SELECT Col_Password FROM qv_User"), "other");
}

TEST_F(SchemaTest, GivesNoIdASecondTime)
{
    OpenDirectory();
    m_conn.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('a')");
    m_conn.Execute("DELETE FROM qv_User");
    m_conn.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('b')");
    EXPECT_EQ(TextOf(m_conn, "SELECT Col_ID FROM qv_User"), "2");
}

TEST_F(SchemaTest, TellsTheStatesApart)
{
    OpenFile();
    EXPECT_EQ(schema::Inspect(m_conn).state, State::empty);
    std::vector<std::string> titles;
    schema::Upgrade(m_conn, [&](int version, const std::string& title) {
        titles.push_back(std::to_string(version) + " " + title);
    });
    EXPECT_THAT(titles, ElementsAre("1 tables", "2 indexes", "3 names", "4 audit", "5 console"));
    EXPECT_EQ(schema::Inspect(m_conn).state, State::current);
    EXPECT_EQ(schema::Inspect(m_conn).version, 5);
    m_conn.Execute("UPDATE qv_Schema SET Col_Value = '99' WHERE Col_Name = 'version'");
    EXPECT_EQ(schema::Inspect(m_conn).state, State::newer);
    EXPECT_THAT(Raised([&] { schema::Upgrade(m_conn); }), HasSubstr("version 99, made by a later program"));
    m_conn.Execute("UPDATE qv_Schema SET Col_Value = '1' WHERE Col_Name = 'version'");
    EXPECT_EQ(schema::Inspect(m_conn).state, State::older);
}

TEST_F(SchemaTest, DoesNothingToADirectoryThatIsCurrent)
{
    OpenDirectory();
    m_conn.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    schema::Upgrade(m_conn, [](int, const std::string& title) { ADD_FAILURE() << title; });
    EXPECT_EQ(TextOf(m_conn, "SELECT COUNT(*) FROM qv_User"), "1");
}

TEST_F(SchemaTest, RefusesForeignTables)
{
    m_conn.Open("sqlite::memory:");
    m_conn.Execute("CREATE TABLE photos (a)");
    EXPECT_EQ(schema::Inspect(m_conn).state, State::foreign);
    EXPECT_THAT(Raised([&] { schema::Upgrade(m_conn); }), HasSubstr("other tables"));
    EXPECT_EQ(TextOf(m_conn, "SELECT COUNT(*) FROM sqlite_master"), "1");
}

TEST_F(SchemaTest, LeavesAStepThatFailsUndoneAndTheEarlierOnesDone)
{
    OpenFile();
    const std::vector<schema::Step> steps = {{"good", {"CREATE TABLE a (x)"}},
                                             {"bad", {"CREATE TABLE b (x)", "CREATE TABLE a (x)"}}};
    EXPECT_THAT(Raised([&] { schema::Upgrade(m_conn, steps, {}); }), HasSubstr("already exists"));
    EXPECT_EQ(TextOf(m_conn, "SELECT group_concat(name) FROM (SELECT name FROM sqlite_master WHERE type='table' "
                             "AND name NOT LIKE 'sqlite%' ORDER BY name)"),
              "a,qv_Schema");
    EXPECT_EQ(TextOf(m_conn, "SELECT Col_Value FROM qv_Schema WHERE Col_Name='version'"), "1");
    schema::Upgrade(m_conn, {steps[0], {"mended", {"CREATE TABLE b (x)"}}}, {});
    EXPECT_EQ(TextOf(m_conn, "SELECT Col_Value FROM qv_Schema WHERE Col_Name='version'"), "2");
}

TEST_F(SchemaTest, SurvivesBeingKilledInsideAStep)
{
    for (const int killedAt : {1, 2}) {
        fs::remove(File());
        const pid_t child = ::fork();
        if (child == 0) {
            CAConnect conn;
            conn.Open(Url().c_str());
            schema::Upgrade(conn, [&](int version, const std::string&) {
                if (version == killedAt) {
                    conn.Execute("CREATE TABLE half_done (x)");
                    ::kill(::getpid(), SIGKILL);
                }
            });
            ::_exit(0);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status));
        OpenFile();
        EXPECT_EQ(schema::Inspect(m_conn).version, killedAt - 1);
        schema::Upgrade(m_conn);
        EXPECT_EQ(schema::Inspect(m_conn).state, State::current);
        EXPECT_EQ(TextOf(m_conn, "SELECT COUNT(*) FROM sqlite_master WHERE name = 'half_done'"), "0");
        EXPECT_EQ(TextOf(m_conn, "PRAGMA integrity_check"), "ok");
        m_conn.Close();
    }
}

// Ends the process at the call with that number, before it does anything.
int callsLeft = 0;
int (*realOpen)(const char*, int, int) = nullptr;
ssize_t (*realPwrite)(int, const void*, std::size_t, off_t) = nullptr;
int (*realTruncate)(int, off_t) = nullptr;
int (*realUnlink)(const char*) = nullptr;
int (*realFcntl)(int, int, void*) = nullptr;

void CountCall()
{
    if (--callsLeft == 0) {
        ::kill(::getpid(), SIGKILL);
    }
}

int CountedOpen(const char* path, int flags, int mode)
{
    CountCall();
    return realOpen(path, flags, mode);
}

ssize_t CountedPwrite(int file, const void* bytes, std::size_t count, off_t offset)
{
    CountCall();
    return realPwrite(file, bytes, count, offset);
}

int CountedTruncate(int file, off_t length)
{
    CountCall();
    return realTruncate(file, length);
}

int CountedUnlink(const char* path)
{
    CountCall();
    return realUnlink(path);
}

int CountedFcntl(int file, int command, void* argument)
{
    CountCall();
    return realFcntl(file, command, argument);
}

TEST_F(SchemaTest, IsFinishedAndGetsItsWriteAheadLogWhereverItsMakerWasKilled)
{
    const std::vector<schema::Step> steps = {{"first", {"CREATE TABLE a (x)"}}, {"second", {"CREATE TABLE b (x)"}}};
    std::vector<int> notFinished;
    int point = 0;
    for (bool killed = true; killed;) {
        ++point;
        fs::remove_all(m_folder);
        fs::create_directory(m_folder);
        ForkedCall maker([&]() -> std::string {
            SystemCalls calls;
            callsLeft = point;
            realOpen = calls.Replace("open", &CountedOpen);
            realPwrite = calls.Replace("pwrite64", &CountedPwrite);
            realTruncate = calls.Replace("ftruncate", &CountedTruncate);
            realUnlink = calls.Replace("unlink", &CountedUnlink);
            realFcntl = calls.Replace("fcntl", &CountedFcntl);
            CAConnect conn;
            conn.Open(Url().c_str());
            schema::Upgrade(conn, steps, {});
            conn.Close();
            return {};
        });
        killed = !maker.Finished();
        OpenFile();
        schema::Upgrade(m_conn, steps, {});
        const bool isFinished = TextOf(m_conn, "SELECT COUNT(*) FROM a, b") == "0" &&
                                TextOf(m_conn, "PRAGMA journal_mode") == "wal" &&
                                TextOf(m_conn, "PRAGMA integrity_check") == "ok";
        m_conn.Close();
        if (!isFinished) {
            notFinished.push_back(point);
        }
    }
    RecordProperty("points", point);
    EXPECT_THAT(notFinished, testing::IsEmpty()) << notFinished.size() << " of " << point << " points";
    EXPECT_GT(point, 50);
}

TEST_F(SchemaTest, IsMadeOnceByRunsAtTheSameTime)
{
    std::vector<std::thread> runs;
    for (int i = 0; i < 4; ++i) {
        runs.emplace_back([this] {
            EXPECT_EQ(Raised([this] {
                          CAConnect conn;
                          conn.Open(Url().c_str());
                          schema::Upgrade(conn);
                      }),
                      kNothingRaised);
        });
    }
    for (std::thread& run : runs) {
        run.join();
    }
    OpenFile();
    EXPECT_EQ(schema::Inspect(m_conn).state, State::current);
}

TEST_F(SchemaTest, FindsLoginNamesByUnicodeRulesThroughItsIndex)
{
    OpenDirectory();
    m_conn.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('José')");
    bool exists = false;
    EXPECT_TRUE(CQVBaseFun::ExistLoginName(m_conn, "jOSÉ", exists));
    EXPECT_TRUE(exists);
    CARecordset plan;
    plan.Open("EXPLAIN QUERY PLAN SELECT Col_LoginName FROM qv_User WHERE upper(Col_LoginName) = 'X'", &m_conn,
              adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    EXPECT_THAT(std::string(plan.GetValueToStr(4, true)), HasSubstr("USING INDEX"));
}

TEST_F(SchemaTest, KeepsProgramsWithAnotherUpperFromMakingItsIndexUntrue)
{
    OpenFile();
    schema::Upgrade(m_conn);
    m_conn.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('José')");
    EXPECT_EQ(RunElsewhere("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')"), "");
    EXPECT_EQ(RunElsewhere("UPDATE qv_User SET Col_LoginName = 'AMY' WHERE Col_LoginName = 'amy'"), "");
    EXPECT_NE(RunElsewhere("INSERT INTO qv_User (Col_LoginName) VALUES ('Юлия')"), "");
    EXPECT_NE(RunElsewhere("UPDATE qv_User SET Col_LoginName = 'x' WHERE Col_LoginName = 'José'"), "");
    EXPECT_NE(RunElsewhere("UPDATE qv_User SET Col_LoginName = 'é' WHERE Col_LoginName = 'AMY'"), "");
    EXPECT_NE(RunElsewhere("DELETE FROM qv_User WHERE Col_LoginName = 'José'"), "");
    EXPECT_EQ(TextOf(m_conn, "PRAGMA integrity_check"), "ok");
    EXPECT_EQ(TextOf(m_conn, "SELECT COUNT(*) FROM qv_User"), "2");
}

TEST_F(SchemaTest, PutsItsIndexesInOrderWhenTheRulesOfUpperHaveChanged)
{
    OpenFile();
    schema::Upgrade(m_conn);
    m_conn.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('José')");
    ASSERT_EQ(RunElsewhere("REINDEX"), "");
    int id = 0;
    CQVBaseFun::ExistLoginNameEx(m_conn, "josé", id);
    ASSERT_EQ(id, 0) << "the index is still in order: this test shows nothing";
    m_conn.Execute("UPDATE qv_Schema SET Col_Value = '1.0' WHERE Col_Name = 'upper'");
    schema::RefreshIndexes(m_conn);
    CQVBaseFun::ExistLoginNameEx(m_conn, "josé", id);
    EXPECT_EQ(id, 1);
    const int changes =
        m_conn.Execute("UPDATE qv_Schema SET Col_Value = Col_Value WHERE Col_Name = 'upper' AND Col_Value = '1.0'");
    EXPECT_EQ(changes, 0);
}

} // namespace
