// The pooled heap beside the C library's and other allocators. Every contender replays the same sequence of sizes and
// frees.

#include "bench/Heaps.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace bench;

constexpr std::size_t kLive = 10000;
constexpr std::size_t kBurst = 128;
// A power of two that is well above kLive, so that sizes do not repeat in step with the blocks.
constexpr std::size_t kSequence = 65536;

// Every block is written to once, as a user of it would.
template <class Heap>
char* allocate(std::size_t size) {
    auto* const block = static_cast<char*>(Heap::allocate(size));
    *block = static_cast<char>(size);
    return block;
}

void report(benchmark::State& state, std::size_t operations, std::uint64_t checksum) {
    benchmark::DoNotOptimize(checksum);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(operations));
}

template <class Heap>
void oneBlock(benchmark::State& state, std::size_t size) {
    std::uint64_t checksum = 0;
    for ([[maybe_unused]] auto _ : state) {
        char* const block = allocate<Heap>(size);
        checksum += static_cast<unsigned char>(*block);
        benchmark::DoNotOptimize(block);
        Heap::release(block);
    }
    report(state, 1, checksum);
}

template <class Heap>
void burst(benchmark::State& state, std::size_t size) {
    std::array<char*, kBurst> blocks{};
    std::uint64_t checksum = 0;
    for ([[maybe_unused]] auto _ : state) {
        for (char*& block : blocks)
            block = allocate<Heap>(size);
        for (std::size_t i = kBurst; i-- > 0;) {
            checksum += static_cast<unsigned char>(*blocks[i]);
            Heap::release(blocks[i]);
        }
    }
    report(state, kBurst, checksum);
}

// One step frees one of the live blocks and puts a new one in its place.
struct Step {
    std::uint32_t slot;
    std::uint32_t size;
};

template <class Heap>
void replace(benchmark::State& state, const std::vector<Step>& steps) {
    std::vector<char*> live(kLive);
    for (std::size_t i = 0; i < kLive; ++i)
        live[i] = allocate<Heap>(steps[i].size);
    std::size_t at = 0;
    std::uint64_t checksum = 0;
    for ([[maybe_unused]] auto _ : state) {
        const Step step = steps[at];
        at = at + 1 < steps.size() ? at + 1 : 0;
        checksum += static_cast<unsigned char>(*live[step.slot]);
        Heap::release(live[step.slot]);
        live[step.slot] = allocate<Heap>(step.size);
    }
    for (char* block : live)
        Heap::release(block);
    report(state, 1, checksum);
}

enum class Lifetimes { eRandom, eFifo };

// `ranges` are ranges of sizes, each as likely as the others.
std::vector<Step> makeSteps(Lifetimes lifetimes, const std::vector<std::pair<unsigned, unsigned>>& ranges) {
    std::mt19937 random(20240611);
    // A whole number of rounds, so that first in, first out holds across the repetition too.
    std::vector<Step> steps(lifetimes == Lifetimes::eFifo ? kSequence / kLive * kLive : kSequence);
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const auto& [first, last] = ranges[random() % ranges.size()];
        const auto slot = static_cast<std::uint32_t>(lifetimes == Lifetimes::eFifo ? i % kLive : random() % kLive);
        steps[i] = {slot, static_cast<std::uint32_t>(first + random() % (last - first + 1))};
    }
    return steps;
}

template <class Heap>
void addSteps(const std::string& name, const std::vector<Step>& steps) {
    addHeap<Heap>(name, [steps](benchmark::State& state) { replace<Heap>(state, steps); });
}

using Sizes = std::initializer_list<std::size_t>;

template <class... Heaps>
bool registerAll() {
    for (const std::size_t size : Sizes{16, 64, 256, 1024, 4096}) {
        const std::string name = "heap/one block of " + std::to_string(size);
        (addHeap<Heaps>(name, [size](benchmark::State& state) { oneBlock<Heaps>(state, size); }), ...);
    }
    for (const std::size_t size : Sizes{16, 48, 64}) {
        const std::string name = "heap/burst of 128 of " + std::to_string(size);
        (addHeap<Heaps>(name, [size](benchmark::State& state) { burst<Heaps>(state, size); }), ...);
    }
    const std::vector<Step> random = makeSteps(Lifetimes::eRandom, {{8, 256}});
    (addSteps<Heaps>("heap/random lifetimes 8-256", random), ...);
    const std::vector<Step> fifo48 = makeSteps(Lifetimes::eFifo, {{48, 48}});
    (addSteps<Heaps>("heap/FIFO 48", fifo48), ...);
    const std::vector<Step> fifoSmall = makeSteps(Lifetimes::eFifo, {{8, 256}});
    (addSteps<Heaps>("heap/FIFO 8-256", fifoSmall), ...);
    // The sizes of that range that the pools serve.
    const std::vector<Step> fifoLarge =
        makeSteps(Lifetimes::eFifo, {{512, 512}, {1000, 1024}, {2000, 2048}, {4000, 4096}});
    (addSteps<Heaps>("heap/FIFO 512-4096", fifoLarge), ...);
    return true;
}

[[maybe_unused]] const bool g_registered =
    registerAll<Ours, Malloc, Loaded<Mimalloc>, Loaded<Jemalloc>, Loaded<Tcmalloc>>();

} // namespace
