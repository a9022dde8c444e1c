#pragma once

#include <TqOsBase/Export.h>

namespace Lumo {

/// The application's 32-bit status number. The library passes any value through unchanged and itself produces only
/// the values named here; the file layer says in its own headers when each one is returned, stored or thrown.
enum TQ_API ErrorStatus : int {
    eOk = 0,                    ///< Success.
    eInvalidDisposition = 2,    ///< The creation disposition is not one of 1 to 5.
    eFileOpenFailed = 53,       ///< The system refused to open the file.
    eFileNotAccessible = 72,    ///< An existing file was asked for and is missing or refused, or this process already
                                ///< holds it open exclusively.
    eInvalidFileTarget = 364,   ///< The path is a directory, the file to be created exists, or the file to be truncated
                                ///< is missing or was not opened for writing.
    eEmptyPath = 365,           ///< The path is null or empty.
    eFileLockedByProcess = 433, ///< Another process holds a conflicting lock on the file.
};

} // namespace Lumo
