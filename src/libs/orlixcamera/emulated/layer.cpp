#include "orlixcamera/emulated/layer.h"

#include <array>
#include <cstdio>
#include <string>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/deviceproperties.h"
#include "orlixcamera/emulated/device.h"
#include "orlixcamera/emulatedcameras.h"

namespace Orlix {
namespace Emulated {
namespace {

// What a host can know a camera by. Hosts that choose cameras by their properties meet each of
// these kinds, one camera after the other, again and again.
struct Kind {
    enum class Name : std::uint8_t { None, Own, OfTheCameraFourBefore };

    Name name;
    const char* ipConfiguration;  // null for a camera without a network; 256 is a fixed address
    bool hasAddress;
    bool tellsSerialNumber;
    bool tellsClassAndModel;
    Transport::ChunkByteOrder chunkByteOrder;
};

constexpr std::array kinds = {
    Kind{Kind::Name::None, "4", true, true, true, Transport::ChunkByteOrder::BigEndian},
    Kind{Kind::Name::Own, "4", true, true, true, Transport::ChunkByteOrder::LittleEndian},
    Kind{Kind::Name::None, "256", true, true, true, Transport::ChunkByteOrder::BigEndian},
    Kind{Kind::Name::None, "260", false, true, true, Transport::ChunkByteOrder::LittleEndian},
    Kind{Kind::Name::None, nullptr, false, true, true, Transport::ChunkByteOrder::LittleEndian},
    Kind{Kind::Name::OfTheCameraFourBefore, "4", true, true, true,
         Transport::ChunkByteOrder::BigEndian},
    Kind{Kind::Name::None, "4", true, false, true, Transport::ChunkByteOrder::BigEndian},
    Kind{Kind::Name::None, "4", true, true, false, Transport::ChunkByteOrder::LittleEndian},
};

std::string addressOf(std::size_t number) {
    constexpr std::size_t addresses = 254;
    return "127.1." + std::to_string((number - 1) / addresses % 256) + "." +
           std::to_string((number - 1) % addresses + 1);
}

Identity identityOf(std::size_t number, const Kind& kind) {
    constexpr std::size_t four = 4;
    char serial[16];
    std::snprintf(serial, sizeof serial, "EMU-%04zu", number);
    Identity identity;
    identity.vendor = "Orlix";
    identity.model = "EmulatedCamera";
    identity.version = "1.0";
    identity.serialNumber = serial;
    identity.number = static_cast<std::uint32_t>(number);
    identity.chunkByteOrder = kind.chunkByteOrder;
    if (kind.name != Kind::Name::None) {
        const bool isOwn = kind.name == Kind::Name::Own;
        identity.userDefinedName = "Camera " + std::to_string(isOwn ? number : number - four);
    }
    return identity;
}

std::shared_ptr<Camera> makeCamera(std::size_t number, const std::shared_ptr<Agenda>& agenda,
                                   const std::shared_ptr<Transport::Announcer>& announcer) {
    const Kind& kind = kinds[(number - 1) % kinds.size()];
    Place place;
    place.ipConfiguration = kind.ipConfiguration;
    place.address = kind.hasAddress ? addressOf(number) : "";
    place.tellsSerialNumber = kind.tellsSerialNumber;
    place.tellsClassAndModel = kind.tellsClassAndModel;
    place.agenda = agenda;
    place.plugChanged = [announcer] { announcer->Tell(); };
    return std::make_shared<Camera>(identityOf(number, kind), std::move(place));
}

}  // namespace

Layer::Layer(std::size_t cameraCount) {
    info_.SetPropertyValue(Key::DeviceClass, EmulatedCameraClass);
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
    const CDeviceInfo wanted = WantedProperties(info);
    std::shared_ptr<Camera> found;
    for (const auto& camera : cameras_) {
        const bool matches = camera->GetInfo().IsSubset(wanted);
        if (matches && (found == nullptr || (camera->IsPlugged() && !found->IsPlugged()))) {
            found = camera;
        }
    }
    if (found == nullptr) {
        const std::string text =
            "No emulated camera has the properties" + DescribeProperties(info) + ".";
        throw GenICam::InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
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
