#include "HeapFixture.h"

#include <TqOsBase/memory/HeapReport.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace heap_test;
using tq::HeapReport;
using State = HeapReport::PageState;

using Report = HeapTest;

HeapReport::Pool poolOf(const HeapReport& report, std::size_t unitBytes, bool servesPages = false) {
    for (const HeapReport::Pool& pool : report.pools)
        if (pool.unitBytes == unitBytes && pool.servesPages == servesPages)
            return pool;
    HeapReport::Pool none{};
    none.unitBytes = unitBytes;
    return none;
}

std::size_t pagesIn(const HeapReport& report, State state) {
    std::size_t count = 0;
    for (const HeapReport::Segment& segment : report.segments)
        for (const HeapReport::Page& page : segment.pages)
            count += page.state == state;
    return count;
}

std::size_t usedBlocks(const HeapReport& report) {
    std::size_t count = 0;
    for (const HeapReport::Pool& pool : report.pools)
        count += pool.usedBlocks;
    return count;
}

// What must hold of any report: its sums, and that free, used and owned pages add up.
void expectConsistent(const HeapReport& report) {
    std::size_t pages = 0;
    std::size_t used = 0;
    std::size_t resident = 0;
    for (const HeapReport::Pool& pool : report.pools) {
        pages += pool.pages;
        used += pool.usedBlocks * pool.unitBytes;
        EXPECT_EQ(pool.askedBytes.has_value(), pool.servesPages);
        if (!pool.servesPages) {
            EXPECT_EQ(pool.usedBlocks + pool.freeBlocks, pool.pages * (kPageBytes / pool.unitBytes));
        }
    }
    for (const HeapReport::Segment& segment : report.segments) {
        resident += segment.resident;
        EXPECT_LE(segment.resident, kSegmentBytes);
    }
    EXPECT_EQ(pages, pagesIn(report, State::kInPool));
    EXPECT_EQ(report.committedBytes,
              (pages + pagesIn(report, State::kHeader) + pagesIn(report, State::kReserve)) * kPageBytes);
    EXPECT_EQ(report.residentBytes, resident);
    EXPECT_GE(report.residentBytes, used == 0 ? 0 : kPageBytes);
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
    for (const std::size_t freed : Sizes{5, 9, 1003})
        tqFree(blocks[freed]);

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
    const std::size_t segment = tq::detail::TqHeapConfigurator::segmentOf(blocks[1003]);
    for (const HeapReport::Segment& s : after.segments)
        if (s.number == segment) {
            EXPECT_TRUE(s.servesPages);
            EXPECT_EQ(s.pages[8].used, 1); // third unit
            EXPECT_EQ(s.pages[9].used, 0); // the fourth is blocks[1003]
            EXPECT_EQ(s.pages[255].total, 0) << "left over";
        }
    for (std::size_t i = 0; i < blocks.size(); ++i)
        if (i != 5 && i != 9 && i != 1003)
            tqFree(blocks[i]);
    EXPECT_EQ(usedBlocks(tq::heapReport()), usedBlocks(before));
}

TEST_F(Report, AgreesWithTheHeapAtEveryMoment) {
    std::mt19937 random(20240801);
    std::vector<void*> blocks;
    const std::size_t atStart = usedBlocks(tq::heapReport());
    for (int i = 0; i < 20000; ++i) {
        if (blocks.empty() || random() % (i % 4000 < 3000 ? 3 : 2) != 0) {
            constexpr std::size_t kSizes[] = {8, 100, 256, 2048, 4096, 4096, 12288};
            const std::size_t size = kSizes[random() % 7];
            blocks.push_back(size % kPageBytes == 0 && random() % 50 == 0 ? tqAllocPageHeap(size)
                             : size > kPageBytes                          ? tqMalloc(64)
                                                                          : tqMalloc(size));
        }
        if (i % 4000 >= 2000) {
            const std::size_t k = random() % blocks.size();
            tqFree(blocks[k]);
            blocks[k] = blocks.back();
            blocks.pop_back();
        }
        if (i % 1000 == 0) {
            const HeapReport report = tq::heapReport();
            expectConsistent(report);
            ASSERT_EQ(usedBlocks(report), atStart + blocks.size());
            ASSERT_EQ(tq::detail::checkHeap(g_tqGlobalHeap), "");
        }
    }
    const HeapReport report = tq::heapReport();
    std::size_t reserve = 0;
    for (const HeapReport::Segment& segment : report.segments) {
        if (segment.servesPages)
            continue;
        const auto& header = *tq::detail::segmentHeader(tq::detail::TqHeapConfigurator::segmentAddress(segment.number));
        reserve += header.committedCount;
    }
    EXPECT_LE(pagesIn(report, State::kReserve) - reserve, 1U) << "but for a parked page";
    EXPECT_GT(pagesIn(report, State::kReserve), 0U);
    for (void* block : blocks)
        tqFree(block);
}

// Elements are closed in order, by themselves or by their end; attributes are quoted; there is one root.
bool isWellFormed(const std::string& xml) {
    std::vector<std::string> open;
    bool hasRoot = false;
    for (std::size_t at = 0; (at = xml.find('<', at)) != std::string::npos;) {
        const std::size_t end = xml.find('>', at);
        if (end == std::string::npos || (open.empty() && hasRoot))
            return false;
        const std::string tag = xml.substr(at + 1, end - at - 1);
        const std::string name = tag.substr(0, tag.find_first_of(" /", 1));
        if (tag.find('<') != std::string::npos || std::count(tag.begin(), tag.end(), '"') % 2 != 0)
            return false;
        hasRoot = true;
        if (name[0] == '/') {
            if (open.empty() || "/" + open.back() != name)
                return false;
            open.pop_back();
        } else if (tag.back() != '/') {
            open.push_back(name);
        }
        at = end;
    }
    return hasRoot && open.empty() && xml.find('&') == std::string::npos;
}

TEST_F(Report, TextAndPictureShowIt) {
    void* const block = tqMalloc(200);
    void* const unit = tqAllocPageHeap(2 * kPageBytes);
    const HeapReport report = tq::heapReport();
    const std::string text = tq::heapReportText(report);
    EXPECT_NE(text.find("\npage  2   8192      256          1        127           8192\n"), std::string::npos) << text;
    const std::size_t row = text.find("\nblock 9    200 ");
    ASSERT_NE(row, std::string::npos) << text;
    std::size_t shown[3] = {};
    ASSERT_EQ(std::sscanf(text.c_str() + row, " block 9 200 %zu %zu %zu unknown", &shown[0], &shown[1], &shown[2]), 3);
    const HeapReport::Pool pool = poolOf(report, 200);
    EXPECT_EQ(std::vector(shown, shown + 3), (std::vector{pool.pages, pool.usedBlocks, pool.freeBlocks}));
    const std::string svg = tq::heapReportSvg(report);
    EXPECT_TRUE(isWellFormed(svg)) << svg;
    EXPECT_NE(svg.find("page pool 2: 1 of 1 used"), std::string::npos) << svg;
    EXPECT_NE(svg.find("block pool 9: "), std::string::npos);
    EXPECT_TRUE(isWellFormed(tq::heapReportSvg({})));
    tqFree(block);
    tqFree(unit);
}

} // namespace
