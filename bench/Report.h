#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace bench {

/// Two benchmarks to set side by side, by name.
struct Pair {
    const char* title;
    const char* base;
    const char* other;
    /// What the ratio of other to base is meant to stay below; 0 for none.
    double target;
};

/// Growth of the peak of resident memory, in KiB.
struct Peak {
    const char* title;
    long byHand;
    long quorvel;
    double target;
};

/// Collects all runs and, at the end, prints one line per pair: the median processor times of a call, their ratio, the
/// width of the middle half of the runs as a part of the median (the wider side's), and the ratio of the wall-clock
/// medians, which suffers when others use the machine.
class PairReporter final : public benchmark::BenchmarkReporter {
public:
    explicit PairReporter(std::vector<Pair> pairs) : m_pairs(std::move(pairs)) {}

    /// Says nothing of the machine.
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

private:
    struct Samples {
        std::vector<double> wall; // nanoseconds per iteration, here and below
        std::vector<double> cpu;
    };

    std::vector<Pair> m_pairs;
    std::map<std::string, Samples> m_samples;
};

/// Prints one line per peak.
void PrintPeaks(const std::vector<Peak>& peaks);

} // namespace bench
