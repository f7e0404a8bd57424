#include "web/Totp.h"

#include "ServerFixture.h"
#include "dbaccess/CARecordset.h"
#include "management/Query.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <string>
#include <vector>

using namespace std::chrono_literals;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

// One-time codes as the second step of signing in.

namespace {

class TotpServerTest : public ServerFixture {
protected:
    web::ServerOptions WithClock(web::ServerOptions options = {})
    {
        options.wallClock = [this] { return std::time_t{m_step} * web::kTotpSeconds; };
        return options;
    }

    static HttpAnswer SignInWith(HttpClient& client, const std::string& code, const std::string& login = "Admin",
                                 const std::string& password = kPassword)
    {
        HttpAnswer answer =
            client.Post("/api/v1/session", json{{"login", login}, {"password", password}, {"code", code}}.dump());
        TakeToken(client, answer);
        return answer;
    }
    static void TakeToken(HttpClient& client, const HttpAnswer& answer)
    {
        if (answer.status == 200) {
            client.csrf = json::parse(answer.body).at("csrf");
        }
    }
    [[nodiscard]] std::string Code() const { return web::TotpCode(m_secret, m_step); }

    /// Sets up one-time codes, whose code of this step is used up then. @return the last answer.
    HttpAnswer SetUpTotp(HttpClient& client)
    {
        const HttpAnswer begun = client.Post("/api/v1/session/totp", "{}");
        EXPECT_EQ(begun.status, 200) << begun.body;
        m_secret = json::parse(begun.body).at("secret");
        HttpAnswer done = client.Post("/api/v1/session/totp/confirm", json{{"code", Code()}}.dump());
        TakeToken(client, done);
        if (done.status == 200) {
            m_recovery = json::parse(done.body).at("new_recovery_codes");
        }
        return done;
    }

    std::atomic<int> m_step = 50'000'000;
    std::string m_secret;
    std::vector<std::string> m_recovery;
};

TEST_F(TotpServerTest, AreSetUpByWhoHasGivenThePassword)
{
    HttpClient client = Signed(WithClock());
    EXPECT_EQ(Got(client, "/session").at("totp"), false);
    EXPECT_EQ(client.Post("/api/v1/session/totp/confirm", R"({"code":"123456"})").status, 409);
    const HttpAnswer begun = client.Post("/api/v1/session/totp", "{}");
    const json secret = json::parse(begun.body);
    EXPECT_THAT(secret.at("uri").get<std::string>(),
                HasSubstr("otpauth://totp/Quorvel:Admin?secret=" + secret.at("secret").get<std::string>()));
    EXPECT_EQ(client.Post("/api/v1/session/totp/confirm", R"({"code":"xxxxxx"})").status, 422);
    HttpClient other = Client();
    ASSERT_EQ(SignIn(other).status, 200);
    const std::string cookie = client.cookie;
    const HttpAnswer done = SetUpTotp(client);
    ASSERT_EQ(done.status, 200) << done.body;
    EXPECT_THAT(m_recovery, SizeIs(10));
    EXPECT_NE(client.cookie, cookie);
    EXPECT_EQ(Got(client, "/session").at("totp"), true);
    EXPECT_EQ(Got(client, "/session").at("recovery_codes"), 10);
    EXPECT_FALSE(Got(client, "/session").contains("new_recovery_codes"));
    EXPECT_EQ(other.Get("/api/v1/users").status, 401) << "other sessions of the user end";
    // Who has them sets up no others.
    EXPECT_EQ(SetUpTotp(client).status, 409);
}

TEST_F(TotpServerTest, ACodeIsAskedForAndTakenOnce)
{
    HttpClient admin = Signed(WithClock());
    ASSERT_EQ(SetUpTotp(admin).status, 200);
    HttpClient client = Client();
    EXPECT_EQ(CodeOf(SignIn(client)), "code_required");
    EXPECT_EQ(client.cookie, "");
    EXPECT_EQ(CodeOf(SignInWith(client, Code())), "wrong_code") << "used when it was set up";
    ++m_step;
    EXPECT_EQ(CodeOf(SignInWith(client, "000000")), "wrong_code");
    EXPECT_EQ(CodeOf(SignInWith(client, Code(), "Admin", "wrong")), "wrong_password");
    EXPECT_EQ(SignInWith(client, Code()).status, 200) << "a code that came with a wrong password is not used up";
    EXPECT_EQ(CodeOf(SignInWith(client, Code())), "wrong_code");
    // The code of the step to come counts, and those before it no longer do.
    m_step += 2;
    const std::string earlier = Code();
    ++m_step;
    EXPECT_EQ(SignInWith(client, Code()).status, 200);
    EXPECT_EQ(CodeOf(SignInWith(client, earlier)), "wrong_code");
}

TEST_F(TotpServerTest, ARecoveryCodeIsTakenOnce)
{
    HttpClient admin = Signed(WithClock());
    ASSERT_EQ(SetUpTotp(admin).status, 200);
    HttpClient client = Client();
    EXPECT_EQ(SignInWith(client, m_recovery.at(3)).status, 200);
    EXPECT_EQ(Got(client, "/session").at("recovery_codes"), 9);
    EXPECT_EQ(CodeOf(SignInWith(client, m_recovery.at(3))), "wrong_code");
    EXPECT_THAT(m_log, HasSubstr("recovery_code_used"));
    const json entries = Run(client, "audit/list", {{"noun", "console"}, {"limit", 1}});
    EXPECT_EQ(entries.at("rows").at(0).at("command"), "console totp recover Admin");
}

TEST_F(TotpServerTest, CodesAreThrottledAsPasswordsAre)
{
    HttpClient admin = Signed(WithClock());
    ASSERT_EQ(SetUpTotp(admin).status, 200);
    // Each try from another address, so that it is the login name that is slowed down.
    Start(WithClock({.origins = {"https://admin.example.org"}, .proxy = "127.0.0.1"}));
    int address = 0;
    HttpClient client = Client();
    client.headers = {{"Host", "admin.example.org"}, {"X-Forwarded-Proto", "https"}};
    const auto answerTo = [&](const std::string& code) {
        client.headers["X-Forwarded-For"] = "192.0.2." + std::to_string(++address);
        return SignInWith(client, code);
    };
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(CodeOf(answerTo("000000")), "wrong_code");
        // The password alone does not let anybody begin anew.
        EXPECT_EQ(CodeOf(answerTo("")), "code_required");
    }
    ++m_step;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(answerTo(Code()).status, 200);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 1s);
}

TEST_F(TotpServerTest, GivingThePasswordAgainTakesACodeToo)
{
    HttpClient admin = Signed(WithClock());
    ASSERT_EQ(SetUpTotp(admin).status, 200);
    const auto stepUp = [&admin](const json& body) {
        HttpAnswer answer = admin.Post("/api/v1/session/step-up", body.dump());
        TakeToken(admin, answer);
        return answer;
    };
    EXPECT_EQ(CodeOf(stepUp({{"password", kPassword}})), "code_required");
    ++m_step;
    EXPECT_EQ(stepUp({{"password", kPassword}, {"code", Code()}}).status, 200);
    EXPECT_EQ(CodeOf(stepUp({{"password", kPassword}, {"code", Code()}})), "wrong_code");
}

TEST_F(TotpServerTest, AreSetUpAndRemovedOnlyWithThePasswordGivenAgain)
{
    HttpClient admin = Signed(WithClock());
    ASSERT_EQ(SetUpTotp(admin).status, 200);
    Start(WithClock({.sessions = {.confirmation = 0s}}));
    HttpClient client = Client();
    ++m_step;
    ASSERT_EQ(SignInWith(client, Code()).status, 200);
    EXPECT_EQ(CodeOf(client.Post("/api/v1/session/totp", "{}")), "password_required");
    EXPECT_EQ(CodeOf(client.Post("/api/v1/session/totp/confirm", R"({"code":"1"})")), "password_required");
    EXPECT_EQ(CodeOf(client.Ask("DELETE", "/api/v1/session/totp", "")), "password_required");
    EXPECT_EQ(Got(client, "/session").at("totp"), true);
}

TEST_F(TotpServerTest, AreRemovedByTheirOwnerAndByAnotherAdministrator)
{
    HttpClient admin = Signed(WithClock());
    ASSERT_EQ(SetUpTotp(admin).status, 200);
    const HttpAnswer removed = admin.Ask("DELETE", "/api/v1/session/totp", "");
    TakeToken(admin, removed);
    EXPECT_EQ(removed.status, 200);
    EXPECT_EQ(Got(admin, "/session").at("totp"), false);
    Run(admin, "user/create", {{"LOGIN", "amy"}, {"super", true}});
    Run(admin, "user/password/set", {{"USER", "amy"}, {"password", kPassword}});
    HttpClient amy = Client();
    ASSERT_EQ(SignIn(amy, "amy").status, 200);
    ASSERT_EQ(SetUpTotp(amy).status, 200);
    EXPECT_EQ(CodeOf(SignIn(amy, "amy")), "code_required");
    Run(admin, "console/totp/remove", {{"USER", "amy"}});
    EXPECT_EQ(amy.Get("/api/v1/users").status, 401);
    EXPECT_EQ(SignIn(amy, "amy").status, 200);
}

TEST_F(TotpServerTest, AreRequiredOfEverybody)
{
    HttpClient client = Signed(WithClock({.requiresTotp = true}));
    EXPECT_EQ(Got(client, "/session").at("totp_required"), true);
    for (const std::string path : {"/users", "/commands", "/overview", "/imports"}) {
        const HttpAnswer answer = client.Get("/api/v1" + path);
        EXPECT_EQ(answer.status, 403) << path;
        EXPECT_EQ(CodeOf(answer), "totp_required") << path;
    }
    EXPECT_EQ(CodeOf(Ask(client, "user/create", {{"parameters", {{"LOGIN", "amy"}}}})), "totp_required");
    ASSERT_EQ(SetUpTotp(client).status, 200);
    EXPECT_EQ(Got(client, "/session").at("totp_required"), false);
    EXPECT_EQ(client.Get("/api/v1/users").status, 200);
}

TEST_F(TotpServerTest, SecretsAreNeitherRecordedNorLogged)
{
    HttpClient admin = Signed(WithClock());
    ASSERT_EQ(SetUpTotp(admin).status, 200);
    std::string all = m_log;
    management::EachRow(m_conn, "SELECT Col_Before, Col_After FROM qv_AuditRow", [&all](CARecordset& row) {
        all += management::TextIn(row, 1) + management::TextIn(row, 2) + "\n";
    });
    all += Run(admin, "console/list", json::object()).dump() + Got(admin, "/session").dump();
    EXPECT_THAT(all, HasSubstr("(not recorded)"));
    EXPECT_THAT(all, Not(HasSubstr(m_secret)));
    EXPECT_THAT(all, Not(HasSubstr(Code())));
    for (const std::string& code : m_recovery) {
        EXPECT_THAT(all, Not(HasSubstr(code)));
        EXPECT_THAT(all, Not(HasSubstr(web::RecoveryDigest(code))));
    }
    EXPECT_THAT(m_log, HasSubstr(R"("event":"totp_added","login":"Admin")"));
    const json entries = Run(admin, "audit/list", {{"noun", "console"}, {"limit", 1}});
    EXPECT_EQ(entries.at("rows").at(0).at("command"), "console totp add Admin");
}

} // namespace
