// Connections that are blocked while other threads run their slots.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <future>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "orlixdataprocessingcore/threading/recursiveclock.h"
#include "orlixdataprocessingcore/utils/signal.h"
#include "orlixdataprocessingcore/utils/slowslot.h"

namespace {

using namespace Orlix::DataProcessing::Utils;
using namespace Orlix::DataProcessing::Threading;
using Orlix::Test::SlowSlot;

TEST(Signal, BlockingWaitsForRunningCallsOfOtherThreads) {
    Signal<void()> signal;
    SlowSlot slot;
    const auto connection = signal.connect([&] { slot(); });
    std::thread emitter([&] { signal(); });
    slot.waitUntilEntered();
    std::thread releaser([&] { slot.release(); });
    connection->setBlocked(false, true);
    EXPECT_TRUE(slot.isDone);
    emitter.join();
    releaser.join();
}

TEST(Signal, BlockingWithoutWaitingReturnsWhileACallRuns) {
    Signal<void()> signal;
    SlowSlot slot;
    const auto connection = signal.connect([&] { slot(); });
    std::thread emitter([&] { signal(); });
    slot.waitUntilEntered();
    connection->setBlocked(false, false);
    EXPECT_FALSE(connection->isEnabled());
    EXPECT_FALSE(slot.isDone);
    slot.release();
    emitter.join();
}

// Tells when a thread first waits on it.
class NoticingLock : public IRecursiveLockable {
public:
    void lock() override { lock_.lock(); }
    bool tryLock() override { return lock_.tryLock(); }
    void unlock() override { lock_.unlock(); }
    unsigned int releaseAll() override {
        notice();
        return lock_.releaseAll();
    }
    void reacquire(unsigned int depth) override { lock_.reacquire(depth); }

    void notice() {
        std::call_once(once_, [this] { noticed_.set_value(); });
    }
    void waitUntilNoticed() { noticed_.get_future().wait(); }

private:
    RecursiveCLock lock_;
    std::once_flag once_;
    std::promise<void> noticed_;
};

TEST(Signal, ACallCountsAsRunningFromTheMomentItsConnectionIsCopied) {
    const auto lockable = std::make_shared<NoticingLock>();
    Signal<void()> signal(lockable);
    SlowSlot first;
    signal.connect([&] { first(); });
    const auto second = signal.connect([] {});
    std::thread emitter([&] { signal(); });
    // The second connection is copied by now, though its turn comes later.
    first.waitUntilEntered();
    std::thread blocker([&] {
        second->setBlocked(false, true);
        EXPECT_TRUE(first.isDone) << "returned before the emission got past the slot";
        lockable->notice();
    });
    lockable->waitUntilNoticed();
    first.release();
    blocker.join();
    emitter.join();
}

TEST(Signal, TheWaitGivesTheOwnersLockUp) {
    const auto lockable = std::make_shared<RecursiveCLock>();
    Signal<void()> signal(lockable);
    std::promise<void> entered;
    std::atomic<bool> isDone{false};
    const auto connection = signal.connect([&] {
        entered.set_value();
        // The owner holds this lock while it waits for this call.
        UniqueLock<IRecursiveLockable> lock(*lockable);
        isDone = true;
    });
    std::thread emitter;
    {
        UniqueLock<IRecursiveLockable> lock(*lockable);
        UniqueLock<IRecursiveLockable> again(*lockable);
        emitter = std::thread([&] { signal(); });
        // Let the emitter copy the connection, which takes the lock.
        lock.unlock();
        again.unlock();
        entered.get_future().wait();
        lock.lock();
        again.lock();
        connection->setBlocked(false, true);
        EXPECT_TRUE(isDone);
    }
    emitter.join();
}

TEST(Signal, UnblockWaitsForABlockingThatIsUnderWay) {
    Signal<void()> signal;
    SlowSlot slot;
    std::atomic<bool> isRunning{true};
    const auto connection = signal.connect([&] {
        if (isRunning) {
            slot();
        }
    });
    std::thread emitter([&] { signal(); });
    slot.waitUntilEntered();
    std::thread blocker([&] { connection->setBlocked(false, true); });
    std::thread unblocker([&] {
        slot.release();
        connection->setBlocked(true, false);
    });
    emitter.join();
    blocker.join();
    unblocker.join();
    isRunning = false;
    connection->setBlocked(true, false);
    EXPECT_TRUE(connection->isEnabled());
}

TEST(Signal, ASlotThatBlocksItsOwnConnectionDoesNotWaitForItself) {
    Signal<void()> signal;
    std::shared_ptr<IConnection> connection;
    int calls = 0;
    connection = signal.connect([&] {
        ++calls;
        connection->setBlocked(false, true);
    });
    signal();
    signal();
    EXPECT_EQ(calls, 1);
}

TEST(Signal, ASlotThatBlocksALaterOneOfTheSameEmissionIsNotStuck) {
    Signal<void()> signal;
    std::shared_ptr<IConnection> later;
    int calls = 0;
    signal.connect([&] { later->setBlocked(false, true); });
    later = signal.connect([&] { ++calls; });
    signal();
    EXPECT_EQ(calls, 0);
}

// Two threads are in the first slot of an emission each when both block, each having the blocked
// connections still before it.
void blockFromTwoEmissions(bool sameConnection) {
    Signal<void()> signal;
    std::array<std::shared_ptr<IConnection>, 2> later;
    std::array<std::promise<void>, 2> entered;
    std::atomic<int> next{0};
    std::atomic<int> calls{0};
    signal.connect([&] {
        const auto own = static_cast<std::size_t>(next++);
        entered[own].set_value();
        entered[1 - own].get_future().wait();
        later[sameConnection ? 0 : own]->setBlocked(false, true);
    });
    for (auto& connection : later) {
        connection = signal.connect([&] { ++calls; });
    }
    std::thread first([&] { signal(); });
    std::thread second([&] { signal(); });
    first.join();
    second.join();
    EXPECT_FALSE(later[0]->isEnabled());
    EXPECT_EQ(later[1]->isEnabled(), sameConnection);
    later[0]->setBlocked(true, false);
    EXPECT_TRUE(later[0]->isEnabled());
}

TEST(Signal, TwoEmissionsThatBlockTheSameLaterSlotAreNotStuck) {
    blockFromTwoEmissions(true);
}

TEST(Signal, TwoEmissionsThatBlockDifferentLaterSlotsAreNotStuck) {
    blockFromTwoEmissions(false);
}

TEST(Signal, AnUnblockByARunningSlotOutlivesTheBlockingThatWaitsForIt) {
    const auto lockable = std::make_shared<NoticingLock>();
    Signal<void()> signal(lockable);
    std::promise<void> entered;
    std::shared_ptr<IConnection> connection;
    connection = signal.connect([&] {
        entered.set_value();
        lockable->waitUntilNoticed();
        connection->setBlocked(true, false);
    });
    std::thread emitter([&] { signal(); });
    entered.get_future().wait();
    connection->setBlocked(false, true);
    emitter.join();
    EXPECT_TRUE(connection->isEnabled());
}

TEST(Signal, ManyThreadsEmitConnectAndBlockAtOnce) {
    Signal<void(int)> signal;
    std::atomic<int> calls{0};
    std::atomic<bool> stop{false};
    const auto emit = [&] {
        while (!stop) {
            signal(1);
        }
    };
    std::thread first(emit);
    std::thread second(emit);
    for (int i = 0; i < 300; ++i) {
        bool isAlive = true;
        ScopedConnection connection(signal.connect([&](int value) {
            EXPECT_TRUE(isAlive);
            calls += value;
        }),
                                    true);
        connection.get()->setBlocked(false, true);
        connection.get()->setBlocked(true, false);
        connection.reset();
        isAlive = false;
    }
    stop = true;
    first.join();
    second.join();
    EXPECT_TRUE(signal.empty());
}

}  // namespace
