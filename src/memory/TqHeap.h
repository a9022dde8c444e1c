#pragma once

#include "memory/BlockPools.h"
#include "memory/HeapConfigurator.h"
#include "memory/HeapOwner.h"
#include "memory/PagePools.h"
#include "memory/SegmentTable.h"
#include "memory/SizeClasses.h"

#include <TqOsBase/diag/TqLock.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace tq::detail {

#if defined(TQ_HEAP_CHECK_EVERY)
/// Walks the caller's heap at every TQ_HEAP_CHECK_EVERYth call, one before each of its operations, and ends the program
/// when an invariant is violated. Not for programs whose operator new is built on the heap: the walk uses it.
void countOperation();
#else
inline void countOperation() {}
#endif

/// Hooks for a debugging aid; all of them do nothing.
struct TqHeapDbgDumper {
    static void init() {}
    static void uninit() {}
    static void dump(const void*) {}
};

/// The pooled heap over one reserved stretch of address space; what no pool serves goes to the C library, and so does
/// every pointer from outside the reservations.
///
/// Threads. A heap has one owner (HeapOwner.h). The first heap's is the first thread that allocates, until it ends;
/// then the next that does, or whose own heap has no block at hand. Other threads own one of ThreadHeaps each, and
/// where none can be had, or it is full, the C library serves them. The operations that are static work for the calling
/// thread: they take from its heap, and serve blocks of any. What a thread frees of another heap's blocks waits in a
/// list of that heap, without a lock, which the owner takes in when a pool has no block at hand, so before it takes a
/// page. A heap without an owner keeps what it has for the next one.
///
/// Life. The object is constant-initialised and its destructor is trivial, so it can be called at any time in the life
/// of the program. It is built, which creates the pools, by the first to claim it. That of the first heap, which also
/// reserves the address space, is a static initialiser at load, or an allocation before that. tearDown(), called at
/// exit, removes its pools. From then on whoever owns no heap is served by the C library, blocks of the pools can still
/// be read, written and reallocated, and freeing them does nothing; so static objects that outlive the heap do no harm.
/// Where another thread than the one that exits owns the heap, and may be inside it, the pools stay, as they do in the
/// other heaps. The reservation is never unmapped. In the child of a fork() all heaps but that of the thread that
/// called it, and those that nobody owns, are in the same state as after tearDown().
///
/// Strays. An address of the reservation whose segment is not in use was never the C library's: it is a double free or
/// a damaged pointer. Freeing one is asserted against and does nothing, reallocating one gives null.
template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
class TqHeap {
public:
    constexpr TqHeap() noexcept = default;
    TqHeap(const TqHeap&) = delete;
    TqHeap& operator=(const TqHeap&) = delete;

    /// Makes the calling thread the owner, the pools included. Returns true when this call did; false otherwise, also
    /// when the thread is the owner already. Throws std::bad_alloc; nobody can own the heap then.
    bool claim();
    /// Lets the next thread that asks own the heap. For the owner.
    void resign() noexcept;
    /// For the first heap.
    void tearDown() noexcept;
    /// In a child after fork().
    void abandonLostHeap() noexcept { m_owner.abandonLostHeap(); }

    /// A block of at least `size` bytes (0 counts as 1), or null.
    static void* allocHeap(std::size_t size) {
        void* const block = allocAtHand(size);
        return block != nullptr ? block : allocUncommon(size);
    }

    /// The block that allocHeap() would return, if its size has a pool with a free one at hand; else null.
    static void* allocAtHand(std::size_t size) noexcept {
        countOperation();
        if (size >= t_heapView.endOfSizes) [[unlikely]]
            return nullptr;
        TqHeap* const own = t_heapView.heap;
        return takeAtHand(own->m_blockPools.pool(kPoolOfSize[size])); // none without a pool
    }

    /// What allocHeap() does for all other blocks.
    static void* allocUncommon(std::size_t size);

    /// Moves a block of a heap to a new one of `size` bytes (0 counts as 1), always, even when the old one has room;
    /// null, with the old block untouched, when there is no memory. Foreign blocks go to the C library's realloc.
    static void* reallocHeap(void* block, std::size_t size);

    static void freeHeap(void* block) noexcept {
        countOperation();
        const std::size_t segment = (reinterpret_cast<std::uintptr_t>(block) - t_heapView.start) >> kSegmentShift;
        if (segment >= kSegmentCount)
            return freeElsewhere(block);
        TqHeap* const own = t_heapView.heap;
        if (own->m_segments.state(segment) != kBlockSegment) [[unlikely]]
            return own->freeUncommon(block);
        own->freeBlock(block);
    }

    /// A unit of `pages` whole pages, 1 to kPagePoolCount; null when there is no memory. Any other number gets `size`
    /// bytes of the C library. Threads that own no heap get units of the C library, aligned as a heap's.
    static void* allocHeapPage(std::size_t pages, std::size_t size);

    /// Frees a unit of a page pool, or a foreign block. Does nothing for a block of a block pool.
    static void freeHeapPage(void* unit) noexcept;

    /// The bytes that the block or unit at `block` has room for; 0 for a stray.
    static std::size_t sizeOf(void* block) noexcept;

    /// Gives all waiting memory back to the system. For the owner; other threads can ask it to.
    void trim() noexcept;
    void askToTrim() noexcept { m_owner.askToTrim(); }

    bool isCaller() const noexcept { return t_heapView.heap == this; }
    const BlockPools& blockPools() const noexcept { return m_blockPools; }
    const PagePools& pagePools() const noexcept { return m_pagePools; }
    const SegmentTable& segments() const noexcept { return m_segments; }
    /// The pools were created. What was done until then is seen.
    bool isBuilt() const noexcept { return m_isBuilt.load(std::memory_order_acquire); }
    /// There are no pools, and will be none any more.
    bool isOver() const noexcept { return m_owner.isOver(); }

private:
    static_assert(kPoolCount == kBlockPoolCount);

    // A unit of the pool's current page, or null.
    static std::byte* takeAtHand(BlockPool& pool) noexcept {
        Page& page = *pool.partial;
        if (!hasUnit(page)) [[unlikely]]
            return nullptr;
        std::byte* const block = takeUnit(pool, page);
        if (platform::kMarksMemory)
            platform::markHandedOut(block, pool.unitSize);
        return block;
    }
    // These are apart, so that the usual path needs no stack frame.
    [[gnu::noinline]] static void* allocElsewhere(std::size_t size);
    [[gnu::noinline]] void* allocWithoutUnit(BlockPool& pool) noexcept;
    void* takeHeapPage(std::size_t pages) noexcept;

    // The one whose address space the configurator knows.
    bool isFirst() const noexcept;
    void build();
    void freeBlock(void* block) noexcept {
        Page& page = *pageOf(block);
        BlockPool& pool = m_blockPools.pool(page.poolNumber);
        platform::markGivenBack(block, pool.unitSize);
        m_blockPools.freeFromPool(static_cast<std::byte*>(block), page, pool, m_segments);
    }
    void freeUncommon(void* block) noexcept;
    static void freeElsewhere(void* block) noexcept;
    void leaveToOwner(void* block, unsigned state) noexcept;
    void collect() noexcept {
        if (m_owner.hasNews()) [[unlikely]]
            collectNews();
    }
    void collectNews() noexcept;
    std::size_t unitSizeOf(const void* block, unsigned kind) const noexcept;

    BlockPools m_blockPools;
    PagePools m_pagePools;
    SegmentTable m_segments;
    HeapOwner m_owner;
    DeferredLocker m_lockers[3];        ///< Held for callers' sake; no operation locks.
    std::atomic<bool> m_isBuilt{false}; ///< Stays set after tearDown().
};

extern template class TqHeap<kBlockPoolCount, TqPoolConfigurator<kBlockPoolCount>, TqHeapConfigurator, TqHeapDbgDumper>;

/// The first heap.
[[gnu::visibility("hidden")]] extern constinit GlobalHeap g_tqGlobalHeap;

/// A heap for the time of a call that looks at all of it or tidies it: for its owner, and where there is none. To be
/// asked whether it was had. A heap that the thread owns besides it does not see meanwhile.
class HeapVisit {
public:
    explicit HeapVisit(GlobalHeap& heap);
    HeapVisit(const HeapVisit&) = delete;
    HeapVisit& operator=(const HeapVisit&) = delete;
    ~HeapVisit();

    explicit operator bool() const noexcept { return m_heap.isCaller(); }

private:
    GlobalHeap& m_heap;
    HeapView m_before;
    bool m_isGuest;
};

} // namespace tq::detail
