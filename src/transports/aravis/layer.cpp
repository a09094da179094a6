#include "aravis/layer.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <string>
#include <utility>

#include "aravis/device.h"
#include "gcbase/gcexception.h"
#include "orlixcamera/deviceproperties.h"
#include "orlixcamera/transport/backend.h"

namespace Orlix::Aravis {
Layer::Layer(Protocol protocol, std::shared_ptr<Discovery> discovery)
    : protocol_(protocol), discovery_(std::move(discovery)) {
    info_.SetPropertyValue(Key::DeviceClass, DeviceClassOf(protocol_));
}

Layer::~Layer() {
    discovery_->SetChanged(protocol_, {});
}

std::vector<CDeviceInfo> Layer::Enumerate() {
    std::vector<CDeviceInfo> devices;
    for (const Found& camera : discovery_->GetCameras(protocol_)) {
        devices.push_back(camera.info);
    }
    return devices;
}

std::shared_ptr<Transport::IDevice> Layer::CreateDevice(const CDeviceInfo& info) {
    const CDeviceInfo wanted = WantedProperties(info);
    const std::vector<Found> known = discovery_->GetKnown(protocol_);
    const auto found = std::find_if(known.begin(), known.end(), [&](const Found& camera) {
        return camera.info.IsSubset(wanted);
    });
    if (found == known.end()) {
        const std::string text = std::string("No ") + DeviceClassOf(protocol_) +
                                 " camera has the properties" + DescribeProperties(info) + ".";
        throw GenICam::InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
    }
    const auto lose = [weak = std::weak_ptr(discovery_), name = found->info.GetFullName()] {
        if (const auto discovery = weak.lock()) {
            discovery->Lose(name);
        }
    };
    return std::make_shared<Device>(*found, lose);
}

void Layer::SetDevicesChanged(std::function<void()> changed) {
    discovery_->SetChanged(protocol_, std::move(changed));
}

}  // namespace Orlix::Aravis

// Both layers of one call round share the discovery: the second asks for what the first has made.
extern "C" __attribute__((visibility("default"))) Orlix::Transport::ILayer*
orlixCreateTransportLayer(std::uint32_t version, std::uint32_t number) {
    using namespace Orlix::Aravis;
    static std::mutex mutex;
    static std::weak_ptr<Discovery> shared;
    constexpr std::array protocols = {Protocol::GigE, Protocol::Usb3};
    if (version != Orlix::Transport::backendVersion || number >= protocols.size()) {
        return nullptr;
    }
    const std::scoped_lock lock(mutex);
    auto discovery = shared.lock();
    if (discovery == nullptr) {
        discovery = std::make_shared<Discovery>();
        shared = discovery;
    }
    return new Layer(protocols.at(number), std::move(discovery));
}
