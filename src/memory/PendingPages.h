#pragma once

#include "memory/HeapLayout.h"

#include <array>
#include <cstddef>

namespace tq::detail {

/// Free pages whose memory is yet to be given back to the system. Pages come back one at a time, and many are wanted
/// again soon: collected, adjacent ones take one system call, and those that are used before take none. A page that
/// waits has kPending in its descriptor; whoever uses it again clears that, and is done.
class PendingPages {
public:
    /// All pages are given back when this many were added.
    static constexpr std::size_t kMost = 256;

    /// Adds a page that comes onto its segment's uncommitted list, and marks it so.
    void add(Page& page) noexcept {
        page.flags = kPending | kUncommitted;
        m_pages[m_count++] = &page;
        if (m_count == kMost) [[unlikely]]
            flush();
    }
    /// Forgets the pages of `segment`, which is given back as a whole.
    void drop(const std::byte* segment) noexcept;

    /// Pages added since memory was last given back, some of them used again since, or added twice.
    std::size_t count() const noexcept { return m_count; }
    const Page& operator[](std::size_t index) const noexcept { return *m_pages[index]; }

private:
    void flush() noexcept;

    std::array<Page*, kMost> m_pages{};
    std::size_t m_count = 0;
};

} // namespace tq::detail
