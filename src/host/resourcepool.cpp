#include "orlixhost/resourcepool.h"

#include <ostream>

#include "host/jsontext.h"
#include "orlixdataprocessingcore/core/defaultresourcepool.h"

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

}  // namespace

std::shared_ptr<Core::IResourcePool> createResourcePool() {
    return std::make_shared<Core::DefaultResourcePool>();
}

void printDevices(std::ostream& out, Core::IResourcePool& pool, DeviceFormat format) {
    const auto type = Utils::TypeInfo::getTypeInfo<Core::IDeviceResource>(true);
    Json devices = Json::array();
    for (const auto& [info, device] : pool.getResources(type)) {
        devices.push_back(propertiesOf(info));
    }
    if (format == DeviceFormat::Json) {
        out << printJson(devices);
        return;
    }
    if (devices.empty()) {
        out << "No devices. This version of the host knows no transport layer.\n";
    }
    for (const Json& device : devices) {
        for (const auto& property : device.items()) {
            out << property.key() << ": " << property.value().get<std::string>() << "\n";
        }
        out << "\n";
    }
}

}  // namespace Orlix::Host
