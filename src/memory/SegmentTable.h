#pragma once

#include "memory/HeapConfigurator.h"
#include "memory/PendingPages.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tq::detail {

/// Bits of a segment's state. A segment that may be taken has exactly kSegmentFree, or exactly kSegmentLastResort:
/// taken after all others; nothing here produces that one. Segment 0 has no bit, so it is never taken.
enum SegmentState : std::uint8_t {
    kSegmentInUse = 1,
    kSegmentFree = 2,
    kSegmentLastResort = 4,
    kSegmentOfUnits = 8, ///< Beside kSegmentInUse: it serves a page pool. Freeing tells the two kinds apart by it.
};

/// State of a segment that serves block pools, but for one that was taken as the last resort.
inline constexpr std::uint8_t kBlockSegment = kSegmentInUse | kSegmentFree;

/// Which segments of the reservation are in use, and the memory behind them. Of at most kSegmentCount segments each has
/// an accessible front and an inaccessible rest, so the heap takes at most two mappings per segment, far below the
/// system's limit, whatever the pattern of frees.
class SegmentTable {
public:
    constexpr SegmentTable() noexcept = default;

    /// Marks every segment but number 0 as free.
    void create() noexcept;

    /// Finds a free segment and marks it as in use, with `kind` (0 or kSegmentOfUnits) beside it; none of it is
    /// accessible yet. Null when all are taken.
    std::byte* preallocNewPage(std::uint8_t kind) noexcept;
    /// Makes a segment inaccessible and free again.
    void release(std::byte* segment) noexcept;

    /// Makes pages [from, to) of a segment in use readable and writable, as those before them are already; false when
    /// the system refuses several times.
    static bool commit(std::byte* segment, std::size_t from, std::size_t to) noexcept;
    /// Gives the memory of a free page back, now or later, together with that of others.
    void giveBackPage(Page& page) noexcept { m_pending.add(page); }

    /// State of the segment with an identifier of 0 to kMaxPageId.
    std::uint8_t state(std::size_t identifier) const noexcept {
        return m_states[identifier - static_cast<std::size_t>(TqHeapConfigurator::mOffSetId)];
    }
    std::int16_t searchHint() const noexcept { return m_searchHint; }
    const PendingPages& pending() const noexcept { return m_pending; }

private:
    std::uint8_t& stateOf(std::size_t identifier) noexcept {
        return m_states[identifier - static_cast<std::size_t>(TqHeapConfigurator::mOffSetId)];
    }
    std::size_t findDown(std::int16_t from, std::uint8_t wanted) const noexcept;

    std::int16_t m_searchHint = 0; ///< Where the next search for a free segment starts, going down.
    std::array<std::uint8_t, kSegmentCount> m_states{};
    PendingPages m_pending;
};

} // namespace tq::detail
