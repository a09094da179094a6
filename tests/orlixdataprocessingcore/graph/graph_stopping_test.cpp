// The end of a run: it always comes, in order, and tells what was lost.
#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>

#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/graph/testgraphs.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::DataProcessing::Core {
namespace {

using Numbers = std::vector<std::int64_t>;

class GraphStopping : public testing::Test {
protected:
    GraphStopping() { buildChain(graph, source, {node}, sink); }

    std::shared_ptr<TestSource> source = std::make_shared<TestSource>();
    std::shared_ptr<TestNode> node = std::make_shared<TestNode>();
    std::shared_ptr<TestSink> sink = std::make_shared<TestSink>();
    Graph graph{GraphOptions{8}};
    std::latch begun{1};
    std::latch mayEnd{1};

    void blockFirstJob() {
        node->work = [this](TestNode& self) {
            if (!blocked.exchange(true)) {
                begun.count_down();
                mayEnd.wait();
            }
            TestNode::sum(self);
        };
    }
    std::atomic<bool> blocked{false};

    void sendFive() {
        for (int value = 0; value < 5; ++value) {
            source->send(value);
        }
    }
};

TEST_F(GraphStopping, DrainBringsWhatIsUnderWayToItsEnd) {
    blockFirstJob();
    graph.start({});
    sendFive();
    begun.wait();
    source->stopping = [this] { mayEnd.count_down(); };
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), (Numbers{0, 1, 2, 3, 4}));
    EXPECT_EQ(graph.statistics().droppedJobs, 0U);
    EXPECT_TRUE(graph.isIdle());
}

TEST_F(GraphStopping, DropLosesWhatWaitsAndCountsIt) {
    // The last value holds an error whose end tells when the queue has been dropped.
    std::latch isDropped(1);
    Integer last(4);
    last.setError(
        std::shared_ptr<IError>(new DeviceError("dropped", DateTime()), [&](const IError* error) {
            delete error;
            isDropped.count_down();
        }));
    blockFirstJob();
    graph.start({});
    for (int value = 0; value < 4; ++value) {
        source->send(value);
    }
    source->send(PinValues{{"Out", Utils::Variant(std::move(last))}});
    last = Integer(0);
    begun.wait();
    std::thread stopper([this] { graph.stop(StopMode::Drop); });
    // The queue is dropped while the job still runs; then the job may end.
    isDropped.wait();
    mayEnd.count_down();
    stopper.join();
    EXPECT_EQ(sink->values(), Numbers{0});
    EXPECT_EQ(graph.statistics().droppedJobs, 4U);
    EXPECT_EQ(node->getState(), NodeState::Stopped);
}

TEST_F(GraphStopping, DrainEndsAlthoughASinkIsFullForEver) {
    sink->setFull(true);
    graph.start({});
    sendFive();
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values().size(), 5U);
}

TEST_F(GraphStopping, DrainEndsAlthoughASinkBesideTheGraphIsFullForEver) {
    const auto beside = std::make_shared<TestSink>();
    const auto handle = node->attachOutputSink("Out", beside);
    beside->setFull(true);
    graph.start({});
    sendFive();
    graph.stop(StopMode::Drain);
    EXPECT_EQ(graph.statistics().droppedJobs, 5U);
    node->detachOutputSink(handle);
}

TEST_F(GraphStopping, EndsAlthoughEveryJobThrows) {
    const Utils::LogCapture log;
    node->work = [](TestNode&) { throw 5; };
    graph.start({});
    sendFive();
    graph.stop(StopMode::Drain);
    EXPECT_EQ(graph.statistics().failedJobs, 5U);
    EXPECT_EQ(sink->entries().size(), 5U);
}

TEST_F(GraphStopping, StopsSourcesFirstAndStartsThemLast) {
    std::vector<std::string> order;
    source->starting = [&] { order.emplace_back("source starts"); };
    node->starting = [&] { order.emplace_back("node starts"); };
    source->stopping = [&] { order.emplace_back("source stops"); };
    node->stopping = [&] { order.emplace_back("node stops"); };
    graph.start({});
    EXPECT_TRUE(graph.isRunning());
    graph.stop(StopMode::Drop);
    EXPECT_FALSE(graph.isRunning());
    EXPECT_EQ(order, (std::vector<std::string>{"node starts", "source starts", "source stops",
                                               "node stops"}));
}

TEST_F(GraphStopping, AFrameThatComesDuringTheStartIsNotLost) {
    source->starting = [this] {
        ASSERT_TRUE(source->waitUntilSpaceAvailable());
        source->send(7);
    };
    graph.start({});
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), Numbers{7});
}

TEST_F(GraphStopping, AFailedStartStopsWhatHasStartedAndTellsWhy) {
    source->starting = [] { throw std::runtime_error("no camera"); };
    EXPECT_THROW(graph.start({}), std::runtime_error);
    EXPECT_FALSE(graph.isRunning());
    EXPECT_EQ(node->getState(), NodeState::Stopped);
    source->starting = [] {};
    graph.start({});
    source->send(1);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), Numbers{1});
}

TEST_F(GraphStopping, AnExceptionOfANodesStopComesOutWhenAllIsStopped) {
    source->stopping = [] { throw std::runtime_error("stuck"); };
    graph.start({});
    node->stopping = [] { throw std::runtime_error("stuck too"); };
    EXPECT_THROW(graph.stop(StopMode::Drain), std::runtime_error);
    EXPECT_EQ(graph.failedNode(), "Source");
    EXPECT_EQ(source->getState(), NodeState::Stopped);
    EXPECT_EQ(node->getState(), NodeState::Stopped);
    EXPECT_FALSE(graph.isRunning());
    source->stopping = [] {};
    node->stopping = [] {};
    graph.start({});
    graph.stop(StopMode::Drain);
    EXPECT_EQ(graph.failedNode(), "");
}

TEST_F(GraphStopping, ReleasesASourceThatWaitsForSpace) {
    blockFirstJob();
    graph.start({});
    std::thread producer([this] {
        while (source->waitUntilSpaceAvailable()) {
            source->send(0);
        }
    });
    begun.wait();
    source->stopping = [&] {
        producer.join();
        mayEnd.count_down();
    };
    graph.stop(StopMode::Drop);
}

TEST_F(GraphStopping, ANodeThatIsStoppedOnItsOwnHoldsNothingUp) {
    graph.start({});
    node->stop();
    sendFive();
    EXPECT_EQ(sink->waitFor(5).size(), 5U);
    EXPECT_EQ(sink->skips(), 5U);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(graph.statistics().droppedJobs, 5U);
}

TEST(GraphStop, ANodeThatIsStoppedWhileItsOutputIsFullHoldsItsSourceBackNoMore) {
    for (int round = 0; round < 50; ++round) {
        auto source = std::make_shared<TestSource>();
        auto node = std::make_shared<TestNode>();
        auto sink = std::make_shared<TestSink>();
        Graph graph(GraphOptions{2});
        buildChain(graph, source, {node}, sink);
        sink->setFull(true);
        graph.start({});
        for (int value = 0; value < 2; ++value) {
            source->send(value);
        }
        std::latch isFull(1);
        std::thread producer([&] {
            isFull.count_down();
            for (int value = 0; value < 10; ++value) {
                ASSERT_TRUE(source->waitUntilSpaceAvailable());
                source->send(value);
            }
        });
        isFull.wait();
        node->stop();
        producer.join();
        EXPECT_EQ(sink->waitFor(12).size(), 12U);
        EXPECT_EQ(sink->skips(), 12U);
        graph.stop(StopMode::Drain);
        EXPECT_EQ(graph.statistics().droppedJobs, 12U);
    }
}

TEST(GraphStop, WhatAStoppedNodeLeavesOutTakesNoMemoryBehindIt) {
    auto source = std::make_shared<TestSource>();
    auto stopped = std::make_shared<TestNode>();
    auto sink = std::make_shared<TestSink>();
    Graph graph(GraphOptions{4});
    buildChain(graph, source, {stopped, std::make_shared<TestNode>()}, sink);
    sink->setFull(true);
    graph.start({});
    source->send(1);
    stopped->stop();
    for (int value = 0; value < 1000; ++value) {
        ASSERT_TRUE(source->waitUntilSpaceAvailable());
        source->send(value);
        static_cast<void>(makeUpdate());  // of another source
    }
    for (int value = 0; value < 100; ++value) {
        const auto parent = makeUpdate();
        source->createJob(getDefaultUpdateFactory()->createUpdate(nullptr, parent),
                          {{"Out", integer(value)}}, {});
    }
    EXPECT_LE(graph.statistics().connections.back().queued, 5U);
    graph.stop(StopMode::Drop);
}

TEST(GraphStop, EverySkipOfAStoppedNodeReachesThoseWhoCanDoWithoutTheValue) {
    auto source = std::make_shared<TestSource>();
    auto stopped = std::make_shared<TestNode>();
    auto join = std::make_shared<TestNode>(std::vector<gcstring>{"X", "Y"}, true);
    auto blocker = std::make_shared<TestSink>();
    auto passed = std::make_shared<TestSink>();
    auto reader = std::make_shared<TestSink>();
    Graph graph(GraphOptions{2});
    buildChain(graph, source, {stopped, std::make_shared<TestNode>()}, blocker);
    graph.addNode("Join", join);
    graph.connect("B", "Out", "Join", "X");
    graph.connect("Source", "Out", "Join", "Y");
    graph.attachSink("A", "Out", passed);
    graph.attachSink("Join", "Out", reader);
    blocker->setFull(true);
    graph.start({});
    stopped->stop();
    Numbers expected;
    std::vector<std::uint64_t> numbers;
    for (int value = 0; value < 16; ++value) {
        numbers.push_back(source->send(value)->getSequenceNumber());
        expected.push_back(value);
        for (int other = 0; other < value % 3; ++other) {
            static_cast<void>(makeUpdate());  // of another source
        }
    }
    static_cast<void>(passed->waitFor(16));
    blocker->setFull(false);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(reader->values(), expected);
    std::vector<std::uint64_t> skipped;
    for (const TestSink::Entry& entry : blocker->entries()) {
        EXPECT_FALSE(entry.value.isValid());
        skipped.push_back(entry.update->getSequenceNumber());
    }
    EXPECT_EQ(skipped, numbers);
}

TEST_F(GraphStopping, RunsAgainAfterAStop) {
    for (int run = 0; run < 3; ++run) {
        graph.start({});
        source->send(run);
        graph.stop(StopMode::Drain);
        EXPECT_EQ(graph.statistics().executedJobs, 1U);
    }
    EXPECT_EQ(sink->values(), (Numbers{0, 1, 2}));
}

TEST_F(GraphStopping, NothingOfOneRunReachesTheNext) {
    graph.start({});
    graph.stop(StopMode::Drop);
    source->send(1);
    graph.start({});
    graph.stop(StopMode::Drain);
    EXPECT_TRUE(sink->values().empty());
}

TEST(GraphEnd, StopsAndFreesItsNodesAndLeavesNoTraceInThem) {
    auto source = std::make_shared<TestSource>();
    auto node = std::make_shared<TestNode>();
    auto sink = std::make_shared<TestSink>();
    {
        Graph graph;
        buildChain(graph, source, {node}, sink);
        EXPECT_TRUE(graph.allocateResources().errors.empty());
        graph.start({});
        source->send(1);
    }
    EXPECT_EQ(source->getState(), NodeState::Stopped);
    EXPECT_TRUE(node->canConfigure("In"));
    EXPECT_FALSE(sink->hasListener());
    EXPECT_EQ(source.use_count(), 1);
    EXPECT_EQ(node.use_count(), 1);
    EXPECT_EQ(sink.use_count(), 1);
}

TEST(GraphEnd, MayComeAtAnyMomentOfARun) {
    for (int round = 0; round < 50; ++round) {
        auto source = std::make_shared<TestSource>();
        auto graph = std::make_unique<Graph>();
        buildChain(*graph, source, {std::make_shared<TestNode>(), std::make_shared<TestNode>()});
        graph->start({});
        std::thread producer([&] {
            while (source->waitUntilSpaceAvailable()) {
                source->send(1);
            }
        });
        graph.reset();
        producer.join();
    }
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
