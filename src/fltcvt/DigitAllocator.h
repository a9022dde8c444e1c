#pragma once

#include <TqOsBase/fltcvt/TqGdImpl.h>
#include <TqOsBase/memory/Allocation.h>

#include <cassert>
#include <cstdint>
#include <cstring>

/// The allocator behind tqFCvtAllocator. Its blocks, at any time after it is built and before exit:
///   the pool below the cursor is cut into blocks without gaps, each of them in use or on the free list of its class
///   the first seven are the cache of powers of five, in ascending order
extern constinit TqFCvtAllocator __fcvtAlloc;

namespace tq::detail {

/// The first bytes of a block that holds a digit string; the characters follow.
inline constexpr std::size_t kStringOffset = sizeof(std::int32_t);
/// Characters, the terminator included, that the smallest digit string has room for.
inline constexpr int kSmallStringRoom = 28;

/// Bytes of a block.
constexpr std::uint64_t blockBytes(int k) noexcept {
    return (32 + 4 * ((std::uint64_t{1} << k) - 1) + 7) / 8 * 8;
}

/// A fresh block, from the pool or tqMalloc. Throws std::bad_alloc.
Bigint* freshBlock(int k);

inline Bigint* takeBlock(int k) {
    if (static_cast<unsigned>(k) < unsigned{TqFCvtAllocator::kSizeClasses}) [[likely]] {
        Bigint*& head = __fcvtAlloc.m_freeLists[k];
        Bigint* const block = head;
        if (block != nullptr) [[likely]] {
            head = block->next;
            block->sign = 0;
            block->used = 0;
            return block;
        }
    }
    return freshBlock(k);
}

inline void giveBlock(Bigint* block) noexcept {
    assert(block != nullptr && block->k >= 0 && block->capacity == 1 << block->k);
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    const auto start = reinterpret_cast<std::uintptr_t>(__fcvtAlloc.m_pool);
    // The block at the very start, the first power of five, is never freed; so it counts as outside.
    if (address - (start + 1) >= sizeof __fcvtAlloc.m_pool - 1) [[unlikely]] {
        tqFree(block);
        return;
    }
    Bigint*& head = __fcvtAlloc.m_freeLists[block->k];
    block->next = head;
    head = block;
}

inline char* stringIn(Bigint* block) noexcept {
    return reinterpret_cast<char*>(block) + kStringOffset;
}

/// Notes the class of a block that holds a digit string.
inline void markString(Bigint* block, std::int32_t k) noexcept {
    std::memcpy(static_cast<void*>(block), &k, sizeof k);
}

inline char* takeString(int k) {
    Bigint* const block = takeBlock(k);
    markString(block, k);
    return stringIn(block);
}

inline void giveString(char* text) noexcept {
    assert(text != nullptr);
    auto* const block = reinterpret_cast<Bigint*>(text - kStringOffset);
    std::int32_t sizeClass = 0;
    std::memcpy(&sizeClass, text - kStringOffset, sizeof sizeClass);
    block->k = sizeClass;
    block->capacity = static_cast<std::int32_t>(1U << sizeClass);
    giveBlock(block);
}

} // namespace tq::detail
