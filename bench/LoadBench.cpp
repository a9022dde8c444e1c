// How much memory loading a library takes. This program links none of them.

#include "bench/ResidentMemory.h"

#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <stdexcept>
#include <string>

namespace {

void add(const std::string& who, const char* library) {
    benchmark::RegisterBenchmark(("memory/library after load/" + who).c_str(), [library](benchmark::State& state) {
        double bytes = 0;
        for ([[maybe_unused]] auto _ : state) {
            bytes = bench::growth([library] { ::dlopen(library, RTLD_NOW); });
            state.counters["bytes"] = bytes;
        }
        if (bytes == 0)
            state.SkipWithError("missing");
    })->Iterations(1);
}

[[maybe_unused]] const bool g_registered = [] {
    add("ours", TQ_BENCH_LIBRARY);
    add("ICU", "libicuuc.so");
    add("Abseil strings", "libabsl_strings.so.20220623");
    return true;
}();

} // namespace
