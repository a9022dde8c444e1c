#pragma once

/// \file
/// A share count that threads may change at once.

#include <atomic>

/// A 32-bit share count that only changes by atomic steps, so that the holders of one record may be on different
/// threads. The data it counts for is not protected by it.
class TqRefCounter {
public:
    /// Starts at `count`.
    constexpr explicit TqRefCounter(int count) noexcept : m_count(count) {}
    TqRefCounter(const TqRefCounter&) = delete;
    TqRefCounter& operator=(const TqRefCounter&) = delete;

    /// One holder more.
    void increment() noexcept { m_count.fetch_add(1, std::memory_order_relaxed); }
    /// One holder less. True for the last one, who has to free what is counted.
    bool decrement() noexcept { return m_count.fetch_sub(1, std::memory_order_acq_rel) == 1; }
    /// The count at this moment.
    operator int() const noexcept { return m_count.load(std::memory_order_acquire); }

private:
    std::atomic<int> m_count;
};

namespace tq::detail {

// The same steps for either kind of counter that a vector record may have. Those of a plain number are atomic too: the
// empty vectors of all threads share one record.
inline void addReference(TqRefCounter& counter) noexcept {
    counter.increment();
}
inline void addReference(int& counter) noexcept {
    __atomic_fetch_add(&counter, 1, __ATOMIC_RELAXED);
}
inline bool decrement(TqRefCounter& counter) noexcept {
    return counter.decrement();
}
inline bool decrement(int& counter) noexcept {
    return __atomic_fetch_sub(&counter, 1, __ATOMIC_ACQ_REL) == 1;
}
inline int referencesOf(const TqRefCounter& counter) noexcept {
    return counter;
}
inline int referencesOf(const int& counter) noexcept {
    return __atomic_load_n(&counter, __ATOMIC_ACQUIRE);
}
// True for the last holder, who has to free the record. The count stays 1 then: nobody else can reach it, and a locked
// step would wait for all that was written before.
template <class Counter>
bool dropReference(Counter& counter) noexcept {
    return referencesOf(counter) == 1 || decrement(counter);
}

} // namespace tq::detail
