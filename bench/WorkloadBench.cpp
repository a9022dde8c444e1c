// A drawing of about 50 MB from opening to closing, done by the contenders in processes of their own, one after the
// other in every round. Each phase is a row; the results must be the same for all.

#include "bench/Heaps.h"
#include "bench/Registration.h"
#include "bench/workload/Workload.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using workload::kPhases;
using workload::Outcome;

struct Contender {
    const char* name;    ///< As the table has it.
    const char* program; ///< As the program knows it.
    const char* library; ///< What takes the place of the C library's malloc, or null.
};

constexpr std::array<Contender, 3> kContenders = {{
    {"ours", "ours", nullptr},
    {"standard library", "standard", nullptr},
    {"mimalloc, fmt, absl, fast_float, ICU", "peers", bench::Mimalloc::kLibrary},
}};

bool isMissing(const Contender& contender) {
#if !defined(TQ_BENCH_PEERS)
    if (contender.library != nullptr)
        return true;
#endif
    return contender.library != nullptr && bench::Loaded<bench::Mimalloc>::isMissing();
}

// The drawing, and where the contenders save it.
class Files {
public:
    Files() {
        char pattern[] = "/tmp/tqbenchXXXXXX";
        if (::mkdtemp(pattern) == nullptr)
            throw std::runtime_error("no folder in /tmp");
        folder = pattern;
        workload::writeDrawing(drawing());
    }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;
    ~Files() {
        std::remove(drawing().c_str());
        std::remove(copy().c_str());
        ::rmdir(folder.c_str());
    }

    std::string drawing() const { return folder + "/drawing"; }
    std::string copy() const { return folder + "/copy"; }

private:
    std::string folder;
};

Outcome run(const Contender& contender, const Files& files) {
    std::string command;
    if (contender.library != nullptr)
        command = std::string("LD_PRELOAD=") + contender.library + " ";
    command += std::string("'" TQ_BENCH_WORKLOAD "' ") + contender.program + " " + files.drawing() + " " + files.copy();
    std::FILE* const output = ::popen(command.c_str(), "r");
    if (output == nullptr)
        throw std::runtime_error("cannot run " + command);
    Outcome outcome;
    bool isRead = true;
    for (double& time : outcome.times)
        isRead = isRead && std::fscanf(output, "%lf", &time) == 1;
    unsigned long long checksum = 0;
    isRead = isRead && std::fscanf(output, "%lf %lf %llu", &outcome.open, &outcome.closed, &checksum) == 3;
    if (::pclose(output) != 0 || !isRead)
        throw std::runtime_error(command + " failed");
    outcome.checksum = checksum;
    return outcome;
}

// What the contenders did in a round, which is begun for the first row that asks for it.
const Outcome& outcomeOf(std::size_t contender, std::size_t round) {
    static const Files files;
    static std::vector<std::array<Outcome, kContenders.size()>> rounds;
    while (rounds.size() <= round) {
        rounds.emplace_back();
        for (std::size_t i = 0; i < kContenders.size(); ++i) {
            const std::size_t next = (i + rounds.size()) % kContenders.size(); // none has the same one before it always
            if (!isMissing(kContenders[next]))
                rounds.back()[next] = run(kContenders[next], files);
        }
    }
    return rounds[round][contender];
}

// A row of the table: `amountOf` picks it from an outcome.
template <class AmountOf>
void addRow(const std::string& title, bool isTime, AmountOf amountOf) {
    for (std::size_t i = 0; i < kContenders.size(); ++i) {
        const std::string name = "workload/" + title + "/" + kContenders[i].name;
        if (isMissing(kContenders[i])) {
            bench::addMissing(name);
            continue;
        }
        auto* const row = benchmark::RegisterBenchmark(
            name.c_str(), [i, isTime, amountOf, round = std::size_t{0}](benchmark::State& state) mutable {
                for ([[maybe_unused]] auto _ : state) {
                    const Outcome& outcome = outcomeOf(i, round);
                    if (outcome.checksum != outcomeOf(1, round).checksum)
                        state.SkipWithError("the results differ from those of the others");
                    ++round;
                    if (isTime)
                        state.SetIterationTime(amountOf(outcome) / 1e9);
                    else
                        state.counters["bytes"] = amountOf(outcome);
                }
            });
        row->Iterations(1);
        if (isTime)
            row->UseManualTime();
    }
}

[[maybe_unused]] const bool g_registered = [] {
    for (std::size_t phase = 0; phase < kPhases.size(); ++phase)
        addRow(kPhases[phase], true, [phase](const Outcome& outcome) { return outcome.times[phase]; });
    addRow("total", true,
           [](const Outcome& outcome) { return std::accumulate(outcome.times.begin(), outcome.times.end(), 0.0); });
    addRow("memory while open", false, [](const Outcome& outcome) { return outcome.open; });
    addRow("memory after close", false, [](const Outcome& outcome) { return outcome.closed; });
    return true;
}();

} // namespace
