#include "memory/HeapOwner.h"

#include "memory/HeapLayout.h"

#include <cassert>

namespace tq::detail {

constinit thread_local HeapView t_heapView;

namespace {

// Where a thread keeps its view tells it from every other one that lives.
std::uintptr_t markOfCaller() noexcept {
    return reinterpret_cast<std::uintptr_t>(&t_heapView);
}

} // namespace

bool HeapOwner::claim() noexcept {
    std::uintptr_t none = 0;
    if (isTaken() || t_heapView.claims == HeapView::Claims::kNone ||
        !m_owner.compare_exchange_strong(none, markOfCaller(), std::memory_order_acquire, std::memory_order_relaxed))
        return false;
    t_heapView.claims = HeapView::Claims::kNone;
    return true;
}

void HeapOwner::show(GlobalHeap& heap, std::uintptr_t start) noexcept {
    t_heapView = {kPoolOfSize.size(), &heap, start, HeapView::Claims::kAny};
}

void HeapOwner::resign(bool isLast) noexcept {
    assert(m_owner.load(std::memory_order_relaxed) == markOfCaller());
    t_heapView = {.claims = t_heapView.claims};
    m_owner.store(isLast ? kNobody : 0, std::memory_order_release);
}

void HeapOwner::abandonLostHeap() noexcept {
    const std::uintptr_t owner = m_owner.load(std::memory_order_relaxed);
    if (owner != 0 && owner != markOfCaller())
        m_owner.store(kNobody, std::memory_order_relaxed);
}

// The owner takes the whole list at once, so that a block cannot come back to its head between the two steps here.
void HeapOwner::giveBack(std::byte* block) noexcept {
    std::byte* next = m_returned.load(std::memory_order_relaxed);
    do
        writeLink(block, next);
    while (!m_returned.compare_exchange_weak(next, block, std::memory_order_release, std::memory_order_relaxed));
}

} // namespace tq::detail
