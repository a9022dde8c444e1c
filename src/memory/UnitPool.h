#pragma once

#include "memory/HeapLayout.h"

#include <TqOsBase/diag/TqLock.h>

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

namespace tq::detail {

template <class Run>
inline constexpr std::size_t kRunBytes = 0;
template <>
inline constexpr std::size_t kRunBytes<Page> = kPageBytes;
template <>
inline constexpr std::size_t kRunBytes<UnitSegment> = kSegmentBytes;

/// Distance of a unit from the start of its run. Runs are aligned to their size.
template <class Run>
std::size_t offsetInRun(const std::byte* unit) noexcept {
    return reinterpret_cast<std::uintptr_t>(unit) % kRunBytes<Run>;
}

/// A locker whose lock is made when its owner is built, so that the owner itself needs no initialiser to exist.
union DeferredLocker {
    constexpr DeferredLocker() noexcept : none(nullptr) {}

    void create() { new (&locker) TqLocker; }
    void destroy() noexcept { delete std::exchange(locker.m_pLock, nullptr); }

    TqLock* none;
    TqLocker locker;
};

/// Units of one size, cut from runs: pages (block pools) or segments (page pools). HeapLayout.h states the invariants.
/// One fills a cache line.
template <class Run>
struct UnitPool {
    constexpr UnitPool() noexcept = default;
    UnitPool(const UnitPool&) = delete;
    UnitPool& operator=(const UnitPool&) = delete;

    /// Throws std::bad_alloc.
    void create(std::size_t poolNumber, std::size_t unitBytes) {
        clear();
        locker.create();
        end.poolNumber = static_cast<std::uint16_t>(poolNumber);
        unitSize = unitBytes;
        unitsPerRun = unitBytes == 0 ? 0 : static_cast<std::uint32_t>(kRunBytes<Run> / unitBytes);
        lastOffset = unitBytes == 0 ? 0 : static_cast<std::uint32_t>((unitsPerRun - 1) * unitBytes);
    }
    /// Forgets the runs: from now on there is no unit to take.
    void destroy() noexcept {
        locker.destroy();
        clear();
    }
    /// No run, so no unit to take. Without it or create() the pool is all zeros and not to be used.
    void clear() noexcept {
        partial = &end;
        end.flags = kFreeListMode;
    }

    std::uint32_t number() const noexcept { return end.poolNumber; }

    Run* partial = nullptr; ///< Runs with a free unit; the first one serves. Full runs are in no list.
    std::uint64_t unitSize = 0;
    std::uint32_t lastOffset = 0; ///< Where in a run its last unit lies.
    std::uint32_t unitsPerRun = 0;
    Run end{};             ///< Ends the list. It has no unit, as if it were full, and knows the number of its pool.
    DeferredLocker locker; ///< Held for callers' sake; no operation locks.
};

using BlockPool = UnitPool<Page>;
using PagePool = UnitPool<UnitSegment>;
inline constexpr std::size_t kPoolAlignment = 64;
static_assert(sizeof(BlockPool) == kPoolAlignment && sizeof(PagePool) == kPoolAlignment);

/// `yes` or `no`, without a branch: for conditions that no processor can predict. The empty asm statement keeps the
/// compiler from seeing that two values depend on one condition, for which it would choose a branch.
template <class Node>
Node* select(bool condition, Node* yes, Node* no) noexcept {
    unsigned isYes = condition;
    asm("" : "+r"(isYes));
    return __builtin_expect_with_probability(isYes != 0, true, 0.5) ? yes : no;
}

/// Puts a run in front of the pool's others. The first run's `previous` and those of the end of the list are never
/// read, so taking the first out need not mend its successor's.
template <class Run>
void pushRun(UnitPool<Run>& pool, Run& run) noexcept {
    run.next = pool.partial;
    run.next->previous = &run;
    pool.partial = &run;
}

template <class Run>
void unlinkRun(UnitPool<Run>& pool, Run& run) noexcept {
    assert(pool.partial == &run || run.previous->next == &run);
    (pool.partial == &run ? pool.partial : run.previous->next) = run.next;
    run.next->previous = run.previous;
}

/// Makes a run at `base`, which is in no list, the pool's current one; all its units are free.
template <class Run>
void startRun(UnitPool<Run>& pool, Run& run, std::byte* base) noexcept {
    assert(pool.unitSize != 0 && offsetInRun<Run>(base) == 0);
    run.poolNumber = pool.end.poolNumber;
    run.nextUnit = base;
    run.flags = 0;
    pushRun(pool, run);
}

/// Free units of a run that the pool owns.
template <class Run>
std::size_t freeUnits(const UnitPool<Run>& pool, const Run& run) noexcept {
    assert(pool.unitSize != 0 && "a pool that serves no size owns no run");
    return (run.flags & kFreeListMode) != 0 ? run.freeCount
                                            : pool.unitsPerRun - offsetInRun<Run>(run.nextUnit) / pool.unitSize;
}

/// True when the run, which a pool lists or owns, has a unit to take: in bump mode it always has.
template <class Run>
bool hasUnit(const Run& run) noexcept {
    return (run.flags & kFreeListMode) == 0 || run.nextUnit != nullptr;
}

/// Takes a unit from the pool's current run, which has one. A run that becomes full leaves the pool's list.
///
/// Where lifetimes are mixed, runs become full and partial again in no order that could be predicted, so in free-list
/// mode that happens without a branch, here and in giveUnit.
template <class Run>
std::byte* takeUnit(UnitPool<Run>& pool, Run& run) noexcept {
    assert(&run == pool.partial && hasUnit(run));
    std::byte* const unit = run.nextUnit;
    if ((run.flags & kFreeListMode) != 0) {
        Run* const next = run.next;
        run.nextUnit = readLink(unit);
        const bool isFull = --run.freeCount == 0;
        pool.partial = __builtin_expect_with_probability(isFull, true, 0.5) ? next : &run;
        return unit;
    }
    if (unit == nullptr)
        __builtin_unreachable(); // the caller need not test it
    if (offsetInRun<Run>(unit) != pool.lastOffset) [[likely]] {
        run.nextUnit = unit + pool.unitSize;
    } else {
        run.nextUnit = nullptr;
        run.freeCount = 0;
        run.flags = kFreeListMode;
        pool.partial = run.next;
    }
    return unit;
}

/// Chains the units of a run in bump mode from its bump position to its last and sets free-list mode.
template <class Run>
void chainRest(const UnitPool<Run>& pool, Run& run) noexcept {
    assert((run.flags & kFreeListMode) == 0);
    std::byte* unit = run.nextUnit;
    run.freeCount = 1;
    for (; offsetInRun<Run>(unit) != pool.lastOffset; unit += pool.unitSize) {
        writeLink(unit, unit + pool.unitSize);
        ++run.freeCount;
    }
    writeLink(unit, nullptr);
    run.flags = kFreeListMode;
}

/// Gives a unit back to its run, in free-list mode, which keeps at least one unit in use. A full run is in no list and
/// comes to the front of the pool's; where its last unit is the first that comes back, it is in bump mode again.
template <class Run>
void chainUnit(UnitPool<Run>& pool, Run& run, std::byte* unit) noexcept {
    assert((run.flags & kFreeListMode) != 0 && run.freeCount + 1U < pool.unitsPerRun);
    const bool wasFull = run.freeCount == 0;
    if (offsetInRun<Run>(unit) == pool.lastOffset && wasFull) [[unlikely]]
        run.flags = 0;
    Run* const head = pool.partial;
    head->previous = &run; // of no account unless the head becomes the second
    run.next = select(wasFull, head, run.next);
    pool.partial = select(wasFull, &run, head);
    ++run.freeCount;
    writeLink(unit, run.nextUnit);
    run.nextUnit = unit;
}

/// The first unit that comes back to a run in bump mode out of order. Apart, so that the usual ways need no stack.
template <class Run>
[[gnu::noinline]] void chainRestAndUnit(UnitPool<Run>& pool, Run& run, std::byte* unit) noexcept {
    chainRest(pool, run);
    chainUnit(pool, run, unit);
}

/// Gives a unit back to the run that it was taken from, unless that would leave the run wholly free: it returns false
/// then, with nothing changed. Units freed in the reverse order of their allocation keep the run in bump mode. A stray,
/// in a run that no pool has, is ignored.
template <class Run>
bool giveUnit(UnitPool<Run>& pool, Run& run, std::byte* unit) noexcept {
    assert(run.poolNumber == 0 || (run.poolNumber == pool.number() && offsetInRun<Run>(unit) % pool.unitSize == 0 &&
                                   offsetInRun<Run>(unit) <= pool.lastOffset));
    assert(run.poolNumber == 0 || (run.flags & kFreeListMode) != 0 || unit < run.nextUnit);
    if ((run.flags & kFreeListMode) == 0) {
        if (unit + pool.unitSize == run.nextUnit) [[likely]] {
            if (offsetInRun<Run>(unit) == 0)
                return false;
            run.nextUnit = unit;
            return true;
        }
        if (run.poolNumber != 0)
            chainRestAndUnit(pool, run, unit);
        return true;
    }
    if (run.freeCount + 1U == pool.unitsPerRun)
        return false;
    chainUnit(pool, run, unit);
    return true;
}

} // namespace tq::detail
