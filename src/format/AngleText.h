#pragma once

#include "format/UnitSettings.h"
#include "format/UnitWriter.h"

/// Appends an angle in radians in one of the angular unit modes and returns the writer at the end of the text. An
/// unknown mode shows nothing but the minus sign; infinity and NaN are inf, -inf and nan in every known one. An
/// absolute angle is counted from the settings' base in their direction and reduced to one turn; in surveyor's units
/// every angle is reduced, in the others a negative one gets a minus sign. Digits are left out as `maxLength` asks; the
/// text may still be longer. It calculates with doubles, so the last digits depend on the processor's mode; it is not
/// inlined, so that a caller can set that.
[[gnu::noinline]] tq::detail::UnitWriter formatQModeAngleUnit(tq::detail::UnitWriter writer, tq::detail::UnitPair units,
                                                              double angle, bool isAbsolute, int flags, int maxLength);
