#pragma once

#include "memory/HeapLayout.h"

#include <TqOsBase/diag/TqLock.h>

#include <cassert>
#include <cstddef>
#include <cstdint>

namespace tq::detail {

template <class Node>
void pushFront(Node*& head, Node& node) noexcept {
    node.next = head;
    node.previous = nullptr;
    if (head != nullptr)
        head->previous = &node;
    head = &node;
}

template <class Node>
void unlink(Node*& head, Node& node) noexcept {
    (node.previous != nullptr ? node.previous->next : head) = node.next;
    if (node.next != nullptr)
        node.next->previous = node.previous;
}

/// Units of one size, cut from runs: pages (block pools) or segments (page pools). HeapLayout.h states the invariants.
template <class Run>
struct UnitPool {
    UnitPool(std::size_t poolNumber, std::size_t unitBytes, std::size_t runBytes)
        : unitSize(unitBytes), number(static_cast<std::uint32_t>(poolNumber)),
          unitsPerRun(unitBytes == 0 ? 0 : static_cast<std::uint32_t>(runBytes / unitBytes)) {}
    UnitPool(const UnitPool&) = delete;
    UnitPool& operator=(const UnitPool&) = delete;
    ~UnitPool() { delete locker.m_pLock; }

    TqLocker locker; ///< Held for callers' sake; no operation locks.
    std::uint64_t unitSize;
    std::uint32_t number;
    std::uint32_t unitsPerRun;
    Run* partial = nullptr; ///< Runs with a free unit, but that the first, which is served from, may be full.
    Run* full = nullptr;
};

using BlockPool = UnitPool<Page>;
using PagePool = UnitPool<UnitSegment>;

/// Makes a run at `base`, which is in no list, the pool's current one; all its units are free.
template <class Run>
void startRun(UnitPool<Run>& pool, Run& run, std::byte* base) noexcept {
    pushFront(pool.partial, run);
    run.poolNumber = static_cast<std::uint16_t>(pool.number);
    run.nextUnit = base;
    run.flags = 0;
    run.freeCount = static_cast<decltype(run.freeCount)>(pool.unitsPerRun);
}

/// True when the run has a unit to take.
template <class Run>
bool hasUnit(const Run* run) noexcept {
    return run != nullptr && run->freeCount != 0;
}

/// Takes a unit from a run that has one. A run that becomes full stays where it is: the next request that finds it so
/// moves it, which saves both moves where a unit of it comes back before.
template <class Run>
std::byte* takeUnit(const UnitPool<Run>& pool, Run& run) noexcept {
    assert(run.freeCount != 0 && run.nextUnit != nullptr);
    std::byte* const unit = run.nextUnit;
    --run.freeCount;
    run.nextUnit = (run.flags & kFreeListMode) != 0 ? readLink(unit) : unit + pool.unitSize;
    return unit;
}

/// Moves the pool's current run to the full list if it is full.
template <class Run>
void retireFullRun(UnitPool<Run>& pool) noexcept {
    Run* const run = pool.partial;
    if (run == nullptr || run->freeCount != 0)
        return;
    unlink(pool.partial, *run);
    run->nextUnit = nullptr;
    pushFront(pool.full, *run);
}

/// Chains the free units of a run in bump mode, from its bump position to its last unit, and returns the first.
template <class Run>
std::byte* chainRest(const UnitPool<Run>& pool, const Run& run) noexcept {
    std::byte* unit = run.nextUnit;
    for (std::uint32_t left = run.freeCount; left > 0; --left) {
        std::byte* const next = left > 1 ? unit + pool.unitSize : nullptr;
        writeLink(unit, next);
        unit = next;
    }
    return run.freeCount != 0 ? run.nextUnit : nullptr;
}

template <class Run>
inline constexpr std::size_t kRunBytes = 0;
template <>
inline constexpr std::size_t kRunBytes<Page> = kPageBytes;
template <>
inline constexpr std::size_t kRunBytes<UnitSegment> = kSegmentBytes;

/// True for the last unit of its run. Runs are aligned to their size.
template <class Run>
bool isLastUnit(const UnitPool<Run>& pool, const std::byte* unit) noexcept {
    return reinterpret_cast<std::uintptr_t>(unit) % kRunBytes<Run> == (pool.unitsPerRun - 1) * pool.unitSize;
}

/// Gives a unit back to the run that it was taken from. Returns true when that leaves the run wholly free: it is then
/// out of the pool's lists. Units freed in the reverse order of their allocation keep the run in bump mode, and a full
/// run comes back to it when its last unit is the first that is freed.
template <class Run>
bool giveUnit(UnitPool<Run>& pool, Run& run, std::byte* unit) noexcept {
    const bool isListedFull = run.freeCount == 0 && pool.partial != &run;
    if (run.freeCount + 1U == pool.unitsPerRun) {
        unlink(isListedFull ? pool.full : pool.partial, run);
        return true;
    }
    if (isListedFull) {
        retireFullRun(pool);
        unlink(pool.full, run);
        pushFront(pool.partial, run);
    }
    if (run.freeCount == 0 && isLastUnit(pool, unit)) {
        run.flags = 0;
    } else if ((run.flags & kFreeListMode) != 0) {
        writeLink(unit, run.nextUnit);
    } else if (unit + pool.unitSize != run.nextUnit) {
        writeLink(unit, chainRest(pool, run));
        run.flags = kFreeListMode;
    }
    run.nextUnit = unit;
    ++run.freeCount;
    return false;
}

} // namespace tq::detail
