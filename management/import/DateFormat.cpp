#include "management/import/DateFormat.h"

#include "management/Errors.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

namespace management {

namespace {

using Parts = std::map<char, int>; ///< by the letter that stands for them

/// How many letters stand for the part that a form begins with; 0 for another character.
std::size_t LengthOfPart(std::string_view form)
{
    return form.starts_with("YYYY") ? 4 : form.starts_with("DD") || form.starts_with("MM") ? 2 : 0;
}

/// Takes the digits of a part from a text, as many as it has letters at most. @return how many there were.
std::size_t TakeDigits(std::string_view& text, std::size_t most, int& number)
{
    std::size_t digits = 0;
    for (; digits < most && digits < text.size() && text[digits] >= '0' && text[digits] <= '9'; ++digits) {
        number = number * 10 + (text[digits] - '0');
    }
    text.remove_prefix(digits);
    return digits;
}

/// Nothing for a text of another form.
std::optional<Parts> PartsOf(std::string_view text, std::string_view form)
{
    Parts parts;
    while (!form.empty()) {
        const char ch = form.front();
        const std::size_t length = LengthOfPart(form);
        form.remove_prefix(std::max<std::size_t>(length, 1));
        if (length == 0 && !text.starts_with(ch)) {
            return std::nullopt;
        }
        if (length == 0) {
            text.remove_prefix(1);
            continue;
        }
        const std::size_t digits = TakeDigits(text, length, parts[ch]);
        if (length == 4 ? digits != 4 : digits == 0) {
            return std::nullopt;
        }
    }
    return text.empty() ? std::optional(parts) : std::nullopt;
}

} // namespace

DateFormat::DateFormat(std::string form) : m_form(std::move(form))
{
    const bool isWhole = std::ranges::all_of(std::array{"DD", "MM", "YYYY"}, [this](const char* part) {
        return m_form.find(part) != std::string::npos && m_form.find(part) == m_form.rfind(part);
    });
    if (!m_form.empty() && !isWhole) {
        throw Error(ErrorCode::invalid,
                    FillPattern("{} is not a form of dates; write DD, MM and YYYY, each once, such as DD.MM.YYYY",
                                Quoted(m_form)));
    }
}

std::string DateFormat::Converted(const Field& field, const std::string& text) const
{
    if (m_form.empty()) {
        return text;
    }
    std::optional<Parts> parts = PartsOf(text, m_form);
    const std::string date =
        parts ? fmt::format("{:04}-{:02}-{:02}", (*parts)['Y'], (*parts)['M'], (*parts)['D']) : std::string();
    if (!BeginsWithDate(date)) {
        throw Error(ErrorCode::invalid, FillPattern("{} {} is not a date ({})", field.name, Quoted(text), m_form));
    }
    return date;
}

} // namespace management
