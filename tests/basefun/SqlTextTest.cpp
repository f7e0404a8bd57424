#include "basefun/SqlText.h"

#include "dbaccess/CAConnect.h"
#include "tests/platform/AnsiCodePageScope.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace {

TEST(FormatSql, LeavesATextWithoutPlaceholdersAsItIs)
{
    EXPECT_STREQ(FormatSql("SELECT COUNT(*) FROM qv_User"), "SELECT COUNT(*) FROM qv_User");
    EXPECT_STREQ(FormatSql(""), "");
}

TEST(FormatSql, PutsArgumentsInTheirOrder)
{
    const CString text = "b";
    EXPECT_STREQ(FormatSql("%s%d'%s' %d", "a", 1, text, -2), "a1'b' -2");
    EXPECT_STREQ(FormatSql("%d", 7), "7");
    EXPECT_STREQ(FormatSql("x %s", "y"), "x y");
    EXPECT_STREQ(FormatSql("%s x", "y"), "y x");
}

TEST(FormatSql, WritesNumbersAsSigned32Bits)
{
    EXPECT_STREQ(FormatSql("%d %d %d %d", INT_MIN, -1, 0, INT_MAX), "-2147483648 -1 0 2147483647");
    EXPECT_STREQ(FormatSql("%d %d", 0x80000000U, UINT_MAX), "-2147483648 -1");
    EXPECT_STREQ(FormatSql("%d %d %d", 5UL, 0x80000000UL, 0xFFFFFFFFUL), "5 -2147483648 -1");
}

TEST(FormatSql, CutsLongNumbersTo32Bits) { EXPECT_STREQ(FormatSql("%d %d", 0x100000007UL, ULONG_MAX), "7 -1"); }

TEST(FormatSql, WritesFlagsAsOneAndZero) { EXPECT_STREQ(FormatSql("%d,%d", true, false), "1,0"); }

TEST(FormatSql, CutsATextAtItsFirstNul)
{
    EXPECT_STREQ(FormatSql("'%s','%s'", CString("ab\0cd", 5), CString("\0x", 2)), "'ab',''");
    EXPECT_EQ(FormatSql("'%s'", CString("ab\0cd", 5)).GetLength(), 4);
    const std::string longText = std::string(40, 'x') + '\0' + "rest";
    EXPECT_EQ(FormatSql("'%s'", CString(longText)).View(), "'" + std::string(40, 'x') + "'");
}

TEST(FormatSql, TakesEmptyTexts) { EXPECT_STREQ(FormatSql("'%s'%s'%s'", CString(), "", ""), "''''"); }

TEST(FormatSql, DoesNotLookForPlaceholdersInArguments)
{
    EXPECT_STREQ(FormatSql("%s|%s|%d", "100%", "%s%d%n%%", 5), "100%|%s%d%n%%|5");
}

TEST(FormatSql, TakesTextsOfAnyLength)
{
    const std::string million(1000000, 'x');
    EXPECT_EQ(FormatSql("a'%s'b%dc'%s'", million.c_str(), INT_MIN, million.c_str()).View(),
              "a'" + million + "'b-2147483648c'" + million + "'");
}

TEST(DoubleQuotes, DoublesEveryQuoteAndNothingElse)
{
    EXPECT_STREQ(DoubleQuotes(""), "");
    EXPECT_STREQ(DoubleQuotes(R"(a\"b`)"), R"(a\"b`)");
    EXPECT_STREQ(DoubleQuotes("'"), "''");
    EXPECT_STREQ(DoubleQuotes("''"), "''''");
    EXPECT_STREQ(DoubleQuotes("O'Brien's"), "O''Brien''s");
}

TEST(DoubleSlashes, DoublesEveryBackslashOnKind6Only)
{
    CAConnect conn;
    for (const int kind : {-1, 0, 1, 2, 3, 4, 5, 7}) {
        conn.m_nDBType = kind;
        EXPECT_STREQ(DoubleSlashes(conn, R"(\a\\'b/)"), R"(\a\\'b/)") << kind;
    }
    conn.m_nDBType = 6;
    EXPECT_STREQ(DoubleSlashes(conn, R"(\a\\'b/)"), R"(\\a\\\\'b/)");
    EXPECT_STREQ(DoubleSlashes(conn, ""), "");
}

TEST(DoubleSlashes, LeavesABackslashByteAloneThatIsHalfACharacter)
{
    CAConnect conn;
    conn.m_nDBType = 6;
    const AnsiCodePageScope japanese(932);
    EXPECT_STREQ(DoubleSlashes(conn, "\x83\x5C"), "\x83\x5C");
    EXPECT_STREQ(DoubleSlashes(conn, "\x83\x5C\\\x83\x5C"), "\x83\x5C\\\\\x83\x5C");
    const AnsiCodePageScope chinese(936);
    EXPECT_STREQ(DoubleSlashes(conn, "\\\x81\x5C"), "\\\\\x81\x5C");
    // In a page of single bytes the same two bytes are two characters.
    const AnsiCodePageScope western(1252);
    EXPECT_STREQ(DoubleSlashes(conn, "\x83\x5C"), "\x83\x5C\x5C");
}

TEST(DoubleQuotes, LeavesDoubleByteCharactersWhole)
{
    const AnsiCodePageScope chinese(936);
    EXPECT_STREQ(DoubleQuotes("\x81\x5C'\xC4\xE3"), "\x81\x5C''\xC4\xE3");
}

} // namespace
