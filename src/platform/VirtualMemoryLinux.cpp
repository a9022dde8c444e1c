#include "platform/VirtualMemoryFlags.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

// Older C libraries do not name the flag; kernels that do not know it take the address as a hint.
int tq::platform::noReplaceFlag() noexcept {
#if defined(MAP_FIXED_NOREPLACE)
    return MAP_FIXED_NOREPLACE;
#else
    return 0x100000;
#endif
}

int tq::platform::giveBackAdvice() noexcept {
    return MADV_DONTNEED;
}

// Kernels before 6.13 know the call for other processes only.
bool tq::platform::giveBackAtOnce([[maybe_unused]] std::span<const PageRun> runs) noexcept {
    bool isDone = false;
#if defined(SYS_process_madvise)
    constexpr int kOwnProcess = -10000; // PIDFD_SELF, which older headers lack
    static std::atomic<bool> isRefused = false;
    if (isRefused.load(std::memory_order_relaxed))
        return false;
    std::array<::iovec, kMostPageRuns> vectors;
    std::size_t total = 0;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        vectors[i] = {runs[i].address, runs[i].size};
        total += runs[i].size;
    }
    const int before = errno;
    const long done = ::syscall(SYS_process_madvise, kOwnProcess, vectors.data(), runs.size(), giveBackAdvice(), 0);
    if (done < 0)
        isRefused.store(true, std::memory_order_relaxed);
    errno = before;
    isDone = done == static_cast<long>(total);
#endif
    return isDone;
}
