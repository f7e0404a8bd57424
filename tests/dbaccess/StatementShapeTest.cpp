#include "dbaccess/drivers/common/StatementShape.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

using dbaccess::CutLiteral;
using dbaccess::ShapeSyntax;
using dbaccess::StatementShape;

namespace {

constexpr ShapeSyntax kPlain{};
constexpr ShapeSyntax kTyped{true, false};
constexpr ShapeSyntax kBackslashes{false, true};
constexpr const char* kLeftAlone = "(left alone)";

std::string ShapeOf(const std::string& statement, ShapeSyntax syntax = kPlain)
{
    StatementShape shape(syntax);
    return shape.Cut(statement) ? shape.Text() : kLeftAlone;
}

/// The values, each in [brackets].
std::string ValuesOf(std::string statement, ShapeSyntax syntax = kPlain)
{
    StatementShape shape(syntax);
    EXPECT_TRUE(shape.Cut(statement)) << statement;
    std::string values;
    for (const CutLiteral& literal : shape.Literals()) {
        values += '[';
        values += literal.isText ? std::string(shape.UnescapeInPlace(statement.data(), literal))
                                 : std::to_string(literal.number);
        values += ']';
    }
    return values;
}

struct Case {
    const char* statement;
    const char* shape;
};

TEST(StatementShape, CutsLiteralsOutOfConditionsAssignmentsAndValues)
{
    const Case cases[] = {
        {"SELECT a FROM t WHERE b = 'x'", "SELECT a FROM t WHERE b = ?"},
        {"select a from t where t.b='x' and c<>7 or d >= -12", "select a from t where t.b=? and c<>? or d >= ?"},
        {"SELECT a FROM t WHERE ( (b = 'x') OR ( c != 9 AND d = 2 ) ) ORDER BY a",
         "SELECT a FROM t WHERE ( (b = ?) OR ( c != ? AND d = ? ) ) ORDER BY a"},
        {"SELECT a FROM t WHERE (SELECT COUNT(*) FROM u WHERE u.i = t.i AND u.k = 5) > 3",
         "SELECT a FROM t WHERE (SELECT COUNT(*) FROM u WHERE u.i = t.i AND u.k = ?) > ?"},
        {"SELECT a FROM t WHERE b IN (SELECT c FROM u WHERE d = 'y') AND e < 8",
         "SELECT a FROM t WHERE b IN (SELECT c FROM u WHERE d = ?) AND e < ?"},
        {"SELECT a FROM (SELECT b AS a FROM u WHERE c = 5) WHERE a <= 6",
         "SELECT a FROM (SELECT b AS a FROM u WHERE c = ?) WHERE a <= ?"},
        {"UPDATE t SET a = 1, b = 'x' WHERE c = 0 AND d = 17", "UPDATE t SET a = ?, b = ? WHERE c = 0 AND d = ?"},
        {"UPDATE t SET a = 0", "UPDATE t SET a = ?"},
        {"DELETE FROM t WHERE a = 'x' ; \n", "DELETE FROM t WHERE a = ? ; \n"},
        {" INSERT INTO t (a, b, c) VALUES ( 'x',0 , -5 )", " INSERT INTO t (a, b, c) VALUES ( ?,? , ? )"},
        {"INSERT INTO t VALUES (1, NULL, 'x')", "INSERT INTO t VALUES (?, NULL, ?)"},
        {"INSERT INTO t (a, b) VALUES (upper('x'), 'y');", "INSERT INTO t (a, b) VALUES (upper('x'), ?);"},
        {"SELECT a FROM t WHERE upper(b) = upper('x') AND c = 5",
         "SELECT a FROM t WHERE upper(b) = upper(?) AND c = ?"},
        {"SELECT a FROM t", "SELECT a FROM t"},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(ShapeOf(test.statement), test.shape);
    }
}

TEST(StatementShape, LeavesLiteralsWhereAPlaceholderCouldMeanSomethingElse)
{
    for (const char* statement : {
             "SELECT 'x', 5, b = 5 FROM t", // columns are named as they are written
             "SELECT (SELECT a FROM u WHERE b = 5), COUNT(*) FROM t",
             "SELECT (SELECT (SELECT a FROM u WHERE b = 5)) FROM t",
             "SELECT f(a = 'x') FROM t WHERE b",
             "SELECT a FROM t WHERE b = -1 OR b = 0 OR b = 1", // the planner looks at these
             "SELECT a FROM t WHERE b LIKE 'x' AND c IN (5, 'y') AND d BETWEEN 5 AND 7 AND 5 = e",
             "SELECT a FROM t WHERE f('x', 5)",
             "SELECT a FROM t WHERE b = 007 AND c = 1.5 AND d = 1e3 AND e = 0x10 AND f = 1234567890123456789",
             "SELECT a FROM t WHERE b = +5 AND c = - 5 AND d = -0 AND e = .5 AND f == 5 AND g <=> 5",
             "SELECT a FROM t WHERE b = lower('x') AND c = upper(5) AND upper('x') = d",
             "SELECT a FROM t ORDER BY b = 5",
             "SELECT a FROM t GROUP BY b HAVING c = 5 LIMIT 5",
             "SELECT a FROM t UNION SELECT a FROM u WHERE b = 5",
             "SELECT a FROM t EXCEPT SELECT a FROM u WHERE b = 5",
             "SELECT a FROM t INTERSECT SELECT a FROM u WHERE b = 5",
             "SELECT a FROM t JOIN u ON t.a = 5 WHERE t.b = 5",
             "SELECT a FROM t JOIN u USING (a) WHERE t.b = 5",
         }) {
        EXPECT_EQ(ShapeOf(statement), statement);
    }
}

TEST(StatementShape, LeavesAloneWhatItCannotBeSureOf)
{
    for (const char* statement : {
             "",
             " ",
             ";",
             "5",
             "'x'",
             "SET a = 5",
             "WITH a AS (SELECT 5) SELECT 5",
             "CREATE TABLE t (a)",
             "REPLACE INTO t VALUES (5)",
             "PRAGMA a = 5",
             "EXPLAIN SELECT a FROM t WHERE b = 5",
             "(SELECT a FROM t WHERE b = 5)",
             // signs that some engine reads in a way of its own
             "SELECT a FROM t WHERE b = ?",
             "SELECT a FROM t WHERE b = :x",
             "SELECT @a FROM t",
             "SELECT a FROM t WHERE b = $1",
             "SELECT a FROM t WHERE b = 5 # x",
             "SELECT \"a\" FROM t",
             "SELECT `a` FROM t",
             "SELECT [a] FROM t",
             "SELECT {a} FROM t",
             "SELECT a FROM t WHERE b = 5 \\",
             "SELECT a FROM t WHERE b & 5",
             "SELECT a FROM t WHERE b ^ 5",
             "SELECT ~a FROM t",
             "SELECT a FROM \xc3\xa9 WHERE b = 5",
             "SELECT a FROM t WHERE b = 5\x01",
             "SELECT a FROM t\v",
             // comments and more than one statement
             "SELECT a FROM t WHERE b = 5 -- x",
             "SELECT a FROM t WHERE b = /* x */ 5",
             "SELECT a FROM t; SELECT 5",
             "SELECT a FROM t;;",
             "SELECT a; FROM t",
             // texts that are not just texts
             "SELECT a FROM t WHERE b = x'00'",
             "SELECT a FROM t WHERE b = N'x'",
             "SELECT a FROM t WHERE b = _utf8'x'",
             "SELECT a FROM t WHERE b = 'x'y",
             "SELECT a FROM t WHERE b = 5'x'",
             "SELECT a FROM t WHERE b = 'x",
             // what follows goes on with the literal
             "SELECT a FROM t WHERE b = 5 + c",
             "SELECT a FROM t WHERE b = 'x' 'y'",
             "SELECT a FROM t WHERE b = 'x' || c",
             "SELECT a FROM t WHERE b = 'x' COLLATE c",
             "SELECT a FROM t WHERE b = 5 IS c",
             "SELECT a FROM t WHERE b = 5 = c",
             "SELECT a FROM t WHERE b = CASE WHEN c = 5 THEN 6 END",
             "SELECT a FROM t WHERE b = 5 FOR UPDATE",
             "SELECT a FROM t WHERE b = 5 -c",
             "UPDATE t SET a = 5 FROM u WHERE b = 6",
             "SELECT a FROM t WHERE b = 5 (c)",
             "SELECT a FROM t WHERE b = upper('x' || c)",
             "SELECT a FROM t WHERE b = upper('x') || c",
             "SELECT a FROM t WHERE b = upper('x', 5)",
             // rows, queries and conflicts of an INSERT, and results of a write
             "INSERT INTO t VALUES (5), (6)",
             "INSERT INTO t SELECT a FROM u WHERE b = 5",
             "INSERT INTO t (a) SELECT 5",
             "INSERT OR IGNORE INTO t VALUES (5)",
             "INSERT IGNORE INTO t VALUES (5)",
             "INSERT INTO t DEFAULT VALUES",
             "INSERT INTO t SET a = 5",
             "INSERT INTO t VALUES (5) ON CONFLICT DO NOTHING",
             "INSERT INTO t VALUES (5) RETURNING a",
             "INSERT INTO t (a) VALUES (5 + 6)",
             "INSERT INTO t (a) VALUES ('x' OR 5)",
             "INSERT INTO t (a(5)) VALUES (6)",
             "INSERT INTO t (a",
             "INSERT INTO t VALUES (5",
             "INSERT INTO t VALUES 5",
             "INSERT INTO t",
             "INSERT",
             "DELETE FROM t WHERE a = 5 RETURNING b",
             "UPDATE t SET a = 5 WHERE b = 6 returning a",
             // parentheses
             "SELECT a FROM t WHERE (b = 5",
             "SELECT a FROM t WHERE b = 5)",
             "SELECT a FROM t WHERE (b = 5))",
             // a compound that begins nowhere
             "SELECT a FROM t SELECT a FROM t WHERE b = 5",
         }) {
        EXPECT_EQ(ShapeOf(statement), kLeftAlone) << statement;
    }
    EXPECT_EQ(ShapeOf("SELECT a FROM t WHERE b = " + std::string(40, '(') + "5" + std::string(40, ')')), kLeftAlone);
    EXPECT_EQ(ShapeOf("SELECT a FROM t WHERE b = '" + std::string(70000, 'x') + "'"), kLeftAlone);
    EXPECT_EQ(ShapeOf(std::string("SELECT a FROM t WHERE b = 5\0", 28)), kLeftAlone);
}

TEST(StatementShape, TakesAnyByteInsideQuotes)
{
    EXPECT_EQ(ValuesOf("SELECT a FROM t WHERE b = ' ?:@$#\"`[]{}\\&^~--/*;\xc3\xa9\xff\n''x'''"),
              "[ ?:@$#\"`[]{}\\&^~--/*;\xc3\xa9\xff\n'x']"); // one text, with a bracket in it
    EXPECT_EQ(ValuesOf("SELECT a FROM t WHERE b = '' AND c = '''' AND d = 'x' AND e = 'AND f = 5'"),
              "[]['][x][AND f = 5]");
    EXPECT_EQ(ValuesOf("INSERT INTO t VALUES ('C:\\',-0,0,5,'b')"), "[C:\\][0][5][b]");
}

TEST(StatementShape, ReadsNumbersUpToEighteenDigits)
{
    EXPECT_EQ(ValuesOf("UPDATE t SET a = 0, b = -1, c = 999999999999999999, d = -999999999999999999"),
              "[0][-1][999999999999999999][-999999999999999999]");
}

TEST(StatementShape, NumbersPlaceholdersAndNamesTheTypesOfNumbers)
{
    EXPECT_EQ(
        ShapeOf("UPDATE t SET a = 'x', b = 5, c = -2147483647, d = 2147483647 WHERE e = 2147483648 OR f = -2147483648",
                kTyped),
        "UPDATE t SET a = $1, b = $2::int4, c = $3::int4, d = $4::int4 WHERE e = $5::int8 OR f = $6::int8");
    std::string statement = "INSERT INTO t VALUES ('a'";
    std::string shape = "INSERT INTO t VALUES ($1";
    for (int i = 2; i <= 12; ++i) {
        statement += ",'b'";
        shape += ",$" + std::to_string(i);
    }
    EXPECT_EQ(ShapeOf(statement + ")", kTyped), shape + ")");
}

TEST(StatementShape, ReadsBackslashesWhereTheyEscape)
{
    EXPECT_EQ(ValuesOf("UPDATE t SET a = 'C:\\\\', b = 'O\\'Neil', c = 'O''Neil', d = '\\\\\\''", kBackslashes),
              "[C:\\][O'Neil][O'Neil][\\']");
    for (const char* statement : {"UPDATE t SET a = 'x\\n'", "UPDATE t SET a = '100\\%'", "UPDATE t SET a = '\\\"'",
                                  "UPDATE t SET a = 'C:\\'", "DELETE FROM t WHERE a LIKE '\\_' AND b = 5"}) {
        EXPECT_EQ(ShapeOf(statement, kBackslashes), kLeftAlone) << statement;
    }
    EXPECT_EQ(ValuesOf("UPDATE t SET a = 'C:\\', b = 'x\\n'"), "[C:\\][x\\n]");
}

TEST(StatementShape, IsUsedAgainForTheNextText)
{
    StatementShape shape(kPlain);
    ASSERT_TRUE(shape.Cut("UPDATE t SET a = 'x', b = 5"));
    ASSERT_FALSE(shape.Cut("UPDATE t SET a = 5 + 6"));
    ASSERT_TRUE(shape.Cut("DELETE FROM t WHERE a = 7"));
    EXPECT_EQ(shape.Text(), "DELETE FROM t WHERE a = ?");
    ASSERT_EQ(shape.Literals().size(), 1U);
    EXPECT_EQ(shape.Literals()[0].number, 7);
}

/// All that a cut gives; what ran before must not show in it.
std::string CutBy(StatementShape& shape, const std::string& statement)
{
    if (!shape.Cut(statement)) {
        return kLeftAlone;
    }
    std::string cut = shape.Text();
    for (const CutLiteral& literal : shape.Literals()) {
        cut += " [" + std::to_string(literal.begin) + ' ' + std::to_string(literal.length) + ' ' +
               (literal.isText ? "text" : std::to_string(literal.number)) + (literal.hasEscapes ? " escapes]" : "]");
    }
    return cut;
}

TEST(StatementShape, IsTheSameAfterAStatementThatIsNearlyEqual)
{
    const std::vector<std::string> statements = {
        "SELECT a FROM t WHERE upper(b) = upper('x') AND c = 57 OR (d <> -12)",
        "UPDATE t SET a = 5, b = 'O''Neil', c = 2147483647 WHERE d = 0 AND e = 7",
        "INSERT INTO t (a, b, c) VALUES ('x', 7 , -5, '\\\\')",
        "SELECT a FROM t WHERE b = 8",
    };
    for (const ShapeSyntax syntax : {kPlain, kTyped, kBackslashes}) {
        StatementShape used(syntax);
        const auto expectSame = [&used, syntax](const std::string& before, const std::string& statement) {
            StatementShape fresh(syntax);
            used.Cut(before);
            ASSERT_EQ(CutBy(used, statement), CutBy(fresh, statement)) << before << "\n" << statement;
        };
        for (const std::string& before : statements) {
            for (const std::string& after : statements) {
                expectSame(before, after);
            }
            for (std::size_t at = 0; at <= before.size(); ++at) {
                expectSame(before, before.substr(0, at));
                for (const char byte : std::string_view("'\\-01359.ax (),;=?")) {
                    std::string changed = before;
                    changed.insert(at, 1, byte);
                    expectSame(before, changed);
                    expectSame(changed, before);
                    if (at < before.size()) {
                        changed.erase(at + 1, 1);
                        expectSame(before, changed);
                        expectSame(changed, before);
                    }
                }
            }
        }
    }
}

} // namespace
