#include "console/BatchCommand.h"

#include "console/Actor.h"
#include "console/CommandOption.h"
#include "console/LocalCommand.h"
#include "console/Session.h"
#include "console/ShellWords.h"
#include "console/TextFile.h"
#include "console/Translation.h"
#include "management/DatabaseError.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <sstream>

// Command lines from a file, in one process and over one connection.

namespace console {

namespace {

struct BatchInput {
    std::string file;
    bool stopOnError = false;
    bool oneTransaction = false;
    bool dryRun = false;
    std::optional<std::string> reason;
};

constexpr Param<BatchInput> kBatchParams[] = {
    {"FILE", &BatchInput::file, Kind::file, "a command on each line, without `qvadmin`; - for standard input"},
    {"stop_on_error", &BatchInput::stopOnError, Kind::flag, "end at the first command that fails"},
    {"one_transaction", &BatchInput::oneTransaction, Kind::flag,
     "make all changes last together, or, when a command fails, none"},
    {"dry_run", &BatchInput::dryRun, Kind::flag, kDryRunHelp},
    {"reason", &BatchInput::reason, Kind::text, "why, for the record, where a command does not say so itself"},
};

struct Line {
    int number;
    std::vector<std::string> words;
};

/// All lines that hold a command. @throws Error (invalid) that names a line which cannot be read.
std::vector<Line> ReadLines(std::istream& in)
{
    std::vector<Line> lines;
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        try {
            std::vector<std::string> words =
                SplitCommandLine(number == 1 ? std::string(WithoutByteOrderMark(line)) : line);
            if (!words.empty()) {
                lines.push_back({number, std::move(words)});
            }
        } catch (const Error& e) {
            throw Error(e.Code(), FillPattern("line {}: {}; nothing was run", number, e.Why()));
        }
    }
    return lines;
}

/// Runs the lines.
class Batch {
public:
    Batch(const LocalCall& call, const BatchInput& in) : m_call(call), m_in(in), m_shared{.arguments = call.arguments}
    {
        m_shared.options.dryRun = in.dryRun;
        m_shared.options.reason = in.reason.value_or("");
        m_shared.joinsTransaction = in.oneTransaction;
    }

    Exit Run(const std::vector<Line>& lines)
    {
        std::optional<Transaction> transaction;
        if (m_in.oneTransaction) {
            transaction.emplace(m_shared.Open());
        }
        const auto [run, failed] = RunUntilStopped(lines);
        const bool isUndone = m_in.oneTransaction && (failed != 0 || m_in.dryRun);
        if (transaction && !isUndone) {
            *m_call.terminal.mayHaveChanged = true;
            transaction->Commit();
        }
        const Sentence summary = FillPattern("{} of {} run, {} failed", run, Counted(lines.size(), "command"), failed);
        m_call.terminal.err << Translated(isUndone ? FillPattern("{}; nothing was changed", summary) : summary) << '\n';
        if (failed == 0 && run < lines.size()) {
            return Exit::failed;
        }
        return failed != 0 ? Exit::rowsFailed : m_isFinding ? Exit::checkFailed : Exit::done;
    }

private:
    /// How many commands were run, and how many of them failed.
    struct Counts {
        std::size_t run = 0;
        std::size_t failed = 0;
    };

    Counts RunUntilStopped(const std::vector<Line>& lines)
    {
        Counts counts;
        for (const Line& line : lines) {
            ++counts.run;
            counts.failed += RunOne(line) ? 0 : 1;
            if ((counts.failed != 0 && (m_in.stopOnError || m_in.oneTransaction)) || m_call.terminal.isStopped()) {
                break;
            }
        }
        return counts;
    }

    /// @return false when it failed.
    bool RunOne(const Line& line)
    {
        const Exit exit = RunLine(line.words, m_call.terminal, m_shared);
        const bool isDone = exit == Exit::done || exit == Exit::checkFailed;
        m_isFinding = m_isFinding || exit == Exit::checkFailed;
        const std::string command = Visible(CommandText(line.words));
        m_call.terminal.err << Translated(isDone ? FillPattern("line {}: done: {}", line.number, command)
                                                 : FillPattern("line {}: failed ({}): {}", line.number,
                                                               static_cast<int>(exit), command))
                            << '\n';
        return isDone;
    }

    const LocalCall& m_call;
    const BatchInput& m_in;
    SharedSession m_shared;
    bool m_isFinding = false;
};

Exit RunBatch(const LocalCall& call)
{
    const auto in = binding::ReadInput<kBatchParams>(call.given);
    if (in.file == "-") {
        return Batch(call, in).Run(ReadLines(call.terminal.in));
    }
    std::istringstream file(ReadTextFile(in.file));
    return Batch(call, in).Run(ReadLines(file));
}

constexpr LocalCommand kBatchCommands[] = {
    {{.path = {"batch"},
      .summary = "run the commands of a file, over one connection",
      .examples = {"qvadmin batch changes.txt --stop-on-error", "qvadmin batch - --one-transaction"},
      .effect = Effect::change,
      .handler = {&InfosOf<kBatchParams>}},
     &RunBatch},
};

} // namespace

bool EndsShell(const std::vector<std::string>& words)
{
    return words.size() == 1 && (words.front() == "exit" || words.front() == "quit");
}

Exit RunBatchOfInput(const LocalCall& call)
{
    std::vector<Line> lines = ReadLines(call.terminal.in);
    lines.erase(std::ranges::find_if(lines, [](const Line& line) { return EndsShell(line.words); }), lines.end());
    return Batch(call, BatchInput()).Run(lines);
}

std::span<const LocalCommand> BatchCommands() { return kBatchCommands; }

} // namespace console
