#pragma once

/// \file
/// The lock interface.

#include <TqOsBase/Export.h>

/// The lock interface. Callers pair lock() and unlock() as if the lock were real, so that one which does exclude can
/// be put behind createTqLock() without changing them.
class TQ_API TqLock {
public:
    virtual ~TqLock();
    virtual void lock() = 0;   ///< Takes the lock, if it is one that can be taken.
    virtual void unlock() = 0; ///< Gives it up.
};

/// The lock of this library on every platform. It deliberately does nothing: the library needs none
/// of this kind for itself, and callers that share their own objects bring their own. Locking twice does not block,
/// unlocking an unlocked one is allowed.
class TQ_API TqImpLock_mac : public TqLock {
public:
    ~TqImpLock_mac() override;
    void lock() override;   ///< Nothing.
    void unlock() override; ///< Nothing.
};

/// A new lock from the global allocator; the caller owns it and deletes it. Throws std::bad_alloc.
TQ_API TqLock* createTqLock();

/// Holder that other classes embed. It has no destructor of its own: the class that embeds it deletes m_pLock.
class TQ_API TqLocker {
public:
    /// Takes a lock from createTqLock().
    TqLocker();

    TqLock* m_pLock; ///< The lock.
};
