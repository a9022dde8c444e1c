#pragma once

#include <TqOsBase/Export.h>

/// \file
/// Text of doubles in fixed, exponent and general notation, with correctly rounded digits and "." whatever the locale.
///
/// Common to all. The narrow forms write to `buf` without looking at its size; the caller provides room for the longest
/// text and its terminator. The wide forms return a new buffer that the caller releases with tqFree, or null when there
/// is no memory. A '-' comes first whenever the sign bit is set, also for -0 and NaN. Counts below 0 are taken as 0.
/// The exponent has a sign and at least three digits. Nothing is thrown. Any thread may call them; the narrow forms
/// allocate nothing.
///
/// Infinity and NaN are deliberately not treated apart: their texts "Infinity" and "NaN" are laid out as digits of a
/// number with 9999 places before its point. So fixed notation has 9,991 or 9,996 zeros after them (a narrow buffer
/// must have room for that), and in the exponent the four digits 9998 stand where sign and digits are otherwise.

/// Fixed notation with `nfrac` digits after the point, and no point when that is 0. The digits are those of dtoa in
/// mode 5: where the shortest ones that read back are fewer, zeros follow them (0.1 with 20 places is 0.1 and 19
/// zeros).
TQ_API void tqFltToF(char* buf, double d, int nfrac);
TQ_API wchar_t* tqFltToF(double d, int nfrac);

/// Exponent notation: a digit, the point, `nfrac` digits, `expChar` and the exponent. The point deliberately stands
/// also when `nfrac` is 0: 1.0 is "1.e+000" then.
TQ_API void tqFltToE(char* buf, double d, int nfrac, int expChar);
TQ_API wchar_t* tqFltToE(double d, int nfrac, int expChar);

/// General notation of `nsig` significant digits: exponent notation for exponents below -4 and from `nsig` on, else
/// positional. `nsig` 0 is not raised to 1, so every number of 1 or more has an exponent then, but zero is "0".
/// `style`:
///   0 or less  no zeros at the end, and no point without digits after it
///   1  zeros up to `nsig` digits in exponent notation ("1.00000e+020") and after a point without other digits
///      ("100.000"), but deliberately not after other digits (1.5 stays "1.5"); below 1, `nsig` digits after the
///      zeros that follow the point
///   2  at least one digit after the point: "100.0", "1.0e+020"
///   other  a point at the end ("100.") in positional notation only
TQ_API void tqFltToG(char* buf, double d, int nsig, int expChar, int style);
TQ_API wchar_t* tqFltToG(double d, int nsig, int expChar, int style);

/// One of the above, by `fmt`: 'e' and 'E' are tqFltToE, 'f' is tqFltToF, 'g' and 'G' are tqFltToG with the `style`;
/// `fmt` chooses the case of the exponent's letter. Any other letter, 'F' among them, ends the process by
/// std::terminate.
TQ_API void tqDToStr(char* buf, double d, char fmt, int prec, int style);
TQ_API wchar_t* tqDToStr(double d, char fmt, int prec, int style);

/// The platform's fcvt: the digits are in a buffer of the platform's, valid until the next call and not to be freed.
TQ_API char* _fcvt(double d, int ndigit, int* decpt, int* sign);
