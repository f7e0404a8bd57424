#include "Consoles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

// What somebody else changes between the question and the answer.

namespace {

using Words = std::vector<std::string>;

struct Case {
    const char* name;
    std::vector<Words> before;
    Words command;
    std::vector<Words> meanwhile; ///< of one word: a statement
    std::string question = "[y/N]";
    std::string answer = "y\n";
    int exit = 4;
    std::string says = "somebody else has changed what was shown in the meantime";
};

void PrintTo(const Case& meanwhile, std::ostream* out) { *out << meanwhile.name; }

const Words kCreateAmy = {"user", "create", "amy"};
const Words kRole = {"role", "create", "Editors"};
const Words kRight = {"right", "grant", "role:Editors", "Messages", "Size", "50"};
const Words kView = {"view", "create", "V"};
const Words kGroup = {"group", "create", "/V/A"};
const Words kOtherGroup = {"group", "create", "/V/B"};
const Words kAddMember = {"member", "add", "/V/A", "amy"};
const Words kRoot = {"docroot", "create", "D", "--path", "/d", "--type", "1"};
const Words kFolder = {"folder", "create", "/D/a"};
const Words kPlan = {"plan", "create", "Nightly"};
const Words kSetting = {"setting", "set", "Colour", "blue", "--genre", "G"};

const std::vector<Case>& Cases()
{
    static const std::vector<Case> cases = {
        {"UserDelete", {kCreateAmy, kRole}, {"user", "delete", "amy"}, {{"role", "add", "Editors", "amy"}}},
        {"UserRename",
         {kCreateAmy, {"UPDATE qv_User SET Col_PWord = 'digest', Col_EnType = 2"}},
         {"user", "rename", "id:1", "bob"},
         {{"user", "rename", "amy", "carl", "--drop-password"}},
         "New password of bob",
         "secret\nsecret\n"},
        {"UserPasswordSet",
         {kCreateAmy},
         {"user", "password", "set", "id:1"},
         {{"user", "rename", "amy", "bob"}},
         "New password of amy (id 1)",
         "secret\nsecret\n"},
        {"RoleDelete", {kCreateAmy, kRole}, {"role", "delete", "Editors"}, {{"role", "add", "Editors", "amy"}}},
        {"RightRevokeAll",
         {kRole, kRight},
         {"right", "revoke", "role:Editors", "--all"},
         {{"right", "set", "role:Editors", "Messages", "Size", "60"}}},
        {"RightOnClear",
         {kCreateAmy, kRole, {"right", "on", "grant", "role:Editors", "user:amy", "Messages", "Read", "1"}},
         {"right", "on", "clear", "user:amy", "Messages", "Read"},
         {{"right", "on", "set", "role:Editors", "user:amy", "Messages", "Read", "2"}}},
        {"ObjrightRevoke",
         {kRole, {"objright", "grant", "role:Editors", "3", "17", "docs", "read", "1"}},
         {"objright", "revoke", "1"},
         {{"role", "set", "Editors", "--name", "Readers"}}},
        {"PlanDelete", {kCreateAmy, kPlan}, {"plan", "delete", "Nightly"}, {{"plan", "assign", "Nightly", "user:amy"}}},
        {"PlanAssign",
         {kCreateAmy, kView, kGroup, kPlan},
         {"plan", "assign", "Nightly", "group:/V/A", "--recursive"},
         {kAddMember}},
        {"MemberDetach",
         {kCreateAmy, kView, kGroup, kOtherGroup, kAddMember},
         {"member", "detach", "amy"},
         {{"member", "add", "/V/B", "amy"}}},
        {"AddInDelete",
         {{"addin", "create", "Chess", "--type", "1"}},
         {"addin", "delete", "id:1"},
         {{"addin", "set", "id:1", "--name", "Go"}}},
        {"PackageRemove",
         {{"package", "install", "Tools", "--version", "1"},
          {"addin", "create", "Chess", "--type", "1", "--package", "Tools"}},
         {"package", "remove", "Tools"},
         {{"addin", "create", "Go", "--type", "1", "--package", "Tools"}, {"addin", "delete", "Chess", "--yes"}}},
        {"SettingDelete",
         {kSetting},
         {"setting", "delete", "Colour", "--genre", "G"},
         {{"setting", "set", "Colour", "red", "--genre", "G"}}},
        {"SettingPicture", {kCreateAmy}, {"setting", "picture", "p.png", "--all-users"}, {{"user", "create", "bob"}}},
        {"BoardDelete",
         {{"INSERT INTO Kel_Board VALUES ('1', 'amy', 'Party', '2014-01-01 00:00:00', NULL)"}},
         {"board", "delete", "1"},
         {{"UPDATE Kel_Board SET Col_Subject = 'Work'"}}},
        {"MessagePurge",
         {{"INSERT INTO kel_Msg VALUES (1, '2019-01-01 00:00:00')"}},
         {"message", "purge", "--before", "2020-01-01"},
         {{"INSERT INTO kel_Msg VALUES (2, '2019-01-01 00:00:00')"}}},
        {"MessageSweep",
         {{"INSERT INTO kel_Msg_AttachMent (Col_MsgID) VALUES (99)"}},
         {"message", "sweep"},
         {{"INSERT INTO kel_Msg_AttachMent (Col_MsgID) VALUES (99)"}}},
        {"LoginlogDelete",
         {{"INSERT INTO kel_log VALUES (1), (2)"}},
         {"loginlog", "delete", "1", "2"},
         {{"DELETE FROM kel_log WHERE Col_ID = 2"}},
         "[y/N]",
         "y\n",
         3,
         "nothing was deleted"},
        {"ViewDelete", {kView}, {"view", "delete", "V"}, {kGroup}},
        {"GroupDelete", {kCreateAmy, kView, kGroup}, {"group", "delete", "/V/A", "--recursive"}, {kAddMember}},
        {"FolderUnlink", {kRoot, kFolder}, {"folder", "unlink", "id:1"}, {{"folder", "rename", "id:1", "z"}}},
        {"FolderDelete",
         {kRoot, kFolder},
         {"folder", "delete", "/D/a", "--recursive"},
         {{"folder", "create", "/D/a/b"}}},
        {"DocrootDelete", {kRoot, kFolder}, {"docroot", "delete", "D", "--recursive"}, {{"folder", "create", "/D/b"}}},
    };
    return cases;
}

class ChangedMeanwhile : public testing::TestWithParam<Case> {
protected:
    ChangedMeanwhile() : m_consoles(EngineCalled("sqlite"), QVADMIN_PROGRAM) {}

    void Do(const std::vector<Words>& several)
    {
        for (const Words& words : several) {
            if (words.size() == 1) {
                m_consoles.Connection().Execute(words.front().c_str());
                continue;
            }
            const ChildResult result = m_consoles.Run(words);
            ASSERT_EQ(result.exit, 0) << result.err;
        }
    }

    Consoles m_consoles;
};

TEST_P(ChangedMeanwhile, IsRefusedAlthoughItWasConfirmed)
{
    Do(GetParam().before);
    ChildProcess asking = m_consoles.StartOnTerminal(GetParam().command, GetParam().answer);
    asking.WaitForError(GetParam().question);
    Do(GetParam().meanwhile);
    const std::string before = m_consoles.Dump();
    const ChildResult result = asking.Finish();
    EXPECT_EQ(result.exit, GetParam().exit) << result.err;
    EXPECT_THAT(result.err, testing::HasSubstr(GetParam().says));
    EXPECT_EQ(m_consoles.Dump(), before);
}

TEST_P(ChangedMeanwhile, IsDoneWhenNobodyHasChangedIt)
{
    Do(GetParam().before);
    const std::string before = m_consoles.Dump();
    const ChildResult result = m_consoles.StartOnTerminal(GetParam().command, GetParam().answer).Finish();
    EXPECT_EQ(result.exit, 0) << result.err;
    EXPECT_NE(m_consoles.Dump(), before);
}

INSTANTIATE_TEST_SUITE_P(Commands, ChangedMeanwhile, testing::ValuesIn(Cases()),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

} // namespace
