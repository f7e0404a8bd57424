#include "dbaccess/CAConnect.h"
#include "dbaccess/CADateTime.h"
#include "dbaccess/CARecordset.h"
#include "dbaccess/drivers/odbc/ConnectionString.h"
#include "dbaccess/drivers/odbc/Statement.h"
#include "tests/dbaccess/DriverSuite.h"
#include "tests/dbaccess/Query.h"
#include "tests/platform/AnsiCodePageScope.h"
#include "tests/servers/Servers.h"
#include "tests/support/Memory.h"
#include "tests/support/Raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

using dbaccess::odbc::Dialect;
using testing::AnyOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace odbc_tests {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSecond = "there is more than one statement in the text []";
constexpr const char* kLost = "the transaction has ended or failed before; it can only be rolled back []";

std::string RaisedByOpening(const std::string& url)
{
    CAConnect conn;
    return RaisedWithCode([&] { conn.Open(url.c_str()); });
}

std::string Repeated(const std::string& text, int times)
{
    std::string repeated;
    for (int i = 0; i < times; ++i) {
        repeated += text;
    }
    return repeated;
}

/// How one engine says what all of them can.
struct Engine {
    const char* name;
    const char* million; // a query of 1,000,000 rows: a number from 1 on, and a text
    const char* repeat;  // an expression: as printf's, of a number of times and a text
};

constexpr Engine kSqlite = {"sqlite",
                            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 1000000) "
                            "SELECT i, 'some text that takes room' FROM n",
                            "replace(hex(zeroblob(%1)), '00', '%2')"};
constexpr Engine kPostgresql = {
    "postgresql", "SELECT i, 'some text that takes room' FROM generate_series(1, 1000000) AS n(i)", "repeat('%2', %1)"};
constexpr Engine kMariadb = {"mariadb", "SELECT seq, 'some text that takes room' FROM seq_1_to_1000000",
                             "repeat('%2', %1)"};

class OdbcTest : public testing::TestWithParam<Engine> {
protected:
    OdbcTest() : m_url(FreshOdbcUrl(GetParam().name)) { m_conn.Open(m_url.c_str()); }

    [[nodiscard]] static bool Is(const Engine& engine) { return GetParam().name == std::string(engine.name); }
    std::string TextOf(const std::string& sql) { return ::TextOf(m_conn, sql); }

    static std::string Repeat(int times, const std::string& text)
    {
        std::string expression = GetParam().repeat;
        expression.replace(expression.find("%1"), 2, std::to_string(times));
        return expression.replace(expression.find("%2"), 2, text);
    }

    std::string m_url;
    CAConnect m_conn;
};

INSTANTIATE_TEST_SUITE_P(Engines, OdbcTest, testing::Values(kSqlite, kPostgresql, kMariadb),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST_P(OdbcTest, TakesTheKindFromTheEnginesNameOrFromTheUrl)
{
    EXPECT_EQ(m_conn.m_nDBType, Is(kMariadb) ? 6 : 3);
    for (const int kind : {0, 1, 3, 6}) {
        m_conn.Open((m_url + "?kind=" + std::to_string(kind)).c_str());
        EXPECT_EQ(m_conn.m_nDBType, kind);
        EXPECT_STREQ(m_conn.GetDateStrOnSQL("2013-05-07"), "'2013-05-07 00:00:00'");
    }
}

TEST_P(OdbcTest, NamesTheEngineAndTheDriverOnTheWayToIt)
{
    EXPECT_THAT(std::string(m_conn.GetEngineName()),
                testing::MatchesRegex("(SQLite|PostgreSQL|MariaDB) [0-9.]+ through [a-z0-9]+\\.so [0-9.]+"));
}

// ---- Values

TEST_P(OdbcTest, ReadsTheColumnsOfARowInAnyOrderAndAgain)
{
    CARecordset rs;
    Open(rs, "SELECT 1 AS a, 'two' AS b, 3.5 AS c, 'four' AS d", m_conn);
    for (const long column : {4, 2, 2, 1, 3, 4, 1}) {
        const std::string expected[] = {"1", "two", "3.5", "four"};
        EXPECT_EQ(std::string(rs.GetValueToStr(column, true)), expected[column - 1]);
    }
    EXPECT_STREQ(rs.GetValueToStrByName("B", true), "two");
}

TEST_P(OdbcTest, ReadsLongTextsWhole)
{
    for (const int times : {4094, 4095, 4096, 16383, 100000, 3000000}) {
        CARecordset rs;
        Open(rs, "SELECT " + Repeat(times, "x") + " AS a, 'behind' AS b", m_conn);
        EXPECT_EQ(std::string(rs.GetValueToStr(1, true)), std::string(static_cast<std::size_t>(times), 'x'));
        EXPECT_STREQ(rs.GetValueToStr(2, true), "behind");
    }
    // Characters of 2, 3 and 4 bytes, over the ends of pieces.
    for (int shift = 0; shift < 9; ++shift) {
        const std::string front(static_cast<std::size_t>(shift), 'x');
        EXPECT_EQ(TextOf("SELECT '" + front + Repeated("\u00e9\u6f22\U0001F600", 20000) + "'"),
                  front + Repeated("\u00e9\u6f22\U0001F600", 20000));
    }
    const AnsiCodePageScope scope(936);
    const std::string text = Repeated("\xd6\xd0\x95\x5c\\'", 9000);
    EXPECT_EQ(TextOf("SELECT '" + std::string(m_conn.EscapeLiteral(text.c_str())) + "'"), text);
}

TEST_P(OdbcTest, ReadsNullsEmptyTextsAndBigNumbers)
{
    m_conn.Execute("CREATE TABLE t (a BIGINT, b VARCHAR(10), c DOUBLE PRECISION, d NUMERIC(12, 2), e INTEGER)");
    m_conn.Execute("INSERT INTO t VALUES (-9223372036854775808, '', 0.30000000000000004, 12.5, NULL)");
    m_conn.Execute("INSERT INTO t VALUES (NULL, NULL, NULL, NULL, 9)");
    CARecordset rs;
    Open(rs, "SELECT a, b, c, d, e FROM t ORDER BY coalesce(e, 0)", m_conn);
    EXPECT_STREQ(rs.GetValueToStr(1, true), "-9223372036854775808");
    CString text = "kept";
    EXPECT_TRUE(rs.GetValue(2, text, true));
    EXPECT_STREQ(text, "");
    EXPECT_THAT(std::string(rs.GetValueToStr(3, true)), AnyOf("0.30000000000000004", "0.3"));
    EXPECT_THAT(std::string(rs.GetValueToStr(4, true)), AnyOf("12.5", "12.50"));
    int number = 5;
    EXPECT_FALSE(rs.GetValue(5, number));
    EXPECT_EQ(number, 5);
    EXPECT_NE(rs.MoveNext(), 0);
    text = "kept";
    for (const long column : {1, 2, 3, 4}) {
        EXPECT_FALSE(rs.GetValue(column, text, true)) << column;
    }
    EXPECT_STREQ(text, "kept");
    EXPECT_TRUE(rs.GetValue(5, number));
    EXPECT_EQ(number, 9);
}

TEST(OdbcValues, OfEachTypeAreReadAsItIs)
{
    struct Sample {
        const char* engine;
        const char* expression;
        const char* value;
    };
    const Sample samples[] = {
        {"postgresql", "TRUE", "1"},
        {"postgresql", "0.1::real", "0.1"},
        {"postgresql", "0.1::float8 + 0.2::float8", "0.30000000000000004"},
        {"postgresql", "123456789012345678901234567890::numeric", "123456789012345678901234567890"},
        {"postgresql", "12.50::numeric", "12.5"},
        {"postgresql", "'blob'::bytea", "blob"},
        {"postgresql", "TIMESTAMP '2013-05-07 09:03:02'", "2013-05-07 09:03:02"},
        {"postgresql", "'a\\b'", "a\\b"},
        {"mariadb", "18446744073709551615", "18446744073709551615"},
        {"mariadb", "1.5e0", "1.5"},
        {"mariadb", "12.50", "12.5"},
        {"mariadb", "x'626c6f62'", "blob"},
        {"mariadb", "CAST('0000-00-00' AS DATE)", "0000-00-00"},
        {"mariadb", "'a\\b'", "a\b"},
        {"sqlite", "9223372036854775807", "9223372036854775807"},
        {"sqlite", "1.5", "1.5"},
        {"sqlite", "'a\\b'", "a\\b"},
    };
    for (const Sample& sample : samples) {
        CAConnect conn;
        conn.Open(FreshOdbcUrl(sample.engine).c_str());
        EXPECT_EQ(TextOf(conn, std::string("SELECT ") + sample.expression), sample.value) << sample.expression;
    }
    CAConnect conn;
    conn.Open(FreshOdbcUrl("mariadb").c_str());
    conn.Execute("CREATE TABLE t (a BIT(1))");
    conn.Execute("INSERT INTO t VALUES (1)");
    EXPECT_EQ(TextOf(conn, "SELECT a FROM t"), "1");
}

TEST_P(OdbcTest, ReadsDatesWithAndWithoutTime)
{
    m_conn.Execute(Is(kMariadb) ? "CREATE TABLE t (day DATE, moment DATETIME)"
                                : "CREATE TABLE t (day DATE, moment TIMESTAMP)");
    m_conn.Execute("INSERT INTO t VALUES ('2013-05-07', '2013-05-07 09:03:02')");
    CARecordset rs;
    Open(rs, "SELECT day, moment FROM t WHERE moment = " + std::string(m_conn.GetDateStrOnSQL("2013-05-07 09:03:02")),
         m_conn);
    EXPECT_STREQ(rs.GetValueToStr(1, true), "2013-05-07");
    EXPECT_STREQ(rs.GetValueToStr(2, true), "2013-05-07 09:03:02");
    CADateTime moment;
    EXPECT_TRUE(rs.GetValue(2, moment));
    EXPECT_EQ(moment.GetOleDateTime(), COleDateTime(2013, 5, 7, 9, 3, 2));
}

TEST_P(OdbcTest, KeepsTextsOfACodePageApartFromQuotesAndBackslashes)
{
    struct Sample {
        UINT codePage;
        const char* text;
    };
    // Second bytes that are a backslash or a brace, first bytes before a quote, a column named in the code page.
    for (const Sample& sample :
         {Sample{936, "\x95\x5c'\xd6\xd0'\x81\x7b"}, Sample{950, "\xa5\x5c\\'\xb3\x5c"}, Sample{1252, "Jos\xe9'\\"}}) {
        const AnsiCodePageScope scope(sample.codePage);
        const CString escaped = m_conn.EscapeLiteral(sample.text);
        EXPECT_EQ(TextOf(std::string("SELECT '") + escaped.GetString() + "'"), sample.text);
        CARecordset rs;
        const char quote = Is(kMariadb) ? '`' : '"';
        const std::string quoted = std::string(1, quote).append(sample.text).append(1, quote);
        Open(rs, "SELECT 'x' AS " + quoted, m_conn);
        EXPECT_EQ(std::string(rs.GetColumnName(1)), sample.text);
        EXPECT_EQ(std::string(rs.GetValueToStrByName(sample.text, true)), "x");
        const std::string wrong = (Is(kSqlite) ? "DROP TABLE " : "SELECT ") + quoted;
        EXPECT_THAT(RaisedWithCode([&] { m_conn.Execute(wrong.c_str()); }), HasSubstr(sample.text));
    }
}

TEST(OdbcValues, DoNotSwallowTheirQuoteWhereTheUrlNamesACharacterSet)
{
    CAConnect conn;
    conn.Open((FreshOdbcUrl("mariadb") + ";CHARSET=gbk").c_str());
    const std::string text = "\u4e16\\' OR 1=1 -- ";
    EXPECT_EQ(TextOf(conn, "SELECT '" + std::string(conn.EscapeLiteral(text.c_str())) + "'"), text);
}

// ---- Results

TEST_P(OdbcTest, ReadsResultsThatAreOpenAtTheSameTime)
{
    CARecordset outer;
    Open(outer,
         std::string("SELECT i, CASE WHEN i % 2 = 0 THEN 'even' END, 'last' FROM (") +
             (Is(kMariadb) ? "SELECT seq AS i FROM seq_1_to_3000" : GetParam().million) + ") AS n LIMIT 3000",
         m_conn);
    int rows = 0;
    for (; outer.IsEOF() == 0; outer.MoveNext()) {
        ++rows;
        int number = 0;
        outer.GetValue(1, number);
        EXPECT_EQ(number, rows);
        EXPECT_EQ(TextOf("SELECT " + std::to_string(number)), std::to_string(rows));
        CString text = "none";
        EXPECT_EQ(outer.GetValue(2, text, true), number % 2 == 0);
        EXPECT_STREQ(text, number % 2 == 0 ? "even" : "none");
        EXPECT_STREQ(outer.GetValueToStr(3, true), "last");
    }
    EXPECT_EQ(rows, 3000);
    EXPECT_NE(outer.MoveFirst(), 0);
    EXPECT_STREQ(outer.GetValueToStr(1, true), "1");
}

TEST_P(OdbcTest, ReadsAResultOverTheEndOfItsTransactionAndConnection)
{
    m_conn.BeginTrans();
    CARecordset rs;
    Open(rs, GetParam().million + std::string(" LIMIT 5000"), m_conn);
    m_conn.RollbackTrans();
    m_conn.Close();
    int rows = 1;
    while (rs.MoveNext() != 0) {
        ++rows;
    }
    EXPECT_EQ(rows, 5000);
}

TEST_P(OdbcTest, ClosesAResultEarlyInAndOutsideATransaction)
{
    m_conn.Execute("CREATE TABLE t (a INTEGER)");
    for (const bool inTransaction : {false, true}) {
        if (inTransaction) {
            m_conn.BeginTrans();
        }
        for (int i = 0; i < 3; ++i) {
            m_conn.Execute("INSERT INTO t VALUES (1)");
            CARecordset rs;
            Open(rs, GetParam().million, m_conn);
            rs.MoveNext();
            EXPECT_STREQ(rs.GetValueToStr(1, true), "2");
        }
    }
    m_conn.CommitTrans();
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM t"), "6");
}

TEST(OdbcStreams, ReadAMillionRowsInTheMemoryOfAFew)
{
    for (const Engine& engine : {kSqlite, kPostgresql}) {
        CAConnect conn;
        conn.Open(FreshOdbcUrl(engine.name).c_str());
        const std::size_t before = MemoryInUse();
        CARecordset rs;
        Open(rs, engine.million, conn);
        int rows = 0;
        for (; rs.IsEOF() == 0; rs.MoveNext()) {
            ++rows;
            if (rows % 100000 == 1) {
                EXPECT_LT(MemoryInUse(), before + kFlatMemory) << engine.name << " " << rows;
            }
        }
        EXPECT_EQ(rows, 1000000);
    }
}

TEST(OdbcStreams, RaiseAnErrorWhereTheReaderComesToIt)
{
    CAConnect conn;
    conn.Open((FreshOdbcUrl("postgresql") + ";Fetch=1").c_str());
    for (const bool interrupted : {false, true}) {
        CARecordset rs;
        Open(rs, "SELECT 10 / (3 - i) FROM generate_series(1, 9) AS n(i)", conn);
        if (interrupted) {
            EXPECT_EQ(TextOf(conn, "SELECT 'between'"), "between");
        }
        EXPECT_STREQ(rs.GetValueToStr(1, true), "5");
        EXPECT_NE(rs.MoveNext(), 0);
        EXPECT_STREQ(rs.GetValueToStr(1, true), "10");
        EXPECT_EQ(RaisedWithCode([&] { rs.MoveNext(); }), "ERROR: division by zero [ODBC 22012 1]");
        EXPECT_NE(rs.IsEOF(), 0);
        EXPECT_EQ(TextOf(conn, "SELECT 'ready'"), "ready");
    }
}

/// A recordset on a row whose last column cannot be read: a large object that is not there.
void OpenUnreadable(CARecordset& rs, CAConnect& conn)
{
    const std::string url = FreshOdbcUrl("postgresql");
    conn.Open(url.c_str());
    conn.Execute("CREATE DOMAIN lo AS oid");
    conn.Execute("CREATE TABLE t (a INTEGER, b lo, c INTEGER)");
    conn.Execute("INSERT INTO t VALUES (1, 4711, 3), (2, NULL, 4)");
    conn.Open(url.c_str());
    Open(rs, "SELECT a, b, c FROM t ORDER BY a", conn);
}

TEST(OdbcStreams, LeaveTheConnectionUsableWhenAValueCannotBeRead)
{
    CAConnect conn;
    CARecordset rs;
    ASSERT_NO_FATAL_FAILURE(OpenUnreadable(rs, conn));
    EXPECT_STREQ(rs.GetValueToStr(1, true), "1");
    const std::string error = RaisedWithCode([&] { rs.GetValueToStr(2, true); });
    EXPECT_THAT(error, HasSubstr("large object"));
    EXPECT_EQ(TextOf(conn, "SELECT 'ready'"), "ready");
    EXPECT_STREQ(rs.GetValueToStr(1, true), "1");
    EXPECT_EQ(RaisedWithCode([&] { rs.GetValueToStr(3, true); }), error);
    EXPECT_EQ(RaisedWithCode([&] { rs.MoveNext(); }), error);
}

TEST(OdbcStreams, RaiseAValueThatCouldNotBeKeptWhereItIsRead)
{
    CAConnect conn;
    CARecordset rs;
    OpenUnreadable(rs, conn);
    EXPECT_EQ(TextOf(conn, "SELECT 'between'"), "between");
    EXPECT_EQ(TextOf(conn, "SELECT 'ready'"), "ready");
    EXPECT_STREQ(rs.GetValueToStr(1, true), "1");
    for (const long column : {2, 3}) {
        EXPECT_THAT(RaisedWithCode([&] { rs.GetValueToStr(column, true); }), HasSubstr("large object"));
    }
    EXPECT_THAT(RaisedWithCode([&] { rs.MoveNext(); }), HasSubstr("large object"));
}

// ---- Statements

TEST_P(OdbcTest, RunsNothingOfATextThatHoldsASecondStatement)
{
    m_conn.Execute("CREATE TABLE t (a VARCHAR(100))");
    m_conn.Execute("INSERT INTO t VALUES ('kept; and read')");
    for (const std::string sql : {"SELECT a FROM t WHERE a = 'x'; DELETE FROM t; -- '", "DELETE FROM t; SELECT 1",
                                  "SELECT 1;\n;DELETE FROM t", "SELECT 'it''s; x'; DELETE FROM t"}) {
        EXPECT_EQ(RaisedWithCode([&] { m_conn.Execute(sql.c_str()); }), kSecond) << sql;
        EXPECT_EQ(RaisedWithCode([&] { TextOf(sql); }), kSecond) << sql;
        EXPECT_EQ(TextOf("SELECT a FROM t WHERE a = 'kept; and read' ; -- ;"), "kept; and read");
    }
}

/// The one statement of a text as it is run, or "refused".
std::string One(Dialect dialect, const std::string& text)
{
    std::string statement;
    const std::string raised = Raised([&] { statement = std::string(dbaccess::odbc::OneStatement(text, dialect)); });
    return raised == kNothingRaised ? statement : "refused";
}

TEST(OdbcStatements, AreReadByTheEnginesRules)
{
    const auto all = {Dialect::access, Dialect::sqlServer, Dialect::postgresql,
                      Dialect::mysql,  Dialect::sqlite,    Dialect::other};
    for (const Dialect dialect : all) {
        EXPECT_EQ(One(dialect, " \n SELECT ';' ; \n;"), "SELECT ';' ");
        EXPECT_EQ(One(dialect, "SELECT 'a''b;c' , \";\""), "SELECT 'a''b;c' , \";\"");
        EXPECT_EQ(One(dialect, "SELECT 1; x"), "refused");
        EXPECT_EQ(One(dialect, "; SELECT 1"), "refused");
        const bool escapes = dialect == Dialect::mysql;
        EXPECT_EQ(One(dialect, "SELECT 'a\\'; DROP TABLE t; -- '"),
                  escapes ? "SELECT 'a\\'; DROP TABLE t; -- '" : "refused");
        EXPECT_EQ(One(dialect, "SELECT 'a\\''; DROP TABLE t; -- '"),
                  escapes ? "refused" : "SELECT 'a\\''; DROP TABLE t; -- '");
    }
    EXPECT_EQ(One(Dialect::postgresql, "SELECT E'a\\'; b'"), "SELECT E'a\\'; b'");
    EXPECT_EQ(One(Dialect::postgresql, "SELECT name'a\\'; b'"), "refused");
    EXPECT_EQ(One(Dialect::postgresql, "SELECT $$;$$, $a$;$$;$a$"), "SELECT $$;$$, $a$;$$;$a$");
    EXPECT_EQ(One(Dialect::postgresql, "SELECT a$b$;c$b$"), "refused");
    EXPECT_EQ(One(Dialect::postgresql, "/* /* ; */ ; */ SELECT 1"), "SELECT 1");
    EXPECT_EQ(One(Dialect::postgresql, "SELECT 1 --\r; DELETE FROM t"), "refused");
    EXPECT_EQ(One(Dialect::sqlite, "SELECT 1 --\r; DELETE FROM t"), "SELECT 1 --\r; DELETE FROM t");
    EXPECT_EQ(One(Dialect::postgresql, "DO LANGUAGE $$plpgsql$$E'begin end --\\' ' ; DELETE FROM t; --'"), "refused");
    EXPECT_EQ(One(Dialect::postgresql, "SELECT $$a$$$$b$$; DELETE FROM t; --$$"), "refused");
    EXPECT_EQ(One(Dialect::postgresql, "SELECT E'a' -- goes on\n'\\'' ; DELETE FROM t; --'"), "refused");
    EXPECT_EQ(One(Dialect::postgresql, "SELECT E'a', '\\', ' ; '"), "SELECT E'a', '\\', ' ; '");
    EXPECT_EQ(One(Dialect::postgresql, "CREATE RULE r AS ON DELETE TO t DO (SELECT 1; SELECT 2)"),
              "CREATE RULE r AS ON DELETE TO t DO (SELECT 1; SELECT 2)");
    EXPECT_EQ(One(Dialect::sqlServer, "SELECT [a;]]b;], $x$;"), "SELECT [a;]]b;], $x$");
    EXPECT_EQ(One(Dialect::sqlServer, "SELECT [a]]; DROP TABLE t; --]"), "SELECT [a]]; DROP TABLE t; --]");
    EXPECT_EQ(One(Dialect::sqlite, "SELECT [a]]; DROP TABLE t; --]"), "refused");
    EXPECT_EQ(One(Dialect::sqlite, "SELECT /* /* */ 1; -- */"), "SELECT /* /* */ 1");
    EXPECT_EQ(One(Dialect::mysql, "SELECT `a;``;` -- ;\n, 1 # ;"), "SELECT `a;``;` -- ;\n, 1 # ;");
    EXPECT_EQ(One(Dialect::mysql, "SELECT 1--2; DROP TABLE t"), "refused");
    EXPECT_EQ(One(Dialect::mysql, "SELECT 1 /*! ; DROP TABLE t */"), "refused");
    EXPECT_EQ(One(Dialect::mysql, "SELECT 1; # nothing"), "SELECT 1");
    EXPECT_EQ(One(Dialect::access, "SELECT `a;b`, [c;d], '--'; --"), "refused");
    EXPECT_EQ(One(Dialect::postgresql, "SELECT `; DROP TABLE t; `"), "refused");
    for (const Dialect dialect : all) {
        EXPECT_EQ(One(dialect, " "), "refused");
    }
}

TEST(OdbcStatements, HaveSemicolonsInTheirBodiesAndNothingBehindThem)
{
    const std::string trigger =
        "CREATE TRIGGER r BEFORE DELETE ON t BEGIN SELECT ';END;'; SELECT CASE 1 WHEN 1 THEN 2 END; "
        "/* ; */ end";
    for (const Dialect dialect : {Dialect::mysql, Dialect::sqlite}) {
        EXPECT_EQ(One(dialect, trigger), trigger);
        EXPECT_EQ(One(dialect, "CREATE TABLE event_log (a INTEGER); DELETE FROM t"), "refused");
        EXPECT_EQ(One(dialect, "CREATE TABLE t (a INTEGER) /* trigger */; DELETE FROM t"), "refused");
        EXPECT_EQ(One(dialect, "CREATE TABLE trigger (event INTEGER); DELETE FROM t"), "refused");
    }
    EXPECT_EQ(One(Dialect::sqlite, " create /* ; */ Temporary TRIGGER r AFTER INSERT ON t BEGIN SELECT 1; END;\n-- so"),
              "create /* ; */ Temporary TRIGGER r AFTER INSERT ON t BEGIN SELECT 1; END");
    EXPECT_EQ(One(Dialect::sqlite, trigger + "; DELETE FROM t"), "refused");
    EXPECT_EQ(One(Dialect::sqlite, trigger + "; END"), "refused");
    EXPECT_EQ(One(Dialect::sqlite, "CREATE PROCEDURE p() BEGIN SELECT 1; END"), "refused");
    for (const std::string front : {"CREATE DEFINER = `a`@'b' TRIGGER r", "CREATE OR REPLACE PROCEDURE p()",
                                    "/*!50003 CREATE*/ /*!50017 DEFINER=`a`@`b`*/ FUNCTION f()", "CREATE EVENT e"}) {
        EXPECT_EQ(One(Dialect::mysql, front + " BEGIN SELECT 1; END"), front + " BEGIN SELECT 1; END");
    }
}

TEST_P(OdbcTest, LeavesAloneWhatDriversTakeForTheirOwn)
{
    m_conn.Execute("CREATE TABLE t (a VARCHAR(100))");
    m_conn.Execute("INSERT INTO t VALUES ('{fn now()} ? {d ''x''} ?')");
    EXPECT_EQ(TextOf("SELECT a FROM t WHERE a LIKE '%{fn now()} ?%'"), "{fn now()} ? {d 'x'} ?");
}

TEST_P(OdbcTest, TakesStatementsWithABodyOfSeveral)
{
    m_conn.Execute("CREATE TABLE t (a INTEGER)");
    m_conn.Execute("CREATE TABLE u (a INTEGER)");
    if (Is(kPostgresql)) {
        m_conn.Execute(
            "CREATE FUNCTION f() RETURNS trigger AS $$ BEGIN DELETE FROM u; DELETE FROM u; RETURN NEW; END $$ "
            "LANGUAGE plpgsql;");
        m_conn.Execute("CREATE TRIGGER r AFTER INSERT ON t EXECUTE FUNCTION f()");
    } else {
        m_conn.Execute("CREATE TRIGGER r AFTER INSERT ON t FOR EACH ROW BEGIN DELETE FROM u; DELETE FROM u; END");
    }
    m_conn.Execute("INSERT INTO u VALUES (1)");
    EXPECT_EQ(m_conn.Execute("INSERT INTO t VALUES (1)"), 1);
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM u"), "0");
}

TEST(OdbcStatements, BehindABodyAreNotRun)
{
    CAConnect conn;
    conn.Open(FreshOdbcUrl("sqlite").c_str());
    conn.Execute("CREATE TABLE t (a INTEGER)");
    conn.Execute("INSERT INTO t VALUES (1)");
    for (const char* sql : {"CREATE TABLE event_log (a INTEGER); DELETE FROM t",
                            "CREATE TRIGGER r AFTER INSERT ON t BEGIN SELECT 1; END; DELETE FROM t"}) {
        EXPECT_EQ(RaisedWithCode([&] { conn.Execute(sql); }), kSecond) << sql;
        EXPECT_EQ(TextOf(conn, "SELECT COUNT(*) FROM t"), "1") << sql;
    }
}

TEST(OdbcStatements, OfAProcedureWithSeveralResultsGiveTheFirst)
{
    CAConnect conn;
    conn.Open(FreshOdbcUrl("mariadb").c_str());
    conn.Execute("CREATE PROCEDURE p() BEGIN SELECT 'one'; SELECT 'two' UNION SELECT 'three'; END");
    EXPECT_EQ(TextOf(conn, "CALL p()"), "one");
    EXPECT_EQ(TextOf(conn, "CALL p()"), "one");
    conn.Execute("CALL p()");
    EXPECT_EQ(TextOf(conn, "SELECT 'ready'"), "ready");
}

TEST(OdbcStatements, CopyNothingFromAndToTheClient)
{
    CAConnect conn;
    conn.Open(FreshOdbcUrl("postgresql").c_str());
    conn.Execute("CREATE TABLE t (a INTEGER)");
    for (const char* sql :
         {"COPY t TO STDOUT", " COPY t TO STDOUT", "/* c */\ncopy t To/**/Stdout", "COPY t FROM STDIN"}) {
        EXPECT_EQ(RaisedWithCode([&] { conn.Execute(sql); }), "COPY from and to the client is not supported []");
    }
}

TEST_P(OdbcTest, CountsRowsThatAnUpdateFindsNotRowsThatItMakesDifferent)
{
    m_conn.Execute("CREATE TABLE t (a INTEGER)");
    m_conn.Execute("INSERT INTO t VALUES (1)");
    EXPECT_EQ(m_conn.Execute("UPDATE t SET a = 1"), 1);
    EXPECT_EQ(m_conn.Execute(" \n/* c */ UPDATE t SET a = 1"), 1);
    EXPECT_EQ(m_conn.Execute("SELECT a FROM t"), 0);
    EXPECT_EQ(m_conn.Execute("WITH n AS (SELECT a FROM t) SELECT a FROM n"), 0);
    EXPECT_EQ(m_conn.Execute("UPDATE t SET a = 2 WHERE a = 9"), 0);
    EXPECT_EQ(m_conn.Execute("INSERT INTO t SELECT a FROM t WHERE a = 9"), 0);
}

// ---- Transactions

TEST_P(OdbcTest, RefusesEverythingInATransactionThatHasFailed)
{
    m_conn.Execute("CREATE TABLE t (a INTEGER)");
    m_conn.BeginTrans();
    m_conn.Execute("INSERT INTO t VALUES (1)");
    EXPECT_NE(RaisedWithCode([&] { TextOf("SELECT a FROM nowhere"); }), kNothingRaised);
    EXPECT_EQ(RaisedWithCode([&] { m_conn.Execute("INSERT INTO t VALUES (2)"); }), kLost);
    EXPECT_EQ(RaisedWithCode([&] { TextOf("SELECT 1"); }), kLost);
    EXPECT_EQ(RaisedWithCode([&] { m_conn.CommitTrans(); }), kLost);
    m_conn.RollbackTrans();
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM t"), "0");
    m_conn.Execute("INSERT INTO t VALUES (3)");
    m_conn.RollbackTrans();
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM t"), "1");
}

TEST_P(OdbcTest, RefusesEverythingBehindAStatementThatEndsTheTransaction)
{
    m_conn.Execute("CREATE TABLE t (a INTEGER)");
    m_conn.BeginTrans();
    m_conn.Execute("INSERT INTO t VALUES (1)");
    m_conn.Execute(Is(kMariadb) ? "CREATE TABLE u (a INTEGER)" : "/* so */ Commit");
    EXPECT_EQ(RaisedWithCode([&] { m_conn.Execute("INSERT INTO t VALUES (2)"); }), kLost);
    EXPECT_EQ(RaisedWithCode([&] { m_conn.CommitTrans(); }), kLost);
    m_conn.RollbackTrans();
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM t"), "1");
    m_conn.BeginTrans();
    m_conn.Execute("DELETE FROM t");
    m_conn.RollbackTrans();
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM t"), "1");
}

TEST(OdbcTransactions, RaiseWhatIsFoundWrongOnlyAtTheCommit)
{
    CAConnect conn;
    conn.Open(FreshOdbcUrl("postgresql").c_str());
    conn.Execute("CREATE TABLE t (a integer UNIQUE DEFERRABLE INITIALLY DEFERRED)");
    conn.Execute("INSERT INTO t VALUES (1)");
    EXPECT_THAT(RaisedWithCode([&] { conn.Execute("INSERT INTO t VALUES (1)"); }), EndsWith("[ODBC 23505 1]"));
    conn.BeginTrans();
    conn.Execute("INSERT INTO t VALUES (1)");
    EXPECT_THAT(RaisedWithCode([&] { conn.CommitTrans(); }), HasSubstr("duplicate key"));
    EXPECT_EQ(RaisedWithCode([&] { conn.Execute("INSERT INTO t VALUES (2)"); }), kLost);
    conn.RollbackTrans();
    EXPECT_EQ(TextOf(conn, "SELECT COUNT(*) FROM t"), "1");
}

// ---- Connections

void EndConnection(const Engine& engine, const std::string& number)
{
    CAConnect other;
    if (engine.name == std::string("postgresql")) {
        other.Open(servers::UrlOf("postgresql", "postgres").c_str());
        TextOf(other, "SELECT pg_terminate_backend(" + number + ", 10000)");
    } else {
        other.Open(servers::UrlOf("mariadb", "mysql").c_str());
        other.Execute(("KILL " + number).c_str());
    }
}

TEST(OdbcConnections, KnowThatTheyAreLostAndOpenAgain)
{
    for (const Engine& engine : {kPostgresql, kMariadb}) {
        const std::string url = FreshOdbcUrl(engine.name);
        CAConnect conn;
        conn.Open(url.c_str());
        conn.Execute("CREATE TABLE t (a INTEGER)");
        conn.BeginTrans();
        conn.Execute("INSERT INTO t VALUES (1)");
        EndConnection(engine, TextOf(conn, engine.name == std::string("mariadb") ? "SELECT CONNECTION_ID()"
                                                                                 : "SELECT pg_backend_pid()"));
        const std::string error = RaisedWithCode([&] { conn.Execute("INSERT INTO t VALUES (2)"); });
        EXPECT_THAT(error, AnyOf(HasSubstr("[ODBC 08S01"), HasSubstr("[ODBC 57P01"))) << engine.name;
        EXPECT_FALSE(conn.IsOpen());
        EXPECT_EQ(RaisedWithCode([&] { conn.Execute("INSERT INTO t VALUES (3)"); }),
                  "the database connection is not open []");
        conn.Open(url.c_str());
        EXPECT_EQ(TextOf(conn, "SELECT COUNT(*) FROM t"), "0");
    }
}

TEST_P(OdbcTest, StaysOpenWhenAStatementFails)
{
    EXPECT_NE(RaisedWithCode([&] { m_conn.Execute("garbage"); }), kNothingRaised);
    EXPECT_TRUE(m_conn.IsOpen());
    EXPECT_EQ(TextOf("SELECT 7"), "7");
}

TEST(OdbcConnections, SayWhyTheyCannotBeMade)
{
    EXPECT_THAT(RaisedByOpening("odbc:Driver={No Such Driver};PWD=secret"),
                testing::MatchesRegex("cannot connect: .*Can't open lib 'No Such Driver'.* \\[ODBC 01000\\]"));
    EXPECT_THAT(RaisedByOpening("odbc:DSN=nowhere"), testing::MatchesRegex("cannot connect: .* \\[ODBC IM002\\]"));
    EXPECT_THAT(RaisedByOpening("odbc:Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=1;UID=qv;Database=x"),
                EndsWith("[ODBC 08001 101]"));
    EXPECT_THAT(RaisedByOpening("odbc:Driver={MariaDB Unicode};Server=127.0.0.1;Port=1;UID=qv;Database=x"),
                EndsWith("[ODBC HY000 2002]"));
    EXPECT_THAT(RaisedByOpening("odbc:Driver=SQLite3;Database=/nowhere/at/all"), StartsWith("cannot connect: "));
}

TEST(OdbcConnections, RaiseForAFileThatIsNoAccessFile)
{
    const std::string file = fs::temp_directory_path() / ("qv-odbc-" + std::to_string(::getpid()) + ".mdb");
    std::ofstream(file) << "no Access file";
    EXPECT_THAT(RaisedByOpening("odbc:Driver={MDBTools};DBQ=" + file), StartsWith("cannot connect: "));
    fs::remove(file);
}

TEST(OdbcConnections, TakeADataSource)
{
    const std::string folder = fs::temp_directory_path() / ("qv-odbc-" + std::to_string(::getpid()));
    fs::create_directory(folder);
    std::ofstream(folder + "/odbc.ini") << "[people]\nDriver=SQLite3\nDatabase=" << folder << "/people.db\n";
    ::setenv("ODBCINI", (folder + "/odbc.ini").c_str(), 1);
    {
        CAConnect conn;
        conn.Open("odbc:DSN=people?kind=1");
        conn.Execute("CREATE TABLE t (a INTEGER)");
        EXPECT_EQ(conn.m_nDBType, 1);
        const std::size_t before = MemoryInUse();
        CARecordset rs;
        Open(rs, kSqlite.million, conn);
        EXPECT_LT(MemoryInUse(), before + kFlatMemory);
    }
    ::unsetenv("ODBCINI");
    EXPECT_TRUE(fs::exists(folder + "/people.db"));
    fs::remove_all(folder);
}

/// A user of MariaDB's who is let in by this password only, and a URL without it.
std::string UrlOfUser(const std::string& password)
{
    const std::string url = FreshOdbcUrl("mariadb");
    const std::string name = "locked" + url.substr(url.rfind('_'));
    CAConnect conn;
    conn.Open(servers::UrlOf("mariadb", "mysql").c_str());
    const std::string user = "'" + name + "'@'127.0.0.1'";
    conn.Execute(("CREATE OR REPLACE USER " + user + " IDENTIFIED BY '" +
                  std::string(conn.EscapeLiteral(password.c_str())) + "'")
                     .c_str());
    conn.Execute(("GRANT ALL ON *.* TO " + user).c_str());
    return "odbc:Driver={MariaDB Unicode};Server=127.0.0.1;Port=" + servers::TheMariadb().port +
           ";Database=mysql;UID=" + name;
}

class PasswordFile {
public:
    explicit PasswordFile(const std::string& text)
        : m_path(fs::temp_directory_path() / ("qv-pw-" + std::to_string(::getpid())))
    {
        std::ofstream(m_path) << text;
        ::chmod(m_path.c_str(), S_IRUSR | S_IWUSR);
    }
    PasswordFile(const PasswordFile&) = delete;
    PasswordFile& operator=(const PasswordFile&) = delete;
    ~PasswordFile() { fs::remove(m_path); }

    [[nodiscard]] const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

TEST(OdbcPasswords, ComeFromAFileThatOnlyItsOwnerCanRead)
{
    for (const std::string password : {"plain", "a;b", "a{b}c", "{x}", "b}}=; y", "p?q&r%3F", "\u6f22"}) {
        const std::string url = UrlOfUser(password);
        const PasswordFile file(password + "\nanother line\n");
        EXPECT_EQ(RaisedByOpening(url + "?password-file=" + file.Path()), kNothingRaised) << password;
        EXPECT_THAT(RaisedByOpening(url), EndsWith("[ODBC 28000 1045]")) << password;
        EXPECT_EQ(RaisedByOpening(url + ";pwd=x?password-file=" + file.Path()),
                  "odbc: the password is given twice, in the connection string and by password-file []");
        ::chmod(file.Path().c_str(), S_IRUSR | S_IWUSR | S_IRGRP);
        EXPECT_EQ(RaisedByOpening(url + "?password-file=" + file.Path()),
                  "the password file " + file.Path() + " is open to others than its owner; chmod 600 closes it []");
    }
    const PasswordFile empty("\n");
    EXPECT_THAT(RaisedByOpening("odbc:DSN=x?password-file=" + empty.Path()),
                HasSubstr("has no password in its first line"));
    EXPECT_EQ(RaisedByOpening("odbc:DSN=x?password-file=/nowhere"),
              "cannot read the password file /nowhere: No such file or directory []");
}

TEST(OdbcPasswords, AreNeverRepeated)
{
    const std::string url = UrlOfUser("right");
    EXPECT_EQ(RaisedByOpening(url + ";PWD=right"), kNothingRaised);
    for (const std::string& wrong :
         {url + ";PWD=secret", url + ";Password={secret}", url + ";PWD=a?secret", url + ";PWD=a?secret=1",
          url + ";PWD=a?kind=1&secret", url + ";PWD=a;secret", url + ";PWD=a;=secret",
          url + ";PWD=}secret;Port=nonsense",
          std::string("odbc:Driver={PostgreSQL Unicode};Server=secret;Port=1;PWD=secret"),
          std::string("odbc:Driver=secret;PWD=secret"), std::string("odbc:PWD=secret"), std::string("odbc:secret")}) {
        const std::string error = RaisedByOpening(wrong);
        EXPECT_NE(error, kNothingRaised) << wrong;
        EXPECT_THAT(error, Not(HasSubstr("secret"))) << wrong;
    }
}

TEST(OdbcUrl, SaysWhatItWants)
{
    for (const char* url : {"odbc:", "odbc:people", "odbc:DSN=x?mode=ro", "odbc:DSN=x?kind"}) {
        EXPECT_THAT(RaisedByOpening(url), StartsWith("odbc: wants odbc:KEYWORD=VALUE;")) << url;
    }
    EXPECT_THAT(RaisedByOpening("odbc:DSN=x?kind=2"), HasSubstr("kind must be 0, 1, 3 or 6"));
}

// ---- Connection strings

TEST(OdbcConnectionString, IsReadWithItsBraces)
{
    using dbaccess::odbc::ConnectionString;
    const ConnectionString string(" Driver = {a;b}}c} ; PWD={=};;Uid=x y;Empty=");
    EXPECT_TRUE(string.IsWellFormed());
    EXPECT_EQ(string.Value("DRIVER"), "a;b}c");
    EXPECT_EQ(string.Value("PWD"), "=");
    EXPECT_EQ(string.Value("uid"), "x y");
    EXPECT_TRUE(string.Has("empty"));
    EXPECT_FALSE(string.Has("a"));
    for (const char* text : {"", ";", "people", "=x", "DSN=x;y", "DSN={x};y"}) {
        EXPECT_FALSE(ConnectionString(text).IsWellFormed()) << text;
    }
}

TEST(OdbcConnectionString, GetsWhatADriverNeedsUnlessItIsThere)
{
    using dbaccess::odbc::AddSettings;
    using dbaccess::odbc::ConnectionString;
    const auto added = [](const char* text, const char* driver) {
        ConnectionString string(text);
        AddSettings(string, driver);
        return string.Text();
    };
    EXPECT_EQ(added("DSN=x", "libsqlite3odbc.so"), "DSN=x;StepAPI=1");
    EXPECT_EQ(added("DSN=x;", "PostgreSQL Unicode"), "DSN=x;UseDeclareFetch=1;Fetch=1000");
    EXPECT_EQ(added("DSN=x;usedeclarefetch=0;fetch=7", "psqlodbcw.so"), "DSN=x;usedeclarefetch=0;fetch=7");
    EXPECT_EQ(added("DSN=x;OPTIONS=0", "libmaodbc.so"), "DSN=x;OPTIONS=0;CHARSET=utf8mb4");
    EXPECT_EQ(added("DSN=x", "libtdsodbc.so"), "DSN=x;ClientCharset=UTF-8");
    EXPECT_EQ(added("DSN=x", "libother.so"), "DSN=x");
}

} // namespace

} // namespace odbc_tests
