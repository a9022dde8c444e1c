#pragma once

#include "platform/MemoryMarks.h"

#include <cstddef>
#include <cstdint>

#if defined(__has_feature)
#define TQ_BUILT_WITH_TSAN __has_feature(thread_sanitizer)
#elif defined(__SANITIZE_THREAD__)
#define TQ_BUILT_WITH_TSAN 1
#else
#define TQ_BUILT_WITH_TSAN 0
#endif

namespace tq::platform {

/// Whether the program runs in valgrind. False until the library is initialised.
[[gnu::visibility("hidden")]] extern const bool kRunsInValgrind;

/// Whether `size` bytes from `text` on may be read although the text may end before. What lies in the page of a byte
/// that may be read, may be read too; but checkers of memory and threads have stricter rules, so not where one watches.
/// The system's pages may be larger than the ones counted with here; no page of 4096 bytes lies in two of them.
inline bool mayReadBehind(const void* text, std::size_t size) noexcept {
    constexpr std::uintptr_t kPageBytes = 4096;
    constexpr bool kIsChecked = kMarksMemory || TQ_BUILT_WITH_TSAN != 0;
    return !kIsChecked && reinterpret_cast<std::uintptr_t>(text) % kPageBytes <= kPageBytes - size && !kRunsInValgrind;
}

} // namespace tq::platform
