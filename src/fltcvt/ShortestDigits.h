#pragma once

#include "fltcvt/Digits.h"

namespace tq::detail {

/// The shortest digits that read back to `v`, finite and above 0; those closest to `v` of several, the even ones of two
/// equally close. Needs kDigitWriterRoom bytes of `out`; no terminator.
DigitLayout shortestDigits(double v, char* out) noexcept;

} // namespace tq::detail
