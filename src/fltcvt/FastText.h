#pragma once

namespace tq::detail {

/// Narrow text of everyday numbers straight from their value: the text of FloatText.h, or false with nothing written
/// where another way has to be taken. Counts are 0 or more.

/// Numbers below 10^8 with 1 to 8 places.
bool tryFastF(char* out, double d, int nfrac) noexcept;
/// With 2 to 7 places.
bool tryFastE(char* out, double d, int nfrac, int expChar) noexcept;
/// With 1 to 8 digits and `style` 0 or less, numbers of 1 or more that are not written with an exponent.
bool tryFastG(char* out, double d, int nsig, int style) noexcept;

} // namespace tq::detail
