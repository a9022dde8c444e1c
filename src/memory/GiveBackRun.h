#pragma once

#include <cstddef>

namespace tq::detail {

/// Adjacent pages whose memory is to be given back to the system in one call. Pages come back one at a time; giving
/// them back so would cost a system call each. What is pending stays within one segment: no page of the heap adjoins
/// one of another segment, whose first pages are never free.
class GiveBackRun {
public:
    /// Adds a page; what is pending is given back first when the page does not adjoin it, and with it when the run has
    /// reached its greatest length.
    void add(std::byte* page) noexcept;
    /// Gives back what is pending in `segment`; to be called before a page of it is used again.
    void flush(const std::byte* segment) noexcept;
    /// Forgets what is pending in `segment`, which is given back as a whole.
    void drop(const std::byte* segment) noexcept;

    const std::byte* begin() const noexcept { return m_begin; }
    const std::byte* end() const noexcept { return m_end; }

private:
    void flush() noexcept;
    bool liesIn(const std::byte* segment) const noexcept;

    std::byte* m_begin = nullptr; ///< Null when nothing is pending.
    std::byte* m_end = nullptr;
};

} // namespace tq::detail
