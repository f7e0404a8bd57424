#include "management/Command.h"
#include "management/Query.h"
#include "management/Text.h"
#include "management/check/Check.h"

#include <fmt/format.h>

#include <algorithm>

namespace management::check {

namespace {

struct CheckInput {
    bool fix = false;
};

constexpr Param<CheckInput> kCheckParams[] = {
    {"fix", &CheckInput::fix, Kind::flag, "mend what can be mended without a decision; asks first"}};

constexpr Column kCheckColumns[] = {{"check"},  {"count", Kind::number}, {"problem"}, {"example"},
                                    {"repair"}, {"fixable", Kind::flag}};

bool IsQuestion(const CheckInput& in) { return !in.fix; }

std::vector<Problem> Found(Call& call)
{
    return FindProblems(call.Connection(), [&call](long done, long total) { call.ShowProgress(done, total); });
}

Result Show(Call& call, const CheckInput& /*in*/)
{
    Result result;
    for (const Problem& problem : Found(call)) {
        result.hasFindings = true;
        if (!call.Row(std::string(problem.name), problem.count, SentenceValue(problem.sentence),
                      SentenceValue(problem.example), SentenceValue(problem.repair), !problem.statements.empty())) {
            break;
        }
    }
    return result;
}

struct Repair : Plan {
    std::vector<Problem> problems;

    bool operator==(const Repair&) const = default;
};

Repair PlanRepair(Call& call, const CheckInput& /*in*/)
{
    Repair repair;
    repair.nothingDone = Translatable("nothing was mended");
    repair.problems = Found(call);
    std::erase_if(repair.problems, [](const Problem& problem) { return problem.statements.empty(); });
    for (const Problem& problem : repair.problems) {
        repair.removed += static_cast<std::size_t>(problem.count);
        repair.lines.push_back(FillPattern("{} {}: {}", problem.count, problem.sentence, problem.repair));
    }
    repair.question = repair.problems.empty() ? "" : FillPattern("Mend {}?", Counted(repair.removed, "row"));
    return repair;
}

Result Mend(Call& call, const CheckInput& /*in*/, const Repair& repair)
{
    if (repair.problems.empty()) {
        call.Report(
            {"directory", 0, "", "unchanged", Translatable("there is nothing that can be mended without a decision")});
        return Unchanged();
    }
    for (const Problem& problem : repair.problems) {
        for (const std::string& statement : problem.statements) {
            Execute(call.Connection(), statement);
        }
        call.Report({"check", 0, std::string(problem.name), "mended",
                     FillPattern("mended {} {}", problem.count, problem.sentence)});
    }
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"db", "check"},
     .summary = "what does not hold together: orphans, cycles, doubled and alike names, stale departments, passwords",
     .examples = {"qvadmin db check", "qvadmin db check --fix --dry-run"},
     .effect = Effect::change,
     .asks = true,
     .duration = Duration::longRunning,
     .columns = kCheckColumns,
     .handler = ReadOr<&IsQuestion, &Show, &RunPlanned<&PlanRepair, &Mend, CheckInput>, kCheckParams>()},
};

} // namespace

std::span<const Command> CheckCommands() { return kCommands; }

} // namespace management::check
