#pragma once

#include "web/Http.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace web {

/// What a client may take of a server. See docs/web.md.
struct HttpLimits {
    std::size_t head = 65536; ///< bytes of the request's line and headers
    std::size_t body = 1048576;
    unsigned connections = 256;
    unsigned connectionsOfOne = 64; ///< of one address
    std::chrono::seconds silence{15};
    std::chrono::seconds headTime{10}; ///< from the connection's begin, or the end of the last answer and the silence
    std::chrono::seconds bodyTime{60};
    std::chrono::seconds answerTime{60};
    std::size_t bodyPace = 4096; ///< bytes a second that a body has to come at, after the first two seconds
};

struct HttpOptions {
    std::string address = "127.0.0.1"; ///< of the machine, numeric
    std::uint16_t port = 0;            ///< 0: any free one
    std::string certificate = {};      ///< PEM texts; with both, the server speaks TLS 1.2 or later and nothing else
    std::string key = {};
    int socket = -1; ///< a listening one to use in place of address and port, and to close in the end; -1: none
    HttpLimits limits = {};
};

class HttpDaemon;

/// Listens, reads requests within the limits, hands them over and sends the answers. One thread of its own serves all
/// connections, another ends those that are too slow. What does so is a module, which is loaded for the first server,
/// so that a program without one starts without the libraries for HTTP and TLS.
class HttpServer {
public:
    /// Begins to listen. @throws management::Error (invalid) for an address that is not numeric, (failed) when the
    /// system does not let it listen there or the module cannot be loaded.
    HttpServer(HttpOptions options, Handler handler);
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    /// Answers 503 to what is still waiting for an answer, and ends all connections.
    ~HttpServer();

    [[nodiscard]] std::uint16_t Port() const;

private:
    std::unique_ptr<HttpDaemon> m_daemon;
};

} // namespace web
