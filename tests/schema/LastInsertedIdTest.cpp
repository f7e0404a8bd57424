#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "schema/Schema.h"
#include "tests/servers/Servers.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

class LastInsertedId : public testing::TestWithParam<const char*> {
protected:
    LastInsertedId()
    {
        std::string name = (fs::temp_directory_path() / "qv-last-id-XXXXXX").string();
        m_folder = ::mkdtemp(name.data());
        const std::string engine = GetParam();
        const std::string url =
            engine == "sqlite" ? "sqlite:" + (m_folder / "d.db").string() : servers::NewDatabase(engine);
        m_first.Open(url.c_str());
        schema::Upgrade(m_first);
        m_second.Open(url.c_str());
    }
    ~LastInsertedId() override
    {
        m_first.Close();
        m_second.Close();
        fs::remove_all(m_folder);
    }

    static void Insert(CAConnect& conn, const std::string& table, const std::string& name)
    {
        conn.Execute(("INSERT INTO " + table + " (Col_Name) VALUES ('" + name + "')").c_str());
    }

    int IdOf(const std::string& table, const std::string& name)
    {
        CARecordset rs;
        int id = -1;
        rs.Open(("SELECT Col_ID FROM " + table + " WHERE Col_Name = '" + name + "'").c_str(), &m_first,
                adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
        rs.GetValue(1, id);
        return id;
    }

    /// Whether others may write while a transaction is open.
    static bool LetsOthersWrite()
    {
        return GetParam() == std::string("postgresql") || GetParam() == std::string("mariadb");
    }

    fs::path m_folder;
    CAConnect m_first;
    CAConnect m_second;
};

TEST_P(LastInsertedId, IsTheSessionsOwnWhenTwoInsertInTurn)
{
    for (const std::string round : {"1", "2", "3", "4"}) {
        Insert(m_first, "qv_User", "a" + round);
        Insert(m_second, "qv_User", "b" + round);
        EXPECT_EQ(schema::LastInsertedId(m_first), IdOf("qv_User", "a" + round));
        EXPECT_EQ(schema::LastInsertedId(m_second), IdOf("qv_User", "b" + round));
    }
}

TEST_P(LastInsertedId, IsTheNewestRowsAmongSeveralOfOneTransaction)
{
    Insert(m_first, "qv_Group", "another counter");
    std::vector<int> users;
    std::vector<int> groups;
    m_first.BeginTrans();
    for (const std::string round : {"1", "2", "3", "4"}) {
        Insert(m_first, "qv_User", "a" + round);
        if (LetsOthersWrite()) {
            Insert(m_second, "qv_User", "b" + round);
        }
        users.push_back(schema::LastInsertedId(m_first));
        Insert(m_first, "qv_Group", "g" + round);
        groups.push_back(schema::LastInsertedId(m_first));
    }
    m_first.CommitTrans();
    for (std::size_t i = 0; i < users.size(); ++i) {
        EXPECT_EQ(users[i], IdOf("qv_User", "a" + std::to_string(i + 1)));
        EXPECT_EQ(groups[i], IdOf("qv_Group", "g" + std::to_string(i + 1)));
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, LastInsertedId, testing::Values("sqlite", "postgresql", "mariadb", "sqlserver"),
                         [](const auto& engine) { return std::string(engine.param); });

} // namespace
