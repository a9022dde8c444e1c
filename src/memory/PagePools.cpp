#include "memory/PagePools.h"

#include <utility>

namespace tq::detail {

void PagePools::create() {
    for (std::size_t number = 1; number < m_pools.size(); ++number)
        m_pools[number] = new PagePool(number, number * kPageBytes);
}

void PagePools::destroy() noexcept {
    for (PagePool*& pool : m_pools)
        delete std::exchange(pool, nullptr);
}

std::byte* PagePools::reallocFromPagePool(PagePool& pool, SegmentTable& segments) noexcept {
    if (!hasUnit(*pool.partial)) {
        std::byte* const base = segments.preallocNewPage(kSegmentOfUnits);
        if (base == nullptr)
            return nullptr;
        if (!SegmentTable::commit(base, kSegmentBytes)) {
            segments.release(base);
            return nullptr;
        }
        platform::markFree(base, kSegmentBytes);
        const std::size_t identifier = TqHeapConfigurator::segmentOf(base);
        m_records[identifier].setIdentifier(identifier);
        startRun(pool, m_records[identifier], base);
    }
    return takeUnit(pool, *pool.partial);
}

void PagePools::freeFromPagePool(std::byte* unit, SegmentTable& segments) noexcept {
    UnitSegment& record = m_records[TqHeapConfigurator::segmentOf(unit)];
    PagePool* const pool = m_pools[record.poolNumber];
    if (pool == nullptr)
        return;
    platform::markGivenBack(unit, pool->unitSize);
    if (giveUnit(*pool, record, unit))
        return;
    if (hasUnit(record))
        unlinkRun(*pool, record);
    record = UnitSegment{};
    segments.release(segmentStart(unit));
}

} // namespace tq::detail
