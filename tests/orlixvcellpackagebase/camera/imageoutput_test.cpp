// What becomes of a frame that can't be handed on as it is: values with an error, lost frames.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "gcbase/gcexception.h"
#include "orlixcamera/grabresultptr.h"
#include "orlixdataprocessingcore/core/boolean.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/image.h"
#include "support/scriptedcamera.h"
#include "support/testpool.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using CameraTest::Frame;
using CameraTest::FrameFate;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto category = "orlix.dataprocessing.vcell.Camera";

std::string errorOf(const Utils::Variant& value) {
    const auto error = value.get<Core::Image>(true)->getError(false);
    return error == nullptr ? "none"
                            : error->getName().str() + ": " + error->getDescription().str();
}

// Makes updates as the test says.
class ScriptedUpdates final : public Core::IUpdateFactory {
public:
    using Update = std::shared_ptr<Core::IGraphUpdate>;

    Update createUpdate(const Core::INode* node, const Update& parent) override {
        EXPECT_EQ(parent, nullptr);
        return onCreate(node);
    }

    std::function<Update(const Core::INode*)> onCreate;
};

// A running node without a device; the test is its grab thread. A pointer without a result is a
// frame that can't be wrapped.
class CameraFrames : public testing::Test {
protected:
    void SetUp() override {
        camera.setAcquisitionMode(static_cast<AcquisitionMode>(5));
        camera.start(Core::NodeArgumentCollection());
        handle = camera.attachOutputSink("Image", images);
    }
    void TearDown() override { camera.stop(); }
    void handleFrame() { camera.OnImageGrabbed(library, Orlix::CGrabResultPtr()); }
    [[nodiscard]] static ScriptedUpdates::Update makeUpdate(const Core::INode* node) {
        return Core::getDefaultUpdateFactory()->createUpdate(node, nullptr);
    }

    const std::shared_ptr<ScriptedUpdates> updates = std::make_shared<ScriptedUpdates>();
    Camera camera{std::make_shared<TestPool>(updates)};
    Orlix::CInstantCamera library;
    const std::shared_ptr<RecordingSink> images = std::make_shared<RecordingSink>();
    std::shared_ptr<Core::IHandle> handle;
};

TEST_F(CameraFrames, OneThatCantBeWrappedIsAValueWithTheErrorOfItsKind) {
    updates->onCreate = makeUpdate;
    const Utils::LogCapture capture;
    handleFrame();
    images->waitForCount(1);
    EXPECT_EQ(errorOf(images->values()[0]),
              "GenICamExceptionError: The pointer refers to no grab result.");
    EXPECT_THAT(getLines(capture, category), IsEmpty());
}

TEST_F(CameraFrames, WithoutAnUpdateOneIsDroppedInSilence) {
    updates->onCreate = [](const Core::INode*) { return nullptr; };
    const Utils::LogCapture capture;
    handleFrame();
    updates->onCreate = makeUpdate;
    handleFrame();
    images->waitForCount(1);
    EXPECT_THAT(images->values(), testing::SizeIs(1));
    EXPECT_THAT(getLines(capture, category), IsEmpty());
}

TEST_F(CameraFrames, NoExceptionPassesIntoTheLibraryAndTheNextOneIsHandedOn) {
    const Utils::LogCapture capture;
    updates->onCreate = [](const Core::INode*) -> ScriptedUpdates::Update {
        throw GenICam::RuntimeException("of the graph", __FILE__, __LINE__);
    };
    handleFrame();
    updates->onCreate = [](const Core::INode*) -> ScriptedUpdates::Update {
        throw std::runtime_error("standard");
    };
    handleFrame();
    updates->onCreate = [](const Core::INode*) -> ScriptedUpdates::Update { throw 1; };
    handleFrame();
    updates->onCreate = makeUpdate;
    handleFrame();
    images->waitForCount(1);
    EXPECT_THAT(images->values(), testing::SizeIs(1));
    const std::string start = "4 Camera " + toText(&camera);
    EXPECT_THAT(
        getLines(capture, category),
        ElementsAre(start + ": Exception caught while grabbing an image. Message: of the graph",
                    start + ": Exception caught while grabbing an image. Message: standard",
                    start + ": Unknown exception caught while grabbing an image."));
}

TEST_F(CameraFrames, OneThatComesAfterTheStopIsDropped) {
    updates->onCreate = makeUpdate;
    camera.stop();
    handleFrame();
    camera.start(Core::NodeArgumentCollection());
    handleFrame();
    images->waitForCount(1);
    EXPECT_THAT(images->values(), testing::SizeIs(1));
}

TEST_F(CameraFrames, OneWhoseHandlerIsOfAnEarlierRunIsDropped) {
    updates->onCreate = [this](const Core::INode* node) {
        camera.stop();
        camera.start(Core::NodeArgumentCollection());
        return makeUpdate(node);
    };
    handleFrame();
    EXPECT_THAT(images->values(), IsEmpty());
    updates->onCreate = makeUpdate;
    handleFrame();
    images->waitForCount(1);
}

class CameraImageOutput : public ScriptedCamera {
protected:
    void run() {
        ASSERT_THAT(camera().allocateResources(), IsEmpty());
        start();
    }
    void send(const Frame& frame) {
        device->WaitForQueued(1);
        ASSERT_TRUE(device->Send(frame));
    }
    static Frame failedFrame() {
        Frame frame;
        frame.fate = FrameFate::MissingPackets;
        frame.error = "lost";
        return frame;
    }
};

TEST_F(CameraImageOutput, AFrameThatSucceededWithoutAnImageIsAnErrorAndCorrupt) {
    camera().setFixCorruptImages(FixCorruptImages::On);
    const auto images = attach("Image");
    const auto corrupt = attach("ImageCorrupt");
    run();
    Frame frame;
    frame.kind = CameraTest::Transport::PayloadKind::ChunksOnly;
    frame.width = 0;
    CameraTest::append(frame.chunks, std::int64_t{7});
    CameraTest::append(frame.chunks, CameraTest::frameIdChunk);
    CameraTest::append(frame.chunks, std::uint32_t{8});
    send(frame);
    images->waitForCount(1);
    corrupt->waitForCount(1);
    EXPECT_THAT(errorOf(images->values()[0]), testing::StartsWith("GenICamExceptionError: "));
    EXPECT_TRUE(corrupt->values()[0].get<Core::Boolean>(true)->get());
    camera().stop();
}

// The output of before is still there, as a recipe with a number that is no setting leaves it.
TEST_F(CameraImageOutput, WhetherAFrameIsCorruptIsToldOnlyWhileTheRepairIsOn) {
    camera().setFixCorruptImages(FixCorruptImages::On);
    camera().setFixCorruptImages(static_cast<FixCorruptImages>(7));
    const auto images = attach("Image");
    const auto corrupt = attach("ImageCorrupt");
    run();
    send(Frame());
    images->waitForCount(1);
    send(failedFrame());
    images->waitForCount(2);
    camera().stop();
    EXPECT_EQ(errorOf(images->values()[0]), "none");
    EXPECT_THAT(errorOf(images->values()[1]), testing::StartsWith("InvalidValueError: "));
    EXPECT_THAT(corrupt->values(), IsEmpty());
}

TEST_F(CameraImageOutput, TheSizeOfTheStreamsBuffersWinsOverThatOfTheDevice) {
    extendDevice("<Integer Name=\"Height\"><Value>4</Value></Integer>");
    camera().setFixCorruptImages(FixCorruptImages::On);
    const auto images = attach("Image");
    run();
    device->SetPayload(1);
    send(failedFrame());
    images->waitForCount(1);
    EXPECT_EQ(errorOf(images->values()[0]), "none");
    camera().stop();
}

TEST_F(CameraImageOutput, ARepairThatNeedsMoreThanTheBufferIsAnError) {
    extendDevice("<Integer Name=\"Height\"><Value>4000</Value></Integer>");
    camera().setFixCorruptImages(FixCorruptImages::On);
    const auto images = attach("Image");
    run();
    send(failedFrame());
    images->waitForCount(1);
    EXPECT_THAT(errorOf(images->values()[0]), testing::StartsWith("GenICamExceptionError: "));
    camera().stop();
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
