// Cameras without hardware: a layer whose devices behave as real ones, for a host to add to those
// it has. Any thread may call.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "orlixcamera/api.h"

namespace Orlix {

namespace Transport {
class ILayer;
}

// The device class of all of them.
inline constexpr char EmulatedCameraClass[] = "OrlixEmulated";

struct EmulatedCameraOptions {
    std::size_t count = 1;
    // What goes wrong with which camera, and when; docs/fault-scripts.md describes the language.
    std::string faultScript;
};

// A layer of cameras, each with its own identity. They live as long
// as the layer and the devices made from it. Throws InvalidArgumentException for a mistake in the
// script, which tells its line and column.
[[nodiscard]] ORLIXCAMERA_API std::shared_ptr<Transport::ILayer> CreateEmulatedCameras(
    const EmulatedCameraOptions& options);
[[nodiscard]] ORLIXCAMERA_API std::shared_ptr<Transport::ILayer> CreateEmulatedCameras(
    std::size_t count);

}  // namespace Orlix
