#include "Sandbox.h"
#include "console/LocalCommand.h"
#include "dbaccess/CAException.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <sstream>

#ifdef __SANITIZE_ADDRESS__
extern "C" const char* __asan_default_options();
const char* __asan_default_options()
{
    // Little is kept of what is freed: a child process for each run has to be cheap.
    return "exitcode=99:malloc_context_size=6:quarantine_size_mb=4:allocator_may_return_null=1:detect_leaks=1:verify_"
           "asan_link_order=0:handle_sigill=1";
}
#endif

namespace faults {

namespace {

struct Options {
    bool all = false;       ///< every call, not only those that are reached in a way not seen before
    std::size_t points = 1; ///< else how many of them at most, for each command and fault
    std::string engine = "sqlite";
    bool overOdbc = false;
    std::string only; ///< how the command lines begin that are walked
};

/// A way for a call to go wrong.
struct Fault {
    const char* name;
    Call call;
    Action action;
    int number;
};

constexpr Fault kFaults[] = {
    {"out of memory once", Call::allocation, Action::fail, ENOMEM},
    {"out of memory from then on", Call::allocation, Action::failOn, ENOMEM},
    {"a write fails", Call::write, Action::fail, EIO},
    {"the disk is full from then on", Call::write, Action::failOn, ENOSPC},
    {"SIGINT before a write", Call::write, Action::raise, SIGINT},
    {"SIGTERM before a write", Call::write, Action::raise, SIGTERM},
    {"SIGKILL before a write", Call::write, Action::raise, SIGKILL},
    {"a synchronization fails", Call::sync, Action::fail, EIO},
    {"SIGKILL before a synchronization", Call::sync, Action::raise, SIGKILL},
    {"a file cannot be opened", Call::open, Action::fail, EMFILE},
    {"no file can be opened from then on", Call::open, Action::failOn, EMFILE},
    {"sending fails", Call::send, Action::failOn, EPIPE},
    {"SIGINT before sending", Call::send, Action::raise, SIGINT},
    {"receiving fails", Call::receive, Action::failOn, ECONNRESET},
};

bool IsOfConnection(const Fault& fault) { return fault.call == Call::send || fault.call == Call::receive; }

/// What a run of a command is held against.
struct Reference {
    Outcome outcome;
    std::string before;
    std::string after;
};

class Walk {
public:
    explicit Walk(const Options& options)
        : m_options(options), m_sandbox(options.engine, options.overOdbc), m_walkedStart(!options.only.empty())
    {
    }

    /// @return whether nothing was found.
    bool Run()
    {
        RequireEveryCommand();
        for (const Scenario& scenario : kScenarios) {
            if (scenario.line.starts_with(m_options.only) && (m_options.engine == "sqlite" || scenario.isMain)) {
                WalkScenario(scenario);
            }
        }
        Report();
        return m_findings.empty() && m_runs > 0;
    }

private:
    void RequireEveryCommand()
    {
        for (const management::Command* command : console::AllCommands()) {
            // One that help does not show says nothing where it fails, since it writes into somebody's command line. A
            // server runs until it is stopped; tests/web is about it.
            const bool isServer = command->path[0] == "serve";
            if (console::IsHead(*command) || command->summary.empty() || isServer) {
                continue;
            }
            const std::string begin = fmt::format("{}", fmt::join(console::PathOf(*command), " "));
            const auto runs = [&begin](const Scenario& scenario) {
                return scenario.line == begin || scenario.line.starts_with(begin + " ");
            };
            if (std::ranges::none_of(kScenarios, runs)) {
                Found(begin, "is in no scenario");
            }
        }
    }

    void WalkScenario(const Scenario& scenario)
    {
        m_sandbox.Restore(scenario);
        Reference reference;
        reference.before = m_sandbox.State();
        Plan counting;
        // What is before the database is opened is the same for all commands: the first is enough.
        counting.start = m_walkedStart ? Start::atDatabase : Start::atOnce;
        counting.recordStacks = !m_options.all && m_options.engine == "sqlite";
        reference.outcome = m_sandbox.Run(scenario, counting, true);
        const Seen& seen = m_sandbox.Counted();
        const std::array<std::uint64_t, kCalls> counts = seen.counts;
        const std::vector<std::uint64_t> stacks(seen.stacks.begin(),
                                                seen.stacks.begin() +
                                                    std::min<std::uint64_t>(counts[0], m_options.all ? 0 : kMaxStacks));
        reference.after = m_sandbox.State();
        if (reference.outcome.exit != 0 && reference.outcome.exit != 3 && reference.outcome.exit != 8) {
            Found(scenario.line, "fails by itself: " + reference.outcome.err);
            return;
        }
        fmt::print("{}: {}", scenario.line, fmt::join(counts, " "));
        std::fflush(stdout);
        for (const Fault& fault : kFaults) {
            // What the servers' own libraries do without memory is not ours to mend.
            if (m_options.engine != "sqlite" && !IsOfConnection(fault)) {
                continue;
            }
            for (const std::uint64_t at : Points(fault, counts, stacks)) {
                RunOnce(scenario, reference, fault,
                        {counting.start, fault.action, fault.call, at, fault.number, false});
            }
        }
        m_walkedStart = true;
        for (const std::uint64_t stack : stacks) {
            m_stacks.insert(stack);
        }
        fmt::print(" calls, {} runs so far\n", m_runs);
        std::fflush(stdout);
    }

    /// The calls to strike: all of them, or such as have not been struck in another command.
    [[nodiscard]] std::vector<std::uint64_t> Points(const Fault& fault, const std::array<std::uint64_t, kCalls>& counts,
                                                    const std::vector<std::uint64_t>& stacks) const
    {
        const std::uint64_t count = counts[static_cast<std::size_t>(fault.call)];
        std::vector<std::uint64_t> points;
        std::set<std::uint64_t> known = m_stacks;
        for (std::uint64_t at = 1; at <= count; ++at) {
            const bool hasStack = fault.call == Call::allocation && at <= stacks.size();
            if (!hasStack || known.insert(stacks[at - 1]).second) {
                points.push_back(at);
            }
        }
        // Of the writes the last is the one that decides; of the allocations each command takes another one.
        return m_options.all ? points : Spread(points, m_options.points, fault.call == Call::allocation ? m_runs : 0);
    }

    /// So many of the points at most, evenly apart.
    static std::vector<std::uint64_t> Spread(const std::vector<std::uint64_t>& points, std::size_t most,
                                             std::uint64_t shift)
    {
        std::vector<std::uint64_t> some;
        const std::size_t count = std::min(points.size(), most);
        for (std::size_t i = 1; i <= count; ++i) {
            some.push_back(points[(i * points.size() / count - 1 + shift) % points.size()]);
        }
        return some;
    }

    void RunOnce(const Scenario& scenario, const Reference& reference, const Fault& fault, const Plan& plan)
    {
        m_sandbox.Restore(scenario);
        const Outcome outcome = m_sandbox.Run(scenario, plan, ++m_runs % (m_options.all ? 1 : kLeakEach) == 0);
        const bool struck = m_sandbox.Counted().struck > 0;
        const std::optional<std::string> wrong = WhatIsWrong(scenario, reference, fault, outcome, struck);
        if (wrong) {
            Found(fmt::format("{}, {}", scenario.line, fault.name), fmt::format("{} [at {}]", *wrong, plan.at));
        }
    }

    std::optional<std::string> WhatIsWrong(const Scenario& scenario, const Reference& reference, const Fault& fault,
                                           const Outcome& outcome, bool struck)
    {
        const bool isRaised = fault.action == Action::raise;
        if (outcome.leaks) {
            return "leaks: " + outcome.err;
        }
        // The cryptography library reads a lock that it had no memory for, which is not ours to mend.
        if (fault.call == Call::allocation && outcome.err.find(" in OSSL_PROVIDER_load ") != std::string::npos) {
            return std::nullopt;
        }
        if (outcome.err.find("Sanitizer") != std::string::npos ||
            outcome.err.find("runtime error:") != std::string::npos) {
            return "crashes: " + outcome.err;
        }
        if (outcome.signal == SIGALRM) {
            return "does not end";
        }
        if (outcome.signal != 0 && (!isRaised || outcome.signal != fault.number)) {
            return fmt::format("crashes with signal {}: {}", outcome.signal, outcome.err);
        }
        // What a server sends comes in as many pieces as the network makes of it: there may be fewer than before.
        if (!struck && fault.call != Call::receive) {
            return "never came to the call that was to fail: " + outcome.err;
        }
        if (auto wrong = WrongState(scenario, reference, fault, outcome)) {
            return wrong;
        }
        const bool isDone = outcome.exit == reference.outcome.exit;
        return outcome.signal != 0 ? std::nullopt
               : isDone            ? WrongOutput(reference, outcome)
                                   : WrongSentence(scenario, fault, outcome);
    }

    /// A command in steps that fails in between has more entries in the record of changes than one that does not.
    static std::string Comparable(const Scenario& scenario, const std::string& state)
    {
        if (!scenario.inSteps) {
            return state;
        }
        std::istringstream in(state);
        std::string kept;
        for (std::string line; std::getline(in, line);) {
            const bool isRecord = line.starts_with("qv_Audit") || line.starts_with("qv_audit");
            kept += isRecord ? "" : line + "\n";
        }
        return kept;
    }

    std::optional<std::string> WrongState(const Scenario& scenario, const Reference& reference, const Fault& fault,
                                          const Outcome& outcome)
    {
        std::string state;
        try {
            state = m_sandbox.State();
        } catch (const CAException& e) {
            return fmt::format("leaves a directory that cannot be read: {}", std::string(e.GetErrorText().View()));
        }
        const bool isDone = outcome.exit == reference.outcome.exit;
        const std::string after = Comparable(scenario, reference.after);
        if (isDone && Comparable(scenario, state) != after) {
            return fmt::format("ends with {} and is not done: {}", outcome.exit,
                               Difference(after, Comparable(scenario, state)));
        }
        if (state != reference.before && outcome.err.find("nothing was changed") != std::string::npos) {
            return "says that nothing was changed, but it was: " + outcome.err;
        }
        const bool tells = outcome.err.find("may have been made") != std::string::npos || scenario.inSteps;
        if (state != reference.before && IsOfConnection(fault) && outcome.signal == 0 && !isDone && !tells) {
            return "has made the change and does not say that it may have: " + outcome.err;
        }
        if (state == reference.before || Comparable(scenario, state) == after) {
            return std::nullopt;
        }
        if (!scenario.inSteps) {
            return "leaves something half done: " + outcome.err + Difference(reference.before, state);
        }
        m_sandbox.ResetCounters();
        const Outcome again = m_sandbox.Run(scenario, {});
        if (again.exit != 0 || Comparable(scenario, m_sandbox.State()) != after) {
            return fmt::format("cannot be run again after it failed: {}{}", outcome.err, again.err);
        }
        return std::nullopt;
    }

    static std::string Difference(const std::string& a, const std::string& b)
    {
        const auto [left, right] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
        const auto at = static_cast<std::size_t>(left - a.begin());
        const std::size_t line = a.rfind('\n', at) + 1;
        return fmt::format("before {}, now {}", a.substr(line, 120), b.substr(line, 120));
    }

    static std::optional<std::string> WrongOutput(const Reference& reference, const Outcome& outcome)
    {
        if (WithoutMoments(outcome.out) != WithoutMoments(reference.outcome.out)) {
            return fmt::format("ends with {} and prints: {}", outcome.exit, outcome.out);
        }
        return std::nullopt;
    }

    static std::optional<std::string> WrongSentence(const Scenario& scenario, const Fault& fault,
                                                    const Outcome& outcome)
    {
        const std::string& err = outcome.err;
        if (IsOfConnection(fault) && err.find("the database refused") != std::string::npos) {
            return "takes a lost connection for a refusal: " + err;
        }
        const bool tellsOfLoss = err.find("the connection to the database was lost") != std::string::npos ||
                                 err.find("cannot connect") != std::string::npos;
        if (IsOfConnection(fault) && fault.action == Action::failOn && !tellsOfLoss) {
            return "does not say that the connection was lost: " + err;
        }
        const std::size_t begin = err.starts_with("qvadmin: ") ? 0 : err.find("\nqvadmin: ") + 1;
        const bool isOne = (begin > 0 || err.starts_with("qvadmin: ")) &&
                           err.find("\nqvadmin: ", begin) == std::string::npos &&
                           (scenario.tellsOfParts || err.find('\n', begin) + 1 == err.size());
        const bool isObject = err.starts_with(R"({"v":1,"code":)") && err.find('\n') + 1 == err.size();
        if (!(isOne || isObject) || err.find("internal error") != std::string::npos ||
            err.find("terminate called") != std::string::npos) {
            return fmt::format("ends with {} and not with one sentence: {}", outcome.exit, err);
        }
        if (outcome.exit != 1 && outcome.exit != 6 && outcome.exit != 7) {
            return fmt::format("ends with {}: {}", outcome.exit, err);
        }
        return std::nullopt;
    }

    void Found(const std::string_view where, const std::string& what)
    {
        m_findings[std::string(where)].push_back(what);
    }

    void Report() const
    {
        std::size_t count = 0;
        for (const auto& [where, what] : m_findings) {
            fmt::print("{}: {} times, first: {}\n", where, what.size(), what.front().substr(0, 3000));
            count += what.size();
        }
        fmt::print("{} runs, {} findings\n", m_runs, count);
    }

    static constexpr std::uint64_t kLeakEach = 20;

    Options m_options;
    Sandbox m_sandbox;
    bool m_walkedStart; ///< what all commands do before they open a database
    std::set<std::uint64_t> m_stacks;
    std::uint64_t m_runs = 0;
    std::map<std::string, std::vector<std::string>> m_findings;
};

} // namespace

} // namespace faults

// fault_walk [--all|--points N] [--engine sqlite|postgresql|mariadb] [--odbc] [WORDS]: runs each command (that begins
// with WORDS) again and again, and lets one call of the C library after the other fail. Ends with 1 when a command did
// not end as it should.
int main(int argc, char* argv[])
{
    faults::Options options;
    const std::span<char*> words(argv, static_cast<std::size_t>(argc));
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string_view word = words[i];
        if (word == "--all") {
            options.all = true;
        } else if (word == "--points" && i + 1 < words.size()) {
            options.points = std::stoul(words[++i]);
        } else if (word == "--engine" && i + 1 < words.size()) {
            options.engine = words[++i];
        } else if (word == "--odbc") {
            options.overOdbc = true;
        } else {
            options.only += (options.only.empty() ? "" : " ") + std::string(word);
        }
    }
    try {
        return faults::Walk(options).Run() ? 0 : 1;
    } catch (const std::exception& e) {
        fmt::print(stderr, "{}\n", e.what());
    } catch (const CAException& e) {
        fmt::print(stderr, "{}\n", std::string(e.GetErrorText().View()));
    }
    return 1;
}
