// Where the planes and lines of an image lie in its buffer. Plain values for any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "orlixcamera/api.h"
#include "orlixcamera/pixeltype.h"

namespace Orlix {

struct ImagePlane {
    std::uint64_t offset = 0;     // from the start of the buffer to the first line
    std::uint64_t lineBytes = 0;  // bytes of a line that carry pixels
    std::uint64_t stride = 0;     // lineBytes and the padding
    std::uint32_t lines = 0;
};

// Planes follow each other without a gap.
struct ImagePlanes {
    std::array<ImagePlane, 3> planes;
    std::size_t count = 0;
    std::uint64_t size = 0;  // bytes of the whole buffer
};

// Throws InvalidArgumentException for an unknown format, OutOfRangeException where 64 bits are too
// few.
[[nodiscard]] ORLIXCAMERA_API ImagePlanes ComputePlanes(EPixelType pixelType, std::uint32_t width,
                                                        std::uint32_t height,
                                                        std::uint64_t paddingX);

}  // namespace Orlix
