#include "memory/TqHeap.h"
#include "platform/VirtualMemory.h"

#include <TqOsBase/memory/HeapReport.h>

#include <bitset>

namespace tq {

namespace {

using detail::g_tqGlobalHeap;
using detail::kBlockPoolCount;
using detail::kPageBytes;
using detail::kPagePoolCount;
using detail::kPagesPerSegment;
using detail::TqHeapConfigurator;
using State = HeapReport::PageState;

static_assert(HeapReport::kPageBytes == kPageBytes && HeapReport::kPagesPerSegment == kPagesPerSegment);

struct Count {
    std::size_t pages = 0;
    std::size_t used = 0;
    std::size_t free = 0;
};

// Numbers of pools serve as indices.
struct Counts {
    std::array<Count, kBlockPoolCount + 1> blocks{};
    std::array<Count, kPagePoolCount + 1> units{};
};

State freePageState(const detail::Segment& segment, const detail::Page& page) {
    if ((page.flags & detail::kUncommitted) == 0)
        return State::kReserve;
    if ((page.flags & detail::kWaiting) != 0)
        return State::kWaiting;
    return detail::pageIndex(page) >= segment.highWater ? State::kUntouched : State::kGivenBack;
}

void fillBlockSegment(HeapReport::Segment& report, Counts& counts) {
    std::byte* const base = TqHeapConfigurator::reservation().segmentAddress(report.number);
    const detail::Segment& segment = *detail::segmentHeader(base);
    for (std::size_t index = 0; index < kPagesPerSegment; ++index) {
        HeapReport::Page& out = report.pages[index];
        if (index < detail::kHeaderPages) {
            out = {State::kHeader, 0, 0, 0};
            continue;
        }
        const detail::Page& page = *detail::pageAt(base, index);
        if (page.poolNumber == 0) {
            out = {freePageState(segment, page), 0, 0, 0};
            continue;
        }
        const detail::BlockPool& pool = g_tqGlobalHeap.blockPools().pool(page.poolNumber);
        const std::size_t free = detail::freeUnits(pool, page);
        if (free == pool.unitsPerRun) { // parked, so as good as in its segment's reserve
            out = {State::kReserve, 0, 0, 0};
            continue;
        }
        const std::size_t used = pool.unitsPerRun - free;
        out = {State::kInPool, page.poolNumber, static_cast<std::uint16_t>(used),
               static_cast<std::uint16_t>(pool.unitsPerRun)};
        Count& count = counts.blocks[page.poolNumber];
        ++count.pages;
        count.used += used;
        count.free += free;
    }
}

void fillUnitSegment(HeapReport::Segment& report, Counts& counts) {
    const detail::UnitSegment& record = g_tqGlobalHeap.pagePools().record(report.number);
    const detail::PagePool& pool = *g_tqGlobalHeap.pagePools().pool(record.poolNumber);
    std::bitset<kPagesPerSegment> free; // by unit
    if ((record.flags & detail::kFreeListMode) != 0) {
        for (const std::byte* unit = record.nextUnit; unit != nullptr; unit = detail::readLink(unit))
            free.set(detail::offsetInRun<detail::UnitSegment>(unit) / pool.unitSize);
    } else {
        for (std::size_t unit = pool.unitsPerRun - detail::freeUnits(pool, record); unit < pool.unitsPerRun; ++unit)
            free.set(unit);
    }
    for (std::size_t index = 0; index < kPagesPerSegment; ++index) {
        const std::size_t unit = index / record.poolNumber;
        const bool isUsed = unit < pool.unitsPerRun && !free[unit];
        const bool isPartOfUnit = unit < pool.unitsPerRun; // pages at the end may be left over
        report.pages[index] = {State::kInPool, record.poolNumber, isUsed, isPartOfUnit};
    }
    Count& count = counts.units[record.poolNumber];
    count.pages += kPagesPerSegment;
    count.free += free.count();
    count.used += pool.unitsPerRun - free.count();
}

template <std::size_t kCount>
void addPools(HeapReport& report, const std::array<Count, kCount>& counts, bool servesPages) {
    for (std::size_t number = 1; number < kCount; ++number) {
        const Count& count = counts[number];
        if (count.pages == 0)
            continue;
        HeapReport::Pool pool{};
        pool.servesPages = servesPages;
        pool.number = static_cast<int>(number);
        pool.unitBytes = servesPages ? number * kPageBytes : g_tqGlobalHeap.blockPools().pool(number).unitSize;
        pool.pages = count.pages;
        pool.usedBlocks = count.used;
        pool.freeBlocks = count.free;
        if (servesPages)
            pool.askedBytes = count.used * pool.unitBytes;
        report.pools.push_back(pool);
    }
}

bool isInUse(std::size_t segment) {
    return (g_tqGlobalHeap.segments().state(segment) & detail::kSegmentInUse) != 0;
}

} // namespace

HeapReport heapReport() {
    HeapReport report;
    const detail::HeapVisit visit(g_tqGlobalHeap);
    if (g_tqGlobalHeap.isOver())
        return report;
    report.address = TqHeapConfigurator::pStartAddress;
    report.reservedBytes = detail::kReservationBytes;
    if (!visit)
        return report;
    std::size_t inUse = 0;
    for (std::size_t number = 1; number < detail::kSegmentCount; ++number)
        inUse += isInUse(number);
    // All that is allocated is allocated before the walk: the program's operator new may be built on this very heap,
    // which then may take a further segment at each of the two calls of reserve().
    report.segments.reserve(inUse + 2);
    report.pools.reserve(kBlockPoolCount + kPagePoolCount);
    Counts counts;
    for (std::size_t number = 1; number < detail::kSegmentCount; ++number) {
        if (!isInUse(number) || report.segments.size() == report.segments.capacity())
            continue;
        HeapReport::Segment& segment = report.segments.emplace_back();
        segment.number = number;
        segment.servesPages = (g_tqGlobalHeap.segments().state(number) & detail::kSegmentOfUnits) != 0;
        segment.resident =
            platform::residentBytes(TqHeapConfigurator::reservation().segmentAddress(number), detail::kSegmentBytes);
        if (segment.servesPages)
            fillUnitSegment(segment, counts);
        else
            fillBlockSegment(segment, counts);
        report.residentBytes += segment.resident;
        for (const HeapReport::Page& page : segment.pages)
            if (page.state == State::kHeader || page.state == State::kReserve || page.state == State::kInPool)
                report.committedBytes += kPageBytes;
    }
    report.waitingBytes = g_tqGlobalHeap.segments().waiting().total() * kPageBytes;
    addPools(report, counts.blocks, false);
    addPools(report, counts.units, true);
    return report;
}

} // namespace tq
