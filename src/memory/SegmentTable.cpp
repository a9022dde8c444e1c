#include "memory/SegmentTable.h"

#include "platform/VirtualMemory.h"

#include <algorithm>
#include <cassert>

namespace tq::detail {

namespace {

constexpr int kCommitAttempts = 6;

} // namespace

void SegmentTable::create(Reservation reservation) noexcept {
    m_reservation = reservation;
    m_states.fill(kSegmentFree);
    stateOf(0) = 0;
    m_searchHint = (TqHeapConfigurator::kMaxPageId + 1) / 2;
}

// The highest identifier from `from` down whose state is exactly `wanted`; 0 when there is none.
std::size_t SegmentTable::findDown(std::int16_t from, std::uint8_t wanted) const noexcept {
    auto identifier = static_cast<std::size_t>(from);
    while (identifier > 0 && state(identifier) != wanted)
        --identifier;
    return identifier;
}

std::byte* SegmentTable::preallocNewPage(std::uint8_t kind) noexcept {
    constexpr std::int16_t kMaxPageId = TqHeapConfigurator::kMaxPageId;
    std::size_t identifier = findDown(m_searchHint, kSegmentFree);
    if (identifier == 0)
        identifier = findDown(kMaxPageId, kSegmentFree);
    if (identifier != 0) {
        m_searchHint = static_cast<std::int16_t>(identifier - 1);
    } else {
        identifier = findDown(kMaxPageId, kSegmentLastResort);
        if (identifier == 0)
            return nullptr;
        m_searchHint = 0;
    }
    stateOf(identifier) = static_cast<std::uint8_t>(state(identifier) | kSegmentInUse | kind);
    return m_reservation.segmentAddress(identifier);
}

void SegmentTable::release(std::byte* segment, std::size_t held) noexcept {
    const std::size_t identifier = m_reservation.segmentOf(segment);
    assert(segment == segmentStart(segment) && (state(identifier) & kSegmentInUse) != 0);
    stateOf(identifier) = static_cast<std::uint8_t>(state(identifier) & ~(kSegmentInUse | kSegmentOfUnits));
    m_searchHint = std::max(m_searchHint, static_cast<std::int16_t>(identifier));
    platform::makeInaccessible(segment, kSegmentBytes);
    m_waiting.addSegment(identifier, held);
}

// Gives back a sixteenth of the bound more than it has to, so that this is not called for every page.
void SegmentTable::giveBackExcess() noexcept {
    giveBackTo(m_waiting.most() - m_waiting.most() / 16);
}

bool SegmentTable::commit(std::byte* segment, std::size_t from, std::size_t to) noexcept {
    assert(from < to && to <= kPagesPerSegment);
    const std::size_t first = systemPageUp(from) * kPageBytes;
    const std::size_t end = systemPageUp(to) * kPageBytes;
    if (first == end)
        return true;
    for (int attempt = 0; attempt < kCommitAttempts; ++attempt)
        if (platform::makeAccessible(segment + first, end - first))
            return true;
    return false;
}

} // namespace tq::detail
