#pragma once

// The beginnings and ends that a piece of state of one thread has to know of.
namespace tq::platform {

// A variable of each thread that is reached by one addition to the thread's own register. Only the GNU C library keeps
// room for such variables of libraries that are loaded later; elsewhere the compiler's usual way has to do.
#if defined(__GLIBC__)
#define TQ_NEAR_THREAD_LOCAL __attribute__((tls_model("initial-exec"), visibility("hidden")))
#else
#define TQ_NEAR_THREAD_LOCAL __attribute__((visibility("hidden")))
#endif

/// From now on `ended` is called in every thread that ends after expectThreadEnd(), after the destructors of its
/// thread-local objects. Not called when main returns or the process exits. Returns false when the system has no room
/// for that: it is never called then.
bool watchThreadEnds(void (*ended)()) noexcept;

/// Whether the end of the calling thread is reported, once.
void expectThreadEnd(bool isExpected) noexcept;

/// Ends what watchThreadEnds() began.
void unwatchThreadEnds() noexcept;

/// From now on `inChild` is called in every process that fork() makes, by its one thread, before fork() returns there.
void watchForks(void (*inChild)()) noexcept;

} // namespace tq::platform
