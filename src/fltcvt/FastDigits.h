#pragma once

// All scale as R. Giulietti, "The Schubfach way to render doubles" (2020), does, and decide by the fraction of what
// comes out, where that is clear.

#include "fltcvt/DoubleBits.h"
#include "fltcvt/PowersOfTen.h"
#include "fltcvt/WideMath.h"

#include <bit>
#include <cstdint>

namespace tq::detail {

/// Decimal digits of doubles by one multiplication with a 128-bit power of ten: right where they give an answer. They
/// share no state and allocate nothing, so they may be called from several threads.

namespace scaling {

// Above this product no fraction bit is lost: the integer part of a scaled number then has 57 bits at most.
inline constexpr int kMinShift = 7;

inline constexpr std::uint64_t kHalf = std::uint64_t{1} << 63;

// A positive double as significand * 2^exponent with the highest bit of the significand set.
struct Normalised {
    std::uint64_t significand;
    int exponent;

    explicit Normalised(double v) noexcept {
        const DoubleParts parts(v);
        const int shift = parts.isSubnormal() ? std::countl_zero(parts.significand) : 63 - kFractionBits;
        significand = parts.significand << shift;
        exponent = parts.exponent - shift;
    }
};

// floor(log10(v)). The power above the guess is compared as a 128-bit number; rounded up, it decides exactly.
inline int floorLog10(const Normalised& v) noexcept {
    const int log2 = v.exponent + 63;
    const int guess = floorLog10OfPowerOfTwo(log2);
    const PowerOfTen& next = powerOfTen(guess + 1);
    const bool reaches = v.significand > next.high || (v.significand == next.high && next.low == 0);
    return guess + (floorLog2OfPowerOfTen(guess + 1) == log2 && reaches ? 1 : 0);
}

struct Rounded {
    std::uint64_t value;
    bool isKnown;
};

// v * 10^power, which is to be below 2^57, rounded to the nearest integer, ties to even, by all 128 bits of the power.
Rounded roundedByAllBits(Normalised v, int power) noexcept;

// The same by the upper half of the power; known nearly always, but for ties.
inline Rounded roundedByUpperHalf(Normalised v, int power) noexcept {
    const PowerOfTen& scale = powerOfTen(power);
    // The 63 bits of `high` are scaled by 2^shift: from nearly nothing above the exact ones to less than two below.
    const int shift = -2 - (v.exponent + floorLog2OfPowerOfTen(power));
    if (static_cast<unsigned>(shift - kMinShift) >= static_cast<unsigned>(63 - kMinShift)) [[unlikely]]
        return {0, false};
    const auto high = static_cast<std::uint64_t>(UInt128{v.significand} * scale.high >> 65);
    const std::uint64_t one = std::uint64_t{1} << shift;
    const std::uint64_t sum = high + one / 2;
    return {sum >> shift, ((sum + 2) & (one - 1)) > 2};
}

inline Rounded rounded(Normalised v, int power) noexcept {
    const Rounded result = roundedByUpperHalf(v, power);
    return result.isKnown ? result : roundedByAllBits(v, power);
}

} // namespace scaling

/// Seventeen digits: value = 0.d1d2d3... * 10^point. The first is not 0, others may be.
struct SeventeenDigits {
    std::uint64_t sixteen; ///< All but the last.
    unsigned last;
    int point;
};

/// The shortest decimal that reads back to `v`, the one closest to `v` of several. `v` is finite and above 0. Returns
/// false, with `out` unspecified, when 64 bits of the fraction do not decide, and where the interval that reads back is
/// not symmetrical or the digits may be few: for powers of two and subnormals.
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
    if (isDoubtful(rest - half) || isDoubtful(rest + half - kTen) || isDoubtful(product.middle() - scaling::kHalf))
        [[unlikely]]
        return false;

    // Without branches: which one it is is as good as random.
    const std::uint64_t isNextTens = rest + half > kTen ? 1 : 0;
    const std::uint64_t isTens = isNextTens | (rest < half ? 1 : 0);
    const std::uint64_t upper = tens + isNextTens;
    const std::uint64_t last = (ones + (product.middle() >> 63)) & (isTens - 1);
    const std::uint64_t isSixteen = (upper - kSmallPowersOfTen[15]) >> 63; // digits in all
    out.sixteen = upper + ((9 * upper + last) & (0 - isSixteen));
    out.last = static_cast<unsigned>(last & (isSixteen - 1));
    out.point = k + 17 - static_cast<int>(isSixteen);
    return true;
}

/// `v`, finite and above 0, correctly rounded to `digits` significant decimal digits, 1 to 17. On success `out` holds
/// exactly that many digits (10^(digits-1) <= out < 10^digits) and `exp10` is the exponent of the first of them:
/// the value is out * 10^(exp10 - digits + 1). Ties go to the even digit. Returns false, with `out` and `exp10` in an
/// unspecified state, when the 128 bits do not decide; that is so for some ties, and next to never otherwise.
template <scaling::Rounded (*kRounded)(scaling::Normalised, int) = scaling::rounded>
inline bool tryRoundedDigits(double v, int digits, std::uint64_t& out, int& exp10) noexcept {
    const scaling::Normalised number(v);
    exp10 = scaling::floorLog10(number);
    const scaling::Rounded rounded = kRounded(number, digits - 1 - exp10);
    if (!rounded.isKnown) [[unlikely]]
        return false;
    out = rounded.value;
    if (out == kSmallPowersOfTen[static_cast<std::size_t>(digits)]) {
        out = kSmallPowersOfTen[static_cast<std::size_t>(digits - 1)];
        ++exp10;
    }
    return true;
}

/// `v`, finite and above 0, correctly rounded to a multiple of 10^-places: `out` * 10^-places, with `out` 0 when that
/// is nearest. Ties go to the even number. Returns false, with `out` unspecified, when `out` would have more than 17
/// digits, when `places` is not in -292 to 340, or when the 128 bits do not decide.
template <scaling::Rounded (*kRounded)(scaling::Normalised, int) = scaling::rounded>
inline bool tryRoundedAt(double v, int places, std::uint64_t& out) noexcept {
    constexpr std::uint64_t kLimit = kSmallPowersOfTen[17];
    if (places < -292 || places > 340)
        return false;
    const scaling::Rounded rounded = kRounded(scaling::Normalised(v), places);
    out = rounded.value;
    return rounded.isKnown && out < kLimit;
}

} // namespace tq::detail
