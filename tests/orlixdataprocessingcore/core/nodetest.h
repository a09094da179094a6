// The fixture of the tests of what every node has.
#pragma once

#include <memory>
#include <thread>
#include <vector>

#include "orlixdataprocessingcore/core/testnodes.h"
#include "orlixdataprocessingcore/threading/lockable.h"

namespace Orlix::DataProcessing::Core {

class NodeTest : public testing::Test {
protected:
    std::shared_ptr<TestNode> node = std::make_shared<TestNode>();
    std::vector<NodeState> states;

    void watchStates() {
        static_cast<void>(
            node->getStateChangedSignal()->connect([this] { states.push_back(node->getState()); }));
    }
};

// Whether another thread could take the lock now.
inline bool isFree(Threading::IRecursiveLockable& lock) {
    bool taken = false;
    std::thread([&] {
        taken = lock.tryLock();
        if (taken) {
            lock.unlock();
        }
    }).join();
    return taken;
}

}  // namespace Orlix::DataProcessing::Core
