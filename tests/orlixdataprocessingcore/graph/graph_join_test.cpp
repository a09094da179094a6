// Where several inputs meet.
#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/testnodes.h"
#include "orlixdataprocessingcore/expectthrow.h"
#include "orlixdataprocessingcore/graph/graph.h"

namespace Orlix::DataProcessing::Core {
namespace {

using Numbers = std::vector<std::int64_t>;

// A source with two pins, and a join of both behind which a sink reads.
class GraphJoin : public testing::Test {
protected:
    GraphJoin() {
        graph.addNode("Source", source);
        graph.addNode("Join", join);
        graph.attachSink("Join", "Out", sink);
    }

    void connectBoth() {
        graph.connect("Source", "A", "Join", "X");
        graph.connect("Source", "B", "Join", "Y");
    }
    void send(std::int64_t a, std::int64_t b) {
        ASSERT_TRUE(source->waitUntilSpaceAvailable());
        source->send(PinValues{{"A", integer(a)}, {"B", integer(b)}});
    }

    // Runs with an input Y that has kept 10 and an input X that has had 1.
    void startWithKeptInput() {
        join->setAutoResetEnabled("Y", false);
        connectBoth();
        graph.start({});
        source->send(PinValues{{"B", integer(10)}});
        source->send(PinValues{{"A", integer(1)}});
        ASSERT_EQ(sink->waitFor(2).size(), 2U);
    }
    // What comes when Y has been reset: the sum of the first job, none of the next, 33.
    void expectThatYResets() {
        source->send(PinValues{{"A", integer(2)}});
        send(3, 30);
        graph.stop(StopMode::Drain);
        EXPECT_EQ(sink->values(), (Numbers{11, 33}));
        EXPECT_EQ(graph.statistics().droppedJobs, 1U);
    }

    std::shared_ptr<TestSource> source =
        std::make_shared<TestSource>(std::vector<gcstring>{"A", "B"});
    std::shared_ptr<TestNode> join = std::make_shared<TestNode>(std::vector<gcstring>{"X", "Y"});
    std::shared_ptr<TestSink> sink = std::make_shared<TestSink>();
    Graph graph;
};

TEST_F(GraphJoin, RunsANodeWithTheValuesOfOneUpdate) {
    connectBoth();
    graph.start({});
    send(1, 10);
    send(2, 20);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), (Numbers{11, 22}));
}

TEST_F(GraphJoin, MeetsAgainAfterWaysOfDifferentLength) {
    for (const char* const name : {"F", "G"}) {
        graph.addNode(name, std::make_shared<TestNode>());
    }
    graph.connect("Source", "A", "F", "In");
    graph.connect("F", "Out", "G", "In");
    graph.connect("G", "Out", "Join", "X");
    graph.connect("Source", "A", "Join", "Y");
    graph.start({});
    Numbers expected;
    for (int value = 0; value < 2000; ++value) {
        send(value, 0);
        expected.push_back(2 * value);
    }
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), expected);
    EXPECT_EQ(graph.statistics().droppedJobs, 0U);
}

TEST_F(GraphJoin, DropsAndCountsASetThatMissesAPin) {
    connectBoth();
    graph.start({});
    send(1, 10);
    source->send(PinValues{{"A", integer(2)}});
    send(3, 30);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), (Numbers{11, 33}));
    EXPECT_EQ(graph.statistics().droppedJobs, 1U);
    EXPECT_EQ(graph.statistics().executedJobs, 2U);
}

TEST_F(GraphJoin, TellsThoseBehindItOfASetThatWasDropped) {
    connectBoth();
    graph.start({});
    source->send(PinValues{{"A", integer(2)}});
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->skips(), 1U);
}

TEST_F(GraphJoin, AnUpdateWithoutAnyValueIsNoLoss) {
    connectBoth();
    graph.start({});
    source->send(PinValues{});
    graph.stop(StopMode::Drain);
    EXPECT_EQ(graph.statistics().droppedJobs, 0U);
    EXPECT_EQ(sink->skips(), 1U);
}

TEST_F(GraphJoin, MissingPinsNeverStopTheGraphHoweverManyThereAre) {
    connectBoth();
    graph.start({});
    for (int value = 0; value < 500; ++value) {
        ASSERT_TRUE(source->waitUntilSpaceAvailable());
        source->send(PinValues{{value % 2 == 0 ? "A" : "B", integer(value)}});
    }
    send(1, 1);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), Numbers{2});
    EXPECT_EQ(graph.statistics().droppedJobs, 500U);
}

TEST_F(GraphJoin, TwoThreadsOfOneSourceMayCreateTheirUpdatesInAnyOrder) {
    connectBoth();
    graph.start({});
    const auto first = makeUpdate();
    const auto second = makeUpdate();
    source->createJob(second, {{"A", integer(1)}, {"B", integer(1)}}, {});
    source->createJob(first, {{"A", integer(2)}, {"B", integer(2)}}, {});
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), (Numbers{2, 4}));
    EXPECT_EQ(graph.statistics().droppedJobs, 0U);
}

TEST(GraphSkips, InAnyOrderDropTheirSetsEvenInAFullQueue) {
    auto source = std::make_shared<TestSource>(std::vector<gcstring>{"A", "B"});
    auto sink = std::make_shared<TestSink>();
    Graph graph(GraphOptions{1});
    graph.addNode("Source", source);
    graph.addNode("Join", std::make_shared<TestNode>(std::vector<gcstring>{"X", "Y"}));
    graph.connect("Source", "A", "Join", "X");
    graph.connect("Source", "B", "Join", "Y");
    graph.attachSink("Join", "Out", sink);
    sink->setFull(true);
    graph.start({});
    const auto first = makeUpdate();
    const auto second = makeUpdate();
    source->createJob(second, {{"B", integer(1)}}, {});
    source->createJob(first, {{"B", integer(2)}}, {});
    graph.stop(StopMode::Drain);
    ASSERT_EQ(sink->skips(), 2U);
    EXPECT_EQ(sink->entries()[0].update, second);
    EXPECT_EQ(sink->entries()[1].update, first);
    EXPECT_EQ(graph.statistics().droppedJobs, 2U);
}

TEST_F(GraphJoin, AnInputWithoutAutoResetKeepsItsLastValueAndHoldsNoJobBack) {
    startWithKeptInput();
    source->send(PinValues{{"A", integer(2)}});
    static_cast<void>(sink->waitFor(3));
    source->send(PinValues{{"B", integer(100)}});
    source->send(PinValues{{"A", integer(3)}});
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), (Numbers{11, 12, 103}));
    EXPECT_EQ(graph.statistics().droppedJobs, 0U);
}

TEST_F(GraphJoin, AJobBeforeTheFirstValueOfANeededInputIsDropped) {
    join->setAutoResetEnabled("Y", false);
    connectBoth();
    graph.start({});
    source->send(PinValues{{"A", integer(1)}});
    graph.stop(StopMode::Drain);
    EXPECT_TRUE(sink->values().empty());
    EXPECT_EQ(graph.statistics().droppedJobs, 1U);
}

TEST_F(GraphJoin, AutoResetMaySwitchBackWhileTheGraphRuns) {
    startWithKeptInput();
    join->setAutoResetEnabled("Y", true);
    expectThatYResets();
}

TEST_F(GraphJoin, ValuesWhosePartnersWereKeptAreNotWaitedForWhenTheInputResetsAgain) {
    std::latch begun(1);
    std::latch goesOn(1);
    join->work = [&](TestNode& self) {
        begun.count_down();
        goesOn.wait();
        self.work = TestNode::sum;
        TestNode::sum(self);
    };
    join->setAutoResetEnabled("Y", false);
    connectBoth();
    graph.start({});
    source->send(PinValues{{"B", integer(0)}});
    source->send(PinValues{{"A", integer(0)}});
    begun.wait();
    for (std::size_t place = 0; place < GraphOptions().connectionCapacity; ++place) {
        send(1, 10);
    }
    join->setAutoResetEnabled("Y", true);
    goesOn.count_down();
    send(2, 20);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), (Numbers{0, 22}));
}

// The skips take one place together, and come out of order at their end.
TEST_F(GraphJoin, ValuesWhosePartnersWereSkippedAreNotWaitedForWhenTheInputResetsAgain) {
    std::latch begun(1);
    std::latch goesOn(1);
    join->work = [&](TestNode& self) {
        begun.count_down();
        goesOn.wait();
        self.work = TestNode::sum;
        TestNode::sum(self);
    };
    join->remakeInput("Y", 1, false, 1);
    connectBoth();
    graph.start({});
    source->send(PinValues{{"A", integer(1)}, {"B", integer(10)}});
    begun.wait();
    std::vector<UpdatePtr> updates;
    for (std::size_t count = 0; count < 16; ++count) {
        updates.push_back(makeUpdate());
    }
    std::swap(updates[14], updates[15]);
    for (const UpdatePtr& update : updates) {
        source->createJob(update, PinValues{{"A", integer(2)}}, {});
    }
    join->setAutoResetEnabled("Y", false);
    join->setAutoResetEnabled("Y", true);
    goesOn.count_down();
    ASSERT_EQ(sink->waitFor(1 + updates.size()).size(), 1 + updates.size());
    send(3, 30);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), (Numbers{11, 33}));
    EXPECT_EQ(graph.statistics().droppedJobs, updates.size());
}

// A source may hand updates over out of order.
TEST_F(GraphJoin, AKeptInputDoesNotMakeOthersDropAnOlderUpdate) {
    auto three = std::make_shared<TestNode>(std::vector<gcstring>{"X", "Y", "Z"});
    auto sums = std::make_shared<TestSink>();
    graph.addNode("Three", three);
    graph.attachSink("Three", "Out", sums);
    three->setAutoResetEnabled("Z", false);
    connectBoth();
    graph.connect("Source", "A", "Three", "X");
    graph.connect("Source", "B", "Three", "Y");
    graph.connect("Source", "A", "Three", "Z");
    graph.start({});
    const auto older = makeUpdate();
    send(1, 10);
    ASSERT_EQ(sums->waitFor(1).size(), 1U);
    source->createJob(older, PinValues{{"A", integer(2)}, {"B", integer(20)}}, {});
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sums->values(), (Numbers{12, 24}));
}

TEST_F(GraphJoin, AutoResetMaySwitchBackAndForthWhileTheNodeIsServed) {
    constexpr std::int64_t sent = 1000;
    connectBoth();
    graph.start({});
    std::atomic<bool> isOver{false};
    std::thread switching([&] {
        do {
            for (const char* pin : {"X", "Y"}) {
                join->setAutoResetEnabled(pin, false);
            }
            for (const char* pin : {"X", "Y"}) {
                join->setAutoResetEnabled(pin, true);
            }
        } while (!isOver);
    });
    for (std::int64_t number = 1; number <= sent; ++number) {
        send(number, 0);
    }
    isOver = true;
    switching.join();
    send(sent, 1);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values().back(), sent + 1);
}

TEST_F(GraphJoin, IfNoInputHasAutoResetEveryValueMakesAJob) {
    join->setAutoResetEnabled("X", false);
    join->setAutoResetEnabled("Y", false);
    connectBoth();
    graph.start({});
    send(1, 10);
    source->send(PinValues{{"A", integer(2)}});
    source->send(PinValues{{"B", integer(20)}});
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), (Numbers{11, 12, 22}));
}

// Such as an image whose end gives its buffer back to a stream.
TEST_F(GraphJoin, AKeptValueThatIsReplacedEndsWithNoLockHeld) {
    join->setAutoResetEnabled("X", false);
    join->setAutoResetEnabled("Y", false);
    connectBoth();
    graph.start({});
    std::future<void> asked;
    std::promise<std::future_status> status;
    Integer value(1);
    value.setError(
        std::shared_ptr<IError>(new DeviceError("kept", DateTime()), [&](const IError* error) {
            delete error;
            asked = std::async(std::launch::async, [&] { static_cast<void>(graph.statistics()); });
            status.set_value(asked.wait_for(std::chrono::seconds(10)));
        }));
    source->send(PinValues{{"A", Utils::Variant(std::move(value))}});
    value = Integer(0);
    send(2, 20);
    EXPECT_EQ(status.get_future().get(), std::future_status::ready);
    graph.stop(StopMode::Drain);
}

TEST_F(GraphJoin, AnOptionalInputMayBeMissingFromAnUpdate) {
    auto optional = std::make_shared<TestNode>(std::vector<gcstring>{"X", "Y"}, true);
    auto reader = std::make_shared<TestSink>();
    graph.addNode("Optional", optional);
    graph.attachSink("Optional", "Out", reader);
    graph.connect("Source", "A", "Optional", "X");
    graph.connect("Source", "B", "Optional", "Y");
    connectBoth();
    graph.start({});
    source->send(PinValues{{"A", integer(5)}});
    send(1, 1);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(reader->values(), (Numbers{5, 2}));
}

TEST_F(GraphJoin, AnInputThatIsMadeAnewInARunIsNeededOrNotAsItSaysNow) {
    connectBoth();
    graph.start({});
    join->remakeInput("Y", 1, true);
    source->send(PinValues{{"A", integer(5)}});
    static_cast<void>(sink->waitFor(1));
    join->remakeInput("Y", 1, false);
    source->send(PinValues{{"A", integer(6)}});
    send(1, 10);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), (Numbers{5, 11}));
    EXPECT_EQ(graph.statistics().droppedJobs, 1U);
}

TEST_F(GraphJoin, AnInputThatIsMadeAnewInARunResetsAgain) {
    startWithKeptInput();
    join->remakeInput("Y", 1);
    expectThatYResets();
}

TEST_F(GraphJoin, RefusesInputsThatCanNeverShareAnUpdate) {
    graph.addNode("Second", std::make_shared<TestSource>());
    graph.connect("Source", "A", "Join", "X");
    graph.connect("Second", "Out", "Join", "Y");
    Orlix::Test::expectThrow<GenICam::RuntimeException>(
        [&] { graph.validate(); },
        "The inputs \"X\" and \"Y\" of node \"Join\" get their values from different sources "
        "and can never have a value of the same update. Connect them to one source, or switch "
        "auto reset off for one.");
    EXPECT_THROW(graph.start({}), GenICam::RuntimeException);
    join->setAutoResetEnabled("Y", false);
    graph.validate();
}

TEST_F(GraphJoin, RefusesOutputsOfOneSourceWhoseUpdatesNeverMeet) {
    source->setUpdateGroup("B", "event");
    graph.addNode("F", std::make_shared<TestNode>());
    graph.connect("Source", "A", "F", "In");
    graph.connect("F", "Out", "Join", "X");
    graph.connect("Source", "B", "Join", "Y");
    Orlix::Test::expectThrow<GenICam::RuntimeException>(
        [&] { graph.validate(); },
        "The inputs \"X\" and \"Y\" of node \"Join\" can never have a value of the same "
        "update: the outputs behind \"F.Out\" and \"Source.B\" have updates of their own. "
        "Switch auto reset off for one.");
    source->setUpdateGroup("A", "event");
    graph.validate();
    source->setUpdateGroup("A", "other");
    join->setAutoResetEnabled("Y", false);
    graph.validate();
}

TEST_F(GraphJoin, AnOutputWithUpdatesOfItsOwnMayFeedBothInputs) {
    source->setUpdateGroup("B", "event");
    graph.connect("Source", "B", "Join", "X");
    graph.connect("Source", "B", "Join", "Y");
    graph.validate();
}

TEST_F(GraphJoin, OnlyAnOutputThatIsThereHasAnUpdateGroup) {
    EXPECT_THROW(source->setUpdateGroup("C", "event"), GenICam::InvalidArgumentException);
}

// Switches auto reset off in the middle of being connected, as another thread might.
class KeepingNode : public TestNode {
public:
    KeepingNode() : TestNode({"X", "Y"}) {}
    ~KeepingNode() override { cleanup(); }

protected:
    void onInputTypeConfigured(const gcstring& name, const Utils::TypeInfo&) override {
        if (name == "Y") {
            setAutoResetEnabled(name, false);
        }
    }
};

TEST(GraphAutoReset, AChangeInTheMiddleOfConnectingIsNotLost) {
    auto source = std::make_shared<TestSource>(std::vector<gcstring>{"A", "B"});
    auto sink = std::make_shared<TestSink>();
    Graph graph;
    graph.addNode("Source", source);
    graph.addNode("Join", std::make_shared<KeepingNode>());
    graph.connect("Source", "A", "Join", "X");
    graph.connect("Source", "B", "Join", "Y");
    graph.attachSink("Join", "Out", sink);
    graph.start({});
    source->send(PinValues{{"B", integer(10)}});
    source->send(PinValues{{"A", integer(1)}});
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), Numbers{11});
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
