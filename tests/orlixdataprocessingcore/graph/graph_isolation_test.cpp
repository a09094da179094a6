// What runs on which thread: jobs of the graph beside parallel loops in a job, beside jobs that
// block, and beside threads that tell the graph of something.
#include <tbb/parallel_for.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <latch>
#include <memory>
#include <thread>

#include "orlixcamera/conversion/parallelstrips.h"
#include "orlixdataprocessingcore/graph/testgraphs.h"
#include "orlixdataprocessingcore/threading/threadpool.h"
#include "orlixdataprocessingcore/threading/uniquelock.h"

namespace Orlix::DataProcessing::Core {
namespace {

using NodeLock = Threading::UniqueLock<Threading::IRecursiveLockable>;
using Turn = std::function<void(std::size_t)>;

// A node that holds its lock while it runs a loop of two turns, and others that have jobs
// meanwhile. The turn that another thread takes ends when those jobs are done, so the node's thread
// waits.
class LoopInAJob : public testing::Test {
protected:
    static constexpr int others = 8;

    explicit LoopInAJob() {
        graph.addNode("Source", source);
        graph.addNode("Looping", looping);
        graph.connect("Source", "Loop", "Looping", "In");
        for (int index = 0; index < others; ++index) {
            auto other = std::make_shared<TestNode>();
            other->work = [this](TestNode&) {
                // Only the thread that holds the lock gets it.
                if (looping->getLock()->tryLock()) {
                    looping->getLock()->unlock();
                    ranInTheLoop = true;
                }
                // Long enough for the waiting thread to be tempted by what is left.
                for (int turn = 0; turn < 100; ++turn) {
                    std::this_thread::yield();
                }
                othersDone.count_down();
            };
            const gcstring name(std::to_string(index));
            graph.addNode(name, other);
            graph.connect("Source", "Other", name, "In");
        }
    }

    void takeTurn(std::thread::id caller) {
        if (std::this_thread::get_id() == caller) {
            begunElsewhere.wait();
            return;
        }
        source->send(PinValues{{"Other", integer(1)}});
        begunElsewhere.count_down();
        othersDone.wait();
    }

    void run(const std::function<void(const Turn&)>& loop) {
        looping->work = [this, loop](TestNode& self) {
            const NodeLock lock(*self.getLock());
            const auto caller = std::this_thread::get_id();
            loop([this, caller](std::size_t) { takeTurn(caller); });
        };
        graph.start({});
        source->send(PinValues{{"Loop", integer(1)}});
        othersDone.wait();
        graph.stop(StopMode::Drain);
        EXPECT_FALSE(ranInTheLoop);
    }

    std::shared_ptr<TestSource> source =
        std::make_shared<TestSource>(std::vector<gcstring>{"Loop", "Other"});
    std::shared_ptr<TestNode> looping = std::make_shared<TestNode>();
    std::latch begunElsewhere{1};
    std::latch othersDone{others};
    std::atomic<bool> ranInTheLoop{false};
    Graph graph;
};

TEST_F(LoopInAJob, ItsThreadTakesUpNoOtherJobWhileItWaits) {
    run([](const Turn& turn) { RunStrips(2, turn); });
}

// As code may have them that knows nothing of the graph.
TEST_F(LoopInAJob, ItsThreadTakesUpNoOtherJobEvenIfTheLoopIsNotIsolated) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the thread library's hand-over of the turns isn't instrumented";
#endif
    run([](const Turn& turn) { tbb::parallel_for(std::size_t{0}, std::size_t{2}, turn); });
}

class BlockedJob final : public Threading::IJob {
public:
    BlockedJob(std::latch& begun, std::latch& mayEnd, std::latch& ended)
        : begun_(begun), mayEnd_(mayEnd), ended_(ended) {}
    void execute() override {
        begun_.count_down();
        mayEnd_.wait();
    }
    void onFinished() override { ended_.count_down(); }
    [[nodiscard]] gcstring getName() const override { return "blocked"; }

private:
    std::latch& begun_;
    std::latch& mayEnd_;
    std::latch& ended_;
};

TEST(GraphThreads, JobsOfAPoolThatBlockTakeNoThreadFromTheGraph) {
    constexpr int jobs = 32;
    std::latch begun(jobs);
    std::latch mayEnd(1);
    std::latch ended(jobs);
    for (int index = 0; index < jobs; ++index) {
        getDefaultThreadPool()->submit(std::make_shared<BlockedJob>(begun, mayEnd, ended));
    }
    begun.wait();
    auto source = std::make_shared<TestSource>();
    auto sink = std::make_shared<TestSink>();
    Graph graph;
    buildChain(graph, source, {std::make_shared<TestNode>(), std::make_shared<TestNode>()}, sink);
    graph.start({});
    source->send(5);
    EXPECT_EQ(sink->values(1), std::vector<std::int64_t>{5});
    graph.stop(StopMode::Drain);
    mayEnd.count_down();
    ended.wait();
}

// Whoever tells may hold the lock of the very node whose job can run now.
TEST(GraphThreads, ATellerThatHoldsANodesLockRunsNoJobAndWaitsForNone) {
    auto source = std::make_shared<TestSource>();
    auto node = std::make_shared<TestNode>();
    auto sink = std::make_shared<TestSink>();
    std::thread::id ranIn;
    node->work = [&](TestNode& self) {
        const NodeLock lock(*self.getLock());
        ranIn = std::this_thread::get_id();
        TestNode::sum(self);
    };
    Graph graph;
    buildChain(graph, source, {node}, sink);
    graph.start({});
    sink->setFull(true);
    source->send(1);
    {
        const NodeLock lock(*node->getLock());
        sink->setFull(false);
        node->setAutoResetEnabled("In", false);
        node->setAutoResetEnabled("In", true);
        EXPECT_TRUE(sink->values().empty());
    }
    EXPECT_EQ(sink->values(1), std::vector<std::int64_t>{1});
    EXPECT_NE(ranIn, std::this_thread::get_id());
    graph.stop(StopMode::Drain);
}

// Jobs that have been short so far are left to few threads. Those that wait must not suffer when
// one of them isn't short.
class ShortJobs : public testing::Test {
protected:
    static constexpr std::int64_t warmUps = 300;
    static constexpr std::int64_t special = -1;

    static void warmUp(TestSource& source, const TestSink& sink) {
        for (std::int64_t value = 0; value < warmUps; ++value) {
            ASSERT_TRUE(source.waitUntilSpaceAvailable());
            source.send(value);
        }
        static_cast<void>(sink.waitFor(warmUps));
    }

    // A node that does something of its own at the special value.
    static std::shared_ptr<TestNode> makeNode(const std::function<void()>& atSpecial) {
        auto node = std::make_shared<TestNode>();
        node->work = [atSpecial](TestNode& self) {
            if (self.in() == special) {
                atSpecial();
            }
            TestNode::sum(self);
        };
        return node;
    }
};

TEST_F(ShortJobs, OneThatBlocksHoldsUpNoOtherGraph) {
    std::latch begun(1);
    std::latch otherRan(1);
    const auto source = std::make_shared<TestSource>();
    const auto sink = std::make_shared<TestSink>();
    const auto otherSource = std::make_shared<TestSource>();
    const auto otherSink = std::make_shared<TestSink>();
    Graph graph;
    Graph other;
    buildChain(graph, source, {makeNode([&] {
                   begun.count_down();
                   otherRan.wait();
               })},
               sink);
    buildChain(other, otherSource, {makeNode([&] { otherRan.count_down(); })}, otherSink);
    graph.start({});
    other.start({});
    warmUp(*source, *sink);
    warmUp(*otherSource, *otherSink);

    source->send(special);
    begun.wait();
    otherSource->send(special);
    EXPECT_EQ(otherSink->values(warmUps + 1).back(), special);
    EXPECT_EQ(sink->values(warmUps + 1).back(), special);
    graph.stop(StopMode::Drain);
    other.stop(StopMode::Drain);
}

TEST_F(ShortJobs, ThoseBehindALongOneOfTheSameThreadGoToAnother) {
    std::latch shortRan(1);
    const auto source = std::make_shared<TestSource>();
    const auto sink = std::make_shared<TestSink>();
    const auto longSink = std::make_shared<TestSink>();
    const auto longNode = makeNode([&] { shortRan.wait(); });
    longNode->work = [inner = longNode->work](TestNode& self) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(50);
        while (std::chrono::steady_clock::now() < end) {
            std::this_thread::yield();
        }
        inner(self);
    };
    Graph graph;
    buildChain(graph, source, {std::make_shared<TestNode>()});
    graph.addNode("Long", longNode);
    graph.addNode("Short", makeNode([&] { shortRan.count_down(); }));
    // The thread that has run A goes on with the first of these.
    graph.connect("A", "Out", "Long", "In");
    graph.connect("A", "Out", "Short", "In");
    graph.attachSink("Long", "Out", longSink);
    graph.attachSink("Short", "Out", sink);
    graph.start({});
    warmUp(*source, *sink);
    static_cast<void>(longSink->waitFor(warmUps));

    source->send(special);
    EXPECT_EQ(sink->values(warmUps + 1).back(), special);
    EXPECT_EQ(longSink->values(warmUps + 1).back(), special);
    graph.stop(StopMode::Drain);
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
