#include "management/rights/RightHolders.h"

#include "ConsoleOnEngine.h"
#include "basefun/ItemTypes.h"
#include "management/Query.h"
#include "management/rights/PermissionMask.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <cstdint>
#include <map>
#include <random>

using namespace management;
using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using Words = std::vector<std::string>;
using QuestionKind = Question::Kind;

constexpr int kUsers = 12;

/// Fills a directory with what makes rights go wrong: roles of other applications, roles that are gone, doubled links
/// and rows, default roles missing or there twice, powers of either sign and none.
void MakeWorld(CAConnect& conn, unsigned seed)
{
    std::mt19937 random(seed);
    const auto pick = [&random](int most) { return std::uniform_int_distribution(1, most)(random); };
    for (const char* table : {"qv_User", "qv_Role", "qv_Relation", "qv_ItemAce"}) {
        conn.Execute(fmt::format("DELETE FROM {}", table).c_str());
    }
    for (int id = 1; id <= kUsers; ++id) {
        conn.Execute(
            fmt::format("INSERT INTO qv_User (Col_LoginName, Col_Name) VALUES ('user{0:02}', 'User {0}')", id).c_str());
    }
    for (int id = pick(5); id > 0; --id) {
        conn.Execute(fmt::format("INSERT INTO qv_Role (Col_Name, Col_AppName) VALUES ('{}', '{}')",
                                 pick(3) == 1 ? "everyone" : "role" + std::to_string(id),
                                 pick(4) == 1 ? "Elsewhere" : "Tolvan")
                         .c_str());
    }
    const auto idOf = [&](const char* table) {
        return fmt::format("(SELECT MAX(Col_ID) - {} FROM {})", pick(7) - 2, table);
    };
    for (int i = pick(25); i > 0; --i) {
        conn.Execute(fmt::format("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, "
                                 "Col_DQvItemType, Col_RelType) SELECT COALESCE({}, 1), {}, (SELECT MAX(Col_ID) - {} "
                                 "FROM qv_User), {}, {} FROM qv_User WHERE Col_LoginName = 'user01'",
                                 idOf("qv_Role"), pick(5) == 1 ? kItemTypeGroup : kItemTypeRole, pick(kUsers) - 1,
                                 pick(8) == 1 ? kItemTypeGroup : kItemTypeUser, pick(2))
                         .c_str());
    }
    constexpr const char* powers[] = {"-1", "-2", "0", "1", "2", "4", "7", "8", "50", "2147483647", "NULL"};
    for (int i = pick(8) - 1; i > 0; --i) {
        const std::string holder = pick(4) == 1 ? "0" : fmt::format("COALESCE({}, 0)", idOf("qv_Role"));
        conn.Execute(fmt::format("INSERT INTO qv_ItemAce (Col_QvItemID, Col_QvItemType, Col_FunGenre, Col_FunName, "
                                 "Col_Power, Col_UnPower) SELECT {}, {}, 'mail', '{}', {}, 0 FROM qv_User WHERE "
                                 "Col_LoginName = 'user01'",
                                 holder, pick(6) == 1 ? kItemTypeUser : kItemTypeRole, pick(3) == 1 ? "other" : "send",
                                 powers[pick(static_cast<int>(std::size(powers))) - 1])
                         .c_str());
    }
}

std::map<int, std::int64_t> Verdicts(CAConnect& conn, const Question& question,
                                     const std::function<bool(std::int64_t)>& isWanted)
{
    std::map<int, std::int64_t> verdicts;
    RightHolders(conn, "mail", "send", question).ListUsers(isWanted, [&verdicts](const RightHolder& holder) {
        EXPECT_TRUE(verdicts.emplace(holder.user.id, holder.verdict).second);
        return true;
    });
    return verdicts;
}

std::map<int, std::int64_t> Explained(CAConnect& conn, const std::vector<int>& users, const Question& question,
                                      const std::function<bool(std::int64_t)>& isWanted)
{
    std::map<int, std::int64_t> verdicts;
    for (const int user : users) {
        const Explanation explanation = Explain(conn, user, "mail", "send", question);
        if (isWanted(explanation.verdict)) {
            verdicts.emplace(user, explanation.verdict);
        }
    }
    return verdicts;
}

class RightHoldersPropertyTest : public ConsoleOnEngine {};

class RightHoldersTest : public ConsoleOnEngine {
protected:
    void SetUp() override
    {
        ConsoleOnEngine::SetUp();
        WriteFile("setup.txt", "user create amy --name 'Amy Holt'\n"
                               "user create rory\n"
                               "user create clara\n"
                               "role default --create\n"
                               "role create Editors\n"
                               "role create Authors\n"
                               "role add Editors amy\n"
                               "role add Authors amy rory\n"
                               "right grant role:Editors mail send 3\n"
                               "right grant role:Authors mail send 2\n"
                               "right grant role:Authors mail size 100\n"
                               "right grant role:Editors mail size unlimited\n"
                               "right grant role:everyone mail read 1\n"
                               "right grant user:clara mail send 1\n");
        ASSERT_EQ(Run({"batch", "setup.txt", "--stop-on-error"}).exit, 0);
    }

    /// Type and name of the rows, and what they say.
    std::vector<std::string> Who(const Words& words)
    {
        std::vector<std::string> rows;
        for (const json& row : json::parse(Done(With({"right", "who", "mail", "-o", "json"}, words)))) {
            rows.push_back(fmt::format("{} {} {} {}", row["type"].get<std::string>(), row["name"].get<std::string>(),
                                       row["power"].dump(),
                                       row["type"] == "user" ? row["through"].dump() : row["users"].dump()));
        }
        return rows;
    }
};

} // namespace

TEST_P(RightHoldersPropertyTest, SaysOfEverybodyWhatTheExplanationSays)
{
    CAConnect conn;
    conn.Open(m_options.environment["QVADMIN_DB"].c_str());
    const auto isAny = [](std::int64_t verdict) { return verdict != 0; };
    const int seeds = GetParam() == std::string("sqlite") ? 120 : 25;
    std::size_t holders = 0;
    for (int seed = 1; seed <= seeds; ++seed) {
        MakeWorld(conn, static_cast<unsigned>(seed));
        std::vector<int> users;
        EachRow(conn, "SELECT Col_ID FROM qv_User", [&users](CARecordset& row) { users.push_back(NumberIn(row, 1)); });
        for (const Question& question : {Question{}, Question{QuestionKind::bit, 1}, Question{QuestionKind::bit, 8},
                                         Question{QuestionKind::mask, 6}}) {
            const std::map<int, std::int64_t> verdicts = Verdicts(conn, question, isAny);
            EXPECT_EQ(verdicts, Explained(conn, users, question, isAny)) << "seed " << seed;
            holders += verdicts.size();
        }
        for (const int least : {1, 50, 100}) {
            const auto isEnough = [least](std::int64_t limit) { return limit == kUnlimited || limit >= least; };
            EXPECT_EQ(Verdicts(conn, {QuestionKind::limit}, isEnough),
                      Explained(conn, users, {QuestionKind::limit}, isEnough))
                << "seed " << seed << " limit " << least;
        }
    }
    EXPECT_GT(holders, static_cast<std::size_t>(seeds));
}

INSTANTIATE_TEST_SUITE_P(Engines, RightHoldersPropertyTest, Engines(), EngineName);

TEST_P(RightHoldersTest, RolesAndThePeopleBehindThem)
{
    EXPECT_THAT(Who({"send"}), ElementsAre("role Editors 3 1", "role Authors 2 2", "user amy 3 \"Editors, Authors\"",
                                           "user rory 2 \"Authors\""));
    EXPECT_THAT(Who({"send", "--bit", "1"}), ElementsAre("role Editors 3 1", "user amy 1 \"Editors\""));
    EXPECT_THAT(Who({"send", "--mask", "6"}),
                ElementsAre("role Editors 3 1", "role Authors 2 2", "user amy 1 \"Editors, Authors\"",
                            "user rory 1 \"Authors\""));
    EXPECT_THAT(Who({"read", "--bit", "1"}), ElementsAre("role everyone 1 \"everybody\"", "user amy 1 \"everyone\"",
                                                         "user clara 1 \"everyone\"", "user rory 1 \"everyone\""));
    EXPECT_THAT(Who({"send", "--bit", "16"}), IsEmpty());
    EXPECT_THAT(Who({"nothing"}), IsEmpty());
}

TEST_P(RightHoldersTest, LimitsAreReadAsProgramsReadThem)
{
    EXPECT_THAT(Who({"size", "--limit", "101"}), ElementsAre("role Editors -1 1", "role Authors 100 2",
                                                             "user amy -1 \"Editors, Authors\"", "user clara -1 \"\""))
        << "who has no row has no limit";
    EXPECT_THAT(Who({"size", "--limit", "100"}), testing::Contains("user rory 100 \"Authors\""));
    EXPECT_THAT(Done({"right", "who", "mail", "size", "--limit", "100"}), HasSubstr("unlimited"));
}

TEST_P(RightHoldersTest, OneQuestionAtATime)
{
    EXPECT_EQ(Run({"right", "who", "mail", "send", "--bit", "1", "--limit", "3"}).exit, 2);
    EXPECT_EQ(Run({"right", "who", "mail", "send", "--bit", "3"}).exit, 2);
    EXPECT_EQ(Run({"right", "who", "mail", "send", "--limit", "0"}).exit, 2);
}

TEST_P(RightHoldersTest, WhatTwoUsersOrRolesDifferIn)
{
    json rows = json::parse(Done({"right", "diff", "amy", "rory", "-o", "json"}));
    for (json& row : rows) {
        row.erase("guest"); // of the row that the engine gives first
        row.erase("other_guest");
    }
    EXPECT_EQ(rows, json::parse(R"([
        {"genre": "mail", "function": "send", "bits": 3, "other_bits": 2, "publish": true, "other_publish": false,
         "limit": 3, "other_limit": 2},
        {"genre": "mail", "function": "size", "bits": 4294967295, "other_bits": 100, "publish": true,
         "other_publish": false, "limit": -1, "other_limit": 100}])"));
    EXPECT_EQ(json::parse(Done({"right", "diff", "amy", "amy", "-o", "json"})), json::array());
    EXPECT_EQ(Done({"-o", "csv", "role", "diff", "Editors", "Authors"}),
              "genre,function,power,other_power\nmail,send,3,2\nmail,size,-1,100\n");
    EXPECT_EQ(Done({"-o", "csv", "role", "diff", "everyone", "Authors"}),
              "genre,function,power,other_power\nmail,read,1,\nmail,send,,2\nmail,size,,100\n");
    EXPECT_EQ(Run({"role", "diff", "Editors", "Nobody"}).exit, 3);
    EXPECT_EQ(Run({"right", "diff", "amy", "nobody"}).exit, 3);
}

TEST_P(RightHoldersTest, AnAnswerAsIfAUserHadAnotherRole)
{
    const std::string before = Dump();
    const json entry = LatestEntry();
    const Words explain = {"right", "explain", "clara", "mail", "send", "--bit", "1"};
    EXPECT_THAT(Done(explain), HasSubstr("does not have bit 1"));
    EXPECT_THAT(Done(With(explain, {"--if-role", "Authors", "--if-role", "editors"})),
                AllOf(HasSubstr("has bit 1 in function 'send' of 'mail': the first row that has it is that of Editors"),
                      HasSubstr("note: this is as if clara (id "), HasSubstr("were linked to Authors (role "),
                      HasSubstr(", Editors (role ")));
    EXPECT_THAT(Done(With(explain, {"--if-role", "Authors"})), HasSubstr("does not have bit 1"));
    EXPECT_EQ(json::parse(Done(With(explain, {"--if-role", "Editors", "-o", "json"})))["verdict"], true);
    EXPECT_EQ(Run(With(explain, {"--if-role", "Nobody"})).exit, 3);
    EXPECT_EQ(Dump(), before);
    EXPECT_EQ(LatestEntry(), entry);
    EXPECT_EQ(
        RunWith("user lock amy\nright explain clara mail send --if-role Editors\n", {"batch", "-", "--one-transaction"})
            .exit,
        7);
    EXPECT_EQ(Dump(), before);
}

INSTANTIATE_TEST_SUITE_P(Engines, RightHoldersTest, Engines(), EngineName);
