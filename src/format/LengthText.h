#pragma once

#include "format/UnitWriter.h"

/// Length result of a text that holds a stacked fraction: no fall-back to scientific notation by length.
inline constexpr unsigned kStackedFractionLength = 9999;

/// Zero suppression (kQFlagSuppressTrailingZeros, then kQFlagSuppressLeadingZero) in place. Trailing zeros are stripped
/// before the degree escape, or before one letter or inch mark at the end, then one point. The caller makes sure that
/// the text has a point: "100" would become "1".
void delPrefixSurfixZero(int flags, wchar_t* text);

/// Appends a length of `inches`, from 0 to 1.19999e11, in engineering, architectural or fractional units. `precision`
/// counts decimals or, for the last two, the power of two of the denominator (at most 30). Returns the length of the
/// text so far, or kStackedFractionLength.
unsigned doFormatQModeInchUnitInte(tq::detail::UnitWriter& writer, int unitMode, double inches, int flags,
                                   int precision);

namespace tq::detail {

/// Writes a length of 0 or more, or infinity or NaN, in the linear unit mode; nothing in an unknown mode.
void formatLength(UnitWriter& writer, int unitMode, int precision, double value, int flags, unsigned maxLength);

} // namespace tq::detail
