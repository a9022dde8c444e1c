#pragma once

#include <TqOsBase/Export.h>
#include <TqOsBase/porting/WindowsTypes.h>

#include <cstdio>
#include <sys/stat.h>

/// \file
/// Files and folders under the Windows runtime's names that the library does not answer elsewhere; how the names reach
/// the global namespace is said in WindowsNames.h. (`_wfopen`, `_wfopen_s`, `_wrename`, `_waccess` and `_wgetcwd` are
/// those of FileFunctions.h.) Wide names are converted and bounded as there: 1,023 bytes, ENAMETOOLONG beyond, EINVAL
/// for null, EILSEQ for what is no character. A backslash is part of a name. The locale is not changed.

/// The parts of a file's mode, st_mode.
#if !defined(_S_IFMT)
#define _S_IFMT 0xF000   ///< The bits that tell the kind of a file.
#define _S_IFDIR 0x4000  ///< A folder.
#define _S_IFCHR 0x2000  ///< A device of characters.
#define _S_IFIFO 0x1000  ///< A pipe.
#define _S_IFREG 0x8000  ///< A file.
#define _S_IREAD 0x0100  ///< Its owner may read it.
#define _S_IWRITE 0x0080 ///< Its owner may write it.
#define _S_IEXEC 0x0040  ///< Its owner may execute it, or look into it.
#endif
#if !defined(__stat64)
/// The other name of the type, in `struct __stat64`.
#define __stat64 _stat64
#endif

namespace tq::windows {

/// What _wstat64() tells of a file: st_size, st_mode, st_mtime and the others of this system's `stat`, 64 bits where
/// Windows has them. st_ctime is the time of the last change of the file's entry, not of its creation.
struct _stat64 : ::stat {};

/// fopen() with a result: 0 and the stream, which the caller closes, or an error number, which `errno` has as well, and
/// null in *out. EINVAL when a pointer is null; *out stays as it is then. The modes are the C library's, without
/// encodings ("ccs="), and text is not translated. The file may be opened by others at the same time.
TQ_API int fopen_s(std::FILE** out, const char* name, const char* mode);

/// fseek() by 64 bits: 0, or -1 with `errno`; EINVAL for a null stream and an `origin` that is none.
TQ_API int _fseeki64(std::FILE* stream, long long offset, int origin);
/// ftell() of 64 bits, or -1 with `errno`; EINVAL for a null stream.
TQ_API long long _ftelli64(std::FILE* stream);
/// The stream's file descriptor, or -1 with `errno`; EINVAL for a null stream.
TQ_API int _fileno(std::FILE* stream);

/// @{
/// Removes a file: 0, or -1 with `errno`; EACCES for a folder. A file that is read-only or open is removed too, while
/// the namesakes refuse.
TQ_API int _wunlink(const wchar_t* name);
TQ_API int _wremove(const wchar_t* name);
/// @}
/// Makes a folder with all rights that the process's mask leaves: 0, or -1 with `errno`, EEXIST for a name that is
/// taken.
TQ_API int _wmkdir(const wchar_t* name);
/// Removes an empty folder: 0, or -1 with `errno`; ENOTEMPTY for what is no empty folder.
TQ_API int _wrmdir(const wchar_t* name);
/// Makes a folder the current one: 0, or -1 with `errno`; ENOENT for what is no folder.
TQ_API int _wchdir(const wchar_t* name);
/// Writes what is known of a file or folder: 0, or -1 with `errno`; EINVAL for a null pointer.
TQ_API int _wstat64(const wchar_t* name, struct _stat64* status);
/// 0 when the file may be used as `mode` says (0: it is there, 2: written, 4: read, 6: both), else an error number,
/// which `errno` has as well; EINVAL for another mode.
TQ_API int _waccess_s(const wchar_t* name, int mode);

} // namespace tq::windows

#if !defined(TQ_WINDOWS_QUALIFIED)
using tq::windows::_fileno;
using tq::windows::_fseeki64;
using tq::windows::_ftelli64;
using tq::windows::_stat64;
using tq::windows::_waccess_s;
using tq::windows::_wchdir;
using tq::windows::_wmkdir;
using tq::windows::_wremove;
using tq::windows::_wrmdir;
using tq::windows::_wstat64;
using tq::windows::_wunlink;
using tq::windows::fopen_s;
#endif
