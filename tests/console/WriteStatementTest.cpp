#include "management/audit/WriteStatement.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

using management::audit::IdsOf;
using management::audit::InsertHead;
using management::audit::ValueOfLiteral;
using management::audit::WriteStatement;
using testing::ElementsAre;
using testing::Optional;
using testing::Pair;

// Statements that write, taken apart.

namespace {

std::optional<WriteStatement> ParseWrite(std::string_view sql, bool backslashEscapes)
{
    static InsertHead head; // in which the names of what is returned lie
    head = {};
    return management::audit::ParseWrite(sql, backslashEscapes, head);
}

} // namespace

TEST(WriteStatement, AnInsertHasItsColumnsAndValues)
{
    const auto read = ParseWrite("INSERT INTO qv_User ( Col_LoginName,Col_Name, Col_Sex ) VALUES ('o''brien, (x',\n"
                                 "'WHERE' , -1) ",
                                 false);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->kind, WriteStatement::Kind::insert);
    EXPECT_TRUE(read->isWhole);
    EXPECT_EQ(read->table, "qv_User");
    EXPECT_THAT(read->assignments, ElementsAre(Pair("Col_LoginName", "'o''brien, (x'"), Pair("Col_Name", "'WHERE'"),
                                               Pair("Col_Sex", "-1")));
    EXPECT_EQ(read->condition, "");
}

TEST(WriteStatement, InsertsWithTheHeadOfTheOneBeforeAreReadLikeIt)
{
    InsertHead head;
    const auto parse = [&head](std::string_view sql) { return management::audit::ParseWrite(sql, false, head); };
    parse("INSERT INTO t (a, b) VALUES (1, 'x')");
    EXPECT_EQ(head.text, "INSERT INTO t (a, b) VALUES");
    const auto next = parse("INSERT INTO t (a, b) VALUES ('), (', 2)");
    EXPECT_EQ(next->table, "t");
    EXPECT_TRUE(next->isWhole);
    EXPECT_THAT(next->assignments, ElementsAre(Pair("a", "'), ('"), Pair("b", "2")));
    EXPECT_FALSE(parse("INSERT INTO t (a, b) VALUES (1)")->isWhole);
    EXPECT_FALSE(parse("INSERT INTO t (a, b) VALUESX (1, 2)")->isWhole);
    EXPECT_THAT(parse("INSERT INTO u (c) VALUES (3)")->assignments, ElementsAre(Pair("c", "3")));
    EXPECT_EQ(head.text, "INSERT INTO u (c) VALUES");
    EXPECT_EQ(parse("UPDATE t SET a = 1")->kind, WriteStatement::Kind::update);
}

TEST(WriteStatement, AnInsertMayHaveSeveralRows)
{
    InsertHead head;
    const char* sql = "INSERT INTO t (a, b) VALUES (1, '), (') , (2,'x'),(3, NULL)";
    for (int i = 0; i < 2; ++i) { // the second time with the head of the first
        const auto read = management::audit::ParseWrite(sql, false, head);
        ASSERT_TRUE(read);
        EXPECT_TRUE(read->isWhole);
        EXPECT_THAT(read->assignments, ElementsAre(Pair("a", "1"), Pair("b", "'), ('")));
        EXPECT_THAT(read->furtherRows, ElementsAre(ElementsAre(Pair("a", "2"), Pair("b", "'x'")),
                                                   ElementsAre(Pair("a", "3"), Pair("b", "NULL"))));
    }
}

TEST(WriteStatement, AnInsertMayTakeItsRowsFromAQuery)
{
    const auto read = ParseWrite("INSERT INTO t (a, b) SELECT c, 1 FROM u WHERE d IN (2, 3)", false);
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->isWhole);
    EXPECT_EQ(read->query, "SELECT c, 1 FROM u WHERE d IN (2, 3)");
    EXPECT_THAT(read->assignments, ElementsAre(Pair("a", ""), Pair("b", "")));
}

TEST(WriteStatement, AnUpdateEndsAtTheWhereOutsideOfLiteralsAndBrackets)
{
    const auto read =
        ParseWrite("UPDATE t Set a = 'x WHERE y', b=(SELECT 1 FROM u WHERE c = 2),c= c + 1 where d = ')'", false);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->kind, WriteStatement::Kind::update);
    EXPECT_TRUE(read->isWhole);
    EXPECT_THAT(read->assignments,
                ElementsAre(Pair("a", "'x WHERE y'"), Pair("b", "(SELECT 1 FROM u WHERE c = 2)"), Pair("c", "c + 1")));
    EXPECT_EQ(read->condition, "where d = ')'");
    EXPECT_EQ(ParseWrite("UPDATE qv_User SET Col_Picture = ''", false)->condition, "");
}

TEST(WriteStatement, ADeletionKeepsItsConditionAsItIs)
{
    const auto read = ParseWrite("DELETE FROM t WHERE a IN (SELECT 1) AND b = 'x'", false);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->kind, WriteStatement::Kind::remove);
    EXPECT_EQ(read->table, "t");
    EXPECT_EQ(read->condition, "WHERE a IN (SELECT 1) AND b = 'x'");
}

TEST(WriteStatement, ABackslashHidesAQuoteWhereTheEngineSaysSo)
{
    const char* sql = R"(UPDATE t SET a = 'x\' WHERE y', b = 2 WHERE c = 1)";
    EXPECT_EQ(ParseWrite(sql, true)->condition, "WHERE c = 1");
    EXPECT_EQ(ParseWrite(sql, true)->assignments.size(), 2U);
    EXPECT_EQ(ParseWrite(R"(UPDATE t SET a = 'x\' WHERE c = '1')", false)->condition, "WHERE c = '1'");
}

TEST(WriteStatement, WhatDoesNotWriteRowsIsNone)
{
    for (const char* sql : {"SELECT 1", "", "CREATE TABLE t (a)", "  ", "DROP TABLE t", "INSERTINTO t", "SET x = 1"}) {
        EXPECT_FALSE(ParseWrite(sql, false)) << sql;
    }
}

TEST(WriteStatement, WhatCannotBeReadIsSaidToBeSo)
{
    for (const char* sql :
         {"INSERT INTO t VALUES (1)", "INSERT INTO t (a, b) VALUES (1)", "INSERT INTO t (a) VALUES (1), (2, 3)",
          "INSERT INTO t (a, b) VALUES (1, 2), (3)", "INSERT INTO t (a) VALUES (1) (2)",
          "INSERT INTO t (a) VALUES (1),", "INSERT INTO t (a) VALUES (1, 2)", "INSERT INTO t (a) VALUES ( 1",
          "UPDATE t a = 1", "UPDATE t SET a"}) {
        const auto read = ParseWrite(sql, false);
        ASSERT_TRUE(read) << sql;
        EXPECT_FALSE(read->isWhole) << sql;
    }
}

TEST(WriteStatement, ConditionsOnIdsAreKnown)
{
    EXPECT_THAT(IdsOf("WHERE Col_ID = 5"), Optional(ElementsAre(5)));
    EXPECT_THAT(IdsOf("where col_id in ( 5,6 , 70 ) "), Optional(ElementsAre(5, 6, 70)));
    for (const char* condition :
         {"", "WHERE Col_ID", "WHERE Col_ID IN", "WHERE Col_ID = 5 OR Col_Name = 'x'", "WHERE Col_ID IN (5",
          "WHERE Col_ID IN (SELECT 5)", "WHERE Col_ID IN (5, 6) AND x", "WHERE Col_ID > 5", "WHERE Col_ID = 5x",
          "WHERE Col_ID = '5'", "WHERE NOT Col_ID = 5", "WHERE Col_IDs = 5", "WHERE Col_ID = 99999999999999999999"}) {
        EXPECT_EQ(IdsOf(condition), std::nullopt) << condition;
    }
}

TEST(WriteStatement, LiteralsHaveValues)
{
    EXPECT_EQ(ValueOfLiteral(" -17 ", false), "-17");
    EXPECT_EQ(ValueOfLiteral("'it''s'", false), "it's");
    EXPECT_EQ(ValueOfLiteral(R"('a\b')", false), R"(a\b)");
    EXPECT_EQ(ValueOfLiteral(R"('a\\b\'c')", true), R"(a\b'c)");
    EXPECT_EQ(ValueOfLiteral("''", true), "");
    for (const char* literal : {"NULL", "1 + 1", "'a' || 'b'", "-", "", "'", "x", R"('a\nb')"}) {
        EXPECT_EQ(ValueOfLiteral(literal, true), std::nullopt) << literal;
    }
}
