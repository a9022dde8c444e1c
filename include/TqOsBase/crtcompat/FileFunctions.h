#pragma once

#include <TqOsBase/Export.h>

#include <cstdio>

/// \file
/// Files by wide name. A name that is not ASCII alone is converted to the encoding of the current locale where that
/// holds it exactly, else, and in the locale "C", to UTF-8. Unless said otherwise, one that does not fit in 1,024 bytes
/// with its terminator is refused with `errno` ENAMETOOLONG, never cut; null is refused with EINVAL, a character
/// outside Unicode with EILSEQ.

/// fopen(): the modes are its own, without the encodings that its namesake knows ("ccs="), and text is not translated.
/// The caller closes the stream. Null, with `errno`, on failure.
TQ_API std::FILE* _wfopen(const wchar_t* name, const wchar_t* mode);
/// The same stream in *out, null on failure. Returns the value of `errno`, also after a success, which leaves there
/// what an earlier call left: so ask *out. Its namesake returns 0 then. A null `out` opens nothing and returns EINVAL.
TQ_API int _wfopen_s(std::FILE** out, const wchar_t* name, const wchar_t* mode);
/// rename(): 0, or -1 with `errno`. It replaces a file that has the new name already, while its namesake fails.
TQ_API int _wrename(const wchar_t* oldName, const wchar_t* newName);
/// The same as TqFileSystem::waccess: a name of any length, and the process's C locale becomes a UTF-8 one. `mode` is
/// access()'s: 0, 2, 4 and 6 mean what they mean to its namesake, and bit 0 asks for execution.
TQ_API int _waccess(const wchar_t* name, int mode);
/// Always null; nothing is written.
TQ_API wchar_t* _wgetcwd(wchar_t* buffer, int size);
