#pragma once

#include "platform/ThreadLife.h"

#include <TqOsBase/fltcvt/TqGdImpl.h>
#include <TqOsBase/memory/Allocation.h>

#include <atomic>
#include <cassert>
#include <cstdint>
#include <cstring>

/// The allocator behind tqFCvtAllocator. Its blocks, at any time after it is built and before exit:
///   the pool below the cursor is cut into blocks without gaps, each of them in use or on the free list of its class
///   the first seven are the cache of powers of five, in ascending order
///
/// Threads. Pool and free lists have one owner, who alone reads and writes them: the first thread that takes a block,
/// until it ends; then the next that does. Every other thread takes its blocks from tqMalloc. What it frees of the
/// pool's waits in a list without a lock, which the owner takes in when the free list of a class has no block.
extern constinit TqFCvtAllocator __fcvtAlloc;

namespace tq::detail {

/// Whether the calling thread owns the pool.
extern constinit thread_local bool t_ownsDigitBlocks TQ_NEAR_THREAD_LOCAL;

/// The first bytes of a block that holds a digit string; the characters follow.
inline constexpr std::size_t kStringOffset = sizeof(std::int32_t);
/// Characters, the terminator included, that the smallest digit string has room for.
inline constexpr int kSmallStringRoom = 28;

/// Bytes of a block.
constexpr std::uint64_t blockBytes(int k) noexcept {
    return (32 + 4 * ((std::uint64_t{1} << k) - 1) + 7) / 8 * 8;
}

/// A block where the calling thread has none of the class at hand: one that other threads have freed, else a fresh one
/// from the pool or tqMalloc. Throws std::bad_alloc.
Bigint* freshBlock(int k);

/// Frees a block of class k that is not the pool's, or in a thread that does not own the pool.
void giveElsewhere(Bigint* block, std::int32_t k) noexcept;

/// Whether the pool holds a block. The one at its very start, the first power of five, is never freed; so it counts as
/// outside.
inline bool isOfPool(const Bigint* block) noexcept {
    const auto start = reinterpret_cast<std::uintptr_t>(__fcvtAlloc.m_pool);
    return reinterpret_cast<std::uintptr_t>(block) - (start + 1) < sizeof __fcvtAlloc.m_pool - 1;
}

/// Makes a block of class k a number without words. A digit string overwrites what it sets; once freed, such a block
/// has its class again, but not the rest.
inline void beginBlock(Bigint* block, std::int32_t k) noexcept {
    block->k = k;
    block->capacity = static_cast<std::int32_t>(1U << k);
    block->sign = 0;
    block->used = 0;
}

/// The block at the head of a class's free list, or null; null for every thread but the owner.
inline Bigint* blockAtHand(int k) noexcept {
    return t_ownsDigitBlocks ? __fcvtAlloc.m_freeLists[k] : nullptr;
}

inline Bigint* takeBlock(int k) {
    if (static_cast<unsigned>(k) < unsigned{TqFCvtAllocator::kSizeClasses}) [[likely]] {
        Bigint* const block = blockAtHand(k);
        if (block != nullptr) [[likely]] {
            __fcvtAlloc.m_freeLists[k] = block->next;
            beginBlock(block, k);
            return block;
        }
    }
    return freshBlock(k);
}

/// Frees a block of class k.
inline void giveBlock(Bigint* block, std::int32_t k) noexcept {
    assert(block != nullptr && k >= 0);
    if (!isOfPool(block) || !t_ownsDigitBlocks) [[unlikely]] {
        giveElsewhere(block, k);
        return;
    }
    Bigint*& head = __fcvtAlloc.m_freeLists[k];
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
    giveBlock(block, sizeClass);
}

} // namespace tq::detail
