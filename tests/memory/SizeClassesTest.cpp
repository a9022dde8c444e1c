#include "memory/SizeClasses.h"

#include "memory/HeapConfigurator.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <utility>

namespace {

// The sizes themselves are swept through the allocation functions; this is what they cannot see.
TEST(SizeClasses, PoolsAreNumberedAsCallersOfTheTablesExpect) {
    using Classes = tq::detail::TqPoolConfigurator<34>;
    const std::pair<std::size_t, unsigned> poolOfSize[] = {{1, 33},  {9, 32},   {24, 31},  {192, 10}, {200, 9},
                                                           {208, 8}, {209, 7},  {240, 6},  {256, 5},  {500, 1},
                                                           {512, 1}, {1000, 2}, {2000, 3}, {4096, 4}, {SIZE_MAX, 0}};
    for (const auto& [size, pool] : poolOfSize)
        EXPECT_EQ(Classes::poolOfSize(size), pool) << size;
    for (const std::size_t index : {0U, 257U, 264U, 271U})
        EXPECT_EQ(Classes::s_poolIndexOfSize[index], 0) << index;
    EXPECT_EQ(Classes::s_unitSizeOfPools[34], 0);
}

TEST(HeapConfigurator, HintsComeRoundAfterFour) {
    constexpr std::uintptr_t kGiB = std::uintptr_t{1} << 30;
    const std::uintptr_t expected[] = {64 * kGiB, 0 - 128 * kGiB, 0 - 64 * kGiB, 0};
    for (std::uint32_t counter = 1; counter < 9; ++counter)
        EXPECT_EQ(tq::detail::TqHeapConfigurator::hintAddress(counter), expected[(counter - 1) % 4]) << counter;
    EXPECT_EQ(tq::detail::TqHeapConfigurator::hintAddress(0xFFFFFFFFU), expected[2]);
}

} // namespace
