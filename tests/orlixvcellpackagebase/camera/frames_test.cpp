// A node without a device whose grab thread is the test: what it makes of any frame.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "gcbase/gcexception.h"
#include "support/otherframes.h"
#include "support/scriptedcamera.h"
#include "support/testpool.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using CameraTest::Frame;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto category = "orlix.dataprocessing.vcell.Camera";

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
        updates->onCreate = makeUpdate;
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
    const std::shared_ptr<TestPool> pool = std::make_shared<TestPool>(updates);
    Camera camera{pool};
    Orlix::CInstantCamera library;
    const std::shared_ptr<RecordingSink> images = std::make_shared<RecordingSink>();
    std::shared_ptr<Core::IHandle> handle;
};

TEST_F(CameraFrames, OneThatCantBeWrappedIsAValueWithTheErrorOfItsKind) {
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

TEST_F(CameraFrames, OfAnyExceptionOneIsAValueWithTheErrorOfItsKind) {
    updates->onCreate = makeUpdate;
    OtherCamera other;
    pool->onBufferProvider = [] { throw std::runtime_error("standard"); };
    camera.OnImageGrabbed(library, other.grab(Frame()));
    pool->onBufferProvider = [] { throw 1; };
    camera.OnImageGrabbed(library, other.grab(Frame()));
    images->waitForCount(2);
    EXPECT_EQ(errorOf(images->values()[0]), "StdExceptionError: standard");
    EXPECT_EQ(errorOf(images->values()[1]),
              "UnknownExceptionError: An error occurred while grabbing an image.");
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
