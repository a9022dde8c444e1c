#include "HeapFixture.h"

#include <TqOsBase/memory/HeapReport.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

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

// What must hold of any report: its sums, and that free, used and owned pages add up.
void expectConsistent(const HeapReport& report) {
    std::map<State, std::size_t> inState;
    std::size_t resident = 0;
    for (const HeapReport::Segment& segment : report.segments) {
        resident += segment.resident;
        EXPECT_LE(segment.resident, kSegmentBytes);
        for (const HeapReport::Page& page : segment.pages)
            ++inState[page.state];
    }
    std::size_t pages = 0;
    for (const HeapReport::Pool& pool : report.pools) {
        pages += pool.pages;
        EXPECT_EQ(pool.askedBytes.has_value(), pool.servesPages);
        EXPECT_TRUE(pool.servesPages ||
                    pool.usedBlocks + pool.freeBlocks == pool.pages * (kPageBytes / pool.unitBytes));
    }
    EXPECT_EQ(pages, inState[State::kInPool]);
    EXPECT_EQ(report.committedBytes, (pages + inState[State::kHeader] + inState[State::kReserve]) * kPageBytes);
    EXPECT_EQ(report.residentBytes, resident);
}

TEST_F(Report, CountsWhatAKnownSequenceDid) {
    const HeapReport before = tq::heapReport();
    expectConsistent(before);
    EXPECT_EQ(before.address, tq::detail::TqHeapConfigurator::pStartAddress);
    EXPECT_EQ(before.reservedBytes, std::size_t{8} << 30);
    std::vector<void*> blocks;
    blocks.reserve(1086);
    for (int i = 0; i < 1000; ++i) // 23 a page
        blocks.push_back(std::memset(tqMalloc(176), 1, 176));
    for (int i = 0; i < 86; ++i) // 85 a segment
        blocks.push_back(std::memset(tqAllocPageHeap(3 * kPageBytes), 1, 3 * kPageBytes));
    const std::size_t segment = tq::detail::TqHeapConfigurator::segmentOf(blocks[1003]);
    for (const std::size_t freed : Sizes{5, 9, 1003})
        tqFree(std::exchange(blocks[freed], nullptr));

    const HeapReport after = tq::heapReport();
    expectConsistent(after);
    const HeapReport::Pool small = poolOf(after, 176);
    EXPECT_EQ(small.usedBlocks - poolOf(before, 176).usedBlocks, 998U);
    EXPECT_EQ(small.pages - poolOf(before, 176).pages, 44U); // 1012 blocks
    const HeapReport::Pool units = poolOf(after, 3 * kPageBytes, true);
    EXPECT_EQ(units.number, 3);
    EXPECT_EQ(units.usedBlocks, 85U);
    EXPECT_EQ(units.freeBlocks, 85U);
    EXPECT_EQ(units.pages, 512U);
    EXPECT_EQ(units.askedBytes, std::size_t{85} * 3 * kPageBytes);
    EXPECT_GE(after.residentBytes, std::size_t{998} * 176 + std::size_t{85} * 3 * kPageBytes);
    EXPECT_GT(after.residentBytes, before.residentBytes);
    for (const HeapReport::Segment& s : after.segments) {
        if (s.number != segment)
            continue;
        EXPECT_TRUE(s.servesPages);
        EXPECT_EQ(s.pages[8].used, 1); // third unit
        EXPECT_EQ(s.pages[9].used, 0); // the fourth is blocks[1003]
        EXPECT_EQ(s.pages[255].total, 0) << "left over";
    }
    for (void* block : blocks)
        tqFree(block);
    EXPECT_EQ(poolOf(tq::heapReport(), 176).usedBlocks, poolOf(before, 176).usedBlocks);
}

// Elements are closed in order, by themselves or by their end; attributes are quoted; there is one root.
bool isWellFormed(const std::string& xml) {
    std::vector<std::string> open;
    for (std::size_t at = 0; at != std::string::npos; at = xml.find('<', at + 1)) {
        const std::string tag = xml.substr(at + 1, xml.find('>', at) - at - 1);
        const std::string name = tag.substr(0, tag.find_first_of(" /", 1));
        if (tag.find('<') != std::string::npos || std::count(tag.begin(), tag.end(), '"') % 2 != 0 ||
            open.empty() != (at == 0) || (name[0] == '/' && "/" + open.back() != name))
            return false;
        if (name[0] == '/')
            open.pop_back();
        else if (tag.back() != '/')
            open.push_back(name);
    }
    return xml[0] == '<' && open.empty() && xml.find('&') == std::string::npos;
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
    EXPECT_TRUE(isWellFormed(svg) && isWellFormed(tq::heapReportSvg({}))) << svg;
    EXPECT_NE(svg.find("page pool 2: 1 of 1 used"), std::string::npos) << svg;
    EXPECT_NE(svg.find("block pool 9: "), std::string::npos);
    for (void* block : blocks)
        tqFree(block);
}

} // namespace
