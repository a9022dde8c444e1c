#pragma once

#include <TqOsBase/Export.h>
#include <TqOsBase/porting/WindowsTypes.h>

/// \file
/// The secure copies and tokenizers of text that the library does not answer elsewhere; how the names reach the global
/// namespace is said in WindowsNames.h. (`wcscpy_s` and `wcsncpy_s` are not here: they are those of
/// SecureFunctions.h, which cut where these fail.)
///
/// The result is 0 or an error number, which `errno` has as well, and a failure empties a destination that has room:
/// what does not fit is never cut without being asked for. There is no invalid-parameter handler. `size` counts the
/// characters of `dst` with its terminator. Source and destination must not overlap. All are reentrant.
namespace tq::windows {

/// All of `src`. EINVAL when either is null, ERANGE without room for text and terminator, so also for a size of 0.
TQ_API int strcpy_s(char* dst, std::size_t size, const char* src);

/// The first `count` characters of `src`, or all of it when it is shorter, and a terminator. EINVAL when either is null
/// and for a size of 0, ERANGE without room. With _TRUNCATE as the count: as much as there is room for, and STRUNCATE
/// (`errno` stays) when that is not all.
TQ_API int strncpy_s(char* dst, std::size_t size, const char* src, std::size_t count);

/// @{
/// Appends `src` to the text in `dst`. EINVAL when either is null or `dst` has no terminator in its `size` characters,
/// ERANGE without room, so also for a size of 0.
TQ_API int strcat_s(char* dst, std::size_t size, const char* src);
TQ_API int wcscat_s(wchar_t* dst, std::size_t size, const wchar_t* src);
/// @}

/// @{
/// Appends the first `count` characters of `src`, or all of it when it is shorter; fails as strcat_s does. With
/// _TRUNCATE as the count: as much as there is room for, and STRUNCATE (`errno` stays) when that is not all.
TQ_API int strncat_s(char* dst, std::size_t size, const char* src, std::size_t count);
TQ_API int wcsncat_s(wchar_t* dst, std::size_t size, const wchar_t* src, std::size_t count);
/// @}

/// @{
/// The same on arrays, whose size is known.
template <std::size_t size>
int strcpy_s(char (&dst)[size], const char* src) {
    return strcpy_s(dst, size, src);
}
template <std::size_t size>
int strncpy_s(char (&dst)[size], const char* src, std::size_t count) {
    return strncpy_s(dst, size, src, count);
}
template <std::size_t size>
int strcat_s(char (&dst)[size], const char* src) {
    return strcat_s(dst, size, src);
}
template <std::size_t size>
int wcscat_s(wchar_t (&dst)[size], const wchar_t* src) {
    return wcscat_s(dst, size, src);
}
template <std::size_t size>
int strncat_s(char (&dst)[size], const char* src, std::size_t count) {
    return strncat_s(dst, size, src, count);
}
template <std::size_t size>
int wcsncat_s(wchar_t (&dst)[size], const wchar_t* src, std::size_t count) {
    return wcsncat_s(dst, size, src, count);
}
/// @}

/// @{
/// The next piece of `text` between characters of `delimiters`, which is cut off in place; null when there is none. A
/// null `text` goes on where *context says, which a call with a text has set. Null, with `errno` EINVAL, when
/// `delimiters` or `context` is null, or `text` and *context are.
TQ_API char* strtok_s(char* text, const char* delimiters, char** context);
TQ_API wchar_t* wcstok_s(wchar_t* text, const wchar_t* delimiters, wchar_t** context);
/// @}

} // namespace tq::windows

#if !defined(TQ_WINDOWS_QUALIFIED)
using tq::windows::strcat_s;
using tq::windows::strcpy_s;
using tq::windows::strncat_s;
using tq::windows::strncpy_s;
using tq::windows::strtok_s;
using tq::windows::wcscat_s;
using tq::windows::wcsncat_s;
using tq::windows::wcstok_s;
#endif
