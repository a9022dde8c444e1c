#pragma once

#include <TqOsBase/Export.h>

#include <cstddef>

/// \file
/// Integers to text and text to numbers, under the Microsoft C runtime's names. Read the comments: several do less than
/// their namesakes. No locale is involved in writing integers; all are reentrant.

/// @{
/// Writes an integer and returns `buf`. The radix is ignored: the text is always decimal, with a minus sign for a
/// negative number. The buffer must have room for the text and its terminator, 21 characters at most; null gives null.
TQ_API char* _itoa(int value, char* buf, int radix);
TQ_API char* _ltoa(long value, char* buf, int radix);
TQ_API char* _i64toa(long long value, char* buf, int radix);
TQ_API char* _ui64toa(unsigned long long value, char* buf, int radix);
TQ_API wchar_t* _itow(int value, wchar_t* buf, int radix);
TQ_API wchar_t* _ltow(long value, wchar_t* buf, int radix);
TQ_API wchar_t* _i64tow(long long value, wchar_t* buf, int radix);
/// @}
/// The same, but takes the number as signed, unlike its namesake, and writes it as unsigned: the
/// text of -1 is 18446744073709551615.
TQ_API wchar_t* _ui64tow(long long value, wchar_t* buf, int radix);

/// The bounded form; the radix is ignored here too. Returns the length of the text, not an error code. A text that does
/// not fit in `size` characters with its terminator is cut to size - 1 characters, terminated, and -1 is returned; with
/// size 0 nothing is written, and null gives -1.
TQ_API int _itow_s(int value, wchar_t* buf, std::size_t size, int radix);

/// The decimal integer at the start of `s`, after ASCII white space and an optional sign, whatever follows it; 0 when
/// there is none or `s` is null. A number outside int gives the low 32 bits of its 64-bit value, which stops at the
/// ends of that range; the namesake stops at the ends of int.
TQ_API int _wtoi(const wchar_t* s);

/// Reads `s` in the base that is its own length in characters, unlike its namesake, and deliberately so: "123" is read
/// in base 3 and gives 5, "101" gives 10. A length of 1 or above 36 is no base and gives 0; so does null. Beyond the
/// ends of the range the result is the end, and `errno` ERANGE.
TQ_API long _wtol(const wchar_t* s);
/// The same with an unsigned 64-bit number, returned as a signed one.
TQ_API long long _wtoi64(const wchar_t* s);

/// Reads in single precision, then widens: "0.1" gives the double nearest to the float nearest to one tenth. What is
/// read is what wcstof() reads in the current locale; beyond the range of float it is infinity. Null gives 0.
TQ_API double _wtof(const wchar_t* s);
