#include "ConsoleOnEngine.h"
#include "console/Actor.h"
#include "console/ShellWords.h"
#include "management/Errors.h"
#include "management/Text.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using console::CommandText;
using console::SplitShellWords;
using management::ShellQuoted;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// Several commands, or names for one, from files and standard input.

namespace {

TEST(ShellWords, AreSplitAsAShellDoes)
{
    EXPECT_THAT(SplitShellWords("user  set amy\t--note 'it''s' # why"),
                ElementsAre("user", "set", "amy", "--note", "its"));
    EXPECT_THAT(SplitShellWords(R"(a\ b "c \"d\" \\ \n" '' e'f'"g"#h)"),
                ElementsAre("a b", R"(c "d" \ \n)", "", "efg#h"));
    EXPECT_THAT(SplitShellWords("  # only a comment"), IsEmpty());
    EXPECT_THAT(SplitShellWords("a\r"), ElementsAre("a"));
    EXPECT_THROW(SplitShellWords("a 'b"), management::Error);
    EXPECT_THROW(SplitShellWords("a \"b\\\""), management::Error);
}

TEST(ShellWords, WhatIsQuotedIsSplitIntoTheSameWord)
{
    for (const std::string word :
         {"", "amy", "it's", "a b", "$(rm)", "`", "\\", "\"", "#", "x\ty", "/Main/Sales", "é"}) {
        EXPECT_THAT(SplitShellWords(ShellQuoted(word)), ElementsAre(word));
    }
    EXPECT_EQ(ShellQuoted("/Main/Sales_1"), "/Main/Sales_1");
}

TEST(ShellWords, OfALineThatIsBeingWritten)
{
    const auto split = [](std::string_view line) {
        const console::UnfinishedLine unfinished = console::SplitUnfinishedLine(line);
        std::string text;
        for (const std::string& word : unfinished.words) {
            text += word + '|';
        }
        return text + '>' + unfinished.last + '<' + std::string(unfinished.lastAsWritten);
    };
    EXPECT_EQ(split(""), "><");
    EXPECT_EQ(split("us"), ">us<us");
    EXPECT_EQ(split("user "), "user|><");
    EXPECT_EQ(split("qvadmin user  show 'Amy H"), "user|show|>Amy H<'Amy H");
    EXPECT_EQ(split("user show Amy\\ H"), "user|show|>Amy H<Amy\\ H");
    EXPECT_EQ(split("user show \"a\\\""), "user|show|>a\"<\"a\\\"");
    EXPECT_EQ(split("user show 'a' "), "user|show|a|><");
}

TEST(CommandText, IsWhatWasDoneWithoutWhereAndHow)
{
    EXPECT_EQ(CommandText({"--db", "sqlite:x", "user", "set", "amy", "--note", "it's", "-o", "json", "--reason=r",
                           "--yes", "-ojson", "--output=csv"}),
              "user set amy --note 'it'\\''s'");
    EXPECT_EQ(CommandText({"user", "lock", "--", "--yes"}), "user lock -- --yes");
    const std::string cut = CommandText({"user", "lock", std::string(1998, 'x') + "é"});
    EXPECT_LE(cut.size(), 2004U);
    EXPECT_TRUE(cut.ends_with("x ..."));
}

class BatchOn : public ConsoleOnEngine {
protected:
    void SetUp() override
    {
        ConsoleOnEngine::SetUp();
        for (const char* login : {"amy", "rory", "clara"}) {
            ASSERT_EQ(Run({"user", "create", login}).exit, 0);
        }
    }

    std::string Locked() { return Run({"-o", "plain", "user", "list", "--locked"}).out; }
};

TEST_P(BatchOn, RunsLineByLineAndTellsOfEach)
{
    const ChildResult result =
        RunWith("# leavers\nuser lock amy\n\nqvadmin user lock nobody\nuser lock 'rory'\n", {"batch", "-"});
    EXPECT_EQ(result.exit, 7);
    EXPECT_THAT(result.err,
                AllOf(HasSubstr("line 2: done: user lock amy\n"), HasSubstr("line 4: failed (3): user lock nobody"),
                      HasSubstr("line 5: done: user lock rory\n"), HasSubstr("3 of 3 commands run, 1 failed\n")));
    EXPECT_THAT(Locked(), AllOf(HasSubstr("amy"), HasSubstr("rory")));
    EXPECT_EQ(LatestEntry().at("command"), "user lock rory");
}

TEST_P(BatchOn, GivesItsColorsToItsLines)
{
    constexpr const char* kBold = "\x1B[1m";
    constexpr const char* kRed = "\x1B[1;31mqvadmin:";
    const std::string lines = "user list\nuser show nobody\n";
    const ChildResult colored = RunWith(lines, {"batch", "-", "--color", "always"});
    EXPECT_THAT(colored.out, HasSubstr(kBold));
    EXPECT_THAT(colored.err, HasSubstr(kRed));
    const ChildResult own =
        RunWith("user list --color=never\n--color never user show nobody\n", {"--color=always", "batch", "-"});
    EXPECT_THAT(own.out + own.err, Not(HasSubstr("\x1B")));
    EXPECT_THAT(RunWith("user list --color always\n", {"batch", "-"}).out, HasSubstr(kBold));
    m_options.environment["XDG_CONFIG_HOME"] = Path("config");
    std::filesystem::create_directories(Path("config/qvadmin"));
    WriteFile("config/qvadmin/config.toml", "color = \"always\"\n");
    const ChildResult configured = RunWith(lines, {"batch", "-"});
    EXPECT_THAT(configured.out, HasSubstr(kBold));
    EXPECT_THAT(configured.err, HasSubstr(kRed));
    EXPECT_THAT(RunWith(lines, {"batch", "-", "--color", "never"}).out, Not(HasSubstr("\x1B")));
}

TEST_P(BatchOn, EndsAtTheFirstFailureWhenItIsTo)
{
    WriteFile("changes.txt", "user lock nobody\nuser lock amy\n");
    EXPECT_EQ(Run({"batch", Path("changes.txt"), "--stop-on-error"}).exit, 7);
    EXPECT_EQ(Locked(), "");
}

TEST_P(BatchOn, InOneTransactionAllOrNothingLasts)
{
    const std::string before = Dump();
    const std::string entry = LatestEntry().dump();
    const ChildResult failed =
        RunWith("user lock amy\nuser lock nobody\nuser lock rory\n", {"batch", "-", "--one-transaction"});
    EXPECT_EQ(failed.exit, 7);
    EXPECT_THAT(failed.err, HasSubstr("2 of 3 commands run, 1 failed; nothing was changed"));
    EXPECT_EQ(Dump(), before);
    EXPECT_EQ(LatestEntry().dump(), entry);
    EXPECT_EQ(RunWith("user lock amy\nuser unlock amy --reason back\nuser lock rory\n",
                      {"batch", "-", "--one-transaction", "--reason", "left"})
                  .exit,
              0);
    EXPECT_THAT(Locked(), AllOf(HasSubstr("rory"), Not(HasSubstr("amy"))));
    EXPECT_EQ(LatestEntry().at("reason"), "left");
}

TEST_P(BatchOn, CanBeTriedWithoutChangingAnything)
{
    const std::string before = Dump();
    EXPECT_EQ(RunWith("user lock amy\nuser create x\n", {"batch", "-", "--dry-run"}).exit, 8);
    EXPECT_EQ(RunWith("user create x\nuser lock x\n", {"batch", "-", "--one-transaction", "--dry-run"}).exit, 8);
    EXPECT_EQ(Dump(), before);
}

TEST_P(BatchOn, RefusesWhatCannotBeReadBeforeAnythingIsRun)
{
    const ChildResult result = RunWith("user lock amy\nuser lock 'rory\n", {"batch", "-"});
    EXPECT_EQ(result.exit, 2);
    EXPECT_THAT(result.err, HasSubstr("line 2: a quote in this line is not closed; nothing was run"));
    EXPECT_EQ(Locked(), "");
    EXPECT_THAT(RunWith("batch other.txt\n", {"batch", "-"}).err,
                HasSubstr("a batch cannot be run from within a batch"));
    EXPECT_THAT(RunWith("db init\n", {"batch", "-", "--one-transaction"}).err,
                HasSubstr("this command cannot be a part of one transaction"));
    EXPECT_EQ(Run({"batch", Path("missing.txt")}).exit, 1);
}

TEST_P(BatchOn, AFileMayBeginWithAByteOrderMark)
{
    EXPECT_EQ(RunWith("\xEF\xBB\xBFuser lock amy\r\nuser lock rory\r\n", {"batch", "-"}).exit, 0);
    EXPECT_THAT(Locked(), AllOf(HasSubstr("amy"), HasSubstr("rory")));
}

TEST_P(BatchOn, NamesComeFromStandardInputAndFiles)
{
    EXPECT_EQ(RunWith("\xEF\xBB\xBF"
                      "amy\r\n\nrory\n",
                      {"user", "lock", "-"})
                  .exit,
              0);
    EXPECT_THAT(Locked(), AllOf(HasSubstr("amy"), HasSubstr("rory")));
    WriteFile("names", std::string("rory\0clara\0", 11));
    EXPECT_EQ(Run({"user", "unlock", "amy", "--file", Path("names"), "-0"}).exit, 0);
    EXPECT_EQ(Locked(), "");
    const ChildResult missing = RunWith("amy\nnobody\nno one\n", {"user", "lock", "-"});
    EXPECT_EQ(missing.exit, 3);
    EXPECT_THAT(missing.err, AllOf(HasSubstr("nobody"), HasSubstr("no one")));
    EXPECT_EQ(Locked(), "");
    EXPECT_EQ(RunWith("", {"user", "lock", "-"}).err, "qvadmin: standard input contains no names\n");
    WriteFile("empty", "\n\n");
    const ChildResult empty = Run({"user", "lock", "--file", Path("empty")});
    EXPECT_EQ(empty.exit, 2);
    EXPECT_EQ(empty.err, "qvadmin: " + Path("empty") + " contains no names\n");
    EXPECT_THAT(RunWith("a\xFF\n", {"user", "lock", "-"}).err, HasSubstr("is not UTF-8; nothing was done"));
    EXPECT_EQ(Run({"user", "lock", "--file", Path("missing")}).exit, 1);
}

INSTANTIATE_TEST_SUITE_P(Engines, BatchOn, Engines(), EngineName);

} // namespace
