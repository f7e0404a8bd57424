#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "platform/CodePage.h"
#include "tests/support/Raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
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
    ~SqliteTest() override { fs::remove_all(m_folder); }

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

} // namespace
