#pragma once

#include <atomic>
#include <pthread.h>

// The beginnings and ends that a piece of state of one thread has to know of.
namespace tq::platform {

// A variable of each thread that is reached by one addition to the thread's own register. Only the GNU C library keeps
// room for such variables of libraries that are loaded later; elsewhere the compiler's usual way has to do.
#if defined(__GLIBC__)
#define TQ_NEAR_THREAD_LOCAL __attribute__((tls_model("initial-exec"), visibility("hidden")))
#else
#define TQ_NEAR_THREAD_LOCAL __attribute__((visibility("hidden")))
#endif

/// Reports the ends of threads that ask for it. Usable before its constructor would have run; nothing is destroyed.
class ThreadEnds {
public:
    constexpr ThreadEnds() noexcept = default;

    /// From now on `ended` is called in every thread that ends after expect(), after the destructors of its
    /// thread-local objects. Not called when main returns or the process exits, nor where the system has no room for
    /// that.
    void watch(void (*ended)()) noexcept;
    /// Whether the end of the calling thread is reported, once.
    void expect(bool isExpected) noexcept;
    /// Ends what watch() began.
    void unwatch() noexcept;

private:
    ::pthread_key_t m_key{};
    std::atomic<bool> m_hasKey{false}; ///< Threads may ask while the process exits.
    void (*m_ended)() = nullptr;
};

/// From now on fork() calls `before` first and `inParent` last, in the thread that calls it, and `inChild` in the one
/// thread of the new process before it returns there. Any of them may be null.
void watchForks(void (*before)(), void (*inParent)(), void (*inChild)()) noexcept;

} // namespace tq::platform
