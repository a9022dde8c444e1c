#pragma once

#include "platform/File.h"

#include <TqOsBase/diag/ErrorStatus.h>
#include <TqOsBase/stream/TqIO.h>

namespace tq::detail {

/// How a file is to be opened, or, with a status other than kOk, why it is not.
struct FileOpenPlan {
    Lumo::ErrorStatus status;
    bool isExclusive = false; ///< Only if no other process holds a lock and this one has not opened it exclusively.
    platform::OpenMode mode;
};

/// Decides from what is at `path` now. The mode keeps to the decision should that change before the file is opened:
/// what was missing is never emptied, what was there is never created.
FileOpenPlan planFileOpen(const char* path, TqIO::AccessMode access, TqIO::ShareMode share,
                          TqIO::CreationDisposition creation);

} // namespace tq::detail
