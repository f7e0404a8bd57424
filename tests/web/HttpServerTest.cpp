#include "web/HttpServer.h"

#include "HttpClient.h"
#include "management/Errors.h"
#include "web/SocketAddress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <optional>
#include <thread>

using namespace web;
using namespace std::chrono_literals;

namespace {

/// A server that answers with what it was asked, and limits that a test can wait for.
class HttpServerTest : public testing::Test {
protected:
    void Start(Handler handler = &Echo)
    {
        m_server = std::make_unique<HttpServer>(HttpOptions{.limits = m_limits}, std::move(handler));
    }

    static void Echo(Request request, const Responder& responder)
    {
        responder.Send({200, "text/plain",
                        request.method + " " + request.path + " " + request.Parameter("a") + " " + request.body});
    }

    HttpAnswer Sent(const std::string& bytes)
    {
        HttpConnection connection(m_server->Port());
        connection.Send(bytes);
        return connection.Read();
    }

    HttpLimits m_limits;
    std::unique_ptr<HttpServer> m_server;
};

TEST_F(HttpServerTest, AnswersSeveralRequestsOnOneConnection)
{
    Start();
    HttpConnection connection(m_server->Port());
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(connection.Send("POST /x%20y?a=%C3%A4&b HTTP/1.1\r\nHost: h\r\nContent-Length: 3\r\n\r\nabc"));
        const HttpAnswer answer = connection.Read();
        EXPECT_EQ(answer.status, 200);
        EXPECT_EQ(answer.body, "POST /x y ä abc");
    }
}

TEST_F(HttpServerTest, TakesAnAnswerFromAnotherThread)
{
    std::thread later;
    Start([&later](Request /*request*/, const Responder& responder) {
        later = std::thread([responder] {
            std::this_thread::sleep_for(50ms);
            responder.Send({201, "text/plain", "late"});
            responder.Send({200, "text/plain", "second"});
        });
    });
    const HttpAnswer answer = Sent("GET / HTTP/1.1\r\nHost: h\r\n\r\n");
    later.join();
    EXPECT_EQ(answer.status, 201);
    EXPECT_EQ(answer.body, "late");
}

TEST_F(HttpServerTest, AnswersWhatNobodyAnswers)
{
    Start([](Request /*request*/, const Responder& /*responder*/) {});
    EXPECT_EQ(Sent("GET / HTTP/1.1\r\nHost: h\r\n\r\n").status, 503);
}

TEST_F(HttpServerTest, EndsWhileARequestWaits)
{
    std::optional<Responder> kept;
    std::mutex mutex;
    Start([&](Request /*request*/, const Responder& responder) {
        const std::lock_guard lock(mutex);
        kept = responder;
    });
    HttpConnection connection(m_server->Port());
    connection.Send("GET / HTTP/1.1\r\nHost: h\r\n\r\n");
    for (bool isThere = false; !isThere;) {
        std::this_thread::sleep_for(5ms);
        const std::lock_guard lock(mutex);
        isThere = kept.has_value();
    }
    m_server.reset();
    kept->Send({200, "text/plain", "too late"});
    EXPECT_EQ(connection.Read().status, 503);
    EXPECT_TRUE(connection.IsEndedWithin(5s));
}

TEST_F(HttpServerTest, RefusesWhatCanBeReadInTwoWays)
{
    Start();
    const std::string begin = "POST / HTTP/1.1\r\nHost: h\r\n";
    EXPECT_EQ(Sent(begin + "Content-Length: 1\r\nContent-Length: 2\r\n\r\nab").status, 400);
    EXPECT_EQ(Sent(begin + "Content-Length: 1\r\nContent-Length: 1\r\n\r\na").status, 400);
    EXPECT_EQ(Sent(begin + "Content-Length: 5\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n").status, 400);
    EXPECT_EQ(Sent(begin + "content-length: 5\r\ntransfer-encoding: chunked\r\n\r\n0\r\n\r\n").status, 400);
    EXPECT_EQ(Sent(begin + "Host: other\r\nContent-Length: 0\r\n\r\n").status, 400);
    EXPECT_EQ(Sent("GET / HTTP/1.1\r\n\r\n").status, 400);
    EXPECT_NE(Sent("GET / HTTP/1.0\r\nHost: h\r\n\r\n").status, 200);
}

TEST_F(HttpServerTest, ConnectionsEndAfterWhatCanBeReadInTwoWays)
{
    Start();
    HttpConnection connection(m_server->Port());
    connection.Send("POST / HTTP/1.1\r\nHost: h\r\nContent-Length: 1\r\nContent-Length: 30\r\n\r\n"
                    "aGET /smuggled HTTP/1.1\r\nHost: h\r\n\r\n");
    EXPECT_EQ(connection.Read().status, 400);
    EXPECT_EQ(connection.Read().status, 0);
}

TEST_F(HttpServerTest, KnowsFourMethods)
{
    Start();
    for (const std::string method : {"GET", "POST", "DELETE"}) {
        EXPECT_EQ(Sent(method + " / HTTP/1.1\r\nHost: h\r\nContent-Length: 0\r\n\r\n").status, 200) << method;
    }
    for (const std::string method : {"TRACE", "PUT", "PATCH", "OPTIONS", "CONNECT", "get", "NONSENSE"}) {
        const HttpAnswer answer = Sent(method + " / HTTP/1.1\r\nHost: h\r\nContent-Length: 0\r\n\r\n");
        EXPECT_EQ(answer.status, 405) << method;
        EXPECT_EQ(answer.Header("Allow"), "GET, HEAD, POST, DELETE") << method;
    }
}

TEST_F(HttpServerTest, RefusesLongBodies)
{
    m_limits.body = 1000;
    Start();
    const std::string head = "POST / HTTP/1.1\r\nHost: h\r\nContent-Length: ";
    EXPECT_EQ(Sent(head + "1000\r\n\r\n" + std::string(1000, 'x')).status, 200);
    EXPECT_EQ(Sent(head + "1001\r\n\r\n").status, 413);
    EXPECT_EQ(Sent(head + "99999999999999999999999\r\n\r\n").status, 413);
    EXPECT_EQ(Sent(head + "1x\r\n\r\n").status, 400);
}

TEST_F(HttpServerTest, EndsEndlessBodies)
{
    m_limits.body = 100000;
    Start();
    HttpConnection connection(m_server->Port());
    connection.Send("POST / HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n");
    const std::string chunk = "4000\r\n" + std::string(0x4000, 'x') + "\r\n";
    bool isOpen = true;
    for (int i = 0; i < 2000 && isOpen; ++i) {
        isOpen = connection.Send(chunk);
    }
    EXPECT_FALSE(isOpen);
}

TEST_F(HttpServerTest, RefusesLongHeads)
{
    Start();
    HttpConnection connection(m_server->Port());
    connection.Send("GET / HTTP/1.1\r\nHost: h\r\n");
    bool isOpen = true;
    for (int i = 0; i < 2000 && isOpen; ++i) {
        isOpen = connection.Send("X-Long: " + std::string(1000, 'x') + "\r\n");
    }
    EXPECT_FALSE(isOpen);
}

TEST_F(HttpServerTest, RefusesManyHeaders)
{
    Start();
    HttpConnection connection(m_server->Port());
    connection.Send("GET / HTTP/1.1\r\nHost: h\r\n");
    bool isOpen = true;
    for (int i = 0; i < 200000 && isOpen; ++i) {
        isOpen = connection.Send("a:b\r\n");
    }
    EXPECT_FALSE(isOpen);
}

TEST_F(HttpServerTest, EndsChunksThatDrip)
{
    Start();
    HttpConnection connection(m_server->Port());
    connection.Send("POST / HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n");
    const auto begin = std::chrono::steady_clock::now();
    bool isEnded = false;
    while (!isEnded && std::chrono::steady_clock::now() - begin < 30s) {
        connection.Send("1\r\nx\r\n");
        isEnded = connection.IsEndedWithin(200ms);
    }
    EXPECT_TRUE(isEnded);
}

TEST_F(HttpServerTest, EndsBodiesThatTakeTooLong)
{
    // At the pace that is asked for, and without an end.
    m_limits.bodyTime = 2s;
    m_limits.body = std::size_t{1} << 30U;
    Start();
    HttpConnection connection(m_server->Port());
    connection.Send("POST / HTTP/1.1\r\nHost: h\r\nContent-Length: 1000000000\r\n\r\n");
    const auto begin = std::chrono::steady_clock::now();
    bool isEnded = false;
    while (!isEnded && std::chrono::steady_clock::now() - begin < 30s) {
        connection.Send(std::string(8192, 'x'));
        isEnded = connection.IsEndedWithin(200ms);
    }
    EXPECT_TRUE(isEnded);
}

TEST_F(HttpServerTest, HasSoManyConnections)
{
    m_limits.connections = 4;
    m_limits.silence = 60s;
    std::atomic<int> asked = 0;
    Start([&asked](Request request, const Responder& responder) {
        ++asked;
        Echo(std::move(request), responder);
    });
    std::vector<std::unique_ptr<HttpConnection>> open;
    for (int i = 0; i < 5; ++i) {
        open.push_back(std::make_unique<HttpConnection>(m_server->Port()));
        open.back()->Send("GET / HTTP/1.1\r\nHost: h\r\n\r\n");
        if (i < 4) {
            EXPECT_EQ(open.back()->Read().status, 200);
        }
    }
    // The fifth one waits until another one is gone.
    EXPECT_FALSE(open.back()->IsEndedWithin(500ms));
    EXPECT_EQ(asked, 4);
    open.erase(open.begin());
    for (int i = 0; i < 200 && asked == 4; ++i) {
        std::this_thread::sleep_for(50ms);
    }
    EXPECT_EQ(asked, 5);
}

TEST_F(HttpServerTest, EndsHeadsThatDrip)
{
    m_limits.headTime = 1s;
    Start();
    HttpConnection connection(m_server->Port());
    const auto begin = std::chrono::steady_clock::now();
    bool isEnded = false;
    while (!isEnded && std::chrono::steady_clock::now() - begin < 10s) {
        connection.Send("G");
        isEnded = connection.IsEndedWithin(200ms);
    }
    EXPECT_TRUE(isEnded);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 6s);
}

TEST_F(HttpServerTest, EndsBodiesThatDrip)
{
    Start();
    HttpConnection connection(m_server->Port());
    connection.Send("POST / HTTP/1.1\r\nHost: h\r\nContent-Length: 100000\r\n\r\n");
    const auto begin = std::chrono::steady_clock::now();
    bool isEnded = false;
    while (!isEnded && std::chrono::steady_clock::now() - begin < 10s) {
        connection.Send("x");
        isEnded = connection.IsEndedWithin(200ms);
    }
    EXPECT_TRUE(isEnded);
}

TEST_F(HttpServerTest, EndsSilentConnections)
{
    m_limits.silence = 1s;
    Start();
    HttpConnection connection(m_server->Port());
    EXPECT_TRUE(connection.IsEndedWithin(8s));
}

TEST_F(HttpServerTest, WaitsForAnAnswerAsLongAsItTakes)
{
    m_limits.silence = 1s;
    m_limits.headTime = 1s;
    m_limits.bodyTime = 1s;
    std::thread later;
    Start([&later](Request /*request*/, const Responder& responder) {
        later = std::thread([responder] {
            std::this_thread::sleep_for(3500ms);
            responder.Send({200, "text/plain", "late"});
        });
    });
    EXPECT_EQ(Sent("GET / HTTP/1.1\r\nHost: h\r\n\r\n").body, "late");
    later.join();
}

TEST_F(HttpServerTest, LetsOneAddressHaveSoManyConnections)
{
    m_limits.connectionsOfOne = 4;
    Start();
    std::vector<std::unique_ptr<HttpConnection>> open;
    for (int i = 0; i < 4; ++i) {
        open.push_back(std::make_unique<HttpConnection>(m_server->Port()));
        open.back()->Send("GET / HTTP/1.1\r\nHost: h\r\n\r\n");
        EXPECT_EQ(open.back()->Read().status, 200);
    }
    HttpConnection more(m_server->Port());
    more.Send("GET / HTTP/1.1\r\nHost: h\r\n\r\n");
    EXPECT_EQ(more.Read().status, 0);
}

TEST(AddressTest, HasOneForm)
{
    EXPECT_EQ(NormalAddress("::ffff:192.0.2.17"), "192.0.2.17");
    EXPECT_EQ(NormalAddress("2001:DB8::0:7"), "2001:db8::7");
    EXPECT_EQ(NormalAddress("127.0.0.1"), "127.0.0.1");
    EXPECT_THROW(NormalAddress("localhost"), management::Error);
}

TEST_F(HttpServerTest, SaysWhyItCannotListen)
{
    Start();
    const HttpOptions taken{.port = m_server->Port()};
    EXPECT_THROW(HttpServer(taken, &Echo), management::Error);
    EXPECT_THROW(HttpServer({.address = "localhost"}, &Echo), management::Error);
    EXPECT_TRUE(IsLoopback("127.3.2.1"));
    EXPECT_TRUE(IsLoopback("::1"));
    EXPECT_FALSE(IsLoopback("0.0.0.0"));
    EXPECT_FALSE(IsLoopback("192.0.2.17"));
}

} // namespace
