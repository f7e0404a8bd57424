#include "web/Server.h"

#include "ServerFixture.h"
#include "management/Command.h"
#include "management/DatabaseError.h"
#include "management/Query.h"
#include "web/CommandRequest.h"
#include "web/Tokens.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <future>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

using namespace web;
using namespace std::chrono_literals;
using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

using ServerTest = ServerFixture;

// ---- Languages ------------------------------------------------------------------------------------------------------

TEST_F(ServerTest, WhatIsForPeopleIsInTheLanguageOfTheRequest)
{
    HttpClient client = Signed();
    Run(client, "user/create", {{"LOGIN", "amy"}});
    const json english = Got(client, "/commands");
    EXPECT_EQ(english.at("names"), json::object());
    const HttpAnswer unknown = Ask(client, "user/show", {{"parameters", {{"USER", "nobody"}}}});
    EXPECT_EQ(unknown.Header("Content-Language"), "en");
    EXPECT_THAT(unknown.body, HasSubstr("there is no user 'nobody'"));

    client.headers["Accept-Language"] = "de-AT,de;q=0.9,en;q=0.5";
    const HttpAnswer german = Ask(client, "user/show", {{"parameters", {{"USER", "nobody"}}}});
    EXPECT_EQ(german.Header("Content-Language"), "de");
    EXPECT_EQ(german.Header("Vary"), "Accept-Language");
    EXPECT_EQ(CodeOf(german), "not_found");
    EXPECT_THAT(german.body, HasSubstr("es gibt keinen Benutzer 'nobody'"));
    // The server's own sentences, on the thread of HTTP too.
    EXPECT_THAT(client.Get("/api/v1/nothing").body, HasSubstr("nicht vorhanden"));
    EXPECT_THAT(Client().Get("/api/v1/session").body, HasSubstr("sign in first"));

    const json table = Got(client, "/commands");
    EXPECT_EQ(table.at("names").at("login"), "Anmeldename");
    EXPECT_EQ(table.at("names").at("keep_days"), "Tage behalten");
    ASSERT_EQ(table.at("commands").size(), english.at("commands").size());
    for (std::size_t i = 0; i < table.at("commands").size(); ++i) {
        const json& command = table.at("commands").at(i);
        EXPECT_EQ(command.at("path"), english.at("commands").at(i).at("path"));
        EXPECT_NE(command.at("summary"), english.at("commands").at(i).at("summary")) << command.at("path");
    }
    EXPECT_THAT(Run(client, "user/lock", {{"USER", {"amy"}}}).at("outcomes").at(0).at("message"),
                HasSubstr("gesperrt"));
    EXPECT_EQ(Run(client, "user/unlock", {{"USER", {"amy"}}}).at("outcomes").at(0).at("outcome"), "unlocked");

    // What was seen in one language is what is agreed to, and compared, in another.
    json deletion = {{"parameters", {{"USER", {"amy"}}}}};
    const json plan = json::parse(Ask(client, "user/delete", deletion).body).at("plan");
    EXPECT_THAT(plan.at("question"), HasSubstr("löschen"));
    const json shown = Run(client, "user/show", {{"USER", "amy"}});
    client.headers["Accept-Language"] = "zh-CN";
    EXPECT_EQ(json::parse(Ask(client, "user/delete", deletion).body).at("plan").at("digest"), plan.at("digest"));
    EXPECT_EQ(Ask(client, "user/set",
                  {{"parameters", {{"USER", {"amy"}}, {"title", "Lead"}}},
                   {"if_unchanged",
                    {{"command", "user/show"}, {"parameters", {{"USER", "amy"}}}, {"version", shown.at("version")}}}})
                  .status,
              200);
    // The record and the log are for programs.
    EXPECT_THAT(m_log, Not(HasSubstr("gesperrt")));
}

TEST_F(ServerTest, AJobSpeaksTheLanguageInWhichItWasBegun)
{
    HttpClient client = Signed();
    client.headers["Accept-Language"] = "de";
    Run(client, "user/create", {{"LOGIN", "amy"}});
    const json body = {{"parameters", {{"USER", {"amy"}}}}, {"job", true}};
    const json german = json::parse(Ask(client, "user/lock", body).body).at("job");
    client.headers["Accept-Language"] = "zh-CN";
    const HttpAnswer answer = JobAnswer(client, german);
    EXPECT_EQ(answer.Header("Content-Language"), "de");
    EXPECT_THAT(answer.body, HasSubstr("gesperrt"));
    // There is one answer of a job, and what is said about that is for who asks.
    const HttpAnswer again = JobAnswer(client, german);
    EXPECT_EQ(again.Header("Content-Language"), "zh-CN");
    EXPECT_THAT(again.body, HasSubstr("已被取走"));
    EXPECT_THAT(client.Get("/api/v1/jobs/report?id=" + german.at("id").dump()).body, Not(HasSubstr("gesperrt")));
}

TEST_F(ServerTest, WithoutCataloguesItSpeaksEnglish)
{
    Start({.catalogues = "/nowhere"});
    HttpClient client = Client();
    client.headers["Accept-Language"] = "de";
    const HttpAnswer answer = client.Get("/api/v1/session");
    EXPECT_EQ(answer.Header("Content-Language"), "en");
    EXPECT_THAT(answer.body, HasSubstr("sign in first"));
}

// ---- The first password ---------------------------------------------------------------------------------------------

TEST_F(ServerTest, SetupTokenWorksOnce)
{
    Start();
    ASSERT_EQ(m_server->SetupToken().size(), 64U);
    EXPECT_EQ(Client().Post("/api/v1/setup", json{{"token", "x"}, {"password", kPassword}}.dump()).status, 403);
    EXPECT_EQ(SetUpAdmin("short").status, 422);
    EXPECT_EQ(SetUpAdmin().status, 200);
    EXPECT_EQ(CodeOf(SetUpAdmin("another long password")), "setup_over");
    HttpClient client = Client();
    EXPECT_EQ(SignIn(client).status, 200);
    EXPECT_EQ(Run(client, "user/show", {{"USER", "Admin"}}).at("record").at("super"), true);
    Start();
    EXPECT_EQ(m_server->SetupToken(), "");
    EXPECT_EQ(CodeOf(SetUpAdmin("another long password")), "setup_over");
}

TEST_F(ServerTest, SetupTokenEndsWithTime)
{
    Start({.clock = StandingClock()});
    LetPass(16min);
    EXPECT_EQ(CodeOf(SetUpAdmin()), "setup_over");
    EXPECT_TRUE(management::Number(m_conn, "SELECT COUNT(*) FROM qv_User") == 0);
}

TEST_F(ServerTest, SetupEndsWhenSomebodyElseGivesAPassword)
{
    Start();
    ASSERT_EQ(SetUpAdmin().status, 200);
    management::Execute(m_conn, "UPDATE qv_User SET Col_PWord = ''");
    Start();
    ASSERT_NE(m_server->SetupToken(), "");
    management::Execute(m_conn, "UPDATE qv_User SET Col_PWord = 'x'");
    EXPECT_EQ(CodeOf(SetUpAdmin()), "protected");
}

// ---- Signing in -----------------------------------------------------------------------------------------------------

TEST_F(ServerTest, WrongAndUnknownAreToldAlike)
{
    Signed();
    HttpClient client = Client();
    const auto begin = std::chrono::steady_clock::now();
    const HttpAnswer wrong = SignIn(client, "Admin", "wrong");
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 300ms);
    const HttpAnswer unknown = SignIn(client, "nobody", kPassword);
    EXPECT_EQ(wrong.status, 401);
    EXPECT_EQ(wrong.body, unknown.body);
    EXPECT_EQ(client.cookie, "");
    EXPECT_THAT(m_log, HasSubstr(R"("event":"sign_in_failed","login":"nobody")"));
}

TEST_F(ServerTest, OnlySuperUsersWhoAreNotLockedAreLetIn)
{
    HttpClient admin = Signed();
    Run(admin, "user/create", {{"LOGIN", "amy"}});
    Run(admin, "user/password/set", {{"USER", "amy"}, {"password", kPassword}});
    HttpClient amy = Client();
    EXPECT_EQ(CodeOf(SignIn(amy, "amy")), "not_let_in");
    Run(admin, "user/set", {{"USER", "amy"}, {"super", true}});
    EXPECT_EQ(SignIn(amy, "AMY").status, 200);
    Run(admin, "user/lock", {{"USER", {"amy"}}});
    EXPECT_EQ(CodeOf(SignIn(amy, "amy")), "not_let_in");
    EXPECT_EQ(CodeOf(SignIn(amy, "amy", "wrong")), "wrong_password");
    Run(admin, "user/unlock", {{"USER", {"amy"}}});
    Run(admin, "user/password/set", {{"USER", "amy"}, {"password", kPassword}, {"type", 0}});
    EXPECT_THAT(SignIn(amy, "amy").body, HasSubstr("plain text"));
}

TEST_F(ServerTest, FailuresSlowDown)
{
    Signed();
    HttpClient client = Client();
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(SignIn(client, "Admin", "wrong").status, 401);
    }
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(SignIn(client).status, 200);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 1s);
}

TEST_F(ServerTest, CookieIsForThisServerAndItsPageAlone)
{
    Start({.origins = {"https://admin.example.org"}});
    ASSERT_EQ(SetUpAdmin().status, 200);
    HttpClient client = Client();
    EXPECT_THAT(SignIn(client).Header("Set-Cookie"),
                AllOf(StartsWith("qv="), HasSubstr("; HttpOnly; SameSite=Strict; Path=/"), Not(HasSubstr("Secure")),
                      Not(HasSubstr("Max-Age"))));
    HttpClient behindProxy = Client();
    behindProxy.headers["Host"] = "admin.example.org";
    const HttpAnswer answer = SignIn(behindProxy);
    EXPECT_THAT(answer.Header("Set-Cookie"), AllOf(StartsWith("__Host-qv="), HasSubstr("; Secure; HttpOnly;")));
    EXPECT_THAT(answer.Header("Strict-Transport-Security"), HasSubstr("max-age"));
}

TEST_F(ServerTest, BehindAProxyItsClientsCount)
{
    Start({.origins = {"https://admin.example.org"}, .proxy = "127.0.0.1"});
    const auto asked = [&](const std::string& forwarded, const std::string& proto) {
        HttpClient client = Client();
        client.headers = {{"Host", "admin.example.org"}, {"X-Forwarded-Proto", proto}};
        if (!forwarded.empty()) {
            client.headers["X-Forwarded-For"] = forwarded;
        }
        return client.Post("/api/v1/session", json{{"login", "nobody"}, {"password", "wrong"}}.dump()).status;
    };
    EXPECT_EQ(asked("198.51.100.1, 2001:DB8::0:7", "https"), 401);
    EXPECT_THAT(m_log, HasSubstr(R"("address":"2001:db8::7")"));
    EXPECT_EQ(asked("192.0.2.17", "https"), 401);
    EXPECT_THAT(m_log, HasSubstr(R"("address":"192.0.2.17")"));
    EXPECT_EQ(asked("", "https"), 400);
    EXPECT_EQ(asked("192.0.2.17, unknown", "https"), 400);
    EXPECT_EQ(asked("192.0.2.17", "http"), 400);
    Start({.origins = {"https://admin.example.org"}, .proxy = "127.0.0.2"});
    EXPECT_EQ(asked("192.0.2.17", "https"), 403);
    // Without a proxy nobody is believed.
    Start({.origins = {"https://admin.example.org"}});
    m_log.clear();
    EXPECT_EQ(asked("192.0.2.17", "http"), 401);
    EXPECT_THAT(m_log, HasSubstr(R"("address":"127.0.0.1")"));
}

TEST_F(ServerTest, ASessionIsNewAtEachSignInAndEndsWithSignOut)
{
    HttpClient client = Signed();
    const std::string first = client.cookie;
    ASSERT_EQ(SignIn(client).status, 200);
    EXPECT_NE(client.cookie, first);
    HttpClient old = Client();
    old.cookie = first;
    EXPECT_EQ(old.Get("/api/v1/session").status, 401);
    const json session = Got(client, "/session");
    EXPECT_EQ(session.at("login"), "Admin");
    const std::string cookie = client.cookie;
    EXPECT_EQ(client.Ask("DELETE", "/api/v1/session", "").status, 200);
    client.cookie = cookie;
    EXPECT_EQ(client.Get("/api/v1/session").status, 401);
}

TEST_F(ServerTest, ASessionEndsWhenItIsNotUsed)
{
    HttpClient client = Signed({.clock = StandingClock()});
    for (int i = 0; i < 2; ++i) {
        LetPass(14min);
        EXPECT_EQ(client.Get("/api/v1/session").status, 200);
    }
    LetPass(16min);
    EXPECT_EQ(client.Get("/api/v1/session").status, 401);
}

TEST_F(ServerTest, WhatAPageAsksByItselfIsNoUseOfItsSession)
{
    HttpClient client = Signed({.clock = StandingClock()});
    for (const std::string path : {"/api/v1/events", "/api/v1/overview"}) {
        LetPass(14min);
        EXPECT_EQ(client.Get(path).status, 200) << path;
        LetPass(2min);
        EXPECT_EQ(client.Get(path).status, 401) << path;
        EXPECT_EQ(SignIn(client).status, 200);
        client.headers["X-Unattended"] = "1";
    }
}

TEST_F(ServerTest, NewsIsOfThisAndOtherConsoles)
{
    HttpClient client = Signed();
    const auto heard = [&client](const std::string& last) {
        HttpClient waiting = client;
        waiting.headers["Last-Event-ID"] = last;
        std::string body;
        // News that is late comes with the next answer.
        for (int i = 0; i < 4 && body.find("data:") == std::string::npos; ++i) {
            const HttpAnswer answer = waiting.Get("/api/v1/events");
            EXPECT_EQ(answer.status, 200) << answer.body;
            EXPECT_EQ(answer.Header("Content-Type"), "text/event-stream");
            body = answer.body;
        }
        return body;
    };
    const auto idIn = [](const std::string& body) {
        const std::size_t begin = body.find("id: ") + 4;
        return body.substr(begin, body.find('\n', begin) - begin);
    };
    const std::string greeting = heard("");
    EXPECT_THAT(greeting, HasSubstr("event: hello"));
    auto waiting = std::async(std::launch::async, heard, idIn(greeting));
    const json own = Run(client, "user/create", {{"LOGIN", "amy"}});
    const std::string first = waiting.get();
    EXPECT_THAT(first, HasSubstr("event: changed\ndata: {\"entry\":" + own.at("entry").dump() + "}"));

    Server other(
        [this] {
            auto conn = std::make_shared<CAConnect>();
            conn->Open(Url().c_str());
            return conn;
        },
        {});
    HttpClient alien(other.Port());
    ASSERT_EQ(SignIn(alien).status, 200);
    EXPECT_EQ(Got(client, "/users").at("total"), 2);
    const json others = Run(alien, "user/create", {{"LOGIN", "rory"}});
    EXPECT_THAT(heard(idIn(first)), HasSubstr("{\"entry\":" + others.at("entry").dump() + "}"));
    EXPECT_EQ(Got(client, "/users").at("total"), 3);
}

TEST_F(ServerTest, AFileThatIsReplacedTakesNoChangesAndTheNewOneIsServed)
{
    HttpClient client = Signed();
    const std::string file = Url().substr(Url().find(':') + 1);
    m_conn.Execute(("VACUUM INTO '" + file + ".new'").c_str());
    Run(client, "user/create", {{"LOGIN", "amy"}});
    EXPECT_EQ(Got(client, "/users").at("total"), 2);
    m_conn.Close();
    std::filesystem::rename(file + ".new", file);
    for (const char* const log : {"-wal", "-shm"}) {
        std::filesystem::remove(file + log);
    }
    const HttpAnswer refused = Ask(client, "user/create", {{"parameters", {{"LOGIN", "rory"}}}});
    EXPECT_EQ(refused.status, 503);
    EXPECT_THAT(refused.body, HasSubstr("has been moved, replaced or deleted"));
    Run(client, "user/create", {{"LOGIN", "rory"}});
    EXPECT_EQ(client.Get("/api/v1/users").status, 503);
    const json users = Got(client, "/users");
    EXPECT_EQ(users.at("total"), 2);
    EXPECT_EQ(users.at("rows").at(1).at("login"), "rory");
}

TEST_F(ServerTest, NewsEndsWithItsSession)
{
    HttpClient client = Signed();
    HttpClient waiting = client;
    const std::string greeting = waiting.Get("/api/v1/events").body;
    waiting.headers["Last-Event-ID"] =
        greeting.substr(greeting.find("id: ") + 4, greeting.find("\nevent") - greeting.find("id: ") - 4);
    auto answer = std::async(std::launch::async, [&waiting] { return waiting.Get("/api/v1/events"); });
    EXPECT_EQ(answer.wait_for(300ms), std::future_status::timeout);
    EXPECT_EQ(client.Ask("DELETE", "/api/v1/session", "").status, 200);
    const int status = answer.get().status;
    EXPECT_TRUE(status == 204 || status == 401) << status;
    EXPECT_EQ(waiting.Get("/api/v1/events").status, 401);
}

TEST_F(ServerTest, ASessionEndsWithTheRightsOfItsUser)
{
    HttpClient admin = Signed();
    Run(admin, "user/create", {{"LOGIN", "amy"}, {"super", true}});
    Run(admin, "user/password/set", {{"USER", "amy"}, {"password", kPassword}});
    const std::vector<std::pair<std::string, json>> ends = {
        {"user/lock", {{"USER", {"amy"}}}},
        {"user/set", {{"USER", "amy"}, {"super", false}}},
        {"user/password/set", {{"USER", "amy"}, {"password", "another long password"}}}};
    for (const auto& [command, parameters] : ends) {
        HttpClient amy = Client();
        ASSERT_EQ(SignIn(amy, "amy").status, 200) << command;
        EXPECT_EQ(amy.Get("/api/v1/users").status, 200);
        Run(admin, command, parameters);
        EXPECT_EQ(amy.Get("/api/v1/users").status, 401) << command;
        EXPECT_EQ(Ask(amy, "user/count", json::object()).status, 401) << command;
        Run(admin, "user/unlock", {{"USER", {"amy"}}});
        Run(admin, "user/set", {{"USER", "amy"}, {"super", true}});
    }
}

// ---- Who may ask what -----------------------------------------------------------------------------------------------

TEST_F(ServerTest, NothingIsToldWithoutASession)
{
    HttpClient admin = Signed();
    HttpClient stranger = Client();
    stranger.csrf = admin.csrf;
    for (const management::Command& command : management::Commands()) {
        const HttpAnswer answer = Ask(stranger, PathOf(command), json::object());
        EXPECT_EQ(answer.status, 401) << PathOf(command);
    }
    for (const std::string path : {"/session", "/commands", "/users", "/tree", "/tree/find?q=a", "/overview"}) {
        EXPECT_EQ(stranger.Get("/api/v1" + path).status, 401) << path;
    }
    EXPECT_EQ(stranger.Get("/api/v1/health").body, R"({"ok":true})");
}

TEST_F(ServerTest, EveryCommandWantsTheTokenOfItsSession)
{
    HttpClient client = Signed({.clock = StandingClock()});
    const int entries = management::Number(m_conn, "SELECT COUNT(*) FROM qv_AuditEntry");
    for (const std::string& token : {std::string(), std::string(64, '0'), client.cookie}) {
        HttpClient forged = client;
        forged.csrf = token;
        for (const management::Command& command : management::Commands()) {
            EXPECT_EQ(CodeOf(Ask(forged, PathOf(command), json::object())), "no_csrf_token") << PathOf(command);
        }
        EXPECT_EQ(CodeOf(forged.Ask("DELETE", "/api/v1/session", "")), "no_csrf_token");
        LetPass(9s); // the allowance of requests
    }
    EXPECT_EQ(management::Number(m_conn, "SELECT COUNT(*) FROM qv_AuditEntry"), entries);
}

TEST_F(ServerTest, EveryCommandRefusesWhatItDoesNotKnow)
{
    HttpClient client = Signed({.clock = StandingClock()});
    for (const management::Command& command : management::Commands()) {
        const HttpAnswer answer = Ask(client, PathOf(command), {{"parameters", {{"no_such_parameter", "x"}}}});
        EXPECT_EQ(answer.status, HasRoute(command) ? 422 : 404) << PathOf(command) << answer.body;
        LetPass(1s); // the allowance of requests
    }
}

TEST_F(ServerTest, CommandsThatShowSecretsOrReadFilesHaveNoRoute)
{
    HttpClient client = Signed();
    std::set<std::string> offered;
    const json table = Got(client, "/commands");
    for (const json& command : table.at("commands")) {
        std::string path;
        for (const json& word : command.at("path")) {
            path += (path.empty() ? "" : "/") + word.get<std::string>();
        }
        offered.insert(path);
    }
    EXPECT_TRUE(offered.contains("user/lock"));
    for (const std::string path :
         {"setting/encryption-key/show", "user/import", "db/copy", "batch", "serve", "user/password", "no/such"}) {
        EXPECT_FALSE(offered.contains(path)) << path;
        EXPECT_EQ(Ask(client, path, json::object()).status, 404) << path;
    }
    EXPECT_EQ(Ask(client, "plan/create", {{"parameters", {{"NAME", "x"}, {"data_file", "/etc/passwd"}}}}).status, 422);
}

TEST_F(ServerTest, TypedPasswordsAreJudged)
{
    HttpClient client = Signed();
    Run(client, "user/create", {{"LOGIN", "amelia.pond.jr"}, {"company", "Brightwater Ltd"}});
    Run(client, "user/create", {{"LOGIN", "boss"}, {"super", true}});
    const auto code = [&client](const std::string& user, const std::string& password) {
        const HttpAnswer answer =
            Ask(client, "user/password/set", {{"parameters", {{"USER", user}, {"password", password}}}});
        return answer.status == 200 ? "" : CodeOf(answer);
    };
    EXPECT_EQ(code("amelia.pond.jr", "eleven char"), "password_short");
    EXPECT_EQ(code("amelia.pond.jr", "Amelia.Pond.Jr"), "password_is_name");
    EXPECT_EQ(code("amelia.pond.jr", "brightwater ltd"), "password_is_name");
    EXPECT_EQ(code("amelia.pond.jr", "password1234"), "password_easy");
    EXPECT_EQ(code("boss", "twelve small"), "password_short_super");
    EXPECT_EQ(management::Number(m_conn, "SELECT COUNT(*) FROM qv_User WHERE Col_PWord <> ''"), 1);
    EXPECT_EQ(code("amelia.pond.jr", "twelve small"), "");
    const json rename = {{"USER", "amelia.pond.jr"}, {"NEWLOGIN", "amy"}, {"password", "too short"}};
    EXPECT_EQ(CodeOf(Ask(client, "user/rename", {{"parameters", rename}})), "password_short");
    EXPECT_EQ(Run(client, "user/show", {{"USER", "amelia.pond.jr"}}).at("record").at("id"), 2);
    // Trying one is not giving one.
    EXPECT_EQ(Run(client, "user/password/check", {{"USER", "boss"}, {"password", "x"}}).at("verdict"), false);
}

TEST_F(ServerTest, ValuesAreOfTheKindOfTheirParameter)
{
    HttpClient client = Signed();
    const std::vector<std::pair<std::string, json>> wrong = {
        {"user/list", {{"locked", "yes"}}},
        {"user/list", {{"locked", true}, {"active", true}}},
        {"user/list", {{"limit", "many"}}},
        {"user/list", {{"limit", json::array({1})}}},
        {"user/show", {{"USER", json::object()}}},
        {"user/show", {{"USER", true}}},
        {"user/show", json::array()},
        {"user/show", json::object()},
        {"user/lock", {{"USER", {json::array()}}}},
        {"user/password/check", {{"USER", "Admin"}, {"password", 1}}},
        {"addin/move", {{"ADDIN", "x"}, {"WHERE", "sideways"}}},
    };
    for (const auto& [command, parameters] : wrong) {
        EXPECT_EQ(Ask(client, command, {{"parameters", parameters}}).status, 422) << command << parameters;
    }
    EXPECT_EQ(Ask(client, "user/list", {{"dry_run", "yes"}}).status, 422);
    EXPECT_EQ(Ask(client, "user/list", {{"surprise", 1}}).status, 422);
    EXPECT_EQ(client.Post("/api/v1/commands/user/list", "{").status, 422);
}

TEST_F(ServerTest, OtherHostsSitesAndTypesAreRefused)
{
    HttpClient client = Signed();
    HttpClient other = client;
    other.headers["Host"] = "evil.example";
    EXPECT_EQ(other.Get("/").status, 421);
    EXPECT_EQ(other.Get("/api/v1/session").status, 421);
    HttpClient foreign = client;
    foreign.headers["Origin"] = "http://evil.example";
    EXPECT_EQ(CodeOf(Ask(foreign, "user/count", json::object())), "cross_site");
    EXPECT_EQ(CodeOf(SignIn(foreign)), "cross_site");
    HttpClient form = client;
    form.headers["Content-Type"] = "text/plain";
    EXPECT_EQ(Ask(form, "user/count", json::object()).status, 415);
    EXPECT_EQ(client.Ask("DELETE", "/api/v1/users", "").status, 405);
    EXPECT_EQ(client.Get("/api/v1/commands/user/list").status, 405);
    EXPECT_EQ(client.Get("/api/v1/nothing").status, 404);
    EXPECT_EQ(client.Get("/api/v2/users").status, 404);
    EXPECT_EQ(client.Get("/nothing.js").status, 404);
    EXPECT_EQ(client.Ask("POST", "/", "{}").status, 405);
}

TEST_F(ServerTest, EveryAnswerTellsBrowsersToBeCareful)
{
    HttpClient client = Signed();
    for (const std::string path : {"/", "/directory", "/app.js", "/style.css", "/none.html", "/api/v1/users",
                                   "/api/v1/health", "/api/v1/none", "/api/v1/commands"}) {
        const HttpAnswer answer = client.Get(path);
        EXPECT_THAT(answer.Header("Content-Security-Policy"),
                    AllOf(HasSubstr("default-src 'none'"), HasSubstr("frame-ancestors 'none'"),
                          HasSubstr("trusted-types 'none'"), Not(HasSubstr("unsafe"))))
            << path;
        EXPECT_EQ(answer.Header("X-Content-Type-Options"), "nosniff") << path;
        EXPECT_EQ(answer.Header("Referrer-Policy"), "no-referrer") << path;
        EXPECT_EQ(answer.Header("Cross-Origin-Resource-Policy"), "same-origin") << path;
        EXPECT_EQ(answer.Header("Access-Control-Allow-Origin"), "") << path;
        EXPECT_EQ(answer.Header("Cache-Control"), path.starts_with("/api") ? "no-store"
                                                  : answer.status == 200   ? "no-cache"
                                                                           : "")
            << path;
    }
    HttpClient again = Client();
    again.headers["If-None-Match"] = client.Get("/app.js").Header("ETag");
    EXPECT_EQ(again.Get("/app.js").status, 304);
    EXPECT_EQ(client.Ask("HEAD", "/app.js", "").status, 200);
}

TEST_F(ServerTest, WhoHasASessionGetsAPageThatAsksAtOnce)
{
    HttpClient client = Signed();
    const HttpAnswer own = client.Get("/directory");
    EXPECT_THAT(own.body, HasSubstr("window.early"));
    EXPECT_EQ(own.Header("Vary"), "Cookie");
    // Of all that stands in the page, its own script alone may run.
    const std::size_t begin = own.body.find("<script>") + 8;
    const std::string script = own.body.substr(begin, own.body.find("</script>") - begin);
    EXPECT_THAT(own.Header("Content-Security-Policy"),
                HasSubstr("script-src 'self' 'sha256-" + web::Base64Digest(script) + "';"));
    HttpClient other = Client();
    EXPECT_THAT(other.Get("/directory").body, Not(HasSubstr("window.early")));
    other.cookie = "qv=0123456789abcdef";
    // What was kept of one is not taken for the other.
    other.headers["If-None-Match"] = own.Header("ETag");
    const HttpAnswer without = other.Get("/directory");
    EXPECT_EQ(without.status, 200);
    EXPECT_THAT(without.body, Not(HasSubstr("window.early")));
    EXPECT_EQ(client.Ask("DELETE", "/api/v1/session", "").status, 200);
    EXPECT_THAT(client.Get("/directory").body, Not(HasSubstr("window.early")));
}

TEST_F(ServerTest, ASessionHasSoManyRequests)
{
    HttpClient client = Signed({.clock = StandingClock()});
    const auto countTaken = [&client] {
        int taken = 0;
        while (taken < 1000 && CodeOf(client.Get("/api/v1/jobs/report")) != "too_many") {
            ++taken;
        }
        return taken;
    };
    EXPECT_EQ(countTaken(), 200);
    LetPass(500ms);
    EXPECT_EQ(countTaken(), 25);
    LetPass(9s);
    EXPECT_EQ(countTaken(), 200);
}

TEST_F(ServerTest, WhatIsLoggedStaysOneLine)
{
    Signed();
    m_log.clear();
    HttpClient client = Client();
    EXPECT_EQ(SignIn(client, "x\n{\"event\":\"sign_in\",\"login\":\"Admin\"}\r\x1B[2J", "wrong").status, 401);
    EXPECT_EQ(std::ranges::count(m_log, '\n'), 1) << m_log;
    EXPECT_TRUE(std::ranges::none_of(m_log, [](char letter) { return letter == '\r' || letter == '\x1B'; })) << m_log;
    EXPECT_EQ(json::parse(m_log).at("event"), "sign_in_failed");
}

TEST_F(ServerTest, ErrorsTellNoStatementsAndNoFiles)
{
    HttpClient client = Signed();
    m_conn.Execute("DROP TABLE Kel_Board");
    for (const std::string command : {"board/list", "board/show"}) {
        const HttpAnswer answer =
            Ask(client, command, {{"parameters", command == "board/list" ? json::object() : json{{"ID", "1"}}}});
        EXPECT_GE(answer.status, 500) << command;
        EXPECT_EQ(answer.Header("Content-Type"), "application/problem+json");
        EXPECT_THAT(answer.body, AllOf(Not(HasSubstr("SELECT")), Not(HasSubstr(m_folder)), Not(HasSubstr(".cpp"))));
    }
}

// ---- Commands -------------------------------------------------------------------------------------------------------

TEST_F(ServerTest, ChangesAreRecordedWithWhoMadeThem)
{
    HttpClient client = Signed();
    Run(client, "user/create", {{"LOGIN", "o'brien"}, {"name", "Pat O'Brien"}});
    const HttpAnswer answer =
        Ask(client, "user/lock", {{"parameters", {{"USER", {"o'brien"}}}}, {"reason", "left the company"}});
    const json locked = json::parse(answer.body);
    EXPECT_EQ(locked.at("changed"), true);
    EXPECT_EQ(locked.at("outcomes").at(0).at("outcome"), "locked");
    const json shown = Run(client, "audit/show", {{"ID", locked.at("entry")}});
    EXPECT_EQ(shown.at("record").at("who"), "Admin");
    EXPECT_EQ(shown.at("record").at("front_end"), "web");
    EXPECT_EQ(shown.at("record").at("reason"), "left the company");
    EXPECT_EQ(shown.at("record").at("command"), R"(user lock 'o'\''brien')");
    EXPECT_EQ(shown.at("parts").at("changes").at(0).at("after"), "1");
    EXPECT_THAT(m_log, HasSubstr(R"("event":"change","login":"Admin")"));
}

TEST_F(ServerTest, DryRunsChangeNothing)
{
    HttpClient client = Signed();
    const HttpAnswer answer = Ask(client, "user/create", {{"parameters", {{"LOGIN", "amy"}}}, {"dry_run", true}});
    EXPECT_EQ(json::parse(answer.body).at("dry_run"), true);
    EXPECT_EQ(json::parse(answer.body).at("entry"), nullptr);
    EXPECT_EQ(Run(client, "user/exists", {{"LOGIN", "amy"}}).at("verdict"), false);
}

TEST_F(ServerTest, WhatAsksIsDoneWithItsPlanAlone)
{
    HttpClient client = Signed();
    Run(client, "user/create", {{"LOGIN", "amy"}});
    const json body = {{"parameters", {{"USER", {"amy"}}}}};
    const HttpAnswer asked = Ask(client, "user/delete", body);
    EXPECT_EQ(asked.status, 409);
    EXPECT_EQ(CodeOf(asked), "confirmation_required");
    const json plan = json::parse(asked.body).at("plan");
    EXPECT_EQ(plan.at("question"), "Delete 1 user?");
    EXPECT_EQ(plan.at("removed"), 1);
    EXPECT_EQ(Run(client, "user/exists", {{"LOGIN", "amy"}}).at("verdict"), true);

    // Meanwhile there is more to delete.
    Run(client, "role/create", {{"NAME", "Editors"}});
    Run(client, "role/add", {{"ROLE", "Editors"}, {"USER", {"amy"}}});
    json confirmed = body;
    confirmed["confirm"] = plan.at("digest");
    const HttpAnswer changed = Ask(client, "user/delete", confirmed);
    EXPECT_EQ(changed.status, 409);
    EXPECT_EQ(CodeOf(changed), "plan_changed");
    EXPECT_EQ(json::parse(changed.body).at("plan").at("removed"), 2);
    EXPECT_EQ(Run(client, "user/exists", {{"LOGIN", "amy"}}).at("verdict"), true);

    // The plan of one thing is no yes to another.
    confirmed["confirm"] = json::parse(changed.body).at("plan").at("digest");
    json other = confirmed;
    other["parameters"]["USER"] = {"amy", "amy"};
    EXPECT_EQ(CodeOf(Ask(client, "user/delete", other)), "plan_changed");

    EXPECT_EQ(Ask(client, "user/delete", confirmed).status, 200);
    EXPECT_EQ(Run(client, "user/exists", {{"LOGIN", "amy"}}).at("verdict"), false);
}

TEST_F(ServerTest, WhatHasChangedMeanwhileIsNotOverwritten)
{
    HttpClient client = Signed();
    Run(client, "user/create", {{"LOGIN", "amy"}, {"title", "Clerk"}});
    const json seen = Run(client, "user/show", {{"USER", "amy"}});
    const json condition = {
        {"command", "user/show"}, {"parameters", {{"USER", "amy"}}}, {"version", seen.at("version")}};
    Run(client, "user/set", {{"USER", "amy"}, {"note", "by somebody else"}});
    const json change = {{"parameters", {{"USER", "amy"}, {"title", "Lead"}}}, {"if_unchanged", condition}};
    const HttpAnswer refused = Ask(client, "user/set", change);
    EXPECT_EQ(refused.status, 412);
    const json problem = json::parse(refused.body);
    EXPECT_EQ(problem.at("code"), "changed_meanwhile");
    EXPECT_EQ(problem.at("current").at("note"), "by somebody else");
    EXPECT_EQ(problem.at("current").at("title"), "Clerk");
    json again = change;
    again["if_unchanged"]["version"] = problem.at("version");
    EXPECT_EQ(Ask(client, "user/set", again).status, 200);
    EXPECT_EQ(Run(client, "user/show", {{"USER", "amy"}}).at("record").at("title"), "Lead");
    again["if_unchanged"]["command"] = "user/lock";
    EXPECT_EQ(Ask(client, "user/set", again).status, 422);
}

TEST_F(ServerTest, ChangesAreUndone)
{
    HttpClient client = Signed();
    Run(client, "user/create", {{"LOGIN", "amy"}, {"title", "Clerk"}});
    const json change = Run(client, "user/set", {{"USER", "amy"}, {"title", "Lead"}});
    json undo = {{"parameters", {{"ID", {change.at("entry")}}}}};
    const HttpAnswer asked = Ask(client, "audit/undo", undo);
    EXPECT_EQ(asked.status, 409);
    undo["confirm"] = json::parse(asked.body).at("plan").at("digest");
    const HttpAnswer undone = Ask(client, "audit/undo", undo);
    EXPECT_EQ(undone.status, 200) << undone.body;
    EXPECT_EQ(Run(client, "user/show", {{"USER", "amy"}}).at("record").at("title"), "Clerk");
    EXPECT_EQ(CodeOf(Ask(client, "audit/undo", undo)), "conflict");
}

TEST_F(ServerTest, ErrorsSayWhatANameMayMean)
{
    HttpClient client = Signed();
    Run(client, "view/create", {{"NAME", "Company"}});
    Run(client, "group/create", {{"PATH", "/Company/Sales"}});
    management::Execute(m_conn, "UPDATE qv_User SET Col_LoginName = 'admin'");
    management::Execute(m_conn, "INSERT INTO qv_User (Col_LoginName, Col_Name) VALUES ('ADMIN', 'two')");
    const HttpAnswer answer = Ask(client, "user/show", {{"parameters", {{"USER", "Admin"}}}});
    EXPECT_EQ(answer.status, 409);
    EXPECT_EQ(json::parse(answer.body).at("candidates").size(), 2U);
    EXPECT_EQ(Ask(client, "user/show", {{"parameters", {{"USER", "nobody"}}}}).status, 404);
    EXPECT_EQ(answer.Header("Content-Type"), "application/problem+json");
}

TEST_F(ServerTest, SecretsWantThePasswordAgain)
{
    HttpClient client = Signed({.clock = StandingClock()});
    LetPass(6min);
    const json set = {{"parameters", {{"USER", "Admin"}, {"password", "another long password"}}}};
    EXPECT_EQ(CodeOf(Ask(client, "user/password/set", set)), "password_required");
    EXPECT_EQ(CodeOf(client.Post("/api/v1/session/step-up", R"({"password":"wrong"})")), "wrong_password");
    m_server.reset();

    Start();
    client = Client();
    ASSERT_EQ(SignIn(client).status, 200);
    const std::string before = client.cookie;
    const HttpAnswer stepped = client.Post("/api/v1/session/step-up", json{{"password", kPassword}}.dump());
    EXPECT_EQ(stepped.status, 200);
    EXPECT_NE(client.cookie, before);
    client.csrf = json::parse(stepped.body).at("csrf");
    EXPECT_EQ(Ask(client, "user/password/set", set).status, 200);
}

TEST_F(ServerTest, MuchIsDeletedOnlyWithThePassword)
{
    HttpClient client = Signed({.clock = StandingClock()});
    LetPass(6min);
    json logins = json::array();
    for (int i = 0; i < 11; ++i) {
        logins.push_back("u" + std::to_string(i));
        Run(client, "user/create", {{"LOGIN", logins.back()}});
    }
    json body = {{"parameters", {{"USER", logins}}}};
    body["confirm"] = json::parse(Ask(client, "user/delete", body).body).at("plan").at("digest");
    const HttpAnswer answer = Ask(client, "user/delete", body);
    EXPECT_EQ(answer.status, 409);
    EXPECT_EQ(CodeOf(answer), "password_required");
    EXPECT_EQ(Run(client, "user/count", json::object()).at("value"), 12);
}

TEST_F(ServerTest, MadeUpPasswordsAreShownOnce)
{
    HttpClient client = Signed();
    Run(client, "user/create", {{"LOGIN", "amy"}});
    const std::string made = Run(client, "user/password/set", {{"USER", "amy"}, {"generate", true}}).at("password");
    EXPECT_GE(made.size(), 16U);
    EXPECT_EQ(Run(client, "user/password/check", {{"USER", "amy"}, {"password", made}}).at("verdict"), true);
    EXPECT_EQ(Run(client, "user/password/check", {{"USER", "amy"}, {"password", "x"}}).at("verdict"), false);
    EXPECT_THAT(Run(client, "audit/list", json::object()).dump(), Not(HasSubstr(made)));
    EXPECT_THAT(m_log, Not(HasSubstr(made)));
}

TEST_F(ServerTest, SeveralGetFieldsPlansAndPasswordsTogether)
{
    HttpClient client = Signed();
    for (const char* login : {"amy", "rory", "john"}) {
        Run(client, "user/create", {{"LOGIN", login}});
    }
    Run(client, "plan/create", {{"NAME", "Weekly"}});
    const json list = Got(client, "/users");
    const json some = {{"result", list.at("result")},
                       {"except",
                        {Got(client, "/users?q=login:john").at("rows").at(0).at("id"),
                         Got(client, "/users?q=login:Admin").at("rows").at(0).at("id")}}};
    const json set = Run(client, "user/set", {{"USER", some}, {"title", "Clerk"}});
    EXPECT_EQ(set.at("outcomes").size(), 2U);
    EXPECT_EQ(Got(client, "/users?q=Clerk").at("total"), 2);
    EXPECT_FALSE(Run(client, "user/set", {{"USER", some}, {"title", "Clerk"}}).at("changed").get<bool>());
    const json refused = {{"parameters", {{"USER", {"rory", "nobody"}}, {"title", "Lead"}}}};
    EXPECT_EQ(Ask(client, "user/set", refused).status, 404);
    EXPECT_EQ(Got(client, "/users?q=Lead").at("total"), 0);

    Run(client, "plan/assign", {{"PLAN", "Weekly"}, {"ITEM", some}});
    EXPECT_EQ(Run(client, "plan/show", {{"PLAN", "Weekly"}}).at("record").at("users"), 2);

    const json generate = {{"USER", some}, {"generate", true}};
    const HttpAnswer tried = Ask(client, "user/password/set", {{"parameters", generate}, {"dry_run", true}});
    EXPECT_EQ(tried.status, 200) << tried.body;
    EXPECT_FALSE(json::parse(tried.body).contains("passwords"));
    const json made = Run(client, "user/password/set", generate).at("passwords");
    ASSERT_EQ(made.size(), 2U);
    EXPECT_NE(made.at(0).at("password"), made.at(1).at("password"));
    for (const json& one : made) {
        const json check = {{"USER", one.at("login")}, {"password", one.at("password")}};
        EXPECT_EQ(Run(client, "user/password/check", check).at("verdict"), true) << one.at("login");
    }
}

TEST_F(ServerTest, AChangeThatRunsWhenTheServerEndsIsAnswered)
{
    HttpClient client = Signed();
    CAConnect other;
    other.Open(Url().c_str());
    int status = 0;
    std::thread asking;
    {
        // Somebody else writes, so the change waits.
        management::Transaction transaction(other);
        asking = std::thread([&] { status = Ask(client, "user/create", {{"parameters", {{"LOGIN", "amy"}}}}).status; });
        std::this_thread::sleep_for(500ms);
        std::thread ending([this] { m_server.reset(); });
        std::this_thread::sleep_for(300ms);
        transaction.Rollback();
        ending.join();
    }
    asking.join();
    EXPECT_EQ(status, 200);
    EXPECT_EQ(management::Number(m_conn, "SELECT COUNT(*) FROM qv_User WHERE Col_LoginName = 'amy'"), 1);
}

// ---- Lists and the tree ---------------------------------------------------------------------------------------------

TEST_F(ServerTest, ListsStayAsTheyAre)
{
    HttpClient client = Signed();
    for (int i = 1; i <= 12; ++i) {
        Run(client, "user/create", {{"LOGIN", "user" + std::to_string(i)}, {"title", i % 2 == 0 ? "Even" : "Odd"}});
    }
    const json list = Got(client, "/users?q=user%20EVEN&limit=2");
    EXPECT_EQ(list.at("total"), 6);
    EXPECT_EQ(list.at("rows").size(), 2U);
    EXPECT_EQ(list.at("rows").at(0).at("login"), "user2");
    const std::string result = list.at("result");
    Run(client, "user/set", {{"USER", "user4"}, {"title", "Odd"}});
    json body = {{"parameters", {{"USER", {"user6"}}}}};
    body["confirm"] = json::parse(Ask(client, "user/delete", body).body).at("plan").at("digest");
    ASSERT_EQ(Ask(client, "user/delete", body).status, 200);
    EXPECT_EQ(Got(client, "/users?q=user+even").at("total"), 4);
    const json page = Got(client, "/users?result=" + result + "&offset=1&limit=500");
    EXPECT_EQ(page.at("total"), 6);
    EXPECT_EQ(page.at("rows").at(0).at("login"), "user4");
    EXPECT_EQ(page.at("rows").at(1).at("gone"), true);
    EXPECT_EQ(page.at("rows").at(4).at("login"), "user12");

    // It belongs to the session.
    HttpClient other = Client();
    ASSERT_EQ(SignIn(other).status, 200);
    EXPECT_EQ(other.Get("/api/v1/users?result=" + result).status, 410);
    EXPECT_EQ(client.Get("/api/v1/users?limit=501").status, 422);
    EXPECT_EQ(client.Get("/api/v1/users?surprise=1").status, 422);
    EXPECT_EQ(client.Get("/api/v1/users?sort=password").status, 422);
}

TEST_F(ServerTest, ListsAreSearchedSortedAndNarrowed)
{
    HttpClient client = Signed();
    Run(client, "view/create", {{"NAME", "Company"}});
    Run(client, "group/create", {{"PATH", "/Company/Sales/North"}, {"parents", true}});
    Run(client, "user/create", {{"LOGIN", "zoë"}, {"name", "Zoë"}, {"title", "b"}, {"mobile", "+44 7700 900123"}});
    Run(client, "user/create", {{"LOGIN", "amy10"}, {"title", "a"}});
    Run(client, "user/create", {{"LOGIN", "amy2"}, {"title", "c"}, {"locked", true}});
    Run(client, "member/add", {{"GROUP", "/Company/Sales"}, {"USER", {"zoë"}}});
    Run(client, "member/add", {{"GROUP", "/Company/Sales/North"}, {"USER", {"amy2", "zoë"}}});
    const auto logins = [&](const std::string& query) {
        std::string all;
        const json list = Got(client, "/users?" + query);
        for (const json& row : list.at("rows")) {
            all += (all.empty() ? "" : " ") + row.at("login").get<std::string>();
        }
        return all;
    };
    EXPECT_EQ(logins(""), "Admin amy2 amy10 zoë");
    EXPECT_EQ(logins("sort=-login"), "zoë amy10 amy2 Admin");
    EXPECT_EQ(logins("sort=title&q=y"), "amy10 amy2");
    EXPECT_EQ(logins("q=ZO%C3%8B"), "zoë");
    EXPECT_EQ(logins("q=7700"), "zoë");
    EXPECT_EQ(logins("q=id:1"), "Admin");
    for (const std::string wrong : {"id:1x", "id:", "id:99999999999", "id:1%20amy"}) {
        EXPECT_EQ(client.Get("/api/v1/users?q=" + wrong).status, 422) << wrong;
    }
    EXPECT_EQ(logins("q=login:AMY2"), "amy2");
    EXPECT_EQ(logins("q=login:amy"), "");
    EXPECT_EQ(logins("locked=1"), "amy2");
    EXPECT_EQ(logins("super=1"), "Admin");
    EXPECT_EQ(logins("no_group=1"), "Admin amy10");
    EXPECT_EQ(logins("no_password=1"), "amy10 zoë");
    Run(client, "user/password/set", {{"USER", "amy10"}, {"password", kPassword}, {"type", 0}});
    EXPECT_EQ(logins("no_password=1"), "zoë");
    EXPECT_EQ(logins("plain_password=1"), "amy10");
    EXPECT_EQ(logins("plain_password=1&locked=1"), "");
    const json top = Got(client, "/tree");
    ASSERT_EQ(top.at("rows").size(), 1U);
    EXPECT_EQ(top.at("rows").at(0).at("people"), 2);
    const std::string view = top.at("rows").at(0).at("key");
    const json sales = Got(client, "/tree?parent=" + view).at("rows").at(0);
    EXPECT_EQ(sales.at("name"), "Sales");
    EXPECT_EQ(sales.at("people"), 2);
    EXPECT_EQ(sales.at("children"), 1);
    EXPECT_EQ(logins("in=" + sales.at("key").get<std::string>()), "amy2 zoë");
    EXPECT_EQ(logins("deep=0&in=" + sales.at("key").get<std::string>()), "zoë");
    EXPECT_EQ(client.Get("/api/v1/users?in=group:999").status, 404);
    EXPECT_EQ(client.Get("/api/v1/tree?parent=user:1").status, 422);
    const json found = Got(client, "/tree/find?q=NOR");
    EXPECT_EQ(found.at("total"), 1);
    EXPECT_EQ(found.at("rows").at(0).at("path"), "/Company/Sales/North");
    EXPECT_EQ(found.at("rows").at(0).at("trail").size(), 3U);
    json overview = Got(client, "/overview");
    EXPECT_EQ(overview.at("users"), 4);
    EXPECT_EQ(overview.at("no_group"), 2);
    EXPECT_EQ(overview.at("plain_password"), 1);
    EXPECT_EQ(overview.at("nowhere"), 0);
    const json problems = ProblemsIn(client);
    ASSERT_EQ(problems.size(), 2U);
    EXPECT_EQ(problems.at(0).at("check"), "plain_passwords");
    EXPECT_EQ(problems.at(1).at("example"), "zoë");
}

TEST_F(ServerTest, ACommandTakesAListButForSome)
{
    HttpClient client = Signed();
    for (int i = 1; i <= 12; ++i) {
        Run(client, "user/create", {{"LOGIN", "user" + std::to_string(i)}});
    }
    const std::string result = Got(client, "/users?q=user").at("result");
    const auto all = [&result](const json& except) { return json{{"result", result}, {"except", except}}; };
    const int user7 = Got(client, "/users?q=login:user7").at("rows").at(0).at("id");
    EXPECT_EQ(Run(client, "user/lock", {{"USER", all({user7})}}).at("outcomes").size(), 11U);
    EXPECT_EQ(Got(client, "/users?locked=1").at("total"), 11);
    EXPECT_EQ(Got(client, "/users?locked=1&q=user7").at("total"), 0);
    EXPECT_EQ(Ask(client, "user/lock", {{"parameters", {{"USER", {{"result", "x"}}}}}}).status, 409);
    EXPECT_EQ(Ask(client, "user/lock", {{"parameters", {{"USER", {{"surprise", 1}}}}}}).status, 422);
    HttpClient other = Client();
    ASSERT_EQ(SignIn(other).status, 200);
    EXPECT_EQ(Ask(other, "user/lock", {{"parameters", {{"USER", all(json::array())}}}}).status, 409);

    // Giving the password again changes the session's tokens and keeps its lists.
    const HttpAnswer again = client.Post("/api/v1/session/step-up", json{{"password", kPassword}}.dump());
    ASSERT_EQ(again.status, 200);
    client.csrf = json::parse(again.body).at("csrf");
    EXPECT_EQ(Ask(client, "user/unlock", {{"parameters", {{"USER", all(json::array())}}}}).status, 200);
    EXPECT_EQ(Got(client, "/users?locked=1").at("total"), 0);
}

TEST_F(ServerTest, NamesAreFoundAsAList)
{
    HttpClient client = Signed();
    Run(client, "user/create", {{"LOGIN", "amy"}, {"name", "Amy Pond"}, {"email", "amy@example.org"}});
    Run(client, "user/create", {{"LOGIN", "rory"}, {"name", "Rory"}, {"email", "Rory"}});
    Run(client, "user/create", {{"LOGIN", "rory2"}, {"name", "rory"}});
    Run(client, "user/create", {{"LOGIN", "john"}, {"name", "John Smith"}});
    Run(client, "user/create", {{"LOGIN", "smith"}, {"name", "john smith"}});
    const auto find = [&](const json& names) {
        const HttpAnswer answer = client.Post("/api/v1/users/find", json{{"names", names}}.dump());
        EXPECT_EQ(answer.status, 200) << answer.body;
        return json::parse(answer.body);
    };
    const json found = find({"AMY@example.org", "rory", "John Smith", "nobody", "", "id:4", "amy", "id:99"});
    EXPECT_EQ(found.at("total"), 3);
    EXPECT_EQ(found.at("missing"), json({"nobody", "id:99"}));
    ASSERT_EQ(found.at("ambiguous").size(), 1U);
    EXPECT_EQ(found.at("ambiguous").at(0).at("name"), "John Smith");
    EXPECT_EQ(found.at("ambiguous").at(0).at("people").at(1).at("login"), "smith");
    const std::string among = found.at("result");
    const json list = Got(client, "/users?sort=-login&among=" + among);
    ASSERT_EQ(list.at("total"), 3);
    EXPECT_EQ(list.at("rows").at(0).at("login"), "rory2");
    EXPECT_EQ(Got(client, "/users?q=pond&among=" + among).at("total"), 1);
    EXPECT_EQ(CodeOf(client.Get("/api/v1/users?among=x")), "result_gone");
    EXPECT_EQ(client.Post("/api/v1/users/find", json{{"names", {"id:x"}}}.dump()).status, 422);
    EXPECT_EQ(client.Post("/api/v1/users/find", json{{"names", "amy"}}.dump()).status, 422);
}

TEST_F(ServerTest, ChangesOfOthersAreSeenWhenListsAreOld)
{
    HttpClient client = Signed();
    EXPECT_EQ(Got(client, "/users").at("total"), 1);
    management::Execute(m_conn, "INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    // A change here that lists do not show is no reason to read anything, one of a user has him read, another one all.
    Run(client, "role/create", {{"NAME", "Editors"}});
    EXPECT_EQ(Got(client, "/users").at("total"), 1);
    Run(client, "user/set", {{"USER", "Admin"}, {"title", "Chief"}, {"mobile", "123"}});
    EXPECT_EQ(Got(client, "/users?q=chief+123").at("total"), 1);
    EXPECT_EQ(Got(client, "/users?q=amy").at("total"), 0);
    Run(client, "user/lock", {{"USER", {"amy"}}});
    EXPECT_EQ(Got(client, "/users?locked=1").at("total"), 1);
    EXPECT_EQ(Got(client, "/overview").at("locked"), 1);
    Run(client, "user/unlock", {{"USER", {"amy"}}});
    EXPECT_EQ(Got(client, "/overview").at("locked"), 0);
    Run(client, "user/rename", {{"USER", "amy"}, {"NEWLOGIN", "zoe"}});
    EXPECT_EQ(Got(client, "/users").at("rows").at(1).at("login"), "zoe");
    management::Execute(m_conn, "INSERT INTO qv_User (Col_LoginName) VALUES ('rory')");
    Run(client, "view/create", {{"NAME", "Company"}});
    EXPECT_EQ(Got(client, "/users").at("total"), 3);
}

// ---- Imports --------------------------------------------------------------------------------------------------------

class ImportServerTest : public ServerTest {
protected:
    HttpAnswer Send(const std::string& path, const json& body)
    {
        return m_client->Post("/api/v1/imports" + path, body.dump());
    }
    void SendText(const std::string& text) { ASSERT_EQ(Send("/text", {{"text", text}, {"first", true}}).status, 200); }
    json Begin(json body)
    {
        body.emplace("delimiter", ",");
        const HttpAnswer answer = Send("", body);
        EXPECT_EQ(answer.status, 200) << answer.body;
        return answer.status == 200 ? json::parse(answer.body).at("job") : json{{"id", 0}};
    }
    json WaitFor(const json& job) { return ImportOver(*m_client, job); }
    void SetUp() override
    {
        ServerTest::SetUp();
        m_client.emplace(Signed());
    }
    void TearDown() override
    {
        m_client.reset();
        ServerTest::TearDown();
    }

    std::optional<HttpClient> m_client;
};

TEST_F(ImportServerTest, TriesImportsReportsAndUndoes)
{
    SendText("Name,Anmeldung,Farbe\nAmy,a");
    ASSERT_EQ(Send("/text", {{"text", "my,blue\n,rory,\n\"A, B\",\" x\",\n"}}).status, 200);
    const HttpAnswer looked = Send("/look", {{"delimiter", ","}});
    ASSERT_EQ(looked.status, 200);
    const json look = json::parse(looked.body);
    EXPECT_EQ(look.at("columns"), json({"Name", "Anmeldung", "Farbe"}));
    EXPECT_EQ(look.at("sample").at(2), json({"A, B", " x", ""}));
    EXPECT_EQ(look.at("rows"), 3);
    EXPECT_THAT(look.at("known").dump(), HasSubstr("\"login\""));
    const json columns = {"name", "login", nullptr};

    const json tried = WaitFor(Begin({{"columns", columns}, {"dry_run", true}}));
    EXPECT_EQ(tried.at("created"), 2);
    EXPECT_EQ(tried.at("failed"), 1);
    EXPECT_EQ(tried.at("entry"), nullptr);
    EXPECT_EQ(tried.at("failed_rows").at(0).at("line"), 4);
    EXPECT_EQ(Got(*m_client, "/users").at("total"), 1);

    const json done = WaitFor(Begin({{"columns", columns}, {"reason", "new people"}}));
    EXPECT_EQ(done.at("created"), 2);
    EXPECT_EQ(done.at("error"), "");
    EXPECT_EQ(Got(*m_client, "/users").at("total"), 3);
    EXPECT_EQ(Run(*m_client, "user/show", {{"USER", "amy"}}).at("record").at("name"), "Amy");
    const std::string id = done.at("id").dump();
    const HttpAnswer report = m_client->Get("/api/v1/jobs/report?id=" + id);
    EXPECT_THAT(report.body, StartsWith("line,login,id,outcome,reason\n2,amy,"));
    EXPECT_EQ(report.Header("Content-Disposition"), "attachment; filename=\"import-" + id + "-report.csv\"");
    EXPECT_EQ(m_client->Get("/api/v1/jobs/report?failed=1&id=" + id).body, "name,login,- 3\n\"A, B\", x,\n");
    const json entry = Run(*m_client, "audit/show", {{"ID", done.at("entry")}}).at("record");
    EXPECT_EQ(entry.at("who"), "Admin");
    EXPECT_EQ(entry.at("front_end"), "web");
    EXPECT_EQ(entry.at("reason"), "new people");
    json undo = {{"parameters", {{"ID", {done.at("entry").dump()}}}}};
    undo["confirm"] = json::parse(Ask(*m_client, "audit/undo", undo).body).at("plan").at("digest");
    EXPECT_EQ(Ask(*m_client, "audit/undo", undo).status, 200);
    EXPECT_EQ(Got(*m_client, "/users").at("total"), 1);
    EXPECT_EQ(Got(*m_client, "/imports").at("imports").size(), 2U);
}

TEST_F(ImportServerTest, AWholeListDealsWithTheLeaversWhoWereAgreedTo)
{
    Run(*m_client, "view/create", {{"NAME", "Company"}});
    for (const std::string login : {"amy", "rory", "clara"}) {
        Run(*m_client, "user/create", {{"LOGIN", login}});
    }
    Run(*m_client, "member/add", {{"GROUP", "/Company"}, {"USER", {"amy", "rory", "clara"}}});
    SendText("login\namy\n");
    json order = {
        {"columns", {"login"}}, {"sync", true}, {"scope", "/Company"}, {"leavers", "lock"}, {"max_leavers", "2"}};
    const auto tried = [&] {
        json with = order;
        with["dry_run"] = true;
        return WaitFor(Begin(with));
    };
    const json leavers = tried().at("leavers");
    EXPECT_EQ(leavers.at("people"), 3);
    EXPECT_EQ(leavers.at("leavers"), 2);
    EXPECT_EQ(leavers.at("done"), 2);
    EXPECT_EQ(Got(*m_client, "/users?locked=1").at("total"), 0);

    EXPECT_THAT(WaitFor(Begin(order)).at("error").get<std::string>(), HasSubstr("the try has shown"));
    Run(*m_client, "user/lock", {{"USER", {"rory"}}});
    order["agreed"] = leavers.at("digest");
    EXPECT_THAT(WaitFor(Begin(order)).at("error").get<std::string>(), HasSubstr("the try has shown"));
    EXPECT_EQ(Got(*m_client, "/users?locked=1").at("total"), 1);

    order["agreed"] = tried().at("leavers").at("digest");
    const json done = WaitFor(Begin(order));
    EXPECT_EQ(done.at("error"), "");
    ASSERT_EQ(done.at("leaver_rows").size(), 1U);
    EXPECT_EQ(done.at("leaver_rows").at(0).at("login"), "clara");
    EXPECT_EQ(done.at("leaver_rows").at(0).at("outcome"), "locked");
    EXPECT_EQ(done.at("rows").size(), 1U);
    EXPECT_EQ(Got(*m_client, "/users?locked=1").at("total"), 2);
    // A list deals with nobody, and needs nobody's agreement.
    order["leavers"] = "list";
    EXPECT_EQ(WaitFor(Begin(order)).at("leavers").at("leavers"), 2);
}

TEST_F(ImportServerTest, LeaversAreDeletedOnlyWithThePassword)
{
    m_client.reset();
    m_server.reset();
    Start({.clock = StandingClock()});
    m_client.emplace(Client());
    ASSERT_EQ(SignIn(*m_client).status, 200);
    LetPass(6min);
    SendText("login\namy\n");
    json order = {
        {"columns", {"login"}}, {"sync", true}, {"scope", "/_Empty"}, {"leavers", "delete"}, {"delimiter", ","}};
    EXPECT_EQ(CodeOf(Send("", order)), "password_required");
    order["dry_run"] = true;
    EXPECT_EQ(Send("", order).status, 200);
}

TEST_F(ImportServerTest, OthersHaveTheirTurnWhileItRuns)
{
    constexpr int rows = 20000;
    std::string text = "login\n";
    for (int i = 0; i < rows; ++i) {
        text += "user" + std::to_string(i) + "\n";
    }
    SendText(text);
    const json job = Begin({{"columns", {"login"}}});
    Run(*m_client, "user/set", {{"USER", "Admin"}, {"title", "Chief"}});
    EXPECT_EQ(Got(*m_client, "/imports?id=" + job.at("id").dump()).at("over"), false);
    EXPECT_EQ(Send("", {{"columns", {"login"}}, {"delimiter", ","}}).status, 409);
    EXPECT_EQ(m_client->Post("/api/v1/jobs/stop", json{{"id", job.at("id")}}.dump()).status, 200);
    const json end = WaitFor(job);
    EXPECT_EQ(end.at("error"), "stopped");
    EXPECT_LT(end.at("created").get<int>(), rows);
    EXPECT_EQ(Got(*m_client, "/users?q=user").at("total"), end.at("created"));
}

TEST_F(ImportServerTest, ARunningImportEndsWithTheServer)
{
    std::string text = "login\n";
    for (int i = 0; i < 20000; ++i) {
        text += "user" + std::to_string(i) + "\n";
    }
    SendText(text);
    const json job = Begin({{"columns", {"login"}}});
    m_server.reset();
    EXPECT_LT(management::Number(m_conn, "SELECT COUNT(*) FROM qv_User"), 20000);
}

TEST_F(ImportServerTest, WhatCannotBeIsRefused)
{
    EXPECT_EQ(Send("/look", {{"delimiter", ","}}).status, 422);
    EXPECT_EQ(Send("/text", {{"text", "x"}}).status, 422);
    SendText("login,title\namy,Chief\n");
    EXPECT_EQ(Send("/look", {{"delimiter", ""}}).status, 422);
    const json columns = {"login", "title"};
    EXPECT_EQ(Send("", {{"delimiter", ","}}).status, 422);
    EXPECT_EQ(Send("", {{"delimiter", ","}, {"columns", {"login"}}}).status, 422);
    EXPECT_EQ(Send("", {{"delimiter", ","}, {"columns", columns}, {"surprise", 1}}).status, 422);
    EXPECT_EQ(Send("", {{"delimiter", ","}, {"columns", columns}, {"update", "yes"}}).status, 422);
    EXPECT_EQ(Send("", {{"delimiter", ","}, {"columns", columns}, {"sync", true}}).status, 422);
    for (const auto& [name, value] : {std::pair("leavers", "banish"), std::pair("max_leavers", "few")}) {
        const json order = {
            {"delimiter", ","}, {"columns", columns}, {"sync", true}, {"scope", "/Company"}, {name, value}};
        EXPECT_EQ(Send("", order).status, 422) << name;
    }
    EXPECT_EQ(m_client->Get("/api/v1/imports?id=9").status, 404);
    EXPECT_THAT(WaitFor(Begin({{"columns", {nullptr, "title"}}})).at("error").get<std::string>(), HasSubstr("login"));
    EXPECT_THAT(WaitFor(Begin({{"columns", columns}, {"departments", "Company"}})).at("error").get<std::string>(),
                HasSubstr("department"));
    EXPECT_EQ(Got(*m_client, "/users").at("total"), 1);
    EXPECT_EQ(Client().Get("/api/v1/imports").status, 401);
}

// ---- Texts and secrets ----------------------------------------------------------------------------------------------

TEST_F(ServerTest, HostileTextsComeBackAsTheyWere)
{
    HttpClient client = Signed();
    const std::vector<std::string> texts = {"<script>alert(1)</script>",
                                            "\"><img src=x onerror=alert(1)>",
                                            "'; DROP TABLE qv_User; --",
                                            "\\",
                                            "\\'",
                                            "%s%n",
                                            std::string("\xE2\x80\xAE") + "abc",
                                            "a\tb",
                                            "</style>{{7*7}}${7*7}",
                                            "=1+1",
                                            "日本語",
                                            "😀",
                                            "\r\nSet-Cookie: x=1"};
    int number = 0;
    for (const std::string& text : texts) {
        const std::string login = "user" + std::to_string(++number);
        Run(client, "user/create", {{"LOGIN", login}, {"note", text}, {"name", text}, {"title", text}});
        const json record = Run(client, "user/show", {{"USER", login}}).at("record");
        EXPECT_EQ(record.at("note"), text);
        EXPECT_EQ(Got(client, "/users?q=login:" + login).at("rows").at(0).at("title"), text);
        const HttpAnswer answer = Ask(client, "user/show", {{"parameters", {{"USER", text}}}});
        EXPECT_NE(answer.status, 500) << text;
        EXPECT_EQ(answer.Header("Set-Cookie"), "");
    }
    EXPECT_EQ(Run(client, "user/count", json::object()).at("value"), texts.size() + 1);
}

TEST_F(ServerTest, NoDigestLeaves)
{
    HttpClient client = Signed();
    Run(client, "view/create", {{"NAME", "Company"}});
    Run(client, "group/create", {{"PATH", "/Company/Sales"}});
    Run(client, "role/create", {{"NAME", "Editors"}});
    std::vector<std::string> secrets;
    for (int type = 0; type <= 2; ++type) {
        const std::string login = "user" + std::to_string(type);
        const std::string password = "secret of user " + std::to_string(type);
        Run(client, "user/create", {{"LOGIN", login}});
        Run(client, "member/add", {{"GROUP", "/Company/Sales"}, {"USER", {login}}});
        Run(client, "role/add", {{"ROLE", "Editors"}, {"USER", {login}}});
        Run(client, "user/password/set", {{"USER", login}, {"password", password}, {"type", type}});
        Run(client, "user/rename", {{"USER", login}, {"NEWLOGIN", login + "x"}, {"password", password}});
        secrets.push_back(password);
    }
    Run(client, "setting/encryption-key/set", {{"key", "the key of all keys"}});
    secrets.emplace_back("the key of all keys");
    management::EachRow(m_conn, "SELECT Col_PWord FROM qv_User WHERE Col_PWord <> ''",
                        [&](CARecordset& row) { secrets.push_back(management::TextIn(row, 1)); });
    ASSERT_GE(secrets.size(), 8U);

    std::string all = m_log;
    const std::map<std::string_view, json> values = {{"USER", "user2x"},      {"GROUP", "/Company/Sales"},
                                                     {"VIEW", "Company"},     {"ROLE", "Editors"},
                                                     {"ITEM", "user:user2x"}, {"PATH", "/Company"},
                                                     {"TEXT", "a"},           {"NAME", "EncryptKey"},
                                                     {"LOGIN", "user2x"},     {"ID", 1}};
    int answered = 0;
    for (const management::Command& command : management::Commands()) {
        if (!HasRoute(command) || command.effect != management::Effect::read) {
            continue;
        }
        json parameters = json::object();
        for (const management::ParamInfo& param : command.handler.params()) {
            if (const auto value = values.find(param.name); param.isPositional && value != values.end()) {
                parameters[std::string(param.name)] = value->second;
            }
        }
        const HttpAnswer answer = Ask(client, PathOf(command), {{"parameters", parameters}});
        answered += answer.status == 200 ? 1 : 0;
        all += answer.head + answer.body;
    }
    EXPECT_GT(answered, 30);
    const int entries = management::Number(m_conn, "SELECT MAX(Col_ID) FROM qv_AuditEntry");
    for (int entry = 1; entry <= entries; ++entry) {
        all += Run(client, "audit/show", {{"ID", entry}}).dump();
    }
    for (const std::string path : {"/session", "/users", "/users?q=user", "/tree", "/overview", "/commands"}) {
        all += Got(client, path).dump();
    }
    for (const std::string& secret : secrets) {
        EXPECT_THAT(all, Not(HasSubstr(secret)));
    }
}

} // namespace
