// Outputs that a node removes and makes anew while the graph lives: whoever read them reads them
// again, and nobody waits for one that is gone.
#include <atomic>
#include <latch>
#include <memory>
#include <set>
#include <thread>

#include "orlixdataprocessingcore/graph/testgraphs.h"

namespace Orlix::DataProcessing::Core {
namespace {

using Numbers = std::vector<std::int64_t>;

// A source whose outputs come and go.
class RewiringSource : public TestSource {
public:
    using TestSource::TestSource;

    template <typename T = Integer>
    void make(const gcstring& name) {
        createOutput(name, "", Utils::TypeInfo::getTypeInfo<T>(true), true, unlimitedJobs);
    }
    void remake(const gcstring& name) {
        removeOutput(name);
        make(name);
    }
};

class GraphRewiring : public testing::Test {
protected:
    // "Source.A" through "F" and "Source.B" straight meet in "Join".
    GraphRewiring() {
        graph.addNode("Source", source);
        graph.addNode("F", std::make_shared<TestNode>());
        graph.addNode("Join", join);
        graph.connect("Source", "A", "F", "In");
        graph.connect("F", "Out", "Join", "X");
        graph.connect("Source", "B", "Join", "Y");
        graph.attachSink("Join", "Out", sink);
    }

    void send(const PinValues& values) {
        ASSERT_TRUE(source->waitUntilSpaceAvailable());
        source->send(values);
    }
    void sendBoth(std::int64_t a, std::int64_t b) { send({{"A", integer(a)}, {"B", integer(b)}}); }

    std::shared_ptr<RewiringSource> source =
        std::make_shared<RewiringSource>(std::vector<gcstring>{"A", "B"});
    std::shared_ptr<TestNode> join = std::make_shared<TestNode>(std::vector<gcstring>{"X", "Y"});
    std::shared_ptr<TestSink> sink = std::make_shared<TestSink>();
    Graph graph{GraphOptions{4}};
};

TEST_F(GraphRewiring, AnOutputThatIsMadeAnewInARunIsConnectedAgain) {
    graph.start({});
    sendBoth(1, 10);
    source->remake("A");
    sendBoth(2, 20);
    source->remake("B");
    sendBoth(3, 30);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), (Numbers{11, 22, 33}));
    EXPECT_EQ(graph.statistics().droppedJobs, 0U);
}

TEST_F(GraphRewiring, AReaderOfAnOutputThatIsMadeAnewReadsItAgain) {
    const auto reader = std::make_shared<TestSink>();
    graph.attachSink("Source", "A", reader);
    graph.start({});
    sendBoth(1, 0);
    source->remake("A");
    EXPECT_TRUE(reader->hasListener());
    sendBoth(2, 0);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(reader->values(), (Numbers{1, 2}));
}

TEST_F(GraphRewiring, ANodeThatRemakesItsOutputInAJobLosesNothing) {
    join->work = [](TestNode& self) {
        TestNode::sum(self);
        self.removeOutput("Out");
        self.createOutput("Out", "", self.output, true, unlimitedJobs);
    };
    graph.start({});
    sendBoth(1, 10);
    static_cast<void>(sink->waitFor(1));
    sendBoth(2, 20);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->entries().size(), 2U);
    EXPECT_EQ(sink->values().back(), 22);
}

TEST_F(GraphRewiring, NobodyWaitsForAnOutputThatIsGone) {
    graph.start({});
    source->removeOutput("A");
    for (int value = 0; value < 100; ++value) {
        send({{"B", integer(value)}});
    }
    source->make("A");
    sendBoth(1, 10);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), Numbers{11});
    EXPECT_EQ(sink->skips(), 100U);
    EXPECT_EQ(graph.statistics().droppedJobs, 100U);
}

TEST_F(GraphRewiring, NobodyWaitsForAnOutputEvenIfOneAfterTheOtherGoes) {
    source->make("C");
    graph.start({});
    source->removeOutput("A");
    source->removeOutput("C");
    for (int value = 0; value < 100; ++value) {
        send({{"B", integer(value)}});
    }
    source->removeOutput("B");
    source->send(PinValues{});
    source->make("A");
    source->make("B");
    sendBoth(1, 10);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), Numbers{11});
}

TEST_F(GraphRewiring, ASinkThatIsFullHoldsNobodyBackOnceItsOutputIsBackAndItHasSpace) {
    const auto reader = std::make_shared<TestSink>();
    graph.attachSink("Source", "A", reader);
    graph.start({});
    reader->setFull(true);
    source->remake("A");
    std::thread producer([&] { sendBoth(1, 10); });
    reader->setFull(false);
    producer.join();
    graph.stop(StopMode::Drain);
    EXPECT_EQ(reader->values(), Numbers{1});
}

TEST_F(GraphRewiring, AStartNeedsAllOutputsAndTypesThatFit) {
    source->removeOutput("A");
    EXPECT_THROW(graph.start({}), GenICam::InvalidArgumentException);
    source->make<String>("A");
    try {
        graph.start({});
        FAIL();
    } catch (const GenICam::InvalidArgumentException& exception) {
        EXPECT_NE(gcstring(exception.GetDescription()).find("\"Source.A\" to \"F.In\""),
                  gcstring::npos);
    }
    source->remake("A");
    graph.start({});
    sendBoth(1, 10);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), Numbers{11});
}

TEST_F(GraphRewiring, EveryUpdateComesOnceThoughOutputsAreRemadeOnOtherThreads) {
    constexpr int updates = 500;
    const auto reader = std::make_shared<TestSink>();
    graph.attachSink("Source", "A", reader);
    graph.start({});
    std::atomic<bool> ends{false};
    std::vector<std::thread> remakers;
    for (const char* const pin : {"A", "B"}) {
        remakers.emplace_back([&, pin] {
            while (!ends) {
                source->remake(pin);
                std::this_thread::yield();  // the values need the processors too
            }
        });
    }
    for (int value = 0; value < updates; ++value) {
        sendBoth(value, value);
    }
    ends = true;
    for (std::thread& thread : remakers) {
        thread.join();
    }
    sendBoth(updates, updates);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(reader->values().back(), updates);
    EXPECT_EQ(sink->values().back(), 2 * updates);
    EXPECT_EQ(sink->entries().size(), static_cast<std::size_t>(updates) + 1);
    for (const auto& each : {reader, sink}) {
        std::set<std::uint64_t> seen;
        for (const TestSink::Entry& entry : each->entries()) {
            EXPECT_TRUE(seen.insert(entry.update->getSequenceNumber()).second);
        }
    }
}

TEST(GraphRewiringEnd, TheGraphMayEndWhileANodeRemakesItsOutputs) {
    for (int round = 0; round < 20; ++round) {
        auto source = std::make_shared<RewiringSource>();
        auto sink = std::make_shared<TestSink>();
        auto graph = std::make_unique<Graph>();
        buildChain(*graph, source, {std::make_shared<TestNode>()}, sink);
        graph->start({});
        std::latch begun(1);
        std::atomic<bool> ends{false};
        std::thread remaker([&] {
            begun.count_down();
            while (!ends) {
                source->remake("Out");
            }
        });
        begun.wait();
        graph.reset();
        ends = true;
        remaker.join();
        EXPECT_EQ(source.use_count(), 1);
        EXPECT_FALSE(sink->hasListener());
    }
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
