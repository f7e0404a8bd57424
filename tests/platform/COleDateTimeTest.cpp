#include "platform/COleDateTime.h"

#include <gtest/gtest.h>

#include <ctime>
#include <limits>
#include <string>

namespace {

void ExpectParts(const COleDateTime& date, int year, int month, int day, int hour, int minute, int second)
{
    ASSERT_EQ(date.GetStatus(), COleDateTime::valid);
    EXPECT_EQ(date.GetYear(), year);
    EXPECT_EQ(date.GetMonth(), month);
    EXPECT_EQ(date.GetDay(), day);
    EXPECT_EQ(date.GetHour(), hour);
    EXPECT_EQ(date.GetMinute(), minute);
    EXPECT_EQ(date.GetSecond(), second);
}

double Days(const COleDateTime& date) { return static_cast<double>(date); }

TEST(COleDateTime, startsAtDayZero)
{
    const COleDateTime date;
    EXPECT_EQ(Days(date), 0);
    ExpectParts(date, 1899, 12, 30, 0, 0, 0);
}

TEST(COleDateTime, countsDays)
{
    EXPECT_EQ(Days(COleDateTime(1899, 12, 31, 0, 0, 0)), 1);
    EXPECT_EQ(Days(COleDateTime(1900, 1, 1, 12, 0, 0)), 2.5);
    EXPECT_EQ(Days(COleDateTime(1970, 1, 1, 0, 0, 0)), 25569);
    EXPECT_EQ(Days(COleDateTime(2000, 1, 1, 0, 0, 0)), 36526);
    EXPECT_EQ(Days(COleDateTime(100, 1, 1, 0, 0, 0)), -657434);
    EXPECT_EQ(Days(COleDateTime(9999, 12, 31, 0, 0, 0)), 2958465);
}

TEST(COleDateTime, beforeDayZeroTheFractionIsStillTheTimeOfDay)
{
    EXPECT_EQ(Days(COleDateTime(1899, 12, 29, 6, 0, 0)), -1.25);
    ExpectParts(COleDateTime(-1.25), 1899, 12, 29, 6, 0, 0);
    ExpectParts(COleDateTime(-1.75), 1899, 12, 29, 18, 0, 0);
    EXPECT_LT(COleDateTime(-1.25), COleDateTime(-1.75));
    EXPECT_LT(COleDateTime(-2.75), COleDateTime(-1.25));
    EXPECT_EQ(COleDateTime(-0.25), COleDateTime(0.25));
}

TEST(COleDateTime, givesBackEverySecondOfADayOnBothSidesOfDayZero)
{
    for (const int year : {1750, 2024}) {
        for (int second = 0; second < 86400; ++second) {
            const COleDateTime date(year, 2, 28, second / 3600, second % 3600 / 60, second % 60);
            ASSERT_EQ(date.GetDay(), 28);
            ASSERT_EQ(date.GetHour() * 3600 + date.GetMinute() * 60 + date.GetSecond(), second);
        }
    }
}

TEST(COleDateTime, roundsToTheNearestSecond)
{
    const double second = 1.0 / 86400;
    ExpectParts(COleDateTime(36526 + 0.4 * second), 2000, 1, 1, 0, 0, 0);
    ExpectParts(COleDateTime(36526 + 59.6 * second), 2000, 1, 1, 0, 1, 0);
    ExpectParts(COleDateTime(36527 - 0.4 * second), 2000, 1, 2, 0, 0, 0);
    ExpectParts(COleDateTime(-2 - (1 - 0.4 * second)), 1899, 12, 29, 0, 0, 0);
}

TEST(COleDateTime, refusesWhatIsNoDate)
{
    const int dates[][6] = {
        {99, 12, 31, 0, 0, 0},  {10000, 1, 1, 0, 0, 0}, {2023, 2, 29, 0, 0, 0},        {1900, 2, 29, 0, 0, 0},
        {2024, 0, 1, 0, 0, 0},  {2024, 13, 1, 0, 0, 0}, {2024, 1, 0, 0, 0, 0},         {2024, 4, 31, 0, 0, 0},
        {2024, -1, 1, 0, 0, 0}, {2024, 1, -1, 0, 0, 0}, {2024, 257, 1, 0, 0, 0},       {2024, 1, 257, 0, 0, 0},
        {2024, 1, 1, 24, 0, 0}, {2024, 1, 1, -1, 0, 0}, {2024, 1, 1, 0, 60, 0},        {2024, 1, 1, 0, 0, 60},
        {2024, 1, 1, 0, -1, 0}, {2024, 1, 1, 0, 0, -1}, {65536 + 2024, 1, 1, 0, 0, 0},
    };
    for (const auto& d : dates) {
        const COleDateTime date(d[0], d[1], d[2], d[3], d[4], d[5]);
        EXPECT_EQ(date.GetStatus(), COleDateTime::invalid) << d[0] << '-' << d[1] << '-' << d[2];
        EXPECT_EQ(date.GetYear(), -1);
    }
    EXPECT_EQ(COleDateTime(2024, 2, 29, 0, 0, 0).GetStatus(), COleDateTime::valid);
    EXPECT_EQ(COleDateTime(2000, 2, 29, 0, 0, 0).GetStatus(), COleDateTime::valid);
}

TEST(COleDateTime, refusesDayCountsOutsideTheCalendar)
{
    for (const double days : {-657435.0, 2958466.0, 2958465.9999999, 1e300, -1e300,
                              std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        COleDateTime date(days);
        EXPECT_EQ(date.GetStatus(), COleDateTime::invalid) << days;
        date.SetStatus(COleDateTime::valid);
        EXPECT_EQ(date.GetYear(), -1) << days;
        EXPECT_EQ(date.Format("%Y"), "Invalid DateTime") << days;
    }
    ExpectParts(COleDateTime(-657434.5), 100, 1, 1, 12, 0, 0);
    ExpectParts(COleDateTime(2958465.5), 9999, 12, 31, 12, 0, 0);
}

TEST(COleDateTime, hasNoPartsUnlessValid)
{
    COleDateTime date(2024, 5, 6, 7, 8, 9);
    date.SetStatus(COleDateTime::null);
    EXPECT_EQ(date.GetYear(), -1);
    EXPECT_EQ(date.GetMonth(), -1);
    EXPECT_EQ(date.GetDay(), -1);
    EXPECT_EQ(date.GetHour(), -1);
    EXPECT_EQ(date.GetMinute(), -1);
    EXPECT_EQ(date.GetSecond(), -1);
}

TEST(COleDateTime, knowsTheCurrentTime)
{
    for (int i = 0; i < 1000; ++i) {
        const std::time_t before = std::time(nullptr);
        const COleDateTime now = COleDateTime::GetCurrentTime();
        const std::time_t after = std::time(nullptr);
        ASSERT_EQ(now.GetStatus(), COleDateTime::valid);
        std::tm parts{};
        parts.tm_year = now.GetYear() - 1900;
        parts.tm_mon = now.GetMonth() - 1;
        parts.tm_mday = now.GetDay();
        parts.tm_hour = now.GetHour();
        parts.tm_min = now.GetMinute();
        parts.tm_sec = now.GetSecond();
        parts.tm_isdst = -1;
        const std::time_t told = std::mktime(&parts);
        ASSERT_GE(told, before);
        ASSERT_LE(told, after);
    }
}

TEST(COleDateTime, formats)
{
    const COleDateTime date(2024, 2, 29, 7, 8, 9);
    EXPECT_EQ(date.Format("%Y-%m-%d %H:%M:%S"), "2024-02-29 07:08:09");
    EXPECT_EQ(date.Format("%j %u"), "060 4");
    EXPECT_EQ(date.Format(""), "");
    EXPECT_EQ(date.Format("100%%"), "100%");
    EXPECT_EQ(COleDateTime(1750, 1, 1, 0, 0, 0).Format("%Y %j"), "1750 001");
}

TEST(COleDateTime, formatsAtAnyLength)
{
    const COleDateTime date(2024, 2, 29, 7, 8, 9);
    for (const std::size_t count : {255u, 256u, 1023u, 70'000u}) {
        const std::string padding(count, 'x');
        EXPECT_EQ(date.Format((padding + "%Y").c_str()), (padding + "2024").c_str());
    }
    EXPECT_EQ(date.Format("%99999999d"), "");
}

TEST(COleDateTime, formatsNoDateAsNothingAndAWrongOneAsSuch)
{
    COleDateTime date;
    date.SetStatus(COleDateTime::null);
    EXPECT_EQ(date.Format("%Y"), "");
    date.SetStatus(COleDateTime::invalid);
    EXPECT_EQ(date.Format("%Y"), "Invalid DateTime");
}

TEST(COleDateTime, comparesStatusAndTime)
{
    const COleDateTime date(2024, 2, 29, 7, 8, 9);
    COleDateTime other = date;
    EXPECT_EQ(date, other);
    other.SetStatus(COleDateTime::null);
    EXPECT_NE(date, other);
    EXPECT_NE(date, COleDateTime());
    EXPECT_GT(date, COleDateTime());
    EXPECT_LE(date, date);
}

} // namespace
