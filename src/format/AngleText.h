#pragma once

#include "format/UnitWriter.h"

/// Appends an angle in radians in one of the angular unit modes. An unknown mode shows nothing but the minus sign;
/// infinity and NaN are inf, -inf and nan in every known one. In surveyor's units the angle is reduced to one turn, in
/// the others a negative one gets a minus sign. Digits are left out as `maxLength` asks; the text may still be longer.
/// `angle` is left as the magnitude that was shown. It calculates with doubles, so the last digits depend on the
/// processor's mode; it is not inlined, so that a caller can set that.
[[gnu::noinline]] void formatQModeAngleUnit(tq::detail::UnitWriter& writer, int unitMode, double& angle, int flags,
                                            int maxLength, int precision);

/// The letters of the bearing of an angle from 0 to below 2 pi, where east is 0 and north pi / 2. `angle` becomes the
/// angle from the north or south axis, 0 to pi / 2.
void getAngleOrient(double& angle, wchar_t& first, wchar_t& second);

/// Splits an angle of 0 or more, in radians, into whole degrees, whole minutes and seconds. It is rounded for
/// `usedPrecision`, the part of `precision` that `maxLength` leaves: 0 shows degrees, 1 and 2 minutes too, 3 and 4
/// seconds too, each one above 4 a decimal of the seconds. `angle` becomes the rounded degrees, before any carry.
void getRoundedDegreeAngle(double& angle, unsigned maxLength, int precision, int& degrees, int& minutes,
                           double& seconds, int& usedPrecision);

namespace tq::detail {

/// An absolute angle, counted from the settings' base in their direction, from 0 to below 2 pi. It depends on the
/// processor's mode in the same way.
[[gnu::noinline]] double absoluteAngle(double angle);

} // namespace tq::detail
