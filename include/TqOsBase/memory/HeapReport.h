#pragma once

/// \file
/// What the heap holds at one moment, as numbers, text and picture.

#include <TqOsBase/Export.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tq {

/// What the global heap holds at one moment: which memory it has, and what its pools made of it. Blocks of the C
/// library, which serves the sizes between the pools', and of other threads' heaps are not part of it.
struct HeapReport {
    static constexpr std::size_t kPageBytes = 4096;      ///< Size of a page, whatever the system's is.
    static constexpr std::size_t kPagesPerSegment = 256; ///< A segment is 1 MiB.

    /// A pool that owns memory. Block pools cut blocks from pages; page pools cut units of whole pages from segments.
    struct Pool {
        bool servesPages;       ///< A page pool.
        int number;             ///< Its number among the pools of its kind.
        std::size_t unitBytes;  ///< Size of each of its blocks or units.
        std::size_t pages;      ///< Pages that it owns; those of a page pool are 256 for each of its segments.
        std::size_t usedBlocks; ///< Blocks that are handed out.
        std::size_t freeBlocks; ///< Blocks of its pages that are not.
        /// Bytes that were asked for. Only units of pages are always as large as asked: blocks are rounded up to the
        /// unit, and the heap does not keep what was asked, so for a block pool there is no value.
        std::optional<std::size_t> askedBytes;
    };

    /// What a page is there for.
    enum class PageState : std::uint8_t {
        kHeader,    ///< Holds the descriptors of the segment's pages.
        kUntouched, ///< Was not committed since its segment was taken into use.
        kGivenBack, ///< Free; its memory went back to the system, or does once all in the system's page are free.
        kWaiting,   ///< Free; its memory waits to be used again, or given back.
        kReserve,   ///< Free, with its memory, for the next pool that needs a page.
        kInPool,    ///< Belongs to a pool.
    };

    /// One page of a segment.
    struct Page {
        PageState state;     ///< What it is there for.
        std::uint16_t pool;  ///< Number of the pool of a page in one, otherwise 0.
        std::uint16_t used;  ///< Blocks of it in use; for a page of a page pool 1 when its unit is.
        std::uint16_t total; ///< Blocks that it holds, used or free; for a page of a page pool 1.
    };

    /// A segment in use.
    struct Segment {
        std::size_t number;                       ///< Its place in the reservation.
        bool servesPages;                         ///< All of it belongs to one page pool.
        std::size_t resident;                     ///< Its bytes that hold memory.
        std::array<Page, kPagesPerSegment> pages; ///< All of them, by address.
    };

    std::uintptr_t address = 0;     ///< Start of the reservation, 0 when there are no pools.
    std::size_t reservedBytes = 0;  ///< Address space.
    std::size_t committedBytes = 0; ///< Headers, pages in pools, and pages kept in reserve.
    std::size_t residentBytes = 0;  ///< What of the segments in use holds memory, as the system tells; else 0.
    std::vector<Pool> pools;        ///< Those that own memory: block pools, then page pools, by number.
    std::vector<Segment> segments;  ///< Those in use, by number.
    std::size_t waitingBytes = 0;   ///< Free memory that is not given back yet, that of released segments included.
};

/// Takes a snapshot of the global heap, which costs nothing while this is not called. Empty while the heap has no
/// pools: after it is torn down, and where its address space cannot be had. Time in proportion to the segments in use
/// and to the free units of page pools. Throws std::bad_alloc.
///
/// The report is of the heap that the first thread to allocate owns; the heaps of other threads are not part of it. May
/// be called from any thread. While another thread owns that heap, `address` and `reservedBytes` are all that the
/// report says. Blocks of the heap that other threads freed count as used until the owner has taken them in.
TQ_API HeapReport heapReport();

/// The report as lines of text: the totals, then a table of the pools. Ends with a newline.
TQ_API std::string heapReportText(const HeapReport& report);

/// The report as a picture, an SVG document of its own: a row for each segment, a cell for each of its pages, coloured
/// by state, those in pools by how full they are; the pool and the blocks in use show under the pointer.
TQ_API std::string heapReportSvg(const HeapReport& report);

} // namespace tq
