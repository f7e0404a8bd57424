#pragma once

#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "platform/CString.h"
#include "platform/CUIntArray.h"
#include "schema/Schema.h"
#include "tests/basefun/ErrorRecorder.h"
#include "tests/platform/AnsiCodePageScope.h"
#include "tests/servers/Servers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

/// The engines that operations are tested on, and what speaks SQL Server's protocol (tests/servers/tds_responder.py) in
/// that one's place. A new engine is one more value of All.
namespace engines {

namespace fs = std::filesystem;

struct Engine {
    std::string name;
    /// A URL of a database without tables; the folder is the test's own and goes with it.
    std::function<std::string(const fs::path& folder)> emptyDatabase;
    /// Whether = tells letters apart by case, and texts by blanks at their end.
    bool tellsCase = true;
};

inline std::ostream& operator<<(std::ostream& out, const Engine& engine) { return out << engine.name; }

inline std::vector<Engine> All()
{
    return {
        {"memory", [](const fs::path&) { return std::string("sqlite::memory:"); }},
        {"file", [](const fs::path& folder) { return "sqlite:" + (folder / "directory.db").string(); }},
        {"postgresql", [](const fs::path&) { return servers::NewDatabase("postgresql"); }},
        {"mariadb", [](const fs::path&) { return servers::NewDatabase("mariadb"); }, false},
        {"sqlserver", [](const fs::path&) { return servers::NewDatabase("sqlserver"); }, false},
    };
}

inline std::string NameOf(const testing::TestParamInfo<Engine>& engine) { return engine.param.name; }

/// The elements of a CUIntArray or CStringArray, for matchers.
template <class Array>
auto Copied(const Array& array)
{
    if constexpr (std::is_same_v<Array, CUIntArray>) {
        return std::vector<unsigned>(array.begin(), array.end());
    } else {
        std::vector<std::string> texts;
        for (const CString& text : array) {
            texts.emplace_back(text.View());
        }
        return texts;
    }
}

/// A test with a new database of its own, with all tables and no rows.
class OnAnEngine : public testing::TestWithParam<Engine> {
protected:
    OnAnEngine()
    {
        std::string name = (fs::temp_directory_path() / "qv-engine-XXXXXX").string();
        m_folder = ::mkdtemp(name.data());
        m_conn.Open(GetParam().emptyDatabase(m_folder).c_str());
        schema::Upgrade(m_conn);
        m_watch.ListenTo(m_conn);
    }
    ~OnAnEngine() override
    {
        m_conn.Close();
        fs::remove_all(m_folder);
    }

    /// A text for an operation that puts it into its statement as it is: on engine kind 6 that wants backslashes
    /// doubled.
    [[nodiscard]] CString Given(const char* text) const
    {
        CString given = text;
        if (m_conn.m_nDBType == 6) {
            given.Replace("\\", "\\\\");
        }
        return given;
    }
    /// What such a text is once it is stored.
    [[nodiscard]] CString Stored(CString given) const
    {
        if (m_conn.m_nDBType == 6) {
            given.Replace("\\\\", "\\");
        }
        return given;
    }
    [[nodiscard]] static bool TellsCase() { return GetParam().tellsCase; }

    void Execute(const std::string& sql) { m_conn.Execute(sql.c_str()); }

    /// The rows that a statement gives, each with bars between its columns: "41|amy".
    std::vector<std::string> Rows(const std::string& sql)
    {
        std::vector<std::string> rows;
        CARecordset rs;
        EXPECT_TRUE(rs.Open(sql.c_str(), &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable)) << sql;
        for (rs.MoveFirst(); rs.IsEOF() == 0; rs.MoveNext()) {
            std::string row;
            for (long column = 1; column <= rs.GetColumnCount(); ++column) {
                row += column == 1 ? "" : "|";
                row += rs.GetValueToStr(column, true).View();
            }
            rows.push_back(row);
        }
        return rows;
    }

    void ExpectNoError() const
    {
        EXPECT_EQ(ErrorRecorder::Text(), ErrorRecorder::kOlder);
        EXPECT_THAT(m_watch.messages, testing::IsEmpty());
    }

    AnsiCodePageScope m_utf8{CP_UTF8};
    ErrorRecorder m_watch;
    fs::path m_folder;
    CAConnect m_conn;
};

} // namespace engines
