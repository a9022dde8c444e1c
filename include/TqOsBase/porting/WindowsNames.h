#pragma once

/// \file
/// The Windows names that ported code misses most, all groups of them. They are in no other header: a program that does
/// not ask for them never sees them. `docs/porting.md` lists them.
///
/// The functions are those of `tq::windows`, taken to the global namespace by the headers: no symbol of the library has
/// their plain name, and a program that defines such a function itself keeps it. Where a source sees both, it defines
/// `TQ_WINDOWS_QUALIFIED` before the header is included: the functions stay in `tq::windows` then, and
/// `using tq::windows::_stricmp;` takes one. A macro of such a name has to go.

#include <TqOsBase/porting/WindowsCompare.h>
#include <TqOsBase/porting/WindowsCopy.h>
#include <TqOsBase/porting/WindowsFiles.h>
#include <TqOsBase/porting/WindowsPrintf.h>
#include <TqOsBase/porting/WindowsTime.h>
#include <TqOsBase/porting/WindowsTypes.h>
