#include "dbaccess/DateText.h"

#include <gtest/gtest.h>

#include <string_view>

using dbaccess::Date;
using dbaccess::ParseEngineDate;
using dbaccess::ParseExactDate;

namespace {

void ExpectDate(const std::optional<Date>& date, int year, int month, int day, int hour, int minute, int second)
{
    ASSERT_TRUE(date.has_value());
    EXPECT_EQ(date->year, year);
    EXPECT_EQ(date->month, month);
    EXPECT_EQ(date->day, day);
    EXPECT_EQ(date->hour, hour);
    EXPECT_EQ(date->minute, minute);
    EXPECT_EQ(date->second, second);
}

TEST(ExactDate, IsADayWithOrWithoutATime)
{
    ExpectDate(ParseExactDate("2013-05-07"), 2013, 5, 7, 0, 0, 0);
    EXPECT_FALSE(ParseExactDate("2013-05-07")->hasTime);
    ExpectDate(ParseExactDate("2024-02-29 23:59:58"), 2024, 2, 29, 23, 59, 58);
    EXPECT_TRUE(ParseExactDate("2024-02-29 00:00:00")->hasTime);
}

TEST(ExactDate, RefusesEverythingElse)
{
    for (const std::string_view text : {"",
                                        "2013-5-7",
                                        "2013-05-07 ",
                                        "2013-05-07T09:03:02",
                                        "2013-05-07 09:03",
                                        "2013-05-07 9:03:02",
                                        "2023-02-29",
                                        "2023-02-30",
                                        "2023-13-01",
                                        "2023-00-10",
                                        "2023-01-00",
                                        "0000-01-01",
                                        "2023-01-01 24:00:00",
                                        "2023-01-01 00:60:00",
                                        "2023-01-01 00:00:60",
                                        "x2023-01-01",
                                        "2023-01-01'",
                                        "' OR 1=1 --",
                                        "2023-01-01 00:00:00.5",
                                        "+023-01-01",
                                        "2023--1-01",
                                        "today"}) {
        EXPECT_FALSE(ParseExactDate(text).has_value()) << text;
    }
    EXPECT_FALSE(ParseExactDate(std::string_view("2013-05-0\0", 10)).has_value());
}

TEST(EngineDate, TakesWhatEnginesHandOut)
{
    ExpectDate(ParseEngineDate("2013-05-07"), 2013, 5, 7, 0, 0, 0);
    ExpectDate(ParseEngineDate("2013-5-7 9:3:2"), 2013, 5, 7, 9, 3, 2);
    ExpectDate(ParseEngineDate("2013-05-07T09:03:02"), 2013, 5, 7, 9, 3, 2);
    ExpectDate(ParseEngineDate("2013-05-07 09:03"), 2013, 5, 7, 9, 3, 0);
    ExpectDate(ParseEngineDate("2013-05-07 09:03:02.123456+02"), 2013, 5, 7, 9, 3, 2);
}

TEST(EngineDate, GivesNothingForWhatIsNoDate)
{
    for (const std::string_view text : {"", "0000-00-00", "2013-05-07 9:3:201", "2013-05-07x", "2013-05", "12",
                                        "2013-02-30", "07.05.2013", "2013-05-07 :", "20130507", "2013-005-07"}) {
        EXPECT_FALSE(ParseEngineDate(text).has_value()) << text;
    }
}

} // namespace
