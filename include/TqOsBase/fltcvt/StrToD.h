#pragma once

/// \file
/// Text to the nearest double.

#include <TqOsBase/Export.h>

/// The double nearest to the decimal number at the start of `text`, of two equally near the even one, whatever the
/// number of digits; the text of TqGdImpl::dtoa in mode 0 reads back bit for bit. Takes time in proportion to the
/// length of the text.
///
/// Accepted: white space (the space and the characters 9 to 13), a sign, digits with an optional "." before, among or
/// after them (whatever the locale), and an exponent: "e" or "E", an optional sign, digits. An exponent without digits
/// is not part of the number. "inf", "nan" and hexadecimal forms are not numbers. *end, unless `end` is null, gets the
/// address of the first character that is not part of the number; without any digit the result is 0 and that is `text`.
///
/// Zero and what underflows to zero keep the sign of the text. errno becomes ERANGE when the result is infinite or has
/// underflowed to zero (but not for a subnormal), else it is left alone.
///
/// Allocates nothing and shares nothing, so it may be called from several threads; nothing is thrown.
TQ_API double tqStrToD(const char* text, char** end);
TQ_API double tqStrToD(const wchar_t* text, wchar_t** end);
