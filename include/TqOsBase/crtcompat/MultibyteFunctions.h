#pragma once

#include <TqOsBase/Export.h>

#include <cstddef>

/// \file
/// The Microsoft C runtime's multibyte functions. Narrow text is single-byte here: there are no lead bytes, whatever
/// the code page or the locale, so these count and step in bytes. All are reentrant.

/// Always 0.
TQ_API int _ismbblead(int byte);
/// Always 0.
TQ_API int _ismbbtrail(int byte);
/// Not 0 when `c` is a space character: of ASCII below 128, of the current locale's wide class from there on, where its
/// namesake tests bytes of a code page.
TQ_API int _ismbcspace(unsigned int c);

/// p + 1, at the terminator too.
TQ_API unsigned char* _mbsinc(const unsigned char* p);
/// p + n: unlike its namesake it does not stop at the terminator.
TQ_API unsigned char* _mbsninc(const unsigned char* p, std::size_t n);
/// strcmp(): its namesake too compares without a locale. INT_MAX when either is null.
TQ_API int _mbscmp(const unsigned char* a, const unsigned char* b);
/// strcasecmp(): without regard to the case of single bytes. INT_MAX when either is null.
TQ_API int _mbsicmp(const unsigned char* a, const unsigned char* b);
/// strstr(); null when `b` does not occur or either is null.
TQ_API unsigned char* _mbsstr(const unsigned char* a, const unsigned char* b);
/// strlen(): bytes, not characters; 0 for null.
TQ_API std::size_t _mbslen(const unsigned char* s);

/// @{
/// Placeholder, so that callers link: writes its own name to standard error and ends the process through
/// std::terminate. Never returns, whatever the arguments.
TQ_API unsigned char* _mbsdec(const unsigned char* start, const unsigned char* current);
TQ_API int _ismbclower(unsigned int c);
TQ_API int _ismbcupper(unsigned int c);
TQ_API int _ismbcdigit(unsigned int c);
TQ_API unsigned int _mbctolower(unsigned int c);
TQ_API unsigned int _mbctoupper(unsigned int c);
TQ_API unsigned char* _mbslwr(unsigned char* s);
TQ_API unsigned char* _mbsupr(unsigned char* s);
TQ_API unsigned char* _mbsrev(unsigned char* s);
TQ_API int _mbsncmp(const unsigned char* a, const unsigned char* b, std::size_t n);
TQ_API int _mbsnicmp(const unsigned char* a, const unsigned char* b, std::size_t n);
TQ_API int _mbscoll(const unsigned char* a, const unsigned char* b);
TQ_API int _mbsncoll(const unsigned char* a, const unsigned char* b, std::size_t n);
TQ_API int _mbsicoll(const unsigned char* a, const unsigned char* b);
TQ_API int _mbsnicoll(const unsigned char* a, const unsigned char* b, std::size_t n);
TQ_API std::size_t _mbsspn(const unsigned char* s, const unsigned char* set);
TQ_API std::size_t _mbscspn(const unsigned char* s, const unsigned char* set);
/// @}
