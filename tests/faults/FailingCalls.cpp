#include "faults/FailingCalls.h"

#include "reference/CountingNew.h"

#include <cerrno>
#include <cstddef>
#include <gtest/gtest.h>
#include <new>
#include <sys/mman.h>
#include <sys/types.h>

namespace {

bool g_failProtection = false;
bool g_failMalloc = false;
bool g_failMapping = false;

void* counted(void* block) {
    if (block != nullptr)
        counting_new::count(1);
    return block;
}

} // namespace

void faults::failProtection(bool fails) {
    g_failProtection = fails;
}

void faults::failMalloc(bool fails) {
    g_failMalloc = fails;
}

void faults::failMapping(bool fails) {
    g_failMapping = fails;
}

bool faults::runsOut(int failing, const std::function<void()>& change) {
    counting_new::failAfter(failing);
    bool ranOut = false;
    try {
        change();
    } catch (const std::bad_alloc&) {
        ranOut = true;
    } catch (...) {
        counting_new::failAfter(-1);
        throw;
    }
    counting_new::failAfter(-1);
    return ranOut;
}

int faults::sweepAllocations(const std::function<bool(int failing)>& attempt) {
    constexpr int kMost = 1000;
    for (int failing = 0; failing < kMost; ++failing) {
        const int before = counting_new::liveBlocks();
        const bool isOver = attempt(failing);
        EXPECT_EQ(counting_new::liveBlocks(), before) << "left behind when allocation " << failing << " failed";
        if (isOver || testing::Test::HasFailure())
            return failing;
    }
    ADD_FAILURE() << "no end of failures";
    return kMost;
}

// The names are the linker's.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

void* __real_tqMalloc(std::size_t size);
void* __real_tqAllocate(std::size_t size);
void* __real_tqRealloc(void* block, std::size_t size);
void __real_tqFree(void* block);
void* __real_malloc(std::size_t size);
int __real_mprotect(void* address, std::size_t size, int rights);
void* __real_mmap(void* address, std::size_t size, int rights, int flags, int file, off_t offset);

void* __wrap_tqMalloc(std::size_t size) {
    return counting_new::mustFail() ? nullptr : counted(__real_tqMalloc(size));
}

void* __wrap_tqAllocate(std::size_t size) {
    return counting_new::mustFail() ? nullptr : counted(__real_tqAllocate(size));
}

void* __wrap_tqRealloc(void* block, std::size_t size) {
    if (counting_new::mustFail())
        return nullptr;
    void* const moved = __real_tqRealloc(block, size);
    return block == nullptr ? counted(moved) : moved;
}

void __wrap_tqFree(void* block) {
    if (block != nullptr)
        counting_new::count(-1);
    __real_tqFree(block);
}

void* __wrap_malloc(std::size_t size) {
    return g_failMalloc ? nullptr : __real_malloc(size);
}

void* __wrap_mmap(void* address, std::size_t size, int rights, int flags, int file, off_t offset) {
    return g_failMapping ? MAP_FAILED : __real_mmap(address, size, rights, flags, file, offset);
}

int __wrap_mprotect(void* address, std::size_t size, int rights) {
    if (g_failProtection) {
        errno = ENOMEM;
        return -1;
    }
    return __real_mprotect(address, size, rights);
}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
