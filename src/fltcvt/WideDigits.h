#pragma once

#include "fltcvt/PowersOfTen.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tq::detail {

// Digits of wide text, without a loop for each digit.

/// The writers below may change this many characters, whatever the count.
inline constexpr int kDigitsAtOnce = 16;

struct WideDigitPair {
    wchar_t digits[2];
};

inline constexpr std::array<WideDigitPair, 100> kWideDigitPairs = [] {
    std::array<WideDigitPair, 100> pairs{};
    for (std::size_t i = 0; i < pairs.size(); ++i)
        pairs[i] = {{static_cast<wchar_t>(L'0' + i / 10), static_cast<wchar_t>(L'0' + i % 10)}};
    return pairs;
}();

inline void writeDigitPair(wchar_t* out, std::uint64_t pair) {
    assert(pair < kWideDigitPairs.size());
    std::memcpy(out, &kWideDigitPairs[pair], sizeof(WideDigitPair));
}

/// Bits after the point of a fixed-point number whose integer part is a pair of digits.
inline constexpr int kPairShift = 57;

/// ceil(2^57 / 10^(count - 2)): the product with a number of `count` digits has the first pair before the point.
inline constexpr std::array<std::uint64_t, 11> kPairScales = [] {
    std::array<std::uint64_t, 11> scales{0, (std::uint64_t{1} << kPairShift) * 10, std::uint64_t{1} << kPairShift};
    for (std::size_t count = 3; count < scales.size(); ++count) {
        const std::uint64_t divisor = kSmallPowersOfTen[count - 2];
        scales[count] = ((std::uint64_t{1} << kPairShift) + divisor - 1) / divisor;
    }
    return scales;
}();

/// Writes pairs of digits. The first one stands before the point; a multiplication brings each next one there.
template <std::size_t pairCount>
inline void writePairs(wchar_t* out, std::uint64_t fraction) {
    for (std::size_t i = 0; i < pairCount; ++i) {
        writeDigitPair(out + 2 * i, fraction >> kPairShift);
        fraction = (fraction & ((std::uint64_t{1} << kPairShift) - 1)) * 100;
    }
}

/// The sixteen digits of a value below 10^16, zeros before them included.
inline void writeSixteenDigits(wchar_t* out, std::uint64_t value) {
    assert(value < smallPowerOfTen(kDigitsAtOnce));
    const std::uint64_t upper = value / kSmallPowersOfTen[8];
    writePairs<4>(out, upper * kPairScales[8]);
    writePairs<4>(out + 8, (value - upper * kSmallPowersOfTen[8]) * kPairScales[8]);
}

/// Writes `value`, below 10^count, as `count` digits, zeros before them included. For values below 2^32, and for halves
/// of sixteen digits, the scales are exact enough: what they are too large by stays below one unit of the last digit.
inline void writeDigits(wchar_t* out, std::uint64_t value, int count) {
    assert(count > kLastSmallPower || value < smallPowerOfTen(count));
    if (count < static_cast<int>(kPairScales.size()) && value >> 32 == 0) [[likely]] {
        writePairs<5>(out, value * kPairScales[static_cast<std::size_t>(count)]);
        return;
    }
    // One by one until sixteen are left.
    constexpr std::uint64_t kLimit = smallPowerOfTen(kDigitsAtOnce);
    if (count > kDigitsAtOnce) {
        std::uint64_t above = value / kLimit;
        value %= kLimit;
        const int others = count - kDigitsAtOnce;
        for (int i = others; i-- > 0; above /= 10)
            out[i] = static_cast<wchar_t>(L'0' + above % 10);
        out += others;
        count = kDigitsAtOnce;
    }
    // Filled up with zeros at the end, so that the first digit is the first of sixteen.
    writeSixteenDigits(out, value * smallPowerOfTen(kDigitsAtOnce - count));
}

} // namespace tq::detail
