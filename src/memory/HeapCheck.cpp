#include "memory/HeapCheck.h"

#include <algorithm>
#include <bitset>
#include <cstdio>
#include <cstdlib>
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
    explicit Walk(const GlobalHeap& heap) : m_heap(heap), m_reservation(heap.segments().reservation()) {}

    void run() {
        if (!m_heap.blockPools().exist())
            return; // without pools nothing is kept in order any more
        checkStates();
        for (std::size_t number = 1; number <= kBlockPoolCount; ++number)
            walkPool(m_heap.blockPools().pool(number), number);
        for (std::size_t number = 1; number <= kPagePoolCount; ++number)
            if (const PagePool* const pool = m_heap.pagePools().pool(number))
                walkPool(*pool, number);
        walkSegmentList(m_heap.blockPools().segmentsWithCommitted(), 'A');
        walkSegmentList(m_heap.blockPools().segmentsWithUncommitted(), 'B');
        for (std::size_t id = 1; id < kSegmentCount; ++id) {
            const unsigned state = m_heap.segments().state(id);
            const bool ofUnits = (state & kSegmentOfUnits) != 0;
            checkRecord(id, ofUnits);
            if ((state & kSegmentInUse) != 0 && !ofUnits)
                checkBlockSegment(id);
        }
        checkParked();
        checkWaiting();
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
        return m_reservation.offsetOf(address) < kReservationBytes &&
               (m_heap.segments().state(m_reservation.segmentOf(address)) & (kSegmentInUse | kSegmentOfUnits)) ==
                   (kSegmentInUse | kind);
    }

    // Where a run begins. A descriptor outside every block segment, like a record outside the table, has none.
    std::byte* baseOf(const Page& page) const {
        require(isInUse(&page, 0), "page outside the block segments", 0);
        require(pageIndex(page) >= kHeaderPages && pageIndex(page) < kPagesPerSegment &&
                    reinterpret_cast<std::uintptr_t>(&page) % sizeof(Page) == 0,
                "not a page descriptor", m_reservation.segmentOf(&page));
        return pageAddress(page);
    }

    std::byte* baseOf(const UnitSegment& record) const {
        const std::ptrdiff_t index = &record - &m_heap.pagePools().record(0);
        require(index > 0 && index < std::ptrdiff_t{kSegmentCount}, "record outside the table", 0);
        std::byte* const base = m_reservation.segmentAddress(static_cast<std::size_t>(index));
        require(isInUse(base, kSegmentOfUnits), "listed record of a segment without units",
                static_cast<std::size_t>(index));
        return base;
    }

    template <class Run>
    void walkPool(const UnitPool<Run>& pool, std::size_t number) {
        require(pool.number() == number, "pool number", 0);
        require(pool.unitSize == 0 || pool.unitsPerRun == kRunBytes<Run> / pool.unitSize, "units per run", 0);
        require(!hasUnit(pool.end), "unit at the end of a list", 0);
        for (const Run* run = pool.partial; run != &pool.end; run = run->next) {
            std::byte* const base = baseOf(*run);
            const std::size_t segment = m_reservation.segmentOf(base);
            const std::size_t page = pageIndex(*pageOf(base));
            require(run == pool.partial || run->previous->next == run, "back link of a run", segment, page);
            require(m_listed.insert(base).second, "run listed twice", segment, page);
            require(run->poolNumber == number, "pool number of a run", segment, page);
            require(pool.unitSize != 0, "run in a pool without units", segment, page);
            checkUnits(pool, *run, base, segment, page);
            const bool isWhollyFree = freeUnits(pool, *run) == pool.unitsPerRun;
            require(!isWhollyFree || isParked(*run), "run wholly free", segment, page);
            require(!isWhollyFree || run->next == &pool.end, "parked page in the wrong place", segment, page);
        }
    }

    bool isParked(const Page& page) const { return m_heap.blockPools().parked() == &page; }
    static bool isParked(const UnitSegment&) { return false; }

    template <class Run>
    static void checkUnits(const UnitPool<Run>& pool, const Run& run, const std::byte* base, std::size_t segment,
                           std::size_t page) {
        require(run.nextUnit != nullptr, "full run in a list", segment, page);
        if ((run.flags & kFreeListMode) == 0) {
            const auto offset = static_cast<std::size_t>(run.nextUnit - base);
            require(offset <= pool.lastOffset && offset % pool.unitSize == 0, "bump position", segment, page);
            return;
        }
        require(run.freeCount < pool.unitsPerRun, "free count of a run", segment, page);
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

    // A run that its pool need not list, as no unit of it is free.
    template <class Run>
    static void checkFull(const Run& run, const UnitPool<Run>* pool, std::size_t segment, std::size_t page = 0) {
        require(pool != nullptr && pool->unitSize != 0, "pool number of a run", segment, page);
        require(run.nextUnit == nullptr && run.freeCount == 0 && run.flags == kFreeListMode, "run in no list", segment,
                page);
    }

    void walkSegmentList(const Segment* head, char name) {
        std::size_t previous = 0;
        for (const Segment* segment = head; segment != nullptr;) {
            require(isInUse(segment, 0), "listed segment is not in use", 0);
            const std::size_t id = m_reservation.segmentOf(segment);
            require(segmentStart(segment) == reinterpret_cast<const std::byte*>(segment), "not a segment", id);
            require(m_listOf.emplace(id, name).second, "segment listed twice", id);
            require(segment->previous == previous, "back link of a segment", id);
            require(segment->next < kSegmentCount, "link of a segment", id);
            previous = id;
            segment = segment->next == 0 ? nullptr : segmentHeader(m_reservation.segmentAddress(segment->next));
        }
    }

    void checkRecord(std::size_t id, bool ofUnits) const {
        const UnitSegment& record = m_heap.pagePools().record(id);
        if (ofUnits) {
            require(record.identifier() == id, "identifier of a record", id);
            require(record.poolNumber <= kPagePoolCount, "pool number of a run", id);
            if (m_listed.count(m_reservation.segmentAddress(id)) == 0)
                checkFull(record, m_heap.pagePools().pool(record.poolNumber), id);
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
            require(m_reservation.segmentOf(page) == id, "free page of another segment", id, index);
            require(!free[index], "page free twice", id, index);
            require(page->poolNumber == 0, "pool number of a free page", id, index);
            free.set(index);
        }
        return length;
    }

    void checkBlockSegment(std::size_t id) const {
        std::byte* const base = m_reservation.segmentAddress(id);
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
            const Page& page = *pageAt(base, index);
            require(!(committed[index] && uncommitted[index]), "page in two lists", id, index);
            require(!isFree || m_listed.count(base + index * kPageBytes) == 0, "free page in a pool", id, index);
            require(((page.flags & kUncommitted) != 0) == uncommitted[index], "mark of an uncommitted page", id, index);
            require((page.flags & kWaiting) == 0 || uncommitted[index], "waiting page in use", id, index);
            require(page.poolNumber <= kBlockPoolCount, "pool number of a run", id, index);
            if (!isFree && m_listed.count(base + index * kPageBytes) == 0)
                checkFull(page, &m_heap.blockPools().pool(page.poolNumber), id, index);
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
                require(expected == segment.highWater, "page after the fresh ones", id, index);
            else
                require(index == expected++, "order of the fresh pages", id, index);
        }
        require(expected == kPagesPerSegment, "fresh page missing", id);
    }

    // The place that the parked page stands in for.
    void checkParked() const {
        const Page* const page = m_heap.blockPools().parked();
        if (page == nullptr)
            return;
        baseOf(*page);
        require(m_heap.blockPools().wouldServeNext(*segmentHeader(page)), "parked page is not the next to be served",
                m_reservation.segmentOf(page), pageIndex(*page));
    }

    void checkWaiting() const {
        const WaitingMemory& waiting = m_heap.segments().waiting();
        std::size_t total = 0;
        std::size_t released = 0;
        std::size_t inUse = 0;
        for (std::size_t id = 1; id < kSegmentCount; ++id) {
            const unsigned state = m_heap.segments().state(id);
            const std::size_t pages = waiting.pagesOf(id);
            require(pages == 0 || id >= waiting.lowest(), "lowest segment with waiting pages", id);
            total += pages;
            if ((state & kSegmentInUse) == 0) {
                require(pages <= kPagesPerSegment, "waiting pages of a free segment", id);
                released += pages;
            } else if ((state & kSegmentOfUnits) != 0) {
                require(pages == 0, "waiting pages of units", id);
                inUse += kPagesPerSegment;
            } else {
                std::byte* const base = m_reservation.segmentAddress(id);
                const Segment& segment = *segmentHeader(base);
                inUse += kUsablePages - segment.committedCount - segment.uncommittedCount;
                const auto isWaiting = [](const Page& page) { return (page.flags & kWaiting) != 0; };
                require(std::cmp_equal(pages, std::count_if(pageAt(base, kHeaderPages), pageAt(base, kPagesPerSegment),
                                                            isWaiting)),
                        "waiting pages", id);
            }
        }
        require(total == waiting.total() && released == waiting.released(), "sum of the waiting pages", 0);
        require(inUse == waiting.inUse(), "sum of the pages in use", 0);
        require(total <= waiting.most(), "bound of the waiting pages", 0);
    }

    const GlobalHeap& m_heap;
    const Reservation m_reservation;
    std::unordered_set<const std::byte*> m_listed; // bases of the runs that pools list
    std::map<std::size_t, char> m_listOf;          // segments in list A or B
};

} // namespace

#if defined(TQ_HEAP_CHECK_EVERY)
void countOperation() {
    static thread_local unsigned count = 0;
    if (t_heapView.heap == nullptr || ++count % TQ_HEAP_CHECK_EVERY != 0)
        return;
    const std::string violation = checkHeap(*t_heapView.heap);
    if (violation.empty())
        return;
    std::fprintf(stderr, "the heap is out of order: %s\n", violation.c_str());
    std::abort();
}
#endif

std::string checkHeap(const GlobalHeap& heap) {
    try {
        Walk(heap).run();
    } catch (const Violation& violation) {
        return violation.text;
    }
    return {};
}

} // namespace tq::detail
