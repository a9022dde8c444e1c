#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tq::detail {

/// The leading 128 bits of a power of ten: with g = high * 2^64 + low,
///   g = ceil(10^k * 2^(127 - floorLog2OfPowerOfTen(k))),   2^127 <= g < 2^128,
/// so g is the power itself, scaled, for 0 <= k <= kLastExactPower and less than one unit above it elsewhere.
struct PowerOfTen {
    std::uint64_t high, low;
};

inline constexpr int kFirstPower = -342;
inline constexpr int kLastPower = 342;
/// 5^55 is the last power of five that 128 bits hold.
inline constexpr int kLastExactPower = 55;

extern const std::array<PowerOfTen, std::size_t{kLastPower - kFirstPower + 1}> kPowersOfTen;

inline const PowerOfTen& powerOfTen(int k) noexcept {
    return kPowersOfTen[static_cast<std::size_t>(k - kFirstPower)];
}

constexpr bool isExactPower(int k) noexcept {
    return static_cast<unsigned>(k) <= unsigned{kLastExactPower};
}

/// 5^27 is the last power of five that 64 bits hold.
inline constexpr int kLastSmallPowerOfFive = 27;
inline constexpr std::array<std::uint64_t, kLastSmallPowerOfFive + 1> kSmallPowersOfFive = [] {
    std::array<std::uint64_t, kLastSmallPowerOfFive + 1> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = powers[i - 1] * 5;
    return powers;
}();

/// floor(log2(10^k)) for the powers of the table.
constexpr int floorLog2OfPowerOfTen(int k) noexcept {
    return (k * 1741647) >> 19;
}

/// floor(log10(2^e)) for -1100 <= e <= 1100.
constexpr int floorLog10OfPowerOfTwo(int e) noexcept {
    return (e * 1262611) >> 22;
}

/// floor(log10(3/4 * 2^e)) for -1100 <= e <= 1100.
constexpr int floorLog10OfThreeQuarters(int e) noexcept {
    return (e * 1262611 - 524031) >> 22;
}

/// The powers of ten that 64 bits hold.
inline constexpr int kLastSmallPower = 19;
inline constexpr std::array<std::uint64_t, kLastSmallPower + 1> kSmallPowersOfTen = [] {
    std::array<std::uint64_t, kLastSmallPower + 1> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = powers[i - 1] * 10;
    return powers;
}();

} // namespace tq::detail
