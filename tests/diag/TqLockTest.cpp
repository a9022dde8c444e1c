#include <TqOsBase/diag/TqLock.h>

#include <gtest/gtest.h>
#include <memory>

namespace {

TEST(TqLock, NeitherBlocksNorFailsHoweverItIsCalled) {
    const std::unique_ptr<TqLock> lock(createTqLock());
    ASSERT_NE(dynamic_cast<TqImpLock_mac*>(lock.get()), nullptr);
    lock->unlock();
    lock->lock();
    lock->lock();
    lock->unlock();
}

TEST(TqLocker, TakesALockThatItsOwnerDeletes) {
    static_assert(sizeof(TqLocker) == sizeof(TqLock*));
    const TqLocker locker;
    const TqLocker other;
    const std::unique_ptr<TqLock> owned(locker.m_pLock);
    const std::unique_ptr<TqLock> ownedOther(other.m_pLock);
    EXPECT_NE(owned, nullptr);
    EXPECT_NE(owned, ownedOther);
}

} // namespace
