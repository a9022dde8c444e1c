#include "stream/FileOpenPlan.h"

namespace tq::detail {

using platform::Creation;
using platform::OpenMode;

namespace {

FileOpenPlan refused(Lumo::ErrorStatus status) {
    return {.status = status, .mode = {}};
}

FileOpenPlan openAs(OpenMode mode) {
    return {.status = Lumo::kOk, .mode = mode};
}

} // namespace

FileOpenPlan planFileOpen(const char* path, TqIO::AccessMode access, TqIO::ShareMode share,
                          TqIO::CreationDisposition creation) {
    const bool toRead = (access & TqIO::kAccessRead) != 0;
    const bool toWrite = (access & TqIO::kAccessWrite) != 0;
    const bool isAccessible = platform::canAccess(path, toRead, toWrite);
    if (isAccessible && platform::isDirectory(path))
        return refused(Lumo::kInvalidFileTarget);

    // The share mode decides two things: whoever denies anything opens for update, even to read; and reading and
    // writing while denying others to write is exclusive.
    const OpenMode existing = {.read = true, .write = toWrite || share != TqIO::kShareDenyNone};
    const bool isExclusive = access == TqIO::kAccessReadWrite && share == TqIO::kShareDenyWrite;
    const bool isUpdatable = platform::canAccess(path, true, true);
    switch (creation) {
    case TqIO::kCreateNew:
        if (isUpdatable)
            return refused(Lumo::kInvalidFileTarget);
        return openAs({.read = toRead, .write = true, .creation = Creation::kExclusive});
    case TqIO::kCreateAlways:
        return openAs({.read = toRead, .write = true, .truncate = true, .creation = Creation::kIfMissing});
    case TqIO::kOpenExisting:
        if (!isAccessible)
            return refused(Lumo::kFileNotAccessible);
        return {.status = Lumo::kOk, .isExclusive = isExclusive, .mode = existing};
    case TqIO::kOpenAlways:
        if (isUpdatable)
            return openAs(existing);
        if (platform::canAccess(path, false, false)) // there, but read-only or write-only
            return refused(Lumo::kFileOpenFailed);
        return openAs({.read = toRead, .write = true, .creation = Creation::kIfMissing});
    case TqIO::kTruncateExisting:
        if (!isUpdatable || !toWrite)
            return refused(Lumo::kInvalidFileTarget);
        return openAs({.read = toRead, .write = true, .truncate = true});
    }
    return refused(Lumo::kInvalidDisposition);
}

} // namespace tq::detail
