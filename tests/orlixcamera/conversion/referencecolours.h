// How the reference reads a source: every packing and pattern, pixel by pixel.
#pragma once

#include <cstdint>
#include <vector>

#include "orlixcamera/conversion/referencepicture.h"

namespace Orlix::Test {

// The pixels of all lines in their order in memory, with no more bits than the destination has. The
// channels of YUV are in the places of r, g and b.
[[nodiscard]] std::vector<Rgba> ReadColours(const Picture& source, std::uint32_t outputDepth,
                                            BayerBorderEnums border);

}  // namespace Orlix::Test
