#include "ExchangeFixture.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <sstream>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// A directory as a file, and back.

namespace {

using ExchangeTest = ExchangeFixture;

INSTANTIATE_TEST_SUITE_P(Engines, ExchangeTest, Engines(), EngineName);

} // namespace

TEST_P(ExchangeTest, TheSameBytesComeBackFromAnEmptyDirectory)
{
    Fill();
    const std::string text = Export("first.jsonl");
    EXPECT_THAT(text, StartsWith(kHead));
    for (const char* engine : {"", "sqlite"}) {
        StartAnew(engine);
        const ChildResult imported = Import(text, {"--allow-privileges"});
        EXPECT_EQ(imported.exit, 0) << imported.err;
        EXPECT_THAT(imported.err, AllOf(HasSubstr(" 0 updated"), HasSubstr(" 0 already there, 0 failed")));
        EXPECT_EQ(Export("again.jsonl"), text);
    }
}

TEST_P(ExchangeTest, WhatIsSoAlreadyIsNotChanged)
{
    Fill();
    const std::string before = Dump();
    const nlohmann::json entry = LatestEntry();
    const std::string text = Export("all.jsonl", {"--with-passwords"});
    for (const char* option : {"--update", "--dry-run", "--allow-privileges"}) {
        const ChildResult again = Import(text, {option});
        EXPECT_EQ(again.exit, 0) << again.err;
        EXPECT_THAT(again.err, AllOf(HasSubstr(" 0 created, 0 updated"), HasSubstr(" 0 already there, 0 failed")));
    }
    EXPECT_EQ(Dump(), before);
    EXPECT_EQ(LatestEntry(), entry);
}

TEST_P(ExchangeTest, AnImportIsOneEntryOfTheRecordAndCanBeUndone)
{
    Fill();
    const std::string text = Export("all.jsonl");
    StartAnew();
    ExpectRecordedAndUndone("import", [&] { return Import(text, {"--allow-privileges"}); });
}

TEST_P(ExchangeTest, PasswordsComeOnlyWhenAskedFor)
{
    Fill();
    EXPECT_THAT(Export("without.jsonl"), Not(HasSubstr("password")));
    const std::string text = Export("with.jsonl", {"--with-passwords"});
    EXPECT_THAT(text, HasSubstr("\"password\":\""));
    struct stat status = {};
    ASSERT_EQ(::stat(Path("with.jsonl").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    StartAnew();
    EXPECT_EQ(Import(text, {"--allow-privileges"}).exit, 0);
    WriteSecretFile("given", "a long password");
    EXPECT_EQ(Run({"user", "password", "check", "amy", "--password-file", Path("given")}).exit, 0);
    EXPECT_EQ(Export("again.jsonl", {"--with-passwords"}), text);
}

TEST_P(ExchangeTest, APartHasWhatIsBelowAndTheirPeople)
{
    Fill();
    const std::string text = Export("part.jsonl", {"--in", "/Company/Sales"});
    EXPECT_THAT(text, AllOf(HasSubstr("\"login\":\"amy\""), HasSubstr("\"login\":\"O'Neil\""),
                            HasSubstr("\"noun\":\"view\",\"name\":\"Company\""),
                            HasSubstr("\"path\":\"/Company/Sales/North\"")));
    EXPECT_THAT(text, AllOf(Not(HasSubstr("slash")), Not(HasSubstr("Service\"")),
                            Not(HasSubstr("\"noun\":\"setting\"")), Not(HasSubstr("\"holder\":{\"role\""))));
    StartAnew();
    const ChildResult imported = Import(text, {"--allow-privileges"});
    EXPECT_EQ(imported.exit, 0) << imported.err;
    EXPECT_EQ(Export("again.jsonl", {"--in", "/Company/Sales"}), text);
}

TEST_P(ExchangeTest, OnlySomeKindsOfLines)
{
    Fill();
    const std::string text = Export("some.jsonl", {"--nouns", "views,plans"});
    EXPECT_EQ(std::ranges::count(text, '\n'), 6);
    EXPECT_THAT(text, AllOf(HasSubstr("\"noun\":\"view\""), HasSubstr("\"noun\":\"plan\"")));
    const ChildResult unknown = Run({"export", "--nouns", "views,wishes"});
    EXPECT_EQ(unknown.exit, 2);
    EXPECT_THAT(unknown.err, HasSubstr("'wishes' is nothing that can be exported; there are users, views, groups"));
}

TEST_P(ExchangeTest, WhatIsThereAndDiffersIsLeftUnlessItIsToBeUpdated)
{
    Fill();
    const std::string text = std::string(kHead) + R"({"noun":"user","login":"AMY","note":"new"}
{"noun":"group","path":"/company/sales","description":"new"}
{"noun":"right","holder":{"role":"Editors"},"genre":"mail","function":"send","power":5}
{"noun":"setting","genre":"Console","name":"Banner","data":"new"}
{"noun":"department","user":"amy","group":"/Company/Service"}
)";
    const std::string before = Dump();
    const ChildResult left = Import(text);
    EXPECT_EQ(left.exit, 0) << left.err;
    EXPECT_THAT(left.err,
                AllOf(HasSubstr(" 0 unchanged, 5 already there, 0 failed"), HasSubstr("--update changes it")));
    EXPECT_EQ(Dump(), before);
    const ChildResult tried = Import(text, {"--update", "--dry-run"});
    EXPECT_THAT(tried.err, HasSubstr("dry run, nothing was changed: 5 lines of"));
    EXPECT_THAT(tried.err, HasSubstr("0 created, 5 updated, 0 unchanged"));
    EXPECT_EQ(Dump(), before);
    const ChildResult updated = Import(text, {"--update"});
    EXPECT_EQ(updated.exit, 0) << updated.err;
    EXPECT_THAT(updated.err, HasSubstr("0 created, 5 updated, 0 unchanged"));
    EXPECT_THAT(Done({"user", "show", "amy", "-o", "json"}),
                AllOf(HasSubstr("\"note\": \"new\""), HasSubstr("Amélia")));
    EXPECT_THAT(Import(text, {"--update"}).err, HasSubstr("0 created, 0 updated, 5 unchanged"));
    const nlohmann::json entry = LatestEntry();
    EXPECT_EQ(Run({"audit", "undo", entry.at("id").dump(), "--yes"}).exit, 0);
    EXPECT_EQ(Dump(), before);
}

TEST_P(ExchangeTest, ABadLineIsSaidAndStopsNoOther)
{
    Fill();
    const ChildResult result = Import(std::string(kHead) + R"({"noun":"user","login":"rory"}
{"noun":"user","login":"clara","nickname":"c"}
{"noun":"user","login":"clara","sort_index":"many"}
{"noun":"user","login":""}
{"noun":"wish","login":"clara"}
no JSON
{"noun":"user","login":"danny","super":1}
{"noun":"group","path":"/Nowhere/Team"}
{"noun":"group","path":"/Nowhere/Team/Part"}
{"noun":"group","path":"/Company/Good"}
{"noun":"group","path":"/Company/Good"}
{"noun":"member","member":{"user":"nobody"},"of":{"group":"/Company/Good"},"relation":1}
{"noun":"member","member":{"user":"rory"},"of":{"group":"/Company/Good"},"relation":1}
{"noun":"member","member":{"group":"/Company/Sales"},"of":{"group":"/Company/Sales/North"},"relation":1}
{"noun":"right","genre":"mail","function":"send"}
{"noun":"user","login":"zoe\u0000"}
{"noun":"right","holder":{"user":"amy"},"genre":"mail","function":"read","power":1}
{"noun":"right","holder":{"user":"amy"},"genre":"mail","function":"read","power":1}
{"noun":"folder_link","folder":"/Main/Contracts","object":{"class":99999999999999,"id":1}}
{"noun":"user","login":"zoe","birthday":"2001-02-29"}
{"noun":"role","name":"Hands","created":"yesterday"}
)");
    EXPECT_EQ(result.exit, 7);
    EXPECT_THAT(result.err,
                AllOf(HasSubstr("in.jsonl:3: a user has no member 'nickname'\n"),
                      HasSubstr("in.jsonl:4: sort_index is not a whole number\n"),
                      HasSubstr("in.jsonl:5: login is empty\n"), HasSubstr("in.jsonl:6: unknown noun 'wish'\n"),
                      HasSubstr("in.jsonl:7: the line is not JSON"),
                      HasSubstr("in.jsonl:8: changes super, which needs --allow-privileges\n"),
                      HasSubstr("in.jsonl:9: there is no '/Nowhere'\n"),
                      HasSubstr("in.jsonl:10: there is no '/Nowhere/Team'\n")));
    EXPECT_THAT(result.err, AllOf(HasSubstr("in.jsonl:12: the file has another line about the same\n"),
                                  HasSubstr("in.jsonl:13: there is no user 'nobody'\n"),
                                  HasSubstr("in.jsonl:15: this would close a cycle: /Company/Sales"),
                                  HasSubstr("in.jsonl:16: the line has no holder\n"),
                                  HasSubstr("in.jsonl:17: login holds a NUL byte\n"),
                                  HasSubstr("in.jsonl:20: object is neither a folder nor a class and an id\n"),
                                  HasSubstr("in.jsonl:21: birthday '2001-02-29' is not a date (YYYY-MM-DD)\n"),
                                  HasSubstr("in.jsonl:22: created 'yesterday' is not a date (YYYY-MM-DD)\n"),
                                  HasSubstr("16 of 21 lines failed")));
    EXPECT_EQ(nlohmann::json::parse(Done({"right", "list", "user:amy", "-o", "json"})).size(), 2U);
    EXPECT_THAT(Done({"member", "list", "/Company/Good"}), HasSubstr("rory"));
    EXPECT_THAT(ReadFile("in.jsonl.result.csv"),
                AllOf(StartsWith("line,noun,name,outcome,reason\n2,user,rory,created,\n"),
                      HasSubstr("\n14,member,rory /Company/Good 1,created,\n")));
}

TEST_P(ExchangeTest, OtherFilesAreRefused)
{
    const std::string before = Dump();
    for (const char* text : {"", "login\namy\n", "{\"format\":\"else\"}\n", "[1]\n"}) {
        const ChildResult result = Import(text, {"--format", "json"});
        EXPECT_EQ(result.exit, 2) << result.err;
        EXPECT_THAT(result.err, HasSubstr("is not an exported directory: its first line is not {\"format\":"));
    }
    EXPECT_EQ(Import("{\"format\":\"else\"}\n").exit, 2);
    EXPECT_EQ(Import("").exit, 2);
    EXPECT_EQ(Import("{}\n", {"--view", "A"}).exit, 2);
    EXPECT_THAT(Import("{\"format\":\"qvadmin directory\",\"version\":2}\n").err,
                HasSubstr("was exported by a later qvadmin"));
    EXPECT_EQ(Dump(), before);
}

TEST_P(ExchangeTest, RowsThatNameWhatIsGoneAreCountedAndLeftOut)
{
    Fill();
    Execute(
        "INSERT INTO qv_ItemAce (Col_QvItemID, Col_QvItemType, Col_FunName, Col_FunGenre) VALUES (99, 1, 'a', 'b')");
    const ChildResult result = Run({"export"});
    EXPECT_EQ(result.exit, 0);
    EXPECT_THAT(result.err, HasSubstr("1 row was not exported, for they name what is gone"));
}

TEST_P(ExchangeTest, PeopleInCsvReadBackWithoutAChange)
{
    Fill();
    Done({"user", "set", "amy", "--far-user", "--far-server", "elsewhere"});
    const std::string text = Export("people.csv", {"--format", "csv"});
    EXPECT_THAT(text, AllOf(StartsWith("login,name,email,"), HasSubstr(",true,elsewhere\n")));
    const std::string before = Dump();
    const ChildResult same = Run({"user", "import", Path("people.csv"), "--update", "--departments", "Company"});
    EXPECT_EQ(same.exit, 0) << same.err;
    EXPECT_THAT(same.err, HasSubstr("0 created, 0 updated, 4 unchanged"));
    EXPECT_EQ(Dump(), before);
    StartAnew();
    EXPECT_EQ(Run({"user", "import", Path("people.csv"), "--allow-privileges"}).exit, 0);
    EXPECT_EQ(Export("again.csv", {"--format", "csv"}), text);
    EXPECT_EQ(Run({"export", "--format", "csv", "--with-passwords"}).exit, 2);
    // A directory takes them too.
    StartAnew();
    EXPECT_EQ(Run({"import", Path("people.csv"), "--allow-privileges"}).exit, 0);
    EXPECT_EQ(Export("third.csv", {"--format", "csv"}), text);
}
