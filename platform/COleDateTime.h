#pragma once

#include "platform/CString.h"

/// Date and time as a day count: days since 30 December 1899, the time of day as fraction. Local time, no time zone.
/// Before that day the whole part counts backwards and the fraction, without its sign, is still the time of day.
class QV_API COleDateTime {
public:
    enum DateTimeStatus { valid = 0, invalid = 1, null = 2 };

    /// 30 December 1899, valid.
    COleDateTime() noexcept = default;
    /// Status invalid for a day outside the years 100 to 9999.
    explicit COleDateTime(double days) noexcept;
    /// Status invalid when this is no real date (years 100 to 9999) or time of day.
    COleDateTime(int year, int month, int day, int hour, int minute, int second) noexcept;
    /// The current local time, to the second.
    static COleDateTime GetCurrentTime() noexcept;

    [[nodiscard]] DateTimeStatus GetStatus() const noexcept { return m_status; }
    void SetStatus(DateTimeStatus status) noexcept { m_status = status; }
    /// The day count.
    explicit operator double() const noexcept { return m_dt; }

    /// The parts, rounded to the second; -1 when the status is not valid.
    [[nodiscard]] int GetYear() const noexcept;
    [[nodiscard]] int GetMonth() const noexcept;
    [[nodiscard]] int GetDay() const noexcept;
    [[nodiscard]] int GetHour() const noexcept;
    [[nodiscard]] int GetMinute() const noexcept;
    [[nodiscard]] int GetSecond() const noexcept;

    /// The date as text, by strftime's rules. The empty text when the status is null, "Invalid DateTime" when invalid.
    [[nodiscard]] CString Format(const char* format) const;

    /// Two dates are equal when status and time are. Order is by time. One by one, for callers that are compiled as
    /// C++17.
    friend QV_API bool operator==(const COleDateTime& a, const COleDateTime& b) noexcept;
    friend QV_API bool operator<(const COleDateTime& a, const COleDateTime& b) noexcept;
    friend QV_API bool operator<=(const COleDateTime& a, const COleDateTime& b) noexcept;
    friend bool operator!=(const COleDateTime& a, const COleDateTime& b) noexcept { return !(a == b); }
    friend bool operator>(const COleDateTime& a, const COleDateTime& b) noexcept { return b < a; }
    friend bool operator>=(const COleDateTime& a, const COleDateTime& b) noexcept { return b <= a; }

private:
    double m_dt = 0;
    DateTimeStatus m_status = valid;
};
