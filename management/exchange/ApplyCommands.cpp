#include "basefun/ItemTypes.h"
#include "management/Command.h"
#include "management/JsonLine.h"
#include "management/References.h"
#include "management/RemovalLimit.h"
#include "management/Text.h"
#include "management/exchange/DirectoryDiff.h"
#include "management/exchange/DirectoryImport.h"
#include "management/exchange/DirectoryRemover.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <deque>
#include <map>
#include <memory>
#include <ranges>
#include <set>
#include <sstream>

// Makes a directory as a file says.

namespace management::exchange {

namespace {

using Kind = DirectoryDifference::Kind;

struct ApplyInput {
    std::string file;
    bool allowPrivileges = false;
    std::optional<std::string> maxRemovals;
};

constexpr Param<ApplyInput> kApplyParams[] = {
    {"FILE", &ApplyInput::file, management::Kind::file, "what `qvadmin export` has written; - for standard input"},
    {"allow_privileges", &ApplyInput::allowPrivileges, management::Kind::flag,
     "lines may change super, system and locked, and concern Admin"},
    {"max_removals", &ApplyInput::maxRemovals, management::Kind::text,
     "how much may go, such as 20 lines or 10%; 5% of the lines that are compared if not given"},
};

/// One thing to do.
struct Step {
    Kind kind = Kind::differs;
    std::string_view noun;
    std::string name;
    std::string members; ///< that change
    std::string before;  ///< the line of what goes or changes

    bool operator==(const Step&) const = default;
};

struct Words {
    std::string_view verb;
    std::string_view outcome;
};
constexpr std::array<Words, 3> kWords = {{{"remove", "removed"}, {"add", "added"}, {"change", "changed"}}};

const Words& WordsOf(const Step& step) { return kWords.at(static_cast<std::size_t>(step.kind)); }

std::string TextOf(const Step& step)
{
    return fmt::format("{} {}{}{}", step.noun, Visible(step.name), step.members.empty() ? "" : ": ", step.members);
}

struct ApplyRequest {
    std::string name; ///< of the file
    DirectoryLines wanted;
    RemovalLimit limit;
    bool allowPrivileges = false;
};

struct ApplyPlan : Plan {
    std::shared_ptr<const DirectoryLines> here; ///< that the differences name
    std::vector<DirectoryDifference> differences;
    std::vector<Step> steps;

    bool operator==(const ApplyPlan& other) const { return Plan::operator==(other) && steps == other.steps; }
};

/// Lines that are already read.
class Lines final : public LineSource {
public:
    explicit Lines(std::vector<const ExportedLine*> lines) : m_lines(lines.begin(), lines.end()) {}

    std::optional<ExportedLine> Next() override
    {
        if (m_lines.empty()) {
            return std::nullopt;
        }
        const ExportedLine* line = m_lines.front();
        m_lines.pop_front();
        m_bytes += WriteJsonLine(line->object).size();
        return *line;
    }
    [[nodiscard]] bool Failed() const override { return false; }
    std::size_t TakeBytes() override { return std::exchange(m_bytes, 0); }

private:
    std::deque<const ExportedLine*> m_lines;
    std::size_t m_bytes = 0;
};

// ---- The plan -------------------------------------------------------------------------------------------------------

/// What is to be done: removals first, then changes, then additions. Members of one line come together.
std::vector<Step> StepsOf(const std::vector<DirectoryDifference>& differences)
{
    std::vector<Step> steps;
    const ExportedLine* last = nullptr;
    for (const DirectoryDifference& difference : differences) {
        if (difference.kind == Kind::differs && difference.hereLine == last) {
            steps.back().members += fmt::format(", {}", difference.member);
            continue;
        }
        last = difference.hereLine;
        steps.push_back({difference.kind, difference.noun->name, difference.name, std::string(difference.member),
                         last == nullptr ? "" : WriteJsonLine(last->object)});
    }
    constexpr std::array<int, 3> kOrder = {0, 2, 1};
    std::ranges::stable_sort(steps, {},
                             [&](const Step& step) { return kOrder.at(static_cast<std::size_t>(step.kind)); });
    return steps;
}

std::size_t CountOf(const std::vector<Step>& steps, Kind kind)
{
    return static_cast<std::size_t>(std::ranges::count(steps, kind, &Step::kind));
}

std::vector<ExportedLine> RemovedLines(const ApplyPlan& plan, const Noun& noun)
{
    std::vector<ExportedLine> lines;
    for (const DirectoryDifference& difference : plan.differences) {
        if (difference.kind == Kind::onlyHere && difference.noun == &noun) {
            lines.push_back(*difference.hereLine);
        }
    }
    return lines;
}

std::vector<int> IdsOf(CAConnect& conn, const ItemNames& names, const std::vector<ExportedLine>& lines)
{
    constexpr std::size_t kMostLines = 256;
    std::vector<int> ids;
    for (std::size_t begin = 0; begin < lines.size(); begin += kMostLines) {
        LineMatcher matcher(conn, std::span(lines).subspan(begin, std::min(kMostLines, lines.size() - begin)), names);
        std::vector<MatchedLine> matched = matcher.Resolve();
        matcher.FindRows(matched);
        for (const MatchedLine& line : matched) {
            if (line.row != nullptr) {
                ids.push_back(line.row->id);
            }
        }
    }
    return ids;
}

/// Whether a file says which rows of a table there are to be.
bool HasTable(const DirectoryLines& file, std::string_view table)
{
    return std::ranges::any_of(Nouns(), [&](const Noun& noun) { return noun.table == table && file.HasNoun(noun); });
}

/// What refers to users, groups, roles and views that are removed, where the file does not have all of it.
std::string GoingAlong(Call& call, const ApplyRequest& in, const ApplyPlan& plan)
{
    constexpr std::array<std::pair<std::string_view, int>, 4> kTypes = {
        {{"user", kItemTypeUser}, {"group", kItemTypeGroup}, {"role", kItemTypeRole}, {"view", kItemTypeView}}};
    const ItemNames names(call.Connection());
    std::map<std::string_view, std::size_t> counts;
    for (const auto& [noun, type] : kTypes) {
        const std::vector<int> ids = IdsOf(call.Connection(), names, RemovedLines(plan, *FindNoun(noun)));
        for (const Reference& reference :
             ids.empty() ? std::vector<Reference>() : CountReferences(call.Connection(), type, ids)) {
            counts[reference.noun] += static_cast<std::size_t>(reference.count);
        }
    }
    std::string list;
    for (const ReferenceKind& kind : ReferenceKinds()) {
        const bool isWhole = !in.wanted.Scope().in && HasTable(in.wanted, kind.table);
        if (counts.contains(kind.noun) && !isWhole) {
            list += (list.empty() ? "" : ", ") + Counted(counts.at(kind.noun), kind.noun);
        }
    }
    return list;
}

/// @throws Error (conflict) when more would go than may.
void RequireFew(const ApplyRequest& in, const DirectoryLines& here, std::size_t removals)
{
    const std::size_t all = here.CountCovered(in.wanted);
    if (!in.limit.Allows(removals, all)) {
        throw Error(ErrorCode::conflict,
                    FillPattern("{} lacks {} of the {} that the directory has, and --max-removals allows {}; nothing "
                                "was changed",
                                Visible(in.name), removals, Counted(all, "line"), in.limit.Text()));
    }
}

void AddLines(ApplyPlan& plan)
{
    constexpr std::size_t kMostShown = 100;
    for (const Step& step : std::span(plan.steps).first(std::min(kMostShown, plan.steps.size()))) {
        plan.lines.emplace_back(fmt::format("{} {}", WordsOf(step).verb, TextOf(step)));
    }
    if (plan.steps.size() > kMostShown) {
        plan.lines.push_back(FillPattern("and {} more, which `qvadmin db diff` lists", plan.steps.size() - kMostShown));
    }
}

ApplyPlan PlanApply(Call& call, const ApplyRequest& in)
{
    ApplyPlan plan;
    plan.nothingDone = "nothing was changed";
    plan.here = std::make_shared<DirectoryLines>(DirectoryLines::Of(call, in.wanted.Scope(), false));
    plan.differences = Differences(*plan.here, in.wanted);
    plan.steps = StepsOf(plan.differences);
    plan.removed = CountOf(plan.steps, Kind::onlyHere);
    RequireFew(in, *plan.here, plan.removed);
    AddLines(plan);
    if (const std::string along = plan.removed == 0 ? "" : GoingAlong(call, in, plan); !along.empty()) {
        plan.lines.push_back(FillPattern("what is removed takes along {}", along));
    }
    if (const Sentence left = plan.here->NotCompared(in.wanted, in.name); !left.IsEmpty()) {
        plan.lines.push_back(left);
    }
    if (!plan.steps.empty()) {
        plan.question = FillPattern("Apply {}: remove {}, change {} and add {}?", Visible(in.name), plan.removed,
                                    CountOf(plan.steps, Kind::differs), CountOf(plan.steps, Kind::onlyThere));
    }
    return plan;
}

// ---- Carrying it out ------------------------------------------------------------------------------------------------

/// From the last noun to the first, since lines refer to those before.
void Remove(Call& call, const ApplyRequest& in, const ApplyPlan& plan)
{
    DirectoryRemover remover(call, {in.allowPrivileges, in.wanted.HasNoun(*FindNoun("user"))});
    for (const Noun& noun : std::ranges::reverse_view(Nouns())) {
        remover.Remove(RemovedLines(plan, noun));
    }
}

/// Adds and changes: all lines about what differs, since only together they say which of several rows is which.
void Store(Call& call, const ApplyRequest& in, const ApplyPlan& plan)
{
    std::set<std::pair<const Noun*, long>> places;
    std::vector<const ExportedLine*> lines;
    for (const DirectoryDifference& difference : plan.differences) {
        if (difference.thereLine == nullptr) {
            continue;
        }
        for (const ExportedLine& line : in.wanted.LinesAbout(*difference.thereLine)) {
            if (places.emplace(line.noun, line.number).second) {
                lines.push_back(&line);
            }
        }
    }
    std::ranges::sort(lines, {}, [](const ExportedLine* line) { return std::pair(line->noun, line->number); });
    Lines source(std::move(lines));
    StoreLines(call, source, in.name, {true, in.allowPrivileges});
}

/// @throws Error (conflict) where the directory is not as the file says.
void RequireApplied(Call& call, const ApplyRequest& in)
{
    const DirectoryLines here = DirectoryLines::Of(call, in.wanted.Scope(), false);
    const std::vector<DirectoryDifference> left = Differences(here, in.wanted);
    if (left.empty()) {
        return;
    }
    const DirectoryDifference& first = left.front();
    throw Error(ErrorCode::conflict,
                FillPattern("{} cannot be applied: the {} {} would still {}; nothing was changed", Visible(in.name),
                            first.noun->name, Visible(first.name),
                            first.kind == Kind::onlyHere    ? Sentence(Translatable("be there"))
                            : first.kind == Kind::onlyThere ? Sentence(Translatable("be missing"))
                                                            : FillPattern("have another {}", first.member)));
}

Result Apply(Call& call, const ApplyRequest& in, const ApplyPlan& plan)
{
    if (plan.steps.empty()) {
        call.Report({"directory", 0, "", "unchanged", FillPattern("the directory is as {} says", Visible(in.name))});
        return Unchanged();
    }
    Remove(call, in, plan);
    Store(call, in, plan);
    RequireApplied(call, in);
    for (const Step& step : plan.steps) {
        call.Report({step.noun, 0, step.name, WordsOf(step).outcome,
                     fmt::format("{} {}", WordsOf(step).outcome, TextOf(step))});
    }
    return {};
}

Result Run(Call& call, const ArgumentSource& source)
{
    const auto in = binding::ReadInput<kApplyParams>(source);
    const RemovalLimit limit = in.maxRemovals ? RemovalLimit("max_removals", *in.maxRemovals) : RemovalLimit();
    std::istringstream file(call.Front().ReadText(in.file));
    LineReader reader(file, in.file == "-" ? "standard input" : in.file);
    reader.RequireHead();
    const ApplyRequest request = {reader.Name(), DirectoryLines::Of(reader), limit, in.allowPrivileges};
    return RunPlanned<&PlanApply, &Apply>(call, request);
}

Sentence Notes()
{
    return Translatable(
        "The file is the whole: what it does not have is removed, what differs gets its values, what is only in\n"
        "it is added; all of it, as `qvadmin db diff FILE` lists it, or nothing. Left alone is what the file is\n"
        "not about: members that its lines do not have (passwords without --with-passwords), kinds of lines that\n"
        "it has none of, and, where it was exported with --in or --nouns, all that is not of this part; people\n"
        "who are not in a part leave its groups and are not removed.\n");
}

constexpr Command kCommands[] = {
    {.path = {"db", "apply"},
     .summary = "make the directory as a file says: add, change and remove what `db diff` lists",
     .examples = {"qvadmin db apply directory.jsonl --dry-run",
                  "qvadmin db apply directory.jsonl --max-removals 10% --reason 'as reviewed'"},
     .notes = &Notes,
     .effect = Effect::change,
     .asks = true,
     .duration = Duration::longRunning,
     .handler = {&InfosOf<kApplyParams>, &Run}},
};

} // namespace

std::span<const Command> ApplyCommands() { return kCommands; }

} // namespace management::exchange
