#include "orlixcamera/emulated/layer.h"

#include <cstdio>
#include <string>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/emulated/device.h"
#include "orlixcamera/emulatedcameras.h"

namespace Orlix {
namespace Emulated {
namespace {

// The cameras differ in what a host can know them by: every second has a name that its user gave
// it, and every third keeps its address.
std::shared_ptr<Camera> makeCamera(std::size_t number, const std::shared_ptr<Agenda>& agenda,
                                   const std::shared_ptr<Announcer>& announcer) {
    char serial[16];
    std::snprintf(serial, sizeof serial, "EMU-%04zu", number);
    Identity identity{
        "Orlix", "EmulatedCamera", "1.0", serial, "", {}, static_cast<std::uint32_t>(number)};
    if (number % 2 == 0) {
        identity.userDefinedName = "Camera " + std::to_string(number);
        identity.chunkByteOrder = Transport::ChunkByteOrder::LittleEndian;
    }
    constexpr std::size_t addresses = 254;
    Place place;
    place.address = "127.1." + std::to_string((number - 1) / addresses % 256) + "." +
                    std::to_string((number - 1) % addresses + 1);
    place.fixedAddress = number % 3 == 0;
    place.agenda = agenda;
    place.plugChanged = [announcer] { announcer->Tell(); };
    return std::make_shared<Camera>(std::move(identity), std::move(place));
}

// The full name alone decides where it is given: other properties may have changed since.
CDeviceInfo wantedProperties(const CDeviceInfo& info) {
    CDeviceInfo wanted;
    if (info.GetFullName() == "") {
        return info;
    }
    wanted.SetPropertyValue(Key::FullName, info.GetFullName());
    return wanted;
}

}  // namespace

Layer::Layer(std::size_t cameraCount) {
    info_.SetPropertyValue(Key::DeviceClass, "OrlixEmulated");
    const auto agenda = std::make_shared<Agenda>();
    for (std::size_t number = 1; number <= cameraCount; ++number) {
        cameras_.push_back(makeCamera(number, agenda, announcer_));
    }
}

Layer::~Layer() {
    announcer_->Set({});
}

void Layer::LoadFaults(const std::string& script) {
    for (const auto& camera : cameras_) {
        camera->LoadFaults(script);
    }
}

std::vector<CDeviceInfo> Layer::Enumerate() {
    std::vector<CDeviceInfo> devices;
    for (const auto& camera : cameras_) {
        if (camera->IsPlugged()) {
            devices.push_back(camera->GetInfo());
        }
    }
    return devices;
}

std::shared_ptr<Transport::IDevice> Layer::CreateDevice(const CDeviceInfo& info) {
    const CDeviceInfo wanted = wantedProperties(info);
    std::shared_ptr<Camera> found;
    for (const auto& camera : cameras_) {
        const bool matches = camera->GetInfo().IsSubset(wanted);
        if (matches && (found == nullptr || (camera->IsPlugged() && !found->IsPlugged()))) {
            found = camera;
        }
    }
    if (found == nullptr) {
        std::string text = "No emulated camera has the properties";
        std::vector<gcstring> names;
        info.GetPropertyNames(names);
        for (const gcstring& name : names) {
            gcstring value;
            static_cast<void>(info.GetPropertyValue(name, value));
            text += std::string(" ") + name.c_str() + "='" + value.c_str() + "'";
        }
        throw GenICam::InvalidArgumentException((text + ".").c_str(), __FILE__, __LINE__);
    }
    return std::make_shared<Device>(std::move(found));
}

void Layer::SetDevicesChanged(std::function<void()> changed) {
    announcer_->Set(std::move(changed));
}

void Layer::Unplug(std::size_t camera) {
    cameras_.at(camera)->Unplug();
}

void Layer::Plug(std::size_t camera) {
    cameras_.at(camera)->Plug();
}

}  // namespace Emulated

std::shared_ptr<Transport::ILayer> CreateEmulatedCameras(const EmulatedCameraOptions& options) {
    auto layer = std::make_shared<Emulated::Layer>(options.count);
    layer->LoadFaults(options.faultScript);
    return layer;
}

std::shared_ptr<Transport::ILayer> CreateEmulatedCameras(std::size_t count) {
    return CreateEmulatedCameras(EmulatedCameraOptions{count, {}});
}

}  // namespace Orlix
