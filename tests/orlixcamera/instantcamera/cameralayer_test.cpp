#include "orlixcamera/cameralayer.h"

#include <gtest/gtest.h>

#include "gcbase/gcexception.h"
#include "orlixcamera/cameradevice.h"
#include "orlixcamera/emulated/layer.h"
#include "orlixcamera/instantcamera/cameratest.h"

namespace Orlix {
namespace {

TEST(CameraLayer, ListsTheCamerasAndMakesADeviceOfEach) {
    const auto layer = CreateCameraLayer(std::make_shared<Emulated::Layer>(3));
    EXPECT_EQ(layer->GetInfo().GetDeviceClass(), "OrlixEmulated");
    const auto infos = layer->EnumerateDevices();
    ASSERT_EQ(infos.size(), 3U);
    for (const CDeviceInfo& info : infos) {
        const auto device = layer->CreateDevice(info);
        EXPECT_EQ(device->GetDeviceInfo().GetFullName(), info.GetFullName());
        EXPECT_NE(device, layer->CreateDevice(info));
    }
}

TEST(CameraLayer, RefusesADeviceThatIsNotItsOwn) {
    const auto layer = CreateCameraLayer(std::make_shared<Emulated::Layer>(1));
    CDeviceInfo stranger;
    stranger.SetPropertyValue(Key::SerialNumber, "none has it");
    EXPECT_THROW(static_cast<void>(layer->CreateDevice(stranger)),
                 GenICam::InvalidArgumentException);
}

TEST(CameraLayer, TellsOfCamerasThatComeAndGo) {
    CameraTest::Record<int> first;
    CameraTest::Record<int> second;
    const auto cameras = std::make_shared<Emulated::Layer>(2);
    const auto layer = CreateCameraLayer(cameras);
    layer->SetDevicesChanged([&] { first.Add(0); });
    cameras->Unplug(0);
    ASSERT_TRUE(first.WaitFor(1));
    EXPECT_EQ(layer->EnumerateDevices().size(), 1U);
    cameras->Plug(0);
    ASSERT_TRUE(first.WaitFor(2));
    EXPECT_EQ(layer->EnumerateDevices().size(), 2U);
    layer->SetDevicesChanged([&] { second.Add(0); });
    cameras->Unplug(0);
    ASSERT_TRUE(second.WaitFor(1));
    EXPECT_EQ(first.Count(), 2U);
    layer->SetDevicesChanged({});
}

}  // namespace
}  // namespace Orlix
