#pragma once

/// \file
/// Character data that strings share, with its header.

#include <TqOsBase/Export.h>
#include <TqOsBase/memory/Allocation.h>

#include <algorithm>
#include <atomic>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>

/// What stands directly in front of shared character data, in the same block. With S the number of holders:
///   m_refCount = S                         (S + 1 in the static empty headers, which are so never freed)
///   m_refCount = kPermanentCount           header that is neither counted up nor down nor freed
///   m_usedLength <= m_capacity             0 used means: the empty string, whose characters are not read
/// Counts change atomically; the characters are not protected.
struct TQ_API TqMemDataHeader {
    /// Count of a header that is never released, however often it is held or let go.
    static constexpr std::uint32_t kPermanentCount = 0xFFFFFFFFU;
    /// Growth step of data that was not given another one.
    static constexpr std::uint64_t kDefaultGrowStep = 8;

    /// Its members as they are given.
    constexpr TqMemDataHeader(std::uint32_t count, std::uint64_t used, std::uint64_t capacity,
                              std::uint64_t growStep) noexcept
        : m_refCount(count), m_usedLength(used), m_capacity(capacity), m_growStep(growStep) {}

    /// True when another holder would see a write.
    bool isShared() const noexcept { return m_refCount.load(std::memory_order_acquire) >= 2; }
    /// One holder more.
    void hold() noexcept {
        if (m_refCount.load(std::memory_order_relaxed) != kPermanentCount)
            m_refCount.fetch_add(1, std::memory_order_relaxed);
    }
    /// True for the last holder, who has to free the block. The count is not written then: nobody else can reach it,
    /// and a locked step would wait for all that was written before.
    bool letGo() noexcept {
        const std::uint32_t count = m_refCount.load(std::memory_order_acquire);
        if (count == 1)
            return true;
        return count != kPermanentCount && m_refCount.fetch_sub(1, std::memory_order_acq_rel) == 1;
    }

    std::atomic<std::uint32_t> m_refCount; ///< Holders.
    std::uint64_t m_usedLength;            ///< Bytes in use, the terminating zero included.
    std::uint64_t m_capacity;              ///< Bytes available for characters.
    std::uint64_t m_growStep;              ///< Least growth in bytes.

    /// The shared empty header of data without a header type of its own.
    static TqMemDataHeader sm_EmptyHeader;
};

namespace tq::detail {

// Whether what is stated above of a header that is held is true of this one.
inline bool isInOrder(const TqMemDataHeader& header) noexcept {
    return header.m_refCount.load(std::memory_order_relaxed) >= 1 && header.m_usedLength <= header.m_capacity;
}

} // namespace tq::detail

/// Blocks of shared data from tqMalloc and tqFree.
struct TqMemDataAllocator {
    /// Null when no block can be had; tqMalloc refuses more than 2 GiB.
    static void* allocate(std::size_t size) noexcept { return tqMalloc(size); }
    /// Gives a block back.
    static void release(void* block) noexcept { tqFree(block); }
};

/// Moves elements to another block bytewise.
template <class T>
struct TqPodReallocator {
    static_assert(std::is_trivially_copyable_v<T>, "elements are copied bytewise");
    /// Copies `count` elements; the two places do not overlap.
    static void copy(T* to, const T* from, std::size_t count) noexcept {
        if (count > 0)
            std::memcpy(to, from, count * sizeof(T));
    }
};

/// Shared copy-on-write storage behind a string: one pointer to the characters, the header before them. T is a
/// byte type: lengths are counted in bytes. Header derives from TqMemDataHeader and supplies `emptyData()`, the
/// characters of its shared empty instance, and `assignAttributes(const Header&)`, which copies what else it holds.
template <class T, class Header, class Allocator, class Reallocator>
class TqMemData {
    static_assert(sizeof(T) == 1, "lengths are counted in bytes");

public:
    /// Shares the empty instance.
    TqMemData() noexcept : m_pData(Header::emptyData()) { header().hold(); }
    /// Shares the other's data.
    TqMemData(const TqMemData& other) noexcept : m_pData(other.m_pData) { header().hold(); }
    TqMemData& operator=(const TqMemData& other) noexcept {
        other.header().hold();
        release();
        m_pData = other.m_pData;
        return *this;
    }
    ~TqMemData() { release(); }

    /// Lets the data go and shares the empty instance.
    void clear() noexcept {
        release();
        m_pData = Header::emptyData();
        header().hold();
    }

    /// Makes the data private with room for `needed` bytes, sets the used length to `needed`, and keeps the earlier
    /// bytes as far as they fit. A private block grows by doubling until the step has reached 64 KiB, but at least by
    /// the grow step and by what is missing; it never shrinks. Throws std::bad_alloc with the data unchanged.
    void copyBeforeWrite(std::size_t needed) {
        const Header& now = header();
        if (now.isShared()) {
            requireRoom(reallocData(needed, roundUp(needed, now.m_growStep)));
        } else if (now.m_capacity < needed) {
            constexpr std::uint64_t kLargestDoubling = 65536;
            const std::uint64_t shortfall = needed - now.m_usedLength;
            const std::uint64_t step =
                std::max(std::min(now.m_capacity, kLargestDoubling), std::max(now.m_growStep, shortfall));
            const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
            const bool isCountable = step <= most - now.m_capacity;
            requireRoom(reallocData(now.m_usedLength, isCountable ? now.m_capacity + step : most));
        }
        header().m_usedLength = needed;
    }

    /// Moves to a new private block for the larger of `used` and `capacity` bytes, with the earlier bytes as far as
    /// `used` reaches, and `used` as the used length. Returns false, and changes nothing, when no block can be had.
    bool reallocData(std::size_t used, std::size_t capacity) noexcept {
        const std::size_t size = std::max(used, capacity);
        void* block = size > SIZE_MAX - sizeof(Header) ? nullptr : Allocator::allocate(sizeof(Header) + size);
        if (block == nullptr)
            return false;
        Header& old = header();
        auto* fresh = ::new (block) Header(1, used, size, old.m_growStep);
        fresh->assignAttributes(old);
        T* data = reinterpret_cast<T*>(fresh + 1);
        Reallocator::copy(data, m_pData, std::min<std::size_t>(old.m_usedLength, used));
        release();
        m_pData = data;
        return true;
    }

    /// What stands in front of the characters.
    Header& header() const noexcept { return reinterpret_cast<Header*>(m_pData)[-1]; }
    /// The characters.
    T* data() const noexcept { return m_pData; }

private:
    static void requireRoom(bool had) {
        if (!had)
            throw std::bad_alloc();
    }
    static std::size_t roundUp(std::size_t value, std::size_t step) noexcept {
        const std::size_t rest = step == 0 ? 0 : value % step;
        return rest == 0 || value > SIZE_MAX - step ? value : value + (step - rest);
    }
    void release() noexcept {
        Header& held = header();
        assert(tq::detail::isInOrder(held));
        if (held.letGo()) {
            held.~Header();
            Allocator::release(&held);
        }
    }

    T* m_pData;
};
