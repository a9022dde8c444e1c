#pragma once

#include "memory/HeapLayout.h"

#include <TqOsBase/diag/TqLock.h>

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
    Run* partial = nullptr; ///< Runs with a free unit, the one that is served from first.
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

/// True when a unit can be taken without the run becoming full.
template <class Run>
bool hasUnitsToSpare(const Run* run) noexcept {
    return run != nullptr && run->freeCount >= 2;
}

/// Takes a unit from a run that has units to spare.
template <class Run>
std::byte* takeSpareUnit(const UnitPool<Run>& pool, Run& run) noexcept {
    std::byte* const unit = run.nextUnit;
    --run.freeCount;
    run.nextUnit = (run.flags & kFreeListMode) != 0 ? readLink(unit) : unit + pool.unitSize;
    return unit;
}

/// Takes a unit from the pool's current run, which it has.
template <class Run>
std::byte* takeUnit(UnitPool<Run>& pool) noexcept {
    Run& run = *pool.partial;
    if (run.freeCount >= 2)
        return takeSpareUnit(pool, run);
    std::byte* const unit = run.nextUnit;
    unlink(pool.partial, run);
    pushFront(pool.full, run);
    run.freeCount = 0;
    run.nextUnit = nullptr;
    return unit;
}

/// Chains the free units of a run in bump mode, from its bump position to its last unit.
template <class Run>
void chainRest(const UnitPool<Run>& pool, const Run& run, std::byte* lastUnit) noexcept {
    std::byte* unit = run.nextUnit;
    for (; unit < lastUnit; unit += pool.unitSize)
        writeLink(unit, unit + pool.unitSize);
    writeLink(unit, nullptr);
}

/// Gives a unit back to the run at `base` that it was taken from. Returns true when that leaves the run wholly free: it
/// is then out of the pool's lists. Units freed in the reverse order of their allocation keep the run in bump mode.
template <class Run>
bool giveUnit(UnitPool<Run>& pool, Run& run, std::byte* base, std::byte* unit) noexcept {
    const bool wasFull = run.freeCount == 0;
    if (++run.freeCount == pool.unitsPerRun) {
        unlink(wasFull ? pool.full : pool.partial, run);
        return true;
    }
    if (!wasFull && (run.flags & kFreeListMode) != 0) {
        writeLink(unit, run.nextUnit);
    } else if (std::byte* const lastUnit = base + (pool.unitsPerRun - 1) * pool.unitSize; wasFull) {
        unlink(pool.full, run);
        pushFront(pool.partial, run);
        run.flags = unit == lastUnit ? 0 : kFreeListMode;
        if (run.flags == kFreeListMode)
            writeLink(unit, nullptr);
    } else if (unit + pool.unitSize != run.nextUnit) {
        chainRest(pool, run, lastUnit);
        writeLink(unit, run.nextUnit);
        run.flags = kFreeListMode;
    }
    run.nextUnit = unit;
    return false;
}

} // namespace tq::detail
