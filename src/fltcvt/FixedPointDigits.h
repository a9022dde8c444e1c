#pragma once

#include "fltcvt/Digits.h"

namespace tq::detail {

/// The digits of a finite `v` above 0, exact and in any number, where it is a multiple of 2^-63 below 2^64. Returns
/// false for other numbers and for the shortest digits. `request.orShorter` is not looked at: the caller knows that the
/// shortest digits are too many. `out` has kDigitRoom bytes; no terminator.
bool tryFixedPointDigits(double v, DigitRequest request, char* out, DigitLayout& layout) noexcept;

} // namespace tq::detail
