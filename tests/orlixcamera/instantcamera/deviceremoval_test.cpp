// The loss of a device: who is told, once, and what calls on it do.
#include "orlixcamera/cameralayer.h"
#include "orlixcamera/emulated/layer.h"
#include "orlixcamera/instantcamera/cameratest.h"

namespace CameraTest {
namespace {

constexpr const char* removed = "OnCameraDeviceRemoved";

class DeviceRemoval : public CameraFixture {
protected:
    void SetUp() override {
        camera.RegisterConfiguration(&states, RegistrationMode_Append, Cleanup_None);
        states.work = [this](const std::string& name) {
            if (name == removed) {
                if (onRemoved) {
                    onRemoved();
                }
                reports.Add(std::this_thread::get_id());
            }
        };
    }

    std::function<void()> onRemoved;
    Record<std::thread::id> reports;
};

TEST_F(DeviceRemoval, IsReportedOnceOnAThreadThatIsNeitherTheGrabNorTheEventThread) {
    std::atomic<std::thread::id> grabThread;
    images.work = [&](CInstantCamera&, const CGrabResultPtr&) {
        grabThread = std::this_thread::get_id();
    };
    grab();
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(images.results.WaitFor(1));
    device->Lose();
    device->Lose();
    ASSERT_TRUE(reports.WaitFor(1));
    EXPECT_TRUE(camera.IsCameraDeviceRemoved());
    EXPECT_NE(reports.Get()[0], grabThread.load());
    EXPECT_NE(reports.Get()[0], std::this_thread::get_id());
    device->JoinLoss();
    static_cast<void>(camera.DetachDevice());
    EXPECT_EQ(reports.Count(), 1U);
}

TEST_F(DeviceRemoval, IsReportedForEachOpeningAnew) {
    open();
    device->Lose();
    ASSERT_TRUE(reports.WaitFor(1));
    camera.Close();
    EXPECT_FALSE(camera.IsCameraDeviceRemoved());
    device->Recover();
    camera.Open();
    device->Lose();
    EXPECT_TRUE(reports.WaitFor(2));
}

// The thread of the report has other work until the device is back and open.
TEST_F(DeviceRemoval, IsNotReportedOnceTheDeviceIsOpenAgain) {
    Gate entered;
    Gate leave;
    onRemoved = [&] {
        entered.Open();
        EXPECT_TRUE(leave.Wait());
    };
    open();
    device->Lose();
    ASSERT_TRUE(entered.Wait());
    for (int opening = 0; opening < 2; ++opening) {
        camera.Close();
        device->Recover();
        camera.Open();
        if (opening == 0) {
            device->Lose();
            device->JoinLoss();
        }
    }
    leave.Open();
    ASSERT_TRUE(reports.WaitFor(1));
    // Time for a report that must not come.
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(20);
    while (std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
    EXPECT_EQ(reports.Count(), 1U);
    device->Lose();
    EXPECT_TRUE(reports.WaitFor(2));
}

TEST_F(DeviceRemoval, OfADeviceThatGoesWhileItIsBeingOpenedIsOverWithTheAttempt) {
    device->beforeDescription = [this] {
        device->Lose();
        device->JoinLoss();
        EXPECT_TRUE(camera.IsCameraDeviceRemoved());
        throw GenICam::RuntimeException("Device 'scripted' was removed.", __FILE__, __LINE__);
    };
    EXPECT_THROW(open(), GenICam::RuntimeException);
    EXPECT_FALSE(camera.IsCameraDeviceRemoved());
}

TEST_F(DeviceRemoval, IsNotReportedAfterTheDeviceWasDetached) {
    open();
    static_cast<void>(camera.DetachDevice());
    device->Lose();
    device->JoinLoss();
    EXPECT_EQ(reports.Count(), 0U);
}

TEST_F(DeviceRemoval, NoReportRunsOnceDetachingHasReturned) {
    for (int round = 0; round < 200; ++round) {
        open();
        device->Lose();
        static_cast<void>(camera.DetachDevice());
        const std::size_t reported = reports.Count();
        device->JoinLoss();
        EXPECT_EQ(reports.Count(), reported);
        EXPECT_LE(reported, 1U);
        reports.Clear();
        device->Recover();
    }
}

TEST_F(DeviceRemoval, AReportThatWaitsForALockOfTheCallerDoesNotHoldDetachingUpForEver) {
    std::mutex lock;
    Gate entered;
    onRemoved = [&] {
        entered.Open();
        const std::scoped_lock inner(lock);
    };
    open();
    {
        const std::scoped_lock outer(lock);
        device->Lose();
        ASSERT_TRUE(entered.Wait());
        camera.Close();
        EXPECT_EQ(camera.DetachDevice(), attached.get());
    }
    EXPECT_TRUE(reports.WaitFor(1));
}

TEST_F(DeviceRemoval, TheReportMayDetachTheDevice) {
    onRemoved = [&] { EXPECT_EQ(camera.DetachDevice(), attached.get()); };
    open();
    device->Lose();
    ASSERT_TRUE(reports.WaitFor(1));
    EXPECT_FALSE(camera.IsDeviceAttached());
}

TEST_F(DeviceRemoval, EndsTheRunAndTellsWhy) {
    grab();
    device->Lose();
    ASSERT_TRUE(reports.WaitFor(1));
    const auto has = [&](const std::string& name) {
        const auto names = states.names.Get();
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    while (!has("OnGrabStopped")) {
        ASSERT_TRUE(states.names.WaitFor(states.names.Count() + 1));
    }
    EXPECT_TRUE(has("OnGrabError: Device 'scripted' was removed."));
    EXPECT_FALSE(camera.IsGrabbing());
    EXPECT_TRUE(camera.IsOpen());
}

TEST_F(DeviceRemoval, CallsThatNeedTheDeviceThrowAndThoseThatEndDoNot) {
    open();
    camera.StartGrabbing();
    device->Lose();
    CGrabResultPtr result;
    EXPECT_EQ(failureOf<GenICam::RuntimeException>([&] { camera.RetrieveResult(600000, result); }),
              "Device 'scripted' was removed.");
    EXPECT_FALSE(camera.IsGrabbing());
    EXPECT_EQ(failureOf<GenICam::RuntimeException>(
                  [&] { CIntegerParameter(camera.GetNodeMap(), "Width").SetValue(5); }),
              "Device 'scripted' was removed.");
    EXPECT_THROW(camera.StartGrabbing(), GenICam::RuntimeException);
    camera.StopGrabbing();
    camera.Close();
    EXPECT_THROW(camera.Open(), GenICam::RuntimeException);
    EXPECT_EQ(camera.DetachDevice(), attached.get());
}

TEST_F(DeviceRemoval, StoppingClosingAndDetachingAGrabbingCameraDoNotThrow) {
    grab();
    device->Lose();
    camera.StopGrabbing();
    camera.Close();
    EXPECT_EQ(camera.DetachDevice(), attached.get());
}

// Every state in which the cable may be pulled, again and again, with an emulated camera.
class EmulatedRemoval : public testing::Test {
protected:
    const std::shared_ptr<Emulated::Layer> cameras = std::make_shared<Emulated::Layer>(1);
    const std::shared_ptr<ICameraLayer> layer = CreateCameraLayer(cameras);
    const CDeviceInfo info = layer->EnumerateDevices().at(0);
    Images images;
};

using Clock = std::chrono::steady_clock;

TEST_F(EmulatedRemoval, AtAnyTimeLeavesACameraThatCanBeUsedAgain) {
    images.keep = false;
    CInstantCamera camera;
    camera.RegisterImageEventHandler(&images, RegistrationMode_Append, Cleanup_None);
    for (unsigned int round = 0; round < 100; ++round) {
        const auto device = layer->CreateDevice(info);
        camera.Attach(device.get());
        std::thread unplugging;
        try {
            if (round % 3 != 0) {
                camera.Open();
            }
            unplugging = std::thread([&] {
                // Busy, since a thread that sleeps or yields comes back when the system likes.
                const auto end = Clock::now() + std::chrono::microseconds(round * 30);
                while (Clock::now() < end) {
                }
                cameras->Unplug(0);
            });
            camera.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
            if (round % 2 == 0) {
                camera.StopGrabbing();
            }
        } catch (const GenICam::GenericException&) {
            // The camera went while something needed it.
        }
        camera.Close();
        EXPECT_EQ(camera.DetachDevice(), device.get());
        EXPECT_FALSE(camera.IsOpen());
        EXPECT_FALSE(camera.IsGrabbing());
        if (unplugging.joinable()) {
            unplugging.join();
        }
        cameras->Plug(0);
    }
}

}  // namespace
}  // namespace CameraTest
