// Which cameras the installed layers find.
#include <algorithm>
#include <condition_variable>
#include <mutex>

#include "aravis/support/fakecameratest.h"
#include "aravis/support/simulatedcameratest.h"
#include "gcbase/gcexception.h"

namespace Orlix::Aravis {
namespace {

using Discovery = Testing::FakeCameraTest;

std::string valueOf(const CDeviceInfo& info, const char* key) {
    gcstring value("none");
    static_cast<void>(info.GetPropertyValue(key, value));
    return value.c_str();
}

TEST_F(Discovery, ThereIsALayerForEachKindOfCamera) {
    ASSERT_NE(CreateLayer("GigE"), nullptr);
    const auto usb = CreateLayer("USB3");
    ASSERT_NE(usb, nullptr);
    EXPECT_TRUE(usb->EnumerateDevices().empty());
}

TEST_F(Discovery, TellsWhoACameraIs) {
    const auto camera = StartCamera("127.0.0.1", "T1");
    const auto infos = CreateLayer("GigE")->EnumerateDevices();
    ASSERT_EQ(infos.size(), 1U);
    EXPECT_EQ(infos[0].GetDeviceClass(), "GigE");
    EXPECT_EQ(infos[0].GetVendorName(), "Aravis");
    EXPECT_EQ(infos[0].GetModelName(), "Fake");
    EXPECT_EQ(infos[0].GetSerialNumber(), "T1");
    EXPECT_EQ(infos[0].GetFriendlyName(), "Fake (T1)");
    EXPECT_EQ(valueOf(infos[0], Key::IpAddress), "127.0.0.1");
    EXPECT_EQ(valueOf(infos[0], Key::UserDefinedName), "");
    EXPECT_EQ(valueOf(infos[0], Key::IpConfigCurrent), "0");
}

TEST_F(Discovery, FindsTheCameraThatHasTheProperties) {
    const auto first = StartCamera("127.0.0.1", "T1");
    const auto second = StartCamera("127.0.0.2", "T2");
    const auto layer = CreateLayer("GigE");
    ASSERT_EQ(layer->EnumerateDevices().size(), 2U);
    for (const char* serialNumber : {"T1", "T2"}) {
        CDeviceInfo wanted;
        wanted.SetPropertyValue(Key::SerialNumber, serialNumber);
        EXPECT_EQ(layer->CreateDevice(wanted)->GetDeviceInfo().GetSerialNumber(), serialNumber);
    }
    CDeviceInfo stranger;
    stranger.SetPropertyValue(Key::SerialNumber, "T3");
    try {
        static_cast<void>(layer->CreateDevice(stranger));
        FAIL() << "a camera that is not there was found";
    } catch (const GenICam::InvalidArgumentException& error) {
        EXPECT_STREQ(error.GetDescription(),
                     "No GigE camera has the properties SerialNumber='T3'.");
    }
}

TEST_F(Discovery, TellsOfACameraThatComesAndGoes) {
    const auto layer = CreateLayer("GigE");
    EXPECT_TRUE(layer->EnumerateDevices().empty());
    std::mutex mutex;
    std::condition_variable changed;
    int changes = 0;
    layer->SetDevicesChanged([&] {
        const std::scoped_lock lock(mutex);
        ++changes;
        changed.notify_all();
    });
    const auto waitFor = [&](int count) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return changes >= count; });
    };
    auto camera = StartCamera("127.0.0.1", "T1");
    waitFor(1);
    EXPECT_EQ(layer->EnumerateDevices().size(), 1U);
    camera.Kill();
    waitFor(2);
    EXPECT_TRUE(layer->EnumerateDevices().empty());
    layer->SetDevicesChanged({});
}

using NameOfACamera = Testing::SimulatedCameraTest;

// Names come from makers of all kinds, and from flash memory that nobody has written to.
TEST_F(NameOfACamera, IsTextWhateverItsBytesAre) {
    Start({"--user-name", "Gr\xFCn\x1B[1m\n", "--model", "Gr\xC3\xBCn\xFF", "--device-version",
           "2.1"});
    const auto infos = CreateLayer("GigE")->EnumerateDevices();
    ASSERT_EQ(infos.size(), 1U);
    EXPECT_EQ(infos[0].GetUserDefinedName(), "Gr\xC3\xBCn[1m");
    EXPECT_EQ(infos[0].GetModelName(), "Gr\xC3\xBCn\xC3\xBF");
    EXPECT_EQ(valueOf(infos[0], Key::DeviceVersion), "2.1");
    EXPECT_EQ(infos[0].GetFriendlyName(), "Gr\xC3\xBCn[1m (S1)");
    // Of a layer that has not looked yet.
    const auto device = CreateLayer("GigE")->CreateDevice(infos[0]);
    CInstantCamera opened(device.get());
    EXPECT_NO_THROW(opened.Open());
}

}  // namespace
}  // namespace Orlix::Aravis
