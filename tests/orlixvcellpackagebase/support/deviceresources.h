// Resources for a pool without cameras behind them, and a pool that counts what it is asked for.
#pragma once

#include <atomic>
#include <functional>
#include <initializer_list>
#include <memory>
#include <utility>

#include "orlixcamera/cameradevice.h"
#include "orlixdataprocessingcore/core/defaultresourcepool.h"
#include "orlixdataprocessingcore/core/resourcepool.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"

namespace Plugin::OrlixVCellPackageBase {

// Gives out the device that the test puts into it.
class TestDeviceResource final : public Orlix::DataProcessing::Core::IDeviceResource {
    ORLIX_OBJECT(Orlix::DataProcessing::Core::IDeviceResource)

public:
    explicit TestDeviceResource(std::shared_ptr<Orlix::ICameraDevice> device = nullptr)
        : device_(std::move(device)) {}

    std::shared_ptr<Orlix::ICameraDevice> acquireDevice(bool shared) override {
        ++acquired;
        lastShared = shared;
        return device_;
    }
    bool isUnused() override { return unused; }

    bool unused = true;
    bool lastShared = true;
    int acquired = 0;

private:
    std::shared_ptr<Orlix::ICameraDevice> device_;
};

class TestLayerResource final : public Orlix::DataProcessing::Core::ITlResource {
    ORLIX_OBJECT(Orlix::DataProcessing::Core::ITlResource)
};

inline Orlix::DataProcessing::Core::ResourceInfo makeInfo(
    std::initializer_list<std::pair<const char*, const char*>> properties) {
    Orlix::DataProcessing::Core::ResourceInfo info;
    for (const auto& [key, value] : properties) {
        info.SetPropertyValue(key, value);
    }
    return info;
}

// A list that the test keeps, and the number of times that somebody asked for it anew.
struct CountingPool {
    using Pool = Orlix::DataProcessing::Core::DefaultResourcePool;
    using Info = Orlix::DataProcessing::Core::ResourceInfo;

    std::shared_ptr<TestDeviceResource> add(const Info& info) {
        auto resource = std::make_shared<TestDeviceResource>();
        pool->addResource(info, resource);
        return resource;
    }

    std::atomic<int> refreshes{0};
    std::function<void(Pool&)> onRefresh = [](Pool&) {};
    const std::shared_ptr<Pool> pool = std::make_shared<Pool>([this](Pool& self) {
        ++refreshes;
        onRefresh(self);
    });
};

}  // namespace Plugin::OrlixVCellPackageBase
