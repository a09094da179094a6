// Cameras without hardware: a layer whose devices behave as real ones, for a host to add to those
// it has. Any thread may call.
#pragma once

#include <cstddef>
#include <memory>

#include "orlixcamera/api.h"

namespace Orlix {

namespace Transport {
class ILayer;
}

// A layer with `count` cameras, each with its own identity; device class "OrlixEmulated". They live
// as long as the layer and the devices made from it.
[[nodiscard]] ORLIXCAMERA_API std::shared_ptr<Transport::ILayer> CreateEmulatedCameras(
    std::size_t count);

}  // namespace Orlix
