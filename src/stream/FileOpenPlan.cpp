#include "stream/FileOpenPlan.h"

namespace tq::detail {

using platform::Creation;
using platform::OpenMode;

FileOpenPlan planFileOpen(const char* path, TqIO::AccessMode access, TqIO::ShareMode share,
                          TqIO::CreationDisposition creation) {
    const bool toRead = (access & TqIO::kAccessRead) != 0;
    const bool toWrite = (access & TqIO::kAccessWrite) != 0;
    const bool isAccessible = platform::canAccess(path, toRead, toWrite);
    if (isAccessible && platform::isDirectory(path))
        throw Lumo::eInvalidFileTarget;

    const auto openAs = [](OpenMode mode) { return FileOpenPlan{Lumo::eOk, mode}; };
    // Who denies anything opens for update even to read.
    const OpenMode existing = {.read = true, .write = toWrite || share != TqIO::kShareDenyNone};
    const bool isUpdatable = platform::canAccess(path, true, true);
    switch (creation) {
    case TqIO::kCreateNew:
        if (isUpdatable)
            throw Lumo::eInvalidFileTarget;
        return openAs({.read = toRead, .write = true, .creation = Creation::kExclusive});
    case TqIO::kCreateAlways:
        return openAs({.read = toRead, .write = true, .truncate = true, .creation = Creation::kIfMissing});
    case TqIO::kOpenExisting:
        return isAccessible ? openAs(existing) : FileOpenPlan{Lumo::eFileNotAccessible, {}};
    case TqIO::kOpenAlways:
        if (isUpdatable)
            return openAs(existing);
        if (platform::canAccess(path, false, false))
            return {Lumo::eFileOpenFailed, {}};
        return openAs({.read = toRead, .write = true, .creation = Creation::kIfMissing});
    case TqIO::kTruncateExisting:
        if (!isUpdatable || !toWrite)
            throw Lumo::eInvalidFileTarget;
        return openAs({.read = toRead, .write = true, .truncate = true});
    }
    throw Lumo::eInvalidDisposition;
}

} // namespace tq::detail
