#pragma once

#include "fltcvt/DigitWriter.h"
#include "fltcvt/FastDigits.h"

#include <cstdint>

namespace tq::detail {

/// Which digits of a number are wanted. Rounding is to nearest, ties go to the even digit.
struct DigitRequest {
    enum Kind : std::uint8_t {
        eShortest,    ///< The shortest digits that read back to the number.
        eSignificant, ///< `count` digits, at least 1.
        ePlaces       ///< The digits up to `count` places behind the decimal point; `count` may be negative.
    };
    Kind kind;
    bool orShorter; ///< The shortest digits instead, where those are not more than the wanted ones.
    int count;

    /// The request that a mode of TqGdImpl::dtoa stands for.
    static DigitRequest ofMode(int mode, int ndigits) noexcept;
};

/// Digits without zeros at the end: value = 0.d1d2d3... * 10^point. None, with `point` -places, for a number that
/// rounds to nothing.
struct DigitLayout {
    int count;
    int point;
};

/// No finite double has more significant digits.
inline constexpr int kMaxDigits = 767;
/// Bytes that every function writing digits may use of its output.
inline constexpr int kDigitRoom = kMaxDigits + 100;

/// The digits of a finite `v` above 0 when at most 17 are wanted, or make the number, and 128 bits decide on them.
/// `out.digits` may end with zeros, and is 0 for a number that rounds to nothing.
bool tryFewDigits(double v, const DigitRequest& request, ShortDecimal& out) noexcept;

/// The digits of a finite `v` above 0 to `out`, which has kDigitRoom bytes. No terminator. Throws std::bad_alloc.
DigitLayout writeManyDigits(double v, const DigitRequest& request, char* out);

/// Either of the two.
inline DigitLayout writeDigitsOf(double v, const DigitRequest& request, char* out) {
    ShortDecimal decimal;
    if (!tryFewDigits(v, request, decimal)) [[unlikely]]
        return writeManyDigits(v, request, out);
    if (decimal.digits == 0)
        return {0, -request.count};
    int count = 0;
    const int digits = writeDigits(out, decimal.digits, count);
    return {count, decimal.exponent + digits};
}

} // namespace tq::detail
