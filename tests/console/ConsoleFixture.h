#pragma once

#include "ChildProcess.h"
#include "RunInProcess.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "schema/Schema.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

/// Runs commands in a folder of the test's own: in this process, or by the built program where a command needs files,
/// limits or terminals of a process.
class ConsoleFixture : public testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = testing::TempDir() + "qvadmin-XXXXXX";
        m_folder = ::mkdtemp(pattern.data());
        m_options.directory = m_folder;
        m_options.environment = {{"XDG_DATA_HOME", m_folder + "/data"}, {"HOME", m_folder}};
    }

    void TearDown() override { std::filesystem::remove_all(m_folder); }

    ChildResult Run(const std::vector<std::string>& arguments) { return RunWith(m_options.input, arguments); }

    /// The same with something on standard input.
    ChildResult RunWith(const std::string& input, const std::vector<std::string>& arguments)
    {
        ChildOptions options = m_options;
        options.input = input;
        const bool needsProcess =
            options.output || options.largestFile || options.outIsClosed || options.outIsTerminal || options.terminal;
        if (!needsProcess) {
            return RunInProcess(arguments, options);
        }
        ChildProcess child(QVADMIN_PROGRAM, arguments, options);
        return child.Finish();
    }

    /// Runs a command that is to succeed. @return what it writes to standard output.
    std::string Done(const std::vector<std::string>& words)
    {
        const ChildResult result = Run(words);
        EXPECT_EQ(result.exit, 0) << testing::PrintToString(words) << "\n" << result.err;
        return result.out;
    }

    /// The same. @return what it writes to standard error.
    std::string Told(const std::vector<std::string>& words)
    {
        const ChildResult result = Run(words);
        EXPECT_EQ(result.exit, 0) << testing::PrintToString(words) << "\n" << result.err;
        return result.err;
    }

    /// Runs a command that is to be refused. @return what it writes to standard error.
    std::string Refusal(const std::vector<std::string>& words, int exit)
    {
        const ChildResult result = Run(words);
        EXPECT_EQ(result.exit, exit) << result.err;
        EXPECT_EQ(result.out, "");
        return result.err;
    }

    /// Runs a command that is to be refused: by a sentence on standard error, and with nothing on standard output.
    void ExpectRefusal(const std::vector<std::string>& words, int exit, const std::string& part)
    {
        EXPECT_THAT(Refusal(words, exit), testing::AllOf(testing::StartsWith("qvadmin: "), testing::HasSubstr(part)));
    }

    /// The same, where the command shows its plan first.
    void ExpectRefusalAfterPlan(const std::vector<std::string>& words, int exit, const std::string& part)
    {
        EXPECT_THAT(Refusal(words, exit), testing::AllOf(testing::HasSubstr("\nqvadmin: "), testing::HasSubstr(part)));
    }

    void Init() { ASSERT_EQ(Run({"db", "init"}).exit, 0); }

    /// Opens the directory that commands work on.
    void OpenDirectory(CAConnect& conn) const
    {
        const auto given = m_options.environment.find("QVADMIN_DB");
        conn.Open((given == m_options.environment.end() ? DatabaseUrl() : given->second).c_str());
    }

    /// Executes a statement in it.
    void Execute(const std::string& sql) const
    {
        CAConnect conn;
        OpenDirectory(conn);
        conn.Execute(sql.c_str());
    }

    [[nodiscard]] std::string Path(const std::string& name) const { return m_folder + "/" + name; }
    [[nodiscard]] std::string DatabaseUrl() const { return "sqlite:" + Path("data/quorvel/directory.db"); }

    void WriteFile(const std::string& name, const std::string& text) const
    {
        std::ofstream(Path(name), std::ios::binary) << text;
    }

    /// The same for a file that only its owner can open.
    void WriteSecretFile(const std::string& name, const std::string& text) const
    {
        WriteFile(name, text);
        std::filesystem::permissions(Path(name), std::filesystem::perms::owner_read);
    }

    [[nodiscard]] std::string ReadFile(const std::string& name) const
    {
        std::ifstream file(Path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static std::vector<std::string> With(std::vector<std::string> words, const std::vector<std::string>& more)
    {
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }

    /// All rows of the directory, without the record of changes. @param dropped  a column that is left out.
    std::string Dump(const std::string& dropped = {})
    {
        CAConnect conn;
        OpenDirectory(conn);
        std::string dump;
        for (const schema::TableColumns& table : schema::Tables()) {
            if (table.name.starts_with("qv_Audit")) {
                continue;
            }
            std::string columns;
            for (const std::string& column : table.columns) {
                columns += column == dropped ? "" : (columns.empty() ? "" : ", ") + column;
            }
            std::vector<std::string> rows;
            CARecordset found;
            for (found.Open(("SELECT " + columns + " FROM " + table.name).c_str(), &conn, adbcCursorStatic,
                            adbcLockOptimistic, adbcCommandTable);
                 found.IsEOF() == 0; found.MoveNext()) {
                std::string& row = rows.emplace_back();
                for (long column = 1; column <= found.GetColumnCount(); ++column) {
                    CString text;
                    row += found.GetValue(column, text, true) ? "<" + std::string(text.View()) + ">" : "NULL";
                }
            }
            std::ranges::sort(rows);
            dump += table.name + "\n";
            for (const std::string& row : rows) {
                dump += row + "\n";
            }
        }
        return dump;
    }

    /// The latest entry in the record of changes; null where there is none.
    nlohmann::json LatestEntry()
    {
        const ChildResult list = Run({"audit", "list", "--limit", "1", "-o", "json"});
        EXPECT_EQ(list.exit, 0) << list.err;
        const nlohmann::json entries = nlohmann::json::parse(list.out);
        return entries.empty() ? nlohmann::json() : entries.front();
    }

    /// Runs a command that changes something, and expects that it is recorded, and that undoing it puts all rows back,
    /// but for what is never recorded: stored passwords, the encryption key, messages and logins.
    void ExpectRecordedAndUndone(const std::string& command, const std::function<ChildResult()>& run)
    {
        const std::string before = Dump("Col_PWord");
        const ChildResult done = run();
        ASSERT_EQ(done.exit, 0) << done.err;
        const nlohmann::json entry = LatestEntry();
        ASSERT_TRUE(entry.is_object());
        EXPECT_THAT(entry.at("command"), testing::StartsWith(command));
        EXPECT_EQ(entry.at("front_end"), "qvadmin");
        EXPECT_NE(entry.at("who"), "");
        EXPECT_GT(entry.at("rows"), 0);
        const ChildResult undo = Run({"audit", "undo", entry.at("id").dump(), "--yes"});
        if (undo.exit == 4) {
            EXPECT_THAT(undo.err, testing::AnyOf(testing::HasSubstr("which is never recorded; nothing was undone"),
                                                 testing::HasSubstr("has the number alone; nothing was undone")));
            return;
        }
        EXPECT_EQ(undo.exit, 0) << undo.err;
        EXPECT_EQ(Dump("Col_PWord"), before);
        EXPECT_EQ(Run({"audit", "verify"}).exit, 0);
    }

    std::string m_folder;
    ChildOptions m_options;
};
