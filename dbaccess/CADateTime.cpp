#include "dbaccess/CADateTime.h"

CADateTime::CADateTime() noexcept : CADateTime(1899, 12, 30, 0, 0, 0) {}

CADateTime::CADateTime(int year, int month, int day, int hour, int minute, int second) noexcept
    : m_year(year), m_month(month), m_day(day), m_hour(hour), m_minute(minute), m_second(second)
{
}

CADateTime::CADateTime(const CADateTime&) noexcept = default;
CADateTime::~CADateTime() = default;

COleDateTime CADateTime::GetOleDateTime() const noexcept
{
    return {m_year, m_month, m_day, m_hour, m_minute, m_second};
}
