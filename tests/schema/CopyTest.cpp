#include "schema/Copy.h"

#include "EdgeCaseDirectory.h"
#include "tests/dbaccess/SystemCalls.h"
#include "tests/directory/Engines.h"
#include "tests/support/Raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <limits>
#include <map>
#include <regex>
#include <string>
#include <thread>
#include <vector>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

namespace fs = std::filesystem;

bool GoOn(const schema::CopyState& /*state*/) { return true; }

std::int64_t NumberOf(CAConnect& conn, const std::string& sql)
{
    CARecordset rs;
    EXPECT_TRUE(rs.Open(sql.c_str(), &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandText)) << sql;
    __int64 number = -1;
    rs.GetValue(1, number);
    return number;
}

/// Each engine is copied to from a file that is filled, and from in turn.
class CopyTest : public testing::TestWithParam<engines::Engine> {
protected:
    CopyTest()
    {
        std::string name = (fs::temp_directory_path() / "qv-copy-XXXXXX").string();
        m_folder = ::mkdtemp(name.data());
        m_otherUrl = GetParam().emptyDatabase(m_folder);
        m_file.Open(Url("source.db").c_str());
        m_other.Open(m_otherUrl.c_str());
        schema::Upgrade(m_file);
        schema::Upgrade(m_other);
    }
    ~CopyTest() override
    {
        m_file.Close();
        m_other.Close();
        fs::remove_all(m_folder);
    }

    [[nodiscard]] std::string Url(const std::string& file) const { return "sqlite:" + (m_folder / file).string(); }
    [[nodiscard]] bool IsServer() const { return m_otherUrl.find("sqlite") == std::string::npos; }

    std::string CopyError() const
    {
        return Raised([this] { schema::Copy(m_file, m_other, GoOn); });
    }

    fs::path m_folder;
    std::string m_otherUrl;
    mutable CAConnect m_file;
    mutable CAConnect m_other;
};

TEST_P(CopyTest, CarriesEveryValueThereAndBack)
{
    awkward::Fill(m_file);
    const std::string dump = awkward::Dump(m_file);
    const schema::Copied there = schema::Copy(m_file, m_other, GoOn);
    EXPECT_EQ(there.tables, 30);
    EXPECT_EQ(there.rows, schema::CountRows(m_file));
    EXPECT_TRUE(awkward::Dump(m_other) == dump);
    CAConnect back;
    back.Open(Url("back.db").c_str());
    schema::Upgrade(back);
    schema::Copy(m_other, back, GoOn);
    EXPECT_TRUE(awkward::Dump(back) == dump);
}

TEST_P(CopyTest, GivesNoIdThatTheSourceHasEverGiven)
{
    awkward::Fill(m_file);
    schema::Copy(m_file, m_other, GoOn);
    CAConnect back;
    back.Open(Url("back.db").c_str());
    schema::Upgrade(back);
    schema::Copy(m_other, back, GoOn);
    for (CAConnect* conn : {&m_other, &back}) {
        conn->Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('new')");
        EXPECT_EQ(NumberOf(*conn, "SELECT MAX(Col_ID) FROM qv_User"), 7001);
        conn->Execute("INSERT INTO kel_AddIn (Col_Name) VALUES ('new')");
        const auto last = static_cast<std::int64_t>(2 * awkward::Texts().size() - 1);
        EXPECT_EQ(NumberOf(*conn, "SELECT Col_ID FROM kel_AddIn"), last * last + 1);
        conn->Execute("INSERT INTO kel_Msg (Col_SendDate) VALUES (NULL)");
        EXPECT_EQ(NumberOf(*conn, "SELECT MAX(Col_ID) FROM kel_Msg"), 5000000002);
    }
}

TEST_P(CopyTest, GivesNoIdThatTheTargetHasEverGiven)
{
    m_file.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    for (int i = 0; i < 3; ++i) {
        m_other.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('gone')");
    }
    m_other.Execute("DELETE FROM qv_User");
    schema::Copy(m_file, m_other, GoOn);
    m_other.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('new')");
    EXPECT_EQ(NumberOf(m_other, "SELECT MAX(Col_ID) FROM qv_User"), 4);
}

TEST_P(CopyTest, TellsHowFarItIs)
{
    for (int i = 0; i < 1200; ++i) {
        m_file.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    }
    m_file.Execute("INSERT INTO qv_Group (Col_Name) VALUES ('Sales')");
    std::vector<std::string> told;
    schema::Copy(m_file, m_other, [&](const schema::CopyState& state) {
        if (state.tableRows != 0) {
            told.push_back(state.table + " " + std::to_string(state.rows) + (state.tableIsDone ? " done" : ""));
        }
        return true;
    });
    EXPECT_THAT(told, ElementsAre("qv_User 501", "qv_User 1001", "qv_User 1200 done", "qv_Group 1201 done"));
}

TEST_P(CopyTest, LeavesNoRowsWhenItIsStoppedAndCanBeDoneAgain)
{
    awkward::Fill(m_file);
    for (const char* last : {"qv_User", "qv_JobTitle", "Kel_Board_Visiter"}) {
        const schema::Copied copied =
            schema::Copy(m_file, m_other, [&](const schema::CopyState& state) { return state.table != last; });
        EXPECT_TRUE(copied.stopped);
        EXPECT_EQ(schema::CountRows(m_other), 0) << last;
    }
    schema::Copy(m_file, m_other, GoOn);
    EXPECT_TRUE(awkward::Dump(m_other) == awkward::Dump(m_file));
}

TEST_P(CopyTest, CopiesWhatWasThereAtOneMoment)
{
    if (m_otherUrl.find(":memory:") != std::string::npos) {
        return; // a database that nobody else can write to
    }
    m_other.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    CAConnect busy;
    busy.Open(m_otherUrl.c_str());
    schema::Copy(m_other, m_file, [&](const schema::CopyState& state) {
        if (state.table == "qv_User") {
            busy.Execute("INSERT INTO qv_Group (Col_Name) VALUES ('late')");
        }
        return true;
    });
    EXPECT_EQ(NumberOf(m_file, "SELECT COUNT(*) FROM qv_Group"), 0);
    EXPECT_EQ(NumberOf(m_other, "SELECT COUNT(*) FROM qv_Group"), 1);
    m_other.Execute("INSERT INTO qv_Group (Col_Name) VALUES ('later')"); // it is not held any more
}

TEST_P(CopyTest, NamesTheRowThatTheTargetCannotTakeAndLeavesNone)
{
    awkward::Fill(m_file);
    m_file.Execute("UPDATE qv_User SET Col_Note = 'a' || char(0) || 'b' WHERE Col_ID = 9");
    EXPECT_THAT(CopyError(), AllOf(HasSubstr("qv_User, Col_ID 9: "), HasSubstr("NUL byte")));
    m_file.Execute("UPDATE qv_User SET Col_Note = '' WHERE Col_ID = 9");
    if (IsServer()) {
        m_file.Execute("UPDATE qv_User SET Col_Note = CAST(x'61FF62' AS TEXT) WHERE Col_ID = 16");
        EXPECT_THAT(CopyError(), HasSubstr("qv_User, Col_ID 16: "));
        m_file.Execute("UPDATE qv_User SET Col_Note = '' WHERE Col_ID = 16");
        m_file.Execute("UPDATE qv_ItemAce SET Col_Power = 3000000000 WHERE rowid = 3");
        EXPECT_THAT(CopyError(), HasSubstr("qv_ItemAce, row 3: "));
        m_file.Execute("UPDATE qv_ItemAce SET Col_Power = 3 WHERE rowid = 3");
    }
    EXPECT_EQ(schema::CountRows(m_other), 0);
    schema::Copy(m_file, m_other, GoOn);
    EXPECT_TRUE(awkward::Dump(m_other) == awkward::Dump(m_file));
}

TEST_P(CopyTest, RefusesATargetThatGetsRowsAtTheLastMoment)
{
    m_other.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    EXPECT_THAT(CopyError(), HasSubstr("somebody else"));
    EXPECT_EQ(schema::CountRows(m_other), 1);
}

TEST_P(CopyTest, KeepsOutWhoWritesToTheTargetMeanwhile)
{
    const std::map<std::string, const char*> impatience = {{"memory", "PRAGMA busy_timeout = 1"},
                                                           {"file", "PRAGMA busy_timeout = 1"},
                                                           {"postgresql", "SET lock_timeout = 1"},
                                                           {"mariadb", "SET SESSION innodb_lock_wait_timeout = 1"}};
    awkward::Fill(m_file);
    CAConnect busy;
    busy.Open(m_otherUrl.c_str());
    busy.Execute(impatience.at(GetParam().name));
    std::string error;
    schema::Copy(m_file, m_other, [&](const schema::CopyState& state) {
        if (state.table == "qv_User" && state.tableIsDone) {
            error = Raised([&] { busy.Execute("INSERT INTO qv_Relation (Col_ViewID) VALUES (1)"); });
        }
        return true;
    });
    EXPECT_NE(error, kNothingRaised);
    EXPECT_TRUE(awkward::Dump(m_other) == awkward::Dump(m_file));
}

TEST_P(CopyTest, RefusesATargetThatGetsRowsOfItsOwnMeanwhile)
{
    m_file.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    EXPECT_THAT(Raised([&] {
                    schema::Copy(m_file, m_other, [&](const schema::CopyState& state) {
                        if (state.table == "qv_User") { // as a trigger would
                            m_other.Execute("INSERT INTO qv_Relation (Col_ViewID) VALUES (1)");
                        }
                        return true;
                    });
                }),
                HasSubstr("somebody else"));
    EXPECT_EQ(schema::CountRows(m_other), 0);
}

TEST_P(CopyTest, RefusesWhatAServerWouldTakeForAnotherNumberOrDay)
{
    const std::vector<std::pair<const char*, const char*>> values = {
        {"Col_Birthday", "''"},         {"Col_Birthday", "'now'"}, {"Col_Birthday", "'infinity'"},
        {"Col_Birthday", "'20130507'"}, {"Col_DeptID", "1.5"},     {"Col_Birthday", "'2013-05-07 01:00:00+05:00'"},
        {"Col_DeptID", "''"},           {"Col_DeptID", "'1 a'"},   {"Col_Birthday", "'2013-05-07 01:00:00-05'"}};
    m_file.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    for (const auto& [column, value] : values) {
        m_file.Execute((std::string("UPDATE qv_User SET ") + column + " = " + value).c_str());
        if (IsServer()) {
            EXPECT_THAT(CopyError(), HasSubstr(std::string("qv_User, Col_ID 1: ") + column + " holds what is no "))
                << value;
            EXPECT_EQ(schema::CountRows(m_other), 0);
        } else {
            schema::Copy(m_file, m_other, GoOn);
            EXPECT_TRUE(awkward::Dump(m_other) == awkward::Dump(m_file)) << value;
            m_other.Execute("DELETE FROM qv_User");
        }
        m_file.Execute("UPDATE qv_User SET Col_Birthday = '2013-5-7', Col_DeptID = -1");
    }
    m_file.Execute("INSERT INTO kel_Msg (Col_ID, Col_SendDate) VALUES (1, '2013-05-07T09:03:02.25')");
    schema::Copy(m_file, m_other, GoOn);
    EXPECT_EQ(NumberOf(m_other, "SELECT Col_DeptID FROM qv_User"), -1);
}

TEST_P(CopyTest, CarriesColumnsThatServersHaveAddedWhateverTheirNames)
{
    const char* quote = GetParam().name == "mariadb" ? "`" : "\"";
    const auto quoted = [](const std::string& name, const std::string& with) {
        return with + std::regex_replace(name, std::regex(with), with + with) + with;
    };
    m_file.Execute("INSERT INTO kel_log (Col_ID) VALUES (1)");
    for (const char* name : {"order", "Col_Extra", "odd \"name`"}) {
        const std::string column = quoted(name, quote);
        m_file.Execute(("ALTER TABLE kel_log ADD COLUMN " + quoted(name, "\"") + " TEXT DEFAULT 'a'").c_str());
        m_other.Execute(("ALTER TABLE kel_log ADD COLUMN " + column + " VARCHAR(64)").c_str());
        schema::Copy(m_file, m_other, GoOn);
        EXPECT_EQ(NumberOf(m_other, "SELECT COUNT(*) FROM kel_log WHERE " + column + " = 'a'"), 1);
        m_other.Execute("DELETE FROM kel_log");
    }
}

TEST_P(CopyTest, CarriesColumnsThatServersHaveAddedWhereTheTargetHasThemToo)
{
    m_file.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    m_file.Execute("INSERT INTO kel_log (Col_ID) VALUES (1)");
    m_file.Execute("ALTER TABLE kel_log ADD COLUMN Col_Address TEXT DEFAULT '10.0.0.1'");
    bool isTold = false;
    EXPECT_THAT(Raised([&] { schema::Copy(m_file, m_other, [&](const schema::CopyState&) { return isTold = true; }); }),
                HasSubstr("kel_log has a column Col_Address that the target's has not"));
    EXPECT_FALSE(isTold); // it is found before hours have been spent
    m_other.Execute("ALTER TABLE kel_log ADD COLUMN Col_Address VARCHAR(64)");
    schema::Copy(m_file, m_other, GoOn);
    EXPECT_EQ(NumberOf(m_other, "SELECT COUNT(*) FROM kel_log WHERE Col_Address = '10.0.0.1'"), 1);
}

TEST_P(CopyTest, NamesTablesThatAreNoneOfADirectorys)
{
    m_other.Execute("CREATE TABLE photos (a integer)");
    EXPECT_THAT(schema::Copy(m_other, m_file, GoOn).others, ElementsAre("photos"));
}

TEST_P(CopyTest, TellsItselfFromOthers)
{
    EXPECT_FALSE(schema::IsSameDatabase(m_file, m_other));
    CAConnect again;
    again.Open(m_otherUrl.c_str());
    EXPECT_EQ(schema::IsSameDatabase(m_other, again), m_otherUrl.find(":memory:") == std::string::npos);
    CAConnect another;
    fs::create_directory(m_folder / "b");
    another.Open(GetParam().emptyDatabase(m_folder / "b").c_str());
    EXPECT_FALSE(schema::IsSameDatabase(m_other, another));
}

/// Those that are themselves: what stands in for SQL Server knows none of its catalogue.
std::vector<engines::Engine> RealEngines()
{
    std::vector<engines::Engine> all = engines::All();
    std::erase_if(all, [](const engines::Engine& engine) { return engine.name == "sqlserver"; });
    return all;
}

INSTANTIATE_TEST_SUITE_P(Engines, CopyTest, testing::ValuesIn(RealEngines()), engines::NameOf);

/// What a client reads of a day may have a midnight.
std::string DumpWithoutMidnights(CAConnect& conn)
{
    return std::regex_replace(awkward::Dump(conn), std::regex(" 00:00:00>"), ">");
}

TEST(CopyToAServer, WritesWhatTheGrammarOfSqlServerTakes)
{
    CAConnect from;
    CAConnect to;
    from.Open("sqlite::memory:");
    to.Open(servers::NewDatabase("sqlserver").c_str());
    schema::Upgrade(from);
    schema::Upgrade(to);
    awkward::Fill(from);
    schema::Copy(from, to, GoOn);
    EXPECT_TRUE(DumpWithoutMidnights(to) == DumpWithoutMidnights(from));
}

TEST(CopyToAServer, IsDoneAlthoughItsLockCannotBeGivenBack)
{
    CAConnect from;
    CAConnect to;
    from.Open("sqlite::memory:");
    to.Open(servers::NewDatabase("sqlserver").c_str());
    schema::Upgrade(from);
    schema::Upgrade(to);
    from.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    schema::Copy(from, to, [&](const schema::CopyState& state) {
        if (state.table == "qv_User") {
            schema::Unlock(to, schema::DialectOf(to));
        }
        return true;
    });
    EXPECT_EQ(schema::CountRows(to), 1);
}

TEST(CopyToAServer, NamesTheSettingThatALongRowGoesBeyond)
{
    CAConnect from;
    CAConnect to;
    from.Open("sqlite::memory:");
    to.Open(servers::NewDatabase("mariadb").c_str());
    schema::Upgrade(from);
    schema::Upgrade(to);
    from.Execute("INSERT INTO qv_User (Col_UserData) VALUES ('a'),(hex(zeroblob(8500000))),('b')");
    EXPECT_THAT(Raised([&] { schema::Copy(from, to, GoOn); }),
                AllOf(HasSubstr("qv_User, Col_ID 2: "), HasSubstr("max_allowed_packet is 16777216")));
    EXPECT_TRUE(to.IsOpen());
    EXPECT_EQ(schema::CountRows(to), 0);
}

TEST(CopyToAServer, TellsItselfFromOthersInWhateverTimeZone)
{
    const std::string url = servers::NewDatabase("postgresql");
    CAConnect here;
    CAConnect there;
    here.Open(url.c_str());
    there.Open(url.c_str());
    there.Execute("SET TimeZone = 'Asia/Tokyo'");
    EXPECT_TRUE(schema::IsSameDatabase(here, there));
}

class CopyThatLooksForARow : public testing::TestWithParam<const char*> {};

TEST_P(CopyThatLooksForARow, LetsNobodyComeBetween)
{
    const std::map<std::string, const char*> waiting = {
        {"postgresql", "SELECT COUNT(*) FROM pg_locks WHERE NOT granted AND locktype = 'advisory' AND database = "
                       "(SELECT oid FROM pg_database WHERE datname = current_database())"},
        {"mariadb",
         "SELECT COUNT(*) FROM information_schema.PROCESSLIST WHERE STATE = 'User lock' AND DB = DATABASE()"}};
    const std::string url = servers::NewDatabase(GetParam());
    CAConnect from;
    CAConnect to;
    CAConnect watch;
    from.Open("sqlite::memory:");
    to.Open(url.c_str());
    watch.Open(url.c_str());
    schema::Upgrade(from);
    schema::Upgrade(to);
    for (int i = 0; i < 1500; ++i) {
        from.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    }
    from.Execute("UPDATE qv_User SET Col_Note = CAST(x'61FF62' AS TEXT) WHERE Col_ID = 1203");
    std::thread second;
    const auto beginSecond = [&](const schema::CopyState&) {
        if (!second.joinable()) {
            second = std::thread([&] {
                CAConnect conn;
                conn.Open(url.c_str());
                conn.BeginTrans();
                schema::Lock(conn, schema::DialectOf(conn), schema::kLongestTableWork);
                conn.Execute("INSERT INTO qv_User (Col_ID) VALUES (1002)");
                conn.CommitTrans();
            });
            while (NumberOf(watch, waiting.at(GetParam())) == 0) {
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
            }
        }
        return true;
    };
    EXPECT_THAT(Raised([&] { schema::Copy(from, to, beginSecond); }), HasSubstr("qv_User, Col_ID 1203: "));
    second.join();
    EXPECT_EQ(schema::CountRows(to), 1);
}

INSTANTIATE_TEST_SUITE_P(Engines, CopyThatLooksForARow, testing::Values("postgresql", "mariadb"));

TEST(CopyToAServer, NamesTheRowWhoseTextIsTooLong)
{
    CAConnect from;
    CAConnect to;
    from.Open("sqlite::memory:");
    to.Open(servers::NewDatabase("mariadb").c_str());
    schema::Upgrade(from);
    schema::Upgrade(to);
    for (int i = 0; i < 1500; ++i) {
        from.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    }
    from.Execute(("UPDATE qv_User SET Col_Note = '" + std::string(256, 'x') + "' WHERE Col_ID = 1203").c_str());
    EXPECT_THAT(Raised([&] { schema::Copy(from, to, GoOn); }),
                AllOf(HasSubstr("qv_User, Col_ID 1203: "), HasSubstr("too long for column 'Col_Note'")));
    EXPECT_EQ(schema::CountRows(to), 0);
}

TEST(CopyToAServer, NamesARowWhoseKeyTheServerTakesForAnother)
{
    CAConnect from;
    CAConnect to;
    from.Open("sqlite::memory:");
    to.Open(servers::NewDatabase("mariadb").c_str());
    schema::Upgrade(from);
    schema::Upgrade(to);
    from.Execute("INSERT INTO Kel_Board (Col_ID) VALUES ('a'),('b'),('A'),('c')");
    EXPECT_THAT(Raised([&] { schema::Copy(from, to, GoOn); }), HasSubstr("Kel_Board, Col_ID A: "));
    EXPECT_EQ(schema::CountRows(to), 0);
}

/// The columns of a table that are computed or counted.
std::vector<std::string> MarkedIn(const schema::Table& table)
{
    std::vector<std::string> marked;
    for (const schema::Column& column : table.columns) {
        if (column.isComputed || column.isAutoIncrement) {
            marked.push_back(column.name + (column.isComputed ? " computed" : " counted"));
        }
    }
    return marked;
}

// A disk that has room for so many bytes more.
off_t room = 0;
ssize_t (*realWrite)(int, const void*, std::size_t, off_t) = nullptr;

ssize_t WriteWhereThereIsRoom(int file, const void* bytes, std::size_t count, off_t offset)
{
    struct stat status{};
    ::fstat(file, &status);
    const off_t growth = offset + static_cast<off_t>(count) - status.st_size;
    if (growth > room) {
        errno = ENOSPC;
        return -1;
    }
    room -= std::max<off_t>(growth, 0);
    return realWrite(file, bytes, count, offset);
}

TEST(CopyToAFile, LeavesNoLogOnADiskThatIsFull)
{
    std::string name = (fs::temp_directory_path() / "qv-full-XXXXXX").string();
    const fs::path folder = ::mkdtemp(name.data());
    CAConnect from;
    from.Open("sqlite::memory:");
    schema::Upgrade(from);
    from.Execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 50000) "
                 "INSERT INTO qv_User (Col_LoginName) SELECT 'user' || i FROM n");
    {
        SystemCalls calls;
        realWrite = calls.Replace("pwrite64", &WriteWhereThereIsRoom);
        room = std::numeric_limits<off_t>::max();
        CAConnect to;
        to.Open(("sqlite:" + (folder / "to.db").string()).c_str());
        schema::Upgrade(to);
        const auto fill = [](const schema::CopyState&) {
            room = std::min<off_t>(room, 100000);
            return true;
        };
        EXPECT_THAT(Raised([&] { schema::Copy(from, to, fill); }), HasSubstr("full"));
    }
    std::vector<std::string> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        files.push_back(entry.path().filename());
    }
    EXPECT_THAT(files, ElementsAre("to.db"));
    fs::remove_all(folder);
}

TEST(Tables, AreThoseOfTheSteps)
{
    const std::map<std::string, const schema::Dialect*> dialects = {{"sqlite", &schema::sqlite::TheDialect()},
                                                                    {"postgresql", &schema::postgresql::TheDialect()},
                                                                    {"mysql", &schema::mysql::TheDialect()},
                                                                    {"sqlserver", &schema::sqlserver::TheDialect()}};
    for (const auto& [name, dialect] : dialects) {
        const std::vector<schema::Table> tables = schema::TablesOf(*dialect);
        ASSERT_EQ(tables.size(), 30U) << name;
        EXPECT_EQ(tables.front().name, "qv_User");
        EXPECT_EQ(tables.front().columns.size(), 38U) << name;
        EXPECT_THAT(MarkedIn(tables.front()), ElementsAre("Col_ID counted", "Col_Password computed")) << name;
        EXPECT_EQ(tables.back().name, "qv_ConsoleAccount");
    }
    EXPECT_THAT(MarkedIn(schema::TablesOf(schema::access::TheDialect()).front()), ElementsAre("Col_ID counted"));
    EXPECT_THAT(MarkedIn(schema::TablesOf(schema::mysql::TheDialect())[3]), ElementsAre("Col_RowID counted"));
}

} // namespace
