#include "ServerFixture.h"
#include "management/Query.h"
#include "tests/servers/Servers.h"
#include "web/Totp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

using namespace web;
using nlohmann::json;

namespace {

/// The console on a new directory of the engine that the parameter names.
class WebOnEngineTest : public ServerFixture, public testing::WithParamInterface<const char*> {
protected:
    [[nodiscard]] std::string Url() const override
    {
        if (m_url.empty()) {
            m_url = GetParam() == std::string("sqlite") ? ServerFixture::Url() : servers::NewDatabase(GetParam());
        }
        return m_url;
    }

private:
    mutable std::string m_url;
};

TEST_P(WebOnEngineTest, DoesTheMainJobs)
{
    HttpClient client = Signed();
    const std::vector<std::string> texts = {"O'Brien \\ '; DROP TABLE qv_User; --", "日本語 😀", "%_\\'", "<script>"};
    int number = 0;
    for (const std::string& text : texts) {
        const std::string login = "user" + std::to_string(++number);
        Run(client, "user/create", {{"LOGIN", login}, {"name", text}, {"title", text}});
        EXPECT_EQ(Run(client, "user/show", {{"USER", login}}).at("record").at("title"), text);
        const json found = Got(client, "/users?q=login:" + login);
        EXPECT_EQ(found.at("rows").at(0).at("name"), text);
    }
    Run(client, "view/create", {{"NAME", "Company"}});
    Run(client, "group/create", {{"PATH", "/Company/Sales"}});
    Run(client, "member/add", {{"GROUP", "/Company/Sales"}, {"USER", {"user1", "user2"}}});
    EXPECT_EQ(Got(client, "/tree").at("rows").at(0).at("people"), 2);

    const json seen = Run(client, "user/show", {{"USER", "user1"}});
    const json locked = Run(client, "user/lock", {{"USER", {"user1"}}});
    EXPECT_EQ(Got(client, "/users?locked=1").at("total"), 1);
    const json stale = {
        {"parameters", {{"USER", "user1"}, {"title", "x"}}},
        {"if_unchanged",
         {{"command", "user/show"}, {"parameters", {{"USER", "user1"}}}, {"version", seen.at("version")}}}};
    EXPECT_EQ(Ask(client, "user/set", stale).status, 412);
    json undo = {{"parameters", {{"ID", {locked.at("entry")}}}}};
    undo["confirm"] = json::parse(Ask(client, "audit/undo", undo).body).at("plan").at("digest");
    EXPECT_EQ(Ask(client, "audit/undo", undo).status, 200);
    EXPECT_EQ(Got(client, "/users?locked=1").at("total"), 0);
    EXPECT_EQ(Ask(client, "user/set", stale).status, 200);

    ASSERT_EQ(
        client.Post("/api/v1/imports/text", json{{"text", "login,name\nuser1,x\nzoë,O'Zoë\n"}, {"first", true}}.dump())
            .status,
        200);
    const HttpAnswer begun = client.Post(
        "/api/v1/imports", json{{"delimiter", ","}, {"columns", {"login", "name"}}, {"update", true}}.dump());
    ASSERT_EQ(begun.status, 200) << begun.body;
    const json imported = ImportOver(client, json::parse(begun.body).at("job"));
    EXPECT_EQ(imported.at("created"), 1) << imported;
    EXPECT_EQ(imported.at("updated"), 1) << imported;
    EXPECT_EQ(Got(client, "/users?no_password=1&q=O'Zo%C3%AB").at("total"), 1);
    EXPECT_EQ(Got(client, "/users?no_group=1&q=login:user1").at("total"), 0);
    EXPECT_EQ(ProblemsIn(client).size(), 1U);
    EXPECT_EQ(RunLong(client, "audit/verify").at("record").at("first_altered"), nullptr);
}

TEST_P(WebOnEngineTest, KnowsLevelsAndOneTimeCodes)
{
    std::time_t now = 1'500'000'000;
    HttpClient admin = Signed({.wallClock = [&now] { return now; }});
    Run(admin, "user/create", {{"LOGIN", "amy"}});
    Run(admin, "user/password/set", {{"USER", "amy"}, {"password", kPassword}});
    Run(admin, "console/set", {{"USER", "amy"}, {"LEVEL", "help-desk"}});
    HttpClient amy = Client();
    ASSERT_EQ(SignIn(amy, "amy").status, 200);
    EXPECT_EQ(CodeOf(Ask(amy, "user/lock", {{"parameters", {{"USER", {"Admin"}}}}})), "not_allowed");
    const std::string secret = json::parse(amy.Post("/api/v1/session/totp", "{}").body).at("secret");
    const json code = {{"code", TotpCode(secret, static_cast<int>(now / kTotpSeconds))}};
    const HttpAnswer added = amy.Post("/api/v1/session/totp/confirm", code.dump());
    ASSERT_EQ(added.status, 200) << added.body;
    const std::string recovery = json::parse(added.body).at("new_recovery_codes").at(9);
    EXPECT_EQ(CodeOf(SignIn(amy, "amy")), "code_required");
    json given = {{"login", "amy"}, {"password", kPassword}, {"code", code.at("code")}};
    EXPECT_EQ(CodeOf(amy.Post("/api/v1/session", given.dump())), "wrong_code");
    given["code"] = recovery;
    EXPECT_EQ(amy.Post("/api/v1/session", given.dump()).status, 200);
    EXPECT_EQ(CodeOf(amy.Post("/api/v1/session", given.dump())), "wrong_code");
    const json listed = Run(admin, "console/list", json::object()).at("rows");
    ASSERT_EQ(listed.size(), 2U);
    EXPECT_EQ(listed.at(1).at("level"), "help-desk");
    EXPECT_EQ(listed.at(1).at("recovery_codes"), 9);
    // Who is a super user is changed only with the password given again, whatever the engine.
    Start({.sessions = {.confirmation = std::chrono::seconds(0)}});
    HttpClient again = Client();
    ASSERT_EQ(SignIn(again).status, 200);
    EXPECT_EQ(CodeOf(Ask(again, "user/set", {{"parameters", {{"USER", "amy"}, {"super", true}}}})),
              "password_required");
    EXPECT_EQ(Ask(again, "user/set", {{"parameters", {{"USER", "amy"}, {"title", "x"}}}}).status, 200);
}

TEST_P(WebOnEngineTest, ChangesManyTogetherAndDeletesByPlan)
{
    HttpClient client = Signed();
    Run(client, "view/create", {{"NAME", "Company"}});
    Run(client, "group/create", {{"PATH", "/Company/Sales"}});
    Run(client, "group/create", {{"PATH", "/Company/Legal"}});
    Run(client, "role/create", {{"NAME", "Editors"}});
    Run(client, "plan/create", {{"NAME", "Weekly"}});
    for (int i = 0; i < 30; ++i) {
        Run(client, "user/create", {{"LOGIN", "clerk" + std::to_string(i)}, {"department", "/Company/Sales"}});
    }
    const json sales = Got(client, "/tree/find?q=Sales").at("rows").at(0).at("key");
    const json list = Got(client, "/users?in=" + sales.get<std::string>());
    EXPECT_EQ(list.at("total"), 30);
    const json all = {{"result", list.at("result")}, {"except", {list.at("rows").at(0).at("id")}}};
    Run(client, "user/set", {{"USER", all}, {"title", "Prüfer"}});
    EXPECT_EQ(Got(client, "/users?q=pr%C3%BCfer").at("total"), 29);
    Run(client, "role/add", {{"ROLE", "Editors"}, {"USER", all}});
    Run(client, "plan/assign", {{"PLAN", "Weekly"}, {"ITEM", all}});
    const json moved = Run(client, "user/move", {{"USER", all}, {"TO", "/Company/Legal"}});
    EXPECT_EQ(Got(client, "/users?in=" + sales.get<std::string>()).at("total"), 1);
    EXPECT_EQ(Run(client, "user/password/set", {{"USER", all}, {"generate", true}}).at("passwords").size(), 29U);
    EXPECT_EQ(Got(client, "/overview").at("no_password"), 1);

    json remove = {{"parameters", {{"USER", all}}}};
    const HttpAnswer asked = Ask(client, "user/delete", remove);
    EXPECT_EQ(CodeOf(asked), "confirmation_required");
    Run(client, "user/set", {{"USER", "clerk29"}, {"note", "which the plan does not name"}});
    remove["confirm"] = json::parse(asked.body).at("plan").at("digest");
    const json removed = json::parse(Ask(client, "user/delete", remove).body);
    ASSERT_TRUE(removed.contains("entry")) << removed;
    EXPECT_EQ(Got(client, "/users").at("total"), 2);
    json undo = {{"parameters", {{"ID", {removed.at("entry")}}}}};
    undo["confirm"] = json::parse(Ask(client, "audit/undo", undo).body).at("plan").at("digest");
    EXPECT_EQ(Ask(client, "audit/undo", undo).status, 200);
    EXPECT_EQ(Got(client, "/users").at("total"), 31);
    EXPECT_EQ(Run(client, "plan/show", {{"PLAN", "Weekly"}}).at("record").at("users"), 29);
    EXPECT_EQ(RunLong(client, "audit/verify").at("record").at("first_altered"), nullptr);
}

TEST_P(WebOnEngineTest, ShowsFoldersAndRights)
{
    HttpClient client = Signed();
    Run(client, "docroot/create", {{"NAME", "Company"}, {"path", "/srv/company"}});
    Run(client, "folder/create", {{"PATH", "/Company/Pläne"}});
    Run(client, "folder/create", {{"PATH", "/Company/Pläne/O'Brien"}});
    const json roots = Run(client, "folder/tree", {{"depth", 1}}).at("rows");
    EXPECT_EQ(roots.at(1).at("name"), "Pläne");
    const json below = Run(client, "folder/list", {{"PATH", "id:" + roots.at(1).at("id").dump()}}).at("rows");
    EXPECT_EQ(below.at(0).at("name"), "O'Brien");
    Run(client, "role/create", {{"NAME", "Editors"}});
    Run(client, "objright/grant",
        {{"ITEM", "role:Editors"},
         {"CLASS", "105"},
         {"OBJECT", roots.at(1).at("id").dump()},
         {"GENRE", "doc"},
         {"FUNCTION", "read"},
         {"POWER", "4"}});
    const json rights =
        Run(client, "objright/list", {{"CLASS", "105"}, {"OBJECT", roots.at(1).at("id").dump()}}).at("rows");
    EXPECT_EQ(rights.at(0).at("holder"), "Editors");
}

TEST_P(WebOnEngineTest, HearsOfOtherConsoles)
{
    HttpClient client = Signed();
    const std::string greeting = client.Get("/api/v1/events").body;
    const std::size_t begin = greeting.find("id: ") + 4;
    EXPECT_EQ(Got(client, "/users").at("total"), 1);
    Server other(
        [this] {
            auto conn = std::make_shared<CAConnect>();
            conn->Open(Url().c_str());
            return conn;
        },
        {});
    HttpClient alien(other.Port());
    ASSERT_EQ(SignIn(alien).status, 200);
    Run(alien, "user/create", {{"LOGIN", "amy"}});
    client.headers["Last-Event-ID"] = greeting.substr(begin, greeting.find('\n', begin) - begin);
    EXPECT_THAT(client.Get("/api/v1/events").body, testing::HasSubstr("event: changed"));
    EXPECT_EQ(Got(client, "/users").at("total"), 2);
}

/// Engines that are servers, whose connections can be lost.
class WebOnServerTest : public WebOnEngineTest {};

TEST_P(WebOnServerTest, OpensAnewWhatWasLost)
{
    HttpClient client = Signed();
    const bool isPostgresql = GetParam() == std::string("postgresql");
    std::vector<int> sessions;
    management::EachRow(m_conn,
                        isPostgresql ? "SELECT pid FROM pg_stat_activity WHERE datname = current_database() AND pid <> "
                                       "pg_backend_pid()"
                                     : "SELECT id FROM information_schema.processlist WHERE db = database() AND id <> "
                                       "connection_id()",
                        [&sessions](CARecordset& row) { sessions.push_back(management::NumberIn(row, 1)); });
    ASSERT_GE(sessions.size(), 2U);
    for (const int session : sessions) {
        management::Execute(m_conn,
                            (isPostgresql ? "SELECT pg_terminate_backend(" : "KILL (") + std::to_string(session) + ")");
    }
    const json create = {{"parameters", {{"LOGIN", "amy"}}}};
    const HttpAnswer lost = Ask(client, "user/create", create);
    EXPECT_EQ(lost.status, 503);
    EXPECT_EQ(CodeOf(lost), "database");
    EXPECT_EQ(Ask(client, "user/create", create).status, 200);
    static_cast<void>(client.Get("/api/v1/users"));
    EXPECT_EQ(Got(client, "/users").at("total"), 2);
}

const auto kNameOf = [](const testing::TestParamInfo<const char*>& engine) { return std::string(engine.param); };

INSTANTIATE_TEST_SUITE_P(Engines, WebOnEngineTest, testing::Values("sqlite", "postgresql", "mariadb"), kNameOf);
INSTANTIATE_TEST_SUITE_P(Servers, WebOnServerTest, testing::Values("postgresql", "mariadb"), kNameOf);

} // namespace
