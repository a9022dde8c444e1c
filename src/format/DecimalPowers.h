#pragma once

#include "fltcvt/PowersOfTen.h"
#include "fltcvt/WideMath.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace tq::detail {

/// The powers of ten that 128 bits hold, 10^0 to 10^38.
inline constexpr std::array<UInt128, 39> kWidePowersOfTen = [] {
    std::array<UInt128, 39> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = powers[i - 1] * 10;
    return powers;
}();

constexpr UInt128 widePowerOfTen(int exponent) {
    return kWidePowersOfTen[static_cast<std::size_t>(exponent)];
}

/// Number of decimal digits of `value`, 0 for 0.
inline int decimalDigits(std::uint64_t value) {
    const int width = 64 - std::countl_zero(value | 1);
    // 1233 / 2^12 approximates log10(2) well enough for 64 bits: the estimate is right or one too low.
    const int low = width * 1233 >> 12;
    return low + static_cast<int>(value >= kSmallPowersOfTen[static_cast<std::size_t>(low)]);
}

inline int decimalDigits(UInt128 value) {
    int count = value >> 64 == 0 ? decimalDigits(static_cast<std::uint64_t>(value)) : kLastSmallPower + 1;
    while (count < static_cast<int>(kWidePowersOfTen.size()) && value >= widePowerOfTen(count))
        ++count;
    return count;
}

} // namespace tq::detail
