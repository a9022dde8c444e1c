#pragma once

#include "fltcvt/Digits.h"

namespace tq::detail {

/// The digits of a finite `v` above 0 by big integers: slow, and right for every request. `out` has kDigitRoom bytes;
/// no terminator. Takes its blocks from the digit allocator and gives them all back. Throws std::bad_alloc.
DigitLayout exactDigits(double v, DigitRequest request, char* out);

} // namespace tq::detail
