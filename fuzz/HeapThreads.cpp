// Threads that allocate, hand over, reallocate and free each other's blocks, come and go, trim, look at the heap and
// fork; then one that allocates for another for long. The suite runs a few rounds of it. Ends with 0 when every block
// kept its contents, all came back, the heap is in order and has not grown. Usage: heap_threads [ROUNDS [SEED]]

#include "memory/HeapCheck.h"

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

namespace {

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

// What a child may do that another thread than the heap's owner forked, or the owner did.
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

std::size_t usedBlocks() {
    tqHeapTrim(); // takes in what came back, too
    require(tq::detail::checkHeap(tq::detail::g_tqGlobalHeap).empty(), "the heap's order");
    const tq::HeapReport report = tq::heapReport();
    require(report.waitingBytes == 0, "nothing waits after a trim");
    std::size_t count = 0;
    for (const tq::HeapReport::Pool& pool : report.pools)
        count += pool.usedBlocks;
    return count;
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
    require(usedBlocks() == 0, "every block came back");
}

// One thread allocates, the other frees: what is in use stays near what is under way.
void steadyRound(std::size_t count) {
    std::array<std::atomic<void*>, 256> ring{};
    const auto eachPlace = [&ring, count](bool isFull, auto handle) {
        for (std::size_t i = 0; i < count; ++i) {
            std::atomic<void*>& place = ring[i % ring.size()];
            while ((place.load(std::memory_order_acquire) != nullptr) != isFull)
                std::this_thread::yield();
            handle(place, i);
        }
    };
    std::thread consumer([&] { eachPlace(true, [](auto& place, std::size_t) { tqFree(place.exchange(nullptr)); }); });
    eachPlace(false, [](auto& place, std::size_t i) { place.store(tqMalloc(1 + i % 256), std::memory_order_release); });
    consumer.join();
    require(tq::heapReport().committedBytes < std::size_t{4} << 20, "bounded memory");
    require(usedBlocks() == 0, "every block came back");
}

} // namespace

int main(int argc, char** argv) {
    const unsigned rounds = argc > 1 ? static_cast<unsigned>(std::strtoul(argv[1], nullptr, 10)) : 500;
    const unsigned seed = argc > 2 ? static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)) : 1;
    for (unsigned i = 0; i < rounds; ++i)
        mixedRound(seed + i);
    steadyRound(rounds * std::size_t{5000});
    std::printf("%u rounds\n", rounds);
}
