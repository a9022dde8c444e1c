#include "HeapFixture.h"

#include <string>
#include <vector>

namespace {

using namespace heap_test;
using namespace tq::detail;

// The walker must see the damage, which is undone before the heap is used again.
template <class Field, class Value>
void expectViolation(Field& field, Value damaged, const char* expected) {
    ASSERT_EQ(checkHeap(g_tqGlobalHeap), "");
    const Field saved = field;
    field = static_cast<Field>(damaged);
    const std::string text = checkHeap(g_tqGlobalHeap);
    field = saved;
    EXPECT_NE(text.find(expected), std::string::npos) << expected << ": " << text;
    EXPECT_EQ(checkHeap(g_tqGlobalHeap), "");
}

TEST(HeapCheck, SeesDamage) {
    std::vector<char*> blocks;
    for (int i = 0; i < 5; ++i)
        blocks.push_back(static_cast<char*>(tqMalloc(512)));
    tqFree(blocks[1]);
    tqFree(blocks[3]); // free list: 3, 1, then the rest of the page
    Page& page = *pageOf(blocks[0]);
    char* const lone = static_cast<char*>(tqMalloc(64));
    Page& bump = *pageOf(lone);
    Segment& segment = *segmentHeader(blocks[0]);

    expectViolation(page.poolNumber, 2, "pool number of a run");
    expectViolation(page.freeCount, page.freeCount + 1, "length of the free list");
    expectViolation(page.freeCount, 8, "free count of a run");
    expectViolation(page.nextUnit, page.nextUnit + 8, "out of place");
    expectViolation(page.previous, &bump, "back link of a run");
    expectViolation(*reinterpret_cast<char**>(blocks[1]), blocks[3], "chained twice");
    expectViolation(bump.nextUnit, bump.nextUnit + 64, "bump position");
    expectViolation(segment.committedCount, segment.committedCount + 1, "committed count");
    expectViolation(segment.uncommittedCount, segment.uncommittedCount - 1, "uncommitted count");
    expectViolation(segment.committedFree->poolNumber, 3, "pool number of a free page");
    Page* lastCommitted = segment.committedFree;
    while (lastCommitted->next != nullptr)
        ++lastCommitted;
    expectViolation(pageAt(segmentStart(&segment), kPagesPerSegment - 2)->next, lastCommitted, "page in two lists");
    expectViolation(segment.highWater, kInitialPages - 1, "high water");
    Page* const fresh = segment.uncommitted;
    fresh->next = fresh + 2;
    fresh[1].next = fresh;
    segment.uncommitted = fresh + 1;
    EXPECT_NE(checkHeap(g_tqGlobalHeap).find("order of the fresh pages"), std::string::npos);
    segment.uncommitted = fresh;
    fresh->next = fresh + 1;
    fresh[1].next = fresh + 2;
    expectViolation(segment.previous, 77, "back link of a segment");
    expectViolation(segment.next, kSegmentCount, "link of a segment");

    void* const unit = tqAllocPageHeap(8192);
    auto& record = const_cast<UnitSegment&>(g_tqGlobalHeap.pagePools().record(TqHeapConfigurator::segmentOf(unit)));
    expectViolation(record.identifierComplement, 0, "identifier of a record");
    expectViolation(record.freeCount, record.freeCount - 1, "bump position");
    auto& unused = const_cast<UnitSegment&>(g_tqGlobalHeap.pagePools().record(5));
    expectViolation(unused.freeCount, 1, "remains in a record");
    expectViolation(unused.identifierComplement, 5, "record of an unused segment");

    tqFree(unit);
    tqFree(lone);
    for (const int i : {0, 2, 4})
        tqFree(blocks[static_cast<std::size_t>(i)]);
    EXPECT_EQ(checkHeap(g_tqGlobalHeap), "");
}

} // namespace
