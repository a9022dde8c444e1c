#include "memory/GiveBackRun.h"

#include "memory/HeapLayout.h"
#include "platform/VirtualMemory.h"

namespace tq::detail {

namespace {

constexpr std::ptrdiff_t kLongestRun = 16 * kPageBytes;

} // namespace

void GiveBackRun::add(std::byte* page) noexcept {
    if (page == m_end && m_begin != nullptr) {
        m_end += kPageBytes;
    } else if (page + kPageBytes == m_begin) {
        m_begin = page;
    } else {
        flush();
        m_begin = page;
        m_end = page + kPageBytes;
    }
    if (m_end - m_begin >= kLongestRun)
        flush();
}

void GiveBackRun::flush(const std::byte* segment) noexcept {
    if (liesIn(segment))
        flush();
}

void GiveBackRun::drop(const std::byte* segment) noexcept {
    if (liesIn(segment))
        m_begin = m_end = nullptr;
}

void GiveBackRun::flush() noexcept {
    if (m_begin != nullptr)
        platform::giveBack(m_begin, static_cast<std::size_t>(m_end - m_begin));
    m_begin = m_end = nullptr;
}

bool GiveBackRun::liesIn(const std::byte* segment) const noexcept {
    return m_begin != nullptr && segmentStart(m_begin) == segment;
}

} // namespace tq::detail
