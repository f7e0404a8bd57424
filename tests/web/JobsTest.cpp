#include "web/Jobs.h"

#include "ServerFixture.h"
#include "dbaccess/CARecordset.h"
#include "management/Query.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <set>
#include <string>
#include <thread>
#include <vector>

using namespace std::chrono_literals;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// What runs long, and what is done with many people, as jobs.

namespace {

constexpr int kClerks = 450; ///< more than two parts

class JobsTest : public ServerFixture {
protected:
    HttpClient SignedWithClerks()
    {
        HttpClient client = Signed();
        management::Execute(m_conn,
                            fmt::format("INSERT INTO qv_User (Col_LoginName, Col_Name) WITH RECURSIVE n(n) AS "
                                        "(SELECT 1 UNION ALL SELECT n + 1 FROM n WHERE n < {}) SELECT 'clerk' || "
                                        "n, 'Clerk ' || n FROM n",
                                        kClerks));
        return client;
    }
    static json Clerks(HttpClient& client) { return {{"result", Got(client, "/users?q=clerk").at("result")}}; }
    static json Begun(HttpClient& client, const std::string& command, json body)
    {
        body["job"] = true;
        const HttpAnswer answer = Ask(client, command, body);
        EXPECT_EQ(answer.status, 200) << answer.body;
        return json::parse(answer.body).at("job");
    }
    static std::string Report(HttpClient& client, const json& job, const std::string& more = "")
    {
        return client.Get("/api/v1/jobs/report?id=" + job.at("id").dump() + more).body;
    }
    [[nodiscard]] int Count(const std::string& what)
    {
        return management::Number(m_conn, "SELECT COUNT(*) FROM " + what);
    }
};

TEST_F(JobsTest, EveryCommandThatRunsLongIsAJob)
{
    HttpClient client = Signed();
    const std::map<std::string, json> parameters = {{"message/purge", {{"before", "2020-01-01"}}}};
    std::set<std::string> run;
    for (const management::Command& command : management::Commands()) {
        if (!web::HasRoute(command) || command.duration != management::Duration::longRunning) {
            continue;
        }
        const auto given = parameters.find(PathOf(command));
        const HttpAnswer answer =
            Ask(client, PathOf(command), {{"parameters", given == parameters.end() ? json::object() : given->second}});
        ASSERT_EQ(answer.status, 200) << PathOf(command) << answer.body;
        const json job = json::parse(answer.body).at("job");
        EXPECT_EQ(job.at("what"), web::PathText(command));
        const json stand = JobOver(client, job);
        EXPECT_EQ(JobAnswer(client, job).status, 200) << PathOf(command);
        run.insert(PathOf(command));
        if (PathOf(command) == "db/check" || PathOf(command) == "audit/verify") {
            // It has told how far it was, before the last part.
            EXPECT_GT(stand.at("total"), stand.at("done")) << PathOf(command);
        }
    }
    EXPECT_TRUE(run.contains("message/purge"));
    EXPECT_TRUE(run.contains("db/check"));
    EXPECT_TRUE(run.contains("audit/verify"));
}

TEST_F(JobsTest, LookingWhatCanBeMendedSaysHowFarItIs)
{
    HttpClient client = Signed();
    management::Execute(m_conn,
                        "INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) "
                        "VALUES (77, 2, 88, 1)");
    json body = {{"parameters", {{"fix", true}}}};
    json job = json::parse(Ask(client, "db/check", body).body).at("job");
    json stand = JobOver(client, job);
    EXPECT_GT(stand.at("total"), stand.at("done"));
    body["confirm"] = json::parse(JobAnswer(client, job).body).at("plan").at("digest");
    job = json::parse(Ask(client, "db/check", body).body).at("job");
    EXPECT_GT(JobOver(client, job).at("total"), 0);
    EXPECT_EQ(JobAnswer(client, job).status, 200);
    EXPECT_EQ(Count("qv_Relation"), 0);
}

TEST_F(JobsTest, ProblemsAreLookedForBesideCommands)
{
    HttpClient client = Signed();
    const json job = json::parse(Ask(client, "db/check", json::object()).body).at("job");
    EXPECT_EQ(job.at("what"), "db check");
    const json stand = JobOver(client, job);
    EXPECT_EQ(stand.at("can_stop"), false);
    EXPECT_GT(stand.at("total"), stand.at("done"));
    EXPECT_TRUE(json::parse(JobAnswer(client, job).body).at("rows").is_array());
}

TEST_F(JobsTest, ManyAreChangedInPartsThatAreUndoneTogether)
{
    HttpClient client = SignedWithClerks();
    const int entries = Count("qv_AuditEntry");
    const json job = Begun(client, "user/lock", {{"parameters", {{"USER", Clerks(client)}}}});
    const json stand = JobOver(client, job);
    EXPECT_EQ(stand.at("done"), kClerks);
    EXPECT_EQ(stand.at("total"), kClerks);
    EXPECT_EQ(stand.at("failed"), 0);
    const json answer = json::parse(JobAnswer(client, job).body);
    EXPECT_EQ(answer.at("outcomes").size(), kClerks);
    EXPECT_EQ(Count("qv_User WHERE Col_Disabled <> 0"), kClerks);
    EXPECT_EQ(Count("qv_AuditEntry"), entries + 3);
    EXPECT_EQ(Got(client, "/users?q=clerk&locked=1").at("total"), kClerks);
    const std::string report = Report(client, job);
    EXPECT_EQ(std::ranges::count(report, '\n'), kClerks + 1);
    EXPECT_THAT(report, StartsWith("type,id,name,outcome,message\nuser,"));
    // An answer is given once: it may hold passwords.
    EXPECT_EQ(JobAnswer(client, job).status, 409);

    const json ids = {{"parameters", {{"ID", json::array({answer.at("entry")})}}}};
    json plan = json::parse(Ask(client, "audit/undo", ids).body);
    json agreed = ids;
    agreed["confirm"] = plan.at("plan").at("digest");
    EXPECT_EQ(Ask(client, "audit/undo", agreed).status, 200);
    EXPECT_EQ(Count("qv_User WHERE Col_Disabled <> 0"), 0);
}

TEST_F(JobsTest, WhoCannotBeChangedIsReportedAndLeftOut)
{
    HttpClient client = SignedWithClerks();
    // A password goes by login name, so that two of one name get none.
    management::Execute(m_conn, "INSERT INTO qv_User (Col_LoginName, Col_Name) VALUES ('clerk300', 'Clerk the other')");
    const json job =
        Begun(client, "user/password/set", {{"parameters", {{"USER", Clerks(client)}, {"generate", true}}}});
    EXPECT_EQ(JobOver(client, job).at("failed"), 2);
    const json answer = json::parse(JobAnswer(client, job).body);
    EXPECT_EQ(answer.at("passwords").size(), kClerks - 1);
    EXPECT_EQ(Count("qv_User WHERE Col_PWord <> ''"), kClerks - 1 + 1);
    const std::string failed = Report(client, job, "&failed=1");
    EXPECT_EQ(std::ranges::count(failed, '\n'), 3);
    EXPECT_THAT(failed, HasSubstr("2 users have the login name of clerk300"));
}

TEST_F(JobsTest, RemovalIsAskedForOnceAndDoneOnlyAsAgreed)
{
    HttpClient client = SignedWithClerks();
    json body = {{"parameters", {{"USER", Clerks(client)}}}};
    const json refused = json::parse(JobAnswer(client, Begun(client, "user/delete", body)).body);
    EXPECT_EQ(refused.at("code"), "confirmation_required");
    EXPECT_EQ(refused.at("plan").at("removed"), kClerks);
    EXPECT_EQ(Count("qv_User"), kClerks + 1);
    body["confirm"] = refused.at("plan").at("digest");

    Run(client, "view/create", {{"NAME", "Company"}});
    Run(client, "group/create", {{"PATH", "/Company/Sales"}});
    Run(client, "member/add", {{"GROUP", "/Company/Sales"}, {"USER", json::array({"clerk440"})}});
    EXPECT_EQ(json::parse(JobAnswer(client, Begun(client, "user/delete", body)).body).at("code"), "plan_changed");
    EXPECT_EQ(Count("qv_User"), kClerks + 1);

    const json again = json::parse(JobAnswer(client, Begun(client, "user/delete", body)).body);
    body["confirm"] = again.at("plan").at("digest");
    const json job = Begun(client, "user/delete", body);
    EXPECT_EQ(JobAnswer(client, job).status, 200);
    EXPECT_EQ(Count("qv_User"), 1);
}

TEST_F(JobsTest, PasswordsThatAreMadeUpAreForWhoAskedForThem)
{
    HttpClient client = SignedWithClerks();
    const json job =
        Begun(client, "user/password/set", {{"parameters", {{"USER", Clerks(client)}, {"generate", true}}}});
    Run(client, "user/create", {{"LOGIN", "amy"}, {"super", true}});
    Run(client, "user/password/set", {{"USER", "amy"}, {"password", kPassword}});
    HttpClient other = Client();
    ASSERT_EQ(SignIn(other, "amy").status, 200);
    EXPECT_EQ(JobOver(other, job).at("own"), false);
    EXPECT_EQ(other.Post("/api/v1/jobs/answer", json{{"id", job.at("id")}}.dump()).status, 403);
    const json answer = json::parse(JobAnswer(client, job).body);
    ASSERT_EQ(answer.at("passwords").size(), kClerks);
    EXPECT_THAT(Report(client, job), Not(HasSubstr(answer.at("passwords").at(0).at("password").get<std::string>())));
    Run(client, "user/password/check",
        {{"USER", answer.at("passwords").at(449).at("login")},
         {"password", answer.at("passwords").at(449).at("password")}});
}

TEST_F(JobsTest, AreSeenByAllAndStoppedByTheirOwnerAndByAdministrators)
{
    HttpClient client = SignedWithClerks();
    Run(client, "user/create", {{"LOGIN", "helper"}});
    Run(client, "user/password/set", {{"USER", "helper"}, {"password", kPassword}});
    Run(client, "console/set", {{"USER", "helper"}, {"LEVEL", "help-desk"}});
    HttpClient helper = Client();
    ASSERT_EQ(SignIn(helper, "helper").status, 200);
    const json job = Begun(client, "user/lock", {{"parameters", {{"USER", Clerks(client)}}}});
    EXPECT_EQ(helper.Post("/api/v1/jobs/stop", json{{"id", job.at("id")}}.dump()).status, 404);
    EXPECT_EQ(JobNow(helper, job).at("what"), "user lock");
    EXPECT_EQ(helper.Get("/api/v1/jobs/report?id=" + job.at("id").dump()).status, 404);
    JobOver(client, job);
    EXPECT_EQ(Ask(helper, "db/check", {{"parameters", {{"fix", true}}}}).status, 403);
    EXPECT_EQ(Got(helper, "/jobs").at("jobs").at(0).at("login"), "Admin");
}

TEST_F(JobsTest, TheHelpDeskChangesNoSuperUserInAPart)
{
    HttpClient client = SignedWithClerks();
    Run(client, "user/create", {{"LOGIN", "helper"}});
    Run(client, "user/password/set", {{"USER", "helper"}, {"password", kPassword}});
    Run(client, "console/set", {{"USER", "helper"}, {"LEVEL", "help-desk"}});
    management::Execute(m_conn, "UPDATE qv_User SET Col_IsSuper = 1 WHERE Col_LoginName = 'clerk9'");
    HttpClient helper = Client();
    ASSERT_EQ(SignIn(helper, "helper").status, 200);
    const json job = Begun(helper, "user/lock", {{"parameters", {{"USER", Clerks(helper)}}}});
    EXPECT_EQ(CodeOf(JobAnswer(helper, job)), "not_allowed");
    EXPECT_EQ(Count("qv_User WHERE Col_Disabled <> 0"), 0);
}

TEST_F(JobsTest, APurgeSaysHowFarItIs)
{
    HttpClient client = Signed();
    management::Execute(m_conn,
                        "INSERT INTO kel_Msg (Col_SendDate) WITH RECURSIVE n(n) AS (SELECT 1 UNION ALL SELECT n + "
                        "1 FROM n WHERE n < 500) SELECT '2010-01-01 00:00:00' FROM n");
    json body = {{"parameters", {{"before", "2020-01-01"}, {"batch", 100}}}};
    const json refused = json::parse(JobAnswer(client, Begun(client, "message/purge", body)).body);
    body["confirm"] = refused.at("plan").at("digest");
    const json job = Begun(client, "message/purge", body);
    const json stand = JobOver(client, job);
    EXPECT_EQ(stand.at("done"), 500);
    EXPECT_EQ(stand.at("total"), 500);
    EXPECT_EQ(Count("kel_Msg"), 0);
}

TEST_F(JobsTest, AnExportIsAFileOfWhoBeganItWithoutPasswords)
{
    HttpClient client = SignedWithClerks();
    Run(client, "user/create", {{"LOGIN", "amy"}, {"super", true}});
    Run(client, "user/password/set", {{"USER", "amy"}, {"password", kPassword}});
    HttpClient other = Client();
    ASSERT_EQ(SignIn(other, "amy").status, 200);
    std::vector<std::string> stored;
    management::EachRow(m_conn, "SELECT Col_PWord FROM qv_User WHERE Col_PWord <> ''",
                        [&](CARecordset& row) { stored.push_back(management::TextIn(row, 1)); });
    ASSERT_EQ(stored.size(), 2U);
    const std::map<std::string, std::string> beginnings = {
        {"csv", "login,"}, {"json", R"({"format":"qvadmin directory")"}, {"ldif", "version: 1"}};
    for (const auto& [format, beginning] : beginnings) {
        json body = {{"format", format}};
        if (format == "ldif") {
            body["base"] = "dc=example,dc=org";
        }
        const HttpAnswer begun = client.Post("/api/v1/exports", body.dump());
        ASSERT_EQ(begun.status, 200) << begun.body;
        const json job = json::parse(begun.body).at("job");
        EXPECT_EQ(JobOver(client, job).at("file"), true) << format;
        const std::string path = "/api/v1/jobs/file?id=" + job.at("id").dump();
        const HttpAnswer file = client.Get(path);
        EXPECT_THAT(file.body, StartsWith(beginning));
        EXPECT_THAT(file.body, HasSubstr("clerk450"));
        for (const std::string& one : stored) {
            EXPECT_THAT(file.body, Not(HasSubstr(one)));
        }
        EXPECT_THAT(file.head, HasSubstr("attachment; filename=\"directory."));
        EXPECT_EQ(client.Get(path).body, file.body) << "a file stays";
        EXPECT_EQ(other.Get(path).status, 404);
    }
    for (const json& wrong :
         {json{{"format", "xml"}}, json{{"format", "csv"}, {"base", "dc=x"}}, json{{"with_passwords", true}}}) {
        EXPECT_EQ(client.Post("/api/v1/exports", wrong.dump()).status, 422) << wrong;
    }
}

// ---- A job by itself ------------------------------------------------------------------------------------------------

TEST(JobTest, LetsOthersInBetweenAndStops)
{
    web::Job job(1, {"user lock", "Admin", [](CAConnect&, web::JobControl& control) {
                         for (int i = 0; i < 3 && !control.IsStopRequested(); ++i) {
                             control.ShowProgress(i, 3);
                         }
                         return web::Response{200, "application/json", control.IsStopRequested() ? "stopped" : "whole"};
                     }});
    CAConnect conn;
    int turns = 0;
    job.Run(conn, {[&] {
                       job.Stop();
                       ++turns;
                   },
                   [](const web::Written&) {}, [] { return false; }});
    EXPECT_EQ(turns, 1);
    EXPECT_TRUE(job.IsOver());
    EXPECT_EQ(job.TakeAnswer()->body, "stopped");
    EXPECT_FALSE(job.TakeAnswer().has_value());
}

TEST(JobTest, EndsWithTheServer)
{
    web::Job job(1, {"user lock", "Admin", [](CAConnect&, web::JobControl& control) {
                         return web::Response{200, "", control.IsStopRequested() ? "stopped" : "whole"};
                     }});
    CAConnect conn;
    job.Run(conn, {[] {}, [](const web::Written&) {}, [] { return true; }});
    EXPECT_EQ(job.TakeAnswer()->body, "stopped");
}

TEST(JobsListTest, KeepsEightAndRefusesMoreThatWait)
{
    web::Jobs jobs;
    for (int i = 0; i < 8; ++i) {
        jobs.Add({"user lock", "Admin", {}});
    }
    EXPECT_THROW(jobs.Add({"user lock", "Admin", {}}), management::Error);
    jobs.Find(3)->Fail({500, "", ""});
    EXPECT_EQ(jobs.Add({"user lock", "Admin", {}})->Id(), 9);
    EXPECT_EQ(jobs.Find(3), nullptr);
    EXPECT_EQ(jobs.All().front()->Id(), 9);
}

} // namespace
