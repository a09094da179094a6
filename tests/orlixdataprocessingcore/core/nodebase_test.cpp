// Pins, states, errors and signals that every node has.
#include "orlixdataprocessingcore/core/nodebase.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/testnodes.h"
#include "orlixdataprocessingcore/threading/recursiveclock.h"
#include "orlixdataprocessingcore/threading/uniquelock.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::DataProcessing::Core {
namespace {

using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;

Utils::TypeInfo integerType() {
    return Utils::TypeInfo::getTypeInfo<Integer>(true);
}

std::shared_ptr<IError> makeError(const char* text, int second) {
    return std::make_shared<DeviceError>(
        text, DateTime(DateTime::TimePoint(std::chrono::seconds(second))));
}

// Whether another thread could take the lock now.
bool isFree(Threading::IRecursiveLockable& lock) {
    bool taken = false;
    std::thread([&] {
        taken = lock.tryLock();
        if (taken) {
            lock.unlock();
        }
    }).join();
    return taken;
}

class NodeBaseTest : public testing::Test {
protected:
    std::shared_ptr<TestNode> node = std::make_shared<TestNode>();
    std::vector<NodeState> states;

    void watchStates() {
        static_cast<void>(
            node->getStateChangedSignal()->connect([this] { states.push_back(node->getState()); }));
    }
};

TEST_F(NodeBaseTest, GoesThroughItsStatesAndTellsOfEach) {
    watchStates();
    node->starting = [this] { EXPECT_EQ(node->getState(), NodeState::Starting); };
    node->stopping = [this] { EXPECT_EQ(node->getState(), NodeState::Stopping); };
    node->start({});
    node->stop();
    EXPECT_EQ(states, (std::vector<NodeState>{NodeState::Starting, NodeState::Running,
                                              NodeState::Stopping, NodeState::Stopped}));
}

TEST_F(NodeBaseTest, CallsTheNodeWithItsLockFree) {
    const auto check = [this] { EXPECT_TRUE(isFree(*node->getLock())); };
    node->starting = check;
    node->stopping = check;
    node->work = [&](TestNode&) { check(); };
    node->start({});
    EXPECT_EQ(runOnce(*node, {}), StartExecutionResult::Executed);
    node->stop();
}

TEST_F(NodeBaseTest, LeavesStoppedOnlyWhenASetterHasReleasedTheLock) {
    const auto lock = node->getLock();
    std::latch isHeld(1);
    std::latch mayRelease(1);
    std::thread setter([&] {
        const Threading::UniqueLock<Threading::IRecursiveLockable> guard(*lock);
        isHeld.count_down();
        mayRelease.wait();
        EXPECT_EQ(node->getState(), NodeState::Stopped);
    });
    isHeld.wait();
    std::thread starter([&] { node->start({}); });
    mayRelease.count_down();
    setter.join();
    starter.join();
    EXPECT_EQ(node->getState(), NodeState::Running);
}

TEST_F(NodeBaseTest, AFailedStartLeavesItStoppedWithoutStopping) {
    bool stopped = false;
    watchStates();
    node->starting = [] { throw RuntimeException("no", __FILE__, __LINE__); };
    node->stopping = [&] { stopped = true; };
    EXPECT_THROW(node->start({}), RuntimeException);
    EXPECT_EQ(node->getState(), NodeState::Stopped);
    EXPECT_FALSE(stopped);
    EXPECT_EQ(states, (std::vector<NodeState>{NodeState::Starting, NodeState::Stopped}));
}

TEST_F(NodeBaseTest, ASecondStartIsRefused) {
    node->start({});
    EXPECT_THROW(node->start({}), RuntimeException);
    EXPECT_EQ(node->getState(), NodeState::Running);
}

TEST_F(NodeBaseTest, StoppingAStoppedNodeDoesNothing) {
    node->stopping = [] { FAIL(); };
    node->stop();
}

TEST_F(NodeBaseTest, AnExceptionOfOnStoppingStillStopsIt) {
    node->start({});
    node->stopping = [] { throw std::runtime_error("no"); };
    EXPECT_THROW(node->stop(), std::runtime_error);
    EXPECT_EQ(node->getState(), NodeState::Stopped);
}

TEST_F(NodeBaseTest, AStopDuringTheStartTakesEffectBehindIt) {
    bool stopped = false;
    node->starting = [this] { node->stop(); };
    node->stopping = [&] { stopped = true; };
    node->start({});
    EXPECT_TRUE(stopped);
    EXPECT_EQ(node->getState(), NodeState::Stopped);
}

TEST_F(NodeBaseTest, AStopFromWithinOnStoppingDoesNotWaitForItself) {
    node->stopping = [this] { node->stop(); };
    node->start({});
    node->stop();
    EXPECT_EQ(node->getState(), NodeState::Stopped);
}

TEST_F(NodeBaseTest, AStopWaitsForAStopOnAnotherThread) {
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

TEST_F(NodeBaseTest, AStopWaitsUntilTheEndHasBeenToldOf) {
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

TEST_F(NodeBaseTest, CleanupWaitsForAJobThatHasStoppedItsOwnNode) {
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

TEST_F(NodeBaseTest, AJobMayStopItsNodeWhileAnotherThreadDoes) {
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

TEST_F(NodeBaseTest, StopWaitsForTheJobThatRuns) {
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

TEST_F(NodeBaseTest, AJobMayStopItsOwnNode) {
    node->work = [this](TestNode&) { node->stop(); };
    node->start({});
    EXPECT_EQ(runOnce(*node, {}), StartExecutionResult::Executed);
    EXPECT_EQ(node->getState(), NodeState::Stopped);
}

TEST_F(NodeBaseTest, CleanupEndsARunAndLetsNoExceptionOut) {
    const Utils::LogCapture log;
    node->start({});
    node->stopping = [] { throw 5; };
    node->cleanup();
    EXPECT_EQ(node->getState(), NodeState::Stopped);
    EXPECT_EQ(log.getLines("orlix.dataprocessing.core.Node").size(), 1U);
}

TEST_F(NodeBaseTest, TakesItsLockOnlyOnce) {
    const auto lock = std::make_shared<Threading::RecursiveCLock>();
    EXPECT_THROW(node->setLock(nullptr), InvalidArgumentException);
    node->setLock(lock);
    EXPECT_EQ(node->getLock(), lock);
    EXPECT_THROW(node->setLock(lock), RuntimeException);
}

TEST_F(NodeBaseTest, AnInputTakesOneConnectionOfAFittingType) {
    EXPECT_TRUE(node->canConfigure("In"));
    EXPECT_THROW(static_cast<void>(
                     node->configureInputType("In", Utils::TypeInfo::getTypeInfo<String>(true))),
                 InvalidArgumentException);
    const auto handle = node->configureInputType("In", integerType());
    EXPECT_TRUE(node->isConfigured(handle));
    EXPECT_FALSE(node->canConfigure("In"));
    EXPECT_THROW(static_cast<void>(node->configureInputType("In", integerType())),
                 RuntimeException);
    node->unconfigureInputType(handle);
    EXPECT_FALSE(node->isConfigured(handle));
    EXPECT_THROW(node->unconfigureInputType(handle), InvalidArgumentException);
    EXPECT_THROW(node->unconfigureInputType(nullptr), InvalidArgumentException);
}

TEST_F(NodeBaseTest, AnUnknownPinIsNamedInTheException) {
    const auto sink = std::make_shared<TestSink>();
    try {
        static_cast<void>(node->attachOutputSink("Nowhere", sink));
        FAIL();
    } catch (const InvalidArgumentException& exception) {
        EXPECT_NE(gcstring(exception.GetDescription()).find("\"Nowhere\""), gcstring::npos);
    }
    EXPECT_THROW(static_cast<void>(node->canConfigure("Nowhere")), InvalidArgumentException);
    EXPECT_THROW(static_cast<void>(node->isAutoResetEnabled("Nowhere")), InvalidArgumentException);
    EXPECT_THROW(node->removeInput("Nowhere"), InvalidArgumentException);
    EXPECT_THROW(node->removeOutput("Nowhere"), InvalidArgumentException);
}

// Tells what it throws for a pin of that name.
std::string refusalOf(const std::function<void()>& createPin) {
    try {
        createPin();
    } catch (const InvalidArgumentException& exception) {
        return exception.GetDescription();
    }
    return "";
}

TEST_F(NodeBaseTest, APinOfANameThatIsTakenOrEmptyIsNotMade) {
    Utils::ResettableProperty<Integer> property;
    const auto createInput = [&](const char* name) {
        return refusalOf(
            [&] { node->createInput(name, "", property, integer(0), false, unlimitedJobs); });
    };
    const auto createOutput = [&](const char* name) {
        return refusalOf([&] { node->createOutput(name, "", property, true, unlimitedJobs); });
    };
    EXPECT_EQ(createInput("In"), "Input \"In\" can't be made: the name is taken or empty.");
    EXPECT_EQ(createInput(""), "Input \"\" can't be made: the name is taken or empty.");
    EXPECT_EQ(createOutput("Out"), "Output \"Out\" can't be made: the name is taken or empty.");
    TestSource source;
    EXPECT_EQ(refusalOf([&] { source.createOutput("Out", "", integerType(), true, 1); }),
              "Output \"Out\" can't be made: the name is taken or empty.");
    EXPECT_EQ(node->getInputDescriptors().size(), 1U);
    EXPECT_EQ(node->getOutputDescriptors().size(), 1U);
}

TEST_F(NodeBaseTest, TellsOfAChangedAutoResetOnce) {
    std::vector<gcstring> changed;
    static_cast<void>(node->getAutoResetChangedSignal()->connect(
        [&](const gcstring& pin) { changed.push_back(pin); }));
    EXPECT_TRUE(node->isAutoResetEnabled("In"));
    node->setAutoResetEnabled("In", false);
    node->setAutoResetEnabled("In", false);
    EXPECT_FALSE(node->isAutoResetEnabled("In"));
    EXPECT_EQ(changed, std::vector<gcstring>{"In"});
}

TEST_F(NodeBaseTest, SinksAreServedInTheOrderOfTheirAttachment) {
    struct OrderSink : TestSink {
        OrderSink(std::vector<int>& allNumbers, int ownNumber)
            : numbers(allNumbers), number(ownNumber) {}
        void put(const UpdatePtr&, const Utils::Variant&) override { numbers.push_back(number); }
        std::vector<int>& numbers;
        int number;
    };
    std::vector<int> order;
    static_cast<void>(node->attachOutputSink("Out", std::make_shared<OrderSink>(order, 1)));
    static_cast<void>(node->attachOutputSink("Out", std::make_shared<OrderSink>(order, 2)));
    node->start({});
    static_cast<void>(runOnce(*node, {}));
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST_F(NodeBaseTest, ASinkThatIsAttachedTwiceGetsEveryValueTwice) {
    const auto sink = std::make_shared<TestSink>();
    static_cast<void>(node->attachOutputSink("Out", sink));
    static_cast<void>(node->attachOutputSink("Out", sink));
    node->start({});
    static_cast<void>(runOnce(*node, {{"In", integer(5)}}));
    EXPECT_EQ(sink->values(), (std::vector<std::int64_t>{5, 5}));
    const auto entries = sink->entries();
    EXPECT_EQ(entries[0].update, entries[1].update);
}

TEST_F(NodeBaseTest, AWaitForSpaceEndsWithItsRunEvenIfAnotherBeginsAtOnce) {
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

TEST_F(NodeBaseTest, ADetachedSinkGetsNothingAndHasNoListener) {
    const auto sink = std::make_shared<TestSink>();
    const auto handle = node->attachOutputSink("Out", sink);
    EXPECT_TRUE(node->isOutputSinkAttached(handle));
    EXPECT_TRUE(sink->hasListener());
    node->detachOutputSink(handle);
    EXPECT_FALSE(node->isOutputSinkAttached(handle));
    EXPECT_FALSE(sink->hasListener());
    EXPECT_THROW(node->detachOutputSink(handle), InvalidArgumentException);
    node->start({});
    static_cast<void>(runOnce(*node, {}));
    EXPECT_TRUE(sink->entries().empty());
}

TEST_F(NodeBaseTest, ARemovedOutputDetachesItsSinks) {
    const auto sink = std::make_shared<TestSink>();
    const auto handle = node->attachOutputSink("Out", sink);
    int changes = 0;
    static_cast<void>(node->getOutputsChangedSignal()->connect([&] { ++changes; }));
    node->removeOutput("Out");
    EXPECT_EQ(changes, 1);
    EXPECT_FALSE(sink->hasListener());
    EXPECT_FALSE(node->isOutputSinkAttached(handle));
    EXPECT_TRUE(node->getOutputDescriptors().empty());
}

TEST_F(NodeBaseTest, ARemovedOutputLeavesTheListenerOfASinkThatReadsAnotherPin) {
    TestSource source({"A", "B"});
    const auto sink = std::make_shared<TestSink>();
    static_cast<void>(source.attachOutputSink("A", sink));
    static_cast<void>(source.attachOutputSink("B", sink));
    source.removeOutput("A");
    EXPECT_TRUE(sink->hasListener());
    source.removeOutput("B");
    EXPECT_FALSE(sink->hasListener());
}

TEST_F(NodeBaseTest, ASinkThatThrowsConcernsNoOther) {
    struct ThrowingSink : TestSink {
        void put(const UpdatePtr&, const Utils::Variant&) override { throw 5; }
    };
    const Utils::LogCapture log;
    const auto sink = std::make_shared<TestSink>();
    static_cast<void>(node->attachOutputSink("Out", std::make_shared<ThrowingSink>()));
    static_cast<void>(node->attachOutputSink("Out", sink));
    node->start({});
    static_cast<void>(runOnce(*node, {{"In", integer(3)}}));
    EXPECT_EQ(sink->values(), std::vector<std::int64_t>{3});
    EXPECT_FALSE(node->hasError());
}

TEST_F(NodeBaseTest, RunsNoJobWhileAnOutputHasNoSpace) {
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

TEST_F(NodeBaseTest, RunsOneJobAtATimeAndTellsWhenItIsFreeAgain) {
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

TEST_F(NodeBaseTest, AProviderWithoutAJobRunsNothing) {
    node->work = [](TestNode&) { FAIL(); };
    node->start({});
    EXPECT_EQ(node->startExecution([](UpdatePtr&, PinValues&) { return false; }),
              StartExecutionResult::NoJob);
    EXPECT_THROW(static_cast<void>(node->startExecution({})), InvalidArgumentException);
}

TEST_F(NodeBaseTest, AnExceptionOfTheProviderLeavesTheNodeUsable) {
    node->start({});
    EXPECT_THROW(static_cast<void>(node->startExecution(
                     [](UpdatePtr&, PinValues&) -> bool { throw std::runtime_error("no"); })),
                 std::runtime_error);
    EXPECT_EQ(runOnce(*node, {}), StartExecutionResult::Executed);
}

TEST_F(NodeBaseTest, TheSignalsOfAJobComeInOrderAroundItsDelivery) {
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

TEST_F(NodeBaseTest, AFinishingSlotMayReplaceAValue) {
    const auto sink = std::make_shared<TestSink>();
    static_cast<void>(node->attachOutputSink("Out", sink));
    static_cast<void>(node->getExecutionFinishingSignal()->connect(
        [](const UpdatePtr&, const FinishedValues& values) { *values.at("Out") = integer(9); }));
    node->start({});
    static_cast<void>(runOnce(*node, {{"In", integer(4)}}));
    EXPECT_EQ(sink->values(), std::vector<std::int64_t>{9});
}

TEST_F(NodeBaseTest, AnAbortedUpdateIsSkipped) {
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

TEST_F(NodeBaseTest, KeepsItsErrorsInTheOrderOfTheirTimes) {
    const auto later = makeError("later", 2);
    const auto sooner = makeError("sooner", 1);
    std::vector<std::pair<std::size_t, std::size_t>> sizes;
    static_cast<void>(
        node->getErrorChangedSignal()->connect([&](const ErrorSet& before, const ErrorSet& after) {
            sizes.emplace_back(before.size(), after.size());
        }));
    EXPECT_TRUE(node->setError(later));
    EXPECT_TRUE(node->setError(sooner));
    EXPECT_FALSE(node->setError(sooner));
    EXPECT_FALSE(node->setError(nullptr));
    EXPECT_EQ(*node->getErrors().begin(), sooner);
    EXPECT_TRUE(node->resetError(sooner));
    EXPECT_FALSE(node->resetError(sooner));
    EXPECT_TRUE(node->hasError());
    EXPECT_EQ(sizes, (std::vector<std::pair<std::size_t, std::size_t>>{{0, 1}, {1, 2}, {2, 1}}));
}

TEST_F(NodeBaseTest, TwoErrorsOfTheSameTimeAreTwoEntries) {
    EXPECT_TRUE(node->setError(makeError("one", 1)));
    EXPECT_TRUE(node->setError(makeError("two", 1)));
    EXPECT_EQ(node->getErrors().size(), 2U);
}

TEST_F(NodeBaseTest, ANodeOwnErrorSurvivesGoodJobsAndStarts) {
    const auto error = makeError("device", 1);
    node->setError(error);
    node->start({});
    static_cast<void>(runOnce(*node, {}));
    EXPECT_TRUE(node->hasError());
}

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

TEST(NodeTypes, AreRegisteredWithTheirBases) {
    const TestNode node;
    const auto simple = Utils::TypeInfo::getTypeInfo<SimpleNode>(true);
    EXPECT_EQ(node.getTypeInfo(true), simple);
    EXPECT_TRUE(simple.canConvert(Utils::TypeInfo::getTypeInfo<NodeBase>(true)));
    EXPECT_TRUE(simple.canConvert(Utils::TypeInfo::getTypeInfo<INode>(true)));
    EXPECT_FALSE(simple.canConvert(Utils::TypeInfo::getTypeInfo<AdvancedNode>(true)));
    EXPECT_NE(Utils::object_cast<INode>(static_cast<const Utils::IObject*>(&node)), nullptr);
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
