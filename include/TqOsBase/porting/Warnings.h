#pragma once

// Made by tools/make_porting.py from docs/porting.tsv, which is what to edit.

#include <TqOsBase/Export.h>
#include <TqOsBase/codepage/NlsFunctions.h>
#include <TqOsBase/crtcompat/EnvironmentFunctions.h>
#include <TqOsBase/crtcompat/FileFunctions.h>
#include <TqOsBase/crtcompat/MultibyteFunctions.h>
#include <TqOsBase/crtcompat/NumberFunctions.h>
#include <TqOsBase/crtcompat/PrintfFunctions.h>
#include <TqOsBase/crtcompat/SecureFunctions.h>
#include <TqOsBase/crtcompat/StringFunctions.h>
#include <TqOsBase/fltcvt/FloatText.h>
#include <TqOsBase/stream/PathFunctions.h>

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>

/// \file
/// Warnings for ported code: after this header is included, every call of a Windows function that the library answers
/// otherwise than its namesake is a warning of the compiler, which says what differs and what to use. Include it from
/// the code that is being ported, or for all of it by `-include TqOsBase/porting/Warnings.h`. TQ_PORTING_WARNINGS
/// chooses, before it is included:
///   1   functions whose difference loses data or ends the process
///   2   also those that differ otherwise, or do nothing (this is the default)
/// A call that is right as it is says so by `#pragma GCC diagnostic ignored "-Wdeprecated-declarations"` around it.
/// Member functions (TqCharOp) cannot be marked this way: docs/porting.md has them.

#if !defined(TQ_PORTING_WARNINGS)
#define TQ_PORTING_WARNINGS 2
#endif

#if TQ_PORTING_WARNINGS >= 1
// clang-format off
[[deprecated("fixed answer: 0, nothing written; instead: std::localeconv, std::locale")]]
int GetLocaleInfo(LCID lcid, unsigned int type, wchar_t* buffer, int size);
[[deprecated("fixed answer: 0, nothing written; instead: towlower, towupper")]]
int LCMapStringW(LCID lcid, unsigned int flags, const wchar_t* src, int srcCount, wchar_t* dst, int dstCount);
[[deprecated("partial: the C locale's conversion, code page and flags ignored; the count bounds what is written, "
             "the destination's size is ignored; failure is -1; instead: TqCharMapper::multiByteToWideChar, "
             "utf8ToUnicode")]]
int MultiByteToWideChar(unsigned int codePage, unsigned int flags, const char* src, int srcCount, wchar_t* dst, int dstCount);
[[deprecated("partial: the C locale's conversion, code page and default character ignored; the count bounds what "
             "is written, the destination's size is ignored; failure is -1; instead: "
             "TqCharMapper::wideCharToMultiByte, unicodeToUtf8")]]
int WideCharToMultiByte(unsigned int codePage, unsigned int flags, const wchar_t* src, int srcCount, char* dst, int dstCount, const char* defaultChar, bool* usedDefault);
[[deprecated("no effect: returns its argument; the case stays; instead: _wcslwr")]]
wchar_t* CharLower(wchar_t* text);
[[deprecated("no effect: returns its argument; the case stays; instead: _wcsupr")]]
wchar_t* CharUpper(wchar_t* text);
[[deprecated("partial: upper-cases exactly 'size' characters, terminator or not; returns the text, not an error "
             "code; null gives null; instead: _wcsupr")]]
wchar_t* _wcsupr_s(wchar_t* s, std::size_t size);
[[deprecated("partial: regards case, despite its name; instead: wcscasecmp")]]
int _wcsicoll(const wchar_t* a, const wchar_t* b);
[[deprecated("partial: does not stop at the terminator; instead: check the length")]]
wchar_t* _wcsninc(const wchar_t* p, std::size_t n);
[[deprecated("partial: gives the second character, not the first; instead: *p")]]
unsigned int _wcsnextc(const wchar_t* p);
[[deprecated("ends the process; instead: wcsncmp")]]
int _wcsncoll(const wchar_t* a, const wchar_t* b, std::size_t n);
[[deprecated("ends the process; instead: wcsncasecmp")]]
int _wcsnicoll(const wchar_t* a, const wchar_t* b, std::size_t n);
[[deprecated("partial: bytes; does not stop at the terminator; instead: check the length")]]
unsigned char* _mbsninc(const unsigned char* p, std::size_t n);
[[deprecated("ends the process; instead: p - 1")]]
unsigned char* _mbsdec(const unsigned char* start, const unsigned char* current);
[[deprecated("ends the process; instead: islower")]]
int _ismbclower(unsigned int c);
[[deprecated("ends the process; instead: isupper")]]
int _ismbcupper(unsigned int c);
[[deprecated("ends the process; instead: isdigit")]]
int _ismbcdigit(unsigned int c);
[[deprecated("ends the process; instead: tolower")]]
unsigned int _mbctolower(unsigned int c);
[[deprecated("ends the process; instead: toupper")]]
unsigned int _mbctoupper(unsigned int c);
[[deprecated("ends the process; instead: _strlwr")]]
unsigned char* _mbslwr(unsigned char* s);
[[deprecated("ends the process; instead: toupper for each byte")]]
unsigned char* _mbsupr(unsigned char* s);
[[deprecated("ends the process; instead: std::reverse")]]
unsigned char* _mbsrev(unsigned char* s);
[[deprecated("ends the process; instead: strncmp")]]
int _mbsncmp(const unsigned char* a, const unsigned char* b, std::size_t n);
[[deprecated("ends the process; instead: strncasecmp")]]
int _mbsnicmp(const unsigned char* a, const unsigned char* b, std::size_t n);
[[deprecated("ends the process; instead: strcoll")]]
int _mbscoll(const unsigned char* a, const unsigned char* b);
[[deprecated("ends the process; instead: strncmp")]]
int _mbsncoll(const unsigned char* a, const unsigned char* b, std::size_t n);
[[deprecated("ends the process; instead: strcasecmp")]]
int _mbsicoll(const unsigned char* a, const unsigned char* b);
[[deprecated("ends the process; instead: strncasecmp")]]
int _mbsnicoll(const unsigned char* a, const unsigned char* b, std::size_t n);
[[deprecated("ends the process; instead: strspn")]]
std::size_t _mbsspn(const unsigned char* s, const unsigned char* set);
[[deprecated("ends the process; instead: strcspn")]]
std::size_t _mbscspn(const unsigned char* s, const unsigned char* set);
[[deprecated("partial: success is the low half of the destination's address, failure -1; clears the destination on"
             " failure; instead: check the sizes, then memcpy")]]
int memcpy_s(void* dst, std::size_t dstSize, const void* src, std::size_t count);
[[deprecated("partial: clears the destination first, stops at the source's terminator; failure is -1; instead: "
             "check the sizes, then wmemcpy")]]
int wmemcpy_s(wchar_t* dst, std::size_t dstSize, const wchar_t* src, std::size_t count);
[[deprecated("partial: cuts without a terminator instead of failing; without a size the destination must have "
             "room; instead: std::wstring, or check the size")]]
int wcscpy_s(wchar_t* dst, const wchar_t* src);
[[deprecated("partial: cuts without a terminator instead of failing; without a size the destination must have "
             "room; instead: std::wstring, or check the size")]]
int wcscpy_s(wchar_t* dst, int size, const wchar_t* src);
[[deprecated("partial: without a size as 'wcsncpy'; with one as 'wmemcpy_s'; '_TRUNCATE' is refused; instead: "
             "std::wstring, or check the size")]]
int wcsncpy_s(wchar_t* dst, const wchar_t* src, int count);
[[deprecated("partial: without a size as 'wcsncpy'; with one as 'wmemcpy_s'; '_TRUNCATE' is refused; instead: "
             "std::wstring, or check the size")]]
int wcsncpy_s(wchar_t* dst, int size, const wchar_t* src, int count);
[[deprecated("partial: always decimal: the radix is ignored; instead: std::to_chars for a radix other than 10")]]
char* _itoa(int value, char* buf, int radix);
[[deprecated("partial: always decimal; instead: std::to_chars for a radix other than 10")]]
char* _ltoa(long value, char* buf, int radix);
[[deprecated("partial: always decimal; instead: std::to_chars for a radix other than 10")]]
char* _i64toa(long long value, char* buf, int radix);
[[deprecated("partial: always decimal; instead: std::to_chars for a radix other than 10")]]
char* _ui64toa(unsigned long long value, char* buf, int radix);
[[deprecated("partial: always decimal; instead: std::to_chars for a radix other than 10")]]
wchar_t* _itow(int value, wchar_t* buf, int radix);
[[deprecated("partial: always decimal; instead: std::to_chars for a radix other than 10")]]
wchar_t* _ltow(long value, wchar_t* buf, int radix);
[[deprecated("partial: always decimal; instead: std::to_chars for a radix other than 10")]]
wchar_t* _i64tow(long long value, wchar_t* buf, int radix);
[[deprecated("partial: always decimal; takes a signed number; instead: std::to_chars for a radix other than 10")]]
wchar_t* _ui64tow(long long value, wchar_t* buf, int radix);
[[deprecated("partial: always decimal; returns the length; cuts and returns -1; instead: std::to_wstring, or "
             "OutputWithFormat for a radix")]]
int _itow_s(int value, wchar_t* buf, std::size_t size, int radix);
[[deprecated("partial: beyond 'int' the low 32 bits, not the nearest end; null gives 0; instead: wcstol")]]
int _wtoi(const wchar_t* s);
[[deprecated("partial: reads in the base that is the text's length: '123' gives 5; instead: wcstol with base 10")]]
long _wtol(const wchar_t* s);
[[deprecated("partial: reads in the base that is the text's length, as an unsigned number; instead: wcstoll with "
             "base 10")]]
long long _wtoi64(const wchar_t* s);
[[deprecated("partial: single precision; instead: wcstod")]]
double _wtof(const wchar_t* s);
[[deprecated("partial: without a size; formats as in docs/porting.md; -1 from 524,288 characters on and for null; "
             "instead: vswprintf with a size")]]
int _vswprintf(wchar_t* dst, const wchar_t* format, std::va_list arguments);
[[deprecated("partial: the form without a size, beside the C library's own; formats as in docs/porting.md; -1 from"
             " 524,288 characters on and for null; instead: the form with a size")]]
int vswprintf(wchar_t* dst, const wchar_t* format, std::va_list arguments);
[[deprecated("partial: the form without a size, beside the C library's own; formats as in docs/porting.md; -1 from"
             " 524,288 characters on and for null; instead: the form with a size")]]
int swprintf(wchar_t* dst, const wchar_t* format, ...);
[[deprecated("partial: the wide form, with the C library's formats and without the limit of 1,024 characters; "
             "instead: swprintf with a size")]]
int wsprintf(wchar_t* dst, const wchar_t* format, ...);
[[deprecated("partial: cuts and returns the full length; instead: compare the result with the size")]]
int vsprintf_s(char* dst, std::size_t size, const char* format, std::va_list arguments);
[[deprecated("partial: cuts to 'size' characters and writes one place more; returns size - 1; instead: give room "
             "for size + 1 characters, or vswprintf with a size")]]
int vswprintf_s(wchar_t* dst, std::size_t size, const wchar_t* format, std::va_list arguments);
[[deprecated("partial: returns 'errno' after a success too; instead: test the stream, not the result")]]
int _wfopen_s(std::FILE** out, const wchar_t* name, const wchar_t* mode);
[[deprecated("partial: replaces a file that has the new name; instead: ask for the new name first")]]
int _wrename(const wchar_t* oldName, const wchar_t* newName);
[[deprecated("fixed answer: null, nothing written; instead: std::filesystem::current_path")]]
wchar_t* _wgetcwd(wchar_t* buffer, int size);
[[deprecated("partial: 'name=' sets the empty value; no more than 1,023 bytes; instead: unsetenv to remove a "
             "variable")]]
int _wputenv(const wchar_t* text);
[[deprecated("partial: slashes only; no drive; the extension comes without its full stop; instead: "
             "std::filesystem::path")]]
void _wsplitpath(const wchar_t* path, wchar_t* drive, wchar_t* dir, wchar_t* fname, wchar_t* ext);
[[deprecated("partial: splits into components: the first is the drive, the last with a full stop the file; cuts; "
             "fails without a file name; instead: std::filesystem::path")]]
int _wsplitpath_s(const wchar_t* path, wchar_t* drive, std::size_t driveSize, wchar_t* dir, std::size_t dirSize, wchar_t* fname, std::size_t fnameSize, wchar_t* ext, std::size_t extSize);
[[deprecated("no effect: the path is not written; instead: std::filesystem::path")]]
void _wmakepath(wchar_t* path, const wchar_t* drive, const wchar_t* dir, const wchar_t* fname, const wchar_t* ext);
// clang-format on
#endif

#if TQ_PORTING_WARNINGS >= 2
// clang-format off
[[deprecated("fixed answer: 0: there is no ANSI code page; instead: write the code page that the text is in")]]
unsigned int GetACP();
[[deprecated("fixed answer: 0; instead: std::setlocale")]]
LCID GetThreadLocale();
[[deprecated("no effect: returns true; instead: std::setlocale")]]
bool SetThreadLocale(LCID lcid);
[[deprecated("fixed answer: 0; instead: std::setlocale")]]
LCID GetSystemDefaultLCID();
[[deprecated("fixed answer: 0; instead: std::setlocale")]]
LCID GetUserDefaultLCID();
[[deprecated("fixed answer: false, also for code pages that the conversions accept; instead: "
             "TqCodePageMapper::ansiCpToLumoCp")]]
bool IsValidCodePage(unsigned int codePage);
[[deprecated("fixed answer: false; instead: TqAnsiTextIterator")]]
bool IsDBCSLeadByte(unsigned char byte);
[[deprecated("fixed answer: false; instead: TqAnsiTextIterator")]]
bool IsDBCSLeadByteEx(unsigned int codePage, unsigned char byte);
[[deprecated("fixed answer: 0; instead: TqAnsiTextIterator")]]
int isleadbyte(int byte);
[[deprecated("fixed answer: true; sets the first type to 0 and leaves the others; instead: TqCharOp::GetStringType")]]
bool GetStringTypeExW(LCID lcid, unsigned int infoType, const wchar_t* src, int count, unsigned short* types);
[[deprecated("partial: null gives null")]]
char* _strlwr(char* s);
[[deprecated("partial: by the C locale; null gives null")]]
wchar_t* _wcsupr(wchar_t* s);
[[deprecated("partial: by the C locale; null gives null")]]
wchar_t* _wcslwr(wchar_t* s);
[[deprecated("partial: null gives null")]]
wchar_t* _wcsrev(wchar_t* s);
[[deprecated("partial: null gives 0")]]
std::size_t _wcscspn(const wchar_t* s, const wchar_t* set);
[[deprecated("partial: two arguments; instead: std::wcstok")]]
wchar_t* _wcstok(wchar_t* s, const wchar_t* delimiters);
[[deprecated("fixed answer: 0")]]
int _ismbblead(int byte);
[[deprecated("fixed answer: 0")]]
int _ismbbtrail(int byte);
[[deprecated("partial: from 128 on by the C locale's wide class")]]
int _ismbcspace(unsigned int c);
[[deprecated("partial: one byte on")]]
unsigned char* _mbsinc(const unsigned char* p);
[[deprecated("partial: compares bytes")]]
int _mbscmp(const unsigned char* a, const unsigned char* b);
[[deprecated("partial: compares bytes without regard to their case")]]
int _mbsicmp(const unsigned char* a, const unsigned char* b);
[[deprecated("partial: searches bytes")]]
unsigned char* _mbsstr(const unsigned char* a, const unsigned char* b);
[[deprecated("partial: counts bytes")]]
std::size_t _mbslen(const unsigned char* s);
[[deprecated("partial: the C library's 'fcvt': its buffer is overwritten by the next call, null results are not "
             "looked for; instead: tqFltToF")]]
char* _fcvt(double d, int ndigit, int* decpt, int* sign);
[[deprecated("partial: formats as in docs/porting.md; null gives -1")]]
int _vscprintf(const char* format, std::va_list arguments);
[[deprecated("partial: counts the terminator; -1 from 524,288 characters on; instead: subtract 1")]]
int _vscwprintf(const wchar_t* format, std::va_list arguments);
[[deprecated("partial: the C library's modes, no encodings and no translation of line ends; names up to 1,023 "
             "bytes; instead: tq::openInput, tq::openOutput")]]
std::FILE* _wfopen(const wchar_t* name, const wchar_t* mode);
[[deprecated("partial: makes the C locale a UTF-8 one; bit 0 of the mode asks for execution; instead: "
             "TqFileSystem::accessFile")]]
int _waccess(const wchar_t* name, int mode);
[[deprecated("partial: the caller frees the result; instead: free the result")]]
wchar_t* _wgetenv(const wchar_t* name);
namespace tq::windows {
[[deprecated("partial: the C library's modes, no encodings and no translation of line ends; others may open the "
             "file at the same time; instead: tq::openInput, tq::openOutput")]]
TQ_API int fopen_s(std::FILE** out, const char* name, const char* mode);
[[deprecated("partial: removes a file that is read-only or open too; instead: ask with _waccess_s first")]]
TQ_API int _wunlink(const wchar_t* name);
[[deprecated("partial: removes a file that is read-only or open too; instead: ask with _waccess_s first")]]
TQ_API int _wremove(const wchar_t* name);
[[deprecated("partial: st_ctime is the time of the last change, not of the creation")]]
TQ_API int _wstat64(const wchar_t* name, struct _stat64* status);
[[deprecated("partial: time that the system sleeps may be left out")]]
TQ_API unsigned long long GetTickCount64();
[[deprecated("partial: goes to the hook of TqTracer, at the start to standard output; instead: "
             "TqTracer::setTraceFunctionW")]]
TQ_API void OutputDebugStringA(const char* text);
[[deprecated("partial: goes to the hook of TqTracer, at the start to standard output; instead: "
             "TqTracer::setTraceFunctionW")]]
TQ_API void OutputDebugStringW(const wchar_t* text);
} // namespace tq::windows
// clang-format on
#endif
