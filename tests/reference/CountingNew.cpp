#include "reference/CountingNew.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>

namespace {

// Tests with several threads are counted too.
std::atomic<int> g_liveBlocks = 0;
std::atomic<int> g_failAfter = -1;

void* allocate(std::size_t size) {
    void* block = counting_new::mustFail() ? nullptr : std::malloc(size);
    if (block == nullptr)
        throw std::bad_alloc();
    ++g_liveBlocks;
    return block;
}

void release(void* block) {
    if (block != nullptr)
        --g_liveBlocks;
    std::free(block);
}

} // namespace

int counting_new::liveBlocks() {
    return g_liveBlocks;
}

bool counting_new::mustFail() {
    return g_failAfter >= 0 && g_failAfter-- == 0;
}

void counting_new::count(int blocks) {
    g_liveBlocks += blocks;
}

void counting_new::failAfter(int count) {
    g_failAfter = count;
}

bool counting_new::runsOut(int failing, const std::function<void()>& change) {
    struct Guard {
        ~Guard() { failAfter(-1); }
    };
    const Guard guard;
    failAfter(failing);
    try {
        change();
    } catch (const std::bad_alloc&) {
        return true;
    }
    return false;
}

void counting_new::sweepAllocations(const std::function<bool(int failing)>& attempt) {
    constexpr int kMost = 1000;
    for (int failing = 0; failing < kMost; ++failing) {
        const int before = liveBlocks();
        const bool isOver = attempt(failing);
        EXPECT_EQ(liveBlocks(), before) << "left behind when allocation " << failing << " failed";
        EXPECT_TRUE(!isOver || failing > 0) << "nothing was allocated";
        if (isOver || testing::Test::HasFailure())
            return;
    }
    ADD_FAILURE() << "no end of failures";
}

// Those of arrays too: the tools have some that do not call the plain ones.
void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    release(block);
}
void operator delete[](void* block) noexcept {
    release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    release(block);
}
