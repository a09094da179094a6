// The states of a node: start, stop and cleanup, from any thread.
#include <functional>
#include <stdexcept>
#include <thread>

#include "orlixdataprocessingcore/core/nodebase.h"
#include "orlixdataprocessingcore/core/nodetest.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::DataProcessing::Core {
namespace {

using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;

class NodeLife : public NodeTest {};

TEST_F(NodeLife, GoesThroughItsStatesAndTellsOfEach) {
    watchStates();
    node->starting = [this] { EXPECT_EQ(node->getState(), NodeState::Starting); };
    node->stopping = [this] { EXPECT_EQ(node->getState(), NodeState::Stopping); };
    node->start({});
    node->stop();
    EXPECT_EQ(states, (std::vector<NodeState>{NodeState::Starting, NodeState::Running,
                                              NodeState::Stopping, NodeState::Stopped}));
}

TEST_F(NodeLife, CallsTheNodeWithItsLockFree) {
    const auto check = [this] { EXPECT_TRUE(isFree(*node->getLock())); };
    node->starting = check;
    node->stopping = check;
    node->work = [&](TestNode&) { check(); };
    node->start({});
    EXPECT_EQ(runOnce(*node, {}), StartExecutionResult::Executed);
    node->stop();
}

TEST_F(NodeLife, AFailedStartLeavesItStoppedWithoutStopping) {
    bool stopped = false;
    watchStates();
    node->starting = [] { throw RuntimeException("no", __FILE__, __LINE__); };
    node->stopping = [&] { stopped = true; };
    EXPECT_THROW(node->start({}), RuntimeException);
    EXPECT_EQ(node->getState(), NodeState::Stopped);
    EXPECT_FALSE(stopped);
    EXPECT_EQ(states, (std::vector<NodeState>{NodeState::Starting, NodeState::Stopped}));
}

TEST_F(NodeLife, ASecondStartIsRefused) {
    node->start({});
    EXPECT_THROW(node->start({}), RuntimeException);
    EXPECT_EQ(node->getState(), NodeState::Running);
}

TEST_F(NodeLife, StoppingAStoppedNodeDoesNothing) {
    node->stopping = [] { FAIL(); };
    node->stop();
}

TEST_F(NodeLife, AnExceptionOfOnStoppingStillStopsIt) {
    node->start({});
    node->stopping = [] { throw std::runtime_error("no"); };
    EXPECT_THROW(node->stop(), std::runtime_error);
    EXPECT_EQ(node->getState(), NodeState::Stopped);
}

TEST_F(NodeLife, AStopDuringTheStartTakesEffectBehindIt) {
    bool stopped = false;
    node->starting = [this] { node->stop(); };
    node->stopping = [&] { stopped = true; };
    node->start({});
    EXPECT_TRUE(stopped);
    EXPECT_EQ(node->getState(), NodeState::Stopped);
}

TEST_F(NodeLife, AStopFromWithinOnStoppingDoesNotWaitForItself) {
    node->stopping = [this] { node->stop(); };
    node->start({});
    node->stop();
    EXPECT_EQ(node->getState(), NodeState::Stopped);
}

TEST_F(NodeLife, AStopWaitsForAStopOnAnotherThread) {
    std::latch begun(1);
    std::latch mayEnd(1);
    node->stopping = [&] {
        begun.count_down();
        mayEnd.wait();
    };
    node->start({});
    std::thread stopper([&] { node->stop(); });
    begun.wait();
    std::thread releaser([&] { mayEnd.count_down(); });
    node->stop();
    EXPECT_EQ(node->getState(), NodeState::Stopped);
    releaser.join();
    stopper.join();
}

TEST_F(NodeLife, AStopWaitsUntilTheEndHasBeenToldOf) {
    std::latch begun(1);
    std::latch mayEnd(1);
    std::atomic<bool> told{false};
    node->start({});
    static_cast<void>(node->getStateChangedSignal()->connect([&] {
        if (node->getState() == NodeState::Stopped) {
            begun.count_down();
            mayEnd.wait();
            told = true;
        }
    }));
    std::thread stopper([&] { node->stop(); });
    begun.wait();
    std::thread releaser([&] { mayEnd.count_down(); });
    node->cleanup();
    EXPECT_TRUE(told);
    releaser.join();
    stopper.join();
}

TEST_F(NodeLife, CleanupWaitsForAJobThatHasStoppedItsOwnNode) {
    std::latch hasStopped(1);
    std::latch mayEnd(1);
    std::atomic<bool> ended{false};
    node->work = [&](TestNode& self) {
        self.stop();
        hasStopped.count_down();
        mayEnd.wait();
        ended = true;
    };
    node->start({});
    std::thread worker([&] { static_cast<void>(runOnce(*node, {})); });
    hasStopped.wait();
    EXPECT_EQ(node->getState(), NodeState::Stopped);
    std::thread releaser([&] { mayEnd.count_down(); });
    node->cleanup();
    EXPECT_TRUE(ended);
    releaser.join();
    worker.join();
}

TEST_F(NodeLife, AJobMayStopItsNodeWhileAnotherThreadDoes) {
    std::latch isStopping(1);
    node->work = [&](TestNode& self) {
        isStopping.wait();
        self.stop();
    };
    node->stopping = [&] { isStopping.count_down(); };
    std::latch begun(1);
    static_cast<void>(
        node->getExecutionStartedSignal()->connect([&](const UpdatePtr&) { begun.count_down(); }));
    node->start({});
    std::thread worker([&] { static_cast<void>(runOnce(*node, {})); });
    begun.wait();
    node->stop();
    EXPECT_EQ(node->getState(), NodeState::Stopped);
    worker.join();
}

TEST_F(NodeLife, StopWaitsForTheJobThatRuns) {
    std::latch begun(1);
    std::latch mayEnd(1);
    std::atomic<bool> ended{false};
    node->work = [&](TestNode&) {
        begun.count_down();
        mayEnd.wait();
        ended = true;
    };
    node->stopping = [&] { mayEnd.count_down(); };
    node->start({});
    std::thread worker([&] { static_cast<void>(runOnce(*node, {})); });
    begun.wait();
    node->stop();
    EXPECT_TRUE(ended);
    worker.join();
}

TEST_F(NodeLife, AJobMayStopItsOwnNode) {
    node->work = [this](TestNode&) { node->stop(); };
    node->start({});
    EXPECT_EQ(runOnce(*node, {}), StartExecutionResult::Executed);
    EXPECT_EQ(node->getState(), NodeState::Stopped);
}

TEST_F(NodeLife, CleanupEndsARunAndLetsNoExceptionOut) {
    const Utils::LogCapture log;
    node->start({});
    node->stopping = [] { throw 5; };
    node->cleanup();
    EXPECT_EQ(node->getState(), NodeState::Stopped);
    EXPECT_EQ(log.getLines("orlix.dataprocessing.core.Node").size(), 1U);
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
