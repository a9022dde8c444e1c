#pragma once

#include "memory/HeapConfigurator.h"
#include "platform/MemoryMarks.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

// The structures that describe pages and segments, and what always holds for them between two calls of the heap.
// All of it, but for the access rights that only the system knows, is verified by HeapCheck.
//
// A run is what a pool cuts its units from: a page (block pools) or a whole segment (page pools). With u units per run
// and base = address of the run, for every run that a pool owns, f being the number of its free units:
//   0 <= f < u                  a run that becomes wholly free leaves its pool at once, but for a parked page
//   f > 0  <=>  the pool lists it;   full runs are in no list
//   bump mode:       f > 0, and nextUnit == base + (u - f) * unitSize; units from there on are free
//   free-list mode:  f == freeCount, and the chain from nextUnit has f distinct units of the run and ends with null
//   poolNumber == number of its pool
//
// At most one page is parked: wholly free, in bump mode, the last in its pool's list. Otherwise it would be the head of
// its segment's committed free list, and the page that its pool takes next. So one of these holds, with c as below:
//   the segment is the head of list A, and 0 < c < kCommittedReserve
//   c == 0, and the segment is in no list or the head of list B
//
// For every block segment (state 3), with c = committedCount, n = uncommittedCount, h = highWater:
//   c == length of committedFree <= kCommittedReserve,   n == length of uncommitted
//   c + n + (pages in pools) == kUsablePages             each usable page is in exactly one place
//   pages [0, h) are accessible and no others: pages in pools and committed free pages lie below h
//   pages [h, 256) are on the uncommitted list, at its end, in address order
//   poolNumber == 0 for each page that is in no pool; kUncommitted marks those on the uncommitted list, and no others
//   kWaiting marks those of them whose memory was not given back; above h it is left of an earlier use of the segment
//   in list A  <=>  c > 0;   in list B  <=>  c == 0 and n > 0
//
// The system's pages may be larger than the heap's. All of the above is the same there; only rights and memory come and
// go by whole pages of the system: the one that page h - 1 lies in is accessible to its end, and one goes back when all
// pages in it are on the uncommitted list.
//
// For every segment record of the page pools, at index k:
//   state of segment k has kSegmentOfUnits  <=>  identifier == k  <=>  its page pool lists it
//   otherwise identifier == kNoSegment and all else is 0
namespace tq::detail {

/// Bits of a segment's state. A segment that may be taken has exactly kSegmentFree, or exactly kSegmentLastResort:
/// taken after all others; nothing here produces that one. Segment 0 has no bit, so it is never taken.
enum SegmentState : std::uint8_t {
    kSegmentInUse = 1,
    kSegmentFree = 2,
    kSegmentLastResort = 4,
    kSegmentOfUnits = 8, ///< Beside kSegmentInUse: it serves a page pool. Freeing tells the two kinds apart by it.
};

/// State of a segment that serves block pools. One that was taken as the last resort has kSegmentLastResort in place of
/// kSegmentFree.
inline constexpr std::uint8_t kBlockSegment = kSegmentInUse | kSegmentFree;

/// The states of all segments, by identifier.
using SegmentStates = std::array<std::uint8_t, kSegmentCount>;

/// Pages at the start of a block segment that hold its header and page descriptors.
inline constexpr std::size_t kHeaderPages = 2;
inline constexpr std::size_t kUsablePages = kPagesPerSegment - kHeaderPages;
/// Pages made accessible with a fresh block segment, its header included.
inline constexpr std::size_t kInitialPages = 16;
/// The most pages made accessible at once later on.
inline constexpr std::size_t kCommitPages = 16;
/// Free pages that a segment keeps accessible, memory and all.
inline constexpr std::uint32_t kCommittedReserve = 16;

/// Flag of a run: its free units are chained, or there are none; otherwise they are the rest of it from nextUnit on.
inline constexpr std::uint16_t kFreeListMode = 1;
/// Flag of a page on its segment's uncommitted list: its memory waits and may still be given back (WaitingMemory.h).
inline constexpr std::uint16_t kWaiting = 2;
/// Flag of every page on its segment's uncommitted list: it holds nothing that anyone wants.
inline constexpr std::uint16_t kUncommitted = 4;

/// Descriptor of one page of a block segment.
struct Page {
    Page* next = nullptr; ///< In its pool's list, or in one of its segment's free page lists (linked forward only).
    Page* previous = nullptr;
    std::byte* nextUnit = nullptr;
    std::uint32_t freeCount = 0; ///< In free-list mode; in bump mode the position tells.
    std::uint16_t poolNumber = 0;
    std::uint16_t flags = 0;
};

/// Header of a block segment, in the descriptor slots of the pages that hold the descriptors.
struct Segment {
    Page* committedFree;
    Page* uncommitted;
    std::uint32_t next; ///< Identifier of the next segment in list A or B, 0 at the end.
    std::uint32_t previous;
    std::uint32_t committedCount;
    std::uint32_t uncommittedCount;
    std::uint32_t highWater; ///< Number of the first page that was never committed.
};

/// Record of a segment that serves a page pool. All zero while it does not, so that a table of them needs no filling.
struct UnitSegment {
    static constexpr std::uint16_t kNoSegment = 0xFFFF;

    std::uint16_t poolNumber;
    std::uint16_t flags;
    std::uint16_t identifierComplement; ///< Stored inverted: kNoSegment is 0 here.
    std::uint16_t freeCount;
    std::byte* nextUnit;
    UnitSegment* next;
    UnitSegment* previous;

    constexpr std::uint16_t identifier() const noexcept {
        return static_cast<std::uint16_t>(kNoSegment ^ identifierComplement);
    }
    constexpr void setIdentifier(std::size_t identifier) noexcept {
        identifierComplement = static_cast<std::uint16_t>(kNoSegment ^ identifier);
    }
};

static_assert(sizeof(Page) == 32 && offsetof(Page, poolNumber) == 28);
static_assert(sizeof(Page) * kPagesPerSegment == kHeaderPages * kPageBytes);
static_assert(sizeof(Segment) <= kHeaderPages * sizeof(Page));
static_assert(offsetof(Segment, next) == 16 && offsetof(Segment, uncommittedCount) == 28);
static_assert(sizeof(UnitSegment) == 32 && offsetof(UnitSegment, nextUnit) == 8);

/// Start of the segment that an address of the reservation lies in.
inline std::byte* segmentStart(const void* address) noexcept {
    return reinterpret_cast<std::byte*>(reinterpret_cast<std::uintptr_t>(address) & ~(kSegmentBytes - 1));
}

inline Segment* segmentHeader(const void* address) noexcept {
    return reinterpret_cast<Segment*>(segmentStart(address));
}

/// The first page of a segment, at or before page `index`, that begins a page of the system.
inline std::size_t systemPageDown(std::size_t index) noexcept {
    return index & ~(TqHeapConfigurator::pagesOfSystemPage - 1);
}

/// The first page of a segment, from page `index` on, that begins a page of the system.
inline std::size_t systemPageUp(std::size_t index) noexcept {
    return systemPageDown(index + TqHeapConfigurator::pagesOfSystemPage - 1);
}

/// Descriptor of page `index` of a block segment.
inline Page* pageAt(std::byte* segment, std::size_t index) noexcept {
    return reinterpret_cast<Page*>(segment) + index;
}

/// Descriptor of the page that an address of a block segment lies in.
inline Page* pageOf(const void* address) noexcept {
    const std::uintptr_t index = reinterpret_cast<std::uintptr_t>(address) / kPageBytes % kPagesPerSegment;
    return pageAt(segmentStart(address), index);
}

/// Start of the page that an address lies in.
inline std::byte* pageStart(const void* address) noexcept {
    return reinterpret_cast<std::byte*>(reinterpret_cast<std::uintptr_t>(address) & ~(kPageBytes - 1));
}

/// Number in its segment of the page that a descriptor stands for.
inline std::size_t pageIndex(const Page& page) noexcept {
    return reinterpret_cast<std::uintptr_t>(&page) % kSegmentBytes / sizeof(Page);
}

inline std::byte* pageAddress(const Page& page) noexcept {
    return segmentStart(&page) + pageIndex(page) * kPageBytes;
}

/// A free unit in free-list mode holds the address of the next one in its first bytes.
inline std::byte* readLink(const std::byte* unit) noexcept {
    const platform::FreeMemoryAccess access(unit, sizeof(std::byte*));
    std::byte* next = nullptr;
    std::memcpy(static_cast<void*>(&next), unit, sizeof next);
    return next;
}

inline void writeLink(std::byte* unit, std::byte* next) noexcept {
    const platform::FreeMemoryAccess access(unit, sizeof next);
    std::memcpy(unit, static_cast<const void*>(&next), sizeof next);
}

} // namespace tq::detail
