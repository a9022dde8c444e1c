#include "memory/TqHeap.h"

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
// the owner again: no second end would be told.
void giveUpAtThreadEnd() {
    if (!HeapOwner::isCaller())
        return;
    t_heapView.isOver = true;
    g_tqGlobalHeap.resign();
}

void abandonLostHeap() {
    g_tqGlobalHeap.abandonLostHeap();
}

constinit platform::ThreadEnds g_ownersEnd;

void watchThreads() noexcept {
    g_ownersEnd.watch(giveUpAtThreadEnd);
    platform::watchForks(nullptr, nullptr, abandonLostHeap);
}

} // namespace

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
bool TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::claim() {
    if (!m_owner.claim())
        return false;
    if (m_isBuilt)
        m_owner.show(&m_blockPools.pool(0), HeapConfigurator::pStartAddress);
    else
        build();
    if (!m_blockPools.exist()) {
        m_owner.resign(true);
        return false;
    }
    g_ownersEnd.expect(true);
    return true;
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
    m_isBuilt = true;
    DbgDumper::init();
    for (DeferredLocker& locker : m_lockers)
        locker.create();
    if (!HeapConfigurator::reserveMemory())
        return;
    watchThreads();
    m_segments.create();
    m_blockPools.create(PoolConfigurator::s_unitSizeOfPools);
    m_owner.show(&m_blockPools.pool(0), HeapConfigurator::pStartAddress);
    m_pagePools.create();
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::tearDown() noexcept {
    g_ownersEnd.unwatch();
    if (!m_owner.isCaller() && !m_owner.claim())
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
    if (!HeapOwner::isCaller()) [[unlikely]]
        return allocElsewhere(wanted);
    const std::size_t number = PoolConfigurator::poolOfSize(wanted);
    if (number == 0)
        return std::malloc(wanted);
    BlockPool& pool = m_blockPools.pool(number);
    std::byte* const block = takeAtHand(pool);
    return block != nullptr ? block : allocWithoutUnit(pool);
}

// For a thread that does not own the heap, or not yet.
template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void* TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::allocElsewhere(std::size_t size) {
    return m_owner.isTaken() || !claim() ? std::malloc(size) : allocUncommon(size);
}

// The pool has no unit at hand.
template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void* TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::allocWithoutUnit(BlockPool& pool) noexcept {
    collect();
    std::byte* const block =
        hasUnit(*pool.partial) ? takeUnit(pool, *pool.partial) : m_blockPools.reallocFromPool(pool, m_segments);
    if (platform::kMarksMemory && block != nullptr)
        platform::markHandedOut(block, pool.unitSize);
    return block;
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void* TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::reallocHeap(void* block, std::size_t size) {
    const std::uintptr_t offset = HeapConfigurator::offsetOf(block);
    if (offset >= kReservationBytes)
        return std::realloc(block, size);
    const unsigned kind = m_segments.state(offset >> kSegmentShift);
    if ((kind & kSegmentInUse) == 0)
        return nullptr;
    const std::size_t wanted = std::max<std::size_t>(size, 1);
    const std::size_t held = unitSizeOf(block, kind);
    void* const moved = allocHeap(wanted);
    if (moved == nullptr)
        return nullptr;
    std::memcpy(moved, block, std::min(wanted, held));
    freeHeap(block);
    return moved;
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::freeElsewhere(void* block) noexcept {
    const std::uintptr_t offset = HeapConfigurator::offsetOf(block);
    if (offset >= kReservationBytes)
        std::free(block);
    else
        leaveToOwner(block, m_segments.state(offset >> kSegmentShift));
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
        if ((m_segments.state(HeapConfigurator::segmentOf(block)) & kSegmentOfUnits) != 0) {
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
    const unsigned state = m_segments.state(HeapConfigurator::segmentOf(block));
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
    if (!m_owner.isCaller() && !claim())
        return std::aligned_alloc(pages == kPagesPerSegment ? kSegmentBytes : kPageBytes, size);
    PagePool& pool = *m_pagePools.pool(pages);
    if (!hasUnit(*pool.partial))
        collect();
    std::byte* const unit =
        hasUnit(*pool.partial) ? takeUnit(pool, *pool.partial) : m_pagePools.reallocFromPagePool(pool, m_segments);
    if (platform::kMarksMemory && unit != nullptr)
        platform::markHandedOut(unit, pool.unitSize);
    return unit;
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::freeHeapPage(void* unit) noexcept {
    const std::uintptr_t offset = HeapConfigurator::offsetOf(unit);
    if (offset >= kReservationBytes)
        return std::free(unit);
    const unsigned state = m_segments.state(offset >> kSegmentShift);
    if ((state & (kSegmentInUse | kSegmentOfUnits)) != kSegmentInUse)
        freeHeap(unit);
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
std::size_t TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::sizeOf(void* block) const noexcept {
    const std::uintptr_t offset = HeapConfigurator::offsetOf(block);
    if (offset >= kReservationBytes)
        return platform::usableSize(block);
    const unsigned kind = m_segments.state(offset >> kSegmentShift);
    return (kind & kSegmentInUse) != 0 ? unitSizeOf(block, kind) : 0;
}

// The unit of a block or page unit in a segment in use. Answered without the pool objects, so also after tearDown().
template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
std::size_t
TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::unitSizeOf(const void* block,
                                                                              unsigned kind) const noexcept {
    if ((kind & kSegmentOfUnits) != 0)
        return m_pagePools.record(HeapConfigurator::segmentOf(block)).poolNumber * kPageBytes;
    return static_cast<std::size_t>(PoolConfigurator::s_unitSizeOfPools[pageOf(block)->poolNumber]);
}

template class TqHeap<kBlockPoolCount, TqPoolConfigurator<kBlockPoolCount>, TqHeapConfigurator, TqHeapDbgDumper>;

constinit GlobalHeap g_tqGlobalHeap;

HeapVisit::HeapVisit() : m_isGuest(!HeapOwner::isCaller() && g_tqGlobalHeap.claim()) {}

HeapVisit::~HeapVisit() {
    if (m_isGuest)
        g_tqGlobalHeap.resign();
}

namespace {

// In the file that defines the heap, so that whoever links the heap also runs this.
struct HeapLife {
    HeapLife() { static_cast<void>(HeapVisit()); } // builds it; the first to allocate shall own it
    HeapLife(const HeapLife&) = delete;
    HeapLife& operator=(const HeapLife&) = delete;
    ~HeapLife() { g_tqGlobalHeap.tearDown(); }
};

TQ_INIT_FIRST HeapLife g_heapLife;

} // namespace

} // namespace tq::detail
