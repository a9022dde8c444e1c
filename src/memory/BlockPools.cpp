#include "memory/BlockPools.h"

#include <algorithm>
#include <cassert>
#include <new>
#include <utility>

namespace tq::detail {

namespace {

// Lists A and B link segments by identifier.

Segment* segmentWith(std::uint32_t identifier, const Reservation& reservation) noexcept {
    return reinterpret_cast<Segment*>(reservation.segmentAddress(identifier));
}

std::uint32_t identifierOf(const Segment* segment, const Reservation& reservation) noexcept {
    return segment == nullptr ? 0 : static_cast<std::uint32_t>(reservation.segmentOf(segment));
}

void pushSegment(Segment*& head, Segment& segment, const Reservation& reservation) noexcept {
    segment.next = identifierOf(head, reservation);
    segment.previous = 0;
    if (head != nullptr)
        head->previous = identifierOf(&segment, reservation);
    head = &segment;
}

void unlinkSegment(Segment*& head, Segment& segment, const Reservation& reservation) noexcept {
    assert(segment.previous != 0
               ? segmentWith(segment.previous, reservation)->next == identifierOf(&segment, reservation)
               : head == &segment);
    if (segment.previous != 0)
        segmentWith(segment.previous, reservation)->next = segment.next;
    else
        head = segment.next != 0 ? segmentWith(segment.next, reservation) : nullptr;
    if (segment.next != 0)
        segmentWith(segment.next, reservation)->previous = segment.previous;
}

// Chains fresh descriptors of pages [first, last) in address order, with the flags that `flagsOf` gives for what each
// descriptor was in an earlier use of the segment, and returns the first.
template <class FlagsOf>
Page* chainPages(std::byte* segment, std::size_t first, std::size_t last, FlagsOf flagsOf) noexcept {
    Page* next = nullptr;
    for (std::size_t i = last; i > first; --i) {
        Page* const page = pageAt(segment, i - 1);
        next = new (page) Page{.next = next, .flags = flagsOf(*page)};
    }
    return next;
}

void pushPage(Page*& head, Page& page) noexcept {
    page.next = head;
    head = &page;
}

} // namespace

void BlockPools::create(std::span<const std::int16_t, kBlockPoolCount + 1> units) {
    m_pools[0].clear();
    for (std::size_t number = 1; number < m_pools.size(); ++number)
        m_pools[number].create(number, static_cast<std::size_t>(units[number]));
    m_exist = true;
}

void BlockPools::destroy() noexcept {
    m_exist = false;
    for (BlockPool& pool : m_pools)
        pool.destroy();
}

std::byte* BlockPools::reallocFromPool(BlockPool& pool, SegmentTable& segments) noexcept {
    if (!hasUnit(*pool.partial)) {
        returnParked(segments);
        Segment* const segment = segmentToServe(segments);
        if (segment == nullptr)
            return nullptr;
        Page& page = *segment->committedFree;
        segment->committedFree = page.next;
        if (--segment->committedCount == 0) {
            unlinkSegment(m_withCommitted, *segment, segments.reservation());
            if (segment->uncommittedCount != 0)
                pushSegment(m_withUncommitted, *segment, segments.reservation());
        }
        segments.waiting().use(1);
        startRun(pool, page, pageAddress(page));
    }
    return takeUnit(pool, *pool.partial);
}

// The head of list A, which is filled when it is empty; null when no page can be had.
Segment* BlockPools::segmentToServe(SegmentTable& segments) noexcept {
    if (m_withCommitted != nullptr)
        return m_withCommitted;
    Segment* segment = m_withUncommitted;
    if (segment != nullptr) {
        if (!reallocBlockFromPage(*segment, segments))
            return nullptr;
        unlinkSegment(m_withUncommitted, *segment, segments.reservation());
    } else {
        segment = allocPage(segments);
        if (segment == nullptr)
            return nullptr;
    }
    pushSegment(m_withCommitted, *segment, segments.reservation());
    return segment;
}

// A fresh block segment, in no list yet. Null when there is none or its first pages cannot be had.
Segment* BlockPools::allocPage(SegmentTable& segments) noexcept {
    std::byte* const base = segments.preallocNewPage(0);
    if (base == nullptr)
        return nullptr;
    const std::size_t identifier = segments.reservation().segmentOf(base);
    const std::size_t held = segments.waiting().takeSegment(identifier);
    if (!SegmentTable::commit(base, 0, kInitialPages)) {
        segments.release(base, held);
        return nullptr;
    }
    platform::markUsed(base, kHeaderPages * kPageBytes);
    platform::markFree(base + kHeaderPages * kPageBytes, kUsablePages * kPageBytes);
    // Where all pages hold memory, what lies here need not be descriptors.
    const auto laterFlags = [&](const Page& before) {
        const bool holdsMemory =
            held == kPagesPerSegment || (held != 0 && (before.flags & (kUncommitted | kWaiting)) != kUncommitted);
        segments.waiting().addPages(identifier, holdsMemory ? 1 : 0);
        return static_cast<std::uint16_t>(holdsMemory ? kUncommitted | kWaiting : kUncommitted);
    };
    const auto noFlags = [](const Page&) { return std::uint16_t{0}; };
    return new (base) Segment{.committedFree = chainPages(base, kHeaderPages, kInitialPages, noFlags),
                              .uncommitted = chainPages(base, kInitialPages, kPagesPerSegment, laterFlags),
                              .next = 0,
                              .previous = 0,
                              .committedCount = kInitialPages - kHeaderPages,
                              .uncommittedCount = kPagesPerSegment - kInitialPages,
                              .highWater = kInitialPages};
}

// Turns the run of adjacent pages at the head of a segment's uncommitted list, which is not empty, into its committed
// free list, which is. Pages below the high-water mark are accessible already and only take their memory again.
bool BlockPools::reallocBlockFromPage(Segment& segment, SegmentTable& segments) noexcept {
    assert(segment.uncommitted != nullptr && segment.committedFree == nullptr);
    Page* const first = segment.uncommitted;
    Page* last = first;
    std::uint32_t count = 1;
    while (count < kCommitPages && last->next == last + 1) {
        last = last->next;
        ++count;
    }
    const auto end = static_cast<std::uint32_t>(pageIndex(*last) + 1);
    if (end > segment.highWater) {
        if (!SegmentTable::commit(segmentStart(&segment), segment.highWater, end))
            return false;
        segment.highWater = end;
    }
    const std::size_t identifier = segments.reservation().segmentOf(&segment);
    for (std::uint32_t i = 0; i < count; ++i)
        segments.waiting().remove(first[i], identifier);
    segment.committedFree = first;
    segment.committedCount = count;
    segment.uncommitted = std::exchange(last->next, nullptr);
    segment.uncommittedCount -= count;
    return true;
}

// The page's last block came back. Most often the pool asks for the page again at once, and its segment would hand it
// out before any other; so it stays with its pool, parked. It goes to the segment as soon as another page is freed or
// taken: addresses are those of a heap that parks nothing.
void BlockPools::freePage(Page& page, BlockPool& pool, SegmentTable& segments) noexcept {
    if (m_parked != &page)
        returnParked(segments);
    m_parked = nullptr;
    if (hasUnit(page))
        unlinkRun(pool, page);
    if (!hasUnit(*pool.partial) && wouldServeNext(*segmentHeader(&page))) {
        startRun(pool, page, pageAddress(page));
        m_parked = &page;
        return;
    }
    freeBlock(page, segments);
}

// True when a page that comes back to the segment is the next that is handed out, and that leaves lists A and B as they
// were.
bool BlockPools::wouldServeNext(const Segment& segment) const noexcept {
    if (segment.committedCount == 0)
        return segment.uncommittedCount == 0 || m_withUncommitted == &segment;
    return segment.committedCount < kCommittedReserve && m_withCommitted == &segment;
}

const Page* BlockPools::parked() const noexcept {
    if (m_parked == nullptr || m_parked->nextUnit != pageAddress(*m_parked) || (m_parked->flags & kFreeListMode) != 0)
        return nullptr;
    return m_parked;
}

// Returns the parked page to its segment, unless blocks of it were taken since.
void BlockPools::returnParked(SegmentTable& segments) noexcept {
    const bool isParked = parked() != nullptr;
    Page* const page = std::exchange(m_parked, nullptr);
    if (!isParked)
        return;
    unlinkRun(m_pools[page->poolNumber], *page);
    freeBlock(*page, segments);
}

// Returns a wholly free page, already out of its pool, to its segment.
void BlockPools::freeBlock(Page& page, SegmentTable& segments) noexcept {
    Segment& segment = *segmentHeader(&page);
    WaitingMemory& waiting = segments.waiting();
    const std::size_t identifier = segments.reservation().segmentOf(&segment);
    page.poolNumber = 0;
    page.flags = 0;
    page.nextUnit = nullptr;
    waiting.unuse(1);
    const bool isWhollyFree = segment.committedCount + segment.uncommittedCount + 1 == kUsablePages;
    const bool isOnlySource = m_withUncommitted == nullptr && m_withCommitted == &segment && segment.next == 0;
    if (segment.committedCount < kCommittedReserve) {
        pushPage(segment.committedFree, page);
        if (segment.committedCount++ == 0) {
            if (segment.uncommittedCount != 0)
                unlinkSegment(m_withUncommitted, segment, segments.reservation());
            pushSegment(m_withCommitted, segment, segments.reservation());
        }
    } else if (isWhollyFree && !isOnlySource) {
        unlinkSegment(m_withCommitted, segment, segments.reservation());
        const std::size_t held = kHeaderPages + segment.committedCount + 1 + waiting.pagesOf(identifier);
        segments.release(segmentStart(&segment), held);
    } else {
        pushPage(segment.uncommitted, page);
        ++segment.uncommittedCount;
        waiting.add(page, identifier);
    }
    segments.settle();
}

} // namespace tq::detail
