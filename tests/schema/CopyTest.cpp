#include "schema/Copy.h"

#include "AwkwardDirectory.h"
#include "tests/directory/Engines.h"
#include "tests/support/Raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>
#include <string>
#include <vector>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

namespace fs = std::filesystem;

bool GoOn(const schema::CopyState& /*state*/) { return true; }

/// Each engine is copied to from a file that is filled, and from in turn.
class CopyTest : public testing::TestWithParam<engines::Engine> {
protected:
    CopyTest()
    {
        std::string name = (fs::temp_directory_path() / "qv-copy-XXXXXX").string();
        m_folder = ::mkdtemp(name.data());
        m_otherUrl = GetParam().emptyDatabase(m_folder);
        m_file.Open(Url("source.db").c_str());
        m_other.Open(m_otherUrl.c_str());
        schema::Upgrade(m_file);
        schema::Upgrade(m_other);
    }
    ~CopyTest() override
    {
        m_file.Close();
        m_other.Close();
        fs::remove_all(m_folder);
    }

    [[nodiscard]] std::string Url(const std::string& file) const { return "sqlite:" + (m_folder / file).string(); }
    [[nodiscard]] bool IsServer() const { return m_otherUrl.find("sqlite") == std::string::npos; }

    std::string CopyError() const
    {
        return Raised([this] { schema::Copy(m_file, m_other, GoOn); });
    }

    static std::int64_t NumberOf(CAConnect& conn, const std::string& sql)
    {
        CARecordset rs;
        EXPECT_TRUE(rs.Open(sql.c_str(), &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandText)) << sql;
        __int64 number = -1;
        rs.GetValue(1, number);
        return number;
    }

    fs::path m_folder;
    std::string m_otherUrl;
    mutable CAConnect m_file;
    mutable CAConnect m_other;
};

TEST_P(CopyTest, CarriesEveryValueThereAndBack)
{
    awkward::Fill(m_file);
    const std::string dump = awkward::Dump(m_file);
    const schema::Copied there = schema::Copy(m_file, m_other, GoOn);
    EXPECT_EQ(there.tables, 27);
    EXPECT_EQ(there.rows, schema::CountRows(m_file));
    EXPECT_TRUE(awkward::Dump(m_other) == dump);
    CAConnect back;
    back.Open(Url("back.db").c_str());
    schema::Upgrade(back);
    schema::Copy(m_other, back, GoOn);
    EXPECT_TRUE(awkward::Dump(back) == dump);
}

TEST_P(CopyTest, GivesNoIdThatTheSourceHasEverGiven)
{
    awkward::Fill(m_file);
    schema::Copy(m_file, m_other, GoOn);
    CAConnect back;
    back.Open(Url("back.db").c_str());
    schema::Upgrade(back);
    schema::Copy(m_other, back, GoOn);
    for (CAConnect* conn : {&m_other, &back}) {
        conn->Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('new')");
        EXPECT_EQ(NumberOf(*conn, "SELECT MAX(Col_ID) FROM qv_User"), 7001);
        conn->Execute("INSERT INTO kel_AddIn (Col_Name) VALUES ('new')");
        EXPECT_EQ(NumberOf(*conn, "SELECT Col_ID FROM kel_AddIn"), 33 * 33 + 1);
        conn->Execute("INSERT INTO kel_Msg (Col_SendDate) VALUES (NULL)");
        EXPECT_EQ(NumberOf(*conn, "SELECT MAX(Col_ID) FROM kel_Msg"), 5000000002);
    }
}

TEST_P(CopyTest, TellsHowFarItIs)
{
    for (int i = 0; i < 1200; ++i) {
        m_file.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    }
    m_file.Execute("INSERT INTO qv_Group (Col_Name) VALUES ('Sales')");
    std::vector<std::string> told;
    schema::Copy(m_file, m_other, [&](const schema::CopyState& state) {
        if (state.tableRows != 0) {
            told.push_back(state.table + " " + std::to_string(state.rows) + (state.tableIsDone ? " done" : ""));
        }
        return true;
    });
    EXPECT_THAT(told, ElementsAre("qv_User 501", "qv_User 1001", "qv_User 1200 done", "qv_Group 1201 done"));
}

TEST_P(CopyTest, LeavesNoRowsWhenItIsStoppedAndCanBeDoneAgain)
{
    awkward::Fill(m_file);
    for (const char* last : {"qv_User", "qv_JobTitle", "Kel_Board_Visiter"}) {
        const schema::Copied copied =
            schema::Copy(m_file, m_other, [&](const schema::CopyState& state) { return state.table != last; });
        EXPECT_TRUE(copied.stopped);
        EXPECT_EQ(schema::CountRows(m_other), 0) << last;
    }
    schema::Copy(m_file, m_other, GoOn);
    EXPECT_TRUE(awkward::Dump(m_other) == awkward::Dump(m_file));
}

TEST_P(CopyTest, CopiesWhatWasThereAtOneMoment)
{
    if (m_otherUrl.find(":memory:") != std::string::npos) {
        return; // a database that nobody else can write to
    }
    m_other.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    CAConnect busy;
    busy.Open(m_otherUrl.c_str());
    schema::Copy(m_other, m_file, [&](const schema::CopyState& state) {
        if (state.table == "qv_User") {
            busy.Execute("INSERT INTO qv_Group (Col_Name) VALUES ('late')");
        }
        return true;
    });
    EXPECT_EQ(NumberOf(m_file, "SELECT COUNT(*) FROM qv_Group"), 0);
    EXPECT_EQ(NumberOf(m_other, "SELECT COUNT(*) FROM qv_Group"), 1);
    m_other.Execute("INSERT INTO qv_Group (Col_Name) VALUES ('later')"); // it is not held any more
}

TEST_P(CopyTest, NamesTheRowThatTheTargetCannotTakeAndLeavesNone)
{
    awkward::Fill(m_file);
    m_file.Execute("UPDATE qv_User SET Col_Note = 'a' || char(0) || 'b' WHERE Col_ID = 9");
    EXPECT_THAT(CopyError(), AllOf(HasSubstr("qv_User, Col_ID 9: "), HasSubstr("NUL byte")));
    m_file.Execute("UPDATE qv_User SET Col_Note = '' WHERE Col_ID = 9");
    if (IsServer()) {
        m_file.Execute("UPDATE qv_User SET Col_Note = CAST(x'61FF62' AS TEXT) WHERE Col_ID = 16");
        EXPECT_THAT(CopyError(), HasSubstr("qv_User, Col_ID 16: "));
        m_file.Execute("UPDATE qv_User SET Col_Note = '' WHERE Col_ID = 16");
        m_file.Execute("UPDATE qv_ItemAce SET Col_Power = 3000000000 WHERE rowid = 3");
        EXPECT_THAT(CopyError(), HasSubstr("qv_ItemAce, row 3: "));
        m_file.Execute("UPDATE qv_ItemAce SET Col_Power = 3 WHERE rowid = 3");
    }
    EXPECT_EQ(schema::CountRows(m_other), 0);
    schema::Copy(m_file, m_other, GoOn);
    EXPECT_TRUE(awkward::Dump(m_other) == awkward::Dump(m_file));
}

TEST_P(CopyTest, RefusesATargetThatGetsRowsAtTheLastMoment)
{
    m_other.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    EXPECT_THAT(CopyError(), HasSubstr("somebody else"));
    EXPECT_EQ(schema::CountRows(m_other), 1);
}

TEST_P(CopyTest, CarriesColumnsThatServersHaveAddedWhereTheTargetHasThemToo)
{
    m_file.Execute("INSERT INTO kel_log (Col_ID) VALUES (1)");
    m_file.Execute("ALTER TABLE kel_log ADD COLUMN Col_Address TEXT DEFAULT '10.0.0.1'");
    EXPECT_THAT(CopyError(), HasSubstr("kel_log has a column Col_Address that the target's has not"));
    m_other.Execute("ALTER TABLE kel_log ADD COLUMN Col_Address VARCHAR(64)");
    schema::Copy(m_file, m_other, GoOn);
    EXPECT_EQ(NumberOf(m_other, "SELECT COUNT(*) FROM kel_log WHERE Col_Address = '10.0.0.1'"), 1);
}

TEST_P(CopyTest, NamesTablesThatAreNoneOfADirectorys)
{
    m_other.Execute("CREATE TABLE photos (a integer)");
    EXPECT_THAT(schema::Copy(m_other, m_file, GoOn).others, ElementsAre("photos"));
}

TEST_P(CopyTest, TellsItselfFromOthers)
{
    EXPECT_FALSE(schema::IsSameDatabase(m_file, m_other));
    CAConnect again;
    again.Open(m_otherUrl.c_str());
    EXPECT_EQ(schema::IsSameDatabase(m_other, again), m_otherUrl.find(":memory:") == std::string::npos);
    CAConnect another;
    fs::create_directory(m_folder / "b");
    another.Open(GetParam().emptyDatabase(m_folder / "b").c_str());
    EXPECT_FALSE(schema::IsSameDatabase(m_other, another));
}

/// Those that are themselves: what stands in for SQL Server knows none of its catalogue.
std::vector<engines::Engine> RealEngines()
{
    std::vector<engines::Engine> all = engines::All();
    std::erase_if(all, [](const engines::Engine& engine) { return engine.name == "sqlserver"; });
    return all;
}

INSTANTIATE_TEST_SUITE_P(Engines, CopyTest, testing::ValuesIn(RealEngines()), engines::NameOf);

/// What a client reads of a day may have a midnight.
std::string DumpWithoutMidnights(CAConnect& conn)
{
    return std::regex_replace(awkward::Dump(conn), std::regex(" 00:00:00>"), ">");
}

TEST(CopyToAServer, WritesWhatTheGrammarOfSqlServerTakes)
{
    CAConnect from;
    CAConnect to;
    from.Open("sqlite::memory:");
    to.Open(servers::NewDatabase("sqlserver").c_str());
    schema::Upgrade(from);
    schema::Upgrade(to);
    awkward::Fill(from);
    for (const char* table : {"kel_Msg", "kel_Msg_Rece"}) { // what stands in reads ids of 32 bits
        from.Execute((std::string("DELETE FROM ") + table + " WHERE Col_ID > 2147483647").c_str());
    }
    schema::Copy(from, to, GoOn);
    EXPECT_TRUE(DumpWithoutMidnights(to) == DumpWithoutMidnights(from));
}

TEST(CopyToAServer, NamesTheRowWhoseTextIsTooLong)
{
    CAConnect from;
    CAConnect to;
    from.Open("sqlite::memory:");
    to.Open(servers::NewDatabase("mariadb").c_str());
    schema::Upgrade(from);
    schema::Upgrade(to);
    for (int i = 0; i < 1500; ++i) {
        from.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    }
    from.Execute(("UPDATE qv_User SET Col_Note = '" + std::string(256, 'x') + "' WHERE Col_ID = 1203").c_str());
    EXPECT_THAT(Raised([&] { schema::Copy(from, to, GoOn); }),
                AllOf(HasSubstr("qv_User, Col_ID 1203: "), HasSubstr("too long for column 'Col_Note'")));
    EXPECT_EQ(schema::CountRows(to), 0);
}

TEST(CopyToAServer, NamesARowWhoseKeyTheServerTakesForAnother)
{
    CAConnect from;
    CAConnect to;
    from.Open("sqlite::memory:");
    to.Open(servers::NewDatabase("mariadb").c_str());
    schema::Upgrade(from);
    schema::Upgrade(to);
    from.Execute("INSERT INTO Kel_Board (Col_ID) VALUES ('a'),('b'),('A'),('c')");
    EXPECT_THAT(Raised([&] { schema::Copy(from, to, GoOn); }), HasSubstr("Kel_Board, Col_ID A: "));
    EXPECT_EQ(schema::CountRows(to), 0);
}

/// The columns of a table that are computed or counted.
std::vector<std::string> MarkedIn(const schema::Table& table)
{
    std::vector<std::string> marked;
    for (const schema::Column& column : table.columns) {
        if (column.isComputed || column.isCounted) {
            marked.push_back(column.name + (column.isComputed ? " computed" : " counted"));
        }
    }
    return marked;
}

TEST(Tables, AreThoseOfTheSteps)
{
    const std::map<std::string, const schema::Dialect*> dialects = {{"sqlite", &schema::sqlite::TheDialect()},
                                                                    {"postgresql", &schema::postgresql::TheDialect()},
                                                                    {"mysql", &schema::mysql::TheDialect()},
                                                                    {"sqlserver", &schema::sqlserver::TheDialect()}};
    for (const auto& [name, dialect] : dialects) {
        const std::vector<schema::Table> tables = schema::TablesOf(*dialect);
        ASSERT_EQ(tables.size(), 27U) << name;
        EXPECT_EQ(tables.front().name, "qv_User");
        EXPECT_EQ(tables.front().columns.size(), 38U) << name;
        EXPECT_THAT(MarkedIn(tables.front()), ElementsAre("Col_ID counted", "Col_Password computed")) << name;
        EXPECT_EQ(tables.back().name, "Kel_Board_Visiter");
    }
    EXPECT_THAT(MarkedIn(schema::TablesOf(schema::access::TheDialect()).front()), ElementsAre("Col_ID counted"));
    EXPECT_THAT(MarkedIn(schema::TablesOf(schema::mysql::TheDialect())[3]), ElementsAre("Col_RowID counted"));
}

} // namespace
