// Threads that allocate, hand over, reallocate and free each other's blocks, come and go, trim, look at the heap and
// fork; then one that allocates for another for long. The suite runs a few rounds of it. Ends with 0 when every block
// kept its contents, all came back, the heap is in order and has not grown. Usage: heap_threads [ROUNDS [SEED]]

#include "memory/HeapCheck.h"
#include "memory/ThreadHeaps.h"

#include <TqOsBase/memory/Allocation.h>
#include <TqOsBase/memory/HeapReport.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

// A child has none of the threads of the process that forked it, so it cannot wait for their ends.
extern "C" const char* __tsan_default_options() {
    return "report_thread_leaks=0";
}

namespace {

using tq::detail::GlobalHeap;
using tq::detail::ThreadHeaps;

constexpr std::size_t kPage = 4096;

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "failed: %s\n", what);
        std::abort();
    }
}

// Stands at the start of every block; the same byte fills the rest.
struct Block {
    std::size_t size;
    unsigned char mark;

    unsigned char& last() { return reinterpret_cast<unsigned char*>(this)[size - 1]; }
    void fill(std::size_t bytes, unsigned char byte) {
        size = bytes;
        mark = byte;
        std::memset(this + 1, byte, size - sizeof *this);
    }
    void verify() {
        require(last() == mark, "contents of a block");
        require(tqMsize(this) >= size, "size of a block");
    }
};

using Places = std::array<std::atomic<Block*>, 500>;

Block* allocate(std::mt19937& random) {
    const bool isUnit = random() % 50 == 0;
    const std::size_t size = isUnit              ? kPage * (1 + random() % (random() % 8 == 0 ? 256 : 3))
                             : random() % 8 == 0 ? 500 + random() % 3596
                                                 : sizeof(Block) + 1 + random() % 240;
    void* const block = isUnit ? tqAllocPageHeap(size) : tqMalloc(size);
    require(block != nullptr && (!isUnit || reinterpret_cast<std::uintptr_t>(block) % kPage == 0), "a block");
    auto* const filled = static_cast<Block*>(block);
    filled->fill(size, static_cast<unsigned char>(random()));
    return filled;
}

void release(Block* block, std::mt19937& random) {
    if (block == nullptr)
        return;
    block->verify();
    if (random() % 4 == 0) {
        const std::size_t size = sizeof(Block) + 1 + random() % 600;
        const std::size_t kept = std::min(size, block->size);
        block = static_cast<Block*>(tqRealloc(block, size));
        require(block != nullptr && reinterpret_cast<unsigned char*>(block)[kept - 1] == block->mark, "reallocation");
        block->fill(size, static_cast<unsigned char>(random()));
        block->verify();
    }
    block->size >= kPage && block->size % kPage == 0 ? tqFreePageHeap(block) : tqFree(block);
}

void work(Places& places, unsigned seed) {
    std::mt19937 random(seed);
    for (int i = 0; i < 4000; ++i) {
        release(places[random() % places.size()].exchange(random() % 5 == 0 ? nullptr : allocate(random)), random);
        if (random() % 1000 == 0)
            tqHeapTrim();
        if (random() % 2000 == 0)
            require(tq::heapReport().reservedBytes != 0, "a report");
    }
}

// What a child may do that the owner of the first heap forked, or of another one.
void forkAndUse(Places& places, unsigned seed) {
    const ::pid_t child = ::fork();
    if (child == 0) {
        std::mt19937 random(seed);
        for (int i = 0; i < 500; ++i)
            release(allocate(random), random);
        for (auto& place : places)
            release(place.exchange(nullptr), random);
        ::_exit(0);
    }
    int status = -1;
    require(::waitpid(child, &status, 0) == child && status == 0, "the heap in a child");
}

std::size_t committedSegments(const GlobalHeap& heap) {
    std::size_t count = 0;
    for (std::size_t id = 1; id < tq::detail::kSegmentCount; ++id)
        count += (heap.segments().state(id) & tq::detail::kSegmentInUse) != 0;
    return count;
}

// Pages with a block in use, once the heap has taken in what came back.
std::size_t usedPages(GlobalHeap& heap) {
    const tq::detail::HeapVisit visit(heap);
    require(static_cast<bool>(visit), "a heap that no other thread owns");
    heap.trim();
    const std::string violation = checkHeap(heap);
    require(violation.empty(), violation.c_str());
    require(heap.segments().waiting().total() == 0, "nothing waits after a trim");
    return heap.segments().waiting().inUse() - (heap.blockPools().parked() != nullptr); // which has none
}

// While this is the only thread.
template <class Visit>
void forEachHeap(Visit visit) {
    visit(tq::detail::g_tqGlobalHeap);
    ThreadHeaps::forEach(visit);
}

void requireNothingInUse() {
    forEachHeap([](GlobalHeap& heap) { require(usedPages(heap) == 0, "every block came back"); });
}

void mixedRound(unsigned seed) {
    static Places places;
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 2 + seed % 7; ++i)
        threads.emplace_back(work, std::ref(places), seed * 8 + i);
    if (seed % 2 == 0) // every other round the first thread owns the heap, or one of the others
        work(places, seed * 8 + 7);
    if (seed % 3 == 0 && !tq::platform::kMarksMemory) // AddressSanitizer's own malloc does not bear it
        forkAndUse(places, seed);
    for (std::thread& thread : threads)
        thread.join();
    std::mt19937 random(seed);
    for (auto& place : places)
        release(place.exchange(nullptr), random);
    requireNothingInUse();
}

// One thread allocates, the other frees: what is in use stays near what is under way.
void steadyRound(std::size_t count, bool firstAllocates) {
    std::array<std::atomic<void*>, 256> ring{};
    const auto eachPlace = [&ring, count](bool isFull, auto handle) {
        for (std::size_t i = 0; i < count; ++i) {
            std::atomic<void*>& place = ring[i % ring.size()];
            while ((place.load(std::memory_order_acquire) != nullptr) != isFull)
                std::this_thread::yield();
            handle(place, i);
        }
    };
    const auto consume = [&] { eachPlace(true, [](auto& place, std::size_t) { tqFree(place.exchange(nullptr)); }); };
    const auto produce = [&] {
        eachPlace(false,
                  [](auto& place, std::size_t i) { place.store(tqMalloc(1 + i % 256), std::memory_order_release); });
    };
    std::thread other([&] { firstAllocates ? consume() : produce(); });
    firstAllocates ? produce() : consume();
    other.join();
    forEachHeap([](GlobalHeap& heap) { require(committedSegments(heap) <= 4, "bounded memory"); });
    requireNothingInUse();
}

} // namespace

int main(int argc, char** argv) {
    const unsigned rounds = argc > 1 ? static_cast<unsigned>(std::strtoul(argv[1], nullptr, 10)) : 500;
    const unsigned seed = argc > 2 ? static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)) : 1;
    for (unsigned i = 0; i < rounds; ++i)
        mixedRound(seed + i);
    std::size_t heaps = 0;
    ThreadHeaps::forEach([&heaps](const GlobalHeap&) { ++heaps; });
    require(heaps >= 1 && heaps < ThreadHeaps::kCount, "heaps are taken over, not multiplied");
    for (const bool firstAllocates : {true, false})
        steadyRound(rounds * std::size_t{5000}, firstAllocates);
    std::printf("%u rounds\n", rounds);
}
