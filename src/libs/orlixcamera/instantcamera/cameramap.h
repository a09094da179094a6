// The features of the camera object itself, those of its stream, and those of the connection of a
// device that has none of its own.
#pragma once

#include <memory>

#include "orlixcamera/deviceinfo.h"
#include "orlixcamera/instantcamera/camerasettings.h"
#include "orlixcamera/instantcamera/registermap.h"

namespace Orlix::Detail {

class StreamCounters;

[[nodiscard]] std::unique_ptr<RegisterMap> CreateCameraMap(
    std::shared_ptr<CameraSettings> settings, std::shared_ptr<const StreamCounters> counters);
[[nodiscard]] std::unique_ptr<RegisterMap> CreateStreamMap(
    std::shared_ptr<CameraSettings> settings, std::shared_ptr<const StreamCounters> counters);
[[nodiscard]] std::unique_ptr<RegisterMap> CreateLayerMap(std::shared_ptr<CameraSettings> settings,
                                                          const CDeviceInfo& info);

}  // namespace Orlix::Detail
