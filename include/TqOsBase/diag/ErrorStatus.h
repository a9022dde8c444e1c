#pragma once

/// \file
/// The application's status numbers.

#include <TqOsBase/Export.h>

namespace Lumo {

/// The application's 32-bit status number. The library passes any value through unchanged and itself produces only
/// the values named here; the file layer says in its own headers when each one is returned, stored or thrown.
enum TQ_API ErrorStatus : int {
    kOk = 0,                    ///< Success.
    kInvalidDisposition = 2,    ///< The creation disposition is not one of 1 to 5.
    kFileOpenFailed = 53,       ///< The system refused to open the file.
    kFileNotAccessible = 72,    ///< An existing file was asked for and is missing or refused, or this process already
                                ///< holds it open exclusively.
    kInvalidFileTarget = 364,   ///< The path is a directory, the file to be created exists, or the file to be truncated
                                ///< is missing or was not opened for writing.
    kEmptyPath = 365,           ///< The path is null or empty.
    kFileLockedByProcess = 433, ///< Another process holds a conflicting lock on the file.
};

} // namespace Lumo
