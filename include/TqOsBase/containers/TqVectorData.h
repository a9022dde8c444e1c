#pragma once

/// \file
/// The record that the copies of one vector share.

#include <TqOsBase/Export.h>
#include <TqOsBase/containers/TqRefCounter.h>
#include <TqOsBase/memory/Allocation.h>

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

namespace tq::detail {

// Whether an allocator can resize slots, which saves a growing vector a copy.
template <class Allocator, class = void>
inline constexpr bool kCanResize = false;
template <class Allocator>
inline constexpr bool kCanResize<Allocator, std::void_t<decltype(&Allocator::resize)>> = true;

} // namespace tq::detail

/// The record that the copies of one vector share. It lives in a block from tqMalloc; its slots come from Allocator.
///
/// With S the number of TqVectorDataPtr that refer to the record, it holds between any two calls:
///   m_refCount = S                              (S + 1 for the shared empty record, which is so never freed)
///   0 <= m_logicalLength <= m_physicalLength    (but see TqVector::setPhysicalLength)
///   m_physicalLength = number of slots at m_elements
///   m_physicalLength = 0  <=>  this is the shared empty record, whose slot pointer has all bits set
template <class T, class Allocator, class RefCounter, class GrowPolicy>
class TQ_API TQ_SHOWN TqVectorData {
    static_assert(std::is_trivially_copyable_v<T>, "elements are copied bytewise");

public:
    /// Number of slots that a copy gets when its source has none.
    static constexpr int kClonePhysicalLength = 16;
    /// Growth step of a vector that was not given another one.
    static constexpr int kDefaultGrowLength = 8;

    /// A record that nobody holds yet (count 0), with `physicalLength` (at least 1) uninitialised slots. Throws
    /// std::bad_alloc and what Allocator throws; nothing is leaked then.
    static TqVectorData* create(int physicalLength, int growLength) {
        void* block = tqMalloc(sizeof(TqVectorData));
        if (block == nullptr)
            throw std::bad_alloc();
        std::unique_ptr<void, BlockDeleter> guard(block);
        T* slots = Allocator::allocate(physicalLength);
        static_cast<void>(guard.release());
        return ::new (block)
            TqVectorData{RefCounter{0}, 0, physicalLength, growLength, {reinterpret_cast<std::uintptr_t>(slots)}};
    }

    /// An unheld copy: same slots count (16 if there are none) and grow length, and the first `count` elements, at
    /// most those in use. Throws as create() does.
    TqVectorData* clone(unsigned int count) const {
        TqVectorData* copy = create(m_physicalLength == 0 ? kClonePhysicalLength : m_physicalLength, m_growLength);
        const auto copied = std::min(count, static_cast<unsigned int>(m_logicalLength));
        copy->m_logicalLength = static_cast<int>(copied);
        copy->copyElements(*this, static_cast<int>(copied));
        return copy;
    }

    /// Copies the first `count` elements of `source` bytewise; both must have that many slots.
    void copyElements(const TqVectorData& source, int count) noexcept {
        if (count > 0)
            std::memcpy(static_cast<void*>(m_elements), source.m_elements, static_cast<std::size_t>(count) * sizeof(T));
    }

    /// Changes the number of slots, which the record must have, keeping the elements that fit; the logical length is 0
    /// afterwards. Returns false, and changes nothing, when others share the record or Allocator cannot do it. Throws
    /// what Allocator throws, with the record unchanged.
    bool tryResize([[maybe_unused]] int physicalLength) {
        if constexpr (tq::detail::kCanResize<Allocator>) {
            if (isShared())
                return false;
            m_elements = Allocator::resize(m_elements, physicalLength);
            m_physicalLength = physicalLength;
            m_logicalLength = 0;
            return true;
        }
        return false;
    }

    /// Gives slots and record back. Only for the holder that took the count to 0.
    static void destroy(TqVectorData* record) noexcept {
        Allocator::release(record->m_elements, record->m_physicalLength);
        record->~TqVectorData();
        tqFree(record);
    }

    /// True when another vector would see a write.
    bool isShared() const noexcept { return tq::detail::referencesOf(m_refCount) >= 2; }

    RefCounter m_refCount; ///< Holders.
    int m_logicalLength;   ///< Elements in use.
    int m_physicalLength;  ///< Slots.
    int m_growLength;      ///< What the vector grows by, in slots.
    union {
        std::uintptr_t m_elementBits; ///< The slots as a number; ~0, all bits set, in the shared empty record.
        T* m_elements;                ///< The slots.
    };

    /// The record of every vector without storage. It counts itself, so its count never falls below 1.
    static TqVectorData gEmptyVectorData;
    /// Its address.
    static TqVectorData* const gpEmptyVectorData;

private:
    struct BlockDeleter {
        void operator()(void* block) const noexcept { tqFree(block); }
    };
};

template <class T, class Allocator, class RefCounter, class GrowPolicy>
TqVectorData<T, Allocator, RefCounter, GrowPolicy> TqVectorData<T, Allocator, RefCounter, GrowPolicy>::gEmptyVectorData{
    RefCounter{1}, 0, 0, kDefaultGrowLength, {~std::uintptr_t{0}}};

template <class T, class Allocator, class RefCounter, class GrowPolicy>
TqVectorData<T, Allocator, RefCounter, GrowPolicy>* const
    TqVectorData<T, Allocator, RefCounter, GrowPolicy>::gpEmptyVectorData =
        &TqVectorData<T, Allocator, RefCounter, GrowPolicy>::gEmptyVectorData;

namespace tq::detail {

// Whether what is stated above of a record that is held is true of this one.
template <class Record>
bool isInOrder(const Record& record) noexcept {
    const bool isEmptyRecord = record.m_elementBits == ~std::uintptr_t{0};
    return referencesOf(record.m_refCount) >= 1 && record.m_logicalLength >= 0 &&
           record.m_logicalLength <= record.m_physicalLength && (record.m_physicalLength == 0) == isEmptyRecord &&
           record.m_elementBits != 0;
}

} // namespace tq::detail

/// A counted reference to a record, or null.
template <class T, class Allocator, class RefCounter, class GrowPolicy>
class TQ_API TQ_SHOWN TqVectorDataPtr {
public:
    /// What is referred to.
    using Data = TqVectorData<T, Allocator, RefCounter, GrowPolicy>;

    /// Holds `data`, which may be null.
    explicit TqVectorDataPtr(Data* data = nullptr) noexcept : m_data(data) { hold(); }
    /// Holds what the other one holds.
    TqVectorDataPtr(const TqVectorDataPtr& other) noexcept : m_data(other.m_data) { hold(); }
    TqVectorDataPtr& operator=(const TqVectorDataPtr& other) noexcept {
        assign(other.m_data);
        return *this;
    }
    ~TqVectorDataPtr() { release(); }

    /// Lets the held record go and holds `data`, which may be null; nothing when that is the one held already.
    void assign(Data* data) noexcept {
        if (data == m_data)
            return;
        release();
        m_data = data;
        hold();
    }

    /// The record, null without one.
    Data* get() const noexcept { return m_data; }
    /// The record, which must be there.
    Data* operator->() const noexcept { return m_data; }

private:
    void hold() noexcept {
        if (m_data != nullptr)
            tq::detail::addReference(m_data->m_refCount);
    }
    void release() noexcept {
        assert(m_data == nullptr || tq::detail::isInOrder(*m_data));
        if (m_data != nullptr && tq::detail::dropReference(m_data->m_refCount))
            Data::destroy(m_data);
    }

    Data* m_data;
};
