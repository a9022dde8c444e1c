#pragma once

#include "memory/HeapCheck.h"
#include "reference/Testing.h"

namespace heap_test {

using tq::detail::g_tqGlobalHeap;
using tq::detail::kPageBytes;
using tq::detail::kSegmentBytes;

using Sizes = std::initializer_list<std::size_t>;

inline bool isPooled(const void* block) {
    return tq::detail::TqHeapConfigurator::offsetOf(block) < tq::detail::kReservationBytes;
}

/// Every test leaves the heap in order.
class HeapTest : public ::testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(tq::detail::checkHeap(g_tqGlobalHeap), ""); }
};

} // namespace heap_test
