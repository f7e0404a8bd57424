#include "dbaccess/CAConnect.h"
#include "dbaccess/CADateTime.h"
#include "dbaccess/CARecordset.h"
#include "platform/CodePage.h"
#include "tests/dbaccess/Query.h"
#include "tests/platform/AnsiCodePageScope.h"
#include "tests/servers/ScriptedServer.h"
#include "tests/servers/Servers.h"
#include "tests/support/Keepalive.h"
#include "tests/support/Raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <string>
#include <thread>
#include <vector>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

namespace fs = std::filesystem;

std::string Address(const std::string& port) { return "127.0.0.1:" + port; }

// ---- What a scripted server says

std::string Packet(char number, const std::string& content)
{
    return std::string{static_cast<char>(content.size()), 0, 0, number} + content;
}

/// How a server without encryption greets that wants the password to be proved by a method.
std::string Greeting(const std::string& method)
{
    using std::string_literals::operator""s;
    return Packet(0, "\x0A"
                     "5.5.5-10.11.1-MariaDB\0\x01\0\0\0abcdefgh\0\x0F\xA2\x21\x02\0\x08\x01\x15"s +
                         std::string(10, '\0') + "ijklmnopqrst\0"s + method + "\0"s);
}

std::string Ok(char number) { return Packet(number, std::string("\0\0\0\x02\0\0\0", 7)); }

/// Asks for another method than the greeting named.
std::string MethodSwitch(const std::string& method)
{
    using std::string_literals::operator""s;
    return Packet(2, "\xFE" + method + "\0\x04Password: \0"s);
}

class MysqlTest : public testing::Test {
protected:
    MysqlTest() : m_url(servers::NewDatabase("mariadb")), m_port(servers::TheMariadb().port)
    {
        m_conn.Open(m_url.c_str());
        m_database = TextOf(m_conn, "SELECT DATABASE()");
    }

    [[nodiscard]] std::string TcpUrl(const std::string& who, const std::string& hosts) const
    {
        return "mysql://" + who + "@" + hosts + "/" + m_database;
    }
    [[nodiscard]] std::string TcpUrl(const std::string& options = {}) const
    {
        return TcpUrl("qv:secret", Address(m_port)) + options;
    }

    static std::string ErrorOnOpening(const std::string& url)
    {
        CAConnect conn;
        std::string error = RaisedWithCode([&] { conn.Open(url.c_str()); });
        EXPECT_FALSE(conn.IsOpen());
        return error;
    }

    /// A user of this test alone, gone when it is over.
    class User {
    public:
        User(CAConnect& conn, const std::string& name, const std::string& password, const std::string& more = {})
            : m_conn(conn), m_name("'" + name + "'@'127.0.0.1'")
        {
            m_conn.Execute(("CREATE USER " + m_name + " IDENTIFIED BY '" + password + "' " + more).c_str());
            m_conn.Execute(("GRANT ALL ON *.* TO " + m_name).c_str());
        }
        User(const User&) = delete;
        User& operator=(const User&) = delete;
        ~User() { m_conn.Execute(("DROP USER " + m_name).c_str()); }

    private:
        CAConnect& m_conn;
        std::string m_name;
    };

    std::string m_url;
    std::string m_port;
    std::string m_database;
    CAConnect m_conn;
};

TEST_F(MysqlTest, ShowsItsKindAndItsEngine)
{
    EXPECT_EQ(m_conn.m_nDBType, 6);
    EXPECT_THAT(m_conn.GetEngineName().GetString(), testing::MatchesRegex("(MariaDB|MySQL) [0-9.]+"));
    CAConnect other;
    other.Open((m_url + "&kind=3").c_str());
    EXPECT_EQ(other.m_nDBType, 3);
}

// ---- Addresses

TEST_F(MysqlTest, TakesTheFirstHostThatAnswers)
{
    const ScriptedServer silent;
    CAConnect conn;
    conn.Open((TcpUrl("qv:secret", Address("1") + "," + Address(silent.Port()) + "," + Address(m_port)) +
               "?connect_timeout=1")
                  .c_str());
    EXPECT_EQ(TextOf(conn, "SELECT @@port"), m_port);
}

TEST_F(MysqlTest, NamesEveryHostThatDidNotAnswer)
{
    const std::string error = ErrorOnOpening(TcpUrl("qv:secret", "127.0.0.1:1,[::1]:2"));
    EXPECT_THAT(error, StartsWith("cannot connect to 127.0.0.1:1: "));
    EXPECT_THAT(error, AllOf(HasSubstr("; [::1]:2: "), HasSubstr("[MySQL 2002]"), Not(HasSubstr("secret"))));
}

TEST_F(MysqlTest, StopsAtAHostThatDoesNotKnowThePasswordAndDoesNotShowIt)
{
    const std::string error =
        ErrorOnOpening(TcpUrl("qv:wr0ng%2fpass", Address(m_port) + "," + Address(m_port)) + "?connect_timeout=5");
    EXPECT_THAT(error, StartsWith("cannot connect to " + Address(m_port) + ": Access denied for user 'qv'@'"));
    EXPECT_THAT(error, AllOf(HasSubstr("[MySQL 1045]"), Not(HasSubstr(";")), Not(HasSubstr("wr0ng"))));
}

TEST_F(MysqlTest, SaysThatADatabaseIsNotThere)
{
    EXPECT_THAT(ErrorOnOpening("mysql://qv:secret@" + Address(m_port) + "/no_such"),
                AllOf(HasSubstr("Unknown database 'no_such'"), HasSubstr("[MySQL 1049]")));
}

TEST_F(MysqlTest, NeverShowsAPieceOfAPasswordThatWasNotEncoded)
{
    for (const std::string hosts : {"pw/x@127.0.0.1", "pw?x@127.0.0.1", "1/x?pw@127.0.0.1", "1/x?a=pw@127.0.0.1"}) {
        EXPECT_THAT(ErrorOnOpening("mysql://u:" + hosts + ":1/d"),
                    AllOf(StartsWith("mysql: wants mysql://USER@HOST"), Not(HasSubstr("pw"))))
            << hosts;
    }
    EXPECT_THAT(ErrorOnOpening("mysql://u@h/d?password=pw"),
                AllOf(HasSubstr("unknown connection option"), Not(HasSubstr("pw"))));
}

TEST_F(MysqlTest, RefusesAddressesThatItCannotRead)
{
    for (const std::string address :
         {"", "//", "//h", "//h/", "u@h/d", "//h:0/d", "//h:65536/d", "//h:/d", "//h:33x/d", "//,h/d", "//h,/d",
          "//a=b/d", "//a;b/d", "//[::1/d", "//[::1]x/d", "//::1/d", "//h/d/e", "//u%00@h/d"}) {
        EXPECT_THAT(ErrorOnOpening("mysql:" + address), StartsWith("mysql: wants mysql://USER@HOST")) << address;
    }
}

TEST_F(MysqlTest, RefusesOptionsThatItDoesNotKnow)
{
    EXPECT_EQ(
        ErrorOnOpening("mysql://h/d?charset=gbk"),
        "mysql: unknown connection option; the options are socket, defaults-file, ssl, ssl-ca, ssl-cert, ssl-key, "
        "ssl-verify, cleartext-password, connect_timeout, read_timeout, write_timeout, wsrep_sync_wait, "
        "statement-cache and kind []");
    EXPECT_THAT(ErrorOnOpening("mysql://h/d?connect_timeout=soon"), HasSubstr("connect_timeout must be a number from"));
    EXPECT_THAT(ErrorOnOpening("mysql://h/d?read_timeout=0"), HasSubstr("read_timeout must be a number from 1 to"));
    EXPECT_THAT(ErrorOnOpening("mysql://h/d?wsrep_sync_wait=16"), HasSubstr("must be a number from 0 to 15"));
    EXPECT_THAT(ErrorOnOpening("mysql://h/d?ssl-verify=1"), HasSubstr("ssl-verify must be on or off"));
    EXPECT_THAT(ErrorOnOpening("mysql://h/d?cleartext-password=yes"),
                HasSubstr("cleartext-password must be on or off"));
    EXPECT_THAT(ErrorOnOpening("mysql://h/d?ssl=no"), HasSubstr("option ssl must be on or off"));
    EXPECT_THAT(ErrorOnOpening("mysql://h/d?ssl-ca=f&ssl=off"), HasSubstr("ssl-ca does not go with ssl=off"));
    EXPECT_THAT(ErrorOnOpening("mysql://h/d?kind=9"), HasSubstr("kind must be 0, 1, 3 or 6"));
    EXPECT_THAT(ErrorOnOpening("mysql://h/d?socket=/s"), HasSubstr("goes with no host"));
    EXPECT_THAT(ErrorOnOpening("mysql://h/d?defaults-file=/no/such"),
                HasSubstr("cannot read the defaults file /no/such: No such file"));
}

TEST_F(MysqlTest, DecodesWhatIsEncodedInAnAddress)
{
    const User user(m_conn, "o@b:" + m_database, "p/?%@,王");
    m_conn.Execute("CREATE DATABASE `a/b?Ю`");
    CAConnect conn;
    const std::string url = "mysql://o%40b%3a" + m_database + ":p%2F%3F%25%40%2c王@" + Address(m_port) + "/a%2fb%3FЮ";
    EXPECT_EQ(RaisedWithCode([&] { conn.Open(url.c_str()); }), kNothingRaised);
    EXPECT_EQ(TextOf(conn, "SELECT DATABASE()"), "a/b?ю");
    m_conn.Execute("DROP DATABASE `a/b?Ю`");
}

TEST_F(MysqlTest, TakesThePasswordFromTheEnvironmentOrFromADefaultsFile)
{
    const std::string withoutPassword = TcpUrl("qv", Address(m_port));
    EXPECT_THAT(ErrorOnOpening(withoutPassword), HasSubstr("(using password: NO)"));
    ::setenv("MYSQL_PWD", "secret", 1);
    CAConnect conn;
    EXPECT_EQ(RaisedWithCode([&] { conn.Open(withoutPassword.c_str()); }), kNothingRaised);
    ::unsetenv("MYSQL_PWD");

    const fs::path file = fs::temp_directory_path() / ("qv-" + m_database + ".cnf");
    std::ofstream(file) << "[client]\nuser=qv\npassword=secret\nport=1\ndefault-character-set=latin1\n"
                           "multi-statements=1\n";
    const std::string url = "mysql://" + Address(m_port) + "/" + m_database + "?defaults-file=" + file.string();
    fs::permissions(file, static_cast<fs::perms>(0640));
    EXPECT_EQ(ErrorOnOpening(url),
              "the password file " + file.string() + " is open to others than its owner; chmod 600 closes it []");
    fs::permissions(file, static_cast<fs::perms>(0600));
    EXPECT_EQ(RaisedWithCode([&] { conn.Open(url.c_str()); }), kNothingRaised);
    std::ofstream(file) << "[client]\nuser=nobody\n# password=none\n";
    fs::permissions(file, static_cast<fs::perms>(0644));
    EXPECT_THAT(ErrorOnOpening(url), HasSubstr("(using password: NO)"));
    fs::remove(file);
    EXPECT_EQ(TextOf(conn, "SELECT CONCAT(@@character_set_client, @@character_set_results)"), "utf8mb4utf8mb4");
    EXPECT_THAT(RaisedWithCode([&] { conn.Execute("DO 1; DO 2"); }), HasSubstr("[MySQL 1064]"));
}

// ---- Encryption

TEST_F(MysqlTest, EncryptsToOtherMachinesUnlessTheUrlSaysOtherwise)
{
    // The system takes this address for its own, and the driver does not know that.
    const std::string elsewhere = "0.0.0.0:" + m_port;
    const auto cipher = [this](const std::string& hosts, const std::string& options) {
        CAConnect conn;
        conn.Open((TcpUrl("qv:secret", hosts) + options).c_str());
        return TextOf(conn, "SELECT VARIABLE_VALUE FROM information_schema.SESSION_STATUS "
                            "WHERE VARIABLE_NAME = 'Ssl_cipher'");
    };
    EXPECT_NE(cipher(elsewhere, ""), "");
    EXPECT_NE(cipher(elsewhere, "?ssl=on"), "");
    EXPECT_EQ(cipher(elsewhere, "?ssl=off"), "");
    EXPECT_EQ(cipher(Address(m_port), ""), "");
    EXPECT_EQ(cipher("localhost:" + m_port, ""), "");
    EXPECT_NE(cipher(Address(m_port), "?ssl=on"), "");
    // Each host of a list by itself.
    EXPECT_NE(cipher(Address("1") + "," + elsewhere, ""), "");
    EXPECT_EQ(cipher("0.0.0.0:1," + Address(m_port), ""), "");
}

TEST_F(MysqlTest, LooksAtTheServersCertificateWhenItIsAskedTo)
{
    const std::string certificate = fs::path(servers::TheMariadb().socket).parent_path().string() + "/server.crt";
    const auto open = [this](const std::string& host, const std::string& options) {
        CAConnect conn;
        return RaisedWithCode([&] { conn.Open((TcpUrl("qv:secret", host + ":" + m_port) + options).c_str()); });
    };
    EXPECT_EQ(open("localhost", "?ssl-ca=" + certificate), kNothingRaised);
    EXPECT_THAT(open("localhost", "?ssl-verify=on"), HasSubstr("[MySQL 2026]"));
    EXPECT_THAT(open("0.0.0.0", "?ssl-ca=" + certificate), HasSubstr("[MySQL 2026]"));
    // Newer client libraries look at the name all the same.
    EXPECT_THAT(open("0.0.0.0", "?ssl-verify=off&ssl-ca=" + certificate),
                AnyOf(kNothingRaised, HasSubstr("Hostname verification failed")));
}

TEST_F(MysqlTest, RefusesAServerThatDoesNotEncryptWhereItMust)
{
    for (const auto& [host, option] :
         {std::pair{"0.0.0.0:", ""}, std::pair{"127.0.0.1:", "?ssl=on"}, std::pair{"127.0.0.1:", "?ssl-verify=off"}}) {
        ScriptedServer server(Greeting("mysql_native_password"), {Ok(2)});
        EXPECT_THAT(ErrorOnOpening(TcpUrl("qv:secret", host + server.Port()) + option),
                    HasSubstr("the server does not encrypt; ssl=off connects all the same [MySQL 2026]"));
        EXPECT_THAT(server.Received(), AllOf(Not(HasSubstr("secret")), Not(HasSubstr("SET NAMES"))));
    }
    ScriptedServer server(Greeting("mysql_native_password"), {Ok(2)});
    EXPECT_THAT(ErrorOnOpening(TcpUrl("qv:secret", Address(server.Port())) + "?ssl-verify=on"),
                HasSubstr("[MySQL 2026]"));
    EXPECT_EQ(server.Received(), "");
}

TEST_F(MysqlTest, HandsThePasswordToNoServerThatDoesNotEncrypt)
{
    for (const std::string method : {"mysql_clear_password", "dialog", "sha256_password", "caching_sha2_password"}) {
        for (const bool greets : {true, false}) {
            const std::string greeting = Greeting(greets ? method : "mysql_native_password");
            const std::vector<std::string> answers = {MethodSwitch(method), Packet(4, "\x04Password: ")};
            for (const std::string host : {"127.0.0.1", "0.0.0.0"}) {
                ScriptedServer server(greeting, answers);
                EXPECT_THAT(ErrorOnOpening(TcpUrl("qv:secret", host + ":" + server.Port()) + "?ssl=off"),
                            HasSubstr("the server asks for the password itself"))
                    << method << greets;
                EXPECT_THAT(server.Received(), Not(HasSubstr("secret"))) << method << greets;
            }
        }
    }
}

TEST_F(MysqlTest, HandsThePasswordOverWhereTheUrlAllowsIt)
{
    ScriptedServer server(Greeting("mysql_native_password"), {MethodSwitch("mysql_clear_password")});
    ErrorOnOpening(TcpUrl("qv:secret", Address(server.Port())) + "?cleartext-password=on&connect_timeout=1");
    EXPECT_THAT(server.Received(), HasSubstr("secret"));
}

// ---- The session's settings

TEST_F(MysqlTest, MeansTheSameWhateverTheServersPresetsAre)
{
    const std::string mode = TextOf(m_conn, "SELECT @@global.sql_mode");
    m_conn.Execute("SET GLOBAL sql_mode='NO_BACKSLASH_ESCAPES,ANSI_QUOTES,PIPES_AS_CONCAT'");
    CAConnect conn;
    const std::string error = RaisedWithCode([&] { conn.Open(TcpUrl().c_str()); });
    m_conn.Execute(("SET GLOBAL sql_mode='" + mode + "'").c_str());
    ASSERT_EQ(error, kNothingRaised);
    const std::string text = R"(C:\new\'x'\)";
    EXPECT_EQ(TextOf(conn, "SELECT '" + std::string(conn.EscapeLiteral(text.c_str())) + "'"), text);
    EXPECT_EQ(TextOf(conn, "SELECT \"a\""), "a");
    conn.Execute("CREATE TABLE t (id INTEGER, name VARCHAR(3), day DATE)");
    EXPECT_THAT(RaisedWithCode([&] { conn.Execute("INSERT INTO t (id) VALUES ('x')"); }), HasSubstr("[MySQL 1366]"));
    EXPECT_THAT(RaisedWithCode([&] { conn.Execute("INSERT INTO t (name) VALUES ('long')"); }),
                HasSubstr("[MySQL 1406]"));
    EXPECT_THAT(RaisedWithCode([&] { conn.Execute("INSERT INTO t (day) VALUES ('2013-02-30')"); }),
                HasSubstr("[MySQL 1292]"));
    EXPECT_EQ(conn.Execute("INSERT INTO t (day) VALUES ('0000-00-00')"), 1);
}

TEST_F(MysqlTest, SetsHowAClusterIsWaitedForWhenAsked)
{
    EXPECT_EQ(TextOf(m_conn, "SELECT @@wsrep_sync_wait"), "0");
    CAConnect conn;
    conn.Open(TcpUrl("?wsrep_sync_wait=1").c_str());
    EXPECT_EQ(TextOf(conn, "SELECT @@wsrep_sync_wait"), "1");
}

TEST_F(MysqlTest, RefusesCommentsAloneAndTakesThemBesideAStatement)
{
    for (const char* text : {"--", "-- a\n# b", "/* a */ ;", " /**/\n-- b", "/* a"}) {
        EXPECT_EQ(Raised([&] { m_conn.Execute(text); }), "there is no statement in the text") << text;
        EXPECT_EQ(Raised([&] { TextOf(m_conn, text); }), "there is no statement in the text") << text;
    }
    EXPECT_EQ(TextOf(m_conn, "/* a */ -- b\n# c\nSELECT 1 -- d"), "1");
    EXPECT_EQ(TextOf(m_conn, "/*!SELECT 2 */"), "2");
    EXPECT_EQ(TextOf(m_conn, "/*M!SELECT 3 */"), "3");
}

TEST_F(MysqlTest, SendsTheServerNoFiles)
{
    m_conn.Execute("CREATE TABLE t (a TEXT)");
    EXPECT_NE(RaisedWithCode([&] { m_conn.Execute("LOAD DATA LOCAL INFILE '/etc/hostname' INTO TABLE t"); }),
              kNothingRaised);
    EXPECT_EQ(TextOf(m_conn, "SELECT COUNT(*) FROM t"), "0");
}

// ---- Values

TEST_F(MysqlTest, CountsTheRowsThatAWriteFinds)
{
    m_conn.Execute("CREATE TABLE t (a INTEGER)");
    m_conn.Execute("INSERT INTO t VALUES (1), (2)");
    EXPECT_EQ(m_conn.Execute("UPDATE t SET a = 2"), 2);
    EXPECT_EQ(m_conn.Execute("UPDATE t SET a = 2"), 2);
    EXPECT_EQ(m_conn.Execute("SELECT * FROM t"), 0);
}

TEST_F(MysqlTest, ReadsEveryTypeAsWhatItIs)
{
    m_conn.Execute("CREATE TABLE t (a BIGINT, b BIGINT UNSIGNED, c DECIMAL(10,2), d DOUBLE, e BIT(9), f YEAR, g TIME, "
                   "h DATETIME, i DATE, j TEXT, k TINYINT)");
    m_conn.Execute(
        "INSERT INTO t VALUES (-9223372036854775808, 18446744073709551615, 12.50, 1e100, b'100000001', 2013, "
        "'09:03:02', '2013-05-07 09:03:02', '0000-00-00', '', NULL)");
    CARecordset rs;
    Open(rs, "SELECT * FROM t", m_conn);
    const char* const texts[] = {
        "-9223372036854775808", "18446744073709551615", "12.5", "1e+100", "257", "2013", "09:03:02",
        "2013-05-07 09:03:02",  "0000-00-00",           "",     ""};
    for (long i = 0; i < 11; ++i) {
        EXPECT_STREQ(rs.GetValueToStr(i + 1, true), texts[i]);
    }
    CADateTime date;
    EXPECT_TRUE(rs.GetValue(8, date));
    EXPECT_EQ(date.GetOleDateTime(), COleDateTime(2013, 5, 7, 9, 3, 2));
    EXPECT_FALSE(rs.GetValue(9, date));
    CString text;
    EXPECT_TRUE(rs.GetValue(10, text, true));
    EXPECT_FALSE(rs.GetValue(11, text, true));
}

TEST_F(MysqlTest, NamesColumnsAsTheStatementDoes)
{
    m_conn.Execute("CREATE TABLE t (Col_EnType INTEGER)");
    CARecordset rs;
    Open(rs, "SELECT Col_Entype, COUNT(*), 1 AS `昞` FROM t", m_conn);
    EXPECT_STREQ(rs.GetColumnName(1), "Col_Entype");
    EXPECT_STREQ(rs.GetColumnName(2), "COUNT(*)");
    EXPECT_STREQ(rs.GetColumnName(3), "昞");
    const AnsiCodePageScope guard(936);
    Open(rs, "SELECT 1 AS `\x95\x5c`", m_conn);
    EXPECT_STREQ(rs.GetColumnName(1), "\x95\x5c");
}

TEST_F(MysqlTest, KeepsQuotesAndBackslashesApartFromCharactersThatContainThem)
{
    struct Case {
        UINT codePage;
        const char* text;
        const char* read;
    };
    const Case cases[] = {
        {936, "\x95\x5c", "\x95\x5c"},       // one character whose second byte is a backslash
        {936, "\x95\x5c'", "\x95\x5c'"},     // a quote behind it
        {936, "\x95\x5c\\'", "\x95\x5c\\'"}, // a true backslash and a quote behind it
        {936, "C:\\\xd6\xd0\\", "C:\\\xd6\xd0\\"},
        {936, "\x95'", "?'"}, // the first byte of a character alone, before a quote
        {936, "\x95", "?"},
        {950, "\xa5\x5c\xb3\x5c'", "\xa5\x5c\xb3\x5c'"},
        {950, "\xb3\x5c\\", "\xb3\x5c\\"},
        {950, "\xb3'", "?'"},
        {932, "\x83\x5c'\x95\x5c", "\x83\x5c'\x95\x5c"},
        {932, "C:\\\x83\x5c\\", "C:\\\x83\x5c\\"},
        {1252, "\x95\x5c'", "\x95\x5c'"}, // two characters: a bullet and a backslash
        {1252, "\xe9\\", "\xe9\\"},
        {1252, "Jos\xe9'\\'", "Jos\xe9'\\'"},
    };
    m_conn.Execute("CREATE TABLE t (a VARCHAR(50) CHARACTER SET utf8mb4)");
    for (const Case& c : cases) {
        const AnsiCodePageScope guard(c.codePage);
        const std::string escaped = m_conn.EscapeLiteral(c.text).GetString();
        EXPECT_EQ(m_conn.Execute(("INSERT INTO t VALUES ('" + escaped + "')").c_str()), 1);
        EXPECT_EQ(TextOf(m_conn, "SELECT a FROM t"), c.read) << c.codePage << " " << c.text;
        EXPECT_EQ(m_conn.Execute(("DELETE FROM t WHERE a = '" + escaped + "' AND 1 = 1").c_str()), 1) << c.text;
    }
}

// ---- Results

constexpr const char* kEndless = "SELECT seq, REPEAT('x', 100) FROM seq_1_to_1000000000000";

TEST_F(MysqlTest, ReadsAMillionRowsWithoutHoldingThem)
{
    CARecordset rs;
    Open(rs, "SELECT seq, REPEAT('x', 100) FROM seq_1_to_1000000", m_conn);
    rusage before{};
    ::getrusage(RUSAGE_SELF, &before);
    __int64 sum = 0;
    for (; rs.IsEOF() == 0; rs.MoveNext()) {
        __int64 number = 0;
        rs.GetValue(1, number);
        sum += number;
    }
    rusage after{};
    ::getrusage(RUSAGE_SELF, &after);
    EXPECT_EQ(sum, 500000500000);
    constexpr long kKilobytes = 10000;
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, kKilobytes);
}

TEST_F(MysqlTest, EndsAStatementWhoseRowsNobodyReads)
{
    const std::string id = TextOf(m_conn, "SELECT CONNECTION_ID()");
    {
        CARecordset rs;
        Open(rs, kEndless, m_conn);
        EXPECT_STREQ(rs.GetValueToStr(1, true), "1");
        rs.MoveNext();
        rs.MoveFirst();
        EXPECT_STREQ(rs.GetValueToStr(1, true), "1");
    }
    EXPECT_EQ(TextOf(m_conn, "SELECT CONNECTION_ID()"), id);
}

TEST_F(MysqlTest, NeverEndsTheStatementBehindTheOneThatItMeantToEnd)
{
    // An interruption that comes too late meets a statement that was sent for it.
    const std::string met =
        "SELECT VARIABLE_VALUE FROM information_schema.SESSION_STATUS WHERE VARIABLE_NAME = 'COM_DO'";
    const std::string before = TextOf(m_conn, met);
    {
        CARecordset rs;
        Open(rs, kEndless, m_conn);
    }
    EXPECT_EQ(TextOf(m_conn, met), std::to_string(std::stoi(before) + 1));
    // Some have long been sent whole when they are closed, some end meanwhile, some would go on.
    constexpr int kLengths[] = {300, 1000, 3000, 5000, 8000, 12000, 20000, 100000};
    constexpr int kCloses = 1000;
    for (int i = 0; i < kCloses; ++i) {
        const int length = kLengths[static_cast<std::size_t>(i) % std::size(kLengths)];
        {
            CARecordset rs;
            Open(rs, "SELECT seq FROM seq_1_to_" + std::to_string(length), m_conn);
            const int steps = i % 3 == 0 ? length - 290 : 1;
            for (int step = 0; step < steps; ++step) {
                rs.MoveNext();
            }
        }
        ASSERT_EQ(TextOf(m_conn, "SELECT SUM(seq) FROM seq_1_to_100"), "5050") << i;
    }
}

TEST_F(MysqlTest, ReadsToTheEndWhenItCannotConnectASecondTime)
{
    const User user(m_conn, "one" + m_database, "p", "WITH MAX_USER_CONNECTIONS 1");
    CAConnect conn;
    conn.Open(TcpUrl("one" + m_database + ":p", Address(m_port)).c_str());
    {
        CARecordset rs;
        Open(rs, "SELECT seq FROM seq_1_to_100000", conn);
    }
    EXPECT_EQ(TextOf(conn, "SELECT 1"), "1");
}

TEST_F(MysqlTest, KeepsTheRowsOfAnEarlierResultForItsReader)
{
    m_conn.Execute("CREATE TABLE t (id INTEGER, name VARCHAR(100))");
    m_conn.Execute("INSERT INTO t SELECT seq, IF(seq % 3 = 0, NULL, IF(seq % 3 = 1, '', CONCAT('名', seq))) "
                   "FROM seq_1_to_2000");
    const std::string ordered = "SELECT id, name FROM t ORDER BY id";
    for (const UINT codePage : {CP_UTF8, 936U}) {
        const AnsiCodePageScope guard(codePage);
        const std::string name = codePage == CP_UTF8 ? "名" : "\xc3\xfb";
        CARecordset outer;
        Open(outer, ordered, m_conn);
        for (int i = 1; i <= 2000; ++i, outer.MoveNext()) {
            if (i > 5) {
                EXPECT_EQ(TextOf(m_conn, "SELECT " + std::to_string(i)), std::to_string(i));
            }
            EXPECT_STREQ(outer.GetValueToStr(1, true), std::to_string(i).c_str());
            CString text = "unread";
            EXPECT_EQ(outer.GetValue(2, text, true), i % 3 != 0);
            EXPECT_EQ(std::string(text), i % 3 == 0 ? "unread" : i % 3 == 1 ? "" : name + std::to_string(i));
        }
        EXPECT_NE(outer.IsEOF(), 0);
        EXPECT_NE(outer.MoveFirst(), 0);
        EXPECT_STREQ(outer.GetValueToStr(1, true), "1");
    }
}

TEST_F(MysqlTest, KeepsTheRowsOfSeveralResultsAtOnce)
{
    CARecordset first;
    CARecordset second;
    CARecordset third;
    Open(first, "SELECT seq FROM seq_1_to_3", m_conn);
    Open(second, "SELECT seq FROM seq_11_to_13", m_conn);
    Open(third, "SELECT seq FROM seq_21_to_23", m_conn);
    for (int i = 1; i <= 3; ++i) {
        EXPECT_STREQ(first.GetValueToStr(1, true), std::to_string(i).c_str());
        EXPECT_STREQ(second.GetValueToStr(1, true), std::to_string(10 + i).c_str());
        EXPECT_STREQ(third.GetValueToStr(1, true), std::to_string(20 + i).c_str());
        first.MoveNext();
        second.MoveNext();
        third.MoveNext();
    }
    EXPECT_NE(first.IsEOF() & second.IsEOF() & third.IsEOF(), 0);
}

TEST_F(MysqlTest, LetsAResultBeReadToTheEndAfterItsConnectionWasClosed)
{
    CARecordset rs;
    Open(rs, "SELECT seq FROM seq_1_to_50000", m_conn);
    m_conn.Close();
    int rows = 0;
    for (; rs.IsEOF() == 0; rs.MoveNext()) {
        ++rows;
    }
    EXPECT_EQ(rows, 50000);
}

TEST_F(MysqlTest, RaisesAFailureAmongTheRowsWhenItsReaderComesToIt)
{
    m_conn.Execute("CREATE TABLE t (id INTEGER)");
    m_conn.Execute("INSERT INTO t SELECT seq FROM seq_1_to_20000");
    const std::string failing = "SELECT id, IF(id = 15000, (SELECT 1 UNION SELECT 2), 0) FROM t";
    for (const bool nested : {false, true}) {
        CARecordset rs;
        Open(rs, failing, m_conn);
        if (nested) {
            EXPECT_EQ(TextOf(m_conn, "SELECT 7"), "7");
        }
        int rows = 0;
        EXPECT_THAT(RaisedWithCode([&] {
                        for (; rs.IsEOF() == 0; rs.MoveNext()) {
                            ++rows;
                        }
                    }),
                    HasSubstr("[MySQL 1242]"));
        EXPECT_EQ(rows, 14999);
        EXPECT_EQ(TextOf(m_conn, "SELECT 8"), "8");
    }
}

TEST_F(MysqlTest, ShowsTheFirstResultOfAProcedure)
{
    m_conn.Execute("CREATE PROCEDURE p() BEGIN SELECT 1; SELECT seq FROM seq_1_to_1000; SELECT 3; END");
    EXPECT_EQ(TextOf(m_conn, "CALL p()"), "1");
    m_conn.Execute("CALL p()");
    CARecordset rs;
    Open(rs, "CALL p()", m_conn);
    EXPECT_EQ(TextOf(m_conn, "SELECT 4"), "4");
    EXPECT_EQ(rs.MoveNext(), 0);
}

// ---- Trouble

TEST_F(MysqlTest, IsClosedOnceItsConnectionIsFoundToBeGone)
{
    for (const bool reading : {false, true}) {
        CAConnect conn;
        conn.Open(TcpUrl().c_str());
        const std::string id = TextOf(conn, "SELECT CONNECTION_ID()");
        CARecordset rs;
        if (reading) {
            Open(rs, kEndless, conn);
        }
        m_conn.Execute(("KILL CONNECTION " + id).c_str());
        EXPECT_TRUE(conn.IsOpen());
        if (reading) {
            EXPECT_NE(RaisedWithCode([&] {
                          while (rs.MoveNext() != 0) {
                          }
                      }),
                      kNothingRaised);
        } else {
            EXPECT_NE(RaisedWithCode([&] { conn.Execute("DO 1"); }), kNothingRaised);
        }
        EXPECT_FALSE(conn.IsOpen());
        EXPECT_EQ(Raised([&] { conn.Execute("DO 1"); }), "the database connection is not open");
        conn.Open(TcpUrl().c_str());
        EXPECT_NE(TextOf(conn, "SELECT CONNECTION_ID()"), id);
    }
}

TEST_F(MysqlTest, StaysOpenWhenANodeTakesNoStatementsForNow)
{
    m_conn.Execute("CREATE PROCEDURE p() SIGNAL SQLSTATE '08S01' SET MYSQL_ERRNO = 1047, MESSAGE_TEXT = 'not ready'");
    EXPECT_EQ(RaisedWithCode([&] { m_conn.Execute("CALL p()"); }), "not ready [MySQL 1047]");
    EXPECT_TRUE(m_conn.IsOpen());
}

TEST_F(MysqlTest, GivesUpAServerThatTakesItInAndThenSaysNothing)
{
    const ScriptedServer server(Greeting("mysql_native_password"), {Ok(2)});
    EXPECT_THAT(ErrorOnOpening(TcpUrl("qv:secret", Address(server.Port())) + "?connect_timeout=1"),
                HasSubstr("[MySQL 2013]"));
}

TEST_F(MysqlTest, WaitsForStatementsLongerThanForConnections)
{
    CAConnect conn;
    conn.Open(TcpUrl("?connect_timeout=1").c_str());
    EXPECT_EQ(RaisedWithCode([&] { conn.Execute("DO SLEEP(1.5)"); }), kNothingRaised);
}

TEST_F(MysqlTest, AsksASilentServerWhetherItIsStillThere)
{
    CAConnect conn;
    conn.Open(TcpUrl().c_str());
    const std::string client =
        TextOf(conn, "SELECT HOST FROM information_schema.PROCESSLIST WHERE ID = CONNECTION_ID()");
    EXPECT_LE(KeepaliveSeconds(client.substr(client.find(':') + 1)), 60);
}

TEST_F(MysqlTest, LosesTheConnectionWhenAnAnswerTakesLongerThanAsked)
{
    CAConnect conn;
    conn.Open(TcpUrl("?read_timeout=1").c_str());
    EXPECT_THAT(RaisedWithCode([&] { conn.Execute("DO SLEEP(30)"); }), HasSubstr("[MySQL 2013]"));
    EXPECT_FALSE(conn.IsOpen());
}

// ---- Transactions

constexpr const char* kLost = "the engine has ended the transaction by itself []";

TEST_F(MysqlTest, RefusesEverythingInATransactionThatADeadlockEnded)
{
    m_conn.Execute("CREATE TABLE t (id INTEGER PRIMARY KEY, a INTEGER)");
    m_conn.Execute("INSERT INTO t SELECT seq, 0 FROM seq_1_to_100");
    CAConnect other;
    other.Open(m_url.c_str());
    other.BeginTrans();
    other.Execute("UPDATE t SET a = 1 WHERE id > 1"); // more work than the other's, so the other is the victim
    m_conn.BeginTrans();
    m_conn.Execute("UPDATE t SET a = 2 WHERE id = 1");
    auto waiting = std::async(
        std::launch::async, [&] { return RaisedWithCode([&] { other.Execute("UPDATE t SET a = 1 WHERE id = 1"); }); });
    CAConnect watch;
    watch.Open(m_url.c_str());
    while (TextOf(watch, "SELECT COUNT(*) FROM information_schema.innodb_trx WHERE trx_state = 'LOCK WAIT' AND "
                         "trx_query LIKE 'UPDATE t SET a = 1 WHERE id = 1'") == "0") {
        // The server shows what it has seen before to who asks again within 100 ms, and counts those anew.
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
    }
    EXPECT_THAT(RaisedWithCode([&] { m_conn.Execute("UPDATE t SET a = 2 WHERE id = 2"); }), HasSubstr("[MySQL 1213]"));
    EXPECT_EQ(waiting.get(), kNothingRaised);
    other.CommitTrans();
    EXPECT_EQ(RaisedWithCode([&] { m_conn.Execute("UPDATE t SET a = 2 WHERE id = 3"); }), kLost);
    EXPECT_EQ(RaisedWithCode([&] { TextOf(m_conn, "SELECT 1"); }), kLost);
    EXPECT_EQ(RaisedWithCode([&] { m_conn.CommitTrans(); }), kLost);
    m_conn.RollbackTrans();
    EXPECT_EQ(TextOf(m_conn, "SELECT COUNT(*) FROM t WHERE a = 2"), "0");
    EXPECT_EQ(m_conn.Execute("UPDATE t SET a = 3 WHERE id = 3"), 1);
}

TEST_F(MysqlTest, GoesOnWithATransactionThatOutlivesAFailure)
{
    m_conn.Execute("CREATE TABLE t (id INTEGER PRIMARY KEY)");
    m_conn.BeginTrans();
    m_conn.Execute("INSERT INTO t VALUES (1)");
    EXPECT_THAT(RaisedWithCode([&] { m_conn.Execute("INSERT INTO t VALUES (1)"); }), HasSubstr("[MySQL 1062]"));
    EXPECT_THAT(RaisedWithCode([&] { m_conn.Execute("INSERT INTO nowhere VALUES (1)"); }), HasSubstr("[MySQL 1146]"));
    m_conn.Execute("INSERT INTO t VALUES (2)");
    m_conn.CommitTrans();
    EXPECT_EQ(TextOf(m_conn, "SELECT COUNT(*) FROM t"), "2");
}

TEST_F(MysqlTest, KeepsATransactionWhenAResultInItIsClosedEarly)
{
    m_conn.Execute("CREATE TABLE t (id INTEGER)");
    m_conn.BeginTrans();
    m_conn.Execute("INSERT INTO t VALUES (1)");
    for (const char* query : {kEndless, "SELECT seq FROM seq_1_to_300", "SELECT seq FROM seq_1_to_2"}) {
        CARecordset rs;
        Open(rs, query, m_conn);
        rs.Close();
        m_conn.Execute("INSERT INTO t VALUES (2)");
    }
    m_conn.RollbackTrans();
    EXPECT_EQ(TextOf(m_conn, "SELECT COUNT(*) FROM t"), "0");
}

TEST_F(MysqlTest, RefusesWhatFollowsAStatementThatEndsTheTransaction)
{
    m_conn.Execute("CREATE TABLE t (id INTEGER)");
    m_conn.BeginTrans();
    m_conn.Execute("CREATE TABLE u (id INTEGER)");
    EXPECT_EQ(RaisedWithCode([&] { m_conn.Execute("INSERT INTO t VALUES (1)"); }), kLost);
    m_conn.RollbackTrans();
    EXPECT_EQ(m_conn.Execute("INSERT INTO t VALUES (1)"), 1);
}

} // namespace
