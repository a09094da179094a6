#include "orlixhost/resourcepool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <sstream>
#include <thread>

#include "gcbase/gcexception.h"
#include "host/support/gate.h"
#include "host/support/program.h"
#include "host/support/recipes.h"
#include "host/support/temporaryfolder.h"
#include "orlixcamera/cameradevice.h"
#include "orlixcamera/cameralayer.h"
#include "orlixcamera/emulated/layer.h"
#include "orlixdataprocessingcore/core/resourcepool.h"

namespace Orlix::Host {
namespace {

using namespace Testing;
namespace Core = DataProcessing::Core;
namespace Utils = DataProcessing::Utils;

const Utils::TypeInfo& deviceType() {
    static const auto type = Utils::TypeInfo::getTypeInfo<Core::IDeviceResource>(true);
    return type;
}

std::vector<std::string> serialsOf(Core::IResourcePool& pool) {
    std::vector<std::string> serials;
    for (const auto& [info, resource] : pool.getResources(deviceType())) {
        GenICam::gcstring serial;
        static_cast<void>(info.GetPropertyValue(Key::SerialNumber, serial));
        serials.push_back(serial.str());
    }
    std::sort(serials.begin(), serials.end());
    return serials;
}

std::shared_ptr<Core::IDeviceResource> resourceOf(
    const Core::IResourcePool::ResourceMap& resources) {
    const auto& resource = resources.begin()->second;
    return {resource, Utils::object_cast<Core::IDeviceResource>(resource.get())};
}

// Two cameras whose cables the test pulls.
class CameraPool : public testing::Test {
protected:
    [[nodiscard]] std::shared_ptr<Core::IDeviceResource> find(const char* key,
                                                              const char* value) const {
        Core::ResourceInfo filter;
        filter.SetPropertyValue(key, value);
        const auto found = pool_->findResources(filter, deviceType());
        EXPECT_EQ(found.size(), 1U) << value;
        return found.empty() ? nullptr : resourceOf(found);
    }
    [[nodiscard]] std::shared_ptr<Core::IDeviceResource> first() const {
        return find(Key::SerialNumber, "EMU-0001");
    }

    const std::shared_ptr<Emulated::Layer> emulated_ = std::make_shared<Emulated::Layer>(2);
    const std::shared_ptr<ICameraLayer> layer_ = CreateCameraLayer(emulated_);
    const std::shared_ptr<Core::IResourcePool> pool_ =
        createResourcePool(std::vector<std::shared_ptr<ICameraLayer>>{layer_});
};

TEST_F(CameraPool, ListsLayersAndCamerasFromTheBeginning) {
    EXPECT_EQ(serialsOf(*pool_), (std::vector<std::string>{"EMU-0001", "EMU-0002"}));
    const auto layers = pool_->getResources(Utils::TypeInfo::getTypeInfo<Core::ITlResource>(true));
    ASSERT_EQ(layers.size(), 1U);
    EXPECT_EQ(layers.begin()->first.GetDeviceClass(), "OrlixEmulated");
}

TEST_F(CameraPool, CameraIsFoundByItsProperties) {
    const auto device = find(Key::UserDefinedName, "Camera 2")->acquireDevice(false);
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(device->GetDeviceInfo().GetSerialNumber(), "EMU-0002");
}

TEST_F(CameraPool, DeviceHasOneHolderUntilThatLetsGo) {
    const auto resource = first();
    EXPECT_TRUE(resource->isUnused());
    auto device = resource->acquireDevice(false);
    EXPECT_FALSE(resource->isUnused());
    EXPECT_EQ(resource->acquireDevice(false), nullptr);
    EXPECT_EQ(resource->acquireDevice(true), device);
    pool_->refreshResources({});
    EXPECT_FALSE(first()->isUnused());
    EXPECT_TRUE(find(Key::SerialNumber, "EMU-0002")->isUnused());
    device.reset();
    EXPECT_TRUE(resource->isUnused());
    EXPECT_NE(resource->acquireDevice(false), nullptr);
}

TEST_F(CameraPool, CameraWithAnotherNameKeepsItsHolder) {
    const auto device = first()->acquireDevice(false);
    const auto& transport = device->GetTransportDevice();
    transport->Open();
    const char name[64] = "A name";
    transport->Write(0x0100, name, sizeof name);
    transport->Close();
    pool_->refreshResources({});
    EXPECT_FALSE(find(Key::UserDefinedName, "A name")->isUnused());
}

TEST_F(CameraPool, RefreshThatFindsNothingNewTellsNobody) {
    int calls = 0;
    const Utils::ScopedConnection connection(
        pool_->getResourcesChangedSignal()->connect([&] { ++calls; }), true);
    pool_->refreshResources({});
    EXPECT_EQ(calls, 0);
}

TEST_F(CameraPool, NoticesCamerasThatGoAndComeBack) {
    std::mutex mutex;
    std::condition_variable changed;
    int calls = 0;
    const Utils::ScopedConnection connection(pool_->getResourcesChangedSignal()->connect([&] {
        const std::scoped_lock lock(mutex);
        ++calls;
        changed.notify_all();
    }),
                                             true);
    const auto waitFor = [&](int count) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return calls >= count; });
    };
    emulated_->Unplug(0);
    waitFor(1);
    EXPECT_EQ(serialsOf(*pool_), (std::vector<std::string>{"EMU-0002"}));
    emulated_->Plug(0);
    waitFor(2);
    EXPECT_EQ(serialsOf(*pool_), (std::vector<std::string>{"EMU-0001", "EMU-0002"}));
}

TEST_F(CameraPool, CameraThatCameBackIsUnusedThoughTheLostOneIsStillHeld) {
    const auto lost = first()->acquireDevice(false);
    emulated_->Unplug(0);
    pool_->refreshResources({});
    emulated_->Plug(0);
    pool_->refreshResources({});
    EXPECT_TRUE(first()->isUnused());
    EXPECT_NE(first()->acquireDevice(false), nullptr);
}

TEST_F(CameraPool, RefreshesOnManyThreadsEndWithTheTruth) {
    std::atomic<bool> ended = false;
    std::vector<std::thread> threads;
    for (int index = 0; index < 3; ++index) {
        threads.emplace_back([&] {
            while (!ended) {
                pool_->refreshResources({});
            }
        });
    }
    for (int round = 0; round < 50; ++round) {
        emulated_->Unplug(0);
        emulated_->Plug(0);
    }
    emulated_->Unplug(1);
    ended = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    pool_->refreshResources({});
    EXPECT_EQ(serialsOf(*pool_), (std::vector<std::string>{"EMU-0001"}));
}

// A camera that tells of itself what is no text.
class NamedLayer final : public ICameraLayer {
public:
    const CInfoBase& GetInfo() const noexcept override { return info_; }
    std::vector<CDeviceInfo> EnumerateDevices() override {
        CDeviceInfo camera;
        camera.SetPropertyValue(Key::FullName, "One");
        camera.SetPropertyValue(Key::UserDefinedName, "Gr\xFCn\n\x1B[31m");
        return {camera};
    }
    std::shared_ptr<ICameraDevice> CreateDevice(const CDeviceInfo&) override { return nullptr; }
    void SetDevicesChanged(std::function<void()>) override {}

private:
    CDeviceInfo info_;
};

TEST(PrintDevices, ListsACameraWhoseNameIsNoText) {
    const auto pool = createResourcePool(
        std::vector<std::shared_ptr<ICameraLayer>>{std::make_shared<NamedLayer>()});
    std::ostringstream json;
    printDevices(json, *pool, DeviceFormat::Json);
    EXPECT_EQ(json.str(),
              "[\n  {\n    \"FullName\": \"One\",\n"
              "    \"UserDefinedName\": \"Gr\xEF\xBF\xBDn\\n\\u001b[31m\"\n  }\n]\n");
    std::ostringstream text;
    printDevices(text, *pool, DeviceFormat::Text);
    EXPECT_EQ(text.str(), "FullName: One\nUserDefinedName: Gr\xFCn  [31m\n\n");
}

// One emulated camera, at first not there. A look at it can be held up, and tells nobody anything.
class GatedLayer final : public ICameraLayer {
public:
    GatedLayer() { emulated_->Unplug(0); }
    void plug() { emulated_->Plug(0); }

    const CInfoBase& GetInfo() const noexcept override { return layer_->GetInfo(); }
    std::vector<CDeviceInfo> EnumerateDevices() override {
        const int look = ++looks_;
        before(look);
        auto cameras = layer_->EnumerateDevices();
        after(look);
        return cameras;
    }
    std::shared_ptr<ICameraDevice> CreateDevice(const CDeviceInfo& info) override {
        return layer_->CreateDevice(info);
    }
    void SetDevicesChanged(std::function<void()>) override {}

    // Called with the number of the look, from 1. The pool itself looks once.
    std::function<void(int)> before = [](int) {};
    std::function<void(int)> after = [](int) {};

private:
    const std::shared_ptr<Emulated::Layer> emulated_ = std::make_shared<Emulated::Layer>(1);
    const std::shared_ptr<ICameraLayer> layer_ = CreateCameraLayer(emulated_);
    std::atomic<int> looks_ = 0;
};

// Two refreshes at once, the second and the third of the pool.
class CameraPoolRace : public testing::Test {
protected:
    [[nodiscard]] std::thread refreshing() {
        return std::thread([this] { pool_->refreshResources({}); });
    }
    [[nodiscard]] std::shared_ptr<ICameraDevice> acquire() const {
        const auto found = pool_->getResources(deviceType());
        return found.empty() ? nullptr : resourceOf(found)->acquireDevice(false);
    }
    [[nodiscard]] bool isCameraUnused() const {
        const auto found = pool_->getResources(deviceType());
        return found.empty() || resourceOf(found)->isUnused();
    }

    const std::shared_ptr<GatedLayer> layer_ = std::make_shared<GatedLayer>();
    const std::shared_ptr<GatedLayer> next_ = std::make_shared<GatedLayer>();
    const std::shared_ptr<Core::IResourcePool> pool_ =
        createResourcePool(std::vector<std::shared_ptr<ICameraLayer>>{layer_, next_});
    Gate begun_;
    Gate goOn_;
};

TEST_F(CameraPoolRace, OlderListThatLacksACameraLeavesItToItsHolder) {
    layer_->after = [this](int look) {
        if (look == 2) {
            begun_.open();
            goOn_.wait();
        }
    };
    std::thread older = refreshing();
    begun_.wait();
    layer_->plug();
    pool_->refreshResources({});
    const auto device = acquire();
    EXPECT_NE(device, nullptr);
    goOn_.open();
    older.join();
    EXPECT_FALSE(isCameraUnused());
}

TEST_F(CameraPoolRace, CameraThatOnlyTheOlderListHasSeenKeepsItsHolder) {
    Gate newerHasLooked;
    Gate newerGoesOn;
    layer_->before = [this](int look) {
        if (look == 2) {
            begun_.open();
            goOn_.wait();
        }
    };
    next_->before = [&](int look) {
        if (look == 2) {
            newerHasLooked.open();
            newerGoesOn.wait();
        }
    };
    std::thread older = refreshing();
    begun_.wait();
    std::thread newer = refreshing();
    newerHasLooked.wait();
    layer_->plug();
    goOn_.open();
    older.join();
    const auto device = acquire();
    EXPECT_NE(device, nullptr);
    newerGoesOn.open();
    newer.join();
    EXPECT_FALSE(isCameraUnused());
}

TEST(CameraPoolEnd, PoolMayEndWhileCamerasComeAndGo) {
    const auto emulated = std::make_shared<Emulated::Layer>(1);
    for (int round = 0; round < 20; ++round) {
        auto pool = createResourcePool(
            std::vector<std::shared_ptr<ICameraLayer>>{CreateCameraLayer(emulated)});
        emulated->Unplug(0);
        pool.reset();
        emulated->Plug(0);
    }
}

TEST(CameraPoolOptions, NoneMeansNoCameras) {
    EXPECT_TRUE(createResourcePool()->getResources({}).empty());
}

TEST(DevicesCommand, ListsOneEmulatedCameraUnlessToldOtherwise) {
    const std::string text = runOrlix({"devices"}).out;
    EXPECT_EQ(text,
              "DeviceClass: OrlixEmulated\nDeviceVersion: 1.0\n"
              "FriendlyName: EmulatedCamera (EMU-0001)\nFullName: OrlixEmulated#EMU-0001\n"
              "IpAddress: 127.1.0.1\nModelName: EmulatedCamera\nSerialNumber: EMU-0001\n"
              "UserDefinedName: \nVendorName: Orlix\n_PortableIpConfigCurrent: 4\n\n");
    const std::string json = runOrlix({"devices", "--json", "--emulated-cameras", "3"}).out;
    EXPECT_NE(json.find("\"SerialNumber\": \"EMU-0003\""), std::string::npos) << json;
    EXPECT_EQ(json.front(), '[');
    EXPECT_EQ(runOrlix({"devices", "--emulated-cameras", "0"}).out, "No devices.\n");
    EXPECT_EQ(runOrlix({"devices", "--emulated-cameras", "0", "--json"}).out, "[]\n");
}

TEST(DevicesCommand, FaultScriptComesAsTextOrAsAFile) {
    EXPECT_EQ(runOrlix({"devices", "--fault", "frame 1: lost end"}).exitCode, 0);
    const TemporaryFolder folder;
    const std::string file =
        folder.write("faults.txt", "# all fine\nstart: refuse\nstop: refusal\n");
    expectFailure(runOrlix({"devices", "--fault", "@" + file}),
                  "--fault: Fault script, line 3, column 7: expected a fault, found 'refusal'.");
    expectFailure(runOrlix({"devices", "--emulated-cameras", "0", "--fault", "nonsense"}),
                  "--fault: Fault script, line 1, column 1: expected 'frame', 'every', 'open', "
                  "'start', 'stop', 'idle', 'after', 'read' or 'write', found 'nonsense'.");
    expectFailure(runOrlix({"devices", "--fault", "@nowhere.txt"}),
                  "--fault: nowhere.txt: can not read: No such file or directory");
}

}  // namespace
}  // namespace Orlix::Host
