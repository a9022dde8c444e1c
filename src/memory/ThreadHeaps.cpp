#include "memory/ThreadHeaps.h"

#include "platform/VirtualMemory.h"

#include <algorithm>
#include <new>

namespace tq::detail {

constinit std::atomic<std::uintptr_t> ThreadHeaps::s_start{kNoStart};
constinit std::array<GlobalHeap, ThreadHeaps::kCount> ThreadHeaps::s_heaps;

// Two threads may come here at once; the later one's stretch is not needed.
bool ThreadHeaps::reserve() noexcept {
    if (s_start.load(std::memory_order_relaxed) != kNoStart)
        return true;
    const std::uintptr_t start = platform::reserveAnywhere(kBytes, kSegmentBytes);
    if (start == 0)
        return false;
    std::uintptr_t none = kNoStart;
    if (!s_start.compare_exchange_strong(none, start, std::memory_order_relaxed))
        platform::unreserve(start, kBytes);
    return true;
}

bool ThreadHeaps::claim() noexcept {
    if (t_heapView.claims != HeapView::Claims::kAny || !g_tqGlobalHeap.isBuilt() || g_tqGlobalHeap.isOver())
        return false;
    try {
        if (reserve() && std::any_of(s_heaps.begin(), s_heaps.end(), [](GlobalHeap& heap) { return heap.claim(); }))
            return true;
    } catch (const std::bad_alloc&) {
    }
    t_heapView = {.claims = HeapView::Claims::kFirst}; // a heap that was shown before memory ran out is not whole
    return false;
}

} // namespace tq::detail
