#include "schema/Copy.h"

#include "ConsoleFixture.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "schema/Schema.h"
#include "tests/schema/EdgeCaseDirectory.h"
#include "tests/servers/Servers.h"

#include <chrono>
#include <csignal>
#include <future>
#include <stdexcept>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

void Open(CAConnect& conn, const std::string& url) { conn.Open(CString(std::string_view(url))); }

class CopyTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
        Open(m_conn, DatabaseUrl());
    }

    void TearDown() override
    {
        m_conn.Close();
        ConsoleFixture::TearDown();
    }

    void Execute(const std::string& sql) { m_conn.Execute(sql.c_str()); }

    void AddUsers(int count)
    {
        Execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(count) +
                ") INSERT INTO qv_User (Col_LoginName) SELECT 'user' || i FROM n");
    }

    ChildResult Copy(const std::string& from, const std::string& to) { return Run({"--db", from, "db", "copy", to}); }

    ChildResult CopyTo(const std::string& to) { return Copy(DatabaseUrl(), to); }

    void ExpectRefusal(const std::string& to, int exit, const std::string& part)
    {
        const ChildResult result = CopyTo(to);
        EXPECT_EQ(result.exit, exit) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, AllOf(StartsWith("qvadmin: "), HasSubstr(part)));
    }

    static std::int64_t RowsIn(const std::string& url)
    {
        CAConnect conn;
        Open(conn, url);
        return schema::CountRows(conn);
    }

    static std::string DumpOf(const std::string& url)
    {
        CAConnect conn;
        Open(conn, url);
        return awkward::Dump(conn);
    }

    /// What the console shows of a directory.
    std::string ExportsOf(const std::string& url)
    {
        const std::vector<std::vector<std::string>> lists = {{"user", "list", "-o", "csv"},
                                                             {"user", "show", "amy", "-o", "json"},
                                                             {"user", "groups", "amy", "-o", "csv"},
                                                             {"user", "password", "status", "amy"},
                                                             {"group", "tree", "/Company", "--users"},
                                                             {"group", "list", "-o", "json"},
                                                             {"view", "list", "--all", "-o", "csv"},
                                                             {"role", "list", "-o", "json"},
                                                             {"role", "members", "Editors", "-o", "csv"},
                                                             {"title", "list", "/Company/Sales", "-o", "csv"},
                                                             {"right", "matrix", "Editors", "-o", "csv"},
                                                             {"right", "effective", "amy", "-o", "json"},
                                                             {"objright", "list", "3", "17", "docs", "-o", "csv"},
                                                             {"docroot", "list", "-o", "json"},
                                                             {"folder", "tree"},
                                                             {"plan", "list", "-o", "json"},
                                                             {"plan", "of", "user:amy", "-o", "csv"},
                                                             {"doclog", "list", "-o", "json"},
                                                             {"setting", "list", "-o", "json"},
                                                             {"message", "stats", "-o", "json"},
                                                             {"loginlog", "list", "-o", "plain"},
                                                             {"addin", "list", "-o", "json"},
                                                             {"package", "list", "-o", "json"},
                                                             {"board", "list", "-o", "json"}};
        std::string exports;
        for (std::vector<std::string> list : lists) {
            list.insert(list.begin(), {"--db", url});
            const ChildResult result = Run(list);
            EXPECT_EQ(result.exit, 0) << list[2] << " " << list[3] << ": " << result.err;
            exports += list[2] + " " + list[3] + "\n" + result.out;
        }
        return exports;
    }

    void MakeAnOrganisation()
    {
        Done({"user", "create", "amy", "--name", R"(Amy O'Neil\)", "--birthday", "1959-11-28"});
        Done({"user", "password", "set", "amy", "--generate"});
        Done({"view", "create", "Company"});
        Done({"group", "create", "/Company/Sales/North", "--parents"});
        Done({"member", "add", "/Company/Sales/North", "amy"});
        Done({"title", "give", "/Company/Sales", "amy", "Lead"});
        Done({"role", "default", "--create"});
        Done({"role", "create", "Editors"});
        Done({"role", "add", "Editors", "amy"});
        Done({"right", "grant", "role:Editors", "mail", "send", "1"});
        Done({"objright", "grant", "user:amy", "3", "17", "docs", "read", "1"});
        Done({"plan", "create", "Nightly", "--data", "a\nb"});
        Done({"plan", "assign", "Nightly", "user:amy"});
        Done({"addin", "create", "Calendar", "--type", "1"});
    }

    CAConnect m_conn;
};

/// A program that runs beside the tests until it ends or is waited for.
class Running {
public:
    Running(const std::vector<std::string>& arguments, const ChildOptions& options)
        : m_child(QVADMIN_PROGRAM, arguments, options),
          m_result(std::async(std::launch::async, [this] { return m_child.Finish(); }))
    {
    }

    void Signal(int signal) const { m_child.Signal(signal); }
    ChildResult Finish() { return m_result.get(); }

    /// @throws std::runtime_error when it has ended before.
    template <class Condition>
    void WaitUntil(Condition holds)
    {
        while (!holds()) {
            if (m_result.wait_for(std::chrono::milliseconds(2)) == std::future_status::ready) {
                throw std::runtime_error("it has ended: " + m_result.get().err);
            }
        }
    }

private:
    ChildProcess m_child;
    std::future<ChildResult> m_result;
};

/// A copy to PostgreSQL that waits at the packages, with users written before.
class HeldCopyTest : public CopyTest {
protected:
    void SetUp() override
    {
        CopyTest::SetUp();
        AddUsers(2000);
        Execute("INSERT INTO kel_Package (Col_Name) VALUES ('Tools')");
        m_target = servers::NewDatabase("postgresql");
        Open(m_holder, m_target);
        schema::Upgrade(m_holder);
        m_holder.Execute("CREATE FUNCTION Wait() RETURNS trigger LANGUAGE plpgsql AS "
                         "$$BEGIN PERFORM pg_advisory_xact_lock(42); RETURN NEW; END$$");
        m_holder.Execute("CREATE TRIGGER Wait BEFORE INSERT ON kel_Package FOR EACH ROW EXECUTE FUNCTION Wait()");
        m_holder.Execute("SELECT pg_advisory_lock(42)");
        m_copy.emplace(std::vector<std::string>{"db", "copy", m_target}, m_options);
        m_copy->WaitUntil([this] { return NumberOf("SELECT COUNT(*)" + kWaiting + "AND objid = 42") != 0; });
    }

    // Whoever still waits goes on.
    void TearDown() override
    {
        m_holder.Close();
        m_copy.reset();
        CopyTest::TearDown();
    }

    __int64 NumberOf(const std::string& sql)
    {
        __int64 number = 0;
        CARecordset rs;
        rs.Open(sql.c_str(), &m_holder, adbcCursorStatic, adbcLockOptimistic, adbcCommandText);
        rs.GetValue(1, number);
        return number;
    }

    void Release() { m_holder.Execute("SELECT pg_advisory_unlock(42)"); }

    void ExpectNothingIsThereAndItCanBeDoneAgain()
    {
        EXPECT_EQ(RowsIn(m_target), 0);
        EXPECT_EQ(CopyTo(m_target).exit, 0);
        EXPECT_TRUE(DumpOf(m_target) == DumpOf(DatabaseUrl()));
    }

    const std::string kWaiting = " FROM pg_locks WHERE NOT granted AND locktype = 'advisory' AND database = "
                                 "(SELECT oid FROM pg_database WHERE datname = current_database()) ";
    std::string m_target;
    CAConnect m_holder;
    std::optional<Running> m_copy;
};

} // namespace

TEST_F(CopyTest, AroundAllEnginesEveryByteAndEveryListStaysAsItIs)
{
    awkward::Fill(m_conn);
    MakeAnOrganisation();
    const std::string dump = DumpOf(DatabaseUrl());
    const std::string exports = ExportsOf(DatabaseUrl());
    std::string from = DatabaseUrl();
    for (const std::string& to :
         {servers::NewDatabase("postgresql"), servers::NewDatabase("mariadb"), "sqlite:" + Path("copy.db")}) {
        const ChildResult result = Copy(from, to);
        EXPECT_EQ(result.exit, 0) << result.err;
        EXPECT_TRUE(DumpOf(to) == dump) << to;
        from = to;
    }
    EXPECT_EQ(ExportsOf(from), exports);
    EXPECT_EQ(Done({"--db", from, "user", "create", "rory"}), "7002\n");
}

TEST_F(CopyTest, SaysWhatWasCopiedWithoutPasswords)
{
    AddUsers(3);
    const servers::Mariadb server = servers::TheMariadb();
    const std::string url = servers::NewDatabase("mariadb");
    const std::string name = url.substr(url.find("/qv_") + 1, url.find('?') - url.find("/qv_") - 1);
    WriteSecretFile("password.cnf", "[client]\npassword=secret\n");
    const ChildResult result =
        CopyTo("mysql://qv@127.0.0.1:" + server.port + "/" + name + "?defaults-file=" + Path("password.cnf"));
    EXPECT_EQ(result.exit, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, AllOf(StartsWith("qv_User: 3 rows\ncopied 3 rows of 30 tables from " + DatabaseUrl() +
                                             " to mysql://qv@127.0.0.1:"),
                                  Not(HasSubstr("secret"))));
}

TEST_F(CopyTest, TellsOfTablesThatItLeavesBehind)
{
    Execute("CREATE TABLE photos (a INTEGER)");
    EXPECT_THAT(CopyTo("sqlite:" + Path("to.db")).err,
                HasSubstr("not copied, being no tables of a directory: photos\n"));
}

TEST_F(CopyTest, OnATerminalItShowsHowFarItIs)
{
    AddUsers(30000);
    m_options.terminal = true;
    EXPECT_THAT(CopyTo("sqlite:" + Path("to.db")).err, HasSubstr(" of 30000, "));
}

TEST_F(CopyTest, ADirectoryWithRowsIsNoTarget)
{
    const std::string to = "sqlite:" + Path("to.db");
    AddUsers(1);
    EXPECT_EQ(CopyTo(to).exit, 0);
    ExpectRefusal(to, 4, "holds 1 row already, and only an empty one is copied to; nothing was copied");
    EXPECT_EQ(RowsIn(to), 1);
}

TEST_F(CopyTest, TheSourceItselfIsNoTargetUnderAnyName)
{
    std::filesystem::create_symlink(Path("data/quorvel/directory.db"), Path("link.db"));
    for (const std::string& to :
         {DatabaseUrl(), std::string("sqlite:data/../data/quorvel/directory.db?kind=3"), "sqlite:" + Path("link.db")}) {
        ExpectRefusal(to, 4, "is the database to be copied itself");
    }
    const std::string server = servers::NewDatabase("postgresql");
    EXPECT_EQ(CopyTo(server).exit, 0);
    EXPECT_THAT(Copy(server, server + "&application_name=other").err, HasSubstr("is the database to be copied itself"));
}

TEST_F(CopyTest, OtherTablesAndLaterDirectoriesAreNoTarget)
{
    const std::string to = servers::NewDatabase("postgresql");
    CAConnect conn;
    Open(conn, to);
    conn.Execute("CREATE TABLE photos (a integer)");
    ExpectRefusal(to, 6, "holds other tables than a directory's");
    conn.Execute("DROP TABLE photos");
    schema::Upgrade(conn);
    conn.Execute("UPDATE qv_Schema SET Col_Value = '99' WHERE Col_Name = 'version'");
    ExpectRefusal(to, 6, "made by a later qvadmin");
    ExpectRefusal("directory.db", 2, "write sqlite:directory.db for a file");
    ExpectRefusal("sqlite:" + Path("data"), 6, "cannot open");
}

TEST_F(CopyTest, AColumnThatTheTargetLacksIsAConflict)
{
    Execute("ALTER TABLE kel_log ADD COLUMN Col_Address TEXT");
    const ChildResult result = CopyTo("sqlite:" + Path("to.db"));
    EXPECT_EQ(result.exit, 4);
    EXPECT_EQ(result.err, "qvadmin: the source's kel_log has a column Col_Address that the target's has not; add it "
                          "there first; nothing was copied\n");
}

TEST_F(CopyTest, AValueThatTheTargetWouldTakeForAnotherIsNamedWithoutBlamingTheDatabase)
{
    AddUsers(1);
    Execute("UPDATE qv_User SET Col_Birthday = 'now'");
    EXPECT_EQ(
        CopyTo(servers::NewDatabase("postgresql")).err,
        "qvadmin: stopped: qv_User, Col_ID 1: Col_Birthday holds what is no date, or one with a time zone; nothing "
        "was copied; mend it in the source and copy again\n");
}

TEST_F(CopyTest, TheSourceIsNotWrittenTo)
{
    Execute("UPDATE qv_Schema SET Col_Value = 'old' WHERE Col_Name = 'upper'");
    const ChildResult result = Copy(DatabaseUrl() + "?mode=ro", "sqlite:" + Path("to.db"));
    EXPECT_EQ(result.exit, 0) << result.err;
    EXPECT_EQ(CopyTo("sqlite:" + Path("another.db")).exit, 0);
    CARecordset rs;
    rs.Open("SELECT Col_Value FROM qv_Schema WHERE Col_Name = 'upper'", &m_conn, adbcCursorStatic, adbcLockOptimistic,
            adbcCommandText);
    EXPECT_EQ(rs.GetValueToStr(1, true), "old");
}

TEST_F(CopyTest, ACopyThatFailsLeavesNoFileWhereThereWasNone)
{
    AddUsers(20000);
    m_options.largestFile = 700000;
    const ChildResult result = CopyTo("sqlite:" + Path("to.db"));
    EXPECT_EQ(result.exit, 6);
    EXPECT_THAT(result.err, HasSubstr("nothing was copied"));
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
        EXPECT_FALSE(std::filesystem::exists(Path("to.db") + suffix)) << suffix;
    }
}

TEST_F(CopyTest, ACopyThatFailsLeavesAnEmptyDirectoryThatWasThere)
{
    const std::string to = "sqlite:" + Path("to.db");
    Done({"--db", to, "db", "init"});
    AddUsers(20000);
    m_options.largestFile = 700000;
    EXPECT_EQ(CopyTo(to).exit, 6);
    EXPECT_EQ(RowsIn(to), 0);
    EXPECT_FALSE(std::filesystem::exists(Path("to.db-wal")));
    m_options.largestFile.reset();
    EXPECT_EQ(CopyTo(to).exit, 0);
    EXPECT_EQ(RowsIn(to), 20000);
}

TEST_F(CopyTest, ANewFileIsItsOwnersAlone)
{
    EXPECT_EQ(CopyTo("sqlite:" + Path("to.db")).exit, 0);
    EXPECT_EQ(std::filesystem::status(Path("to.db")).permissions(), static_cast<std::filesystem::perms>(0600));
}

TEST_F(CopyTest, MissingDirectoriesAreMadeOnRequestOnly)
{
    const std::string to = "sqlite:" + Path("new/folder/to.db");
    ExpectRefusal(to, 6, "there is no directory " + Path("new/folder") + "; nothing was made, add --parents");
    EXPECT_FALSE(std::filesystem::exists(Path("new")));
    Done({"db", "copy", to, "--parents"});
    EXPECT_EQ(RowsIn(to), 0);
}

TEST_F(CopyTest, ATargetThatNamesNoKindIsShownOnlyWhereItCanHoldNoPassword)
{
    ExpectRefusal("/tmp/a:b", 2, "write sqlite:/tmp/a:b for a file");
    const ChildResult result = CopyTo("host=h password=topsecret");
    EXPECT_EQ(result.exit, 2);
    EXPECT_EQ(result.err, "qvadmin: the target names no kind of database; a URL begins with one, such as odbc: or "
                          "sqlite:\n");
}

TEST_F(CopyTest, ATargetThatWouldBeGoneOrIsNotToBeMadeIsRefusedWithOneThatIs)
{
    ExpectRefusal("sqlite::memory:", 2, "is gone when the copy ends; write sqlite:PATH");
    const std::string to = "sqlite:" + Path("to.db");
    ExpectRefusal(to + "?mode=rw", 6, "; write " + to + " to have it made\n");
}

TEST_F(CopyTest, ASourceThatIsNotReadyMakesNoTarget)
{
    const ChildResult missing = Copy("sqlite:" + Path("nothing.db"), "sqlite:" + Path("to.db"));
    EXPECT_EQ(missing.exit, 6);
    EXPECT_THAT(missing.err, HasSubstr("there is no database"));
    Execute("UPDATE qv_Schema SET Col_Value = '1' WHERE Col_Name = 'version'");
    ExpectRefusal("sqlite:" + Path("to.db"), 6, "to upgrade it");
    EXPECT_FALSE(std::filesystem::exists(Path("to.db")));
}

TEST_F(CopyTest, ATargetThatWasCutShortInItsMakingIsMadeWhole)
{
    AddUsers(1);
    const std::string to = servers::NewDatabase("mariadb");
    CAConnect conn;
    Open(conn, to);
    schema::Upgrade(conn);
    conn.Execute("DROP TABLE kel_Package");
    conn.Execute("UPDATE qv_Schema SET Col_Value = '0' WHERE Col_Name = 'version'");
    EXPECT_EQ(CopyTo(to).exit, 0);
    EXPECT_TRUE(DumpOf(to) == DumpOf(DatabaseUrl()));
}

TEST_F(CopyTest, ARowThatTheTargetRefusesIsNamedAndMendedAndThenAllIsCopied)
{
    AddUsers(1500);
    Execute("UPDATE qv_User SET Col_Note = '" + std::string(300, 'x') + "' WHERE Col_ID = 700");
    const std::string to = servers::NewDatabase("mariadb");
    const ChildResult result = CopyTo(to);
    EXPECT_EQ(result.exit, 6);
    EXPECT_THAT(result.err, AllOf(StartsWith("qvadmin: stopped: the database refused: qv_User, Col_ID 700: "),
                                  HasSubstr("Col_Note"),
                                  HasSubstr("; nothing was copied; mend it in the source and copy again\n")));
    EXPECT_EQ(RowsIn(to), 0);
    Execute("UPDATE qv_User SET Col_Note = 'x' WHERE Col_ID = 700");
    EXPECT_EQ(CopyTo(to).exit, 0);
    EXPECT_TRUE(DumpOf(to) == DumpOf(DatabaseUrl()));
}

TEST_F(CopyTest, AFullDiskLeavesATargetThatCanBeCopiedTo)
{
    AddUsers(20000);
    m_options.largestFile = 700 * 1024;
    const ChildResult result = CopyTo("sqlite:" + Path("to.db"));
    m_options.largestFile.reset();
    EXPECT_EQ(result.exit, 6) << result.err;
    EXPECT_THAT(result.err, AllOf(HasSubstr("qvadmin: stopped: "), HasSubstr("nothing was copied")));
    EXPECT_EQ(RowsIn("sqlite:" + Path("to.db")), 0);
    EXPECT_EQ(CopyTo("sqlite:" + Path("to.db")).exit, 0);
}

TEST_F(HeldCopyTest, ASignalStopsIt)
{
    m_copy->Signal(SIGINT);
    Release();
    const ChildResult result = m_copy->Finish();
    EXPECT_EQ(result.exit, 1);
    EXPECT_THAT(result.err, HasSubstr("qvadmin: stopped by a signal; nothing was copied"));
    ExpectNothingIsThereAndItCanBeDoneAgain();
}

TEST_F(HeldCopyTest, ItCanBeKilled)
{
    m_copy->Signal(SIGKILL);
    EXPECT_EQ(m_copy->Finish().signal, SIGKILL);
    Release();
    ExpectNothingIsThereAndItCanBeDoneAgain();
}

TEST_F(HeldCopyTest, ASecondCopyWaitsAndFindsTheTargetFull)
{
    Running second({"db", "copy", m_target}, m_options);
    second.WaitUntil([this] { return NumberOf("SELECT COUNT(*)" + kWaiting + "AND objid <> 42") != 0; });
    Release();
    EXPECT_EQ(m_copy->Finish().exit, 0);
    const ChildResult late = second.Finish();
    EXPECT_EQ(late.exit, 4);
    EXPECT_EQ(late.err, "qvadmin: somebody else has begun to fill the target; nothing was copied\n");
    EXPECT_EQ(RowsIn(m_target), 2001);
}

TEST_F(HeldCopyTest, AServerThatGoesAwayIsTold)
{
    NumberOf("SELECT COUNT(pg_terminate_backend(pid))" + kWaiting);
    const ChildResult result = m_copy->Finish();
    EXPECT_EQ(result.exit, 6);
    EXPECT_THAT(result.err, AllOf(StartsWith("qv_User: 2000 rows\n"), HasSubstr("qvadmin: stopped: "),
                                  HasSubstr("the target has all or nothing")));
    Release();
    ExpectNothingIsThereAndItCanBeDoneAgain();
}
