#pragma once

#include "memory/HeapLayout.h"
#include "memory/SegmentTable.h"
#include "memory/SizeClasses.h"
#include "memory/UnitPool.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tq::detail {

/// The block pools, and the segments that their pages come from.
class BlockPools {
public:
    constexpr BlockPools() noexcept = default;

    /// Creates the pools with the units given, indexed by pool number. Throws std::bad_alloc.
    void create(std::span<const std::int16_t, kBlockPoolCount + 1> units);
    /// Removes every pool. The pages they own hold live blocks, so those stay as they are, and so does every segment.
    void destroy() noexcept;

    /// The pool with this number. Number 0 has no block to take, and no pool has after destroy().
    BlockPool& pool(std::size_t number) noexcept { return m_pools[number]; }
    const BlockPool& pool(std::size_t number) const noexcept { return m_pools[number]; }
    bool exist() const noexcept { return m_exist; }

    /// Takes a block from the pool, with a fresh page where it has none. Null when there is no memory.
    std::byte* reallocFromPool(BlockPool& pool, SegmentTable& segments) noexcept;

    /// Gives a block back to its page and, when the page is wholly free, the page to its segment.
    void freeFromPool(std::byte* block, Page& page, BlockPool& pool, SegmentTable& segments) noexcept {
        if (giveUnit(pool, page, block)) [[likely]]
            return;
        // Parked already, and nothing has happened to the segments since: it may stay if it is the last in the list.
        const bool wasFull = !hasUnit(page); // its one block was in use
        if (m_parked == &page && (wasFull ? pool.partial : page.next) == &pool.end) {
            page.flags = 0;
            page.nextUnit = pageStart(block);
            if (wasFull)
                pushRun(pool, page);
            return;
        }
        freePage(page, pool, segments);
    }

    Segment* segmentsWithCommitted() const noexcept { return m_withCommitted; }
    Segment* segmentsWithUncommitted() const noexcept { return m_withUncommitted; }
    /// The page that is parked now, if any.
    const Page* parked() const noexcept;
    bool wouldServeNext(const Segment& segment) const noexcept;

private:
    static Segment* allocPage(SegmentTable& segments) noexcept;
    static bool reallocBlockFromPage(Segment& segment, SegmentTable& segments) noexcept;
    Segment* segmentToServe(SegmentTable& segments) noexcept;
    void freePage(Page& page, BlockPool& pool, SegmentTable& segments) noexcept;
    void returnParked(SegmentTable& segments) noexcept;
    void freeBlock(Page& page, SegmentTable& segments) noexcept;

    alignas(kPoolAlignment) std::array<BlockPool, kBlockPoolCount + 1> m_pools;
    Segment* m_withCommitted = nullptr;   ///< List A: segments with accessible free pages.
    Segment* m_withUncommitted = nullptr; ///< List B: segments all of whose free pages are uncommitted.
    Page* m_parked = nullptr;             ///< The page that was last parked; blocks of it may have been taken since.
    bool m_exist = false;
};

} // namespace tq::detail
