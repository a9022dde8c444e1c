#pragma once

#include "memory/HeapConfigurator.h"
#include "memory/SizeClasses.h"
#include "platform/ThreadLife.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace tq::detail {

struct TqHeapDbgDumper;
template <int kPoolCount, class PoolConfigurator, class HeapConfigurator, class DbgDumper>
class TqHeap;
using GlobalHeap = TqHeap<kBlockPoolCount, TqPoolConfigurator<kBlockPoolCount>, TqHeapConfigurator, TqHeapDbgDumper>;

/// What a thread sees of the heap that it owns. One that owns none sees no size that has a pool and a reservation that
/// no address lies in, so that the one look whether a size has a pool, or where a block belongs, also answers whether
/// the thread may touch a heap.
///
/// The initial values are numbers: cross-linkers for macOS exist that leave out the relocation of a pointer in
/// thread-local data.
struct HeapView {
    /// The heaps that the thread may ask for.
    enum class Claims : std::uint8_t {
        kAny,
        kFirst, ///< It found no heap for threads, and asks for none again.
        kNone,  ///< It is ending, or about to own one.
    };

    std::size_t endOfSizes = 0; ///< Sizes from it on have no pool.
    GlobalHeap* heap = nullptr;
    std::uintptr_t start = kNoReservation; ///< Of the heap's reservation.
    Claims claims = Claims::kAny;
};

extern constinit thread_local HeapView t_heapView TQ_NEAR_THREAD_LOCAL;

/// Which thread a heap belongs to, and what the other threads leave for it.
///
/// The heap's structures are plain data: the owner alone reads and writes them, without a lock. With o the owner's
/// mark, 0 for none and kNobody for none any more:
///   a thread's view shows the heap  =>  o is the mark of that thread
///   o == 0                          =>  no thread is inside the heap; whoever sets o first owns it
/// A thread that takes over has seen all that the one before it did. What any thread may read is what stays as it is
/// while a block is in use: the start of the reservation, the state of the block's segment and the number of its pool.
class HeapOwner {
public:
    constexpr HeapOwner() noexcept = default;

    /// Whether a thread owns the heap, or none can any more.
    bool isTaken() const noexcept { return m_owner.load(std::memory_order_relaxed) != 0; }
    /// Makes the calling thread the owner, if there is none; it does not see the heap yet, and claims no other until it
    /// does.
    bool claim() noexcept;
    /// Lets the calling thread, which is the owner, see the heap.
    static void show(GlobalHeap& heap, std::uintptr_t start) noexcept;
    /// The calling thread, which is the owner, is so no longer; with `isLast` nobody will be.
    void resign(bool isLast = false) noexcept;
    /// Nobody owns the heap or ever will.
    bool isOver() const noexcept { return m_owner.load(std::memory_order_relaxed) == kNobody; }
    /// In a child after fork(): without its owner, whom fork() may have stopped anywhere, the heap is no one's.
    void abandonLostHeap() noexcept;

    /// Leaves a block, or unit of pages, for the owner. It holds the link of the list meanwhile.
    void giveBack(std::byte* block) noexcept;
    /// Asks the owner to give back what memory waits.
    void askToTrim() noexcept { m_isTrimWanted.store(true, std::memory_order_relaxed); }

    /// Whether anything was left for the owner or asked of it.
    bool hasNews() const noexcept {
        return m_returned.load(std::memory_order_relaxed) != nullptr || m_isTrimWanted.load(std::memory_order_relaxed);
    }
    /// Takes all blocks that were left, linked, the last one first.
    std::byte* takeReturned() noexcept { return m_returned.exchange(nullptr, std::memory_order_acquire); }
    /// Whether a trim was asked for since the last call.
    bool takeTrimWish() noexcept { return m_isTrimWanted.exchange(false, std::memory_order_relaxed); }

private:
    static constexpr std::uintptr_t kNobody = 1;

    std::atomic<std::uintptr_t> m_owner{0};
    std::atomic<std::byte*> m_returned{nullptr};
    std::atomic<bool> m_isTrimWanted{false};
};

} // namespace tq::detail
