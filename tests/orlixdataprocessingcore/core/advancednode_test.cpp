// Sources: the wait for space, jobs made here and jobs made on workers.
#include "orlixdataprocessingcore/core/advancednode.h"

#include <future>
#include <stdexcept>
#include <thread>

#include "orlixdataprocessingcore/core/testnodes.h"
#include "orlixdataprocessingcore/threading/uniquelock.h"
#include "orlixdataprocessingcore/utils/log.h"
#include "support/sleeper.h"

namespace Orlix::DataProcessing::Core {
namespace {

using NodeLock = Threading::UniqueLock<Threading::IRecursiveLockable>;

class AdvancedNodeTest : public testing::Test {
protected:
    void attach() { handle = source->attachOutputSink("Out", sink); }
    // Whether the source, which has begun its start on another thread, was refused space in it;
    // the wait for space ends only when the run has to end.
    std::future<bool> startAndWaitForSpace() {
        attach();
        sink->setFull(true);
        auto begun = std::make_shared<std::latch>(1);
        auto refused = std::make_shared<std::atomic<bool>>(false);
        source->starting = [this, begun, refused] {
            begun->count_down();
            *refused = !source->waitUntilSpaceAvailable();
            ending();
        };
        auto started = std::async(std::launch::async, [this, refused] {
            try {
                source->start({});
            } catch (int) {
            }
            return refused->load();
        });
        begun->wait();
        return started;
    }
    // The answer to a source that asks for space while its only sink is full.
    std::future<bool> waitForSpace() {
        attach();
        source->start({});
        sink->setFull(true);
        const auto sleeper = std::make_shared<Orlix::Test::Sleeper>();
        auto answer = std::async(std::launch::async, [this, sleeper] {
            sleeper->GoIn();
            return source->waitUntilSpaceAvailable();
        });
        sleeper->WaitUntilAsleep();
        return answer;
    }

    // The same by a thread that holds the node's lock all the time and sends if it gets space.
    std::future<bool> waitForSpaceUnderTheLock() {
        attach();
        source->start({});
        sink->setFull(true);
        const auto sleeper = std::make_shared<Orlix::Test::Sleeper>();
        auto answer = std::async(std::launch::async, [this, sleeper] {
            const NodeLock lock(*source->getLock());
            sleeper->GoIn();
            const bool hasSpace = source->waitUntilSpaceAvailable();
            if (hasSpace) {
                source->send(1);
            }
            return hasSpace;
        });
        sleeper->WaitUntilAsleep();
        return answer;
    }

    std::function<void()> ending = [] {};

    std::shared_ptr<TestSource> source = std::make_shared<TestSource>();
    std::shared_ptr<TestSink> sink = std::make_shared<TestSink>();
    std::shared_ptr<IHandle> handle;
};

TEST_F(AdvancedNodeTest, OffersSpaceFromJustBeforeOnStartingSoThatASingleFrameIsNotLost) {
    attach();
    source->starting = [this] {
        EXPECT_TRUE(source->waitUntilSpaceAvailable());
        source->send(1);
    };
    source->start({});
    EXPECT_EQ(sink->values(), std::vector<std::int64_t>{1});
}

TEST_F(AdvancedNodeTest, RefusesSpaceAtOnceInEveryOtherState) {
    EXPECT_FALSE(source->waitUntilSpaceAvailable());
    source->stopping = [this] { EXPECT_FALSE(source->waitUntilSpaceAvailable()); };
    source->start({});
    source->stop();
    EXPECT_FALSE(source->waitUntilSpaceAvailable());
    source->starting = [] { throw 5; };
    EXPECT_ANY_THROW(source->start({}));
    EXPECT_FALSE(source->waitUntilSpaceAvailable());
}

TEST_F(AdvancedNodeTest, AStopReleasesWhoWaitsForSpaceBeforeItWaitsForTheEndOfTheStart) {
    attach();
    sink->setFull(true);
    Orlix::Test::Sleeper sleeper;
    const Utils::ScopedConnection connection(source->getStateChangedSignal()->connect([&] {
        if (source->getState() == NodeState::Running) {
            auto refused = std::async(std::launch::async, [&] {
                sleeper.GoIn();
                return !source->waitUntilSpaceAvailable();
            });
            EXPECT_TRUE(refused.get());
        }
    }),
                                             true);
    std::thread starter([&] { source->start({}); });
    sleeper.WaitUntilAsleep();
    source->stop();
    starter.join();
    EXPECT_EQ(source->getState(), NodeState::Stopped);
}

TEST_F(AdvancedNodeTest, DropsJobsThatComeWhileItIsStopped) {
    attach();
    source->send(1);
    source->start({});
    source->stop();
    source->send(2);
    EXPECT_TRUE(sink->entries().empty());
}

TEST_F(AdvancedNodeTest, TakesAJobUntilOnStoppingHasReturned) {
    attach();
    source->stopping = [this] { source->send(3); };
    source->start({});
    source->stop();
    EXPECT_EQ(sink->values(), std::vector<std::int64_t>{3});
}

TEST_F(AdvancedNodeTest, StopWaitsForAStartOnAnotherThreadAndEndsThatRun) {
    bool stopped = false;
    source->stopping = [&] { stopped = true; };
    auto refused = startAndWaitForSpace();
    source->stop();
    EXPECT_EQ(source->getState(), NodeState::Stopped);
    EXPECT_TRUE(refused.get());
    EXPECT_TRUE(stopped);
}

TEST_F(AdvancedNodeTest, CleanupDuringAStartOnAnotherThreadFreesBehindThatRun) {
    ending = [] { throw 5; };
    auto refused = startAndWaitForSpace();
    source->cleanup();
    EXPECT_EQ(source->getState(), NodeState::Stopped);
    EXPECT_FALSE(sink->hasListener());
    EXPECT_TRUE(refused.get());
}

TEST_F(AdvancedNodeTest, AStopAtTheVeryBeginningOfAStartIsNotUndone) {
    const Utils::LogCapture log;
    attach();
    source->start({});
    source->createJob(makeUpdate(), {}, [](const UpdatePtr&, PinValues) -> JobResults {
        throw std::runtime_error("broken");
    });
    source->stop();
    ASSERT_TRUE(source->hasError());
    // The next start takes the error back first.
    const auto connection = source->getErrorChangedSignal()->connect(
        [this](const ErrorSet&, const ErrorSet&) { source->stop(); });
    source->starting = [this] { EXPECT_FALSE(source->waitUntilSpaceAvailable()); };
    source->start({});
    EXPECT_EQ(source->getState(), NodeState::Stopped);
    connection->disconnect();
    source->starting = [this] { EXPECT_TRUE(source->waitUntilSpaceAvailable()); };
    source->start({});
}

TEST_F(AdvancedNodeTest, CleanupWaitsForAJobOnAWorkerThatHasStoppedTheSource) {
    source->start({});
    std::latch hasStopped(1);
    std::latch mayEnd(1);
    std::atomic<bool> ended{false};
    source->createJob(makeUpdate(), {}, [&](const UpdatePtr&, PinValues) {
        source->stop();
        hasStopped.count_down();
        mayEnd.wait();
        ended = true;
        return JobResults();
    });
    hasStopped.wait();
    std::thread releaser([&] { mayEnd.count_down(); });
    source->cleanup();
    EXPECT_TRUE(ended);
    releaser.join();
}

TEST_F(AdvancedNodeTest, APinWithALimitOfZeroStillOffersSpace) {
    source->createOutput("Zero", "", Utils::TypeInfo::getTypeInfo<Integer>(true), true, 0);
    source->start({});
    EXPECT_TRUE(source->waitUntilSpaceAvailable());
}

TEST_F(AdvancedNodeTest, WaitsUntilASinkHasSpace) {
    auto waiting = waitForSpace();
    sink->setFull(false);
    EXPECT_TRUE(waiting.get());
}

TEST_F(AdvancedNodeTest, StopReleasesAWaiterThatHoldsTheNodesLock) {
    auto waiting = waitForSpaceUnderTheLock();
    source->stopping = [this] { const NodeLock lock(*source->getLock()); };
    source->stop();
    EXPECT_FALSE(waiting.get());
}

TEST_F(AdvancedNodeTest, DrainingASinkNeedsNoLockOfTheNode) {
    auto waiting = waitForSpaceUnderTheLock();
    sink->setFull(false);
    EXPECT_TRUE(waiting.get());
    EXPECT_EQ(sink->values(), std::vector<std::int64_t>{1});
}

TEST_F(AdvancedNodeTest, ADetachedSinkThatWasFullHoldsNobodyBack) {
    auto waiting = waitForSpace();
    source->detachOutputSink(handle);
    EXPECT_TRUE(waiting.get());
}

TEST_F(AdvancedNodeTest, TellsThePinsThatAJobLeavesOut) {
    source->createOutput("Other", "", Utils::TypeInfo::getTypeInfo<Integer>(true), true,
                         unlimitedJobs);
    const auto other = std::make_shared<TestSink>();
    attach();
    static_cast<void>(source->attachOutputSink("Other", other));
    source->start({});
    source->send(1);
    source->send(PinValues{{"Other", integer(2)}, {"Out", Utils::Variant()}});
    EXPECT_EQ(sink->values(), std::vector<std::int64_t>{1});
    EXPECT_EQ(sink->skips(), 1U);
    EXPECT_EQ(other->values(), std::vector<std::int64_t>{2});
    EXPECT_EQ(other->skips(), 1U);
}

TEST_F(AdvancedNodeTest, AJobWithoutAnUpdateIsRefused) {
    source->start({});
    EXPECT_THROW(source->createJob(nullptr, {}, {}), GenICam::InvalidArgumentException);
}

TEST_F(AdvancedNodeTest, AFunctionMakesTheValuesOnAWorkerThread) {
    attach();
    source->start({});
    const auto caller = std::this_thread::get_id();
    const auto update = makeUpdate();
    source->createJob(update, {{"Out", integer(5)}}, [&](const UpdatePtr& job, PinValues values) {
        EXPECT_NE(std::this_thread::get_id(), caller);
        return JobResults{
            {job, {{"Out", integer(values.at("Out").get<Integer>(true)->get() * 2)}}}};
    });
    const auto entries = sink->waitFor(1);
    EXPECT_EQ(entries[0].update, update);
    EXPECT_EQ(sink->values(), std::vector<std::int64_t>{10});
}

TEST_F(AdvancedNodeTest, AResultWithoutAnUpdateFailsItsJobOnly) {
    attach();
    const Utils::LogCapture log;
    source->start({});
    source->createJob(makeUpdate(), {}, [](const UpdatePtr&, PinValues) {
        return JobResults{{nullptr, {{"Out", integer(1)}}}};
    });
    source->createJob(makeUpdate(), {}, [](const UpdatePtr& update, PinValues) {
        return JobResults{{update, {{"Out", integer(2)}}}};
    });
    const auto entries = sink->waitFor(2);
    ASSERT_EQ(log.getLines().size(), 1U);
    EXPECT_NE(log.getLines()[0].text.find("Job failed. Message: A result has no update."),
              std::string::npos);
    EXPECT_EQ(entries[0].value.get<Integer>(true)->getError(false)->getDescription(),
              "A result has no update.");
    EXPECT_EQ(entries[1].value.get<Integer>(true)->get(), 2);
}

TEST_F(AdvancedNodeTest, AnAbortedJobThatWaitsIsNotRun) {
    attach();
    source->start({});
    std::latch begun(1);
    std::latch mayEnd(1);
    source->createJob(makeUpdate(), {}, [&](const UpdatePtr&, PinValues) {
        begun.count_down();
        mayEnd.wait();
        return JobResults();
    });
    begun.wait();
    const auto aborted = makeUpdate();
    bool hasRun = false;
    source->createJob(aborted, {}, [&](const UpdatePtr&, PinValues) {
        hasRun = true;
        return JobResults{{makeUpdate(), {{"Out", integer(1)}}}};
    });
    source->abort(aborted);
    source->createJob(makeUpdate(), {{"Out", integer(2)}}, {});
    mayEnd.count_down();
    EXPECT_EQ(sink->values(3), std::vector<std::int64_t>{2});
    EXPECT_FALSE(hasRun);
    EXPECT_EQ(sink->skips(), 2U);
}

TEST_F(AdvancedNodeTest, JobsKeepTheirOrderAndRunOneAtATime) {
    attach();
    source->start({});
    std::atomic<int> running{0};
    std::vector<std::int64_t> expected;
    for (int number = 0; number < 100; ++number) {
        const JobFunction function = [&](const UpdatePtr& update, PinValues values) {
            EXPECT_EQ(++running, 1);
            --running;
            return JobResults{{update, std::move(values)}};
        };
        source->createJob(makeUpdate(), {{"Out", integer(number)}},
                          number % 3 == 0 ? JobFunction() : function);
        expected.push_back(number);
    }
    EXPECT_EQ(sink->values(100), expected);
}

TEST_F(AdvancedNodeTest, WaitingJobsHoldTheSourceBack) {
    attach();
    source->start({});
    std::latch mayRun(1);
    int made = 0;
    std::latch begun(1);
    source->createJob(makeUpdate(), {}, [&](const UpdatePtr&, PinValues) {
        begun.count_down();
        mayRun.wait();
        return JobResults();
    });
    begun.wait();
    std::atomic<bool> isWaiting{false};
    while (made < 16) {
        ASSERT_TRUE(source->waitUntilSpaceAvailable());
        source->createJob(makeUpdate(), {},
                          [](const UpdatePtr&, PinValues) { return JobResults(); });
        ++made;
    }
    auto waiting = std::async(std::launch::async, [&] {
        isWaiting = true;
        return source->waitUntilSpaceAvailable();
    });
    mayRun.count_down();
    EXPECT_TRUE(waiting.get());
    EXPECT_EQ(sink->waitFor(17).size(), 17U);
}

TEST_F(AdvancedNodeTest, StopLetsJobsThatWereTakenEndFirst) {
    attach();
    source->start({});
    for (int number = 0; number < 10; ++number) {
        source->createJob(makeUpdate(), {{"Out", integer(number)}},
                          [](const UpdatePtr& update, PinValues values) {
                              return JobResults{{update, std::move(values)}};
                          });
    }
    source->stop();
    EXPECT_EQ(sink->entries().size(), 10U);
}

TEST_F(AdvancedNodeTest, AFunctionThatThrowsSendsErrorValues) {
    const Utils::LogCapture log;
    attach();
    source->start({});
    source->createJob(makeUpdate(), {}, [](const UpdatePtr&, PinValues) -> JobResults {
        throw std::runtime_error("broken");
    });
    const auto entries = sink->waitFor(1);
    EXPECT_TRUE(entries[0].value.get<Integer>(true)->hasError(true));
    source->stop();
    EXPECT_TRUE(source->hasError());
}

TEST_F(AdvancedNodeTest, TwoThreadsSendToAllPinsInOneOrder) {
    source->createOutput("Other", "", Utils::TypeInfo::getTypeInfo<Integer>(true), true,
                         unlimitedJobs);
    const auto other = std::make_shared<TestSink>();
    attach();
    static_cast<void>(source->attachOutputSink("Other", other));
    source->start({});
    const auto produce = [this](const char* pin) {
        for (int number = 0; number < 200; ++number) {
            source->send(PinValues{{pin, integer(number)}});
        }
    };
    std::thread images(produce, "Out");
    std::thread events(produce, "Other");
    images.join();
    events.join();
    const auto first = sink->entries();
    const auto second = other->entries();
    ASSERT_EQ(first.size(), 400U);
    ASSERT_EQ(second.size(), 400U);
    for (std::size_t index = 0; index < first.size(); ++index) {
        EXPECT_EQ(first[index].update, second[index].update);
    }
}

TEST_F(AdvancedNodeTest, ASourceForwardsNoUpdates) {
    EXPECT_FALSE(source->isForwardingUpdates());
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
