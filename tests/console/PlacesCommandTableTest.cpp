#include "ConsoleFixture.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using testing::HasSubstr;

// What every command of views, groups, document roots, folders and backup plans does that its row promises.

namespace {

class PlacesCommandTableTest : public ConsoleFixture {
protected:
    /// Main with the groups A, A/B and C, a user in A/B, Files and Archive with a folder in both, and a plan for A.
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
        Done({"view", "create", "_Empty"});
        Done({"view", "create", "Main"});
        Done({"group", "create", "/Main/A/B", "--parents"});
        Done({"group", "create", "/Main/C"});
        Done({"user", "create", "amy"});
        Done({"member", "add", "/Main/A/B", "amy"});
        Done({"docroot", "create", "Files", "--path", "/srv", "--type", "1"});
        Done({"docroot", "create", "Archive", "--path", "/old"});
        Done({"folder", "create", "/Files/F/G", "--parents"});
        Done({"folder", "link", "/Files/F", "/Archive"});
        Done({"plan", "create", "Nightly", "--description", "each night"});
        Done({"plan", "assign", "Nightly", "group:/Main/A"});
    }
};

struct Writing {
    std::vector<std::string> words;
    std::string outcome; ///< of the first thing it tells of; empty: it gives the id of something new
};

void PrintTo(const Writing& writing, std::ostream* out) { *out << fmt::format("{}", fmt::join(writing.words, " ")); }

class PlacesWritingTest : public PlacesCommandTableTest, public testing::WithParamInterface<Writing> {};

const Writing kWritings[] = {
    {{"view", "create", "Other", "--sort-index", "3"}, ""},
    {{"view", "set", "Main", "--sort-index", "3"}, "changed"},
    {{"view", "rename", "Main", "Other"}, "renamed"},
    {{"view", "default", "Other"}, "renamed"},
    {{"view", "delete", "Main", "--yes"}, "deleted"},
    {{"view", "stamp", "Main"}, "stamped"},
    {{"group", "create", "/Main/A/D/E", "--parents"}, ""},
    {{"group", "set", "/Main/A", "--description", "x"}, "changed"},
    {{"group", "rename", "/Main/A", "D"}, "renamed"},
    {{"group", "move", "/Main/A/B", "/Main/C"}, "moved"},
    {{"group", "style", "/Main/A", "-3"}, "changed"},
    {{"group", "delete", "/Main/A", "--recursive", "--yes"}, "deleted"},
    {{"docroot", "create", "Other", "--path", "/x", "--style", "4294967295"}, ""},
    {{"docroot", "set", "Files", "--new-type", "2"}, "changed"},
    {{"docroot", "delete", "Files", "--recursive", "--yes"}, "deleted"},
    {{"folder", "create", "/Files/H"}, ""},
    {{"folder", "rename", "/Files/F", "H"}, "renamed"},
    {{"folder", "style", "/Files/F", "7"}, "changed"},
    {{"folder", "move", "/Files/F/G", "/Archive"}, "moved"},
    {{"folder", "link", "/Files/F/G", "/Archive"}, "linked"},
    {{"folder", "unlink", "/Archive/F"}, "unlinked"},
    {{"folder", "delete", "/Files/F", "--recursive", "--yes"}, "deleted"},
    {{"plan", "create", "Weekly", "--data", "it's"}, ""},
    {{"plan", "set", "Nightly", "--name", "Weekly"}, "changed"},
    {{"plan", "assign", "Nightly", "user:amy"}, "assigned"},
    {{"plan", "unassign", "Nightly", "group:/Main/A"}, "unassigned"},
    {{"plan", "delete", "Nightly", "--yes"}, "deleted"},
};

} // namespace

TEST_P(PlacesWritingTest, ADryRunChangesNothingAndTheCommandSaysWhatItDid)
{
    const auto& [words, outcome] = GetParam();
    const std::string before = Dump();
    const ChildResult dry = Run(With(words, {"--dry-run"}));
    EXPECT_EQ(dry.exit, 8) << dry.err;
    EXPECT_EQ(dry.out, "");
    EXPECT_THAT(dry.err, HasSubstr("dry run: "));
    EXPECT_EQ(Dump(), before);

    const json done = json::parse(Done(With(words, {"--reason", "it was asked for", "-o", "json"})));
    EXPECT_EQ(done["v"], 1);
    EXPECT_EQ(done["changed"], true);
    EXPECT_EQ(done["dry_run"], false);
    EXPECT_NE(Dump(), before);
    if (outcome.empty()) {
        EXPECT_TRUE(done["value"].is_number());
    } else {
        ASSERT_FALSE(done["outcomes"].empty());
        EXPECT_EQ(done["outcomes"][0]["outcome"], outcome);
        EXPECT_GT(done["outcomes"][0]["id"], 0);
        EXPECT_NE(done["outcomes"][0]["name"], "");
    }
}

TEST_P(PlacesWritingTest, IsRecordedAndCanBeUndone)
{
    const std::vector<std::string>& words = GetParam().words;
    ExpectRecordedAndUndone(words[0] + " " + words[1], [this, &words] { return Run(words); });
}

INSTANTIATE_TEST_SUITE_P(Commands, PlacesWritingTest, testing::ValuesIn(kWritings),
                         [](const auto& test) { return test.param.words[0] + "_" + test.param.words[1]; });

TEST_F(PlacesCommandTableTest, WhatIsAsItShouldBeIsNoChangeInADryRunEither)
{
    const std::vector<std::vector<std::string>> kUnchanged = {
        {"view", "set", "Main", "--description", ""},
        {"group", "set", "/Main/A", "--domain-id", "0"},
        {"group", "move", "/Main/A/B", "/Main/A"},
        {"docroot", "set", "Files", "--path", "/srv"},
    };
    for (const std::vector<std::string>& words : kUnchanged) {
        EXPECT_EQ(Run(With(words, {"--dry-run"})).exit, 0) << words[0];
        const json result = json::parse(Done(With(words, {"-o", "json"})));
        EXPECT_EQ(result["changed"], false) << words[0];
        EXPECT_EQ(result["outcomes"][0]["outcome"], "unchanged") << words[0];
    }
}

TEST_F(PlacesCommandTableTest, WhatIsOnlyAskedForIsNoChange)
{
    for (const auto& [words, answer] :
         {std::pair(std::vector<std::string>{"view", "default"}, json{{"name", "_Empty"}}),
          {{"group", "style", "/Main/A"}, json{{"style", 0}}},
          {{"folder", "style", "/Files/F"}, json{{"style", 0}}}}) {
        EXPECT_EQ(json::parse(Done(With(words, {"-o", "json"}))), answer);
        EXPECT_EQ(json::parse(Done(With(words, {"-o", "jsonl", "--dry-run"}))), answer);
    }
}

TEST_F(PlacesCommandTableTest, WhatADryRunOfADeletionShowsIsNotAskedFor)
{
    const ChildResult result = Run({"folder", "delete", "/Files/F", "--recursive", "--dry-run"});
    EXPECT_EQ(result.exit, 8);
    EXPECT_EQ(result.err, "delete /Archive/F (id 1) and 1 folder below, with 3 links\n"
                          "dry run: deleted 2 folders\n"
                          "dry run: nothing was changed\n");
}

TEST_F(PlacesCommandTableTest, AnEmptyTreeIsNothingButAHeaderForPrograms)
{
    Done({"docroot", "delete", "Files", "--yes", "--recursive"});
    Done({"docroot", "delete", "Archive", "--yes", "--recursive"});
    EXPECT_EQ(Done({"folder", "tree"}), "");
    EXPECT_EQ(Done({"folder", "tree", "-o", "csv"}), "depth,type,id,name,parent,mark\n");
    EXPECT_EQ(Done({"folder", "tree", "-o", "json"}), "[]\n");
    EXPECT_THAT(Run({"folder", "tree", "--depth", "-1"}).err,
                HasSubstr("--depth '-1' is not a whole number from 0 to 2147483647"));
}
