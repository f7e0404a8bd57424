#pragma once

#include "web/HttpServer.h"

#include <cstdint>

// What the module that speaks HTTP and the program that loads it agree on.

namespace web {

/// A server that listens. It answers 503 in the end to what is still waiting, and ends all connections.
class HttpDaemon {
public:
    HttpDaemon() = default;
    HttpDaemon(const HttpDaemon&) = delete;
    HttpDaemon& operator=(const HttpDaemon&) = delete;
    virtual ~HttpDaemon() = default;

    [[nodiscard]] virtual std::uint16_t Port() const = 0;
};

/// Begins to listen; moves both out of their places. The caller owns what it returns. @throws as HttpServer.
using OpenHttpDaemonFunction = HttpDaemon*(HttpOptions* options, Handler* handler);

/// The module's name, and the one under which it exports its function of that type.
inline constexpr const char* kHttpModule = "http";
inline constexpr const char* kOpenHttpDaemonSymbol = "QvOpenHttpDaemon";

} // namespace web
