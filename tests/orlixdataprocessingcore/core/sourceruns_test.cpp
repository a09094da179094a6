// Which run of a source takes a job, and jobs that end the run of their own source.
#include <functional>
#include <future>
#include <stdexcept>
#include <thread>
#include <utility>

#include "orlixdataprocessingcore/core/advancednode.h"
#include "orlixdataprocessingcore/core/defaultresourcepool.h"
#include "orlixdataprocessingcore/core/testnodes.h"

namespace Orlix::DataProcessing::Core {
namespace {

class SourceRuns : public testing::Test {
protected:
    const std::shared_ptr<TestSource> source = std::make_shared<TestSource>();
    const std::shared_ptr<TestSink> sink = std::make_shared<TestSink>();
    const std::shared_ptr<IHandle> handle = source->attachOutputSink("Out", sink);
};

TEST_F(SourceRuns, ARunMayTakeOnlyUpdatesThatWereMadeInIt) {
    const auto early = makeUpdate();
    source->start({});
    source->createJob(early, {{"Out", integer(1)}}, {});
    source->stop();
    source->takeOnlyUpdatesOfTheRun();
    source->start({});
    const auto late = makeUpdate();
    source->stop();
    source->start({});
    source->createJob(late, {{"Out", integer(2)}}, {});
    source->createJob(late, {{"Out", integer(3)}}, [](const UpdatePtr& update, PinValues values) {
        return JobResults{{update, std::move(values)}};
    });
    source->send(4);
    EXPECT_EQ(sink->values(2), (std::vector<std::int64_t>{1, 4}));
}

TEST_F(SourceRuns, AJobThatRestartsItsSourceIsNoneOfTheNewRun) {
    source->takeOnlyUpdatesOfTheRun();
    source->start({});
    const auto connection =
        source->getExecutionStartedSignal()->connect([&, isFirst = true](const UpdatePtr&) mutable {
            if (std::exchange(isFirst, false)) {
                source->stop();
                source->start({});
            }
        });
    source->send(1);
    source->send(2);
    EXPECT_EQ(sink->values(1), std::vector<std::int64_t>{2});
    connection->disconnect();
}

// The job is the run's that took it, whether or not the source looks at its updates.
TEST_F(SourceRuns, AJobWhoseSourceIsRestartedByAnotherThreadIsNoneOfTheNewRun) {
    source->start({});
    const auto connection =
        source->getExecutionStartedSignal()->connect([&, isFirst = true](const UpdatePtr&) mutable {
            if (std::exchange(isFirst, false)) {
                source->stop();
                std::async(std::launch::async, [&] { source->start({}); }).get();
            }
        });
    source->send(1);
    source->send(2);
    EXPECT_EQ(sink->values(1), std::vector<std::int64_t>{2});
    connection->disconnect();
}

// Of a source whose stop waits for its own thread.
TEST_F(SourceRuns, AJobMayStopItsSourceWhileAnotherThreadStopsIt) {
    std::latch isStopping(1);
    const auto connection = source->getExecutionStartedSignal()->connect([&](const UpdatePtr&) {
        isStopping.wait();
        source->stop();
    });
    source->start({});
    std::thread worker([&] { source->send(1); });
    source->stopping = [&] {
        isStopping.count_down();
        worker.join();
    };
    source->stop();
    EXPECT_EQ(source->getState(), NodeState::Stopped);
    EXPECT_FALSE(worker.joinable());
    connection->disconnect();
    source->stopping = [] {};
    source->start({});
    source->send(2);
    EXPECT_EQ(sink->values(2), (std::vector<std::int64_t>{1, 2}));
}

// The slot of a job sends the next one, and is inside of both.
TEST_F(SourceRuns, AJobInsideOfAnotherStopsItsSource) {
    source->start({});
    const auto connection =
        source->getExecutionStartedSignal()->connect([&, depth = 0](const UpdatePtr&) mutable {
            if (++depth == 1) {
                source->send(2);
                source->stop();
            }
        });
    source->send(1);
    EXPECT_EQ(source->getState(), NodeState::Stopped);
    EXPECT_EQ(sink->values(1), std::vector<std::int64_t>{2});
    connection->disconnect();
}

TEST_F(SourceRuns, AJobThatIsNotTakenIsNoExecution) {
    int executions = 0;
    const Utils::ScopedConnection connection(
        source->getExecutionStartedSignal()->connect([&](const UpdatePtr&) { ++executions; }),
        true);
    source->takeOnlyUpdatesOfTheRun();
    source->send(1);
    const auto late = makeUpdate();
    source->start({});
    source->createJob(late, {{"Out", integer(2)}}, {});
    EXPECT_EQ(executions, 0);
    source->send(3);
    EXPECT_EQ(executions, 1);
}

// A host's own factory, and a pool that lends it.
class ForeignFactory final : public IUpdateFactory {
public:
    UpdatePtr createUpdate(const INode*, const UpdatePtr&) override { return create(); }
    std::function<UpdatePtr()> create = makeUpdate;
};
class PoolWithFactory final : public DefaultResourcePool {
public:
    std::shared_ptr<IUpdateFactory> getUpdateFactory() override { return factory; }
    const std::shared_ptr<ForeignFactory> factory = std::make_shared<ForeignFactory>();
};

TEST(SourceStart, CallsTheFactoryWithTheNodesLockFree) {
    const auto pool = std::make_shared<PoolWithFactory>();
    TestSource source({"Out"}, pool);
    source.takeOnlyUpdatesOfTheRun();
    bool isFree = false;
    pool->factory->create = [&] {
        const auto tryLock = [&] {
            const bool taken = source.getLock()->tryLock();
            if (taken) {
                source.getLock()->unlock();
            }
            return taken;
        };
        isFree = std::async(std::launch::async, tryLock).get();
        return makeUpdate();
    };
    source.start({});
    EXPECT_TRUE(isFree);
}

// An update that is made while the node is still stopped must be before the mark of the run.
TEST(SourceStart, TakesNoUpdateThatWasMadeBeforeItBegan) {
    const auto pool = std::make_shared<PoolWithFactory>();
    TestSource source({"Out"}, pool);
    const auto sink = std::make_shared<TestSink>();
    static_cast<void>(source.attachOutputSink("Out", sink));
    source.takeOnlyUpdatesOfTheRun();
    UpdatePtr early;
    pool->factory->create = [&] {
        const UpdatePtr mark = makeUpdate();
        early = source.getState() == NodeState::Stopped ? makeUpdate() : mark;
        return mark;
    };
    source.start({});
    ASSERT_NE(early, nullptr);
    source.createJob(early, {{"Out", integer(1)}}, {});
    source.send(2);
    EXPECT_EQ(sink->values(), std::vector<std::int64_t>{2});
}

TEST(SourceStart, StopWhileItAsksTheFactoryLeavesNoSpaceToWaitFor) {
    const auto pool = std::make_shared<PoolWithFactory>();
    TestSource source({"Out"}, pool);
    source.takeOnlyUpdatesOfTheRun();
    pool->factory->create = [&] {
        source.stop();
        return makeUpdate();
    };
    bool hasSpace = true;
    source.starting = [&] { hasSpace = source.waitUntilSpaceAvailable(); };
    source.start({});
    EXPECT_FALSE(hasSpace);
    EXPECT_EQ(source.getState(), NodeState::Stopped);
    pool->factory->create = makeUpdate;
    source.start({});
    EXPECT_TRUE(hasSpace);
}

TEST(SourceStart, FactoryThatFailsLeavesItStopped) {
    const auto pool = std::make_shared<PoolWithFactory>();
    TestSource source({"Out"}, pool);
    source.takeOnlyUpdatesOfTheRun();
    pool->factory->create = []() -> UpdatePtr { throw std::logic_error("none left"); };
    EXPECT_THROW(source.start({}), std::logic_error);
    EXPECT_EQ(source.getState(), NodeState::Stopped);
    EXPECT_FALSE(source.waitUntilSpaceAvailable());
    pool->factory->create = makeUpdate;
    source.start({});
    EXPECT_EQ(source.getState(), NodeState::Running);
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
