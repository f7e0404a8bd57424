#include "ConsoleFixture.h"
#include "dbaccess/CAConnect.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// What every writing command of settings, messages, add-ins, the board and rights has in common.

namespace {

using Words = std::vector<std::string>;

struct ServerCase {
    const char* name;
    std::vector<Words> before; ///< of one word: a statement
    Words command;
    std::string input = {};
};

void PrintTo(const ServerCase& one, std::ostream* out) { *out << fmt::format("{}", fmt::join(one.command, " ")); }

constexpr const char* kMessages = "INSERT INTO kel_Msg VALUES (1, '2019-01-01 00:00:00'), (2, '2019-01-02 00:00:00')";
constexpr const char* kNotice = "INSERT INTO Kel_Board VALUES ('1', 'amy', 'Party', '2014-01-01 00:00:00', NULL)";

const Words kNewAddIn = {"addin", "create", "Chess", "--type", "1"};
const Words kNewRole = {"role", "create", "Editors"};
const Words kNewUser = {"user", "create", "amy"};
const Words kNewView = {"view", "create", "Main"};
const Words kNewRight = {"right", "grant", "role:Editors", "mail", "send", "1"};
const Words kNewRightOn = {"right", "on", "grant", "role:Editors", "view:Main", "mail", "send"};
const Words kNewObjectRight = {"objright", "grant", "role:Editors", "3", "17", "docs", "read", "1"};
const Words kNewSetting = {"setting", "set", "Colour", "blue", "--genre", "G"};
const Words kNewPackage = {"package", "install", "Tools", "--version", "1"};

const ServerCase kCases[] = {
    {"BoardDelete", {{kNotice}}, {"board", "delete", "1", "--yes"}},
    {"AddinCreate", {}, kNewAddIn},
    {"AddinSet", {kNewAddIn}, {"addin", "set", "Chess", "--public"}},
    {"AddinDisable", {kNewAddIn}, {"addin", "disable", "Chess"}},
    {"AddinEnable", {kNewAddIn, {"addin", "disable", "Chess"}}, {"addin", "enable", "Chess"}},
    {"AddinMove", {kNewAddIn, {"addin", "create", "Go", "--type", "1"}}, {"addin", "move", "Chess", "top"}},
    {"AddinDelete", {kNewAddIn}, {"addin", "delete", "Chess", "--yes"}},
    {"PackageInstall", {}, kNewPackage},
    {"PackageRemove", {kNewPackage}, {"package", "remove", "Tools", "--yes"}},
    {"MessagePurge", {{kMessages}}, {"message", "purge", "--before", "2020-01-01", "--batch", "1", "--yes"}},
    {"MessageSweep", {{"INSERT INTO kel_Msg_Rece (Col_MsgID) VALUES (9)"}}, {"message", "sweep", "--yes"}},
    {"ConsoleSet", {kNewUser}, {"console", "set", "amy", "help-desk"}},
    {"ConsoleRemove", {kNewUser, {"console", "set", "amy", "help-desk"}}, {"console", "remove", "amy"}},
    {"LoginlogDelete", {{"INSERT INTO kel_log VALUES (1)"}}, {"loginlog", "delete", "1", "--yes"}},
    {"DoclogAdd", {}, {"doclog", "add", "105", "17", "moved", "It's elsewhere"}},
    {"SettingSet", {}, kNewSetting},
    {"SettingDelete", {kNewSetting}, {"setting", "delete", "Colour", "--genre", "G", "--yes"}},
    {"SettingThreads", {}, {"setting", "threads", "--max", "3"}},
    {"SettingFlags", {}, {"setting", "flags", "--doc-flag", "3"}},
    {"SettingPicture", {}, {"setting", "picture", "p.png", "--all-users", "--yes"}},
    {"SettingEncryptionKey", {}, {"setting", "encryption-key", "set", "--key-stdin"}, "s3cret\n"},
    {"ObjrightGrant", {kNewRole}, kNewObjectRight},
    {"ObjrightSet", {kNewRole, kNewObjectRight}, {"objright", "set", "1", "2"}},
    {"ObjrightRevoke", {kNewRole, kNewObjectRight}, {"objright", "revoke", "1", "--yes"}},
    {"RightGrant", {kNewRole}, kNewRight},
    {"RightSet", {kNewRole, kNewRight}, {"right", "set", "role:Editors", "mail", "send", "2"}},
    {"RightRevoke", {kNewRole, kNewRight}, {"right", "revoke", "role:Editors", "mail", "send"}},
    {"RightEdit", {kNewRole, kNewRight}, {"right", "edit", "/Editors/mail/send=2", "/Editors/mail/size=5", "--yes"}},
    {"RightRevokeAll", {kNewRole, kNewRight}, {"right", "revoke", "role:Editors", "--all", "--yes"}},
    {"RightOnGrant", {kNewRole, kNewView}, kNewRightOn},
    {"RightOnSet",
     {kNewRole, kNewView, kNewRightOn},
     {"right", "on", "set", "role:Editors", "view:Main", "mail", "send", "2"}},
    {"RightOnRevoke",
     {kNewRole, kNewView, kNewRightOn},
     {"right", "on", "revoke", "role:Editors", "view:Main", "mail", "send"}},
    {"RightOnClear", {kNewRole, kNewView, kNewRightOn}, {"right", "on", "clear", "view:Main", "mail", "send", "--yes"}},
};

class ServerCommandTableTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
    }

    void Do(const std::vector<Words>& several)
    {
        for (const Words& words : several) {
            if (words.size() == 1) {
                CAConnect conn;
                conn.Open(CString(std::string_view(DatabaseUrl())));
                conn.Execute(words.front().c_str());
            } else {
                const ChildResult result = Run(words);
                ASSERT_EQ(result.exit, 0) << result.err;
            }
        }
    }

    ChildResult RunCase(const ServerCase& oneCase, const Words& more)
    {
        Words words = oneCase.command;
        words.insert(words.end(), more.begin(), more.end());
        return RunWith(oneCase.input, words);
    }
};

class EveryWrite : public ServerCommandTableTest, public testing::WithParamInterface<ServerCase> {};

} // namespace

TEST_P(EveryWrite, CanBeTriedWithoutChangingAnything)
{
    Do(GetParam().before);
    const std::string before = Dump();
    const ChildResult text = RunCase(GetParam(), {"--dry-run", "--reason", "a trial"});
    EXPECT_EQ(text.exit, 8) << text.err;
    EXPECT_EQ(text.out, "");
    EXPECT_THAT(text.err, HasSubstr("dry run: "));
    const ChildResult object = RunCase(GetParam(), {"--dry-run", "-o", "json"});
    EXPECT_EQ(object.exit, 8) << object.err;
    EXPECT_EQ(json::parse(object.out).at("dry_run"), true);
    EXPECT_EQ(Dump(), before);
}

TEST_P(EveryWrite, GivesProgramsOneObject)
{
    Do(GetParam().before);
    const std::string before = Dump();
    const ChildResult result = RunCase(GetParam(), {"-o", "json"});
    EXPECT_EQ(result.exit, 0) << result.err;
    const json object = json::parse(result.out);
    EXPECT_EQ(object.at("v"), 1);
    EXPECT_EQ(object.at("changed"), true);
    EXPECT_EQ(object.at("dry_run"), false);
    EXPECT_TRUE(object.contains("value") || !object.at("outcomes").empty());
    EXPECT_THAT(result.out, Not(HasSubstr("s3cret")));
    EXPECT_NE(Dump(), before);
}

TEST_P(EveryWrite, IsRecordedAndCanBeUndone)
{
    Do(GetParam().before);
    ExpectRecordedAndUndone(GetParam().command[0] + " " + GetParam().command[1],
                            [this] { return RunCase(GetParam(), {}); });
}

INSTANTIATE_TEST_SUITE_P(ServerCommandTableTest, EveryWrite, testing::ValuesIn(kCases),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_F(ServerCommandTableTest, WhatIsSoAlreadyIsNoChange)
{
    Do({kNewAddIn});
    const ChildResult object = Run({"addin", "enable", "Chess", "-o", "json"});
    EXPECT_EQ(object.exit, 0);
    EXPECT_EQ(json::parse(object.out).at("changed"), false);
    EXPECT_EQ(json::parse(object.out).at("outcomes").at(0).at("outcome"), "unchanged");
    EXPECT_EQ(Run({"addin", "move", "Chess", "top", "--dry-run"}).exit, 0);
    EXPECT_EQ(Run({"message", "purge", "--before", "2020-01-01", "--dry-run"}).exit, 0);
    EXPECT_EQ(Run({"message", "sweep", "--dry-run"}).exit, 0);
}

TEST_F(ServerCommandTableTest, ACommandThatIsOnlyAskedAnswersAsOneThatReads)
{
    for (const char* verb : {"threads", "flags", "picture"}) {
        const ChildResult result = Run({"setting", verb, "--dry-run", "-o", "json"});
        EXPECT_EQ(result.exit, 0);
        EXPECT_FALSE(json::parse(result.out).contains("v"));
    }
    EXPECT_EQ(Run({"setting", "threads", "--max", "3"}).out, "");
}

TEST_F(ServerCommandTableTest, WhatATrialWouldDoIsSaidAsSuch)
{
    Do({kNewAddIn});
    EXPECT_THAT(Run({"addin", "delete", "Chess", "--dry-run"}).err,
                StartsWith("delete Chess (add-in 1) of type 1\ndry run: deleted 1 add-in\n"));
}
