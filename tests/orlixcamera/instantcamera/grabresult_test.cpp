// What a result tells of its frame, and how long it lives.
#include "orlixcamera/copycounter.h"
#include "orlixcamera/instantcamera/cameratest.h"
#include "orlixcamera/orliximage.h"

namespace CameraTest {
namespace {

class GrabResult : public CameraFixture {};

TEST_F(GrabResult, FailedFramesAreHandedOverWithTheirReason) {
    grab();
    const std::vector<std::pair<FrameFate, const char*>> fates{
        {FrameFate::MissingPackets, "StatisticFailedMissingPackets"},
        {FrameFate::WrongSize, "StatisticFailedWrongSize"},
        {FrameFate::BadTrailer, "StatisticFailedBadTrailer"},
        {FrameFate::TimedOut, "StatisticFailedTimedOut"},
        {FrameFate::Aborted, "StatisticFailedAborted"}};
    for (const auto& [fate, name] : fates) {
        Frame frame;
        frame.fate = fate;
        frame.error = name;
        ASSERT_TRUE(device->Send(frame));
    }
    ASSERT_TRUE(images.results.WaitFor(fates.size()));
    for (std::size_t index = 0; index < fates.size(); ++index) {
        const CGrabResultPtr result = images.results.Get().at(index);
        EXPECT_FALSE(result->GrabSucceeded());
        EXPECT_EQ(result->GetErrorDescription(), fates[index].second);
        EXPECT_FALSE(result->IsChunkDataAvailable());
        EXPECT_EQ(statistic(fates[index].second), 1);
    }
    camera.StopGrabbing();
    expectAccount(5);
}

TEST_F(GrabResult, AFrameWithFewerBytesThanItsImageNeedsHasFailed) {
    grab();
    Frame frame;
    frame.missingBytes = 1;
    ASSERT_TRUE(device->Send(frame));
    ASSERT_TRUE(images.results.WaitFor(1));
    EXPECT_FALSE(images.results.Get()[0]->GrabSucceeded());
    EXPECT_EQ(images.results.Get()[0]->GetErrorDescription(),
              "The frame has 31 bytes, its image needs 32.");
    EXPECT_EQ(statistic("StatisticFailedWrongSize"), 1);
}

TEST_F(GrabResult, FailedFramesAreOnlyCountedIfNobodyWantsThem) {
    open();
    CBooleanParameter(camera.GetStreamGrabberNodeMap(), "DeliverFailedFrames").SetValue(false);
    grab();
    Frame frame;
    frame.fate = FrameFate::TimedOut;
    ASSERT_TRUE(device->Send(frame));
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(images.results.WaitFor(1));
    EXPECT_TRUE(images.results.Get()[0]->GrabSucceeded());
    camera.StopGrabbing();
    EXPECT_EQ(statistic("StatisticFailedTimedOut"), 1);
    expectAccount(2);
}

TEST_F(GrabResult, AnImageRefersToTheBufferAndKeepsItWithoutACopy) {
    open();
    camera.StartGrabbing();
    ASSERT_TRUE(device->Send());
    CGrabResultPtr result;
    ASSERT_TRUE(camera.RetrieveResult(1000, result));
    static_cast<void>(PixelCopyCounter::Reset());
    COrlixImage image;
    image.AttachGrabResultBuffer(result);
    EXPECT_EQ(image.GetBuffer(), result->GetBuffer());
    EXPECT_EQ(image.GetWidth(), 8U);
    EXPECT_EQ(PixelCopyCounter::Read(), 0U);
    EXPECT_FALSE(result.IsUnique());
    result.Release();
    EXPECT_EQ(statistic("NumHeldBuffers"), 1);
    image.Release();
    EXPECT_EQ(statistic("NumHeldBuffers"), 0);
}

TEST_F(GrabResult, AnImageOfAFailedOrMissingResultIsRefused) {
    COrlixImage image;
    EXPECT_THROW(image.AttachGrabResultBuffer(CGrabResultPtr()), GenICam::InvalidArgumentException);
    EXPECT_THROW(static_cast<void>(CGrabResultPtr()->GrabSucceeded()),
                 GenICam::LogicalErrorException);
    grab();
    Frame frame;
    frame.fate = FrameFate::TimedOut;
    frame.error = "late";
    ASSERT_TRUE(device->Send(frame));
    ASSERT_TRUE(images.results.WaitFor(1));
    EXPECT_EQ(failureOf<GenICam::RuntimeException>(
                  [&] { image.AttachGrabResultBuffer(images.results.Get()[0]); }),
              "The grab result has no valid image. late");
}

TEST_F(GrabResult, HeldBuffersAreNeverFilledAgainAndTheStreamTellsThatItStarves) {
    camera.MaxNumBuffer.SetValue(3);
    grab();
    for (int frame = 0; frame < 3; ++frame) {
        ASSERT_TRUE(device->Send());
    }
    ASSERT_TRUE(images.results.WaitFor(3));
    EXPECT_FALSE(device->Send());
    EXPECT_EQ(statistic("StatisticLostForBuffer"), 1);
    EXPECT_EQ(statistic("NumHeldBuffers"), 3);
    images.results.Clear();
    EXPECT_TRUE(device->Send());
    ASSERT_TRUE(images.results.WaitFor(1));
    EXPECT_EQ(images.results.Get()[0]->GetFrameId(), 5U);
    camera.StopGrabbing();
    expectAccount(5);
}

TEST_F(GrabResult, ResultsComeBackToTheNextRunOfTheSameSize) {
    camera.MaxNumBuffer.SetValue(2);
    grab();
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(images.results.WaitFor(1));
    camera.StopGrabbing();
    camera.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
    EXPECT_EQ(device->stream->queued.size(), 1U);
    images.results.Clear();
    device->WaitForQueued(2);
    camera.StopGrabbing();
    expectAccount(1);
}

TEST_F(GrabResult, SmallFramesHaveMoreBuffersThanLargeOnes) {
    open();
    camera.StartGrabbing();
    EXPECT_EQ(statistic("NumBuffers"), 512);
    camera.StopGrabbing();
    device->SetPayload(1 << 18);
    camera.StartGrabbing();
    EXPECT_EQ(statistic("NumBuffers"), 32);
    camera.StopGrabbing();
    device->SetPayload(1 << 22);
    camera.StartGrabbing();
    EXPECT_EQ(statistic("NumBuffers"), 16);
    camera.Close();
    CIntegerParameter(camera.GetInstantCameraNodeMap(), "BufferMemory").SetValue(80);
    camera.StartGrabbing();
    EXPECT_EQ(statistic("NumBuffers"), 20);
}

TEST(GrabResultAlone, OutlivesGrabbingTheDeviceAndTheCamera) {
    Images images;
    auto device = std::make_shared<ScriptedDevice>();
    {
        auto attached = CreateCameraDevice(device);
        CInstantCamera camera(attached.get());
        camera.RegisterImageEventHandler(&images, RegistrationMode_Append, Cleanup_None);
        camera.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
        Frame frame;
        frame.value = 0x5A;
        ASSERT_TRUE(device->Send(frame));
        ASSERT_TRUE(images.results.WaitFor(1));
        device->Lose();
        device->JoinLoss();
    }
    device.reset();
    const CGrabResultPtr result = images.results.Get()[0];
    images.results.Clear();
    COrlixImage image;
    image.AttachGrabResultBuffer(result);
    EXPECT_EQ(static_cast<std::uint8_t*>(image.GetBuffer())[31], 0x5A);
    EXPECT_NE(result->GetChunkDataNodeMap().GetNode("ChunkFrameID"), nullptr);
}

TEST_F(GrabResult, ChunksOfAFrameShowInTheMapOfItsResult) {
    grab();
    for (std::int64_t id = 1; id <= 2; ++id) {
        Frame frame;
        frame.kind = Transport::PayloadKind::ImageWithChunks;
        append(frame.chunks, imageChunk);
        append(frame.chunks, std::uint32_t{32});
        append(frame.chunks, 100 + id);
        append(frame.chunks, frameIdChunk);
        append(frame.chunks, std::uint32_t{8});
        ASSERT_TRUE(device->Send(frame));
    }
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(images.results.WaitFor(3));
    const auto results = images.results.Get();
    for (std::size_t index = 0; index < 2; ++index) {
        ASSERT_TRUE(results[index]->IsChunkDataAvailable());
        CIntegerParameter id(results[index]->GetChunkDataNodeMap(), "ChunkFrameID");
        EXPECT_EQ(id.GetValue(), std::int64_t(101 + index));
    }
    EXPECT_FALSE(results[2]->IsChunkDataAvailable());
    CIntegerParameter none(results[2]->GetChunkDataNodeMap(), "ChunkFrameID");
    EXPECT_FALSE(none.IsReadable());
}

TEST_F(GrabResult, AFrameWhoseChunksCannotBeTakenApartHasFailed) {
    grab();
    Frame frame;
    frame.kind = Transport::PayloadKind::ImageWithChunks;
    append(frame.chunks, frameIdChunk);
    append(frame.chunks, std::uint32_t{5000});
    ASSERT_TRUE(device->Send(frame));
    ASSERT_TRUE(images.results.WaitFor(1));
    EXPECT_FALSE(images.results.Get()[0]->GrabSucceeded());
    EXPECT_EQ(images.results.Get()[0]->GetErrorDescription(),
              "The chunks of the frame can't be taken apart.");
    EXPECT_EQ(statistic("StatisticFailedBadTrailer"), 1);
}

}  // namespace
}  // namespace CameraTest
