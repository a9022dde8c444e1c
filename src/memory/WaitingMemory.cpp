#include "memory/WaitingMemory.h"

#include "platform/VirtualMemory.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tq::detail {

namespace {

// Runs of pages that go back together.
class RunsToGiveBack {
public:
    RunsToGiveBack() = default;
    RunsToGiveBack(const RunsToGiveBack&) = delete;
    RunsToGiveBack& operator=(const RunsToGiveBack&) = delete;
    ~RunsToGiveBack() { giveBack(); }
    void add(std::byte* start, std::size_t size) noexcept {
        if (m_count == m_runs.size())
            giveBack();
        m_runs[m_count++] = {start, size};
    }

private:
    void giveBack() noexcept { platform::giveBack({m_runs.data(), std::exchange(m_count, 0)}); }

    std::array<platform::PageRun, platform::kMostPageRuns> m_runs;
    std::size_t m_count = 0;
};

// A page of the system may hold several of the heap's. It goes back when all of these are on the uncommitted list and
// at least one of them waits; until then it stays, and the last one to come here takes it along.
void giveBackPages(std::byte* segment, RunsToGiveBack& runs) noexcept {
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
            runs.add(segment + start * kPageBytes, (first - start) * kPageBytes);
        start = first + step;
    }
}

} // namespace

void WaitingMemory::giveBackTo(std::size_t target, const SegmentStates& states,
                               const Reservation& reservation) noexcept {
    RunsToGiveBack runs;
    for (std::size_t id = m_lowest; m_total > target && m_released > 0; ++id)
        if ((states[id] & kSegmentInUse) == 0 && takeSegment(id) != 0)
            runs.add(reservation.segmentAddress(id), kSegmentBytes);
    for (; m_total > target; ++m_lowest) {
        if (m_pages[m_lowest] == 0)
            continue;
        giveBackPages(reservation.segmentAddress(m_lowest), runs); // those of page pools have none that wait
        removePages(m_lowest, m_pages[m_lowest]);
    }
}

} // namespace tq::detail
