#include "dbaccess/drivers/common/NumberText.h"

#include <charconv>
#include <system_error>

#ifndef __cpp_lib_to_chars
#include <locale.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#endif

namespace dbaccess {

namespace {

template <class Number>
std::optional<Number> NumberIn(std::string_view text)
{
    Number number{};
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc() && read.ptr == end ? std::optional(number) : std::nullopt;
}

} // namespace

std::optional<std::int64_t> IntegerIn(std::string_view text) { return NumberIn<std::int64_t>(text); }

#ifdef __cpp_lib_to_chars

std::optional<double> RealIn(std::string_view text) { return NumberIn<double>(text); }

#else // LLVM's library reads whole numbers only.

std::optional<double> RealIn(std::string_view text)
{
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    // It would pass over blanks, and take a plus and hexadecimal digits.
    if (text.empty() || text.find_first_not_of("0123456789+-.eEinfatyINFATY") != std::string_view::npos ||
        text.front() == '+') {
        return std::nullopt;
    }
    const std::string terminated(text);
    char* end = nullptr;
    errno = 0;
    const double number = strtod_l(terminated.c_str(), &end, plain);
    return errno == 0 && end == terminated.c_str() + terminated.size() ? std::optional(number) : std::nullopt;
}

#endif

} // namespace dbaccess
