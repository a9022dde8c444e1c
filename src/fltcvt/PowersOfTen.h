#pragma once

#include <array>
#include <bit>
#include <cassert>
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
    assert(k >= kFirstPower && k <= kLastPower);
    return kPowersOfTen[static_cast<std::size_t>(k - kFirstPower)];
}

constexpr bool isExactPower(int k) noexcept {
    return static_cast<unsigned>(k) <= unsigned{kLastExactPower};
}

/// base^0 to base^(count - 1).
template <std::size_t count>
constexpr std::array<std::uint64_t, count> powersOf(std::uint64_t base) noexcept {
    std::array<std::uint64_t, count> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = powers[i - 1] * base;
    return powers;
}

/// The powers of ten that 64 bits hold.
inline constexpr int kLastSmallPower = 19;
inline constexpr auto kSmallPowersOfTen = powersOf<kLastSmallPower + 1>(10);

constexpr std::uint64_t smallPowerOfTen(int k) noexcept {
    assert(k >= 0 && k <= kLastSmallPower);
    return kSmallPowersOfTen[static_cast<std::size_t>(k)];
}

/// The powers of five that 64 bits hold.
inline constexpr int kLastSmallPowerOfFive = 27;
inline constexpr auto kSmallPowersOfFive = powersOf<kLastSmallPowerOfFive + 1>(5);

constexpr std::uint64_t smallPowerOfFive(int k) noexcept {
    assert(k >= 0 && k <= kLastSmallPowerOfFive);
    return kSmallPowersOfFive[static_cast<std::size_t>(k)];
}

// Logarithms of powers are products with a fraction close enough to log10(2) = 1262611 / 2^22, or its reciprocal, that
// the integer parts are exact; the tests go through all of them.

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

/// Number of decimal digits of a value above 0.
constexpr int digitCount(std::uint64_t value) noexcept {
    assert(value != 0);
    const int guess = floorLog10OfPowerOfTwo(static_cast<int>(std::bit_width(value))); // right, or one too low
    return guess + (value >= smallPowerOfTen(guess) ? 1 : 0);
}

} // namespace tq::detail
