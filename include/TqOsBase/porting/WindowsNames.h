#pragma once

/// \file
/// The Windows names that ported code misses most, all groups of them. They are in no other header: a program that does
/// not ask for them never sees them. `docs/porting.md` lists them.

#include <TqOsBase/porting/WindowsCompare.h>
#include <TqOsBase/porting/WindowsCopy.h>
#include <TqOsBase/porting/WindowsFiles.h>
#include <TqOsBase/porting/WindowsPrintf.h>
#include <TqOsBase/porting/WindowsTime.h>
#include <TqOsBase/porting/WindowsTypes.h>
