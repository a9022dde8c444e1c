#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace tq::detail {

__extension__ typedef unsigned __int128 Uint128;

namespace powers {

template <class T, std::size_t N>
constexpr std::array<T, N> build() {
    std::array<T, N> powers{};
    T power = 1;
    for (T& slot : powers) {
        slot = power;
        power = static_cast<T>(power * 10);
    }
    return powers;
}

} // namespace powers

/// 10^0 to 10^19, all that 64 bits hold.
inline constexpr std::array<std::uint64_t, 20> kPowersOfTen = powers::build<std::uint64_t, 20>();
/// 10^0 to 10^38, all that 128 bits hold.
inline constexpr std::array<Uint128, 39> kWidePowersOfTen = powers::build<Uint128, 39>();

/// 10^exponent for 0 to 38.
constexpr Uint128 powerOfTen(int exponent) {
    return kWidePowersOfTen[static_cast<std::size_t>(exponent)];
}

/// Number of decimal digits of `value`, 0 for 0.
constexpr int countDigits(std::uint64_t value) {
    // 1233 / 2^12 approximates log10(2) well enough for 64 bits: the estimate is right or one too low.
    const int low = static_cast<int>(std::bit_width(value) * 1233 >> 12);
    return low + (value >= kPowersOfTen[static_cast<std::size_t>(low)] ? 1 : 0);
}

constexpr int countDigits(Uint128 value) {
    int count = value >> 64 == 0 ? countDigits(static_cast<std::uint64_t>(value)) : 20;
    while (count < 39 && value >= powerOfTen(count))
        ++count;
    return count;
}

} // namespace tq::detail
