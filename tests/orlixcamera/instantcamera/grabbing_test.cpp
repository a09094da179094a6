// Runs of grabbing: strategies, loops, results, and where every frame ends.
#include <future>

#include "orlixcamera/cameralayer.h"
#include "orlixcamera/copycounter.h"
#include "orlixcamera/emulatedcameras.h"
#include "orlixcamera/instantcamera/cameratest.h"
#include "orlixcamera/orliximage.h"

namespace CameraTest {
namespace {

class Grabbing : public CameraFixture {
protected:
    // Sent equals the sum of all fates.
    void expectAccount(std::int64_t sent) {
        EXPECT_EQ(statistic("StatisticSent"), sent);
        EXPECT_EQ(statistic("StatisticDelivered") + statistic("StatisticFailed") +
                      statistic("StatisticLostForBuffer") + statistic("StatisticSkipped"),
                  sent);
        EXPECT_EQ(statistic("StatisticFailedMissingPackets") +
                      statistic("StatisticFailedWrongSize") +
                      statistic("StatisticFailedBadTrailer") +
                      statistic("StatisticFailedTimedOut") + statistic("StatisticFailedAborted"),
                  statistic("StatisticFailed"));
    }
};

TEST_F(Grabbing, HandsEveryFrameToTheHandlersInOrder) {
    Images second;
    grab();
    camera.RegisterImageEventHandler(&second, RegistrationMode_Append, Cleanup_None);
    for (std::uint8_t value = 1; value <= 5; ++value) {
        Frame frame;
        frame.value = value;
        ASSERT_TRUE(device->Send(frame));
    }
    ASSERT_TRUE(images.results.WaitFor(5));
    ASSERT_TRUE(second.results.WaitFor(5));
    std::uint64_t number = 0;
    for (const CGrabResultPtr& result : images.results.Get()) {
        ++number;
        EXPECT_TRUE(result->GrabSucceeded());
        EXPECT_EQ(result->GetErrorDescription(), "");
        EXPECT_EQ(result->GetFrameId(), number);
        EXPECT_EQ(result->GetImageNumber(), number);
        EXPECT_EQ(result->GetTimeStamp(), 1000 * number);
        EXPECT_EQ(result->GetPixelType(), PixelType_Mono8);
        EXPECT_EQ(result->GetWidth(), 8U);
        EXPECT_EQ(result->GetHeight(), 4U);
        EXPECT_EQ(result->GetPaddingX(), 0U);
        EXPECT_EQ(result->GetPayloadSize(), 32U);
        EXPECT_EQ(result->GetImageSize(), 32U);
        EXPECT_EQ(result->GetBufferSize(), 64U);
        EXPECT_FALSE(result->IsChunkDataAvailable());
        EXPECT_EQ(*static_cast<std::uint8_t*>(result->GetBuffer()), number);
    }
    camera.StopGrabbing();
    expectAccount(5);
    camera.DeregisterImageEventHandler(&second);
}

TEST_F(Grabbing, StartsAndStopsTheAcquisitionAndLocksTheTransport) {
    open();
    camera.StartGrabbing();
    EXPECT_TRUE(camera.IsGrabbing());
    EXPECT_EQ(device->Get(1000 + Address::start), 1);
    EXPECT_FALSE(CIntegerParameter(camera.GetNodeMap(), "Width").IsWritable());
    camera.StopGrabbing();
    EXPECT_FALSE(camera.IsGrabbing());
    EXPECT_EQ(device->Get(1000 + Address::stop), 1);
    EXPECT_TRUE(CIntegerParameter(camera.GetNodeMap(), "Width").IsWritable());
}

TEST_F(Grabbing, TwiceIsRefused) {
    open();
    camera.StartGrabbing();
    EXPECT_EQ(failureOf<GenICam::RuntimeException>([&] { camera.StartGrabbing(); }),
              "The camera is grabbing already.");
    EXPECT_TRUE(camera.IsGrabbing());
}

TEST_F(Grabbing, OpensTheCameraWhereNeeded) {
    camera.Attach(attached.get());
    camera.StartGrabbing();
    EXPECT_TRUE(camera.IsOpen());
}

TEST_F(Grabbing, AFailedStartLeavesEverythingAsItWas) {
    open();
    device->stream->refuseStart = true;
    EXPECT_EQ(failureOf([&] { camera.StartGrabbing(); }), "The stream refuses to start.");
    EXPECT_FALSE(camera.IsGrabbing());
    EXPECT_TRUE(CIntegerParameter(camera.GetNodeMap(), "Width").IsWritable());
    device->stream->refuseStart = false;
    camera.StartGrabbing();
    EXPECT_TRUE(camera.IsGrabbing());
}

TEST_F(Grabbing, StopsByItselfAfterThatManyImages) {
    camera.RegisterImageEventHandler(&images, RegistrationMode_Append, Cleanup_None);
    camera.RegisterConfiguration(&states, RegistrationMode_Append, Cleanup_None);
    open();
    states.names.Clear();
    camera.StartGrabbing(1, GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(states.names.WaitFor(4));
    EXPECT_EQ(states.names.Get(), (std::vector<std::string>{"OnGrabStart", "OnGrabStarted",
                                                            "OnGrabStop", "OnGrabStopped"}));
    EXPECT_FALSE(camera.IsGrabbing());
    EXPECT_FALSE(device->Send());
    EXPECT_EQ(images.results.Count(), 1U);
    EXPECT_THROW(camera.StartGrabbing(std::size_t{0}), GenICam::InvalidArgumentException);
}

TEST_F(Grabbing, FailedFramesAreHandedOverWithTheirReason) {
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

TEST_F(Grabbing, AFrameWithFewerBytesThanItsImageNeedsHasFailed) {
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

TEST_F(Grabbing, FailedFramesAreOnlyCountedIfNobodyWantsThem) {
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

TEST_F(Grabbing, AnImageRefersToTheBufferAndKeepsItWithoutACopy) {
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

TEST_F(Grabbing, AnImageOfAFailedOrMissingResultIsRefused) {
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

TEST_F(Grabbing, HeldBuffersAreNeverFilledAgainAndTheStreamTellsThatItStarves) {
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

TEST_F(Grabbing, ResultsComeBackToTheNextRunOfTheSameSize) {
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

TEST_F(Grabbing, SmallFramesHaveMoreBuffersThanLargeOnes) {
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

TEST(GrabResult, OutlivesGrabbingTheDeviceAndTheCamera) {
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

TEST_F(Grabbing, FramesThatNobodyTookBeforeTheEndAreCounted) {
    open();
    camera.StartGrabbing();
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(device->Send());
    camera.StopGrabbing();
    EXPECT_EQ(statistic("StatisticFailedAborted"), 2);
    expectAccount(2);
    camera.StartGrabbing();
    ASSERT_TRUE(device->Send());
    CGrabResultPtr result;
    ASSERT_TRUE(camera.RetrieveResult(1000, result));
    camera.StopGrabbing();
    EXPECT_EQ(statistic("StatisticDelivered"), 1);
    expectAccount(3);
}

TEST_F(Grabbing, CountsBeginAnewWithEachOpening) {
    open();
    camera.StartGrabbing();
    ASSERT_TRUE(device->Send());
    camera.Close();
    camera.Open();
    camera.StartGrabbing();
    camera.StopGrabbing();
    expectAccount(0);
}

TEST_F(Grabbing, AnExceptionOfAHandlerIsSwallowedAndTheNextFrameComes) {
    images.work = [](CInstantCamera&, const CGrabResultPtr& result) {
        if (result->GetImageNumber() == 1) {
            throw std::string("of no known type");
        }
    };
    grab();
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(images.results.WaitFor(1));
    EXPECT_EQ(images.results.Get()[0]->GetImageNumber(), 2U);
}

TEST_F(Grabbing, AHandlerMayStopTheCamera) {
    Gate stopped;
    images.work = [&](CInstantCamera& sender, const CGrabResultPtr&) {
        sender.StopGrabbing();
        EXPECT_FALSE(sender.IsGrabbing());
        stopped.Open();
    };
    grab();
    ASSERT_TRUE(device->Send());
    EXPECT_TRUE(stopped.Wait());
}

TEST_F(Grabbing, AHandlerMayStartTheNextRun) {
    images.work = [&](CInstantCamera& sender, const CGrabResultPtr&) {
        if (images.results.Count() == 0) {
            sender.StopGrabbing();
            sender.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
        }
    };
    grab();
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(images.results.WaitFor(1));
    ASSERT_TRUE(device->Send());
    EXPECT_TRUE(images.results.WaitFor(2));
}

TEST_F(Grabbing, LatestImageOnlySkipsWhatNobodyTook) {
    Gate entered;
    Gate leave;
    images.work = [&](CInstantCamera&, const CGrabResultPtr& result) {
        if (result->GetImageNumber() == 1) {
            entered.Open();
            EXPECT_TRUE(leave.Wait());
        }
    };
    images.keep = false;
    camera.MaxNumBuffer.SetValue(4);
    grab(GrabStrategy_LatestImageOnly);
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(entered.Wait());
    for (int frame = 0; frame < 20; ++frame) {
        device->WaitForQueued(1);
        ASSERT_TRUE(device->Send());
    }
    device->WaitForQueued(2);  // all but the one held and the latest
    leave.Open();
    ASSERT_TRUE(images.results.WaitFor(2));
    ASSERT_TRUE(images.skips.WaitFor(1));
    EXPECT_EQ(images.skips.Get()[0], 19U);
    camera.StopGrabbing();
    EXPECT_EQ(statistic("StatisticSkipped"), 19);
    EXPECT_EQ(statistic("StatisticDelivered"), 2);
    expectAccount(21);
}

TEST_F(Grabbing, LatestImagesKeepsAsManyAsTheQueueHas) {
    camera.OutputQueueSize.SetValue(3);
    camera.MaxNumBuffer.SetValue(5);
    open();
    camera.StartGrabbing(GrabStrategy_LatestImages, GrabLoop_ProvidedByUser);
    for (int frame = 0; frame < 10; ++frame) {
        device->WaitForQueued(1);
        ASSERT_TRUE(device->Send());
    }
    device->WaitForQueued(2);
    for (std::uint64_t id = 8; id <= 10; ++id) {
        CGrabResultPtr result;
        ASSERT_TRUE(camera.RetrieveResult(1000, result));
        EXPECT_EQ(result->GetFrameId(), id);
        EXPECT_EQ(result->GetNumberOfSkippedImages(), id == 8 ? 7U : 0U);
    }
    camera.StopGrabbing();
    expectAccount(10);
}

TEST_F(Grabbing, UpcomingImageTakesNoFrameThatCameBeforeItWasAskedFor) {
    open();
    camera.StartGrabbing(GrabStrategy_UpcomingImage, GrabLoop_ProvidedByUser);
    EXPECT_FALSE(device->Send());
    CGrabResultPtr result;
    auto asked =
        std::async(std::launch::async, [&] { return camera.RetrieveResult(30000, result); });
    device->WaitForQueued(1);
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(asked.get());
    EXPECT_EQ(result->GetFrameId(), 2U);
    camera.StopGrabbing();
    EXPECT_EQ(statistic("StatisticLostForBuffer"), 1);
    expectAccount(2);
}

TEST_F(Grabbing, RetrievingTellsTheTimeOutAsAsked) {
    open();
    camera.StartGrabbing();
    CGrabResultPtr result;
    EXPECT_FALSE(camera.RetrieveResult(1, result, TimeoutHandling_Return));
    EXPECT_FALSE(result.IsValid());
    EXPECT_EQ(failureOf<GenICam::TimeoutException>([&] { camera.RetrieveResult(1, result); }),
              "No frame came within 1 milliseconds.");
}

TEST_F(Grabbing, RetrievingEndsWhenGrabbingIsStopped) {
    open();
    camera.StartGrabbing();
    CGrabResultPtr result;
    auto asked =
        std::async(std::launch::async, [&] { return camera.RetrieveResult(600000, result); });
    camera.StopGrabbing();
    EXPECT_FALSE(asked.get());
    EXPECT_FALSE(camera.RetrieveResult(600000, result));
}

TEST_F(Grabbing, RetrievingIsRefusedWhileAThreadOfTheCameraTakesTheFrames) {
    grab();
    CGrabResultPtr result;
    EXPECT_EQ(failureOf<GenICam::RuntimeException>([&] { camera.RetrieveResult(1, result); }),
              "A thread of the camera takes the frames already.");
}

TEST_F(Grabbing, ChunksOfAFrameShowInTheMapOfItsResult) {
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

TEST_F(Grabbing, AFrameWhoseChunksCannotBeTakenApartHasFailed) {
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

TEST_F(Grabbing, ADeviceWithoutAPayloadSizeIsRefused) {
    const std::string name = "PayloadSize\"><pValue>";
    device->description.replace(device->description.find(name), name.size(),
                                "OtherSize\"><pValue>");
    open();
    EXPECT_EQ(failureOf<GenICam::RuntimeException>([&] { camera.StartGrabbing(); }),
              "Grabbing can't be started: the device doesn't tell the size of its frames in a "
              "feature 'PayloadSize'.");
    EXPECT_FALSE(camera.IsGrabbing());
}

TEST(EmulatedGrabbing, FramesOfAnEmulatedCameraAreAllAccountedFor) {
    const auto layer = CreateCameraLayer(CreateEmulatedCameras(1));
    const auto attached = layer->CreateDevice(layer->EnumerateDevices().at(0));
    Images images;
    images.keep = false;
    CInstantCamera camera(attached.get());
    camera.RegisterImageEventHandler(&images, RegistrationMode_Append, Cleanup_None);
    camera.Open();
    CIntegerParameter(camera.GetNodeMap(), "Width").SetValue(64);
    CIntegerParameter(camera.GetNodeMap(), "Height").SetValue(48);
    CFloatParameter(camera.GetNodeMap(), "ExposureTime").SetValue(50);
    for (int run = 0; run < 3; ++run) {
        images.results.Clear();
        camera.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
        ASSERT_TRUE(images.results.WaitFor(200));
        camera.StopGrabbing();
    }
    const auto count = [&](const char* name) {
        return CIntegerParameter(camera.GetStreamGrabberNodeMap(), name).GetValue();
    };
    EXPECT_EQ(count("StatisticSent"), count("StatisticDelivered") + count("StatisticFailed") +
                                          count("StatisticLostForBuffer") +
                                          count("StatisticSkipped"));
    EXPECT_GE(count("StatisticDelivered"), 600);
    static_cast<void>(camera.DetachDevice());
}

}  // namespace
}  // namespace CameraTest
