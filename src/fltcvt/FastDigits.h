#pragma once

#include <cstdint>

namespace tq::detail {

/// Decimal digits of doubles by one multiplication with a 128-bit power of ten: exact where they give an answer. They
/// share no state and allocate nothing, so they may be called from several threads.

/// value = digits * 10^exponent.
struct ShortDecimal {
    std::uint64_t digits;
    int exponent;
};

/// The shortest decimal that reads back to `v`, the one closest to `v` of several, the even one of two equally close.
/// `v` is finite and above 0. At most 17 digits; they may end with zeros.
ShortDecimal shortestDigits(double v) noexcept;

/// `v`, finite and above 0, correctly rounded to `digits` significant decimal digits, 1 to 17. On success `out` holds
/// exactly that many digits (10^(digits-1) <= out < 10^digits) and `exp10` is the exponent of the first of them:
/// the value is out * 10^(exp10 - digits + 1). Ties go to the even digit. Returns false, with `out` and `exp10` in an
/// unspecified state, when the 128 bits do not decide; that is so for some ties, and next to never otherwise.
bool tryRoundedDigits(double v, int digits, std::uint64_t& out, int& exp10) noexcept;

/// `v`, finite and above 0, correctly rounded to a multiple of 10^-places: `out` * 10^-places, with `out` 0 when that
/// is nearest. Ties go to the even number. Returns false, with `out` unspecified, when `out` would have more than 17
/// digits, when `places` is not in -292 to 340, or when the 128 bits do not decide.
bool tryRoundedAt(double v, int places, std::uint64_t& out) noexcept;

} // namespace tq::detail
