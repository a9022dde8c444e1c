#pragma once

#include <cstddef>

#if defined(__has_feature)
#define TQ_BUILT_WITH_ASAN __has_feature(address_sanitizer)
#elif defined(__SANITIZE_ADDRESS__)
#define TQ_BUILT_WITH_ASAN 1
#else
#define TQ_BUILT_WITH_ASAN 0
#endif

#if TQ_BUILT_WITH_ASAN
#include <sanitizer/asan_interface.h>
#elif defined(TQ_VALGRIND)
#include <valgrind/memcheck.h>
#include <valgrind/valgrind.h>
#endif

// What the pools tell the memory checkers, so that a use of free memory is reported where it happens. In builds with
// AddressSanitizer, and in those with TQ_VALGRIND for memcheck; in all others nothing here costs anything.
namespace tq::platform {

#if TQ_BUILT_WITH_ASAN
inline constexpr bool kMarksMemory = true;
#elif defined(TQ_VALGRIND)
inline constexpr bool kMarksMemory = true;
#else
inline constexpr bool kMarksMemory = false;
#endif

/// The memory holds no block: any use of it is an error.
inline void markFree([[maybe_unused]] const void* memory, [[maybe_unused]] std::size_t size) noexcept {
#if TQ_BUILT_WITH_ASAN
    ASAN_POISON_MEMORY_REGION(memory, size);
#elif defined(TQ_VALGRIND)
    VALGRIND_MAKE_MEM_NOACCESS(memory, size);
#endif
}

/// The memory is the heap's own.
inline void markUsed([[maybe_unused]] const void* memory, [[maybe_unused]] std::size_t size) noexcept {
#if TQ_BUILT_WITH_ASAN
    ASAN_UNPOISON_MEMORY_REGION(memory, size);
#elif defined(TQ_VALGRIND)
    VALGRIND_MAKE_MEM_DEFINED(memory, size);
#endif
}

/// The memory, which was free, is handed out as a block.
inline void markHandedOut([[maybe_unused]] const void* block, [[maybe_unused]] std::size_t size) noexcept {
#if TQ_BUILT_WITH_ASAN
    ASAN_UNPOISON_MEMORY_REGION(block, size);
#elif defined(TQ_VALGRIND)
    VALGRIND_MALLOCLIKE_BLOCK(block, size, 0, 0);
#endif
}

/// The block comes back and is free from here on. One that was free already is reported.
inline void markGivenBack([[maybe_unused]] const void* block, [[maybe_unused]] std::size_t size) noexcept {
#if TQ_BUILT_WITH_ASAN
    [[maybe_unused]] const char seen = *static_cast<const volatile char*>(block);
    ASAN_POISON_MEMORY_REGION(block, size);
#elif defined(TQ_VALGRIND)
    VALGRIND_FREELIKE_BLOCK(block, 0);
#endif
}

/// Lets the heap itself read and write free memory while the object lives.
class FreeMemoryAccess {
public:
    FreeMemoryAccess(const void* memory, std::size_t size) noexcept : m_memory(memory), m_size(size) {
        markUsed(m_memory, m_size);
    }
    FreeMemoryAccess(const FreeMemoryAccess&) = delete;
    FreeMemoryAccess& operator=(const FreeMemoryAccess&) = delete;
    ~FreeMemoryAccess() { markFree(m_memory, m_size); }

private:
    const void* m_memory;
    std::size_t m_size;
};

} // namespace tq::platform
