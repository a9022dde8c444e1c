#pragma once

/// \file
/// The Q mode word of the drawing-unit conversion `%q`. Lengths take their unit mode and precision from the linear or
/// alternate settings of LumoAppUnitSets, angles (radians) from its angular settings.

/// A length in the alternate unit.
constexpr int kQTypeAlternateLength = 0;
/// A length.
constexpr int kQTypeLength = 1;
/// An absolute angle: counted from the settings' angle base in their direction and shown within one turn.
constexpr int kQTypeAngle = 2;
/// A relative angle: shown as it is, with its sign; surveyor's units become degrees, minutes and seconds. (What is no
/// type, 4 and above, writes nothing but the minus sign of a negative value.)
constexpr int kQTypeRelativeAngle = 3;

/// Feet and inches: no feet when they are 0.
constexpr int kQFlagSuppressZeroFeet = 1;
/// Feet and inches: no inches after feet when they are 0.
constexpr int kQFlagSuppressZeroInches = 2;
/// Decimal lengths: ".5" for "0.5".
constexpr int kQFlagSuppressLeadingZero = 4;
/// Decimal lengths: "0.5" for "0.5000", "2" for "2.0000".
constexpr int kQFlagSuppressTrailingZeros = 8;
/// As if the dash bit of the settings were clear.
constexpr int kQFlagIgnoreDash = 16;
/// Takes the linear pair of unit mode and precision instead of the alternate or the angular one.
constexpr int kQFlagLinearPair = 32;
/// Alternate lengths: the linear pair, engineering and architectural units as decimal ones. kQFlagLinearPair wins.
constexpr int kQFlagDecimalPair = 64;
/// Lengths: fractions as codes of stacked fractions. Angles in degrees: the degree sign as its escape `\U+00B0`.
constexpr int kQFlagDrawingText = 128;

/// The word for a Q type and the sum of its flags. Words without flags can also be written as the digit after `%q`.
constexpr int qModeWord(int type, int flags = 0) {
    return (type & 0xFF) | (flags & 0xFF) << 8;
}
