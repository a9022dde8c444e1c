#pragma once

#include <TqOsBase/Export.h>

#include <cstddef>

/// \file
/// Splitting paths under the Microsoft C runtime's names. A slash is the only separator and there are no drive letters.
/// The two splitters disagree on purpose about the extension: callers depend on both. All are reentrant.

/// Splits at the last slash, and what follows it at its last full stop. The outputs have no sizes, so each must have
/// room for the whole path; null leaves one out. `drive` stays empty, `dir` ends with its slash, `ext` comes without
/// its full stop (its namesake keeps it). "dir/file.tar.gz" gives "dir/", "file.tar", "gz". A null path empties the
/// outputs.
TQ_API void _wsplitpath(const wchar_t* path, wchar_t* drive, wchar_t* dir, wchar_t* fname, wchar_t* ext);

/// Splits into components at slashes; empty ones vanish. The first is `drive`. Of the others, those without a full stop
/// make up `dir`, each with a slash in front, and the last one with a full stop is the file name: `fname` up to its
/// first full stop, `ext` from there on, full stop included, also when components without one follow. Thus
/// "/data/me/docs/plan.v2.txt" gives "data", "/me/docs", "plan", ".v2.txt". Sizes are in characters and a part is cut
/// to fit, terminated; null with size 0 leaves one out, and any part with size 0 is not written.
///
/// Returns 0, or 1 as soon as something is amiss, with the parts found so far written in the order drive, ext, dir and
/// the others left alone: a null path or one of 1,024 characters or more; no component at all (then "failed!" and a
/// line feed go to standard output); a null output with a size, once its part is there; or no file name: "/onlydir/sub"
/// fills drive and dir and returns 1. Its namesake returns error codes, empties all outputs on failure and refuses to
/// cut.
TQ_API int _wsplitpath_s(const wchar_t* path, wchar_t* drive, std::size_t driveSize, wchar_t* dir, std::size_t dirSize,
                         wchar_t* fname, std::size_t fnameSize, wchar_t* ext, std::size_t extSize);

/// Does nothing; `path` is not written.
TQ_API void _wmakepath(wchar_t* path, const wchar_t* drive, const wchar_t* dir, const wchar_t* fname,
                       const wchar_t* ext);
