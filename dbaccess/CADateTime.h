#pragma once

#include "platform/Api.h"
#include "platform/COleDateTime.h"

/// Date and time read from a result column.
class QV_API CADateTime {
public:
    /// Midnight of 30 December 1899.
    CADateTime() noexcept;
    /// Takes the parts as they are; whether they are a real date is not checked.
    CADateTime(int year, int month, int day, int hour, int minute, int second) noexcept;
    /// A copy.
    CADateTime(const CADateTime&) noexcept;
    /// Replaces the parts by copies.
    CADateTime& operator=(const CADateTime&) noexcept = default;
    virtual ~CADateTime();

    /// The year, as it was given.
    [[nodiscard]] int GetYear() const noexcept { return m_year; }
    /// The month, from 1, as it was given.
    [[nodiscard]] int GetMonth() const noexcept { return m_month; }
    /// The day of the month, from 1, as it was given.
    [[nodiscard]] int GetDay() const noexcept { return m_day; }
    /// The hour, as it was given.
    [[nodiscard]] int GetHour() const noexcept { return m_hour; }
    /// The minute, as it was given.
    [[nodiscard]] int GetMinute() const noexcept { return m_minute; }
    /// The second, as it was given.
    [[nodiscard]] int GetSecond() const noexcept { return m_second; }

    /// The same moment as the framework's date; its status is invalid when the parts are no real date.
    [[nodiscard]] COleDateTime GetOleDateTime() const noexcept;

private:
    int m_year;
    int m_month;
    int m_day;
    int m_hour;
    int m_minute;
    int m_second;
};
