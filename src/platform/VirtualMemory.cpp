#include "platform/VirtualMemory.h"

#include "platform/VirtualMemoryFlags.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <sys/mman.h>
#include <unistd.h>

#if defined(__has_feature)
#define TQ_HAS_FEATURE(feature) __has_feature(feature)
#else
#define TQ_HAS_FEATURE(feature) 0
#endif

namespace tq::platform {

bool choosesOwnLayout() noexcept {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || TQ_HAS_FEATURE(address_sanitizer) ||              \
    TQ_HAS_FEATURE(thread_sanitizer) || TQ_HAS_FEATURE(memory_sanitizer)
    return true;
#else
    return false;
#endif
}

std::size_t pageBytes() noexcept {
    return static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

bool reserveAt(std::uintptr_t address, std::size_t size) noexcept {
    void* const wanted = reinterpret_cast<void*>(address);
    const int flags = MAP_PRIVATE | MAP_ANON | MAP_NORESERVE | noReplaceFlag();
    void* const mapping = ::mmap(wanted, size, PROT_NONE, flags, -1, 0);
    if (mapping == MAP_FAILED)
        return false;
    if (mapping != wanted) {
        ::munmap(mapping, size);
        return false;
    }
    return true;
}

void unreserve(std::uintptr_t address, std::size_t size) noexcept {
    ::munmap(reinterpret_cast<void*>(address), size);
}

bool makeAccessible(void* address, std::size_t size) noexcept {
    return ::mprotect(address, size, PROT_READ | PROT_WRITE) == 0;
}

void makeInaccessible(void* address, std::size_t size) noexcept {
    ::mprotect(address, size, PROT_NONE);
}

void giveBack(std::span<const PageRun> runs) noexcept {
    assert(runs.size() <= kMostPageRuns);
    if (runs.size() > 1 && giveBackAtOnce(runs))
        return;
    for (const PageRun& run : runs)
        ::madvise(run.address, run.size, giveBackAdvice());
}

std::size_t residentBytes(const void* address, std::size_t size) noexcept {
    ResidenceByte states[256];
    const std::size_t page = pageBytes();
    const std::size_t count = size / page;
    std::size_t resident = 0;
    const auto* const first = static_cast<const char*>(address);
    for (std::size_t done = 0; done < count; done += std::size(states)) {
        const std::size_t step = std::min(count - done, std::size(states));
        void* const start = const_cast<char*>(first + done * page);
        if (::mincore(start, step * page, states) != 0)
            return 0;
        resident += static_cast<std::size_t>(
            std::count_if(states, states + step, [](ResidenceByte state) { return (state & 1) != 0; }));
    }
    return resident * page;
}

std::uintptr_t reserveAnywhere(std::size_t size, std::size_t alignment) noexcept {
    const std::size_t extended = size + alignment;
    void* const mapping = ::mmap(nullptr, extended, PROT_NONE, MAP_PRIVATE | MAP_ANON | MAP_NORESERVE, -1, 0);
    if (mapping == MAP_FAILED)
        return 0;
    const auto start = reinterpret_cast<std::uintptr_t>(mapping);
    const std::uintptr_t aligned = (start + alignment - 1) & ~(alignment - 1);
    if (aligned != start)
        unreserve(start, aligned - start);
    unreserve(aligned + size, start + extended - (aligned + size));
    return aligned;
}

} // namespace tq::platform
