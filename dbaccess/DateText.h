#pragma once

#include "dbaccess/Driver.h"

#include <optional>
#include <string_view>

namespace dbaccess {

/// A caller's date: exactly "YYYY-MM-DD" or "YYYY-MM-DD HH:MM:SS", and a real one.
std::optional<Date> ParseExactDate(std::string_view text);

/// A date as engines hand it out: parts may be unpadded ("2013-5-7 9:3:2"), "T" may precede the time, and
/// fractions of a second or a time zone after it are ignored. None for anything but a real date.
std::optional<Date> ParseEngineDate(std::string_view text);

/// "YYYY-MM-DD HH:MM:SS".
CString DateText(const Date& date);

/// "YYYY-MM-DD HH:MM:SS" in single quotes.
CString QuotedDate(const Date& date);

} // namespace dbaccess
