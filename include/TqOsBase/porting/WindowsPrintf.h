#pragma once

#include <TqOsBase/Export.h>
#include <TqOsBase/porting/WindowsTypes.h>

#include <cstdarg>

/// \file
/// Formatted text under the Windows runtime's names that the library does not answer elsewhere, **with Windows' reading
/// of the format**; how the names reach the global namespace is said in WindowsNames.h. (`vsprintf_s`, `vswprintf_s`
/// and `swprintf` are not here: they are those of PrintfFunctions.h, with the C library's formats.)
///
/// A directive is `%`, flags of `-+ #0`, a width, a precision after a point (numbers or `*`), a size and a letter:
///
///     letter            size
///     d i o u x X       none, hh, h, l, ll, j, z, t; I64: 64 bits; I32: 32 bits; I: as wide as a pointer
///     a A e E f F g G   none, or L for a long double; other sizes mean nothing
///     c s               none: of the function's own width; h: narrow; l or w: wide
///     C S               none: of the other width; h and l and w as above
///     p                 an address as 16 hexadecimal digits in capitals; a precision given as a number is not heeded
///
/// `l` means `long`, which has 64 bits here, so a DWORD goes with `%u`. Any other directive, `%n` too, is not
/// formatted: the call fails. Numbers, and the texts of null and infinity, are the C library's. Text that changes its
/// width does so in the encoding of the current C locale, or as UTF-8 where that cannot express it. Wide text has less
/// than 524,288 characters.
///
/// On every failure the result is -1, and a destination with room has the empty text, unless said otherwise. `errno` is
/// EINVAL for a null pointer and a directive that is none, ERANGE without room, EILSEQ for a character without an
/// encoding, EOVERFLOW for a wide text that is too long, ENOMEM. There is no invalid-parameter handler. An argument
/// must not lie in the destination. All are reentrant.
namespace tq::windows {

/// @{
/// Bounded forms that may leave out the terminator.
///
/// Up to `count` characters of the text; the terminator after them only when the text is shorter than `count`. The
/// length of the text when it is not longer than `count`, else -1, with the first `count` characters written. A null
/// `dst` with a count of 0 gives the length; with another count it is a failure.
TQ_API int _snprintf(char* dst, std::size_t count, const char* format, ...);
TQ_API int _snwprintf(wchar_t* dst, std::size_t count, const wchar_t* format, ...);
TQ_API int _vsnprintf(char* dst, std::size_t count, const char* format, std::va_list arguments);
TQ_API int _vsnwprintf(wchar_t* dst, std::size_t count, const wchar_t* format, std::va_list arguments);
/// @}

/// @{
/// Forms that want room.
///
/// The whole text and its terminator in the `size` characters of `dst`, or a failure: ERANGE when there is no room. The
/// length of the text. A size of 0 and a null `dst` are failures.
TQ_API int sprintf_s(char* dst, std::size_t size, const char* format, ...);
TQ_API int swprintf_s(wchar_t* dst, std::size_t size, const wchar_t* format, ...);
/// @}

/// @{
/// Secure bounded forms.
///
/// Up to `count` characters of the text and always a terminator, in `size` characters. The length of the text when all
/// of it was written; -1, and no failure, when `count` cut it. When `dst` has no room for what `count` asks for, that
/// is a failure with ERANGE, except with _TRUNCATE as the count: then the text is cut to the room, and -1 returned. A
/// null `dst` with size and count of 0 gives 0; otherwise a null `dst` and a size of 0 are failures.
TQ_API int _snprintf_s(char* dst, std::size_t size, std::size_t count, const char* format, ...);
TQ_API int _snwprintf_s(wchar_t* dst, std::size_t size, std::size_t count, const wchar_t* format, ...);
TQ_API int _vsnprintf_s(char* dst, std::size_t size, std::size_t count, const char* format, std::va_list arguments);
TQ_API int _vsnwprintf_s(wchar_t* dst, std::size_t size, std::size_t count, const wchar_t* format,
                         std::va_list arguments);
/// @}

/// @{
/// Length of the text, without a terminator.
TQ_API int _scprintf(const char* format, ...);
TQ_API int _scwprintf(const wchar_t* format, ...);
/// @}

/// @{
/// The secure forms on arrays, whose size is known.
template <std::size_t size, class... Arguments>
int sprintf_s(char (&dst)[size], const char* format, Arguments... arguments) {
    return sprintf_s(dst, size, format, arguments...);
}
template <std::size_t size, class... Arguments>
int swprintf_s(wchar_t (&dst)[size], const wchar_t* format, Arguments... arguments) {
    return swprintf_s(dst, size, format, arguments...);
}
template <std::size_t size, class... Arguments>
int _snprintf_s(char (&dst)[size], std::size_t count, const char* format, Arguments... arguments) {
    return _snprintf_s(dst, size, count, format, arguments...);
}
template <std::size_t size, class... Arguments>
int _snwprintf_s(wchar_t (&dst)[size], std::size_t count, const wchar_t* format, Arguments... arguments) {
    return _snwprintf_s(dst, size, count, format, arguments...);
}
template <std::size_t size>
int _vsnprintf_s(char (&dst)[size], std::size_t count, const char* format, std::va_list arguments) {
    return _vsnprintf_s(dst, size, count, format, arguments);
}
template <std::size_t size>
int _vsnwprintf_s(wchar_t (&dst)[size], std::size_t count, const wchar_t* format, std::va_list arguments) {
    return _vsnwprintf_s(dst, size, count, format, arguments);
}
/// @}

} // namespace tq::windows

#if !defined(TQ_WINDOWS_QUALIFIED)
using tq::windows::_scprintf;
using tq::windows::_scwprintf;
using tq::windows::_snprintf;
using tq::windows::_snprintf_s;
using tq::windows::_snwprintf;
using tq::windows::_snwprintf_s;
using tq::windows::_vsnprintf;
using tq::windows::_vsnprintf_s;
using tq::windows::_vsnwprintf;
using tq::windows::_vsnwprintf_s;
using tq::windows::sprintf_s;
using tq::windows::swprintf_s;
#endif
