#pragma once

#include "fltcvt/DigitRequest.h"
#include "fltcvt/Ieee754.h"
#include "fltcvt/PowersOfTen.h"
#include "fltcvt/UInt128.h"

#include <cassert>
#include <cstdint>

namespace tq::detail {

// Digits as numbers, for who writes them with other punctuation than a run of digits, or wide.

/// Digits as one number: value = 0.digits * 10^point. `digits` has exactly `count` decimal digits, of which the last
/// ones may be 0. Without digits both are 0, and `point` is 1 for zero, -places for a number that rounds to nothing.
struct RoundedDecimal {
    /// No more digits than this are kept.
    static constexpr int kMaxCount = 16;

    std::uint64_t digits;
    int count;
    int point;
};

/// Everyday numbers, from 2^-10 to below 2^52, have bits on both sides of the binary point.
constexpr bool isEverydayNumber(double v) noexcept {
    return v >= 0x1p-10 && v < 0x1p52;
}

/// The digits before the point and those after it, each as a number.
struct FixedPointDecimal {
    std::uint64_t integer;
    std::uint64_t decimals;
};

/// An everyday number rounded to `places` (0 to 16) after the point, halves away from zero. The bits before the binary
/// point are the integer part; those after it, times a power of ten, are the decimals, exact to the last bit, so that
/// halves are seen as what they are.
inline FixedPointDecimal roundedFixedPoint(double v, int places) noexcept {
    assert(isEverydayNumber(v) && places >= 0 && places <= RoundedDecimal::kMaxCount);
    const DoubleParts parts(v);
    const int shift = -parts.exponent;
    const std::uint64_t one = smallPowerOfTen(places);
    // With the binary point before the highest bit, the product has it between its two words.
    const UInt128 product = UInt128{parts.significand << (64 - shift)} * one;
    const std::uint64_t decimals =
        static_cast<std::uint64_t>(product >> 64) + (static_cast<std::uint64_t>(product) >> 63);
    const std::uint64_t integer = parts.significand >> shift;
    if (decimals == one) // 0.96 to one place
        return {integer + 1, 0};
    return {integer, decimals};
}

/// The same to `count` significant digits, up to 16, where the integer part has no more than that and is not 0.
inline bool tryRoundedFixedPoint(double v, int count, RoundedDecimal& result) noexcept {
    assert(count > 0);
    if (!isEverydayNumber(v) || v < 1 || count > RoundedDecimal::kMaxCount)
        return false;
    const int integerDigits = digitCount(static_cast<std::uint64_t>(v));
    const int places = count - integerDigits;
    if (places < 0)
        return false;
    const auto [integer, decimals] = roundedFixedPoint(v, places);
    result = {integer * smallPowerOfTen(places) + decimals, count, integerDigits};
    if (result.digits == smallPowerOfTen(count)) { // 9.96 to two digits
        result.digits /= 10;
        ++result.point;
    }
    return true;
}

/// The digits of a finite `v` of 0 or more, rounded once as the request says, then cut after the first sixteen. Not for
/// kShortest and kOrShorter.
RoundedDecimal roundedDecimal(double v, DigitRequest request) noexcept;

// Both ways by fixed point are there for speed: a decimal length takes 675 instructions in all, 811 by roundedDecimal;
// "%e" of a coordinate 448, and 492.

} // namespace tq::detail
