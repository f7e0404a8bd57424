#include "EdgeCaseDirectory.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "schema/Schema.h"
#include "schema/StatementSplitter.h"
#include "tests/servers/Servers.h"
#include "tests/support/Raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// Directories of every version that was released, upgraded.

namespace {

struct Release {
    const char* engine;
    const char* file;
    int version;
};

std::string NewDatabase(const std::string& engine)
{
    return engine == "sqlite" ? "sqlite::memory:" : servers::NewDatabase(engine);
}

/// All rows, a line for each.
std::string Listed(CAConnect& conn, const std::string& sql)
{
    std::string lines;
    CARecordset rs;
    for (rs.Open(sql.c_str(), &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable); rs.IsEOF() == 0;
         rs.MoveNext()) {
        for (long column = 1; column <= rs.GetColumnCount(); ++column) {
            lines += rs.GetValueToStr(column, true).GetString() + std::string("|");
        }
        lines += "\n";
    }
    return lines;
}

/// How the engine describes tables and indexes.
std::string Description(CAConnect& conn, const std::string& engine)
{
    if (engine == "sqlite") {
        return Listed(conn, "SELECT type, name, sql FROM sqlite_master WHERE name <> 'qv_Schema' AND tbl_name <> "
                            "'qv_Schema' ORDER BY type, name");
    }
    return Listed(conn, "SELECT LOWER(TABLE_NAME), COLUMN_NAME, COLUMN_TYPE, COLUMN_DEFAULT, IS_NULLABLE, EXTRA, "
                        "COLLATION_NAME FROM information_schema.COLUMNS WHERE TABLE_SCHEMA = DATABASE() AND TABLE_NAME "
                        "<> 'qv_Schema' ORDER BY LOWER(TABLE_NAME), ORDINAL_POSITION") +
           Listed(conn, "SELECT LOWER(TABLE_NAME), INDEX_NAME, SEQ_IN_INDEX, COLUMN_NAME, NON_UNIQUE FROM "
                        "information_schema.STATISTICS WHERE TABLE_SCHEMA = DATABASE() AND TABLE_NAME <> 'qv_Schema' "
                        "ORDER BY LOWER(TABLE_NAME), INDEX_NAME, SEQ_IN_INDEX");
}

/// The tables that every version has.
std::vector<schema::Table> FirstTables()
{
    std::vector<schema::Table> tables = awkward::TablesWithoutRecord();
    std::erase_if(tables, [](const schema::Table& table) { return table.name == "qv_ConsoleAccount"; });
    return tables;
}

class ReleasedVersion : public testing::TestWithParam<Release> {
protected:
    void Load()
    {
        m_conn.Open(NewDatabase(GetParam().engine).c_str());
        std::ifstream in(std::string(QV_RELEASED) + "/" + GetParam().file);
        const std::string text{std::istreambuf_iterator<char>(in), {}};
        for (const std::string& statement : schema::SplitStatements(text)) {
            ASSERT_EQ(Raised([&] { m_conn.Execute(statement.c_str()); }), kNothingRaised) << statement;
        }
        const std::string version = std::to_string(GetParam().version);
        m_conn.Execute(("UPDATE qv_Schema SET Col_Value = '" + version + "' WHERE Col_Name = 'version'").c_str());
    }

    CAConnect m_conn;
};

TEST_P(ReleasedVersion, KeepsEveryRowWhenItIsUpgraded)
{
    Load();
    EXPECT_EQ(schema::Inspect(m_conn).version, GetParam().version);
    EXPECT_EQ(schema::Inspect(m_conn).state, schema::State::older);
    const std::string before = awkward::Dump(m_conn, FirstTables());
    schema::Upgrade(m_conn);
    EXPECT_EQ(schema::Inspect(m_conn).state, schema::State::current);
    EXPECT_EQ(awkward::Dump(m_conn, FirstTables()), before);
    for (const schema::Table& table : FirstTables()) {
        EXPECT_EQ(Listed(m_conn, "SELECT COUNT(*) FROM " + table.name), "3|\n") << table.name;
    }
    EXPECT_EQ(Listed(m_conn, "SELECT Col_LoginName, Col_Name, Col_Birthday FROM qv_User WHERE Col_ID = 1"),
              "ren\xC3\xA9|rene|2013-05-07|\n");
}

TEST_P(ReleasedVersion, IsThenMadeAsANewDirectoryIs)
{
    Load();
    schema::Upgrade(m_conn);
    CAConnect fresh;
    fresh.Open(NewDatabase(GetParam().engine).c_str());
    schema::Upgrade(fresh);
    EXPECT_EQ(Description(m_conn, GetParam().engine), Description(fresh, GetParam().engine));
    EXPECT_FALSE(schema::FindShortcoming(m_conn));
}

TEST_P(ReleasedVersion, GivesNoIdASecondTimeAfterwards)
{
    Load();
    schema::Upgrade(m_conn);
    m_conn.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('next')");
    EXPECT_EQ(Listed(m_conn, "SELECT MAX(Col_ID) FROM qv_User"), "41|\n");
}

INSTANTIATE_TEST_SUITE_P(Released, ReleasedVersion,
                         testing::Values(Release{"sqlite", "sqlite-1.sql", 1}, Release{"sqlite", "sqlite-2.sql", 2},
                                         Release{"sqlite", "sqlite-2.sql", 3}, Release{"mariadb", "mysql-1.sql", 1},
                                         Release{"mariadb", "mysql-1.sql", 2}, Release{"mariadb", "mysql-1.sql", 3}),
                         [](const testing::TestParamInfo<Release>& release) {
                             return std::string(release.param.engine) + std::to_string(release.param.version);
                         });

} // namespace
