#pragma once

/// \file
/// What a failed assertion of the application calls.

#include <TqOsBase/Export.h>

/// What the application's assertion macro calls when a condition does not hold.
class TQ_API TqAsserter {
public:
    /// The hook, a plain pointer that the library never calls: set it before other threads use it, and not to null. It
    /// may be called by several threads at once. At the start it prints
    /// "\nTqAsserter failed-- <file>:<line> " to standard output, without a line feed at the end and without the
    /// message, and returns: the program goes on. It prints UTF-8, unless standard output is a stream of wide text
    /// already.
    static void (*sm_pfnAssert)(const wchar_t* message, const wchar_t* file, int line);
};
