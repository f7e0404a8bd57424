#include "HttpClient.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>

namespace {

constexpr std::chrono::seconds kPatience{20};

std::string InSmallLetters(std::string_view text)
{
    std::string small(text);
    std::ranges::transform(small, small.begin(), [](unsigned char ch) { return static_cast<char>(std::tolower(ch)); });
    return small;
}

} // namespace

std::string HttpAnswer::Header(std::string_view name) const
{
    const std::string wanted = "\r\n" + InSmallLetters(name) + ": ";
    const std::size_t found = InSmallLetters(head).find(wanted);
    if (found == std::string::npos) {
        return {};
    }
    const std::size_t begin = found + wanted.size();
    return head.substr(begin, head.find("\r\n", begin) - begin);
}

HttpConnection::HttpConnection(std::uint16_t port) : m_socket(socket(AF_INET, SOCK_STREAM, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
}

HttpConnection::~HttpConnection() { close(m_socket); }

bool HttpConnection::Send(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t sent = send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

bool HttpConnection::Fill(std::chrono::milliseconds time)
{
    pollfd wait{m_socket, POLLIN, 0};
    if (m_isEnded || poll(&wait, 1, static_cast<int>(time.count())) <= 0) {
        return false;
    }
    std::array<char, 65536> buffer{};
    const ssize_t count = recv(m_socket, buffer.data(), buffer.size(), 0);
    m_isEnded = count <= 0;
    m_read.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return !m_isEnded;
}

HttpAnswer HttpConnection::Read(bool hasBody)
{
    HttpAnswer answer;
    std::size_t end = 0;
    while ((end = m_read.find("\r\n\r\n")) == std::string::npos) {
        if (!Fill(kPatience)) {
            return answer;
        }
    }
    answer.head = m_read.substr(0, end + 2);
    m_read.erase(0, end + 4);
    answer.status = std::stoi(answer.head.substr(answer.head.find(' ') + 1));
    const std::string length = answer.Header("Content-Length");
    const std::size_t wanted = hasBody && !length.empty() ? std::stoul(length) : 0;
    while (m_read.size() < wanted) {
        if (!Fill(kPatience)) {
            return {};
        }
    }
    answer.body = m_read.substr(0, wanted);
    m_read.erase(0, wanted);
    return answer;
}

bool HttpConnection::IsEndedWithin(std::chrono::milliseconds time)
{
    const auto end = std::chrono::steady_clock::now() + time;
    while (!m_isEnded && std::chrono::steady_clock::now() < end) {
        Fill(std::chrono::milliseconds(100));
    }
    return m_isEnded;
}

HttpAnswer HttpClient::Ask(const std::string& method, const std::string& path, const std::string& body)
{
    std::map<std::string, std::string> all = {{"Host", "127.0.0.1:" + std::to_string(m_port)}};
    if (!cookie.empty()) {
        all["Cookie"] = cookie;
    }
    if (method == "POST") {
        all["Content-Type"] = "application/json";
    }
    if (method != "GET") {
        all["Content-Length"] = std::to_string(body.size());
        all["X-CSRF-Token"] = csrf;
    }
    for (const auto& [name, value] : headers) {
        all[name] = value;
    }
    std::string head = method + " " + path + " HTTP/1.1\r\n";
    for (const auto& [name, value] : all) {
        head += name + ": " + value + "\r\n";
    }
    HttpConnection connection(m_port);
    connection.Send(head + "\r\n" + body);
    HttpAnswer answer = connection.Read(method != "HEAD");
    if (const std::string set = answer.Header("Set-Cookie"); !set.empty()) {
        cookie = set.substr(0, set.find(';'));
    }
    return answer;
}
