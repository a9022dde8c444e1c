#pragma once

// Decimal digits of doubles by one multiplication with a 128-bit power of ten, after R. Giulietti, "The Schubfach way
// to render doubles" (2020). The number is scaled as there; what becomes of it is decided by the fraction of the
// product, where that is clear.

#include "fltcvt/DigitRequest.h"
#include "fltcvt/Ieee754.h"
#include "fltcvt/PowersOfTen.h"
#include "fltcvt/UInt128.h"

#include <bit>
#include <cassert>
#include <cstdint>

namespace tq::detail {

/// Digits written at once: what a double needs at most to be read back.
inline constexpr int kMaxFastDigits = 17;

/// Fewer bits of fraction are refused. No number that is to have up to 17 digits has fewer: it is below 10^17, so below
/// 2^57, and with `shift` bits of fraction its scaled form, which has 62 bits at least, is below 2^(57 + shift). (With
/// 7, one in 40 random numbers to 17 digits took big integers.) The integer part then has 59 bits at most.
inline constexpr int kMinShift = 5;

inline constexpr std::uint64_t kHalf = std::uint64_t{1} << 63;

/// A finite double above 0 as significand * 2^exponent with the highest bit of the significand set.
struct Normalised {
    std::uint64_t significand;
    int exponent;

    explicit Normalised(double v) noexcept {
        assert(v > 0 || bitsOf(v) - 1 < kInfinityBits);
        const DoubleParts parts(v);
        const int shift = parts.isSubnormal() ? std::countl_zero(parts.significand) : 63 - kFractionBits;
        significand = parts.significand << shift;
        exponent = parts.exponent - shift;
    }
};

/// floor(log10(v)). The power above the guess is compared as a 128-bit number; since it is rounded up, the comparison
/// is exact.
inline int floorLog10(const Normalised& v) noexcept {
    const int log2 = v.exponent + 63;
    const int guess = floorLog10OfPowerOfTwo(log2);
    const PowerOfTen& next = powerOfTen(guess + 1);
    const bool reaches = v.significand > next.high || (v.significand == next.high && next.low == 0);
    return guess + (floorLog2OfPowerOfTen(guess + 1) == log2 && reaches ? 1 : 0);
}

/// An integer, unless the bits that were looked at do not decide on it.
struct Rounded {
    std::uint64_t value;
    bool isKnown;
};

/// How a scaled number is rounded: v * 10^power, to the nearest integer. Not known when that has more than 59 bits.
using Scaling = Rounded(Normalised v, int power, Rule rule) noexcept;

/// By all 128 bits of the power. Not known only for ties whose power is not exact, such as 25 to one digit, and for 1
/// in 2^64 other numbers.
Scaling roundedByAllBits;

/// By the upper half of the power: known nearly always, but never for ties.
inline Rounded roundedByUpperHalf(Normalised v, int power, Rule) noexcept {
    const PowerOfTen& scale = powerOfTen(power);
    // `high` has 63 bits, scaled by 2^shift. Against the exact product it is at most a trace too large, because the
    // power is rounded up, and less than two units too small, because both factors' lower bits are cut off.
    const int shift = -2 - (v.exponent + floorLog2OfPowerOfTen(power));
    if (static_cast<unsigned>(shift - kMinShift) >= static_cast<unsigned>(63 - kMinShift)) [[unlikely]]
        return {0, false};
    const auto high = static_cast<std::uint64_t>(UInt128{v.significand} * scale.high >> 65);
    const std::uint64_t one = std::uint64_t{1} << shift;
    const std::uint64_t sum = high + one / 2;
    return {sum >> shift, ((sum + 2) & (one - 1)) > 2};
}

/// By half of the power, then by all of it.
inline Rounded roundedByHalfThenAll(Normalised v, int power, Rule rule) noexcept {
    const Rounded result = roundedByUpperHalf(v, power, rule);
    return result.isKnown ? result : roundedByAllBits(v, power, rule);
}

/// Seventeen digits: value = 0.d1d2d3... * 10^point. The first is not 0, others may be.
struct SeventeenDigits {
    std::uint64_t sixteen; ///< All but the last.
    unsigned last;
    int point;
};

/// The shortest decimal that reads back to `v`, finite and above 0; of several the one closest to `v`. Returns false,
/// with `out` unspecified, when 64 bits of the fraction do not decide (18014398509482028), for powers of two, whose
/// interval is not symmetrical, and for subnormals, which may have few digits.
inline bool tryShortestDigits(double v, SeventeenDigits& out) noexcept {
    // Fractions below are in units of 2^-kUnitBits; they are off by less than two of them.
    constexpr int kUnitBits = 60;
    constexpr std::uint64_t kTen = std::uint64_t{10} << kUnitBits;
    constexpr std::uint64_t kDoubt = 16;
    const auto isDoubtful = [](std::uint64_t difference) { return difference + kDoubt < 2 * kDoubt; };

    const DoubleParts parts(v);
    const std::uint64_t c = parts.significand;
    if (c <= kHiddenBit) [[unlikely]]
        return false;
    // Scaled by 10^-k, half the interval is between 0.5 and 5 wide. So the nearest integer is inside, and of the
    // multiples of ten none or one.
    const int k = floorLog10OfPowerOfTwo(parts.exponent);
    const int h = parts.exponent + floorLog2OfPowerOfTen(-k) + 1;
    const PowerOfTen& power = powerOfTen(-k);
    const UInt192 product = multiply(c << h, power.high, power.low);
    const std::uint64_t tens = product.high / 10;
    const std::uint64_t ones = product.high - 10 * tens;
    const std::uint64_t rest = ones << kUnitBits | product.middle() >> (64 - kUnitBits);
    const std::uint64_t half = power.high >> (64 - kUnitBits + 1 - h);
    if (isDoubtful(rest - half) || isDoubtful(rest + half - kTen) || isDoubtful(product.middle() - kHalf)) [[unlikely]]
        return false;

    // Without branches, because which one it is cannot be predicted.
    const std::uint64_t isNextTens = rest + half > kTen ? 1 : 0;
    const std::uint64_t isTens = isNextTens | (rest < half ? 1 : 0);
    const std::uint64_t upper = tens + isNextTens;
    const std::uint64_t last = (ones + (product.middle() >> 63)) & (isTens - 1);
    const std::uint64_t isSixteen = (upper - smallPowerOfTen(15)) >> 63; // digits in all
    out.sixteen = upper + ((9 * upper + last) & (0 - isSixteen));
    out.last = static_cast<unsigned>(last & (isSixteen - 1));
    out.point = k + 17 - static_cast<int>(isSixteen);
    return true;
}

/// `v`, finite and above 0, correctly rounded to `digits` significant decimal digits, 1 to 17. On success `out` holds
/// exactly that many digits (10^(digits-1) <= out < 10^digits) and `exp10` is the exponent of the first of them:
/// the value is out * 10^(exp10 - digits + 1). Returns false, with `out` and `exp10` unspecified, when the rounding
/// does not decide.
template <Scaling kScaling = roundedByHalfThenAll>
inline bool tryRoundedDigits(double v, int digits, Rule rule, std::uint64_t& out, int& exp10) noexcept {
    assert(digits >= 1 && digits <= kMaxFastDigits);
    const Normalised number(v);
    exp10 = floorLog10(number);
    const Rounded rounded = kScaling(number, digits - 1 - exp10, rule);
    if (!rounded.isKnown) [[unlikely]]
        return false;
    out = rounded.value;
    if (out == smallPowerOfTen(digits)) { // 9.99 to two digits
        out = smallPowerOfTen(digits - 1);
        ++exp10;
    }
    return true;
}

/// `v`, finite and above 0, correctly rounded to a multiple of 10^-places: `out` * 10^-places, with `out` 0 when that
/// is nearest. Returns false, with `out` unspecified, when `out` would have more than 17 digits, when `places` is not
/// in -292 to 340, or when the rounding does not decide.
template <Scaling kScaling = roundedByHalfThenAll>
inline bool tryRoundedAt(double v, int places, Rule rule, std::uint64_t& out) noexcept {
    constexpr std::uint64_t kLimit = smallPowerOfTen(kMaxFastDigits);
    if (places < -292 || places > 340)
        return false;
    const Rounded rounded = kScaling(Normalised(v), places, rule);
    out = rounded.value;
    return rounded.isKnown && out < kLimit;
}

/// The shortest digits that read back to `v`, finite and above 0; those closest to `v` of several, the even ones of two
/// equally close. Needs kDigitWriterRoom bytes of `out`; no terminator.
DigitLayout shortestDigits(double v, char* out) noexcept;

} // namespace tq::detail
