#include "reference/CountingNew.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

// Tests with several threads are counted too.
std::atomic<int> g_liveArrays = 0;
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

int counting_new::liveArrays() {
    return g_liveArrays;
}

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

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    void* block = allocate(size);
    ++g_liveArrays;
    return block;
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    release(block);
}
void operator delete[](void* block) noexcept {
    if (block != nullptr)
        --g_liveArrays;
    release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    operator delete[](block);
}
