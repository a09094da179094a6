// Cameras that go while they are in use, and come back.
#include <chrono>
#include <condition_variable>
#include <mutex>

#include "aravis/support/fakecameratest.h"
#include "aravis/support/watch.h"
#include "gcbase/gcexception.h"
#include "orlixcamera/grabresultdata.h"
#include "orlixcamera/instantcamera.h"

namespace Orlix::Aravis {
namespace {

using Testing::Clock;
using Testing::PrintTime;
using Testing::Watch;

class Removal : public Testing::FakeCameraTest {
protected:
    static void GrabSome(CInstantCamera& camera) {
        CGrabResultPtr result;
        // The camera sends nothing again, and a busy computer loses packets.
        for (int whole = 0; whole < 5;) {
            ASSERT_TRUE(camera.RetrieveResult(patience, result));
            whole += result->GrabSucceeded() ? 1 : 0;
        }
    }
};

TEST_F(Removal, OfAnIdleCameraIsNoticed) {
    auto process = StartCamera("127.0.0.1", "T1");
    const auto device = FindDevice("T1");
    Watch watch;  // outlives the camera
    CInstantCamera camera(device.get());
    camera.RegisterConfiguration(&watch, RegistrationMode_Append, Cleanup_None);
    camera.Open();
    const auto begin = Clock::now();
    process.Kill();
    watch.WaitForLoss();
    PrintTime("removal noticed", begin);
    EXPECT_TRUE(camera.IsCameraDeviceRemoved());
    EXPECT_THROW(static_cast<void>(CIntegerParameter(camera.GetNodeMap(), "Width").GetValue()),
                 GenICam::GenericException);
    PrintTime("register access failed", begin);
    camera.Close();
    PrintTime("closed", begin);
}

// Whoever waits for a change of the list to use the camera again must hear of one.
TEST_F(Removal, OfACameraThatIsBackAtOnceIsToldAsOneThatCameAndWent) {
    auto process = StartCamera("127.0.0.1", "T1");
    const auto layer = CreateLayer("GigE");
    const auto infos = layer->EnumerateDevices();
    ASSERT_EQ(infos.size(), 1U);
    const auto device = layer->CreateDevice(infos.front());
    Watch watch;  // outlives the camera
    CInstantCamera camera(device.get());
    camera.RegisterConfiguration(&watch, RegistrationMode_Append, Cleanup_None);
    camera.Open();
    std::mutex mutex;
    std::condition_variable changed;
    bool gone = false;
    bool back = false;
    layer->SetDevicesChanged([&] {
        const bool there = !layer->EnumerateDevices().empty();
        const std::scoped_lock lock(mutex);
        gone = gone || !there;
        back = gone && there;
        changed.notify_all();
    });
    process.Kill();
    process = StartCamera("127.0.0.1", "T1");
    watch.WaitForLoss();
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return back; });
    }
    layer->SetDevicesChanged({});
    camera.Close();
    camera.Open();
    EXPECT_TRUE(camera.IsOpen());
}

TEST_F(Removal, InMidStreamEndsItAndTheCameraCanBeUsedAgainWhenItIsBack) {
    auto process = StartCamera("127.0.0.1", "T1");
    const auto device = FindDevice("T1");
    Watch watch;  // outlives the camera
    CInstantCamera camera(device.get());
    camera.RegisterConfiguration(&watch, RegistrationMode_Append, Cleanup_None);
    for (int round = 0; round < 3; ++round) {
        camera.StartGrabbing();
        GrabSome(camera);
        const auto begin = Clock::now();
        process.Kill();
        watch.WaitForLoss();
        PrintTime("removal noticed", begin);
        CGrabResultPtr result;
        EXPECT_THROW(
            {
                while (camera.RetrieveResult(patience, result)) {
                }
            },
            GenICam::RuntimeException);
        camera.StopGrabbing();
        camera.Close();
        PrintTime("stopped and closed", begin);
        EXPECT_THROW(camera.Open(), GenICam::RuntimeException);
        process = StartCamera("127.0.0.1", "T1");
    }
    camera.StartGrabbing();
    GrabSome(camera);
}

}  // namespace
}  // namespace Orlix::Aravis
