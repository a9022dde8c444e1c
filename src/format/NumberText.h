#pragma once

#include "fltcvt/RoundedDecimal.h"
#include "fltcvt/WideDigits.h"

namespace tq::detail {

/// No fixed or scientific text is longer.
inline constexpr int kMaxNumberText = 125;
/// Room that the writers of doubles need: a sign, that text, and the bytes after it that the digit writers may
/// overwrite.
inline constexpr int kNumberRoom = 1 + kMaxNumberText + kDigitsAtOnce;

/// Fixed notation of a rounded magnitude: as many integer digits as it has, `decimals` more digits (0 or more) but no
/// more than 16 significant ones; after "-" when `negative`. At most kMaxNumberText characters, the room that `out`
/// has; no terminator. Returns the length.
int writeFixed(wchar_t* out, bool negative, const RoundedDecimal& value, int decimals);

/// "%.*f" of any double: fixed notation without a minus sign before zeros only, or inf, -inf, nan; with `plus` a "+"
/// before what has no minus sign and is a number. Room for kNumberRoom characters; no terminator.
int writeFixed(wchar_t* out, double value, int decimals, bool plus);

/// "%.*e" of any double: as above, with an exponent of three digits and never a "+" before it.
int writeScientific(wchar_t* out, double value, int decimals);

/// Makes the three digits of the exponent that end a scientific text two: E+005 becomes E+05, and any exponent that
/// needs its third digit E+99, whatever its value: 2e150 becomes 2E+99. inf and nan stay. Returns the new length.
int shortenExponent(wchar_t* text, int length);

/// inf, -inf or nan.
int writeNotFinite(wchar_t* out, double value);

} // namespace tq::detail

/// The text of `f`, of `e`, and of `g` and `G`, which take the fixed form for exponents from -4 to 4; in that form
/// `plus` puts a "+" before a value that is not negative. `text` has room for kNumberRoom characters and gets no
/// terminator. Returns the length.
unsigned formatScienceDoubleUtil(double value, wchar_t letter, int precision, bool plus, wchar_t* text);
