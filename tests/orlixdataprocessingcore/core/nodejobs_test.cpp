// The jobs of a node: when it takes one, what it tells, what becomes of its values.
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

class NodeJobs : public NodeTest {};

TEST_F(NodeJobs, AWaitForSpaceEndsWithItsRunEvenIfAnotherBeginsAtOnce) {
    struct RestartingSink : TestSink {
        [[nodiscard]] bool hasSpace() const override {
            if (!std::exchange(hasRestarted, true)) {
                source->stop();
                source->start({});
            }
            return true;
        }
        TestSource* source = nullptr;
        mutable bool hasRestarted = false;
    };
    TestSource source;
    const auto sink = std::make_shared<RestartingSink>();
    sink->source = &source;
    static_cast<void>(source.attachOutputSink("Out", sink));
    source.start({});
    EXPECT_FALSE(source.waitUntilSpaceAvailable());
    EXPECT_TRUE(source.waitUntilSpaceAvailable());
    source.stop();
}

TEST_F(NodeJobs, RunsNoJobWhileAnOutputHasNoSpace) {
    const auto sink = std::make_shared<TestSink>();
    static_cast<void>(node->attachOutputSink("Out", sink));
    int woken = 0;
    static_cast<void>(node->getCanExecuteSignal()->connect([&] { ++woken; }));
    node->start({});
    woken = 0;
    sink->setFull(true);
    EXPECT_FALSE(node->canExecute());
    EXPECT_EQ(runOnce(*node, {}), StartExecutionResult::Busy);
    sink->setFull(false);
    EXPECT_EQ(woken, 1);
    EXPECT_TRUE(node->canExecute());
    EXPECT_EQ(runOnce(*node, {}), StartExecutionResult::Executed);
}

TEST_F(NodeJobs, RunsOneJobAtATimeAndTellsWhenItIsFreeAgain) {
    std::latch begun(1);
    std::latch mayEnd(1);
    node->work = [&](TestNode&) {
        begun.count_down();
        mayEnd.wait();
    };
    node->start({});
    std::atomic<int> woken{0};
    static_cast<void>(node->getCanExecuteSignal()->connect([&] { ++woken; }));
    std::thread worker([&] { static_cast<void>(runOnce(*node, {})); });
    begun.wait();
    EXPECT_FALSE(node->canExecute());
    EXPECT_EQ(runOnce(*node, {}), StartExecutionResult::Busy);
    mayEnd.count_down();
    worker.join();
    EXPECT_EQ(woken, 1);
}

TEST_F(NodeJobs, AProviderWithoutAJobRunsNothing) {
    node->work = [](TestNode&) { FAIL(); };
    node->start({});
    EXPECT_EQ(node->startExecution([](UpdatePtr&, PinValues&) { return false; }),
              StartExecutionResult::NoJob);
    EXPECT_THROW(static_cast<void>(node->startExecution({})), InvalidArgumentException);
}

TEST_F(NodeJobs, AnExceptionOfTheProviderLeavesTheNodeUsable) {
    node->start({});
    EXPECT_THROW(static_cast<void>(node->startExecution(
                     [](UpdatePtr&, PinValues&) -> bool { throw std::runtime_error("no"); })),
                 std::runtime_error);
    EXPECT_EQ(runOnce(*node, {}), StartExecutionResult::Executed);
}

TEST_F(NodeJobs, TheSignalsOfAJobComeInOrderAroundItsDelivery) {
    const auto sink = std::make_shared<TestSink>();
    static_cast<void>(node->attachOutputSink("Out", sink));
    std::vector<std::string> events;
    static_cast<void>(node->getExecutionStartedSignal()->connect(
        [&](const UpdatePtr&) { events.emplace_back("started"); }));
    static_cast<void>(node->getExecutionFinishingSignal()->connect(
        [&](const UpdatePtr&, const FinishedValues& values) {
            events.push_back("finishing " + std::to_string(sink->entries().size()));
            EXPECT_EQ(values.at("Out")->get<Integer>(true)->get(), 4);
        }));
    static_cast<void>(node->getExecutionFinishedSignal()->connect([&](const UpdatePtr&) {
        events.push_back("finished " + std::to_string(sink->entries().size()));
    }));
    node->start({});
    static_cast<void>(runOnce(*node, {{"In", integer(4)}}));
    EXPECT_EQ(events, (std::vector<std::string>{"started", "finishing 0", "finished 1"}));
}

TEST_F(NodeJobs, AFinishingSlotMayReplaceAValue) {
    const auto sink = std::make_shared<TestSink>();
    static_cast<void>(node->attachOutputSink("Out", sink));
    static_cast<void>(node->getExecutionFinishingSignal()->connect(
        [](const UpdatePtr&, const FinishedValues& values) { *values.at("Out") = integer(9); }));
    node->start({});
    static_cast<void>(runOnce(*node, {{"In", integer(4)}}));
    EXPECT_EQ(sink->values(), std::vector<std::int64_t>{9});
}

TEST_F(NodeJobs, AnAbortedUpdateIsSkipped) {
    const auto sink = std::make_shared<TestSink>();
    static_cast<void>(node->attachOutputSink("Out", sink));
    node->start({});
    const auto before = makeUpdate();
    const auto during = makeUpdate();
    node->abort(before);
    node->work = [](TestNode&) { FAIL(); };
    static_cast<void>(runOnce(*node, {}, before));
    node->work = [&](TestNode& self) {
        self.out(1);
        self.abort(during);
    };
    static_cast<void>(runOnce(*node, {}, during));
    EXPECT_EQ(sink->skips(), 2U);
    node->work = TestNode::sum;
    static_cast<void>(runOnce(*node, {{"In", integer(2)}}));
    EXPECT_EQ(sink->values(), std::vector<std::int64_t>{2});
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
