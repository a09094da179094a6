// Refreshes of a resource pool as nodes ask for them: under their own locks, several at once.
#include "orlixdataprocessingcore/core/lockedconnection.h"

#include <gtest/gtest.h>

#include <barrier>
#include <condition_variable>
#include <latch>
#include <mutex>
#include <thread>

#include "orlixdataprocessingcore/core/defaultresourcepool.h"
#include "orlixdataprocessingcore/core/testdevice.h"
#include "orlixdataprocessingcore/core/testnodes.h"
#include "orlixdataprocessingcore/threading/uniquelock.h"

namespace Orlix::DataProcessing::Core {
namespace {

using NodeLock = Threading::UniqueLock<Threading::IRecursiveLockable>;

// Each look finds one device more.
class GrowingPool {
public:
    std::shared_ptr<DefaultResourcePool> pool =
        std::make_shared<DefaultResourcePool>([this](DefaultResourcePool& self) {
            ResourceInfo info;
            info.SetPropertyValue("SerialNumber", std::to_string(++devices_).c_str());
            self.addResource(info, std::make_shared<TestDevice>());
        });

private:
    std::atomic<int> devices_{0};
};

// A node that keeps a list of the pool's devices, as one does that lets its user choose.
class ChoosingNode : public AdvancedNode {
public:
    explicit ChoosingNode(const std::shared_ptr<IResourcePool>& pool)
        : AdvancedNode(pool), pool_(pool) {
        connection_.set(connectUnderLock(*pool->getResourcesChangedSignal(), getLock(),
                                         getThreadPool(), [this] { update(); }),
                        true);
    }
    ~ChoosingNode() override {
        cleanup();
        connection_.reset();
    }
    void loadSettings(const std::shared_ptr<ISettings>&) override {}
    void saveSettings(const std::shared_ptr<ISettings>&) override {}

    // What it knows when the refresh has returned.
    std::size_t refresh(const std::function<void()>& underTheLock = [] {}) {
        const NodeLock lock(*getLock());
        underTheLock();
        pool_->refreshResources(Utils::TypeInfo());
        return known_;
    }
    void waitUntilItKnows(std::size_t count) {
        std::unique_lock guard(mutex_);
        changed_.wait(guard, [&] { return known_ >= count; });
    }

    using AdvancedNode::getLock;
    std::function<void()> updating = [] {};
    std::atomic<std::thread::id> updatedIn{};
    std::atomic<int> updates{0};

private:
    void update() {
        updating();
        EXPECT_TRUE(getLock()->tryLock());
        getLock()->unlock();
        const std::size_t count = pool_->getResources(Utils::TypeInfo()).size();
        updatedIn = std::this_thread::get_id();
        ++updates;
        const std::lock_guard guard(mutex_);
        known_ = count;
        changed_.notify_all();
    }

    const std::shared_ptr<IResourcePool> pool_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::atomic<std::size_t> known_{0};
    Utils::ScopedConnection connection_;
};

class ResourceRefresh : public testing::Test {
protected:
    GrowingPool growing;
    const std::shared_ptr<DefaultResourcePool> pool = growing.pool;
};

TEST_F(ResourceRefresh, ShowsInTheNodeThatAsksForItBeforeItReturns) {
    ChoosingNode node(pool);
    EXPECT_EQ(node.refresh(), 1U);
    EXPECT_EQ(node.refresh(), 2U);
    EXPECT_EQ(node.updatedIn.load(), std::this_thread::get_id());
}

// The list is the same at every look.
std::shared_ptr<DefaultResourcePool> makeSteadyPool() {
    ResourceInfo info;
    info.SetPropertyValue("SerialNumber", "1");
    return std::make_shared<DefaultResourcePool>(
        [devices = IResourcePool::ResourceMap{{info, std::make_shared<TestDevice>()}}](
            DefaultResourcePool& self) { self.setResources(devices); });
}

TEST_F(ResourceRefresh, ShowsAChangeThatAnotherThreadHasMadeAndNotYetToldTheNodeOf) {
    const auto steady = makeSteadyPool();
    std::latch isTelling(1);
    std::latch mayGoOn(1);
    std::atomic<bool> first{true};
    // Stands before the node in the list of those who are told.
    const Utils::ScopedConnection slow(steady->getResourcesChangedSignal()->connect([&] {
        if (first.exchange(false)) {
            isTelling.count_down();
            mayGoOn.wait();
        }
    }),
                                       true);
    ChoosingNode node(steady);
    std::thread other([&] { steady->refreshResources({}); });
    isTelling.wait();
    EXPECT_EQ(node.refresh(), 1U);
    mayGoOn.count_down();
    other.join();
}

TEST_F(ResourceRefresh, ShowsAChangeWhoseUpdateOfTheNodeWasPutOffForItsLock) {
    const auto steady = makeSteadyPool();
    ChoosingNode node(steady);
    const std::size_t known = node.refresh(
        [&] { std::thread([&] { steady->refreshResources(Utils::TypeInfo()); }).join(); });
    EXPECT_EQ(known, 1U);
    EXPECT_EQ(node.updatedIn.load(), std::this_thread::get_id());
}

TEST_F(ResourceRefresh, WithinAnEmissionTellsNothingAnewUnlessTheListHasChanged) {
    const auto steady = makeSteadyPool();
    std::atomic<int> calls{0};
    const Utils::ScopedConnection slot(steady->getResourcesChangedSignal()->connect([&] {
        ++calls;
        steady->refreshResources({});
    }),
                                       true);
    steady->refreshResources({});
    EXPECT_EQ(calls, 1);
    steady->refreshResources({});
    EXPECT_EQ(calls, 1);
}

TEST_F(ResourceRefresh, ShowsAtOnceInANodeWhoseLockIsFree) {
    ChoosingNode asking(pool);
    ChoosingNode other(pool);
    asking.refresh();
    EXPECT_EQ(other.updatedIn.load(), std::this_thread::get_id());
}

TEST_F(ResourceRefresh, TwoNodesThatAskUnderTheirLocksAtOnceNeverWaitForEachOther) {
    for (std::size_t round = 1; round <= 50; ++round) {
        ChoosingNode first(pool);
        ChoosingNode second(pool);
        std::barrier bothHoldTheirLocks(2);
        const auto meet = [&] { bothHoldTheirLocks.arrive_and_wait(); };
        std::thread other([&] { EXPECT_GE(second.refresh(meet), 1U); });
        EXPECT_GE(first.refresh(meet), 1U);
        other.join();
        first.waitUntilItKnows(2 * round);
        second.waitUntilItKnows(2 * round);
    }
}

TEST_F(ResourceRefresh, ReachesANodeWhoseLockIsHeldLaterFromAPoolThreadOnceForAll) {
    ChoosingNode node(pool);
    std::thread::id refresher;
    {
        const NodeLock lock(*node.getLock());
        std::thread([&] {
            refresher = std::this_thread::get_id();
            pool->refreshResources(Utils::TypeInfo());
            pool->refreshResources(Utils::TypeInfo());
        }).join();
        EXPECT_EQ(node.updates, 0);
    }
    node.waitUntilItKnows(2);
    EXPECT_EQ(node.updates, 1);
    EXPECT_NE(node.updatedIn.load(), refresher);
    EXPECT_NE(node.updatedIn.load(), std::this_thread::get_id());
}

TEST_F(ResourceRefresh, ANodeMayBeDestroyedDuringTheEmission) {
    auto node = std::make_unique<ChoosingNode>(pool);
    std::latch isUpdating(1);
    std::atomic<bool> hasUpdated{false};
    std::latch mayEnd(1);
    node->updating = [&] {
        isUpdating.count_down();
        mayEnd.wait();
        hasUpdated = true;
    };
    std::thread emitter([&] { pool->refreshResources(Utils::TypeInfo()); });
    isUpdating.wait();
    std::thread releaser([&] { mayEnd.count_down(); });
    node.reset();
    EXPECT_TRUE(hasUpdated);
    releaser.join();
    emitter.join();
}

// The job that was put off finds the lock free only when the node is gone.
TEST_F(ResourceRefresh, ANodeMayBeDestroyedWhileItsUpdateIsPutOff) {
    for (int round = 0; round < 50; ++round) {
        auto node = std::make_unique<ChoosingNode>(pool);
        const auto nodeLock = node->getLock();
        nodeLock->lock();
        std::thread([&] { pool->refreshResources(Utils::TypeInfo()); }).join();
        std::thread destroyer([&] { node.reset(); });
        if (round % 2 == 0) {
            destroyer.join();
            nodeLock->unlock();
        } else {
            nodeLock->unlock();
            destroyer.join();
        }
    }
}

TEST_F(ResourceRefresh, DoesNotReachABlockedConnection) {
    const auto lock = std::make_shared<ChoosingNode>(pool)->getLock();
    int calls = 0;
    const auto connection = connectUnderLock(*pool->getResourcesChangedSignal(), lock,
                                             getDefaultThreadPool(), [&] { ++calls; });
    EXPECT_TRUE(connection->isConnected());
    EXPECT_FALSE(connection->hasExpiredTrackable());
    connection->setBlocked(false, true);
    EXPECT_FALSE(connection->isEnabled());
    pool->refreshResources(Utils::TypeInfo());
    EXPECT_EQ(calls, 0);
    connection->setBlocked(true, false);
    pool->refreshResources(Utils::TypeInfo());
    EXPECT_EQ(calls, 1);
    connection->disconnect();
    EXPECT_FALSE(connection->isConnected());
    pool->refreshResources(Utils::TypeInfo());
    EXPECT_EQ(calls, 1);
}

TEST_F(ResourceRefresh, NeedsALockAPoolAndWork) {
    auto& signal = *pool->getResourcesChangedSignal();
    const auto lock = std::make_shared<ChoosingNode>(pool)->getLock();
    const auto threads = getDefaultThreadPool();
    EXPECT_THROW(static_cast<void>(connectUnderLock(signal, nullptr, threads, [] {})),
                 GenICam::InvalidArgumentException);
    EXPECT_THROW(static_cast<void>(connectUnderLock(signal, lock, nullptr, [] {})),
                 GenICam::InvalidArgumentException);
    EXPECT_THROW(static_cast<void>(connectUnderLock(signal, lock, threads, {})),
                 GenICam::InvalidArgumentException);
    EXPECT_TRUE(signal.empty());
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
