#pragma once

/// \file
/// A doubly linked list of wide strings.

#include <TqOsBase/Export.h>
#include <TqOsBase/containers/CPlex.h>
#include <TqOsBase/containers/CStdStr.h>

#include <cstdint>
#include <stdexcept>
#include <string_view>

namespace tq::detail {

/// `actual`, which was read from `here` and usually is the address `distance` objects on. As that address is known
/// before `actual` has been read, the processor, which predicts the branch, goes on to the next object without waiting;
/// a wrong prediction costs time, the result is always `actual`. The empty asm statements keep the compiler from seeing
/// that the two are equal and from replacing the branch by a conditional move, which waits.
template <class T>
inline T* predicted(T* actual, const T* here, int distance) noexcept {
    const std::uintptr_t neighbour =
        reinterpret_cast<std::uintptr_t>(here) + static_cast<std::uintptr_t>(distance) * sizeof(T);
    std::uintptr_t result = neighbour;
    asm("" : "+r"(result));
    if (__builtin_expect(reinterpret_cast<std::uintptr_t>(actual) != neighbour, 0)) {
        asm volatile("");
        return actual;
    }
    return reinterpret_cast<T*>(result);
}

} // namespace tq::detail

/// Position in a string list or map: an opaque pointer, null meaning none. It stays valid until its element is removed.
struct __POSITION;

/// Doubly linked list of wide strings. Nodes are cut from blocks of a fixed number of nodes and recycled through a free
/// list; all blocks are given back the moment the list becomes empty.
///
/// With N nodes linked, F nodes on the free list and B blocks chained it holds between any two calls:
///   N = GetCount(),  N + F = B * block size,  N = 0  <=>  B = 0
///
/// A position must be null or one of this list's. Operations that need an element (GetHead, GetTail, RemoveHead,
/// RemoveTail, and all that take a position unless they say what null means) throw std::out_of_range when there is
/// none. What allocates throws std::bad_alloc and leaves the list as it was. Values may be strings of the list itself.
class TQ_API CStringList {
public:
    using String = CStdStr<wchar_t>; ///< An element.

    /// An empty list that allocates `nBlockSize` nodes at a time. Throws std::invalid_argument below 1.
    explicit constexpr CStringList(long long nBlockSize)
        : m_pNodeHead(nullptr), m_pNodeTail(nullptr), m_nCount(0), m_pNodeFree(nullptr), m_pBlocks(nullptr),
          m_nBlockSize(nBlockSize) {
        if (nBlockSize < 1)
            throw std::invalid_argument("CStringList: block size below 1");
    }
    CStringList(const CStringList&) = delete;
    CStringList& operator=(const CStringList&) = delete;
    ~CStringList();

    /// The number of strings.
    long long GetCount() const noexcept { return m_nCount; }
    /// As GetCount.
    long long GetSize() const noexcept { return m_nCount; }
    /// GetCount() is 0.
    bool IsEmpty() const noexcept { return m_nCount == 0; }

    /// The first string.
    String& GetHead();
    const String& GetHead() const;
    /// The last string.
    String& GetTail();
    const String& GetTail() const;

    /// The first position, null when the list is empty.
    TQ_API __POSITION* GetHeadPosition() const noexcept { return reinterpret_cast<__POSITION*>(m_pNodeHead); }
    /// The last position, null when the list is empty.
    __POSITION* GetTailPosition() const noexcept;

    /// The string at `pos`; `pos` moves on to the next node, null after the tail.
    TQ_API String& GetNext(__POSITION*& pos) { return step(pos, &CNode::pNext, 1); }
    TQ_API const String& GetNext(__POSITION*& pos) const { return step(pos, &CNode::pNext, 1); }
    /// The string at `pos`; `pos` moves back to the previous node, null before the head.
    TQ_API String& GetPrev(__POSITION*& pos) { return step(pos, &CNode::pPrev, -1); }
    TQ_API const String& GetPrev(__POSITION*& pos) const { return step(pos, &CNode::pPrev, -1); }

    /// The string at `pos`.
    String& GetAt(__POSITION* pos);
    const String& GetAt(__POSITION* pos) const;
    /// Assigns to the string at `pos`. Null empties it. `value` may be part of the string it replaces.
    void SetAt(__POSITION* pos, const wchar_t* value);
    void SetAt(__POSITION* pos, const String& value);

    /// Adds before the head and returns the new position. A null `const wchar_t*` adds an empty string (a bare
    /// nullptr could also mean a list and does not compile).
    __POSITION* AddHead(const wchar_t* value);
    __POSITION* AddHead(const String& value);
    /// The same after the tail.
    __POSITION* AddTail(const wchar_t* value);
    __POSITION* AddTail(const String& value);
    /// Adds copies of the other list's strings, in its order, before the head. A list added to itself is doubled;
    /// null adds nothing. All strings are added or none.
    void AddHead(CStringList* other);
    /// The same after the tail.
    void AddTail(CStringList* other);

    /// A new node before `pos`; null position: as AddHead. Returns the new position.
    __POSITION* InsertBefore(__POSITION* pos, const wchar_t* value);
    __POSITION* InsertBefore(__POSITION* pos, const String& value);
    /// A new node after `pos`; null position: as AddTail. Returns the new position.
    __POSITION* InsertAfter(__POSITION* pos, const wchar_t* value);
    __POSITION* InsertAfter(__POSITION* pos, const String& value);

    /// Removes the first string and returns it.
    String RemoveHead();
    /// Removes the last string and returns it.
    String RemoveTail();
    /// Removes the string at `pos`, whose position ends with it.
    void RemoveAt(__POSITION* pos);
    /// Gives everything back.
    void RemoveAll() noexcept;

    /// The node `index` steps after the head; null when there is none.
    __POSITION* FindIndex(long long index) const noexcept;
    /// The first node after `startAfter` (null: from the head on) whose string equals `value`, null being the empty
    /// string; null when there is none. The start itself is never returned.
    __POSITION* Find(const wchar_t* value, __POSITION* startAfter = nullptr) const;

private:
    struct TQ_SHOWN CNode {
        CNode* pNext;
        CNode* pPrev;
        String data;
    };

    static CNode* node(__POSITION* pos);
    // Nodes are handed out in address order, so one that was added at the tail lies after the one before it.
    static String& step(__POSITION*& pos, CNode* CNode::*link, int distance) {
        CNode* const here = pos != nullptr ? reinterpret_cast<CNode*>(pos) : node(pos); // node(): throws
        pos = reinterpret_cast<__POSITION*>(tq::detail::predicted(here->*link, here, distance));
        return here->data;
    }
    static __POSITION* position(CNode* node) noexcept;
    CNode* requireHead() const;
    CNode* requireTail() const;
    void addBlock();
    __POSITION* insert(CNode* prev, CNode* next, std::wstring_view value);
    void unlinkAndFree(CNode* node) noexcept;

    CNode* m_pNodeHead;
    CNode* m_pNodeTail;
    long long m_nCount;
    CNode* m_pNodeFree; // linked through pNext; their strings are not alive
    CPlex* m_pBlocks;
    long long m_nBlockSize;
};
