#include "ConsoleFixture.h"
#include "dbaccess/CAConnect.h"
#include "tests/support/Lines.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <set>
#include <thread>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

constexpr const char* kPeople = EXAMPLES_DIRECTORY "/people.csv";
constexpr const char* kMistakes = EXAMPLES_DIRECTORY "/people-with-mistakes.csv";
constexpr int kMany = 6000;

long LinesWith(const std::string& text, const std::string& part)
{
    const std::vector<std::string> lines = LinesOf(text);
    return std::count_if(lines.begin(), lines.end(),
                         [&](const std::string& line) { return line.find(part) != std::string::npos; });
}

class ImportTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
    }

    long Count() { return std::stol(Run({"user", "count"}).out); }

    ChildResult Import(std::vector<std::string> words)
    {
        words.insert(words.begin(), {"user", "import"});
        return Run(words);
    }

    void WriteMany(int count = kMany)
    {
        std::string rows = "login,name\n";
        for (int i = 0; i < count; ++i) {
            rows += "user" + std::to_string(i) + ",User " + std::to_string(i) + "\n";
        }
        WriteFile("many.csv", rows);
    }

    /// Starts the import of many rows, waits until some are done, and sends the signal.
    ChildResult ImportAndSignal(int signal)
    {
        WriteMany();
        ChildProcess child(QVADMIN_PROGRAM, {"user", "import", "many.csv"}, m_options);
        while (LinesOf(ReadFile("many.csv.result.csv.partial")).size() < 100) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        child.Signal(signal);
        return child.Finish();
    }

    /// Whoever the result file says was created is there, and the file can be imported to its end with nobody doubled.
    void ExpectCanBeCarriedOn()
    {
        const long reported = LinesWith(ReadFile("many.csv.result.csv.partial"), ",created,");
        EXPECT_GT(reported, 0);
        EXPECT_LT(reported, kMany);
        EXPECT_LE(reported, Count());
        const std::string before = Run({"user", "list", "-o", "plain"}).out;
        EXPECT_EQ(Import({"many.csv", "--update"}).exit, 0);
        const std::vector<std::string> after = LinesOf(Run({"user", "list", "-o", "plain"}).out);
        EXPECT_EQ(after.size(), static_cast<std::size_t>(kMany));
        std::set<std::string> logins;
        for (const std::string& line : after) {
            logins.insert(line.substr(line.find('\t')));
        }
        EXPECT_EQ(logins.size(), static_cast<std::size_t>(kMany));
        for (const std::string& line : LinesOf(before)) {
            EXPECT_TRUE(std::find(after.begin(), after.end(), line) != after.end()) << line;
        }
    }
};

} // namespace

TEST_F(ImportTest, AddsThePeopleOfAFile)
{
    std::filesystem::copy_file(kPeople, Path("people.csv"));
    const ChildResult result = Import({"people.csv"});
    EXPECT_EQ(result.exit, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err,
                HasSubstr("320 rows of people.csv: 320 created, 0 updated, 0 unchanged, 0 already there, 0 failed"));
    EXPECT_EQ(Count(), 320);
    EXPECT_EQ(std::filesystem::status(Path("people.csv.result.csv")).permissions(),
              static_cast<std::filesystem::perms>(0600));
    const std::vector<std::string> outcomes = LinesOf(ReadFile("people.csv.result.csv"));
    EXPECT_EQ(outcomes.size(), 321U);
    EXPECT_EQ(outcomes[0], "line,login,id,outcome,reason");
    EXPECT_EQ(outcomes[1], "2,jiayi.zhou,1,created,");
    const ChildResult shown = Run({"user", "show", "edward.oconnell", "-o", "plain"});
    EXPECT_THAT(shown.out, AllOf(HasSubstr("name\tEdward O'Connell\n"), HasSubstr("birthday\t1988-06-12\n"),
                                 HasSubstr("department\tHead office/IT/Service Desk\n")));
    EXPECT_THAT(Run({"user", "show", "jiayi.zhou", "-o", "plain"}).out, HasSubstr("birthday\t\n"));
}

TEST_F(ImportTest, ADryRunChangesNothing)
{
    const ChildResult good = Import({kPeople, "--dry-run", "--result", "out.csv"});
    EXPECT_EQ(good.exit, 0);
    EXPECT_THAT(good.err, HasSubstr("dry run, nothing was changed: 320 rows"));
    EXPECT_EQ(LinesWith(ReadFile("out.csv"), ",,created,"), 320);
    const ChildResult bad = Import({kMistakes, "--dry-run", "--result", "out.csv"});
    EXPECT_EQ(bad.exit, 8);
    EXPECT_THAT(bad.err, HasSubstr("qvadmin: 8 of 14 rows would fail"));
    EXPECT_EQ(Count(), 0);
}

TEST_F(ImportTest, ADryRunOnADatabaseThatCannotBeWrittenSaysSo)
{
    const ChildResult result =
        Run({"--db", DatabaseUrl() + "?mode=ro", "user", "import", kPeople, "--dry-run", "--result", "out.csv"});
    EXPECT_EQ(result.exit, 0);
    EXPECT_THAT(result.err,
                AllOf(HasSubstr(" 320 created, "), HasSubstr("\nwarning: this account cannot add and change "
                                                             "users")));
    EXPECT_THAT(Import({kPeople, "--dry-run", "--result", "out.csv"}).err, Not(HasSubstr("warning")));
}

TEST_F(ImportTest, AFileOfAnotherKindIsNamedAndNothingImported)
{
    const std::pair<std::string, const char*> kKinds[] = {
        {"login\ramy\r", "carriage returns"},
        {R"([{"login": "amy"}])", "JSON"},
        {std::string("PK\x03\x04\x14\0\0\0[Content_Types].xml", 27), "XLSX"},
        {ReadFile("data/quorvel/directory.db"), "a SQLite database"}};
    for (const auto& [text, part] : kKinds) {
        WriteFile("my file", text);
        const ChildResult result = Import({"my file"});
        EXPECT_EQ(result.exit, 2);
        EXPECT_THAT(result.err, AllOf(StartsWith("qvadmin: my file is "), HasSubstr(part)));
        EXPECT_FALSE(std::filesystem::exists(Path("my file.result.csv")));
        EXPECT_EQ(RunWith(text.substr(0, 4000), {"user", "import", "-"}).exit, 2);
    }
    EXPECT_EQ(Count(), 0);
    // A row among letters that are right fails alone.
    WriteFile("a.csv", "login,name\namelie,Am\xE9lie\nyulia,Юлия\n");
    EXPECT_EQ(Import({"a.csv"}).exit, 7);
    EXPECT_EQ(Count(), 1);
}

TEST_F(ImportTest, BadRowsStopNothing)
{
    const ChildResult result = Import({kMistakes, "--result", "out.csv"});
    EXPECT_EQ(result.exit, 7);
    EXPECT_THAT(result.err, HasSubstr("6 created, 0 updated, 0 unchanged, 0 already there, 8 failed"));
    const std::pair<int, const char*> kReasons[] = {{4, "empty"},     {5, "line 3"},       {7, "2023-02-30"},
                                                    {8, "sex 'yes'"}, {10, "15 values"},   {11, "7 values"},
                                                    {12, "quote"},    {14, "never closed"}};
    const std::vector<std::string> outcomes = LinesOf(ReadFile("out.csv"));
    for (const auto& [line, reason] : kReasons) {
        const std::string place = kMistakes + (":" + std::to_string(line)) + ": ";
        EXPECT_THAT(result.err, HasSubstr(place));
        EXPECT_THAT(outcomes[static_cast<std::size_t>(line) - 1],
                    AllOf(StartsWith(std::to_string(line)), HasSubstr(reason)));
    }
    EXPECT_EQ(Count(), 6);
    EXPECT_EQ(Run({"user", "exists", "lisbeth.crane"}).exit, 0);
}

TEST_F(ImportTest, PeopleWhoAreThereAreLeftAloneUnlessTheyAreToBeUpdated)
{
    WriteFile("a.csv", "login,name,note\namy,Amy,x\nrory,Rory,\n");
    EXPECT_EQ(Import({"a.csv"}).exit, 0);
    WriteFile("a.csv", "login,note\nAMY,y\nrory,y\nkim,\n");
    for (const char* option : {"--dry-run", "--result=a.csv.result.csv"}) {
        const ChildResult again = Import({"a.csv", option});
        EXPECT_EQ(again.exit, 0);
        EXPECT_THAT(again.err, AllOf(HasSubstr(" 1 created, 0 updated, 0 unchanged, 2 already there, 0 failed"),
                                     HasSubstr("--update sets their columns"), Not(HasSubstr("a.csv:2:"))));
        EXPECT_THAT(ReadFile("a.csv.result.csv"), HasSubstr("\n2,AMY,1,exists,\n3,rory,2,exists,\n4,kim,"));
    }
    EXPECT_THAT(Run({"user", "show", "amy", "-o", "plain"}).out, HasSubstr("note\tx\n"));
    EXPECT_EQ(Run({"user", "delete", "kim", "--yes"}).exit, 0);
    WriteFile("b.csv", "note,LOGIN\n,amy\ny,RORY\nz,river\n");
    EXPECT_EQ(Import({"b.csv", "--update", "--dry-run"}).exit, 0);
    const char* const kOutcomes =
        "line,login,id,outcome,reason\n2,amy,1,unchanged,\n3,RORY,2,updated,\n4,river,{},created,\n";
    const auto outcomes = [&](const std::string& id) {
        return std::string(kOutcomes).replace(std::string(kOutcomes).find("{}"), 2, id);
    };
    EXPECT_EQ(ReadFile("b.csv.result.csv"), outcomes(""));
    EXPECT_EQ(Import({"b.csv", "--update"}).exit, 0);
    EXPECT_EQ(ReadFile("b.csv.result.csv"), outcomes("4"));
    const std::string rory = Run({"user", "show", "rory", "-o", "plain"}).out;
    EXPECT_THAT(rory, AllOf(HasSubstr("login\trory\n"), HasSubstr("name\tRory\n"), HasSubstr("note\ty\n")));
    EXPECT_THAT(Run({"user", "show", "amy", "-o", "plain"}).out, HasSubstr("note\tx\n"));
}

TEST_F(ImportTest, AHeaderThatCannotBeUsedStopsBeforeAnythingIsWritten)
{
    const std::pair<std::string, const char*> kHeaders[] = {
        {"", "no header row"},
        {"login,nmae\namy,Amy\n", "unknown column 'nmae'; known columns are login, name,"},
        {"login;name\n", "separated by commas"},
        {"login,Login\n", "login twice"},
        {"login,password\n", "unknown column 'password'"},
        {"name\nAmy\n", "no column login"},
        {"\"login\n", "never closed"}};
    for (const auto& [text, part] : kHeaders) {
        WriteFile("a.csv", text);
        const ChildResult result = Import({"a.csv"});
        EXPECT_EQ(result.exit, 2) << text;
        EXPECT_THAT(result.err, AllOf(StartsWith("qvadmin: "), HasSubstr(part)));
        EXPECT_FALSE(std::filesystem::exists(Path("a.csv.result.csv")));
    }
    EXPECT_EQ(Count(), 0);
}

TEST_F(ImportTest, ReadsStandardInputAndWritesOutcomesToStandardOutput)
{
    const ChildResult result = RunWith("\xEF\xBB\xBFLogin,Sex\r\namy,female\r\n", {"user", "import", "-"});
    EXPECT_EQ(result.exit, 0);
    EXPECT_EQ(result.out, "line,login,id,outcome,reason\n2,amy,1,created,\n");
    EXPECT_THAT(result.err, HasSubstr("1 row of standard input: 1 created"));
}

TEST_F(ImportTest, EveryColumnIsStored)
{
    const std::string header =
        "login,name,sex,email,mobile,birthday,title,department,office_phone,office_fax,office_address,"
        "office_postcode,company,home_province,home_city,home_address,home_postcode,home_phone,home_fax,note,"
        "description,ecard,picture,user_data,creator,sort_index,domain_id,super,system,locked";
    const std::string row = "l'\\,n',2,e',m',1989-11-28,t',d',op',of',oa',oc',c',hp',hc',ha',ho',hh',hf',n\\',de',ec',"
                            "p',u',cr',7,8,yes,no,1";
    EXPECT_EQ(RunWith(header + "\n" + row + "\n", {"user", "import", "-", "--allow-privileges"}).exit, 0);
    const std::string shown = Run({"user", "show", "l'\\", "-o", "csv"}).out;
    EXPECT_EQ(LinesOf(shown)[1],
              "1,l'\\,n',e',m',2,1989-11-28,t',d',0,c',op',of',oa',oc',hp',hc',ha',ho',hh',hf',n\\',de',ec',p',u',cr',"
              "7,0,8,true,false,true,false,,false,1");
}

TEST_F(ImportTest, ARowThatTheEngineRefusesTakesNoOthersWithIt)
{
    CAConnect conn;
    conn.Open(CString(std::string_view(DatabaseUrl())));
    conn.Execute("CREATE TRIGGER refuse BEFORE INSERT ON qv_User WHEN NEW.Col_Name = 'Dalek' "
                 "BEGIN SELECT RAISE(ROLLBACK, 'no such people'); END");
    conn.Close();
    const ChildResult result =
        RunWith("login,name\namy,Amy\ncaan,Dalek\nrory,Rory\nsec,Dalek\n", {"user", "import", "-"});
    EXPECT_EQ(result.exit, 7);
    EXPECT_EQ(LinesWith(result.out, "created"), 2);
    EXPECT_THAT(result.out,
                AllOf(HasSubstr("\n3,caan,,failed,"), HasSubstr("no such people"), Not(HasSubstr("INSERT INTO"))));
    EXPECT_EQ(Count(), 2);
}

TEST_F(ImportTest, AFileThatCannotBeReadIsAFailure)
{
    EXPECT_EQ(Import({"nothing.csv"}).exit, 1);
    EXPECT_EQ(Import({"."}).exit, 1);
}

TEST_F(ImportTest, NothingIsImportedWhenOutcomesCannotBeWritten)
{
    for (const char* path : {"/dev/full", "/no/such/folder/out.csv", "."}) {
        const ChildResult result = Import({kPeople, "--result", path});
        EXPECT_EQ(result.exit, 1) << path;
        EXPECT_THAT(result.err, StartsWith("qvadmin: cannot write")) << path;
    }
    m_options.output = "/dev/full";
    EXPECT_EQ(Import({kPeople, "--result", "-"}).exit, 1);
    m_options.output.reset();
    EXPECT_EQ(Count(), 0);
}

TEST_F(ImportTest, TheFileItselfIsNotOverwritten)
{
    WriteFile("a.csv", "login\namy\n");
    EXPECT_EQ(Import({"a.csv", "--result", "./a.csv"}).exit, 2);
    EXPECT_EQ(ReadFile("a.csv"), "login\namy\n");
}

TEST_F(ImportTest, NoOtherFileIsOverwrittenByTheOutcomes)
{
    WriteFile("a.csv", "login\namy\n");
    WriteFile("letter", "Dear all,\n");
    std::filesystem::create_symlink(Path("data/quorvel/directory.db"), Path("link"));
    const std::string database = ReadFile("data/quorvel/directory.db");
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
        const ChildResult result =
            Import({"a.csv", "--dry-run", "--result", Path("data/quorvel/directory.db") + suffix});
        EXPECT_EQ(result.exit, 2);
        EXPECT_THAT(result.err, HasSubstr("is a file of the database in use; name another file with --result; nothing "
                                          "was imported\n"));
    }
    EXPECT_EQ(Import({"a.csv", "--result", "link"}).exit, 2);
    EXPECT_EQ(Import({"a.csv", "--result", "letter"}).exit, 4);
    EXPECT_EQ(Import({"a.csv", "--result", "/dev/stdout"}).exit, 1);
    EXPECT_EQ(ReadFile("letter"), "Dear all,\n");
    EXPECT_EQ(ReadFile("data/quorvel/directory.db"), database);
    EXPECT_EQ(Count(), 0);
}

TEST_F(ImportTest, OutcomesThatTheDiskHasNoRoomForStopIt)
{
    WriteMany();
    m_options.largestFile = 50 * 1024;
    const ChildResult result = Import({"many.csv", "--dry-run"});
    m_options.largestFile.reset();
    EXPECT_EQ(result.exit, 1);
    EXPECT_THAT(result.err,
                HasSubstr("qvadmin: cannot write many.csv.result.csv: File too large; name another file with "
                          "--result; nothing was imported\n"));
    EXPECT_GT(LinesOf(ReadFile("many.csv.result.csv.partial")).size(), 1000U);
}

TEST_F(ImportTest, LoginNamesThatTheDiskHasNoRoomForStopIt)
{
    WriteMany(9000);
    m_options.largestFile = 900 * 1024;
    const ChildResult result = Import({"many.csv", "--dry-run"});
    m_options.largestFile.reset();
    EXPECT_EQ(result.exit, 1);
    EXPECT_THAT(result.err, HasSubstr("qvadmin: the login names of the file cannot be kept in a temporary file: File "
                                      "too large; nothing was imported\n"));
    EXPECT_GT(LinesOf(ReadFile("many.csv.result.csv.partial")).size(), 8000U);
}

TEST_F(ImportTest, PrivilegesAndTheBuiltInAdministratorAreRefusedUnlessAllowed)
{
    const std::string rows = "login,super,system,locked,name\namy,yes,,,Amy\nrory,0,no,false,Rory\nkim,,1,yes,Kim\n"
                             "ADMIN,,,,Root\n";
    WriteFile("a.csv", rows);
    for (const auto& [option, exit] : {std::pair{"--dry-run", 8}, std::pair{"--result=out.csv", 7}}) {
        const ChildResult result = Import({"a.csv", option});
        EXPECT_EQ(result.exit, exit);
        EXPECT_THAT(result.err,
                    AllOf(HasSubstr("a.csv:2: changes super, which needs --allow-privileges\n"),
                          HasSubstr("a.csv:4: changes system and locked, which needs --allow-privileges\n"),
                          HasSubstr("a.csv:5: adds the built-in administrator, which needs --allow-privileges\n"),
                          HasSubstr("\nprivileges: 3 rows change super, system, locked or Admin; --allow-privileges")));
    }
    EXPECT_EQ(Count(), 1);
    const ChildResult allowed = Import({"a.csv", "--allow-privileges"});
    EXPECT_EQ(allowed.exit, 0);
    EXPECT_THAT(allowed.err, HasSubstr("\nprivileges: 3 rows change super, system, locked or Admin\n"));
    EXPECT_THAT(Run({"user", "show", "kim", "-o", "plain"}).out, HasSubstr("locked\ttrue\n"));
    // What is so already is no change; taking a privilege away is one.
    EXPECT_EQ(Import({"a.csv", "--update"}).exit, 0);
    WriteFile("b.csv", "login,locked,name\nkim,no,Kim\nadmin,,Boss\n");
    const ChildResult taken = Import({"b.csv", "--update"});
    EXPECT_EQ(taken.exit, 7);
    EXPECT_THAT(taken.err, AllOf(HasSubstr("b.csv:2: changes locked, which"),
                                 HasSubstr("b.csv:3: changes the built-in administrator, which")));
}

TEST_F(ImportTest, ASignalStopsItBehindARow)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        const ChildResult result = ImportAndSignal(signal);
        EXPECT_EQ(result.exit, 1);
        const long created = LinesWith(ReadFile("many.csv.result.csv.partial"), ",created,");
        EXPECT_EQ(Count(), created);
        EXPECT_THAT(result.err,
                    HasSubstr("qvadmin: stopped by a signal; the rows up to line " + std::to_string(created + 1) +
                              " are done and listed in many.csv.result.csv.partial, and the same file"));
        EXPECT_FALSE(std::filesystem::exists(Path("many.csv.result.csv")));
        ExpectCanBeCarriedOn();
        ASSERT_EQ(::unlink(Path("data/quorvel/directory.db").c_str()), 0);
        ASSERT_EQ(::unlink(Path("many.csv.result.csv").c_str()), 0);
        ASSERT_EQ(::unlink(Path("many.csv.result.csv.partial.1").c_str()), 0);
        Init();
    }
}

TEST_F(ImportTest, AKilledImportCanBeCarriedOn)
{
    EXPECT_EQ(ImportAndSignal(SIGKILL).signal, SIGKILL);
    ExpectCanBeCarriedOn();
}

TEST_F(ImportTest, ASignalIsObeyedWhileWaitingForInput)
{
    m_options.input = "";
    ChildOptions options = m_options;
    options.terminal = true; // a terminal gives nothing until someone types
    options.input = std::string("login\namy\n");
    ChildProcess child(QVADMIN_PROGRAM, {"user", "import", "-", "--result", "out.csv"}, options);
    std::thread interrupter([&] {
        while (ReadFile("out.csv.partial").empty()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        child.Signal(SIGINT);
    });
    const ChildResult result = child.Finish();
    interrupter.join();
    EXPECT_EQ(result.exit, 1);
    EXPECT_THAT(result.err, HasSubstr("stopped by a signal"));
}

TEST_F(ImportTest, AFullDiskStopsItWithTheLastLineThatIsSafe)
{
    WriteMany();
    m_options.largestFile = 700 * 1024;
    const ChildResult result = Import({"many.csv"});
    m_options.largestFile.reset();
    EXPECT_EQ(result.exit, 6) << result.err;
    const long created = LinesWith(ReadFile("many.csv.result.csv.partial"), ",created,");
    EXPECT_GT(created, 0);
    EXPECT_THAT(result.err, AllOf(HasSubstr("qvadmin: stopped: "),
                                  HasSubstr("the rows up to line " + std::to_string(created + 1) + " are done")));
    EXPECT_EQ(LinesWith(result.err, "many.csv:"), 0);
    EXPECT_EQ(Count(), created);
    ExpectCanBeCarriedOn();
}

TEST_F(ImportTest, OnATerminalItShowsHowFarItIs)
{
    WriteMany();
    m_options.terminal = true;
    const ChildResult result = Import({"many.csv"});
    EXPECT_EQ(result.exit, 0);
    EXPECT_THAT(result.err, HasSubstr(" of 6000, "));
    EXPECT_THAT(result.err, HasSubstr("6000 rows of many.csv: 6000 created"));
}
