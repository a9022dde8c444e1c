#include "containers/StringRelocation.h"

#include <TqOsBase/containers/CStringArray.h>

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

using namespace tq::detail;

namespace {

constexpr long long kMost = std::numeric_limits<long long>::max();

// The automatic steps.
constexpr long long kSmallSize = 32;
constexpr long long kSmallStep = 4;
constexpr long long kLargeSize = 8200;
constexpr long long kLargeStep = 1024;
constexpr long long kStepDivisor = 8;

void requireIndex(bool isIndex) {
    if (!isIndex)
        throw std::out_of_range("CStringArray: no such element");
}

void requireCount(long long count) {
    if (count < 0)
        throw std::length_error("CStringArray: negative count");
}

// Neither is negative. A sum that cannot be expressed is a size that cannot be had.
long long sum(long long a, long long b) {
    assert(a >= 0 && b >= 0);
    if (b > kMost - a)
        throw std::bad_alloc();
    return a + b;
}

// What stands in front of the elements: how many there is room for. From kRoomySize on that is more than the capacity
// that the growth rules give, so that the short steps of a large array do not move all of it each time; memory that is
// not touched costs next to nothing.
constexpr long long kRoomySize = 256;

struct alignas(alignof(std::max_align_t)) BlockHeader {
    long long room;
};

BlockHeader* headerOf(CStringArray::String* array) {
    return reinterpret_cast<BlockHeader*>(array) - 1;
}

CStringArray::String* allocate(long long room) {
    constexpr long long kMostRoom =
        (kMost - static_cast<long long>(sizeof(BlockHeader))) / static_cast<long long>(sizeof(CStringArray::String));
    if (room > kMostRoom)
        throw std::bad_alloc();
    const std::size_t bytes = sizeof(BlockHeader) + static_cast<std::size_t>(room) * sizeof(CStringArray::String);
    auto* header = ::new (static_cast<void*>(new std::byte[bytes])) BlockHeader{room};
    return reinterpret_cast<CStringArray::String*>(header + 1);
}

void release(CStringArray::String* array) noexcept {
    if (array != nullptr)
        delete[] reinterpret_cast<std::byte*>(headerOf(array));
}

} // namespace

CStringArray::~CStringArray() {
    RemoveAll();
}

void CStringArray::RemoveAll() noexcept {
    std::destroy_n(m_pData, m_nSize);
    release(m_pData);
    m_pData = nullptr;
    m_nSize = m_nMaxSize = 0;
}

// The capacity for `size` elements, by the growth rules.
long long CStringArray::capacityFor(long long size) const {
    if (size <= m_nMaxSize || m_pData == nullptr)
        return std::max(size, m_nMaxSize);
    long long step = m_nGrowBy;
    if (step == 0)
        step = m_nSize < kSmallSize ? kSmallStep : m_nSize < kLargeSize ? m_nSize / kStepDivisor : kLargeStep;
    return std::max(size, sum(m_nMaxSize, step));
}

void CStringArray::reserve(long long size) {
    if (size <= m_nMaxSize)
        return;
    const long long capacity = capacityFor(size);
    if (m_pData != nullptr && headerOf(m_pData)->room >= capacity)
        m_nMaxSize = capacity;
    else
        moveTo(capacity, m_nSize < kRoomySize ? capacity : sum(capacity, capacity));
}

void CStringArray::moveTo(long long capacity, long long room) {
    assert(m_nSize <= capacity && capacity <= room);
    String* fresh = allocate(room);
    relocate(fresh, m_pData, static_cast<std::size_t>(m_nSize));
    release(m_pData);
    m_pData = fresh;
    m_nMaxSize = capacity;
}

void CStringArray::SetSize(long long size, long long growBy) {
    requireCount(size);
    if (growBy >= 0)
        m_nGrowBy = growBy;
    if (size == 0) {
        RemoveAll();
        return;
    }
    reserve(size);
    if (size < m_nSize)
        std::destroy_n(m_pData + size, m_nSize - size);
    else
        std::uninitialized_value_construct_n(m_pData + m_nSize, size - m_nSize);
    m_nSize = size;
}

void CStringArray::FreeExtra() {
    if (m_nSize == 0)
        RemoveAll();
    else if (m_nSize != headerOf(m_pData)->room)
        moveTo(m_nSize, m_nSize);
}

// By value: the copy is made before the array, which may hold the original, moves.
void CStringArray::setAtGrow(long long index, String value) {
    requireIndex(index >= 0);
    if (index >= m_nSize)
        SetSize(sum(index, 1));
    m_pData[index] = std::move(value);
}

void CStringArray::SetAtGrow(long long index, const wchar_t* value) {
    setAtGrow(index, value);
}

void CStringArray::SetAtGrow(long long index, const String& value) {
    setAtGrow(index, value);
}

long long CStringArray::Add(const wchar_t* value) {
    return append(value != nullptr ? value : L"");
}

long long CStringArray::Add(const String& value) {
    return append(value);
}

long long CStringArray::append(std::wstring_view value) {
    if (m_nSize < m_nMaxSize) {
        placeString(m_pData + m_nSize, value);
    } else {
        String copy(value);
        reserve(sum(m_nSize, 1));
        std::construct_at(m_pData + m_nSize, std::move(copy));
    }
    return m_nSize++;
}

long long CStringArray::Append(const CStringArray& other) {
    const long long oldSize = m_nSize;
    const long long added = other.m_nSize; // taken first, for the case that the two arrays are one
    if (oldSize == 0 && added == 0) {
        SetSize(0); // which gives the storage back
        return 0;
    }
    reserve(sum(oldSize, added));
    std::uninitialized_copy_n(other.m_pData, added, m_pData + oldSize);
    m_nSize = oldSize + added;
    return oldSize;
}

// The copies are made beside the present elements, which go only when nothing can fail any more.
void CStringArray::Copy(const CStringArray& other) {
    if (this == &other)
        return;
    if (other.IsEmpty()) {
        RemoveAll();
        return;
    }
    CStringArray fresh;
    const long long capacity = capacityFor(other.m_nSize);
    fresh.moveTo(capacity, capacity);
    fresh.Append(other);
    std::swap(m_pData, fresh.m_pData);
    std::swap(m_nSize, fresh.m_nSize);
    std::swap(m_nMaxSize, fresh.m_nMaxSize);
}

void CStringArray::InsertEmpty(long long index, long long count) {
    requireIndex(index >= 0);
    requireCount(count);
    if (index >= m_nSize) {
        SetSize(sum(index, count));
        return;
    }
    reserve(sum(m_nSize, count));
    String* const gap = m_pData + index;
    relocate(gap + count, gap, static_cast<std::size_t>(m_nSize - index));
    std::uninitialized_value_construct_n(gap, count);
    m_nSize += count;
}

// Inserts source[0], source[step] and so on, which lie outside this array; all or none of them.
void CStringArray::insertCopies(long long index, const String* source, long long count, long long step) {
    assert(count == 0 || source + (count - 1) * step < m_pData || source >= m_pData + m_nSize);
    const long long oldSize = m_nSize;
    InsertEmpty(index, count);
    try {
        String* const first = m_pData + index;
        for (long long i = 0; i < count; ++i)
            first[i] = source[i * step]; // NOLINT(clang-analyzer-core.CallAndMessage): InsertEmpty has made the array
    } catch (...) {
        RemoveAt(std::min(index, oldSize), m_nSize - oldSize);
        throw;
    }
}

void CStringArray::InsertAt(long long index, const wchar_t* value, long long count) {
    const String copy(value); // `value` may lie in the array, which moves
    insertCopies(index, &copy, count, 0);
}

void CStringArray::InsertAt(long long index, const String& value, long long count) {
    const String copy(value); // `value` may lie in the array, which moves
    insertCopies(index, &copy, count, 0);
}

void CStringArray::InsertAt(long long index, const CStringArray* other) {
    if (other == nullptr || other->IsEmpty())
        return;
    if (other == this) {
        CStringArray copy;
        copy.Copy(*this);
        InsertAt(index, &copy);
        return;
    }
    insertCopies(index, other->m_pData, other->m_nSize, 1);
}

void CStringArray::RemoveAt(long long index, long long count) {
    requireCount(count);
    requireIndex(index >= 0 && index <= m_nSize && count <= m_nSize - index);
    String* const gap = m_pData + index;
    std::destroy_n(gap, count);
    relocate(gap, gap + count, static_cast<std::size_t>(m_nSize - index - count));
    m_nSize -= count;
}
