#include "memory/PendingPages.h"

#include "platform/VirtualMemory.h"

#include <algorithm>

namespace tq::detail {

namespace {

// Gives back the memory of `count` pages of a segment. A page of the system that they share with others goes too if
// those hold nothing either; else it stays until the last of them comes here.
void giveBackPages(const Page& page, std::size_t count) noexcept {
    std::byte* const segment = segmentStart(&page);
    const std::size_t from = pageIndex(page);
    const std::size_t to = from + count;
    const auto holdNothing = [segment](std::size_t first, std::size_t last) {
        return first >= kHeaderPages &&
               std::all_of(pageAt(segment, first), pageAt(segment, last),
                           [](const Page& other) { return (other.flags & kUncommitted) != 0; });
    };
    std::size_t start = systemPageDown(from);
    if (!holdNothing(start, from))
        start = systemPageUp(from);
    std::size_t end = systemPageUp(to);
    if (!holdNothing(to, end))
        end = systemPageDown(to);
    if (start < end)
        platform::giveBack(segment + start * kPageBytes, (end - start) * kPageBytes);
}

} // namespace

void PendingPages::drop(const std::byte* segment) noexcept {
    const auto end = m_pages.begin() + static_cast<std::ptrdiff_t>(m_count);
    const auto kept = std::remove_if(m_pages.begin(), end, [=](const Page* p) { return segmentStart(p) == segment; });
    m_count = static_cast<std::size_t>(kept - m_pages.begin());
}

// Descriptors lie in the order of their pages, and none at the end of a segment is next to one of another. A page that
// was used again and came back is there twice.
void PendingPages::flush() noexcept {
    const auto end = m_pages.begin() + static_cast<std::ptrdiff_t>(m_count);
    std::sort(m_pages.begin(), end);
    for (auto it = m_pages.begin(); it != end;) {
        Page* const first = *it;
        Page* last = first;
        for (; it != end && (*it < last || (*it == last && (last->flags & kPending) != 0)); ++it)
            if (*it == last)
                (last++)->flags = kUncommitted;
        if (last != first)
            giveBackPages(*first, static_cast<std::size_t>(last - first));
        else
            ++it; // in use again
    }
    m_count = 0;
}

} // namespace tq::detail
