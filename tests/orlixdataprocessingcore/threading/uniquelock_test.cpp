#include "orlixdataprocessingcore/threading/uniquelock.h"

#include <gtest/gtest.h>

#include <future>
#include <utility>

#include "orlixdataprocessingcore/expectthrow.h"
#include "orlixdataprocessingcore/threading/recursiveclock.h"
#include "orlixdataprocessingcore/threading/recursivemutex.h"

namespace {

using namespace Orlix::DataProcessing::Threading;
using GenICam::RuntimeException;
using Orlix::Test::expectThrow;

// Whether another thread could take the lock now.
template <typename L>
bool isFree(L& lockable) {
    return std::async(std::launch::async,
                      [&] {
                          if (!lockable.tryLock()) {
                              return false;
                          }
                          lockable.unlock();
                          return true;
                      })
        .get();
}

TEST(UniqueLock, LocksWhenMadeAndUnlocksAtTheEndOfItsScope) {
    RecursiveCLock lockable;
    {
        UniqueLock<IRecursiveLockable> lock(lockable);
        EXPECT_TRUE(lock.isOwned());
        EXPECT_FALSE(isFree(lockable));
    }
    EXPECT_TRUE(isFree(lockable));
}

TEST(UniqueLock, DefersLockingWhenAsked) {
    RecursiveMutex mutex;
    UniqueLock<RecursiveMutex> lock(mutex, deferLock);
    EXPECT_FALSE(lock.isOwned());
    EXPECT_TRUE(isFree(mutex));
    lock.lock();
    EXPECT_FALSE(isFree(mutex));
    lock.unlock();
    EXPECT_TRUE(isFree(mutex));
}

TEST(UniqueLock, SecondLockThrowsThoughTheLockableIsRecursive) {
    RecursiveCLock lockable;
    UniqueLock<RecursiveCLock> lock(lockable);
    const auto thrown = expectThrow<RuntimeException>(
        [&] { lock.lock(); }, "Lockable is already owned by this unique lock.");
    EXPECT_EQ(thrown.sourceFile, "src/libs/orlixdataprocessingcore/threading/uniquelock_impl.h");
    UniqueLock<RecursiveCLock> second(lockable);
    EXPECT_TRUE(second.isOwned());
}

TEST(UniqueLock, UnlockWithoutOwnershipThrows) {
    RecursiveCLock lockable;
    UniqueLock<RecursiveCLock> lock(lockable, deferLock);
    expectThrow<RuntimeException>([&] { lock.unlock(); },
                                  "Lockable is not owned by this unique lock.");
}

TEST(UniqueLock, WithoutALockableLockAndUnlockThrow) {
    UniqueLock<RecursiveMutex> lock;
    expectThrow<RuntimeException>([&] { lock.lock(); },
                                  "No lockable is associated with this unique lock.");
    expectThrow<RuntimeException>([&] { lock.unlock(); },
                                  "No lockable is associated with this unique lock.");
}

TEST(UniqueLock, MovingHandsTheOwnershipOver) {
    RecursiveMutex first;
    RecursiveMutex second;
    UniqueLock<RecursiveMutex> a(first);
    UniqueLock<RecursiveMutex> b(second);
    b = std::move(a);
    EXPECT_TRUE(isFree(second));
    EXPECT_FALSE(isFree(first));
    UniqueLock<RecursiveMutex> c(std::move(b));
    c.unlock();
    EXPECT_TRUE(isFree(first));
}

}  // namespace
