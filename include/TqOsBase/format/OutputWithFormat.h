#pragma once

/// \file
/// The engine of formatted output: every directive, with drawing units and angles.

#include <TqOsBase/Export.h>

#include <cstdarg>

/// Writes the arguments under `format` to *out and leaves *out on the terminating 0. `capacity` counts the characters
/// that may be written, the 0 included. Returns the number of characters written without the 0.
///
/// Failures: -1 and nothing written when `out` or *out is null or capacity is below 1; 0 when literal text does not
/// fit; -1 when converted text, its sign or its padding does not fit, an integer outgrows 2047 characters, or `format`
/// is null. What was written before stays, terminated. Characters after the terminating 0 may change as far as the
/// capacity reaches. No locale is used, and the processor's modes of rounding and of subnormals change no text. The
/// heap is used for positional arguments (`%n$`) only; the result is -1 when it gives no memory.
///
/// A directive is `%`, position, flags, width, precision, length, letter:
/// - position: `n$`, the argument counted from 1. One directive with a position switches the whole format over: those
///   without one then use argument 1. An argument that was not collected counts as 0, null or 0.0; as many are
///   collected as the last `%` or `*` of the format allows: none when that one has no position.
/// - flags: `+` (a sign on non-negative `f`, and on `g` in its fixed form; ignored by all others), `-` (left-justify),
///   in the forms `+`, `-`, `+-`, `-+`; then `0` (pads on the left with zeros, also `s` and `c`). No blank, no `#`.
/// - width: digits, or `*` for an `int` argument (`*m$` or `*m` with positions). A negative argument counts as
///   enormous: the call fails with -1 when the buffer is full.
/// - precision: `.` with digits, with `*`, or alone for 0; a negative argument counts as 0. Without it 6, or absent.
/// - length: one `L`, `h` or `l` is skipped. The letter alone decides the size of the argument.
///
/// Letters: `d i` int, `u o x p b` unsigned int, `D I` 64-bit signed, `U O X B` 64-bit unsigned (decimal, octal,
/// hexadecimal in upper case, binary); with a precision a decimal point is inserted that many digits from the right
/// ("%.2d" of 5 is `0.05`, "%.0d" of 7 is `7.`). `c` int, one character. `s` const wchar_t*, null is empty, a precision
/// limits the length. `f` double: rounded once at the last decimal, exact halves away from zero, at most 16 significant
/// digits (later digits are 0 before the point and left out after it) and 125 characters. `e` one digit, point, at most
/// 15 digits, `E`, sign, three digits of exponent. `g G` like `f` for exponents from -4 to 4, else like `e`, without
/// dropping zeros. A text whose digits are all 0 has no minus sign. Infinity and NaN are `inf`, `-inf`, `nan`, padded
/// with blanks. `q Q` double: a length or an angle in drawing units; the Q mode word (QMode.h) is the digit that
/// follows the letter or, with `*`, an int argument before the double; the precision is the maximum length of the text.
/// With neither nothing is written and no argument is taken. Any other letter writes itself, as `%%` does; a `%` that
/// ends the format ends the text.
TQ_API int OutputWithFormat(wchar_t** out, int capacity, const wchar_t* format, va_list args);

/// Writes `value` as "%.*f" does to `out`, which has room for `size` characters, the terminating 0 included. Returns
/// the length with its sign. When the text does not fit (128 characters always do) `out` becomes empty and the result
/// is -1; a null `out` or a size below 1 gives -1 and nothing is written. A negative precision counts as 0.
TQ_API int FormatScienceDoubleAndOutputString(wchar_t* out, int size, const double& value, int precision);
