#include "HeapFixture.h"

// A request that malloc cannot serve must give null also where a tool would rather stop the program.
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}

extern "C" const char* __tsan_default_options() {
    return "allocator_may_return_null=1";
}

namespace {

using namespace heap_test;

using Allocation = HeapTest;

constexpr std::size_t kTwoGiB = 0x80000000U;
constexpr void (*kReleases[])(void*) = {tqFree, tqDeallocate, tqFreeDbg, tqDeallocateDbg, tqFreePage, tqFreePageHeap};

// The unit that serves a size, or 0 for the C library, stated by ranges of sizes instead of pools.
std::size_t unitOf(std::size_t size) {
    if (size <= 208)
        return (size + 7) / 8 * 8;
    if (size <= 256)
        return (size + 15) / 16 * 16;
    for (const std::size_t unit : Sizes{512, 1024, 2048, 4096})
        if (size <= unit && size >= unit / 512 * 500)
            return unit;
    return 0;
}

TEST_F(Allocation, EverySizeIsServedByItsPoolOrByTheCLibrary) {
    for (std::size_t size = 1; size <= 5000; ++size) {
        SCOPED_TRACE(size);
        void* const block = tqMalloc(size);
        std::memset(block, 0xA5, size);
        const std::size_t unit = unitOf(size);
        EXPECT_EQ(isPooled(block), unit != 0);
        EXPECT_TRUE(unit == 0 ? tqMsize(block) >= size : tqMsize(block) == unit);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % (unit % 16 == 0 ? 16 : 8), 0U);
        for (std::size_t (*sizeOf)(void*) : {tqAllocSizeOf, tqMsizeDbg, tqAllocSizeOfDbg})
            EXPECT_EQ(sizeOf(block), tqMsize(block));
        tqFree(block);
    }
    using Classes = tq::detail::TqPoolConfigurator<34>;
    for (const auto& [size, pool] :
         {std::pair(std::size_t{1}, 33U), {200, 9}, {209, 7}, {500, 1}, {4096, 4}, {SIZE_MAX, 0}})
        EXPECT_EQ(Classes::poolOfSize(size), pool) << size;
}

TEST_F(Allocation, ZeroNullAndTheLimit) {
    for (void* smallest : {tqMalloc(0), tqAllocate(0)}) {
        EXPECT_EQ(tqMsize(smallest), 8U);
        tqFree(smallest);
    }
    EXPECT_FALSE(tqMalloc(kTwoGiB + 1) || tqMalloc(SIZE_MAX));
    for (void* block : {tqMalloc(kTwoGiB), tqAllocate(kTwoGiB + 1)}) { // untouched, so it costs address space only
        EXPECT_FALSE(block == nullptr || isPooled(block));
        tqDeallocate(block);
    }
    for (const auto release : kReleases)
        release(nullptr);
    EXPECT_TRUE(tqMsize(nullptr) + tqMsizeDbg(nullptr) == 0 && tqStrdup(nullptr) == nullptr);
    tqStrdupFree(nullptr);
    const std::wstring text(5000, L'\U0001F4D0');
    wchar_t* const copy = tqStrdup(text.c_str());
    EXPECT_EQ(copy, text);
    tqStrdupFree(copy);
    void* const block = tqMalloc(10);
    for (const std::size_t n : Sizes{0, 1, 4097}) // the debug forms allocate nothing
        EXPECT_FALSE(tqMallocDbg(n) || tqAllocateDbg(n) || tqReallocDbg(block, n) || tqReallocateDbg(block, n));
    EXPECT_EQ(tqMsize(block), 16U) << "still allocated";
    tqFreeDbg(block);
    EXPECT_EQ(tqMalloc(10), block) << "was freed";
    tqDeallocateDbg(block);
}

TEST_F(Allocation, ReallocationMovesPoolBlocksAndCopiesTheSmallerSize) {
    constexpr std::size_t kForeign = 1; // from malloc
    const Sizes sizes = {kForeign, 8, 60, 64, 300, 512, 4096, 5000, 2 * kPageBytes};
    for (void* (*reallocate)(void*, std::size_t) : {tqRealloc, tqReallocate})
        for (const std::size_t from : sizes)
            for (const std::size_t to : sizes) {
                auto* const block = static_cast<char*>(from == kForeign         ? std::malloc(from)
                                                       : from == 2 * kPageBytes ? tqAllocPageHeap(from)
                                                                                : tqMalloc(from));
                std::memset(block, 'x', from);
                auto* const moved = static_cast<char*>(reallocate(block, to));
                EXPECT_EQ(isPooled(moved), isPooled(block) && unitOf(to) != 0);
                EXPECT_GE(tqMsize(moved), to);
                EXPECT_TRUE(!isPooled(block) || moved != block) << "a pool's block moves even when it has room";
                EXPECT_EQ(std::string(moved, std::min(from, to)), std::string(std::min(from, to), 'x'));
                kReleases[(from + to) / 4 % 4](moved); // a leak here is for the tools to see
            }
    void* const block = tqMalloc(64);
    EXPECT_TRUE(tqRealloc(block, 0) == block && tqRealloc(block, SIZE_MAX / 2) == nullptr);
    void* const fresh = tqReallocate(block, 0);
    EXPECT_EQ(tqMsize(fresh), 8U);
    tqFree(fresh);
    void* const fromNull = tqRealloc(nullptr, 24);
    EXPECT_FALSE(isPooled(fromNull));
    tqFreePage(fromNull);
}

TEST_F(Allocation, PageUnitsOfEverySize) {
    for (std::size_t pages = 1; pages <= 256; ++pages) {
        const std::size_t unit = pages * kPageBytes;
        // One unit more than a segment holds, so that the first segment becomes full.
        std::vector<char*> units(kSegmentBytes / unit + 1);
        for (char*& p : units) {
            p = static_cast<char*>(pages == 256 && p == units[0] ? tqAllocPage() : tqAllocPageHeap(unit));
            ASSERT_TRUE(isPooled(p));
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % (pages == 256 ? kSegmentBytes : kPageBytes), 0U);
            EXPECT_LE(reinterpret_cast<std::uintptr_t>(p) % kSegmentBytes + unit, kSegmentBytes);
            EXPECT_EQ(tqMsize(p), unit);
            p[0] = p[unit - 1] = static_cast<char>(&p - units.data());
        }
        EXPECT_EQ(tq::detail::checkHeap(g_tqGlobalHeap), "") << pages;
        // Forwards and backwards, by every function that frees units.
        for (std::size_t i = 0; i < units.size(); ++i) {
            const std::size_t k = pages % 3 == 0 ? i : units.size() - 1 - i;
            ASSERT_TRUE(units[k][0] == static_cast<char>(k) && units[k][unit - 1] == static_cast<char>(k));
            kReleases[k % std::size(kReleases)](units[k]);
        }
        for (char* p : units)
            EXPECT_EQ(tqMsize(p), 0U) << "its segment was released";
    }
    for (const std::size_t size : Sizes{0, 5000, kSegmentBytes + kPageBytes}) {
        void* const block = tqAllocPageHeap(size);
        EXPECT_FALSE(block == nullptr || isPooled(block)) << size << ": left to the C library";
        tqFreePageHeap(block);
    }
    void* const block = tqMalloc(16);
    tqFreePage(block);
    void* const other = tqMalloc(16);
    EXPECT_NE(other, block) << "a pool's block is not freed by the page functions";
    tqFree(other);
    tqFree(block);
}

TEST_F(Allocation, AnAddressOfAnUnusedSegmentIsNobodysBlock) {
    void* const unit = tqAllocPage();
    tqFreePage(unit);
    EXPECT_TRUE(tqReallocate(unit, 8) == nullptr && tqMsize(unit) == 0U);
    EXPECT_DEATH(*static_cast<volatile char*>(unit) = 1, "") << "not accessible any more";
    EXPECT_DEBUG_DEATH(tqFree(unit), "segment is not in use");
    EXPECT_DEBUG_DEATH(tqFreePage(unit), "segment is not in use");
    EXPECT_EQ(tqAllocPage(), unit);
    tqFree(unit);
}

} // namespace
