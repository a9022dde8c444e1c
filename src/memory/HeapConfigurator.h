#pragma once

#include <cstddef>
#include <cstdint>

namespace tq::detail {

inline constexpr std::size_t kPageBytes = 4096;
inline constexpr unsigned kSegmentShift = 20;
inline constexpr std::size_t kSegmentBytes = std::size_t{1} << kSegmentShift;
inline constexpr std::size_t kPagesPerSegment = kSegmentBytes / kPageBytes;
/// Identifiers of segments; identifier 0 names none.
inline constexpr std::size_t kSegmentCount = 8192;
inline constexpr std::size_t kReservationBytes = kSegmentCount * kSegmentBytes;

/// What stands for the start of a reservation where there is none: so high that no address of a process lies in the
/// range after it.
inline constexpr std::uintptr_t kNoReservation = std::uintptr_t{0} - kReservationBytes;

/// The address space of one heap: kReservationBytes from `start` on. Segment k begins at start + k * kSegmentBytes.
struct Reservation {
    std::uintptr_t start = 0;

    /// Distance of an address from the start; kReservationBytes or more for one outside.
    std::uintptr_t offsetOf(const void* address) const noexcept {
        return reinterpret_cast<std::uintptr_t>(address) - start;
    }
    std::byte* segmentAddress(std::size_t identifier) const noexcept {
        return reinterpret_cast<std::byte*>(start + (identifier << kSegmentShift));
    }
    /// Identifier of the segment that an address of the reservation lies in.
    std::size_t segmentOf(const void* address) const noexcept { return offsetOf(address) >> kSegmentShift; }
};

/// Where the first heap's address space lies.
struct TqHeapConfigurator {
    /// The highest usable segment identifier.
    static constexpr std::int16_t kMaxPageId = kSegmentCount - 1;
    /// Identifier whose state comes first in the segment state table.
    static constexpr std::int16_t mOffSetId = 0;
    /// Start of its reservation, kNoReservation without one.
    [[gnu::visibility("hidden")]] static constinit std::uintptr_t pStartAddress;

    /// Pages that fill one page of the system: a power of two, 1 where it is no larger.
    [[gnu::visibility("hidden")]] static constinit std::size_t pagesOfSystemPage;

    /// The address that try number `counter` asks for. Only every fourth counter gives one that can succeed: 64 GiB
    /// for 1, negative addresses for 2 and 3, 0 for 4, and 64 GiB again for 5.
    static constexpr std::uintptr_t hintAddress(std::uint32_t counter) noexcept {
        const auto shifted = static_cast<std::int32_t>(counter << 30);
        return static_cast<std::uintptr_t>(std::int64_t{shifted} * 64);
    }

    /// Reserves kReservationBytes without access rights and sets the two above: at one of the hints, else, once they
    /// begin to repeat, at an address of the system's choosing. Returns false when neither can be had.
    static bool reserveMemory() noexcept;

    static Reservation reservation() noexcept {
        // Any thread may ask; where the heap is built meanwhile, no address is the heap's either way.
        return {__atomic_load_n(&pStartAddress, __ATOMIC_RELAXED)};
    }
    static std::uintptr_t offsetOf(const void* address) noexcept { return reservation().offsetOf(address); }
    static std::size_t segmentOf(const void* address) noexcept { return reservation().segmentOf(address); }
};

} // namespace tq::detail
