#include "memory/TqHeap.h"

#include "memory/ThreadHeaps.h"
#include "platform/StaticInit.h"
#include "platform/SystemHeap.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace tq::detail {

namespace {

// A thread that has ended owns nothing, and destructors of other thread-local data that still run then do not make it
// an owner again: no second end would be told.
void giveUpAtThreadEnd() {
    if (t_heapView.heap == nullptr)
        return;
    t_heapView.claims = HeapView::Claims::kNone;
    t_heapView.heap->resign();
}

void abandonLostHeaps() {
    g_tqGlobalHeap.abandonLostHeap();
    ThreadHeaps::forEach([](GlobalHeap& heap) { heap.abandonLostHeap(); });
}

constinit platform::ThreadEnds g_ownersEnd;

// A unit of the C library.
void* allocAlignedUnit(std::size_t pages) noexcept {
    return std::aligned_alloc(pages == kPagesPerSegment ? kSegmentBytes : kPageBytes, pages * kPageBytes);
}

void watchThreads() noexcept {
    g_ownersEnd.watch(giveUpAtThreadEnd);
    platform::watchForks(nullptr, nullptr, abandonLostHeaps);
}

// Where an address lies, in whichever heap.
ThreadHeaps::Place placeOf(const void* address) noexcept {
    const std::uintptr_t offset = TqHeapConfigurator::offsetOf(address);
    return offset < kReservationBytes ? ThreadHeaps::Place{&g_tqGlobalHeap, offset >> kSegmentShift}
                                      : ThreadHeaps::placeOf(address);
}

} // namespace

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
bool TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::claim() {
    if (!m_owner.claim())
        return false;
    if (isBuilt())
        m_owner.show(*this, m_segments.reservation().start);
    else
        build();
    if (!isBuilt()) {
        m_owner.resign(true);
        return false;
    }
    g_ownersEnd.expect(true);
    return true;
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
bool TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::isFirst() const noexcept {
    return this == &g_tqGlobalHeap;
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::resign() noexcept {
    g_ownersEnd.expect(false);
    m_owner.resign();
}

// The owner sees the block pools as soon as they exist: creating the page pools may call back into the heap where the
// program's operator new is built on it. What it asks for before that the C library serves.
template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::build() {
    DbgDumper::init();
    for (DeferredLocker& locker : m_lockers)
        locker.create();
    if (isFirst()) {
        if (!HeapConfigurator::reserveMemory())
            return;
        watchThreads();
    }
    m_segments.create(isFirst() ? HeapConfigurator::reservation() : ThreadHeaps::reservationOf(*this));
    m_blockPools.create(PoolConfigurator::s_unitSizeOfPools);
    m_owner.show(*this, m_segments.reservation().start);
    m_pagePools.create();
    m_isBuilt.store(true, std::memory_order_release);
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::tearDown() noexcept {
    g_ownersEnd.unwatch();
    if (!isCaller() && !m_owner.claim())
        return;
    m_owner.resign(true);
    m_blockPools.destroy();
    m_pagePools.destroy();
    for (DeferredLocker& locker : m_lockers)
        locker.destroy();
    DbgDumper::uninit();
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void* TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::allocUncommon(std::size_t size) {
    const std::size_t wanted = std::max<std::size_t>(size, 1);
    TqHeap* const own = t_heapView.heap;
    if (own == nullptr) [[unlikely]]
        return allocElsewhere(wanted);
    const std::size_t number = PoolConfigurator::poolOfSize(wanted);
    if (number == 0)
        return std::malloc(wanted);
    BlockPool& pool = own->m_blockPools.pool(number);
    std::byte* const block = takeAtHand(pool);
    return block != nullptr ? block : own->allocWithoutUnit(pool);
}

// For a thread that does not own a heap, or not yet.
template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void* TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::allocElsewhere(std::size_t size) {
    if (g_tqGlobalHeap.claim() || (PoolConfigurator::poolOfSize(size) != 0 && ThreadHeaps::claim()))
        return allocUncommon(size);
    return std::malloc(size);
}

// The pool has no unit at hand. That is when a thread also leaves its heap for the first one, if nobody owns that any
// more.
template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void* TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::allocWithoutUnit(BlockPool& pool) noexcept {
    const TqHeap& first = g_tqGlobalHeap;
    if (!isFirst() && !first.m_owner.isTaken()) [[unlikely]] {
        resign();
        return allocUncommon(pool.unitSize);
    }
    collect();
    std::byte* const block =
        hasUnit(*pool.partial) ? takeUnit(pool, *pool.partial) : m_blockPools.reallocFromPool(pool, m_segments);
    if (platform::kMarksMemory && block != nullptr)
        platform::markHandedOut(block, pool.unitSize);
    return block != nullptr || isFirst() ? block : std::malloc(pool.unitSize); // its range is all that its owner gets
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void* TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::reallocHeap(void* block, std::size_t size) {
    const auto [heap, segment] = placeOf(block);
    if (heap == nullptr)
        return std::realloc(block, size);
    const unsigned kind = heap->m_segments.state(segment);
    if ((kind & kSegmentInUse) == 0)
        return nullptr;
    const std::size_t wanted = std::max<std::size_t>(size, 1);
    const std::size_t held = heap->unitSizeOf(block, kind);
    void* const moved = allocHeap(wanted);
    if (moved == nullptr)
        return nullptr;
    std::memcpy(moved, block, std::min(wanted, held));
    freeHeap(block);
    return moved;
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::freeElsewhere(void* block) noexcept {
    const auto [heap, segment] = placeOf(block);
    if (heap == nullptr)
        std::free(block);
    else
        heap->leaveToOwner(block, heap->m_segments.state(segment));
}

// A block of the heap, or a stray, that a thread frees that does not own it; ignored where nobody does any more.
template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::leaveToOwner(void* block,
                                                                                     unsigned state) noexcept {
    assert((state & kSegmentInUse) != 0 && "freed an address whose segment is not in use");
    if ((state & kSegmentInUse) == 0 || m_owner.isOver())
        return;
    platform::markGivenBack(block, unitSizeOf(block, state));
    m_owner.giveBack(static_cast<std::byte*>(block));
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::collectNews() noexcept {
    for (std::byte* block = m_owner.takeReturned(); block != nullptr;) {
        std::byte* const next = readLink(block);
        if ((m_segments.state(m_segments.reservation().segmentOf(block)) & kSegmentOfUnits) != 0) {
            m_pagePools.freeFromPagePool(block, m_segments);
        } else {
            Page& page = *pageOf(block);
            m_blockPools.freeFromPool(block, page, m_blockPools.pool(page.poolNumber), m_segments);
        }
        block = next;
    }
    if (m_owner.takeTrimWish())
        m_segments.trim();
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::trim() noexcept {
    collect();
    m_segments.trim();
}

// A page unit, a block of a last-resort segment, or a stray.
template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::freeUncommon(void* block) noexcept {
    const unsigned state = m_segments.state(m_segments.reservation().segmentOf(block));
    assert((state & kSegmentInUse) != 0 && "freed an address whose segment is not in use");
    if ((state & kSegmentInUse) == 0)
        return;
    if ((state & kSegmentOfUnits) == 0)
        return freeBlock(block);
    platform::markGivenBack(block, unitSizeOf(block, state));
    m_pagePools.freeFromPagePool(static_cast<std::byte*>(block), m_segments);
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void* TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::allocHeapPage(std::size_t pages,
                                                                                       std::size_t size) {
    countOperation();
    if (pages == 0 || pages > kPagePoolCount)
        return std::malloc(size);
    if (t_heapView.heap == nullptr && !g_tqGlobalHeap.claim() && !ThreadHeaps::claim())
        return allocAlignedUnit(pages);
    TqHeap* const own = t_heapView.heap;
    return own->takeHeapPage(pages);
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void* TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::takeHeapPage(std::size_t pages) noexcept {
    PagePool& pool = *m_pagePools.pool(pages);
    if (!hasUnit(*pool.partial))
        collect();
    std::byte* const unit =
        hasUnit(*pool.partial) ? takeUnit(pool, *pool.partial) : m_pagePools.reallocFromPagePool(pool, m_segments);
    if (platform::kMarksMemory && unit != nullptr)
        platform::markHandedOut(unit, pool.unitSize);
    return unit != nullptr || isFirst() ? unit : allocAlignedUnit(pages);
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::freeHeapPage(void* unit) noexcept {
    const auto [heap, segment] = placeOf(unit);
    if (heap == nullptr)
        return std::free(unit);
    const unsigned state = heap->m_segments.state(segment);
    if ((state & (kSegmentInUse | kSegmentOfUnits)) != kSegmentInUse)
        freeHeap(unit);
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
std::size_t TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::sizeOf(void* block) noexcept {
    const auto [heap, segment] = placeOf(block);
    if (heap == nullptr)
        return platform::usableSize(block);
    const unsigned kind = heap->m_segments.state(segment);
    return (kind & kSegmentInUse) != 0 ? heap->unitSizeOf(block, kind) : 0;
}

// The unit of a block or page unit in a segment in use. Answered without the pool objects, so also after tearDown().
template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
std::size_t
TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::unitSizeOf(const void* block,
                                                                              unsigned kind) const noexcept {
    if ((kind & kSegmentOfUnits) != 0)
        return m_pagePools.record(m_segments.reservation().segmentOf(block)).poolNumber * kPageBytes;
    return static_cast<std::size_t>(PoolConfigurator::s_unitSizeOfPools[pageOf(block)->poolNumber]);
}

template class TqHeap<kBlockPoolCount, TqPoolConfigurator<kBlockPoolCount>, TqHeapConfigurator, TqHeapDbgDumper>;

constinit GlobalHeap g_tqGlobalHeap;

HeapVisit::HeapVisit(GlobalHeap& heap)
    : m_heap(heap), m_before(t_heapView), m_isGuest(!heap.isCaller() && heap.claim()) {}

HeapVisit::~HeapVisit() {
    if (!m_isGuest)
        return;
    m_heap.resign();
    t_heapView = m_before;
    g_ownersEnd.expect(m_before.heap != nullptr);
}

namespace {

// In the file that defines the heap, so that whoever links the heap also runs this.
struct HeapLife {
    HeapLife() { const HeapVisit visit(g_tqGlobalHeap); } // builds it; the first to allocate shall own it
    HeapLife(const HeapLife&) = delete;
    HeapLife& operator=(const HeapLife&) = delete;
    ~HeapLife() { g_tqGlobalHeap.tearDown(); }
};

TQ_INIT_FIRST HeapLife g_heapLife;

} // namespace

} // namespace tq::detail
