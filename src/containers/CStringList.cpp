#include "containers/StringPlacement.h"

#include <TqOsBase/containers/CStringList.h>

#include <cassert>
#include <memory>
#include <new>
#include <utility>

using namespace tq::detail;

namespace {

std::wstring_view viewOf(const wchar_t* text) {
    return text != nullptr ? std::wstring_view(text) : std::wstring_view();
}

// Adds `count` elements; where one cannot be added, those before it go again.
template <class AddNext, class RemoveLast>
void addAllOrNone(long long count, AddNext addNext, RemoveLast removeLast) {
    long long added = 0;
    try {
        for (; added < count; ++added)
            addNext();
    } catch (...) {
        for (; added > 0; --added)
            removeLast();
        throw;
    }
}

} // namespace

CStringList::~CStringList() {
    RemoveAll();
}

namespace {

// Callers that were compiled before these were inline find them in the library.
[[maybe_unused, gnu::used]] constexpr CStringList::String& (CStringList::*kSteps[])(__POSITION*&) = {
    &CStringList::GetNext, &CStringList::GetPrev};
[[maybe_unused, gnu::used]] constexpr const CStringList::String& (CStringList::*kConstSteps[])(__POSITION*&) const = {
    &CStringList::GetNext, &CStringList::GetPrev};
[[maybe_unused, gnu::used]] constexpr auto kGetHeadPosition = &CStringList::GetHeadPosition;

} // namespace

CStringList::CNode* CStringList::node(__POSITION* pos) {
    if (pos == nullptr)
        throw std::out_of_range("CStringList: no such element");
    return reinterpret_cast<CNode*>(pos);
}

__POSITION* CStringList::position(CNode* node) noexcept {
    return reinterpret_cast<__POSITION*>(node);
}

CStringList::CNode* CStringList::requireHead() const {
    return node(position(m_pNodeHead));
}

CStringList::CNode* CStringList::requireTail() const {
    return node(position(m_pNodeTail));
}

CStringList::String& CStringList::GetHead() {
    return requireHead()->data;
}

const CStringList::String& CStringList::GetHead() const {
    return requireHead()->data;
}

CStringList::String& CStringList::GetTail() {
    return requireTail()->data;
}

const CStringList::String& CStringList::GetTail() const {
    return requireTail()->data;
}

__POSITION* CStringList::GetTailPosition() const noexcept {
    return position(m_pNodeTail);
}

CStringList::String& CStringList::GetAt(__POSITION* pos) {
    return node(pos)->data;
}

const CStringList::String& CStringList::GetAt(__POSITION* pos) const {
    return node(pos)->data;
}

void CStringList::SetAt(__POSITION* pos, const wchar_t* value) {
    node(pos)->data = value;
}

void CStringList::SetAt(__POSITION* pos, const String& value) {
    node(pos)->data = value;
}

__POSITION* CStringList::AddHead(const wchar_t* value) {
    return insert(nullptr, m_pNodeHead, viewOf(value));
}

__POSITION* CStringList::AddHead(const String& value) {
    return insert(nullptr, m_pNodeHead, value);
}

__POSITION* CStringList::AddTail(const wchar_t* value) {
    return insert(m_pNodeTail, nullptr, viewOf(value));
}

__POSITION* CStringList::AddTail(const String& value) {
    return insert(m_pNodeTail, nullptr, value);
}

// The count is taken first, for the case that the two lists are one.
void CStringList::AddHead(CStringList* other) {
    if (other == nullptr)
        return;
    __POSITION* pos = other->GetTailPosition();
    addAllOrNone(
        other->GetCount(), [&] { AddHead(other->GetPrev(pos)); }, [&] { unlinkAndFree(m_pNodeHead); });
}

void CStringList::AddTail(CStringList* other) {
    if (other == nullptr)
        return;
    __POSITION* pos = other->GetHeadPosition();
    addAllOrNone(
        other->GetCount(), [&] { AddTail(other->GetNext(pos)); }, [&] { unlinkAndFree(m_pNodeTail); });
}

__POSITION* CStringList::InsertBefore(__POSITION* pos, const wchar_t* value) {
    if (pos == nullptr)
        return AddHead(value);
    return insert(node(pos)->pPrev, node(pos), viewOf(value));
}

__POSITION* CStringList::InsertBefore(__POSITION* pos, const String& value) {
    if (pos == nullptr)
        return AddHead(value);
    return insert(node(pos)->pPrev, node(pos), value);
}

__POSITION* CStringList::InsertAfter(__POSITION* pos, const wchar_t* value) {
    if (pos == nullptr)
        return AddTail(value);
    return insert(node(pos), node(pos)->pNext, viewOf(value));
}

__POSITION* CStringList::InsertAfter(__POSITION* pos, const String& value) {
    if (pos == nullptr)
        return AddTail(value);
    return insert(node(pos), node(pos)->pNext, value);
}

CStringList::String CStringList::RemoveHead() {
    CNode* head = requireHead();
    String removed = std::move(head->data);
    unlinkAndFree(head);
    return removed;
}

CStringList::String CStringList::RemoveTail() {
    CNode* tail = requireTail();
    String removed = std::move(tail->data);
    unlinkAndFree(tail);
    return removed;
}

void CStringList::RemoveAt(__POSITION* pos) {
    unlinkAndFree(node(pos));
}

void CStringList::RemoveAll() noexcept {
    for (CNode* here = m_pNodeHead; here != nullptr; here = here->pNext)
        std::destroy_at(&here->data);
    m_pNodeHead = m_pNodeTail = m_pNodeFree = nullptr;
    m_nCount = 0;
    if (m_pBlocks != nullptr)
        m_pBlocks->FreeDataChain();
    m_pBlocks = nullptr;
}

__POSITION* CStringList::FindIndex(long long index) const noexcept {
    if (index < 0 || index >= m_nCount)
        return nullptr;
    CNode* here = m_pNodeHead;
    for (; index > 0; --index)
        here = predicted(here->pNext, here, 1);
    return position(here);
}

__POSITION* CStringList::Find(const wchar_t* value, __POSITION* startAfter) const {
    if (value == nullptr)
        value = L"";
    CNode* here = startAfter == nullptr ? m_pNodeHead : node(startAfter)->pNext;
    while (here != nullptr && here->data != value)
        here = here->pNext;
    return position(here);
}

// Threads the nodes of a new block onto the free list in address order.
void CStringList::addBlock() {
    CPlex* block = CPlex::Create(m_pBlocks, static_cast<std::size_t>(m_nBlockSize), sizeof(CNode));
    auto* nodes = static_cast<CNode*>(block->data());
    for (long long i = m_nBlockSize - 1; i >= 0; --i) {
        nodes[i].pNext = m_pNodeFree;
        m_pNodeFree = &nodes[i];
    }
}

__POSITION* CStringList::insert(CNode* prev, CNode* next, std::wstring_view value) {
    if (m_pNodeFree == nullptr)
        addBlock();
    try {
        placeString(&m_pNodeFree->data, value);
    } catch (...) {
        if (m_nCount == 0) // an empty list has no blocks
            RemoveAll();
        throw;
    }
    assert((prev == nullptr || prev->pNext == next) && (next == nullptr || next->pPrev == prev));
    CNode* fresh = m_pNodeFree;
    m_pNodeFree = fresh->pNext;
    fresh->pPrev = prev;
    fresh->pNext = next;
    (prev != nullptr ? prev->pNext : m_pNodeHead) = fresh;
    (next != nullptr ? next->pPrev : m_pNodeTail) = fresh;
    ++m_nCount;
    return position(fresh);
}

void CStringList::unlinkAndFree(CNode* node) noexcept {
    assert(m_nCount > 0 && (node->pPrev == nullptr) == (node == m_pNodeHead));
    assert((node->pNext == nullptr) == (node == m_pNodeTail));
    (node->pPrev != nullptr ? node->pPrev->pNext : m_pNodeHead) = node->pNext;
    (node->pNext != nullptr ? node->pNext->pPrev : m_pNodeTail) = node->pPrev;
    std::destroy_at(&node->data);
    node->pNext = m_pNodeFree;
    m_pNodeFree = node;
    if (--m_nCount == 0)
        RemoveAll();
}
