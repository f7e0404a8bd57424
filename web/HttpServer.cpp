#include "web/HttpServer.h"

#include "management/ProgramModule.h"
#include "web/HttpDaemon.h"

#include <utility>

namespace web {

namespace {

std::unique_ptr<HttpDaemon> OpenDaemon(HttpOptions options, Handler handler)
{
    auto* open =
        reinterpret_cast<OpenHttpDaemonFunction*>(management::LoadFromModule(kHttpModule, kOpenHttpDaemonSymbol));
    return std::unique_ptr<HttpDaemon>(open(&options, &handler));
}

} // namespace

HttpServer::HttpServer(HttpOptions options, Handler handler)
    : m_daemon(OpenDaemon(std::move(options), std::move(handler)))
{
}

HttpServer::~HttpServer() = default;

std::uint16_t HttpServer::Port() const { return m_daemon->Port(); }

} // namespace web
