#include "ConsoleFixture.h"
#include "console/Render.h"

#include <gmock/gmock.h>

#include <sstream>

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

using Words = std::vector<std::string>;

class OutputOptionsTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
        ASSERT_EQ(Run({"user", "create", "amy", "--name", std::string(60, 'a') + "王王王王"}).exit, 0);
        ASSERT_EQ(Run({"user", "create", "rory"}).exit, 0);
    }

    ChildResult RunOnTerminal(const Words& words, const std::map<std::string, std::string>& environment = {})
    {
        ChildOptions options = m_options;
        options.outIsTerminal = true;
        options.environment.insert(environment.begin(), environment.end());
        ChildProcess child(QVADMIN_PROGRAM, words, options);
        return child.Finish();
    }

    std::vector<json> Log()
    {
        std::vector<json> lines;
        std::istringstream in(ReadFile("commands.log"));
        for (std::string line; std::getline(in, line);) {
            lines.push_back(json::parse(line));
        }
        return lines;
    }
};

std::string TableText(console::TableLook look)
{
    std::ostringstream out;
    console::TableWriter writer(console::Format::table, {"id", "name", "note"}, out, look, 2);
    for (const int id : {100000, 7}) {
        writer.Write({std::int64_t{id}, std::string("Amelia Jessica Porter"), std::string("wide 王王王 note")});
    }
    writer.Write({std::int64_t{8}, std::string("x"), std::string(40, 'y')});
    writer.Finish();
    return out.str();
}

} // namespace

TEST(TableLook, TheWidestColumnsAreShortenedUntilALineFits)
{
    EXPECT_EQ(TableText({.width = 45}), "    id  name                   note\n"
                                        "100000  Amelia Jessica Porter  wide 王王王 n…\n"
                                        "     7  Amelia Jessica Porter  wide 王王王 n…\n"
                                        "     8  x                      yyyyyyyyyyyyy…\n");
    EXPECT_EQ(TableText({.width = 30}), "    id  name             note\n"
                                        "100000  Amelia Jessica…  wide…\n"
                                        "     7  Amelia Jessica…  wide…\n"
                                        "     8  x                yyyy…\n");
    EXPECT_THAT(TableText({.width = 80}),
                AllOf(HasSubstr("Amelia Jessica Porter  wide 王王王 note\n"), HasSubstr(std::string(40, 'y'))));
    EXPECT_THAT(TableText({}), HasSubstr(std::string(40, 'y')));
    EXPECT_THAT(TableText({.width = 1}), AllOf(HasSubstr("100000  Ame…  wid…\n")));
}

TEST(TableLook, WhatNamesARowIsCutLastAndEmptyColumnsGiveWayToValues)
{
    const auto shown = [](std::size_t width) {
        std::ostringstream out;
        const console::Table people = {{"id", "login", "department", "name", "mobile"},
                                       {management::MakeRow(std::int64_t{1}, "amelia.pond@leadworth", console::Value(),
                                                            "Amelia Jessica Pond", "")}};
        Render(console::Format::table, people, out, {.width = width});
        return out.str();
    };
    EXPECT_EQ(shown(60), "id  login                  department  name           mobile\n"
                         " 1  amelia.pond@leadworth              Amelia Jessi…  \n");
    EXPECT_EQ(shown(45), "id  login                  depa…  name  mobi…\n"
                         " 1  amelia.pond@leadworth         Ame…  \n");
    EXPECT_EQ(shown(30), "id  login     dep…  name  mob…\n"
                         " 1  amelia.…        Ame…  \n");
    std::ostringstream out;
    const console::Table phones = {{"id", "login", "telephone_number", "department"},
                                   {management::MakeRow(std::int64_t{1}, "amelia", "12345", "")}};
    Render(console::Format::table, phones, out, {.width = 36});
    EXPECT_EQ(out.str(), "id  login   telephone_number  depar…\n"
                         " 1  amelia  12345             \n");
}

TEST(TableLook, TheHeadingIsBold)
{
    EXPECT_THAT(TableText({.hasColor = true}),
                AllOf(StartsWith("\x1B[1m    id  name"), HasSubstr("note\x1B[0m\n100000")));
}

TEST_F(OutputOptionsTest, TablesFitTheTerminal)
{
    const ChildResult fitted = RunOnTerminal({"user", "list", "--color", "never"}, {{"COLUMNS", "72"}});
    std::istringstream lines(fitted.out);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(line.size(), 80U) << line;
    }
    EXPECT_THAT(fitted.out, HasSubstr("…"));
    EXPECT_THAT(RunOnTerminal({"user", "list", "--wide"}, {{"COLUMNS", "72"}}).out, HasSubstr("王王王王"));
    EXPECT_THAT(RunOnTerminal({"user", "list", "-o", "csv"}, {{"COLUMNS", "72"}}).out, HasSubstr("王王王王"));
    EXPECT_THAT(RunOnTerminal({"user", "show", "amy"}, {{"COLUMNS", "72"}}).out, HasSubstr("王王王王"));
    m_options.environment["COLUMNS"] = "72";
    EXPECT_THAT(Run({"user", "list"}).out, HasSubstr("王王王王")) << "not a terminal";
}

TEST_F(OutputOptionsTest, ColorsAreForTerminals)
{
    constexpr const char* kBold = "\x1B[1m";
    EXPECT_THAT(RunOnTerminal({"user", "list"}).out, HasSubstr(kBold));
    EXPECT_THAT(RunOnTerminal({"user", "list"}, {{"NO_COLOR", "1"}}).out, Not(HasSubstr("\x1B")));
    EXPECT_THAT(RunOnTerminal({"user", "list"}, {{"TERM", "dumb"}}).out, Not(HasSubstr("\x1B")));
    EXPECT_THAT(RunOnTerminal({"--color=never", "user", "list"}).out, Not(HasSubstr("\x1B")));
    EXPECT_THAT(Run({"user", "list"}).out, Not(HasSubstr("\x1B")));
    EXPECT_THAT(Run({"user", "list", "--color", "always"}).out, HasSubstr(kBold));
    EXPECT_THAT(Run({"user", "show", "nobody", "--color", "always"}).err,
                StartsWith("\x1B[1;31mqvadmin:\x1B[0m there"));
    EXPECT_THAT(Run({"user", "list", "-o", "csv", "--color", "always"}).out, Not(HasSubstr("\x1B")));
    EXPECT_EQ(Run({"user", "list", "--color", "red"}).exit, 2);
}

TEST_F(OutputOptionsTest, DataCannotColorATerminal)
{
    ASSERT_EQ(Run({"user", "set", "rory", "--note", "\x1B[1mbold"}).exit, 0);
    for (const Words& words :
         std::vector<Words>{{"user", "show", "rory", "--color", "always"}, {"user", "show", "rory", "-o", "plain"}}) {
        EXPECT_THAT(RunOnTerminal(words).out, AllOf(HasSubstr("\\x1B[1mbold"), Not(HasSubstr("\x1B[1mbold"))));
    }
}

TEST_F(OutputOptionsTest, QuietSaysErrorsOnly)
{
    const ChildResult lock = Run({"-q", "user", "lock", "amy"});
    EXPECT_EQ(lock.exit, 0);
    EXPECT_EQ(lock.err, "");
    EXPECT_EQ(Run({"user", "create", "clara", "--quiet"}).out, "3\n");
    const ChildResult failed = Run({"-q", "user", "lock", "nobody"});
    EXPECT_EQ(failed.exit, 3);
    EXPECT_THAT(failed.err, StartsWith("qvadmin: there is no user 'nobody'"));
    const ChildResult batch = RunWith("user lock rory\nuser lock nobody\n", {"-q", "batch", "-"});
    EXPECT_EQ(batch.exit, 7);
    EXPECT_EQ(batch.err, failed.err);
    WriteFile("people.csv", "login\n danny\nemile\n");
    const ChildResult import = Run({"-q", "user", "import", "people.csv"});
    EXPECT_EQ(import.exit, 7);
    EXPECT_THAT(import.err, AllOf(StartsWith("people.csv:2: "), Not(HasSubstr("emile"))));
    EXPECT_EQ(std::ranges::count(import.err, '\n'), 1) << import.err;
    ChildOptions options = m_options;
    options.terminal = true;
    options.input = "y\n";
    ChildProcess child(QVADMIN_PROGRAM, {"-q", "user", "delete", "amy"}, options);
    EXPECT_EQ(child.Finish().exit, 9) << "nothing is asked";
}

TEST_F(OutputOptionsTest, EachCommandIsALineOfTheLog)
{
    const Words log = {"--log", "commands.log"};
    EXPECT_EQ(Run(With({"user", "lock", "amy"}, log)).exit, 0);
    EXPECT_EQ(Run(With({"user", "lock", "amy"}, log)).exit, 0);
    EXPECT_EQ(Run(With({"user", "unlock", "amy", "--dry-run"}, log)).exit, 8);
    EXPECT_EQ(Run(With({"user", "show", "nobody"}, log)).exit, 3);
    EXPECT_EQ(Run(With({"db", "status"}, log)).exit, 0);
    EXPECT_EQ(RunWith("user unlock amy\nuser list --fields login\n", With({"batch", "-"}, log)).exit, 0);
    const std::vector<json> lines = Log();
    ASSERT_EQ(lines.size(), 8U);
    std::string told;
    for (const json& line : lines) {
        EXPECT_THAT(line["time"].get<std::string>(), testing::MatchesRegex("20..-..-..T..:..:..Z"));
        EXPECT_NE(line["who"], "");
        told += line["command"].get<std::string>() + " " + line["exit"].dump() + " " + line["changed"].dump() + "\n";
    }
    EXPECT_EQ(told, "user lock amy 0 true\nuser lock amy 0 false\nuser unlock amy 8 false\nuser show nobody 3 false\n"
                    "db status 0 false\nuser unlock amy 0 true\nuser list --fields login 0 false\nbatch - 0 true\n");
    EXPECT_EQ(std::filesystem::status(Path("commands.log")).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(OutputOptionsTest, WithoutItsLogNothingIsDone)
{
    const ChildResult refused = Run({"user", "lock", "amy", "--log", "no/folder.log"});
    EXPECT_EQ(refused.exit, 1);
    EXPECT_THAT(refused.err, HasSubstr("cannot write the log no/folder.log: "));
    EXPECT_THAT(Run({"user", "list", "--locked", "-o", "plain"}).out, IsEmpty());
    const ChildResult full = Run({"user", "lock", "amy", "--log", "/dev/full"});
    EXPECT_EQ(full.exit, 1);
    EXPECT_THAT(full.err, HasSubstr("what the command changed stays changed"));
}

TEST_F(OutputOptionsTest, TheLastDatabaseCounts)
{
    EXPECT_EQ(Run({"--db", "sqlite:" + Path("none.db"), "user", "count", "--db", DatabaseUrl()}).out, "2\n");
    EXPECT_EQ(Run({"--db", DatabaseUrl(), "user", "count", "--db", "sqlite:" + Path("none.db")}).exit, 6);
}
