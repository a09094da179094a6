// The worker of ImageLoading: order, runs, rate, back-pressure, files that can't be loaded.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "genapi/genapi.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/services.h"
#include "support/countingprovider.h"
#include "support/imageloadingfixture.h"
#include "support/testpool.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using std::chrono::milliseconds;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class OutputLoop : public ImageLoadingFixture {};

TEST_F(OutputLoop, RunsRepeatTheFirstImagesAndThenNothingComes) {
    useThreeImages();
    node.setNumberOfImages(2);
    node.setNumberOfRuns(3);
    runToEnd();
    EXPECT_THAT(paths(), ElementsAre("a.png", "b.png", "a.png", "b.png", "a.png", "b.png"));
    EXPECT_THAT(widths(), ElementsAre(1U, 2U, 1U, 2U, 1U, 2U));
    EXPECT_THAT(runs(), ElementsAre(1, 1, 2, 2, 3, 3));
}

TEST_F(OutputLoop, EveryTurnHasItsFullPeriodAlsoTheLastOfARun) {
    useThreeImages();
    node.setNumberOfImages(2);
    node.setNumberOfRuns(2);
    runToEnd();
    EXPECT_THAT(clock->sleeps(), SizeIs(4));
    EXPECT_THAT(clock->sleeps(), Each(milliseconds(1000)));
}

TEST_F(OutputLoop, ListSizeWinsOverNumberOfImages) {
    useThreeImages();
    node.setNumberOfImages(5);
    node.setNumberOfRuns(2);
    runToEnd();
    EXPECT_THAT(paths(), ElementsAre("a.png", "b.png", "c.png", "a.png", "b.png", "c.png"));
    EXPECT_THAT(runs(), ElementsAre(1, 1, 1, 2, 2, 2));
}

TEST_F(OutputLoop, RunningContinuouslyIgnoresTheNumberOfRuns) {
    useThreeImages();
    node.setNumberOfRuns(2);
    node.setRunContinuously(true);
    node.start(Arguments());
    runSink->waitForCount(50);
    node.stop();
    const auto counted = runs();
    for (std::size_t index = 0; index < counted.size(); ++index) {
        EXPECT_EQ(counted[index], static_cast<std::int64_t>(index + 1));
    }
}

TEST_F(OutputLoop, DescendingOrderReversesTheImages) {
    useThreeImages();
    node.setNumberOfImages(3);
    node.setSortBy(Descending);
    runToEnd();
    EXPECT_THAT(paths(), ElementsAre("c.png", "b.png", "a.png"));
}

TEST_F(OutputLoop, RandomOrderIsShuffledAnewForEachRun) {
    for (int index = 0; index < 8; ++index) {
        folder.addImage("i" + std::to_string(index) + ".png", 1);
    }
    node.setSourcePath(folder.path().c_str());
    node.setSortBy(Random);
    node.setNumberOfImages(8);
    node.setNumberOfRuns(6);
    runToEnd();
    std::vector<std::vector<std::string>> orders;
    const auto all = paths();
    ASSERT_THAT(all, SizeIs(48));
    for (auto run = all.begin(); run != all.end(); run += 8) {
        orders.emplace_back(run, run + 8);
        auto sorted = orders.back();
        std::sort(sorted.begin(), sorted.end());
        EXPECT_EQ(std::unique(sorted.begin(), sorted.end()), sorted.end());
    }
    // Six equal ones of 40320 orders would be a miracle.
    EXPECT_FALSE(std::all_of(orders.begin(), orders.end(),
                             [&](const auto& order) { return order == orders.front(); }));
}

TEST_F(OutputLoop, PeriodIsAWholeNumberOfMilliseconds) {
    useThreeImages();
    for (const auto& [rate, period] : {std::pair{7U, 142}, {3U, 333}, {500U, 2}, {1U, 1000}}) {
        node.setFramesPerSecond(rate);
        runToEnd();
        EXPECT_EQ(clock->sleeps().back(), milliseconds(period)) << rate;
    }
}

TEST_F(OutputLoop, RateBeyondTheParametersMaximumNeverSleeps) {
    useThreeImages();
    node.setFramesPerSecond(2000);
    node.setNumberOfImages(3);
    runToEnd();
    EXPECT_THAT(paths(), SizeIs(3));
    EXPECT_THAT(clock->sleeps(), IsEmpty());
}

TEST_F(OutputLoop, CorruptFileIsAnImageWithAnErrorAndTheNextFollowsOnePeriodLater) {
    useThreeImages();
    folder.addFile("b.png");
    node.setNumberOfImages(3);
    const Utils::LogCapture capture;
    runToEnd();
    EXPECT_THAT(paths(), ElementsAre("a.png", "b.png", "c.png"));
    EXPECT_THAT(runs(), ElementsAre(1, 1, 1));
    EXPECT_THAT(clock->sleeps(),
                ElementsAre(milliseconds(1000), milliseconds(1000), milliseconds(1000)));
    const auto images = imageSink->values();
    EXPECT_FALSE(images[0].get<Image>(true)->hasError(true));
    EXPECT_FALSE(images[2].get<Image>(true)->hasError(true));
    const Image& failed = *images[1].get<Image>(true);
    ASSERT_TRUE(failed.hasError(true));
    EXPECT_FALSE(failed.isValid());
    EXPECT_EQ(failed.getError(true)->getDescription(), "Failed to load image.");
    EXPECT_EQ(failed.getError(true)->getName(), "GenICamExceptionError");
    EXPECT_THAT(getLines(capture, category),
                ElementsAre(StartsWith("4 ImageLoading: Exception caught while loading image. "
                                       "Message: ")));
}

TEST_F(OutputLoop, ErrorOfAFileKeepsItsCause) {
    folder.addFile("a.png");
    node.setSourcePath(folder.path().c_str());
    const Utils::LogCapture capture;
    runToEnd();
    ASSERT_THAT(imageSink->values(), SizeIs(1));
    const auto error = std::dynamic_pointer_cast<Core::IExceptionError>(
        imageSink->values()[0].get<Image>(true)->getError(true));
    ASSERT_NE(error, nullptr);
    const std::string cause = getFailure<GenICam::GenericException>(
        [&] { Utils::rethrowException(error->getException()); });
    EXPECT_THAT(
        getLines(capture, category),
        ElementsAre("4 ImageLoading: Exception caught while loading image. Message: " + cause));
    EXPECT_NE(cause, "Failed to load image.");
}

// Makes updates by the function of a test.
class FunctionUpdateFactory final : public Core::IUpdateFactory {
public:
    using Function = std::function<std::shared_ptr<Core::IGraphUpdate>()>;

    explicit FunctionUpdateFactory(Function make) : make_(std::move(make)) {}
    std::shared_ptr<Core::IGraphUpdate> createUpdate(
        const Core::INode* /*node*/,
        const std::shared_ptr<Core::IGraphUpdate>& /*parent*/) override {
        return make_();
    }

private:
    Function make_;
};

// Runs two images with a factory of updates that fails, and tells how many periods went by.
class OutputLoopWithoutUpdates : public testing::Test {
protected:
    std::size_t run(FunctionUpdateFactory::Function function) {
        folder.addImage("a.png", 1);
        folder.addImage("b.png", 1);
        const auto clock = std::make_shared<FakeFrameClock>();
        ImageLoading node(std::make_shared<TestPool>(
                              std::make_shared<FunctionUpdateFactory>(std::move(function))),
                          clock);
        name = "ImageLoading " + toText(&node);
        node.setSourcePath(folder.path().c_str());
        node.setNumberOfImages(2);
        const auto sink = std::make_shared<RecordingSink>();
        const auto handle = node.attachOutputSink("Image", sink);
        node.start(Core::NodeArgumentCollection());
        clock->waitForWorkerEnd();
        node.stop();
        EXPECT_THAT(sink->values(), IsEmpty());
        return clock->sleeps().size();
    }

    static constexpr auto category = "orlix.dataprocessing.vcell.ImageLoading";
    const TemporaryFolder folder;
    const Utils::LogCapture capture;
    std::string name;
};

TEST_F(OutputLoopWithoutUpdates, NullUpdateSkipsTheTurnInSilence) {
    EXPECT_EQ(run([] { return nullptr; }), 2U);
    EXPECT_THAT(getLines(capture, category), IsEmpty());
}

TEST_F(OutputLoopWithoutUpdates, GenICamExceptionIsLoggedAndDropsTheTurn) {
    EXPECT_EQ(run([]() -> std::shared_ptr<Core::IGraphUpdate> {
                  throw GenICam::RuntimeException("no update", __FILE__, __LINE__);
              }),
              2U);
    const std::string line =
        "4 " + name + ": Exception caught while creating update.. Message: no update";
    EXPECT_THAT(getLines(capture, category), ElementsAre(line, line));
}

TEST_F(OutputLoopWithoutUpdates, StandardExceptionIsLoggedAndDropsTheTurn) {
    EXPECT_EQ(
        run([]() -> std::shared_ptr<Core::IGraphUpdate> { throw std::runtime_error("standard"); }),
        2U);
    const std::string line =
        "4 " + name + ": Exception caught while creating update.. Message: standard";
    EXPECT_THAT(getLines(capture, category), ElementsAre(line, line));
}

TEST_F(OutputLoopWithoutUpdates, AnythingElseIsLoggedAndDropsTheTurn) {
    EXPECT_EQ(run([]() -> std::shared_ptr<Core::IGraphUpdate> { throw 5; }), 2U);
    const std::string line = "4 " + name + ": Unknown exception caught while creating update..";
    EXPECT_THAT(getLines(capture, category), ElementsAre(line, line));
}

// Opens the operations of a run, so that the node itself is never started and has no space.
class NodeWithoutSpace : public ImageLoading {
public:
    using ImageLoading::ImageLoading;
    using ImageLoading::onStarting;
    using ImageLoading::onStopping;
};

TEST_F(OutputLoop, WithoutSpaceTheImageIsUsedUp) {
    useThreeImages();
    NodeWithoutSpace other(nullptr, clock);
    other.setSourcePath(folder.path().c_str());
    other.setNumberOfImages(2);
    other.setNumberOfRuns(3);
    const auto sink = std::make_shared<RecordingSink>();
    const auto handle = other.attachOutputSink("Image", sink);
    other.onStarting(Arguments());
    clock->waitForWorkerEnd();
    other.onStopping();
    EXPECT_THAT(clock->sleeps(), SizeIs(6));
    EXPECT_THAT(sink->values(), IsEmpty());
}

TEST_F(OutputLoop, FullGraphHoldsTheNodeBackUntilThereIsSpace) {
    useThreeImages();
    node.setNumberOfImages(3);
    imageSink->setSpace(false);
    node.start(Arguments());
    clock->waitForReads(1);
    EXPECT_THAT(imageSink->values(), IsEmpty());
    imageSink->setSpace(true);
    clock->waitForWorkerEnd();
    node.stop();
    EXPECT_THAT(paths(), ElementsAre("a.png", "b.png", "c.png"));
}

TEST_F(OutputLoop, TimeSpentInATurnIsNotAddedToThePeriod) {
    useThreeImages();
    node.setFramesPerSecond(10);
    node.setNumberOfImages(2);
    imageSink->setSpace(false);
    node.start(Arguments());
    // The worker fixes its deadline and then waits for the graph.
    clock->waitForReads(1);
    clock->advance(milliseconds(30));
    imageSink->setSpace(true);
    clock->waitForWorkerEnd();
    node.stop();
    EXPECT_THAT(clock->sleeps(), ElementsAre(milliseconds(70), milliseconds(100)));
}

TEST_F(OutputLoop, NoTimeIsMadeUpAfterAStall) {
    useThreeImages();
    node.setFramesPerSecond(10);
    node.setNumberOfImages(3);
    imageSink->setSpace(false);
    node.start(Arguments());
    clock->waitForReads(1);
    clock->advance(milliseconds(5000));
    imageSink->setSpace(true);
    clock->waitForWorkerEnd();
    node.stop();
    // The stalled turn has no sleep, the next ones have their full period.
    EXPECT_THAT(clock->sleeps(), ElementsAre(milliseconds(100), milliseconds(100)));
}

TEST_F(OutputLoop, PicturesLieInMemoryOfTheProviderAndServicesAreFetchedAtEachStart) {
    folder.addImage("a.png", 1);
    folder.addFile("b.png");
    folder.addImage("c.bmp", 3);
    folder.addImage("d.tif", 4);
    folder.addImage("e.jpg", 5);
    const auto provider = std::make_shared<CountingProvider>();
    const auto pool = std::make_shared<TestPool>(Core::getDefaultUpdateFactory(), provider);
    ImageLoading other(pool, clock);
    EXPECT_EQ(pool->bufferProviderFetches(), 0);
    EXPECT_EQ(pool->updateFactoryFetches(), 0);
    other.setSourcePath(folder.path().c_str());
    other.setNumberOfImages(5);
    const auto sink = std::make_shared<RecordingSink>();
    const auto handle = other.attachOutputSink("Image", sink);
    for (int starts = 1; starts <= 2; ++starts) {
        other.start(Arguments());
        clock->waitForWorkerEnd();
        other.stop();
        EXPECT_EQ(pool->bufferProviderFetches(), starts);
        EXPECT_EQ(pool->updateFactoryFetches(), starts);
    }
    std::size_t pictures = 0;
    for (const Variant& value : sink->values()) {
        const Image& image = *value.get<Image>(true);
        if (!image.hasError(true)) {
            EXPECT_TRUE(provider->owns(image.getDataConst())) << image.getWidth();
            ++pictures;
        }
    }
    EXPECT_EQ(pictures, 8U);
    EXPECT_THAT(provider->sizes(), ElementsAre(1U, 3U, 4U, 5U, 1U, 3U, 4U, 5U));
}

TEST_F(OutputLoop, SurvivesStartsStopsReadersAndWritersOnManyThreads) {
    useThreeImages();
    node.setRunContinuously(true);
    const Utils::LogCapture capture;
    std::atomic<bool> finished = false;
    std::thread reader([&] {
        while (!finished) {
            static_cast<void>(node.getFramesPerSecond());
            static_cast<void>(node.getSourcePath());
            static_cast<void>(node.getNodeMapInfos());
        }
    });
    std::thread writer([&] {
        GenApi::INodeMap& map = *node.getNodeMapInfos().at(0).GetNodeMap();
        const GenApi::CIntegerPtr rate(map.GetNode("FramesPerSecond"));
        const GenApi::CBooleanPtr absolute(map.GetNode("StoreAbsolutePath"));
        for (int round = 0; !finished; ++round) {
            try {
                rate->SetValue(round % 500 + 1);
                absolute->SetValue(round % 2 == 0);
            } catch (const GenICam::GenericException&) {
                // Refused while the node runs.
            }
        }
    });
    for (int round = 0; round < 50; ++round) {
        node.start(Arguments());
        imageSink->waitForCount(imageSink->values().size() + 1);
        node.stop();
    }
    finished = true;
    reader.join();
    writer.join();
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
