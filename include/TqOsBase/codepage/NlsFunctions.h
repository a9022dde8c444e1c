#pragma once

#include <TqOsBase/Export.h>

#include <cstdint>

/// Windows locale identifier: primary language in the low 10 bits, sublanguage above. The values this library
/// produces fit in 16 bits.
using LCID = std::uint32_t;

/// \file
/// The Windows national language functions under their Windows names. There is no Windows locale behind them: most are
/// fixed answers that callers rely on, and the two conversions are those of the C library in the process's current C
/// locale. None sets an error code. All are reentrant, but a conversion changes its result when another thread changes
/// the locale.

/// Always 0: the system has no ANSI code page.
TQ_API unsigned int GetACP();
/// Always 0.
TQ_API LCID GetThreadLocale();
/// Ignores `lcid` and returns true.
TQ_API bool SetThreadLocale(LCID lcid);
/// Always 0.
TQ_API LCID GetSystemDefaultLCID();
/// Always 0.
TQ_API LCID GetUserDefaultLCID();
/// Writes nothing and returns 0.
TQ_API int GetLocaleInfo(LCID lcid, unsigned int type, wchar_t* buffer, int size);
/// False for every code page, those that the conversions accept included.
TQ_API bool IsValidCodePage(unsigned int codePage);
/// Always false: narrow text has no lead bytes.
TQ_API bool IsDBCSLeadByte(unsigned char byte);
/// Always false.
TQ_API bool IsDBCSLeadByteEx(unsigned int codePage, unsigned char byte);
/// Always 0.
TQ_API int isleadbyte(int byte);
/// Writes nothing and returns 0.
TQ_API int LCMapStringW(LCID lcid, unsigned int flags, const wchar_t* src, int srcCount, wchar_t* dst, int dstCount);
/// Sets types[0] to 0 whatever the count, leaves the other elements alone, and returns true. A null `types` is ignored.
TQ_API bool GetStringTypeExW(LCID lcid, unsigned int infoType, const wchar_t* src, int count, unsigned short* types);

/// mbstowcs(dst, src, srcCount): converts the 0-terminated `src` in the current C locale and returns the number of wide
/// characters without the terminator, or -1 when a byte cannot be converted or `src` is null. `srcCount` bounds the
/// characters written, not the bytes read, and `dstCount` is ignored, so `dst` must have room for the whole source;
/// the terminator is written when it fits in srcCount. A negative srcCount takes the whole text with its terminator. A
/// null `dst` only counts. Code page and flags are ignored.
TQ_API int MultiByteToWideChar(unsigned int codePage, unsigned int flags, const char* src, int srcCount, wchar_t* dst,
                               int dstCount);

/// wcstombs(dst, src, srcCount), the way back: `srcCount` bounds the bytes written. Returns the bytes written without
/// the terminator, or -1 when a character has no form in the current locale or `src` is null. The other rules are those
/// of MultiByteToWideChar; `defaultChar` is ignored and `usedDefault` never written.
TQ_API int WideCharToMultiByte(unsigned int codePage, unsigned int flags, const wchar_t* src, int srcCount, char* dst,
                               int dstCount, const char* defaultChar, bool* usedDefault);
