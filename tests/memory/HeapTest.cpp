#include "HeapFixture.h"
#include "platform/VirtualMemory.h"

namespace {

using namespace heap_test;
using tq::detail::checkHeap;
using tq::detail::kUsablePages;

using Heap = HeapTest;

std::vector<char*> allocate(std::size_t count, std::size_t size) {
    std::vector<char*> blocks(count);
    for (char*& block : blocks)
        block = static_cast<char*>(tqMalloc(size));
    return blocks;
}

template <class Blocks>
void freeAll(const Blocks& blocks) {
    for (void* block : blocks)
        tqFree(block);
}

// Pages of the reservation that hold memory, as the system sees them.
std::size_t residentPages() {
    return tq::heapReport().residentBytes / kPageBytes;
}

std::ptrdiff_t mappings() {
    std::ifstream maps("/proc/self/maps");
    return std::count(std::istreambuf_iterator<char>(maps), std::istreambuf_iterator<char>(), '\n');
}

TEST_F(Heap, ServesItsWholeRangeTwice) {
    std::vector<char*> blocks;
    blocks.reserve(tq::detail::kSegmentCount * kUsablePages);
    for (int round = 0; round < 2; ++round) {
        while (void* const block = tqMalloc(4096))
            blocks.push_back(static_cast<char*>(block));
        EXPECT_EQ(blocks.size(), (tq::detail::kSegmentCount - 1) * kUsablePages);
        const auto [lowest, highest] = std::minmax_element(blocks.begin(), blocks.end());
        EXPECT_EQ(tq::detail::TqHeapConfigurator::segmentOf(*lowest), 1U);
        EXPECT_EQ(tq::detail::TqHeapConfigurator::segmentOf(*highest), tq::detail::kSegmentCount - 1);
        (*highest)[kPageBytes - 1] = 'x';
        EXPECT_TRUE(tqAllocPage() == nullptr && tqMalloc(8) == nullptr);
        void* const foreign = tqMalloc(300);
        EXPECT_NE(foreign, nullptr) << "other sizes are still served";
        tqFree(foreign);
        freeAll(blocks);
        blocks.clear();
    }
}

TEST_F(Heap, MemoryGoesBackToTheSystemInFewMappings) {
    if (mappings() == 0)
        GTEST_SKIP() << "this system does not tell";
    constexpr std::size_t kCount = 16000; // 63 segments
    tqHeapTrim();
    const std::ptrdiff_t mappingsBefore = mappings();
    const std::size_t residentBefore = residentPages();
    std::vector<char*> blocks = allocate(kCount, 4096);
    for (char* block : blocks)
        *block = 1;
    const std::size_t peak = residentPages();
    ASSERT_GE(peak, kCount);
    // Every other page of the system: none of those that go back adjoins another. A larger one is freed in two halves.
    const auto isEven = [](std::size_t pageSize) {
        return [=](const char* block) { return reinterpret_cast<std::uintptr_t>(block) / pageSize % 2 == 0; };
    };
    const auto middle = std::partition(blocks.begin(), blocks.end(), isEven(tq::platform::pageBytes()));
    std::vector<char*> kept(middle, blocks.end());
    blocks.erase(middle, blocks.end());
    std::stable_partition(blocks.begin(), blocks.end(), isEven(kPageBytes));
    freeAll(blocks);
    EXPECT_LT(mappings() - mappingsBefore, 4 * 63);
    const auto& waiting = g_tqGlobalHeap.segments().waiting();
    EXPECT_LE(waiting.total(), kCount / 4) << "half of what is in use";
    EXPECT_GT(waiting.total(), kCount / 4 - kCount / 16);
    tqHeapTrim();
    EXPECT_EQ(tq::heapReport().waitingBytes, 0U);
    EXPECT_LT(residentPages() + kCount / 4, peak)
        << "half of the pages, less the reserve of 16 a segment and what shares pages of the system with it";

    // What was given back is used again, beside what was kept.
    for (char*& block : blocks)
        block = static_cast<char*>(std::memset(tqMalloc(kPageBytes), 2, kPageBytes));
    for (const char* block : kept)
        ASSERT_EQ(*block, 1);
    std::shuffle(kept.begin(), kept.end(), std::mt19937(7));
    freeAll(kept);
    for (const char* block : blocks)
        ASSERT_EQ(block[kPageBytes - 1], 2);
    freeAll(blocks);
    EXPECT_GT(waiting.total(), waiting.most() / 2) << "of the last ones to come back";
    EXPECT_EQ(waiting.most(), waiting.kLeastBound);
    tqHeapTrim();
    EXPECT_LT(residentPages(), residentBefore + tq::detail::kPagesPerSegment) << "only what the one left may hold";
    EXPECT_LT(mappings() - mappingsBefore, 4 * 63);
}

TEST_F(Heap, BelongsToOneThreadAtATime) {
    const std::vector<char*> mine = allocate(65, 64); // more than a page, so the last of them is in another one
    void* const unit = tqAllocPageHeap(8192);
    const auto inAnother = [](auto work) { std::thread(work).join(); };
    std::vector<char*> more;
    const auto findsAgain = [&more](char* block) {
        const std::size_t before = more.size();
        while (more.size() == before || (more.back() != block && more.size() < before + 65))
            more.push_back(static_cast<char*>(tqMalloc(64)));
        return more.back() == block;
    };
    char* theirs = nullptr;
    inAnother([&] {
        void* const small = tqMalloc(64);
        void* const megabyte = tqAllocPage();
        theirs = static_cast<char*>(tqMalloc(64));
        EXPECT_FALSE(isPooled(small) || isPooled(megabyte)) << "from another heap";
        EXPECT_EQ(theirs - static_cast<char*>(small), 64);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(megabyte) % kSegmentBytes, 0U);
        EXPECT_TRUE(tqMsize(mine[0]) + tqMsize(unit) == 64U + 8192U && tq::heapReport().segments.empty());
        tqFreePage(mine[1]); // a pool's block, which is left alone
        tqFree(mine[0]);
        tqFreePage(unit);
        tqFree(tqRealloc(mine[64], 10));
        tqFree(small);
        tqFree(megabyte);
        tqHeapTrim();
    });
    EXPECT_EQ(tqMsize(unit), 8192U) << "nothing comes back before the owner takes it in";
    EXPECT_TRUE(findsAgain(mine[0])) << "taken in before another page is taken";
    EXPECT_EQ(tqMsize(unit), 0U) << "taken in, too";
    EXPECT_EQ(tq::heapReport().waitingBytes, 0U) << "trimmed as was asked";

    EXPECT_EQ(tqMsize(theirs), 64U) << "outlives the thread";
    tqFree(theirs);
    inAnother([&] { EXPECT_TRUE(findsAgain(theirs)) << "the next thread has the heap with all that came back"; });

    g_tqGlobalHeap.resign();
    inAnother([&theirs] { theirs = static_cast<char*>(tqMalloc(64)); });
    char* const again = static_cast<char*>(tqMalloc(64));
    EXPECT_TRUE(isPooled(theirs) && isPooled(again)) << "the next to allocate, until it ends";
    freeAll(more);
    freeAll(std::vector<char*>{theirs, again});
    freeAll(std::vector<char*>(mine.begin() + 1, mine.end() - 1));
}

// Damages a field, which is mended before the heap is used again.
template <class Field, class Value>
void expectSeen(Field& field, Value damaged, const char* expected) {
    ASSERT_EQ(checkHeap(g_tqGlobalHeap), "");
    const Field saved = field;
    field = static_cast<Field>(damaged);
    const std::string text = checkHeap(g_tqGlobalHeap);
    field = saved;
    EXPECT_NE(text.find(expected), std::string::npos) << expected << ": " << text;
}

TEST_F(Heap, DamageIsSeenByTheCheckThatTheseTestsRelyOn) {
    using namespace tq::detail;
    const std::vector<char*> blocks = allocate(5, 512);
    char* const lone = static_cast<char*>(tqMalloc(64));
    void* const unit = tqAllocPageHeap(8192);
    tqFree(blocks[1]);
    tqFree(blocks[3]); // free list: 3, 1, then the rest of the page
    Page& page = *pageOf(blocks[0]);
    Page& bump = *pageOf(lone);
    expectSeen(page.poolNumber, 2, "pool number of a run");
    expectSeen(page.freeCount, page.freeCount + 1, "length of the free list");
    expectSeen(page.nextUnit, page.nextUnit + 8, "out of place");
    auto* const chained = reinterpret_cast<std::byte*>(blocks[1]);
    std::byte* const next = readLink(chained);
    writeLink(chained, reinterpret_cast<std::byte*>(blocks[3]));
    EXPECT_NE(checkHeap(g_tqGlobalHeap).find("chained twice"), std::string::npos);
    writeLink(chained, next);
    expectSeen(bump.nextUnit, bump.nextUnit + 8, "bump position");

    Segment& segment = *segmentHeader(lone);
    expectSeen(segment.committedCount, segment.committedCount + 1, "committed count");
    expectSeen(segment.committedFree->poolNumber, 3, "pool number of a free page");
    expectSeen(segment.highWater, kInitialPages - 1, "high water");
    expectSeen(segment.uncommitted->flags, segment.uncommitted->flags ^ kWaiting, "waiting pages");
    expectSeen(segment.uncommitted->flags, 0, "mark of an uncommitted page");
    expectSeen(segment.previous, 77, "back link of a segment");

    const auto record = [](std::size_t segmentId) -> UnitSegment& {
        return const_cast<UnitSegment&>(g_tqGlobalHeap.pagePools().record(segmentId));
    };
    UnitSegment& used = record(TqHeapConfigurator::segmentOf(unit));
    expectSeen(used.identifierComplement, 0, "identifier of a record");
    expectSeen(record(5).freeCount, 1, "remains in a record");
    tqFree(unit);
    freeAll(std::vector<char*>{lone, blocks[0], blocks[2], blocks[4]});
}

using tq::HeapReport;
using State = HeapReport::PageState;

using Report = HeapTest;

HeapReport::Pool poolOf(const HeapReport& report, std::size_t unitBytes, bool servesPages = false) {
    const auto isIt = [&](const auto& pool) { return pool.unitBytes == unitBytes && pool.servesPages == servesPages; };
    const auto found = std::find_if(report.pools.begin(), report.pools.end(), isIt);
    return found == report.pools.end() ? HeapReport::Pool{} : *found;
}

// Blocks of 176 bytes, 23 a page, and units of three pages, 85 a segment.
TEST_F(Report, CountsWhatAKnownSequenceDid) {
    const HeapReport before = tq::heapReport();
    std::vector<void*> blocks;
    for (int i = 0; i < 1086; ++i) {
        const std::size_t size = i < 1000 ? 176 : 3 * kPageBytes;
        blocks.push_back(std::memset(i < 1000 ? tqMalloc(size) : tqAllocPageHeap(size), 1, size));
    }
    for (const std::size_t freed : Sizes{5, 9, 1003})
        tqFree(std::exchange(blocks[freed], nullptr));
    const HeapReport after = tq::heapReport();
    const HeapReport::Pool small = poolOf(after, 176), units = poolOf(after, 3 * kPageBytes, true);
    EXPECT_EQ(small.usedBlocks - poolOf(before, 176).usedBlocks, 998U);
    EXPECT_EQ(small.pages - poolOf(before, 176).pages, 44U);
    EXPECT_EQ(small.usedBlocks + small.freeBlocks, small.pages * 23);
    EXPECT_TRUE(units.number == 3 && units.usedBlocks == 85 && units.freeBlocks == 85 && units.pages == 512);
    EXPECT_EQ(units.askedBytes, std::size_t{85} * 3 * kPageBytes);
    std::map<State, std::size_t> inState;
    std::size_t resident = 0;
    for (const HeapReport::Segment& segment : after.segments) {
        resident += segment.resident;
        for (const HeapReport::Page& page : segment.pages)
            ++inState[page.state];
    }
    EXPECT_EQ(after.committedBytes,
              (inState[State::kInPool] + inState[State::kHeader] + inState[State::kReserve]) * kPageBytes);
    EXPECT_EQ(after.residentBytes, resident);
    EXPECT_GE(resident, std::size_t{900} * 176 + std::size_t{85} * 3 * kPageBytes);
    freeAll(blocks);
}

TEST_F(Report, TextAndPictureShowIt) {
    std::vector<void*> blocks(30); // more than a page of them
    for (void*& block : blocks)
        block = tqMalloc(200);
    blocks.push_back(tqAllocPageHeap(2 * kPageBytes));
    blocks.push_back(tqAllocPageHeap(3 * kPageBytes)); // leaves a page over
    const HeapReport report = tq::heapReport();
    const std::string text = tq::heapReportText(report);
    EXPECT_NE(text.find("\npage  2   8192      256          1        127           8192\n"), std::string::npos) << text;
    const HeapReport::Pool pool = poolOf(report, 200);
    char row[80];
    std::snprintf(row, sizeof row, "\nblock 9    200 %8zu %10zu %10zu        unknown\n", pool.pages, pool.usedBlocks,
                  pool.freeBlocks);
    EXPECT_NE(text.find(row), std::string::npos) << text;
    const std::string svg = tq::heapReportSvg(report);
    const auto count = [](const std::string& xml, const char* part) {
        std::size_t times = 0;
        for (std::size_t at = 0; (at = xml.find(part, at)) != std::string::npos; ++at)
            ++times;
        return times;
    };
    for (const std::string& xml : {svg, tq::heapReportSvg({})}) {
        EXPECT_TRUE(xml.starts_with("<svg ") && xml.ends_with("</svg>\n")) << xml;
        EXPECT_EQ(count(xml, "<"), count(xml, "/>") + 2 * count(xml, "</")) << "every element is closed";
    }
    EXPECT_NE(svg.find("page pool 2: 1 of 1 used"), std::string::npos) << svg;
    EXPECT_NE(svg.find("block pool 9: "), std::string::npos);
    freeAll(blocks);
}

} // namespace
