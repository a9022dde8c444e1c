#include "memory/PendingPages.h"

#include "platform/VirtualMemory.h"

#include <algorithm>

namespace tq::detail {

void PendingPages::add(Page& page) noexcept {
    page.flags = kPending;
    m_pages[m_count++] = &page;
    if (m_count == kMost)
        flush();
}

void PendingPages::drop(const std::byte* segment) noexcept {
    const auto end = m_pages.begin() + static_cast<std::ptrdiff_t>(m_count);
    const auto kept = std::remove_if(m_pages.begin(), end, [=](const Page* p) { return segmentStart(p) == segment; });
    m_count = static_cast<std::size_t>(kept - m_pages.begin());
}

// Descriptors lie in the order of their pages, and none at the end of a segment is next to one of another.
void PendingPages::flush() noexcept {
    const auto end = m_pages.begin() + static_cast<std::ptrdiff_t>(m_count);
    std::sort(m_pages.begin(), end);
    for (auto it = m_pages.begin(); it != end;) {
        Page* const first = *it;
        Page* last = first;
        for (; it != end && *it == last && last->flags == kPending; ++it, ++last)
            last->flags = 0;
        if (last != first)
            platform::giveBack(pageAddress(*first), static_cast<std::size_t>(last - first) * kPageBytes);
        else
            ++it; // used again since, or there twice
    }
    m_count = 0;
}

} // namespace tq::detail
