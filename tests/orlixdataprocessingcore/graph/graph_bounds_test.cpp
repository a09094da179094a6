// Every queue is bounded, and a source is held back while a queue behind it is full.
#include <atomic>
#include <memory>

#include "orlixdataprocessingcore/graph/testgraphs.h"

namespace Orlix::DataProcessing::Core {
namespace {

// A node that runs one job for every permit that the test gives.
class Gate {
public:
    void open(int permits) {
        {
            std::lock_guard guard(mutex_);
            permits_ += permits;
        }
        changed_.notify_all();
    }
    void pass() {
        std::unique_lock lock(mutex_);
        ++waiting_;
        changed_.notify_all();
        changed_.wait(lock, [this] { return permits_ > 0; });
        --waiting_;
        --permits_;
    }
    void waitForSomebody() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return waiting_ > 0; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int permits_ = 0;
    int waiting_ = 0;
};

constexpr int many = 1000000;

TEST(GraphBounds, ASourceIsHeldBackWhenTheQueueIsFull) {
    Gate gate;
    auto source = std::make_shared<TestSource>();
    auto slow = std::make_shared<TestNode>();
    slow->work = [&](TestNode&) { gate.pass(); };
    Graph graph(GraphOptions{4});
    graph.addNode("Source", source);
    graph.addNode("Slow", slow);
    graph.connect("Source", "Out", "Slow", "In");
    graph.start({});
    std::atomic<int> sent{0};
    std::thread producer([&] {
        while (source->waitUntilSpaceAvailable()) {
            source->send(1);
            ++sent;
        }
    });
    gate.waitForSomebody();
    for (int round = 0; round < 20; ++round) {
        EXPECT_LE(graph.statistics().connections.at(0).queued, 4U);
        gate.open(1);
        gate.waitForSomebody();
    }
    // One that is being worked on, those in the queue, those that have been let through.
    EXPECT_LE(sent, 1 + 4 + 20);
    std::thread opener([&] { gate.open(many); });
    graph.stop(StopMode::Drain);
    opener.join();
    producer.join();
}

TEST(GraphBounds, ASlowEndHoldsTheWholeChainBack) {
    Gate gate;
    auto source = std::make_shared<TestSource>();
    Graph graph(GraphOptions{2});
    graph.addNode("Source", source);
    graph.addNode("A", std::make_shared<TestNode>());
    graph.addNode("B", std::make_shared<TestNode>());
    auto slow = std::make_shared<TestNode>();
    slow->work = [&](TestNode& node) {
        gate.pass();
        TestNode::sum(node);
    };
    graph.addNode("Slow", slow);
    graph.connect("Source", "Out", "A", "In");
    graph.connect("A", "Out", "B", "In");
    graph.connect("B", "Out", "Slow", "In");
    auto sink = std::make_shared<TestSink>();
    graph.attachSink("Slow", "Out", sink);
    graph.start({});
    std::atomic<int> sent{0};
    std::thread producer([&] {
        while (source->waitUntilSpaceAvailable()) {
            source->send(sent++);
        }
    });
    gate.open(50);
    static_cast<void>(sink->waitFor(50));
    gate.waitForSomebody();
    for (const ConnectionStatistics& connection : graph.statistics().connections) {
        EXPECT_LE(connection.queued, 2U) << connection.from.c_str();
    }
    EXPECT_LE(sent, 50 + 3 * (1 + 2) + 1);
    gate.open(many);
    graph.stop(StopMode::Drain);
    producer.join();
    const auto values = sink->values();
    ASSERT_EQ(values.size(), static_cast<std::size_t>(sent));
    for (std::size_t index = 0; index < values.size(); ++index) {
        ASSERT_EQ(values[index], static_cast<std::int64_t>(index));
    }
}

TEST(GraphBounds, APinsOwnLimitLowersTheCapacity) {
    class LimitedSource : public TestSource {
    public:
        LimitedSource() : TestSource(std::vector<gcstring>{}) {
            createOutput("Out", "", Utils::TypeInfo::getTypeInfo<Integer>(true), true, 3);
        }
    };
    Graph graph;
    graph.addNode("Source", std::make_shared<LimitedSource>());
    graph.addNode("A", std::make_shared<TestNode>());
    graph.connect("Source", "Out", "A", "In");
    EXPECT_EQ(graph.statistics().connections.at(0).capacity, 3U);
}

TEST(GraphBounds, TheLimitOfAPinThatIsMadeAnewHoldsAtOnce) {
    auto source = std::make_shared<TestSource>();
    auto node = std::make_shared<TestNode>();
    Graph graph(GraphOptions{8});
    buildChain(graph, source, {node});
    const auto capacity = [&] { return graph.statistics().connections.at(0).capacity; };
    EXPECT_EQ(capacity(), 8U);
    node->remakeInput("In", 0, false, 3);
    EXPECT_EQ(capacity(), 3U);
    graph.start({});
    node->remakeInput("In", 0, false, 5);
    EXPECT_EQ(capacity(), 5U);
    graph.stop(StopMode::Drain);
    source->removeOutput("Out");
    source->createOutput("Out", "", Utils::TypeInfo::getTypeInfo<Integer>(true), true, 2);
    EXPECT_EQ(capacity(), 2U);
}

TEST(GraphBounds, AFullSinkOfTheHostHoldsTheSourceBackUntilItHasSpace) {
    auto source = std::make_shared<TestSource>();
    auto sink = std::make_shared<TestSink>();
    Graph graph(GraphOptions{1});
    buildChain(graph, source, {std::make_shared<TestNode>()}, sink);
    sink->setFull(true);
    graph.start({});
    source->send(1);
    source->send(2);
    EXPECT_TRUE(sink->values().empty());
    sink->setFull(false);
    EXPECT_EQ(sink->values(2), (std::vector<std::int64_t>{1, 2}));
    graph.stop(StopMode::Drain);
}

TEST(GraphBounds, ANodeWithSeveralReadersWaitsForTheSlowest) {
    Gate gate;
    auto source = std::make_shared<TestSource>();
    auto slow = std::make_shared<TestNode>();
    slow->work = [&](TestNode&) { gate.pass(); };
    auto sink = std::make_shared<TestSink>();
    Graph graph(GraphOptions{1});
    graph.addNode("Source", source);
    graph.addNode("Fork", std::make_shared<TestNode>());
    graph.addNode("Slow", slow);
    graph.addNode("Fast", std::make_shared<TestNode>());
    graph.connect("Source", "Out", "Fork", "In");
    graph.connect("Fork", "Out", "Slow", "In");
    graph.connect("Fork", "Out", "Fast", "In");
    graph.attachSink("Fast", "Out", sink);
    graph.start({});
    std::thread producer([&] {
        while (source->waitUntilSpaceAvailable()) {
            source->send(1);
        }
    });
    gate.open(10);
    static_cast<void>(sink->waitFor(10));
    gate.waitForSomebody();
    EXPECT_LE(sink->entries().size(), 10U + 1U + 1U);
    gate.open(many);
    graph.stop(StopMode::Drain);
    producer.join();
}

TEST(GraphBounds, ASinkThatReadsTwoNodesTellsBothOfSpace) {
    auto first = std::make_shared<TestSource>();
    auto second = std::make_shared<TestSource>();
    auto sink = std::make_shared<TestSink>();
    {
        Graph graph;
        graph.addNode("First", first);
        graph.addNode("Second", second);
        graph.addNode("A", std::make_shared<TestNode>());
        graph.addNode("B", std::make_shared<TestNode>());
        graph.connect("First", "Out", "A", "In");
        graph.connect("Second", "Out", "B", "In");
        graph.attachSink("A", "Out", sink);
        graph.attachSink("B", "Out", sink);
        sink->setFull(true);
        graph.start({});
        first->send(1);
        second->send(2);
        sink->setFull(false);
        EXPECT_EQ(sink->waitFor(2).size(), 2U);
        graph.stop(StopMode::Drain);
        first->removeOutput("Out");
        EXPECT_TRUE(sink->hasListener());
    }
    EXPECT_FALSE(sink->hasListener());
}

TEST(GraphBounds, AGraphNeedsACapacity) {
    EXPECT_THROW(Graph(GraphOptions{0}), GenICam::InvalidArgumentException);
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
