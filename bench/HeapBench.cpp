// The pooled heap beside the C library's and other allocators. Every contender replays the same sequence of sizes and
// frees.

#include "bench/Heaps.h"

#include <array>
#include <atomic>
#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <string>
#include <thread>
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

// All blocks are allocated, then freed in the same order.
template <class Heap>
void fillAndDrain(benchmark::State& state, const std::vector<std::uint32_t>& sizes) {
    std::vector<char*> blocks(sizes.size());
    std::uint64_t checksum = 0;
    for ([[maybe_unused]] auto _ : state) {
        for (std::size_t i = 0; i < blocks.size(); ++i)
            blocks[i] = allocate<Heap>(sizes[i]);
        for (char* const block : blocks) {
            checksum += static_cast<unsigned char>(*block);
            Heap::release(block);
        }
    }
    report(state, blocks.size(), checksum);
}

// A unit of 1 MiB, of which every `stride`th byte is written.
template <class Heap>
void oneUnit(benchmark::State& state, std::size_t stride) {
    for ([[maybe_unused]] auto _ : state) {
        auto* const unit = static_cast<char*>(Heap::allocateMegabyte());
        for (std::size_t i = 0; i < kMegabyte; i += stride)
            unit[i] = 1;
        benchmark::DoNotOptimize(unit);
        Heap::release(unit);
    }
    report(state, 1, 0);
}

// One step frees one of the live blocks and puts a new one in its place.
struct Step {
    std::uint32_t slot;
    std::uint32_t size;
};

template <class Heap>
void replace(benchmark::State& state, const std::vector<Step>& steps, std::size_t count) {
    std::vector<char*> live(count);
    for (std::size_t i = 0; i < count; ++i)
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

// Threads at work: this one, as in a program whose first thread does most of it, and others.
constexpr std::size_t kRounds = 50000;
constexpr std::size_t kBatch = 256;

// Each replaces blocks of its own.
template <class Heap>
void eachItsOwn(benchmark::State& state, const std::vector<Step>& steps, unsigned threads) {
    const auto work = [&steps] {
        std::array<char*, kBatch> live{};
        for (std::size_t i = 0; i < kRounds; ++i) {
            char*& block = live[steps[i].slot % kBatch];
            if (block != nullptr)
                Heap::release(block);
            block = allocate<Heap>(steps[i].size);
        }
        for (char* const block : live)
            if (block != nullptr)
                Heap::release(block);
    };
    for ([[maybe_unused]] auto _ : state) {
        std::vector<std::thread> others;
        for (unsigned i = 1; i < threads; ++i)
            others.emplace_back(work);
        work();
        for (std::thread& other : others)
            other.join();
    }
    report(state, kRounds, 0);
}

// One thread allocates, another frees; batches of blocks go from hand to hand through a few places.
template <class Heap>
void handOver(benchmark::State& state, const std::vector<Step>& steps, bool isProducer) {
    struct Batch {
        std::atomic<bool> isFull{false};
        std::array<char*, kBatch> blocks{};
    };
    std::array<Batch, 8> places;
    const auto eachBatch = [&places](bool waitsForFull, auto handle) {
        for (std::size_t i = 0; i < kRounds / kBatch; ++i) {
            Batch& batch = places[i % places.size()];
            while (batch.isFull.load(std::memory_order_acquire) != waitsForFull)
                std::this_thread::yield();
            handle(batch.blocks, i * kBatch);
            batch.isFull.store(!waitsForFull, std::memory_order_release);
        }
    };
    const auto produce = [&] {
        eachBatch(false, [&steps](auto& blocks, std::size_t at) {
            for (char*& block : blocks)
                block = allocate<Heap>(steps[at++].size);
        });
    };
    const auto consume = [&] {
        eachBatch(true, [](auto& blocks, std::size_t) {
            for (char* const block : blocks)
                Heap::release(block);
        });
    };
    for ([[maybe_unused]] auto _ : state) {
        std::thread other([&] { isProducer ? consume() : produce(); });
        isProducer ? produce() : consume();
        other.join();
    }
    report(state, kRounds, 0);
}

enum class Lifetimes { kRandom, kFifo };

// `ranges` are ranges of sizes, each as likely as the others.
std::vector<Step> makeSteps(Lifetimes lifetimes, const std::vector<std::pair<unsigned, unsigned>>& ranges) {
    std::mt19937 random(20240611);
    // A whole number of rounds, so that first in, first out holds across the repetition too.
    std::vector<Step> steps(lifetimes == Lifetimes::kFifo ? kSequence / kLive * kLive : kSequence);
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const auto& [first, last] = ranges[random() % ranges.size()];
        const auto slot = static_cast<std::uint32_t>(lifetimes == Lifetimes::kFifo ? i % kLive : random() % kLive);
        steps[i] = {slot, static_cast<std::uint32_t>(first + random() % (last - first + 1))};
    }
    return steps;
}

template <class Heap>
void addSteps(const std::string& name, const std::vector<Step>& steps) {
    addHeap<Heap>(name, [steps](benchmark::State& state) { replace<Heap>(state, steps, kLive); });
}

// What counts is the time that passes, not what the first thread was busy for.
template <class Heap>
void addThreads(const std::string& name, const std::vector<Step>& steps) {
    for (const unsigned threads : {2U, 4U})
        addHeap<Heap>(name + std::to_string(threads) + " threads, each its own blocks", [steps, threads](
                                                                                            benchmark::State& state) {
            eachItsOwn<Heap>(state, steps, threads);
        })->UseRealTime();
    for (const bool isProducer : {true, false})
        addHeap<Heap>(
            name + (isProducer ? "first thread allocates, another frees" : "another thread allocates, first frees"),
            [steps, isProducer](benchmark::State& state) { handOver<Heap>(state, steps, isProducer); })
            ->UseRealTime();
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
    const std::vector<Step> random = makeSteps(Lifetimes::kRandom, {{8, 256}});
    (addSteps<Heaps>("heap/random lifetimes 8-256", random), ...);
    const std::vector<Step> fifo48 = makeSteps(Lifetimes::kFifo, {{48, 48}});
    (addSteps<Heaps>("heap/FIFO 48", fifo48), ...);
    const std::vector<Step> fifoSmall = makeSteps(Lifetimes::kFifo, {{8, 256}});
    (addSteps<Heaps>("heap/FIFO 8-256", fifoSmall), ...);
    // The sizes of that range that the pools serve.
    const std::vector<Step> fifoLarge =
        makeSteps(Lifetimes::kFifo, {{512, 512}, {1000, 1024}, {2000, 2048}, {4000, 4096}});
    (addSteps<Heaps>("heap/FIFO 512-4096", fifoLarge), ...);
    (addHeap<Heaps>("heap/random lifetimes 512-4096, 1000 alive",
                    [fifoLarge, random](benchmark::State& state) {
                        std::vector<Step> steps = fifoLarge;
                        for (std::size_t i = 0; i < steps.size(); ++i)
                            steps[i].slot = random[i].slot % 1000;
                        replace<Heaps>(state, steps, 1000);
                    }),
     ...);
    for (const std::size_t count : Sizes{10000, 100000}) {
        std::vector<std::uint32_t> sizes(count);
        for (std::size_t i = 0; i < count; ++i)
            sizes[i] = random[i % random.size()].size;
        const std::string name = "heap/fill with " + std::to_string(count) + " of 8-256 and drain";
        (addHeap<Heaps>(name, [sizes](benchmark::State& state) { fillAndDrain<Heaps>(state, sizes); }), ...);
    }
    for (const std::size_t stride : Sizes{kMegabyte, 4096, 1}) {
        const std::string name = stride == kMegabyte ? "once" : stride == 1 ? "in every byte" : "in every page";
        (addHeap<Heaps>("heap/unit of 1 MiB written " + name,
                        [stride](benchmark::State& state) { oneUnit<Heaps>(state, stride); }),
         ...);
    }
    (addThreads<Heaps>("threads/", random), ...);
    return true;
}

[[maybe_unused]] const bool g_registered =
    registerAll<Ours, Malloc, Loaded<Mimalloc>, Loaded<Jemalloc>, Loaded<Tcmalloc>>();

} // namespace
