#pragma once

#include "memory/HeapLayout.h"
#include "memory/SegmentTable.h"
#include "memory/SizeClasses.h"
#include "memory/UnitPool.h"

#include <array>
#include <cstddef>

namespace tq::detail {

/// The page pools: pool k serves units of k whole pages. A segment of theirs is accessible as a whole while it is in
/// use, and it has no header: its record lies in the table here.
class PagePools {
public:
    constexpr PagePools() noexcept = default;

    /// Creates the pools. Throws std::bad_alloc.
    void create();
    /// Removes every pool. Their segments hold live units, so those stay as they are.
    void destroy() noexcept;

    /// The pool with this number; null for 0, and for each while the pools do not exist.
    PagePool* pool(std::size_t number) const noexcept {
        return m_pools != nullptr && number != 0 ? &(*m_pools)[number] : nullptr;
    }

    /// Takes a unit from the pool, with a fresh segment where it has none. Null when there is no memory.
    std::byte* reallocFromPagePool(PagePool& pool, SegmentTable& segments) noexcept;

    /// Gives a unit back to its segment; a segment that becomes wholly free is released at once. Does nothing when the
    /// segment's pool does not exist.
    void freeFromPagePool(std::byte* unit, SegmentTable& segments) noexcept;

    /// Record of the segment with an identifier of 0 to kMaxPageId.
    const UnitSegment& record(std::size_t identifier) const noexcept { return m_records[identifier]; }

private:
    using Pools = std::array<PagePool, kPagePoolCount + 1>;

    Pools* m_pools = nullptr;
    std::array<UnitSegment, kSegmentCount> m_records{};
};

} // namespace tq::detail
