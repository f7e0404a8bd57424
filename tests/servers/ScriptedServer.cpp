#include "tests/servers/ScriptedServer.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <stdexcept>
#include <utility>

ScriptedServer::ScriptedServer(std::string greeting, std::vector<std::string> answers)
    : m_greeting(std::move(greeting)),
      m_answers(std::move(answers)),
      m_listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)),
      m_stop(::eventfd(0, EFD_CLOEXEC))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const bound = reinterpret_cast<sockaddr*>(&address);
    if (m_stop < 0 || ::bind(m_listener, bound, size) != 0 || ::listen(m_listener, 8) != 0 ||
        ::getsockname(m_listener, bound, &size) != 0) {
        throw std::runtime_error("cannot listen on a port of this machine");
    }
    m_port = std::to_string(ntohs(address.sin_port));
    m_thread = std::jthread([this] { Serve(); });
}

ScriptedServer::~ScriptedServer()
{
    Received();
    ::close(m_listener);
    ::close(m_stop);
}

const std::string& ScriptedServer::Received()
{
    if (m_thread.joinable()) {
        ::eventfd_write(m_stop, 1);
        m_thread.join();
    }
    return m_received;
}

bool ScriptedServer::WaitFor(int socket) const
{
    std::array<pollfd, 2> files = {{{socket, POLLIN, 0}, {m_stop, POLLIN, 0}}};
    ::poll(files.data(), files.size(), -1);
    return files[0].revents != 0;
}

void ScriptedServer::Serve()
{
    while (WaitFor(m_listener)) {
        const int client = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        ServeClient(client);
        ::close(client);
    }
}

void ScriptedServer::ServeClient(int client)
{
    ::send(client, m_greeting.data(), m_greeting.size(), MSG_NOSIGNAL);
    std::array<char, 4096> message{};
    for (std::size_t answered = 0; WaitFor(client); ++answered) {
        const ssize_t size = ::recv(client, message.data(), message.size(), 0);
        if (size <= 0) {
            return;
        }
        m_received.append(message.data(), static_cast<std::size_t>(size));
        if (answered < m_answers.size()) {
            ::send(client, m_answers[answered].data(), m_answers[answered].size(), MSG_NOSIGNAL);
        }
    }
}
