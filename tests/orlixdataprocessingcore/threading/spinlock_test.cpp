#include "orlixdataprocessingcore/threading/spinlock.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

namespace Orlix::DataProcessing::Threading {
namespace {

TEST(SpinLock, OneThreadAtATimeHoldsIt) {
    constexpr int threads = 4;
    constexpr int turns = 5000;
    SpinLock lock;
    int count = 0;
    std::vector<std::thread> workers;
    for (int index = 0; index < threads; ++index) {
        workers.emplace_back([&] {
            for (int turn = 0; turn < turns; ++turn) {
                const std::lock_guard<SpinLock> guard(lock);
                ++count;
            }
        });
    }
    for (std::thread& worker : workers) {
        worker.join();
    }
    EXPECT_EQ(count, threads * turns);
}

// Longer than a waiter looks before it sleeps.
TEST(SpinLock, AWaiterGetsItHoweverLongItWasHeld) {
    SpinLock lock;
    bool isDone = false;
    lock.lock();
    std::thread waiter([&] {
        const std::lock_guard<SpinLock> guard(lock);
        EXPECT_TRUE(isDone);
    });
    for (int turn = 0; turn < 100; ++turn) {
        std::this_thread::yield();
    }
    isDone = true;
    lock.unlock();
    waiter.join();
}

}  // namespace
}  // namespace Orlix::DataProcessing::Threading
