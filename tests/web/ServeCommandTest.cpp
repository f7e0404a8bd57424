#include "HttpClient.h"
#include "tests/console/ChildProcess.h"
#include "tests/console/ConsoleFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

using testing::HasSubstr;

namespace {

class ServeCommandTest : public ConsoleFixture {};

TEST_F(ServeCommandTest, PasswordsGoNowhereInClearText)
{
    Init();
    for (const std::string address : {"0.0.0.0:0", "192.0.2.17:8420", "[::]:0"}) {
        const ChildResult result = Run({"serve", "--listen", address});
        EXPECT_EQ(result.exit, 2) << address;
        EXPECT_THAT(result.err, HasSubstr("--tls-cert"));
    }
}

TEST_F(ServeCommandTest, OptionsThatCannotBeAreRefused)
{
    Init();
    const std::vector<std::vector<std::string>> wrong = {{"--listen", "8420"},
                                                         {"--listen", "127.0.0.1:x"},
                                                         {"--listen", "127.0.0.1:1x"},
                                                         {"--listen", "127.0.0.1:99999"},
                                                         {"--listen", "localhost:8420"},
                                                         {"--tls-cert", "chain.pem"},
                                                         {"--origin", "admin.example.org"},
                                                         {"--behind-proxy", "proxy.example.org"},
                                                         {"--idle", "0"},
                                                         {"--listen", "127.0.0.1:0", "--session", "25"}};
    for (const std::vector<std::string>& options : wrong) {
        EXPECT_EQ(Run(With({"serve"}, options)).exit, 2) << testing::PrintToString(options);
    }
    EXPECT_EQ(Run({"--db", "sqlite:" + Path("none.db"), "serve"}).exit, 6);
}

TEST_F(ServeCommandTest, CertificatesThatAreNoneAreRefused)
{
    Init();
    WriteFile("chain.pem", "no certificate");
    WriteSecretFile("key.pem", "no key");
    const ChildResult result =
        Run({"serve", "--listen", "127.0.0.1:0", "--tls-cert", Path("chain.pem"), "--tls-key", Path("key.pem")});
    EXPECT_EQ(result.exit, 1);
    EXPECT_THAT(result.err, HasSubstr("cannot listen"));
}

TEST_F(ServeCommandTest, ServesTheSocketThatItIsHandedOver)
{
    Init();
    const int listening = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(bind(listening, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(listen(listening, 8), 0);
    ASSERT_EQ(getsockname(listening, reinterpret_cast<sockaddr*>(&address), &size), 0);
    const std::string start = "exec 3<&" + std::to_string(listening) + "; QVADMIN_DB='" + DatabaseUrl() +
                              "' LISTEN_PID=$$ LISTEN_FDS=1 exec '" + QVADMIN_PROGRAM + "' serve";
    ChildOptions options;
    options.directory = Path("");
    ChildProcess server("/bin/bash", {"-c", start}, options);
    close(listening);
    const std::uint16_t port = ntohs(address.sin_port);
    server.WaitForError("is at http://127.0.0.1:" + std::to_string(port) + "/");
    EXPECT_EQ(HttpClient(port).Get("/api/v1/health").status, 200);
    server.Signal(SIGTERM);
    EXPECT_EQ(server.Finish().exit, 0);
    const std::string wrong = "exec 3</dev/null; QVADMIN_DB='" + DatabaseUrl() + "' LISTEN_PID=$$ LISTEN_FDS=1 exec '" +
                              QVADMIN_PROGRAM + "' serve";
    const ChildResult refused = ChildProcess("/bin/bash", {"-c", wrong}, options).Finish();
    EXPECT_EQ(refused.exit, 2);
    EXPECT_THAT(refused.err, HasSubstr("does not listen"));
}

/// What a shell command prints.
std::string Printed(const std::string& command)
{
    std::string printed;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    for (int ch = 0; (ch = std::fgetc(pipe)) != EOF;) {
        printed += static_cast<char>(ch);
    }
    pclose(pipe);
    return printed;
}

TEST_F(ServeCommandTest, SpeaksTlsFromTwelveOn)
{
    Init();
    Printed("openssl req -x509 -newkey rsa:2048 -nodes -subj /CN=localhost -days 2 -keyout " + Path("key.pem") +
            " -out " + Path("chain.pem"));
    const std::string script =
        "exec 3>&1; QVADMIN_DB='" + DatabaseUrl() + "' '" + QVADMIN_PROGRAM +
        "' serve --listen 127.0.0.1:0 --tls-cert " + Path("chain.pem") + " --tls-key " + Path("key.pem") + " 2>" +
        Path("said") + " & pid=$!; until grep -q 'console is at' " + Path("said") +
        "; do sleep 0.1; done; port=$(grep -o 'https://127.0.0.1:[0-9]*' " + Path("said") +
        " | head -1 | cut -d: -f3); for v in -tls1_1 -tls1_2 -tls1_3; do echo $v; printf 'GET /api/v1/health "
        "HTTP/1.1\\r\\nHost: "
        "127.0.0.1:%s\\r\\nConnection: close\\r\\n\\r\\n' $port | timeout 10 openssl s_client -ign_eof -quiet $v "
        "-cipher DEFAULT@SECLEVEL=0 -connect 127.0.0.1:$port; done; kill -TERM $pid; wait $pid; echo ended $?";
    WriteFile("script", script);
    const std::string printed = Printed("timeout 60 bash " + Path("script"));
    const std::size_t twelve = printed.find("-tls1_2");
    const std::size_t thirteen = printed.find("-tls1_3");
    ASSERT_NE(thirteen, std::string::npos) << printed;
    EXPECT_EQ(printed.substr(0, twelve).find("200 OK"), std::string::npos) << printed;
    EXPECT_THAT(printed.substr(twelve, thirteen - twelve), HasSubstr("200 OK"));
    EXPECT_THAT(printed.substr(thirteen), HasSubstr("200 OK"));
    EXPECT_THAT(printed.substr(thirteen), HasSubstr("Strict-Transport-Security"));
    EXPECT_THAT(printed, HasSubstr("ended 0"));
}

} // namespace
