#pragma once

/// \file
/// Where a vector's slots come from and how it grows.

#include <TqOsBase/memory/Allocation.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <new>

/// Slots of a vector from the global array new and delete; uninitialised for trivial elements.
template <class T>
struct TqDefaultMemAllocator {
    /// `count` slots; throws std::bad_alloc.
    static T* allocate(int count) { return new T[static_cast<std::size_t>(count)]; }
    /// Gives slots back.
    static void release(T* slots, int /*physicalLength*/) noexcept { delete[] slots; }
};

/// Slots of a vector from tqMalloc and tqFree.
template <class T>
struct TqDelegateMemAllocator {
    /// `count` slots; throws std::bad_alloc, also when tqMalloc refuses the size (above 2 GiB).
    static T* allocate(int count) {
        void* slots = tqMalloc(static_cast<std::size_t>(count) * sizeof(T));
        if (slots == nullptr)
            throw std::bad_alloc();
        return static_cast<T*>(slots);
    }
    /// Moves slots to a block for `count` of them, in place where the system can; the elements that fit are kept.
    /// Throws std::bad_alloc and leaves them as they were.
    static T* resize(T* slots, int count) {
        void* moved = tqRealloc(slots, static_cast<std::size_t>(count) * sizeof(T));
        if (moved == nullptr)
            throw std::bad_alloc();
        return static_cast<T*>(moved);
    }
    /// Gives slots back; nothing without any.
    static void release(T* slots, int physicalLength) noexcept {
        if (physicalLength > 0)
            tqFree(slots);
    }
};

namespace tq::detail {

// A computed capacity as a vector can hold it. What was asked for always fits, so cutting at the top loses only slack.
constexpr int clampLength(long long length) noexcept {
    return static_cast<int>(std::min<long long>(length, INT_MAX));
}

} // namespace tq::detail

/// Grows by one step beyond the elements in use, or to exactly what was asked for if that is more.
struct TqVectorDefaultGrowPolicy {
    /// The new physical length for a `requested` logical length above the `physical` one.
    static constexpr int grownLength(int requested, int logical, int /*physical*/, int grow) noexcept {
        return tq::detail::clampLength(std::max<long long>(requested, static_cast<long long>(logical) + grow));
    }
};

/// Doubles until the step has reached 64 Ki slots, then grows by 64 Ki slots at a time; always by at least the grow
/// length and by what is missing.
struct TqVectorFlatMemBufGrowPolicy {
    /// The new physical length for a `requested` logical length above the `physical` one.
    static constexpr int grownLength(int requested, int logical, int physical, int grow) noexcept {
        constexpr long long kLargestDoubling = 65536;
        const long long shortfall = static_cast<long long>(requested) - logical;
        const long long step =
            std::max(std::min<long long>(physical, kLargestDoubling), std::max<long long>(grow, shortfall));
        return tq::detail::clampLength(physical + step);
    }
};
