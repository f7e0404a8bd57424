#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "schema/Dialect.h"
#include "schema/Schema.h"
#include "testing/ScriptedDriver.h"
#include "tests/servers/Servers.h"
#include "tests/support/Raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

// What a name is in the tables of MariaDB.

namespace {

constexpr const char* kWanted = "utf8mb4_uca1400_nopad_as_ci";

class Collations : public testing::Test {
protected:
    Collations() { m_conn.Open(servers::NewDatabase("mariadb").c_str()); }

    void Execute(const std::string& sql) { m_conn.Execute(sql.c_str()); }

    std::string TextOf(const std::string& sql)
    {
        CARecordset rs;
        EXPECT_TRUE(rs.Open(sql.c_str(), &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable)) << sql;
        return rs.GetValueToStr(1, true).GetString();
    }

    void MakeVersion2()
    {
        std::vector<schema::Step> steps = schema::mysql::TheDialect().steps;
        steps.resize(2);
        schema::Upgrade(m_conn, steps, {});
    }

    std::string CollationOf(const std::string& table)
    {
        return TextOf("SELECT GROUP_CONCAT(DISTINCT COLLATION_NAME) FROM information_schema.COLUMNS WHERE TABLE_SCHEMA "
                      "= DATABASE() AND TABLE_NAME = '" +
                      table + "'");
    }

    CAConnect m_conn;
};

TEST_F(Collations, TellNamesApartByAccentsEmojiAndBlanksAndNotByCase)
{
    schema::Upgrade(m_conn);
    const std::vector<std::pair<std::string, std::string>> differing = {
        {"rene", "ren\xC3\xA9"},
        {"n", "\xC3\xB1"},
        {"\xF0\x9F\x98\x80smile", "\xF0\x9F\x98\x82smile"},
        {"amy", "amy "},
        {"strasse", "stra\xC3\x9F"
                    "e"}};
    for (const auto& [stored, asked] : differing) {
        Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('" + stored + "')");
        EXPECT_EQ(TextOf("SELECT COUNT(*) FROM qv_User WHERE Col_LoginName = '" + asked + "'"), "0") << asked;
        EXPECT_EQ(TextOf("SELECT COUNT(*) FROM qv_User WHERE Col_LoginName = '" + stored + "'"), "1") << stored;
    }
    Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('Jos\xC3\xA9')");
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM qv_User WHERE Col_LoginName = 'jOS\xC3\x89'"), "1");
}

TEST_F(Collations, OfEarlierVersionsAreNamedAndConverted)
{
    MakeVersion2();
    Execute("INSERT INTO qv_User (Col_ID, Col_LoginName) VALUES (7, 'ren\xC3\xA9')");
    Execute("UPDATE qv_User SET Col_ID = 0");
    Execute("CREATE TABLE photos (a VARCHAR(20)) COLLATE utf8mb4_general_ci");
    const auto shortcoming = schema::FindShortcoming(m_conn);
    ASSERT_TRUE(shortcoming);
    EXPECT_TRUE(shortcoming->isCuredByUpgrade);
    EXPECT_THAT(shortcoming->text, AllOf(HasSubstr("utf8mb4_general_ci"), HasSubstr(kWanted), HasSubstr("qv_User")));
    schema::Upgrade(m_conn);
    EXPECT_FALSE(schema::FindShortcoming(m_conn));
    EXPECT_EQ(CollationOf("qv_User"), kWanted);
    EXPECT_EQ(CollationOf("photos"), "utf8mb4_general_ci");
    EXPECT_EQ(TextOf("SELECT Col_ID FROM qv_User WHERE Col_LoginName = 'REN\xC3\x89'"), "0");
}

TEST_F(Collations, ThatTheServerHasLearntSinceAreTakenByTheNextUpgrade)
{
    schema::Upgrade(m_conn);
    // As on a server that did not know a better one when the step ran.
    Execute("ALTER TABLE qv_Group CONVERT TO CHARACTER SET utf8mb4 COLLATE utf8mb4_general_ci");
    EXPECT_EQ(schema::Inspect(m_conn).state, schema::State::current);
    std::vector<std::string> titles;
    schema::Upgrade(m_conn, [&](int, const std::string& title) { titles.push_back(title); });
    EXPECT_THAT(titles, ElementsAre("names"));
    EXPECT_EQ(CollationOf("qv_Group"), kWanted);
}

TEST_F(Collations, OfAnAdministratorsChoiceStayWhenTheySuit)
{
    schema::Upgrade(m_conn);
    const std::string swedish = "utf8mb4_uca1400_swedish_nopad_as_ci";
    Execute("ALTER TABLE qv_Group CONVERT TO CHARACTER SET utf8mb4 COLLATE " + swedish);
    EXPECT_FALSE(schema::FindShortcoming(m_conn));
    schema::Upgrade(m_conn);
    EXPECT_EQ(CollationOf("qv_Group"), swedish);
    // Blanks at the end do not count in this one.
    Execute("ALTER TABLE qv_Group CONVERT TO CHARACTER SET utf8mb4 COLLATE utf8mb4_uca1400_as_ci");
    EXPECT_TRUE(schema::FindShortcoming(m_conn));
    Execute("ALTER TABLE qv_Group CONVERT TO CHARACTER SET latin1 COLLATE latin1_swedish_ci");
    EXPECT_TRUE(schema::FindShortcoming(m_conn));
}

TEST_F(Collations, InWhichNoticesWouldBeTheSameAreRefusedBeforeAnythingIsConverted)
{
    MakeVersion2();
    // A joiner of no width, which newer rules leave out.
    Execute("INSERT INTO Kel_Board (Col_ID) VALUES ('a'), ('a\xE2\x80\x8D'), ('b')");
    EXPECT_THAT(Raised([&] { schema::Upgrade(m_conn); }),
                AllOf(HasSubstr("notices 'a'"), HasSubstr("'a\xE2\x80\x8D'"), HasSubstr("Nothing was converted")));
    EXPECT_EQ(schema::Inspect(m_conn).version, 2);
    EXPECT_EQ(CollationOf("qv_User"), "utf8mb4_general_ci");
    Execute("DELETE FROM Kel_Board WHERE Col_ID = 'a'");
    schema::Upgrade(m_conn);
    EXPECT_EQ(schema::Inspect(m_conn).state, schema::State::current);
    EXPECT_EQ(CollationOf("Kel_Board"), kWanted);
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM Kel_Board"), "2");
}

// No such server can be had here.
TEST(CollationsOfOlderServers, StayAndAreNamed)
{
    scripted::Database database;
    database.engineName = "MariaDB 10.6";
    CAConnect conn;
    database.Connect(conn, 6);
    const auto shortcoming = schema::FindShortcoming(conn);
    ASSERT_TRUE(shortcoming);
    EXPECT_FALSE(shortcoming->isCuredByUpgrade);
    EXPECT_THAT(shortcoming->text, HasSubstr("MariaDB has one from version 10.10 on, MySQL from 8.0 on"));
    EXPECT_THAT(schema::mysql::TheDialect().steps.back().furtherStatements(conn), testing::IsEmpty());
}

TEST(CollationsOfMysql, AreItsOwn)
{
    scripted::Database database;
    database.engineName = "MySQL 8.0";
    CAConnect conn;
    database.Connect(conn, 6);
    database.Answer(scripted::Rows({{"utf8mb4_0900_as_ci"}}));
    database.Answer(scripted::Rows({{"utf8mb3_general_ci", "QV_GROUP"}}));
    EXPECT_THAT(schema::mysql::TheDialect().steps.back().furtherStatements(conn),
                ElementsAre("ALTER TABLE qv_Group CONVERT TO CHARACTER SET utf8mb4 COLLATE utf8mb4_0900_as_ci"));
}

} // namespace
