#pragma once

#include <functional>

namespace bench {

/// The main function of a program of benchmarks: reads the command line, with presets for what it leaves open, and
/// runs `all`. @return what main is to return; an exception becomes a line on standard error.
int RunBenchmarks(const char* program, int argc, char** argv, const std::function<void()>& all);

/// Whether the command line's filter takes a name in.
bool IsWanted(const char* name);

} // namespace bench
