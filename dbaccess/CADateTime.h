#pragma once

#include "platform/Api.h"
#include "platform/COleDateTime.h"

/// Date and time read from a result column.
class QV_API CADateTime {
public:
    /// Midnight of 30 December 1899.
    CADateTime() noexcept;
    CADateTime(int year, int month, int day, int hour, int minute, int second) noexcept;
    CADateTime(const CADateTime&) noexcept;
    CADateTime& operator=(const CADateTime&) noexcept = default;
    virtual ~CADateTime();

    [[nodiscard]] int GetYear() const noexcept { return m_year; }
    [[nodiscard]] int GetMonth() const noexcept { return m_month; }
    [[nodiscard]] int GetDay() const noexcept { return m_day; }
    [[nodiscard]] int GetHour() const noexcept { return m_hour; }
    [[nodiscard]] int GetMinute() const noexcept { return m_minute; }
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
