#include "memory/WaitingMemory.h"

#include "platform/VirtualMemory.h"

#include <algorithm>

namespace tq::detail {

namespace {

// A page of the system may hold several of the heap's. It goes back when all of these are on the uncommitted list and
// at least one of them waits; until then it stays, and the last one to come here takes it along.
void giveBackPages(std::byte* segment) noexcept {
    const std::size_t step = TqHeapConfigurator::pagesOfSystemPage;
    std::size_t start = 0; // of the run that goes back, up to the page at hand
    for (std::size_t first = 0; first <= kPagesPerSegment; first += step) {
        bool goesBack = false;
        bool isFree = first >= kHeaderPages && first != kPagesPerSegment;
        for (std::size_t i = std::max(first, kHeaderPages); i < std::min(first + step, kPagesPerSegment); ++i) {
            Page& page = *pageAt(segment, i);
            isFree = isFree && (page.flags & kUncommitted) != 0;
            goesBack = goesBack || (page.flags & kWaiting) != 0;
            page.flags = static_cast<std::uint16_t>(page.flags & ~kWaiting);
        }
        if (isFree && goesBack)
            continue;
        if (start < first)
            platform::giveBack(segment + start * kPageBytes, (first - start) * kPageBytes);
        start = first + step;
    }
}

} // namespace

void WaitingMemory::giveBackTo(std::size_t target, const SegmentStates& states,
                               const Reservation& reservation) noexcept {
    for (std::size_t id = m_lowest; m_total > target && m_released > 0; ++id)
        if ((states[id] & kSegmentInUse) == 0 && takeSegment(id) != 0)
            platform::giveBack(reservation.segmentAddress(id), kSegmentBytes);
    for (; m_total > target; ++m_lowest) {
        if (m_pages[m_lowest] == 0)
            continue;
        giveBackPages(reservation.segmentAddress(m_lowest)); // those of page pools have none that wait
        removePages(m_lowest, m_pages[m_lowest]);
    }
}

} // namespace tq::detail
