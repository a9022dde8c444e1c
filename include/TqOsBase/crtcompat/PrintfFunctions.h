#pragma once

#include <TqOsBase/Export.h>

#include <cstdarg>
#include <cstddef>

/// \file
/// Formatted text under the Microsoft C runtime's names and signatures, over the C library's vsnprintf and vswprintf.
/// The formats are theirs: in a wide format `%s` takes narrow text, and wide text needs `%ls`. An argument list that is
/// passed in stays unread, so that it can be used again. There is no invalid-parameter handler: what fails returns -1.
/// Compilers check the narrow formats (-Wformat); they know no check of wide ones, but tq-porting looks at literals.
/// All are reentrant; text that changes its encoding follows the current C locale. macOS writes zeros for what follows
/// a character 0 in a wide text, and counts all of it.

/// Length of the text, without its terminator. -1 when the C library refuses.
[[gnu::format(printf, 1, 0)]] TQ_API int _vscprintf(const char* format, std::va_list arguments);

/// Length of the text plus 1: it counts the terminator, deliberately unlike _vscprintf and its namesake. -1 when the C
/// library refuses, when the text has 524,288 characters or more, or without memory. ("The text cannot be measured"
/// below means these cases.)
TQ_API int _vscwprintf(const wchar_t* format, std::va_list arguments);

/// \name The forms without a size
/// They trust `dst` to hold the text and its terminator, and return the length of the text.
/// When the text cannot be measured, or `dst` is null, they write nothing and return -1. An argument may lie in `dst`.
/// @{
/// vswprintf without a size.
TQ_API int _vswprintf(wchar_t* dst, const wchar_t* format, std::va_list arguments);
/// An overload of the C library's function, which takes a size.
TQ_API int vswprintf(wchar_t* dst, const wchar_t* format, std::va_list arguments);
/// Likewise.
TQ_API int swprintf(wchar_t* dst, const wchar_t* format, ...);
/// Unlike its namesake it does not stop at 1,024 characters and knows the C library's formats, not only a few.
TQ_API int wsprintf(wchar_t* dst, const wchar_t* format, ...);
/// @}

/// vsnprintf: cuts the text to size - 1 characters, terminates it, and returns its full length, while its namesake
/// treats a text that does not fit as an error. Size 0 (and null) writes nothing. -1 when the C library refuses.
[[gnu::format(printf, 3, 0)]] TQ_API int vsprintf_s(char* dst, std::size_t size, const char* format,
                                                    std::va_list arguments);

/// A text that fits in `size` characters with its terminator is written, and its length returned. A longer one is cut
/// to its first `size` characters, terminated at dst[size], and size - 1 is returned: `dst` needs size + 1 places,
/// deliberately unlike its namesake, which treats it as an error. Size 0 writes only dst[0] and returns -1. When the
/// text cannot be measured, dst[0] becomes 0 and -1 is returned. Null gives -1.
TQ_API int vswprintf_s(wchar_t* dst, std::size_t size, const wchar_t* format, std::va_list arguments);
