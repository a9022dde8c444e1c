#include "memory/HeapCheck.h"

#include <bitset>
#include <map>
#include <unordered_set>
#include <utility>

namespace tq::detail {

namespace {

// Thrown inside this file only, to leave the walk at the first violation.
struct Violation {
    std::string text;
};

void require(bool holds, const char* what, std::size_t segment, std::size_t page = 0) {
    if (!holds)
        throw Violation{std::string(what) + " (segment " + std::to_string(segment) + ", page " + std::to_string(page) +
                        ")"};
}

class Walk {
public:
    explicit Walk(const GlobalHeap& heap) : m_heap(heap) {}

    void run() {
        if (m_heap.blockPools().pool(1) == nullptr)
            return; // without pools nothing is kept in order any more
        checkStates();
        for (std::size_t number = 1; number <= kBlockPoolCount; ++number)
            if (const BlockPool* const pool = m_heap.blockPools().pool(number))
                walkPool(*pool, kPageBytes, number);
        for (std::size_t number = 1; number <= kPagePoolCount; ++number)
            if (const PagePool* const pool = m_heap.pagePools().pool(number))
                walkPool(*pool, kSegmentBytes, number);
        walkSegmentList(m_heap.blockPools().segmentsWithCommitted(), 'A');
        walkSegmentList(m_heap.blockPools().segmentsWithUncommitted(), 'B');
        for (std::size_t id = 1; id < kSegmentCount; ++id) {
            const unsigned state = m_heap.segments().state(id);
            const bool ofUnits = (state & kSegmentOfUnits) != 0;
            checkRecord(id, ofUnits);
            if ((state & kSegmentInUse) != 0 && !ofUnits)
                checkBlockSegment(id);
        }
        checkPending();
    }

private:
    void checkStates() const {
        const SegmentTable& table = m_heap.segments();
        require(table.searchHint() >= 0 && table.searchHint() <= TqHeapConfigurator::kMaxPageId, "search hint", 0);
        require(table.state(0) == 0, "segment 0 has a state", 0);
        for (std::size_t id = 1; id < kSegmentCount; ++id) {
            const unsigned state = table.state(id);
            require(state == kSegmentFree || state == kSegmentLastResort || (state & kSegmentInUse) != 0,
                    "unknown state", id);
        }
    }

    bool isInUse(const void* address, unsigned kind) const {
        return TqHeapConfigurator::offsetOf(address) < kReservationBytes &&
               (m_heap.segments().state(TqHeapConfigurator::segmentOf(address)) & (kSegmentInUse | kSegmentOfUnits)) ==
                   (kSegmentInUse | kind);
    }

    // Where a run begins. A descriptor outside every block segment, like a record outside the table, has none.
    std::byte* baseOf(const Page& page) const {
        require(isInUse(&page, 0), "page outside the block segments", 0);
        require(pageIndex(page) >= kHeaderPages && pageIndex(page) < kPagesPerSegment &&
                    reinterpret_cast<std::uintptr_t>(&page) % sizeof(Page) == 0,
                "not a page descriptor", TqHeapConfigurator::segmentOf(&page));
        return pageAddress(page);
    }

    std::byte* baseOf(const UnitSegment& record) const {
        const std::ptrdiff_t index = &record - &m_heap.pagePools().record(0);
        require(index > 0 && index < std::ptrdiff_t{kSegmentCount}, "record outside the table", 0);
        std::byte* const base = TqHeapConfigurator::segmentAddress(static_cast<std::size_t>(index));
        require(isInUse(base, kSegmentOfUnits), "listed record of a segment without units",
                static_cast<std::size_t>(index));
        return base;
    }

    template <class Run>
    void walkPool(const UnitPool<Run>& pool, std::size_t runBytes, std::size_t number) {
        require(pool.number == number, "pool number", 0);
        require(pool.unitSize == 0 || pool.unitsPerRun == runBytes / pool.unitSize, "units per run", 0);
        for (const bool isFull : {false, true}) {
            const Run* previous = nullptr;
            for (const Run* run = isFull ? pool.full : pool.partial; run != nullptr;
                 previous = std::exchange(run, run->next)) {
                std::byte* const base = baseOf(*run);
                const std::size_t segment = TqHeapConfigurator::segmentOf(base);
                const std::size_t page = pageIndex(*pageOf(base));
                require(run->previous == previous, "back link of a run", segment, page);
                require(m_runs.insert(base).second, "run listed twice", segment, page);
                require(run->poolNumber == number, "pool number of a run", segment, page);
                require((run->freeCount == 0) == isFull || run == pool.partial, "run in the wrong list", segment, page);
                if (isFull)
                    require(run->nextUnit == nullptr, "next unit of a full run", segment, page);
                else
                    checkUnits(pool, *run, base, segment, page);
            }
        }
    }

    template <class Run>
    static void checkUnits(const UnitPool<Run>& pool, const Run& run, const std::byte* base, std::size_t segment,
                           std::size_t page) {
        require(run.freeCount < pool.unitsPerRun, "free count of a run", segment, page);
        if ((run.flags & kFreeListMode) == 0) {
            require(run.nextUnit == base + (pool.unitsPerRun - run.freeCount) * pool.unitSize, "bump position", segment,
                    page);
            return;
        }
        std::bitset<kPageBytes / 8> seen;
        std::size_t length = 0;
        for (const std::byte* unit = run.nextUnit; unit != nullptr; unit = readLink(unit), ++length) {
            const auto offset = static_cast<std::size_t>(unit - base);
            const std::size_t index = offset / pool.unitSize;
            require(index < pool.unitsPerRun && offset % pool.unitSize == 0, "free unit out of place", segment, page);
            require(!seen[index], "free unit chained twice", segment, page);
            seen.set(index);
        }
        require(length == run.freeCount, "length of the free list", segment, page);
    }

    void walkSegmentList(const Segment* head, char name) {
        std::size_t previous = 0;
        for (const Segment* segment = head; segment != nullptr;) {
            require(isInUse(segment, 0), "listed segment is not in use", 0);
            const std::size_t id = TqHeapConfigurator::segmentOf(segment);
            require(segmentStart(segment) == reinterpret_cast<const std::byte*>(segment), "not a segment", id);
            require(m_listOf.emplace(id, name).second, "segment listed twice", id);
            require(segment->previous == previous, "back link of a segment", id);
            require(segment->next < kSegmentCount, "link of a segment", id);
            previous = id;
            segment = segment->next == 0 ? nullptr : segmentHeader(TqHeapConfigurator::segmentAddress(segment->next));
        }
    }

    void checkRecord(std::size_t id, bool ofUnits) const {
        const UnitSegment& record = m_heap.pagePools().record(id);
        if (ofUnits) {
            require(record.identifier() == id, "identifier of a record", id);
            require(m_runs.count(TqHeapConfigurator::segmentAddress(id)) == 1, "record that no pool lists", id);
            return;
        }
        require(record.identifier() == UnitSegment::kNoSegment, "record of an unused segment", id);
        require(record.poolNumber == 0 && record.flags == 0 && record.freeCount == 0 && record.nextUnit == nullptr &&
                    record.next == nullptr && record.previous == nullptr,
                "remains in a record", id);
    }

    // Length of a segment's free page list, whose pages it marks in `free`.
    std::uint32_t walkFreePages(const Page* head, std::size_t id, std::bitset<kPagesPerSegment>& free) const {
        std::uint32_t length = 0;
        for (const Page* page = head; page != nullptr; page = page->next, ++length) {
            baseOf(*page);
            const std::size_t index = pageIndex(*page);
            require(TqHeapConfigurator::segmentOf(page) == id, "free page of another segment", id, index);
            require(!free[index], "page free twice", id, index);
            require(page->poolNumber == 0, "pool number of a free page", id, index);
            free.set(index);
        }
        return length;
    }

    void checkBlockSegment(std::size_t id) const {
        std::byte* const base = TqHeapConfigurator::segmentAddress(id);
        const Segment& segment = *segmentHeader(base);
        const std::uint32_t c = segment.committedCount;
        const std::uint32_t n = segment.uncommittedCount;
        std::bitset<kPagesPerSegment> committed;
        std::bitset<kPagesPerSegment> uncommitted;
        require(walkFreePages(segment.committedFree, id, committed) == c, "committed count", id);
        require(walkFreePages(segment.uncommitted, id, uncommitted) == n, "uncommitted count", id);
        require(c <= kCommittedReserve, "reserve exceeded", id);
        require(segment.highWater >= kInitialPages && segment.highWater <= kPagesPerSegment, "high water", id);
        for (std::size_t index = kHeaderPages; index < kPagesPerSegment; ++index) {
            const bool isFree = committed[index] || uncommitted[index];
            const bool isInPool = m_runs.count(base + index * kPageBytes) != 0;
            require(!(committed[index] && uncommitted[index]), "page in two lists", id, index);
            require(isFree != isInPool, isFree ? "free page in a pool" : "page in no list", id, index);
            require(index < segment.highWater || uncommitted[index], "used page above the high-water mark", id, index);
        }
        checkTail(segment, id);
        const auto listed = m_listOf.find(id);
        const char wanted = c > 0 ? 'A' : n > 0 ? 'B' : '-';
        require((listed == m_listOf.end() ? '-' : listed->second) == wanted, "segment in the wrong list", id);
    }

    // The pages that were never accessible end the uncommitted list in address order.
    static void checkTail(const Segment& segment, std::size_t id) {
        std::size_t expected = segment.highWater;
        for (const Page* page = segment.uncommitted; page != nullptr; page = page->next) {
            const std::size_t index = pageIndex(*page);
            if (index < segment.highWater)
                require(expected == segment.highWater, "page behind the fresh ones", id, index);
            else
                require(index == expected++, "order of the fresh pages", id, index);
        }
        require(expected == kPagesPerSegment, "fresh page missing", id);
    }

    void checkPending() const {
        const GiveBackRun& pending = m_heap.segments().pending();
        if (pending.begin() == nullptr)
            return;
        require(isInUse(pending.begin(), 0), "pending page outside the block segments", 0);
        const std::size_t id = TqHeapConfigurator::segmentOf(pending.begin());
        const Segment& segment = *segmentHeader(pending.begin());
        std::bitset<kPagesPerSegment> uncommitted;
        walkFreePages(segment.uncommitted, id, uncommitted);
        for (const std::byte* page = pending.begin(); page != pending.end(); page += kPageBytes) {
            const std::size_t index = pageIndex(*pageOf(page));
            require(uncommitted[index] && index < segment.highWater, "pending page in use", id, index);
        }
    }

    const GlobalHeap& m_heap;
    std::unordered_set<const std::byte*> m_runs; // bases of the runs that pools list
    std::map<std::size_t, char> m_listOf;        // segments in list A or B
};

} // namespace

std::string checkHeap(const GlobalHeap& heap) {
    try {
        Walk(heap).run();
    } catch (const Violation& violation) {
        return violation.text;
    }
    return {};
}

} // namespace tq::detail
