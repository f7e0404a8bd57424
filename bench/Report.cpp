#include "bench/Report.h"

#include "bench/ServerTime.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>

namespace bench {

namespace {

constexpr const char* kRow = "| %-40s | %10s | %10s | %5s | %6s | %7s | %5s |\n";

constexpr const char* kLine =
    "|------------------------------------------|-----------:|-----------:|------:|-------:|--------:|------:|\n";

double Quantile(std::vector<double> values, double fraction)
{
    std::sort(values.begin(), values.end());
    const double place = fraction * static_cast<double>(values.size() - 1);
    const auto below = static_cast<std::size_t>(std::floor(place));
    const std::size_t above = std::min(below + 1, values.size() - 1);
    return values[below] + (values[above] - values[below]) * (place - std::floor(place));
}

double Median(const std::vector<double>& values) { return Quantile(values, 0.5); }

double MiddleHalf(const std::vector<double>& values)
{
    return (Quantile(values, 0.75) - Quantile(values, 0.25)) / Median(values);
}

template <class Value>
std::string Text(const char* format, Value value)
{
    std::array<char, 64> text;
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

std::string Duration(double nanoseconds)
{
    if (nanoseconds < 1e6) {
        return Text("%.2f us", nanoseconds / 1e3);
    }
    return Text("%.1f ms", nanoseconds / 1e6);
}

/// What a run ended with that failed; nothing for any other. Newer versions of the library have other names for it.
template <class Run>
std::optional<std::string> ErrorOf(const Run& run)
{
    if constexpr (requires { run.error_occurred; }) {
        return run.error_occurred ? std::optional(run.error_message) : std::nullopt;
    } else {
        return run.skipped != 0 ? std::optional(run.skip_message) : std::nullopt;
    }
}

std::string Target(double target) { return target == 0 ? "" : Text("%.2f", target); }

} // namespace

bool SampleReporter::ReportContext(const Context& /*context*/) { return true; }

void SampleReporter::ReportRuns(const std::vector<Run>& runs)
{
    for (const Run& run : runs) {
        if (const auto error = ErrorOf(run)) {
            std::fprintf(stderr, "%s: %s\n", run.benchmark_name().c_str(), error->c_str());
        } else if (run.run_type == Run::RT_Iteration) {
            const auto iterations = static_cast<double>(run.iterations);
            Samples& samples = m_samples[run.run_name.function_name];
            samples.wall.push_back(run.real_accumulated_time / iterations * 1e9);
            const auto server = run.counters.find(kServerTime);
            const double serverTime = server == run.counters.end() ? 0 : server->second.value;
            samples.cpu.push_back((run.cpu_accumulated_time + serverTime) / iterations * 1e9);
        }
    }
}

void PairReporter::Finalize()
{
    PrintPairs();
    PrintGrowths();
    std::fflush(stdout);
}

void PairReporter::PrintPairs() const
{
    std::printf("\n");
    std::printf(kRow, "processor time", "base", "Quorvel", "ratio", "target", "spread", "wall");
    std::printf(kLine);
    for (const Pair& pair : m_pairs) {
        const auto base = AllSamples().find(pair.base);
        const auto other = AllSamples().find(pair.other);
        if (base == AllSamples().end() || other == AllSamples().end()) {
            continue;
        }
        const double cpu = Median(base->second.cpu);
        const double otherCpu = Median(other->second.cpu);
        const double wall = Median(other->second.wall) / Median(base->second.wall);
        const double spread = std::max(MiddleHalf(base->second.cpu), MiddleHalf(other->second.cpu));
        std::printf(kRow, pair.title.c_str(), Duration(cpu).c_str(), Duration(otherCpu).c_str(),
                    Text("%.2f", otherCpu / cpu).c_str(), Target(pair.target).c_str(),
                    Text("%.1f %%", spread * 100).c_str(), Text("%.2f", wall).c_str());
    }
}

void PairReporter::PrintGrowths() const
{
    std::string lines;
    for (const Growth& growth : m_growths) {
        lines += GrowthLine(growth);
    }
    if (!lines.empty()) {
        std::printf("\n| %-36s | %10s | %8s | %10s | %8s | %10s | %8s |\n", "processor time of Quorvel", "10^4 users",
                    "a row", "10^5 users", "a row", "10^6 users", "a row");
        std::printf(
            "|--------------------------------------|-----------:|---------:|-----------:|---------:|-----------:"
            "|---------:|\n%s",
            lines.c_str());
    }
}

std::string PairReporter::GrowthLine(const Growth& growth) const
{
    std::string line = "| " + Text("%-36s", growth.title) + " |";
    for (const Growth::Size& size : growth.sizes) {
        const auto samples = AllSamples().find(size.benchmark);
        if (samples == AllSamples().end()) {
            return {};
        }
        const double cpu = Median(samples->second.cpu);
        line += Text(" %10s |", Duration(cpu).c_str()) + Text(" %8s |", Duration(cpu / size.rows).c_str());
    }
    return line + "\n";
}

std::string PeerReporter::Cell(const PeerTable::Work& work, const PeerTable::Side& side) const
{
    const std::string baseName = work.name + "/" + m_table.sides.front().name;
    const std::string name = work.name + "/" + side.name;
    const auto base = AllSamples().find(baseName);
    const auto own = AllSamples().find(name);
    if (base == AllSamples().end() || own == AllSamples().end()) {
        return {};
    }
    const bool isBase = name == baseName;
    const double cpu = Median(own->second.cpu);
    std::string cell = isBase ? Duration(cpu) : Text("%.2f", cpu / Median(base->second.cpu));
    const auto count = m_table.instructions.find(name);
    if (count != m_table.instructions.end()) {
        cell += isBase ? Text(" (%.0f)", count->second)
                       : Text(" (%.2f)", count->second / m_table.instructions.at(baseName));
    }
    return cell;
}

void PeerReporter::Finalize()
{
    std::string header = "\n| " + Text("%-32s", "processor time (instructions)") + " |";
    std::string line = "|" + std::string(34, '-') + "|";
    for (const PeerTable::Side& side : m_table.sides) {
        header += Text(" %20s |", side.title.c_str());
        line += std::string(21, '-') + ":|";
    }
    std::printf("%s %6s |\n%s-------:|\n", header.c_str(), "target", line.c_str());
    for (const PeerTable::Work& work : m_table.works) {
        std::printf("| %-32s |", work.title.c_str());
        for (const PeerTable::Side& side : m_table.sides) {
            std::printf(" %20s |", Cell(work, side).c_str());
        }
        std::printf(" %6s |\n", Target(work.target).c_str());
    }
    std::fflush(stdout);
}

void PrintPeaks(const std::vector<Peak>& peaks)
{
    std::printf("\n");
    std::printf(kRow, "growth of peak memory", "base", "Quorvel", "ratio", "target", "", "");
    std::printf(kLine);
    for (const Peak& peak : peaks) {
        const auto byHand = static_cast<double>(peak.byHand);
        const auto quorvel = static_cast<double>(peak.quorvel);
        std::printf(kRow, peak.title.c_str(), Text("%.1f MiB", byHand / 1024).c_str(),
                    Text("%.1f MiB", quorvel / 1024).c_str(), Text("%.2f", quorvel / byHand).c_str(),
                    Target(peak.target).c_str(), "", "");
    }
    std::fflush(stdout);
}

void PrintWaits(const std::vector<Waits>& all)
{
    std::printf("\n| %-40s | %10s | %10s | %10s |\n", "wall clock", "median", "longest", "target");
    std::printf("|------------------------------------------|-----------:|-----------:|-----------:|\n");
    for (const Waits& waits : all) {
        std::printf("| %-40s | %10s | %10s | %10s |\n", waits.title.c_str(),
                    Text("%.2f ms", Median(waits.milliseconds)).c_str(),
                    Text("%.2f ms", *std::ranges::max_element(waits.milliseconds)).c_str(),
                    Text("%.0f ms", waits.target).c_str());
    }
    std::fflush(stdout);
}

} // namespace bench
