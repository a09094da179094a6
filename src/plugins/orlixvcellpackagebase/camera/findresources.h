// The device resources of a pool as what they are.
#pragma once

#include <map>
#include <memory>

#include "orlixdataprocessingcore/core/resourceinfo.h"
#include "orlixdataprocessingcore/core/resourcepool.h"

namespace Plugin::OrlixVCellPackageBase {

using DeviceResourceMap = std::map<Orlix::DataProcessing::Core::ResourceInfo,
                                   std::shared_ptr<Orlix::DataProcessing::Core::IDeviceResource>>;

// The devices whose properties include the filter's. What is no device is left out.
[[nodiscard]] DeviceResourceMap findDeviceResources(
    Orlix::DataProcessing::Core::IResourcePool& pool,
    const Orlix::DataProcessing::Core::ResourceInfo& filter);

}  // namespace Plugin::OrlixVCellPackageBase
