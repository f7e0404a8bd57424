#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// HTTP as this server needs it, whatever library speaks it.

namespace web {

using NamedValues = std::vector<std::pair<std::string, std::string>>;

/// A whole request. Bodies and heads over the limits, and those that can be read in two ways, never get this far.
struct Request {
    std::string method; ///< GET, HEAD, POST or DELETE
    std::string path;   ///< decoded, without the query
    NamedValues query;  ///< decoded, in their order
    NamedValues headers;
    std::string body;
    std::string address; ///< of the client, numeric

    /// The header of a name, case not counting; empty where there is none.
    [[nodiscard]] std::string Header(std::string_view name) const;
    /// The parameter of a name; empty where there is none.
    [[nodiscard]] std::string Parameter(std::string_view name) const;
    /// The cookie of a name; empty where there is none.
    [[nodiscard]] std::string Cookie(std::string_view name) const;
};

struct Response {
    int status = 200;
    std::string type;
    std::string body;
    NamedValues headers = {};
    std::string language = {}; ///< of what it has for people; empty: that of the request
};

/// Where the answer to one request goes. Copies stand for the same request; any thread may use them, also after the
/// client is gone.
class Responder {
public:
    /// What takes the answer.
    class Sink {
    public:
        Sink() = default;
        Sink(const Sink&) = delete;
        Sink& operator=(const Sink&) = delete;
        virtual ~Sink() = default;

        virtual void Take(Response response) = 0;
    };

    explicit Responder(std::shared_ptr<Sink> sink) : m_sink(std::move(sink)) {}

    /// Answers. Only the first answer to a request counts. When all copies go without one, the client gets 503.
    void Send(Response response) const { m_sink->Take(std::move(response)); }

private:
    std::shared_ptr<Sink> m_sink;
};

/// Is called on the server's one thread, and is to hand over what takes time.
using Handler = std::function<void(Request request, const Responder& responder)>;

} // namespace web
