// Order and parallelism: one node keeps the order, different nodes run at the same time.
#include <barrier>
#include <latch>
#include <memory>
#include <set>
#include <thread>

#include "orlixdataprocessingcore/graph/testgraphs.h"

namespace Orlix::DataProcessing::Core {
namespace {

TEST(GraphOrder, ANodeRunsOneJobAtATimeInTheOrderOfUpdates) {
    auto source = std::make_shared<TestSource>();
    auto node = std::make_shared<TestNode>();
    auto sink = std::make_shared<TestSink>();
    std::atomic<int> running{0};
    node->work = [&](TestNode& self) {
        EXPECT_EQ(++running, 1);
        TestNode::sum(self);
        --running;
    };
    Graph graph;
    buildChain(graph, source, {node}, sink);
    graph.start({});
    for (int value = 0; value < 5000; ++value) {
        ASSERT_TRUE(source->waitUntilSpaceAvailable());
        source->send(value);
    }
    graph.stop(StopMode::Drain);
    const auto entries = sink->entries();
    ASSERT_EQ(entries.size(), 5000U);
    for (std::size_t index = 1; index < entries.size(); ++index) {
        ASSERT_LT(entries[index - 1].update->getSequenceNumber(),
                  entries[index].update->getSequenceNumber());
    }
}

TEST(GraphOrder, DifferentNodesRunAtTheSameTime) {
    constexpr int width = 3;
    std::barrier together(width);
    auto source = std::make_shared<TestSource>();
    auto sink = std::make_shared<TestSink>();
    Graph graph;
    graph.addNode("Source", source);
    for (int index = 0; index < width; ++index) {
        auto node = std::make_shared<TestNode>();
        node->work = [&](TestNode& self) {
            together.arrive_and_wait();
            TestNode::sum(self);
        };
        const gcstring name(std::to_string(index));
        graph.addNode(name, node);
        graph.connect("Source", "Out", name, "In");
        graph.attachSink(name, "Out", sink);
    }
    graph.start({});
    source->send(1);
    source->send(2);
    EXPECT_EQ(sink->waitFor(2 * width).size(), 2U * width);
    graph.stop(StopMode::Drain);
}

TEST(GraphOrder, ConsecutiveNodesWorkOnDifferentUpdatesAtTheSameTime) {
    std::barrier together(2);
    auto source = std::make_shared<TestSource>();
    auto first = std::make_shared<TestNode>();
    auto second = std::make_shared<TestNode>();
    auto sink = std::make_shared<TestSink>();
    // The second node has update 1 while the first has update 2.
    first->work = [&](TestNode& self) {
        if (self.in() == 2) {
            together.arrive_and_wait();
        }
        TestNode::sum(self);
    };
    second->work = [&](TestNode& self) {
        if (self.in() == 1) {
            together.arrive_and_wait();
        }
        TestNode::sum(self);
    };
    Graph graph;
    buildChain(graph, source, {first, second}, sink);
    graph.start({});
    source->send(1);
    source->send(2);
    EXPECT_EQ(sink->values(2), (std::vector<std::int64_t>{1, 2}));
    graph.stop(StopMode::Drain);
}

TEST(GraphOrder, ANodeThatSuddenlyTakesLongHoldsUpNoneOfThoseThatWereShort) {
    constexpr int shortJobs = 500;
    std::latch isThere(1);
    auto source = std::make_shared<TestSource>();
    auto first = std::make_shared<TestNode>();
    auto second = std::make_shared<TestNode>();
    auto sink = std::make_shared<TestSink>();
    // The first node's last job ends only when the second node has had the job before.
    first->work = [&](TestNode& self) {
        if (self.in() == shortJobs + 1) {
            isThere.wait();
        }
        TestNode::sum(self);
    };
    second->work = [&](TestNode& self) {
        if (self.in() == shortJobs) {
            isThere.count_down();
        }
        TestNode::sum(self);
    };
    Graph graph;
    buildChain(graph, source, {first, second}, sink);
    graph.start({});
    for (int value = 0; value <= shortJobs + 1; ++value) {
        ASSERT_TRUE(source->waitUntilSpaceAvailable());
        source->send(value);
    }
    EXPECT_EQ(sink->values(shortJobs + 2).back(), shortJobs + 1);
    graph.stop(StopMode::Drain);
}

TEST(GraphOrder, NoJobRunsInTheThreadOfTheSource) {
    auto source = std::make_shared<TestSource>();
    auto node = std::make_shared<TestNode>();
    auto sink = std::make_shared<TestSink>();
    std::set<std::thread::id> threads;
    node->work = [&](TestNode& self) {
        threads.insert(std::this_thread::get_id());
        TestNode::sum(self);
    };
    Graph graph;
    buildChain(graph, source, {node}, sink);
    graph.start({});
    for (int value = 0; value < 100; ++value) {
        ASSERT_TRUE(source->waitUntilSpaceAvailable());
        source->send(value);
    }
    graph.stop(StopMode::Drain);
    EXPECT_EQ(threads.count(std::this_thread::get_id()), 0U);
}

TEST(GraphOrder, AllReadersOfAPinGetTheSameValue) {
    auto source = std::make_shared<TestSource>();
    auto first = std::make_shared<TestSink>();
    auto second = std::make_shared<TestSink>();
    Graph graph;
    graph.addNode("Source", source);
    graph.attachSink("Source", "Out", first);
    graph.attachSink("Source", "Out", second);
    graph.start({});
    source->send(1);
    graph.stop(StopMode::Drain);
    const auto a = first->entries();
    const auto b = second->entries();
    EXPECT_EQ(a.at(0).value.get<Integer>(true), b.at(0).value.get<Integer>(true));
}

TEST(GraphOrder, AThousandNodesCarryTheirValues) {
    constexpr int length = 1000;
    auto source = std::make_shared<TestSource>();
    auto sink = std::make_shared<TestSink>();
    Graph graph;
    graph.addNode("0", source);
    for (int index = 1; index <= length; ++index) {
        const gcstring name(std::to_string(index));
        graph.addNode(name, std::make_shared<TestNode>());
        graph.connect(gcstring(std::to_string(index - 1)), "Out", name, "In");
    }
    graph.attachSink(gcstring(std::to_string(length)), "Out", sink);
    graph.start({});
    std::vector<std::int64_t> expected;
    for (int value = 0; value < 50; ++value) {
        ASSERT_TRUE(source->waitUntilSpaceAvailable());
        source->send(value);
        expected.push_back(value);
    }
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), expected);
    EXPECT_EQ(graph.statistics().executedJobs, 50U * length);
}

// The load that is called ordinary: no value is lost or overtaken on the way.
TEST(GraphOrder, TenThousandUpdatesPassAThousandNodesInOrder) {
    constexpr int chains = 10;
    constexpr int length = 100;
#ifdef __SANITIZE_THREAD__
    constexpr int updates = 1000;  // a job takes a hundred times as long there
#else
    constexpr int updates = 10000;
#endif
    auto source = std::make_shared<TestSource>();
    std::vector<std::shared_ptr<TestSink>> sinks;
    Graph graph;
    graph.addNode("Source", source);
    for (int chain = 0; chain < chains; ++chain) {
        gcstring last = "Source";
        for (int index = 0; index < length; ++index) {
            const gcstring name(std::to_string(chain) + "-" + std::to_string(index));
            graph.addNode(name, std::make_shared<TestNode>());
            graph.connect(last, "Out", name, "In");
            last = name;
        }
        sinks.push_back(std::make_shared<TestSink>());
        graph.attachSink(last, "Out", sinks.back());
    }
    graph.start({});
    std::vector<std::int64_t> expected;
    for (int value = 0; value < updates; ++value) {
        ASSERT_TRUE(source->waitUntilSpaceAvailable());
        source->send(value);
        expected.push_back(value);
    }
    graph.stop(StopMode::Drain);
    for (const auto& sink : sinks) {
        EXPECT_EQ(sink->values(), expected);
    }
    EXPECT_EQ(graph.statistics().droppedJobs, 0U);
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
