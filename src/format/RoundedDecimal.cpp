// A double is m * 2^e. While m * 10^d and the denominator fit in 128 bits, rounding at the d-th decimal is one exact
// integer division by a power of two: no table, no error to bound, halves seen as what they are. That covers the
// numbers of drawings; the rest goes to the exact path.

#include "format/RoundedDecimal.h"

#include "fltcvt/DoubleBits.h"
#include "fltcvt/FastDigits.h"
#include "format/DecimalPowers.h"

#include <bit>

namespace tq::detail {

namespace {

// 10^22 < 2^74: its product with a mantissa, and a mantissa shifted that far, stay below 2^127.
constexpr int kMaxPlace = 22;
constexpr int kMaxExponent = 74;
constexpr int kMaxWanted = 38;

// `value` counts units of the place 10^-decimals.
RoundedDecimal cut(UInt128 value, int decimals) {
    if (value == 0)
        return {0, 0, -decimals - 1};
    if (value < kSmallPowersOfTen[kMaxSignificantDigits]) [[likely]] {
        const int count = decimalDigits(static_cast<std::uint64_t>(value));
        return {static_cast<std::uint64_t>(value), count, count - 1 - decimals};
    }
    const int count = decimalDigits(value);
    const auto kept = static_cast<std::uint64_t>(value / widePowerOfTen(count - kMaxSignificantDigits));
    return {kept, kMaxSignificantDigits, count - 1 - decimals};
}

// value * 10^place: its integer part, and whether rounding to the nearest integer, halves up, adds one. The product
// and, below place 0, the divisor 10^-place / 2^exponent must fit.
struct Scaled {
    UInt128 integer;
    bool roundsUp;

    UInt128 rounded() const { return integer + (roundsUp ? 1 : 0); }
};

Scaled atPlace(const DoubleParts& value, int place) {
    if (place >= 0) {
        const UInt128 product = widePowerOfTen(place) * value.significand;
        if (value.exponent >= 0)
            return {product << value.exponent, false};
        const int shift = -value.exponent;
        if (shift >= 128)
            return {0, false};
        return {product >> shift, (product >> (shift - 1) & 1) != 0};
    }
    if (value.exponent < 0) {
        const std::uint64_t divisor = kSmallPowersOfTen[static_cast<std::size_t>(-place)] << -value.exponent;
        return {value.significand / divisor, value.significand % divisor >= divisor / 2};
    }
    const UInt128 divisor = widePowerOfTen(-place);
    const UInt128 integer = UInt128{value.significand} << value.exponent;
    return {integer / divisor, integer % divisor >= divisor / 2};
}

// The decimal exponent of a normal value, or one too high: from the binary one, 78913 / 2^18 being log10(2) from below.
int estimateExponent(const DoubleParts& binary) {
    const int log2 = binary.exponent + static_cast<int>(std::bit_width(binary.significand)) - 1;
    return static_cast<int>((std::int64_t{log2 + 1} * 78913) >> 18);
}

// Very small and very large numbers, by a table of powers. It sends halves to the even digit, so it may be asked only
// where there are none: m * 2^e, m odd, lies halfway between two multiples of 10^-place only for e == -place - 1. With
// place > 0 that makes 5^place a factor of a number below 2 * 10^16, and with place < 0 one of m, below 2^53.
constexpr int kFirstPlaceWithoutHalves = 24;
static_assert(kMaxExponent >= 22, "5^22 < 2^53 < 5^23");

bool tryRoundToSignificant(double value, int place, int digits, RoundedDecimal& rounded) {
    if (digits > kMaxSignificantDigits || (place > 0 && place < kFirstPlaceWithoutHalves))
        return false;
    rounded.count = digits;
    return tryRoundedDigits(value, digits, rounded.digits, rounded.exponent);
}

// A large integer, cut to 16 digits: unless the rounded 17th is 0, the ones before it are untouched by its rounding.
bool tryCutInteger(double value, RoundedDecimal& rounded) {
    rounded.count = kMaxSignificantDigits;
    if (!tryRoundedDigits(value, kMaxSignificantDigits + 1, rounded.digits, rounded.exponent) ||
        rounded.digits % 10 == 0)
        return false;
    rounded.digits /= 10;
    return true;
}

} // namespace

RoundedDecimal roundToDecimals(double value, int decimals) {
    if (bitsOf(value) == 0)
        return {0, 0, 0};
    const DoubleParts binary(value);
    if (binary.exponent >= 0 && binary.exponent <= kMaxExponent)
        return cut(atPlace(binary, 0).integer, 0);
    if (binary.exponent < 0 && decimals <= kMaxPlace)
        return cut(atPlace(binary, decimals).rounded(), decimals);
    RoundedDecimal large{};
    return binary.exponent > 0 && tryCutInteger(value, large) ? large : roundToDecimalsExact(value, decimals);
}

RoundedDecimal roundToSignificant(double value, int digits) {
    if (bitsOf(value) == 0)
        return {0, 0, 0};
    const DoubleParts binary(value);
    int place = digits - 1 - estimateExponent(binary);
    // One place more is needed when the estimate is one too high.
    if (binary.exponent > kMaxExponent || place >= kMaxPlace || digits > kMaxWanted) {
        RoundedDecimal rounded{};
        return tryRoundToSignificant(value, place, digits, rounded) ? rounded : roundToSignificantExact(value, digits);
    }
    Scaled scaled = atPlace(binary, place);
    if (scaled.integer < widePowerOfTen(digits - 1))
        scaled = atPlace(binary, ++place);
    return cut(scaled.rounded(), place);
}

} // namespace tq::detail
