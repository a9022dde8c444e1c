#include <TqOsBase/diag/TqLock.h>

TqLock::~TqLock() = default;

TqImpLock_mac::~TqImpLock_mac() = default;

void TqImpLock_mac::lock() {}

void TqImpLock_mac::unlock() {}

TqLock* createTqLock() {
    return new TqImpLock_mac;
}

TqLocker::TqLocker() : m_pLock(createTqLock()) {}
