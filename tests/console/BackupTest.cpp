#include "ConsoleOnEngine.h"

#include <sys/stat.h>

#include <filesystem>
#include <tuple>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// A directory in a file of its own, and back.

namespace {

class BackupTest : public ConsoleOnEngine {
protected:
    void SetUp() override
    {
        ConsoleOnEngine::SetUp();
        Done({"view", "create", "Company"});
        Done({"group", "create", "/Company/O'Neil & \\\\ \xF0\x9F\x98\x80"});
        Done({"user", "create", "amy", "--note", "two\nlines"});
        WriteSecretFile("secret", "a long password");
        Done({"user", "password", "set", "amy", "--password-file", Path("secret")});
    }

    ChildResult Backup() { return Run({"db", "backup", Path("backup 100%?.db")}); }
    ChildResult Restore(const std::vector<std::string>& options = {})
    {
        return Run(With({"db", "restore", Path("backup 100%?.db")}, options));
    }

    /// The record of changes too.
    std::string History() { return Done({"audit", "list", "-o", "json"}); }

    void StartAnew()
    {
        const std::string engine = GetParam();
        m_options.environment["QVADMIN_DB"] =
            engine == "sqlite" ? "sqlite:" + Path("another.db") : servers::NewDatabase(engine);
        Init();
    }
};

INSTANTIATE_TEST_SUITE_P(Engines, BackupTest, Engines(), EngineName);

} // namespace

TEST_P(BackupTest, ABackupIsRestoredIntoAnEmptyDirectory)
{
    const std::string before = Dump();
    const std::string history = History();
    const ChildResult made = Backup();
    EXPECT_EQ(made.exit, 0) << made.err;
    EXPECT_THAT(made.err, HasSubstr("backed up "));
    struct stat status = {};
    ASSERT_EQ(::stat(Path("backup 100%?.db").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    for (const char* suffix : {".partial", ".partial-wal", ".partial-shm", "-wal"}) {
        EXPECT_FALSE(std::filesystem::exists(Path("backup 100%?.db") + suffix)) << suffix;
    }
    StartAnew();
    const ChildResult restored = Restore();
    EXPECT_EQ(restored.exit, 0) << restored.err;
    EXPECT_EQ(Dump(), before);
    EXPECT_EQ(History(), history);
    EXPECT_EQ(Run({"audit", "verify"}).exit, 0);
    EXPECT_EQ(Run({"user", "password", "check", "amy", "--password-file", Path("secret")}).exit, 0);
}

TEST_P(BackupTest, AFullDirectoryIsReplacedWhenThatIsSaidTwice)
{
    const std::string before = Dump();
    ASSERT_EQ(Backup().exit, 0);
    Done({"user", "create", "rory"});
    Done({"user", "delete", "amy", "--yes"});
    const std::string later = Dump();
    const ChildResult refused = Restore();
    EXPECT_EQ(refused.exit, 4);
    EXPECT_THAT(refused.err, HasSubstr("nothing was restored. --replace deletes them, the record of changes too"));
    EXPECT_EQ(Restore({"--yes"}).exit, 4);
    const ChildResult unasked = Restore({"--replace"});
    EXPECT_EQ(unasked.exit, 9);
    EXPECT_EQ(Dump(), later);
    const ChildResult restored = Restore({"--replace", "--yes"});
    EXPECT_EQ(restored.exit, 0) << restored.err;
    EXPECT_EQ(Dump(), before);
    EXPECT_EQ(Run({"audit", "verify"}).exit, 0);
    // No id comes a second time.
    Done({"user", "create", "kim"});
    EXPECT_EQ(nlohmann::json::parse(Done({"user", "show", "kim", "-o", "json"})).at("id"), 3);
}

TEST_P(BackupTest, ARestoreThatFailsLeavesTheDirectoryAsItIs)
{
    ASSERT_EQ(Backup().exit, 0);
    Done({"user", "create", "rory"});
    const std::string before = Dump();
    {
        CAConnect conn;
        conn.Open(("sqlite:" + Path("backup 100%25%3F.db")).c_str());
        conn.Execute("ALTER TABLE qv_Role ADD COLUMN Col_Others INTEGER");
    }
    const ChildResult failed = Restore({"--replace", "--yes"});
    EXPECT_EQ(failed.exit, 4);
    EXPECT_THAT(failed.err, HasSubstr("Col_Others"));
    EXPECT_EQ(Dump(), before);
}

TEST_P(BackupTest, NothingIsReplacedByABackup)
{
    WriteFile("backup 100%?.db", "precious");
    const ChildResult refused = Backup();
    EXPECT_EQ(refused.exit, 4);
    EXPECT_THAT(refused.err, HasSubstr("is there already, and a backup replaces nothing"));
    EXPECT_EQ(ReadFile("backup 100%?.db"), "precious");
    EXPECT_EQ(Restore().exit, 6);
    EXPECT_EQ(Run({"db", "restore", Path("nowhere.db")}).exit, 1);
    EXPECT_FALSE(std::filesystem::exists(Path("nowhere.db")));
    EXPECT_EQ(Run({"db", "backup", Path("no/such/folder.db")}).exit, 6);
    EXPECT_EQ(Run({"db", "backup", Path("made/folder.db"), "--parents"}).exit, 0);
    for (const char* name : {"", "-"}) {
        EXPECT_EQ(Run({"db", "backup", name}).exit, 2);
        EXPECT_EQ(Run({"db", "restore", name}).exit, 2);
        EXPECT_FALSE(std::filesystem::exists(Path(name + std::string(".partial"))));
    }
    // What a killed run has left is used, another file is not.
    ASSERT_EQ(Run({"--db", "sqlite:" + Path("killed.db.partial"), "db", "init"}).exit, 0);
    EXPECT_EQ(Run({"db", "backup", Path("killed.db")}).exit, 0);
    WriteFile("mine.db.partial", "precious, and no database");
    EXPECT_EQ(Run({"db", "backup", Path("mine.db")}).exit, 6);
    EXPECT_EQ(ReadFile("mine.db.partial"), "precious, and no database");
    EXPECT_FALSE(std::filesystem::exists(Path("mine.db")));
}

TEST_P(BackupTest, WhatIsNoBackupIsCalledSo)
{
    ASSERT_EQ(Backup().exit, 0);
    const std::string before = Dump();
    const std::string whole = ReadFile("backup 100%?.db");
    WriteFile("empty", "");
    WriteFile("torn", whole.substr(0, 5000));
    std::filesystem::create_directory(Path("folder"));
    std::filesystem::create_symlink("nowhere", Path("link"));
    const std::vector<std::tuple<std::string, int, std::string>> cases = {
        {Path("empty"), 6, Path("empty") + " is not a backup of a directory; nothing was restored\n"},
        {Path("torn"), 6, "cannot open " + Path("torn") + ": database disk image is malformed [SQLite 11]\n"},
        {Path("folder"), 1, "cannot read " + Path("folder") + ": Is a directory\n"},
        {Path("link"), 1, "cannot read " + Path("link") + ": No such file or directory\n"},
    };
    for (const auto& [file, exit, sentence] : cases) {
        const ChildResult refused = Run({"db", "restore", file, "--replace", "--yes"});
        EXPECT_EQ(refused.exit, exit) << file;
        EXPECT_EQ(refused.err, "qvadmin: " + sentence);
    }
    {
        CAConnect conn;
        conn.Open(("sqlite:" + Path("backup 100%25%3F.db")).c_str());
        conn.Execute("UPDATE qv_Schema SET Col_Value = '4' WHERE Col_Name = 'version'");
    }
    const ChildResult old = Restore({"--replace", "--yes"});
    EXPECT_EQ(old.exit, 6);
    EXPECT_THAT(old.err, AllOf(HasSubstr(".db is of version 4, this program works with 5; run `qvadmin --db "),
                               HasSubstr(" db init` to upgrade it"), Not(HasSubstr("mode=ro"))));
    EXPECT_EQ(Dump(), before);
}

TEST_P(BackupTest, OthersGoOnWritingMeanwhile)
{
    CAConnect other;
    other.Open(m_options.environment["QVADMIN_DB"].c_str());
    other.BeginTrans();
    other.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('not yet')");
    const ChildResult made = Backup();
    EXPECT_EQ(made.exit, 0) << made.err;
    other.CommitTrans();
    other.Close();
    m_options.environment["QVADMIN_DB"] = "sqlite:" + Path("backup 100%25%3F.db");
    EXPECT_THAT(Done({"user", "list"}), AllOf(HasSubstr("amy"), Not(HasSubstr("not yet"))));
}
