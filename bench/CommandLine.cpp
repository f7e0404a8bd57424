#include "bench/CommandLine.h"

#include "dbaccess/CAException.h"

#include <benchmark/benchmark.h>
#include <regex.h>

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace bench {

namespace {

constexpr int kRepetitions = 11;

} // namespace

bool IsWanted(const char* name)
{
    const std::string filter = benchmark::GetBenchmarkFilter();
    regex_t pattern;
    if (filter.empty() || filter == "all" || regcomp(&pattern, filter.c_str(), REG_EXTENDED | REG_NOSUB) != 0) {
        return true;
    }
    const bool wanted = regexec(&pattern, name, 0, nullptr, 0) == 0;
    regfree(&pattern);
    return wanted;
}

int RunBenchmarks(const char* program, int argc, char** argv, const std::function<void()>& all)
{
    // Interleaving spreads a busy moment over both sides of every pair.
    std::string interleaving = "--benchmark_enable_random_interleaving=true";
    std::string repetitions = "--benchmark_repetitions=" + std::to_string(kRepetitions);
    std::string minTime = "--benchmark_min_time=0.2";
    std::vector<char*> arguments = {argv[0], interleaving.data(), repetitions.data(), minTime.data()};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 2;
    }
    try {
        all();
    } catch (const CAException& e) {
        std::fprintf(stderr, "%s: %s\n", program, e.GetErrorText().GetString());
        return 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s: %s\n", program, e.what());
        return 1;
    }
    return 0;
}

} // namespace bench
