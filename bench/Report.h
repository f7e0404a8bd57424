#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace bench {

/// Two benchmarks to set side by side, by name.
struct Pair {
    std::string title;
    std::string base;
    std::string other;
    /// What the ratio of other to base is meant to stay below; 0 for none.
    double target;
};

/// One operation of the module in directories of 10^4, 10^5 and 10^6 users, in this order.
struct Growth {
    struct Size {
        std::string benchmark;
        double rows; // of a call
    };
    const char* title;
    std::vector<Size> sizes;
};

/// Growth of the peak of resident memory, in KiB.
struct Peak {
    std::string title;
    long byHand;
    long quorvel;
    double target;
};

/// Collects all runs, by the benchmarks' names. Processor time is that of the thread, and of the server where it is
/// measured.
class SampleReporter : public benchmark::BenchmarkReporter {
public:
    /// Says nothing of the machine.
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

protected:
    struct Samples {
        std::vector<double> wall; // nanoseconds per iteration, here and below
        std::vector<double> cpu;
    };

    [[nodiscard]] const std::map<std::string, Samples>& AllSamples() const { return m_samples; }

private:
    std::map<std::string, Samples> m_samples;
};

/// Prints one line per pair: the median processor times of a call, their ratio, the
/// width of the middle half of the runs as a part of the median (the wider side's), and the ratio of the wall-clock
/// medians, which suffers when others use the machine. Behind that, one line per growth: for every size the median
/// processor times of a call and of a row.
class PairReporter final : public SampleReporter {
public:
    PairReporter(std::vector<Pair> pairs, std::vector<Growth> growths)
        : m_pairs(std::move(pairs)), m_growths(std::move(growths))
    {
    }

    void Finalize() override;

private:
    void PrintPairs() const;
    void PrintGrowths() const;
    /// Empty unless all its sizes have run.
    [[nodiscard]] std::string GrowthLine(const Growth& growth) const;

    std::vector<Pair> m_pairs;
    std::vector<Growth> m_growths;
};

/// The same work done in several ways.
struct PeerTable {
    struct Work {
        std::string title;
        std::string name; // WORK in the names of its benchmarks, WORK/SIDE
        double target;    // of the second side
    };
    struct Side {
        std::string title;
        std::string name;
    };
    std::vector<Work> works;
    std::vector<Side> sides; // the first one is the base of all ratios
    /// Instructions of a call by the benchmarks' names; may be empty.
    std::map<std::string, double> instructions;
};

/// Prints one line per work: the median processor time of a call of the base, and for each other side its ratio to
/// that, with those of the instructions in brackets.
class PeerReporter final : public SampleReporter {
public:
    explicit PeerReporter(PeerTable table) : m_table(std::move(table)) {}

    void Finalize() override;

private:
    [[nodiscard]] std::string Cell(const PeerTable::Work& work, const PeerTable::Side& side) const;

    PeerTable m_table;
};

/// Prints one line per peak.
void PrintPeaks(const std::vector<Peak>& peaks);

/// How long something took each time, in milliseconds of the wall clock.
struct Waits {
    std::string title;
    std::vector<double> milliseconds;
    double target; // of the median
};

/// Prints one line for each: the median and the longest.
void PrintWaits(const std::vector<Waits>& all);

} // namespace bench
