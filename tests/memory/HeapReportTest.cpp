#include "HeapFixture.h"

namespace {

using namespace heap_test;
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
    EXPECT_GE(resident, before.residentBytes + std::size_t{900} * 176 + std::size_t{85} * 3 * kPageBytes);
    for (void* block : blocks)
        tqFree(block);
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
    for (void* block : blocks)
        tqFree(block);
}

} // namespace
