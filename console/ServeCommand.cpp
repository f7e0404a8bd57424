#include "console/LocalCommand.h"
#include "console/Session.h"
#include "console/TextFile.h"
#include "console/Translation.h"
#include "management/Text.h"
#include "web/Server.h"
#include "web/SocketAddress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <charconv>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>

// The web console: a server on the directory, until somebody stops it.

namespace console {

namespace {

constexpr std::string_view kUsualAddress = "127.0.0.1:8420";

struct ServeInput {
    std::optional<std::string> listen;
    std::optional<std::string> certificate;
    std::optional<std::string> key;
    std::vector<std::string> origins;
    std::optional<std::string> proxy;
    std::optional<int> idleMinutes;
    std::optional<int> sessionHours;
    bool requiresTotp = false;

    void Check() const
    {
        if (certificate.has_value() != key.has_value()) {
            throw Error(ErrorCode::invalid, "--tls-cert and --tls-key are given together");
        }
    }
};

constexpr Param<ServeInput> kServeParams[] = {
    {"listen", &ServeInput::listen, Kind::text, "where to listen, as ADDRESS:PORT; else 127.0.0.1:8420"},
    {"tls_cert", &ServeInput::certificate, Kind::file, "certificate with its chain, in PEM"},
    {"tls_key", &ServeInput::key, Kind::file, "private key of the certificate, in PEM"},
    {"origin", &ServeInput::origins, Kind::text, "where browsers find it, such as https://admin.example.org"},
    {"behind_proxy", &ServeInput::proxy, Kind::text,
     "address of the proxy that alone is served, and whose X-Forwarded-For and -Proto count"},
    {"idle", &ServeInput::idleMinutes, Kind::number, "minutes after which an unused session ends; else 15",
     Range{1, 480}},
    {"session", &ServeInput::sessionHours, Kind::number, "hours after which any session ends; else 8", Range{1, 24}},
    {"require_totp", &ServeInput::requiresTotp, Kind::flag, "let nobody in without one-time codes of an app"},
};

/// SIGINT and SIGTERM, which are waited for and reach no other thread that begins meanwhile.
class EndSignals {
public:
    EndSignals()
    {
        sigemptyset(&m_set);
        sigaddset(&m_set, SIGINT);
        sigaddset(&m_set, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &m_set, &m_before);
    }
    EndSignals(const EndSignals&) = delete;
    EndSignals& operator=(const EndSignals&) = delete;
    ~EndSignals() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

    void Wait() const
    {
        int signal = 0;
        sigwait(&m_set, &signal);
    }

private:
    sigset_t m_set{};
    sigset_t m_before{};
};

/// Takes "127.0.0.1:8420" or "[::1]:8420" apart.
void ReadListen(const std::string& text, web::HttpOptions& http)
{
    const std::size_t colon = text.rfind(':');
    int port = -1;
    if (colon != std::string::npos) {
        const char* end = text.data() + text.size();
        const auto read = std::from_chars(text.data() + colon + 1, end, port);
        port = read.ec == std::errc() && read.ptr == end ? port : -1;
    }
    constexpr int greatest = 65535;
    if (port < 0 || port > greatest) {
        throw Error(ErrorCode::invalid, FillPattern("--listen {} is not an address with a port; write one such as {}",
                                                    Quoted(text), kUsualAddress));
    }
    http.address = text.substr(0, colon);
    if (http.address.starts_with('[') && http.address.ends_with(']')) {
        http.address = http.address.substr(1, http.address.size() - 2);
    }
    http.port = static_cast<std::uint16_t>(port);
}

/// The socket that systemd hands over to a service that it has a socket unit for; -1: none.
int SocketOfService()
{
    constexpr int firstSocket = 3;
    const char* pid = std::getenv("LISTEN_PID");
    const char* count = std::getenv("LISTEN_FDS");
    if (pid == nullptr || count == nullptr || pid != std::to_string(getpid())) {
        return -1;
    }
    if (std::string_view(count) != "1") {
        throw Error(ErrorCode::invalid, FillPattern("{} sockets were handed over, and one is served", count));
    }
    return firstSocket;
}

web::ServerOptions OptionsOf(const ServeInput& in)
{
    web::ServerOptions options;
    const int socket = in.listen ? -1 : SocketOfService();
    if (socket >= 0) {
        const web::SocketAddress found = web::AddressOf(socket);
        options.http.socket = socket;
        options.http.address = found.address;
        options.http.port = found.port;
    } else {
        ReadListen(in.listen.value_or(std::string(kUsualAddress)), options.http);
    }
    if (in.proxy) {
        options.proxy = web::NormalAddress(*in.proxy);
        options.http.limits.connectionsOfOne = options.http.limits.connections;
    }
    if (in.certificate) {
        options.http.certificate = ReadTextFile(*in.certificate);
        options.http.key = ReadTextFile(*in.key);
    } else if (!in.proxy && !web::IsLoopback(options.http.address)) {
        throw Error(ErrorCode::invalid,
                    FillPattern("{} can be reached from other machines, and passwords are sent to it; give --tls-cert "
                                "and --tls-key, or --behind-proxy with the address of a proxy that has them",
                                options.http.address));
    }
    options.origins = in.origins;
    options.requiresTotp = in.requiresTotp;
    if (in.idleMinutes) {
        options.sessions.idle = std::chrono::minutes(*in.idleMinutes);
    }
    if (in.sessionHours) {
        options.sessions.whole = std::chrono::hours(*in.sessionHours);
    }
    return options;
}

Exit Serve(const LocalCall& call)
{
    web::ServerOptions options = OptionsOf(binding::ReadInput<kServeParams>(call.given));
    std::mutex mutex;
    const auto say = [&](const std::string& line) {
        const std::lock_guard lock(mutex);
        call.terminal.err << line << '\n';
    };
    options.log = say;
    options.catalogues = CatalogueFolder();
    const auto open = [&call] {
        auto session = std::make_shared<Session>(call.arguments);
        return std::shared_ptr<CAConnect>(session, &session->Directory().Connection());
    };
    const EndSignals signals;
    const web::Server server(open, std::move(options));
    say(Translated(FillPattern("The web console is at {}/ ; Ctrl+C ends it.", server.Url())));
    if (!server.SetupToken().empty()) {
        say(Translated(
            FillPattern("No super user has a password yet. Within 15 minutes, open\n  {}/setup#{}\nto give the user "
                        "Admin one.",
                        server.Url(), server.SetupToken())));
    }
    signals.Wait();
    return Exit::done;
}

constexpr LocalCommand kServeCommands[] = {
    {{.path = {"serve"},
      .summary = "a web page for all that administrators do, until it is stopped",
      .examples = {"qvadmin serve", "qvadmin serve --listen 192.0.2.17:8420 --tls-cert chain.pem --tls-key key.pem "
                                    "--origin https://admin.example.org:8420"},
      .duration = Duration::longRunning,
      .handler = {&InfosOf<kServeParams>}},
     &Serve},
};

} // namespace

std::span<const LocalCommand> ServeCommands() { return kServeCommands; }

} // namespace console
