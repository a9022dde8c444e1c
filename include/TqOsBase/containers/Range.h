#pragma once

#include <TqOsBase/containers/CMapStringToPtr.h>
#include <TqOsBase/containers/CStdStr.h>
#include <TqOsBase/containers/CStringArray.h>
#include <TqOsBase/containers/CStringList.h>
#include <TqOsBase/containers/TqVector.h>

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <utility>

/// \file
/// The collections in range-based for and in the algorithms of the standard library, and filled from lists in braces.
/// begin() and end() are found by themselves where this header is included:
///
///     for (const auto& name : names) ...          // TqVector, CStringArray, CStringList
///     for (const auto& [key, value] : map) ...    // CMapStringToPtr
///
/// What holds of positions and elements of a collection holds of its iterators: adding to a vector or array ends
/// theirs, removing an element ends those at it.

/// @{
/// The elements of a vector, in order. Those of one that is not const may be written to, so it gets storage of its own
/// first; use std::as_const() to read a shared one.
template <class T, class... Policies>
const T* begin(const TqVector<T, Policies...>& vector) {
    return vector.asArrayPtr();
}
template <class T, class... Policies>
const T* end(const TqVector<T, Policies...>& vector) {
    return vector.asArrayPtr() + vector.logicalLength();
}
template <class T, class... Policies>
T* begin(TqVector<T, Policies...>& vector) {
    return vector.asArrayPtr();
}
template <class T, class... Policies>
T* end(TqVector<T, Policies...>& vector) {
    return vector.asArrayPtr() + vector.logicalLength();
}
/// @}

/// @{
/// The strings of an array, in order.
inline const CStringArray::String* begin(const CStringArray& array) {
    return array.IsEmpty() ? nullptr : &array[0];
}
inline const CStringArray::String* end(const CStringArray& array) {
    return begin(array) + array.GetSize();
}
inline CStringArray::String* begin(CStringArray& array) {
    return array.IsEmpty() ? nullptr : &array[0];
}
inline CStringArray::String* end(CStringArray& array) {
    return begin(array) + array.GetSize();
}
/// @}

namespace tq {

/// Goes through a CStringList from head to tail; the default one stands after the tail.
template <class List, class String>
class ListIterator {
public:
    using iterator_category = std::forward_iterator_tag; ///< For std::iterator_traits.
    using value_type = CStringList::String;              ///< For std::iterator_traits.
    using difference_type = std::ptrdiff_t;              ///< For std::iterator_traits.
    using pointer = String*;                             ///< For std::iterator_traits.
    using reference = String&;                           ///< For std::iterator_traits.

    /// After the tail.
    ListIterator() = default;
    /// At the head.
    explicit ListIterator(List& list) : m_list(&list), m_next(list.GetHeadPosition()) { ++*this; }

    /// @{
    /// The string.
    reference operator*() const noexcept { return *m_string; }
    pointer operator->() const noexcept { return m_string; }
    /// @}
    /// @{
    /// Moves to the next string.
    ListIterator& operator++() {
        m_string = m_next != nullptr ? &m_list->GetNext(m_next) : nullptr;
        return *this;
    }
    ListIterator operator++(int) {
        ListIterator before = *this;
        ++*this;
        return before;
    }
    /// @}
    /// @{
    /// Whether both stand at the same string, or after the tail.
    friend bool operator==(const ListIterator& a, const ListIterator& b) noexcept { return a.m_string == b.m_string; }
    friend bool operator!=(const ListIterator& a, const ListIterator& b) noexcept { return a.m_string != b.m_string; }
    /// @}

private:
    List* m_list = nullptr;
    __POSITION* m_next = nullptr;
    String* m_string = nullptr;
};

/// Goes through the entries of a CMapStringToPtr in the order of GetNextAssoc(); the default one stands after the last.
class MapIterator {
public:
    /// A copy of an entry.
    struct Entry {
        CStdStr<wchar_t> key;  ///< Its key.
        void* value = nullptr; ///< Its value.
    };
    using iterator_category = std::input_iterator_tag; ///< For std::iterator_traits.
    using value_type = Entry;                          ///< For std::iterator_traits.
    using difference_type = std::ptrdiff_t;            ///< For std::iterator_traits.
    using pointer = const Entry*;                      ///< For std::iterator_traits.
    using reference = const Entry&;                    ///< For std::iterator_traits.

    /// After the last entry.
    MapIterator() = default;
    /// At the first entry.
    explicit MapIterator(const CMapStringToPtr& map) : m_map(&map), m_next(map.GetStartPosition()) { ++*this; }

    /// @{
    /// The entry.
    reference operator*() const noexcept { return m_entry; }
    pointer operator->() const noexcept { return &m_entry; }
    /// @}
    /// @{
    /// Moves to the next entry. The one before may have been removed meanwhile.
    MapIterator& operator++() {
        if (m_next != nullptr)
            m_map->GetNextAssoc(m_next, m_entry.key, m_entry.value);
        else
            m_map = nullptr;
        return *this;
    }
    void operator++(int) { ++*this; }
    /// @}
    /// @{
    /// Whether both stand after the last entry, or both do not.
    friend bool operator==(const MapIterator& a, const MapIterator& b) noexcept {
        return (a.m_map == nullptr) == (b.m_map == nullptr);
    }
    friend bool operator!=(const MapIterator& a, const MapIterator& b) noexcept { return !(a == b); }
    /// @}

private:
    const CMapStringToPtr* m_map = nullptr;
    __POSITION* m_next = nullptr;
    Entry m_entry;
};

/// @{
/// Appends the values in order. A list in braces after the name of a collection would read as the arguments of its
/// constructor, such as a block size; so it is appended. Throw what the collection throws, with the values before
/// appended.
template <class T, class... Policies>
void append(TqVector<T, Policies...>& vector, std::initializer_list<T> values) {
    for (const T& value : values)
        vector.append(value);
}
inline void append(CStringArray& array, std::initializer_list<const wchar_t*> values) {
    for (const wchar_t* value : values)
        array.Add(value);
}
inline void append(CStringList& list, std::initializer_list<const wchar_t*> values) {
    for (const wchar_t* value : values)
        list.AddTail(value);
}
inline void append(CMapStringToPtr& map, std::initializer_list<std::pair<const wchar_t*, void*>> entries) {
    for (const auto& [key, value] : entries)
        map.SetAt(key, value);
}
/// @}

} // namespace tq

/// @{
/// The strings of a list, from head to tail.
inline tq::ListIterator<const CStringList, const CStringList::String> begin(const CStringList& list) {
    return tq::ListIterator<const CStringList, const CStringList::String>(list);
}
inline tq::ListIterator<const CStringList, const CStringList::String> end(const CStringList&) {
    return {};
}
inline tq::ListIterator<CStringList, CStringList::String> begin(CStringList& list) {
    return tq::ListIterator<CStringList, CStringList::String>(list);
}
inline tq::ListIterator<CStringList, CStringList::String> end(CStringList&) {
    return {};
}
/// @}

/// @{
/// Copies of the entries of a map, in no order that means anything.
inline tq::MapIterator begin(const CMapStringToPtr& map) {
    return tq::MapIterator(map);
}
inline tq::MapIterator end(const CMapStringToPtr&) {
    return {};
}
/// @}
