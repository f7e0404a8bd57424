#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

/// An answer as it came.
struct HttpAnswer {
    int status = 0; ///< 0: the connection ended without an answer
    std::string head;
    std::string body;

    /// The header of that name; empty where there is none.
    [[nodiscard]] std::string Header(std::string_view name) const;
};

/// A connection to a server on this machine, on which a test can send whatever it likes.
class HttpConnection {
public:
    explicit HttpConnection(std::uint16_t port);
    HttpConnection(const HttpConnection&) = delete;
    HttpConnection& operator=(const HttpConnection&) = delete;
    ~HttpConnection();

    /// @return false when the server has ended the connection.
    bool Send(std::string_view bytes);
    /// Reads one answer, for some seconds at most.
    HttpAnswer Read(bool hasBody = true);
    /// Whether the server ends the connection within a time; what it sends until then is dropped.
    bool IsEndedWithin(std::chrono::milliseconds time);

private:
    bool Fill(std::chrono::milliseconds time);

    int m_socket;
    std::string m_read;
    bool m_isEnded = false;
};

/// A browser without a page: keeps the cookie, and sends what it is told.
class HttpClient {
public:
    explicit HttpClient(std::uint16_t port) : m_port(port) {}

    HttpAnswer Get(const std::string& path) { return Ask("GET", path, ""); }
    HttpAnswer Post(const std::string& path, const std::string& json) { return Ask("POST", path, json); }
    HttpAnswer Ask(const std::string& method, const std::string& path, const std::string& body);

    std::map<std::string, std::string> headers; ///< sent beside the usual ones, or in their place
    std::string cookie;                         ///< NAME=VALUE, as the server has last set it
    std::string csrf;

private:
    std::uint16_t m_port;
};
