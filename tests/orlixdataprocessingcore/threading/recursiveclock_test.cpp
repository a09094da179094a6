#include "orlixdataprocessingcore/threading/recursiveclock.h"

#include <gtest/gtest.h>

#include <future>

namespace {

using Orlix::DataProcessing::Threading::RecursiveCLock;

bool canOtherThreadLock(RecursiveCLock& lock) {
    return std::async(std::launch::async,
                      [&] {
                          const bool taken = lock.tryLock();
                          if (taken) {
                              lock.unlock();
                          }
                          return taken;
                      })
        .get();
}

TEST(RecursiveCLock, OneThreadLocksItRepeatedly) {
    RecursiveCLock lock;
    lock.lock();
    EXPECT_TRUE(lock.tryLock());
    lock.unlock();
    EXPECT_FALSE(canOtherThreadLock(lock));
    lock.unlock();
    EXPECT_TRUE(canOtherThreadLock(lock));
}

TEST(RecursiveCLock, ItsGenApiFormIsTheSameLock) {
    RecursiveCLock lock;
    {
        const GenApi::AutoLock guard(lock.getLock());
        EXPECT_FALSE(canOtherThreadLock(lock));
        lock.lock();
        lock.unlock();
    }
    EXPECT_TRUE(canOtherThreadLock(lock));
}

}  // namespace
