#include "web/Http.h"

#include <algorithm>
#include <cctype>

namespace web {

namespace {

bool IsSameIgnoringCase(std::string_view a, std::string_view b)
{
    return std::ranges::equal(
        a, b, [](unsigned char one, unsigned char other) { return std::tolower(one) == std::tolower(other); });
}

} // namespace

std::string Request::Header(std::string_view name) const
{
    const auto found =
        std::ranges::find_if(headers, [name](const auto& header) { return IsSameIgnoringCase(header.first, name); });
    return found == headers.end() ? std::string() : found->second;
}

std::string Request::Parameter(std::string_view name) const
{
    const auto found = std::ranges::find(query, name, &NamedValues::value_type::first);
    return found == query.end() ? std::string() : found->second;
}

std::string Request::Cookie(std::string_view name) const
{
    const std::string all = Header("Cookie");
    std::string_view rest = all;
    while (!rest.empty()) {
        std::string_view one = rest.substr(0, rest.find(';'));
        rest.remove_prefix(std::min(rest.size(), one.size() + 1));
        one.remove_prefix(std::min(one.find_first_not_of(' '), one.size()));
        if (one.size() > name.size() && one.starts_with(name) && one[name.size()] == '=') {
            return std::string(one.substr(name.size() + 1));
        }
    }
    return {};
}

} // namespace web
