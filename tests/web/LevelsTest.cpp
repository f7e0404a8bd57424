#include "ServerFixture.h"
#include "management/Command.h"
#include "management/Query.h"
#include "web/CommandRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <set>
#include <string>
#include <thread>

using namespace std::chrono_literals;
using management::Command;
using management::Effect;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

// What administrators who are not super users may do.

namespace {

constexpr const char* kHelper = "helper";
constexpr const char* kReader = "reader";

class LevelsTest : public ServerFixture {
protected:
    /// A server with an administrator of each level.
    void StartWithLevels()
    {
        m_admin.emplace(Signed());
        for (const auto& [login, level] : {std::pair{kHelper, "help-desk"}, std::pair{kReader, "read-only"}}) {
            Run(*m_admin, "user/create", {{"LOGIN", login}});
            Run(*m_admin, "user/password/set", {{"USER", login}, {"password", kPassword}});
            Run(*m_admin, "console/set", {{"USER", login}, {"LEVEL", level}});
        }
        Run(*m_admin, "user/create", {{"LOGIN", "amy"}});
        m_helper.emplace(SignedAs(kHelper));
        m_reader.emplace(SignedAs(kReader));
    }

    /// The same directory on a server that asks for the password each time that it may.
    void StartSuspicious()
    {
        Start({.sessions = {.confirmation = 0s}});
        m_admin.emplace(SignedAs("Admin"));
        m_helper.emplace(SignedAs(kHelper));
    }

    HttpClient SignedAs(const std::string& login)
    {
        HttpClient client = Client();
        EXPECT_EQ(SignIn(client, login).status, 200) << login;
        return client;
    }

    std::optional<HttpClient> m_admin;
    std::optional<HttpClient> m_helper;
    std::optional<HttpClient> m_reader;
};

TEST_F(LevelsTest, EveryCommandIsForItsLevels)
{
    StartWithLevels();
    const std::set<std::string> ofHelpDesk = {"user/lock", "user/unlock", "user/password/set"};
    for (const Command& command : management::Commands()) {
        if (!web::HasRoute(command)) {
            continue;
        }
        const std::string path = PathOf(command);
        const bool isForHelper = ofHelpDesk.contains(path);
        // What may also be only asked is refused by what it is asked with.
        const bool isForReader =
            (command.effect == Effect::read && path != "user/password/check") || command.handler.isQuestion != nullptr;
        // What may be run is refused for its parameter, and what may not be run for that alone.
        const json body = {{"parameters", {{"no_such_parameter", "x"}}}};
        for (const auto& [client, isAllowed] :
             {std::pair{&*m_reader, isForReader}, std::pair{&*m_helper, isForReader || isForHelper},
              std::pair{&*m_admin, true}}) {
            const HttpAnswer answer = Ask(*client, path, body);
            EXPECT_EQ(answer.status, isAllowed ? 422 : 403) << path << answer.body;
            if (!isAllowed) {
                EXPECT_EQ(CodeOf(answer), "not_allowed") << path;
                EXPECT_THAT(answer.body,
                            HasSubstr(web::PathText(command) + " is not for an administrator of the level "))
                    << path;
            }
        }
        LetPass(1s); // the allowance of requests
    }
}

TEST_F(LevelsTest, ACommandThatIsOnlyAskedIsForWhoReads)
{
    StartWithLevels();
    std::set<std::string> asked;
    for (const Command& command : management::Commands()) {
        if (web::HasRoute(command) && command.handler.isQuestion != nullptr) {
            const std::string path = PathOf(command);
            asked.insert(path);
            const HttpAnswer answer = Ask(*m_reader, path, json::object());
            // What it lacks may be refused, and its level is not.
            EXPECT_NE(answer.status, 403) << path << answer.body;
        }
    }
    EXPECT_TRUE(asked.contains("db/check"));
    EXPECT_TRUE(Run(*m_reader, "setting/threads", json::object()).contains("record") ||
                Run(*m_reader, "setting/threads", json::object()).contains("rows"));
    const HttpAnswer refusal = Ask(*m_reader, "db/check", {{"parameters", {{"fix", true}}}});
    EXPECT_EQ(refusal.status, 403);
    EXPECT_EQ(CodeOf(refusal), "not_allowed");
}

TEST_F(LevelsTest, OnlyWhatMayBeRunIsOffered)
{
    StartWithLevels();
    const auto pathsFor = [](HttpClient& client) {
        std::set<std::string> paths;
        const json table = Got(client, "/commands");
        for (const json& command : table.at("commands")) {
            std::string path;
            for (const json& word : command.at("path")) {
                path += (path.empty() ? "" : " ") + word.get<std::string>();
            }
            paths.insert(path + " " + command.at("effect").get<std::string>());
        }
        return paths;
    };
    const std::set<std::string> read = pathsFor(*m_reader);
    EXPECT_TRUE(read.contains("user list read"));
    EXPECT_FALSE(read.contains("user password check read"));
    for (const std::string& path : read) {
        EXPECT_TRUE(path.ends_with(" read")) << path;
    }
    std::set<std::string> helped = pathsFor(*m_helper);
    std::erase_if(helped, [&read](const std::string& path) { return read.contains(path); });
    EXPECT_THAT(helped, ElementsAre("user lock change", "user password set change", "user unlock change"));
    EXPECT_TRUE(pathsFor(*m_admin).contains("console set change"));
    EXPECT_EQ(Got(*m_reader, "/session").at("level"), "read-only");
    EXPECT_EQ(Got(*m_helper, "/session").at("level"), "help-desk");
    EXPECT_EQ(Got(*m_admin, "/session").at("level"), "full");
}

TEST_F(LevelsTest, RoutesBesideCommandsAreForTheirLevels)
{
    StartWithLevels();
    for (const std::string path : {"/users", "/tree", "/tree/find?q=a", "/overview", "/imports", "/jobs"}) {
        EXPECT_EQ(m_reader->Get("/api/v1" + path).status, 200) << path;
    }
    EXPECT_EQ(m_reader->Post("/api/v1/users/find", R"({"names":["amy"]})").status, 200);
    for (HttpClient* client : {&*m_reader, &*m_helper}) {
        for (const std::string path : {"/imports/text", "/imports/look", "/imports", "/exports"}) {
            const HttpAnswer answer = client->Post("/api/v1" + path, "{}");
            EXPECT_EQ(answer.status, 403) << path;
            EXPECT_EQ(CodeOf(answer), "not_allowed") << path;
        }
    }
}

TEST_F(LevelsTest, TheHelpDeskChangesNoSuperUser)
{
    StartWithLevels();
    const auto state = [this] {
        return management::Number(m_conn, "SELECT COUNT(*) FROM qv_AuditEntry") * 10 +
               management::Number(m_conn, "SELECT SUM(Col_Disabled) FROM qv_User");
    };
    Run(*m_helper, "user/lock", {{"USER", {"amy"}}});
    Run(*m_helper, "user/unlock", {{"USER", {"amy"}}});
    Run(*m_helper, "user/password/set", {{"USER", {"amy"}}, {"password", "another long password"}});
    const int before = state();
    const std::vector<std::pair<std::string, json>> refused = {
        {"user/lock", {{"USER", {"Admin"}}}},
        {"user/lock", {{"USER", {"amy", "admin"}}}},
        {"user/lock", {{"USER", {"id:1", "amy"}}}},
        {"user/unlock", {{"USER", {"Admin"}}}},
        // The password that Admin has, lest the answer tell that it is right, and another one.
        {"user/password/set", {{"USER", {"Admin"}}, {"password", kPassword}}},
        {"user/password/set", {{"USER", {"Admin"}}, {"password", "another long password"}}},
        {"user/password/set", {{"USER", {"Admin"}}, {"generate", true}}}};
    for (const auto& [command, parameters] : refused) {
        for (const bool dryRun : {true, false}) {
            const HttpAnswer answer = Ask(*m_helper, command, {{"parameters", parameters}, {"dry_run", dryRun}});
            EXPECT_EQ(answer.status, 403) << command << parameters << answer.body;
            EXPECT_THAT(answer.body, HasSubstr("Admin is a super user, whom an administrator of the level help-desk "
                                               "may not change; nothing was changed"))
                << command << parameters;
        }
    }
    // Selected, and confirmed.
    json body = {{"parameters", {{"where", {"login~a"}}}}};
    const HttpAnswer plan = Ask(*m_helper, "user/lock", body);
    ASSERT_EQ(plan.status, 409) << plan.body;
    body["confirm"] = json::parse(plan.body).at("plan").at("digest");
    EXPECT_EQ(CodeOf(Ask(*m_helper, "user/lock", body)), "not_allowed");
    EXPECT_EQ(state(), before);
    EXPECT_EQ(Run(*m_admin, "user/lock", {{"USER", {"amy"}}}).at("changed"), true);
}

TEST_F(LevelsTest, TheHelpDeskGivesItsPasswordAgain)
{
    StartWithLevels();
    StartSuspicious();
    EXPECT_EQ(CodeOf(Ask(*m_helper, "user/password/set",
                         {{"parameters", {{"USER", {"amy"}}, {"password", "another long password"}}}})),
              "password_required");
}

TEST_F(LevelsTest, EveryRiskyCommandWantsThePasswordAgain)
{
    StartWithLevels();
    StartSuspicious();
    int count = 0;
    for (const Command& command : management::Commands()) {
        if (web::HasRoute(command) && command.risk == management::Risk::stepUp) {
            ++count;
            EXPECT_EQ(CodeOf(Ask(*m_admin, PathOf(command), json::object())), "password_required") << PathOf(command);
        }
    }
    EXPECT_GE(count, 5);
}

TEST_F(LevelsTest, ACommandThatIsNotForTheLevelIsNoCondition)
{
    StartWithLevels();
    const json condition = {{"command", "user/password/check"},
                            {"parameters", {{"USER", "Admin"}, {"password", kPassword}}},
                            {"version", "x"}};
    EXPECT_EQ(Ask(*m_helper, "user/lock", {{"parameters", {{"USER", {"amy"}}}}, {"if_unchanged", condition}}).status,
              422);
}

TEST_F(LevelsTest, AnotherLevelEndsTheSession)
{
    StartWithLevels();
    Run(*m_admin, "console/set", {{"USER", kHelper}, {"LEVEL", "read-only"}});
    EXPECT_EQ(m_helper->Get("/api/v1/users").status, 401);
    EXPECT_EQ(Ask(*m_helper, "user/lock", {{"parameters", {{"USER", {"amy"}}}}}).status, 401);
    EXPECT_EQ(management::Number(m_conn, "SELECT COUNT(*) FROM qv_User WHERE Col_Disabled <> 0"), 0);
    Run(*m_admin, "console/remove", {{"USER", kReader}});
    EXPECT_EQ(m_reader->Get("/api/v1/users").status, 401);
    EXPECT_THAT(SignIn(*m_reader, kReader).body, HasSubstr("to whom one of them gave a level"));
    Run(*m_admin, "user/set", {{"USER", kHelper}, {"super", true}});
    HttpClient promoted = SignedAs(kHelper);
    EXPECT_EQ(Got(promoted, "/session").at("level"), "full");
}

TEST_F(LevelsTest, WhoMayDoWhatIsChangedOnlyWithThePasswordGivenAgain)
{
    StartWithLevels();
    Run(*m_admin, "console/remove", {{"USER", kReader}});
    const json entries = Run(*m_admin, "audit/list", {{"noun", "console"}, {"limit", 1}});
    StartSuspicious();
    for (const auto& [command, parameters] :
         std::vector<std::pair<std::string, json>>{{"console/set", {{"USER", "amy"}, {"LEVEL", "read-only"}}},
                                                   {"console/remove", {{"USER", kHelper}}},
                                                   {"user/set", {{"USER", "amy"}, {"super", true}}},
                                                   {"user/set", {{"USER", "Admin"}, {"super", false}}},
                                                   {"user/create", {{"LOGIN", "rory"}, {"super", true}}}}) {
        EXPECT_EQ(CodeOf(Ask(*m_admin, command, {{"parameters", parameters}})), "password_required") << command;
    }
    // Undoing asks first, and is asked for the password then.
    json undo = {{"parameters", {{"ID", {entries.at("rows").at(0).at("id")}}}}};
    const HttpAnswer plan = Ask(*m_admin, "audit/undo", undo);
    ASSERT_EQ(plan.status, 409) << plan.body;
    undo["confirm"] = json::parse(plan.body).at("plan").at("digest");
    EXPECT_EQ(CodeOf(Ask(*m_admin, "audit/undo", undo)), "password_required");
    EXPECT_EQ(management::Number(m_conn, "SELECT COUNT(*) FROM qv_User WHERE Col_IsSuper <> 0"), 1);
    EXPECT_EQ(management::Number(m_conn, "SELECT COUNT(*) FROM qv_ConsoleAccount"), 1);
    // All else needs none.
    EXPECT_EQ(Run(*m_admin, "user/set", {{"USER", "Admin"}, {"title", "Boss"}}).at("changed"), true);
}

} // namespace
