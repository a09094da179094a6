// How a graph is built, and what it carries in the plain case.
#include "orlixdataprocessingcore/graph/graph.h"

#include "orlixdataprocessingcore/core/testnodes.h"

namespace Orlix::DataProcessing::Core {
namespace {

TEST(Graph, CarriesValuesFromASourceThroughAChainInOrder) {
    Graph graph;
    auto source = std::make_shared<TestSource>();
    auto sink = std::make_shared<TestSink>();
    graph.addNode("Source", source);
    gcstring last = "Source";
    for (const char* const name : {"A", "B", "C"}) {
        auto node = std::make_shared<TestNode>();
        node->work = [](TestNode& self) { self.out(self.in() + 1); };
        graph.addNode(name, node);
        graph.connect(last, "Out", name, "In");
        last = name;
    }
    graph.attachSink("C", "Out", sink);
    graph.start({});
    std::vector<std::int64_t> expected;
    for (int value = 0; value < 1000; ++value) {
        ASSERT_TRUE(source->waitUntilSpaceAvailable());
        source->send(value);
        expected.push_back(value + 3);
    }
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), expected);
    EXPECT_EQ(graph.statistics().executedJobs, 3000U);
}

TEST(Graph, ASinkThatIsDetachedGetsNothingMore) {
    const auto source = std::make_shared<TestSource>();
    const auto left = std::make_shared<TestSink>();
    const auto kept = std::make_shared<TestSink>();
    Graph graph;
    graph.addNode("S", source);
    graph.attachSink("S", "Out", left);
    graph.attachSink("S", "Out", kept);
    const auto runWith = [&](std::int64_t value) {
        graph.start({});
        ASSERT_TRUE(source->waitUntilSpaceAvailable());
        source->send(value);
        EXPECT_THROW(graph.detachSink(kept), GenICam::RuntimeException);
        graph.stop(StopMode::Drain);
    };
    runWith(1);
    graph.detachSink(left);
    graph.detachSink(left);
    EXPECT_EQ(left.use_count(), 1);
    runWith(2);
    EXPECT_EQ(left->values(), (std::vector<std::int64_t>{1}));
    EXPECT_EQ(kept->values(), (std::vector<std::int64_t>{1, 2}));
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
