#include "ConsoleFixture.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// What commands that write to users, roles, titles and memberships have in common.

namespace {

using Words = std::vector<std::string>;

struct PeopleCase {
    const char* name;
    Words words;
    const char* outcome; ///< of the one thing that it is about; empty: it prints the id of a new thing
};

void PrintTo(const PeopleCase& one, std::ostream* out) { *out << fmt::format("{}", fmt::join(one.words, " ")); }

class PeopleCommandTable : public ConsoleFixture, public testing::WithParamInterface<PeopleCase> {
protected:
    /// Rory is locked, and has a password, a title, a group and a role; Amy has nothing.
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
        for (const Words& words : std::vector<Words>{{"view", "create", "Main"},
                                                     {"group", "create", "/Main/Sales"},
                                                     {"user", "create", "amy"},
                                                     {"user", "create", "rory", "--locked"},
                                                     {"role", "create", "Editors"},
                                                     {"role", "add", "Editors", "rory"},
                                                     {"title", "give", "/Main/Sales", "rory", "Lead"},
                                                     {"member", "add", "/Main/Sales", "rory"},
                                                     {"user", "password", "set", "rory", "--generate"}}) {
            const ChildResult result = Run(words);
            ASSERT_EQ(result.exit, 0) << result.err;
        }
    }

    /// Runs a command and reads the object that it gives.
    json Object(const Words& words, int exit)
    {
        const ChildResult result = Run(With(words, {"-o", "json"}));
        EXPECT_EQ(result.exit, exit) << result.err;
        return json::parse(result.out);
    }
};

using PeopleCommandChange = PeopleCommandTable;
using PeopleCommandNoChange = PeopleCommandTable;
using PeopleCommandOptions = PeopleCommandTable;

TEST_P(PeopleCommandChange, ADryRunSaysSoEndsWith8AndChangesNothing)
{
    const std::string before = Dump();
    const ChildResult result = Run(With(GetParam().words, {"--dry-run", "--reason", "to see what happens"}));
    EXPECT_EQ(result.exit, 8) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("dry run: "));
    const json object = Object(With(GetParam().words, {"--dry-run"}), 8);
    EXPECT_EQ(object.at("dry_run"), true);
    EXPECT_EQ(object.at("changed"), true);
    EXPECT_FALSE(object.contains("password"));
    EXPECT_EQ(Dump(), before);
}

TEST_P(PeopleCommandChange, AsJsonItIsOneObject)
{
    const std::string before = Dump();
    const json object = Object(GetParam().words, 0);
    EXPECT_EQ(object.at("v"), 1);
    EXPECT_EQ(object.at("changed"), true);
    EXPECT_EQ(object.at("dry_run"), false);
    if (*GetParam().outcome == '\0') {
        EXPECT_GT(object.at("value"), 0);
        EXPECT_THAT(object.at("outcomes"), IsEmpty());
    } else {
        ASSERT_EQ(object.at("outcomes").size(), 1U);
        EXPECT_EQ(object.at("outcomes")[0].at("outcome"), GetParam().outcome);
        EXPECT_GT(object.at("outcomes")[0].at("id"), 0);
        EXPECT_NE(object.at("outcomes")[0].at("name"), "");
    }
    EXPECT_NE(Dump(), before);
}

TEST_P(PeopleCommandChange, IsRecordedAndCanBeUndone)
{
    ExpectRecordedAndUndone(GetParam().words[0] + " " + GetParam().words[1], [this] { return Run(GetParam().words); });
}

INSTANTIATE_TEST_SUITE_P(
    Commands, PeopleCommandChange,
    testing::ValuesIn(std::vector<PeopleCase>{
        {"TitleGive", {"title", "give", "/Main/Sales", "amy", "Lead"}, "given"},
        {"TitleTake", {"title", "take", "/Main/Sales", "rory", "Lead"}, "taken"},
        {"MemberAdd", {"member", "add", "/Main/Sales", "amy"}, "added"},
        {"MemberRemove", {"member", "remove", "/Main/Sales", "rory"}, "removed"},
        {"MemberDetach", {"member", "detach", "rory", "--yes"}, "removed"},
        {"RoleCreate", {"role", "create", "Authors"}, ""},
        {"RoleSet", {"role", "set", "Editors", "--name", "Authors"}, "changed"},
        {"RoleDelete", {"role", "delete", "Editors", "--yes"}, "deleted"},
        {"RoleAdd", {"role", "add", "Editors", "amy"}, "added"},
        {"RoleRemove", {"role", "remove", "Editors", "rory"}, "removed"},
        {"RoleDefault", {"role", "default", "--create"}, "created"},
        {"UserCreate", {"user", "create", "clara", "--note", "x"}, ""},
        {"UserSet", {"user", "set", "amy", "--note", "x"}, "changed"},
        {"UserRename", {"user", "rename", "amy", "pond"}, "renamed"},
        {"UserRenameDroppingThePassword", {"user", "rename", "rory", "pond", "--drop-password"}, "renamed"},
        {"UserLock", {"user", "lock", "amy"}, "locked"},
        {"UserUnlock", {"user", "unlock", "rory"}, "unlocked"},
        {"UserDelete", {"user", "delete", "rory", "--yes"}, "deleted"},
        {"UserPasswordSet", {"user", "password", "set", "amy", "--generate"}, "password_set"},
    }),
    [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_P(PeopleCommandNoChange, IsToldAndIsNoFinding)
{
    const std::string before = Dump();
    EXPECT_EQ(Run(With(GetParam().words, {"--dry-run"})).exit, 0);
    const json object = Object(GetParam().words, 0);
    EXPECT_EQ(object.at("changed"), false);
    ASSERT_EQ(object.at("outcomes").size(), 1U);
    EXPECT_EQ(object.at("outcomes")[0].at("outcome"), "unchanged");
    EXPECT_EQ(Dump(), before);
}

INSTANTIATE_TEST_SUITE_P(Commands, PeopleCommandNoChange,
                         testing::ValuesIn(std::vector<PeopleCase>{
                             {"TitleGive", {"title", "give", "/Main/Sales", "rory", "Lead"}, ""},
                             {"TitleTake", {"title", "take", "/Main/Sales", "amy", "Lead"}, ""},
                             {"MemberAdd", {"member", "add", "/Main/Sales", "rory"}, ""},
                             {"MemberRemove", {"member", "remove", "/Main/Sales", "amy"}, ""},
                             {"MemberDetach", {"member", "detach", "amy", "--yes"}, ""},
                             {"RoleSet", {"role", "set", "Editors", "--name", "Editors"}, ""},
                             {"RoleAdd", {"role", "add", "Editors", "rory"}, ""},
                             {"RoleRemove", {"role", "remove", "Editors", "amy"}, ""},
                             {"UserSet", {"user", "set", "rory", "--locked"}, ""},
                             {"UserRename", {"user", "rename", "rory", "rory"}, ""},
                             {"UserLock", {"user", "lock", "rory"}, ""},
                             {"UserUnlock", {"user", "unlock", "amy"}, ""},
                         }),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

} // namespace

TEST_F(PeopleCommandOptions, TheDefaultRoleIsShownWithoutBeingMade)
{
    ASSERT_EQ(Run({"role", "default", "--create"}).exit, 0);
    const json again = Object({"role", "default", "--create"}, 0);
    EXPECT_EQ(again.at("changed"), false);
    EXPECT_EQ(again.at("name"), "everyone");
    const json shown = Object({"role", "default"}, 0);
    EXPECT_EQ(shown.at("name"), "everyone");
    EXPECT_FALSE(shown.contains("v"));
}

TEST_F(PeopleCommandOptions, WhoIsAskedBeforeADeletionSeesItAndADryRunDoesNotAsk)
{
    EXPECT_THAT(Run({"user", "delete", "amy", "rory", "--dry-run"}).err,
                AllOf(HasSubstr("delete rory (id 2), with 2 relations, 1 job title"), Not(HasSubstr("--yes"))));
}
