#pragma once

#include "format/UnitWriter.h"

/// Appends an angle in radians in one of the angular unit modes; nothing but the minus sign in an unknown mode, and
/// inf, -inf or nan in any known one. In surveyor's units the angle is reduced to one turn, in the others a negative
/// one gets a minus sign. The digits are cut down as far as `maxLength` asks; the text may still be longer. `angle` is
/// left as the magnitude that was shown. Calculates with doubles, so that the last digits depend on the processor's
/// mode; not inlined, so that a caller can set it.
[[gnu::noinline]] void formatQModeAngleUnit(tq::detail::UnitWriter& writer, int unitMode, double& angle, int flags,
                                            int maxLength, int precision);

/// The letters of the bearing of an angle from 0 to below 2 pi, east being 0, north pi / 2; `angle` becomes the one
/// from the north or south axis, 0 to pi / 2.
void getAngleOrient(double& angle, wchar_t& first, wchar_t& second);

/// Splits an angle of 0 or more, in radians, into whole degrees, whole minutes and seconds, and rounds it for the
/// precision that `maxLength` leaves, `usedPrecision`: 0 shows degrees, 1 and 2 minutes, from 3 on seconds with the
/// digits above 4 as decimals. `angle` becomes the rounded degrees, before any carry.
void getRoundedDegreeAngle(double& angle, unsigned maxLength, int precision, int& degrees, int& minutes,
                           double& seconds, int& usedPrecision);

namespace tq::detail {

/// An absolute angle, counted from the settings' base in their direction, from 0 to below 2 pi. Depends on the mode in
/// the same way.
[[gnu::noinline]] double absoluteAngle(double angle);

} // namespace tq::detail
