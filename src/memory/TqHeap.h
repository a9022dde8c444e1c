#pragma once

#include "memory/BlockPools.h"
#include "memory/HeapConfigurator.h"
#include "memory/PagePools.h"
#include "memory/SegmentTable.h"
#include "memory/SizeClasses.h"

#include <TqOsBase/diag/TqLock.h>

#include <cstddef>
#include <cstdint>

namespace tq::detail {

/// Hooks for a debugging aid; all of them do nothing.
struct TqHeapDbgDumper {
    static void init() {}
    static void uninit() {}
    static void dump(const void*) {}
};

/// The pooled heap over one reserved stretch of address space; what no pool serves goes to the C library, and so does
/// every pointer from outside the reservation. For one thread at a time.
///
/// Life. The object is constant-initialised and its destructor is trivial, so it can be called at any time in the life
/// of the program. build() reserves the address space and creates the pools: a static initialiser calls it at load, and
/// the slow path does when something allocates before that. tearDown(), called at exit, removes the pools. From then on
/// allocations are served by the C library, blocks of the pools can still be read, written and reallocated, and freeing
/// them does nothing; so static objects that outlive the heap do no harm. The reservation is never unmapped.
///
/// Strays. An address of the reservation whose segment is not in use was never the C library's: it is a double free or
/// a damaged pointer. Freeing one is asserted against and does nothing, reallocating one gives null.
template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
class TqHeap {
public:
    constexpr TqHeap() noexcept = default;
    TqHeap(const TqHeap&) = delete;
    TqHeap& operator=(const TqHeap&) = delete;

    /// Reserves the address space and creates the pools; does nothing when that was done before. Without a reservation
    /// there are no pools. Throws std::bad_alloc.
    void build();
    void tearDown() noexcept;

    /// A block of at least `size` bytes (0 counts as 1), or null.
    void* allocHeap(std::size_t size) {
        void* const block = allocAtHand(size);
        return block != nullptr ? block : allocUncommon(size);
    }

    /// The block that allocHeap() would return, if it is small and its pool has a page with a free one; else null.
    void* allocAtHand(std::size_t size) noexcept {
        if (size - 1 >= PoolConfigurator::kLargestSmallSize) [[unlikely]]
            return nullptr;
        BlockPool& pool = m_blockPools.pool(PoolConfigurator::s_poolIndexOfSize[size]);
        Page& page = *pool.partial;
        if (!hasUnit(page)) [[unlikely]]
            return nullptr;
        std::byte* const block = takeUnit(pool, page);
        if (platform::kMarksMemory)
            platform::markHandedOut(block, pool.unitSize);
        return block;
    }

    /// What allocHeap() does for all other blocks.
    void* allocUncommon(std::size_t size);

    /// Moves a block of the heap to a new one of `size` bytes (0 counts as 1), always, even when the old one has room;
    /// null, with the old block untouched, when there is no memory. Foreign blocks go to the C library's realloc.
    void* reallocHeap(void* block, std::size_t size);

    void freeHeap(void* block) noexcept {
        const std::size_t segment = HeapConfigurator::segmentOf(block);
        if (segment >= kSegmentCount)
            return freeForeign(block);
        if (m_segments.state(segment) != m_servedState) [[unlikely]]
            return freeUncommon(block);
        freeBlock(block);
    }

    /// A unit of `pages` whole pages, 1 to kPagePoolCount; null when there is no memory. Any other number, like every
    /// number while there are no pools, is served by malloc with `size` bytes.
    void* allocHeapPage(std::size_t pages, std::size_t size);

    /// Frees a unit of a page pool, or a foreign block. Does nothing for a block of a block pool.
    void freeHeapPage(void* unit) noexcept;

    /// The bytes that the block or unit at `block` has room for; 0 for a stray.
    std::size_t sizeOf(void* block) const noexcept;

    const BlockPools& blockPools() const noexcept { return m_blockPools; }
    const PagePools& pagePools() const noexcept { return m_pagePools; }
    const SegmentTable& segments() const noexcept { return m_segments; }

private:
    static_assert(kPoolCount == kBlockPoolCount);
    static constexpr std::uint8_t kNoState = 0xFF;

    void freeBlock(void* block) noexcept {
        Page& page = *pageOf(block);
        BlockPool& pool = m_blockPools.pool(page.poolNumber);
        platform::markGivenBack(block, pool.unitSize);
        m_blockPools.freeFromPool(static_cast<std::byte*>(block), page, pool, m_segments);
    }
    static void freeForeign(void* block) noexcept;
    void freeUncommon(void* block) noexcept;
    std::size_t unitSizeOf(const void* block, unsigned kind) const noexcept;

    DeferredLocker m_lockers[3]; ///< Held for callers' sake; no operation locks.
    BlockPools m_blockPools;
    PagePools m_pagePools;
    SegmentTable m_segments;
    /// Frees of the heap's own blocks are ignored while they are suspended, as they are from tearDown() on. It shows in
    /// the state that freeHeap looks for in a segment: kBlockSegment, or kNoState, which none has.
    std::uint8_t m_servedState = 0;
    bool m_isBuilt = false; ///< Stays set after tearDown(), so that the heap is never built again.
};

using GlobalHeap = TqHeap<kBlockPoolCount, TqPoolConfigurator<kBlockPoolCount>, TqHeapConfigurator, TqHeapDbgDumper>;

extern template class TqHeap<kBlockPoolCount, TqPoolConfigurator<kBlockPoolCount>, TqHeapConfigurator, TqHeapDbgDumper>;

/// The one heap, behind all allocation entry points.
[[gnu::visibility("hidden")]] extern constinit GlobalHeap g_tqGlobalHeap;

} // namespace tq::detail
