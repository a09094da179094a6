#include "orlixhost/resourcepool.h"

#include <algorithm>
#include <ostream>

#include "host/camerapool.h"
#include "host/jsontext.h"
#include "host/message.h"
#include "host/textfile.h"
#include "orlixcamera/cameralayer.h"
#include "orlixcamera/emulatedcameras.h"
#include "orlixcamera/installedlayers.h"

namespace Orlix::Host {
namespace {

namespace Core = DataProcessing::Core;
namespace Utils = DataProcessing::Utils;

Json propertiesOf(const Core::ResourceInfo& info) {
    Json properties = Json::object();
    std::vector<GenICam::gcstring> names;
    info.GetPropertyNames(names);
    for (const GenICam::gcstring& name : names) {
        GenICam::gcstring value;
        if (info.GetPropertyValue(name, value)) {
            properties[name.str()] = value.str();
        }
    }
    return properties;
}

std::string scriptOf(const std::string& faults) {
    return faults.starts_with('@')
               ? withPlace("--fault", [&] { return readTextFile(faults.substr(1)); })
               : faults;
}

std::vector<std::shared_ptr<ICameraLayer>> installedLayers() {
    std::vector<std::shared_ptr<ICameraLayer>> layers;
    for (auto& layer : CreateInstalledLayers()) {
        layers.push_back(CreateCameraLayer(std::move(layer)));
    }
    return layers;
}

}  // namespace

std::shared_ptr<Core::IResourcePool> createResourcePool(const CameraOptions& options) {
    const std::string script = scriptOf(options.faults);
    std::vector<std::shared_ptr<ICameraLayer>> layers;
    if (options.emulatedCameras > 0 || !script.empty()) {
        // A script is read also for no camera: its mistakes are mistakes all the same.
        const EmulatedCameraOptions emulated{std::max<std::size_t>(options.emulatedCameras, 1),
                                             script};
        auto layer = withPlace("--fault",
                               [&] { return CreateCameraLayer(CreateEmulatedCameras(emulated)); });
        if (options.emulatedCameras > 0) {
            layers.push_back(std::move(layer));
        }
    }
    const auto pool =
        CameraPool::create(std::move(layers), options.realCameras == RealCameras::LeftOut
                                                  ? nullptr
                                                  : CameraResources::LateLayers(&installedLayers));
    if (options.realCameras == RealCameras::WaitedFor) {
        pool->lookForRealCameras();
    }
    return pool;
}

std::shared_ptr<Core::IResourcePool> createResourcePool(
    std::vector<std::shared_ptr<ICameraLayer>> layers) {
    return CameraPool::create(std::move(layers), nullptr);
}

bool waitForRealCameras(Core::IResourcePool& pool) {
    auto* const cameras = dynamic_cast<CameraPool*>(&pool);
    return cameras != nullptr && cameras->waitForRealCameras();
}

void printDevices(std::ostream& out, Core::IResourcePool& pool, DeviceFormat format) {
    const auto type = Utils::TypeInfo::getTypeInfo<Core::IDeviceResource>(true);
    Json devices = Json::array();
    for (const auto& [info, device] : pool.getResources(type)) {
        devices.push_back(propertiesOf(info));
    }
    if (format == DeviceFormat::Json) {
        // What one camera tells of itself must not hide the others.
        out << devices.dump(2, ' ', false, Json::error_handler_t::replace) << "\n";
        return;
    }
    if (devices.empty()) {
        out << "No devices.\n";
    }
    for (const Json& device : devices) {
        for (const auto& property : device.items()) {
            out << property.key() << ": " << oneLine(property.value().get<std::string>()) << "\n";
        }
        out << "\n";
    }
}

}  // namespace Orlix::Host
