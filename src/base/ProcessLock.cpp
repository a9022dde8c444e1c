#include "base/ProcessLock.h"

#include "platform/ThreadLife.h"

#include <atomic>
#include <mutex>
#include <thread>

namespace tq::detail {

namespace {

// Never destroyed: static objects of the program may call in while their destructors run.
union Lasting {
    constexpr Lasting() noexcept : mutex() {}
    ~Lasting() {}

    std::mutex mutex;
};
constinit Lasting g_lock;
// Of the thread that holds the mutex, else that of no thread. Only the holder finds its own id here.
std::atomic<std::thread::id> g_holder;
int g_depth = 0; // how often the holder has taken it
bool g_isWatchingForks = false;

void unlock() {
    if (--g_depth != 0)
        return;
    g_holder.store(std::thread::id(), std::memory_order_relaxed);
    g_lock.mutex.unlock();
}

void lock() {
    const std::thread::id caller = std::this_thread::get_id();
    if (g_holder.load(std::memory_order_relaxed) != caller) {
        g_lock.mutex.lock();
        g_holder.store(caller, std::memory_order_relaxed);
    }
    ++g_depth;
    if (!g_isWatchingForks) {
        g_isWatchingForks = true;
        platform::watchForks(lock, unlock, unlock); // a child's one thread is still the holder
    }
}

} // namespace

ProcessLock::ProcessLock() {
    lock();
}

ProcessLock::~ProcessLock() {
    unlock();
}

} // namespace tq::detail
