#pragma once

#include "memory/TqHeap.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace tq::detail {

/// The heaps of the threads beside the owner of the first heap. Their reservations lie side by side in one stretch of
/// address space, so an address tells its heap. It is reserved when the first of them is asked for, all of it or none.
class ThreadHeaps {
public:
    static constexpr std::size_t kCount = 32;

    /// Makes the calling thread, which owns no heap, the owner of one that nobody owns. Returns false while the first
    /// heap is not built and once it is torn down, and when there is none, or no address space or memory for it: the
    /// thread gets none from then on.
    static bool claim() noexcept;

    /// Where an address lies. It has no heap where it is outside.
    struct Place {
        GlobalHeap* heap = nullptr;
        std::size_t segment = 0;
    };
    static Place placeOf(const void* address) noexcept {
        const std::uintptr_t offset =
            reinterpret_cast<std::uintptr_t>(address) - s_start.load(std::memory_order_relaxed);
        if (offset >= kBytes)
            return {};
        return {&s_heaps[offset / kReservationBytes], offset % kReservationBytes >> kSegmentShift};
    }

    static Reservation reservationOf(const GlobalHeap& heap) noexcept {
        const auto number = static_cast<std::size_t>(&heap - s_heaps.data());
        return {s_start.load(std::memory_order_relaxed) + number * kReservationBytes};
    }

    /// Calls `visit` with each heap that was built.
    template <class Visit>
    static void forEach(Visit visit) {
        if (s_start.load(std::memory_order_relaxed) == kNoStart)
            return;
        for (GlobalHeap& heap : s_heaps)
            if (heap.isBuilt())
                visit(heap);
    }

private:
    static constexpr std::size_t kBytes = kCount * kReservationBytes;
    static constexpr std::uintptr_t kNoStart = std::uintptr_t{0} - kBytes; ///< No address lies in the range after it.

    static bool reserve() noexcept;

    [[gnu::visibility("hidden")]] static constinit std::atomic<std::uintptr_t> s_start;
    [[gnu::visibility("hidden")]] static constinit std::array<GlobalHeap, kCount> s_heaps; ///< All zeros until used.
};

} // namespace tq::detail
