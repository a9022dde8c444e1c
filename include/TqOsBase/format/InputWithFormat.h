#pragma once

/// \file
/// Formatted input from wide text.

#include <TqOsBase/Export.h>

#include <cstdarg>

/// Reads fields from the 0-terminated wide text `source` as `format` says and stores them through the pointers in
/// `args`. Returns the number of fields assigned, or -1 when the source has nothing but white space, whatever the
/// format (a `c` has stored such a character then). A mismatch or an empty field ends the scan; fields stored before
/// stay. A null source counts as an empty text, a null format as an empty format. With `fromStream` nothing is read:
/// every field fails and the result is 0 (only texts in memory are supported).
///
/// White space in the format skips any run of it in the source; another character must be met as it stands; "%%" meets
/// one "%". A directive is `%`, `*` (read but not stored), a width, `l` or `h`, and a letter. All but `c` and `n` skip
/// white space first: ASCII's, and that of the current locale from 128 on.
/// - `d` int, `u` unsigned without sign, `i` as its prefix says (0x: 16, 0: 8), `o`, `x` (a 0x is skipped), `b` binary;
///   with `l` 64-bit, with `h` 16-bit. `D O X B` are 64-bit. A sign needs a width of 2 or more. A "0x" without a
///   hexadecimal digit after it is read as "0". A number beyond its type is stored as the type's limit; `o x b` store
///   negative numbers as their two's complement.
/// - `e f g` float, with `l` double; `E F G` always double. The value is the nearest double, ties to even, infinity
///   beyond the range, in every mode of the processor; a float is the one nearest to that double.
/// - `s` a run without white space, stored with a 0: give a width, the buffer needs one character more.
/// - `c` as many characters as the width says (1 without one), stored without a 0; assigned once one was read.
/// - `n` stores the number of characters consumed so far into an int and counts as no field.
/// - any other letter is ignored.
TQ_API int InputWithFormat(bool fromStream, const void* source, const wchar_t* format, va_list args);
