// The end of a run of ImageLoading: by the host, by a receiver of the node's own jobs, by both.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <latch>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

#include "genapi/genapi.h"
#include "orlixdataprocessingcore/core/graphupdate.h"
#include "support/imageloadingfixture.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr auto deadlock = std::errc::resource_deadlock_would_occur;

class ImageLoadingStopping : public ImageLoadingFixture {
protected:
    ImageLoadingStopping() {
        useThreeImages();
        node.setNumberOfImages(3);
    }

    static Core::NodeState stateOf(Core::INode& node) { return node.getState(); }

    // Calls the function on the worker, in the first job that the signal tells of.
    template <typename Signal, typename Function>
    static Utils::ScopedConnection inFirstJob(const std::shared_ptr<Signal>& signal,
                                              Function function) {
        return {signal->connect([function, isFirst = true](const auto&...) mutable {
                    if (std::exchange(isFirst, false)) {
                        function();
                    }
                }),
                true};
    }

    // Starts a node that its first job stops; what that stop raises.
    template <typename Signal>
    static std::error_code startAndStopInAJob(ImageLoading& node,
                                              const std::shared_ptr<Signal>& signal) {
        std::latch isRunning(1);
        std::promise<std::error_code> raised;
        const auto connection = inFirstJob(signal, [&] {
            isRunning.wait();
            raised.set_value(getErrorCode([&] { node.stop(); }));
        });
        node.start(Arguments());
        isRunning.count_down();
        return raised.get_future().get();
    }

    void runThreeImages() {
        const std::size_t before = pathSink->values().size();
        node.start(Arguments());
        pathSink->waitForCount(before + 3);
        node.stop();
    }
};

TEST_F(ImageLoadingStopping, StopEndsANodeThatWaitsForSpace) {
    useThreeImages();
    imageSink->setSpace(false);
    node.setRunContinuously(true);
    node.start(Arguments());
    node.stop();
    EXPECT_THAT(imageSink->values(), IsEmpty());
}

TEST_F(ImageLoadingStopping, StopWaitsForTheTurnAndNoFurtherOneBegins) {
    useThreeImages();
    const auto gated = std::make_shared<FakeFrameClock>(0);
    std::promise<void> stopBegun;
    ImageLoading other(nullptr, gated);
    other.setSourcePath(folder.path().c_str());
    other.setRunContinuously(true);
    const auto sink = std::make_shared<RecordingSink>();
    const auto handle = other.attachOutputSink("Image", sink);
    other.start(Arguments());
    gated->waitForSleeps(1);
    // The parameters become writable when the stop has begun.
    GenApi::Register(other.getNodeMapInfos().at(0).GetNodeMap()->GetNode("SourcePath"),
                     [&](GenApi::INode*) { stopBegun.set_value(); });
    std::atomic<bool> stopReturned = false;
    bool workerHadEnded = false;
    std::thread stopper([&] {
        other.stop();
        workerHadEnded = gated->hasWorkerEnded();
        stopReturned = true;
    });
    stopBegun.get_future().wait();
    // The worker sleeps within its turn.
    EXPECT_FALSE(stopReturned);
    gated->permit(1);
    stopper.join();
    EXPECT_TRUE(workerHadEnded);
    EXPECT_THAT(gated->sleeps(), SizeIs(1));
    EXPECT_THAT(sink->values(), SizeIs(1));
    EXPECT_EQ(static_cast<Core::INode&>(other).getState(), Core::NodeState::Stopped);
}

TEST_F(ImageLoadingStopping, CanBeDestroyedWhileItRuns) {
    const auto ownClock = std::make_shared<FakeFrameClock>();
    auto other = std::make_unique<ImageLoading>(nullptr, ownClock);
    other->setSourcePath(folder.path().c_str());
    other->setRunContinuously(true);
    other->start(Arguments());
    ownClock->waitForReads(1);
    other.reset();
    ownClock->waitForWorkerEnd();
}

// Opens what only the framework calls.
class OpenNode : public ImageLoading {
public:
    using ImageLoading::ImageLoading;
    using ImageLoading::onStopping;
};

TEST_F(ImageLoadingStopping, WithoutAWorkerIsASystemError) {
    OpenNode other(nullptr, clock);
    EXPECT_EQ(getErrorCode([&] { other.onStopping(); }), std::errc::invalid_argument);
}

TEST_F(ImageLoadingStopping, ByAJobIsADeadlockErrorAndTheNextRunIsWhole) {
    EXPECT_EQ(startAndStopInAJob(node, node.getExecutionStartedSignal()), deadlock);
    EXPECT_EQ(stateOf(node), Core::NodeState::Stopped);
    EXPECT_TRUE(GenApi::IsWritable(node.getNodeMapInfos()[0].GetNodeMap()->GetNode("SourcePath")));
    EXPECT_THAT(paths(), IsEmpty());
    runThreeImages();
    EXPECT_THAT(paths(), ElementsAre("a.png", "b.png", "c.png"));
}

TEST_F(ImageLoadingStopping, ByAJobThatIsFinishingDropsItsValues) {
    EXPECT_EQ(startAndStopInAJob(node, node.getExecutionFinishingSignal()), deadlock);
    runThreeImages();
    EXPECT_THAT(paths(), ElementsAre("a.png", "b.png", "c.png"));
}

TEST_F(ImageLoadingStopping, ByAJobThatHasFinishedKeepsItsValues) {
    EXPECT_EQ(startAndStopInAJob(node, node.getExecutionFinishedSignal()), deadlock);
    runThreeImages();
    EXPECT_THAT(paths(), ElementsAre("a.png", "a.png", "b.png", "c.png"));
}

TEST_F(ImageLoadingStopping, ByAJobLeavesANodeThatCanBeDestroyed) {
    const auto ownClock = std::make_shared<FakeFrameClock>();
    auto other = std::make_unique<ImageLoading>(nullptr, ownClock);
    other->setSourcePath(folder.path().c_str());
    other->setRunContinuously(true);
    EXPECT_EQ(startAndStopInAJob(*other, other->getExecutionStartedSignal()), deadlock);
    other.reset();
    EXPECT_TRUE(ownClock->hasWorkerEnded());
}

TEST_F(ImageLoadingStopping, ByAJobWhileAnotherThreadStopsItEndsBoth) {
    std::latch isReceiving(1);
    std::latch isStopping(1);
    std::error_code raised = std::make_error_code(std::errc::interrupted);
    auto job = inFirstJob(node.getExecutionStartedSignal(), [&] {
        isReceiving.count_down();
        isStopping.wait();
        raised = getErrorCode([&] { node.stop(); });
    });
    {
        const Utils::ScopedConnection states(node.getStateChangedSignal()->connect([&] {
            if (stateOf(node) == Core::NodeState::Stopping) {
                isStopping.count_down();
            }
        }),
                                             true);
        node.start(Arguments());
        isReceiving.wait();
        node.stop();
    }
    EXPECT_EQ(raised, std::error_code());
    EXPECT_EQ(stateOf(node), Core::NodeState::Stopped);
    // The run lasts until its worker has ended, and has the job.
    EXPECT_THAT(paths(), ElementsAre("a.png"));
    runThreeImages();
    EXPECT_THAT(paths(), ElementsAre("a.png", "a.png", "b.png", "c.png"));
}

TEST_F(ImageLoadingStopping, ByAJobIsNotFollowedByAStartOfTheSameJob) {
    std::latch isRunning(1);
    std::promise<std::error_code> raised;
    auto job = inFirstJob(node.getExecutionStartedSignal(), [&] {
        isRunning.wait();
        static_cast<void>(getErrorCode([&] { node.stop(); }));
        raised.set_value(getErrorCode([&] { node.start(Arguments()); }));
    });
    node.start(Arguments());
    isRunning.count_down();
    EXPECT_EQ(raised.get_future().get(), deadlock);
    EXPECT_EQ(stateOf(node), Core::NodeState::Stopped);
    runThreeImages();
    EXPECT_THAT(paths(), ElementsAre("a.png", "b.png", "c.png"));
}

// The next run begins on another thread while the job that has ended the last one is still there.
TEST_F(ImageLoadingStopping, ByAJobKeepsThatJobOutOfTheNextRun) {
    std::latch isRunning(1);
    std::promise<void> hasStopped;
    std::latch isStartingAnew(1);
    auto job = inFirstJob(node.getExecutionStartedSignal(), [&] {
        isRunning.wait();
        static_cast<void>(getErrorCode([&] { node.stop(); }));
        hasStopped.set_value();
        isStartingAnew.wait();
    });
    node.start(Arguments());
    isRunning.count_down();
    hasStopped.get_future().wait();
    const Utils::ScopedConnection states(node.getStateChangedSignal()->connect([&] {
        if (stateOf(node) == Core::NodeState::Starting) {
            isStartingAnew.count_down();
        }
    }),
                                         true);
    runThreeImages();
    EXPECT_THAT(paths(), ElementsAre("a.png", "b.png", "c.png"));
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
