// The resources of a node.
#include <stdexcept>
#include <string>
#include <thread>

#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/nodebase.h"
#include "orlixdataprocessingcore/core/nodetest.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::DataProcessing::Core {
namespace {

using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;

class ResourceNode : public TestNode {
public:
    ~ResourceNode() override { cleanup(); }
    std::vector<std::string> calls;
    std::function<void()> called = [] {};
    bool fails = false;

protected:
    std::vector<std::shared_ptr<IError>> allocateAdditionalResources(
        const std::shared_ptr<IResourcePool>&, bool flag) override {
        calls.push_back(flag ? "allocate true" : "allocate false");
        called();
        if (fails) {
            throw GenICam::RuntimeException("none left", __FILE__, __LINE__);
        }
        return {};
    }
    void freeAdditionalResources(bool flag) override {
        calls.push_back(flag ? "free true" : "free false");
        called();
    }
};

TEST(NodeBaseResources, AreAllocatedWithTrueAndFreedWithFalse) {
    ResourceNode node;
    EXPECT_TRUE(node.allocateResources().empty());
    node.freeResources();
    node.freeResources();
    EXPECT_EQ(node.calls, (std::vector<std::string>{"allocate true", "free false", "free false"}));
}

TEST(NodeBaseResources, AreFreedAlsoWithoutAnAllocation) {
    ResourceNode node;
    node.freeResources();
    EXPECT_EQ(node.calls, std::vector<std::string>{"free false"});
}

TEST(NodeBaseResources, AreAllocatedAndFreedWithTheLockFree) {
    std::vector<bool> wasFree;
    const auto lock = std::make_shared<Threading::RecursiveCLock>();
    {
        ResourceNode node;
        node.setLock(lock);
        node.called = [&] { wasFree.push_back(isFree(*lock)); };
        static_cast<void>(node.allocateResources());
        node.freeResources();
    }
    // The third one is the free of the destructor.
    EXPECT_EQ(wasFree, (std::vector<bool>{true, true, true}));
}

TEST(NodeBaseResources, CleanupLetsNoExceptionOfTheFreeOut) {
    const Utils::LogCapture log;
    ResourceNode node;
    node.called = [] { throw 5; };
    node.start({});
    node.cleanup();
    EXPECT_EQ(node.getState(), NodeState::Stopped);
    EXPECT_EQ(log.getLines("orlix.dataprocessing.core.Node").size(), 1U);
    node.called = [] {};
}

TEST(NodeBaseResources, AFailureComesBackAsAnErrorAndForbidsTheStart) {
    ResourceNode node;
    node.fails = true;
    const auto failures = node.allocateResources();
    ASSERT_EQ(failures.size(), 1U);
    EXPECT_EQ(failures[0]->getDescription(), "none left");
    EXPECT_THROW(node.start({}), RuntimeException);
    EXPECT_EQ(node.getState(), NodeState::Stopped);
    node.freeResources();
    node.start({});
}

TEST(NodeBaseResources, CleanupFreesThemAfterTheStop) {
    ResourceNode node;
    static_cast<void>(node.allocateResources());
    node.stopping = [&] { node.calls.emplace_back("stop"); };
    node.start({});
    node.cleanup();
    EXPECT_EQ(node.calls, (std::vector<std::string>{"allocate true", "stop", "free false"}));
}

TEST(NodeBaseResources, CleanupDuringAStopOnAnotherThreadWaitsForItsEndAndFreesThen) {
    ResourceNode node;
    static_cast<void>(node.allocateResources());
    std::latch isStopping(1);
    std::latch mayEnd(1);
    node.stopping = [&] {
        isStopping.count_down();
        mayEnd.wait();
        node.calls.emplace_back("stop");
    };
    node.start({});
    std::thread stopper([&] { node.stop(); });
    isStopping.wait();
    EXPECT_EQ(node.getState(), NodeState::Stopping);
    std::thread releaser([&] { mayEnd.count_down(); });
    node.cleanup();
    EXPECT_EQ(node.getState(), NodeState::Stopped);
    EXPECT_EQ(node.calls, (std::vector<std::string>{"allocate true", "stop", "free false"}));
    releaser.join();
    stopper.join();
}

// As a node does that loses what it needs while it is being stopped.
TEST(NodeBaseResources, CleanupWithinOnStoppingDoesNotWaitForItself) {
    ResourceNode node;
    node.stopping = [&] { node.cleanup(); };
    node.start({});
    node.stop();
    EXPECT_EQ(node.getState(), NodeState::Stopped);
    EXPECT_EQ(node.calls, std::vector<std::string>{"free false"});
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
