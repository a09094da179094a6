#include "orlixcamera/emulated/layer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <set>
#include <string>

#include "gcbase/gcexception.h"
#include "orlixcamera/emulated/cameratools.h"
#include "orlixcamera/emulatedcameras.h"

namespace {

using namespace EmulatedTest;
using Orlix::CDeviceInfo;

class LossSink final : public Transport::IDeviceSink {
public:
    void OnEvent(const Transport::EventMessage&) override {}
    void OnLost() override {
        ++calls;
        lost.set_value(std::this_thread::get_id());
    }

    int calls = 0;
    std::promise<std::thread::id> lost;
};

TEST(EmulatedLayer, EveryCameraHasItsOwnFullName) {
    const auto layer = Orlix::CreateEmulatedCameras(300);
    EXPECT_EQ(layer->GetInfo().GetDeviceClass(), "OrlixEmulated");
    std::set<std::string> names;
    for (const CDeviceInfo& info : layer->Enumerate()) {
        names.insert(info.GetFullName().c_str());
        EXPECT_EQ(info.GetVendorName(), "Orlix");
    }
    EXPECT_EQ(names.size(), 300U);
    EXPECT_TRUE(Orlix::CreateEmulatedCameras(0)->Enumerate().empty());
}

TEST(EmulatedLayer, CamerasDifferInWhatTheyAreKnownBy) {
    const auto layer = Orlix::CreateEmulatedCameras(8);
    const auto infos = layer->Enumerate();
    const auto valueOf = [&](std::size_t camera, const char* key) {
        Orlix::gcstring value;
        return infos[camera].GetPropertyValue(key, value) ? std::string(value.c_str()) : "none";
    };
    struct Row {
        const char* name;
        const char* configuration;
        const char* address;
        const char* serial;
    };
    const std::vector<Row> rows = {
        {"", "4", "127.1.0.1", "EMU-0001"},   {"Camera 2", "4", "127.1.0.2", "EMU-0002"},
        {"", "256", "127.1.0.3", "EMU-0003"}, {"", "260", "", "EMU-0004"},
        {"", "none", "none", "EMU-0005"},     {"Camera 2", "4", "127.1.0.6", "EMU-0006"},
        {"", "4", "127.1.0.7", "none"},       {"", "4", "127.1.0.8", "EMU-0008"},
    };
    for (std::size_t camera = 0; camera < rows.size(); ++camera) {
        EXPECT_EQ(valueOf(camera, Orlix::Key::UserDefinedName), rows[camera].name) << camera;
        EXPECT_EQ(valueOf(camera, Orlix::Key::IpConfigCurrent), rows[camera].configuration);
        EXPECT_EQ(valueOf(camera, Orlix::Key::IpAddress), rows[camera].address);
        EXPECT_EQ(valueOf(camera, Orlix::Key::SerialNumber), rows[camera].serial);
    }
    EXPECT_EQ(infos[1].GetFriendlyName(), "Camera 2 (EMU-0002)");
    for (std::size_t camera = 0; camera + 1 < rows.size(); ++camera) {
        EXPECT_EQ(valueOf(camera, Orlix::Key::DeviceClass), "OrlixEmulated");
        EXPECT_EQ(valueOf(camera, Orlix::Key::ModelName), "EmulatedCamera");
    }
    EXPECT_FALSE(infos.back().IsDeviceClassAvailable());
    EXPECT_EQ(valueOf(rows.size() - 1, Orlix::Key::ModelName), "none");
    EXPECT_EQ(layer->CreateDevice(infos.back())->GetInfo().GetFullName(),
              infos.back().GetFullName());
}

TEST(EmulatedLayer, NameThatTheUserGivesShowsInTheEnumeration) {
    Layer layer(2);
    const CDeviceInfo before = layer.Enumerate()[0];
    OpenCamera camera(layer);
    camera.features.set("DeviceUserID", "Left");
    EXPECT_EQ(layer.Enumerate()[0].GetUserDefinedName(), "Left");
    EXPECT_EQ(layer.Enumerate()[1].GetUserDefinedName(), "Camera 2");
    EXPECT_NO_THROW(static_cast<void>(layer.CreateDevice(before)));
}

TEST(EmulatedLayer, PropertiesOfNoCameraAreAnErrorThatNamesThem) {
    Layer layer(1);
    CDeviceInfo wanted;
    wanted.SetPropertyValue(Orlix::Key::SerialNumber, "EMU-0009");
    try {
        static_cast<void>(layer.CreateDevice(wanted));
        FAIL();
    } catch (const GenICam::InvalidArgumentException& error) {
        EXPECT_STREQ(error.GetDescription(),
                     "No emulated camera has the properties SerialNumber='EMU-0009'.");
    }
}

TEST(EmulatedLayer, CameraHasOneHolderAtATime) {
    Layer layer(2);
    OpenCamera first(layer);
    const auto second = layer.CreateDevice(layer.Enumerate()[0]);
    try {
        second->Open();
        FAIL();
    } catch (const GenICam::AccessException& error) {
        const std::string text = error.GetDescription();
        EXPECT_TRUE(text.starts_with("Device 'EmulatedCamera (EMU-0001)' is in use by process "))
            << text;
        EXPECT_TRUE(text.ends_with(" (127.0.0.1).")) << text;
    }
    EXPECT_FALSE(second->IsOpen());
    EXPECT_EQ(layer.Enumerate().size(), 2U);
    EXPECT_NO_THROW(OpenCamera(layer, 1));
    first.device->Close();
    second->Open();
    EXPECT_TRUE(second->IsOpen());
    std::int64_t value = 0;
    EXPECT_THROW(first.device->Read(0x1100, &value, 8), GenICam::RuntimeException);
    second->Read(0x1100, &value, 8);
    EXPECT_EQ(value, 1024);
}

TEST(EmulatedLayer, SettingsOutliveTheHolder) {
    Layer layer(1);
    OpenCamera(layer).features.integer("Width")->SetValue(320);
    EXPECT_EQ(OpenCamera(layer).features.integer("Width")->GetValue(), 320);
}

TEST(EmulatedLayer, LossIsToldOnceOnAThreadOfItsOwn) {
    Layer layer(2);
    OpenCamera camera(layer);
    LossSink sink;
    camera.device->SetSink(&sink);
    std::promise<std::thread::id> changed;
    layer.SetDevicesChanged([&] { changed.set_value(std::this_thread::get_id()); });
    layer.Unplug(0);
    layer.Unplug(0);
    EXPECT_NE(changed.get_future().get(), std::this_thread::get_id());
    EXPECT_NE(sink.lost.get_future().get(), std::this_thread::get_id());
    camera.device->SetSink(nullptr);
    EXPECT_EQ(sink.calls, 1);
    EXPECT_EQ(layer.Enumerate().size(), 1U);
    try {
        static_cast<void>(camera.features.integer("Width")->GetValue(false, true));
        FAIL();
    } catch (const GenICam::RuntimeException& error) {
        EXPECT_STREQ(error.GetDescription(), "Device 'EmulatedCamera (EMU-0001)' was removed.");
    }
}

TEST(EmulatedLayer, NobodyIsToldOfChangesOnceTheFunctionIsTakenAway) {
    Layer layer(1);
    std::atomic<int> changes = 0;
    for (int round = 0; round < 50; ++round) {
        layer.SetDevicesChanged([&] { ++changes; });
        layer.Unplug(0);
        layer.Plug(0);
        layer.SetDevicesChanged({});
        const int before = changes;
        layer.Unplug(0);
        layer.Plug(0);
        std::this_thread::yield();
        EXPECT_EQ(changes, before);
    }
}

TEST(EmulatedLayer, FunctionMayEndTheLayer) {
    std::promise<void> ended;
    auto layer = std::make_unique<Layer>(1);
    Layer& same = *layer;
    // Keeps the camera until its call below is over.
    const auto device = layer->CreateDevice(layer->Enumerate()[0]);
    same.SetDevicesChanged([&] {
        layer.reset();
        ended.set_value();
    });
    same.Unplug(0);
    ended.get_future().get();
    EXPECT_EQ(layer, nullptr);
}

TEST(EmulatedLayer, EveryOpeningOfADeviceHasItsOwnLoss) {
    Layer layer(1);
    OpenCamera camera(layer);
    for (int round = 0; round < 50; ++round) {
        LossSink sink;
        camera.device->SetSink(&sink);
        layer.Unplug(0);
        sink.lost.get_future().wait();
        camera.device->SetSink(nullptr);
        EXPECT_EQ(sink.calls, 1);
        camera.device->Close();
        layer.Plug(0);
        camera.device->Open();
    }
}

TEST(EmulatedLayer, NobodyIsToldAfterTheSinkWasTakenAway) {
    Layer layer(1);
    OpenCamera camera(layer);
    LossSink sink;
    camera.device->SetSink(&sink);
    camera.device->SetSink(nullptr);
    layer.Unplug(0);
    // Time for news that must not come, on a thread of its own.
    EXPECT_EQ(sink.lost.get_future().wait_for(std::chrono::milliseconds(20)),
              std::future_status::timeout);
    camera.device->Close();
    EXPECT_EQ(sink.calls, 0);
}

TEST(EmulatedLayer, CameraThatComesBackBeginsAsAfterPowerUp) {
    Layer layer(1);
    OpenCamera camera(layer);
    const CDeviceInfo info = camera.device->GetInfo();
    camera.features.integer("Width")->SetValue(320);
    camera.features.set("DeviceUserID", "kept");
    layer.Unplug(0);
    const auto again = layer.CreateDevice(info);
    EXPECT_THROW(again->Open(), GenICam::RuntimeException);
    layer.Plug(0);
    std::int64_t width = 0;
    EXPECT_THROW(camera.device->Read(0x1100, &width, 8), GenICam::RuntimeException);
    again->Open();
    again->Read(0x1100, &width, 8);
    EXPECT_EQ(width, 1024);
    EXPECT_EQ(layer.Enumerate()[0].GetUserDefinedName(), "kept");
}

TEST(EmulatedLayer, DeviceMayEndWithinTheNewsOfItsLoss) {
    struct Sink final : Transport::IDeviceSink {
        void OnEvent(const Transport::EventMessage&) override {}
        void OnLost() override {
            device.reset();
            ended.set_value();
        }
        std::shared_ptr<Transport::IDevice> device;
        std::promise<void> ended;
    } sink;
    Layer layer(1);
    sink.device = layer.CreateDevice(layer.Enumerate()[0]);
    sink.device->Open();
    sink.device->SetSink(&sink);
    layer.Unplug(0);
    sink.ended.get_future().get();
    EXPECT_EQ(sink.device, nullptr);
}

}  // namespace
