#include "memory/SizeClasses.h"

#include "memory/HeapConfigurator.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>

namespace {

using Sizes = tq::detail::TqPoolConfigurator<34>;
using tq::detail::TqHeapConfigurator;

// The unit that serves a size, or 0, stated by ranges of sizes instead of pools.
std::size_t unitOf(std::size_t size) {
    if (size <= 208)
        return (size + 7) / 8 * 8;
    if (size <= 256)
        return (size + 15) / 16 * 16;
    for (const std::size_t unit : std::initializer_list<std::size_t>{512, 1024, 2048, 4096})
        if (size <= unit && size >= unit / 512 * 500)
            return unit;
    return 0;
}

TEST(SizeClasses, EverySizeHasTheSmallestUnitThatFitsOrNone) {
    for (std::size_t size = 1; size <= 5000; ++size) {
        const std::size_t pool = Sizes::poolOfSize(size);
        ASSERT_LE(pool, 33U);
        EXPECT_EQ(static_cast<std::size_t>(Sizes::s_unitSizeOfPools[pool]), unitOf(size)) << size;
    }
    EXPECT_EQ(Sizes::poolOfSize(SIZE_MAX), 0U);
}

TEST(SizeClasses, PoolsAreNumberedAsCallersOfTheTablesExpect) {
    struct Row {
        std::size_t size;
        unsigned pool;
    };
    for (const Row& row :
         {Row{1, 33}, {8, 33},  {9, 32},  {24, 31}, {185, 10}, {192, 10}, {193, 9},  {200, 9},  {201, 8},  {208, 8},
          {209, 7},   {224, 7}, {225, 6}, {241, 5}, {256, 5},  {500, 1},  {1000, 2}, {2000, 3}, {4000, 4}, {4096, 4}})
        EXPECT_EQ(Sizes::poolOfSize(row.size), row.pool) << row.size;
    for (const std::size_t index : std::initializer_list<std::size_t>{0, 257, 264, 271})
        EXPECT_EQ(Sizes::s_poolIndexOfSize[index], 0) << index;
    EXPECT_EQ(Sizes::s_unitSizeOfPools[34], 0);
}

TEST(HeapConfigurator, HintsComeRoundAfterFour) {
    constexpr std::uintptr_t kGiB = std::uintptr_t{1} << 30;
    const std::uintptr_t expected[] = {64 * kGiB, 0 - 128 * kGiB, 0 - 64 * kGiB, 0};
    for (std::uint32_t counter = 1; counter < 9; ++counter)
        EXPECT_EQ(TqHeapConfigurator::hintAddress(counter), expected[(counter - 1) % 4]) << counter;
    EXPECT_EQ(TqHeapConfigurator::hintAddress(0xFFFFFFFFU), expected[2]);
}

} // namespace
