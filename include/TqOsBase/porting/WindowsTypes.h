#pragma once

#include <cstddef>
#include <cstring>

/// \file
/// Constants and types that ported Windows code names beside the functions of this folder, with the values and sizes
/// that they have on Windows. A constant that is defined already stays as it is. WindowsNames.h has all headers of this
/// kind.

/// Characters of a path with its terminator. Nothing here is bound to it: paths of this system may be longer.
#if !defined(MAX_PATH)
#define MAX_PATH 260
#endif
#if !defined(_MAX_PATH)
/// The same.
#define _MAX_PATH 260
/// @{
/// Characters of a path's parts, with their terminators.
#define _MAX_DRIVE 3
#define _MAX_DIR 256
#define _MAX_FNAME 256
#define _MAX_EXT 256
/// @}
#endif

/// Elements of an array, as a constant. A pointer does not compile.
#if !defined(_countof)
#define _countof(array) (sizeof(tq::detail::arrayOfSameSize(array)))
#endif

/// The count that asks secure copies and formats to cut what does not fit.
#if !defined(_TRUNCATE)
#define _TRUNCATE (static_cast<std::size_t>(-1))
#endif
/// The result of a copy that was cut so.
#if !defined(STRUNCATE)
#define STRUNCATE 80
#endif
/// The result of comparisons that are given null.
#if !defined(_NLSCMPERROR)
#define _NLSCMPERROR 0x7FFFFFFF
#endif

#if !defined(CP_ACP)
/// Numbers of code pages: of the system, and of UTF-8. MultiByteToWideChar() and WideCharToMultiByte() here look at
/// neither.
#define CP_ACP 0
#endif
#if !defined(CP_UTF8)
/// UTF-8.
#define CP_UTF8 65001
#endif

#if !defined(TRUE)
/// @{
/// Values of a BOOL.
#define TRUE 1
#define FALSE 0
/// @}
#endif
/// Milliseconds that do not end.
#if !defined(INFINITE)
#define INFINITE 0xFFFFFFFFu
#endif

/// Error number of the secure functions: 0, EINVAL, ERANGE, STRUNCATE or what `errno` would have.
using errno_t = int;

// Objective-C has one of its own.
#if !defined(OBJC_BOOL_DEFINED)
/// A truth value; everything but 0 is true.
using BOOL = int;
#endif
/// 32 bits, while `long` has 64 here: `%u` formats it.
using DWORD = unsigned int;
/// 32 bits, signed: `%d` formats it.
using LONG = int;
/// 64 bits, signed.
using LONGLONG = long long;
/// 64 bits.
using ULONGLONG = unsigned long long;

/// 64 bits and their halves.
union LARGE_INTEGER {
    /// The halves, on processors of this byte order.
    struct Halves {
        DWORD LowPart; ///< The lower 32 bits.
        LONG HighPart; ///< The upper ones, with the sign.
    };
    __extension__ struct {
        DWORD LowPart; ///< The lower 32 bits.
        LONG HighPart; ///< The upper ones, with the sign.
    };
    Halves u;          ///< The halves once more.
    LONGLONG QuadPart; ///< The whole number.
};

namespace tq::detail {

/// Declared alone, for its size: as many bytes as `array` has elements.
template <class T, std::size_t count>
char (&arrayOfSameSize(T (&array)[count]))[count];

} // namespace tq::detail

/// Fills `size` bytes with zeros.
inline void ZeroMemory(void* memory, std::size_t size) {
    std::memset(memory, 0, size);
}
