#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "schema/Dialect.h"
#include "schema/Schema.h"
#include "testing/ScriptedDriver.h"
#include "tests/servers/Servers.h"
#include "tests/support/Raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <vector>

using schema::State;
using testing::ElementsAre;
using testing::HasSubstr;

// The tables on servers.

namespace {

class ServerSchema : public testing::TestWithParam<const char*> {
protected:
    ServerSchema() : m_url(servers::NewDatabase(GetParam())) { m_conn.Open(m_url.c_str()); }

    void Execute(const std::string& sql) { m_conn.Execute(sql.c_str()); }

    std::string TextOf(const std::string& sql)
    {
        CARecordset rs;
        EXPECT_TRUE(rs.Open(sql.c_str(), &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable)) << sql;
        return rs.GetValueToStr(1, true).GetString();
    }

    std::string m_url;
    CAConnect m_conn;
};

TEST_P(ServerSchema, TellsTheStatesApart)
{
    EXPECT_EQ(schema::Inspect(m_conn).state, State::empty);
    std::vector<std::string> titles;
    schema::Upgrade(m_conn, [&](int version, const std::string& title) {
        titles.push_back(std::to_string(version) + " " + title);
    });
    EXPECT_THAT(titles, ElementsAre("1 tables", "2 indexes", "3 names", "4 audit", "5 console"));
    EXPECT_EQ(schema::Inspect(m_conn).state, State::current);
    Execute("UPDATE qv_Schema SET Col_Value = '99' WHERE Col_Name = 'version'");
    EXPECT_EQ(schema::Inspect(m_conn).state, State::newer);
    EXPECT_THAT(Raised([&] { schema::Upgrade(m_conn); }), HasSubstr("version 99, made by a later program"));
    Execute("UPDATE qv_Schema SET Col_Value = '1' WHERE Col_Name = 'version'");
    EXPECT_EQ(schema::Inspect(m_conn).state, State::older);
}

TEST_P(ServerSchema, DoesNothingToADirectoryThatIsCurrent)
{
    schema::Upgrade(m_conn);
    Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('amy')");
    schema::Upgrade(m_conn, [](int, const std::string& title) { ADD_FAILURE() << title; });
    schema::RefreshIndexes(m_conn);
    EXPECT_EQ(TextOf("SELECT COUNT(*) FROM qv_User"), "1");
}

TEST_P(ServerSchema, RefusesForeignTables)
{
    Execute("CREATE TABLE photos (a integer)");
    EXPECT_EQ(schema::Inspect(m_conn).state, State::foreign);
    EXPECT_THAT(Raised([&] { schema::Upgrade(m_conn); }), HasSubstr("other tables"));
    EXPECT_EQ(schema::Inspect(m_conn).state, State::foreign);
}

TEST_P(ServerSchema, IsCarriedOnWhereARunWasCutShort)
{
    // What a killed run leaves behind where tables cannot be taken back: the first tables, and no version yet.
    Execute("CREATE TABLE qv_Schema (Col_Name VARCHAR(64) NOT NULL PRIMARY KEY, Col_Value VARCHAR(64) NOT NULL)");
    EXPECT_EQ(schema::Inspect(m_conn).state, State::older);
    schema::Upgrade(m_conn);
    EXPECT_EQ(schema::Inspect(m_conn).state, State::current);
    Execute("UPDATE qv_Schema SET Col_Value = '0' WHERE Col_Name = 'version'");
    const std::string error = Raised([&] { schema::Upgrade(m_conn); });
    if (m_conn.m_nDBType == 6) {
        EXPECT_EQ(error, kNothingRaised);
        EXPECT_EQ(schema::Inspect(m_conn).state, State::current);
    } else {
        EXPECT_THAT(error, HasSubstr("already"));
        EXPECT_EQ(schema::Inspect(m_conn).version, 0);
    }
}

TEST_P(ServerSchema, IsMadeOnceByRunsAtTheSameTime)
{
    std::vector<std::thread> runs;
    for (int i = 0; i < 4; ++i) {
        runs.emplace_back([this] {
            EXPECT_EQ(Raised([this] {
                          CAConnect conn;
                          conn.Open(m_url.c_str());
                          schema::Upgrade(conn);
                      }),
                      kNothingRaised);
        });
    }
    for (std::thread& run : runs) {
        run.join();
    }
    EXPECT_EQ(schema::Inspect(m_conn).state, State::current);
}

TEST_P(ServerSchema, GivesNoIdASecondTime)
{
    schema::Upgrade(m_conn);
    Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('a')");
    Execute("DELETE FROM qv_User");
    Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('b')");
    EXPECT_EQ(TextOf("SELECT Col_ID FROM qv_User"), "2");
}

TEST_P(ServerSchema, ReadsThePasswordUnderBothNames)
{
    schema::Upgrade(m_conn);
    Execute("INSERT INTO qv_User (Col_LoginName, Col_PWord) VALUES ('amy', 'digest')");
    EXPECT_EQ(TextOf("SELECT Col_Password FROM qv_User"), "digest");
    Execute("UPDATE qv_User SET Col_PWord = 'other'");
    EXPECT_EQ(TextOf("SELECT Col_Password FROM qv_User"), "other");
}

TEST_P(ServerSchema, ServesEveryStatementOfTheSystem)
{
    schema::Upgrade(m_conn);
    std::vector<std::string> statements;
    std::ifstream in(QV_STATEMENTS);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.front() != '#') {
            statements.push_back(line);
        }
    }
    ASSERT_GT(statements.size(), 200U);
    for (const std::string& statement : statements) {
        const bool isMarked = statement.front() == '!';
        const bool isOfThisEngine =
            (m_conn.m_nDBType == 6 && statement.find("INFORMATION_SCHEMA") != std::string::npos) ||
            (m_conn.m_nDBType == 1 && statement.find("sysobjects") != std::string::npos);
        const bool mustFail = isMarked && !isOfThisEngine;
        m_conn.BeginTrans();
        const std::string error = Raised([&] { m_conn.Execute(statement.c_str() + (isMarked ? 1 : 0)); });
        EXPECT_EQ(error == kNothingRaised, !mustFail) << statement << "\n" << error;
        m_conn.RollbackTrans();
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, ServerSchema, testing::Values("postgresql", "mariadb", "sqlserver"),
                         [](const testing::TestParamInfo<const char*>& engine) { return std::string(engine.param); });

std::string OdbcUrl(const std::string& engine)
{
    return engine == "sqlite" ? "odbc:Driver=SQLite3;Database=:memory:?kind=3"
                              : servers::OverOdbc(engine, servers::NewDatabase(engine)) + "?kind=3";
}

TEST(TablesOverOdbc, AreThoseOfTheEngineBehindItAndNotOfTheKind)
{
    const std::map<std::string, const schema::Dialect*> dialects = {{"sqlite", &schema::sqlite::TheDialect()},
                                                                    {"postgresql", &schema::postgresql::TheDialect()},
                                                                    {"mariadb", &schema::mysql::TheDialect()}};
    for (const auto& [engine, dialect] : dialects) {
        CAConnect conn;
        conn.Open(OdbcUrl(engine).c_str());
        EXPECT_EQ(&schema::DialectOf(conn), dialect) << engine;
        EXPECT_EQ(Raised([&] { schema::Upgrade(conn); }), kNothingRaised) << engine;
        EXPECT_EQ(schema::Inspect(conn).state, State::current) << engine;
    }
}

// Nothing makes a file of Access here. One without a byte is taken for one without tables, not even its own.
TEST(TablesOverOdbc, OfAnAccessFileNeedTheListThatItKeepsOfThem)
{
    const std::string file = testing::TempDir() + "qv-empty-" + std::to_string(::getpid()) + ".mdb";
    const std::ofstream made(file);
    {
        CAConnect conn;
        conn.Open(("odbc:Driver={MDBTools};DBQ=" + file).c_str());
        EXPECT_EQ(conn.m_nDBType, 0);
        EXPECT_THAT(Raised([&] { schema::Upgrade(conn); }), HasSubstr("right to read MSysObjects"));
    }
    std::remove(file.c_str());
}

TEST(ServerSettings, ThatTellTablesApartByCaseAreRefusedWithTheSettingToChange)
{
    scripted::Database database;
    database.engineName = "MariaDB 10.11";
    CAConnect conn;
    database.Connect(conn, 6);
    database.Answer(scripted::Rows({{"0"}}));
    EXPECT_THAT(Raised([&] { schema::Upgrade(conn); }), HasSubstr("lower_case_table_names=1"));
    EXPECT_THAT(database.executions, testing::IsEmpty());
}

TEST(Locks, ThatAreWaitedForInVainAreToldOnMysql)
{
    scripted::Database database;
    database.engineName = "MariaDB 10.11";
    CAConnect conn;
    database.Connect(conn, 6);
    database.Answer(scripted::Rows({{"1"}}));
    database.Answer(scripted::Rows({{"0"}}));
    EXPECT_THAT(Raised([&] { schema::Upgrade(conn); }), HasSubstr("somebody else"));
    EXPECT_THAT(database.queries.back(), HasSubstr("GET_LOCK"));
}

TEST(Locks, ThatAreWaitedForInVainAreToldOnSqlServer)
{
    const std::string url = servers::NewDatabase("sqlserver");
    CAConnect holder;
    CAConnect conn;
    holder.Open(url.c_str());
    conn.Open(url.c_str());
    schema::Lock(holder, schema::DialectOf(holder), std::chrono::seconds(1));
    EXPECT_THAT(Raised([&] { schema::Lock(conn, schema::DialectOf(conn), std::chrono::seconds(1)); }),
                HasSubstr("somebody else"));
}

TEST(Locks, ThatOutliveTransactionsAreTakenBeforeThem)
{
    scripted::Database database;
    database.engineName = "Microsoft SQL Server 15.0";
    CAConnect conn;
    database.Connect(conn, 1);
    database.Answer(scripted::Rows({{"196609"}})); // the collation
    database.Answer(scripted::Raise("the lock was not given"));
    EXPECT_EQ(Raised([&] { schema::Upgrade(conn); }), "the lock was not given");
    EXPECT_THAT(database.executions.back(), HasSubstr("sp_getapplock"));
    EXPECT_EQ(database.transactions, "");
}

TEST(Locks, ThatAreGoneByThenUndoNoStep)
{
    CAConnect conn;
    conn.Open(servers::NewDatabase("sqlserver").c_str());
    schema::Upgrade(conn, [&](int, const std::string&) { schema::Unlock(conn, schema::DialectOf(conn)); });
    EXPECT_EQ(schema::Inspect(conn).state, State::current);
}

TEST(ServerSettings, ThatTellTextsApartByCaseAreRefusedWithTheCollationToTake)
{
    for (const char* style : {"0", "196608"}) {
        scripted::Database database;
        database.engineName = "Microsoft SQL Server 15.0";
        CAConnect conn;
        database.Connect(conn, 1);
        database.Answer(scripted::Rows({{style}}));
        EXPECT_THAT(Raised([&] { schema::Upgrade(conn); }), HasSubstr("collation that has CI in its name"));
        EXPECT_THAT(database.executions, testing::IsEmpty());
    }
}

TEST(ServerSettings, ThatHideTheListOfTablesAreRefusedWithTheRightToGive)
{
    scripted::Database database;
    database.engineName = "ACCESS 4.0";
    CAConnect conn;
    database.Connect(conn, 0);
    database.Answer(scripted::Raise("no read permission"));
    EXPECT_THAT(Raised([&] { schema::Upgrade(conn); }),
                testing::AllOf(HasSubstr("right to read MSysObjects"), HasSubstr("no read permission")));
    EXPECT_THAT(database.executions, testing::IsEmpty());
}

// All that can be said of them without that engine.
TEST(AccessTables, AreAsManyAsOnTheOtherEngines)
{
    const std::vector<schema::Step>& steps = schema::access::TheDialect().steps;
    ASSERT_EQ(steps.size(), schema::sqlserver::TheDialect().steps.size());
    for (std::size_t step = 0; step < steps.size(); ++step) {
        EXPECT_EQ(steps[step].statements.size(), schema::sqlserver::TheDialect().steps[step].statements.size());
    }
}

TEST(ServerSettings, ThatFoldOrHoldNotAllLettersAreRefusedWithWhatToMake)
{
    const std::string name = "qv_plain_c";
    CAConnect admin;
    admin.Open(servers::UrlOf("postgresql", "postgres").c_str());
    for (const char* encoding : {"UTF8", "LATIN1", "SQL_ASCII"}) {
        admin.Execute(("DROP DATABASE IF EXISTS " + name).c_str());
        admin.Execute(
            ("CREATE DATABASE " + name + " TEMPLATE template0 LOCALE 'C' ENCODING '" + encoding + "'").c_str());
        CAConnect conn;
        conn.Open(servers::UrlOf("postgresql", name).c_str());
        EXPECT_THAT(Raised([&] { schema::Upgrade(conn); }), HasSubstr("LOCALE 'C.UTF-8'"));
        EXPECT_EQ(schema::Inspect(conn).state, State::empty);
    }
    admin.Execute(("DROP DATABASE " + name).c_str());
}

} // namespace
