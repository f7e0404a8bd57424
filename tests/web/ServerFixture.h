#pragma once

#include "HttpClient.h"
#include "console/Translation.h"
#include "dbaccess/CAConnect.h"
#include "management/Command.h"
#include "schema/Schema.h"
#include "web/CommandRequest.h"
#include "web/Server.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <thread>

inline constexpr const char* kPassword = "correct horse battery";

/// A server on a directory of the test's own.
class ServerFixture : public testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = testing::TempDir() + "web-XXXXXX";
        m_folder = ::mkdtemp(pattern.data());
        m_conn.Open(Url().c_str());
        schema::Upgrade(m_conn, [](int, const std::string&) {});
    }
    void TearDown() override
    {
        m_server.reset();
        std::filesystem::remove_all(m_folder);
    }

    [[nodiscard]] virtual std::string Url() const { return "sqlite:" + m_folder + "/directory.db"; }

    void Start(web::ServerOptions options = {})
    {
        options.catalogues = options.catalogues.empty() ? console::CatalogueFolder() : options.catalogues;
        options.log = [this](const std::string& line) { m_log += line + "\n"; };
        m_server.reset();
        m_server.emplace(
            [this] {
                auto conn = std::make_shared<CAConnect>();
                conn->Open(Url().c_str());
                return conn;
            },
            std::move(options));
    }

    /// A clock that stands until a test lets time pass.
    std::function<web::Sessions::Clock::time_point()> StandingClock()
    {
        return [this] { return web::Sessions::Clock::time_point() + m_time.load(); };
    }
    void LetPass(web::Sessions::Clock::duration time) { m_time = m_time.load() + time; }

    HttpClient Client() { return HttpClient(m_server->Port()); }

    HttpAnswer SetUpAdmin(const std::string& password = kPassword)
    {
        return Client().Post("/api/v1/setup",
                             nlohmann::json{{"token", m_server->SetupToken()}, {"password", password}}.dump());
    }

    static HttpAnswer SignIn(HttpClient& client, const std::string& login = "Admin",
                             const std::string& password = kPassword)
    {
        HttpAnswer answer =
            client.Post("/api/v1/session", nlohmann::json{{"login", login}, {"password", password}}.dump());
        if (answer.status == 200) {
            client.csrf = nlohmann::json::parse(answer.body).at("csrf");
        }
        return answer;
    }

    /// A server, its first administrator, and him signed in.
    HttpClient Signed(web::ServerOptions options = {})
    {
        Start(std::move(options));
        EXPECT_EQ(SetUpAdmin().status, 200);
        HttpClient client = Client();
        EXPECT_EQ(SignIn(client).status, 200);
        return client;
    }

    static HttpAnswer Ask(HttpClient& client, const std::string& command, const nlohmann::json& body)
    {
        return client.Post("/api/v1/commands/" + command, body.dump());
    }
    /// Runs a command that succeeds.
    static nlohmann::json Run(HttpClient& client, const std::string& command, const nlohmann::json& parameters)
    {
        const HttpAnswer answer = Ask(client, command, {{"parameters", parameters}});
        EXPECT_EQ(answer.status, 200) << command << ": " << answer.body;
        return answer.status == 200 ? nlohmann::json::parse(answer.body) : nlohmann::json();
    }
    static nlohmann::json Got(HttpClient& client, const std::string& path)
    {
        const HttpAnswer answer = client.Get("/api/v1" + path);
        EXPECT_EQ(answer.status, 200) << path << ": " << answer.body;
        return answer.status == 200 ? nlohmann::json::parse(answer.body) : nlohmann::json();
    }
    /// How an import stands once it is over. @param job  what began it has answered.
    static nlohmann::json ImportOver(HttpClient& client, const nlohmann::json& job)
    {
        const std::string path = "/imports?id=" + job.at("id").dump();
        nlohmann::json state = Got(client, path);
        for (int i = 0; i < 600 && !state.at("over").get<bool>(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            state = Got(client, path);
        }
        return state;
    }
    /// How a job stands.
    static nlohmann::json JobNow(HttpClient& client, const nlohmann::json& job)
    {
        const nlohmann::json all = Got(client, "/jobs");
        for (const nlohmann::json& one : all.at("jobs")) {
            if (one.at("id") == job.at("id")) {
                return one;
            }
        }
        return {};
    }
    /// The same once it is over.
    static nlohmann::json JobOver(HttpClient& client, const nlohmann::json& job)
    {
        nlohmann::json now = JobNow(client, job);
        for (int i = 0; i < 600 && !now.at("over").get<bool>(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            now = JobNow(client, job);
        }
        return now;
    }
    static HttpAnswer JobAnswer(HttpClient& client, const nlohmann::json& job)
    {
        JobOver(client, job);
        return client.Post("/api/v1/jobs/answer", nlohmann::json{{"id", job.at("id")}}.dump());
    }
    /// The answer of a command that runs long and succeeds.
    static nlohmann::json RunLong(HttpClient& client, const std::string& command)
    {
        return nlohmann::json::parse(JobAnswer(client, Run(client, command, nlohmann::json::object()).at("job")).body);
    }
    /// What a check of the directory finds.
    static nlohmann::json ProblemsIn(HttpClient& client) { return RunLong(client, "db/check").at("rows"); }
    static std::string CodeOf(const HttpAnswer& answer) { return nlohmann::json::parse(answer.body).at("code"); }

    static std::string PathOf(const management::Command& command)
    {
        std::string path = web::PathText(command);
        std::ranges::replace(path, ' ', '/');
        return path;
    }

    std::string m_folder;
    std::atomic<web::Sessions::Clock::duration> m_time{std::chrono::hours(1)};
    CAConnect m_conn;
    std::string m_log;
    std::optional<web::Server> m_server;
};
