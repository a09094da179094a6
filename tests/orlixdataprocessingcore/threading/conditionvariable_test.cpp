#include "orlixdataprocessingcore/threading/conditionvariable.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <thread>

#include "orlixdataprocessingcore/expectthrow.h"
#include "orlixdataprocessingcore/threading/recursiveclock.h"

namespace {

using namespace Orlix::DataProcessing::Threading;
using Orlix::Test::expectThrow;

TEST(ConditionVariableAny, WaitOnADeferredUnlockedLockThrows) {
    ConditionVariableAny condition;
    RecursiveCLock lockable;
    UniqueLock<IRecursiveLockable> lock(lockable, deferLock);
    const auto thrown = expectThrow<GenICam::InvalidArgumentException>(
        [&] { condition.wait(lock); }, "Passed unique lock does not own a lockable.");
    EXPECT_EQ(thrown.sourceFile,
              "src/libs/orlixdataprocessingcore/threading/conditionvariable_impl.h");
}

TEST(ConditionVariableAny, WaitOnALockWithoutLockableThrows) {
    ConditionVariableAny condition;
    UniqueLock<RecursiveMutex> lock;
    expectThrow<GenICam::InvalidArgumentException>([&] { condition.wait(lock); },
                                                   "Passed unique lock does not own a lockable.");
}

// The waiter holds the lock three times; only if all three are given up can the other thread set
// the flag, and only if all are taken back do the unlocks balance.
template <typename L>
void expectWaitAtEveryDepth() {
    ConditionVariableAny condition;
    L lockable;
    bool isSet = false;
    lockable.lock();
    lockable.lock();
    UniqueLock<L> lock(lockable);
    std::thread setter([&] {
        UniqueLock<L> own(lockable);
        isSet = true;
        condition.notifyAll();
    });
    while (!isSet) {
        condition.wait(lock);
    }
    setter.join();
    const auto isFree = [&] {
        return std::async(std::launch::async,
                          [&] {
                              const bool taken = lockable.tryLock();
                              if (taken) {
                                  lockable.unlock();
                              }
                              return taken;
                          })
            .get();
    };
    lock.unlock();
    EXPECT_FALSE(isFree());
    lockable.unlock();
    EXPECT_FALSE(isFree());
    lockable.unlock();
    EXPECT_TRUE(isFree());
}

TEST(ConditionVariableAny, WaitGivesALockableUpAtEveryDepthAndTakesItBack) {
    expectWaitAtEveryDepth<RecursiveCLock>();
}

TEST(ConditionVariableAny, WaitGivesAMutexUpAtEveryDepthAndTakesItBack) {
    expectWaitAtEveryDepth<RecursiveMutex>();
}

TEST(ConditionVariableAny, WaitUntilEndsAtItsDeadline) {
    ConditionVariableAny condition;
    RecursiveMutex mutex;
    UniqueLock<RecursiveMutex> lock(mutex);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(5);
    while (condition.waitUntil(lock, deadline)) {
    }
    EXPECT_GE(std::chrono::steady_clock::now(), deadline);
    EXPECT_TRUE(lock.isOwned());
}

TEST(ConditionVariableAny, NotifyAllReleasesEveryWaiter) {
    ConditionVariableAny condition;
    RecursiveMutex mutex;
    bool isOpen = false;
    int waiting = 0;
    const auto waiter = [&] {
        UniqueLock<RecursiveMutex> lock(mutex);
        ++waiting;
        condition.notifyAll();
        while (!isOpen) {
            condition.wait(lock);
        }
    };
    std::thread first(waiter);
    std::thread second(waiter);
    {
        UniqueLock<RecursiveMutex> lock(mutex);
        while (waiting < 2) {
            condition.wait(lock);
        }
        isOpen = true;
        condition.notifyAll();
    }
    first.join();
    second.join();
    EXPECT_EQ(waiting, 2);
}

}  // namespace
