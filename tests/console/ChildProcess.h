#pragma once

#include <sys/types.h>

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

struct ChildResult {
    int exit = -1;  ///< -1 when a signal ended it
    int signal = 0; ///< that signal
    std::string out;
    std::string err;
};

struct ChildOptions {
    std::map<std::string, std::string> environment;
    std::string directory;             ///< to run in
    std::string input;                 ///< given on standard input
    std::optional<std::string> output; ///< a file to take for standard output instead of a pipe
    std::optional<unsigned long> largestFile;
    bool outIsClosed = false;   ///< there is no standard output
    bool outIsTerminal = false; ///< standard output is a terminal; what it shows comes back as out
    bool terminal = false;      ///< standard input and standard error are a terminal; what it shows comes back as err
};

/// A program run beside the tests.
class ChildProcess {
public:
    ChildProcess(const std::string& program, const std::vector<std::string>& arguments, const ChildOptions& options);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    /// Ends the program if it still runs.
    ~ChildProcess();

    void Signal(int signal) const;
    /// Reads until a text comes on standard error, or the program writes no more.
    void WaitForError(const std::string& text);
    /// The same of what comes after the text that this has waited for before.
    void WaitForNextError(const std::string& text);
    /// Types something where standard input is a terminal.
    void Type(const std::string& text) const;
    /// Whether it has ended.
    [[nodiscard]] bool HasEnded() const;
    /// Gives it the input, reads all it writes and waits for its end.
    ChildResult Finish();

private:
    void Run(const std::string& program, const std::vector<std::string>& arguments, const ChildOptions& options);
    void Pump();

    std::string m_input;
    ChildResult m_result;
    std::size_t m_errorsSeen = 0; ///< how much of what came on standard error has been waited for
    pid_t m_pid = -1;
    int m_in = -1;
    int m_out = -1;
    int m_err = -1;
};
