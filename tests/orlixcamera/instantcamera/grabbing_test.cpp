// Runs of grabbing: how they begin and end, and where every frame ends.
#include "orlixcamera/cameralayer.h"
#include "orlixcamera/emulatedcameras.h"
#include "orlixcamera/instantcamera/cameratest.h"

namespace CameraTest {
namespace {

class Grabbing : public CameraFixture {};

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
    expectAccount(0);
    EXPECT_EQ(statistic("NumBuffers"), 0);
    camera.StartGrabbing();
    camera.StopGrabbing();
    expectAccount(0);
}

TEST_F(Grabbing, TotalsGoOnFromOpeningToOpeningAndCanBeReadWhileItIsClosed) {
    const auto total = [this](const char* name) {
        return CIntegerParameter(camera.GetInstantCameraNodeMap(), name).GetValue();
    };
    open();
    for (int opening = 1; opening <= 3; ++opening) {
        camera.StartGrabbing();
        ASSERT_TRUE(device->Send());
        CGrabResultPtr result;
        ASSERT_TRUE(camera.RetrieveResult(1000, result));
        ASSERT_TRUE(device->Send());
        EXPECT_EQ(total("TotalDelivered"), opening);
        camera.Close();
        EXPECT_EQ(total("TotalSent"), 2 * opening);
        EXPECT_EQ(total("TotalDelivered"), opening);
        EXPECT_EQ(total("TotalFailed"), opening);
        camera.Open();
        EXPECT_EQ(total("TotalSent"), 2 * opening);
    }
    EXPECT_EQ(total("TotalSkipped"), 0);
    EXPECT_EQ(total("TotalLostForBuffer"), 0);
    EXPECT_EQ(total("TotalEventsLost"), 0);
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

TEST_F(Grabbing, AHandlerOfTheVeryFirstFrameFindsARunThatItCanStop) {
    images.keep = false;
    images.work = [](CInstantCamera& sender, const CGrabResultPtr&) {
        EXPECT_TRUE(sender.IsGrabbing());
        sender.StopGrabbing();
        EXPECT_FALSE(sender.IsGrabbing());
    };
    device->sendAtStart = true;
    grab();
    for (std::size_t run = 1; run <= 200; ++run) {
        ASSERT_TRUE(images.results.WaitFor(run));
        camera.StopGrabbing();
        camera.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
    }
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
