#include "dbaccess/CAException.h"

#include <gtest/gtest.h>

namespace {

TEST(CAExceptionText, NamesFileLineMessageCodeAndStatement)
{
    const CAException e("no such table: t", "SQLite 1");
    EXPECT_STREQ(e.GetErrorEx("directory/QVBaseFun_Users.cpp", 42, "SELECT 'it''s' FROM t"),
                 "directory/QVBaseFun_Users.cpp(42): no such table: t [SQLite 1]: SELECT 'it''s' FROM t");
}

TEST(CAExceptionText, StaysOnOneLine)
{
    const CAException e("first\r\nsecond\n\n\tthird", "X\n1");
    EXPECT_STREQ(e.GetErrorEx("f", 1, "SELECT\n\t1"), "f(1): first second third [X 1]: SELECT 1");
}

TEST(CAExceptionText, LeavesOutWhatThereIsNot)
{
    EXPECT_STREQ(CAException("refused").GetErrorEx(nullptr, 7, nullptr), "(7): refused");
    EXPECT_STREQ(CAException("refused").GetErrorEx("f", 7, ""), "f(7): refused");
}

TEST(CAExceptionText, IsCopiedWithTheException)
{
    const CAException original("message", "code");
    const CAException copy(original); // NOLINT: callers catch by value, which copies
    EXPECT_STREQ(copy.GetErrorText(), "message");
    EXPECT_STREQ(copy.GetErrorCode(), "code");
    EXPECT_STREQ(original.GetErrorText(), "message");
}

} // namespace
