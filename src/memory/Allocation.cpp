#include "memory/ThreadHeaps.h"

#include <TqOsBase/memory/Allocation.h>

#include <algorithm>
#include <cwchar>

using tq::detail::g_tqGlobalHeap;
using tq::detail::GlobalHeap;
using tq::detail::HeapVisit;
using tq::detail::kPageBytes;
using tq::detail::kSegmentBytes;
using tq::detail::ThreadHeaps;

namespace {

// The largest request that the checked forms accept.
constexpr std::size_t kLargestRequest = 0x80000000U;

void trimOrAsk(GlobalHeap& heap) {
    if (const HeapVisit visit(heap); visit)
        heap.trim();
    else
        heap.askToTrim();
}

} // namespace

void* tqMalloc(std::size_t size) {
    void* const block = GlobalHeap::allocAtHand(size);
    if (block != nullptr) [[likely]]
        return block;
    return size <= kLargestRequest ? GlobalHeap::allocUncommon(size) : nullptr;
}

void* tqAllocate(std::size_t size) {
    return GlobalHeap::allocHeap(size);
}

void* tqRealloc(void* block, std::size_t size) {
    return size == 0 ? block : GlobalHeap::reallocHeap(block, size);
}

void* tqReallocate(void* block, std::size_t size) {
    return GlobalHeap::reallocHeap(block, size);
}

void tqFree(void* block) {
    GlobalHeap::freeHeap(block); // null is foreign, and the C library ignores it
}

void tqDeallocate(void* block) {
    GlobalHeap::freeHeap(block);
}

std::size_t tqMsize(void* block) {
    return block == nullptr ? 0 : GlobalHeap::sizeOf(block);
}

std::size_t tqAllocSizeOf(void* block) {
    return GlobalHeap::sizeOf(block);
}

wchar_t* tqStrdup(const wchar_t* text) {
    if (text == nullptr)
        return nullptr;
    const std::size_t count = std::wcslen(text) + 1;
    auto* const copy = static_cast<wchar_t*>(tqMalloc(count * sizeof(wchar_t)));
    if (copy != nullptr)
        std::wmemcpy(copy, text, count);
    return copy;
}

void tqStrdupFree(wchar_t* text) {
    tqFree(text);
}

void* tqMallocDbg(std::size_t) {
    return nullptr;
}

void* tqAllocateDbg(std::size_t) {
    return nullptr;
}

void* tqReallocDbg(void*, std::size_t) {
    return nullptr;
}

void* tqReallocateDbg(void*, std::size_t) {
    return nullptr;
}

void tqFreeDbg(void* block) {
    tqFree(block);
}

void tqDeallocateDbg(void* block) {
    tqFree(block);
}

std::size_t tqMsizeDbg(void* block) {
    return tqMsize(block);
}

std::size_t tqAllocSizeOfDbg(void* block) {
    return tqAllocSizeOf(block);
}

void* tqAllocPage() {
    return GlobalHeap::allocHeapPage(kSegmentBytes / kPageBytes, kSegmentBytes);
}

void tqFreePage(void* unit) {
    GlobalHeap::freeHeapPage(unit);
}

void* tqAllocPageHeap(std::size_t size) {
    const std::size_t wanted = std::max<std::size_t>(size, 1);
    return GlobalHeap::allocHeapPage(wanted % kPageBytes == 0 ? wanted / kPageBytes : 0, wanted);
}

void tqFreePageHeap(void* unit) {
    GlobalHeap::freeHeapPage(unit);
}

void tqHeapTrim() {
    trimOrAsk(g_tqGlobalHeap);
    ThreadHeaps::forEach(trimOrAsk);
}
