#pragma once

#include <TqOsBase/Export.h>
#include <TqOsBase/porting/WindowsTypes.h>

/// \file
/// Comparison without regard to case, and copies of text on the heap, under their Windows names; how these reach the
/// global namespace is said in WindowsNames.h. All are reentrant.
namespace tq::windows {

/// @{
/// Less than 0, 0, or more than 0, as `a` stands before, with or after `b` once both are in lower case by the current C
/// locale (in the locale "C" ASCII letters alone have case). The second pair looks at no more than `count` bytes or
/// characters. When either is null the result is _NLSCMPERROR, with `errno` EINVAL.
TQ_API int _stricmp(const char* a, const char* b);
TQ_API int _wcsicmp(const wchar_t* a, const wchar_t* b);
TQ_API int _strnicmp(const char* a, const char* b, std::size_t count);
TQ_API int _wcsnicmp(const wchar_t* a, const wchar_t* b, std::size_t count);
/// @}

/// @{
/// A copy in memory that the caller releases with free(). Null for null, and, with `errno` ENOMEM, without memory.
TQ_API char* _strdup(const char* text);
TQ_API wchar_t* _wcsdup(const wchar_t* text);
/// @}

} // namespace tq::windows

#if !defined(TQ_WINDOWS_QUALIFIED)
using tq::windows::_strdup;
using tq::windows::_stricmp;
using tq::windows::_strnicmp;
using tq::windows::_wcsdup;
using tq::windows::_wcsicmp;
using tq::windows::_wcsnicmp;
#endif
