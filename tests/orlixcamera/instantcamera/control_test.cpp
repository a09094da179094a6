// A callback of a node of the device uses the camera, with the map's lock held.
#include "genapi/callback.h"
#include "orlixcamera/instantcamera/cameratest.h"

namespace CameraTest {
namespace {

constexpr int rounds = 500;

class CameraControl : public CameraFixture {
protected:
    CameraControl() {
        const std::string mark = "<Port Name=\"Device\"/>";
        device->description.replace(device->description.find(mark), 0,
                                    R"(<IntReg Name="Knob"><Address>200</Address><Length>8</Length>
  <AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>)");
        open();
    }
    // Turns the knob on a thread of its own, again and again.
    void turnWhile(const std::function<void()>& callback, const std::function<void()>& work) {
        GenApi::INode* const knob = camera.GetNodeMap().GetNode("Knob");
        const std::intptr_t registration = GenApi::Register(
            knob, [&](GenApi::INode*) { callback(); }, GenApi::cbPostInsideLock);
        std::atomic<bool> ends = false;
        std::thread turning([&] {
            for (std::int64_t value = 0; !ends; ++value) {
                try {
                    CIntegerParameter(knob).SetValue(value);
                } catch (const GenICam::GenericException&) {
                    std::this_thread::yield();  // the camera is closed
                }
            }
        });
        for (int round = 0; round < rounds; ++round) {
            work();
        }
        ends = true;
        turning.join();
        GenApi::Deregister(knob, registration);
    }
};

TEST_F(CameraControl, ACallbackOfANodeMayStopTheCameraWhileAnotherThreadStartsIt) {
    turnWhile([this] { camera.StopGrabbing(); },
              [this] {
                  camera.StartGrabbing();
                  camera.StopGrabbing();
              });
    EXPECT_FALSE(camera.IsGrabbing());
}

TEST_F(CameraControl, ACallbackOfANodeMayCloseTheCameraWhileAnotherThreadOpensIt) {
    turnWhile([this] { camera.Close(); },
              [this] {
                  try {
                      camera.StartGrabbing();
                  } catch (const GenICam::GenericException&) {
                      std::this_thread::yield();  // it was closed meanwhile
                  }
                  camera.StopGrabbing();
              });
    camera.Close();
    EXPECT_FALSE(device->IsOpen());
}

// Its maps are made then, for which nobody has a lock yet.
TEST_F(CameraControl, ADeviceIsOpenedWholeBeforeItIsDetached) {
    static_cast<void>(camera.DetachDevice());
    Gate isOpening;
    Gate goesOn;
    device->beforeDescription = [&] {
        isOpening.Open();
        EXPECT_TRUE(goesOn.Wait());
    };
    camera.Attach(attached.get());
    std::thread opening([this] { camera.Open(); });
    ASSERT_TRUE(isOpening.Wait());
    std::atomic<bool> isDetached = false;
    std::thread detaching([&] {
        static_cast<void>(camera.DetachDevice());
        isDetached = true;
    });
    // Time for a detaching that must wait.
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(20);
    while (std::chrono::steady_clock::now() < end) {
        EXPECT_FALSE(isDetached);
        std::this_thread::yield();
    }
    goesOn.Open();
    opening.join();
    detaching.join();
    EXPECT_FALSE(camera.IsOpen());
    EXPECT_FALSE(device->IsOpen());
}

}  // namespace
}  // namespace CameraTest
