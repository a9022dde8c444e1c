#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace tq::detail {

/// Block pools, numbered from 1; number 0 is "no pool".
inline constexpr int kBlockPoolCount = 34;
/// Page pools, numbered by the pages of a unit.
inline constexpr int kPagePoolCount = 256;

/// The sizes that the block pools serve.
template <int kPoolCount>
struct TqPoolConfigurator;

template <>
struct TqPoolConfigurator<kBlockPoolCount> {
    /// Every size up to this one has a pool.
    static constexpr std::size_t kLargestSmallSize = 256;
    /// Sizes that index s_poolIndexOfSize.
    static constexpr std::size_t kSizeTableLength = 272;
    static constexpr std::size_t kLargestSize = 4096;
    static constexpr int kLargestSmallPool = 5;

    /// Unit of each pool in bytes. Pools 1 to 4 serve the large units, 5 to 33 the small ones in falling order, where
    /// the steps of 16 deliberately end at 208, not at 192; pool 34 exists but serves no size.
    static constexpr std::array<std::int16_t, kBlockPoolCount + 1> s_unitSizeOfPools = {
        0,   512, 1024, 2048, 4096, 256, 240, 224, 208, 200, 192, 184, 176, 168, 160, 152, 144, 136,
        128, 120, 112,  104,  96,   88,  80,  72,  64,  56,  48,  40,  32,  24,  16,  8,   0};

    /// Pool with the smallest unit that holds a size of 1 to kLargestSmallSize; 0 for the other indices.
    static constexpr std::array<std::uint8_t, kSizeTableLength> s_poolIndexOfSize = [] {
        std::array<std::uint8_t, kSizeTableLength> table{};
        constexpr int kSmallestPool = kBlockPoolCount - 1;
        std::size_t size = 1;
        for (int pool = kSmallestPool; pool >= kLargestSmallPool; --pool)
            for (; size <= static_cast<std::size_t>(s_unitSizeOfPools[static_cast<std::size_t>(pool)]); ++size)
                table[size] = static_cast<std::uint8_t>(pool);
        return table;
    }();

    /// Number of the pool that serves a size of 1 or more; 0 when none does. Above the small sizes only requests close
    /// under a unit have a pool (500 to 512, 1000 to 1024, 2000 to 2048, 4000 to 4096: within 3/128 of the unit), so
    /// that no block wastes much; the gaps between are left to the C library.
    static constexpr std::size_t poolOfSize(std::size_t size) noexcept {
        if (size <= kLargestSmallSize)
            return s_poolIndexOfSize[size];
        if (size > kLargestSize)
            return 0;
        const std::size_t unit = std::bit_ceil(size);
        constexpr std::size_t kSmallestLargeUnit = 512;
        if (unit < kSmallestLargeUnit || unit - size > unit * 3 / 128)
            return 0;
        return static_cast<std::size_t>(std::countr_zero(unit) - std::countr_zero(kSmallestLargeUnit)) + 1;
    }
};

/// poolOfSize() of every size up to the largest that has a pool, and 0 for size 0: a look-up in place of a search.
inline constexpr auto kPoolOfSize = [] {
    using Classes = TqPoolConfigurator<kBlockPoolCount>;
    std::array<std::uint8_t, Classes::kLargestSize + 1> table{};
    for (std::size_t size = 1; size < table.size(); ++size)
        table[size] = static_cast<std::uint8_t>(Classes::poolOfSize(size));
    return table;
}();

} // namespace tq::detail
