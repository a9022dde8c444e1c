#pragma once

/// \file
/// A growable array of wide strings.

#include <TqOsBase/Export.h>
#include <TqOsBase/containers/CStdStr.h>

#include <cassert>
#include <string_view>

/// Growable array of wide strings in one contiguous block, which grows by a fixed step where one is set and otherwise
/// by 4 slots below 32 elements, an eighth of the size below 8200, and 1024 from there on. A block for 256 elements or
/// more is made with room for twice its capacity, so that most of those steps leave the elements where they are.
///
/// It holds between any two calls:
///   0 <= size <= capacity,  the elements [0, size) are alive, the slots after them are not,
///   no array <=> capacity = 0
///
/// Reading and assigning an element does not check its index, except by assert. What changes the size does: a negative
/// index or one that names no element throws std::out_of_range, a negative count std::length_error, and an array or a
/// string that cannot be had std::bad_alloc, each with the elements unchanged. Values may be strings of the array
/// itself; a null `const wchar_t*` means the empty string. Not copied implicitly: there is Copy.
class TQ_API CStringArray {
public:
    using String = CStdStr<wchar_t>; ///< An element.

    constexpr CStringArray() noexcept : m_pData(nullptr), m_nSize(0), m_nMaxSize(0), m_nGrowBy(0) {}
    CStringArray(const CStringArray&) = delete;
    CStringArray& operator=(const CStringArray&) = delete;
    ~CStringArray();

    /// The number of elements.
    long long GetSize() const noexcept { return m_nSize; }
    /// As GetSize.
    long long GetCount() const noexcept { return m_nSize; }
    /// GetSize() is 0.
    bool IsEmpty() const noexcept { return m_nSize == 0; }

    /// @{
    /// The element, by an index that is checked by assert alone.
    String& GetAt(long long index) { return m_pData[checked(index)]; }
    const String& GetAt(long long index) const { return m_pData[checked(index)]; }
    String& ElementAt(long long index) { return m_pData[checked(index)]; }
    const String& ElementAt(long long index) const { return m_pData[checked(index)]; }
    String& operator[](long long index) { return m_pData[checked(index)]; }
    const String& operator[](long long index) const { return m_pData[checked(index)]; }
    /// @}
    /// Assigns to an element, by an index that is checked by assert alone.
    void SetAt(long long index, const wchar_t* value) { GetAt(index) = value; }
    void SetAt(long long index, const String& value) { GetAt(index) = value; }

    /// Assigns to an element, after growing to index + 1 elements where there is none; those between are empty.
    void SetAtGrow(long long index, const wchar_t* value);
    void SetAtGrow(long long index, const String& value);
    /// Appends and returns the new element's index.
    long long Add(const wchar_t* value);
    long long Add(const String& value);
    /// Appends copies of the other array's elements (this array itself is doubled) and returns the old size. When both
    /// are empty, the storage is given back as by SetSize(0).
    long long Append(const CStringArray& other);
    /// Takes the other array's elements in place of its own; grow-by stays.
    void Copy(const CStringArray& other);

    /// Destroys the elements after `size` or appends empty ones. 0 gives the array back. The capacity never shrinks
    /// otherwise; a first array has exactly `size` slots. growBy is remembered: slots to grow by, 0 for the automatic
    /// steps, negative to leave it as it is.
    void SetSize(long long size, long long growBy = -1);
    /// Reduces the capacity to the size.
    void FreeExtra();
    /// Destroys the elements and gives the array back; grow-by stays.
    void RemoveAll() noexcept;

    /// Puts `count` empty elements before element `index`. From the end on, the array grows to index + count.
    void InsertEmpty(long long index, long long count);
    /// InsertEmpty, then `value` in each of the new elements.
    void InsertAt(long long index, const wchar_t* value, long long count = 1);
    void InsertAt(long long index, const String& value, long long count = 1);
    /// Puts copies of the other array's elements, which may be this array, before element `index`. An empty array
    /// or null inserts nothing, wherever `index` is.
    void InsertAt(long long index, const CStringArray* other);
    /// Removes `count` elements from `index` on.
    void RemoveAt(long long index, long long count = 1);

private:
    long long checked(long long index) const {
        assert(index >= 0 && index < m_nSize);
        return index;
    }
    long long capacityFor(long long size) const;
    void reserve(long long size);
    void moveTo(long long capacity, long long room);
    long long append(std::wstring_view value);
    void setAtGrow(long long index, String value);
    void insertCopies(long long index, const String* source, long long count, long long step);

    String* m_pData;
    long long m_nSize;
    long long m_nMaxSize;
    long long m_nGrowBy;
};
