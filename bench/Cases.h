#pragma once

#include "basefun/QVBaseFun.h"
#include "bench/ServerTime.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <exception>
#include <stdexcept>
#include <string>

namespace bench {

/// @throws std::runtime_error with the module's last error when a call did not do what it should.
inline void Require(bool ok)
{
    if (!ok) {
        throw std::runtime_error(CQVBaseFun::m_strLastError.GetString());
    }
}

/// @throws std::runtime_error when a list is longer or shorter than it should be.
inline void RequireCount(std::size_t count, int expected)
{
    if (count != static_cast<std::size_t>(expected)) {
        throw std::runtime_error("a list has " + std::to_string(count) + " rows");
    }
}

inline void RequireCount(int count, int expected) { RequireCount(static_cast<std::size_t>(count), expected); }

/// Registers a benchmark of `work(i)`, where i counts the calls from 0.
/// @param server  a process whose processor time counts as well; 0: none.
template <class Work>
benchmark::internal::Benchmark* Register(const std::string& name, Work work, pid_t server = 0)
{
    // NOLINTNEXTLINE(readability-redundant-string-cstr): version 1.7 of the library takes no std::string.
    return benchmark::RegisterBenchmark(name.c_str(), [work, server](benchmark::State& state) {
        std::size_t call = 0;
        try {
            const double before = server == 0 ? 0 : ProcessorSeconds(server);
            for (auto _ : state) {
                work(call++);
            }
            if (server != 0) {
                state.counters[kServerTime] = ProcessorSeconds(server) - before;
            }
        } catch (const std::exception& e) {
            state.SkipWithError(e.what());
        }
    });
}

} // namespace bench
