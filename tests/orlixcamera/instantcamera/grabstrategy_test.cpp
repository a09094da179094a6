// Strategies, and frames that the caller takes itself.
#include <future>

#include "orlixcamera/instantcamera/cameratest.h"

namespace CameraTest {
namespace {

class GrabStrategy : public CameraFixture {};

TEST_F(GrabStrategy, StopsByItselfAfterThatManyImages) {
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

TEST_F(GrabStrategy, LatestImageOnlySkipsWhatNobodyTook) {
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

TEST_F(GrabStrategy, LatestImagesKeepsAsManyAsTheQueueHas) {
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

TEST_F(GrabStrategy, LatestImagesComeInTheirOrderHoweverSlowTheyAreTaken) {
    camera.OutputQueueSize.SetValue(3);
    camera.MaxNumBuffer.SetValue(4);
    open();
    camera.StartGrabbing(GrabStrategy_LatestImages, GrabLoop_ProvidedByUser);
    std::uint64_t sent = 0;
    const auto send = [&](int count) {
        for (int frame = 0; frame < count; ++frame, ++sent) {
            device->WaitForQueued(1);
            ASSERT_TRUE(device->Send());
        }
        device->WaitForQueued(1);
    };
    const auto expect = [&](std::uint64_t id, std::size_t skipped) {
        CGrabResultPtr result;
        ASSERT_TRUE(camera.RetrieveResult(1000, result));
        EXPECT_EQ(result->GetFrameId(), id);
        EXPECT_EQ(result->GetNumberOfSkippedImages(), skipped);
    };
    send(3);
    expect(1, 0);
    expect(2, 0);
    send(2);
    expect(3, 0);
    send(2);
    expect(5, 1);
    expect(6, 0);
    expect(7, 0);
    send(5);
    camera.StopGrabbing();
    EXPECT_EQ(statistic("StatisticSkipped"), 3);
    EXPECT_EQ(statistic("StatisticFailedAborted"), 3);
    expectAccount(static_cast<std::int64_t>(sent));
}

TEST_F(GrabStrategy, UpcomingImageTakesNoFrameThatCameBeforeItWasAskedFor) {
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

TEST_F(GrabStrategy, UpcomingImageIsFilledIntoABufferThatComesBackDuringTheWait) {
    camera.MaxNumBuffer.SetValue(1);
    open();
    camera.StartGrabbing(GrabStrategy_UpcomingImage, GrabLoop_ProvidedByUser);
    CGrabResultPtr first;
    auto asked =
        std::async(std::launch::async, [&] { return camera.RetrieveResult(30000, first); });
    device->WaitForQueued(1);
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(asked.get());
    CGrabResultPtr next;
    asked = std::async(std::launch::async, [&] { return camera.RetrieveResult(600000, next); });
    device->WaitForWaiting();
    first.Release();
    device->WaitForQueued(1);
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(asked.get());
    EXPECT_EQ(next->GetFrameId(), 2U);
}

TEST_F(GrabStrategy, RetrievingTellsTheTimeOutAsAsked) {
    open();
    camera.StartGrabbing();
    CGrabResultPtr result;
    EXPECT_FALSE(camera.RetrieveResult(1, result, TimeoutHandling_Return));
    EXPECT_FALSE(result.IsValid());
    EXPECT_EQ(failureOf<GenICam::TimeoutException>([&] { camera.RetrieveResult(1, result); }),
              "No frame came within 1 milliseconds.");
}

TEST_F(GrabStrategy, RetrievingEndsWhenGrabbingIsStopped) {
    open();
    camera.StartGrabbing();
    CGrabResultPtr result;
    auto asked =
        std::async(std::launch::async, [&] { return camera.RetrieveResult(600000, result); });
    device->WaitForWaiting();
    camera.StopGrabbing();
    EXPECT_FALSE(asked.get());
    EXPECT_FALSE(camera.RetrieveResult(600000, result));
}

TEST_F(GrabStrategy, RetrievingMayMeetAnyStartAndEnd) {
    open();
    std::atomic<bool> done{false};
    auto taking = std::async(std::launch::async, [&] {
        std::size_t taken = 0;
        while (!done) {
            CGrabResultPtr result;
            taken += camera.RetrieveResult(1, result, TimeoutHandling_Return) ? 1U : 0U;
        }
        return taken;
    });
    for (int round = 0; round < 200; ++round) {
        camera.StartGrabbing(round % 2 == 0 ? GrabStrategy_OneByOne : GrabStrategy_LatestImageOnly);
        ASSERT_TRUE(device->Send());
        camera.StopGrabbing();
    }
    done = true;
    EXPECT_EQ(taking.get(), static_cast<std::size_t>(statistic("StatisticDelivered")));
    expectAccount(200);
}

TEST_F(GrabStrategy, RetrievingIsRefusedWhileAThreadOfTheCameraTakesTheFrames) {
    grab();
    CGrabResultPtr result;
    EXPECT_EQ(failureOf<GenICam::RuntimeException>([&] { camera.RetrieveResult(1, result); }),
              "A thread of the camera takes the frames already.");
}

}  // namespace
}  // namespace CameraTest
