#include "web/Origins.h"

#include "management/Errors.h"
#include "management/Text.h"
#include "web/SocketAddress.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

namespace web {

namespace {

std::string WithoutUsualPort(std::string authority, bool isSecure)
{
    const std::string_view port = isSecure ? ":443" : ":80";
    if (authority.ends_with(port)) {
        authority.resize(authority.size() - port.size());
    }
    return authority;
}

Origin ReadOrigin(const std::string& text)
{
    const bool isSecure = text.starts_with("https://");
    const std::string authority = isSecure ? text.substr(8) : text.starts_with("http://") ? text.substr(7) : "";
    if (authority.empty() || authority.find_first_of("/?#@ ") != std::string::npos) {
        throw management::Error(
            management::ErrorCode::invalid,
            management::FillPattern("{} is not an origin; write one such as https://admin.example.org",
                                    management::Quoted(text)));
    }
    return {isSecure, WithoutUsualPort(management::InSmallLetters(authority), isSecure)};
}

} // namespace

Origins::Origins(const std::string& address, std::uint16_t port, bool isSecure, const std::vector<std::string>& more)
{
    std::vector<std::string> hosts = {address};
    if (IsLoopback(address)) {
        hosts = {address, "localhost"};
    }
    for (const std::string& host : hosts) {
        const bool isSix = host.find(':') != std::string::npos;
        const std::string shown = isSix ? "[" + host + "]" : host;
        m_all.push_back(
            {isSecure, WithoutUsualPort(management::InSmallLetters(fmt::format("{}:{}", shown, port)), isSecure)});
    }
    std::ranges::transform(more, std::back_inserter(m_all), &ReadOrigin);
}

std::optional<Origin> Origins::Of(const Request& request) const
{
    const std::string host = management::InSmallLetters(request.Header("Host"));
    const auto found = std::ranges::find_if(
        m_all, [&host](const Origin& origin) { return origin.authority == WithoutUsualPort(host, origin.isSecure); });
    return found == m_all.end() ? std::nullopt : std::optional(*found);
}

bool IsSameOrigin(const Request& request, const Origin& origin)
{
    if (const std::string site = request.Header("Sec-Fetch-Site"); !site.empty()) {
        return site == "same-origin";
    }
    const std::string from = request.Header("Origin");
    return from.empty() || management::InSmallLetters(from) == origin.Text();
}

} // namespace web
