#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace tq::detail {

/// `value` and the smallest step that changes it.
constexpr long double nextStep(long double value) {
    long double step = value;
    while (value + step / 2 != value)
        step /= 2;
    return value + step;
}

inline constexpr int kMaxRoundings = 35;

struct RoundingTable {
    std::array<long double, kMaxRoundings> values{};
    std::int16_t length = 0;
};

constexpr RoundingTable buildRoundings() {
    RoundingTable table;
    long double value = 5;
    for (long double& entry : table.values) {
        entry = value;
        for (int i = 0; i < 10; ++i)
            entry = nextStep(entry);
        ++table.length;
        if (1 + entry == 1)
            break;
        value /= 10;
    }
    return table;
}

inline constexpr RoundingTable kRoundings = buildRoundings();

} // namespace tq::detail

// Scaling by powers of ten, in extended precision. The compiler computes the tables.

inline constexpr int g_lenPowrArray = 9;
/// Scaling of a value below the power at this index starts with the one before it.
inline constexpr int g_idxThirdOfPowrArr = (g_lenPowrArray + 1) / 3;

/// 10^(2^i).
inline constexpr std::array<long double, g_lenPowrArray> g_arrIntegerPows = [] {
    std::array<long double, g_lenPowrArray> powers{};
    long double power = 10;
    for (long double& entry : powers) {
        entry = power;
        power *= power;
    }
    return powers;
}();

/// 10^-(2^i), such that the product with the power is not below 1.
inline constexpr std::array<long double, g_lenPowrArray> g_arrDecimalPows = [] {
    std::array<long double, g_lenPowrArray> powers{};
    for (std::size_t i = 0; i < powers.size(); ++i) {
        powers[i] = 1 / g_arrIntegerPows[i];
        while (powers[i] * g_arrIntegerPows[i] < 1)
            powers[i] = tq::detail::nextStep(powers[i]);
    }
    return powers;
}();

inline constexpr std::int16_t g_lenRndArray = tq::detail::kRoundings.length;

/// 5 * 10^-k and ten steps more, so that exact halves round away from zero. The last entry is the first that changes
/// nothing when added to 1.
inline constexpr const std::array<long double, tq::detail::kMaxRoundings>& g_arrRndConValue =
    tq::detail::kRoundings.values;
