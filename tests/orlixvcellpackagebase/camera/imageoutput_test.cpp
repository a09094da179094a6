// What becomes of a frame that can't be handed on as it is: values with an error, lost frames.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <stdexcept>
#include <string>
#include <thread>

#include "orlixdataprocessingcore/core/boolean.h"
#include "support/otherframes.h"
#include "support/scriptedcamera.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using CameraTest::Frame;
using CameraTest::FrameFate;
using testing::IsEmpty;

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
    static Frame failedFrame(const char* text = "lost") {
        Frame frame;
        frame.fate = FrameFate::MissingPackets;
        frame.error = text;
        return frame;
    }
};

TEST_F(CameraImageOutput, AFrameThatFailedWithoutAReasonHasAText) {
    const auto images = attach("Image");
    run();
    send(failedFrame(""));
    images->waitForCount(1);
    camera().stop();
    EXPECT_EQ(errorOf(images->values()[0]), "InvalidValueError: The grabbed image is corrupt.");
}

// The library's thread has the frame and was held up before it has called the node.
TEST_F(CameraImageOutput, AFrameOfAnEarlierRunIsNotPutOutInTheNext) {
    const auto images = attach("Image");
    std::latch isHeldUp(1);
    std::latch goesOn(1);
    camera().beforeImage = [&] {
        if (!isHeldUp.try_wait()) {
            isHeldUp.count_down();
            goesOn.wait();
        }
    };
    run();
    Frame frame;
    frame.value = 1;
    send(frame);
    isHeldUp.wait();
    camera().stop();
    start();
    frame.value = 2;
    send(frame);
    goesOn.count_down();
    images->waitForCount(1);
    camera().stop();
    const auto values = images->values();
    ASSERT_THAT(values, testing::SizeIs(1));
    const auto* const image = values[0].get<Core::Image>(true);
    EXPECT_EQ(static_cast<const std::uint8_t*>(image->getDataConst())[0], 2);
}

// The frame is a job already, but of the run before.
TEST_F(CameraImageOutput, AFrameWhoseReceiverBeginsTheNextRunIsNotPutOutInThat) {
    const auto images = attach("Image");
    std::atomic<bool> isFirst = true;
    std::latch hasBegun(1);
    const auto connection = camera().getExecutionStartedSignal()->connect(
        [&](const std::shared_ptr<Core::IGraphUpdate>&) {
            if (isFirst.exchange(false)) {
                camera().stop();
                start();
                hasBegun.count_down();
            }
        });
    run();
    Frame frame;
    frame.value = 1;
    send(frame);
    hasBegun.wait();
    frame.value = 2;
    send(frame);
    images->waitForCount(1);
    camera().stop();
    connection->disconnect();
    const auto values = images->values();
    ASSERT_THAT(values, testing::SizeIs(1));
    const auto* const image = values[0].get<Core::Image>(true);
    EXPECT_EQ(static_cast<const std::uint8_t*>(image->getDataConst())[0], 2);
}

TEST_F(CameraImageOutput, AFrameBecomesAJobWithTheNodesLockFree) {
    GenApi::CLock& lock = cameraMap().GetLock();
    std::latch told(2);
    std::atomic<bool> isOwned = false;
    const auto note = [&](const std::shared_ptr<Core::IGraphUpdate>&) {
        isOwned = isOwned || lock.IsOwned();
        told.count_down();
    };
    const auto started = camera().getExecutionStartedSignal()->connect(note);
    const auto finished = camera().getExecutionFinishedSignal()->connect(note);
    const auto images = attach("Image");
    run();
    send(Frame());
    told.wait();
    camera().stop();
    EXPECT_FALSE(isOwned);
}

TEST_F(CameraImageOutput, AReceiverOfAFrameMayStopTheNode) {
    const auto connection = camera().getExecutionStartedSignal()->connect(
        [&](const std::shared_ptr<Core::IGraphUpdate>&) { camera().stop(); });
    const auto images = attach("Image");
    run();
    send(Frame());
    while (camera().getState() != Core::NodeState::Stopped) {
        std::this_thread::yield();
    }
    connection->disconnect();
    start();
    send(Frame());
    images->waitForCount(1);
    camera().stop();
}

TEST_F(CameraImageOutput, AReceiverOfAFrameMayStopTheNodeWhileAnotherThreadStopsIt) {
    std::latch isReceiving(1);
    std::latch isStopping(1);
    std::latch hasReceived(1);  // no stop waits for a receiver on the library's thread
    const auto connection = camera().getExecutionStartedSignal()->connect(
        [&](const std::shared_ptr<Core::IGraphUpdate>&) {
            isReceiving.count_down();
            isStopping.wait();
            camera().stop();
            hasReceived.count_down();
        });
    const auto stateConnection = camera().getStateChangedSignal()->connect([&] {
        if (camera().getState() == Core::NodeState::Stopping) {
            isStopping.count_down();
        }
    });
    run();
    send(Frame());
    isReceiving.wait();
    camera().stop();
    hasReceived.wait();
    EXPECT_EQ(camera().getState(), Core::NodeState::Stopped);
    camera().cleanup();
    connection->disconnect();
    stateConnection->disconnect();
}

TEST_F(CameraImageOutput, ARepairThatFailsIsAValueWithTheErrorOfItsKind) {
    camera().setFixCorruptImages(FixCorruptImages::On);
    const auto images = attach("Image");
    run();
    device->onAccess = [] { throw std::runtime_error("standard"); };
    send(failedFrame());
    images->waitForCount(1);
    device->onAccess = [] { throw 1; };
    send(failedFrame("packets are missing"));
    images->waitForCount(2);
    send(failedFrame(""));
    images->waitForCount(3);
    device->onAccess = nullptr;
    camera().stop();
    EXPECT_EQ(errorOf(images->values()[0]), "StdExceptionError: standard");
    EXPECT_EQ(errorOf(images->values()[1]), "UnknownExceptionError: packets are missing");
    EXPECT_EQ(errorOf(images->values()[2]), "UnknownExceptionError: The grabbed image is corrupt.");
}

// The node runs and has grabbed nothing, so that its stream tells of no size.
TEST_F(CameraImageOutput, WithoutASizeOfTheStreamsBuffersThatOfTheDeviceCounts) {
    extendDevice("<Integer Name=\"Height\"><Value>4</Value></Integer>");
    camera().setFixCorruptImages(FixCorruptImages::On);
    camera().setAcquisitionMode(static_cast<AcquisitionMode>(5));
    const auto images = attach("Image");
    run();
    OtherCamera other;
    Orlix::CInstantCamera library;
    camera().OnImageGrabbed(library, other.grab(failedFrame()));
    device->SetPayload(31);
    camera().OnImageGrabbed(library, other.grab(failedFrame()));
    images->waitForCount(2);
    camera().stop();
    EXPECT_EQ(errorOf(images->values()[0]), "none");
    EXPECT_THAT(errorOf(images->values()[1]), testing::StartsWith("GenICamExceptionError: "));
}

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

// 4 beyond 32 bits: cut, it would be a picture of 4 lines.
TEST_F(CameraImageOutput, ARepairToASizeBeyondAPicturesIsAnError) {
    extendDevice("<Integer Name=\"Height\"><Value>4294967300</Value></Integer>");
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
