#include "ConsoleFixture.h"
#include "console/LocalCommand.h"
#include "dbaccess/CAConnect.h"
#include "management/Command.h"
#include "tests/support/Lines.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using namespace console;
using namespace management;
using nlohmann::json;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// What holds for all commands, since they are rows of one table.

namespace {

/// The commands that help shows.
std::vector<const management::Command*> Shown()
{
    std::vector<const management::Command*> shown = AllCommands();
    std::erase_if(shown, [](const management::Command* command) { return command->summary.empty(); });
    return shown;
}

/// The words of an example as a shell gives them to the program, up to a pipe or a redirection.
std::vector<std::string> WordsOf(const std::string& line)
{
    std::vector<std::string> words;
    std::string word;
    bool isQuoted = false;
    bool isWord = false;
    for (const char ch : line + " ") {
        if (ch == '\'') {
            isQuoted = !isQuoted;
            isWord = true;
        } else if (ch == ' ' && !isQuoted) {
            if (isWord) {
                words.push_back(std::exchange(word, ""));
            }
            isWord = false;
        } else {
            word += ch;
            isWord = true;
        }
    }
    words.erase(std::ranges::find_if(words, [](const std::string& part) { return part == "|" || part == ">"; }),
                words.end());
    return words;
}

std::vector<std::string> CsvHeader(const std::string& out)
{
    std::vector<std::string> names;
    std::istringstream in(out.substr(0, out.find('\n')));
    for (std::string name; std::getline(in, name, ',');) {
        names.push_back(name);
    }
    return names;
}

class CommandTableTest : public ConsoleFixture {
protected:
    std::vector<std::string> Completed(std::vector<std::string> words)
    {
        words.insert(words.begin(), {"complete", "--"});
        const ChildResult result = Run(words);
        EXPECT_EQ(result.exit, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return LinesOf(result.out);
    }
};

TEST_F(CommandTableTest, EveryCommandHasHelpAndEveryExampleIsUnderstood)
{
    ASSERT_THAT(Shown(), Not(IsEmpty()));
    for (const management::Command* command : Shown()) {
        std::vector<std::string> help = PathOf(*command);
        help.emplace_back("--help");
        const ChildResult result = Run(help);
        EXPECT_EQ(result.exit, 0) << result.err;
        EXPECT_THAT(result.out, HasSubstr(std::string(command->summary)));
        for (const std::string_view line : command->examples) {
            std::vector<std::string> words = WordsOf(std::string(line));
            if (words.empty() || words.front() != "qvadmin") {
                continue;
            }
            words.erase(words.begin());
            EXPECT_NO_THROW(ParseCommandLine(words)) << line;
        }
    }
}

TEST_F(CommandTableTest, NoPathIsThereTwice)
{
    std::set<std::vector<std::string>> paths;
    for (const management::Command* command : AllCommands()) {
        EXPECT_TRUE(paths.insert(PathOf(*command)).second) << testing::PrintToString(PathOf(*command));
    }
}

TEST_F(CommandTableTest, EveryCommandThatWritesIsUndoneByATest)
{
    // AuditTest, WebAccountsTest, ApplyTest, CheckTest and UserMoveTest undo these, or see that it is refused: pruned
    // entries and one-time codes are gone, and links to nothing do not come back.
    const std::set<std::string> byItself = {"audit prune", "audit undo", "console totp remove",
                                            "db apply",    "db check",   "user move"};
    const testing::UnitTest& all = *testing::UnitTest::GetInstance();
    std::vector<std::string> undone;
    for (int suite = 0; suite < all.total_test_suite_count(); ++suite) {
        const testing::TestSuite& tests = *all.GetTestSuite(suite);
        for (int test = 0; test < tests.total_test_count(); ++test) {
            const testing::TestInfo& info = *tests.GetTestInfo(test);
            if (info.value_param() != nullptr &&
                std::string_view(info.name()).starts_with("IsRecordedAndCanBeUndone/")) {
                undone.emplace_back(std::string(info.value_param()) + " ");
            }
        }
    }
    std::set<std::string> others;
    for (const management::Command* command : Shown()) {
        const std::string path = fmt::format("{} ", fmt::join(PathOf(*command), " "));
        const bool isUndone =
            std::ranges::any_of(undone, [&path](const std::string& words) { return words.starts_with(path); });
        if (command->effect != Effect::read && command->handler.run != nullptr && !isUndone) {
            others.insert(path.substr(0, path.size() - 1));
        }
    }
    EXPECT_EQ(others, byItself);
}

TEST_F(CommandTableTest, ListsHaveTheColumnsOfTheirRow)
{
    Init();
    int count = 0;
    for (const management::Command* command : Shown()) {
        const std::vector<ParamInfo> params = command->handler.params();
        const bool needsSomething = std::ranges::any_of(params, &ParamInfo::isRequired);
        if (command->effect != Effect::read || command->columns.empty() || needsSomething) {
            continue;
        }
        std::vector<std::string> words = PathOf(*command);
        words.insert(words.end(), {"-o", "csv"});
        std::vector<std::string> names;
        std::ranges::transform(command->columns, std::back_inserter(names),
                               [](const Column& column) { return std::string(column.name); });
        const ChildResult result = Run(words);
        if (result.exit != 0) {
            continue;
        }
        ++count;
        const std::vector<std::string> header = CsvHeader(result.out);
        // A flag may ask for more at the end.
        if (std::ranges::any_of(params, [](const ParamInfo& param) { return param.kind == Kind::flag; })) {
            names.resize(std::min(names.size(), header.size()));
        }
        EXPECT_EQ(header, names) << testing::PrintToString(words);
    }
    EXPECT_GT(count, 3);
}

TEST_F(CommandTableTest, TheTableIsPrintedAsData)
{
    const json table = json::parse(Run({"commands", "-o", "json"}).out);
    EXPECT_EQ(table["v"], 1);
    ASSERT_FALSE(table["commands"].empty());
    for (const json& command : table["commands"]) {
        EXPECT_FALSE(command["summary"].get<std::string>().empty());
        for (const json& param : command["parameters"]) {
            EXPECT_FALSE(param["help"].get<std::string>().empty()) << command["path"] << param["name"];
        }
    }
    EXPECT_THAT(Run({"commands"}).out, HasSubstr("plan create"));

    const auto parameter = [&table](const json& path, std::string_view name) {
        const auto isOf = [&path](const json& command) { return command["path"] == path; };
        const json& command = *std::ranges::find_if(table["commands"], isOf);
        EXPECT_FALSE(command["examples"].empty()) << path;
        const auto isNamed = [name](const json& param) { return param["name"] == name; };
        return json(*std::ranges::find_if(command["parameters"], isNamed));
    };
    const json limit = parameter({"user", "list"}, "limit");
    EXPECT_EQ(limit["least"], 1);
    EXPECT_GT(limit["most"], 1);
    EXPECT_FALSE(limit.contains("negatable"));
    EXPECT_EQ(parameter({"user", "set"}, "super")["negatable"], true);
    EXPECT_EQ(parameter({"plan", "create"}, "data_file")["excludes"], "data");
}

TEST_F(CommandTableTest, ErrorsAreJsonWhereJsonIsAskedFor)
{
    Init();
    ASSERT_EQ(Run({"plan", "create", "Nightly"}).exit, 0);
    ASSERT_EQ(Run({"plan", "create", "nightly"}).exit, 4);
    const ChildResult missing = Run({"plan", "show", "x", "-o", "json"});
    EXPECT_EQ(missing.exit, 3);
    EXPECT_EQ(missing.out, "");
    const json error = json::parse(missing.err);
    EXPECT_EQ(error["code"], "not_found");
    EXPECT_EQ(error["exit"], 3);
    EXPECT_EQ(error["message"], "there is no backup plan 'x'; `qvadmin plan list` shows all");
    EXPECT_EQ(json::parse(Run({"plan", "show", "--output=jsonl"}).err)["code"], "invalid");
    EXPECT_EQ(json::parse(Run({"plan", "list", "--frob", "-ojson"}).err)["code"], "invalid");
    EXPECT_EQ(json::parse(Run({"plan", "delete", "Nightly", "-o", "json"}).err)["code"], "confirmation_required");
    m_options.environment["QVADMIN_OUTPUT"] = "json";
    EXPECT_EQ(json::parse(Run({"plan", "list", "--frob"}).err)["code"], "invalid");
    EXPECT_THAT(Run({"plan", "list", "--frob", "-o", "table"}).err, HasSubstr("qvadmin: '--frob'"));
    m_options.environment.erase("QVADMIN_OUTPUT");
    CAConnect conn;
    conn.Open(CString(std::string_view(DatabaseUrl())));
    conn.Execute("INSERT INTO Tab_Doc_Backup_Plan (Col_Name) VALUES ('Nightly')");
    const json ambiguous = json::parse(Run({"plan", "show", "Nightly", "-o", "json"}).err);
    EXPECT_EQ(ambiguous["code"], "conflict");
    EXPECT_EQ(ambiguous["candidates"], json({"id:1", "id:2"}));
}

TEST_F(CommandTableTest, WhatWorksOnFilesAndDatabasesSaysInJsonWhatWasDone)
{
    WriteFile("people.csv", "login,name\namy,Amy\nbob,Bob\n,Nobody\n");
    WriteFile("all.csv", "login\namy\n");
    const std::vector<std::pair<std::vector<std::string>, json>> cases = {
        {{"db", "init"}, {{"changed", true}, {"version", 5}}},
        {{"db", "init"}, {{"changed", false}, {"version", 5}}},
        {{"view", "create", "Main"}, {{"changed", true}}},
        {{"user", "import", "people.csv", "--dry-run"}, {{"changed", true}, {"dry_run", true}, {"created", 2}}},
        {{"user", "import", "people.csv"},
         {{"changed", true},
          {"dry_run", false},
          {"created", 2},
          {"updated", 0},
          {"unchanged", 0},
          {"exists", 0},
          {"failed", 1},
          {"result", "people.csv.result.csv"}}},
        {{"user", "import", "people.csv"}, {{"changed", false}, {"created", 0}, {"exists", 2}, {"failed", 1}}},
        {{"group", "create", "/Main/Sales"}, {{"changed", true}}},
        {{"member", "add", "/Main/Sales", "amy", "bob"}, {{"changed", true}}},
        {{"user", "import", "all.csv", "--sync", "--scope", "/Main", "--leavers", "lock", "--max-leavers", "1"},
         {{"leavers", 1}, {"leavers_done", 1}, {"leavers_failed", 0}}},
        {{"db", "copy", "sqlite:copy.db"}, {{"changed", true}, {"tables", 30}, {"target", "sqlite:copy.db"}}},
        {{"db", "backup", "kept.db"}, {{"tables", 30}, {"target", "kept.db"}}},
        {{"db", "restore", "kept.db", "--replace", "--yes"}, {{"changed", true}, {"tables", 30}}},
        {{"export", "directory.jsonl"}, nullptr},
        {{"import", "directory.jsonl"}, {{"changed", false}, {"created", 0}, {"failed", 0}}},
    };
    for (const auto& [words, expected] : cases) {
        std::vector<std::string> line = words;
        line.insert(line.end(), {"-o", "json"});
        const ChildResult result = Run(line);
        const std::string& out = result.out;
        if (expected.is_null()) {
            continue;
        }
        const json object = json::parse(out, nullptr, false);
        ASSERT_TRUE(object.is_object()) << fmt::format("{}", fmt::join(words, " ")) << ": " << out << result.err;
        EXPECT_EQ(object["v"], 1);
        for (const auto& [name, value] : expected.items()) {
            EXPECT_EQ(object[name], value) << fmt::format("{}", fmt::join(words, " ")) << ": " << out << result.err;
        }
    }
    // The outcomes are all there is on standard output then.
    EXPECT_EQ(Run({"user", "import", "all.csv", "--result", "-", "-o", "json"}).out,
              "line,login,id,outcome,reason\n2,amy,1,exists,\n");
}

TEST_F(CommandTableTest, EveryManualPageIsCleanMdoc)
{
    std::vector<std::string> pages = {""};
    for (const console::Noun& noun : console::Nouns()) {
        pages.emplace_back(noun.name);
    }
    for (const std::string& page : pages) {
        const ChildResult manual = page.empty() ? Run({"manual"}) : Run({"manual", page});
        ASSERT_EQ(manual.exit, 0) << manual.err;
        WriteFile("page.1", manual.out);
        ChildOptions options = m_options;
        options.environment["PATH"] = "/usr/bin:/bin";
        ChildProcess mandoc("/usr/bin/mandoc", {"-Tlint", "-Wwarning", "page.1"}, options);
        const ChildResult result = mandoc.Finish();
        EXPECT_EQ(result.exit, 0) << page << '\n' << result.out << result.err;
    }
    EXPECT_EQ(Run({"manual", "nothing"}).exit, 3);
}

TEST_F(CommandTableTest, WordsOptionsAndChoicesAreCompleted)
{
    EXPECT_THAT(Completed({"pl"}), ElementsAre("plan"));
    EXPECT_THAT(Completed({"plan", "as"}), ElementsAre("assign"));
    EXPECT_THAT(Completed({"plan", "assign", "--rec"}), ElementsAre("--recursive"));
    EXPECT_THAT(Completed({"plan", "assign", "--"}), AllOf(Contains("--yes"), Contains("--dry-run"), Contains("--db")));
    EXPECT_THAT(Completed({"plan", "list", "-o", "js"}), ElementsAre("json", "jsonl"));
    EXPECT_THAT(Completed({"completion", ""}), ElementsAre("bash", "fish", "zsh"));
    EXPECT_THAT(Completed({"nonsense", "x"}), IsEmpty());
}

TEST_F(CommandTableTest, NamesAreCompletedFromTheDirectory)
{
    EXPECT_THAT(Completed({"plan", "show", ""}), IsEmpty()) << "where there is no directory";
    Init();
    for (const std::vector<std::string>& words : {std::vector<std::string>{"plan", "create", "Nightly"},
                                                  {"plan", "create", "Nachts um drei"},
                                                  {"user", "create", "amy"},
                                                  {"view", "create", "Company"},
                                                  {"group", "create", "/Company/Sales"}}) {
        ASSERT_EQ(Run(words).exit, 0);
    }
    EXPECT_THAT(Completed({"plan", "show", "n"}), ElementsAre("Nachts um drei", "Nightly"));
    EXPECT_THAT(Completed({"plan", "of", "us"}), ElementsAre("user:"));
    EXPECT_THAT(Completed({"plan", "of", "user:a"}), ElementsAre("user:amy"));
    EXPECT_THAT(Completed({"plan", "assign", "Nightly", "group:/Comp"}), Contains("group:/Company/Sales"));
    EXPECT_THAT(Completed({"--db", "sqlite:/nowhere/x.db", "plan", "show", "N"}), IsEmpty());
}

TEST_F(CommandTableTest, ScriptsOfShellsAreWellFormedAndBashesCompletes)
{
    Init();
    ASSERT_EQ(Run({"plan", "create", "Nachts um drei"}).exit, 0);
    ChildOptions options = m_options;
    options.environment["PATH"] = "/usr/bin:/bin";
    for (const std::string shell : {"bash", "zsh", "fish"}) {
        const ChildResult script = Run({"completion", shell});
        ASSERT_EQ(script.exit, 0) << script.err;
        WriteFile("script", script.out);
        ChildProcess check("/usr/bin/" + shell, {"-n", "script"}, options);
        const ChildResult result = check.Finish();
        EXPECT_EQ(result.exit, 0) << shell << ": " << result.err;
    }
    WriteFile("script", Run({"completion", "bash"}).out + "COMP_WORDS=(" QVADMIN_PROGRAM " plan show Na) COMP_CWORD=3\n"
                                                          "COMP_LINE=\"${COMP_WORDS[*]}\" COMP_POINT=${#COMP_LINE}\n"
                                                          "_qvadmin\nprintf '%s\\n' \"${COMPREPLY[@]}\"\n");
    ChildProcess shell("/usr/bin/bash",
                       {"--norc", "-c", "source /usr/share/bash-completion/bash_completion && source ./script"},
                       options);
    const ChildResult result = shell.Finish();
    EXPECT_EQ(result.out, "Nachts\\ um\\ drei\n") << result.err;
    EXPECT_EQ(Run({"completion", "tcsh"}).exit, 2);
}

} // namespace
