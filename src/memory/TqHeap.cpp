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

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::build() {
    if (m_isBuilt)
        return;
    // Set first: creating the pools may call back into the heap where the program's operator new is built on it. Such a
    // call is served by the pools that exist by then, or by the C library.
    m_isBuilt = true;
    DbgDumper::init();
    for (DeferredLocker& locker : m_lockers)
        locker.create();
    if (!HeapConfigurator::reserveMemory())
        return;
    m_segments.create();
    m_blockPools.create(PoolConfigurator::s_unitSizeOfPools);
    m_pagePools.create();
    m_servedState = kBlockSegment;
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::tearDown() noexcept {
    m_servedState = kNoState;
    m_blockPools.destroy();
    m_pagePools.destroy();
    for (DeferredLocker& locker : m_lockers)
        locker.destroy();
    DbgDumper::uninit();
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void* TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::allocUncommon(std::size_t size) {
    const std::size_t wanted = std::max<std::size_t>(size, 1);
    const std::size_t number = PoolConfigurator::poolOfSize(wanted);
    if (number != 0 && m_blockPools.exist()) [[likely]] {
        BlockPool& pool = m_blockPools.pool(number);
        std::byte* const block =
            hasUnit(*pool.partial) ? takeUnit(pool, *pool.partial) : m_blockPools.reallocFromPool(pool, m_segments);
        if (platform::kMarksMemory && block != nullptr)
            platform::markHandedOut(block, pool.unitSize);
        return block;
    }
    if (m_isBuilt)
        return std::malloc(wanted);
    build();
    return allocHeap(size);
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
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::freeForeign(void* block) noexcept {
    std::free(block);
}

// A page unit, a block of a last-resort segment, a stray, or anything while frees are suspended or there are no pools.
template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::freeUncommon(void* block) noexcept {
    const unsigned state = m_segments.state(HeapConfigurator::segmentOf(block));
    assert((state & kSegmentInUse) != 0 && "freed an address whose segment is not in use");
    if ((state & kSegmentInUse) == 0 || m_servedState == kNoState)
        return;
    if ((state & kSegmentOfUnits) != 0)
        m_pagePools.freeFromPagePool(static_cast<std::byte*>(block), m_segments);
    else
        freeBlock(block);
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void* TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::allocHeapPage(std::size_t pages,
                                                                                       std::size_t size) {
    build();
    PagePool* const pool = pages <= kPagePoolCount ? m_pagePools.pool(pages) : nullptr;
    if (pool == nullptr)
        return std::malloc(size);
    std::byte* const unit =
        hasUnit(*pool->partial) ? takeUnit(*pool, *pool->partial) : m_pagePools.reallocFromPagePool(*pool, m_segments);
    if (platform::kMarksMemory && unit != nullptr)
        platform::markHandedOut(unit, pool->unitSize);
    return unit;
}

template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
void TqHeap<kPoolCount, PoolConfigurator, HeapConfigurator, DbgDumper>::freeHeapPage(void* unit) noexcept {
    const std::uintptr_t offset = HeapConfigurator::offsetOf(unit);
    if (offset >= kReservationBytes)
        return freeForeign(unit);
    const unsigned state = m_segments.state(offset >> kSegmentShift);
    if ((state & (kSegmentInUse | kSegmentOfUnits)) != kSegmentInUse)
        freeUncommon(unit);
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

namespace {

// In the file that defines the heap, so that whoever links the heap also runs this.
struct HeapLife {
    HeapLife() { g_tqGlobalHeap.build(); }
    HeapLife(const HeapLife&) = delete;
    HeapLife& operator=(const HeapLife&) = delete;
    ~HeapLife() { g_tqGlobalHeap.tearDown(); }
};

TQ_INIT_FIRST HeapLife g_heapLife;

} // namespace

} // namespace tq::detail
