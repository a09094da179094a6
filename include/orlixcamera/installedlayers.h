// The ways to reach real cameras that are installed: transport back ends beside the camera library.
//
//     for (auto& layer : Orlix::CreateInstalledLayers()) {
//         layers.push_back(Orlix::CreateCameraLayer(std::move(layer)));
//     }
#pragma once

#include <memory>
#include <vector>

#include "orlixcamera/api.h"

namespace Orlix {

namespace Transport {
class ILayer;
}

// New layers, which may begin to look for cameras at once. Empty where no back end is installed;
// one that can't be loaded is told to the message sink and left out. Any thread may call.
[[nodiscard]] ORLIXCAMERA_API std::vector<std::shared_ptr<Transport::ILayer>>
CreateInstalledLayers();

}  // namespace Orlix
