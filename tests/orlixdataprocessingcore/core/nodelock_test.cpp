// The node's lock: who has to wait for it.
#include <functional>
#include <latch>
#include <memory>
#include <thread>

#include "orlixdataprocessingcore/core/testnodes.h"
#include "orlixdataprocessingcore/threading/recursiveclock.h"
#include "orlixdataprocessingcore/threading/uniquelock.h"

namespace Orlix::DataProcessing::Core {
namespace {

// Tells of everyone who asks for it, before they wait.
class TellingLock final : public Threading::IRecursiveLockable {
public:
    void lock() override {
        onLock();
        inner_.lock();
    }
    [[nodiscard]] bool tryLock() override { return inner_.tryLock(); }
    void unlock() override { inner_.unlock(); }
    [[nodiscard]] unsigned int releaseAll() override { return inner_.releaseAll(); }
    void reacquire(unsigned int depth) override { inner_.reacquire(depth); }

    std::function<void()> onLock = [] {};

private:
    Threading::RecursiveCLock inner_;
};

TEST(NodeLock, OfASetterHoldsAStartBackBeforeTheNodeLeavesStopped) {
    const auto lock = std::make_shared<TellingLock>();
    TestNode node;
    node.setLock(lock);
    Threading::UniqueLock<Threading::IRecursiveLockable> setter(*lock);
    // The start asks for the lock, or has ended without it.
    std::latch isDecided(1);
    const auto decide = [&] {
        if (!isDecided.try_wait()) {
            isDecided.count_down();
        }
    };
    lock->onLock = decide;
    std::thread starter([&] {
        node.start({});
        decide();
    });
    isDecided.wait();
    EXPECT_EQ(node.getState(), NodeState::Stopped);
    setter.unlock();
    starter.join();
    EXPECT_EQ(node.getState(), NodeState::Running);
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
