#include "platform/COleDateTime.h"

#include <array>
#include <chrono>
#include <cmath>
#include <ctime>
#include <optional>
#include <string>

namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr int kFirstYear = 100;
constexpr int kLastYear = 9999;
constexpr double kSecondsPerDay = 86400;
constexpr std::size_t kLongestFormatted = std::size_t{1} << 20;

constexpr sys_days DayOf(int year, unsigned month, unsigned day)
{
    return sys_days(std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day));
}

constexpr sys_days kDayZero = DayOf(1899, 12, 30);
constexpr double kFirstDay = static_cast<double>((DayOf(kFirstYear, 1, 1) - kDayZero).count());
constexpr double kLastDay = static_cast<double>((DayOf(kLastYear, 12, 31) - kDayZero).count());

// The day count with time running forward on negative days too, so that it can be compared.
double Timeline(double dayCount)
{
    const double day = std::trunc(dayCount);
    return day + std::fabs(dayCount - day);
}

bool IsTimeOfDay(int hour, int minute, int second)
{
    return hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second < 60;
}

std::optional<double> DayCount(int year, int month, int day, int hour, int minute, int second)
{
    if (year < kFirstYear || year > kLastYear || month < 1 || day < 1 || !IsTimeOfDay(hour, minute, second)) {
        return std::nullopt;
    }
    const year_month_day date(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                              std::chrono::day(static_cast<unsigned>(day)));
    if (month > 12 || day > 31 || !date.ok()) {
        return std::nullopt;
    }
    const auto whole = static_cast<double>((sys_days(date) - kDayZero).count());
    const double time = (hour * 3600 + minute * 60 + second) / kSecondsPerDay;
    return whole < 0 ? whole - time : whole + time;
}

// Nothing for a day count that is outside the calendar once it is rounded to the second.
std::optional<std::tm> Split(double dayCount)
{
    if (!(dayCount > kFirstDay - 1 && dayCount < kLastDay + 1)) {
        return std::nullopt;
    }
    const double whole = std::trunc(dayCount);
    const auto seconds = static_cast<int>(std::lround(std::fabs(dayCount - whole) * kSecondsPerDay));
    const sys_days day = kDayZero + days(static_cast<int>(whole) + seconds / 86400);
    const year_month_day date(day);
    if (static_cast<int>(date.year()) > kLastYear) {
        return std::nullopt;
    }
    std::tm parts{};
    parts.tm_year = static_cast<int>(date.year()) - 1900;
    parts.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
    parts.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
    parts.tm_hour = seconds % 86400 / 3600;
    parts.tm_min = seconds % 3600 / 60;
    parts.tm_sec = seconds % 60;
    parts.tm_wday = static_cast<int>(std::chrono::weekday(day).c_encoding());
    parts.tm_yday = static_cast<int>((day - sys_days(date.year() / 1 / 1)).count());
    parts.tm_isdst = -1;
    return parts;
}

int Part(const COleDateTime& date, int std::tm::* part, int base)
{
    const auto parts = date.GetStatus() == COleDateTime::valid ? Split(static_cast<double>(date)) : std::nullopt;
    return parts ? (*parts).*part + base : -1;
}

COleDateTime LocalTime(std::time_t now)
{
    std::tm parts{};
    if (localtime_r(&now, &parts) == nullptr) {
        COleDateTime unknown;
        unknown.SetStatus(COleDateTime::invalid);
        return unknown;
    }
    // A leap second has no place in a day count.
    const int second = parts.tm_sec < 60 ? parts.tm_sec : 59;
    return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, second};
}

} // namespace

COleDateTime::COleDateTime(double days) noexcept : m_dt(days), m_status(Split(days) ? valid : invalid) {}

COleDateTime::COleDateTime(int year, int month, int day, int hour, int minute, int second) noexcept
{
    const auto count = DayCount(year, month, day, hour, minute, second);
    m_dt = count.value_or(0);
    m_status = count ? valid : invalid;
}

// Every record asks for it, so the calendar is consulted once a second only.
COleDateTime COleDateTime::GetCurrentTime() noexcept
{
    struct Cached {
        std::time_t second = -1;
        COleDateTime value;
    };
    thread_local Cached cached;
    const std::time_t now = std::time(nullptr);
    if (now != cached.second) {
        cached.value = LocalTime(now);
        cached.second = now;
    }
    return cached.value;
}

int COleDateTime::GetYear() const noexcept { return Part(*this, &std::tm::tm_year, 1900); }

int COleDateTime::GetMonth() const noexcept { return Part(*this, &std::tm::tm_mon, 1); }

int COleDateTime::GetDay() const noexcept { return Part(*this, &std::tm::tm_mday, 0); }

int COleDateTime::GetHour() const noexcept { return Part(*this, &std::tm::tm_hour, 0); }

int COleDateTime::GetMinute() const noexcept { return Part(*this, &std::tm::tm_min, 0); }

int COleDateTime::GetSecond() const noexcept { return Part(*this, &std::tm::tm_sec, 0); }

CString COleDateTime::Format(const char* format) const
{
    if (m_status == null) {
        return {};
    }
    const auto parts = m_status == valid ? Split(m_dt) : std::nullopt;
    if (!parts) {
        return "Invalid DateTime";
    }
    // strftime's 0 means "too little room" as well as "nothing to write"; the added blank rules out the second.
    CString withBlank(format);
    withBlank += ' ';
    std::string text(256, '\0');
    std::size_t length = std::strftime(text.data(), text.size(), withBlank, &*parts);
    while (length == 0 && text.size() < kLongestFormatted) {
        text.resize(text.size() * 4);
        length = std::strftime(text.data(), text.size(), withBlank, &*parts);
    }
    return length == 0 ? CString() : CString(text.data(), length - 1);
}

bool operator==(const COleDateTime& a, const COleDateTime& b) noexcept
{
    return a.m_status == b.m_status && Timeline(a.m_dt) == Timeline(b.m_dt);
}

bool operator<(const COleDateTime& a, const COleDateTime& b) noexcept { return Timeline(a.m_dt) < Timeline(b.m_dt); }

bool operator<=(const COleDateTime& a, const COleDateTime& b) noexcept { return Timeline(a.m_dt) <= Timeline(b.m_dt); }
