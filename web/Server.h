#pragma once

#include "web/HttpServer.h"
#include "web/Reader.h"
#include "web/Sessions.h"

#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace web {

struct ServerOptions {
    HttpOptions http = {};
    /// Where browsers find the server beside its own address, such as https://admin.example.org.
    std::vector<std::string> origins = {};
    /// The address of the one client that is served, a proxy, whose X-Forwarded-For and X-Forwarded-Proto count; empty:
    /// everybody is served, and these count for nothing.
    std::string proxy = {};
    /// Of the languages in which it speaks to people beside English, LANGUAGE/LC_MESSAGES/qvadmin.mo each; empty: none.
    std::filesystem::path catalogues = {};
    Sessions::Limits sessions = {};
    bool requiresTotp = false; ///< whether everybody has to have one-time codes, and can do nothing before
    /// Takes a line of JSON about each sign-in, failure and change; called on several threads, one at a time.
    std::function<void(const std::string&)> log = {};
    /// For how long sessions last, how much each may ask for, and the setup's token; called on several threads.
    std::function<Sessions::Clock::time_point()> clock = Sessions::Clock::now;
    std::function<std::time_t()> wallClock = [] { return std::time(nullptr); }; ///< for one-time codes
};

/// The web console of one directory. Three threads beside those of HTTP: one runs commands, one after the other; one
/// reads lists and trees from a snapshot of the directory; one waits for times.
class Server {
public:
    /// Opens the directory, and begins to listen. @param open  is called on several threads, each of which keeps a
    /// connection of its own; what it throws comes out here. @throws management::Error.
    Server(const OpenDirectory& open, ServerOptions options);
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    /// Lets a running command end, and answers 503 to what waits.
    ~Server();

    [[nodiscard]] std::uint16_t Port() const;
    /// Where to open it, such as http://127.0.0.1:8420.
    [[nodiscard]] std::string Url() const;
    /// The token by which the first password is given; empty when some super user has one.
    [[nodiscard]] const std::string& SetupToken() const;

private:
    class Site;
    std::unique_ptr<Site> m_site;
};

} // namespace web
