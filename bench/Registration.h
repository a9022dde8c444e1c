#pragma once

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <string>
#include <utility>

namespace bench {

/// Registers a benchmark, named "area/case/who". With TQ_BENCH_ITERATIONS in the environment it runs just that often;
/// tools/bench_instructions.py counts instructions that way.
template <class Run, class... Arguments>
benchmark::internal::Benchmark* add(const std::string& name, Run run, Arguments&&... arguments) {
    auto* const registered =
        benchmark::RegisterBenchmark(name.c_str(), std::move(run), std::forward<Arguments>(arguments)...);
    if (const char* const iterations = std::getenv("TQ_BENCH_ITERATIONS"))
        registered->Iterations(std::atoll(iterations));
    return registered;
}

/// Stands in for a peer that is not installed.
inline benchmark::internal::Benchmark* addMissing(const std::string& name) {
    return add(name, [](benchmark::State& state) { state.SkipWithError("missing"); });
}

} // namespace bench
