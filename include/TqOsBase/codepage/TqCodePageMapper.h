#pragma once

/// \file
/// The library's numbers of code pages to those of Windows and back.

#include <TqOsBase/Export.h>
#include <TqOsBase/codepage/CodePageId.h>

/// Maps code_page_id to and from Windows code page numbers.
class TQ_API TqCodePageMapper {
public:
    /// The Windows code page of an identifier; 3 (Windows' number for the thread's ANSI code page) for one that has
    /// none (0, 43), for one outside 0 to 45, and deliberately also for kCodePageAscii, although it has one.
    static int lumoCpToAnsiCp(code_page_id id);

    /// The highest identifier from 45 down to 1 whose code page is `codePage` (932 is 38, never 22; 0 is 43), or
    /// kCodePageUndefined.
    static code_page_id ansiCpToLumoCp(int codePage);

    /// GetACP(), always 0.
    static int currentSystemAnsiCp();
};
