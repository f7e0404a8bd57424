#pragma once

#include "Faults.h"
#include "Scenarios.h"

#include <string>
#include <vector>

namespace faults {

/// How a run of the program ended.
struct Outcome {
    int exit = -1;  ///< -1 when a signal ended it
    int signal = 0; ///< that signal; SIGALRM for a run that never ends
    bool leaks = false;
    std::string out;
    std::string err;
};

/// A folder with a directory in it, where the program runs in a child process of this one.
class Sandbox {
public:
    /// Makes the directory that every run begins with. @param engine  "sqlite", "postgresql" or "mariadb".
    /// @param overOdbc  whether the program reaches that server by its ODBC driver.
    Sandbox(std::string engine, bool overOdbc);
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;
    ~Sandbox();

    /// Runs the program. What it counted is in Counted() until the next run.
    Outcome Run(const Scenario& scenario, const Plan& plan, bool lookForLeaks = false);
    [[nodiscard]] const Seen& Counted() const { return *m_seen; }

    /// Brings back what every run of the scenario begins with.
    void Restore(const Scenario& scenario);
    /// Servers do not give an id again that was used by what was rolled back: has the next ids follow on those of the
    /// rows, so that what is done then is comparable.
    void ResetCounters();
    /// All rows of all databases in the folder, or of the one on the server; moments of time are left out.
    /// @throws CAException when they cannot be read.
    std::string State();

private:
    void Prepare();
    void RunSetup(const Scenario& scenario);
    void MakeServerDatabase();
    [[nodiscard]] bool IsUntouched() const;

    std::string m_engine;
    bool m_overOdbc;
    std::string m_folder;
    std::string m_url;
    std::string m_before;                ///< state of the directory that every run begins with
    std::string m_file;                  ///< its bytes
    std::vector<std::string> m_counters; ///< statements that reset those of a server
    bool m_isUntouched = false;
    int m_in;
    int m_out;
    int m_err;
    Seen* m_seen;
};

/// The words of a command line. @throws std::runtime_error for a quote that does not end.
std::vector<std::string> Words(std::string_view line);

/// The text with each "YYYY-MM-DD HH:MM:SS" masked.
std::string WithoutMoments(std::string text);

} // namespace faults
