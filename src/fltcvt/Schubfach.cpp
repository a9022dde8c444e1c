// After R. Giulietti, "The Schubfach way to render doubles" (2020).

#include "fltcvt/Schubfach.h"

#include "fltcvt/NarrowDigits.h"

namespace tq::detail {

namespace {

// value = digits * 10^exponent, with at most 17 digits; they may end with zeros.
struct ShortDecimal {
    std::uint64_t digits;
    int exponent;
};

// The integer part of product / 2^128 with the lowest bit set when there is a fraction. The power of ten is less than
// one unit too large, hence the middle word at most 1; the paper shows that no other fraction is that small.
std::uint64_t roundToOdd(const UInt192& product) noexcept {
    return product.high | (product.middle() > 1 ? 1 : 0);
}

ShortDecimal shortestDecimal(double v) noexcept {
    // Scaled by 10^-k, the interval that reads back to v is between 1 and 10 wide; two more bits are kept.
    const DoubleParts parts(v);
    const std::uint64_t c = parts.significand;
    const bool isLowerCloser = parts.isLowerNeighbourCloser();
    const int k = isLowerCloser ? floorLog10OfThreeQuarters(parts.exponent) : floorLog10OfPowerOfTwo(parts.exponent);
    const int h = parts.exponent + floorLog2OfPowerOfTen(-k) + 1;
    const PowerOfTen& power = powerOfTen(-k);

    const UInt192 product = multiply(c << (h + 2), power.high, power.low);
    const auto scaledPower = [&power](int shift) -> UInt192 {
        return {power.high >> (64 - shift), (UInt128{power.high} << 64 | power.low) << shift};
    };
    const UInt192 halfUlp = scaledPower(h + 1);
    const std::uint64_t isOdd = c & 1;
    const std::uint64_t value = roundToOdd(product);
    const std::uint64_t lower = roundToOdd(product - (isLowerCloser ? scaledPower(h) : halfUlp)) + isOdd;
    const std::uint64_t upper = roundToOdd(product + halfUlp) - isOdd;

    // Without branches, because which one it is cannot be predicted. One multiple of ten at most is inside.
    const std::uint64_t s = value / 4;
    const std::uint64_t tens = s / 10;
    const std::uint64_t isTensInside = lower <= 40 * tens ? 1 : 0;
    const std::uint64_t isNextTensInside = 40 * tens + 40 <= upper ? 1 : 0;
    const std::uint64_t isInside = lower <= 4 * s ? 1 : 0;
    const std::uint64_t isNextInside = 4 * s + 4 <= upper ? 1 : 0;
    const std::uint64_t isNextNearer = value + (s & 1) > 4 * s + 2 ? 1 : 0;
    const std::uint64_t isOneInside = isInside ^ isNextInside;
    const std::uint64_t nearest = s + ((isNextInside & isOneInside) | (isNextNearer & ~isOneInside));
    const std::uint64_t isTens = isTensInside ^ isNextTensInside;
    return {nearest ^ ((nearest ^ (tens + isNextTensInside)) & (0 - isTens)), k + static_cast<int>(isTens)};
}

} // namespace

Rounded roundedByAllBits(Normalised v, int power, Rule rule) noexcept {
    const PowerOfTen& scale = powerOfTen(power);
    // The product is scaled by 2^(128 + shift).
    const int shift = -1 - (v.exponent + floorLog2OfPowerOfTen(power));
    if (shift > 64)
        return {0, true}; // the product is below 2^192, so the number below one half: 0.1 to 0 places
    if (shift < kMinShift)
        return {0, false}; // 1e20 to 0 places
    const UInt192 product = multiply(v.significand, scale.high, scale.low);
    const bool isAllFraction = shift == 64; // 0.25 to 0 places
    const std::uint64_t integer = isAllFraction ? 0 : product.high >> shift;
    const std::uint64_t fraction =
        isAllFraction ? product.high : product.high << (64 - shift) | product.middle() >> shift;
    if (fraction != kHalf)
        return {integer + (fraction >> 63), true};
    // Between one half and 2^-64 above it: 2.5 to 0 places. The product may be too large by less than one unit of its
    // middle word.
    const std::uint64_t rest = isAllFraction ? product.middle() : product.middle() << (64 - shift);
    if (isExactPower(power))
        return {integer + ((rest | product.low()) != 0 || rule == Rule::kAwayFromZero ? 1 : integer & 1), true};
    return {integer + 1, rest != 0};
}

DigitLayout shortestDigits(double v, char* out) noexcept {
    const ShortDecimal decimal = shortestDecimal(v);
    const int length = digitCount(decimal.digits);
    return {writeUpToSeventeen(out, decimal.digits, length), decimal.exponent + length};
}

} // namespace tq::detail
