#include "dbaccess/drivers/common/NumberText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>

namespace {

using dbaccess::IntegerIn;
using dbaccess::RealIn;

TEST(NumberText, ReadsWholeNumbersOf64Bits)
{
    EXPECT_EQ(IntegerIn("0"), 0);
    EXPECT_EQ(IntegerIn("-17"), -17);
    EXPECT_EQ(IntegerIn("0042"), 42);
    EXPECT_EQ(IntegerIn("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(IntegerIn("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
}

TEST(NumberText, TakesNothingElseForAWholeNumber)
{
    for (const char* text : {"", " 1", "1 ", "+1", "1.0", "1e3", "0x10", "9223372036854775808", "one"}) {
        EXPECT_EQ(IntegerIn(text), std::nullopt) << text;
    }
}

TEST(NumberText, ReadsRealNumbers)
{
    EXPECT_EQ(RealIn("1.5"), 1.5);
    EXPECT_EQ(RealIn("-2e-3"), -0.002);
    EXPECT_EQ(RealIn("1.7976931348623157e+308"), std::numeric_limits<double>::max());
    EXPECT_EQ(RealIn("7"), 7.0);
}

TEST(NumberText, TakesNothingElseForARealNumber)
{
    for (const char* text : {"", " 1.5", "1.5 ", "+1.5", "1,5", "0x1p3", "1e999", "half"}) {
        EXPECT_EQ(RealIn(text), std::nullopt) << text;
    }
}

} // namespace
