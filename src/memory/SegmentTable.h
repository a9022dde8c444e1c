#pragma once

#include "memory/HeapConfigurator.h"
#include "memory/WaitingMemory.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tq::detail {

/// Which segments of the reservation are in use, and their memory. Of at most kSegmentCount segments each has an
/// accessible front and an inaccessible rest, so the heap takes at most two mappings per segment, far below the
/// system's limit, whatever the pattern of frees.
class SegmentTable {
public:
    constexpr SegmentTable() noexcept = default;

    /// Marks every segment of the reservation but number 0 as free.
    void create(Reservation reservation) noexcept;

    /// Finds a free segment and marks it as in use, with `kind` (0 or kSegmentOfUnits) beside it; none of it is
    /// accessible yet. Null when all are taken.
    std::byte* preallocNewPage(std::uint8_t kind) noexcept;
    /// Makes a segment inaccessible and free again. `held` of its pages hold memory, which waits.
    void release(std::byte* segment, std::size_t held) noexcept;

    /// Makes pages [from, to) of a segment in use readable and writable, as those before them are already; false when
    /// the system refuses several times.
    static bool commit(std::byte* segment, std::size_t from, std::size_t to) noexcept;
    /// Gives waiting memory back as far as it exceeds its bound. To be called after pages came back or were released.
    void settle() noexcept {
        if (m_waiting.total() > m_waiting.most()) [[unlikely]]
            giveBackExcess();
    }
    /// Gives all waiting memory back.
    void trim() noexcept { giveBackTo(0); }

    const Reservation& reservation() const noexcept { return m_reservation; }
    /// State of the segment with an identifier of 0 to kMaxPageId.
    std::uint8_t state(std::size_t identifier) const noexcept {
        return m_states[identifier - static_cast<std::size_t>(TqHeapConfigurator::mOffSetId)];
    }
    std::int16_t searchHint() const noexcept { return m_searchHint; }
    WaitingMemory& waiting() noexcept { return m_waiting; }
    const WaitingMemory& waiting() const noexcept { return m_waiting; }

private:
    std::uint8_t& stateOf(std::size_t identifier) noexcept {
        return m_states[identifier - static_cast<std::size_t>(TqHeapConfigurator::mOffSetId)];
    }
    std::size_t findDown(std::int16_t from, std::uint8_t wanted) const noexcept;
    void giveBackExcess() noexcept;
    void giveBackTo(std::size_t target) noexcept { m_waiting.giveBackTo(target, m_states, m_reservation); }

    Reservation m_reservation;
    std::int16_t m_searchHint = 0; ///< Where the next search for a free segment starts, going down.
    SegmentStates m_states{};
    WaitingMemory m_waiting;
};

} // namespace tq::detail
