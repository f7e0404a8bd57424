#include "ExchangeFixture.h"
#include "management/exchange/Nouns.h"
#include "tests/support/Lines.h"

#include <algorithm>
#include <random>
#include <string>
#include <vector>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// A directory is made as a file says.

namespace {

class ApplyTest : public ExchangeFixture {
protected:
    ChildResult Apply(const std::string& text, const std::vector<std::string>& options = {"--yes"})
    {
        WriteFile("wanted.jsonl", text);
        return Run(With({"db", "apply", Path("wanted.jsonl"), "--max-removals", "100%"}, options));
    }

    /// Expects that the directory is as the file of the last Apply says, and that doing it again does nothing.
    void ExpectApplied()
    {
        const ChildResult diff = Run({"-o", "csv", "db", "diff", Path("wanted.jsonl")});
        EXPECT_EQ(diff.exit, 0) << diff.out;
        const std::string before = Dump();
        const nlohmann::json entry = LatestEntry();
        const ChildResult again = Apply(ReadFile("wanted.jsonl"), {"--yes", "-o", "json"});
        EXPECT_EQ(again.exit, 0) << again.err;
        EXPECT_EQ(nlohmann::json::parse(again.out).at("changed"), false);
        EXPECT_EQ(Dump(), before);
        EXPECT_EQ(LatestEntry(), entry);
        EXPECT_EQ(Run({"db", "check"}).out, m_problems);
    }

    /// What is changed of the directory that Fill makes.
    void Change()
    {
        Done({"user", "delete", "O'Neil", "--yes"});
        Done({"user", "create", "clara", "--name", "Clara"});
        Done({"user", "set", "amy", "--email", "new@example.org"});
        Done({"group", "delete", "/Company/Service", "--recursive", "--yes"});
        Done({"group", "create", "/Company/Third"});
        Done({"group", "create", "/Company/Third/Fourth"});
        Done({"member", "add", "/Company/Third/Fourth", "clara", "amy"});
        Done({"user", "set", "amy", "--department", "/Company/Third/Fourth"});
        Done({"view", "create", "Another"});
        Done({"role", "create", "Authors"});
        Done({"role", "add", "Authors", "clara"});
        Done({"role", "delete", "Editors", "--app", "Other", "--domain", "4", "--yes"});
        Done({"right", "grant", "role:Authors", "mail", "send", "7"});
        Done({"right", "set", "role:Editors", "mail", "send", "3"});
        Done({"folder", "create", "/Main/New"});
        Done({"folder", "create", "/Main/New/Inner"});
        Done({"folder", "delete", "/Main/Other", "--recursive", "--yes"});
        Done({"docroot", "create", "Second", "--path", "D:\\", "--type", "1"});
        Done({"plan", "create", "Weekly", "--data", "x"});
        Done({"plan", "assign", "Weekly", "user:clara"});
        Done({"setting", "set", "Banner", "other", "--genre", "Console"});
        Done({"package", "install", "Home", "--version", "1"});
        Done({"addin", "delete", "Calendar", "--yes"});
        Done({"board", "delete", "n-1", "--yes"});
    }

    std::string m_problems;
};

/// The lines of a text, with their ends.
std::vector<std::string> WholeLinesOf(const std::string& text)
{
    std::vector<std::string> lines = LinesOf(text);
    for (std::string& line : lines) {
        line += '\n';
    }
    return lines;
}

std::string WithoutLines(const std::string& text, const std::string& part)
{
    std::string left;
    for (const std::string& line : WholeLinesOf(text)) {
        left += line.find(part) == std::string::npos ? line : "";
    }
    return left;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

INSTANTIATE_TEST_SUITE_P(Engines, ApplyTest, Engines(), EngineName);

} // namespace

TEST_P(ApplyTest, MakesTheDirectoryAsAnEarlierOrLaterOne)
{
    Fill();
    const std::string before = Export("before.jsonl", {"--with-passwords"});
    Change();
    const std::string after = Export("after.jsonl", {"--with-passwords"});
    for (const std::string& text : {before, after, before}) {
        m_problems = Run({"db", "check"}).out;
        const ChildResult applied = Apply(text, {"--yes", "--allow-privileges"});
        ASSERT_EQ(applied.exit, 0) << applied.err;
        m_problems = Run({"db", "check"}).out;
        ExpectApplied();
    }
}

TEST_P(ApplyTest, IntoAnEmptyDirectoryAndBack)
{
    Fill();
    const std::string text = Export("full.jsonl", {"--with-passwords"});
    StartAnew();
    ASSERT_EQ(Apply(text, {"--yes", "--allow-privileges"}).exit, 0);
    m_problems = Run({"db", "check"}).out;
    ExpectApplied();
    EXPECT_EQ(Export("again.jsonl", {"--with-passwords"}), text);
    // A file without lines says nothing, unless it says of what.
    EXPECT_EQ(Apply(kHead).exit, 0);
    EXPECT_EQ(Export("again.jsonl", {"--with-passwords"}), text);
    std::string nouns;
    for (const management::Noun& noun : management::Nouns()) {
        nouns += (nouns.empty() ? "" : ",") + std::string(noun.plural);
    }
    const ChildResult emptied =
        Apply(Replaced(kHead, "1}", R"(1,"nouns":")" + nouns + "\"}"), {"--yes", "--allow-privileges"});
    EXPECT_EQ(emptied.exit, 0) << emptied.err;
    EXPECT_EQ(Export("nothing.jsonl", {"--with-passwords"}), kHead);
    m_problems = Run({"db", "check"}).out;
    ExpectApplied();
}

TEST_P(ApplyTest, IsOneEntryOfTheRecordAndCanBeUndone)
{
    Fill();
    const std::string before = Export("before.jsonl");
    Change();
    const std::string after = Dump("Col_PWord");
    const std::string latest = LatestEntry().at("id").dump();
    ExpectRecordedAndUndone("db apply", [&] { return Apply(before, {"--yes", "--allow-privileges"}); });
    EXPECT_EQ(Dump("Col_PWord"), after);
    const nlohmann::json entry = LatestEntry(); // of the undoing
    EXPECT_EQ(std::stoi(entry.at("id").dump()), std::stoi(latest) + 2);
}

TEST_P(ApplyTest, TriedChangesNothingAndSaysWhatItWouldDo)
{
    Fill();
    const std::string text = Export("before.jsonl");
    Done({"user", "create", "clara"});
    Done({"user", "set", "amy", "--email", "new@example.org", "--title", "Lead"});
    Done({"group", "delete", "/Company/Service/North", "--recursive", "--yes"});
    const std::string before = Dump();
    const ChildResult tried = Apply(text, {"--dry-run"});
    EXPECT_EQ(tried.exit, 8);
    EXPECT_THAT(tried.err, AllOf(HasSubstr("remove user clara\n"), HasSubstr("change user amy: email, title\n"),
                                 HasSubstr("add group /Company/Service/North\n"),
                                 HasSubstr("dry run: added group /Company/Service/North\n"),
                                 HasSubstr("dry run: nothing was changed\n")));
    EXPECT_EQ(Dump(), before);
    const ChildResult unasked = Apply(text, {});
    EXPECT_EQ(unasked.exit, 9);
    EXPECT_THAT(unasked.err, HasSubstr("nothing was changed; --yes goes on without asking"));
    const ChildResult done = Apply(text, {"--yes", "-o", "jsonl", "--reason", "as reviewed"});
    ASSERT_EQ(done.exit, 0) << done.err;
    const nlohmann::json object = nlohmann::json::parse(done.out);
    EXPECT_EQ(object.at("changed"), true);
    EXPECT_EQ(object.at("outcomes").at(0), nlohmann::json::parse(R"({"type":"user","id":0,"name":"clara",
              "outcome":"removed","message":"removed user clara"})"));
    EXPECT_EQ(LatestEntry().at("reason"), "as reviewed");
    m_problems = Run({"db", "check"}).out;
    ExpectApplied();
}

TEST_P(ApplyTest, WhatTheFileIsNotAboutIsLeftAlone)
{
    Fill();
    const std::string users = Export("users.jsonl", {"--nouns", "users"});
    const std::string part = Export("part.jsonl", {"--in", "/Company/Sales"});
    Done({"user", "create", "clara"});
    Done({"member", "add", "/Company/Service", "clara"});
    Done({"right", "grant", "user:clara", "mail", "send", "1"});
    Done({"console", "set", "clara", "read-only"});
    Done({"user", "create", "danny"});
    Done({"member", "add", "/Company/Sales/North", "danny"});
    Done({"role", "create", "Authors"});

    ASSERT_EQ(Apply(part).exit, 0);
    EXPECT_THAT(Done({"member", "list", "/Company/Sales/North"}), Not(HasSubstr("danny")));
    EXPECT_EQ(Run({"user", "exists", "danny"}).exit, 0) << "others may need him";
    EXPECT_EQ(Run({"user", "exists", "clara"}).exit, 0);
    EXPECT_EQ(Run({"role", "show", "Authors"}).exit, 0);
    m_problems = Run({"db", "check"}).out;
    ExpectApplied();

    const ChildResult applied = Apply(users);
    ASSERT_EQ(applied.exit, 0) << applied.err;
    EXPECT_THAT(
        applied.err,
        AllOf(HasSubstr("remove user clara\nremove user danny\nwhat is removed takes along 1 relation, 1 right, 1 web "
                        "console account\n"),
              Not(HasSubstr("left alone"))));
    EXPECT_EQ(Run({"role", "show", "Authors"}).exit, 0);
    m_problems = Run({"db", "check"}).out;
    ExpectApplied();

    Done({"title", "give", "/Company/Sales", "O'Neil", "Clerk"});
    const ChildResult lines = Apply(WithoutLines(Export("all.jsonl"), R"("noun":"title")"));
    EXPECT_EQ(lines.exit, 0) << lines.err;
    EXPECT_THAT(lines.err, HasSubstr("wanted.jsonl has no line of that kind: 2 titles\n"));
}

TEST_P(ApplyTest, PasswordsAreSetOnlyWhereTheFileHasThem)
{
    Fill();
    const std::string with = Export("with.jsonl", {"--with-passwords"});
    const std::string without = Export("without.jsonl");
    WriteSecretFile("other", "another password");
    Done({"user", "password", "set", "amy", "--password-file", Path("other")});
    ASSERT_EQ(Apply(without).exit, 0);
    EXPECT_EQ(Run({"user", "password", "check", "amy", "--password-file", Path("other")}).exit, 0);
    const ChildResult applied = Apply(with);
    ASSERT_EQ(applied.exit, 0) << applied.err;
    EXPECT_THAT(applied.err, AllOf(HasSubstr("changed user amy: password\n")));
    EXPECT_EQ(Run({"user", "password", "check", "amy", "--password-file", Path("secret")}).exit, 0);
}

TEST_P(ApplyTest, RemovesNoMoreThanItMay)
{
    Fill();
    const std::string text = Export("all.jsonl");
    WriteFile("few.jsonl", WithoutLines(WithoutLines(text, "back"), "O'Neil"));
    const std::string before = Dump();
    const ChildResult refused = Run({"db", "apply", Path("few.jsonl"), "--yes", "--dry-run"});
    EXPECT_EQ(refused.exit, 4);
    EXPECT_THAT(refused.err, HasSubstr("few.jsonl lacks 6 of the 48 lines that the directory has, and --max-removals "
                                       "allows 5%; nothing was changed"));
    EXPECT_EQ(Run({"db", "apply", Path("few.jsonl"), "--yes", "--max-removals", "5"}).exit, 4);
    EXPECT_EQ(Run({"db", "apply", Path("few.jsonl"), "--yes", "--max-removals", "many"}).exit, 2);
    EXPECT_EQ(Dump(), before);
    const ChildResult super = Run({"db", "apply", Path("few.jsonl"), "--yes", "--max-removals", "6"});
    EXPECT_EQ(super.exit, 5);
    EXPECT_THAT(super.err, HasSubstr("is a super or system user, whose removal needs --allow-privileges; nothing was "
                                     "changed"));
    EXPECT_EQ(Dump(), before);
}

TEST_P(ApplyTest, RefusesInOneSentenceWhatItCannotDo)
{
    Fill();
    const std::string text = Export("all.jsonl");
    const std::string before = Dump();
    const auto refuses = [&](const std::string& wanted, int exit, const std::string& sentence) {
        const ChildResult result = Apply(wanted);
        EXPECT_EQ(result.exit, exit) << result.err;
        EXPECT_THAT(result.err, HasSubstr(sentence));
        EXPECT_EQ(Dump(), before);
    };
    refuses(text + "{\"noun\":\"member\",\"member\":{\"user\":\"nobody\"},\"of\":{\"group\":\"/Company/Sales\"},"
                   "\"relation\":1}\n",
            4, ": there is no user 'nobody'; nothing was changed");
    refuses(text + "{\"noun\":\"group\",\"path\":\"/Nowhere/Else\"}\n", 4,
            ": there is no '/Nowhere'; nothing was changed");
    refuses(text + "{\"noun\":\"user\",\"login\":\"danny\",\"super\":1}\n", 4,
            ": changes super, which needs --allow-privileges; nothing was changed");
    refuses(WithoutLines(text, R"("noun":"view","name":"Company")"), 4, "cannot be applied: the ");
    refuses("{\"noun\":\"user\"}\n", 2, "is not an exported directory");
    refuses(text + "{\"noun\":\"cat\"}\n", 2, ": unknown noun 'cat'");
    EXPECT_EQ(Run({"db", "apply", Path("missing.jsonl"), "--yes"}).exit, 1);
    // What an engine does not keep as it is written.
    const std::string day =
        Replaced(text, R"("noun":"plan")",
                 "\"noun\":\"package\",\"name\":\"Home\",\"changed\":\"2026-05-01\"}\n{\"noun\":\"plan\"");
    if (std::string(GetParam()) == "sqlite") {
        EXPECT_EQ(Apply(day).exit, 0);
    } else {
        refuses(day, 4, "cannot be applied: the package Home would still have another changed; nothing was changed");
    }
}

TEST_P(ApplyTest, RowsOfOneNameAreToldApartByAllThatTheyHave)
{
    Fill();
    const std::string insert = "INSERT INTO qv_ItemAce (Col_QvItemID, Col_QvItemType, Col_FunName, Col_FunGenre, "
                               "Col_Power, Col_UnPower) VALUES (1, 1, 'read', 'mail', ";
    for (const char* power : {"1, 0)", "3, 0)", "4, 0)"}) {
        Execute(insert + power);
    }
    const std::string text = Export("all.jsonl");
    const std::string three = R"("function":"read","power":3)";
    EXPECT_EQ(Apply(WithoutLines(Replaced(text, three, "\"function\":\"read\",\"power\":5"), "\"power\":4,")).exit, 0);
    m_problems = Run({"db", "check"}).out;
    ExpectApplied();
}

TEST_P(ApplyTest, ReadsStandardInput)
{
    Fill();
    const std::string text = Export("all.jsonl");
    Done({"user", "create", "clara"});
    EXPECT_EQ(RunWith(text, {"db", "apply", "-", "--yes"}).exit, 0);
    EXPECT_EQ(Run({"user", "exists", "clara"}).exit, 3);
}

// Whatever lines of two directories a file has: where it can be applied, nothing differs then.
TEST_P(ApplyTest, AfterItNothingDiffersOrNothingWasChanged)
{
    Fill();
    const std::string before = Export("before.jsonl");
    Change();
    const std::string after = Export("after.jsonl");
    std::mt19937 random(20261122);
    const auto isOneOf = [&random](unsigned percent) { return random() % 100 < percent; };
    // Lines that no others refer to, so that a file without some of them makes sense.
    const std::vector<std::string> leaves = {"member",     "department", "title",   "right",  "object_right",
                                             "assignment", "setting",    "package", "add_in", "notice_reply"};
    const auto isLeaf = [&leaves](const std::string& line) {
        return std::ranges::any_of(
            leaves, [&line](const std::string& noun) { return line.starts_with(R"({"noun":")" + noun + "\""); });
    };
    const int rounds = std::string(GetParam()) == "sqlite" ? 24 : 8;
    int applied = 0;
    for (int round = 0; round < rounds; ++round) {
        const bool makesSense = round % 2 == 0;
        std::string text = kHead;
        for (const std::string& line : WholeLinesOf(round % 4 < 2 ? before : after)) {
            const bool isLeftOut = (isLeaf(line) && isOneOf(30)) || (!makesSense && isOneOf(3));
            text += line == kHead || isLeftOut ? "" : line;
        }
        for (const std::string& line : WholeLinesOf(round % 4 < 2 ? after : before)) {
            const bool isNew = !makesSense && isOneOf(3) && text.find(line) == std::string::npos;
            text += isNew ? line : "";
        }
        const std::string dump = Dump();
        const ChildResult result = Apply(text, {"--yes", "--allow-privileges"});
        if (result.exit != 0) {
            EXPECT_FALSE(makesSense) << result.err << text;
            EXPECT_THAT(result.err, HasSubstr("; nothing was changed\n")) << text;
            EXPECT_EQ(Dump(), dump);
            continue;
        }
        ++applied;
        EXPECT_NE(Dump(), dump);
        EXPECT_EQ(Run({"db", "diff", Path("wanted.jsonl")}).exit, 0) << text;
        EXPECT_EQ(Apply(text, {"--dry-run", "--allow-privileges"}).exit, 0) << text;
    }
    EXPECT_LT(applied, rounds);
}
