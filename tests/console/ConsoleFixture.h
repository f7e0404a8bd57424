#pragma once

#include "ChildProcess.h"
#include "RunInProcess.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
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
        const bool needsProcess = options.output || options.largestFile || options.outIsTerminal || options.terminal;
        if (!needsProcess) {
            return RunInProcess(arguments, options);
        }
        ChildProcess child(QVADMIN_PROGRAM, arguments, options);
        return child.Finish();
    }

    void Init() { ASSERT_EQ(Run({"db", "init"}).exit, 0); }

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

    std::string m_folder;
    ChildOptions m_options;
};
