#pragma once

#include "ChildProcess.h"
#include "dbaccess/CAConnect.h"

#include <filesystem>
#include <string>
#include <vector>

/// What an engine needs for two consoles at once to be stopped on their way.
struct Engine {
    std::string name; ///< "sqlite", or a server as servers::NewDatabase knows it
    /// Counts in column 1 who waits for the directory's lock; empty where that cannot be asked.
    std::string countWaiting;
    /// Lets everybody read the table {} and nobody write to it, until the connection is closed.
    std::vector<std::string> holdTable;
    /// Counts in column 1 who waits for a table.
    std::string countWaitingForTable;
};

const std::vector<Engine>& Engines();
/// @throws std::runtime_error for a name that none of them has.
const Engine& EngineCalled(const std::string& name);

/// A folder that goes with the object.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() { std::filesystem::remove_all(m_path); }

    [[nodiscard]] std::string Path(const std::string& name) const { return m_path + "/" + name; }
    /// Makes a file that its owner alone can read, as the console wants it of passwords.
    void WriteFile(const std::string& name, const std::string& text) const;

private:
    std::string m_path;
};

/// A new, empty directory and the consoles that work on it.
class Consoles {
public:
    /// @param program  the qvadmin to run.
    Consoles(const Engine& engine, std::string program);

    [[nodiscard]] CAConnect& Connection() { return m_conn; }
    [[nodiscard]] const std::string& Url() const { return m_options.environment.at("QVADMIN_DB"); }
    /// Also where the consoles run.
    [[nodiscard]] const TemporaryFolder& Folder() const { return m_folder; }

    /// @param arguments  without the program.
    [[nodiscard]] ChildProcess Start(const std::vector<std::string>& arguments) const;
    [[nodiscard]] ChildResult Run(const std::vector<std::string>& arguments) const { return Start(arguments).Finish(); }
    /// The same on a terminal, where `answer` is typed once Finish is called.
    [[nodiscard]] ChildProcess StartOnTerminal(const std::vector<std::string>& arguments,
                                               const std::string& answer) const;

    /// The number in column 1 of the first row; 0 where there is none.
    int Number(const std::string& sql);
    /// All rows of all tables, without times of day.
    std::string Dump();

private:
    TemporaryFolder m_folder;
    std::string m_program;
    ChildOptions m_options;
    CAConnect m_conn;
};
