#pragma once

/// \file
/// A growable array of elements, shared until it is changed.

#include <TqOsBase/Export.h>
#include <TqOsBase/containers/TqRefCounter.h>
#include <TqOsBase/containers/TqVectorData.h>
#include <TqOsBase/containers/TqVectorPolicies.h>

#include <cassert>
#include <climits>
#include <stdexcept>

/// Growable array of trivially copyable elements with shared storage: copies share one record until one of them is
/// changed. The object is one pointer. Allocator says where the slots come from, RefCounter (TqRefCounter or int)
/// which type the share count has, GrowPolicy how capacity grows.
///
/// Threads: copies may be made, read, written and let go on different threads. One vector object
/// belongs to one thread at a time.
///
/// The logical length counts the elements in use, the physical length the slots. Lengths are `int`: a negative one
/// throws std::length_error; slots that cannot be had throw std::bad_alloc; the vector is unchanged in both cases.
template <class T, class Allocator = TqDefaultMemAllocator<T>, class RefCounter = TqRefCounter,
          class GrowPolicy = TqVectorDefaultGrowPolicy>
class TQ_API TQ_SHOWN TqVector {
public:
    /// The shared record.
    using Data = TqVectorData<T, Allocator, RefCounter, GrowPolicy>;
    /// A counted reference to it.
    using DataPtr = TqVectorDataPtr<T, Allocator, RefCounter, GrowPolicy>;

    /// No elements, no storage of its own.
    TqVector() noexcept : m_data(Data::gpEmptyVectorData) {}
    /// No elements, `physicalLength` slots, growing by `growLength`; one of 0 or below never adds slack. Below 1 slot
    /// there is no storage of its own, and the grow length is the default one.
    explicit TqVector(int physicalLength, int growLength = Data::kDefaultGrowLength)
        : m_data(newData(physicalLength, growLength)) {}
    /// Copies share the record.
    TqVector(const TqVector&) noexcept = default;
    TqVector& operator=(const TqVector&) noexcept = default;
    ~TqVector() = default;

    /// A new empty record with `physicalLength` slots, held once; the shared empty record (which keeps its own grow
    /// length) when `physicalLength` is below 1.
    static DataPtr newData(int physicalLength, int growLength) {
        return DataPtr(physicalLength < 1 ? Data::gpEmptyVectorData : Data::create(physicalLength, growLength));
    }

    /// Elements in use.
    int logicalLength() const noexcept { return m_data->m_logicalLength; }
    /// Slots.
    int physicalLength() const noexcept { return m_data->m_physicalLength; }
    /// What the vector grows by, in slots.
    int growLength() const noexcept { return m_data->m_growLength; }
    /// No element is in use.
    bool isEmpty() const noexcept { return logicalLength() == 0; }

    /// Sets the number of elements in use. Elements that are gained are uninitialised; slots are never given back. A
    /// shared vector gets a record of its own first, so that even setLogicalLength(0) on a vector without storage
    /// allocates 16 slots.
    void setLogicalLength(int length) {
        requireLength(length);
        const Data& data = *m_data.get();
        if (data.m_physicalLength < length) {
            setPhysicalLength(
                GrowPolicy::grownLength(length, data.m_logicalLength, data.m_physicalLength, data.m_growLength));
        } else if (data.isShared()) {
            const int kept = std::min(length, data.m_logicalLength);
            cloneData(kept == 0 ? data.m_logicalLength : kept);
        }
        m_data->m_logicalLength = length;
    }

    /// Sets the number of elements in use, 0 or more, where that takes neither slots nor a copy, and returns the slots;
    /// otherwise null, with nothing changed.
    T* setLogicalLengthAtHand(int length) noexcept {
        assert(length >= 0);
        Data& record = *m_data.get();
        if (length > record.m_physicalLength || record.isShared()) // so the shared empty record
            return nullptr;
        record.m_logicalLength = length;
        return record.m_elements;
    }

    /// Gives the elements a record of their own with exactly `length` slots; 0 returns the vector to the shared empty
    /// record, and the present number changes nothing. The logical length is 0 then although the elements are in their
    /// slots: the caller sets it before anything else, because a copy that unshares takes only the elements that count.
    /// Length 0 also returns the grow length to the default one.
    void setPhysicalLength(int length) {
        requireLength(length);
        if (length == physicalLength())
            return;
        if (length > 0 && m_data->tryResize(length))
            return;
        const DataPtr moved = newData(length, growLength());
        moved->copyElements(*m_data.get(), std::min(logicalLength(), length));
        m_data.assign(moved.get());
    }

    /// The last element, in storage of the vector's own. For a vector without elements a pointer to one new element
    /// that the vector does not own: the caller deletes it with the array form of delete.
    T* last() {
        if (isEmpty())
            return new T[1];
        unshare();
        return m_data->m_elements + logicalLength() - 1;
    }

    /// The slots for reading, null when there are none.
    const T* asArrayPtr() const noexcept { return physicalLength() == 0 ? nullptr : m_data->m_elements; }
    /// The slots for writing, in storage of the vector's own; null when there are none. Valid until the vector grows
    /// or is copied and written to.
    T* asArrayPtr() {
        if (physicalLength() == 0)
            return nullptr;
        unshare();
        return m_data->m_elements;
    }

    /// Element `index`, 0 to logicalLength() - 1: an assertion where the calling code inlines it, else unchecked.
    const T& operator[](int index) const noexcept {
        assert(index >= 0 && index < logicalLength());
        return m_data->m_elements[index];
    }
    /// The same for writing: a shared vector gets storage of its own first.
    T& operator[](int index) {
        assert(index >= 0 && index < logicalLength());
        unshare();
        return m_data->m_elements[index];
    }

    /// Adds one element, which may be one of the vector's own. Throws std::length_error at INT_MAX elements.
    void append(const T& value) {
        const T copy = value;
        const int length = logicalLength();
        if (length == INT_MAX)
            throw std::length_error("TqVector: too many elements");
        setLogicalLength(length + 1);
        m_data->m_elements[length] = copy;
    }

private:
    static void requireLength(int length) {
        if (length < 0)
            throw std::length_error("TqVector: negative length");
    }

    void cloneData(int count) { m_data.assign(m_data->clone(static_cast<unsigned int>(count))); }

    void unshare() {
        if (m_data->isShared())
            cloneData(logicalLength());
    }

    DataPtr m_data;
};

/// The storage of memory stream buffers: not for sharing between threads.
using TqByteVector = TqVector<unsigned char, TqDelegateMemAllocator<unsigned char>, int, TqVectorFlatMemBufGrowPolicy>;

// The library's own instances live in the library.
extern template class TQ_API
    TqVectorData<wchar_t, TqDefaultMemAllocator<wchar_t>, TqRefCounter, TqVectorDefaultGrowPolicy>;
extern template class TQ_API
    TqVectorDataPtr<wchar_t, TqDefaultMemAllocator<wchar_t>, TqRefCounter, TqVectorDefaultGrowPolicy>;
extern template class TQ_API TqVector<wchar_t>;
extern template class TQ_API TqVectorData<char, TqDefaultMemAllocator<char>, TqRefCounter, TqVectorDefaultGrowPolicy>;
extern template class TQ_API
    TqVectorDataPtr<char, TqDefaultMemAllocator<char>, TqRefCounter, TqVectorDefaultGrowPolicy>;
extern template class TQ_API TqVector<char>;
extern template class TQ_API
    TqVectorData<unsigned char, TqDelegateMemAllocator<unsigned char>, int, TqVectorFlatMemBufGrowPolicy>;
extern template class TQ_API
    TqVectorDataPtr<unsigned char, TqDelegateMemAllocator<unsigned char>, int, TqVectorFlatMemBufGrowPolicy>;
extern template class TQ_API
    TqVector<unsigned char, TqDelegateMemAllocator<unsigned char>, int, TqVectorFlatMemBufGrowPolicy>;
