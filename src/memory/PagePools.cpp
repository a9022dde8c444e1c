#include "memory/PagePools.h"

#include <memory>
#include <utility>

namespace tq::detail {

void PagePools::create() {
    auto pools = std::make_unique<Pools>();
    for (std::size_t number = 1; number < pools->size(); ++number)
        (*pools)[number].create(number, number * kPageBytes);
    m_pools = pools.release();
}

void PagePools::destroy() noexcept {
    if (m_pools == nullptr)
        return;
    for (PagePool& pool : *m_pools)
        pool.destroy();
    delete std::exchange(m_pools, nullptr);
}

std::byte* PagePools::reallocFromPagePool(PagePool& pool, SegmentTable& segments) noexcept {
    if (!hasUnit(*pool.partial)) {
        std::byte* const base = segments.preallocNewPage(kSegmentOfUnits);
        if (base == nullptr)
            return nullptr;
        const std::size_t identifier = segments.reservation().segmentOf(base);
        const std::size_t held = segments.waiting().takeSegment(identifier);
        if (!SegmentTable::commit(base, 0, kPagesPerSegment)) {
            segments.release(base, held);
            return nullptr;
        }
        segments.waiting().use(kPagesPerSegment);
        platform::markFree(base, kSegmentBytes);
        m_records[identifier].setIdentifier(identifier);
        startRun(pool, m_records[identifier], base);
    }
    return takeUnit(pool, *pool.partial);
}

void PagePools::freeFromPagePool(std::byte* unit, SegmentTable& segments) noexcept {
    UnitSegment& record = m_records[segments.reservation().segmentOf(unit)];
    if (m_pools == nullptr)
        return;
    PagePool& pool = (*m_pools)[record.poolNumber];
    if (giveUnit(pool, record, unit))
        return;
    if (hasUnit(record))
        unlinkRun(pool, record);
    record = UnitSegment{};
    segments.waiting().unuse(kPagesPerSegment);
    segments.release(segmentStart(unit), kPagesPerSegment);
    segments.settle();
}

} // namespace tq::detail
