#pragma once

#include "platform/CString.h"

/// Date and time as a day count: days since 30 December 1899, the time of day as fraction. Local time, no time zone.
/// Before that day the whole part counts backwards and the fraction, without its sign, is still the time of day.
class QV_API COleDateTime {
public:
    /// Whether the value is a date, is not one, or is none at all.
    enum DateTimeStatus { valid = 0, invalid = 1, null = 2 };

    /// 30 December 1899, valid.
    COleDateTime() noexcept = default;
    /// Status invalid for a day outside the years 100 to 9999.
    explicit COleDateTime(double days) noexcept;
    /// Status invalid when this is no real date (years 100 to 9999) or time of day.
    COleDateTime(int year, int month, int day, int hour, int minute, int second) noexcept;
    /// The current local time, to the second.
    static COleDateTime GetCurrentTime() noexcept;

    /// The status; only a valid date has parts.
    [[nodiscard]] DateTimeStatus GetStatus() const noexcept { return m_status; }
    /// Sets the status; the day count stays.
    void SetStatus(DateTimeStatus status) noexcept { m_status = status; }
    /// The day count, whatever the status.
    explicit operator double() const noexcept { return m_dt; }

    /// The year, 100 to 9999, of the moment rounded to the second; -1 when the status is not valid.
    [[nodiscard]] int GetYear() const noexcept;
    /// The month, 1 to 12, of the moment rounded to the second; -1 when the status is not valid.
    [[nodiscard]] int GetMonth() const noexcept;
    /// The day of the month, 1 to 31, of the moment rounded to the second; -1 when the status is not valid.
    [[nodiscard]] int GetDay() const noexcept;
    /// The hour, 0 to 23, of the moment rounded to the second; -1 when the status is not valid.
    [[nodiscard]] int GetHour() const noexcept;
    /// The minute, 0 to 59, of the moment rounded to the second; -1 when the status is not valid.
    [[nodiscard]] int GetMinute() const noexcept;
    /// The second, 0 to 59, of the moment rounded to the second; -1 when the status is not valid.
    [[nodiscard]] int GetSecond() const noexcept;

    /// The date as text, by strftime's rules. The empty text when the status is null, "Invalid DateTime" when invalid.
    [[nodiscard]] CString Format(const char* format) const;

    // One operator each, for callers that are compiled as C++17.
    /// Equal when status and time are.
    friend QV_API bool operator==(const COleDateTime& a, const COleDateTime& b) noexcept;
    /// Whether the time is earlier, whatever the status.
    friend QV_API bool operator<(const COleDateTime& a, const COleDateTime& b) noexcept;
    /// Whether the time is not later, whatever the status.
    friend QV_API bool operator<=(const COleDateTime& a, const COleDateTime& b) noexcept;
    /// Different in status or time.
    friend bool operator!=(const COleDateTime& a, const COleDateTime& b) noexcept { return !(a == b); }
    /// Whether the time is later, whatever the status.
    friend bool operator>(const COleDateTime& a, const COleDateTime& b) noexcept { return b < a; }
    /// Whether the time is not earlier, whatever the status.
    friend bool operator>=(const COleDateTime& a, const COleDateTime& b) noexcept { return b <= a; }

private:
    double m_dt = 0;
    DateTimeStatus m_status = valid;
};
