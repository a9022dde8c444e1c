#include "reference/CountingNew.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

int g_liveArrays = 0;
int g_failAfter = -1;

void* allocate(std::size_t size) {
    if (g_failAfter >= 0 && g_failAfter-- == 0)
        throw std::bad_alloc();
    if (void* block = std::malloc(size))
        return block;
    throw std::bad_alloc();
}

} // namespace

int counting_new::liveArrays() {
    return g_liveArrays;
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
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    if (block != nullptr)
        --g_liveArrays;
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    operator delete[](block);
}
