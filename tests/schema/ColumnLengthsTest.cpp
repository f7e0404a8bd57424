#include "schema/ColumnLengths.h"

#include "schema/Dialect.h"
#include "schema/Privileges.h"
#include "schema/Tables.h"
#include "testing/ScriptedDriver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using schema::ColumnLengths;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::string Repeated(const std::string& text, std::size_t times)
{
    std::string repeated;
    for (std::size_t i = 0; i < times; ++i) {
        repeated += text;
    }
    return repeated;
}

} // namespace

TEST(ColumnLengths, AreThoseThatTheEngineHas)
{
    scripted::Database database;
    CAConnect conn;
    database.engineName = "MariaDB 10.11";
    database.Connect(conn);
    database.Answer(scripted::Rows({{"Col_Note", "300"}, {"Col_ID", std::nullopt}, {"col_text", "16777215"}}));
    const ColumnLengths lengths(conn, "qv_User");
    EXPECT_THAT(database.queries, ElementsAre(HasSubstr("TABLE_NAME = 'qv_User'")));
    EXPECT_FALSE(lengths.ExcessOf("COL_NOTE", Repeated("\xC3\xA9", 300)));
    const auto excess = lengths.ExcessOf("col_note", Repeated("\xF0\x9F\x98\x80", 301));
    ASSERT_TRUE(excess);
    EXPECT_EQ(excess->length, 301U);
    EXPECT_EQ(excess->most, 300U);
    EXPECT_FALSE(lengths.ExcessOf("Col_ID", Repeated("x", 1000)));
    EXPECT_FALSE(lengths.ExcessOf("Col_Nothing", Repeated("x", 1000)));
}

TEST(ColumnLengths, CountUtf16WhereTheEngineDoes)
{
    scripted::Database database;
    CAConnect conn;
    database.engineName = "Microsoft SQL Server 16";
    database.Connect(conn);
    database.Answer(scripted::Rows({{"Col_Note", "4"}, {"Col_ECard", "-1"}}));
    const ColumnLengths lengths(conn, "qv_User");
    EXPECT_FALSE(lengths.ExcessOf("Col_Note", "\xF0\x9F\x98\x80\xC3\xA9x"));
    EXPECT_EQ(lengths.ExcessOf("Col_Note", "\xF0\x9F\x98\x80\xF0\x9F\x98\x80x")->length, 5U);
    EXPECT_FALSE(lengths.ExcessOf("Col_ECard", Repeated("x", 100000)));
}

TEST(ColumnLengths, AreThoseOfTheStepsWhereTheEngineDoesNotTell)
{
    scripted::Database database;
    CAConnect conn;
    database.engineName = "ACCESS";
    database.Connect(conn);
    const ColumnLengths lengths(conn, "qv_User");
    EXPECT_TRUE(database.queries.empty());
    EXPECT_FALSE(lengths.ExcessOf("Col_LoginName", std::string(128, 'x')));
    EXPECT_TRUE(lengths.ExcessOf("Col_LoginName", std::string(129, 'x')));
    EXPECT_FALSE(lengths.ExcessOf("Col_UserData", std::string(100000, 'x')));
}

TEST(Privileges, AreAskedForWithoutAWrite)
{
    for (const auto& [answer, expected] : {std::pair{"1", true}, std::pair{"0", false}}) {
        scripted::Database database;
        CAConnect conn;
        database.engineName = "MariaDB 10.11";
        database.Connect(conn);
        database.Answer(scripted::Rows({{answer}}));
        EXPECT_EQ(schema::MayWrite(conn), expected);
        EXPECT_TRUE(database.executions.empty());
    }
}
