#pragma once

#include <cstdint>

namespace tq::detail {

/// More significant digits than this are never shown.
inline constexpr int kMaxSignificantDigits = 16;

/// A magnitude cut to 16 significant digits: digits * 10^(exponent - count + 1). `digits` has exactly `count` decimal
/// digits, the first of them not 0; or digits and count are 0, and exponent is 0 or that of a place which is not shown.
struct RoundedDecimal {
    std::uint64_t digits;
    int count;
    int exponent;
};

/// `value`, finite and not negative, rounded once to `decimals` (0 or more) places, exact halves up, then cut.
RoundedDecimal roundToDecimals(double value, int decimals);

/// The same to `digits` (1 or more) significant digits.
RoundedDecimal roundToSignificant(double value, int digits);

/// The exact paths of the two above, for any value above 0. They are slow, need the heap, and exist for very large,
/// very small and very long numbers.
RoundedDecimal roundToDecimalsExact(double value, int decimals);
RoundedDecimal roundToSignificantExact(double value, int digits);

} // namespace tq::detail
