#pragma once

#include "memory/HeapLayout.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace tq::detail {

/// The free memory that waits before it goes back to the system, because much of it is wanted again soon: free pages of
/// segments in use, and segments that were released, which are inaccessible meanwhile. Counted in pages, with w(k)
/// those of segment k that wait, r the sum of w(k) of released segments, u the pages in use, m the pages that wait:
///   w(k) == number of pages with kWaiting          segment k in use by block pools
///   w(k) == 0                                      segment k in use by a page pool
///   w(k) >= pages of it that hold memory           segment k released
///   u    == pages in block pools + 256 * segments in use by page pools
///   m    == sum of w(k) <= most() == clamp(u / 2, 4 MiB, 64 MiB)
/// Where m would exceed most(), memory goes back: first whole released segments, then runs of pages, the lowest first,
/// because the heap takes the highest first.
class WaitingMemory {
public:
    static constexpr std::size_t kLeastBound = (std::size_t{4} << 20) / kPageBytes;
    static constexpr std::size_t kGreatestBound = (std::size_t{64} << 20) / kPageBytes;

    constexpr WaitingMemory() noexcept = default;

    /// Pages that are put to use.
    void use(std::size_t count) noexcept { m_inUse += count; }
    /// Pages that are in use no more. The bound may be exceeded until settle().
    void unuse(std::size_t count) noexcept {
        assert(count <= m_inUse);
        m_inUse -= count;
    }
    /// A page that comes onto the segment's uncommitted list with its memory; it is marked so.
    void add(Page& page, std::size_t identifier) noexcept {
        page.flags = kWaiting | kUncommitted;
        addPages(identifier, 1);
    }
    /// A page that leaves that list.
    void remove(Page& page, std::size_t identifier) noexcept {
        if ((page.flags & kWaiting) != 0)
            removePages(identifier, 1);
        page.flags = 0;
    }
    /// A segment is in use no more, and `count` pages of it hold memory.
    void addSegment(std::size_t identifier, std::size_t count) noexcept {
        removePages(identifier, m_pages[identifier]);
        addPages(identifier, count);
        m_released += count;
    }
    /// A segment is put to use again: returns w(k) and makes it 0.
    std::size_t takeSegment(std::size_t identifier) noexcept {
        const std::size_t count = m_pages[identifier];
        removePages(identifier, count);
        m_released -= count;
        return count;
    }
    /// Pages of a segment in use get kWaiting.
    void addPages(std::size_t identifier, std::size_t count) noexcept {
        m_pages[identifier] = static_cast<std::uint16_t>(m_pages[identifier] + count);
        m_total += count;
        assert(m_pages[identifier] <= kPagesPerSegment);
        m_lowest = std::min(m_lowest, identifier);
    }

    std::size_t inUse() const noexcept { return m_inUse; }
    std::size_t total() const noexcept { return m_total; }
    std::size_t released() const noexcept { return m_released; }
    std::size_t lowest() const noexcept { return m_lowest; }
    std::size_t most() const noexcept { return std::clamp(m_inUse / 2, kLeastBound, kGreatestBound); }
    std::size_t pagesOf(std::size_t identifier) const noexcept { return m_pages[identifier]; }

    /// Gives memory back until at most `target` pages wait.
    void giveBackTo(std::size_t target, const SegmentStates& states, const Reservation& reservation) noexcept;

private:
    void removePages(std::size_t identifier, std::size_t count) noexcept {
        assert(count <= m_pages[identifier]);
        m_pages[identifier] = static_cast<std::uint16_t>(m_pages[identifier] - count);
        m_total -= count;
    }

    std::array<std::uint16_t, kSegmentCount> m_pages{}; ///< w(k)
    std::size_t m_total = 0;                            ///< m
    std::size_t m_released = 0;                         ///< Those among them in segments that are not in use.
    std::size_t m_inUse = 0;                            ///< u
    std::size_t m_lowest = 0;                           ///< w(k) == 0 for every k below.
};

} // namespace tq::detail
