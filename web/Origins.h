#pragma once

#include "web/Http.h"

#include <optional>
#include <string>
#include <vector>

namespace web {

/// Where browsers find a server.
struct Origin {
    bool isSecure = false;
    std::string authority; ///< host, and port unless it is the usual one; in small letters

    /// Such as https://admin.example.org.
    [[nodiscard]] std::string Text() const { return (isSecure ? "https://" : "http://") + authority; }
};

/// The origins of a server: requests for another are an attempt to reach it by a name that is not its own.
class Origins {
public:
    /// @param address,port  where it listens. @param more  such as https://admin.example.org. @throws
    /// management::Error (invalid) for what is not an origin.
    Origins(const std::string& address, std::uint16_t port, bool isSecure, const std::vector<std::string>& more);

    /// The one that a request is for; nothing when it is for none of them.
    [[nodiscard]] std::optional<Origin> Of(const Request& request) const;
    /// The one to show.
    [[nodiscard]] const Origin& First() const { return m_all.front(); }

private:
    std::vector<Origin> m_all;
};

/// Whether a changing request comes from a page of the origin, as far as the browser says where it comes from.
bool IsSameOrigin(const Request& request, const Origin& origin);

} // namespace web
