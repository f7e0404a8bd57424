#include "dbaccess/DateText.h"

#include <algorithm>
#include <chrono>

namespace dbaccess {

namespace {

bool IsReal(const Date& date)
{
    const std::chrono::year_month_day day{std::chrono::year{date.year},
                                          std::chrono::month(static_cast<unsigned>(date.month)),
                                          std::chrono::day(static_cast<unsigned>(date.day))};
    return date.year >= 1 && date.year <= 9999 && day.ok() && date.hour <= 23 && date.minute <= 59 && date.second <= 59;
}

// Cuts a number of one to maxDigits digits off the front. Written out, since long lists have a date in every row.
bool TakeNumber(std::string_view& text, std::size_t maxDigits, int& number)
{
    const std::size_t most = std::min(maxDigits, text.size());
    std::size_t digits = 0;
    int value = 0;
    while (digits < most && text[digits] >= '0' && text[digits] <= '9') {
        value = value * 10 + (text[digits] - '0');
        ++digits;
    }
    if (digits == 0) {
        return false;
    }
    number = value;
    text.remove_prefix(digits);
    return true;
}

bool TakeChar(std::string_view& text, std::string_view oneOf)
{
    if (text.empty() || oneOf.find(text.front()) == std::string_view::npos) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

} // namespace

std::optional<Date> ParseEngineDate(std::string_view text)
{
    Date date{};
    if (!TakeNumber(text, 4, date.year) || !TakeChar(text, "-") || !TakeNumber(text, 2, date.month) ||
        !TakeChar(text, "-") || !TakeNumber(text, 2, date.day)) {
        return std::nullopt;
    }
    if (TakeChar(text, " T")) {
        date.hasTime = true;
        if (!TakeNumber(text, 2, date.hour) || !TakeChar(text, ":") || !TakeNumber(text, 2, date.minute)) {
            return std::nullopt;
        }
        if (TakeChar(text, ":") && !TakeNumber(text, 2, date.second)) {
            return std::nullopt;
        }
        // A fraction or a zone may follow, but no further digit: "9:3:201" is no time.
        if (!text.empty() && text.find_first_not_of("0123456789") != 0) {
            return std::nullopt;
        }
    } else if (!text.empty()) {
        return std::nullopt;
    }
    return IsReal(date) ? std::optional(date) : std::nullopt;
}

std::optional<Date> ParseExactDate(std::string_view text)
{
    constexpr std::string_view shape = "dddd-dd-dd dd:dd:dd";
    if (text.size() != 10 && text.size() != shape.size()) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isDigit = text[i] >= '0' && text[i] <= '9';
        if (shape[i] == 'd' ? !isDigit : text[i] != shape[i]) {
            return std::nullopt;
        }
    }
    return ParseEngineDate(text);
}

CString DateText(const Date& date)
{
    CString text;
    text.Format("%04d-%02d-%02d %02d:%02d:%02d", date.year, date.month, date.day, date.hour, date.minute, date.second);
    return text;
}

CString QuotedDate(const Date& date) { return "'" + DateText(date) + "'"; }

} // namespace dbaccess
