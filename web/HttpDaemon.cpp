#include "web/HttpDaemon.h"

#include "management/Errors.h"
#include "platform/Api.h"
#include "web/SocketAddress.h"

#include <fmt/format.h>
#include <microhttpd.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <optional>
#include <set>
#include <thread>

namespace web {

namespace {

using management::Error;
using management::ErrorCode;
using Clock = std::chrono::steady_clock;

constexpr std::array<std::string_view, 4> kMethods = {"GET", "HEAD", "POST", "DELETE"};

/// A connection, as the watch over slow clients sees it.
struct Peer {
    int socket = -1;
    enum class State : std::uint8_t { head, body, waiting, answer } state = State::head;
    Clock::time_point since = Clock::now();
    bool isFirst = true; ///< no request has ended yet
    std::size_t received = 0;
};

/// A request on its way, and its answer. Lives until both the library and its handler have released it.
class Exchange {
public:
    explicit Exchange(MHD_Connection* connection) : m_connection(connection) {}

    Request request;

    void Answer(Response response)
    {
        const std::lock_guard lock(m_mutex);
        if (m_response || m_isOver) {
            return;
        }
        m_response = std::move(response);
        if (m_isSuspended) {
            m_isSuspended = false;
            MHD_resume_connection(m_connection);
        }
    }
    /// The answer, or nothing when it is not there yet: the connection sleeps until then.
    std::optional<Response> TakeOrSuspend()
    {
        const std::lock_guard lock(m_mutex);
        if (!m_response) {
            m_isSuspended = true;
            MHD_suspend_connection(m_connection);
        }
        return m_response;
    }
    /// After the library has let the connection go.
    void Close()
    {
        const std::lock_guard lock(m_mutex);
        m_isOver = true;
    }

private:
    std::mutex m_mutex;
    MHD_Connection* m_connection;
    std::optional<Response> m_response;
    bool m_isSuspended = false;
    bool m_isOver = false;
};

Response Unanswered() { return {503, "text/plain; charset=utf-8", "The server is ending.\n", {{"Retry-After", "5"}}}; }

class ExchangeSink final : public Responder::Sink {
public:
    explicit ExchangeSink(std::shared_ptr<Exchange> exchange) : m_exchange(std::move(exchange)) {}
    ExchangeSink(const ExchangeSink&) = delete;
    ExchangeSink& operator=(const ExchangeSink&) = delete;
    ~ExchangeSink() override { m_exchange->Answer(Unanswered()); }

    void Take(Response response) override { m_exchange->Answer(std::move(response)); }

private:
    std::shared_ptr<Exchange> m_exchange;
};

MHD_Result AddValue(void* values, MHD_ValueKind /*kind*/, const char* name, const char* value)
{
    static_cast<NamedValues*>(values)->emplace_back(name, value == nullptr ? "" : value);
    return MHD_YES;
}

NamedValues ValuesOf(MHD_Connection* connection, MHD_ValueKind kind)
{
    NamedValues values;
    MHD_get_connection_values(connection, kind, &AddValue, &values);
    return values;
}

std::size_t CountOf(const NamedValues& headers, std::string_view name)
{
    return static_cast<std::size_t>(std::ranges::count_if(headers, [name](const auto& header) {
        return header.first.size() == name.size() && strncasecmp(header.first.data(), name.data(), name.size()) == 0;
    }));
}

Response Refusal(int status, std::string_view sentence)
{
    // What follows such a head cannot be trusted to be where it seems to be.
    return {status, "text/plain; charset=utf-8", fmt::format("{}\n", sentence), {{"Connection", "close"}}};
}

/// Why a head is not taken, whatever it asks for.
std::optional<Response> RefusalOf(const Request& request, std::string_view version, const HttpLimits& limits)
{
    if (version != MHD_HTTP_VERSION_1_1) {
        return Refusal(505, "Only HTTP/1.1 is spoken here.");
    }
    if (std::ranges::find(kMethods, request.method) == kMethods.end()) {
        Response refusal = Refusal(405, "There are GET, HEAD, POST and DELETE.");
        refusal.headers.emplace_back("Allow", "GET, HEAD, POST, DELETE");
        return refusal;
    }
    const std::size_t lengths = CountOf(request.headers, "Content-Length");
    const std::size_t encodings = CountOf(request.headers, "Transfer-Encoding");
    if (CountOf(request.headers, "Host") != 1 || lengths + encodings > 1) {
        return Refusal(400, "The request can be read in more than one way.");
    }
    if (lengths == 1) {
        const std::string length = request.Header("Content-Length");
        std::size_t bytes = 0;
        const auto read = std::from_chars(length.data(), length.data() + length.size(), bytes);
        if (read.ec != std::errc() || read.ptr != length.data() + length.size()) {
            return Refusal(400, "The length of the body is not a number.");
        }
        if (bytes > limits.body) {
            return Refusal(413, "The body is too long.");
        }
    }
    return std::nullopt;
}

MHD_Result Queue(MHD_Connection* connection, const Response& response)
{
    MHD_Response* made = MHD_create_response_from_buffer(response.body.size(), const_cast<char*>(response.body.data()),
                                                         MHD_RESPMEM_MUST_COPY);
    if (made == nullptr) {
        return MHD_NO;
    }
    if (!response.type.empty()) {
        MHD_add_response_header(made, "Content-Type", response.type.c_str());
    }
    for (const auto& [name, value] : response.headers) {
        MHD_add_response_header(made, name.c_str(), value.c_str());
    }
    const MHD_Result result = MHD_queue_response(connection, static_cast<unsigned>(response.status), made);
    MHD_destroy_response(made);
    return result;
}

class Daemon final : public HttpDaemon {
public:
    Daemon(HttpOptions options, Handler handler) : m_options(std::move(options)), m_handler(std::move(handler))
    {
        Start();
        m_watch = std::thread([this] { Watch(); });
    }
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;
    ~Daemon() override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isEnding = true;
        }
        m_wakeUp.notify_all();
        m_watch.join();
        m_isClosed = true;
        AnswerAll();
        WaitForAnswers();
        MHD_stop_daemon(m_daemon);
    }

    [[nodiscard]] std::uint16_t Port() const override { return m_port; }

private:
    void Start()
    {
        InternetAddress address = ReadAddress(m_options.address, m_options.port);
        unsigned flags = MHD_USE_EPOLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME;
        flags |= address.isSix ? static_cast<unsigned>(MHD_USE_IPv6) : 0U;
        std::vector<MHD_OptionItem> items;
        const auto add = [&items](MHD_OPTION option, std::intptr_t value, const void* pointer) {
            items.push_back({option, value, const_cast<void*>(pointer)});
        };
        if (!m_options.certificate.empty()) {
            flags |= MHD_USE_TLS;
            add(MHD_OPTION_HTTPS_MEM_CERT, 0, m_options.certificate.c_str());
            add(MHD_OPTION_HTTPS_MEM_KEY, 0, m_options.key.c_str());
            add(MHD_OPTION_HTTPS_PRIORITIES, 0, "NORMAL:-VERS-ALL:+VERS-TLS1.3:+VERS-TLS1.2");
        }
        if (m_options.socket >= 0) {
            add(MHD_OPTION_LISTEN_SOCKET, m_options.socket, nullptr);
        } else {
            add(MHD_OPTION_SOCK_ADDR, 0, &address.storage);
        }
        add(MHD_OPTION_CONNECTION_MEMORY_LIMIT, static_cast<std::intptr_t>(m_options.limits.head), nullptr);
        add(MHD_OPTION_CONNECTION_LIMIT, m_options.limits.connections, nullptr);
        add(MHD_OPTION_PER_IP_CONNECTION_LIMIT, m_options.limits.connectionsOfOne, nullptr);
        add(MHD_OPTION_CONNECTION_TIMEOUT, m_options.limits.silence.count(), nullptr);
        add(MHD_OPTION_STRICT_FOR_CLIENT, 1, nullptr);
        add(MHD_OPTION_NOTIFY_COMPLETED, reinterpret_cast<std::intptr_t>(&Daemon::OnCompleted), this);
        add(MHD_OPTION_NOTIFY_CONNECTION, reinterpret_cast<std::intptr_t>(&Daemon::OnConnection), this);
        add(MHD_OPTION_END, 0, nullptr);
        m_daemon = MHD_start_daemon(flags, m_options.port, nullptr, nullptr, &Daemon::OnAccess, this, MHD_OPTION_ARRAY,
                                    items.data(), MHD_OPTION_END);
        if (m_daemon == nullptr) {
            throw Error(ErrorCode::failed,
                        fmt::format("cannot listen on {}, port {}: {}", m_options.address, m_options.port,
                                    errno == 0 ? "the certificate and its key are not taken" : std::strerror(errno)));
        }
        m_port =
            m_options.socket >= 0 ? m_options.port : MHD_get_daemon_info(m_daemon, MHD_DAEMON_INFO_BIND_PORT)->port;
    }

    // ---- What the library calls, on its thread ----------------------------------------------------------------------

    static void OnConnection(void* self, MHD_Connection* connection, void** context,
                             MHD_ConnectionNotificationCode code)
    {
        auto& daemon = *static_cast<Daemon*>(self);
        const std::lock_guard lock(daemon.m_mutex);
        if (code == MHD_CONNECTION_NOTIFY_STARTED) {
            auto* peer = new Peer;
            peer->socket = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
            daemon.m_peers.insert(peer);
            *context = peer;
        } else {
            auto* peer = static_cast<Peer*>(*context);
            daemon.m_peers.erase(peer);
            delete peer;
        }
    }

    static MHD_Result OnAccess(void* self, MHD_Connection* connection, const char* url, const char* method,
                               const char* version, const char* data, std::size_t* size, void** context)
    {
        return static_cast<Daemon*>(self)->Access(connection, url, method, version, data, *size, context);
    }

    static void OnCompleted(void* self, MHD_Connection* connection, void** context, MHD_RequestTerminationCode /*code*/)
    {
        auto* held = static_cast<std::shared_ptr<Exchange>*>(*context);
        if (held == nullptr) {
            return;
        }
        auto& daemon = *static_cast<Daemon*>(self);
        (*held)->Close();
        {
            const std::lock_guard lock(daemon.m_mutex);
            daemon.m_waiting.erase(*held);
        }
        daemon.m_answered.notify_all();
        daemon.Enter(connection, Peer::State::head);
        delete held;
        *context = nullptr;
    }

    MHD_Result Access(MHD_Connection* connection, const char* url, const char* method, std::string_view version,
                      const char* data, std::size_t& size, void** context)
    {
        if (*context == nullptr) {
            return Begin(connection, url, method, version, context);
        }
        const std::shared_ptr<Exchange> exchange = *static_cast<std::shared_ptr<Exchange>*>(*context);
        if (size != 0) {
            return TakeBody(connection, *exchange, data, size);
        }
        if (!Hold(exchange)) {
            // Woken up: the answer is there.
            return Finish(connection, *exchange);
        }
        Enter(connection, Peer::State::waiting);
        const Responder responder(std::make_shared<ExchangeSink>(exchange));
        if (m_isClosed) {
            responder.Send(Unanswered());
        } else {
            m_handler(std::move(exchange->request), responder);
        }
        return Finish(connection, *exchange);
    }

    MHD_Result Begin(MHD_Connection* connection, const char* url, const char* method, std::string_view version,
                     void** context)
    {
        auto exchange = std::make_shared<Exchange>(connection);
        Request& request = exchange->request;
        request.method = method;
        request.path = url;
        request.headers = ValuesOf(connection, MHD_HEADER_KIND);
        request.query = ValuesOf(connection, MHD_GET_ARGUMENT_KIND);
        request.address = TextOf(MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS)->client_addr);
        Enter(connection, Peer::State::body);
        const std::optional<Response> refusal = RefusalOf(request, version, m_options.limits);
        *context = new std::shared_ptr<Exchange>(std::move(exchange));
        return refusal ? Queue(connection, *refusal) : MHD_YES;
    }

    MHD_Result TakeBody(MHD_Connection* connection, Exchange& exchange, const char* data, std::size_t& size)
    {
        if (exchange.request.body.size() + size > m_options.limits.body) {
            return MHD_NO;
        }
        exchange.request.body.append(data, size);
        const std::lock_guard lock(m_mutex);
        PeerOf(connection).received += size;
        size = 0;
        return MHD_YES;
    }

    MHD_Result Finish(MHD_Connection* connection, Exchange& exchange)
    {
        const std::optional<Response> response = exchange.TakeOrSuspend();
        if (!response) {
            return MHD_YES;
        }
        Enter(connection, Peer::State::answer);
        return Queue(connection, *response);
    }

    /// Keeps a request that is handed over now. @return false when it was before.
    bool Hold(const std::shared_ptr<Exchange>& exchange)
    {
        const std::lock_guard lock(m_mutex);
        return m_waiting.insert(exchange).second;
    }

    static Peer& PeerOf(MHD_Connection* connection)
    {
        return *static_cast<Peer*>(
            MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT)->socket_context);
    }

    void Enter(MHD_Connection* connection, Peer::State state)
    {
        const std::lock_guard lock(m_mutex);
        Peer& peer = PeerOf(connection);
        peer.isFirst = peer.isFirst && peer.state != Peer::State::answer;
        peer.state = state;
        peer.since = Clock::now();
        peer.received = 0;
    }

    // ---- Slow clients -----------------------------------------------------------------------------------------------

    [[nodiscard]] bool IsTooSlow(const Peer& peer, Clock::time_point now) const
    {
        const HttpLimits& limits = m_options.limits;
        const auto taken = now - peer.since;
        if (peer.state == Peer::State::head) {
            return taken > limits.headTime + (peer.isFirst ? std::chrono::seconds(0) : limits.silence);
        }
        if (peer.state == Peer::State::waiting) {
            return false;
        }
        if (peer.state == Peer::State::answer) {
            return taken > limits.answerTime;
        }
        const double seconds = std::chrono::duration<double>(taken).count() - 2;
        return taken > limits.bodyTime ||
               (seconds > 0 && static_cast<double>(peer.received) < static_cast<double>(limits.bodyPace) * seconds);
    }

    void Watch()
    {
        std::unique_lock lock(m_mutex);
        while (!m_wakeUp.wait_for(lock, std::chrono::seconds(1), [this] { return m_isEnding; })) {
            const Clock::time_point now = Clock::now();
            for (const Peer* peer : m_peers) {
                if (IsTooSlow(*peer, now)) {
                    // The library sees the end of the connection and lets it go.
                    shutdown(peer->socket, SHUT_RDWR);
                }
            }
        }
    }

    void AnswerAll()
    {
        std::set<std::shared_ptr<Exchange>> waiting;
        {
            const std::lock_guard lock(m_mutex);
            waiting = m_waiting;
        }
        for (const std::shared_ptr<Exchange>& exchange : waiting) {
            exchange->Answer(Unanswered());
        }
    }

    /// Lets what has an answer get it, unless a client is slow.
    void WaitForAnswers()
    {
        std::unique_lock lock(m_mutex);
        m_answered.wait_for(lock, std::chrono::seconds(1), [this] { return m_waiting.empty(); });
    }

    HttpOptions m_options;
    Handler m_handler;
    MHD_Daemon* m_daemon = nullptr;
    std::uint16_t m_port = 0;
    std::atomic<bool> m_isClosed = false;
    std::mutex m_mutex; ///< of what follows, and of the peers
    std::condition_variable m_wakeUp;
    std::condition_variable m_answered; ///< a request is done
    bool m_isEnding = false;
    std::set<Peer*> m_peers;
    std::set<std::shared_ptr<Exchange>> m_waiting; ///< handed over, and not yet done
    std::thread m_watch;
};

} // namespace

} // namespace web

extern "C" QV_API web::HttpDaemon* QvOpenHttpDaemon(web::HttpOptions* options, web::Handler* handler);
extern "C" web::HttpDaemon* QvOpenHttpDaemon(web::HttpOptions* options, web::Handler* handler)
{
    return new web::Daemon(std::move(*options), std::move(*handler));
}
