#pragma once

#include <TqOsBase/Export.h>

#include <cstddef>

/// \file
/// Text functions under their Windows names. wchar_t is 32 bits wide, and what depends on a locale follows the current
/// C locale, in which nothing but ASCII has case or order until the program calls setlocale(). What gives its text back
/// gives null for null. All are reentrant.

/// Lower-cases each byte in place as tolower() does, and returns `s`.
TQ_API char* _strlwr(char* s);
/// Upper-cases each character in place as towupper() does, and returns `s`.
TQ_API wchar_t* _wcsupr(wchar_t* s);
/// Lower-cases each character in place as towlower() does, and returns `s`.
TQ_API wchar_t* _wcslwr(wchar_t* s);
/// Upper-cases exactly `size` characters, terminator or not, and returns `s`. Its namesake stops at the terminator and
/// returns an error code.
TQ_API wchar_t* _wcsupr_s(wchar_t* s, std::size_t size);
/// Reverses the characters before the terminator in place, and returns `s`.
TQ_API wchar_t* _wcsrev(wchar_t* s);

/// wcscoll(): the order of the locale, with regard to case despite the name. INT_MAX when either is null.
TQ_API int _wcsicoll(const wchar_t* a, const wchar_t* b);
/// wcscspn(): characters at the start of `s` that are not in `set`; 0 when either is null.
TQ_API std::size_t _wcscspn(const wchar_t* s, const wchar_t* set);

/// p + 1, at the terminator too.
TQ_API wchar_t* _wcsinc(const wchar_t* p);
/// p + n: unlike its namesake it does not stop at the terminator.
TQ_API wchar_t* _wcsninc(const wchar_t* p, std::size_t n);
/// p[1], the second character, deliberately: its namesake gives p[0]. `p` must not be at its terminator; null
/// gives 0.
TQ_API unsigned int _wcsnextc(const wchar_t* p);

/// The next piece of `s` between characters of `delimiters`, which is cut off in place; null when there is none. A null
/// `s` goes on with the text of the thread's last call, as in its namesake. Null `delimiters` give null.
TQ_API wchar_t* _wcstok(wchar_t* s, const wchar_t* delimiters);

/// Bytes before the terminator; 0 for null.
TQ_API int lstrlenA(const char* s);
/// Characters before the terminator; 0 for null.
TQ_API int lstrlenW(const wchar_t* s);
/// wcscpy(): `dst` must have room. Returns `dst`; null, with nothing written, when either is null.
TQ_API wchar_t* lstrcpy(wchar_t* dst, const wchar_t* src);
/// @{
/// Changes nothing, deliberately, and returns `text`. Its namesake also takes a single character in place of a pointer;
/// this does not change that either.
TQ_API wchar_t* CharLower(wchar_t* text);
TQ_API wchar_t* CharUpper(wchar_t* text);
/// @}

/// @{
/// Placeholder, so that callers link: writes its own name to standard error and ends the process through
/// std::terminate.
TQ_API int _wcsncoll(const wchar_t* a, const wchar_t* b, std::size_t n);
TQ_API int _wcsnicoll(const wchar_t* a, const wchar_t* b, std::size_t n);
/// @}
