#include "platform/FileLock.h"

#include <fcntl.h>
#include <unistd.h>

namespace tq::platform {

namespace {

struct flock wholeFile(short type) noexcept {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = 0;
    lock.l_len = 0; // to the end, wherever it moves
    lock.l_pid = ::getpid();
    return lock;
}

} // namespace

bool isLockedByAnotherProcess(int descriptor) noexcept {
    struct flock lock = wholeFile(F_WRLCK);
    return ::fcntl(descriptor, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

void takeReadLock(int descriptor) noexcept {
    struct flock lock = wholeFile(F_RDLCK);
    ::fcntl(descriptor, F_SETLK, &lock);
}

void releaseLock(int descriptor) noexcept {
    struct flock lock = wholeFile(F_UNLCK);
    ::fcntl(descriptor, F_SETLK, &lock);
}

} // namespace tq::platform
