// Does the workload once, as one of the contenders, and prints what came of it. A process of its own for each run: all
// begin with the same memory, and each with its own malloc.

#include "bench/ResidentMemory.h"
#include "bench/workload/Ours.h"
#include "bench/workload/Standard.h"
#include "bench/workload/Workload.h"

#include <cstdio>
#include <exception>
#include <string_view>

#if defined(TQ_BENCH_PEERS)
#include "bench/workload/Peers.h"
#endif

namespace {

template <class Tools>
int run(const char* from, const char* to) {
    Tools::prepare();
    const workload::Outcome outcome = workload::Workload<Tools>(from, to).run(bench::residentBytes);
    for (const double nanoseconds : outcome.times)
        std::printf("%.0f ", nanoseconds);
    std::printf("%.0f %.0f %llu\n", outcome.open, outcome.closed, static_cast<unsigned long long>(outcome.checksum));
    return 0;
}

} // namespace

int main(int argc, char** argv) try {
    const std::string_view who = argc == 4 ? argv[1] : "";
    if (who == "make")
        return workload::writeDrawing(argv[2]), 0;
    if (who == "ours")
        return run<workload::Ours>(argv[2], argv[3]);
    if (who == "standard")
        return run<workload::Standard>(argv[2], argv[3]);
#if defined(TQ_BENCH_PEERS)
    if (who == "peers")
        return run<workload::Peers>(argv[2], argv[3]);
#endif
    std::fputs("usage: workload ours|standard|peers DRAWING COPY\n       workload make DRAWING -\n", stderr);
    return 2;
} catch (const std::exception& error) {
    std::fprintf(stderr, "workload: %s\n", error.what());
    return 1;
}
