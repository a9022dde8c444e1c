#pragma once

/// \file
/// Paths taken apart into parts of fixed sizes.

#include <TqOsBase/Export.h>

#include <cstddef>

/// Takes paths apart as _wsplitpath_s does (see PathFunctions.h for what each part is), into outputs of fixed sizes:
/// longer parts are cut. A null output gives 0 or false. Nothing throws; all are reentrant.
class TQ_API TqPathMaker {
public:
    /// False for null and for a path with one of `"*<>?|`, with a colon anywhere but at index 1, or with two separators
    /// (slash or backslash) in a row, at the start too. The empty path is valid.
    static bool isValidPath(const wchar_t* path);

    /// Returns 1 and writes nothing.
    static int getAbsolutePath(wchar_t* out, unsigned size, const wchar_t* path);

    /// @{
    /// These write one part and return its length: the drive (64 characters with the terminator), the directory (260),
    /// the extension with its full stop (8). A path that cannot be split, for one because it has no file name, gives 0,
    /// although `out` may hold the part then; a null path gives 0 and the empty text.
    static int getDriverName(wchar_t* out, const wchar_t* path);
    static int getParentDir(wchar_t* out, const wchar_t* path);
    static int getExtFileName(wchar_t* out, const wchar_t* path);
    /// @}

    /// The file name without its extension, at most 1,024 characters with the terminator. True when the path could be
    /// split; otherwise, and for null and the empty path, false and the empty text. `extra` is not used.
    static bool getFileName(const wchar_t* path, wchar_t* out, const wchar_t** extra);
    /// The same with the extension.
    static bool getFullFileName(const wchar_t* path, wchar_t* out);

    /// _wsplitpath_s(): true when that returns 0. False for null and the empty path, with nothing written or printed.
    static bool splitPath(const wchar_t* path, wchar_t* drive, std::size_t driveSize, wchar_t* dir, std::size_t dirSize,
                          wchar_t* fname, std::size_t fnameSize, wchar_t* ext, std::size_t extSize);
};
