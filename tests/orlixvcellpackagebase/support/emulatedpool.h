// Emulated cameras in a pool, which are unplugged when a test wants it.
#pragma once

#include <memory>
#include <string>

#include "orlixcamera/cameradevice.h"
#include "orlixcamera/cameralayer.h"
#include "orlixcamera/emulated/layer.h"
#include "support/deviceresources.h"

namespace Plugin::OrlixVCellPackageBase {

// Gives out a new device at each allocation; whether it is there shows when it is opened.
class EmulatedDeviceResource final : public Orlix::DataProcessing::Core::IDeviceResource {
    ORLIX_OBJECT(Orlix::DataProcessing::Core::IDeviceResource)

public:
    EmulatedDeviceResource(std::shared_ptr<Orlix::ICameraLayer> layer, Orlix::CDeviceInfo info)
        : layer_(std::move(layer)), info_(std::move(info)) {}

    std::shared_ptr<Orlix::ICameraDevice> acquireDevice(bool /*shared*/) override {
        return layer_->CreateDevice(info_);
    }
    bool isUnused() override { return true; }

private:
    const std::shared_ptr<Orlix::ICameraLayer> layer_;
    const Orlix::CDeviceInfo info_;
};

struct EmulatedPool {
    explicit EmulatedPool(const std::string& faults = "", std::size_t cameras = 1)
        : transport(std::make_shared<Orlix::Emulated::Layer>(cameras)),
          layer(Orlix::CreateCameraLayer(transport)) {
        transport->LoadFaults(faults);
        for (const Orlix::CDeviceInfo& info : layer->EnumerateDevices()) {
            pool->addResource(Orlix::DataProcessing::Core::ResourceInfo(info),
                              std::make_shared<EmulatedDeviceResource>(layer, info));
        }
    }

    const std::shared_ptr<Orlix::Emulated::Layer> transport;
    const std::shared_ptr<Orlix::ICameraLayer> layer;
    const std::shared_ptr<Orlix::DataProcessing::Core::DefaultResourcePool> pool =
        std::make_shared<Orlix::DataProcessing::Core::DefaultResourcePool>();
};

}  // namespace Plugin::OrlixVCellPackageBase
