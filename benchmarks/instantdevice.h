// A device that costs nothing: its stream has a frame ready whenever a buffer is queued. What is
// measured with it is what stands above the transport layer. Frames are 64 x 64, Mono8.
#pragma once

#include <memory>

#include "orlixcamera/transport/transport.h"

namespace InstantCamera {

// Three chunks behind the image: ChunkFrameID, ChunkTimestamp and ChunkExposureTime.
enum class Chunks : std::uint8_t { None, Three };

[[nodiscard]] std::shared_ptr<Orlix::Transport::IDevice> createDevice(Chunks chunks);
// With one such device.
[[nodiscard]] std::shared_ptr<Orlix::Transport::ILayer> createLayer(Chunks chunks);

}  // namespace InstantCamera
