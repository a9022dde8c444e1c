#pragma once

#include <TqOsBase/Export.h>

/// \file
/// The environment of the process in wide text. Texts are converted as file names are: to the encoding of the current
/// locale where that holds them exactly, else, and in the locale "C", to UTF-8. Names, and texts to be put, are bounded
/// to 1,024 bytes with their terminator; longer ones are refused with `errno` ENAMETOOLONG, null with EINVAL, a
/// character outside Unicode with EILSEQ. The two functions may be called by any thread at any time; who changes the
/// environment otherwise (setenv(), `environ`) must not do so while another thread calls them.

/// The value of an environment variable, of any length, in memory that the caller releases with free(); its namesake
/// hands out memory of its own. It is read as UTF-8 when it is valid there, else in the encoding of the locale, else as
/// UTF-8 in which a byte that fits no character becomes U+FFFD. Null when the variable is not set, when the name is
/// refused, and without memory (ENOMEM).
TQ_API wchar_t* _wgetenv(const wchar_t* name);

/// putenv() of "name=value": returns 0, or not 0, with `errno`, when it is refused. A text without an equals sign does
/// what the C library does with it: removes the variable on Linux, fails on macOS. "name=" sets the empty value, while
/// its namesake removes the variable. The environment refers to memory that is kept as long as the process; one text is
/// kept once, however often it is put.
TQ_API int _wputenv(const wchar_t* text);
