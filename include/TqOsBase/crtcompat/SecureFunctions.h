#pragma once

#include <TqOsBase/Export.h>

#include <cstddef>

/// \file
/// The Microsoft C runtime's "secure" copies, with what callers rely on here. They call no invalid-parameter handler
/// and, except for the two copies of memory, do not clear the destination when they fail. Sizes and counts of wide text
/// are in characters. Source and destination must not overlap. All are reentrant.

/// Copies `count` bytes and returns the low 32 bits of dst's address, deliberately not 0: take any value but -1 as
/// success. A count of 0 copies nothing and returns 0. When `src` is null or dstSize is less than `count`, fills the
/// dstSize bytes of `dst` with zeros and returns -1. A null `dst` gives -1 too.
TQ_API int memcpy_s(void* dst, std::size_t dstSize, const void* src, std::size_t count);

/// Fills the dstSize characters of `dst` with zeros, then copies up to `count` characters of `src`, not beyond its
/// terminator, and returns 0. The result is terminated by the zeros when it is shorter than dstSize, and not terminated
/// otherwise. Returns -1, with the zeros written, when `src` is null, or when `count` is above dstSize and the text has
/// more than dstSize characters; -1 for a null `dst`. Its namesake copies characters without looking for a terminator.
/// Reads no more of `src` than it may copy, plus one character when `count` is above dstSize.
TQ_API int wmemcpy_s(wchar_t* dst, std::size_t dstSize, const wchar_t* src, std::size_t count);

/// \name Copies of text
/// They return 0, or -1, with nothing written, for a null pointer or a negative number, so also for the
/// namesakes' _TRUNCATE. (wcsncpy_s with a size and a null source fails as wmemcpy_s does.)
/// @{
/// wcscpy(): `dst` must have room. (In its namesake `dst` is an array whose size is known.)
TQ_API int wcscpy_s(wchar_t* dst, const wchar_t* src);
/// wcsncpy() of `size` characters: fills the rest with zeros, and adds no terminator when `src` has `size` characters
/// or more, where its namesake reports an error.
TQ_API int wcscpy_s(wchar_t* dst, int size, const wchar_t* src);
/// wcsncpy() of `count` characters: zeros fill the rest, and there is no terminator when `src` is not shorter.
TQ_API int wcsncpy_s(wchar_t* dst, const wchar_t* src, int count);
/// wmemcpy_s() with the same arguments, so all of `dst` is written.
TQ_API int wcsncpy_s(wchar_t* dst, int size, const wchar_t* src, int count);
/// @}
