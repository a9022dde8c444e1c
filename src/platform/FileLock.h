#pragma once

namespace tq::platform {

// Record locks over the whole file, owned by the process: a lock does not exclude the process that holds it, a child
// made by fork does not inherit it, and closing any descriptor of the file gives it up.

/// True when another process holds a lock that a write lock would conflict with. False also where the system cannot say
/// (a file that cannot be locked).
bool isLockedByAnotherProcess(int descriptor) noexcept;

/// Takes a read lock if that is possible now and allowed by the descriptor, which must be open for reading.
void takeReadLock(int descriptor) noexcept;

/// Gives up whatever lock this process holds on the file.
void releaseLock(int descriptor) noexcept;

} // namespace tq::platform
