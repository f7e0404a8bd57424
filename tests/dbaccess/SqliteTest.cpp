#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "platform/CodePage.h"
#include "tests/dbaccess/SystemCalls.h"
#include "tests/support/ForkedCall.h"
#include "tests/support/Raised.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <array>
#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

using testing::HasSubstr;

namespace {

namespace fs = std::filesystem;

class SqliteTest : public testing::Test {
protected:
    SqliteTest()
    {
        std::string name = (fs::temp_directory_path() / "qv-sqlite-XXXXXX").string();
        m_folder = ::mkdtemp(name.data());
    }
    ~SqliteTest() override
    {
        fs::permissions(m_folder, fs::perms::owner_all);
        fs::remove_all(m_folder);
    }

    [[nodiscard]] fs::path File(const std::string& name = "t.db") const { return m_folder / name; }
    [[nodiscard]] CString Url(const std::string& options = "", const std::string& name = "t.db") const
    {
        return ("sqlite:" + File(name).string() + options).c_str();
    }

    static CString TextOf(CAConnect& conn, const char* sql)
    {
        CARecordset rs;
        EXPECT_TRUE(rs.Open(sql, &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable));
        return rs.GetValueToStr(1, true);
    }

    /// A table t with so many rows, each on a page of its own, with numbers from 1 that must differ.
    static void FillPages(CAConnect& conn, int rows)
    {
        conn.Execute("CREATE TABLE t (a INTEGER UNIQUE, b)");
        conn.Execute(("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
                      std::to_string(rows) + ") INSERT INTO t SELECT i, zeroblob(3000) FROM n")
                         .c_str());
    }

    /// Of this process.
    static std::size_t OpenFiles()
    {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
    }

    // A file made by another program with the same library.
    void MakeForeign(const char* sql) const
    {
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open(File().c_str(), &db), SQLITE_OK);
        ASSERT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(db);
    }

    static std::string Bytes(const fs::path& file)
    {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    static mode_t ModeOf(const fs::path& file)
    {
        struct stat status{};
        return ::stat(file.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
    }

    fs::path m_folder;
};

TEST_F(SqliteTest, MakesAFileThatKeepsItsDataAndUsesAWriteAheadLog)
{
    {
        CAConnect conn;
        conn.Open(Url());
        conn.Execute("CREATE TABLE t (a)");
        conn.Execute("INSERT INTO t VALUES ('x')");
        EXPECT_STREQ(TextOf(conn, "PRAGMA journal_mode"), "wal");
    }
    CAConnect conn;
    conn.Open(Url("?mode=rw"));
    EXPECT_STREQ(TextOf(conn, "SELECT a FROM t"), "x");
    EXPECT_STREQ(TextOf(conn, "PRAGMA journal_mode"), "wal");
}

TEST_F(SqliteTest, MakesNoFileWhenOneMustExist)
{
    CAConnect conn;
    const std::string error = RaisedWithCode([&] { conn.Open(Url("?mode=rw")); });
    EXPECT_THAT(error, HasSubstr("cannot open " + File().string()));
    EXPECT_THAT(error, HasSubstr("No such file"));
    EXPECT_THAT(error, HasSubstr("[SQLite 14]"));
    EXPECT_FALSE(fs::exists(File()));
    EXPECT_FALSE(conn.IsOpen());
}

TEST_F(SqliteTest, WritesNothingInReadOnlyMode)
{
    {
        CAConnect conn;
        conn.Open(Url());
        conn.Execute("CREATE TABLE t (a)");
    }
    CAConnect conn;
    conn.Open(Url("?mode=ro"));
    EXPECT_STREQ(TextOf(conn, "SELECT COUNT(*) FROM t"), "0");
    EXPECT_THAT(RaisedWithCode([&] { conn.Execute("INSERT INTO t VALUES (1)"); }), HasSubstr("readonly"));
}

TEST_F(SqliteTest, ChangesNothingInAFileThatIsNoLongerInItsPlace)
{
    const auto open = [this](CAConnect& conn) {
        fs::remove_all(m_folder);
        fs::create_directory(m_folder);
        conn.Open(Url());
        conn.Execute("CREATE TABLE t (a)");
        conn.Execute("INSERT INTO t VALUES ('before')");
    };
    const auto replace = [this] {
        std::ofstream(m_folder / "other") << "another file";
        fs::rename(m_folder / "other", File());
    };
    const std::string moved = "the file " + File().string() + " has been moved, replaced or deleted [SQLite 1032]";
    const std::vector<std::function<void(CAConnect&)>> statements = {
        [](CAConnect& conn) { conn.Execute("DELETE FROM t"); },
        [](CAConnect& conn) { TextOf(conn, "SELECT a FROM t"); },
        [](CAConnect& conn) { conn.BeginTrans(); },
    };
    for (const auto& statement : statements) {
        CAConnect conn;
        open(conn);
        replace();
        EXPECT_EQ(RaisedWithCode([&] { statement(conn); }), moved);
        EXPECT_FALSE(conn.IsOpen());
        EXPECT_EQ(Bytes(File()), "another file");
    }
    CAConnect conn;
    open(conn);
    conn.BeginTrans();
    conn.Execute("DELETE FROM t");
    fs::rename(File(), m_folder / "moved");
    EXPECT_EQ(RaisedWithCode([&] { conn.CommitTrans(); }), moved);
    conn.Close();
    fs::rename(m_folder / "moved", File());
    conn.Open(Url());
    EXPECT_STREQ(TextOf(conn, "SELECT a FROM t"), "before");
}

TEST_F(SqliteTest, RefusesAFileThatIsNoDatabaseAndLeavesItAlone)
{
    const std::string text =
        "login,name\nadmin,Administrator, long enough to be no header of anything else at all.....\n";
    std::ofstream(File()) << text;
    CAConnect conn;
    EXPECT_EQ(RaisedWithCode([&] { conn.Open(Url()); }), File().string() + " is not an SQLite file []");
    EXPECT_EQ(Bytes(File()), text);
}

TEST_F(SqliteTest, RefusesAFileOfAnotherApplicationAndLeavesItAlone)
{
    for (const char* sql : {"CREATE TABLE photos (a)", "PRAGMA application_id=77; CREATE TABLE qv_User (a)"}) {
        fs::remove(File());
        MakeForeign(sql);
        const std::string before = Bytes(File());
        CAConnect conn;
        EXPECT_EQ(RaisedWithCode([&] { conn.Open(Url()); }),
                  File().string() + " is an SQLite file of another application []");
        EXPECT_EQ(Bytes(File()), before);
    }
}

TEST_F(SqliteTest, TakesADirectoryThatWasMadeByOtherTools)
{
    MakeForeign("CREATE TABLE QV_USER (Col_ID)");
    CAConnect conn;
    conn.Open(Url());
    EXPECT_STREQ(TextOf(conn, "SELECT COUNT(*) FROM qv_User"), "0");
}

TEST_F(SqliteTest, OpensPathsWithUnusualCharacters)
{
    for (const std::string name : {"a b.db", "Юлия.db", "100%.db", "a#b&c=d.db"}) {
        CAConnect conn;
        conn.Open(Url("", name));
        EXPECT_TRUE(fs::exists(File(name))) << name;
    }
    CAConnect conn;
    conn.Open(("sqlite:" + (m_folder / "what%3F.db").string()).c_str());
    EXPECT_TRUE(fs::exists(File("what?.db")));
}

TEST_F(SqliteTest, WaitsForAnotherWriterNoLongerThanItsTimeout)
{
    CAConnect first;
    first.Open(Url());
    first.Execute("CREATE TABLE t (a)");
    CAConnect second;
    second.Open(Url("?busy_timeout=10"));
    first.BeginTrans();
    EXPECT_THAT(RaisedWithCode([&] { second.Execute("INSERT INTO t VALUES (1)"); }), HasSubstr("locked [SQLite 5]"));
    EXPECT_STREQ(TextOf(second, "SELECT COUNT(*) FROM t"), "0");
    first.CommitTrans();
    EXPECT_EQ(second.Execute("INSERT INTO t VALUES (1)"), 1);
}

TEST_F(SqliteTest, KeepsReadersAndAWriterApart)
{
    CAConnect writer;
    writer.Open(Url());
    writer.Execute("CREATE TABLE t (a)");
    writer.Execute("INSERT INTO t VALUES (1)");
    CAConnect reader;
    reader.Open(Url());
    CARecordset rs;
    rs.Open("SELECT a FROM t", &reader, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    EXPECT_EQ(writer.Execute("DELETE FROM t"), 1);
    EXPECT_STREQ(rs.GetValueToStr(1, true), "1");
}

TEST_F(SqliteTest, RefusesEverythingInATransactionThatTheEngineGaveUp)
{
    CAConnect conn;
    conn.Open(Url());
    conn.Execute("CREATE TABLE t (a INTEGER UNIQUE ON CONFLICT ROLLBACK)");
    conn.BeginTrans();
    conn.Execute("INSERT INTO t VALUES (1)");
    EXPECT_THAT(RaisedWithCode([&] { conn.Execute("INSERT INTO t VALUES (1)"); }), HasSubstr("UNIQUE"));
    const std::string lost = "the engine has rolled the transaction back after an earlier error []";
    EXPECT_EQ(RaisedWithCode([&] { conn.Execute("INSERT INTO t VALUES (2)"); }), lost);
    EXPECT_EQ(RaisedWithCode([&] { TextOf(conn, "SELECT 1"); }), lost);
    EXPECT_EQ(RaisedWithCode([&] { conn.CommitTrans(); }), lost);
    conn.RollbackTrans();
    EXPECT_STREQ(TextOf(conn, "SELECT COUNT(*) FROM t"), "0");
    EXPECT_EQ(conn.Execute("INSERT INTO t VALUES (2)"), 1);
}

TEST_F(SqliteTest, UpperFoldsByUnicodeAsMakeUpperDoes)
{
    CAConnect conn;
    conn.Open("sqlite::memory:");
    for (const char* text :
         {"José", "юлия", "straße", "ñ", "žofie", "王芳", "ABC xyz 'q'", "ı", "ÿ", "", "µ", "\xff\xfe é"}) {
        CString capitals = text;
        capitals.MakeUpper();
        const CString escaped = conn.EscapeLiteral(text);
        EXPECT_EQ(TextOf(conn, "SELECT upper('" + escaped + "')"), capitals) << text;
    }
    EXPECT_STREQ(TextOf(conn, "SELECT upper(NULL) IS NULL"), "1");
    EXPECT_STREQ(TextOf(conn, "SELECT upper(17)"), "17");
}

TEST_F(SqliteTest, UsesAndKeepsAnIndexOnUpper)
{
    CAConnect conn;
    conn.Open(Url());
    conn.Execute("CREATE TABLE t (a TEXT)");
    conn.Execute("CREATE INDEX ix_t ON t (upper(a))");
    conn.Execute("INSERT INTO t VALUES ('José')");
    conn.Execute("INSERT INTO t VALUES ('юлия')");
    EXPECT_STREQ(TextOf(conn, "SELECT a FROM t WHERE upper(a) = 'JOSÉ'"), "José");
    CARecordset plan;
    plan.Open("EXPLAIN QUERY PLAN SELECT a FROM t WHERE upper(a) = 'X'", &conn, adbcCursorStatic, adbcLockOptimistic,
              adbcCommandTable);
    EXPECT_THAT(std::string(plan.GetValueToStr(4, true)), HasSubstr("USING INDEX ix_t"));
    conn.Execute("UPDATE t SET a = 'Зоя' WHERE upper(a) = 'ЮЛИЯ'");
    conn.Execute("DELETE FROM t WHERE upper(a) = 'JOSÉ'");
    EXPECT_STREQ(TextOf(conn, "PRAGMA integrity_check"), "ok");
    EXPECT_STREQ(TextOf(conn, "SELECT COUNT(*) FROM t WHERE upper(a) = 'ЗОЯ'"), "1");
}

TEST_F(SqliteTest, RefusesWhatAFilesSchemaCouldDoToTheOutside)
{
    CAConnect conn;
    conn.Open(Url());
    conn.Execute("CREATE TABLE t (a)");
    conn.Execute("CREATE VIEW v AS SELECT load_extension('x') AS a FROM t");
    conn.Execute("INSERT INTO t VALUES (1)");
    EXPECT_THAT(RaisedWithCode([&] { TextOf(conn, "SELECT a FROM v"); }), HasSubstr("unsafe use of load_extension"));
}

TEST_F(SqliteTest, StreamsAResultInsteadOfHoldingIt)
{
    CAConnect conn;
    conn.Open("sqlite::memory:");
    CARecordset rs;
    rs.Open("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT i FROM n", &conn, adbcCursorStatic,
            adbcLockOptimistic, adbcCommandTable);
    for (int i = 0; i < 1000; ++i) {
        rs.MoveNext();
    }
    EXPECT_STREQ(rs.GetValueToStr(1, true), "1001");
}

// For a change that could fail in the middle, the engine keeps the pages that it reaches as they were.
TEST_F(SqliteTest, AStatementOfATransactionIsTakenBackWithoutATemporaryFile)
{
    CAConnect conn;
    conn.Open(Url());
    FillPages(conn, 20);
    conn.BeginTrans();
    const std::size_t before = OpenFiles();
    conn.Execute("UPDATE t SET a = a + 1000");
    EXPECT_THAT(RaisedWithCode([&] { conn.Execute("UPDATE t SET a = max(a + 1000, 2010)"); }), HasSubstr("UNIQUE"));
    EXPECT_STREQ(TextOf(conn, "SELECT sum(a) FROM t"), "20210");
    EXPECT_EQ(OpenFiles(), before);
    conn.RollbackTrans();
    EXPECT_STREQ(TextOf(conn, "SELECT sum(a) FROM t"), "210");
}

TEST_F(SqliteTest, AStatementThatReachesManyPagesIsTakenBackToo)
{
    CAConnect conn;
    conn.Open(Url());
    FillPages(conn, 1000);
    conn.BeginTrans();
    EXPECT_EQ(conn.Execute("UPDATE t SET a = a + 1000"), 1000);
    EXPECT_THAT(RaisedWithCode([&] { conn.Execute("UPDATE t SET a = max(a + 1000, 2500)"); }), HasSubstr("UNIQUE"));
    EXPECT_STREQ(TextOf(conn, "SELECT sum(a) FROM t"), "1500500");
    conn.RollbackTrans();
    EXPECT_STREQ(TextOf(conn, "SELECT sum(a) FROM t"), "500500");
}

TEST_F(SqliteTest, SaysThatTheDiskIsFullAndKeepsWhatWasThere)
{
    CAConnect conn;
    conn.Open(Url());
    conn.Execute("CREATE TABLE t (a)");
    conn.Execute("INSERT INTO t VALUES ('kept')");
    conn.Execute("PRAGMA max_page_count=4");
    EXPECT_THAT(RaisedWithCode([&] { conn.Execute("INSERT INTO t VALUES (zeroblob(100000))"); }),
                HasSubstr("full [SQLite 13]"));
    EXPECT_STREQ(TextOf(conn, "SELECT a FROM t"), "kept");
}

TEST_F(SqliteTest, ReportsNoRowsForAStatementThatWritesNone)
{
    CAConnect conn;
    conn.Open("sqlite::memory:");
    conn.Execute("CREATE TABLE t (a)");
    EXPECT_EQ(conn.Execute("INSERT INTO t VALUES (1), (2), (3)"), 3);
    EXPECT_EQ(conn.Execute("CREATE TABLE u (a)"), 0);
    EXPECT_EQ(conn.Execute("SELECT * FROM t"), 0);
    EXPECT_EQ(conn.Execute("UPDATE t SET a = 0 WHERE a > 1"), 2);
    EXPECT_EQ(conn.Execute("DROP TABLE u"), 0);
}

TEST_F(SqliteTest, RunsAQueryAgainForMoveFirst)
{
    CAConnect conn;
    conn.Open("sqlite::memory:");
    conn.Execute("CREATE TABLE t (a INTEGER PRIMARY KEY)");
    conn.Execute("INSERT INTO t VALUES (2), (3), (4)");
    CARecordset rs;
    ASSERT_TRUE(rs.Open("SELECT a FROM t", &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable));
    rs.MoveNext();
    EXPECT_STREQ(rs.GetValueToStr(1, true), "3");
    conn.Execute("INSERT INTO t VALUES (1)");
    EXPECT_NE(rs.MoveFirst(), 0);
    EXPECT_STREQ(rs.GetValueToStr(1, true), "1");
}

TEST_F(SqliteTest, LetsNoViewReadThroughATableThatLooksOutside)
{
    CAConnect conn;
    conn.Open(Url());
    conn.Execute("CREATE VIEW v AS SELECT file FROM pragma_database_list");
    EXPECT_THAT(RaisedWithCode([&] { TextOf(conn, "SELECT file FROM v"); }), HasSubstr("unsafe use of virtual table"));
}

TEST_F(SqliteTest, LetsNoStatementEditTheSchemaItself)
{
    CAConnect conn;
    conn.Open(Url());
    conn.Execute("CREATE TABLE t (a)");
    conn.Execute("PRAGMA writable_schema=ON");
    EXPECT_THAT(RaisedWithCode([&] { conn.Execute("UPDATE sqlite_master SET sql = 'x'"); }),
                HasSubstr("may not be modified"));
}

// ---- Files that are made --------------------------------------------------------------------------------------------

TEST_F(SqliteTest, MakesFilesForTheirOwnerAloneWhateverTheUmask)
{
    for (const mode_t mask : {0U, 022U, 0777U}) {
        const mode_t before = ::umask(mask);
        CAConnect conn;
        conn.Open(Url());
        conn.Execute("CREATE TABLE t (a)");
        ::umask(before);
        for (const char* name : {"t.db", "t.db-wal", "t.db-shm"}) {
            EXPECT_EQ(ModeOf(File(name)), 0600U) << name << " " << mask;
        }
        conn.Close();
        fs::remove(File());
    }
}

TEST_F(SqliteTest, LeavesTheModeOfAFileThatIsThere)
{
    CAConnect().Open(Url());
    fs::permissions(File(), static_cast<fs::perms>(0640));
    CAConnect conn;
    conn.Open(Url());
    conn.Execute("CREATE TABLE t (a)");
    EXPECT_EQ(ModeOf(File()), 0640U);
    EXPECT_EQ(ModeOf(File("t.db-wal")), 0640U);
}

TEST_F(SqliteTest, MakesTheFileThatALinkLeadsToForItsOwnerAlone)
{
    fs::create_directory(File("elsewhere"));
    fs::create_symlink("elsewhere/real.db", File("second"));
    fs::create_symlink(File("second"), File());
    const mode_t before = ::umask(0);
    CAConnect conn;
    conn.Open(Url());
    ::umask(before);
    EXPECT_EQ(ModeOf(File("elsewhere/real.db")), 0600U);
}

TEST_F(SqliteTest, SaysWhyAFileCannotBeMade)
{
    CAConnect conn;
    EXPECT_EQ(RaisedWithCode([&] { conn.Open(Url("", "missing/t.db")); }),
              "cannot make " + File("missing/t.db").string() + ": No such file or directory [SQLite 14]");
    EXPECT_THAT(RaisedWithCode([&] { conn.Open(("sqlite:" + m_folder.string()).c_str()); }),
                HasSubstr("cannot open " + m_folder.string()));
    fs::create_symlink("loop", File("loop"));
    EXPECT_THAT(RaisedWithCode([&] { conn.Open(Url("", "loop")); }), HasSubstr("cannot open " + File("loop").string()));
}

// The first file that the library opens has its mode then already: nobody can open it sooner.
int (*realOpen)(const char*, int, int) = nullptr;
mode_t modeWhenOpened = 0;

int NotingOpen(const char* path, int flags, int mode)
{
    struct stat status{};
    if (std::string_view(path).ends_with("/t.db") && modeWhenOpened == 0) {
        modeWhenOpened = ::stat(path, &status) == 0 ? status.st_mode & 07777 : 07777;
    }
    return realOpen(path, flags, mode);
}

TEST_F(SqliteTest, MakesFilesForTheirOwnerAloneFromTheFirstMoment)
{
    SystemCalls calls;
    realOpen = calls.Replace("open", &NotingOpen);
    modeWhenOpened = 0;
    const mode_t before = ::umask(0);
    CAConnect conn;
    conn.Open(Url());
    ::umask(before);
    EXPECT_EQ(modeWhenOpened, 0600U);
}

// ---- The switch to the write-ahead log ------------------------------------------------------------------------------

TEST_F(SqliteTest, SwitchesAFileToTheWriteAheadLogThatItsMakerDidNot)
{
    MakeForeign("PRAGMA application_id=0x5156444C");
    CAConnect conn;
    conn.Open(Url("?mode=rw"));
    EXPECT_STREQ(TextOf(conn, "PRAGMA journal_mode"), "wal");
}

int sleeps = 0;

// Takes the time for gone.
int CountedSleep(sqlite3_vfs* /*vfs*/, int microseconds)
{
    ++sleeps;
    return microseconds;
}

TEST_F(SqliteTest, OpensAFileThatCannotBeSwitchedNowAndSwitchesItLater)
{
    MakeForeign("PRAGMA application_id=0x5156444C; CREATE TABLE t (a)");
    sqlite3* reader = nullptr;
    ASSERT_EQ(sqlite3_open(File().c_str(), &reader), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(reader, "BEGIN; SELECT * FROM t", nullptr, nullptr, nullptr), SQLITE_OK);
    SystemCalls calls;
    calls.ReplaceSleep(&CountedSleep);
    sleeps = 0;
    {
        CAConnect conn;
        conn.Open(Url());
        EXPECT_EQ(sleeps, 0);
        EXPECT_STREQ(TextOf(conn, "SELECT COUNT(*) FROM t"), "0");
        EXPECT_STREQ(TextOf(conn, "PRAGMA journal_mode"), "delete");
        EXPECT_THAT(RaisedWithCode([&] { conn.Execute("INSERT INTO t VALUES (1)"); }), HasSubstr("SQLite 5"));
        EXPECT_GT(sleeps, 0);
    }
    sqlite3_close(reader);
    CAConnect conn;
    conn.Open(Url());
    EXPECT_STREQ(TextOf(conn, "PRAGMA journal_mode"), "wal");
}

// A writer that comes between the first write to a new file and the switch, and goes when it is waited for. Its lock is
// of a kind that belongs to an open file, so that it holds against this process too.
constexpr off_t kReservedByte = 0x40000001;
int (*realFcntl)(int, int, struct flock*) = nullptr;
std::string lockedPath;
int writerFile = -1;

void LockAsWriter(short type)
{
    struct flock lock{};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = kReservedByte;
    lock.l_len = 1;
    EXPECT_EQ(::fcntl(writerFile, F_OFD_SETLK, &lock), 0);
}

int NotingFcntl(int file, int command, struct flock* lock)
{
    const int result = realFcntl(file, command, lock);
    const bool unlocksAll = command == F_SETLK && lock->l_type == F_UNLCK && lock->l_len == 0;
    std::error_code ignored;
    if (unlocksAll && writerFile < 0 && fs::file_size(lockedPath, ignored) > 0) {
        writerFile = ::open(lockedPath.c_str(), O_RDWR | O_CLOEXEC);
        LockAsWriter(F_WRLCK);
    }
    return result;
}

int SleepUntilWriterHasGone(sqlite3_vfs* /*vfs*/, int microseconds)
{
    ++sleeps;
    LockAsWriter(F_UNLCK);
    return microseconds;
}

TEST_F(SqliteTest, WaitsForAWriterWhenItSwitchesANewFile)
{
    SystemCalls calls;
    realFcntl = calls.Replace("fcntl", &NotingFcntl);
    lockedPath = File().string();
    writerFile = -1;
    sleeps = 0;
    calls.ReplaceSleep(&SleepUntilWriterHasGone);
    CAConnect conn;
    ASSERT_EQ(RaisedWithCode([&] { conn.Open(Url()); }), kNothingRaised);
    EXPECT_EQ(sleeps, 1);
    EXPECT_STREQ(TextOf(conn, "PRAGMA journal_mode"), "wal");
    ::close(writerFile);
}

// ---- Folders that cannot be written ---------------------------------------------------------------------------------

class SqliteReadOnlyFolderTest : public SqliteTest {
protected:
    SqliteReadOnlyFolderTest()
    {
        CAConnect conn;
        conn.Open(Url());
        conn.Execute("CREATE TABLE t (a)");
        conn.Execute("INSERT INTO t VALUES ('old')");
        conn.Close();
        fs::permissions(File(), static_cast<fs::perms>(0644));
    }

    void CloseFolder() const { fs::permissions(m_folder, static_cast<fs::perms>(0555)); }
    void OpenFolder() const { fs::permissions(m_folder, static_cast<fs::perms>(0755)); }

    /// What somebody reads who may read the file and not write in the folder, or what is raised there.
    [[nodiscard]] std::string ReadAsAnother(const std::string& options, const std::string& name = "t.db") const
    {
        ForkedCall call([&] {
            DropPrivileges();
            std::string text;
            const std::string raised = RaisedWithCode([&] {
                CAConnect conn;
                conn.Open(Url(options, name));
                text = TextOf(conn, "SELECT group_concat(a) FROM t").GetString();
            });
            return raised == kNothingRaised ? text : raised;
        });
        return call.Result();
    }
};

TEST_F(SqliteReadOnlyFolderTest, IsReadInReadOnlyMode)
{
    CloseFolder();
    EXPECT_EQ(ReadAsAnother("?mode=ro"), "old");
    EXPECT_FALSE(fs::exists(File("t.db-wal")));
    EXPECT_FALSE(fs::exists(File("t.db-shm")));
}

TEST_F(SqliteReadOnlyFolderTest, SaysInAnyOtherModeHowItIsRead)
{
    CloseFolder();
    EXPECT_THAT(ReadAsAnother("?mode=rw"), HasSubstr("add ?mode=ro to the URL to read it"));
}

TEST_F(SqliteReadOnlyFolderTest, IsReadWithARollbackJournalToo)
{
    MakeForeign("PRAGMA journal_mode=DELETE");
    CloseFolder();
    EXPECT_EQ(ReadAsAnother("?mode=ro"), "old");
    EXPECT_EQ(ReadAsAnother("?mode=rw"), "old");
}

TEST_F(SqliteReadOnlyFolderTest, ShowsWhatAnOpenWriterHasCommitted)
{
    CAConnect writer;
    writer.Open(Url());
    writer.Execute("INSERT INTO t VALUES ('new')");
    CloseFolder();
    EXPECT_EQ(ReadAsAnother("?mode=ro"), "old,new");
}

TEST_F(SqliteReadOnlyFolderTest, IsRefusedWithALogThatCannotBeRead)
{
    CAConnect writer;
    writer.Open(Url());
    writer.Execute("INSERT INTO t VALUES ('new')");
    fs::copy_file(File("t.db"), File("copy.db"));
    fs::copy_file(File("t.db-wal"), File("copy.db-wal"));
    CloseFolder();
    EXPECT_EQ(ReadAsAnother("?mode=ro", "copy.db"),
              File("copy.db").string() + " has changes in " + File("copy.db-wal").string() +
                  ", which cannot be read in a folder that cannot be written; copy both files to one that can []");
}

TEST_F(SqliteReadOnlyFolderTest, ShowsNothingMoreWhenAWriterBegins)
{
    std::array<int, 2> opened{};
    std::array<int, 2> written{};
    ASSERT_EQ(::pipe(opened.data()) | ::pipe(written.data()), 0);
    CloseFolder();
    ForkedCall reader([&] {
        DropPrivileges();
        char byte = 'x';
        CAConnect conn;
        CARecordset rows;
        std::string results = RaisedWithCode([&] {
            conn.Open(Url("?mode=ro"));
            rows.Open("SELECT a FROM t UNION ALL SELECT 'more'", &conn, adbcCursorStatic, adbcLockOptimistic,
                      adbcCommandTable);
        });
        EXPECT_EQ(::write(opened[1], &byte, 1), 1);
        EXPECT_EQ(::read(written[0], &byte, 1), 1);
        results += "|" + RaisedWithCode([&] { rows.MoveNext(); });
        results += "|" + RaisedWithCode([&] { TextOf(conn, "SELECT a FROM t"); });
        return results;
    });
    char byte = 'x';
    ASSERT_EQ(::read(opened[0], &byte, 1), 1);
    OpenFolder();
    {
        CAConnect writer;
        writer.Open(Url());
        writer.Execute("UPDATE t SET a = 'new'");
        writer.Execute("PRAGMA wal_checkpoint(TRUNCATE)");
    }
    EXPECT_EQ(::write(written[1], &byte, 1), 1);
    const std::string changed =
        File().string() + " is being written by another program; open it again to read what it holds now []";
    EXPECT_EQ(reader.Result(), std::string(kNothingRaised) + "|" + changed + "|" + changed);
    for (const int end : {opened[0], opened[1], written[0], written[1]}) {
        ::close(end);
    }
    CAConnect conn;
    conn.Open(Url());
    EXPECT_STREQ(TextOf(conn, "SELECT a FROM t"), "new");
}

} // namespace
