#include "camera/findresources.h"

#include "orlixdataprocessingcore/utils/typeinfo.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;

DeviceResourceMap findDeviceResources(Core::IResourcePool& pool, const Core::ResourceInfo& filter) {
    DeviceResourceMap devices;
    const auto type = Utils::TypeInfo::getTypeInfo<Core::IDeviceResource>(true);
    for (const auto& [info, resource] : pool.findResources(filter, type)) {
        if (auto* device = Utils::object_cast<Core::IDeviceResource>(resource.get())) {
            devices.emplace(info, std::shared_ptr<Core::IDeviceResource>(resource, device));
        }
    }
    return devices;
}

}  // namespace Plugin::OrlixVCellPackageBase
